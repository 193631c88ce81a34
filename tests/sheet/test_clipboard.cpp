// The object clipboard: copying and pasting records without a window, the
// main window's clipboard commands and how they enable each other, pasting
// every kind of object onto another sheet, the right-edge rule, cut, full
// tables, and what the new-project and open commands do to it.
#include "app/MDIForm1.h"
#include "platform/FakeServices.h"
#include "project/Creeprojet.h"
#include "sheet/PictFold.h"
#include "sheet/SheetRenderer.h"
#include "state/Clipboard.h"
#include "state/Global.h"
#include <QAction>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QToolButton>
#include <QtTest>

using jk::ClipKind;
using jk::G;
namespace sh = jk::sheet;
using sh::ObjKind;
using sh::ObjectRef;

namespace {

const char* const kClipCommands[] = {"Clipaste", "Pasteobj", "ClipCopy", "clipcut", "copyobj", "Cutobj"};

jk::TextStyle style(QRect twips)
{
    jk::TextStyle s;
    s.fontName = "Arial";
    s.fontSize = 12;
    s.italic = jk::kTrue;
    s.foreColor = 0x0000ff;  // red
    s.alignment = 2;
    s.left = jk::i16(twips.left());
    s.top = jk::i16(twips.top());
    s.width = jk::i16(twips.width());
    s.height = jk::i16(twips.height());
    return s;
}

int addBlock(bool page, int sheet, const QString& text, QRect twips)
{
    return (page ? G().pageText : G().freeText).append({jk::i16(sheet), text, style(twips)});
}

int addPicture(int sheet, const QString& file, QRect twips)
{
    return G().pictures.append({jk::i16(sheet), file, jk::i16(twips.top()), jk::i16(twips.left()),
                                jk::i16(twips.width()), jk::i16(twips.height()), 2});
}

int addCharField(int sheet, const QString& text, const QString& file, QRect twips)
{
    jk::CharFieldRecord r;
    r.sheet = jk::i16(sheet);
    r.text = text;
    r.valueFile = file;
    r.style = style(twips);
    return G().charFields.append(r);
}

int addNumField(int sheet, jk::i16 digits, jk::i16 number, QRect twips)
{
    jk::NumFieldRecord r;
    r.sheet = jk::i16(sheet);
    r.digits = digits;
    r.number = number;
    r.style = style(twips);
    return G().numFields.append(r);
}

bool sameStyle(const jk::TextStyle& a, const jk::TextStyle& b)
{
    return a.fontName == b.fontName && a.fontSize == b.fontSize && a.bold == b.bold && a.italic == b.italic &&
           a.strikethru == b.strikethru && a.underline == b.underline && a.foreColor == b.foreColor &&
           a.backStyle == b.backStyle && a.borderStyle == b.borderStyle && a.backColor == b.backColor &&
           a.alignment == b.alignment && a.top == b.top && a.left == b.left && a.width == b.width &&
           a.height == b.height;
}

QPoint px(QPoint twips) { return {twips.x() / sh::kTwipsPerPixel, twips.y() / sh::kTwipsPerPixel}; }

}  // namespace

class TestClipboard : public QObject {
    Q_OBJECT
    FakeServices* fake = nullptr;
    MDIForm1* w = nullptr;
    QTemporaryDir tmp;
    QStringList popups;

