// The sheet's objects: creating, editing, deleting and restoring them, the
// selection mark, the step moves and resizes, and the stacking order. The
// records are the objects; the window keeps only what is its own: the
// stacking order and the borders it shows instead of the stored ones.
#include "platform/Services.h"
#include "ui/sheet/SheetWindow.h"
#include "model/Global.h"
#include "model/Procedures.h"
#include <QAction>
#include <QMenu>
#include <algorithm>

using jk::G;
using namespace jk::sheet;
namespace pf = jk::platform;

std::function<void()> SheetWindow::textDialog;
std::function<void(QMenu*, const QPoint&)> SheetWindow::showPopup;

namespace {

constexpr int kMarkedRange = 50;  // deselectObjects reaches indexes 1-50 only
const QString kNoText = QStringLiteral("ZILCH");

void showMessage(const QString& text, pf::Icon icon)
{
    if (auto* m = pf::services().messages) {
        const QString title = G().texts.msg(jk::Msg::ProgramTitle).isEmpty() ? QStringLiteral("Jewelcase Studio") : G().texts.msg(jk::Msg::ProgramTitle);
        m->show(text, title, icon);
    }
}

// The picture size of a new picture object: its own size (one pixel to a
// screen pixel), scaled down to fit the canvas; an inch square when the
// picture cannot be read or is a plain colour.
QSize newPictureSize(int code, const QString& file)
{
    const QSize px = file.startsWith(u'~') ? QSize() : pictureSize(file);
    if (!px.isValid() || px.isEmpty()) return {1440, 1440};
    QSizeF twips = QSizeF(px) * kTwipsPerPixel;
    const QSizeF canvas = canvasSizeTwips(code);
    if (twips.width() > canvas.width() || twips.height() > canvas.height())
        twips = twips.scaled(canvas, Qt::KeepAspectRatio);
    return QSize(std::max(15, qRound(twips.width())), std::max(15, qRound(twips.height())));
}

}  // namespace

// ---- Restoring ---------------------------------------------------------------

void SheetWindow::restoreObjects()
{
    // Restore order is stacking order: each object restored comes in front.
    const RenderOptions none;
    stacking_ = canvasStacking(code_, none);
    pageStacking_ = pageStacking(code_, none);
    shownBorder_.clear();
    markedRef_.reset();
    pressed_.reset();
    canvas_->update();
}

std::vector<ObjectRef> SheetWindow::stackingOrder() const { return canvasStacking(code_, renderOptions()); }

int SheetWindow::shownBorder(ObjectRef ref) const { return shownBorder_.value(ref, recordBorder(ref)); }

void SheetWindow::forget(ObjectRef ref)
{
    std::erase(stacking_, ref);
    std::erase(pageStacking_, ref);
    shownBorder_.remove(ref);
    if (markedRef_ == ref) markedRef_.reset();
    if (pressed_ == ref) pressed_.reset();
}

// ---- Creating ----------------------------------------------------------------

bool SheetWindow::refuseWhenFull(bool full, const QString& what, int capacity)
{
    if (!full) return false;
    showMessage(QStringLiteral("This project already holds %1 %2, deleted ones included; no more can be added.")
                    .arg(capacity)
                    .arg(what),
                pf::Icon::Warning);
    return true;
}

void SheetWindow::insertTextBlock() { createTextBlock(false); }

void SheetWindow::insertPageTextBlock()
{
    // New text-page blocks go onto the page, so it is shown with its line.
    pictext_->show();
    createTextBlock(true);
}

bool SheetWindow::createTextBlock(bool page)
{
    jk::Global& g = G();
    jk::RecordTable<jk::TextRecord>& table = page ? g.pageText : g.freeText;
    if (!isFormatCode(code_) || refuseWhenFull(table.full(), page ? QStringLiteral("text-page blocks")
                                                                  : QStringLiteral("text blocks"),
                                               table.capacity()))
        return false;

    // The slot is taken before the dialog: a cancelled dialog leaves it empty.
    const int index = table.append(jk::TextRecord{});
    g.selectedIndex = jk::i16(index);
    bool asked = false;
    if (g.textDestination == 0 && textDialog) {
        g.pendingText.clear();
        g.spineTextMode = false;
        g.currentBlock = jk::i16(index);
        g.textAccepted = false;
        textDialog();
        asked = true;
    }
    QString text = g.pendingText;
    if (text == kNoText || (asked && !g.textAccepted)) text.clear();
    jk::TextRecord& r = table.at(index);
    r.text = text;
    if (text.isEmpty()) return false;

    // No font chosen in the dialog: the label's defaults. The background and
    // border the dialog may have set are kept (a fresh record holds the
    // defaults there: transparent, no border).
    if (r.style.fontName.isEmpty()) applyDefaultFont(r.style);
    r.sheet = jk::i16(code_);
    r.style.top = 0;
    r.style.left = 0;
    r.style.alignment = g.alignmentChoice;
    const QSize size = textExtentTwips(r.style, text);
    r.style.width = clampTwips(size.width());
    r.style.height = clampTwips(size.height());

    const ObjectRef ref{page ? ObjKind::PageText : ObjKind::Text, index};
    (page ? pageStacking_ : stacking_).push_back(ref);
    g.projectModified = true;
    canvas_->update();
    return true;
}

