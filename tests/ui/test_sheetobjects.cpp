// Sheet objects inside the main window: creating text blocks and pictures
// through scripted dialogs, restoring a sheet from the records, the selection
// mark and pop-ups, step moves and resizes, stacking, the spine text.
#include "ui/mainwindow/MainWindow.h"
#include "platform/FakeServices.h"
#include "ui/sheet/SheetWindow.h"
#include "render/SheetRenderer.h"
#include "model/Global.h"
#include <QAction>
#include <QMenu>
#include <QToolButton>
#include <QtTest>
#include <deque>

using jk::G;
namespace sh = jk::sheet;
using sh::ObjKind;
using sh::ObjectRef;

namespace {

// One answer of the scripted text dialog: OK with a text, or Cancel; it may
// also write formatting into the block's record, as the dialog does.
struct TextAnswer {
    QString text;
    bool ok = true;
    std::function<void(jk::TextRecord&)> format = {};
    jk::i16 alignment = -1;
};
struct TextCall {
    QString pendingText;
    jk::i16 spineMode = 0;
    jk::i16 block = 0;
    jk::i16 alignment = 0;
};

// The pixel that holds a point given in twips.
QPoint px(QPoint twips) { return {twips.x() / sh::kTwipsPerPixel, twips.y() / sh::kTwipsPerPixel}; }
QColor at(const QImage& img, QPoint twips) { return img.pixelColor(px(twips)); }
bool isWhite(const QColor& c) { return c.red() > 240 && c.green() > 240 && c.blue() > 240; }

// Pixels of the image inside a rectangle of twips that are not white (or
// that pass the test given).
int inkIn(const QImage& img, const QRect& twips, std::function<bool(const QColor&)> test = {})
{
    const QRect area(px(twips.topLeft()), px(twips.bottomRight()));
    int n = 0;
    for (int y = std::max(0, area.top()); y <= std::min(img.height() - 1, area.bottom()); ++y)
        for (int x = std::max(0, area.left()); x <= std::min(img.width() - 1, area.right()); ++x)
            if (test ? test(img.pixelColor(x, y)) : !isWhite(img.pixelColor(x, y))) ++n;
    return n;
}

}  // namespace

class TestSheetObjects : public QObject {
    Q_OBJECT
    FakeServices* fake = nullptr;
    MainWindow* w = nullptr;
    QTemporaryDir tmp;
    std::deque<TextAnswer> textAnswers;
    QList<TextCall> textCalls;
    std::deque<QString> pictureAnswers;
    int pictureCalls = 0;
    QStringList popups;