    bool on(const char* name) const
    {
        if (QAction* a = w->action(name)) return a->isEnabled();
        return w->button(name)->isEnabled();
    }
    // The six clipboard commands, in the order of kClipCommands.
    QList<bool> clipState() const
    {
        QList<bool> s;
        for (const char* n : kClipCommands) s << on(n);
        return s;
    }
    PictFold* activate(int code)
    {
        PictFold* s = w->sheetOf(code);
        w->mdiArea()->setActiveSubWindow(s->frameWindow());
        return s;
    }
    // Selects an object with a press on it, as the user does.
    void press(int code, ObjectRef ref) { activate(code)->objectPress(ref, {}); }
    void click(PictFold* s, QPoint twips) { QTest::mouseClick(s->canvas(), Qt::LeftButton, {}, px(twips)); }
    QImage shot(PictFold* s) { return sh::renderImage(s->formatCode(), sh::kScreenDpi, s->renderOptions()); }
    int inkIn(PictFold* s, QRect twips)
    {
        const QImage img = shot(s);
        int n = 0;
        for (int y = twips.top() / 15; y < twips.bottom() / 15; ++y)
            for (int x = twips.left() / 15; x < twips.right() / 15; ++x) n += qGray(img.pixel(x, y)) < 128;
        return n;
    }

private Q_SLOTS:
    void init()
    {
        jk::resetGlobal();
        jk::clipboard().clear();
        G().createTables(jk::TableSizing::NewProject);
        G().texts.formatNames = {"Simple", "Double", "Paper jacket", "CD ROM", "Inside"};
        G().texts.messages[27] = "Jewelcase Studio";
        sh::clearPictureCache();
        fake = new FakeServices;
        fake->install();
        popups.clear();
        PictFold::showPopup = [this](QMenu* m, const QPoint&) { popups << m->objectName(); };
        w = new MDIForm1;
        w->resize(1200, 900);
        w->show();
    }
    void cleanup()
    {
        delete w;
        w = nullptr;
        PictFold::showPopup = nullptr;
        PictFold::mayClose = false;
        MDIForm1::newProjectDialog = [](QWidget* parent) { return int(Creeprojet::run(parent)); };
        delete fake;
        fake = nullptr;
    }

    void recordsCopyAndPasteWithoutAWindow()
    {
        jk::Clipboard clip;
        jk::Global& g = G();
        addBlock(false, 2, "Title", {9000, 400, 1500, 300});
        addBlock(false, 2, "", {0, 0, 100, 100});  // deleted
        addNumField(2, 3, 42, {300, 600, 900, 300});
        addPicture(2, "/pics/logo.png", {7000, 200, 1200, 1200});

        // Only an object of the sheet that is there can be copied.
        QVERIFY(!jk::clipCopy(clip, g, 8, ClipKind::TextBlock, 1, false));  // another sheet's
        QVERIFY(!jk::clipCopy(clip, g, 2, ClipKind::TextBlock, 2, false));  // deleted
        QVERIFY(!jk::clipCopy(clip, g, 2, ClipKind::TextBlock, 0, false));
        QVERIFY(!jk::clipCopy(clip, g, 2, ClipKind::TextBlock, 3, false));  // past the count
        QVERIFY(!jk::clipCopy(clip, g, 2, ClipKind::TextBlock, 1, true));   // no such page block
        QVERIFY(!jk::clipCopy(clip, g, 2, ClipKind::None, 1, false));
        QCOMPARE(clip.last, ClipKind::None);
        QCOMPARE(jk::clipPaste(clip, g, 8, false, 6803).status, jk::PasteResult::Empty);
        QCOMPARE(g.freeText.count(), 2);

        // One slot per kind: copying a field keeps the text slot, and the
        // paste gives the kind copied last.
        QVERIFY(jk::clipCopy(clip, g, 2, ClipKind::TextBlock, 1, false));
        QVERIFY(jk::clipCopy(clip, g, 2, ClipKind::NumField, 1, false));
        QCOMPARE(clip.text.text, QString("Title"));
        QCOMPARE(clip.last, ClipKind::NumField);
        jk::PasteResult r = jk::clipPaste(clip, g, 8, false, 6803);
        QCOMPARE(r.status, jk::PasteResult::Pasted);
        QCOMPARE(r.kind, ClipKind::NumField);
        QCOMPARE(r.index, 2);
        QCOMPARE(g.numFields.at(2).sheet, 8);
        QCOMPARE(g.numFields.at(2).digits, 3);
        QCOMPARE(g.numFields.at(2).number, 42);
        QVERIFY(sameStyle(g.numFields.at(2).style, g.numFields.at(1).style));
        // Slots are never reused: a deleted slot stays behind.
        g.numFields.at(2).number = 0;
        QCOMPARE(jk::clipPaste(clip, g, 8, false, 6803).index, 3);

        // The text block lies past a 6803-twip sheet: it goes against the
        // right edge and keeps its top. On the text page when asked.
        QVERIFY(jk::clipCopy(clip, g, 2, ClipKind::TextBlock, 1, false));
        r = jk::clipPaste(clip, g, 2, true, 6803);
        QVERIFY(r.page);
        QCOMPARE(r.index, 1);
        QCOMPARE(g.pageText.at(1).style.left, 6803 - 1500);
        QCOMPARE(g.pageText.at(1).style.top, 400);
        QCOMPARE(g.pageText.at(1).text, QString("Title"));
        QCOMPARE(g.freeText.count(), 2);

        QCOMPARE(jk::pasteLeft(6802, 100, 6803), 6802);  // still on the sheet
        QCOMPARE(jk::pasteLeft(6803, 100, 6803), 6703);
        QCOMPARE(jk::pasteLeft(-10, 100, 6803), -10);    // stepped past the left edge
        QCOMPARE(jk::pasteLeft(9000, 8000, 6803), 0);    // wider than the sheet

        // A full table is left as it is.
        QVERIFY(jk::clipCopy(clip, g, 2, ClipKind::Picture, 1, false));
        QCOMPARE(clip.picture.sheet, 0);
        g.pictures.setCount(g.pictures.capacity());
        r = jk::clipPaste(clip, g, 8, false, 6803);
        QCOMPARE(r.status, jk::PasteResult::Full);
        QCOMPARE(r.capacity, 50);
        QCOMPARE(g.pictures.count(), 50);
        QVERIFY(g.pictures.at(50).isFree());
    }

