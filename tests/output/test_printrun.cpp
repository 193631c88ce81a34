// Print runs into PDF files, read back with poppler: the text each copy
// shows and what the fields show afterwards, where labels land on a
// 600-dpi raster, the disc mask, one image object for many copies, and
// runs that are cancelled or cannot write.
#include "Fixture.h"
#include "PrintProjects.h"
#include "output/PrintRun.h"
#include "model/Numbering.h"
#include "model/Project.h"
#include <QImageReader>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

using namespace jk;
using namespace jk::print;

namespace {

constexpr double kDpi = 600;
double pxToMm(double px) { return px * 25.4 / kDpi; }
int mmToPx(double mm) { return int(mm / 25.4 * kDpi); }

QString run(const QString& program, const QStringList& args)
{
    QProcess p;
    p.start(program, args);
    p.waitForFinished(30000);
    return QString::fromUtf8(p.readAllStandardOutput());
}

// The text of each page.
QStringList pageTexts(const QString& pdf, int pages)
{
    QStringList texts;
    for (int i = 1; i <= pages; ++i)
        texts << run("pdftotext", {"-f", QString::number(i), "-l", QString::number(i), pdf, "-"}).simplified();
    return texts;
}

QImage raster(const QString& pdf, int page, const QString& stem)
{
    run("pdftoppm", {"-r", QString::number(kDpi), "-gray", "-png", "-singlefile", "-f", QString::number(page), "-l",
                     QString::number(page), pdf, stem});
    return QImage(stem + ".png");
}

bool dark(const QImage& img, int x, int y) { return qGray(img.pixel(x, y)) < 128; }

// Outer edges of the ink along a row (x) or a column (y) between two
// positions in millimetres: first dark pixel's start, last dark pixel's end.
std::pair<double, double> inkAlongRow(const QImage& img, double yMm, double fromMm, double toMm)
{
    const int y = mmToPx(yMm);
    int first = -1, last = -1;
    for (int x = std::max(0, mmToPx(fromMm)); x < std::min(img.width(), mmToPx(toMm)); ++x)
        if (dark(img, x, y)) {
            if (first < 0) first = x;
            last = x;
        }
    return {pxToMm(first), pxToMm(last + 1)};
}
std::pair<double, double> inkAlongColumn(const QImage& img, double xMm, double fromMm, double toMm)
{
    const int x = mmToPx(xMm);
    int first = -1, last = -1;
    for (int y = std::max(0, mmToPx(fromMm)); y < std::min(img.height(), mmToPx(toMm)); ++y)
        if (dark(img, x, y)) {
            if (first < 0) first = y;
            last = y;
        }
    return {pxToMm(first), pxToMm(last + 1)};
}

}  // namespace

class TestPrintRun : public QObject {
    Q_OBJECT
    QTemporaryDir tmp;
    Project project;

    void load(ProjectData d, int sheets, int weights)
    {
        project.load(std::move(d));
        project.setSheetComposition(sheets);
        project.setPrintWeights(weights);
    }
    // A booklet with a two-digit number at 7 and, when given, a character
    // field stepping through a value file.
    void numberedBooklet(const QString& valueFile = {}, int sheets = FmtDouble, int weights = 1)
    {
        ProjectData d = printfixture::emptyProject(sheets);
        d.numFields.append({FmtDouble, 2, 7, false, printfixture::textStyle(300, 5000, 1200, 400)});
        if (!valueFile.isEmpty()) d.charFields.append({FmtDouble, valueFile, "Ann", printfixture::textStyle(300, 3000)});
        load(std::move(d), sheets, weights);
    }
    RunResult print(const PrintPlan& plan, const QString& pdf, RunOptions o = {})
    {
        return printRun(project, plan, PrintTarget{{}, pdf}, o);
    }

private Q_SLOTS:
    void initTestCase()
    {
        if (QStandardPaths::findExecutable("pdftotext").isEmpty() || QStandardPaths::findExecutable("pdftoppm").isEmpty())
            QSKIP("poppler-utils are not installed");
        QImageReader::setAllocationLimit(0);  // 600-dpi pages
    }
    void init() { fixture::resetApp(); }

