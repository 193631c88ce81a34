#include "file/ProjectFileCodec.h"
#include <QIODevice>
#include <algorithm>
#include <cstring>

namespace jk::prjcodec {

namespace {

// Bytes 0x80-0x9F of Windows-1252.
constexpr char16_t kHigh[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

constexpr qsizetype kChunk = 16 * 1024;

}  // namespace

std::optional<QByteArray> toCp1252(const QString& s)
{
    QByteArray out;
    out.resize(s.size());
    char* p = out.data();
    for (QChar qc : s) {
        const char16_t c = qc.unicode();
        if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) {
            *p++ = char(c);
            continue;
        }
        const auto* hit = std::find(std::begin(kHigh), std::end(kHigh), c);
        if (hit == std::end(kHigh)) return std::nullopt;
        *p++ = char(0x80 + (hit - std::begin(kHigh)));
    }
    return out;
}

QString fromCp1252(const QByteArray& bytes)
{
    QString s(bytes.size(), Qt::Uninitialized);
    QChar* d = s.data();
    for (char ch : bytes) {
        const auto b = static_cast<unsigned char>(ch);
        *d++ = QChar(b >= 0x80 && b < 0xA0 ? kHigh[b - 0x80] : char16_t(b));
    }
    return s;
}

void Utf8Validator::feed(const char* data, qsizetype size)
{
    for (qsizetype i = 0; i < size && ok_; ++i) {
        const auto b = static_cast<unsigned char>(data[i]);
        if (need_ == 0) {
            if (b < 0x80) continue;
            if (b >= 0xC2 && b <= 0xDF) { need_ = 1; cp_ = b & 0x1F; min_ = 0x80; }
            else if (b >= 0xE0 && b <= 0xEF) { need_ = 2; cp_ = b & 0x0F; min_ = 0x800; }
            else if (b >= 0xF0 && b <= 0xF4) { need_ = 3; cp_ = b & 0x07; min_ = 0x10000; }
            else ok_ = false;
            continue;
        }
        if ((b & 0xC0) != 0x80) { ok_ = false; break; }
        cp_ = (cp_ << 6) | (b & 0x3F);
        if (--need_ == 0) {
            if (cp_ < min_ || cp_ > 0x10FFFF || (cp_ >= 0xD800 && cp_ <= 0xDFFF)) ok_ = false;
        }
    }
}

LineReader::LineReader(QIODevice& dev, int maxLine, qint64 maxTotal)
    : dev_(dev), maxLine_(maxLine), maxTotal_(maxTotal)
{
}

bool LineReader::rewind()
{
    buf_.clear();
    pos_ = 0;
    total_ = 0;
    lineNo_ = 0;
    end_ = false;
    pendingCr_ = false;
    cut_ = false;
    return dev_.seek(0);
}

bool LineReader::fill()
{
    if (end_) return false;
    const qint64 room = maxTotal_ - total_;
    if (room <= 0) {
        end_ = true;
        return false;
    }
    // The same buffer serves every chunk.
    buf_.resize(qsizetype(std::min<qint64>(kChunk, room)));
    const qint64 got = dev_.read(buf_.data(), buf_.size());
    buf_.resize(qsizetype(std::max<qint64>(got, 0)));
    pos_ = 0;
    if (buf_.isEmpty()) {
        end_ = true;
        return false;
    }
    total_ += buf_.size();
    return true;
}

bool LineReader::next(QByteArray& line)
{
    line.clear();
    cut_ = false;
    if (pendingCr_) {
        pendingCr_ = false;
        if (pos_ >= buf_.size()) fill();
        if (pos_ < buf_.size() && buf_[pos_] == '\n') ++pos_;
    }
    bool started = false;
    for (;;) {
        if (pos_ >= buf_.size() && !fill()) {
            if (started) ++lineNo_;
            return started;
        }
        started = true;
        const char* begin = buf_.constData() + pos_;
        const char* end = buf_.constData() + buf_.size();
        const char* stop = std::find_if(begin, end, [](char c) { return c == '\n' || c == '\r'; });
        const qsizetype len = stop - begin;
        const qsizetype room = maxLine_ - line.size();
        if (len > room) cut_ = true;
        if (room > 0) line.append(begin, std::min(len, room));
        pos_ += len;
        if (stop != end) {
            pendingCr_ = (*stop == '\r');
            ++pos_;
            ++lineNo_;
            return true;
        }
    }
}

}  // namespace jk::prjcodec
