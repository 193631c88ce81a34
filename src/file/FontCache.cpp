#include "file/FontCache.h"
#include <QFile>
#include <QSaveFile>

namespace jk {

bool fontCacheIsCurrent(const QString& path, int fontCount)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) return false;
    const QByteArray first = f.readLine(64).trimmed();
    bool ok = false;
    const int value = first.toInt(&ok);
    return ok && value == fontCount - 1;
}

bool writeFontCache(const QString& path, const QStringList& fonts,
                    const std::function<void(int)>& progress)
{
    QSaveFile f(path);
    if (!f.open(QIODevice::WriteOnly)) return false;
    QByteArray out = QByteArray::number(fonts.size() - 1) + "\r\n";
    for (int i = 0; i < fonts.size(); ++i) {
        out += fonts.at(i).toUtf8() + "\r\n";
        if (progress) progress(i);
    }
    f.write(out);
    return f.commit();
}

}  // namespace jk
