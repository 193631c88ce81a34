// The main window's field commands: inserting character and numeric fields,
// the character field's Next and Previous, the numeric field's Next,
// Previous and Reset, and editing a field. Deleting goes through the object
// menus' delete entries (deleteObject, which hands fields to deleteField).
#include "ui/mainwindow/MainWindow.h"
#include "ui/sheet/SheetWindow.h"
#include <QAction>
#include <QMenu>
#include <QToolBar>
#include <QToolButton>

void MainWindow::insertCharField()
{
    panel_->update();
    SheetWindow* s = activeSheet();
    if (!s) return;
    s->insertCharField();
}

void MainWindow::insertNumField()
{
    panel_->update();
    SheetWindow* s = activeSheet();
    if (!s) return;
    s->insertNumField();
}

void MainWindow::updateValueStepCommands()
{
    if (SheetWindow* s = activeSheet()) s->updateValueMenu();
}

void MainWindow::connectFieldCommands()
{
    auto on = [this](const char* name, auto fn) { connect(action(name), &QAction::triggered, this, fn); };
    auto onButton = [this](const char* name, auto fn) { connect(button(name), &QToolButton::clicked, this, fn); };
    auto onSheet = [this](void (SheetWindow::*proc)()) {
        return [this, proc] {
            if (SheetWindow* s = activeSheet()) (s->*proc)();
        };
    };

    on("FieldCharacter", [this] { insertCharField(); });
    onButton("FDA", [this] { insertCharField(); });
    on("FieldNumeric", [this] { insertNumField(); });
    onButton("FDN", [this] { insertNumField(); });

    on("voirnext", onSheet(&SheetWindow::nextValue));
    on("VoirPrevious", onSheet(&SheetWindow::previousValue));
    on("Plus1", onSheet(&SheetWindow::stepNumberForward));
    on("Moins1", onSheet(&SheetWindow::stepNumberBack));
    on("raz", onSheet(&SheetWindow::resetNumbers));
    for (const char* n : {"AAEdit", "Nedit"})
        on(n, [this] {
            editor_.selection.moveMode = false;
            editor_.selection.resizeMode = false;
            if (SheetWindow* s = activeSheet()) s->editField();
        });
    // Next and Previous are offered as far as the field's file goes.
    connect(popup("AAction"), &QMenu::aboutToShow, this, [this] { updateValueStepCommands(); });
}