    QString picture(const QString& name, QSize size, QColor colour)
    {
        const QString path = tmp.filePath(name);
        QImage img(size, QImage::Format_RGB32);
        img.fill(colour);
        img.save(path);
        return path;
    }
    jk::TextRecord block(int sheet, const QString& text, QRect twips, int border = 0)
    {
        jk::TextRecord r;
        r.sheet = jk::i16(sheet);
        r.text = text;
        r.style.fontName = "Arial";
        r.style.fontSize = 10;
        r.style.borderStyle = jk::i16(border);
        r.style.left = jk::i16(twips.left());
        r.style.top = jk::i16(twips.top());
        r.style.width = jk::i16(twips.width());
        r.style.height = jk::i16(twips.height());
        return r;
    }
    int placePicture(int sheet, const QString& file, QRect twips)
    {
        jk::PictureRecord r;
        r.sheet = jk::i16(sheet);
        r.file = file;
        r.left = jk::i16(twips.left());
        r.top = jk::i16(twips.top());
        r.width = jk::i16(twips.width());
        r.height = jk::i16(twips.height());
        return G().pictures.append(r);
    }
    void click(SheetWindow* s, QPoint twips)
    {
        QTest::mouseClick(s->canvas(), Qt::LeftButton, {}, px(twips));
    }
    bool on(const char* name) const
    {
        if (QAction* a = w->action(name)) return a->isEnabled();
        return w->button(name)->isEnabled();
    }
    QImage shot(SheetWindow* s) { return sh::renderImage(s->formatCode(), sh::kScreenDpi, s->renderOptions()); }

private Q_SLOTS:
    void init()
    {
        jk::resetGlobal();
        G().createTables(jk::TableSizing::NewProject);
        G().texts.formatNames = {"Simple", "Double", "Paper jacket", "CD ROM", "Inside"};
        G().texts.fitCaptions = {"Strech to fit", "Actual size"};
        G().texts.messages[27] = "Jewelcase Studio";
        G().texts.messages[40] = "The picture editor could not be started.";
        sh::clearPictureCache();
        fake = new FakeServices;
        fake->install();
        textAnswers.clear();
        textCalls.clear();
        pictureAnswers.clear();
        pictureCalls = 0;
        popups.clear();
        SheetWindow::textDialog = [this] {
            textCalls.append({G().pendingText, G().spineTextMode, G().currentBlock, G().alignmentChoice});
            TextAnswer a = textAnswers.empty() ? TextAnswer{{}, false} : textAnswers.front();
            if (!textAnswers.empty()) textAnswers.pop_front();
            if (a.format && !G().spineTextMode) {
                auto& table = G().pageRequest == 1 ? G().freeText : G().pageText;
                a.format(table.at(G().currentBlock));
            }
            if (a.alignment >= 0) G().alignmentChoice = a.alignment;
            G().textAccepted = (a.ok);
            G().pendingText = a.ok ? a.text : G().spineText;
        };
        SheetWindow::pictureDialog = [this] {
            ++pictureCalls;
            G().chosenPictureFile = pictureAnswers.empty() ? QString() : pictureAnswers.front();
            if (!pictureAnswers.empty()) pictureAnswers.pop_front();
        };
        SheetWindow::showPopup = [this](QMenu* m, const QPoint&) { popups << m->objectName(); };
        w = new MainWindow;
        w->resize(1200, 900);
        w->show();
    }
    void cleanup()
    {
        delete w;
        w = nullptr;
        SheetWindow::textDialog = nullptr;
        SheetWindow::pictureDialog = nullptr;
        SheetWindow::showPopup = nullptr;
        SheetWindow::mayClose = false;
        delete fake;
        fake = nullptr;
    }

