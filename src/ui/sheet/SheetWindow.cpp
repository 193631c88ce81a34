#include "ui/sheet/SheetWindow.h"
#include "model/Global.h"
#include "model/Procedures.h"
#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>

using jk::G;
using namespace jk::sheet;

namespace jk::sheet {

void applyCommands(QObject* root, const CommandTable& t)
{
    if (!root) return;
    auto find = [root](const QString& name) -> QObject* {
        if (auto* a = root->findChild<QAction*>(name)) return a;
        return root->findChild<QWidget*>(name);
    };
    for (const auto& [name, on] : t.enable) {
        QObject* o = find(name);
        if (auto* a = qobject_cast<QAction*>(o)) a->setEnabled(on);
        else if (auto* w = qobject_cast<QWidget*>(o)) w->setEnabled(on);
    }
    for (const auto& [name, on] : t.visible) {
        QObject* o = find(name);
        if (auto* a = qobject_cast<QAction*>(o)) a->setVisible(on);
        else if (auto* w = qobject_cast<QWidget*>(o)) w->setVisible(on);
    }
    if (t.pageRequest) G().pageRequest = i16(t.pageRequest);
}

i16& compositionCopy()
{
    static i16 copy = 0;
    return copy;
}

}  // namespace jk::sheet

namespace {

// The canvas CSPicture1: paints the whole sheet through the one drawing path.
// Its children (spines, text page) are transparent place holders that carry
// the historical names, geometry and visibility; the canvas draws for them.
class SheetCanvas : public QWidget {
public:
    SheetCanvas(SheetWindow* sheet, QWidget* parent) : QWidget(parent), sheet_(sheet)
    {
        setObjectName(QStringLiteral("CSPicture1"));
        setAttribute(Qt::WA_OpaquePaintEvent);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter p(this);
        p.scale(1.0 / kTwipsPerPixel, 1.0 / kTwipsPerPixel);
        paint(p, sheet_->formatCode(), sheet_->renderOptions());
    }
    // Presses on the canvas belong to its objects, not to the window's
    // surface pop-up.
    void mousePressEvent(QMouseEvent* e) override
    {
        e->accept();
        sheet_->canvasPress(e->position().toPoint() * kTwipsPerPixel, e->globalPosition().toPoint());
    }
    void mouseReleaseEvent(QMouseEvent* e) override
    {
        e->accept();
        sheet_->canvasRelease();
    }

private:
    SheetWindow* sheet_;
};

QWidget* placeholder(const char* name, QWidget* parent)
{
    auto* w = new QWidget(parent);
    w->setObjectName(QString::fromLatin1(name));
    w->hide();
    return w;
}

QRect toPixels(const QRect& twips)
{
    auto px = [](int t) { return qRound(double(t) / kTwipsPerPixel); };
    return QRect(px(twips.left()), px(twips.top()), px(twips.width()), px(twips.height()));
}

}  // namespace

bool SheetWindow::mayClose = false;
std::function<void()> SheetWindow::pictureDialog;

SheetWindow::SheetWindow(QWidget* mainWindow, QWidget* parent) : QWidget(parent), main_(mainWindow)
{
    setObjectName(QStringLiteral("PictFold"));
    setWindowTitle(QStringLiteral("Folder name"));
    setAttribute(Qt::WA_DeleteOnClose, false);
    canvas_ = new SheetCanvas(this, this);
    canvas_->hide();
    folder1_ = placeholder("Folder1", canvas_);
    folder2_ = placeholder("Folder2", canvas_);
    pictext_ = placeholder("Pictext", canvas_);
    cdpic_ = new QLabel(this);
    cdpic_->setObjectName(QStringLiteral("CDPIC"));
    cdpic_->hide();
    resize(sizeHint());
}

SheetWindow::~SheetWindow() = default;

// Client area 10470 x 7560 twips.
QSize SheetWindow::sizeHint() const { return QSize(698, 504); }

QMdiSubWindow* SheetWindow::frameWindow() const { return qobject_cast<QMdiSubWindow*>(parentWidget()); }

QObject* SheetWindow::command(const QString& name) const
{
    if (!main_) return nullptr;
    if (auto* a = main_->findChild<QAction*>(name)) return a;
    return main_->findChild<QWidget*>(name);
}

void SheetWindow::apply(const CommandTable& t) { applyCommands(main_, t); }

bool SheetWindow::isActiveSheet() const
{
    QMdiSubWindow* sub = frameWindow();
    return sub && sub->mdiArea() && sub->mdiArea()->currentSubWindow() == sub;
}

void SheetWindow::initialise()
{
    trimSystemMenu();
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const int code = G().pendingFormat;
    if (!G().pendingCaption.isEmpty()) setWindowTitle(G().pendingCaption);
    else if (jk::formatNameIndex(code) >= 0) setWindowTitle(G().texts.formatNames[std::size_t(jk::formatNameIndex(code))]);
    apply(setupTable(isFormatCode(code) ? code : 0, G().spinesHidden));
    if (isFormatCode(code)) setUp(code);
    loaded_ = true;
    QApplication::restoreOverrideCursor();
}

