#include "model/Formats.h"

namespace jk {

const std::array<FormatInfo, 5>& formats()
{
    static const std::array<FormatInfo, 5> table{{
        {FmtSimple, 4, 0, QRectF(0, 0, 12.3, 11.95), false, false, false},
        {FmtDouble, 1, 1, QRectF(0, 0, 12.3, 11.95), false, true, false},
        {FmtJacket, 16, 2, QRectF(0.5, 0.5, 12.3, 12.5), false, true, false},
        {FmtCdRom, 2, 3, QRectF(0, 0, 12, 12), false, false, true},
        {FmtInside, 8, 4, QRectF(0, 0, 15, 11.75), true, false, false},
    }};
    return table;
}

const FormatInfo* formatInfo(int code)
{
    for (const FormatInfo& f : formats())
        if (f.code == code) return &f;
    return nullptr;
}

bool isFormatCode(int code) { return formatInfo(code) != nullptr; }

int formatNameIndex(int formatCode)
{
    const FormatInfo* f = formatInfo(formatCode);
    return f ? f->nameIndex : -1;
}

int compositionWeight(int formatCode)
{
    const FormatInfo* f = formatInfo(formatCode);
    return f ? f->weight : 0;
}

}  // namespace jk
