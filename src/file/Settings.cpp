#include "file/Settings.h"
#include "file/MessageFile.h"
#include <QFile>
#include <QSaveFile>

namespace jk {

SettingsValues readSettings(const QString& path, const QString& defaultProjectFolder)
{
    SettingsValues v;
    QFile f(path);
    if (f.open(QIODevice::ReadOnly)) {
        constexpr qint64 kMaxBytes = 256 * 1024;  // four paths; ignore any junk beyond
        QByteArray data = f.read(kMaxBytes);
        const qsizetype eol = data.indexOf('\n');
        data = eol < 0 ? QByteArray() : data.mid(eol + 1);  // line 1 is the heading
        const QStringList items = readListItems(data, 4);
        QString* targets[] = {&v.picturesEditor, &v.picturesFolder, &v.backgroundFolder, &v.projectFolder};
        for (int i = 0; i < items.size(); ++i) *targets[i] = items.at(i);
    }
    if (v.projectFolder.isEmpty()) v.projectFolder = defaultProjectFolder;
    return v;
}

bool writeSettings(const QString& path, const SettingsValues& v)
{
    QSaveFile f(path);
    if (!f.open(QIODevice::WriteOnly)) return false;
    const QString text = QStringLiteral("[Preferences]\n") + v.picturesEditor + u'\n' + v.picturesFolder +
                         u'\n' + v.backgroundFolder + u'\n' + v.projectFolder + u'\n';
    f.write(text.toUtf8());
    return f.commit();
}

}  // namespace jk
