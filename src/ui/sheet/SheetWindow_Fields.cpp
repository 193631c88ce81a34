// The sheet's fields: inserting and editing them through the field dialog,
// deleting them, and stepping their numbers and values. What a field shows
// lives in its record (state/Numbering); the sheet fits the field to its
// text and repaints.
#include "ui/dialogs/FieldDialog.h"
#include "ui/sheet/SheetWindow.h"
#include "model/Global.h"
#include "model/Numbering.h"
#include "model/Procedures.h"
#include <QAction>

using jk::G;
using namespace jk::sheet;

namespace {

void repaintSheets()
{
    if (jk::IShell* shell = jk::shell())
        for (jk::ISheet* s : shell->sheets())
            if (auto* sheet = dynamic_cast<SheetWindow*>(s)) sheet->canvas()->update();
}

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

void SheetWindow::installFieldHook()
{
    static bool installed = false;
    if (installed) return;
    installed = true;
    jk::setFieldShownHook([](bool numeric, int index) {
        const ObjectRef ref{numeric ? ObjKind::NumField : ObjKind::CharField, index};
        jk::TextStyle* s = textStyle(ref);
        if (!s) return;
        // A field grows with a longer text ("999" to "1000", a longer name)
        // and keeps a size the user gave it otherwise.
        const QSize need = textExtentTwips(*s, shownText(ref));
        if (need.width() > s->width) s->width = clampTwips(need.width());
        if (need.height() > s->height) s->height = clampTwips(need.height());
        repaintSheets();
    });
}

// ---- Inserting and editing -------------------------------------------------------

void SheetWindow::insertNumField()
{
    installFieldHook();
    jk::Global& g = G();
    if (!isFormatCode(code_) ||
        refuseWhenFull(g.numFields.full(), QStringLiteral("numeric fields"), g.numFields.capacity()))
        return;
    // The slot is taken before the dialog, which writes into the record.
    const int index = g.numFields.append(jk::NumFieldRecord{});
    g.selectedIndex = jk::i16(index);
    g.selectedKind = 2;
    g.fieldSubKind = 2;
    jk::fieldHandOver() = {};
    if (!FieldDialog::run(main_ ? main_ : this)) {
        // Nothing is created; the slot stays taken and empty.
        g.numFields.at(index) = jk::NumFieldRecord{};
        return;
    }
    jk::NumFieldRecord& r = g.numFields.at(index);
    r.number = jk::i16(std::clamp(jk::leadingNumber(jk::fieldHandOver().numberText), 1, jk::kMaxFieldNumber));
    r.sheet = jk::i16(code_);
    r.shown.reset();
    fitToText(r.style, jk::numFieldText(index), true);
    stacking_.push_back({ObjKind::NumField, index});
    g.projectModified = true;
    canvas_->update();
    if (r.spineLink) jk::updateSpineNumber();
}

void SheetWindow::insertCharField()
{
    installFieldHook();
    jk::Global& g = G();
    if (!isFormatCode(code_) ||
        refuseWhenFull(g.charFields.full(), QStringLiteral("character fields"), g.charFields.capacity()))
        return;
    const int index = g.charFields.append(jk::CharFieldRecord{});
    g.selectedIndex = jk::i16(index);
    g.selectedKind = 2;
    g.fieldSubKind = 1;
    jk::fieldHandOver() = {};
    if (!FieldDialog::run(main_ ? main_ : this)) {
        g.charFields.at(index) = jk::CharFieldRecord{};
        return;
    }
    jk::CharFieldRecord& r = g.charFields.at(index);
    r.sheet = jk::i16(code_);
    r.text = charFieldText(r, jk::fieldHandOver().fieldText);
    if (r.text.isEmpty()) {
        // No value to show: an empty field could never be seen or selected.
        g.charFields.at(index) = jk::CharFieldRecord{};
        return;
    }
    fitToText(r.style, r.text, true);
    stacking_.push_back({ObjKind::CharField, index});
    g.projectModified = true;
    canvas_->update();
}

void SheetWindow::editField()
{
    installFieldHook();
    jk::Global& g = G();
    const bool chars = g.fieldSubKind == 1;
    const ObjectRef ref{chars ? ObjKind::CharField : ObjKind::NumField, g.selectedIndex};
    if (!objectExists(code_, ref)) return;
    const int i = ref.index;
    const bool linkedBefore = !chars && g.numFields.at(i).spineLink;
    jk::fieldHandOver() = {};
    const bool ok = FieldDialog::run(main_ ? main_ : this);
    // Digits, spine link, background and border were written at once, OK
    // or not.
    g.projectModified = true;
    if (ok && chars) {
        jk::CharFieldRecord& r = g.charFields.at(i);
        const QString text = charFieldText(r, jk::fieldHandOver().fieldText);
        if (!text.isEmpty()) r.text = text;
        fitToText(r.style, r.text, false);
    } else if (ok) {
        jk::NumFieldRecord& r = g.numFields.at(i);
        r.number = jk::i16(std::clamp(jk::leadingNumber(jk::fieldHandOver().numberText), 1, jk::kMaxFieldNumber));
        r.shown.reset();
        fitToText(r.style, jk::numFieldText(i), false);
    }
    canvas_->update();
    if (!chars && (g.numFields.at(i).spineLink || linkedBefore)) jk::updateSpineNumber();
}

void SheetWindow::deleteField()
{
    jk::Global& g = G();
    const bool chars = g.fieldSubKind == 1;
    const ObjectRef ref{chars ? ObjKind::CharField : ObjKind::NumField, g.selectedIndex};
    if (!objectExists(code_, ref)) return;
    bool linked = false;
    if (chars) {
        g.charFields.at(ref.index).text.clear();
        g.charFields.at(ref.index).valueFile.clear();
    } else {
        jk::NumFieldRecord& r = g.numFields.at(ref.index);
        linked = r.spineLink;
        r.number = 0;  // the mark of a deleted numeric field
        r.shown.reset();
    }
    forget(ref);
    g.projectModified = true;
    canvas_->update();
    // The spines lose the number, or take that of another linked field.
    if (linked) jk::updateSpineNumber();
}

// ---- Stepping ----------------------------------------------------------------

namespace {

// The selected field of the kind, when it is on the sheet of this code.
int selectedField(int code, bool chars)
{
    const jk::Global& g = G();
    if (g.selectedKind != 2 || (g.fieldSubKind == 1) != chars) return 0;
    const ObjectRef ref{chars ? ObjKind::CharField : ObjKind::NumField, g.selectedIndex};
    return objectExists(code, ref) ? ref.index : 0;
}

}  // namespace

void SheetWindow::stepNumberForward()
{
    installFieldHook();
    if (const int i = selectedField(code_, false)) jk::stepNumber(i, 1);
}

void SheetWindow::stepNumberBack()
{
    installFieldHook();
    if (const int i = selectedField(code_, false)) jk::stepNumber(i, -1);
}

void SheetWindow::resetNumbers()
{
    installFieldHook();
    if (const int i = selectedField(code_, false)) jk::resetNumber(i);
}

void SheetWindow::nextValue()
{
    installFieldHook();
    if (const int i = selectedField(code_, true)) jk::stepValue(i, 1);
    updateValueMenu();
}

void SheetWindow::previousValue()
{
    installFieldHook();
    if (const int i = selectedField(code_, true)) jk::stepValue(i, -1);
    updateValueMenu();
}

void SheetWindow::updateValueMenu()
{
    const int i = selectedField(code_, true);
    const jk::ValuePosition p = i ? jk::valuePosition(i) : jk::ValuePosition{};
    // A value that is not in the file (or a file that cannot be read) has
    // nothing before or after it.
    if (auto* next = qobject_cast<QAction*>(command(QStringLiteral("voirnext"))))
        next->setEnabled(p.position >= 1 && p.position < p.count);
    if (auto* previous = qobject_cast<QAction*>(command(QStringLiteral("VoirPrevious"))))
        previous->setEnabled(p.position >= 2);
}

void SheetWindow::advanceFields()
{
    installFieldHook();
    jk::advanceSheet(code_);
}
