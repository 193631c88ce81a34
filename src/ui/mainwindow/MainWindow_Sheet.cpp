// The main window's sheet commands: adding and removing sheets, the sheet
// pop-ups and the display-mode commands that act on the active sheet.
#include "ui/mainwindow/MainWindow.h"
#include "ui/sheet/SheetWindow.h"
#include "model/Global.h"
#include <QAction>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QToolButton>

using jk::G;
namespace sh = jk::sheet;

namespace {

void addSheet(MainWindow* w, int code)
{
    if (w->sheetOf(code)) return;  // at most one sheet per format
    jk::Global& g = G();
    g.sheetComposition = jk::i16(g.sheetComposition + code);
    g.pendingFormat = jk::i16(code);
    g.pendingCaption = g.texts.formatNames[std::size_t(jk::formatNameIndex(code))];
    w->createSheet(code);
    sh::applyCommands(w, sh::addSheetTable(code, g.sheetComposition));
    g.projectModified = true;
}

}  // namespace

void MainWindow::addSimpleSheet() { addSheet(this, jk::FmtSimple); }
void MainWindow::addBookletSheet() { addSheet(this, jk::FmtDouble); }
void MainWindow::addInlaySheet() { addSheet(this, jk::FmtInside); }
void MainWindow::addDiscSheet() { addSheet(this, jk::FmtCdRom); }

SheetWindow* MainWindow::createSheet(int code)
{
    G().pendingFormat = jk::i16(code);
    auto* sheet = new SheetWindow(this);
    QMdiSubWindow* sub = mdi_->addSubWindow(sheet);
    // Window position of a new sheet: 2880, 1485 twips.
    sub->move(192, 99);
    sheet->initialise();
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
    G().sheetActive = false;
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
    const bool textPage = G().pageRequest == 1;
    sh::applyCommands(this, sh::textPageToggleTable(textPage));
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
        action("FMSP")->setText(G().texts.spineCaptions[G().spinesHidden ? 1 : 0]);
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
        const auto& fit = G().texts.fitCaptions;
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
