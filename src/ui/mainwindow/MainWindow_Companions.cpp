// The companion programs of the File menu: the screen capture, and the fonts
// and pictures catalogues. Each is a program of its own beside this one.
#include "ui/mainwindow/MainWindow.h"
#include "model/AppContext.h"
#include "platform/Services.h"
#include "ui/dialogs/PictureDialog.h"
#include "ui/sheet/SheetWindow.h"
#include <QAction>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>

namespace pf = jk::platform;

namespace {

// The last picture the capture program says it saved, if it still exists.
QString lastSavedPicture(const QString& report)
{
    QFile f(report);
    if (!f.open(QIODevice::ReadOnly)) return {};
    const QList<QByteArray> lines = f.readAll().split('\n');
    for (auto it = lines.crbegin(); it != lines.crend(); ++it) {
        const QString path = QString::fromUtf8(it->trimmed());
        if (!path.isEmpty()) return QFileInfo(path).isFile() ? path : QString();
    }
    return {};
}

}  // namespace

void MainWindow::connectCompanionCommands()
{
    auto on = [this](const char* name, auto fn) { connect(action(name), &QAction::triggered, this, fn); };
    on("Capture", [this] { capture(); });
    on("PRTFNTCAT", [this] { startCompanion(companionPath("fontsheet")); });
    on("PRTPICCAT", [this] {
        // The contact sheet starts on the pictures folder of the preferences.
        const QString folder = jk::app().settings.picturesFolder;
        startCompanion(companionPath("picsheet"), folder.isEmpty() ? QStringList() : QStringList{folder});
    });
}

QString MainWindow::companionPath(const QString& baseName)
{
    return QCoreApplication::applicationDirPath() + u'/' + baseName;
}

void MainWindow::enableCompanions()
{
    auto* p = pf::services().programs;
    if (!p) return;
    action("PRTPICCAT")->setEnabled(p->exists(companionPath("picsheet")));
    action("PRTFNTCAT")->setEnabled(p->exists(companionPath("fontsheet")));
    action("Capture")->setEnabled(p->exists(companionPath("snaptool")));
}

bool MainWindow::startCompanion(const QString& program, const QStringList& args)
{
    auto* p = pf::services().programs;
    if (!p) return false;
    QString error;
    if (p->start(program, args, &error)) return true;
    if (auto* m = pf::services().messages) m->show(error, jk::texts().msg(jk::Msg::ProgramTitle), pf::Icon::Critical);
    return false;
}

void MainWindow::capture()
{
    auto* p = pf::services().programs;
    QAction* command = action("Capture");
    if (!p) return;
    // The program appends the path of each picture it saves to this file.
    QTemporaryFile report(QDir::tempPath() + QStringLiteral("/jewlkit-capture-XXXXXX"));
    if (!report.open()) return;
    report.close();

    // Out of the way of the screen while the program runs; the wait keeps
    // this window painting, and the command cannot start twice.
    command->setEnabled(false);
    showMinimized();
    QString error;
    const bool ok = p->runAndWait(companionPath("snaptool"), {QStringLiteral("--report"), report.fileName()}, &error);
    showMaximized();
    activateWindow();
    command->setEnabled(true);
    if (!ok) {
        if (auto* m = pf::services().messages) m->show(error, jk::texts().msg(jk::Msg::ProgramTitle), pf::Icon::Critical);
        return;
    }
    const QString saved = lastSavedPicture(report.fileName());
    if (!saved.isEmpty()) insertCapturedPicture(saved);
}

void MainWindow::insertCapturedPicture(const QString& file)
{
    SheetWindow* s = activeSheet();
    if (!s) return;
    // The sheet asks for its picture as usual; this once the dialog opens
    // on the file just saved.
    const auto usual = dialogs_.choosePicture;
    dialogs_.choosePicture = [file](QWidget* parent, PicturePurpose purpose) -> std::optional<PictureChoice> {
        PictureDialog dlg(purpose, parent);
        // Shown first: showing lists the folder afresh, which would drop
        // the selection.
        dlg.setModal(true);
        dlg.show();
        dlg.selectFile(file);
        if (dlg.exec() != QDialog::Accepted) return std::nullopt;
        return dlg.choice();
    };
    s->insertPictureObject();
    dialogs_.choosePicture = usual;
}
