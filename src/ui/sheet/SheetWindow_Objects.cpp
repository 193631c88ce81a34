// The sheet's objects: creating, editing, deleting and restoring them, the
// selection mark, the step moves and resizes, and the stacking order. The
// records are the objects; the window keeps only what is its own: the
// stacking order and the borders it shows instead of the stored ones.
#include "platform/Services.h"
#include "ui/sheet/Actions.h"
#include "ui/sheet/SheetWindow.h"
#include "model/AppContext.h"
#include <QAction>
#include <QMenu>
#include <algorithm>

using namespace jk::sheet;
namespace pf = jk::platform;

std::function<void(QMenu*, const QPoint&)> SheetWindow::showPopup;

namespace {

constexpr int kMarkedRange = 50;  // deselectObjects reaches indexes 1-50 only

void showMessage(const QString& text, pf::Icon icon)
{
    if (auto* m = pf::services().messages)
        m->show(text, jk::texts().msgOr(jk::Msg::ProgramTitle, "Jewelcase Studio"), icon);
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
    stacking_ = canvasStacking(project_, code_, none);
    pageStacking_ = pageStacking(project_, code_, none);
    shownBorder_.clear();
    markedRef_.reset();
    pressed_.reset();
    canvas_->update();
}

std::vector<ObjectRef> SheetWindow::stackingOrder() const { return canvasStacking(project_, code_, renderOptions()); }

int SheetWindow::shownBorder(ObjectRef ref) const { return shownBorder_.value(ref, recordBorder(project_, ref)); }

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
    const jk::RecordTable<jk::TextRecord>& table = project_.data().texts(page);
    if (!isFormatCode(code_) || refuseWhenFull(table.full(), page ? QStringLiteral("text-page blocks")
                                                                  : QStringLiteral("text blocks"),
                                               table.capacity()))
        return false;

    // The slot is taken before the dialog: a cancelled dialog leaves it empty.
    const int index = project_.addText(page, jk::TextRecord{});
    sel_.object.index = index;
    const ObjectRef ref{page ? ObjKind::PageText : ObjKind::Text, index};
    const TextEditResult res = dialogs_.editText(window(), TextEditRequest{});
    jk::TextRecord r = table.at(index);
    // Font, colours, border and background count also after Cancel.
    r.style = res.style;
    r.text = res.accepted ? res.text : QString();
    if (r.text.isEmpty()) {
        project_.setText(page, index, r);
        return false;
    }

    // No font chosen in the dialog: the label's defaults. The background and
    // border the dialog may have set are kept (a fresh record holds the
    // defaults there: transparent, no border).
    if (r.style.fontName.isEmpty()) applyDefaultFont(r.style);
    r.sheet = jk::i16(code_);
    r.style.top = 0;
    r.style.left = 0;
    r.style.alignment = res.style.alignment;
    const QSize size = textExtentTwips(r.style, r.text);
    r.style.width = clampTwips(size.width());
    r.style.height = clampTwips(size.height());
    project_.setText(page, index, r);

    (page ? pageStacking_ : stacking_).push_back(ref);
    project_.setModified(true);
    canvas_->update();
    return true;
}

void SheetWindow::insertPictureObject()
{
    const jk::RecordTable<jk::PictureRecord>& table = project_.pictures();
    if (!isFormatCode(code_) || refuseWhenFull(table.full(), QStringLiteral("pictures"), table.capacity())) return;
    const auto chosen = dialogs_.choosePicture(window(), PicturePurpose::Picture);
    if (!chosen) return;
    jk::PictureRecord r;
    r.sheet = jk::i16(code_);
    r.file = chosen->recordText();
    r.top = 0;
    r.left = 0;
    const QSize size = newPictureSize(code_, r.file);
    r.width = clampTwips(size.width());
    r.height = clampTwips(size.height());
    r.displayMode = 1;
    const int index = project_.addPicture(r);
    sel_.object.index = index;
    stacking_.push_back({ObjKind::Picture, index});
    project_.setModified(true);
    canvas_->update();
}

// ---- Editing and deleting ------------------------------------------------------

void SheetWindow::editObject()
{
    if (!jk::isTextBlock(sel_.object.kind)) return;
    const bool page = editor_.blockOnPage;
    const ObjectRef ref{page ? ObjKind::PageText : ObjKind::Text, sel_.object.index};
    if (!project_.exists(code_, ref)) return;
    jk::TextRecord r = project_.data().texts(page).at(ref.index);
    TextEditRequest request;
    request.text = r.text;
    request.style = r.style;
    const TextEditResult res = dialogs_.editText(window(), request);
    // Font and colours count also on Cancel.
    r.style = res.style;
    if (!res.accepted) r.style.alignment = request.style.alignment;
    project_.setModified(true);
    if (res.accepted) {
        r.text = res.text;
        // An emptied text is a deleted block, as everywhere else.
        if (r.text.isEmpty()) forget(ref);
    }
    project_.setText(page, ref.index, r);
    canvas_->update();
}

