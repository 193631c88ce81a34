#include "file/Settings.h"
#include "file/MessageFile.h"
#include "file/Paths.h"
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <cmath>

namespace jk {

namespace {

const QByteArray kOwnSection = "[Jewelcase Studio]";

bool readNumber(const QString& text, double* out)
{
    bool ok = false;
    const double v = text.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(v)) return false;
    *out = v;
    return true;
}

// "calibration=PRINTER|dx|dy|sx|sy": a printer name may hold anything but '|'.
void readCalibration(const QString& value, UserSettings& v)
{
    const QStringList parts = value.split(u'|');
    if (parts.size() != 5 || parts.at(0).isEmpty()) return;
    PrinterCalibration c;
    double* fields[] = {&c.offsetXMm, &c.offsetYMm, &c.scaleXPercent, &c.scaleYPercent};
    for (int i = 0; i < 4; ++i)
        if (!readNumber(parts.at(i + 1), fields[i])) return;
    if (calibrationInRange(c)) v.calibrations.insert(parts.at(0), c);
}

void readOwnSection(const QByteArray& data, UserSettings& v)
{
    const qsizetype at = data.indexOf(kOwnSection);
    if (at < 0) return;
    const QStringList lines = QString::fromUtf8(data.mid(at + kOwnSection.size())).split(u'\n');
    for (QString line : lines) {
        line = line.trimmed();
        const qsizetype eq = line.indexOf(u'=');
        if (eq <= 0) continue;
        const QString name = line.left(eq).trimmed().toLower();
        const QString value = line.mid(eq + 1).trimmed();
        if (name == u"exportdpi") {
            bool ok = false;
            const int dpi = value.toInt(&ok);
            if (ok && dpi >= kMinExportDpi && dpi <= kMaxExportDpi) v.exportDpi = dpi;
        } else if (name == u"discstock") {
            v.discStock = value;
        } else if (name == u"scanner") {
            v.scannerSource = value;
        } else if (name == u"calibration") {
            readCalibration(value, v);
        }
    }
}

}  // namespace

bool calibrationInRange(const PrinterCalibration& c)
{
    auto offsetOk = [](double mm) { return std::isfinite(mm) && std::abs(mm) <= kMaxCalibrationOffsetMm; };
    auto scaleOk = [](double p) { return std::isfinite(p) && p >= kMinCalibrationScale && p <= kMaxCalibrationScale; };
    return offsetOk(c.offsetXMm) && offsetOk(c.offsetYMm) && scaleOk(c.scaleXPercent) && scaleOk(c.scaleYPercent);
}

UserSettings readSettings(const QString& path, const QString& defaultProjectFolder)
{
    UserSettings v;
    QFile f(path);
    if (f.open(QIODevice::ReadOnly)) {
        constexpr qint64 kMaxBytes = 256 * 1024;  // a few paths and settings; ignore any junk beyond
        const QByteArray all = f.read(kMaxBytes);
        const qsizetype eol = all.indexOf('\n');
        QByteArray data = eol < 0 ? QByteArray() : all.mid(eol + 1);  // line 1 is the heading
        const qsizetype own = data.indexOf(kOwnSection);
        const QStringList items = readListItems(own < 0 ? data : data.left(own), 4);
        QString* targets[] = {&v.picturesEditor, &v.picturesFolder, &v.backgroundFolder, &v.projectFolder};
        for (int i = 0; i < items.size(); ++i) *targets[i] = items.at(i);
        readOwnSection(data, v);
    }
    if (v.projectFolder.isEmpty()) v.projectFolder = defaultProjectFolder;
    return v;
}

bool writeSettings(const QString& path, const UserSettings& v)
{
    QSaveFile f(path);
    if (!f.open(QIODevice::WriteOnly)) return false;
    QString text = QStringLiteral("[Preferences]\n") + v.picturesEditor + u'\n' + v.picturesFolder + u'\n' +
                   v.backgroundFolder + u'\n' + v.projectFolder + u'\n';
    text += QString::fromLatin1(kOwnSection) + u'\n';
    text += QStringLiteral("exportdpi=%1\n").arg(v.exportDpi);
    if (!v.discStock.isEmpty()) text += QStringLiteral("discstock=") + v.discStock + u'\n';
    if (!v.scannerSource.isEmpty()) text += QStringLiteral("scanner=") + v.scannerSource + u'\n';
    for (auto it = v.calibrations.cbegin(); it != v.calibrations.cend(); ++it) {
        const PrinterCalibration& c = it.value();
        text += QStringLiteral("calibration=%1|%2|%3|%4|%5\n")
                    .arg(it.key())
                    .arg(c.offsetXMm, 0, 'f', 2)
                    .arg(c.offsetYMm, 0, 'f', 2)
                    .arg(c.scaleXPercent, 0, 'f', 2)
                    .arg(c.scaleYPercent, 0, 'f', 2);
    }
    f.write(text.toUtf8());
    return f.commit();
}

bool saveAppSettings()
{
    const AppContext& a = app();
    const QString file = a.files.settingsPath.isEmpty() ? paths::settingsFile() : a.files.settingsPath;
    paths::ensureDir(QFileInfo(file).absolutePath());
    return writeSettings(file, a.settings);
}

}  // namespace jk
