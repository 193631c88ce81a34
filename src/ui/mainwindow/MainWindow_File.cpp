// The main window's project commands: new, open, save, save as, and the
// save-changes question that guards every path that would lose changes.
#include "ui/mainwindow/MainWindow.h"
#include "platform/Services.h"
#include "ui/dialogs/NewProjectDialog.h"
#include "file/ProjectFile.h"
#include "ui/sheet/SheetWindow.h"
#include "model/AppContext.h"
#include "model/Formats.h"
#include "render/SheetRenderer.h"
#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QToolButton>

namespace pf = jk::platform;

namespace {

const QString kTitle = QStringLiteral("Jewelcase Studio    ");
const QString kUntitled = QStringLiteral("Untitled.prj");
const QString kFilter = QStringLiteral("Project (*.prj);;All Files (*)");

QString startFolder(const QString& name)
{
    const QString& projects = jk::app().settings.projectFolder;
    const QString folder = projects.isEmpty() ? QDir::homePath() : projects;
    return name.isEmpty() ? folder : QDir(folder).filePath(name);
}

}  // namespace

void MainWindow::enableCommand(const char* name, bool on)
{
    jk::sheet::CommandTable t;
    t.on(name, on);
    actions_.apply(t);
}

void MainWindow::setProjectTitle() { setWindowTitle(kTitle + project_.fileName()); }

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
    // No sheet shows the project now: its decoded pictures would otherwise
    // stay, up to the cache's budget, through the projects opened after it.
    jk::sheet::releaseDecodedPictures();
}

bool MainWindow::askSaveChanges(bool askNameWhenUntitled)
{
    if (!project_.isModified()) return true;
    const jk::Texts& t = jk::texts();
    const QString text = t.msg(project_.fileName().isEmpty() ? jk::Msg::SaveUnsavedProject : jk::Msg::SaveChanges);
    int answer = pf::AnswerCancel;
    if (auto* m = pf::services().messages)
        answer = m->show(text, t.msg(jk::Msg::Warning), pf::Icon::Question, pf::Buttons::YesNoCancel);
    if (answer == pf::AnswerCancel) return false;
    if (answer != pf::AnswerYes) return true;
    if (askNameWhenUntitled && (project_.fileName() == kUntitled || project_.fileName().isEmpty())) {
        const QString name = chooseSaveName(QStringLiteral("untitled.prj"));
        // A cancelled dialog leaves the project unsaved; the command goes on.
        if (name.isEmpty()) return true;
        project_.setFileName(name);
    }
    writeProjectFile();
    return true;
}

QString MainWindow::chooseSaveName(const QString& proposed)
{
    auto* files = pf::services().files;
    if (!files) return {};
    const QString& caption = jk::texts().menuCaptions[7];
    return files->saveFile(caption.isEmpty() ? QStringLiteral("Save project") : QString(caption).remove('&'),
                           startFolder(proposed), kFilter, QStringLiteral("prj"));
}

bool MainWindow::writeProjectFile()
{
    QString error;
    project_.prepareForSave();
    if (!jk::writeProject(project_.data(), project_.fileName(), &error)) {
        // The old file is intact and the changes are still unsaved.
        project_.setModified(true);
        if (auto* m = pf::services().messages)
            m->show(error.isEmpty() ? QStringLiteral("The project could not be saved.") : error,
                    jk::texts().msg(jk::Msg::ProgramTitle), pf::Icon::Warning);
        return false;
    }
    project_.setModified(false);
    setProjectTitle();
    return true;
}

bool MainWindow::saveProject()
{
    const QString name = project_.fileName();
    if (name.isEmpty() || name.contains(QStringLiteral("untitled.prj"), Qt::CaseInsensitive) ||
        name.left(12).toUpper() == QStringLiteral("UNTITLED.PRJ")) {
        const QString chosen = chooseSaveName(QStringLiteral("untitled.prj"));
        if (chosen.isEmpty()) return false;
        project_.setFileName(chosen);
    }
    const bool ok = writeProjectFile();
    if (ok) enableCommand("saveas", true);
    return ok;
}

