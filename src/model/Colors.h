#pragma once
// Colours are stored as Windows RGB values (red in the low byte); these are
// the only places they turn into QColors and back.
#include "model/Records.h"
#include <QColor>

namespace jk {

inline QColor winColor(i32 value)
{
    const auto v = quint32(value);
    return QColor(int(v & 0xff), int((v >> 8) & 0xff), int((v >> 16) & 0xff));
}

inline i32 toWinColor(const QColor& c) { return i32(c.red() | (c.green() << 8) | (c.blue() << 16)); }

}  // namespace jk