    void fieldsAdvancePerCopy()
    {
        const QString names = tmp.filePath("names.txt");
        QVERIFY(fixture::writeFile(names, "Ann\r\nBob\r\n"));
        appSetup().texts.messages[std::size_t(Msg::CopiesDifferFromValues)] = "Copies and values differ";
        numberedBooklet(names);
        QCOMPARE(copiesWarning(project, 3), QStringLiteral("Copies and values differ ( 3/ 2)"));
        QCOMPARE(copiesWarning(project, 2), QString());

        // Project: copy N shows its own values; the document changes once.
        const QString pdf = tmp.filePath("project.pdf");
        int painted = 0;
        RunOptions o;
        o.onPage = [&](int page, int) {
            // While the run paints, the document shows what it showed.
            if (numFieldText(project, 1) != "07") return false;
            painted = page + 1;
            return true;
        };
        const RunResult r = print(planForProject(project, RunKind::Project, 3), pdf, o);
        QCOMPARE(r.status, RunResult::Printed);
        QCOMPARE(painted, 3);
        const QStringList texts = pageTexts(pdf, 3);
        QVERIFY2(texts[0].contains("07") && texts[0].contains("Ann"), qPrintable(texts[0]));
        QVERIFY2(texts[1].contains("08") && texts[1].contains("Bob"), qPrintable(texts[1]));
        QVERIFY2(texts[2].contains("09") && texts[2].contains("Bob"), qPrintable(texts[2]));
        QCOMPARE(numFieldText(project, 1), QStringLiteral("10"));
        QCOMPARE(project.charFields().at(1).text, QStringLiteral("Bob"));

        // Current sheet: every copy the same, nothing advances.
        const QString current = tmp.filePath("current.pdf");
        QCOMPARE(print(planForProject(project, RunKind::CurrentSheet, 2, 0, FmtDouble), current).status, RunResult::Printed);
        const QStringList same = pageTexts(current, 2);
        QVERIFY(same[0].contains("10") && same[1].contains("10"));
        QCOMPARE(numFieldText(project, 1), QStringLiteral("10"));
    }

    void selectedSheetsStepAfterEachSheet()
    {
        const QString abc = tmp.filePath("abc.txt");
        QVERIFY(fixture::writeFile(abc, "A\r\nB\r\nC\r\nD\r\n"));
        numberedBooklet({}, FmtDouble | FmtInside, 9);
        QCOMPARE(project.addCharField({FmtInside, abc, "A", printfixture::textStyle(300, 3000)}), 1);
        // Booklet then inlay, twice: the booklet's number rises after each
        // booklet, the inlay's value after each inlay.
        const QString pdf = tmp.filePath("selected.pdf");
        QCOMPARE(print(planForProject(project, RunKind::Selected, 2, 9), pdf).status, RunResult::Printed);
        const QStringList t = pageTexts(pdf, 4);
        QVERIFY2(t[0].contains("07") && t[1].contains("A") && t[2].contains("08") && t[3].contains("B"),
                 qPrintable(t.join(" / ")));
        QCOMPARE(numFieldText(project, 1), QStringLiteral("09"));
        QCOMPARE(project.charFields().at(1).text, QStringLiteral("C"));
    }

