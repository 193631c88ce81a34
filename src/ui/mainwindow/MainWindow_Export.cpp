// Export current sheet: the save dialog, then the active sheet's files in
// the format the chosen name's extension says, off screen.
#include "ui/mainwindow/MainWindow.h"
#include "model/AppContext.h"
#include "model/Formats.h"
#include "output/Export.h"
#include "platform/Services.h"
#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QMdiArea>
#include <QMdiSubWindow>

namespace pf = jk::platform;
namespace ex = jk::exporting;
using jk::Msg;

namespace {

// Where the save dialog opens: the folder of the last export of this run;
// before that, the project's folder, else the projects folder.
QString& exportFolder()
{
    static QString folder;
    return folder;
}

QString firstFolder(const jk::Project& project)
{
    const QFileInfo file(project.fileName());
    if (!project.fileName().isEmpty() && file.isAbsolute() && file.dir().exists()) return file.absolutePath();
    const QString& projects = jk::app().settings.projectFolder;
    return projects.isEmpty() ? QDir::homePath() : projects;
}

}  // namespace

void MainWindow::connectExportCommands()
{
    connect(action("Exportshhet"), &QAction::triggered, this, [this] { exportCurrentSheet(); });
    // A paper jacket is not exported: the command is off while its sheet is
    // the active one, and on again for another sheet.
    connect(mdi_, &QMdiArea::subWindowActivated, this, [this](QMdiSubWindow* sub) {
        if (auto* s = sub ? qobject_cast<SheetWindow*>(sub->widget()) : nullptr)
            enableCommand("Exportshhet", s->formatCode() != jk::FmtJacket);
    });
}

void MainWindow::exportCurrentSheet()
{
    SheetWindow* sheet = activeSheet();
    auto* files = pf::services().files;
    if (!sheet || !files || sheet->formatCode() == jk::FmtJacket) return;
    const jk::Texts& t = jk::texts();
    QString& folder = exportFolder();
    if (folder.isEmpty()) folder = firstFolder(project_);
    const QString caption = QString(t.menuCaptions[8]).remove(u'&');
    const QString chosen = files->saveFile(caption.isEmpty() ? QStringLiteral("Export current sheet") : caption,
                                           QDir(folder).filePath(QStringLiteral("Untitled.bmp")), ex::dialogFilter(),
                                           QString::fromLatin1(ex::kDefaultSuffix));
    if (chosen.isEmpty()) return;
    folder = QFileInfo(chosen).absolutePath();

    const QString name = ex::exportName(chosen);
    const std::vector<ex::Page> pages = ex::sheetPages(project_, sheet->formatCode(), name, sheet->renderOptions());
    // The dialog has asked about the name it gave back; a booklet's two
    // files and a name given another extension are asked about here.
    QStringList existing;
    for (const ex::Page& p : pages)
        if (p.path != chosen && QFileInfo::exists(p.path)) existing << QDir::toNativeSeparators(p.path);
    auto* messages = pf::services().messages;
    if (!existing.isEmpty() &&
        (!messages || messages->show(t.msg(Msg::ExportReplace) + QStringLiteral("\n\n") + existing.join(u'\n'),
                                     t.msg(Msg::ProgramTitle), pf::Icon::Question, pf::Buttons::YesNo) != pf::AnswerYes))
        return;

    QApplication::setOverrideCursor(Qt::WaitCursor);
    const ex::Result r = ex::writePages(project_, pages, *ex::formatOfName(name), jk::app().settings.exportDpi, t);
    QApplication::restoreOverrideCursor();
    if (!r.ok && messages) messages->show(r.error, t.msg(Msg::ProgramTitle), pf::Icon::Warning);
}