    void copyCutAndPasteSetTheCommands()
    {
        addBlock(false, 1, "First", {600, 600, 1500, 300});
        addBlock(false, 1, "Second", {600, 1500, 1500, 300});
        w->AddSim();
        PictFold* s = w->activeSheet();
        QVERIFY(!on("Clipaste"));

        // A press offers copy, cut and the stacking buttons, not paste.
        s->objectPress({ObjKind::Text, 1}, {});
        for (const char* n : {"Medit", "copyobj", "Cutobj", "CHGOrder", "BTF", "ClipCopy", "clipcut"}) QVERIFY(on(n));
        QVERIFY(!on("Pasteobj"));

        // Copy with paste off: paste on, copy and cut off.
        w->button("copyobj")->click();
        QCOMPARE(clipState(), (QList<bool>{true, true, false, false, false, false}));
        QCOMPARE(G().freeText.count(), 2);
        QCOMPARE(G().projectModified, jk::kTrue);  // from the press, not the copy

        // Select the other block and copy it: the paste entry was still on,
        // so paste goes off again.
        s->objectPress({ObjKind::Text, 2}, {});
        QVERIFY(!on("Pasteobj"));
        QVERIFY(on("Clipaste"));
        w->action("ClipCopy")->trigger();
        QCOMPARE(clipState(), (QList<bool>{false, false, true, true, true, true}));
        w->action("ClipCopy")->trigger();
        QCOMPARE(clipState(), (QList<bool>{true, true, false, false, false, false}));

        // Paste on the same sheet: a copy of the second block at its place;
        // every clipboard command goes off.
        G().projectModified = jk::kFalse;
        w->action("Clipaste")->trigger();
        QCOMPARE(G().freeText.count(), 3);
        const jk::TextRecord& copy = G().freeText.at(3);
        QCOMPARE(copy.text, QString("Second"));
        QCOMPARE(copy.sheet, 1);
        QVERIFY(sameStyle(copy.style, G().freeText.at(2).style));
        QCOMPARE(clipState(), (QList<bool>(6, false)));
        QCOMPARE(G().projectModified, jk::kTrue);
        QCOMPARE(s->stackingOrder().back(), (ObjectRef{ObjKind::Text, 3}));
        // The copy is the selection now: the arrow buttons move it off the
        // original.
        QCOMPARE(G().selectedIndex, 3);
        G().moveMode = jk::kTrue;
        w->button("SSCommand5")->click();
        QCOMPARE(G().freeText.at(3).style.top, 1500 + 40);
        QCOMPARE(G().freeText.at(2).style.top, 1500);

        // A disabled command does nothing; a copy of nothing changes nothing.
        w->button("Pasteobj")->click();
        QCOMPARE(G().freeText.count(), 3);
        G().selectedIndex = 9;
        QVERIFY(!s->ClipCopy());
        QCOMPARE(clipState(), (QList<bool>(6, false)));

        // Cut is copy, then delete; paste brings the block back in a new slot.
        s->objectPress({ObjKind::Text, 1}, {});
        w->button("Cutobj")->click();
        QVERIFY(G().freeText.at(1).isFree());
        QCOMPARE(clipState(), (QList<bool>{true, true, false, false, false, false}));
        w->button("Pasteobj")->click();
        QCOMPARE(G().freeText.count(), 4);
        QCOMPARE(G().freeText.at(4).text, QString("First"));
    }