bool MainWindow::saveAs()
{
    const QString chosen = chooseSaveName(QFileInfo(project_.fileName()).fileName());
    if (chosen.isEmpty()) return false;
    project_.setFileName(chosen);
    return writeProjectFile();
}

void MainWindow::hideSheetEntries()
{
    enableCommand("SSCommand2", false);
    for (const char* n : {"FMSimple", "FMDouble", "FMInside", "FMCDROM"})
        if (QAction* a = action(QString::fromLatin1(n))) a->setVisible(false);
}

void MainWindow::enableProjectCommands()
{
    for (const char* n : {"savefilefirst", "saveas", "mtools", "Mwind", "removesheet", "MCURPROJ", "Medit"})
        enableCommand(n, true);
    if (QAction* t = action(QStringLiteral("Tools"))) t->setChecked(true);
    const bool room = project_.sheetComposition() < 24;
    enableCommand("AddSheet", room);
    enableCommand("AddForm", room);
}

bool MainWindow::newProject()
{
    // The question comes before anything changes, so Cancel keeps the
    // project exactly as it was.
    if (!askSaveChanges(true)) return false;
    project_.setSheetComposition(0);
    project_.setPrintWeights(0);
    hideSheetEntries();
    unloadSheets();

    const QString fileName = project_.fileName();
    project_.reset(jk::TableSizing::NewProject);
    project_.setFileName(fileName);

    NewProjectChoice choice;
    if (openExisting_ && newProjectDialog) choice = newProjectDialog(this);

    if (choice.result == NewProjectDialog::OpenExisting) {
        // The chosen file opens at once.
        project_.setFileName(choice.file);
        project_.setFilePath(choice.file);
        openProject();
        return true;
    }
    if (choice.result == NewProjectDialog::Create) {
        openExisting_ = false;
        project_.setFileName({});
        project_.setFilePath({});
        chosenSheets_ = choice.sheets;
    }
    if (project_.fileName().isEmpty()) project_.setFileName(kUntitled);
    setProjectTitle();
    enableCommand("savefilefirst", true);
    enableCommand("saveas", false);
    for (const char* n : {"Medit", "mtools", "Mwind"}) enableCommand(n, true);

    // Closed without a choice: an empty project.
    if (choice.result != NewProjectDialog::Create) return true;

    for (const jk::FormatInfo& f : jk::formats()) {
        if (!(chosenSheets_ & f.code)) continue;
        project_.setSheetComposition(project_.sheetComposition() + f.code);
        createSheet(f.code);
    }
    enableProjectCommands();
    setToolBarShown(true);
    // A new project without a paper jacket starts with the spines hidden;
    // with a jacket the switch stays as it was.
    if (!(chosenSheets_ & jk::FmtJacket)) {
        project_.setSpinesHidden(false);
        if (SheetWindow* inlay = sheetOf(jk::FmtInside)) inlay->toggleSpines();
        project_.setSpinesHidden(true);
    }
    if (QAction* sp = action(QStringLiteral("FMSP"))) {
        sp->setText(jk::texts().spineCaptions[project_.spinesHidden() ? 1 : 0]);
        sp->setEnabled(true);
    }
    project_.setModified(false);
    return true;
}

