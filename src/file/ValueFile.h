#pragma once
// Value files of character fields: the values a field steps through, one per
// line. Values are split at line breaks and commas, a value in double quotes
// may hold commas, and blanks around an unquoted value are dropped.
#include <QString>
#include <QStringList>

namespace jk {

// Only this much of a value file is read: a label run never needs more, and
// a huge or endless file must not freeze the program.
constexpr qint64 kMaxValueFileBytes = 4 * 1024 * 1024;
constexpr int kMaxFieldValues = 100000;
// The first value is looked for in this much of the file.
constexpr qint64 kFirstValueScanBytes = 256 * 1024;

// The values of the file in order, empty values included. A missing file, a
// folder, a device or an unreadable file gives no values. Text is read as
// UTF-8 when valid, else as Windows-1252.
QStringList readFieldValues(const QString& path, int maxValues = kMaxFieldValues);

// The first non-empty value of the file; empty when there is none.
QString firstFieldValue(const QString& path);

}  // namespace jk