    void everyKindPastesOntoAnotherSheet()
    {
        const QString red = tmp.filePath("red.png");
        QImage img(QSize(100, 100), QImage::Format_RGB32);
        img.fill(Qt::red);
        QVERIFY(img.save(red));
        addBlock(false, 2, "Free block", {600, 600, 1800, 400});
        addBlock(true, 2, "Page block", {600, 1200, 1800, 400});
        addPicture(2, red, {3000, 3000, 1500, 1500});
        addCharField(2, "Alice", "/data/names.txt", {600, 2400, 1500, 400});
        addNumField(2, 3, 7, {600, 4800, 1500, 400});
        w->AddDbl();
        w->AddCD();
        PictFold* cd = w->sheetOf(8);

        struct Case {
            ObjectRef from;
            ObjectRef to;
        };
        // A text-page block lands on the disc label's canvas.
        const Case cases[] = {{{ObjKind::Text, 1}, {ObjKind::Text, 2}},
                              {{ObjKind::PageText, 1}, {ObjKind::Text, 3}},
                              {{ObjKind::Picture, 1}, {ObjKind::Picture, 2}},
                              {{ObjKind::CharField, 1}, {ObjKind::CharField, 2}},
                              {{ObjKind::NumField, 1}, {ObjKind::NumField, 2}}};
        for (const Case& c : cases) {
            const QByteArray what = QByteArray::number(int(c.from.kind));
            press(2, c.from);
            w->button("copyobj")->click();
            activate(8);
            QVERIFY2(on("Pasteobj"), what);
            G().projectModified = jk::kFalse;
            w->button("Pasteobj")->click();
            QVERIFY2(sh::objectExists(8, c.to), what);
            QVERIFY2(sh::objectExists(2, c.from), what);  // a copy: the original stays
            QCOMPARE(G().projectModified, jk::kTrue);
            QCOMPARE(cd->stackingOrder().back(), c.to);
            QCOMPARE(sh::shownText(c.to), sh::shownText(c.from));
            if (c.to.kind != ObjKind::Picture) QVERIFY2(sameStyle(*sh::textStyle(c.to), *sh::textStyle(c.from)), what);
            // Drawn, and a click on it selects it.
            const QRect r = sh::objectRectTwips(8, c.to);
            QVERIFY2(inkIn(cd, r) > 10, what);
            G().selectedIndex = 0;
            click(cd, r.center());
            QCOMPARE(G().selectedIndex, c.to.index);
            QCOMPARE(G().selectedKind, c.to.kind == ObjKind::Picture ? 1 : c.to.kind == ObjKind::Text ? 0 : 2);
        }
        const jk::PictureRecord& pic = G().pictures.at(2);
        QCOMPARE(pic.file, red);
        QCOMPARE(pic.displayMode, 2);
        QCOMPARE(QRect(pic.left, pic.top, pic.width, pic.height), QRect(3000, 3000, 1500, 1500));
        QCOMPARE(G().charFields.at(2).valueFile, QString("/data/names.txt"));
        QCOMPARE(sh::shownText({ObjKind::NumField, 2}), QString("007"));
        QCOMPARE(G().numFields.at(2).sheet, 8);
        QCOMPARE(G().pageText.count(), 1);

        // The paste gives what was copied, not what is selected: copy the
        // picture, select a field, paste from the Edit menu.
        press(2, {ObjKind::Picture, 1});
        w->action("ClipCopy")->trigger();
        press(8, {ObjKind::CharField, 2});
        w->action("Clipaste")->trigger();
        QCOMPARE(G().pictures.count(), 3);
        QCOMPARE(G().charFields.count(), 2);
        QVERIFY(sh::objectExists(8, {ObjKind::Picture, 3}));

        // A text block pasted while the booklet shows its text page goes
        // onto the page, and pictures pasted there stay behind it.
        press(8, {ObjKind::Text, 2});
        w->button("copyobj")->click();
        PictFold* booklet = activate(2);
        w->button("SSCommand2")->click();
        QVERIFY(booklet->textPageShown());
        w->button("Pasteobj")->click();
        QCOMPARE(G().pageText.count(), 2);
        QCOMPARE(G().pageText.at(2).text, QString("Free block"));
        QCOMPARE(G().blockSelector, 0);
        QCOMPARE(booklet->stackingOrder().size(), std::size_t(4));  // the canvas keeps its own
        press(8, {ObjKind::Picture, 2});
        w->button("copyobj")->click();
        activate(2);
        w->button("Pasteobj")->click();
        QVERIFY(!booklet->pictureVisible(4));
    }