    void newTextBlocksTakeTheNextSlotWithTheDefaults()
    {
        w->addSimpleSheet();
        SheetWindow* s = w->activeSheet();
        textAnswers = {{"Hello"}, {"Second"}, {"Third"}};
        w->button("SSCommand12")->click();
        // The block really draws in the default colour (80008: red 0x88,
        // green 0x38, blue 0x01), and nothing lies right of it.
        const jk::TextStyle& first = G().freeText.at(1).style;
        QImage img = shot(s);
        auto defaultInk = [](const QColor& c) { return c.red() > 100 && c.green() < 80 && c.blue() < 30; };
        QVERIFY(inkIn(img, {15, 15, first.width, first.height}, defaultInk) > 10);
        QCOMPARE(inkIn(img, {first.width, 15, 1500, first.height}), 0);
        for (int i = 0; i < 2; ++i) w->button("SSCommand12")->click();
        QCOMPARE(textCalls.size(), 3);
        QCOMPARE(textCalls[0].pendingText, QString());
        QCOMPARE(textCalls[1].block, 2);
        QCOMPARE(textCalls[0].spineMode, false);
        QCOMPARE(G().freeText.count(), 3);

        const jk::TextRecord& r = G().freeText.at(1);
        QCOMPARE(r.sheet, 1);
        QCOMPARE(r.text, QStringLiteral("Hello"));
        QCOMPARE(r.style.fontName, QStringLiteral("Ms Sans Serif"));
        QCOMPARE(r.style.fontSize, 10);
        QCOMPARE(r.style.bold, true);
        QCOMPARE(r.style.italic, 0);
        QCOMPARE(r.style.foreColor, 80008);
        QCOMPARE(r.style.backStyle, 0);
        QCOMPARE(r.style.borderStyle, 0);
        QCOMPARE(QPoint(r.style.left, r.style.top), QPoint(0, 0));
        // Sized to its text in whole pixels: the text fits on one line with
        // less than a pixel to spare, and 9.75 points are 13 pixels.
        const QFontMetricsF fm(sh::textFont(r.style));
        QCOMPARE(sh::textFont(r.style).pixelSize(), 195);
        const double advance = fm.horizontalAdvance("Hello");
        QVERIFY(r.style.width > advance && r.style.width <= advance + 15);
        QCOMPARE(r.style.width % 15, 0);
        QCOMPARE(r.style.height, qCeil(fm.height() / 15) * 15);
        QCOMPARE(G().projectModified, true);

        // Delete block 2 (select it by a click first): the next gets 4.
        G().selectedIndex = 2;
        G().selectedKind = 0;
        G().blockSelector = 1;
        w->action("DelOBJ")->trigger();
        QVERIFY(G().freeText.at(2).isFree());
        textAnswers = {{"Fourth"}};
        w->action("Insertext")->trigger();
        QCOMPARE(G().freeText.count(), 4);
        QCOMPARE(G().freeText.at(4).text, QStringLiteral("Fourth"));
        // A cancelled dialog still takes its slot, and creates nothing.
        textAnswers = {{"never", false}};
        w->action("Insertext")->trigger();
        QCOMPARE(G().freeText.count(), 5);
        QVERIFY(G().freeText.at(5).isFree());
        const std::vector<ObjectRef> shown{{ObjKind::Text, 1}, {ObjKind::Text, 3}, {ObjKind::Text, 4}};
        QCOMPARE(s->stackingOrder(), shown);

        // Formatting chosen in the dialog stays, and sizes the block.
        textAnswers = {{"Big", true, [](jk::TextRecord& rec) {
                            rec.style.fontName = "Arial";
                            rec.style.fontSize = 24;
                            rec.style.italic = true;
                            rec.style.foreColor = 0xff0000;  // blue
                            rec.style.backStyle = 1;
                            rec.style.backColor = 0x00ffff;  // yellow
                            rec.style.borderStyle = 1;
                        }, 2}};
        w->action("Insertext")->trigger();
        const jk::TextRecord& big = G().freeText.at(6);
        QCOMPARE(big.style.fontName, QStringLiteral("Arial"));
        QCOMPARE(big.style.alignment, 2);
        QCOMPARE(big.style.backStyle, 1);
        QCOMPARE(big.style.borderStyle, 1);
        QVERIFY(big.style.height >= 32 * 15);  // 24 points are 32 pixels
        img = shot(s);
        QCOMPARE(at(img, {big.style.width - 30, 30}), QColor(Qt::yellow));
        QCOMPARE(at(img, {big.style.width - 1, big.style.height / 2}), QColor(Qt::black));  // its border

        // The booklet's text page takes text-page blocks.
        w->addBookletSheet();
        w->button("SSCommand2")->click();
        textAnswers = {{"On the page"}};
        w->action("Insertext")->trigger();
        QCOMPARE(G().pageText.count(), 1);
        QCOMPARE(G().pageText.at(1).sheet, 2);
        QCOMPARE(G().freeText.count(), 6);
        // Its top lies 120 twips above the canvas, like the page itself.
        QVERIFY(inkIn(shot(w->sheetOf(2)), QRect(30, 15, G().pageText.at(1).style.width - 30, 60)) > 0);
    }

