// The main window's project commands: new, open, save, save as, and the
// save-changes question that guards every path that would lose changes.
#include "ui/mainwindow/MainWindow.h"
#include "platform/Services.h"
#include "ui/dialogs/NewProjectDialog.h"
#include "file/ProjectFile.h"
#include "ui/sheet/SheetWindow.h"
#include "model/Global.h"
#include "model/Procedures.h"
#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QToolButton>

using jk::G;
namespace pf = jk::platform;

namespace {

const QString kTitle = QStringLiteral("Jewelcase Studio    ");
const QString kUntitled = QStringLiteral("Untitled.prj");
const QString kFilter = QStringLiteral("Project (*.prj);;All Files (*)");

void enableCommand(MainWindow* w, const char* name, bool on)
{
    if (QAction* a = w->action(QString::fromLatin1(name))) a->setEnabled(on);
    else if (QToolButton* b = w->button(QString::fromLatin1(name))) b->setEnabled(on);
}

void resetSpineFont()
{
    jk::Global& g = G();
    g.spineFont = jk::Global::SpineFont{};
    g.spineTitle.clear();
    g.spineNumberText.clear();
    g.spineText.clear();
}

// The sheets of a project in the order they are created, with their
// format-name entries.
struct FormatStep {
    int code;
    bool jk::Global::*choice;
};
const FormatStep kFormatOrder[] = {{jk::FmtSimple, &jk::Global::simpleChoice},
                                   {jk::FmtDouble, &jk::Global::doubleChoice},
                                   {jk::FmtJacket, &jk::Global::jacketChoice},
                                   {jk::FmtCdRom, &jk::Global::cdChoice},
                                   {jk::FmtInside, &jk::Global::insideChoice}};

QString startFolder(const QString& name)
{
    const QString folder = G().projectFolder.isEmpty() ? QDir::homePath() : G().projectFolder;
    return name.isEmpty() ? folder : QDir(folder).filePath(name);
}

}  // namespace

std::function<int(QWidget*)> MainWindow::newProjectDialog = [](QWidget* parent) {
    return int(NewProjectDialog::run(parent));
};

void MainWindow::setProjectTitle()
{
    setWindowTitle(kTitle + G().projectFileName);
}

void MainWindow::unloadSheets()
{
    // From the last to the first; the sheets may close now.
    const auto list = mdi_->subWindowList(QMdiArea::CreationOrder);
    SheetWindow::mayClose = true;
    for (auto it = list.rbegin(); it != list.rend(); ++it) {
        mdi_->removeSubWindow(*it);
        delete *it;
    }
    SheetWindow::mayClose = false;
}

bool MainWindow::askSaveChanges(bool askNameWhenUntitled)
{
    jk::Global& g = G();
    if (!g.projectModified) return true;
    const QString text = g.texts.msg(g.projectFileName.isEmpty() ? jk::Msg::SaveUnsavedProject : jk::Msg::SaveChanges);
    int answer = pf::AnswerCancel;
    if (auto* m = pf::services().messages)
        answer = m->show(text, g.texts.msg(jk::Msg::Warning), pf::Icon::Question, pf::Buttons::YesNoCancel);
    if (answer == pf::AnswerCancel) return false;
    if (answer != pf::AnswerYes) return true;
    if (askNameWhenUntitled && (g.projectFileName == kUntitled || g.projectFileName.isEmpty())) {
        const QString name = chooseSaveName(QStringLiteral("untitled.prj"));
        // A cancelled dialog leaves the project unsaved; the command goes on.
        if (name.isEmpty()) return true;
        g.projectFileName = name;
    }
    writeProjectFile();
    return true;
}

QString MainWindow::chooseSaveName(const QString& proposed)
{
    auto* files = pf::services().files;
    if (!files) return {};
    return files->saveFile(G().texts.menuCaptions[7].isEmpty() ? QStringLiteral("Save project")
                                                               : QString(G().texts.menuCaptions[7]).remove('&'),
                           startFolder(proposed), kFilter, QStringLiteral("prj"));
}

bool MainWindow::writeProjectFile()
{
    jk::Global& g = G();
    QString error;
    if (!jk::writeProject(g.projectFileName, &error)) {
        // The old file is intact and the changes are still unsaved.
        g.projectModified = true;
        if (auto* m = pf::services().messages)
            m->show(error.isEmpty() ? QStringLiteral("The project could not be saved.") : error, g.texts.msg(jk::Msg::ProgramTitle),
                    pf::Icon::Warning);
        return false;
    }
    g.projectModified = false;
    setProjectTitle();
    return true;
}

