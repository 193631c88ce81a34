// Sheet objects inside the main window: text blocks and pictures made
// through the scripted dialogs, the selection mark and pop-ups, step moves
// and resizes, stacking, full tables and the spine text.
#include "UiFixture.h"
#include <QtTest>

using namespace fixture;
using jk::ObjKind;
using jk::ObjectRef;
namespace sh = jk::sheet;

class TestSheetObjects : public QObject {
    Q_OBJECT
    std::unique_ptr<SheetGui> gui;
    MainWindow* w = nullptr;
    QTemporaryDir tmp;

    jk::Project& doc() { return gui->project(); }
    jk::Selection& sel() { return w->editor().selection; }
    QColor at(SheetWindow* s, QPoint twips) { return gui->shot(s).pixelColor(px(twips)); }
    QString picture(const QString& name, QSize size, QColor colour) { return pictureFile(tmp.filePath(name), size, colour); }
    static std::optional<PictureChoice> file(const QString& f) { return PictureChoice{f, {}}; }

private Q_SLOTS:
    void init()
    {
        gui = std::make_unique<SheetGui>();
        w = gui->w.get();
    }
    void cleanup() { gui.reset(); }

    void newTextBlocksTakeTheNextSlotWithTheDefaults()
    {
        w->addSimpleSheet();
        SheetWindow* s = w->activeSheet();
        gui->dialogs.texts = {textOk("Hello"), textOk("Second"), textOk("Third")};
        w->button("SSCommand12")->click();

        // No font chosen: the label's defaults, at the corner, sized to the
        // text in whole pixels.
        const jk::TextRecord& r = doc().freeText().at(1);
        QVERIFY(r.sheet == 1 && r.text == "Hello" && r.style.left == 0 && r.style.top == 0);
        const QFontMetricsF fm(sh::textFont(r.style));
        const double advance = fm.horizontalAdvance("Hello");
        QVERIFY(r.style.width > advance && r.style.width <= advance + 15 && r.style.width % 15 == 0);
        QVERIFY(r.style.height == qCeil(fm.height() / 15) * 15 && doc().isModified());
        // It draws in that colour (80008: red 0x88, green 0x38, blue 0x01),
        // and nothing lies right of it.
        const QImage img = gui->shot(s);
        auto defaultInk = [](const QColor& c) { return c.red() > 100 && c.green() < 80 && c.blue() < 30; };
        QVERIFY(inkIn(img, {15, 15, r.style.width, r.style.height}, defaultInk) > 10);
        QCOMPARE(inkIn(img, {r.style.width, 15, 1500, r.style.height}), 0);

        // Slots are never reused; a cancelled dialog still takes one.
        for (int i = 0; i < 2; ++i) w->button("SSCommand12")->click();
        sel().object = {ObjKind::Text, 2};
        w->action("DelOBJ")->trigger();
        QVERIFY(doc().freeText().at(2).isFree());
        gui->dialogs.texts = {textOk("Fourth")};
        w->action("Insertext")->trigger();
        QCOMPARE(doc().freeText().at(4).text, QStringLiteral("Fourth"));
        w->action("Insertext")->trigger();
        QVERIFY(doc().freeText().count() == 5 && doc().freeText().at(5).isFree());
        QCOMPARE(s->stackingOrder(), (std::vector<ObjectRef>{{ObjKind::Text, 1}, {ObjKind::Text, 3}, {ObjKind::Text, 4}}));

        // Formatting chosen in the dialog stays and sizes the block.
        TextEditResult big = textOk("Big");  // blue on yellow, with a border
        big.style = {.fontName = "Arial", .fontSize = 24, .foreColor = 0xff0000, .backStyle = 1, .borderStyle = 1,
                     .backColor = 0x00ffff, .alignment = 2};
        gui->dialogs.texts = {big};
        w->action("Insertext")->trigger();
        const jk::TextStyle& b = doc().freeText().at(6).style;
        QVERIFY(b.fontName == "Arial" && b.alignment == 2 && b.height >= 32 * 15);  // 24 points are 32 pixels
        QVERIFY(at(s, {b.width - 30, 30}) == Qt::yellow && at(s, {b.width - 1, b.height / 2}) == Qt::black);  // its border

        // The booklet's text page takes text-page blocks; the page's top
        // lies 120 twips above the canvas, and so does the block's.
        w->addBookletSheet();
        w->button("SSCommand2")->click();
        gui->dialogs.texts = {textOk("On the page")};
        w->action("Insertext")->trigger();
        QVERIFY(doc().pageText().at(1).sheet == 2 && doc().freeText().count() == 6);
        QVERIFY(inkIn(gui->shot(w->sheetOf(2)), QRect(30, 15, doc().pageText().at(1).style.width - 30, 60)) > 0);
    }