    void restoringKeepsIndexesAndOwnRecordsOnly()
    {
        const QString blue = picture("blue.png", {20, 20}, Qt::blue);
        const QString green = picture("green.png", {20, 20}, Qt::green);
        G().freeText.append(block(8, "Disc title", {1500, 1500, 2000, 400}));
        G().freeText.append(block(4, "Inlay text", {1500, 2500, 2000, 400}));
        G().freeText.append(jk::TextRecord{});  // deleted
        G().freeText.append(block(8, "Fourth", {1500, 3000, 2000, 400}));
        placePicture(4, green, {3000, 3000, 1500, 1500});  // the inlay's
        placePicture(8, blue, {4500, 4500, 1500, 1500});
        jk::CharFieldRecord c;
        c.sheet = 8;
        c.text = "ABC";
        c.style = block(8, "", {1500, 4000, 1500, 400}).style;
        G().charFields.append(c);
        jk::NumFieldRecord n;
        n.sheet = 8;
        n.digits = 3;
        n.number = 7;
        n.style = block(8, "", {1500, 5000, 1500, 400}).style;
        G().numFields.append(n);
        G().backgrounds[8] = {"~255"};

        w->addDiscSheet();
        SheetWindow* cd = w->sheetOf(8);
        const std::vector<ObjectRef> order{{ObjKind::Picture, 2}, {ObjKind::Text, 1}, {ObjKind::Text, 4},
                                           {ObjKind::CharField, 1}, {ObjKind::NumField, 1}};
        QCOMPARE(cd->stackingOrder(), order);
        QCOMPARE(sh::shownText({ObjKind::NumField, 1}), QStringLiteral("007"));

        const QImage img = shot(cd);
        QCOMPARE(at(img, {100, 100}), QColor(Qt::red));            // "~255" is red
        QCOMPARE(at(img, {5000, 5000}), QColor(Qt::blue));         // its picture
        QCOMPARE(at(img, {3500, 3500}), QColor(Qt::red));          // never the inlay's
        for (int y = 0; y < img.height(); ++y)
            for (int x = 0; x < img.width(); ++x) QVERIFY(img.pixelColor(x, y) != QColor(Qt::green));
        // Text blocks and both fields draw their texts.
        for (int top : {1500, 3000, 4000, 5000}) {
            int dark = 0;
            for (int y = top / 15; y < top / 15 + 20; ++y)
                for (int x = 100; x < 200; ++x) dark += qGray(img.pixel(x, y)) < 60;
            QVERIFY2(dark > 10, qPrintable(QString::number(top)));
        }
        // The inlay shows its own records.
        w->addInlaySheet();
        QCOMPARE(at(shot(w->sheetOf(4)), {3500, 3500}), QColor(Qt::green));
    }

