// The object clipboard: how copy, cut and paste enable each other, pasting
// every kind of object onto another sheet, the right-edge rule, cut, full
// tables, and what the new-project and open commands do to it.
#include "ui/mainwindow/MainWindow.h"
#include "platform/FakeServices.h"
#include "ui/dialogs/NewProjectDialog.h"
#include "ui/sheet/SheetWindow.h"
#include "render/SheetRenderer.h"
#include "model/Clipboard.h"
#include "model/Global.h"
#include <QAction>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QToolButton>
#include <QtTest>

using jk::G;
namespace sh = jk::sheet;
using sh::ObjKind;
using sh::ObjectRef;

namespace {

jk::TextStyle style(QRect twips)
{
    jk::TextStyle s;
    s.fontName = "Arial";
    s.fontSize = 12;
    s.italic = true;
    s.foreColor = 0x0000ff;  // red
    s.left = jk::i16(twips.left());
    s.top = jk::i16(twips.top());
    s.width = jk::i16(twips.width());
    s.height = jk::i16(twips.height());
    return s;
}

void addBlock(bool page, int sheet, const QString& text, QRect twips)
{
    (page ? G().pageText : G().freeText).append({jk::i16(sheet), text, style(twips)});
}

QString addPicture(const QString& path, QColor colour, int sheet, QRect twips)
{
    QImage img(twips.size() / sh::kTwipsPerPixel, QImage::Format_RGB32);
    img.fill(colour);
    img.save(path);
    G().pictures.append({jk::i16(sheet), path, jk::i16(twips.top()), jk::i16(twips.left()), jk::i16(twips.width()),
                         jk::i16(twips.height()), 1});
    return path;
}

jk::NumFieldRecord addNumField(int sheet, jk::i16 digits, jk::i16 number, QRect twips)
{
    jk::NumFieldRecord n;
    n.sheet = jk::i16(sheet);
    n.digits = digits;
    n.number = number;
    n.style = style(twips);
    G().numFields.append(n);
    return n;
}

QPoint px(QPoint twips) { return twips / sh::kTwipsPerPixel; }

}  // namespace

class TestClipboard : public QObject {
    Q_OBJECT
    FakeServices* fake = nullptr;
    MainWindow* w = nullptr;
    QTemporaryDir tmp;

    bool on(const char* name) const
    {
        if (QAction* a = w->action(name)) return a->isEnabled();
        return w->button(name)->isEnabled();
    }
    // Clipaste, Pasteobj, copySelected, clipcut, copyobj, Cutobj.
    QList<bool> clipState() const
    {
        return {on("Clipaste"), on("Pasteobj"), on("ClipCopy"), on("clipcut"), on("copyobj"), on("Cutobj")};
    }
    SheetWindow* activate(int code)
    {
        SheetWindow* s = w->sheetOf(code);
        w->mdiArea()->setActiveSubWindow(s->frameWindow());
        return s;
    }
    void press(int code, ObjectRef ref) { activate(code)->objectPress(ref, {}); }
    // Presses the object, copies it and pastes it on the other sheet.
    void copyTo(int from, ObjectRef ref, int to)
    {
        press(from, ref);
        w->button("copyobj")->click();
        activate(to);
        w->button("Pasteobj")->click();
    }
    int inkIn(SheetWindow* s, QRect twips)
    {
        const QImage img = sh::renderImage(s->formatCode(), sh::kScreenDpi, s->renderOptions());
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
        fake = new FakeServices;
        fake->install();
        SheetWindow::showPopup = [](QMenu*, const QPoint&) {};
        w = new MainWindow;
        w->resize(1200, 900);
        w->show();
    }
    void cleanup()
    {
        delete w;
        SheetWindow::showPopup = nullptr;
        MainWindow::newProjectDialog = [](QWidget* parent) { return int(NewProjectDialog::run(parent)); };
        delete fake;
    }

    void copyCutAndPasteSetTheCommands()
    {
        addBlock(false, 1, "First", {600, 600, 1500, 300});
        addBlock(false, 1, "Second", {600, 1500, 1500, 300});
        w->addSimpleSheet();
        SheetWindow* s = w->activeSheet();
        const QList<bool> pasteOffered{true, true, false, false, false, false};
        const QList<bool> copyOffered{false, false, true, true, true, true};

        s->objectPress({ObjKind::Text, 1}, {});
        w->button("copyobj")->click();
        QCOMPARE(clipState(), pasteOffered);
        // Copying another object while the paste entry is on takes paste away.
        s->objectPress({ObjKind::Text, 2}, {});
        w->action("ClipCopy")->trigger();
        QCOMPARE(clipState(), copyOffered);
        w->action("ClipCopy")->trigger();
        QCOMPARE(clipState(), pasteOffered);

        // Paste on the same sheet: the second block again, at its place, in
        // front and selected; every clipboard command goes off.
        G().projectModified = false;
        w->action("Clipaste")->trigger();
        QCOMPARE(G().freeText.count(), 3);
        QCOMPARE(G().freeText.at(3).text, QString("Second"));
        QCOMPARE(G().projectModified, true);
        QCOMPARE(s->stackingOrder().back(), (ObjectRef{ObjKind::Text, 3}));
        QCOMPARE(clipState(), QList<bool>(6, false));
        QCOMPARE(G().selectedIndex, 3);
        // Cut is copy, then delete; the paste takes a new slot.
        s->objectPress({ObjKind::Text, 1}, {});
        w->button("Cutobj")->click();
        QVERIFY(G().freeText.at(1).isFree());
        QCOMPARE(clipState(), pasteOffered);
        w->button("Pasteobj")->click();
        QCOMPARE(G().freeText.count(), 4);
        QCOMPARE(G().freeText.at(4).text, QString("First"));
    }