    void editingATextBlock()
    {
        doc().addText(false, textAt(1, "Old", {600, 600, 1500, 300}));
        w->addSimpleSheet();
        click(w->activeSheet(), {700, 700});
        TextEditResult edit = textOk("New text");
        edit.style = doc().freeText().at(1).style;
        edit.style.fontName = "Courier New";
        edit.style.alignment = 1;
        gui->dialogs.texts = {edit};
        w->action("EditObj")->trigger();
        QVERIFY(gui->dialogs.textRequests.last().text == "Old" && gui->dialogs.textRequests.last().style.fontName == "Arial");
        const jk::TextRecord& r = doc().freeText().at(1);
        // It keeps its size.
        QVERIFY(r.text == "New text" && r.style.fontName == "Courier New" && r.style.alignment == 1 && r.style.width == 1500);

        // Cancel keeps a font change but neither the text nor the alignment.
        TextEditResult cancel{.text = "Lost", .style = r.style};
        cancel.style.fontSize = 20;
        cancel.style.alignment = 2;
        gui->dialogs.texts = {cancel};
        w->action("EditObj")->trigger();
        QVERIFY(r.text == "New text" && r.style.fontSize == 20 && r.style.alignment == 1);
    }

    void pressesMarkAndOfferTheMenus()
    {
        doc().addNumField(numAt(1, 2, 5, false, {300, 5400, 900, 300}));
        doc().addCharField(charAt(1, {}, "Name", {300, 4500, 900, 300}));
        doc().addText(false, textAt(1, "Block", {1500, 1500, 1500, 600}));
        // 100 pixels are 1500 twips; it overlaps the block's right half.
        doc().addPicture(pictureAt(1, picture("red.png", {100, 100}, Qt::red), {2250, 1500, 1500, 1500}));
        w->addSimpleSheet();
        SheetWindow* s = w->activeSheet();
        const ObjectRef text{ObjKind::Text, 1}, pic{ObjKind::Picture, 1};
        // Restored in the order pictures, blocks, character and numeric fields.
        QCOMPARE(s->stackingOrder(), (std::vector<ObjectRef>{pic, text, {ObjKind::CharField, 1}, {ObjKind::NumField, 1}}));

        doc().setModified(false);
        click(s, {2700, 1800});
        QCOMPARE(sel().object, text);
        QVERIFY(sel().marked && s->shownBorder(text) == 1 && doc().isModified());
        QVERIFY(gui->enabled("copyobj") && gui->enabled("BTF") && !gui->enabled("Pasteobj"));
        QCOMPARE(at(s, {1500, 1700}), QColor(Qt::black));  // the mark

        // Move mode; a second click unmarks and ends it, without a menu.
        w->action("MoveObj")->trigger();
        click(s, {1800, 1800});
        QVERIFY(gui->popups.shown.size() == 1 && !sel().marked && !sel().moveMode && s->shownBorder(text) == 0);

        // The picture: its menu and its mark.
        click(s, {3500, 2800});
        QVERIFY(sel().object == pic && s->shownBorder(pic) == 1);
        // In front, the overlap belongs to the picture; a press on a marked
        // picture unmarks it.
        w->button("BTF")->click();
        click(s, {2700, 1800});
        QVERIFY(sel().object == pic && s->shownBorder(pic) == 0 && at(s, {2700, 1800}) == Qt::red);
        w->action("MSTB")->trigger();
        QCOMPARE(s->stackingOrder().front(), pic);
        click(s, {2700, 1800});
        QCOMPARE(sel().object, text);

        // A field: its menu; stacking leaves fields where they are.
        click(s, {600, 4600});
        QCOMPARE(sel().object, (ObjectRef{ObjKind::CharField, 1}));
        const auto before = s->stackingOrder();
        w->action("MBTF")->trigger();
        QCOMPARE(s->stackingOrder(), before);
        w->action("AADelete")->trigger();
        QVERIFY(doc().charFields().at(1).isFree());

        // A press on the bare canvas leaves nothing to copy or cut.
        click(s, {6000, 6000});
        QVERIFY(!gui->enabled("copyobj") && !gui->enabled("ClipCopy") && !gui->enabled("Cutobj"));
        QCOMPARE(gui->popups.shown, QStringList({"PoPlace", "Piplace", "PoPlace", "AAction"}));
    }