    void pressesMarkAndOfferTheMenus()
    {
        const QString red = picture("red.png", {100, 100}, Qt::red);  // 1500 twips at actual size
        G().freeText.append(block(1, "Block", {1500, 1500, 1500, 600}));
        placePicture(1, red, {2250, 1500, 1500, 1500});  // overlaps the block's right half
        jk::CharFieldRecord c;
        c.sheet = 1;
        c.text = "Name";
        c.style = block(1, "", {300, 4500, 900, 300}).style;
        G().charFields.append(c);
        jk::NumFieldRecord n;
        n.sheet = 1;
        n.digits = 2;
        n.number = 5;
        n.spineLink = 0;
        n.style = block(1, "", {300, 5400, 900, 300}).style;
        G().numFields.append(n);
        w->addSimpleSheet();
        SheetWindow* s = w->activeSheet();
        const ObjectRef text{ObjKind::Text, 1}, pic{ObjKind::Picture, 1};

        // The block was restored after the picture: it is in front.
        G().projectModified = false;
        click(s, {2700, 1800});
        QCOMPARE(popups, QStringList{"PoPlace"});
        QCOMPARE(G().selectedKind, 0);
        QCOMPARE(G().selectedIndex, 1);
        QCOMPARE(G().fieldSubKind, 3);
        QCOMPARE(G().marked, true);
        QCOMPARE(s->shownBorder(text), 1);
        QCOMPARE(G().projectModified, true);
        QVERIFY(on("Medit") && on("copyobj") && on("Cutobj") && on("BTF") && on("CHGOrder") && on("ClipCopy"));
        QVERIFY(!on("Pasteobj"));
        QCOMPARE(at(shot(s), {1500, 1700}), QColor(Qt::black));  // the mark

        // Move mode, then the second click unmarks and ends it.
        w->action("MoveObj")->trigger();
        QVERIFY(G().moveMode && !G().resizeMode);
        QCOMPARE(G().textDestination, 1);
        click(s, {1800, 1800});
        QCOMPARE(popups.size(), 1);
        QCOMPARE(G().marked, false);
        QVERIFY(!G().moveMode && !G().resizeMode);
        QCOMPARE(s->shownBorder(text), 0);

        // The picture's own part: its menu, its mark, the fit caption.
        G().pictures.at(1).displayMode = 2;
        click(s, {3500, 2800});
        QCOMPARE(popups.last(), QStringLiteral("Piplace"));
        QCOMPARE(G().selectedKind, 1);
        QCOMPARE(s->shownBorder(pic), 1);
        QCOMPARE(w->action("PicView")->text(), QStringLiteral("Actual size"));
        G().pictures.at(1).displayMode = 1;
        // Bring it to front: the overlap now belongs to the picture.
        w->button("BTF")->click();
        QCOMPARE(s->stackingOrder().back(), pic);
        click(s, {2700, 1800});  // picture, marked already: unmarks it
        QCOMPARE(G().selectedKind, 1);
        QCOMPARE(s->shownBorder(pic), 0);
        QCOMPARE(at(shot(s), {2700, 1800}), QColor(Qt::red));
        w->action("MSTB")->trigger();
        QCOMPARE(s->stackingOrder().front(), pic);
        click(s, {2700, 1800});
        QCOMPARE(G().selectedKind, 0);

        // Fields: their menus; bring-to-front leaves them where they are.
        click(s, {600, 4600});
        QCOMPARE(popups.last(), QStringLiteral("AAction"));
        QCOMPARE(G().selectedKind, 2);
        QCOMPARE(G().fieldSubKind, 1);
        const auto before = s->stackingOrder();
        w->action("MBTF")->trigger();
        QCOMPARE(s->stackingOrder(), before);
        w->action("AADelete")->trigger();
        QVERIFY(G().charFields.at(1).isFree());
        click(s, {600, 5500});
        QCOMPARE(popups.last(), QStringLiteral("Naction"));
        QCOMPARE(G().fieldSubKind, 2);
        w->action("Nmove")->trigger();
        QVERIFY(G().moveMode);
        w->action("NDelete")->trigger();
        QVERIFY(G().numFields.at(1).isFree());
        QVERIFY(!G().moveMode);

        // A press on the bare canvas leaves nothing to copy or cut.
        click(s, {6000, 6000});
        QVERIFY(!on("copyobj") && !on("ClipCopy") && !on("Cutobj") && !on("clipcut"));
        QCOMPARE(popups, QStringList({"PoPlace", "Piplace", "PoPlace", "AAction", "Naction"}));
    }

    void deselectionReachesOnlyTheFirstFifty()
    {
        for (int i = 1; i <= 55; ++i) {
            const int border = (i == 3 || i == 52) ? 1 : 0;
            G().freeText.append(block(1, QString("B%1").arg(i), {(i % 5) * 1200 + 150, (i / 5) * 600 + 150, 900, 300}, border));
        }
        w->addSimpleSheet();
        SheetWindow* s = w->activeSheet();
        const ObjectRef b3{ObjKind::Text, 3}, b52{ObjKind::Text, 52}, b54{ObjKind::Text, 54};
        QCOMPARE(s->shownBorder(b3), 1);  // restored as stored
        auto centre = [](int i) { return QPoint((i % 5) * 1200 + 600, (i / 5) * 600 + 300); };

        click(s, centre(54));  // marks 54 (above 50)
        QCOMPARE(s->shownBorder(b54), 1);
        QCOMPARE(s->shownBorder(b3), 0);  // the stored border is no longer shown
        QCOMPARE(G().freeText.at(3).style.borderStyle, 1);
        click(s, centre(7));
        QCOMPARE(G().selectedIndex, 7);
        QCOMPARE(s->shownBorder(b54), 1);  // keeps the mark it shows
        QCOMPARE(s->shownBorder(b52), 1);  // keeps its stored border
        QCOMPARE(s->shownBorder({ObjKind::Text, 7}), 1);
        const QImage img = shot(s);
        QCOMPARE(at(img, centre(54) - QPoint(450, 150)), QColor(Qt::black));
        QVERIFY(isWhite(at(img, centre(3) - QPoint(450, 150))));
    }