void SheetWindow::insertPictureObject()
{
    jk::Global& g = G();
    if (!isFormatCode(code_) || refuseWhenFull(g.pictures.full(), QStringLiteral("pictures"), g.pictures.capacity()))
        return;
    if (pictureDialog) {
        g.chosenPictureFile.clear();
        pictureDialog();
    }
    const QString chosen = g.chosenPictureFile;
    if (chosen.isEmpty()) return;
    const int index = g.pictures.append(jk::PictureRecord{});
    g.selectedIndex = jk::i16(index);
    jk::PictureRecord& r = g.pictures.at(index);
    r.sheet = jk::i16(code_);
    r.file = chosen;
    r.top = 0;
    r.left = 0;
    const QSize size = newPictureSize(code_, chosen);
    r.width = clampTwips(size.width());
    r.height = clampTwips(size.height());
    r.displayMode = 1;
    stacking_.push_back({ObjKind::Picture, index});
    g.projectModified = true;
    canvas_->update();
}

// ---- Editing and deleting ------------------------------------------------------

void SheetWindow::editObject()
{
    jk::Global& g = G();
    if (g.selectedKind != 0) return;
    const bool page = g.blockSelector != 1;
    const ObjectRef ref{page ? ObjKind::PageText : ObjKind::Text, g.selectedIndex};
    if (!objectExists(code_, ref) || !textDialog) return;
    jk::TextRecord& r = (page ? g.pageText : g.freeText).at(ref.index);
    g.pendingText = r.text;
    g.spineTextMode = false;
    g.currentBlock = jk::i16(ref.index);
    g.alignmentChoice = r.style.alignment;
    g.textAccepted = false;
    textDialog();
    // Font and colours went straight into the record, also on Cancel.
    g.projectModified = true;
    if (g.textAccepted && g.pendingText != kNoText) {
        r.text = g.pendingText;
        r.style.alignment = g.alignmentChoice;
        // An emptied text is a deleted block, as everywhere else.
        if (r.text.isEmpty()) forget(ref);
    }
    canvas_->update();
}

void SheetWindow::deleteObject()
{
    jk::Global& g = G();
    const int i = g.selectedIndex;
    switch (g.selectedKind) {
    case 1: deletePicture(); return;
    case 2: deleteField(); return;
    case 0: {
        const bool page = g.blockSelector != 1;
        const ObjectRef ref{page ? ObjKind::PageText : ObjKind::Text, i};
        if (!objectExists(code_, ref)) return;
        (page ? g.pageText : g.freeText).at(i).text.clear();
        forget(ref);
        g.projectModified = true;
        canvas_->update();
        return;
    }
    default: return;
    }
}

void SheetWindow::deletePicture()
{
    jk::Global& g = G();
    const ObjectRef ref{ObjKind::Picture, g.selectedIndex};
    if (g.selectedKind != 1 || !objectExists(code_, ref)) return;
    g.pictures.at(ref.index).file.clear();
    hiddenPictures_.remove(ref.index);
    forget(ref);
    g.projectModified = true;
    canvas_->update();
}

void SheetWindow::editSpineText()
{
    jk::Global& g = G();
    if (g.textDestination != 2 || !textDialog) return;
    const QString old = g.spineText;
    g.pendingText = kNoText;
    g.spineTextMode = true;
    g.textAccepted = false;
    textDialog();
    g.spineTextMode = false;
    // Cancel hands the old spine text back; keep it also when a dialog
    // returns nothing at all.
    const QString text = g.textAccepted && g.pendingText != kNoText ? g.pendingText : old;
    if (text != old) g.projectModified = true;
    g.spineText = text;
    repaintLeftSpine();
    repaintRightSpine();
}

