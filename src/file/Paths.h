#pragma once
// Where the program finds its read-only data and keeps the files it writes.
// JEWLKIT_HOME, when set, puts every written file in that one folder.
#include <QString>

namespace jk::paths {

QString dataDir();      // folder holding Default.msg, help/, CDRTYPE.TXT
QString configDir();    // JEWLKIT.INI, an overriding Default.msg
QString cacheDir();     // Fonts.lst
QString userDataDir();  // cdplayer.ini
QString runtimeDir();   // the single-instance lock
QString homeDir();      // default folder for projects

QString messageFile();  // the Default.msg in force
QString settingsFile();
QString fontListFile();
QString discDatabaseFile();

// A folder that exists (created when needed); empty when it cannot be made.
QString ensureDir(const QString& dir);

}  // namespace jk::paths
