#pragma once
// Which object of a project: its kind and its slot in that kind's table.
#include <QHashFunctions>

namespace jk {

enum class ObjKind : int {
    Text,       // free text block
    PageText,   // text block of the text page
    Picture,
    CharField,
    NumField,
};

struct ObjectRef {
    ObjKind kind = ObjKind::Text;
    int index = 0;
    friend bool operator==(const ObjectRef&, const ObjectRef&) = default;
};
inline size_t qHash(const ObjectRef& r, size_t seed = 0) { return ::qHashMulti(seed, int(r.kind), r.index); }

inline bool isField(ObjKind k) { return k == ObjKind::CharField || k == ObjKind::NumField; }
inline bool isTextBlock(ObjKind k) { return k == ObjKind::Text || k == ObjKind::PageText; }

}  // namespace jk
