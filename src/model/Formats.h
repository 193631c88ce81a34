#pragma once
// The five label formats in one table: code, print weight, where the name
// stands in the format-name table, the canvas and its parts. Everything
// that needs a fact about a format asks here.
#include "model/Records.h"
#include <QRectF>
#include <array>

namespace jk {

struct FormatInfo {
    i16 code = 0;
    i16 weight = 0;      // print-side weight: Double 1, CD ROM 2, Simple 4, Inside 8, jacket 16
    int nameIndex = -1;  // index in the format-name table
    QRectF canvasCm;     // relative to the sheet window's client area
    bool spines = false;    // the inlay's two spines
    bool textPage = false;  // booklet and paper jacket
    bool disc = false;      // the disc label's preview outline
};

// In the order the project commands create sheets.
const std::array<FormatInfo, 5>& formats();
// The format of a code; null for anything else.
const FormatInfo* formatInfo(int code);
bool isFormatCode(int code);
// The format-name table index of a format code (1->0, 2->1, 16->2, 8->3, 4->4), -1 if none.
int formatNameIndex(int formatCode);
// The print-side weight of a format code, 0 if none.
int compositionWeight(int formatCode);

}  // namespace jk