bool MainWindow::saveProject()
{
    jk::Global& g = G();
    const QString name = g.projectFileName;
    if (name.isEmpty() || name.contains(QStringLiteral("untitled.prj"), Qt::CaseInsensitive) ||
        name.left(12).toUpper() == QStringLiteral("UNTITLED.PRJ")) {
        const QString chosen = chooseSaveName(QStringLiteral("untitled.prj"));
        if (chosen.isEmpty()) return false;
        g.projectFileName = chosen;
    }
    const bool ok = writeProjectFile();
    if (ok) enableCommand(this, "saveas", true);
    return ok;
}

bool MainWindow::saveAs()
{
    const QString chosen = chooseSaveName(QFileInfo(G().projectFileName).fileName());
    if (chosen.isEmpty()) return false;
    G().projectFileName = chosen;
    return writeProjectFile();
}

void MainWindow::hideSheetEntries()
{
    enableCommand(this, "SSCommand2", false);
    for (const char* n : {"FMSimple", "FMDouble", "FMInside", "FMCDROM"})
        if (QAction* a = action(QString::fromLatin1(n))) a->setVisible(false);
}

void MainWindow::enableProjectCommands()
{
    jk::Global& g = G();
    for (const char* n : {"savefilefirst", "saveas", "mtools", "Mwind", "removesheet", "MCURPROJ", "Medit"})
        enableCommand(this, n, true);
    if (QAction* t = action(QStringLiteral("Tools"))) t->setChecked(true);
    const bool room = g.sheetComposition < 24;
    enableCommand(this, "AddSheet", room);
    enableCommand(this, "AddForm", room);
    g.textDestination = 0;
}

bool MainWindow::newProject()
{
    jk::Global& g = G();
    // The question comes before anything changes, so Cancel keeps the
    // project exactly as it was.
    if (!askSaveChanges(true)) return false;
    g.sheetComposition = 0;
    g.compositionCode = 0;
    jk::sheet::compositionCopy() = 0;
    hideSheetEntries();
    unloadSheets();

    g.createTables(jk::TableSizing::NewProject);
    resetSpineFont();
    g.projectModified = false;

    int result = NewProjectDialog::Closed;
    if (g.openExisting && newProjectDialog) result = newProjectDialog(this);

    g.textDestination = 0;
    g.currentNumber = 1;
    if (result == NewProjectDialog::OpenExisting) {
        // The chosen file opens at once.
        openProject();
        return true;
    }
    if (g.projectFileName.isEmpty()) g.projectFileName = kUntitled;
    setProjectTitle();
    enableCommand(this, "savefilefirst", true);
    enableCommand(this, "saveas", false);
    for (const char* n : {"Medit", "mtools", "Mwind"}) enableCommand(this, n, true);

    // Closed without a choice: an empty project.
    if (g.openExisting) return true;

    for (const FormatStep& f : kFormatOrder) {
        if (!(g.*(f.choice))) continue;
        g.sheetComposition = jk::i16(g.sheetComposition + f.code);
        g.pendingFormat = jk::i16(f.code);
        g.pendingCaption = g.texts.formatNames[std::size_t(jk::formatNameIndex(f.code))];
        createSheet(f.code);
        if (f.code == jk::FmtSimple) g.textPageFlag = false;
        if (f.code == jk::FmtDouble || f.code == jk::FmtJacket) g.textPageFlag = true;
    }
    enableProjectCommands();
    setToolBarShown(true);
    // A new project without a paper jacket starts with the spines hidden;
    // with a jacket the switch stays as it was.
    if (!g.jacketChoice) {
        g.spinesHidden = false;
        if (SheetWindow* inlay = sheetOf(jk::FmtInside)) inlay->toggleSpines();
        g.spinesHidden = true;
    }
    if (QAction* sp = action(QStringLiteral("FMSP"))) {
        sp->setText(g.texts.spineCaptions[g.spinesHidden ? 1 : 0]);
        sp->setEnabled(true);
    }
    g.projectModified = false;
    return true;
}

