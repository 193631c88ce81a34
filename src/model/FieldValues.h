#pragma once
// The texts fields show on one copy of a print run, handed to the drawing
// path as a value: printing copy N never changes the document. A field not
// named here shows what its record shows.
#include <QHash>
#include <QString>
#include <optional>

namespace jk {

struct FieldValues {
    QHash<int, QString> charText;  // by character-field slot
    QHash<int, QString> numText;   // by numeric-field slot
    std::optional<QString> spineNumber;  // the spine number text instead of the project's
    std::optional<int> lastNumber;       // the current number after these values
};

}  // namespace jk