    void stepsFollowTheBounds()
    {
        G().freeText.append(block(1, "Nudge", {30, 600, 60, 300}));
        G().freeText.append(block(1, "Narrow", {3000, 3000, 40, 300}));
        w->addSimpleSheet();
        SheetWindow* s = w->activeSheet();
        const jk::TextStyle& a = G().freeText.at(1).style;
        const jk::TextStyle& b = G().freeText.at(2).style;
        QCOMPARE(G().nudgeStep, 40);

        G().selectedIndex = 1;
        G().selectedKind = 0;
        w->action("MoveObj")->trigger();
        G().projectModified = false;
        w->button("SSCommand7")->click();
        QCOMPARE(a.left, -10);
        QCOMPARE(G().projectModified, true);
        w->button("SSCommand7")->click();
        QCOMPARE(a.left, -10);  // no step left of the edge
        w->button("RD")->click();
        QCOMPARE(QPoint(a.left, a.top), QPoint(30, 640));
        w->button("LU")->click();
        QCOMPARE(QPoint(a.left, a.top), QPoint(-10, 600));
        w->button("SSCommand4")->click();
        QCOMPARE(a.top, 560);
        QCOMPARE(a.width, 60);  // moving never resizes

        w->action("resObj")->trigger();
        QVERIFY(G().resizeMode && !G().moveMode);
        w->button("SSCommand7")->click();
        QCOMPARE(a.width, 20);
        w->button("SSCommand7")->click();
        QCOMPARE(a.width, 20);
        w->button("RD")->click();
        QCOMPARE(QSize(a.width, a.height), QSize(60, 340));
        QCOMPARE(QPoint(a.left, a.top), QPoint(-10, 560));
        G().selectedIndex = 2;
        w->button("SSCommand7")->click();
        QCOMPARE(b.width, 40);  // not above one step: stays
        w->button("SSCommand5")->click();
        QCOMPARE(b.height, 340);

        // The step box sets the step; deleted objects do not move.
        w->stepChanged("100");
        w->button("SSCommand6")->click();
        QCOMPARE(b.width, 140);
        G().freeText.at(2).text.clear();
        w->button("SSCommand6")->click();
        QCOMPARE(b.width, 140);

        // A picture steps the same way, recorded in its record.
        const int p = placePicture(1, picture("p.png", {10, 10}, Qt::red), {600, 600, 300, 300});
        s->restoreObjects();
        click(s, {750, 750});
        QCOMPARE(G().selectedKind, 1);
        w->action("PicMove")->trigger();
        w->button("RD")->click();
        QCOMPARE(QPoint(G().pictures.at(p).left, G().pictures.at(p).top), QPoint(700, 700));
    }

    void fullTablesRefuseNewObjects()
    {
        w->addSimpleSheet();
        G().freeText.setCount(100);
        w->action("Insertext")->trigger();
        QCOMPARE(textCalls.size(), 0);
        QCOMPARE(G().freeText.count(), 100);
        QCOMPARE(fake->messages.calls.size(), 1);
        QVERIFY(fake->messages.calls[0].text.contains("100"));
        QCOMPARE(fake->messages.calls[0].icon, jk::platform::Icon::Warning);

        G().pictures.setCount(50);
        pictureAnswers = {picture("x.png", {5, 5}, Qt::red)};
        w->button("SSCommand13")->click();
        QCOMPARE(pictureCalls, 0);
        QCOMPARE(G().pictures.count(), 50);
        QCOMPARE(fake->messages.calls.size(), 2);
        QVERIFY(fake->messages.calls[1].text.contains("50"));
    }