    void rightEdgeCutAndFullTables()
    {
        const QString blue = tmp.filePath("blue.png");
        QImage img(QSize(60, 60), QImage::Format_RGB32);
        img.fill(Qt::blue);
        QVERIFY(img.save(blue));
        addBlock(false, 4, "Edge", {8000, 900, 450, 300});
        addNumField(4, 3, 42, {300, 600, 900, 300});
        addPicture(4, blue, {7600, 3000, 900, 900});
        w->AddIns();
        w->AddCD();
        PictFold* cd = w->sheetOf(8);
        const int width = qRound(sh::canvasSizeTwips(8).width());
        QCOMPARE(width, 6803);

        // Past the disc label's right edge: against it, and shown there.
        press(4, {ObjKind::Text, 1});
        w->button("copyobj")->click();
        activate(8);
        w->button("Pasteobj")->click();
        const jk::TextStyle& edge = G().freeText.at(2).style;
        QCOMPARE(edge.left + edge.width, width);
        QCOMPARE(edge.top, 900);
        QVERIFY(inkIn(cd, {edge.left, edge.top, edge.width, edge.height}) > 5);

        // A numeric field cut from the inlay keeps its digits and number.
        press(4, {ObjKind::NumField, 1});
        w->button("Cutobj")->click();
        QVERIFY(G().numFields.at(1).isFree());
        QVERIFY(!sh::objectExists(4, {ObjKind::NumField, 1}));
        activate(8);
        w->action("Clipaste")->trigger();
        const jk::NumFieldRecord& n = G().numFields.at(2);
        QCOMPARE(n.sheet, 8);
        QCOMPARE(n.digits, 3);
        QCOMPARE(n.number, 42);
        QCOMPARE(sh::shownText({ObjKind::NumField, 2}), QString("042"));

        // A picture is cut through the picture deletion; at 7600 it would
        // start off the disc label, so it too goes against the edge.
        press(4, {ObjKind::Picture, 1});
        w->action("clipcut")->trigger();
        QVERIFY(G().pictures.at(1).isFree());
        activate(8);
        w->button("Pasteobj")->click();
        QCOMPARE(G().pictures.at(2).file, blue);
        QCOMPARE(G().pictures.at(2).left, width - 900);
        QCOMPARE(QColor(shot(cd).pixel(px({width - 450, 3450}))), QColor(Qt::blue));

        // A full table refuses the paste with a message, and paste stays
        // offered: nothing was used up.
        press(8, {ObjKind::Text, 2});
        w->button("copyobj")->click();
        G().freeText.setCount(G().freeText.capacity());
        w->button("Pasteobj")->click();
        QCOMPARE(fake->messages.calls.size(), 1);
        QVERIFY(fake->messages.calls[0].text.contains("100"));
        QCOMPARE(fake->messages.calls[0].icon, jk::platform::Icon::Warning);
        QCOMPARE(G().freeText.count(), 100);
        QVERIFY(G().freeText.at(100).isFree());
        QVERIFY(on("Pasteobj"));

        // As after opening a project: 50 numeric fields, every slot used.
        // (Copying while paste is offered takes paste away; the second copy
        // offers it again.)
        press(8, {ObjKind::NumField, 2});
        w->button("copyobj")->click();
        QVERIFY(!on("Pasteobj"));
        w->button("copyobj")->click();
        const jk::NumFieldRecord kept = G().numFields.at(2);
        G().numFields.reset(50);
        for (int i = 0; i < 50; ++i) G().numFields.append(kept);
        w->button("Pasteobj")->click();
        QCOMPARE(fake->messages.calls.size(), 2);
        QVERIFY(fake->messages.calls[1].text.contains("50 numeric fields"));
        QCOMPARE(G().numFields.count(), 50);
    }