    void stepsFollowTheBounds()
    {
        doc().addText(false, textAt(1, "Nudge", {30, 600, 60, 300}));
        doc().addText(false, textAt(1, "Narrow", {3000, 3000, 40, 300}));
        w->addSimpleSheet();
        SheetWindow* s = w->activeSheet();
        const jk::TextStyle& a = doc().freeText().at(1).style;
        const jk::TextStyle& b = doc().freeText().at(2).style;

        // A move stops once past the edge.
        sel().object = {ObjKind::Text, 1};
        w->action("MoveObj")->trigger();
        doc().setModified(false);
        const auto press = [&](const char* button, QRect want) {
            w->button(button)->click();
            QCOMPARE(QRect(a.left, a.top, a.width, a.height), want);
        };
        // Moving never resizes.
        press("SSCommand7", {-10, 600, 60, 300});
        QVERIFY(doc().isModified());
        press("SSCommand7", {-10, 600, 60, 300});
        press("RD", {30, 640, 60, 300});
        press("LU", {-10, 600, 60, 300});
        press("SSCommand4", {-10, 560, 60, 300});

        // A resize stops at one step; a size not above one step stays.
        w->action("resObj")->trigger();
        press("SSCommand7", {-10, 560, 20, 300});
        press("SSCommand7", {-10, 560, 20, 300});
        press("RD", {-10, 560, 60, 340});
        sel().object.index = 2;
        w->button("SSCommand7")->click();
        w->button("SSCommand5")->click();
        QVERIFY(b.width == 40 && b.height == 340);

        // The step box sets the step; deleted objects do not move.
        w->stepChanged("100");
        w->button("SSCommand6")->click();
        doc().remove({ObjKind::Text, 2});
        w->button("SSCommand6")->click();
        QCOMPARE(b.width, 140);

        // A picture steps the same way.
        const int p = doc().addPicture(pictureAt(1, picture("p.png", {10, 10}, Qt::red), {600, 600, 300, 300}));
        s->restoreObjects();
        click(s, {750, 750});
        QCOMPARE(sel().object, (ObjectRef{ObjKind::Picture, p}));
        w->action("PicMove")->trigger();
        w->button("RD")->click();
        QCOMPARE(QPoint(doc().pictures().at(p).left, doc().pictures().at(p).top), QPoint(700, 700));
    }

    void fullTablesRefuseNewObjects()
    {
        w->addSimpleSheet();
        // The last free slot is still taken; then a clear refusal, no dialog.
        while (doc().freeText().count() < doc().freeText().capacity() - 1) doc().addText(false, {});
        gui->dialogs.texts = {textOk("Last")};
        w->action("Insertext")->trigger();
        QCOMPARE(doc().freeText().at(100).text, QStringLiteral("Last"));
        w->action("Insertext")->trigger();
        QVERIFY(gui->dialogs.textRequests.size() == 1 && gui->fake->messages.calls.size() == 1);
        QVERIFY(gui->fake->messages.calls[0].text.contains("100") && gui->fake->messages.calls[0].icon == jk::platform::Icon::Warning);

        while (!doc().pictures().full()) doc().addPicture({});
        w->button("SSCommand13")->click();
        QVERIFY(gui->dialogs.pictureRequests.isEmpty() && gui->fake->messages.calls.size() == 2);
    }

