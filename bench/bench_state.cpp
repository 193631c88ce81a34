// Start-up work that does not need a window: reading the message file, the
// settings and checking the font cache.
#include "file/FontCache.h"
#include "file/MessageFile.h"
#include "file/Settings.h"
#include <QDir>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

static void BM_LoadMessageFile(benchmark::State& state)
{
    const QString path = QStringLiteral(JK_SOURCE_DIR "/data/Default.msg");
    for (auto _ : state) benchmark::DoNotOptimize(jk::loadMessageFile(path));
}
BENCHMARK(BM_LoadMessageFile);

static void BM_ReadSettings(benchmark::State& state)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("JEWLKIT.INI");
    jk::writeSettings(path, {"/usr/bin/gimp", "/home/me/Pictures", "/home/me/Backgrounds", "/home/me/Covers"});
    for (auto _ : state) benchmark::DoNotOptimize(jk::readSettings(path, QDir::homePath()));
}
BENCHMARK(BM_ReadSettings);

static void BM_FontCacheCheckAndRebuild(benchmark::State& state)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("Fonts.lst");
    QStringList fonts;
    for (int i = 0; i < state.range(0); ++i) fonts << QStringLiteral("Font family number %1").arg(i);
    for (auto _ : state) {
        if (!jk::fontCacheIsCurrent(path, int(fonts.size()) + 1)) jk::writeFontCache(path, fonts);
    }
}
BENCHMARK(BM_FontCacheCheckAndRebuild)->Arg(100)->Arg(2000);

BENCHMARK_MAIN();