    void everyKindPastesOntoAnotherSheet()
    {
        addBlock(false, 2, "Free block", {600, 600, 1800, 400});
        addBlock(true, 2, "Page block", {600, 1200, 1800, 400});
        const QString red = addPicture(tmp.filePath("red.png"), Qt::red, 2, {3000, 3000, 1500, 1500});
        jk::CharFieldRecord c{2, "/data/names.txt", "Alice", style({600, 2400, 1500, 400})};
        G().charFields.append(c);
        addNumField(2, 3, 7, {600, 4800, 1500, 400});
        w->addBookletSheet();
        w->addDiscSheet();
        SheetWindow* cd = w->sheetOf(8);

        // A text-page block lands on the disc label's canvas, which has no page.
        const std::pair<ObjectRef, ObjectRef> cases[] = {{{ObjKind::Text, 1}, {ObjKind::Text, 2}},
                                                         {{ObjKind::PageText, 1}, {ObjKind::Text, 3}},
                                                         {{ObjKind::Picture, 1}, {ObjKind::Picture, 2}},
                                                         {{ObjKind::CharField, 1}, {ObjKind::CharField, 2}},
                                                         {{ObjKind::NumField, 1}, {ObjKind::NumField, 2}}};
        for (const auto& [from, to] : cases) {
            const QByteArray kind = QByteArray::number(int(from.kind));
            copyTo(2, from, 8);
            QVERIFY2(sh::objectExists(8, to) && sh::objectExists(2, from), kind);
            QCOMPARE(sh::shownText(to), sh::shownText(from));
            QCOMPARE(sh::objectRectTwips(8, to), sh::objectRectTwips(2, from).translated(0, from.kind == ObjKind::PageText ? 120 : 0));
            if (from.kind != ObjKind::Picture) QCOMPARE(sh::textStyle(to)->foreColor, 0x0000ff);
            // Drawn in front, and a click on it selects it.
            QCOMPARE(cd->stackingOrder().back(), to);
            const QRect r = sh::objectRectTwips(8, to);
            QVERIFY2(inkIn(cd, r) > 10, kind);
            G().selectedIndex = 0;
            QTest::mouseClick(cd->canvas(), Qt::LeftButton, {}, px(r.center()));
            QCOMPARE(G().selectedIndex, to.index);
        }
        QCOMPARE(G().pictures.at(2).file, red);
        QCOMPARE(G().charFields.at(2).valueFile, QString("/data/names.txt"));
        QCOMPARE(sh::shownText({ObjKind::NumField, 2}), QString("007"));

        // The paste gives what was copied, not what is selected.
        press(2, {ObjKind::Picture, 1});
        w->action("ClipCopy")->trigger();
        press(8, {ObjKind::CharField, 2});
        w->action("Clipaste")->trigger();
        QCOMPARE(G().pictures.count(), 3);
        QCOMPARE(G().charFields.count(), 2);

        // While the booklet shows its text page, a block goes onto the page
        // and a picture stays hidden behind it.
        SheetWindow* booklet = activate(2);
        w->button("SSCommand2")->click();
        QVERIFY(booklet->textPageShown());
        copyTo(8, {ObjKind::Text, 2}, 2);
        QCOMPARE(G().pageText.count(), 2);
        QCOMPARE(G().pageText.at(2).text, QString("Free block"));
        copyTo(8, {ObjKind::Picture, 2}, 2);
        QVERIFY(sh::objectExists(2, {ObjKind::Picture, 4}) && !booklet->pictureVisible(4));
    }