void SheetWindow::deleteObject()
{
    switch (sel_.object.kind) {
    case ObjKind::Picture: deletePicture(); return;
    case ObjKind::CharField:
    case ObjKind::NumField: deleteField(); return;
    case ObjKind::Text:
    case ObjKind::PageText: {
        const ObjectRef ref{editor_.blockOnPage ? ObjKind::PageText : ObjKind::Text, sel_.object.index};
        if (!project_.exists(code_, ref)) return;
        project_.remove(ref);
        forget(ref);
        project_.setModified(true);
        canvas_->update();
        return;
    }
    }
}

void SheetWindow::deletePicture()
{
    const ObjectRef ref{ObjKind::Picture, sel_.object.index};
    if (sel_.object.kind != ObjKind::Picture || !project_.exists(code_, ref)) return;
    project_.remove(ref);
    hiddenPictures_.remove(ref.index);
    forget(ref);
    project_.setModified(true);
    canvas_->update();
}

void SheetWindow::editSpineText()
{
    const QString old = project_.spineText();
    TextEditRequest request;
    request.mode = TextEditRequest::Mode::Spine;
    request.text = old;
    request.spineFont = project_.spineFont();
    const TextEditResult res = dialogs_.editText(window(), request);
    // The font and colours count also after Cancel; the text only after OK.
    project_.setSpineFont(res.spineFont);
    const QString text = res.accepted ? res.text : old;
    if (text != old) project_.setModified(true);
    project_.setSpineText(text);
    repaintLeftSpine();
    repaintRightSpine();
}

// ---- Selection ---------------------------------------------------------------

void SheetWindow::deselectObjects()
{
    const std::pair<ObjKind, int> kinds[] = {{ObjKind::Picture, project_.pictures().count()},
                                             {ObjKind::Text, project_.freeText().count()},
                                             {ObjKind::CharField, project_.charFields().count()},
                                             {ObjKind::NumField, project_.numFields().count()}};
    for (const auto& [kind, count] : kinds)
        for (int i = 1; i <= std::min(count, kMarkedRange); ++i)
            if (project_.exists(code_, {kind, i})) shownBorder_.insert({kind, i}, 0);
    canvas_->update();
}

void SheetWindow::popUp(const char* menuName, const QPoint& globalPos)
{
    QMenu* menu = actions_.popup(QString::fromLatin1(menuName));
    if (!menu) return;
    if (showPopup) showPopup(menu, globalPos);
    else menu->popup(globalPos);
}

void SheetWindow::canvasPress(const QPoint& twips, const QPoint& globalPos)
{
    pressed_.reset();
    if (previewShown()) return;
    const Hit hit = hitTest(project_, code_, renderOptions(), twips);
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
    if (!project_.exists(code_, ref)) return;
    // The marked flag is about the object that was marked last: a press on
    // another object marks that one.
    const bool wasMarked = sel_.marked && markedRef_ == ref;
    sel_.object = ref;
    deselectObjects();
    apply(enableClipboardTable());
    project_.setModified(true);
    editor_.blockOnPage = ref.kind == ObjKind::PageText;

    if (ref.kind == ObjKind::Picture) {
        sel_.pictureNudge = true;
        shownBorder_.insert(ref, wasMarked ? 0 : 1);
        sel_.marked = !wasMarked;
        markedRef_ = wasMarked ? std::nullopt : std::optional<ObjectRef>(ref);
        const auto& fit = jk::texts().fitCaptions;
        const int mode = project_.pictures().at(ref.index).displayMode == 2 ? 1 : 0;
        if (QAction* view = actions_.action(QStringLiteral("PicView")))
            if (!fit[std::size_t(mode)].isEmpty()) view->setText(fit[std::size_t(mode)]);
        canvas_->update();
        if (sel_.marked) popUp("Piplace", globalPos);
        if (sel_.resizeMode) sel_.moveMode = false;
        return;
    }

    sel_.pictureNudge = false;
    const char* menu = ref.kind == ObjKind::CharField  ? "AAction"
                       : ref.kind == ObjKind::NumField ? "Naction"
                                                       : "PoPlace";
    if (wasMarked) {
        // A second click unmarks and ends moving and resizing.
        shownBorder_.remove(ref);
        sel_.marked = false;
        markedRef_.reset();
        sel_.moveMode = false;
        sel_.resizeMode = false;
    } else {
        shownBorder_.insert(ref, 1);
        sel_.marked = true;
        markedRef_ = ref;
    }
    canvas_->update();
    if (sel_.marked) popUp(menu, globalPos);
}

