#include "file/Paths.h"
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace jk::paths {

namespace {
QString home()
{
    return qEnvironmentVariable("JEWLKIT_HOME");
}
QString standard(QStandardPaths::StandardLocation loc, const QString& fallback)
{
    if (!home().isEmpty()) return home();
    QString base = QStandardPaths::writableLocation(loc);
    if (base.isEmpty()) base = QDir::homePath() + fallback;
    return base + QStringLiteral("/jewlkit");
}
}  // namespace

QString dataDir()
{
    const QString beside = QCoreApplication::applicationDirPath();
    if (!beside.isEmpty() && QFileInfo::exists(beside + "/Default.msg")) return beside;
#ifdef JK_DATA_INSTALL_DIR
    if (QFileInfo::exists(QStringLiteral(JK_DATA_INSTALL_DIR) + "/Default.msg"))
        return QStringLiteral(JK_DATA_INSTALL_DIR);
#endif
    return beside;
}

QString configDir() { return standard(QStandardPaths::GenericConfigLocation, "/.config"); }
QString cacheDir() { return standard(QStandardPaths::GenericCacheLocation, "/.cache"); }
QString userDataDir() { return standard(QStandardPaths::GenericDataLocation, "/.local/share"); }

QString runtimeDir()
{
    if (!home().isEmpty()) return home();
    QString r = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    return r.isEmpty() ? QDir::tempPath() : r;
}

QString homeDir() { return home().isEmpty() ? QDir::homePath() : home(); }

QString messageFile()
{
    const QString own = configDir() + "/Default.msg";
    return QFileInfo::exists(own) ? own : dataDir() + "/Default.msg";
}

QString settingsFile() { return configDir() + "/JEWLKIT.INI"; }
QString fontListFile() { return cacheDir() + "/Fonts.lst"; }
QString discDatabaseFile() { return userDataDir() + "/cdplayer.ini"; }

QString ensureDir(const QString& dir)
{
    return QDir().mkpath(dir) ? dir : QString();
}

}  // namespace jk::paths
