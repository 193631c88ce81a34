// The main window's sheet commands: adding and removing sheets, the sheet
// pop-ups and the display-mode commands that act on the active sheet.
#include "ui/mainwindow/MainWindow.h"
#include "ui/sheet/SheetWindow.h"
#include "model/AppContext.h"
#include <QAction>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QToolButton>

namespace sh = jk::sheet;

void MainWindow::addSheet(int code)
{
    if (sheetOf(code)) return;  // at most one sheet per format
    project_.setSheetComposition(project_.sheetComposition() + code);
    createSheet(code);
    actions_.apply(sh::addSheetTable(code, project_.sheetComposition()));
    project_.setModified(true);
}

void MainWindow::addSimpleSheet() { addSheet(jk::FmtSimple); }
void MainWindow::addBookletSheet() { addSheet(jk::FmtDouble); }
void MainWindow::addInlaySheet() { addSheet(jk::FmtInside); }
void MainWindow::addDiscSheet() { addSheet(jk::FmtCdRom); }

SheetWindow* MainWindow::createSheet(int code)
{
    auto* sheet = new SheetWindow(actions_, dialogs_, project_, editor_);
    QMdiSubWindow* sub = mdi_->addSubWindow(sheet);
    // Window position of a new sheet: 2880, 1485 twips.
    sub->move(192, 99);
    sheet->initialise(code);
    sub->show();
    mdi_->setActiveSubWindow(sub);
    return sheet;
}

SheetWindow* MainWindow::activeSheet() const
{
    QMdiSubWindow* sub = mdi_->currentSubWindow();
    if (!sub) sub = mdi_->activeSubWindow();
    return sub ? qobject_cast<SheetWindow*>(sub->widget()) : nullptr;
}

SheetWindow* MainWindow::sheetOf(int code) const
{
    for (QMdiSubWindow* sub : mdi_->subWindowList())
        if (auto* s = qobject_cast<SheetWindow*>(sub->widget()); s && s->formatCode() == code) return s;
    return nullptr;
}

void MainWindow::removeSheet(bool fromButton)
{
    if (SheetWindow* s = activeSheet()) s->unloadSheet();
    if (fromButton) action("AddForm")->setEnabled(true);
}

void MainWindow::bringSheetToFront(int code)
{
    SheetWindow* s = sheetOf(code);
    if (!s || !s->frameWindow()) return;
    if (s->frameWindow()->isMinimized()) s->frameWindow()->showNormal();
    mdi_->setActiveSubWindow(s->frameWindow());
}

void MainWindow::toggleTextPage()
{
    const bool textPage = editor_.pageRequest == 1;
    if (const int page = actions_.apply(sh::textPageToggleTable(textPage))) editor_.pageRequest = page;
    button("SSCommand2")->setChecked(textPage);
    if (SheetWindow* s = activeSheet()) s->togglePage();
}

void MainWindow::connectSheetCommands()
{
    auto on = [this](const char* name, auto fn) { connect(action(name), &QAction::triggered, this, fn); };

    for (const char* n : {"AdFrmSimpl", "Taddsimple"}) on(n, [this] { addSimpleSheet(); });
    for (const char* n : {"AdFrmDbl", "TaddDbl"}) on(n, [this] { addBookletSheet(); });
    for (const char* n : {"AdFrmIns", "TAddINS"}) on(n, [this] { addInlaySheet(); });
    for (const char* n : {"AdFrmCDR", "TAddCDR"}) on(n, [this] { addDiscSheet(); });
    on("Mremove", [this] { removeSheet(false); });
    connect(button("removesheet"), &QToolButton::clicked, this, [this] { removeSheet(true); });

    // The sheet-surface pop-up.
    on("PREVIEW", [this] {
        if (SheetWindow* s = activeSheet()) s->toggleDiscPreview();
    });
    on("FMSP", [this] {
        SheetWindow* s = activeSheet();
        if (!s) return;
        s->toggleSpines();
        action("FMSP")->setText(jk::texts().spineCaptions[project_.spinesHidden() ? 1 : 0]);
    });
    on("FMSimple", [this] { bringSheetToFront(jk::FmtSimple); });
    on("FMDouble", [this] { bringSheetToFront(jk::FmtDouble); });
    on("FMInside", [this] { bringSheetToFront(jk::FmtInside); });
    on("FMCDROM", [this] { bringSheetToFront(jk::FmtCdRom); });

    // Text page / picture page: the button shows the page requested.
    button("SSCommand2")->setCheckable(true);
    connect(button("SSCommand2"), &QToolButton::clicked, this, [this] { toggleTextPage(); });

    // Stretch to fit / actual size of the selected picture.
    on("PicView", [this] {
        const auto& fit = jk::texts().fitCaptions;
        QAction* a = action("PicView");
        a->setText(a->text() == fit[0] ? fit[1] : fit[0]);
        if (SheetWindow* s = activeSheet()) s->togglePictureMode();
    });

    connect(mdi_, &QMdiArea::subWindowActivated, this, [](QMdiSubWindow* sub) {
        if (sub)
            if (auto* s = qobject_cast<SheetWindow*>(sub->widget())) s->activated();
    });
    connectObjectCommands();
}