void SheetWindow::objectRelease(ObjectRef ref)
{
    // A text block or field gets its stored border back. When the press
    // marked it, its pop-up menu has taken the release, so the mark stays.
    if (ref.kind == ObjKind::Picture) return;
    if (sel_.marked && markedRef_ == ref) return;
    shownBorder_.remove(ref);
    canvas_->update();
}

// ---- Step moves and resizes -------------------------------------------------------

std::optional<ObjectRef> SheetWindow::selectedObject(bool forStacking) const
{
    ObjectRef ref = sel_.object;
    // Text blocks: the page the page commands act on decides which table.
    if (jk::isTextBlock(ref.kind)) ref.kind = editor_.pageRequest != 1 ? ObjKind::PageText : ObjKind::Text;
    if (forStacking && jk::isField(ref.kind)) return std::nullopt;  // fields keep their place
    if (!project_.exists(code_, ref)) return std::nullopt;
    return ref;
}

void SheetWindow::nudge(int dLeft, int dTop, int dWidth, int dHeight)
{
    const auto ref = selectedObject(false);
    if (!ref) return;
    const QRect now = ref->kind == ObjKind::Picture
                          ? [&] {
                                const jk::PictureRecord& p = project_.pictures().at(ref->index);
                                return QRect(p.left, p.top, p.width, p.height);
                            }()
                          : [&] {
                                const jk::TextStyle* s = project_.style(*ref);
                                return QRect(s->left, s->top, s->width, s->height);
                            }();
    jk::i16 v[4] = {jk::i16(now.left()), jk::i16(now.top()), jk::i16(now.width()), jk::i16(now.height())};
    const int step = sel_.nudgeStep;
    bool changed = false;
    // Going back is allowed only while the value is above its bound: a move
    // stops once past the edge, a resize at one step.
    auto stepField = [&](jk::i16& value, int direction, int bound) {
        if (!direction || (direction < 0 && !(value > bound))) return;
        value = clampTwips(qint64(value) + qint64(direction) * step);
        changed = true;
    };
    if (sel_.moveMode) {
        stepField(v[0], dLeft, 0);
        stepField(v[1], dTop, 0);
    }
    if (sel_.resizeMode) {
        stepField(v[2], dWidth, step);
        stepField(v[3], dHeight, step);
    }
    if (!changed) return;
    project_.setGeometry(*ref, v[0], v[1], v[2], v[3]);
    project_.setModified(true);
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
    list = page ? pageStacking(project_, code_, renderOptions()) : canvasStacking(project_, code_, renderOptions());
    std::erase(list, *ref);
    if (toFront) list.push_back(*ref);
    else list.insert(list.begin(), *ref);
    canvas_->update();
}

void SheetWindow::bringToFront() { restack(true); }
void SheetWindow::sendToBack() { restack(false); }

// ---- The picture menu ---------------------------------------------------------------

void SheetWindow::editPictureExternally()
{
    const ObjectRef ref{ObjKind::Picture, sel_.object.index};
    const bool valid = sel_.object.kind == ObjKind::Picture && project_.exists(code_, ref);
    const QString file = valid ? project_.pictures().at(ref.index).file : QString();
    if (valid && !file.startsWith(u'~')) {
        QString error;
        auto* programs = pf::services().programs;
        const QString& editor = jk::app().settings.picturesEditor;
        const bool ok = programs && !editor.isEmpty() && programs->start(editor, {file}, &error);
        if (!ok)
            showMessage(jk::texts().msgOr(jk::Msg::EditorNotStarted,
                                          "The picture editor could not be started. Check its path in Preferences."),
                        pf::Icon::Information);
    }
    if (sel_.resizeMode) sel_.moveMode = false;
}

void SheetWindow::changePicture()
{
    if (sel_.resizeMode) sel_.moveMode = false;
    const ObjectRef ref{ObjKind::Picture, sel_.object.index};
    if (sel_.object.kind != ObjKind::Picture || !project_.exists(code_, ref)) return;
    const auto chosen = dialogs_.choosePicture(window(), PicturePurpose::Picture);
    if (!chosen) return;
    // The new picture takes the place and size of the old one.
    jk::PictureRecord r = project_.pictures().at(ref.index);
    r.file = chosen->recordText();
    project_.setPicture(ref.index, r);
    project_.setModified(true);
    canvas_->update();
}
