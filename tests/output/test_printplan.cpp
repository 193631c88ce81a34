// What a print run puts on which page, before anything is drawn: the sheet
// printers each selection calls, pages and their orientation per run kind,
// the copy rules; and the disc-label stock list, hostile files included.
#include "output/DiscStock.h"
#include "output/PrintPlan.h"
#include "model/Records.h"
#include <QTemporaryDir>
#include <QtTest>

using namespace jk;
using namespace jk::print;

namespace {

// "2t 2 L | 4" : the sheets of each page ("t" the text page, "L" landscape), pages split by " | ".
QString describe(const PrintPlan& plan)
{
    QStringList pages;
    for (const PlannedPage& page : plan.pages) {
        QStringList labels;
        for (const Placement& p : page.placements) labels << QString::number(p.sheet) + (p.textPage ? "t" : "");
        pages << labels.join(u' ') + (page.orientation == QPageLayout::Landscape ? " L" : "");
    }
    return pages.join(QStringLiteral(" | "));
}

PrintPlan plan(RunKind kind, int sheets, int code, int copies, int current = 0)
{
    return planRun({kind, sheets, code, current, copies, QPointF(45.0, 19.9)});
}

}  // namespace

class TestPrintPlan : public QObject {
    Q_OBJECT
    QTemporaryDir tmp;

private Q_SLOTS:
    void selectionCallsItsSheetPrinters()
    {
        // A project holding every sheet, one copy of selection code 0..17:
        // which sheets come out, in which order ("" for the codes that print nothing).
        const char* printed[] = {"", "2t 2 L", "8", "2t 2 L | 8", "1", "", "8 | 1", "", "4", "2t 2 L | 4", "8 | 4",
                                 "2t 2 L | 8 | 4", "1 4", "", "8 | 1 4", "", "2t 2 L", ""};
        for (int code = 0; code < 18; ++code) {
            const PrintPlan p = plan(RunKind::Selected, FmtSimple | FmtDouble | FmtInside | FmtCdRom, code, 1);
            QVERIFY2(describe(p) == printed[code], qPrintable(QStringLiteral("%1: %2").arg(code).arg(describe(p))));
            // Each sheet's fields step once, after its last label.
            for (const PlannedPage& page : p.pages)
                for (const Placement& pl : page.placements) QCOMPARE(pl.advanceAfter, !pl.textPage);
        }
    }

    void projectRunsAndCopyRules()
    {
        // Project order booklet, inlay, disc; a new page per copy; the disc
        // label at the stock's offsets from the paper's corner.
        const PrintPlan p = plan(RunKind::Project, FmtDouble | FmtInside | FmtCdRom, 11, 2);
        QCOMPARE(describe(p), "2t 2 L | 4 | 8 | 2t 2 L | 4 | 8");
        QCOMPARE(p.pages[4].placements[0].copy, 2);
        const Placement& disc = p.pages[2].placements[0];
        QVERIFY(disc.disc && disc.origin == Origin::Paper && disc.posMm == QPointF(45.0, 19.9) && p.printsDisc());
        // Fields advance per copy, not per sheet.
        for (const PlannedPage& page : p.pages)
            for (const Placement& pl : page.placements) QVERIFY(!pl.advanceAfter);
        const PrintPlan cover = plan(RunKind::Project, FmtSimple | FmtInside, 12, 1);
        QVERIFY(describe(cover) == "1 4" && !cover.printsDisc());
        QCOMPARE(cover.pages[0].placements[0].origin, Origin::PrintableArea);

        // A project with only a disc label prints one copy, without asking.
        QVERIFY(!asksForCopies(RunKind::Project, 2) && asksForCopies(RunKind::Selected, 2));
        QCOMPARE(describe(plan(RunKind::Project, FmtCdRom, 2, 5)), "8");
        QCOMPARE(describe(plan(RunKind::Selected, FmtCdRom, 2, 2)), "8 | 8");
        // Current sheet: a lone front cover ends its page, so copies never
        // land on each other; the inlay alone keeps its place.
        QCOMPARE(describe(plan(RunKind::CurrentSheet, FmtSimple | FmtInside, 12, 3, FmtSimple)), "1 | 1 | 1");
        QCOMPARE(plan(RunKind::CurrentSheet, FmtSimple | FmtInside, 12, 1, FmtInside).pages[0].placements[0].posMm,
                 cover.pages[0].placements[1].posMm);
        // A sheet that does not print under the project's code, or is absent; no copies.
        QCOMPARE(describe(plan(RunKind::CurrentSheet, FmtSimple | FmtDouble, 5, 1, FmtSimple)), "");
        QCOMPARE(describe(plan(RunKind::CurrentSheet, FmtInside, 8, 1, FmtCdRom)), "");
        QCOMPARE(describe(plan(RunKind::Project, FmtDouble, 11, 0)), "");
        // A paper jacket project prints its two pages like a booklet.
        QCOMPARE(describe(plan(RunKind::Project, FmtJacket, 16, 2)), "16t 16 L | 16t 16 L");
    }

