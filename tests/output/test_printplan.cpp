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

// "2t 2 | 4" : the sheets of each page ("t" the text page), pages split by " | ".
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

constexpr int kAllSheets = FmtSimple | FmtDouble | FmtInside | FmtCdRom;

}  // namespace

class TestPrintPlan : public QObject {
    Q_OBJECT
    QTemporaryDir tmp;

    DiscStockList parse(const QByteArray& bytes) { return parseDiscStocks(bytes); }

private Q_SLOTS:
    void selectionCallsItsSheetPrinters_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("printed");
        // A project holding every sheet, one copy of the selection: which
        // sheets come out, in which order.
        QTest::newRow("booklet") << 1 << "2t 2 L";
        QTest::newRow("disc") << 2 << "8";
        QTest::newRow("booklet, disc") << 3 << "2t 2 L | 8";
        QTest::newRow("front") << 4 << "1";
        QTest::newRow("front, booklet") << 5 << "";
        QTest::newRow("disc, front") << 6 << "8 | 1";
        QTest::newRow("booklet, disc, front") << 7 << "";
        QTest::newRow("inlay") << 8 << "4";
        QTest::newRow("booklet, inlay") << 9 << "2t 2 L | 4";
        QTest::newRow("disc, inlay") << 10 << "8 | 4";
        QTest::newRow("booklet, disc, inlay") << 11 << "2t 2 L | 8 | 4";
        QTest::newRow("front, inlay") << 12 << "1 4";
        QTest::newRow("front, booklet, inlay") << 13 << "";
        QTest::newRow("disc, front, inlay") << 14 << "8 | 1 4";
        QTest::newRow("all four") << 15 << "";
        QTest::newRow("jacket weight") << 16 << "2t 2 L";
        QTest::newRow("nothing") << 0 << "";
        QTest::newRow("out of range") << 17 << "";
    }
    void selectionCallsItsSheetPrinters()
    {
        QFETCH(int, code);
        QFETCH(QString, printed);
        const PrintPlan p = plan(RunKind::Selected, kAllSheets, code, 1);
        QCOMPARE(describe(p), printed);
        // Each sheet's fields step once, after its last label.
        for (const PlannedPage& page : p.pages)
            for (const Placement& pl : page.placements) QCOMPARE(pl.advanceAfter, !pl.textPage);
    }

    void projectRunsPageByPage()
    {
        const int full = FmtDouble | FmtInside | FmtCdRom;
        // Project order front, booklet, jacket, inlay, disc; a new page per copy.
        QCOMPARE(describe(plan(RunKind::Project, full, 11, 2)), "2t 2 L | 4 | 8 | 2t 2 L | 4 | 8");
        const PrintPlan p = plan(RunKind::Project, full, 11, 2);
        QCOMPARE(p.pages[4].placements[0].copy, 2);
        // Front cover and inlay share a portrait page, the inlay 13 cm down;
        // the picture page sits 12.1 cm right of the text page.
        const PrintPlan cover = plan(RunKind::Project, FmtSimple | FmtInside, 12, 1);
        QCOMPARE(describe(cover), "1 4");
        QCOMPARE(cover.pages[0].placements[1].posMm, QPointF(0, 130));
        QCOMPARE(cover.pages[0].placements[0].origin, Origin::PrintableArea);
        QCOMPARE(p.pages[0].placements[1].posMm, QPointF(121, 0));
        // The disc label at the stock's offsets, from the paper's corner.
        const Placement& disc = p.pages[2].placements[0];
        QVERIFY(disc.disc);
        QCOMPARE(disc.origin, Origin::Paper);
        QCOMPARE(disc.posMm, QPointF(45.0, 19.9));
        QVERIFY(p.printsDisc() && !cover.printsDisc());
        // Fields advance per copy, not per sheet.
        for (const PlannedPage& page : p.pages)
            for (const Placement& pl : page.placements) QVERIFY(!pl.advanceAfter);
    }

    void copyRules()
    {
        // A project with only a disc label prints one copy, without asking.
        QVERIFY(!asksForCopies(RunKind::Project, 2));
        QCOMPARE(describe(plan(RunKind::Project, FmtCdRom, 2, 5)), "8");
        QVERIFY(asksForCopies(RunKind::Selected, 2));
        QCOMPARE(describe(plan(RunKind::Selected, FmtCdRom, 2, 2)), "8 | 8");
        // Current sheet: a lone front cover ends its page, so copies never
        // land on each other; the inlay alone keeps its place.
        QCOMPARE(describe(plan(RunKind::CurrentSheet, FmtSimple | FmtInside, 12, 3, FmtSimple)), "1 | 1 | 1");
        QCOMPARE(plan(RunKind::CurrentSheet, FmtSimple | FmtInside, 12, 1, FmtInside).pages[0].placements[0].posMm,
                 QPointF(0, 130));
        // A sheet that does not print under the project's code, or is absent.
        QCOMPARE(describe(plan(RunKind::CurrentSheet, FmtSimple | FmtDouble, 5, 1, FmtSimple)), "");
        QCOMPARE(describe(plan(RunKind::CurrentSheet, FmtInside, 8, 1, FmtCdRom)), "");
        QCOMPARE(plan(RunKind::Project, kAllSheets, 11, 0).pages.size(), std::size_t(0));
        // A paper jacket project prints its two pages like a booklet.
        QCOMPARE(describe(plan(RunKind::Project, FmtJacket, 16, 2)), "16t 16 L | 16t 16 L");
    }

    void shippedStockList()
    {
        const DiscStockList list = readDiscStocks(QStringLiteral(JK_SOURCE_DIR "/data/CDRTYPE.TXT"));
        QVERIFY2(list.problems.isEmpty(), qPrintable(list.problems.join('\n')));
        QVERIFY(list.stocks.size() > 10);  // more than the old names table held
        const auto avery = findDiscStock(list.stocks, QStringLiteral("avery l6015 (a4, 2 per sheet)"));
        QVERIFY(avery);
        // Label centre 105.0, 79.9 mm on the paper, minus half the canvas.
        QCOMPARE(avery->xMm, 45.0);
        QCOMPARE(avery->yMm, 19.9);
        QVERIFY(avery->description.contains("A4") && avery->description.contains("41.0 mm"));
        for (const DiscStock& s : list.stocks) {
            const bool letter = s.name.contains("US-Letter");
            const QSizeF paper = letter ? QSizeF(215.9, 279.4) : s.name.contains("A4") ? QSizeF(210, 297) : QSizeF(135, 295);
            QVERIFY2(discFitsPaper(s, paper), qPrintable(s.name));
        }
    }

    void hostileStockLists()
    {
        QCOMPARE(readDiscStocks(tmp.filePath("missing.txt")).stocks.size(), std::size_t(0));
        QVERIFY(!readDiscStocks(tmp.filePath("missing.txt")).problems.isEmpty());
        QVERIFY(!parse("").problems.isEmpty());
        QVERIFY(!parse("\r\n\r\n").problems.isEmpty());
        // Good records around bad ones survive; each bad one is named.
        const DiscStockList mixed = parse("\"Good, one\",45.5,20,\"A4, 2 per sheet\"\r\n"
                                          "Three,1,2\r\n"
                                          "Words,left,top,\"desc\"\r\n"
                                          "Far left,-500,10,\"desc\"\r\n"
                                          "Far down,10,99999,\"desc\"\r\n"
                                          "Not a number,nan,inf,\"desc\"\r\n"
                                          ",10,10,\"no name\"\r\n"
                                          "Five,1,2,3,4\r\n"
                                          "Last,7,8,plain\r\n");
        QCOMPARE(mixed.stocks.size(), std::size_t(2));
        QCOMPARE(mixed.stocks[0].name, QStringLiteral("Good, one"));
        QCOMPARE(mixed.stocks[0].xMm, 45.5);
        QCOMPARE(mixed.stocks[0].description, QStringLiteral("A4, 2 per sheet"));
        QCOMPARE(mixed.stocks[1].name, QStringLiteral("Last"));
        QCOMPARE(mixed.stocks[1].yMm, 8.0);
        QCOMPARE(mixed.problems.size(), 7);
        QVERIFY(mixed.problems[0].startsWith("line 2:"));
        // A 10 MB line and binary junk: skipped, the good record after the
        // junk still read.
        QByteArray junk(256, '\0');
        for (int i = 0; i < junk.size(); ++i) junk[i] = char(i);
        const DiscStockList binary = parse(junk + "\nAfter,1,2,d\n");
        QCOMPARE(binary.stocks.size(), std::size_t(1));
        QVERIFY(!binary.problems.isEmpty());
        const QString huge = tmp.filePath("huge.txt");
        {
            QFile f(huge);
            QVERIFY(f.open(QIODevice::WriteOnly));
            f.write("Big," + QByteArray(10 * 1024 * 1024, '7') + ",1,d\r\n");
        }
        const DiscStockList big = readDiscStocks(huge);
        QCOMPARE(big.stocks.size(), std::size_t(0));
        QVERIFY(big.problems.size() >= 1);
        // A stock for other paper puts the disc off it.
        QVERIFY(!discFitsPaper({"Letter", 49.8, 16.4, {}}, QSizeF(100, 297)));
        QVERIFY(!discFitsPaper({"High", 45.0, -2.0, {}}, QSizeF(210, 297)));
        QVERIFY(discFitsPaper({"Edge", -1.0, -1.0, {}}, QSizeF(118, 118)));
    }
};

QTEST_GUILESS_MAIN(TestPrintPlan)
#include "test_printplan.moc"