    void newProjectAndOpenInvalidateTheClipboard()
    {
        addBlock(false, 1, "Old project", {600, 600, 1500, 300});
        w->AddSim();
        press(1, {ObjKind::Text, 1});
        w->button("copyobj")->click();
        QVERIFY(on("Pasteobj"));

        // A new disc-label project with a block in slot 1: the old
        // selection named slot 1 too, and must not reach it.
        MDIForm1::newProjectDialog = [](QWidget*) {
            G().openExisting = jk::kFalse;
            G().cdChoice = jk::kTrue;
            return int(Creeprojet::Create);
        };
        fake->messages.answers = {jk::platform::AnswerNo};
        w->newProjectCommand();
        QVERIFY(w->sheetOf(8));
        QVERIFY(!on("Pasteobj"));
        QVERIFY(!on("BTF"));
        QVERIFY(!on("CHGOrder"));
        QCOMPARE(G().selectedIndex, 0);
        addBlock(false, 8, "New project", {600, 600, 1500, 300});
        w->Cut_Clip();
        w->Copy_Clip();
        QCOMPARE(G().freeText.at(1).text, QString("New project"));
        QCOMPARE(jk::clipboard().text.text, QString("Old project"));

        // The copied record outlives the project: the Edit menu's paste
        // still gives it, in the new project's next slot.
        QVERIFY(on("Medit"));
        QVERIFY(on("Clipaste"));
        w->action("Clipaste")->trigger();
        QCOMPARE(G().freeText.at(2).text, QString("Old project"));
        QCOMPARE(G().freeText.at(2).sheet, 8);

        // Open, even when its file dialog is cancelled, clears the
        // selection and switches the editing commands off.
        w->sheetOf(8)->objectPress({ObjKind::Text, 1}, {});
        QVERIFY(on("Medit") && on("BTF"));
        G().projectModified = jk::kFalse;
        w->openCommand(false);
        QCOMPARE(fake->files.openCalls.size(), 1);
        QVERIFY(w->sheetOf(8));
        for (const char* n : {"Medit", "Pasteobj", "CHGOrder", "BTF"}) QVERIFY2(!on(n), n);
        for (const char* n : {"copyobj", "Cutobj"}) QVERIFY2(on(n), n);
        QCOMPARE(G().selectedIndex, 0);
        w->Cut_Clip();
        QCOMPARE(G().freeText.at(1).text, QString("New project"));
    }
};

QTEST_MAIN(TestClipboard)
#include "test_clipboard.moc"
