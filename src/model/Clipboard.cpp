#include "model/Clipboard.h"
#include <algorithm>

namespace jk {

namespace {

// The record of an object that is there: inside its table, of this sheet
// and not deleted.
template <typename R>
const R* present(const RecordTable<R>& table, int sheetCode, int index)
{
    if (!table.valid(index) || index > table.count()) return nullptr;
    const R& r = table.at(index);
    if (r.sheet != sheetCode || r.isFree()) return nullptr;
    return &r;
}

// A slot keeps the record without its owner: the paste gives it one.
template <typename R>
void keep(R& slot, const R& r)
{
    slot = r;
    slot.sheet = 0;
}

PasteResult full(PasteResult res, int capacity)
{
    res.status = PasteResult::Full;
    res.capacity = capacity;
    return res;
}

PasteResult pasted(PasteResult res, int index, int capacity)
{
    if (!index) return full(res, capacity);
    res.status = PasteResult::Pasted;
    res.index = index;
    return res;
}

}  // namespace

ClipKind clipKindOf(ObjKind kind)
{
    switch (kind) {
    case ObjKind::Text:
    case ObjKind::PageText: return ClipKind::TextBlock;
    case ObjKind::Picture: return ClipKind::Picture;
    case ObjKind::CharField: return ClipKind::CharField;
    case ObjKind::NumField: return ClipKind::NumField;
    }
    return ClipKind::None;
}

bool clipCopy(Clipboard& clip, const Project& project, int sheetCode, ClipKind kind, int index, bool page)
{
    switch (kind) {
    case ClipKind::TextBlock:
        if (const TextRecord* r = present(project.data().texts(page), sheetCode, index)) {
            keep(clip.text, *r);
            break;
        }
        return false;
    case ClipKind::Picture:
        if (const PictureRecord* r = present(project.pictures(), sheetCode, index)) {
            keep(clip.picture, *r);
            break;
        }
        return false;
    case ClipKind::CharField:
        if (const CharFieldRecord* r = present(project.charFields(), sheetCode, index)) {
            keep(clip.charField, *r);
            break;
        }
        return false;
    case ClipKind::NumField:
        if (const NumFieldRecord* r = present(project.numFields(), sheetCode, index)) {
            keep(clip.numField, *r);
            break;
        }
        return false;
    case ClipKind::None: return false;
    }
    clip.last = kind;
    return true;
}

i16 pasteLeft(int left, int width, int sheetWidth)
{
    if (left < sheetWidth) return i16(left);
    return i16(std::clamp(sheetWidth - std::max(width, 0), 0, 32767));
}

PasteResult clipPaste(const Clipboard& clip, Project& project, int sheetCode, bool toPage, int sheetWidth)
{
    PasteResult res;
    res.kind = clip.last;
    switch (clip.last) {
    case ClipKind::TextBlock: {
        TextRecord r = clip.text;
        r.style.left = pasteLeft(r.style.left, r.style.width, sheetWidth);
        res.page = toPage;
        r.sheet = i16(sheetCode);
        return pasted(res, project.addText(toPage, r), project.data().texts(toPage).capacity());
    }
    case ClipKind::Picture: {
        PictureRecord r = clip.picture;
        r.left = pasteLeft(r.left, r.width, sheetWidth);
        r.sheet = i16(sheetCode);
        return pasted(res, project.addPicture(r), project.pictures().capacity());
    }
    case ClipKind::CharField: {
        CharFieldRecord r = clip.charField;
        r.style.left = pasteLeft(r.style.left, r.style.width, sheetWidth);
        r.sheet = i16(sheetCode);
        return pasted(res, project.addCharField(r), project.charFields().capacity());
    }
    case ClipKind::NumField: {
        NumFieldRecord r = clip.numField;
        r.style.left = pasteLeft(r.style.left, r.style.width, sheetWidth);
        r.sheet = i16(sheetCode);
        return pasted(res, project.addNumField(r), project.numFields().capacity());
    }
    case ClipKind::None: break;
    }
    return res;
}

}  // namespace jk
