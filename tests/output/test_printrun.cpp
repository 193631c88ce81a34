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
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

using namespace jk;
using namespace jk::print;
using namespace printfixture;

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
    // Prints into NAME.pdf; the texts of its first `pages` pages, or the failure.
    QStringList print(const PrintPlan& plan, const QString& name, int pages, RunOptions o = {})
    {
        const RunResult r = printRun(project, plan, PrintTarget{{}, tmp.filePath(name + ".pdf")}, o);
        if (r.status != RunResult::Printed) return {QStringLiteral("status %1").arg(int(r.status))};
        QStringList texts;
        for (int i = 1; i <= pages; ++i) texts << pageText(tmp.filePath(name + ".pdf"), i);
        return texts;
    }
    // Prints one page of the selection (with the stock) and rasters it.
    QImage placed(int code, const QString& name, const RunOptions& o)
    {
        const RunResult r = printRun(project, planForProject(project, RunKind::Selected, 1, code, 0, o.stock),
                                     PrintTarget{{}, tmp.filePath(name + ".pdf")}, o);
        return r.status == RunResult::Printed && r.warnings.isEmpty() ? raster(tmp.filePath(name + ".pdf"), 1, tmp.filePath(name))
                                                                      : QImage();
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
        load(numberedBooklet(names), FmtDouble, 1);
        QCOMPARE(copiesWarning(project, 3), QStringLiteral("Copies and values differ ( 3/ 2)"));
        QCOMPARE(copiesWarning(project, 2), QString());

        // Project: copy N shows its own values; the document changes once,
        // after the last page (while the run paints it shows what it showed).
        int painted = 0;
        RunOptions o;
        o.onPage = [&](int page, int) { return numFieldText(project, 1) == "07" && (painted = page + 1); };
        const QStringList t = print(planForProject(project, RunKind::Project, 3), "project", 3, o);
        QCOMPARE(painted, 3);
        QVERIFY2(t.size() == 3 && t[0].contains("07") && t[0].contains("Ann") && t[1].contains("08") && t[1].contains("Bob") &&
                     t[2].contains("09") && t[2].contains("Bob"),
                 qPrintable(t.join(" / ")));
        QCOMPARE(numFieldText(project, 1) + project.charFields().at(1).text, QStringLiteral("10Bob"));
        // Current sheet: every copy the same, nothing advances.
        QCOMPARE(print(planForProject(project, RunKind::CurrentSheet, 2, 0, FmtDouble), "current", 2).filter("10").size(), 2);
        QCOMPARE(numFieldText(project, 1), QStringLiteral("10"));
    }

    void selectedSheetsStepAfterEachSheet()
    {
        const QString abc = tmp.filePath("abc.txt");
        QVERIFY(fixture::writeFile(abc, "A\r\nB\r\nC\r\nD\r\n"));
        load(numberedBooklet({}, FmtDouble | FmtInside), FmtDouble | FmtInside, 9);
        QCOMPARE(project.addCharField({FmtInside, abc, "A", textStyle(300, 3000)}), 1);
        // Booklet then inlay, twice: the booklet's number rises after each
        // booklet, the inlay's value after each inlay.
        const QStringList t = print(planForProject(project, RunKind::Selected, 2, 9), "selected", 4);
        QVERIFY2(t.size() == 4 && t[0].contains("07") && t[1].contains("A") && t[2].contains("08") && t[3].contains("B"),
                 qPrintable(t.join(" / ")));
        QCOMPARE(numFieldText(project, 1) + project.charFields().at(1).text, QStringLiteral("09C"));
    }

    void placementOnTheRaster()
    {
        // Front cover with inlay, booklet, disc label with a black background.
        ProjectData d = emptyProject(FmtSimple | FmtInside | FmtDouble | FmtCdRom);
        d.backgrounds[FmtCdRom].text = "~0";
        load(std::move(d), FmtSimple | FmtInside | FmtDouble | FmtCdRom, 14);
        RunOptions o;
        o.stock = DiscStock{"Test", 45.0, 19.9, {}};
        o.keepBackground = true;
        // Each row: the page, a row (or column) at mm, the stretch searched, and the ink's outer edges.
        struct Span {
            const QImage* page;
            bool row;
            double at, from, to, first, last;
        };
        const QImage cover = placed(12, "cover", o);
        project.setPrintWeights(2);  // disc only, with the disc label's own weight
        const QImage disc = placed(2, "disc", o);
        project.setPrintWeights(1);
        const QImage booklet = placed(1, "booklet", o);
        QVERIFY(std::abs(cover.width() - mmToPx(210)) <= 3 && std::abs(booklet.width() - mmToPx(297)) <= 3);
        const Span spans[] = {
            {&cover, true, 60, 0, 200, 0, 123.0},         // front cover at the corner
            {&cover, false, 60, 0, 125, 0, 119.5},
            {&cover, false, 75, 125, 290, 130.0, 247.5},  // inlay 13 cm down
            // Disc centre at 105.0, 79.9 mm: black from 59.00 mm down to 16.40 mm around it.
            {&disc, true, 79.9, 0, 105, 105 - 59.0, 105 - 16.4},
            {&disc, true, 79.9, 105, 210, 105 + 16.4, 105 + 59.0},
            {&disc, false, 105, 79.9, 297, 79.9 + 16.4, 79.9 + 59.0},
            {&booklet, true, 60, 115, 297, 121.0, 244.0},  // picture page from 12.1 cm, landscape
        };
        for (const Span& s : spans) {
            const auto [first, last] = ink(*s.page, s.row, s.at, s.from, s.to);
            QVERIFY2(std::abs(first - s.first) <= 0.1 && std::abs(last - s.last) <= 0.1,
                     qPrintable(QStringLiteral("%1 at %2: %3 .. %4").arg(s.row ? "row" : "column").arg(s.at).arg(first).arg(last)));
        }
        // Background left out: nothing on the disc page at all, the project untouched.
        o.keepBackground = false;
        project.setPrintWeights(2);
        QCOMPARE(ink(placed(2, "plain", o), true, 79.9, 0, 210).first, pxToMm(-1));
        QCOMPARE(project.background(FmtCdRom).text, QStringLiteral("~0"));
    }

    void oneImageForManyCopiesAndMissingPictures()
    {
        ProjectData d = emptyProject(FmtInside);
        d.pictures.append({FmtInside, writePicture(QDir(tmp.path()), 1, {400, 300}), 500, 500, 2400, 1800, 1});
        d.pictures.append({FmtInside, tmp.filePath("gone.jpg"), 3000, 500, 2400, 1800, 1});
        load(std::move(d), FmtInside, 8);
        const QString pdf = tmp.filePath("images.pdf");
        const RunResult r = printRun(project, planForProject(project, RunKind::Project, 5), PrintTarget{{}, pdf}, {});
        QVERIFY(r.status == RunResult::Printed && r.pages == 5);
        QVERIFY(r.warnings.size() == 1 && r.warnings[0].contains("gone.jpg"));
        QCOMPARE(fixture::readFile(pdf).count("/Subtype /Image"), qsizetype(1));
    }

    void cancelledAndUnwritableRuns()
    {
        load(numberedBooklet(), FmtDouble, 1);
        const QString pdf = tmp.filePath("cancelled.pdf");
        RunOptions o;
        o.onPage = [](int page, int) { return page < 1; };
        QCOMPARE(printRun(project, planForProject(project, RunKind::Project, 3), PrintTarget{{}, pdf}, o).status,
                 RunResult::Cancelled);
        // A target that cannot be written (its folder is a file).
        QVERIFY(fixture::writeFile(tmp.filePath("plain.txt"), "x"));
        const RunResult denied =
            printRun(project, planForProject(project, RunKind::Project, 1), PrintTarget{{}, tmp.filePath("plain.txt/out.pdf")}, {});
        QVERIFY2(denied.status == RunResult::Failed && denied.error.contains("PDF"), qPrintable(denied.error));
        QCOMPARE(numFieldText(project, 1), QStringLiteral("07"));
        // No disc stock for a disc label, and nothing to print.
        project.setSheetComposition(FmtCdRom);
        project.setPrintWeights(2);
        QCOMPARE(print(planForProject(project, RunKind::Project, 1), "cancelled", 0), QStringList("status 2"));
        QCOMPARE(print(planForProject(project, RunKind::Selected, 1, 5), "cancelled", 0), QStringList("status 2"));
        QVERIFY(!QFile::exists(pdf));
    }
};

QTEST_MAIN(TestPrintRun)
#include "test_printrun.moc"