void SheetWindow::trimSystemMenu()
{
    QMdiSubWindow* sub = frameWindow();
    if (!sub) return;
    // No close button: a sheet leaves through the remove commands only. The
    // title bar draws its close button whenever the system-menu hint is set;
    // without it the menu still opens from a right click on the title bar.
    sub->setWindowFlags(Qt::SubWindow | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowMinMaxButtonsHint);
    QMenu* menu = sub->systemMenu();
    if (!menu) return;
    static const QStringList keep{QStringLiteral("Restore"), QStringLiteral("Minimize"), QStringLiteral("Maximize")};
    const QList<QAction*> items = menu->actions();
    bool named = false;
    for (QAction* a : items) named = named || keep.contains(QString(a->text()).remove(u'&'));
    for (int i = 0; i < items.size(); ++i) {
        // Translated menus: keep the standard positions of those three.
        const bool kept = named ? keep.contains(QString(items[i]->text()).remove(u'&')) : (i == 0 || i == 3 || i == 4);
        if (!kept) menu->removeAction(items[i]);
    }
}

void SheetWindow::setUp(int code)
{
    jk::Global& g = G();
    code_ = code;
    setProperty("Tag", QString::number(code));
    if (code == jk::FmtJacket) g.compositionCode = 16;
    else g.compositionCode = jk::i16(g.compositionCode + jk::compositionWeight(code));

    canvas_->setGeometry(canvasRectPixels(code));
    canvas_->show();
    if (code == jk::FmtInside) {
        folder1_->setGeometry(toPixels(spineRect(code, Spine::Left)));
        folder2_->setGeometry(toPixels(spineRect(code, Spine::Right)));
        folder1_->setVisible(!g.spinesHidden);
        folder2_->setVisible(!g.spinesHidden);
    }
    if (formatLayout(code).textPage) {
        pictext_->setGeometry(toPixels(textPageRect(code)));
        if (code == jk::FmtDouble) g.textDestination = 1;
    }
    const QString entry = toolsMenuEntry(code);
    const int name = jk::formatNameIndex(code);
    if (!entry.isEmpty() && name >= 0 && !g.texts.formatNames[std::size_t(name)].isEmpty())
        if (auto* a = qobject_cast<QAction*>(command(entry))) a->setText(g.texts.formatNames[std::size_t(name)]);
    // The objects are drawn from the records; the window keeps only their
    // stacking and shown borders. A sheet shows all of its records whatever
    // the text destination, so a sheet added again gets its objects back.
    hiddenPictures_.clear();
    restoreObjects();
    // A sheet with a text page shows the page that is requested.
    if (formatLayout(code).textPage) togglePage();
    g.pendingFormat = kNoFormat;
    compositionCopy() = g.compositionCode;
    canvas_->update();
}

void SheetWindow::activated()
{
    G().sheetActive = true;
    jk::printerAvailabilityRule();
    updateFormatCommands();
}

void SheetWindow::resized()
{
    updateFormatCommands();
    apply(pageCommandsTable(G().pageRequest == 2));
}

void SheetWindow::resizeEvent(QResizeEvent* e)
{
    QWidget::resizeEvent(e);
    if (loaded_ && isActiveSheet()) resized();
}

void SheetWindow::mousePressEvent(QMouseEvent* e)
{
    if (e->button() == Qt::RightButton) {
        apply(toolsMenuTable(code_));
        if (main_)
            if (auto* menu = main_->findChild<QMenu*>(QStringLiteral("Toolsmenu")))
                menu->popup(e->globalPosition().toPoint());
    } else {
        updateToolButtons();
    }
    e->accept();
}

void SheetWindow::updateToolButtons()
{
    const CommandTable t = toolButtonsTable(code_, G().pageRequest);
    apply(t);
}

void SheetWindow::updateFormatCommands()
{
    apply(formatCommandsTable(code_));
    updateToolButtons();
}

void SheetWindow::updateAddSheetCommands()
{
    jk::Global& g = G();
    g.projectModified = true;
    apply(addSheetCommandsTable(g.sheetComposition));
    if (code_ == jk::FmtInside) {
        g.spineFont.name.clear();
        g.spineText.clear();
    }
}

void SheetWindow::closingBookkeeping()
{
    updateAddSheetCommands();
    // Only the main window left: the remove button is offered again.
    QMdiSubWindow* sub = frameWindow();
    if (!sub || !sub->mdiArea()) return;
    int others = 0;
    for (QMdiSubWindow* w : sub->mdiArea()->subWindowList())
        if (w != sub && qobject_cast<SheetWindow*>(w->widget())) ++others;
    if (others == 0)
        if (auto* b = qobject_cast<QWidget*>(command(QStringLiteral("removesheet")))) b->setEnabled(true);
}

void SheetWindow::closeEvent(QCloseEvent* e)
{
    if (!mayClose) {
        e->ignore();
        return;
    }
    e->accept();
    closingBookkeeping();
}