bool MainWindow::openProject()
{
    const bool wasModified = project_.isModified();
    if (!askSaveChanges(true)) return false;
    if (wasModified || !openExisting_) project_.setFileName(kUntitled);
    // The file is chosen before anything is closed: cancelling the file
    // dialog keeps the project that is open.
    if (project_.filePath().isEmpty()) {
        const QString chosen = chooseOpenName();
        if (chosen.isEmpty()) return false;
        project_.setFilePath(chosen);
    }
    hideSheetEntries();
    setWindowTitle(kTitle);

    unloadSheets();
    project_.setSheetComposition(0);
    project_.setPrintWeights(0);
    project_.setModified(false);
    project_.setFileName({});
    if (!readProjectFile()) return false;

    setProjectTitle();
    for (const jk::FormatInfo& f : jk::formats()) {
        if (!(chosenSheets_ & f.code)) continue;
        project_.setSheetComposition(project_.sheetComposition() + f.code);
        SheetWindow* s = createSheet(f.code);
        switch (f.code) {
        case jk::FmtSimple:
        case jk::FmtDouble:
            for (const char* n : {"AdFrmSimpl", "Taddsimple", "AdFrmDbl", "TaddDbl"}) enableCommand(n, false);
            break;
        case jk::FmtJacket:
            for (const char* n : {"AdFrmIns", "TAddINS", "AdFrmCDR", "TAddCDR"}) enableCommand(n, false);
            break;
        case jk::FmtCdRom:
            for (const char* n : {"AdFrmCDR", "TAddCDR"}) enableCommand(n, false);
            break;
        case jk::FmtInside:
            for (const char* n : {"AdFrmIns", "TAddINS"}) enableCommand(n, false);
            if (s) {
                s->repaintLeftSpine();
                s->repaintRightSpine();
            }
            break;
        }
    }
    enableProjectCommands();
    setToolBarShown(true);
    project_.setModified(false);
    return true;
}

QString MainWindow::chooseOpenName()
{
    auto* files = pf::services().files;
    if (!files) return {};
    const QString title = QString(jk::texts().menuCaptions[2]).remove('&');
    return files->openFile(title.isEmpty() ? QStringLiteral("Open project") : title, startFolder(QString()), kFilter);
}

bool MainWindow::readProjectFile()
{
    if (!project_.filePath().isEmpty()) project_.setFileName(project_.filePath());
    if (project_.fileName().isEmpty()) {
        const QString chosen = chooseOpenName();
        if (chosen.isEmpty()) {
            project_.setFilePath({});
            setProjectTitle();
            return false;
        }
        project_.setFileName(chosen);
    }
    // What the file does not hold starts afresh: the spine font's defaults.
    jk::ProjectData data = project_.data();
    data.spineFont = jk::SpineFont{};
    data.spineTitle.clear();
    const jk::ProjectReadResult r =
        jk::readProject(project_.fileName(), data, [](const QString& description, const QString& title) {
            if (auto* m = pf::services().messages) m->show(description, title, pf::Icon::Warning);
        });
    data.filePath.clear();
    if (!r.opened) {
        project_.setFilePath({});
        project_.setFileName({});
        setProjectTitle();
        return false;
    }
    if (r.chosenSheets) chosenSheets_ = *r.chosenSheets;
    project_.load(std::move(data));
    enableCommand("Exportshhet", r.exportEnabled);
    return true;
}

void MainWindow::newProjectCommand()
{
    enableCommand("Exportshhet", false);
    SheetWindow::disableClipboardCommands(actions_, editor_);
    openExisting_ = true;
    if (newProject()) enableCommand("MCURPROJ", true);
}

void MainWindow::openCommand(bool fromButton)
{
    SheetWindow::disableClipboardCommands(actions_, editor_);
    const int weights = project_.printWeights();
    project_.setPrintWeights(0);
    arrange(2);
    // Opening from the menu always asks for a file.
    project_.setFilePath({});
    // Cancelled before anything closed: the open project keeps its sheets,
    // so it keeps their print weights too.
    if (!openProject() && !sheets().empty()) project_.setPrintWeights(weights);
    if (fromButton && !project_.fileName().isEmpty()) enableCommand("Exportshhet", true);
}

void MainWindow::startProject(const QString& commandLineProject)
{
    if (!commandLineProject.isEmpty()) {
        project_.setFilePath(QFileInfo(commandLineProject).absoluteFilePath());
        openExisting_ = true;
        if (openProject()) {
            enableCommand("MCURPROJ", true);
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
