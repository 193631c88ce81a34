// The sheet's fields: inserting and editing them through the field dialog,
// deleting them, and stepping their numbers and values. What a field shows
// lives in its record (model/Numbering); the sheet fits the field to its
// text and repaints.
#include "ui/sheet/Actions.h"
#include "ui/sheet/SheetWindow.h"
#include "model/Numbering.h"
#include <QAction>

using namespace jk::sheet;

namespace {

// A field as large as its text, at the canvas's top-left corner when new.
void fitToText(jk::TextStyle& s, const QString& text, bool place)
{
    if (s.fontName.isEmpty()) applyDefaultFont(s);
    if (place) {
        s.top = 0;
        s.left = 0;
    }
    const QSize size = textExtentTwips(s, text);
    s.width = clampTwips(size.width());
    s.height = clampTwips(size.height());
}

// What a character field shows after the dialog: the value it showed when
// that is still in the file, else the file's first value, else the first
// value typed.
QString charFieldText(const jk::CharFieldRecord& r, const QString& typed)
{
    const QStringList values = jk::fieldValues(r.valueFile);
    if (!r.text.isEmpty() && values.contains(r.text)) return r.text;
    if (!values.isEmpty()) return values.first();
    return typed.section(u'\n', 0, 0).trimmed();
}

}  // namespace

void SheetWindow::fieldShownChanged(ObjectRef ref)
{
    // Every sheet hears it; the first one fits the record, the others find
    // it fitted.
    if (const jk::TextStyle* s = project_.style(ref)) {
        // A field grows with a longer text ("999" to "1000", a longer name)
        // and keeps a size the user gave it otherwise.
        const QSize need = textExtentTwips(*s, shownText(project_, ref));
        if (need.width() > s->width || need.height() > s->height) {
            jk::TextStyle grown = *s;
            grown.width = std::max(grown.width, clampTwips(need.width()));
            grown.height = std::max(grown.height, clampTwips(need.height()));
            project_.setStyle(ref, grown);
        }
    }
    canvas_->update();
}

// ---- Inserting and editing -------------------------------------------------------

void SheetWindow::insertNumField()
{
    const jk::RecordTable<jk::NumFieldRecord>& table = project_.numFields();
    if (!isFormatCode(code_) || refuseWhenFull(table.full(), QStringLiteral("numeric fields"), table.capacity()))
        return;
    // The slot is taken before the dialog: a cancelled dialog leaves it empty.
    const int index = project_.addNumField(jk::NumFieldRecord{});
    sel_.object = {ObjKind::NumField, index};
    const FieldEditResult res = dialogs_.editNumField(window(), jk::NumFieldRecord{});
    if (!res.accepted) return;
    jk::NumFieldRecord r = res.numField;
    r.number = jk::i16(std::clamp(jk::leadingNumber(res.numberText), 1, jk::kMaxFieldNumber));
    r.sheet = jk::i16(code_);
    r.shown.reset();
    fitToText(r.style, jk::formatFieldNumber(r.number, r.digits), true);
    project_.setNumField(index, r);
    stacking_.push_back({ObjKind::NumField, index});
    project_.setModified(true);
    canvas_->update();
    if (r.spineLink) jk::updateSpineNumber(project_);
}

void SheetWindow::insertCharField()
{
    const jk::RecordTable<jk::CharFieldRecord>& table = project_.charFields();
    if (!isFormatCode(code_) || refuseWhenFull(table.full(), QStringLiteral("character fields"), table.capacity()))
        return;
    const int index = project_.addCharField(jk::CharFieldRecord{});
    sel_.object = {ObjKind::CharField, index};
    const FieldEditResult res = dialogs_.editCharField(window(), jk::CharFieldRecord{});
    if (!res.accepted) return;
    jk::CharFieldRecord r = res.charField;
    r.sheet = jk::i16(code_);
    r.text = charFieldText(r, res.fieldText);
    // No value to show: an empty field could never be seen or selected.
    if (r.text.isEmpty()) return;
    fitToText(r.style, r.text, true);
    project_.setCharField(index, r);
    stacking_.push_back({ObjKind::CharField, index});
    project_.setModified(true);
    canvas_->update();
}

void SheetWindow::editField()
{
    const ObjectRef ref = sel_.object;
    if (!jk::isField(ref.kind) || !project_.exists(code_, ref)) return;
    const int i = ref.index;
    if (ref.kind == ObjKind::CharField) {
        const FieldEditResult res = dialogs_.editCharField(window(), project_.charFields().at(i));
        jk::CharFieldRecord r = res.charField;
        if (res.accepted) {
            const QString text = charFieldText(r, res.fieldText);
            if (!text.isEmpty()) r.text = text;
            fitToText(r.style, r.text, false);
        }
        project_.setCharField(i, r);
    } else {
        const bool linkedBefore = project_.numFields().at(i).spineLink;
        const FieldEditResult res = dialogs_.editNumField(window(), project_.numFields().at(i));
        jk::NumFieldRecord r = res.numField;
        if (res.accepted) {
            r.number = jk::i16(std::clamp(jk::leadingNumber(res.numberText), 1, jk::kMaxFieldNumber));
            r.shown.reset();
            fitToText(r.style, jk::formatFieldNumber(r.number, r.digits), false);
        }
        project_.setNumField(i, r);
        if (r.spineLink || linkedBefore) jk::updateSpineNumber(project_);
    }
    // Digits, spine link, background and border count at once, OK or not.
    project_.setModified(true);
    canvas_->update();
}

void SheetWindow::deleteField()
{
    const ObjectRef ref = sel_.object;
    if (!jk::isField(ref.kind) || !project_.exists(code_, ref)) return;
    const bool linked = ref.kind == ObjKind::NumField && project_.numFields().at(ref.index).spineLink;
    project_.remove(ref);
    forget(ref);
    project_.setModified(true);
    canvas_->update();
    // The spines lose the number, or take that of another linked field.
    if (linked) jk::updateSpineNumber(project_);
}

// ---- Stepping ----------------------------------------------------------------

// The selected field of the kind, when it is on this sheet.
int SheetWindow::selectedField(bool chars) const
{
    const ObjKind kind = chars ? ObjKind::CharField : ObjKind::NumField;
    return sel_.object.kind == kind && project_.exists(code_, sel_.object) ? sel_.object.index : 0;
}

void SheetWindow::stepNumberForward()
{
    if (const int i = selectedField(false)) jk::stepNumber(project_, i, 1);
}

void SheetWindow::stepNumberBack()
{
    if (const int i = selectedField(false)) jk::stepNumber(project_, i, -1);
}

void SheetWindow::resetNumbers()
{
    if (const int i = selectedField(false)) jk::resetNumber(project_, i);
}

void SheetWindow::nextValue()
{
    if (const int i = selectedField(true)) jk::stepValue(project_, i, 1);
    updateValueMenu();
}

void SheetWindow::previousValue()
{
    if (const int i = selectedField(true)) jk::stepValue(project_, i, -1);
    updateValueMenu();
}

void SheetWindow::updateValueMenu()
{
    const int i = selectedField(true);
    const jk::ValuePosition p = i ? jk::valuePosition(project_, i) : jk::ValuePosition{};
    // A value that is not in the file (or a file that cannot be read) has
    // nothing before or after it.
    CommandTable t;
    t.on("voirnext", p.position >= 1 && p.position < p.count);
    t.on("VoirPrevious", p.position >= 2);
    apply(t);
}

void SheetWindow::advanceFields()
{
    jk::advanceSheet(project_, code_);
}
