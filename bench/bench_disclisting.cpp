// The scan panel's listing of a folder of 20,000 files, sizes and dates on:
// it runs while the dialog waits, so it must stay well under half a second.
// Measured twice: the listing text alone, and the whole panel (the file
// list filled and the text box set) when the user picks that folder.
#include "sources/disc/DiscListing.h"
#include "ui/dialogs/TextBlockDialog.h"
#include "ui/widgets/DriveFolderFile.h"
#include <QApplication>
#include <QCheckBox>
#include <QFile>
#include <QPlainTextEdit>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

namespace {

const QTemporaryDir& folder20000()
{
    static const QTemporaryDir dir = [] {
        QTemporaryDir d;
        for (int i = 0; i < 20000; ++i) QFile(d.filePath(QStringLiteral("track %1.wav").arg(i))).open(QIODevice::WriteOnly);
        return d;
    }();
    return dir;
}

}  // namespace

static void BM_ListFolder20000(benchmark::State& state)
{
    const QString path = folder20000().path();
    for (auto _ : state) benchmark::DoNotOptimize(jk::sources::listFolder(path, {false, true, true}));
}
BENCHMARK(BM_ListFolder20000)->Unit(benchmark::kMillisecond);

static void BM_ScanPanelFolder20000(benchmark::State& state)
{
    TextBlockDialog dialog;
    dialog.show();
    dialog.openScanPanel();
    auto* trio = dialog.findChild<DriveFolderFileTrio*>();
    for (const char* box : {"FILESIZE", "DATETIME"})
        if (auto* c = dialog.findChild<QCheckBox*>(QString::fromLatin1(box))) c->setChecked(true);
    const QString path = folder20000().path();
    for (auto _ : state) {
        trio->setPath(QStringLiteral("/"));
        trio->setPath(path);
        QCoreApplication::processEvents();
    }
    state.counters["lines"] = double(dialog.textInput()->blockCount());
}
BENCHMARK(BM_ScanPanelFolder20000)->Unit(benchmark::kMillisecond)->Iterations(5);

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
