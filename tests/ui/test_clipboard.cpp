// The object clipboard: copy, cut and paste and the commands they offer,
// every kind of object pasted onto another sheet, the right-edge rule, full
// tables, and what the new-project and open commands do to it.
#include "UiFixture.h"
#include "model/Clipboard.h"
#include <QtTest>

using namespace fixture;
using jk::ObjKind;
using jk::ObjectRef;
namespace sh = jk::sheet;

namespace {

// Red text: a paste must carry the style over.
jk::TextStyle redStyle(QRect twips)
{
    jk::TextStyle s = styleAt(twips);
    s.foreColor = 0x0000ff;
    return s;
}

}  // namespace

class TestClipboard : public QObject {
    Q_OBJECT
    std::unique_ptr<SheetGui> gui;
    MainWindow* w = nullptr;
    QTemporaryDir tmp;

    jk::Project& doc() { return gui->project(); }
    // Clipaste, Pasteobj, ClipCopy, clipcut, copyobj, Cutobj.
    QList<bool> clipState() const
    {
        QList<bool> on;
        for (const char* n : {"Clipaste", "Pasteobj", "ClipCopy", "clipcut", "copyobj", "Cutobj"}) on << gui->enabled(n);
        return on;
    }
    void press(int code, ObjectRef ref) { activate(*gui, code)->objectPress(ref, {}); }
    // Presses the object, copies it and pastes it on the other sheet.
    void copyTo(int from, ObjectRef ref, int to)
    {
        press(from, ref);
        w->button("copyobj")->click();
        activate(*gui, to);
        w->button("Pasteobj")->click();
    }

private Q_SLOTS:
    void init()
    {
        gui = std::make_unique<SheetGui>();
        w = gui->w.get();
    }
    void cleanup() { gui.reset(); }

    void copyCutAndPasteSetTheCommands()
    {
        doc().addText(false, textAt(1, "First", {600, 600, 1500, 300}));
        doc().addText(false, textAt(1, "Second", {600, 1500, 1500, 300}));
        w->addSimpleSheet();
        SheetWindow* s = w->activeSheet();
        const QList<bool> pasteOffered{true, true, false, false, false, false};

        s->objectPress({ObjKind::Text, 1}, {});
        w->button("copyobj")->click();
        QCOMPARE(clipState(), pasteOffered);
        // A copy while paste is offered takes paste away again.
        s->objectPress({ObjKind::Text, 2}, {});
        w->action("ClipCopy")->trigger();
        QCOMPARE(clipState(), QList<bool>({false, false, true, true, true, true}));
        w->action("ClipCopy")->trigger();
        QCOMPARE(clipState(), pasteOffered);

        // Paste on the same sheet: the second block again, at its place, in
        // front and selected; every clipboard command goes off.
        doc().setModified(false);
        w->action("Clipaste")->trigger();
        QCOMPARE(doc().freeText().count(), 3);
        QCOMPARE(doc().freeText().at(3).text, QString("Second"));
        QCOMPARE(doc().freeText().at(3).style.top, 1500);
        QVERIFY(doc().isModified());
        QCOMPARE(s->stackingOrder().back(), (ObjectRef{ObjKind::Text, 3}));
        QCOMPARE(w->editor().selection.object, (ObjectRef{ObjKind::Text, 3}));
        QCOMPARE(clipState(), QList<bool>(6, false));
        // Cut is copy, then delete; the paste takes a new slot.
        s->objectPress({ObjKind::Text, 1}, {});
        w->button("Cutobj")->click();
        QVERIFY(doc().freeText().at(1).isFree());
        QCOMPARE(clipState(), pasteOffered);
        w->button("Pasteobj")->click();
        QCOMPARE(doc().freeText().at(4).text, QString("First"));
    }

