#pragma once
// Plain records of a project's objects and the 1-based, fixed-capacity tables
// that hold them. Field order follows the project file.
#include <QString>
#include <cstdint>
#include <optional>
#include <vector>

namespace jk {

using i16 = std::int16_t;
using i32 = std::int32_t;


// Format codes of the five label formats.
enum FormatCode : i16 { FmtSimple = 1, FmtDouble = 2, FmtInside = 4, FmtCdRom = 8, FmtJacket = 16 };

struct TextStyle {
    QString fontName;
    i16 fontSize = 0;
    bool bold = false, italic = false, strikethru = false, underline = false;
    i32 foreColor = 0;
    i16 backStyle = 0;    // 0 transparent, 1 opaque
    i16 borderStyle = 0;  // 0 none, 1 single line
    i32 backColor = 0;
    i16 alignment = 0;    // 0 left, 1 right, 2 centre
    i16 top = 0, left = 0, width = 0, height = 0;
};

// Free text block and text-page block.
struct TextRecord {
    i16 sheet = 0;
    QString text;
    TextStyle style;
    bool isFree() const { return text.isEmpty(); }
};

struct CharFieldRecord {
    i16 sheet = 0;
    QString valueFile;
    QString text;  // the value shown now; not stored in the project file
    TextStyle style;
    bool isFree() const { return text.isEmpty() && valueFile.isEmpty(); }
};

struct NumFieldRecord {
    i16 sheet = 0;
    i16 digits = 0;     // 1-4; any other value shows an empty text
    i16 number = 0;     // 0 marks a free slot
    bool spineLink = false;  // the number is also the spine number
    TextStyle style;
    // The text the field shows once stepping or printing has changed it;
    // unset shows the number. Not stored in the project file.
    std::optional<QString> shown{};
    bool isFree() const { return number == 0; }
};

struct PictureRecord {
    i16 sheet = 0;
    QString file;
    i16 top = 0, left = 0, width = 0, height = 0;
    i16 displayMode = 1;  // 1 stretched into the rectangle, 2 actual size
    bool isFree() const { return file.isEmpty(); }
};

struct BackgroundRecord {
    QString text;   // a picture file, or "~" and a decimal colour
};

// A 1-based table with a fixed capacity. The count is the highest slot ever
// used: slots are never reused, and a full table refuses new records.
template <typename R>
class RecordTable {
public:
    explicit RecordTable(int capacity = 0) { reset(capacity); }
    void reset(int capacity) {
        slots_.assign(std::size_t(capacity < 0 ? 0 : capacity), R{});
        count_ = 0;
    }
    int capacity() const { return int(slots_.size()); }
    int count() const { return count_; }
    bool full() const { return count_ >= capacity(); }
    bool valid(int index) const { return index >= 1 && index <= capacity(); }
    R& at(int index) { return slots_.at(std::size_t(index - 1)); }
    const R& at(int index) const { return slots_.at(std::size_t(index - 1)); }
    // Takes slot count + 1; returns 0 (and changes nothing) when full.
    int append(const R& r) {
        if (full()) return 0;
        slots_[std::size_t(count_)] = r;
        return ++count_;
    }
    // Used by the project reader, which sets counts directly.
    void setCount(int c) { count_ = c < 0 ? 0 : (c > capacity() ? capacity() : c); }

private:
    std::vector<R> slots_;
    int count_ = 0;
};

}  // namespace jk
