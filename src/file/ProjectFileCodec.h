#pragma once
// Byte-level helpers of the project file: Windows-1252, UTF-8 validation and
// a line reader with a cap on line length. Internal to the project file code.
#include <QByteArray>
#include <QString>
#include <optional>

class QIODevice;

namespace jk::prjcodec {

// Windows-1252 bytes of s, or nothing when a character does not fit. The five
// bytes the code page leaves undefined stand for U+0081, U+008D, U+008F,
// U+0090 and U+009D, as Windows maps them.
std::optional<QByteArray> toCp1252(const QString& s);
QString fromCp1252(const QByteArray& bytes);

// Checks UTF-8 piece by piece, so a file never has to be held whole.
class Utf8Validator {
public:
    void feed(const char* data, qsizetype size);
    bool valid() const { return ok_ && need_ == 0; }
    bool failed() const { return !ok_; }

private:
    bool ok_ = true;
    int need_ = 0;        // continuation bytes still expected
    char32_t cp_ = 0;     // code point so far
    char32_t min_ = 0;    // smallest code point of this length (no overlongs)
};

// Reads lines ended by CR LF, LF or a lone CR. A line longer than maxLine
// bytes is cut there and the rest of it skipped; at most maxTotal bytes of
// the device are read.
class LineReader {
public:
    LineReader(QIODevice& dev, int maxLine, qint64 maxTotal);
    // The next line without its end; false at the end of the data.
    bool next(QByteArray& line);
    bool lastLineCut() const { return cut_; }
    qint64 lineNumber() const { return lineNo_; }  // 1-based number of the last line read
    // Back to the start of the device (which must be seekable).
    bool rewind();

private:
    bool fill();

    QIODevice& dev_;
    int maxLine_;
    qint64 maxTotal_;
    QByteArray buf_;
    qsizetype pos_ = 0;
    qint64 total_ = 0;
    qint64 lineNo_ = 0;
    bool end_ = false;
    bool pendingCr_ = false;  // last line ended with CR: a following LF belongs to it
    bool cut_ = false;
};

}  // namespace jk::prjcodec
