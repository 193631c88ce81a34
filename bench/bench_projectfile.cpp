// The project file with a full project: 100 free text blocks, 50 text-page
// blocks, 50 pictures, 50 character fields and 50 numeric fields on five
// sheets. Measures the writer (bytes and the atomic save) and the reader.
#include "BenchProject.h"
#include "file/ProjectFile.h"
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

namespace {

using jkbench::fullProject;

void BM_ProjectFileBytes(benchmark::State& state)
{
    QTemporaryDir dir;
    const jk::ProjectData g = fullProject(QDir(dir.path()));
    qint64 size = 0;
    for (auto _ : state) {
        const QByteArray b = jk::projectFileBytes(g);
        size = b.size();
        benchmark::DoNotOptimize(b.data());
    }
    state.counters["bytes"] = double(size);
}
BENCHMARK(BM_ProjectFileBytes)->Unit(benchmark::kMicrosecond);

void BM_WriteProject(benchmark::State& state)
{
    QTemporaryDir dir;
    const jk::ProjectData g = fullProject(QDir(dir.path()));
    const QString path = dir.filePath(QStringLiteral("full.prj"));
    for (auto _ : state) {
        QString error;
        if (!jk::writeProject(g, path, &error)) state.SkipWithError(qPrintable(error));
    }
}
BENCHMARK(BM_WriteProject)->Unit(benchmark::kMicrosecond);

void BM_ReadProject(benchmark::State& state)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("full.prj"));
    jk::writeProject(fullProject(QDir(dir.path())), path);
    for (auto _ : state) {
        jk::ProjectData d;
        const jk::ProjectReadResult r = jk::readProject(path, d);
        if (r.errors) state.SkipWithError("the project did not read cleanly");
    }
}
BENCHMARK(BM_ReadProject)->Unit(benchmark::kMicrosecond);

// Pictures saved on another machine: every name is looked up beside the project.
void BM_ReadProjectWindowsPaths(benchmark::State& state)
{
    QTemporaryDir dir;
    jk::ProjectData g = fullProject(QDir(dir.path()));
    for (int i = 1; i <= g.pictures.count(); ++i)
        g.pictures.at(i).file = QStringLiteral("C:\\PICS\\PICTURE%1.PNG").arg(i);
    const QString path = dir.filePath(QStringLiteral("full.prj"));
    jk::writeProject(g, path);
    for (auto _ : state) {
        jk::ProjectData d;
        jk::readProject(path, d);
        if (!d.pictures.at(50).file.startsWith(dir.path())) state.SkipWithError("a picture was not found");
    }
}
BENCHMARK(BM_ReadProjectWindowsPaths)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
