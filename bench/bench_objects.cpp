// Opening a full sheet: 100 text blocks and 50 photographs of 1600 x 1200
// pixels restored from the record tables, then painted at real size. The
// first paint decodes each picture once; later paints use the copies kept
// at screen size. Run offscreen: QT_QPA_PLATFORM=offscreen ./bench_objects
#include "ui/sheet/SheetWindow.h"
#include "render/SheetRenderer.h"
#include "ui/sheet/Actions.h"
#include <QApplication>
#include <QLinearGradient>
#include <QPainter>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <memory>

namespace sh = jk::sheet;

namespace {

constexpr int kPictures = 50;
constexpr int kTextBlocks = 100;

// Photographs with real content, so the JPEG decoder has work to do.
QStringList makePictures(const QString& folder)
{
    QStringList files;
    for (int i = 0; i < kPictures; ++i) {
        QImage img(1600, 1200, QImage::Format_RGB32);
        QPainter p(&img);
        QLinearGradient g(0, 0, 1600, 1200);
        g.setColorAt(0, QColor::fromHsv((i * 37) % 360, 200, 230));
        g.setColorAt(1, QColor::fromHsv((i * 37 + 180) % 360, 160, 90));
        p.fillRect(img.rect(), g);
        p.setPen(Qt::white);
        for (int k = 0; k < 60; ++k) p.drawEllipse(QPoint((k * 97 + i * 13) % 1600, (k * 53) % 1200), 40 + k, 30 + k);
        p.end();
        const QString path = folder + QStringLiteral("/photo%1.jpg").arg(i, 2, 10, QLatin1Char('0'));
        img.save(path, "JPG", 90);
        files << path;
    }
    return files;
}

// The project tables of one Simple sheet: pictures in a 10 x 5 grid of
// 690 x 518 twips, text blocks spread over the canvas.
void fillTables(jk::Project& project, const QStringList& files)
{
    project.reset(jk::TableSizing::NewProject);
    for (int i = 0; i < files.size(); ++i) {
        jk::PictureRecord r;
        r.sheet = jk::FmtSimple;
        r.file = files[i];
        r.left = jk::i16((i % 10) * 690);
        r.top = jk::i16((i / 10) * 1300);
        r.width = 690;
        r.height = 518;
        project.addPicture(r);
    }
    const char* const fonts[] = {"Ms Sans Serif", "Arial", "Times New Roman", "Courier New"};
    for (int i = 0; i < kTextBlocks; ++i) {
        jk::TextRecord r;
        r.sheet = jk::FmtSimple;
        r.text = QStringLiteral("Track %1 - a title of some length").arg(i + 1);
        r.style.fontName = QString::fromLatin1(fonts[i % 4]);
        r.style.fontSize = jk::i16(8 + i % 6);
        r.style.bold = (i % 2);
        r.style.foreColor = i * 2621;
        r.style.backStyle = jk::i16(i % 3 == 0);
        r.style.backColor = 0xeeeeee;
        const QSize size = sh::textExtentTwips(r.style, r.text);
        r.style.width = jk::i16(size.width());
        r.style.height = jk::i16(size.height());
        r.style.left = jk::i16((i % 4) * 1700);
        r.style.top = jk::i16((i / 4) * 270);
        project.addText(false, r);
    }
}

struct Fixture {
    QTemporaryDir dir;
    QStringList files = makePictures(dir.path());
    jk::Project project;
    jk::EditorState editor;
    Actions actions;
    SheetDialogs dialogs;
};
Fixture& fixture()
{
    static Fixture f;
    return f;
}

std::unique_ptr<SheetWindow> openSheet()
{
    Fixture& f = fixture();
    auto sheet = std::make_unique<SheetWindow>(f.actions, f.dialogs, f.project, f.editor);
    sheet->initialise(jk::FmtSimple);
    return sheet;
}

}  // namespace

// Open the sheet from the tables and paint it once, from cold caches.
static void BM_RestoreAndFirstPaint(benchmark::State& state)
{
    fillTables(fixture().project, fixture().files);
    int decodes = 0;
    for (auto _ : state) {
        sh::clearPictureCache();
        const int before = sh::pictureDecodeCount();
        auto sheet = openSheet();
        benchmark::DoNotOptimize(sheet->canvas()->grab());
        decodes = sh::pictureDecodeCount() - before;
    }
    state.counters["decodes_per_open"] = decodes;
}
BENCHMARK(BM_RestoreAndFirstPaint)->Unit(benchmark::kMillisecond)->Iterations(5);

// Paint the open sheet again and again (window repaints, selection marks).
static void BM_Repaint(benchmark::State& state)
{
    fillTables(fixture().project, fixture().files);
    sh::clearPictureCache();
    auto sheet = openSheet();
    sheet->canvas()->grab();
    const int before = sh::pictureDecodeCount();
    for (auto _ : state) benchmark::DoNotOptimize(sheet->canvas()->grab());
    state.counters["decodes_while_repainting"] = sh::pictureDecodeCount() - before;
}
BENCHMARK(BM_Repaint)->Unit(benchmark::kMillisecond);

// Select an object and nudge it: one step and the repaint it causes.
static void BM_NudgeAndRepaint(benchmark::State& state)
{
    fillTables(fixture().project, fixture().files);
    sh::clearPictureCache();
    auto sheet = openSheet();
    sheet->canvas()->grab();
    sheet->objectPress({sh::ObjKind::Text, 50}, {});
    fixture().editor.selection.moveMode = true;
    bool right = true;
    for (auto _ : state) {
        right ? sheet->stepRight() : sheet->stepLeft();
        right = !right;
        benchmark::DoNotOptimize(sheet->canvas()->grab());
    }
}
BENCHMARK(BM_NudgeAndRepaint)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    fixture();  // make the pictures before timing anything
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
