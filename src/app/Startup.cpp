#include "app/Startup.h"
#include "app/SplashWindow.h"
#include "ui/mainwindow/MainWindow.h"
#include "platform/Pictures.h"
#include "platform/Services.h"
#include "ui/sheet/SheetWindow.h"
#include "render/SheetRenderer.h"
#include "ui/dialogs/PictureDialog.h"
#include "ui/dialogs/TextBlockDialog.h"
#include "model/Global.h"
#include "file/Paths.h"
#include "model/Procedures.h"
#include "file/Settings.h"
#include <QAction>
#include <QGuiApplication>
#include <QPointer>
#include <QScreen>
#include <QToolButton>

using jk::G;
namespace pf = jk::platform;

qint64 startUp(MainWindow& w, const QString& commandLineProject)
{
    qint64 waited = 0;
    jk::Global& g = G();
    jk::helpSetUp(qint64(w.winId()));

    g.createTables(jk::TableSizing::StartUp);
    g.spineNumberText.clear();
    g.spineText.clear();

    w.enableCompanions();

    g.appDir = jk::paths::dataDir();
    g.fontListPath = jk::paths::fontListFile();
    g.settingsPath = jk::paths::settingsFile();
    g.moveMode = g.resizeMode = g.pictureChangeRequest = false;
    g.sheetActive = true;
    g.printerAvailable = 1;
    jk::printerAvailabilityRule();

    if (auto* p = pf::services().printers) g.savedPrinterName = p->defaultPrinter();
    w.fillPrinterBox();

    w.setToolBarShown(false);
    for (const char* n : {"imprime", "IMPPRJ", "PRNSELECT", "MFPrnSelect"}) w.action(n)->setEnabled(false);
    w.button("SSCommand1")->setEnabled(false);
    w.button("Pasteobj")->setEnabled(false);

    const jk::SettingsValues s = jk::readSettings(g.settingsPath, jk::paths::homeDir());
    g.picturesEditor = s.picturesEditor;
    g.picturesFolder = s.picturesFolder;
    g.backgroundFolder = s.backgroundFolder;
    g.projectFolder = s.projectFolder;
    if (!g.picturesEditor.isEmpty()) w.action("Picedit")->setEnabled(true);

    {
        auto* clock = pf::services().clock;
        const QDateTime started = clock ? clock->now() : QDateTime::currentDateTime();
        SplashWindow splash;
        splash.show();
        splash.loadTexts();
        if (clock) {
            const qint64 left = 2000 - started.msecsTo(clock->now());
            if (left > 0) clock->pause(int(left));
            waited = qMax<qint64>(left, 0);
        }
    }
    w.applyTexts();

    if (QScreen* screen = QGuiApplication::primaryScreen()) {
        constexpr int kTwipsPerPixel = 15;
        if (screen->geometry().width() * kTwipsPerPixel < 12000)
            if (auto* m = pf::services().messages) m->show(g.texts.msg(jk::Msg::ScreenTooNarrow), g.texts.msg(jk::Msg::ProgramTitle), pf::Icon::Information);
    }

    g.pageFlag = 1;
    g.pageRequest = 1;
    g.projectModified = false;
    g.nudgeStep = 40;

    w.showMaximized();
    w.button("SSCommand2")->setEnabled(false);

    // Opening the command-line project and the new-project command follow
    // once the window is shown (MainWindow::startProject).
    Q_UNUSED(commandLineProject);
    return waited;
}

void installDialogs(QWidget* parent)
{
    QPointer<QWidget> owner(parent);
    SheetWindow::textDialog = [owner] { TextBlockDialog::run(owner); };
    SheetWindow::pictureDialog = [owner] { PictureDialog::run(owner); };
    jk::sheet::setImageLoader([](const QString& path) { return jk::platform::loadPicture(path); });
}
