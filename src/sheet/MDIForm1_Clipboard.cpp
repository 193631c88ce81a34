// The main window's clipboard commands: the Edit menu's Copy, Cut and Paste
// and their tool buttons, each acting on the active sheet.
#include "app/MDIForm1.h"
#include "sheet/PictFold.h"
#include <QAction>
#include <QToolButton>

void MDIForm1::Copy_Clip()
{
    if (PictFold* s = activeSheet()) s->ClipCopy();
}

void MDIForm1::Cut_Clip()
{
    // Only what was really copied is deleted.
    if (PictFold* s = activeSheet(); s && s->ClipCopy()) s->OBJDEL();
}

void MDIForm1::Paste_Clip()
{
    if (PictFold* s = activeSheet()) s->ClipPaste();
}

void MDIForm1::connectClipboardCommands()
{
    auto on = [this](const char* name, void (MDIForm1::*proc)()) {
        auto run = [this, proc] { (this->*proc)(); };
        if (QAction* a = action(QString::fromLatin1(name))) connect(a, &QAction::triggered, this, run);
        else if (QToolButton* b = button(QString::fromLatin1(name))) connect(b, &QToolButton::clicked, this, run);
    };
    on("ClipCopy", &MDIForm1::Copy_Clip);
    on("copyobj", &MDIForm1::Copy_Clip);
    on("clipcut", &MDIForm1::Cut_Clip);
    on("Cutobj", &MDIForm1::Cut_Clip);
    on("Clipaste", &MDIForm1::Paste_Clip);
    on("Pasteobj", &MDIForm1::Paste_Clip);
}
