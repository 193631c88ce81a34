// The main window's object commands: inserting text blocks, pictures,
// backgrounds and the spine text, the object pop-up menus, the arrow and
// diagonal buttons and the stacking commands. Each sets the hand-over
// variables and calls the active sheet.
#include "app/MDIForm1.h"
#include "sheet/PictFold.h"
#include "state/Global.h"
#include "state/Procedures.h"
#include <QAction>
#include <QToolBar>
#include <QToolButton>

using jk::G;

void MDIForm1::insertText()
{
    panel_->update();
    PictFold* s = activeSheet();
    if (!s) return;
    jk::Global& g = G();
    g.textDestination = 0;
    g.fieldSubKind = 0;
    g.spineTextMode = jk::kFalse;
    if (s->textPageShown()) s->TXTINS();
    else s->INSTXT();
}

void MDIForm1::insertPicture()
{
    panel_->update();
    PictFold* s = activeSheet();
    if (!s) return;
    G().pictureDialogPurpose = 1;
    G().textDestination = 1;
    s->INSPIC();
}

void MDIForm1::newBackground()
{
    panel_->update();
    PictFold* s = activeSheet();
    if (!s) return;
    G().pictureDialogPurpose = 0;
    G().textDestination = 1;
    s->CHGBACK();
}

void MDIForm1::insertSpineText()
{
    panel_->update();
    PictFold* s = activeSheet();
    if (!s) return;
    G().textDestination = 2;
    G().fieldSubKind = 3;
    s->InstFold();
    s->UpdatePic();
    s->UpdatePic1();
    // Every inlay shows the same spine text.
    jk::spinePropagation();
}

void MDIForm1::connectObjectCommands()
{
    auto on = [this](const char* name, auto fn) { connect(action(name), &QAction::triggered, this, fn); };
    auto onButton = [this](const char* name, auto fn) { connect(button(name), &QToolButton::clicked, this, fn); };
    // A command on the active sheet, if there is one.
    auto onSheet = [this](void (PictFold::*proc)()) {
        return [this, proc] {
            if (PictFold* s = activeSheet()) (s->*proc)();
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
    on("EditObj", onSheet(&PictFold::EditObj));
    on("DelOBJ", onSheet(&PictFold::OBJDEL));
    on("DelPic", onSheet(&PictFold::PICDEL));
    auto modes = [](bool move, bool resize) {
        return [move, resize] {
            G().moveMode = jk::flag(move);
            G().resizeMode = jk::flag(resize);
            G().textDestination = 1;
        };
    };
    for (const char* n : {"MoveObj", "PicMove", "AAMove", "Nmove"}) on(n, modes(true, false));
    for (const char* n : {"resObj", "PicRes"}) on(n, modes(false, true));
    for (const char* n : {"AADelete", "NDelete"})
        on(n, [this] {
            G().moveMode = jk::kFalse;
            G().resizeMode = jk::kFalse;
            if (PictFold* s = activeSheet()) s->OBJDEL();
        });
    on("Picedit", [this] {
        G().pictureEditRequest = jk::kTrue;
        if (PictFold* s = activeSheet()) s->pictureRequests();
    });
    on("PicChg", [this] {
        G().pictureChangeRequest = jk::kTrue;
        if (PictFold* s = activeSheet()) s->pictureRequests();
    });

    // Arrows and diagonals: one step, or one step each way.
    auto nudge = [this](std::initializer_list<void (PictFold::*)()> steps) {
        std::vector<void (PictFold::*)()> list(steps);
        return [this, list] {
            panel_->update();
            if (PictFold* s = activeSheet())
                for (auto proc : list) (s->*proc)();
        };
    };
    onButton("SSCommand7", nudge({&PictFold::ltone}));
    onButton("SSCommand6", nudge({&PictFold::rgone}));
    onButton("SSCommand4", nudge({&PictFold::UPone}));
    onButton("SSCommand5", nudge({&PictFold::DNone}));
    onButton("LU", nudge({&PictFold::UPone, &PictFold::ltone}));
    onButton("LD", nudge({&PictFold::ltone, &PictFold::DNone}));
    onButton("RU", nudge({&PictFold::rgone, &PictFold::UPone}));
    onButton("RD", nudge({&PictFold::rgone, &PictFold::DNone}));

    // Stacking.
    onButton("BTF", onSheet(&PictFold::ObjFront));
    on("MBTF", onSheet(&PictFold::ObjFront));
    onButton("CHGOrder", onSheet(&PictFold::ObjOrder));
    on("MSTB", onSheet(&PictFold::ObjOrder));
    connectClipboardCommands();
    connectFieldCommands();
}
