#include "ui/mainwindow/MainWindow.h"
#include "model/AppContext.h"
#include "ui/sheet/SheetWindow.h"
#include "file/MessageFile.h"
#include <QAction>
#include <QComboBox>
#include <QGridLayout>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QSlider>
#include <QToolBar>
#include <QToolButton>

// The icons are compiled into this static library; nothing references the
// resource's registration, so the linker would drop it without this call.
static void initResources() { Q_INIT_RESOURCE(jewlkit); }

namespace {

// Tool buttons with their tool-tip table index, in tool bar order; -1: none.
struct ButtonDef {
    const char* name;
    int toolTip;
};
const ButtonDef kFileButtons[] = {{"newprj", 0}, {"openprj", 1}, {"Saveprj", 2}, {"AddSheet", 3},
                                  {"removesheet", 4}};
const ButtonDef kEditButtons[] = {{"copyobj", 5}, {"Cutobj", 6}, {"Pasteobj", 7}, {"BTF", 8}, {"CHGOrder", 9},
                                  {"SSCommand1", 10}};
const ButtonDef kInsertButtons[] = {{"SSCommand14", 11}, {"SSCommand12", 12}, {"SSCommand15", 13},
                                    {"SSCommand2", 14}, {"SSCommand13", 15}, {"FDN", 24}, {"FDA", 25}};
// The nudge pad: 3 x 3, the middle left empty.
const ButtonDef kPad[3][3] = {{{"LU", -1}, {"SSCommand4", 16}, {"RU", -1}},
                              {{"SSCommand7", 17}, {nullptr, -1}, {"SSCommand6", 18}},
                              {{"LD", -1}, {"SSCommand5", 19}, {"RD", -1}}};
const ButtonDef kWindowButtons[] = {{"SSCommand9", 20}, {"SSCommand10", 21}, {"SSCommand8", 22},
                                    {"SSCommand11", 23}};

}  // namespace

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent)
{
    initResources();
    setObjectName("MDIForm1");
    setWindowTitle(QStringLiteral("Jewelcase Studio    "));
    setWindowIcon(QIcon(":/icons/jewlkit.svg"));
    mdi_ = new QMdiArea(this);
    mdi_->setObjectName("mdiArea");
    mdi_->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    mdi_->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setCentralWidget(mdi_);
    buildMenus();
    buildPopups();
    buildToolBar();
    connectCommands();
    connectSheetCommands();
    connectProjectCommands();
    connectPrintCommands();
    // Export (MainWindow_Export.cpp).
    connectExportCommands();
    // Scanning (MainWindow_Scan.cpp).
    connectScanCommands();
    // Companion programs (MainWindow_Companions.cpp).
    connectCompanionCommands();
    connectCalibrationCommands();
}

MainWindow::~MainWindow()
{
    // The sheets show this window's project: they go before it does.
    qDeleteAll(mdi_->subWindowList());
}

QAction* MainWindow::action(const QString& name) const { return actions_.action(name); }
QMenu* MainWindow::popup(const QString& name) const { return actions_.popup(name); }
QToolButton* MainWindow::button(const QString& name) const { return actions_.button(name); }

QMenu* MainWindow::addMenu(QWidget* parent, const QString& name, const QString& designCaption)
{
    auto* m = new QMenu(designCaption, parent);
    m->setObjectName(name);
    m->menuAction()->setObjectName(name);
    actions_.add(name, m->menuAction());
    if (auto* bar = qobject_cast<QMenuBar*>(parent)) bar->addMenu(m);
    else if (auto* up = qobject_cast<QMenu*>(parent)) up->addMenu(m);
    return m;
}

QAction* MainWindow::addAction(QMenu* menu, const QString& name, const QString& designCaption)
{
    QAction* a = menu->addAction(designCaption);
    a->setObjectName(name);
    actions_.add(name, a);
    return a;
}

