#include "file/ValueFile.h"
#include "file/MessageFile.h"
#include <QFile>
#include <QFileInfo>

namespace jk {

namespace {

// At most maxBytes of a regular file, cut after its last complete line when
// the file is longer, so that no value (or UTF-8 sequence) is cut in two.
QByteArray readCapped(const QString& path, qint64 maxBytes)
{
    if (path.isEmpty() || path.contains(QChar(0))) return {};
    const QFileInfo info(path);
    // Folders, devices (/dev/zero) and pipes are no value files; a pipe
    // would even block the open.
    if (!info.isFile()) return {};
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) return {};
    QByteArray data = f.read(maxBytes);
    if (!f.atEnd() && data.size() == maxBytes) {
        const qsizetype lastBreak = data.lastIndexOf('\n');
        const qsizetype lastCr = data.lastIndexOf('\r');
        const qsizetype cut = std::max(lastBreak, lastCr);
        data.truncate(cut < 0 ? 0 : cut + 1);
    }
    return data;
}

}  // namespace

QStringList readFieldValues(const QString& path, int maxValues)
{
    if (maxValues <= 0) return {};
    return readListItems(readCapped(path, kMaxValueFileBytes), maxValues);
}

QString firstFieldValue(const QString& path)
{
    const QByteArray data = readCapped(path, kFirstValueScanBytes);
    // Control bytes other than tab and line ends mean this is no text file:
    // stepping refuses it, so its first "value" is not shown either.
    for (char c : data)
        if (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\r' && c != '\n') return {};
    // The first value is nearly always among the first few: split only
    // those, and the whole text only when they are all empty.
    for (int items : {16, kMaxFieldValues}) {
        const QStringList values = readListItems(data, items);
        for (const QString& v : values)
            if (!v.isEmpty()) return v;
        if (values.size() < items) break;
    }
    return {};
}

}  // namespace jk