    void everyKindPastesOntoAnotherSheet()
    {
        doc().addText(false, {2, "Free block", redStyle({600, 600, 1800, 400})});
        doc().addText(true, {2, "Page block", redStyle({600, 1200, 1800, 400})});
        const QString red = pictureFile(tmp.filePath("red.png"), {100, 100}, Qt::red);
        doc().addPicture(pictureAt(2, red, {3000, 3000, 1500, 1500}));
        doc().addCharField({2, "/data/names.txt", "Alice", redStyle({600, 2400, 1500, 400})});
        doc().addNumField({2, 3, 7, false, redStyle({600, 4800, 1500, 400})});
        w->addBookletSheet();
        w->addDiscSheet();
        SheetWindow* cd = w->sheetOf(8);

        // A text-page block lands on the disc label's canvas, which has no
        // page, at its record's place: 120 twips below where the page showed it.
        const std::pair<ObjectRef, ObjectRef> cases[] = {{{ObjKind::Text, 1}, {ObjKind::Text, 2}},
                                                         {{ObjKind::PageText, 1}, {ObjKind::Text, 3}},
                                                         {{ObjKind::Picture, 1}, {ObjKind::Picture, 2}},
                                                         {{ObjKind::CharField, 1}, {ObjKind::CharField, 2}},
                                                         {{ObjKind::NumField, 1}, {ObjKind::NumField, 2}}};
        for (const auto& [from, to] : cases) {
            const QByteArray kind = QByteArray::number(int(from.kind));
            copyTo(2, from, 8);
            QVERIFY2(doc().exists(8, to) && doc().exists(2, from), kind);
            QCOMPARE(sh::shownText(doc(), to), sh::shownText(doc(), from));
            const QRect r = sh::objectRectTwips(doc(), 8, to);
            QCOMPARE(r, sh::objectRectTwips(doc(), 2, from).translated(0, from.kind == ObjKind::PageText ? 120 : 0));
            if (from.kind != ObjKind::Picture) QCOMPARE(doc().style(to)->foreColor, 0x0000ff);
            // Drawn in front, and a click on it selects it.
            QCOMPARE(cd->stackingOrder().back(), to);
            QVERIFY2(inkIn(gui->shot(cd), r) > 10, kind);
            w->editor().selection.object = {};
            click(cd, r.center());
            QCOMPARE(w->editor().selection.object, to);
        }
        QCOMPARE(doc().charFields().at(2).valueFile, QString("/data/names.txt"));

        // The paste gives what was copied, not what is selected.
        press(2, {ObjKind::Picture, 1});
        w->action("ClipCopy")->trigger();
        press(8, {ObjKind::CharField, 2});
        w->action("Clipaste")->trigger();
        QCOMPARE(doc().pictures().count(), 3);
        QCOMPARE(doc().charFields().count(), 2);

        // While the booklet shows its text page, a block goes onto the page
        // and a picture stays hidden behind it.
        SheetWindow* booklet = activate(*gui, 2);
        w->button("SSCommand2")->click();
        copyTo(8, {ObjKind::Text, 2}, 2);
        QCOMPARE(doc().pageText().count(), 2);
        QCOMPARE(doc().pageText().at(2).text, QString("Free block"));
        copyTo(8, {ObjKind::Picture, 2}, 2);
        QVERIFY(doc().exists(2, {ObjKind::Picture, 4}) && !booklet->pictureVisible(4));
    }

