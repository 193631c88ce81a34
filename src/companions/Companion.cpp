#include "companions/Companion.h"
#include "file/MessageFile.h"
#include "file/Paths.h"
#include "file/Settings.h"
#include "model/AppContext.h"
#include <QByteArray>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace jk::companion {

bool headlessRequested(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        const QByteArray a(argv[i]);
        if (a == "--pdf" || a.startsWith("--pdf=") || a == "--help" || a == "-h" || a == "--version") return true;
    }
    return false;
}

void loadProgramState()
{
    AppContext& app = appSetup();
    app.files.appDir = paths::dataDir();
    app.files.settingsPath = paths::settingsFile();
    app.texts = loadMessageFile(paths::messageFile());
    app.settings = readSettings(app.files.settingsPath, paths::homeDir());
}

QString picturesFolder()
{
    const QString set = app().settings.picturesFolder;
    if (!set.isEmpty() && QFileInfo(set).isDir()) return set;
    const QString own = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    return QFileInfo(own).isDir() ? own : QDir::homePath();
}

}  // namespace jk::companion