// ---- Selection ---------------------------------------------------------------

void SheetWindow::deselectObjects()
{
    const jk::Global& g = G();
    const std::pair<ObjKind, int> kinds[] = {{ObjKind::Picture, g.pictures.count()},
                                             {ObjKind::Text, g.freeText.count()},
                                             {ObjKind::CharField, g.charFields.count()},
                                             {ObjKind::NumField, g.numFields.count()}};
    for (const auto& [kind, count] : kinds)
        for (int i = 1; i <= std::min(count, kMarkedRange); ++i)
            if (objectExists(code_, {kind, i})) shownBorder_.insert({kind, i}, 0);
    canvas_->update();
}

void SheetWindow::popUp(const char* menuName, const QPoint& globalPos)
{
    QMenu* menu = main_ ? main_->findChild<QMenu*>(QString::fromLatin1(menuName)) : nullptr;
    if (!menu) return;
    if (showPopup) showPopup(menu, globalPos);
    else menu->popup(globalPos);
}

void SheetWindow::canvasPress(const QPoint& twips, const QPoint& globalPos)
{
    pressed_.reset();
    if (previewShown()) return;
    const Hit hit = hitTest(code_, renderOptions(), twips);
    if (hit.kind == Hit::Object) {
        pressed_ = hit.ref;
        objectPress(hit.ref, globalPos);
    } else if (hit.kind == Hit::Canvas) {
        apply(emptyCanvasTable());
    }
}

void SheetWindow::canvasRelease()
{
    if (const auto ref = pressed_) {
        pressed_.reset();
        objectRelease(*ref);
    }
}

void SheetWindow::objectPress(ObjectRef ref, const QPoint& globalPos)
{
    jk::Global& g = G();
    if (!objectExists(code_, ref)) return;
    // The marked flag is about the object that was marked last: a press on
    // another object marks that one.
    const bool wasMarked = g.marked && markedRef_ == ref;
    g.selectedIndex = jk::i16(ref.index);
    deselectObjects();
    apply(enableClipboardTable());
    g.projectModified = true;
    g.blockSelector = ref.kind == ObjKind::PageText ? 0 : 1;

    if (ref.kind == ObjKind::Picture) {
        g.selectedKind = 1;
        g.pictureNudge = 1;
        shownBorder_.insert(ref, wasMarked ? 0 : 1);
        g.marked = (!wasMarked);
        markedRef_ = wasMarked ? std::nullopt : std::optional<ObjectRef>(ref);
        const auto& fit = g.texts.fitCaptions;
        const int mode = g.pictures.at(ref.index).displayMode == 2 ? 1 : 0;
        if (auto* view = qobject_cast<QAction*>(command(QStringLiteral("PicView"))))
            if (!fit[std::size_t(mode)].isEmpty()) view->setText(fit[std::size_t(mode)]);
        canvas_->update();
        if (g.marked) popUp("Piplace", globalPos);
        if (g.resizeMode) g.moveMode = false;
        return;
    }

    g.pictureNudge = 0;
    const char* menu = "PoPlace";
    switch (ref.kind) {
    case ObjKind::CharField:
        g.selectedKind = 2;
        g.fieldSubKind = 1;
        menu = "AAction";
        break;
    case ObjKind::NumField:
        g.selectedKind = 2;
        g.fieldSubKind = 2;
        menu = "Naction";
        break;
    default:
        g.selectedKind = 0;
        g.fieldSubKind = 3;
        break;
    }
    if (wasMarked) {
        // A second click unmarks and ends moving and resizing.
        shownBorder_.remove(ref);
        g.marked = false;
        markedRef_.reset();
        g.moveMode = false;
        g.resizeMode = false;
    } else {
        shownBorder_.insert(ref, 1);
        g.marked = true;
        markedRef_ = ref;
    }
    canvas_->update();
    if (g.marked) popUp(menu, globalPos);
}

void SheetWindow::objectRelease(ObjectRef ref)
{
    // A text block or field gets its stored border back. When the press
    // marked it, its pop-up menu has taken the release, so the mark stays.
    if (ref.kind == ObjKind::Picture) return;
    if (G().marked && markedRef_ == ref) return;
    shownBorder_.remove(ref);
    canvas_->update();
}

// ---- Step moves and resizes -------------------------------------------------------

