// The sheet's side of the object clipboard: copying the selected object's
// record into its slot, pasting a new object from the slot copied last, and
// the main window's clipboard commands that go with each step.
#include "ui/sheet/Actions.h"
#include "ui/sheet/SheetWindow.h"
#include <QAction>

using jk::ClipKind;
using namespace jk::sheet;

namespace {

const char* const kPasteCommands[] = {"Clipaste", "Pasteobj"};
const char* const kCopyCommands[] = {"ClipCopy", "clipcut", "copyobj", "Cutobj"};

ObjKind objKind(ClipKind kind, bool page)
{
    switch (kind) {
    case ClipKind::Picture: return ObjKind::Picture;
    case ClipKind::CharField: return ObjKind::CharField;
    case ClipKind::NumField: return ObjKind::NumField;
    default: return page ? ObjKind::PageText : ObjKind::Text;
    }
}

QString tableName(ClipKind kind, bool page)
{
    switch (kind) {
    case ClipKind::Picture: return QStringLiteral("pictures");
    case ClipKind::CharField: return QStringLiteral("character fields");
    case ClipKind::NumField: return QStringLiteral("numeric fields");
    default: return page ? QStringLiteral("text-page blocks") : QStringLiteral("text blocks");
    }
}

}  // namespace

// Copy and cut toggle on the paste menu entry: the first copy offers paste
// and takes copy and cut away; a copy while paste is offered does the
// reverse. The paste button is switched off whenever an object is pressed,
// so the menu entry is the one that remembers.
CommandTable SheetWindow::clipCopyTable(bool pasteWasEnabled)
{
    CommandTable t;
    for (const char* n : kPasteCommands) t.on(n, !pasteWasEnabled);
    for (const char* n : kCopyCommands) t.on(n, pasteWasEnabled);
    return t;
}

CommandTable SheetWindow::clipPasteTable()
{
    CommandTable t;
    for (const char* n : kPasteCommands) t.off(n);
    for (const char* n : kCopyCommands) t.off(n);
    return t;
}

CommandTable SheetWindow::disableClipboardTable()
{
    CommandTable t;
    t.off("Medit");
    t.off("Pasteobj");
    t.on("copyobj");
    t.on("Cutobj");
    t.off("CHGOrder");
    t.off("BTF");
    return t;
}

void SheetWindow::disableClipboardCommands(Actions& actions, jk::EditorState& editor)
{
    actions.apply(disableClipboardTable());
    // The selection is gone with it: the copy and cut buttons stay on, and
    // must not act on a slot of the next project that nobody selected.
    editor.selection.object.index = 0;
    editor.selection.marked = false;
}

bool SheetWindow::copySelected()
{
    if (previewShown()) return false;
    const ClipKind kind = jk::clipKindOf(sel_.object.kind);
    const bool page = kind == ClipKind::TextBlock && editor_.blockOnPage;
    if (!jk::clipCopy(editor_.clipboard, project_, code_, kind, sel_.object.index, page)) return false;
    apply(clipCopyTable(actions_.isEnabled(QStringLiteral("Clipaste"))));
    return true;
}

bool SheetWindow::pasteCopied()
{
    if (!isFormatCode(code_) || previewShown()) return false;
    const jk::Clipboard& clip = editor_.clipboard;
    // A text block goes where the user looks: onto the text page while it
    // is shown, else onto the canvas (a sheet without a text page has none).
    const bool toPage = clip.last == ClipKind::TextBlock && formatLayout(code_).textPage && textPageShown();
    // The sheet's width is its canvas's: what lies right of it is cut off.
    const int width = qRound(canvasSizeTwips(code_).width());
    const jk::PasteResult res = jk::clipPaste(clip, project_, code_, toPage, width);
    if (res.status == jk::PasteResult::Full) {
        refuseWhenFull(true, tableName(res.kind, res.page), res.capacity);
        return false;
    }
    if (res.status != jk::PasteResult::Pasted) return false;

    const ObjectRef ref{objKind(res.kind, res.page), res.index};
    (res.page ? pageStacking_ : stacking_).push_back(ref);
    // Pictures stay hidden behind a shown text page, as togglePage hides them.
    if (ref.kind == ObjKind::Picture && formatLayout(code_).textPage && textPageShown())
        hiddenPictures_.insert(ref.index);

    // The new object is the selected one, as after an insertion, so the
    // arrow buttons can move it off the original it may lie on.
    sel_.object = ref;
    if (jk::isTextBlock(ref.kind)) editor_.blockOnPage = res.page;
    project_.setModified(true);
    apply(clipPasteTable());
    canvas_->update();
    return true;
}