bool MainWindow::openProject()
{
    jk::Global& g = G();
    const bool wasModified = g.projectModified;
    if (!askSaveChanges(true)) return false;
    if (wasModified || !g.openExisting) g.projectFileName = kUntitled;
    // The file is chosen before anything is closed: cancelling the file
    // dialog keeps the project that is open.
    if (g.projectFilePath.isEmpty()) {
        const QString chosen = chooseOpenName();
        if (chosen.isEmpty()) return false;
        g.projectFilePath = chosen;
    }
    hideSheetEntries();
    setWindowTitle(kTitle);

    g.sheetActive = false;
    unloadSheets();
    g.sheetComposition = 0;
    g.compositionCode = 0;
    jk::sheet::compositionCopy() = 0;

    g.projectModified = false;
    g.projectFileName.clear();
    resetSpineFont();
    g.currentNumber = 1;
    if (!readProjectFile()) return false;

    g.textDestination = 1;
    setProjectTitle();
    for (const FormatStep& f : kFormatOrder) {
        if (!(g.*(f.choice))) continue;
        g.sheetComposition = jk::i16(g.sheetComposition + f.code);
        g.pendingFormat = jk::i16(f.code);
        g.pendingCaption = g.texts.formatNames[std::size_t(jk::formatNameIndex(f.code))];
        SheetWindow* s = createSheet(f.code);
        switch (f.code) {
        case jk::FmtSimple:
        case jk::FmtDouble:
            for (const char* n : {"AdFrmSimpl", "Taddsimple", "AdFrmDbl", "TaddDbl"}) enableCommand(this, n, false);
            break;
        case jk::FmtJacket:
            for (const char* n : {"AdFrmIns", "TAddINS", "AdFrmCDR", "TAddCDR"}) enableCommand(this, n, false);
            break;
        case jk::FmtCdRom:
            for (const char* n : {"AdFrmCDR", "TAddCDR"}) enableCommand(this, n, false);
            break;
        case jk::FmtInside:
            for (const char* n : {"AdFrmIns", "TAddINS"}) enableCommand(this, n, false);
            if (s) {
                s->repaintLeftSpine();
                s->repaintRightSpine();
            }
            break;
        }
        g.textPageFlag = false;
    }
    enableProjectCommands();
    setToolBarShown(true);
    g.projectModified = false;
    return true;
}

QString MainWindow::chooseOpenName()
{
    auto* files = pf::services().files;
    if (!files) return {};
    const QString title = QString(G().texts.menuCaptions[2]).remove('&');
    return files->openFile(title.isEmpty() ? QStringLiteral("Open project") : title, startFolder(QString()), kFilter);
}

bool MainWindow::readProjectFile()
{
    jk::Global& g = G();
    if (!g.projectFilePath.isEmpty()) g.projectFileName = g.projectFilePath;
    if (g.projectFileName.isEmpty()) {
        const QString chosen = chooseOpenName();
        if (chosen.isEmpty()) {
            g.readSuccess = false;
            g.projectFilePath.clear();
            setProjectTitle();
            return false;
        }
        g.projectFileName = chosen;
    }
    const QString path = g.projectFileName;
    const jk::ProjectReadResult r = jk::readProject(path, [](const QString& description, const QString& title) {
        if (auto* m = pf::services().messages) m->show(description, title, pf::Icon::Warning);
    });
    g.projectFilePath.clear();
    g.readSuccess = (r.opened);
    if (!r.opened) {
        g.projectFileName.clear();
        setProjectTitle();
        return false;
    }
    enableCommand(this, "Exportshhet", r.exportEnabled);
    return true;
}

void MainWindow::newProjectCommand()
{
    jk::Global& g = G();
    g.chosenPictureFile.clear();
    enableCommand(this, "Exportshhet", false);
    SheetWindow::disableClipboardCommands(this);
    g.sheetActive = false;
    g.openExisting = true;
    if (newProject()) enableCommand(this, "MCURPROJ", true);
}

void MainWindow::openCommand(bool fromButton)
{
    jk::Global& g = G();
    SheetWindow::disableClipboardCommands(this);
    const jk::i16 composition = g.compositionCode;
    g.compositionCode = 0;
    g.chosenPictureFile.clear();
    arrange(2);
    // Opening from the menu always asks for a file.
    g.projectFilePath.clear();
    // Cancelled before anything closed: the open project keeps its sheets,
    // so it keeps their print weights too.
    if (!openProject() && !sheets().empty()) g.compositionCode = composition;
    if (fromButton && !g.projectFileName.isEmpty()) enableCommand(this, "Exportshhet", true);
}

void MainWindow::startProject(const QString& commandLineProject)
{
    jk::Global& g = G();
    if (!commandLineProject.isEmpty()) {
        g.projectFilePath = QFileInfo(commandLineProject).absoluteFilePath();
        g.openExisting = true;
        if (openProject()) {
            enableCommand(this, "MCURPROJ", true);
            return;
        }
    }
    newProjectCommand();
}

void MainWindow::connectProjectCommands()
{
    auto on = [this](const char* name, std::function<void()> f) {
        if (QAction* a = action(QString::fromLatin1(name))) connect(a, &QAction::triggered, this, f);
        else if (QToolButton* b = button(QString::fromLatin1(name))) connect(b, &QToolButton::clicked, this, f);
    };
    on("newsheet", [this] { newProjectCommand(); });
    on("newprj", [this] { newProjectCommand(); });
    on("Openfile", [this] { openCommand(false); });
    on("openprj", [this] { openCommand(true); });
    on("savefilefirst", [this] { saveProject(); });
    on("Saveprj", [this] { saveProject(); });
    on("saveas", [this] { saveAs(); });
}