    void dialogRules()
    {
        // The copies box: nearest whole number, halves to even; no number, 0.
        const std::pair<const char*, std::optional<int>> copies[] = {
            {"2.5", 2}, {"3.5", 4}, {" 3 copies", 3}, {"abc", 0}, {"", 0}, {"-2", 0}, {".6", 1}, {"99999", std::nullopt}};
        for (const auto& [text, expected] : copies) QVERIFY2(copiesFromText(text) == expected, text);
        // The selection boxes by the project's sheets: only those that can
        // print together are offered (booklet and disc alone: nothing).
        const std::tuple<int, int, int> boxes[] = {{1, 1, 14}, {9, 9, 6}, {14, 14, 1}, {3, 0, 15}, {16, 0, 15}};
        for (const auto& [weights, checked, disabled] : boxes) {
            QCOMPARE(selectionBoxes(weights).checked, checked);
            QCOMPARE(selectionBoxes(weights).disabled, disabled);
        }
    }

    void shippedStockList()
    {
        const DiscStockList list = readDiscStocks(QStringLiteral(JK_SOURCE_DIR "/data/CDRTYPE.TXT"));
        QVERIFY2(list.problems.isEmpty(), qPrintable(list.problems.join('\n')));
        QVERIFY(list.stocks.size() > 10);
        // Label centre 105.0, 79.9 mm on the paper, minus half the canvas.
        const auto avery = findDiscStock(list.stocks, QStringLiteral("avery l6015 (a4, 2 per sheet)"));
        QVERIFY(avery && avery->xMm == 45.0 && avery->yMm == 19.9 && avery->description.contains("41.0 mm"));
        for (const DiscStock& s : list.stocks) {
            const bool letter = s.name.contains("US-Letter");
            const QSizeF paper = letter ? QSizeF(215.9, 279.4) : s.name.contains("A4") ? QSizeF(210, 297) : QSizeF(135, 295);
            QVERIFY2(discFitsPaper(s, paper), qPrintable(s.name));
        }
        // A stock for other paper puts the disc off it.
        QVERIFY(!discFitsPaper({"Letter", 49.8, 16.4, {}}, QSizeF(100, 297)));
        QVERIFY(!discFitsPaper({"High", 45.0, -2.0, {}}, QSizeF(210, 297)));
        QVERIFY(discFitsPaper({"Edge", -1.0, -1.0, {}}, QSizeF(118, 118)));
    }

    void hostileStockLists()
    {
        QVERIFY(!readDiscStocks(tmp.filePath("missing.txt")).problems.isEmpty());
        QVERIFY(!parseDiscStocks("").problems.isEmpty() && !parseDiscStocks("\r\n\r\n").problems.isEmpty());
        // Good records around bad ones (and binary junk) survive; each bad one is named.
        QByteArray junk(256, '\0');
        for (int i = 0; i < junk.size(); ++i) junk[i] = char(i);
        const DiscStockList mixed = parseDiscStocks("\"Good, one\",45.5,20,\"A4, 2 per sheet\"\r\nThree,1,2\r\n"
                                                    "Words,left,top,\"desc\"\r\nFar left,-500,10,\"desc\"\r\n"
                                                    "Far down,10,99999,\"desc\"\r\nNot a number,nan,inf,\"desc\"\r\n"
                                                    ",10,10,\"no name\"\r\nFive,1,2,3,4\r\n" + junk + "\nLast,7,8.25,plain\r\n");
        QCOMPARE(mixed.stocks.size(), std::size_t(2));
        QCOMPARE(mixed.stocks[0].name + mixed.stocks[0].description, QStringLiteral("Good, oneA4, 2 per sheet"));
        QVERIFY(mixed.stocks[0].xMm == 45.5 && mixed.stocks[1].name == "Last" && mixed.stocks[1].yMm == 8.25);
        QCOMPARE(mixed.problems.size(), 9);  // seven bad records, two junk lines
        QVERIFY(mixed.problems[0].startsWith("line 2:"));
        // A 10 MB line.
        const QString huge = tmp.filePath("huge.txt");
        {
            QFile f(huge);
            QVERIFY(f.open(QIODevice::WriteOnly));
            f.write("Big," + QByteArray(10 * 1024 * 1024, '7') + ",1,d\r\n");
        }
        const DiscStockList big = readDiscStocks(huge);
        QVERIFY(big.stocks.empty() && !big.problems.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestPrintPlan)
#include "test_printplan.moc"
