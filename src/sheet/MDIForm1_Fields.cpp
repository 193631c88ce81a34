// The main window's field commands: inserting character and numeric fields,
// the character field's Next and Previous, the numeric field's Next,
// Previous and Reset, and editing a field. Deleting goes through the object
// menus' delete entries (OBJDEL, which hands fields to Delfield).
#include "app/MDIForm1.h"
#include "sheet/PictFold.h"
#include "state/Global.h"
#include <QAction>
#include <QMenu>
#include <QToolBar>
#include <QToolButton>

using jk::G;

void MDIForm1::insertCharField()
{
    panel_->update();
    PictFold* s = activeSheet();
    if (!s) return;
    G().fieldSubKind = 1;
    s->InsFChar();
}

void MDIForm1::insertNumField()
{
    panel_->update();
    PictFold* s = activeSheet();
    if (!s) return;
    G().fieldSubKind = 2;
    s->InsFNum();
}

void MDIForm1::Position_Menu()
{
    if (PictFold* s = activeSheet()) s->FMenuA_Change();
}

void MDIForm1::connectFieldCommands()
{
    PictFold::installFieldHook();
    auto on = [this](const char* name, auto fn) { connect(action(name), &QAction::triggered, this, fn); };
    auto onButton = [this](const char* name, auto fn) { connect(button(name), &QToolButton::clicked, this, fn); };
    auto onSheet = [this](void (PictFold::*proc)()) {
        return [this, proc] {
            if (PictFold* s = activeSheet()) (s->*proc)();
        };
    };

    on("FieldCharacter", [this] { insertCharField(); });
    onButton("FDA", [this] { insertCharField(); });
    on("FieldNumeric", [this] { insertNumField(); });
    onButton("FDN", [this] { insertNumField(); });

    on("voirnext", onSheet(&PictFold::VNEXT));
    on("VoirPrevious", onSheet(&PictFold::VOIRPREV));
    on("Plus1", onSheet(&PictFold::Plusun));
    on("Moins1", onSheet(&PictFold::MoinsUn));
    on("raz", onSheet(&PictFold::RazNum));
    for (const char* n : {"AAEdit", "Nedit"})
        on(n, [this] {
            G().moveMode = jk::kFalse;
            G().resizeMode = jk::kFalse;
            if (PictFold* s = activeSheet()) s->editfield();
        });
    // Next and Previous are offered as far as the field's file goes.
    connect(popup("AAction"), &QMenu::aboutToShow, this, [this] { Position_Menu(); });
}
