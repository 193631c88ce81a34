// The format geometry, colour parsing and command tables, without widgets.
#include "render/SheetLayout.h"
#include <QtTest>

using namespace jk::sheet;

class TestSheetLayout : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void canvasOfEachFormat_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<QRect>("twips");
        QTest::addColumn<bool>("spines");
        QTest::addColumn<bool>("textPage");
        QTest::newRow("simple") << 1 << QRect(0, 0, 6973, 6775) << false << false;
        QTest::newRow("double") << 2 << QRect(0, 0, 6973, 6775) << false << true;
        QTest::newRow("inside") << 4 << QRect(0, 0, 8504, 6661) << true << false;
        QTest::newRow("cdrom") << 8 << QRect(0, 0, 6803, 6803) << false << false;
        QTest::newRow("jacket") << 16 << QRect(283, 283, 6973, 7087) << false << true;
    }
    void canvasOfEachFormat()
    {
        QFETCH(int, code);
        QFETCH(QRect, twips);
        QFETCH(bool, spines);
        QFETCH(bool, textPage);
        QVERIFY(isFormatCode(code));
        QCOMPARE(canvasRectTwips(code), twips);
        // On screen at real size: 15 twips to the pixel.
        const QRect px = canvasRectPixels(code);
        QVERIFY(qAbs(px.width() * 15 - twips.width()) <= 15);
        QVERIFY(qAbs(px.height() * 15 - twips.height()) <= 15);
        QCOMPARE(px.topLeft(), code == 16 ? QPoint(19, 19) : QPoint(0, 0));
        QCOMPARE(!spineRect(code, Spine::Left).isEmpty(), spines);
        QCOMPARE(!textPageRect(code).isEmpty(), textPage);
        QCOMPARE(formatLayout(code).disc, code == 8);
    }

    void spinesAndTextPage()
    {
        const QRect left = spineRect(4, Spine::Left), right = spineRect(4, Spine::Right);
        QCOMPARE(left, QRect(0, 0, 320, 6790));
        QCOMPARE(right.left() + right.width(), 8500);  // touches the 15 cm edge
        QVERIFY(qAbs(8500 - cmToTwips(15)) < 5);
        QVERIFY(left.height() > canvasRectTwips(4).height());  // clipped at the bottom
        QCOMPARE(spineTextStart(Spine::Left, 6790), QPoint(5, 6590));
        QCOMPARE(spineTextStart(Spine::Right, 6790), QPoint(300, 50));
        // The text page covers the whole canvas of both formats that have one.
        for (int code : {2, 16})
            QVERIFY(textPageRect(code).contains(QRect(QPoint(0, 0), canvasRectTwips(code).size())));
        QVERIFY(!isFormatCode(15) && !isFormatCode(3) && formatLayout(15).code == 0);
    }

    void backgroundTexts()
    {
        QCOMPARE(parseBackground(QString()).kind, Background::None);
        const Background red = parseBackground("~255");
        QCOMPARE(red.kind, Background::Colour);
        QCOMPARE(winColor(red.colour), QColor(255, 0, 0));
        QCOMPARE(winColor(parseBackground("~16711680").colour), QColor(0, 0, 255));
        for (const char* black : {"~", "~abc", "~ "}) {
            QCOMPARE(parseBackground(black).kind, Background::Colour);
            QCOMPARE(parseBackground(black).colour, 0);
        }
        QCOMPARE(parseBackground("~ 65280xyz").colour, 65280);
        const Background pic = parseBackground("C:\\PICS\\LOGO.BMP");
        QCOMPARE(pic.kind, Background::Picture);
        QCOMPARE(pic.file, QStringLiteral("C:\\PICS\\LOGO.BMP"));
        QCOMPARE(toWinColor(QColor(1, 2, 3)), 0x030201);
        QCOMPARE(spineLine("ROCK", " "), QStringLiteral("ROCK"));
        QCOMPARE(spineLine("ROCK", "007"), QStringLiteral("ROCK 007"));
    }

    void boutonsAndWinres()
    {
        // Inlay: spine commands on, text-page toggle off.
        CommandTable t = toolButtonsTable(4, 1);
        QCOMPARE(t.enabled("SSCommand15"), true);
        QCOMPARE(t.enabled("Txtfold"), true);
        QCOMPARE(t.enabled("SSCommand2"), false);
        for (int code : {1, 8}) {
            t = toolButtonsTable(code, 2);
            QCOMPARE(t.enabled("SSCommand14"), true);
            QCOMPARE(t.enabled("Txtfold"), false);
            QCOMPARE(t.enabled("SSCommand2"), std::nullopt);  // left alone
            QCOMPARE(t.pageRequest, 0);
        }
        for (int code : {2, 16}) {
            t = toolButtonsTable(code, 1);
            QCOMPARE(t.enabled("SSCommand14"), true);
            QCOMPARE(t.pageRequest, 1);
            QCOMPARE(t.enabled("SSCommand13"), std::nullopt);
        }
        t = toolButtonsTable(2, 2);
        QCOMPARE(t.enabled("SSCommand14"), false);
        QCOMPARE(t.pageRequest, 2);
        t = toolButtonsTable(16, 2);
        QCOMPARE(t.enabled("SSCommand14"), false);
        QCOMPARE(t.enabled("SSCommand2"), true);
        QCOMPARE(t.pageRequest, 0);

        QCOMPARE(formatCommandsTable(4).pageRequest, 1);
        QCOMPARE(formatCommandsTable(4).enabled("SSCommand2"), false);
        QCOMPARE(formatCommandsTable(2).enabled("SSCommand2"), true);
        QCOMPARE(formatCommandsTable(1).enabled("Txtfold"), false);
        QCOMPARE(formatCommandsTable(8).enable.size(), std::size_t(0));
    }

    void addCommandsAfterClosing()
    {
        const char* const pairs[4][2] = {
            {"AdFrmSimpl", "Taddsimple"}, {"AdFrmDbl", "TaddDbl"}, {"AdFrmIns", "TAddINS"}, {"AdFrmCDR", "TAddCDR"}};
        for (int value = 1; value <= 12; ++value) {
            const CommandTable t = addSheetCommandsTable(value);
            const bool cover = value & 3;
            const bool expected[4] = {!cover, !cover, !(value & 4), !(value & 8)};
            for (int p = 0; p < 4; ++p)
                for (const char* n : pairs[p]) QVERIFY2(t.enabled(n) == expected[p], qPrintable(QString::number(value)));
            QCOMPARE(t.enabled("AddSheet"), true);
            QCOMPARE(t.enabled("removesheet"), value == 1 ? std::optional<bool>(false) : std::nullopt);
        }
        // Beyond 12: a jacket counts as a cover; 24 closes the add menu.
        CommandTable t = addSheetCommandsTable(24);
        QCOMPARE(t.enabled("AddForm"), false);
        QCOMPARE(t.enabled("AdFrmSimpl"), false);
        QCOMPARE(t.enabled("AdFrmIns"), true);
        t = addSheetCommandsTable(0);
        QCOMPARE(t.enabled("AdFrmSimpl"), true);
        QCOMPARE(t.enabled("AdFrmCDR"), true);
    }

    void toolsMenuPerSheet()
    {
        // Tag: FMSimple, FMDouble, FMInside enabled; FMSP, PREVIEW shown.
        const struct {
            int tag;
            bool s, d, i, sp, pv;
        } rows[] = {{1, false, true, true, false, false},
                    {2, true, false, true, false, false},
                    {4, true, true, false, true, false},
                    {8, true, true, true, false, true},
                    {16, false, false, false, false, false}};
        for (const auto& r : rows) {
            const CommandTable t = toolsMenuTable(r.tag);
            QCOMPARE(t.enabled("FMSimple"), r.s);
            QCOMPARE(t.enabled("FMDouble"), r.d);
            QCOMPARE(t.enabled("FMInside"), r.i);
            QCOMPARE(t.shown("FMSP"), r.sp);
            QCOMPARE(t.shown("PREVIEW"), r.pv);
        }
        QCOMPARE(toolsMenuTable(8).enabled("FMCDROM"), false);
    }
};

QTEST_MAIN(TestSheetLayout)
#include "test_sheetlayout.moc"