void MainWindow::buildMenus()
{
    QMenuBar* bar = menuBar();
    QMenu* file = addMenu(bar, "Mfile", "&Files");
    addAction(file, "newsheet", "&New project");
    addAction(file, "Openfile", "&Open project");
    QMenu* cur = addMenu(file, "MCURPROJ", "&Current Project");
    QMenu* add = addMenu(cur, "AddForm", "&Add form");
    addAction(add, "AdFrmSimpl", "Simple");
    addAction(add, "AdFrmDbl", "Double");
    addAction(add, "AdFrmIns", "Inside");
    addAction(add, "AdFrmCDR", "CDROM");
    addAction(cur, "Mremove", "&Remove Active form");
    file->addSeparator();
    addAction(file, "savefilefirst", "&Save project");
    addAction(file, "saveas", "Save project &As");
    addAction(file, "Exportshhet", "Export current sheet");
    file->addSeparator();
    addAction(file, "Capture", "&Capture");
    addAction(file, "ScanSel", "Select source");
    file->addSeparator();
    addAction(file, "imprime", "P&rint current sheet");
    addAction(file, "IMPPRJ", "Print Pro&ject");
    addAction(file, "PRNSELECT", "Print &Selected");
    addAction(file, "PRINTPREVIEW", "Print pre&view");
    addAction(file, "PRTFNTCAT", "Print fonts &catalog");
    addAction(file, "PRTPICCAT", "Print &pictures catalog");
    file->addSeparator();
    addAction(file, "PREFERENCE", "Pre&ferences");
    file->addSeparator();
    addAction(file, "quit", "&Quit");

    QMenu* edit = addMenu(bar, "Medit", "&Edit");
    addAction(edit, "ClipCopy", "&Copy");
    addAction(edit, "clipcut", "C&ut");
    addAction(edit, "Clipaste", "&Paste");

    QMenu* tools = addMenu(bar, "mtools", "&Tools");
    QMenu* ins = addMenu(tools, "Minsert", "&Insert");
    addAction(ins, "Backpic", "&New background");
    addAction(ins, "InsertPic", "&Picture");
    QMenu* txt = addMenu(ins, "Insertxt", "&Text");
    addAction(txt, "Insertext", "Normal");
    addAction(txt, "Txtfold", "Folder");
    QMenu* fld = addMenu(ins, "MneuField", "&Fields");
    addAction(fld, "FieldCharacter", "Characters");
    addAction(fld, "FieldNumeric", "Numeric");
    addAction(tools, "MBTF", "Bring to &front");
    addAction(tools, "MSTB", "Send to &Back");
    tools->addSeparator();
    QAction* toolsBox = addAction(tools, "Tools", "&Tools box");
    toolsBox->setCheckable(true);
    addAction(tools, "CALIBRATE", "Calibrate &printer...");

    QMenu* wind = addMenu(bar, "Mwind", "&Windows");
    addAction(wind, "WCasc", "&Cascaded");
    addAction(wind, "WtileH", "Tiled &Horizontal");
    addAction(wind, "WTILEV", "Tiled &Vertical");
    addAction(wind, "ArrIcons", "&Arrange icons");

    QMenu* help = addMenu(bar, "Mhelp", "&Help");
    addAction(help, "Helpprog", "&Contents");
    addAction(help, "Tutorial", "&Tutorial");
    addAction(help, "WEB", "&Web");
    help->addSeparator();
    addAction(help, "about", "&About");

    // Disabled until a project exists; the companion programs until found.
    for (const char* n : {"MCURPROJ", "Mremove", "savefilefirst", "saveas", "Exportshhet", "Medit", "mtools",
                          "Mwind", "Capture", "ScanSel", "PRTFNTCAT", "PRTPICCAT", "Clipaste"})
        action(n)->setEnabled(false);
}

void MainWindow::buildPopups()
{
    auto pop = [this](const QString& name, const QString& caption) {
        auto* m = new QMenu(caption, this);
        m->setObjectName(name);
        m->menuAction()->setObjectName(name);
        m->menuAction()->setVisible(false);
        actions_.add(name, m);
        return m;
    };
    QMenu* m = pop("PoPlace", "Action");
    addAction(m, "EditObj", "Edit");
    addAction(m, "DelOBJ", "Delete");
    addAction(m, "MoveObj", "Move");
    addAction(m, "resObj", "Resize");

    m = pop("Piplace", "Paction");
    addAction(m, "Picedit", "Edit")->setEnabled(false);
    addAction(m, "DelPic", "Delete");
    addAction(m, "PicMove", "Move");
    addAction(m, "PicRes", "Resize");
    addAction(m, "PicView", "Strech to fit");
    addAction(m, "PicChg", "Change");

    m = pop("Toolsmenu", "MTools");
    addAction(m, "PREVIEW", "Preview")->setCheckable(true);
    addAction(m, "FMSP", "Hide Spline");
    m->addSeparator();
    for (const char* n : {"FMSimple", "FMDouble", "FMInside", "FMCDROM"}) addAction(m, n, n)->setVisible(false);
    m->addSeparator();
    addAction(m, "ToolHide", "Hide Tools bar");

    m = pop("Faction", "Faction");
    addAction(m, "Taddsimple", "Simple");
    addAction(m, "TaddDbl", "Double");
    addAction(m, "TAddINS", "Inside");
    addAction(m, "TAddCDR", "CDROM");

    m = pop("MPRINT", "MPRINT");
    addAction(m, "MPCS", "Current sheet");
    addAction(m, "MPPRJ", "Project");
    addAction(m, "MFPrnSelect", "Print Selected");
    addAction(m, "MPPREVIEW", "Preview");

    m = pop("AAction", "AAction");
    addAction(m, "voirnext", "Next");
    addAction(m, "VoirPrevious", "Previous");
    addAction(m, "AAEdit", "Edit");
    addAction(m, "AADelete", "Delete");
    addAction(m, "AAMove", "Move");

    m = pop("Naction", "Naction");
    addAction(m, "raz", "Reset");
    addAction(m, "Plus1", "Next");
    addAction(m, "Moins1", "Previous");
    addAction(m, "Nedit", "Edit");
    addAction(m, "NDelete", "Delete");
    addAction(m, "Nmove", "Move");
}