    void rightEdgeCutAndFullTables()
    {
        addBlock(false, 4, "Edge", {8000, 900, 450, 300});
        const jk::NumFieldRecord n = addNumField(4, 3, 42, {300, 600, 900, 300});
        addPicture(tmp.filePath("blue.png"), Qt::blue, 4, {7600, 3000, 900, 900});
        w->addInlaySheet();
        w->addDiscSheet();
        SheetWindow* cd = w->sheetOf(8);
        const int width = 6803;  // the disc label's 12 cm
        QCOMPARE(qRound(sh::canvasSizeTwips(8).width()), width);

        // Past the disc label's right edge: against it, at the same height.
        copyTo(4, {ObjKind::Text, 1}, 8);
        const jk::TextStyle& edge = G().freeText.at(2).style;
        QCOMPARE(QRect(edge.left, edge.top, edge.width, edge.height), QRect(width - 450, 900, 450, 300));
        QVERIFY(inkIn(cd, {edge.left, edge.top, edge.width, edge.height}) > 5);
        // A picture, cut through the picture deletion, goes there too.
        press(4, {ObjKind::Picture, 1});
        w->action("clipcut")->trigger();
        QVERIFY(G().pictures.at(1).isFree());
        activate(8);
        w->button("Pasteobj")->click();
        QCOMPARE(G().pictures.at(2).left, width - 900);
        QCOMPARE(sh::renderImage(8, sh::kScreenDpi, cd->renderOptions()).pixelColor(px({width - 450, 3450})),
                 QColor(Qt::blue));

        // A numeric field cut from the inlay keeps its digits and number.
        press(4, {ObjKind::NumField, 1});
        w->button("Cutobj")->click();
        QVERIFY(!sh::objectExists(4, {ObjKind::NumField, 1}));
        activate(8);
        w->action("Clipaste")->trigger();
        QCOMPARE(G().numFields.at(2).sheet, 8);
        QCOMPARE(G().numFields.at(2).number, 42);
        QCOMPARE(sh::shownText({ObjKind::NumField, 2}), QString("042"));

        // Full tables refuse the paste with a message and write nothing;
        // paste stays offered, nothing was used up.
        press(8, {ObjKind::Text, 2});
        w->button("copyobj")->click();
        G().freeText.setCount(G().freeText.capacity());
        w->button("Pasteobj")->click();
        QCOMPARE(fake->messages.calls.size(), 1);
        QVERIFY(fake->messages.calls[0].text.contains("100 text blocks"));
        QCOMPARE(G().freeText.count(), 100);
        QVERIFY(G().freeText.at(100).isFree());
        QVERIFY(on("Pasteobj"));
        jk::Clipboard& clip = jk::clipboard();
        QVERIFY(jk::clipCopy(clip, G(), 8, jk::ClipKind::NumField, 2, false));
        G().numFields.reset(50);  // as after opening a project
        for (int i = 0; i < 50; ++i) G().numFields.append(n);
        QCOMPARE(jk::clipPaste(clip, G(), 8, false, width).status, jk::PasteResult::Full);
        QCOMPARE(G().numFields.count(), 50);
        // Another sheet's record and a deleted one are not copied.
        QVERIFY(!jk::clipCopy(clip, G(), 8, jk::ClipKind::NumField, 1, false));
        QVERIFY(!jk::clipCopy(clip, G(), 4, jk::ClipKind::Picture, 1, false));
    }

    void newProjectAndOpenInvalidateTheClipboard()
    {
        addBlock(false, 1, "Old project", {600, 600, 1500, 300});
        w->addSimpleSheet();
        press(1, {ObjKind::Text, 1});
        w->button("copyobj")->click();

        // A new disc-label project with a block in slot 1, which the old
        // selection also named: copy and cut must not reach it.
        MainWindow::newProjectDialog = [](QWidget*) {
            G().openExisting = false;
            G().cdChoice = true;
            return int(NewProjectDialog::Create);
        };
        fake->messages.answers = {jk::platform::AnswerNo};
        w->newProjectCommand();
        QVERIFY(!on("Pasteobj") && !on("BTF") && !on("CHGOrder"));
        addBlock(false, 8, "New project", {600, 600, 1500, 300});
        w->cutObject();
        QCOMPARE(G().freeText.at(1).text, QString("New project"));
        // The copied record outlives the project: Edit, Paste still gives it.
        QVERIFY(on("Medit") && on("Clipaste"));
        w->action("Clipaste")->trigger();
        QCOMPARE(G().freeText.at(2).text, QString("Old project"));
        QCOMPARE(G().freeText.at(2).sheet, 8);

        // Open, even when its file dialog is cancelled, does the same.
        press(8, {ObjKind::Text, 1});
        G().projectModified = false;
        w->openCommand(false);
        QCOMPARE(fake->files.openCalls.size(), 1);
        for (const char* n : {"Medit", "Pasteobj", "CHGOrder", "BTF"}) QVERIFY2(!on(n), n);
        QVERIFY(on("copyobj") && on("Cutobj"));
        w->cutObject();
        QCOMPARE(G().freeText.at(1).text, QString("New project"));
    }
};

QTEST_MAIN(TestClipboard)
#include "test_clipboard.moc"
