// Where the parts of a sheet lie and what presses meet, and the background
// texts, without widgets.
#include "render/SheetRenderer.h"
#include <QtTest>

using namespace jk::sheet;

class TestSheetLayout : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void partsOfTheSheets()
    {
        for (const jk::FormatInfo& f : jk::formats()) {
            const int code = f.code;
            // On screen at real size: 15 twips to the pixel.
            const QRect px = canvasRectPixels(code), twips = canvasRectTwips(code);
            QVERIFY(qAbs(px.width() * 15 - twips.width()) <= 15 && qAbs(px.height() * 15 - twips.height()) <= 15);
            QVERIFY(qAbs(px.left() * 15 - twips.left()) <= 15);
            // The text page covers the whole canvas of the formats that have one.
            const QRect canvas(QPoint(0, 0), twips.size());
            QVERIFY(textPageRect(code).isEmpty() || textPageRect(code).contains(canvas));
            QCOMPARE(!spineRect(code, Spine::Left).isEmpty(), code == jk::FmtInside);
        }
        // The inlay's spines: the right one touches the 15 cm edge, both are
        // clipped at the bottom.
        const QRect left = spineRect(jk::FmtInside, Spine::Left), right = spineRect(jk::FmtInside, Spine::Right);
        QCOMPARE(left.topLeft(), QPoint(0, 0));
        QVERIFY(qAbs(right.left() + right.width() - cmToTwips(15)) < 5);
        QVERIFY(left.height() > canvasRectTwips(jk::FmtInside).height() && right.height() == left.height());

        // A shown text page answers presses for its own blocks only.
        jk::Project project;
        jk::TextRecord block{jk::FmtDouble, QStringLiteral("Track 1"), {}};
        block.style.left = 100, block.style.top = 200, block.style.width = 1000, block.style.height = 300;
        const int b = project.addText(true, block);
        RenderOptions o;
        o.textPage = true;
        const Hit hit = hitTest(project, jk::FmtDouble, o, objectRectTwips(project, jk::FmtDouble, {jk::ObjKind::PageText, b}).center());
        QVERIFY(hit.kind == Hit::Object && hit.ref == (jk::ObjectRef{jk::ObjKind::PageText, b}));
        QCOMPARE(hitTest(project, jk::FmtDouble, o, {2000, 150}).kind, Hit::Canvas);  // beside the block
        QCOMPARE(hitTest(project, jk::FmtInside, RenderOptions{}, {100, 3000}).kind, Hit::Panel);
    }

    void backgroundTexts()
    {
        QCOMPARE(parseBackground(QString()).kind, Background::None);
        // "~" and a decimal colour, read like the old Val(): no number is black.
        const std::pair<const char*, int> colours[] = {{"~255", 255}, {"~16711680", 16711680}, {"~", 0},
                                                       {"~abc", 0},   {"~ ", 0},               {"~ 65280xyz", 65280}};
        for (const auto& [text, colour] : colours)
            QVERIFY2(parseBackground(text).kind == Background::Colour && parseBackground(text).colour == colour, text);
        const Background pic = parseBackground("C:\\PICS\\LOGO.BMP");
        QVERIFY(pic.kind == Background::Picture && pic.file == QStringLiteral("C:\\PICS\\LOGO.BMP"));
        // Windows colours have red in the low byte.
        QCOMPARE(winColor(255), QColor(255, 0, 0));
        QCOMPARE(toWinColor(QColor(1, 2, 3)), 0x030201);
        QCOMPARE(spineLine("ROCK", " "), QStringLiteral("ROCK"));
        QCOMPARE(spineLine("ROCK", "007"), QStringLiteral("ROCK 007"));
    }
};

QTEST_MAIN(TestSheetLayout)
#include "test_sheetlayout.moc"