QToolButton* MainWindow::addButton(const QString& name)
{
    auto* b = new QToolButton(panel_);
    b->setObjectName(name);
    b->setIcon(QIcon(QStringLiteral(":/icons/%1.svg").arg(name)));
    b->setAutoRaise(true);
    actions_.add(name, b);
    return b;
}

void MainWindow::buildToolBar()
{
    panel_ = new QToolBar(this);
    panel_->setObjectName("SSPanel1");
    actions_.addWidget(QStringLiteral("SSPanel1"), panel_);
    panel_->setMovable(false);
    panel_->setIconSize(QSize(24, 24));
    addToolBar(Qt::TopToolBarArea, panel_);

    auto addRow = [this](const ButtonDef* defs, int n) {
        for (int i = 0; i < n; ++i) panel_->addWidget(addButton(defs[i].name));
        panel_->addSeparator();
    };
    addRow(kFileButtons, int(std::size(kFileButtons)));
    addRow(kEditButtons, int(std::size(kEditButtons)));
    addRow(kInsertButtons, int(std::size(kInsertButtons)));

    auto* pad = new QWidget(panel_);
    pad->setObjectName("nudgePad");
    auto* grid = new QGridLayout(pad);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(0);
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            if (kPad[r][c].name) {
                QToolButton* b = addButton(kPad[r][c].name);
                b->setIconSize(QSize(14, 14));
                b->setAutoRepeat(true);
                grid->addWidget(b, r, c);
            }
    panel_->addWidget(pad);

    auto* stepBoxes = new QWidget(panel_);
    auto* stepLayout = new QVBoxLayout(stepBoxes);
    stepLayout->setContentsMargins(4, 0, 4, 0);
    stepping_ = new QLineEdit(QStringLiteral("40"), stepBoxes);
    stepping_->setObjectName("Stepping");
    stepping_->setMaxLength(6);
    stepping_->setFixedWidth(56);
    stepping_->setAlignment(Qt::AlignRight);
    slider_ = new QSlider(Qt::Horizontal, stepBoxes);
    slider_->setObjectName("MHSlide1");
    slider_->setRange(1, 999);
    slider_->setValue(40);
    slider_->setFixedWidth(56);
    stepLayout->addWidget(stepping_);
    stepLayout->addWidget(slider_);
    panel_->addWidget(stepBoxes);
    panel_->addSeparator();

    addRow(kWindowButtons, int(std::size(kWindowButtons)));

    combo1_ = new QComboBox(panel_);
    combo1_->setObjectName("Combo1");
    combo1_->setMinimumContentsLength(18);
    combo1_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    panel_->addWidget(combo1_);

    auto* spacer = new QWidget(panel_);
    spacer->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    panel_->addWidget(spacer);
    picture1_ = new QLabel(panel_);
    picture1_->setObjectName("Picture1");
    picture1_->setPixmap(QIcon(":/icons/jewlkit.svg").pixmap(40, 40));
    panel_->addWidget(picture1_);
}

void MainWindow::applyTexts()
{
    const jk::Texts& t = jk::texts();
    for (auto it = actions_.allActions().cbegin(); it != actions_.allActions().cend(); ++it) {
        const QString caption = jk::menuCaption(t, it.key());
        if (jk::menuCaptionOrder().contains(it.key()) || !caption.isEmpty()) {
            it.value()->setText(caption);
            if (QMenu* m = it.value()->menu()) m->setTitle(caption);
        }
    }
    // Sheet names: the add-sheet entries and the per-format sheet entries.
    const QPair<const char*, int> formats[] = {
        {"AdFrmSimpl", 0}, {"AdFrmDbl", 1}, {"AdFrmCDR", 3}, {"AdFrmIns", 4}, {"Taddsimple", 0},
        {"TaddDbl", 1},    {"TAddCDR", 3},  {"TAddINS", 4},  {"FMSimple", 0}, {"FMDouble", 1},
        {"FMCDROM", 3},    {"FMInside", 4}};
    for (const auto& [name, index] : formats) action(name)->setText(t.formatNames[std::size_t(index)]);
    action("PicView")->setText(t.fitCaptions[0]);
    action("FMSP")->setText(t.spineCaptions[0]);
    action("PREVIEW")->setText(t.extraCaptions[0]);
    action("ScanSel")->setText(t.extraCaptions[1]);
    action("CALIBRATE")->setText(t.msg(jk::Msg::CalibrateCommand));
    action("PRINTPREVIEW")->setText(t.msg(jk::Msg::PrintPreviewMenu));
    action("MPPREVIEW")->setText(t.msg(jk::Msg::PrintPreviewPopup));

    auto tip = [&](const ButtonDef& d) {
        if (d.name && d.toolTip >= 0) button(d.name)->setToolTip(t.toolTips[std::size_t(d.toolTip)]);
    };
    for (const auto& d : kFileButtons) tip(d);
    for (const auto& d : kEditButtons) tip(d);
    for (const auto& d : kInsertButtons) tip(d);
    for (const auto& row : kPad)
        for (const auto& d : row) tip(d);
    for (const auto& d : kWindowButtons) tip(d);
}
