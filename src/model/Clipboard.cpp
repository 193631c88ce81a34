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

template <typename R>
PasteResult append(RecordTable<R>& table, R r, int sheetCode, PasteResult res)
{
    if (table.full()) {
        res.status = PasteResult::Full;
        res.capacity = table.capacity();
        return res;
    }
    r.sheet = i16(sheetCode);
    res.index = table.append(r);
    res.status = res.index > 0 ? PasteResult::Pasted : PasteResult::Full;
    return res;
}

}  // namespace

Clipboard& clipboard()
{
    static Clipboard clip;
    return clip;
}

ClipKind selectedClipKind(const Global& g)
{
    switch (g.selectedKind) {
    case 0: return ClipKind::TextBlock;
    case 1: return ClipKind::Picture;
    case 2: return g.fieldSubKind == 1 ? ClipKind::CharField : ClipKind::NumField;
    default: return ClipKind::None;
    }
}

bool clipCopy(Clipboard& clip, const Global& g, int sheetCode, ClipKind kind, int index, bool page)
{
    switch (kind) {
    case ClipKind::TextBlock:
        if (const TextRecord* r = present(page ? g.pageText : g.freeText, sheetCode, index)) {
            keep(clip.text, *r);
            break;
        }
        return false;
    case ClipKind::Picture:
        if (const PictureRecord* r = present(g.pictures, sheetCode, index)) {
            keep(clip.picture, *r);
            break;
        }
        return false;
    case ClipKind::CharField:
        if (const CharFieldRecord* r = present(g.charFields, sheetCode, index)) {
            keep(clip.charField, *r);
            break;
        }
        return false;
    case ClipKind::NumField:
        if (const NumFieldRecord* r = present(g.numFields, sheetCode, index)) {
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

PasteResult clipPaste(const Clipboard& clip, Global& g, int sheetCode, bool toPage, int sheetWidth)
{
    PasteResult res;
    res.kind = clip.last;
    switch (clip.last) {
    case ClipKind::TextBlock: {
        TextRecord r = clip.text;
        r.style.left = pasteLeft(r.style.left, r.style.width, sheetWidth);
        res.page = toPage;
        return append(toPage ? g.pageText : g.freeText, r, sheetCode, res);
    }
    case ClipKind::Picture: {
        PictureRecord r = clip.picture;
        r.left = pasteLeft(r.left, r.width, sheetWidth);
        return append(g.pictures, r, sheetCode, res);
    }
    case ClipKind::CharField: {
        CharFieldRecord r = clip.charField;
        r.style.left = pasteLeft(r.style.left, r.style.width, sheetWidth);
        return append(g.charFields, r, sheetCode, res);
    }
    case ClipKind::NumField: {
        NumFieldRecord r = clip.numField;
        r.style.left = pasteLeft(r.style.left, r.style.width, sheetWidth);
        return append(g.numFields, r, sheetCode, res);
    }
    case ClipKind::None: break;
    }
    return res;
}

}  // namespace jk
