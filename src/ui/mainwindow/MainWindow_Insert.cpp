// The main window's object commands: inserting text blocks, pictures,
// backgrounds and the spine text, the object pop-up menus, the arrow and
// diagonal buttons and the stacking commands, each on the active sheet.
#include "ui/mainwindow/MainWindow.h"
#include "ui/sheet/SheetWindow.h"
#include <QAction>
#include <QToolBar>
#include <QToolButton>

void MainWindow::insertText()
{
    panel_->update();
    SheetWindow* s = activeSheet();
    if (!s) return;
    if (s->textPageShown()) s->insertPageTextBlock();
    else s->insertTextBlock();
}

void MainWindow::insertPicture()
{
    panel_->update();
    SheetWindow* s = activeSheet();
    if (!s) return;
    s->insertPictureObject();
}

void MainWindow::newBackground()
{
    panel_->update();
    SheetWindow* s = activeSheet();
    if (!s) return;
    s->changeBackground();
}

void MainWindow::insertSpineText()
{
    panel_->update();
    SheetWindow* s = activeSheet();
    if (!s) return;
    s->editSpineText();
    // Every inlay shows the same spine text.
    project_.propagateSpine();
}

void MainWindow::connectObjectCommands()
{
    auto on = [this](const char* name, auto fn) { connect(action(name), &QAction::triggered, this, fn); };
    auto onButton = [this](const char* name, auto fn) { connect(button(name), &QToolButton::clicked, this, fn); };
    // A command on the active sheet, if there is one.
    auto onSheet = [this](void (SheetWindow::*proc)()) {
        return [this, proc] {
            if (SheetWindow* s = activeSheet()) (s->*proc)();
        };
    };

    on("Insertext", [this] { insertText(); });
    onButton("SSCommand12", [this] { insertText(); });
    on("InsertPic", [this] { insertPicture(); });
    onButton("SSCommand13", [this] { insertPicture(); });
    on("Backpic", [this] { newBackground(); });
    onButton("SSCommand14", [this] { newBackground(); });
    on("Txtfold", [this] { insertSpineText(); });
    onButton("SSCommand15", [this] { insertSpineText(); });

    // The object menus.
    on("EditObj", onSheet(&SheetWindow::editObject));
    on("DelOBJ", onSheet(&SheetWindow::deleteObject));
    on("DelPic", onSheet(&SheetWindow::deletePicture));
    auto modes = [this](bool move, bool resize) {
        return [this, move, resize] {
            editor_.selection.moveMode = move;
            editor_.selection.resizeMode = resize;
        };
    };
    for (const char* n : {"MoveObj", "PicMove", "AAMove", "Nmove"}) on(n, modes(true, false));
    for (const char* n : {"resObj", "PicRes"}) on(n, modes(false, true));
    for (const char* n : {"AADelete", "NDelete"})
        on(n, [this] {
            editor_.selection.moveMode = false;
            editor_.selection.resizeMode = false;
            if (SheetWindow* s = activeSheet()) s->deleteObject();
        });
    on("Picedit", onSheet(&SheetWindow::editPictureExternally));
    on("PicChg", onSheet(&SheetWindow::changePicture));

    // Arrows and diagonals: one step, or one step each way.
    auto nudge = [this](std::initializer_list<void (SheetWindow::*)()> steps) {
        std::vector<void (SheetWindow::*)()> list(steps);
        return [this, list] {
            panel_->update();
            if (SheetWindow* s = activeSheet())
                for (auto proc : list) (s->*proc)();
        };
    };
    onButton("SSCommand7", nudge({&SheetWindow::stepLeft}));
    onButton("SSCommand6", nudge({&SheetWindow::stepRight}));
    onButton("SSCommand4", nudge({&SheetWindow::stepUp}));
    onButton("SSCommand5", nudge({&SheetWindow::stepDown}));
    onButton("LU", nudge({&SheetWindow::stepUp, &SheetWindow::stepLeft}));
    onButton("LD", nudge({&SheetWindow::stepLeft, &SheetWindow::stepDown}));
    onButton("RU", nudge({&SheetWindow::stepRight, &SheetWindow::stepUp}));
    onButton("RD", nudge({&SheetWindow::stepRight, &SheetWindow::stepDown}));

    // Stacking.
    onButton("BTF", onSheet(&SheetWindow::bringToFront));
    on("MBTF", onSheet(&SheetWindow::bringToFront));
    onButton("CHGOrder", onSheet(&SheetWindow::sendToBack));
    on("MSTB", onSheet(&SheetWindow::sendToBack));
    connectClipboardCommands();
    connectFieldCommands();
}
