// The main window's clipboard commands: the Edit menu's Copy, Cut and Paste
// and their tool buttons, each acting on the active sheet.
#include "ui/mainwindow/MainWindow.h"
#include "ui/sheet/SheetWindow.h"
#include <QAction>
#include <QToolButton>

void MainWindow::copyObject()
{
    if (SheetWindow* s = activeSheet()) s->copySelected();
}

void MainWindow::cutObject()
{
    // Only what was really copied is deleted.
    if (SheetWindow* s = activeSheet(); s && s->copySelected()) s->deleteObject();
}

void MainWindow::pasteObject()
{
    if (SheetWindow* s = activeSheet()) s->pasteCopied();
}

void MainWindow::connectClipboardCommands()
{
    auto on = [this](const char* name, void (MainWindow::*proc)()) {
        auto run = [this, proc] { (this->*proc)(); };
        if (QAction* a = action(QString::fromLatin1(name))) connect(a, &QAction::triggered, this, run);
        else if (QToolButton* b = button(QString::fromLatin1(name))) connect(b, &QToolButton::clicked, this, run);
    };
    on("ClipCopy", &MainWindow::copyObject);
    on("copyobj", &MainWindow::copyObject);
    on("clipcut", &MainWindow::cutObject);
    on("Cutobj", &MainWindow::cutObject);
    on("Clipaste", &MainWindow::pasteObject);
    on("Pasteobj", &MainWindow::pasteObject);
}
