#include "model/Project.h"

namespace jk {

void ProjectData::createTables(TableSizing when)
{
    freeText.reset(100);
    pageText.reset(50);
    pictures.reset(50);
    switch (when) {
    case TableSizing::StartUp: charFields.reset(100); numFields.reset(50); break;
    case TableSizing::NewProject: charFields.reset(100); numFields.reset(100); break;
    case TableSizing::OpenProject: charFields.reset(50); numFields.reset(50); break;
    }
    backgrounds.fill(BackgroundRecord{});
}

Project::Project(QObject* parent) : QObject(parent) { d_.createTables(TableSizing::StartUp); }

const BackgroundRecord& Project::background(int code) const
{
    static const BackgroundRecord none;
    return code >= 1 && code < int(d_.backgrounds.size()) ? d_.backgrounds[std::size_t(code)] : none;
}

bool Project::exists(int code, ObjectRef r) const
{
    auto live = [&](const auto& table) {
        return table.valid(r.index) && table.at(r.index).sheet == code && !table.at(r.index).isFree();
    };
    switch (r.kind) {
    case ObjKind::Text: return live(d_.freeText);
    case ObjKind::PageText: return live(d_.pageText);
    case ObjKind::Picture: return live(d_.pictures);
    case ObjKind::CharField: return live(d_.charFields);
    case ObjKind::NumField: return live(d_.numFields);
    }
    return false;
}

const TextStyle* Project::style(ObjectRef r) const
{
    switch (r.kind) {
    case ObjKind::Text: return d_.freeText.valid(r.index) ? &d_.freeText.at(r.index).style : nullptr;
    case ObjKind::PageText: return d_.pageText.valid(r.index) ? &d_.pageText.at(r.index).style : nullptr;
    case ObjKind::CharField: return d_.charFields.valid(r.index) ? &d_.charFields.at(r.index).style : nullptr;
    case ObjKind::NumField: return d_.numFields.valid(r.index) ? &d_.numFields.at(r.index).style : nullptr;
    case ObjKind::Picture: return nullptr;
    }
    return nullptr;
}

void Project::reset(TableSizing when)
{
    d_.createTables(when);
    d_.spineText.clear();
    d_.spineNumberText.clear();
    d_.spineTitle.clear();
    d_.spineFont = SpineFont{};
    d_.currentNumber = 1;
    d_.printWeights = 0;
    const bool wasModified = d_.modified;
    d_.modified = false;
    emit reloaded();
    if (wasModified) emit modifiedChanged(false);
}

void Project::load(ProjectData d)
{
    const bool wasModified = d_.modified;
    d_ = std::move(d);
    emit reloaded();
    if (wasModified != d_.modified) emit modifiedChanged(d_.modified);
}

void Project::setFileName(const QString& name) { d_.fileName = name; }
void Project::setFilePath(const QString& path) { d_.filePath = path; }

void Project::setModified(bool modified)
{
    if (d_.modified == modified) return;
    d_.modified = modified;
    emit modifiedChanged(modified);
}

void Project::setSheetComposition(int value) { d_.sheetComposition = i16(value); }
void Project::setPrintWeights(int value) { d_.printWeights = i16(value); }
void Project::setCurrentNumber(int value) { d_.currentNumber = i16(value); }

void Project::setSpineText(const QString& text)
{
    d_.spineText = text;
    emit sheetChanged(0);
}

void Project::setSpineNumberText(const QString& text)
{
    d_.spineNumberText = text;
    emit sheetChanged(0);
}


void Project::setSpineFont(const SpineFont& font)
{
    d_.spineFont = font;
    emit sheetChanged(0);
}

void Project::setSpinesHidden(bool hidden) { d_.spinesHidden = hidden; }

void Project::setBackground(int code, const QString& text)
{
    if (code < 1 || code >= int(d_.backgrounds.size())) return;
    d_.backgrounds[std::size_t(code)].text = text;
    emit sheetChanged(code);
}

QString propagateSpine(ProjectData& d)
{
    if (d.spineText.isEmpty()) d.spineText = QStringLiteral(" ");
    if (d.spineNumberText.isEmpty()) d.spineNumberText = QStringLiteral(" ");
    d.spineTitle = d.spineText + u' ' + d.spineNumberText;
    return d.spineTitle;
}

void Project::propagateSpine()
{
    emit spinePropagated(jk::propagateSpine(d_));
    emit sheetChanged(0);
}

void Project::prepareForSave()
{
    d_.spineTitle = d_.spineText;
    for (bool page : {false, true}) {
        RecordTable<TextRecord>& table = d_.texts(page);
        for (int i = 1; i <= table.count(); ++i) {
            TextStyle& s = table.at(i).style;
            if (table.at(i).isFree() || (s.top >= 0 && s.left >= 0)) continue;
            s.top = std::max<i16>(s.top, 0);
            s.left = std::max<i16>(s.left, 0);
            emit objectChanged({page ? ObjKind::PageText : ObjKind::Text, i});
        }
    }
}

namespace {
template <typename R>
int addTo(RecordTable<R>& table, const R& r)
{
    return table.append(r);
}
}  // namespace

int Project::addText(bool page, const TextRecord& r)
{
    const int i = addTo(d_.texts(page), r);
    if (i) emit objectChanged({page ? ObjKind::PageText : ObjKind::Text, i});
    return i;
}

int Project::addPicture(const PictureRecord& r)
{
    const int i = addTo(d_.pictures, r);
    if (i) emit objectChanged({ObjKind::Picture, i});
    return i;
}

int Project::addCharField(const CharFieldRecord& r)
{
    const int i = addTo(d_.charFields, r);
    if (i) emit objectChanged({ObjKind::CharField, i});
    return i;
}

int Project::addNumField(const NumFieldRecord& r)
{
    const int i = addTo(d_.numFields, r);
    if (i) emit objectChanged({ObjKind::NumField, i});
    return i;
}

void Project::setText(bool page, int index, const TextRecord& r)
{
    if (!d_.texts(page).valid(index)) return;
    d_.texts(page).at(index) = r;
    emit objectChanged({page ? ObjKind::PageText : ObjKind::Text, index});
}

void Project::setPicture(int index, const PictureRecord& r)
{
    if (!d_.pictures.valid(index)) return;
    d_.pictures.at(index) = r;
    emit objectChanged({ObjKind::Picture, index});
}

void Project::setCharField(int index, const CharFieldRecord& r)
{
    if (!d_.charFields.valid(index)) return;
    d_.charFields.at(index) = r;
    emit objectChanged({ObjKind::CharField, index});
}

void Project::setNumField(int index, const NumFieldRecord& r)
{
    if (!d_.numFields.valid(index)) return;
    d_.numFields.at(index) = r;
    emit objectChanged({ObjKind::NumField, index});
}

void Project::setStyle(ObjectRef ref, const TextStyle& s)
{
    TextStyle* target = const_cast<TextStyle*>(style(ref));
    if (!target) return;
    *target = s;
    emit objectChanged(ref);
}

void Project::setGeometry(ObjectRef ref, i16 left, i16 top, i16 width, i16 height)
{
    if (ref.kind == ObjKind::Picture) {
        if (!d_.pictures.valid(ref.index)) return;
        PictureRecord& p = d_.pictures.at(ref.index);
        p.left = left, p.top = top, p.width = width, p.height = height;
    } else {
        TextStyle* s = const_cast<TextStyle*>(style(ref));
        if (!s) return;
        s->left = left, s->top = top, s->width = width, s->height = height;
    }
    emit objectChanged(ref);
}

void Project::remove(ObjectRef ref)
{
    switch (ref.kind) {
    case ObjKind::Text:
    case ObjKind::PageText:
        if (!d_.texts(ref.kind == ObjKind::PageText).valid(ref.index)) return;
        d_.texts(ref.kind == ObjKind::PageText).at(ref.index).text.clear();
        break;
    case ObjKind::Picture:
        if (!d_.pictures.valid(ref.index)) return;
        d_.pictures.at(ref.index).file.clear();
        break;
    case ObjKind::CharField:
        if (!d_.charFields.valid(ref.index)) return;
        d_.charFields.at(ref.index).text.clear();
        d_.charFields.at(ref.index).valueFile.clear();
        break;
    case ObjKind::NumField:
        if (!d_.numFields.valid(ref.index)) return;
        d_.numFields.at(ref.index).number = 0;  // the mark of a deleted numeric field
        d_.numFields.at(ref.index).shown.reset();
        break;
    }
    emit objectChanged(ref);
}

void Project::setNumFieldShown(int index, const QString& text)
{
    if (!d_.numFields.valid(index)) return;
    d_.numFields.at(index).shown = text;
    emit fieldShownChanged({ObjKind::NumField, index});
}

void Project::setCharFieldShown(int index, const QString& text)
{
    if (!d_.charFields.valid(index)) return;
    d_.charFields.at(index).text = text;
    emit fieldShownChanged({ObjKind::CharField, index});
}

}  // namespace jk
