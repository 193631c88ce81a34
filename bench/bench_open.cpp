// From "open" to every sheet window shown and painted, for a full project:
// 100 free text blocks, 50 text-page blocks, 50 pictures (800 x 600 JPEG),
// 50 character fields and 50 numeric fields on four sheets. Runs offscreen.
#include "ui/mainwindow/MainWindow.h"
#include "app/Startup.h"
#include "platform/FakeServices.h"
#include "platform/Pictures.h"
#include "file/ProjectFile.h"
#include "render/SheetRenderer.h"
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPainter>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

namespace {

constexpr jk::i16 kSheets[] = {jk::FmtDouble, jk::FmtInside, jk::FmtCdRom};

jk::TextStyle style(int i)
{
    jk::TextStyle s;
    s.fontName = i % 2 ? QStringLiteral("Arial") : QStringLiteral("Times New Roman");
    s.fontSize = jk::i16(8 + i % 10);
    s.bold = (i % 3 == 0);
    s.foreColor = i * 4099;
    s.top = jk::i16(40 * i);
    s.left = jk::i16(25 * i);
    s.width = 2400;
    s.height = 600;
    return s;
}

QString makeProject(const QDir& dir)
{
    jk::ProjectData g;
    g.createTables(jk::TableSizing::NewProject);
    g.sheetComposition = jk::FmtDouble + jk::FmtInside + jk::FmtCdRom;
    g.spineText = QStringLiteral("The complete collection, volume 3");
    const QString values = dir.filePath(QStringLiteral("names.txt"));
    QFile v(values);
    v.open(QIODevice::WriteOnly);
    for (int i = 1; i <= 200; ++i) v.write(QStringLiteral("Name number %1\r\n").arg(i).toUtf8());
    v.close();
    for (int i = 1; i <= 100; ++i)
        g.freeText.append({kSheets[i % 3], QStringLiteral("Free text block %1\r\nSecond line\r\n").arg(i), style(i)});
    for (int i = 1; i <= 50; ++i) {
        g.pageText.append({jk::FmtDouble, QStringLiteral("%1. Track title number %1\r\n").arg(i), style(i)});
        QImage img(800, 600, QImage::Format_RGB32);
        img.fill(QColor::fromHsv((i * 7) % 360, 200, 220));
        QPainter(&img).drawEllipse(100, 100, 600, 400);
        const QString pic = dir.filePath(QStringLiteral("picture%1.jpg").arg(i));
        img.save(pic, "JPG");
        g.pictures.append({kSheets[i % 3], pic, jk::i16(10 * i), jk::i16(20 * i), 1440, 1080, 1});
        g.charFields.append({kSheets[i % 3], values, QString(), style(i)});
        g.numFields.append({kSheets[i % 3], jk::i16(1 + i % 4), 1, false, style(i)});
    }
    const QString path = dir.filePath(QStringLiteral("full.prj"));
    jk::writeProject(g, path);
    return path;
}

void BM_OpenToSheetsShown(benchmark::State& state)
{
    QTemporaryDir dir;
    FakeServices fake;
    fake.install();
    jk::sheet::setImageLoader([](const QString& p) { return jk::platform::loadPicture(p); });
    MainWindow w;
    startUp(w, QString());
    const QString path = makeProject(QDir(dir.path()));
    for (auto _ : state) {
        // Every open starts cold, as after starting the program.
        jk::sheet::clearPictureCache();
        w.project().setModified(false);
        w.project().setFilePath(path);
        w.openProject();
        for (QMdiSubWindow* s : w.mdiArea()->subWindowList()) s->widget()->repaint();
        QCoreApplication::processEvents();
    }
    state.counters["sheets"] = double(w.mdiArea()->subWindowList().size());
}
BENCHMARK(BM_OpenToSheetsShown)->Unit(benchmark::kMillisecond)->Iterations(5);

}  // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
