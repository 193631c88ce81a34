#include "app/Startup.h"
#include "app/SplashWindow.h"
#include "ui/mainwindow/MainWindow.h"
#include "platform/Pictures.h"
#include "platform/Services.h"
#include "render/SheetRenderer.h"
#include "model/AppContext.h"
#include "file/Paths.h"
#include "file/Settings.h"
#include <QAction>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QScreen>
#include <QToolButton>

namespace pf = jk::platform;

qint64 startUp(MainWindow& w, const QString& commandLineProject)
{
    jk::AppContext& app = jk::appSetup();
    app.files.helpFile = jk::paths::dataDir() + QStringLiteral("/help/index.html");
    w.enableCompanions();

    app.files.appDir = jk::paths::dataDir();
    app.files.fontListPath = jk::paths::fontListFile();
    app.files.settingsPath = jk::paths::settingsFile();
    w.updatePrinterAvailability();

    if (auto* p = pf::services().printers) w.setSavedPrinter(p->defaultPrinter());
    w.fillPrinterBox();

    w.setToolBarShown(false);
    for (const char* n : {"imprime", "IMPPRJ", "PRNSELECT", "MFPrnSelect", "PRINTPREVIEW"}) w.action(n)->setEnabled(false);
    w.button("SSCommand1")->setEnabled(false);
    w.button("Pasteobj")->setEnabled(false);

    app.settings = jk::readSettings(app.files.settingsPath, jk::paths::homeDir());
    if (!app.settings.picturesEditor.isEmpty()) w.action("Picedit")->setEnabled(true);

    // The start-up window stays up while its work runs, and no longer.
    QElapsedTimer shown;
    shown.start();
    {
        SplashWindow splash;
        splash.show();
        splash.loadTexts();
    }
    const qint64 splashMs = shown.elapsed();
    w.applyTexts();

    if (QScreen* screen = QGuiApplication::primaryScreen()) {
        constexpr int kTwipsPerPixel = 15;
        if (screen->geometry().width() * kTwipsPerPixel < 12000)
            if (auto* m = pf::services().messages)
                m->show(app.texts.msg(jk::Msg::ScreenTooNarrow), app.texts.msg(jk::Msg::ProgramTitle),
                        pf::Icon::Information);
    }

    w.showMaximized();
    w.button("SSCommand2")->setEnabled(false);

    // Opening the command-line project and the new-project command follow
    // once the window is shown (MainWindow::startProject).
    Q_UNUSED(commandLineProject);
    return splashMs;
}

void installPictureLoader()
{
    jk::sheet::setImageLoader([](const QString& path) { return jk::platform::loadPicture(path); });
}