std::optional<ObjectRef> SheetWindow::selectedObject(bool forStacking) const
{
    const jk::Global& g = G();
    std::optional<ObjectRef> ref;
    switch (g.selectedKind) {
    case 0: ref = ObjectRef{g.pageRequest != 1 ? ObjKind::PageText : ObjKind::Text, g.selectedIndex}; break;
    case 1: ref = ObjectRef{ObjKind::Picture, g.selectedIndex}; break;
    case 2:
        if (forStacking) return std::nullopt;  // fields keep their place
        ref = ObjectRef{g.fieldSubKind == 1 ? ObjKind::CharField : ObjKind::NumField, g.selectedIndex};
        break;
    default: return std::nullopt;
    }
    if (!objectExists(code_, *ref)) return std::nullopt;
    return ref;
}

void SheetWindow::nudge(int dLeft, int dTop, int dWidth, int dHeight)
{
    jk::Global& g = G();
    const auto ref = selectedObject(false);
    if (!ref) return;
    const auto geo = jk::sheet::geometry(*ref);
    if (!geo) return;
    const int step = g.nudgeStep;
    bool changed = false;
    // Going back is allowed only while the value is above its bound: a move
    // stops once past the edge, a resize at one step.
    auto stepField = [&](jk::i16* v, int direction, int bound) {
        if (!direction || (direction < 0 && !(*v > bound))) return;
        *v = clampTwips(qint64(*v) + qint64(direction) * step);
        changed = true;
    };
    if (g.moveMode) {
        stepField(geo->left, dLeft, 0);
        stepField(geo->top, dTop, 0);
    }
    if (g.resizeMode) {
        stepField(geo->width, dWidth, step);
        stepField(geo->height, dHeight, step);
    }
    if (!changed) return;
    g.projectModified = true;
    canvas_->update();
}

void SheetWindow::stepLeft() { nudge(-1, 0, -1, 0); }
void SheetWindow::stepRight() { nudge(1, 0, 1, 0); }
void SheetWindow::stepUp() { nudge(0, -1, 0, -1); }
void SheetWindow::stepDown() { nudge(0, 1, 0, 1); }

// ---- Stacking ----------------------------------------------------------------

void SheetWindow::restack(bool toFront)
{
    const auto ref = selectedObject(true);
    if (!ref) return;
    const bool page = ref->kind == ObjKind::PageText;
    std::vector<ObjectRef>& list = page ? pageStacking_ : stacking_;
    // Take the order as it is drawn now, objects made elsewhere included.
    list = page ? pageStacking(code_, renderOptions()) : canvasStacking(code_, renderOptions());
    std::erase(list, *ref);
    if (toFront) list.push_back(*ref);
    else list.insert(list.begin(), *ref);
    canvas_->update();
}

void SheetWindow::bringToFront() { restack(true); }
void SheetWindow::sendToBack() { restack(false); }

// ---- The picture menu's requests ---------------------------------------------------

void SheetWindow::pictureRequests()
{
    jk::Global& g = G();
    const ObjectRef ref{ObjKind::Picture, g.selectedIndex};
    const bool valid = g.selectedKind == 1 && objectExists(code_, ref);

    if (g.pictureEditRequest) {
        g.pictureEditRequest = false;
        const QString file = valid ? g.pictures.at(ref.index).file : QString();
        if (valid && !file.startsWith(u'~')) {
            QString error;
            auto* programs = pf::services().programs;
            const bool ok = programs && !g.picturesEditor.isEmpty() && programs->start(g.picturesEditor, {file}, &error);
            if (!ok) {
                const QString text = g.texts.msg(jk::Msg::EditorNotStarted).isEmpty()
                                         ? QStringLiteral("The picture editor could not be started. Check its path in Preferences.")
                                         : g.texts.msg(jk::Msg::EditorNotStarted);
                showMessage(text, pf::Icon::Information);
            }
        }
    }
    if (g.resizeMode) g.moveMode = false;

    if (g.pictureChangeRequest) {
        g.pictureChangeRequest = false;
        if (!valid) return;
        if (pictureDialog) {
            g.chosenPictureFile.clear();
            g.pictureDialogPurpose = 1;
            pictureDialog();
        }
        const QString chosen = g.chosenPictureFile;
        if (chosen.isEmpty()) return;
        // The new picture takes the place and size of the old one.
        g.pictures.at(ref.index).file = chosen;
        g.projectModified = true;
        canvas_->update();
    }
}