    void picturesAndBackgrounds()
    {
        w->addSimpleSheet();
        SheetWindow* s = w->activeSheet();
        const QString small = picture("small.png", {40, 30}, Qt::blue);
        const QString big = picture("big.png", {1000, 1000}, Qt::green);

        // A picture comes at its own size, one pixel to 15 twips.
        gui->dialogs.pictures = {file(small), file(big)};
        w->action("InsertPic")->trigger();
        QCOMPARE(gui->dialogs.pictureRequests, QList<PicturePurpose>{PicturePurpose::Picture});
        const jk::PictureRecord& p1 = doc().pictures().at(1);
        QVERIFY(p1.file == small && p1.displayMode == 1);
        QCOMPARE(QRect(p1.left, p1.top, p1.width, p1.height), QRect(0, 0, 600, 450));
        QCOMPARE(at(s, {300, 200}), QColor(Qt::blue));
        // A large one is fitted into the canvas; Cancel takes no slot.
        w->button("SSCommand13")->click();
        const jk::PictureRecord& p2 = doc().pictures().at(2);
        QVERIFY(p2.width == p2.height && p2.height <= 6775 && p2.height > 6700);
        w->action("InsertPic")->trigger();
        QCOMPARE(doc().pictures().count(), 2);

        // An unreadable file is still an object: an inch square shown as
        // missing on screen, not drawn in output, and read only once.
        const QString empty = tmp.filePath("empty.jpg");
        QVERIFY(writeFile(empty, {}));
        gui->dialogs.pictures = {file(empty)};
        const int decoded = sh::pictureDecodeCount();
        w->action("InsertPic")->trigger();
        const jk::PictureRecord& p3 = doc().pictures().at(3);
        QVERIFY(p3.width == 1440 && p3.height == 1440 && at(s, {720, 200}) == QColor(235, 235, 235));
        gui->shot(s);
        QCOMPARE(sh::pictureDecodeCount(), decoded + 1);
        QVERIFY(sh::renderImage(doc(), 1, 96).pixelColor(px({1000, 1400})) != QColor(235, 235, 235));
        click(s, {1000, 1400});
        QCOMPARE(sel().object, (ObjectRef{ObjKind::Picture, 3}));
        w->action("DelPic")->trigger();
        QVERIFY(doc().pictures().at(3).isFree());

        // Another file takes the place and size of the old one.
        sel().object = {ObjKind::Picture, 1};
        gui->dialogs.pictures = {file(big)};
        w->action("PicChg")->trigger();
        QVERIFY(doc().pictures().at(1).file == big && doc().pictures().at(1).width == 600);

        // The external editor gets the file; a failure is reported.
        jk::appSetup().settings.picturesEditor = "/opt/paint/bin/paint";
        gui->fake->programs.existing << "/opt/paint/bin/paint";
        w->action("Picedit")->setEnabled(true);  // as the settings reader does
        w->action("Picedit")->trigger();
        QVERIFY(gui->fake->programs.started == QStringList{"/opt/paint/bin/paint"} && gui->fake->programs.calls[0].args == QStringList{big});
        gui->fake->programs.failStart = true;
        w->action("Picedit")->trigger();
        QVERIFY(gui->fake->messages.calls.size() == 1 && gui->fake->messages.calls[0].icon == jk::platform::Icon::Information);

        // Plain colours: "~255" as the background is red; as a picture, a block.
        gui->dialogs.pictures = {PictureChoice{{}, 255}, PictureChoice{{}, 65280}};
        w->button("SSCommand14")->click();
        QVERIFY(gui->dialogs.pictureRequests.last() == PicturePurpose::Background && doc().background(1).text == "~255");
        QCOMPARE(sh::renderImage(doc(), 1, 96).pixelColor(px({6900, 6700})), QColor(Qt::red));
        w->action("InsertPic")->trigger();
        QCOMPARE(at(s, {700, 700}), QColor(Qt::green));
    }

    void spineTextThroughTheDialog()
    {
        jk::SpineFont font;
        font.foreColor = 0xff0000;  // blue
        font.size = 12;
        doc().setSpineFont(font);
        w->addInlaySheet();
        SheetWindow* s = w->activeSheet();
        TextEditResult answer = textOk("GREATEST HITS");
        answer.spineFont = font;
        gui->dialogs.texts = {answer};
        doc().setModified(false);
        w->button("SSCommand15")->click();
        QVERIFY(gui->dialogs.textRequests[0].mode == TextEditRequest::Mode::Spine && doc().isModified());
        QCOMPARE(doc().spineText(), QStringLiteral("GREATEST HITS"));
        QCOMPARE(s->spineCaption(), QStringLiteral("GREATEST HITS  "));

        // The left spine reads upward from near its bottom, the right one
        // downward from its top.
        const QImage img = gui->shot(s);
        auto blue = [](const QColor& c) { return c.blue() > 150 && c.red() < 110; };
        QVERIFY(inkIn(img, {0, 4200, 320, 2400}, blue) > 20);
        QCOMPARE(inkIn(img, {0, 0, 320, 3600}, blue), 0);
        QVERIFY(inkIn(img, {8180, 0, 320, 2400}, blue) > 20);
        QCOMPARE(inkIn(img, {8180, 3000, 320, 3600}, blue), 0);

        // Cancel keeps the old text.
        w->action("Txtfold")->trigger();
        QCOMPARE(doc().spineText(), QStringLiteral("GREATEST HITS"));
    }
};

QTEST_MAIN(TestSheetObjects)
#include "test_sheetobjects.moc"