    void picturesAndBackgrounds()
    {
        w->addSimpleSheet();
        SheetWindow* s = w->activeSheet();
        const QString small = picture("small.png", {40, 30}, Qt::blue);
        const QString big = picture("big.png", {1000, 1000}, Qt::green);

        pictureAnswers = {small};
        w->action("InsertPic")->trigger();
        QCOMPARE(G().pictureDialogPurpose, 1);
        QCOMPARE(G().pictures.count(), 1);
        const jk::PictureRecord& p1 = G().pictures.at(1);
        QCOMPARE(p1.file, small);
        QCOMPARE(p1.sheet, 1);
        QCOMPARE(QRect(p1.left, p1.top, p1.width, p1.height), QRect(0, 0, 600, 450));
        QCOMPARE(p1.displayMode, 1);
        QCOMPARE(at(shot(s), {300, 200}), QColor(Qt::blue));

        // A large picture is fitted into the canvas.
        pictureAnswers = {big};
        w->button("SSCommand13")->click();
        const jk::PictureRecord& p2 = G().pictures.at(2);
        QCOMPARE(p2.width, p2.height);
        QVERIFY(p2.height <= 6775 && p2.height > 6700);
        // Cancelled: nothing, and no slot taken.
        w->action("InsertPic")->trigger();
        QCOMPARE(G().pictures.count(), 2);

        // An unreadable file is still an object, shown as missing on
        // screen, not drawn in output, and read only once.
        const QString empty = tmp.filePath("empty.jpg");
        QFile(empty).open(QIODevice::WriteOnly);
        pictureAnswers = {empty};
        const int before = sh::pictureDecodeCount();
        w->action("InsertPic")->trigger();
        const jk::PictureRecord& p3 = G().pictures.at(3);
        QCOMPARE(QSize(p3.width, p3.height), QSize(1440, 1440));
        QCOMPARE(at(shot(s), {720, 200}), QColor(235, 235, 235));
        shot(s);
        QCOMPARE(sh::pictureDecodeCount(), before + 1);
        QVERIFY(at(sh::renderImage(1, 96), {1000, 1400}) != QColor(235, 235, 235));

        // Delete the missing one through its menu.
        click(s, {1000, 1400});
        QCOMPARE(G().selectedIndex, 3);
        w->action("DelPic")->trigger();
        QVERIFY(G().pictures.at(3).isFree());

        // Change the small one, which the big one covers until sent back:
        // the new file takes its place and size.
        click(s, {100, 100});
        QCOMPARE(G().selectedIndex, 2);
        w->button("CHGOrder")->click();
        click(s, {100, 100});
        QCOMPARE(G().selectedIndex, 1);
        pictureAnswers = {big};
        w->action("PicChg")->trigger();
        QCOMPARE(G().pictures.at(1).file, big);
        QCOMPARE(G().pictures.at(1).width, 600);
        QCOMPARE(G().pictureChangeRequest, false);

        // The external editor gets the file; a failure is reported.
        G().picturesEditor = "/opt/paint/bin/paint";
        fake->programs.existing << G().picturesEditor;
        w->action("Picedit")->setEnabled(true);  // as the settings reader does
        w->action("Picedit")->trigger();
        QCOMPARE(fake->programs.started, QStringList{G().picturesEditor});
        QCOMPARE(fake->programs.calls[0].args, QStringList{big});
        fake->programs.failStart = true;
        w->action("Picedit")->trigger();
        QCOMPARE(fake->messages.calls.size(), 1);
        QCOMPARE(fake->messages.calls[0].text, G().texts.msg(jk::Msg::EditorNotStarted));
        QCOMPARE(fake->messages.calls[0].icon, jk::platform::Icon::Information);

        // A plain colour as background: "~255" is red; as a picture, a block.
        pictureAnswers = {"~255", "~65280"};
        w->button("SSCommand14")->click();
        QCOMPARE(G().pictureDialogPurpose, 0);
        QCOMPARE(G().backgrounds[1].text, QStringLiteral("~255"));
        QCOMPARE(at(sh::renderImage(1, 96), {6900, 6700}), QColor(Qt::red));
        w->action("InsertPic")->trigger();
        QCOMPARE(at(shot(s), {700, 700}), QColor(Qt::green));
    }

