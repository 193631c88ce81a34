// Opening projects all day must not make the program grow. Reads the
// benchmark project 100,000 times in one process, the way an open does:
// the previous project's sheets close, the file is read and loaded into the
// document, the sheets look up every picture, and one sheet is painted
// every 100th read (painting every read would take an hour). The first picture is a real one under a new path on every read, so
// anything kept by path would pile up. Reports resident memory (VmRSS)
// after 1,000 and after 100,000 reads; they must be within 5 %.
#include "BenchProject.h"
#include "file/ProjectFile.h"
#include "platform/Pictures.h"
#include "render/SheetRenderer.h"
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdio>

namespace {

constexpr int kReads = 100000;
constexpr int kEarly = 1000;
constexpr int kPaintEvery = 100;
constexpr double kAllowedGrowth = 0.05;

// Resident memory of this process in MiB; 0 when /proc does not say.
double residentMiB()
{
    QFile f(QStringLiteral("/proc/self/status"));
    if (!f.open(QIODevice::ReadOnly)) return 0;
    for (const QByteArray& line : f.readAll().split('\n'))
        if (line.startsWith("VmRSS:")) return line.mid(6).trimmed().split(' ').value(0).toDouble() / 1024;
    return 0;
}

void BM_ReopenProject(benchmark::State& state)
{
    QTemporaryDir tmp;
    const QDir dir(tmp.path());
    jk::ProjectData full = jkbench::fullProject(dir);
    const QString source = dir.filePath(QStringLiteral("source.png"));
    QImage picture(120, 90, QImage::Format_RGB32);
    picture.fill(Qt::darkCyan);
    picture.save(source);
    // The read number goes in place of the marker, which has its width.
    const QByteArray marker("######");
    full.pictures.at(1).file = dir.filePath(QStringLiteral("fresh-%1.png").arg(QLatin1String(marker)));
    const QByteArray model = jk::projectFileBytes(full);
    const int sheet = full.pictures.at(1).sheet;
    const QString path = dir.filePath(QStringLiteral("full.prj"));

    jk::Project project;
    int reads = 0;
    double early = 0;
    for (auto _ : state) {
        ++reads;
        const QByteArray n = QByteArray::number(reads).rightJustified(marker.size(), '0');
        const QString fresh = dir.filePath(QStringLiteral("fresh-%1.png").arg(QLatin1String(n)));
        QFile::link(source, fresh);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(QByteArray(model).replace(marker, n)) < 0) {
            state.SkipWithError("cannot write the project");
            return;
        }
        file.close();

        // What closing the sheets of the previous project does.
        jk::sheet::releaseDecodedPictures();
        jk::ProjectData data;
        if (jk::readProject(path, data).errors != 0) {
            state.SkipWithError("the project did not read cleanly");
            return;
        }
        project.load(std::move(data));
        for (int i = 1; i <= project.pictures().count(); ++i)
            benchmark::DoNotOptimize(jk::sheet::pictureSize(project.pictures().at(i).file));
        if (reads % kPaintEvery == 0) benchmark::DoNotOptimize(jk::sheet::renderImage(project, sheet, 96));
        QFile::remove(fresh);

        if (reads == kEarly) early = residentMiB();
        if (reads % 10000 == 0) std::fprintf(stderr, "after %6d reads: %.1f MiB resident\n", reads, residentMiB());
    }
    const double late = residentMiB();
    const bool flat = early > 0 && std::abs(late - early) <= kAllowedGrowth * early;
    state.counters["rss_1000_MiB"] = early;
    state.counters["rss_100000_MiB"] = late;
    state.counters["growth_pct"] = early > 0 ? 100 * (late - early) / early : 0;
    state.SetLabel(flat ? "flat: within 5 %" : "GROWS: more than 5 %");
}
BENCHMARK(BM_ReopenProject)->Iterations(kReads)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    // The program's own picture loader, with its memory of failed files.
    jk::sheet::setImageLoader([](const QString& path) { return jk::platform::loadPicture(path); });
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