    void placementOnTheRaster()
    {
        // Front cover with inlay, booklet, disc label with a black background.
        ProjectData d = printfixture::emptyProject(FmtSimple | FmtInside | FmtDouble | FmtCdRom);
        d.backgrounds[FmtCdRom].text = "~0";
        load(std::move(d), FmtSimple | FmtInside | FmtDouble | FmtCdRom, 14);
        const QString pdf = tmp.filePath("placed.pdf");
        RunOptions o;
        o.stock = DiscStock{"Test", 45.0, 19.9, {}};
        o.keepBackground = true;
        const RunResult r = print(planForProject(project, RunKind::Selected, 1, 12, 0, o.stock), pdf, o);
        QCOMPARE(r.status, RunResult::Printed);
        QVERIFY(r.warnings.isEmpty());
        auto near = [](double got, double want) { return std::abs(got - want) <= 0.1; };
        auto edges = [](std::pair<double, double> e) { return QStringLiteral("%1 .. %2").arg(e.first).arg(e.second); };

        const QImage page = raster(pdf, 1, tmp.filePath("cover"));
        QVERIFY(std::abs(page.width() - mmToPx(210)) <= 3);  // A4 portrait
        const auto coverRow = inkAlongRow(page, 60, 0, 200);
        QVERIFY2(near(coverRow.first, 0) && near(coverRow.second, 123.0), qPrintable(edges(coverRow)));
        const auto coverColumn = inkAlongColumn(page, 60, 0, 125);
        QVERIFY2(near(coverColumn.first, 0) && near(coverColumn.second, 119.5), qPrintable(edges(coverColumn)));
        const auto inlayColumn = inkAlongColumn(page, 75, 125, 290);
        QVERIFY2(near(inlayColumn.first, 130.0) && near(inlayColumn.second, 247.5), qPrintable(edges(inlayColumn)));

        // Disc only: with the disc label's own weight.
        project.setPrintWeights(2);
        const QString disc = tmp.filePath("disc.pdf");
        QCOMPARE(print(planForProject(project, RunKind::Selected, 1, 2, 0, o.stock), disc, o).status, RunResult::Printed);
        const QImage d2 = raster(disc, 1, tmp.filePath("disc"));
        // Centre at 105.0, 79.9 mm: black from 59.00 mm down to 16.40 mm
        // around it, white over the hole and outside the rim.
        const auto left = inkAlongRow(d2, 79.9, 0, 105);
        const auto right = inkAlongRow(d2, 79.9, 105, 210);
        QVERIFY2(near(105 - left.first, 59.0) && near(105 - left.second, 16.4), qPrintable(edges(left)));
        QVERIFY2(near(right.first - 105, 16.4) && near(right.second - 105, 59.0), qPrintable(edges(right)));
        const auto down = inkAlongColumn(d2, 105, 79.9, 297);
        QVERIFY2(near(down.first - 79.9, 16.4) && near(down.second - 79.9, 59.0), qPrintable(edges(down)));

        // Background left out: nothing on the disc page at all.
        o.keepBackground = false;
        QCOMPARE(print(planForProject(project, RunKind::Selected, 1, 2, 0, o.stock), disc, o).status, RunResult::Printed);
        const auto none = inkAlongRow(raster(disc, 1, tmp.filePath("plain")), 79.9, 0, 210);
        QCOMPARE(none.first, pxToMm(-1));
        QCOMPARE(project.background(FmtCdRom).text, QStringLiteral("~0"));

        // Booklet: text page at 0, picture page from 12.1 cm, landscape.
        project.setPrintWeights(1);
        const QString booklet = tmp.filePath("booklet.pdf");
        QCOMPARE(print(planForProject(project, RunKind::Selected, 1, 1), booklet).status, RunResult::Printed);
        const QImage b = raster(booklet, 1, tmp.filePath("booklet"));
        QVERIFY(std::abs(b.width() - mmToPx(297)) <= 3);  // A4 landscape
        const auto picturePage = inkAlongRow(b, 60, 115, 297);
        QVERIFY2(near(picturePage.first, 121.0) && near(picturePage.second, 244.0), qPrintable(edges(picturePage)));
    }

    void oneImageForManyCopiesAndMissingPictures()
    {
        ProjectData d = printfixture::emptyProject(FmtInside);
        d.pictures.append({FmtInside, printfixture::writePicture(QDir(tmp.path()), 1, {400, 300}), 500, 500, 2400, 1800, 1});
        d.pictures.append({FmtInside, tmp.filePath("gone.jpg"), 3000, 500, 2400, 1800, 1});
        load(std::move(d), FmtInside, 8);
        const QString pdf = tmp.filePath("images.pdf");
        const RunResult r = print(planForProject(project, RunKind::Project, 5), pdf);
        QCOMPARE(r.status, RunResult::Printed);
        QCOMPARE(r.pages, 5);
        QCOMPARE(r.warnings.size(), 1);
        QVERIFY(r.warnings[0].contains("gone.jpg"));
        QFile f(pdf);
        QVERIFY(f.open(QIODevice::ReadOnly));
        QCOMPARE(f.readAll().count("/Subtype /Image"), qsizetype(1));
    }

    void cancelledAndUnwritableRuns()
    {
        numberedBooklet();
        const QString pdf = tmp.filePath("cancelled.pdf");
        RunOptions o;
        o.onPage = [](int page, int) { return page < 1; };
        const RunResult r = print(planForProject(project, RunKind::Project, 3), pdf, o);
        QCOMPARE(r.status, RunResult::Cancelled);
        QVERIFY(!QFile::exists(pdf));
        QCOMPARE(numFieldText(project, 1), QStringLiteral("07"));

        // A target that cannot be written (its folder is a file).
        const QString notAFolder = tmp.filePath("plain.txt");
        QVERIFY(fixture::writeFile(notAFolder, "x"));
        const RunResult denied = print(planForProject(project, RunKind::Project, 1), notAFolder + "/out.pdf");
        QCOMPARE(denied.status, RunResult::Failed);
        QVERIFY2(denied.error.contains("PDF"), qPrintable(denied.error));
        QCOMPARE(numFieldText(project, 1), QStringLiteral("07"));
        // No disc stock for a disc label, and nothing to print.
        project.setSheetComposition(FmtCdRom);
        project.setPrintWeights(2);
        QCOMPARE(print(planForProject(project, RunKind::Project, 1), pdf).status, RunResult::Failed);
        QCOMPARE(print(planForProject(project, RunKind::Selected, 1, 5), pdf).status, RunResult::Failed);
        QVERIFY(!QFile::exists(pdf));
    }
};

QTEST_MAIN(TestPrintRun)
#include "test_printrun.moc"