    void rightEdgeAndFullTables()
    {
        doc().addText(false, textAt(4, "Edge", {8000, 900, 450, 300}));
        doc().addPicture(pictureAt(4, pictureFile(tmp.filePath("blue.png"), {60, 60}, Qt::blue), {7600, 3000, 900, 900}));
        w->addInlaySheet();
        w->addDiscSheet();
        SheetWindow* cd = w->sheetOf(8);
        const int width = 6803;  // the disc label's 12 cm
        QCOMPARE(qRound(sh::canvasSizeTwips(8).width()), width);

        // Against the disc label's right edge, at the same height.
        copyTo(4, {ObjKind::Text, 1}, 8);
        const jk::TextStyle& edge = doc().freeText().at(2).style;
        QCOMPARE(QRect(edge.left, edge.top, edge.width, edge.height), QRect(width - 450, 900, 450, 300));
        QVERIFY(inkIn(gui->shot(cd), {edge.left, edge.top, edge.width, edge.height}) > 5);
        // A picture, cut through the picture menu's deletion, goes there too.
        press(4, {ObjKind::Picture, 1});
        w->action("clipcut")->trigger();
        QVERIFY(doc().pictures().at(1).isFree());
        activate(*gui, 8);
        w->button("Pasteobj")->click();
        QCOMPARE(doc().pictures().at(2).left, width - 900);
        QCOMPARE(gui->shot(cd).pixelColor(px({width - 450, 3450})), QColor(Qt::blue));

        // The rule itself: a left at or past the width, never left of 0.
        QCOMPARE(jk::pasteLeft(width - 1, 450, width), width - 1);
        QCOMPARE(jk::pasteLeft(width, 450, width), width - 450);
        QCOMPARE(jk::pasteLeft(9000, 8000, width), 0);

        // A full table refuses the paste with a message and writes nothing;
        // paste stays offered.
        press(8, {ObjKind::Picture, 2});
        w->button("copyobj")->click();
        while (!doc().pictures().full()) doc().addPicture({});
        w->button("Pasteobj")->click();
        QCOMPARE(gui->fake->messages.calls.size(), 1);
        QVERIFY(gui->fake->messages.calls[0].text.contains("50 pictures"));
        QVERIFY(doc().pictures().at(50).isFree() && gui->enabled("Pasteobj"));

        // Another sheet's record and a deleted one are not copied.
        jk::Clipboard clip;
        doc().addNumField(numAt(8, 3, 42, false, {0, 0, 900, 300}));
        doc().addNumField({});
        QVERIFY(!jk::clipCopy(clip, doc(), 4, jk::ClipKind::NumField, 1, false));
        QVERIFY(!jk::clipCopy(clip, doc(), 8, jk::ClipKind::NumField, 2, false));
        QCOMPARE(clip.last, jk::ClipKind::None);
    }

    void newProjectAndOpenInvalidateTheSelection()
    {
        doc().addText(false, textAt(1, "Old project", {600, 600, 1500, 300}));
        w->addSimpleSheet();
        press(1, {ObjKind::Text, 1});
        w->button("copyobj")->click();

        // A new disc-label project with a block in slot 1, which the old
        // selection also named: cut must not reach it.
        w->newProjectDialog = [](QWidget*) { return NewProjectChoice{NewProjectDialog::Create, jk::FmtCdRom, {}}; };
        gui->fake->messages.answers = {jk::platform::AnswerNo};
        w->newProjectCommand();
        QVERIFY(!gui->enabled("Pasteobj") && !gui->enabled("BTF") && !gui->enabled("CHGOrder"));
        doc().addText(false, textAt(8, "New project", {600, 600, 1500, 300}));
        w->cutObject();
        QCOMPARE(doc().freeText().at(1).text, QString("New project"));
        // The copied record outlives the project: Edit, Paste still gives it.
        QVERIFY(gui->enabled("Clipaste"));
        w->action("Clipaste")->trigger();
        QCOMPARE(doc().freeText().at(2).text, QString("Old project"));
        QCOMPARE(doc().freeText().at(2).sheet, 8);

        // Open does the same, even when its file dialog is cancelled.
        press(8, {ObjKind::Text, 1});
        doc().setModified(false);
        w->openCommand(false);
        QCOMPARE(gui->fake->files.openCalls.size(), 1);
        for (const char* n : {"Medit", "Pasteobj", "CHGOrder", "BTF"}) QVERIFY2(!gui->enabled(n), n);
        w->cutObject();
        QCOMPARE(doc().freeText().at(1).text, QString("New project"));
    }
};

QTEST_MAIN(TestClipboard)
#include "test_clipboard.moc"