void SheetWindow::unloadSheet()
{
    jk::Global& g = G();
    g.sheetComposition = jk::i16(g.sheetComposition - code_);
    const QString entry = toolsMenuEntry(code_);
    if (auto* a = qobject_cast<QAction*>(command(entry))) a->setVisible(false);
    // The weight leaves both the composition code and its print-side copy,
    // so a sheet added again is not counted twice.
    const int w = jk::compositionWeight(code_);
    g.compositionCode = jk::i16(std::max(0, g.compositionCode - w));
    compositionCopy() = jk::i16(std::max(0, compositionCopy() - w));
    closingBookkeeping();
    if (QMdiSubWindow* sub = frameWindow()) {
        sub->hide();
        if (sub->mdiArea()) sub->mdiArea()->removeSubWindow(sub);
        sub->deleteLater();
    } else {
        hide();
        deleteLater();
    }
}

void SheetWindow::togglePage()
{
    if (!formatLayout(code_).textPage) return;
    jk::Global& g = G();
    const bool textPage = g.pageRequest != 1;
    for (int i = 1; i <= g.pictures.count(); ++i) {
        if (g.pictures.at(i).sheet != code_) continue;
        if (textPage) hiddenPictures_.insert(i);
        else hiddenPictures_.remove(i);
    }
    pictext_->setVisible(textPage);
    g.blockSelector = textPage ? 0 : 1;
    g.pageFlag = textPage ? 0 : 1;
    canvas_->update();
}

void SheetWindow::toggleSpines()
{
    jk::Global& g = G();
    const bool hide = !g.spinesHidden;
    // Only the inlay has spines; elsewhere the switch alone changes.
    if (code_ == jk::FmtInside) {
        folder1_->setVisible(!hide);
        folder2_->setVisible(!hide);
    }
    g.spinesHidden = (hide);
    canvas_->update();
}

bool SheetWindow::spinesShown() const { return code_ == jk::FmtInside && !folder1_->isHidden() && !folder2_->isHidden(); }
bool SheetWindow::textPageShown() const { return !pictext_->isHidden(); }
bool SheetWindow::previewShown() const { return !cdpic_->isHidden(); }

RenderOptions SheetWindow::renderOptions() const
{
    RenderOptions o;
    o.spines = spinesShown();
    o.textPage = textPageShown();
    o.hiddenPictures = hiddenPictures_;
    o.stacking = stacking_;
    o.pageStacking = pageStacking_;
    o.shownBorder = shownBorder_;
    o.missingPictureMarks = true;
    return o;
}

void SheetWindow::togglePictureMode()
{
    jk::Global& g = G();
    const int i = g.selectedIndex;
    if (g.selectedKind != 1 || !g.pictures.valid(i) || g.pictures.at(i).sheet != code_) return;
    jk::PictureRecord& r = g.pictures.at(i);
    auto* view = qobject_cast<QAction*>(command(QStringLiteral("PicView")));
    const QString caption = view ? view->text() : QString();
    if (caption == g.texts.fitCaptions[0]) {
        r.displayMode = 1;
    } else if (caption == g.texts.fitCaptions[1]) {
        r.displayMode = 2;
        const QSize size = actualSizeTwips(r.file);
        if (size.isValid()) {
            r.width = jk::i16(std::min(size.width(), 32767));
            r.height = jk::i16(std::min(size.height(), 32767));
        }
    }
    canvas_->update();
}

void SheetWindow::toggleDiscPreview()
{
    auto* preview = qobject_cast<QAction*>(command(QStringLiteral("PREVIEW")));
    if (!preview || !preview->isChecked()) {
        canvas_->show();
        cdpic_->hide();
        apply(previewLockTable(false));
        return;
    }
    apply(previewLockTable(true));
    // The preview is the sheet as it stands, with the hole and the outside
    // of the disc painted white, at screen resolution.
    RenderOptions o = renderOptions();
    o.discPreview = formatLayout(code_).disc;
    const qreal dpr = devicePixelRatioF();
    QImage img = renderImage(code_, kScreenDpi * dpr, o);
    img.setDevicePixelRatio(dpr);
    cdpic_->setGeometry(QRect(QPoint(0, 0), canvas_->size()));
    cdpic_->setPixmap(QPixmap::fromImage(img));
    canvas_->hide();
    cdpic_->show();
}

void SheetWindow::repaintLeftSpine() { canvas_->update(folder1_->geometry()); }
void SheetWindow::repaintRightSpine() { canvas_->update(folder2_->geometry()); }

void SheetWindow::setSpineCaption(const QString& text)
{
    spineCaption_ = text;
    repaintLeftSpine();
    repaintRightSpine();
}

void SheetWindow::changeBackground()
{
    jk::Global& g = G();
    if (pictureDialog) {
        g.chosenPictureFile.clear();
        pictureDialog();
    }
    const QString chosen = g.chosenPictureFile;
    if (chosen.isEmpty() || !isFormatCode(code_)) return;
    g.backgrounds[std::size_t(code_)] = jk::BackgroundRecord{chosen};
    g.projectModified = true;
    canvas_->update();
    update();
}
