// The scan panel's listing of a folder of 20,000 files, sizes and dates on:
// it runs while the dialog waits, so it must stay well under half a second.
#include "sources/disc/DiscListing.h"
#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

static void BM_ListFolder20000(benchmark::State& state)
{
    QTemporaryDir dir;
    for (int i = 0; i < 20000; ++i) QFile(dir.filePath(QStringLiteral("track %1.wav").arg(i))).open(QIODevice::WriteOnly);
    for (auto _ : state) benchmark::DoNotOptimize(jk::sources::listFolder(dir.path(), {false, true, true}));
}
BENCHMARK(BM_ListFolder20000)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