    void picturesAreDecodedOnceAndScaledOnce()
    {
        const QString file = picture("photo.png", {800, 600}, Qt::darkCyan);
        for (int i = 0; i < 4; ++i) placePicture(1, file, {i * 1500, 0, 1200, 900});
        w->addSimpleSheet();
        SheetWindow* s = w->activeSheet();
        const int before = sh::pictureDecodeCount();
        for (int i = 0; i < 3; ++i) {
            shot(s);
            s->canvas()->grab();
        }
        QCOMPARE(sh::pictureDecodeCount(), before + 1);
        // The screen copy is the rectangle's size, not the file's.
        QCOMPARE(sh::pictureAtSize(file, {80, 60}).size(), QSize(80, 60));
        QCOMPARE(sh::pictureAtSize(file, {1600, 1200}).size(), QSize(800, 600));
        QCOMPARE(sh::pictureDecodeCount(), before + 1);
    }

    void spineTextThroughTheDialog()
    {
        G().spineFont.foreColor = 0xff0000;  // blue
        G().spineFont.size = 12;
        w->addInlaySheet();
        SheetWindow* s = w->activeSheet();
        textAnswers = {{"GREATEST HITS"}};
        G().projectModified = false;
        w->button("SSCommand15")->click();
        QCOMPARE(textCalls.size(), 1);
        QCOMPARE(textCalls[0].pendingText, QStringLiteral("ZILCH"));
        QCOMPARE(textCalls[0].spineMode, true);
        QCOMPARE(G().spineText, QStringLiteral("GREATEST HITS"));
        QCOMPARE(G().fieldSubKind, 3);
        QCOMPARE(G().projectModified, true);
        QCOMPARE(G().spineTitle, QStringLiteral("GREATEST HITS  "));
        QCOMPARE(s->spineCaption(), G().spineTitle);
        auto blue = [](const QColor& c) { return c.blue() > 150 && c.red() < 110; };
        QVERIFY(inkIn(shot(s), {0, 0, 320, 6600}, blue) > 20);
        QVERIFY(inkIn(shot(s), {8180, 0, 320, 6600}, blue) > 20);

        // Cancel keeps the old text.
        textAnswers = {{"ignored", false}};
        w->action("Txtfold")->trigger();
        QCOMPARE(G().spineText, QStringLiteral("GREATEST HITS"));
    }

    void editingATextBlock()
    {
        G().freeText.append(block(1, "Old", {600, 600, 1500, 300}));
        w->addSimpleSheet();
        SheetWindow* s = w->activeSheet();
        click(s, {700, 700});
        textAnswers = {{"New text", true, [](jk::TextRecord& r) { r.style.fontName = "Courier New"; }, 1}};
        w->action("EditObj")->trigger();
        QCOMPARE(textCalls.last().pendingText, QStringLiteral("Old"));
        QCOMPARE(textCalls.last().block, 1);
        const jk::TextRecord& r = G().freeText.at(1);
        QCOMPARE(r.text, QStringLiteral("New text"));
        QCOMPARE(r.style.alignment, 1);
        QCOMPARE(r.style.fontName, QStringLiteral("Courier New"));
        QCOMPARE(r.style.width, 1500);  // keeps its size

        // Cancel after a font change keeps the font, not the text.
        textAnswers = {{"Lost", false, [](jk::TextRecord& rec) { rec.style.fontSize = 20; }}};
        w->action("EditObj")->trigger();
        QCOMPARE(r.text, QStringLiteral("New text"));
        QCOMPARE(r.style.fontSize, 20);
    }
};

QTEST_MAIN(TestSheetObjects)
#include "test_sheetobjects.moc"
