#include "ui/sheet/SheetWindow.h"
#include "ui/sheet/Actions.h"
#include "model/AppContext.h"
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

using namespace jk::sheet;

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
        paint(p, sheet_->project(), sheet_->formatCode(), sheet_->renderOptions());
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

SheetWindow::SheetWindow(Actions& actions, SheetDialogs& dialogs, jk::Project& project, jk::EditorState& editor,
                         QWidget* parent)
    : QWidget(parent), actions_(actions), dialogs_(dialogs), project_(project), editor_(editor), sel_(editor.selection)
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
    // Whatever changes the document repaints the sheet; fields also grow
    // with their text.
    connect(&project_, &jk::Project::objectChanged, canvas_, qOverload<>(&QWidget::update));
    connect(&project_, &jk::Project::sheetChanged, canvas_, qOverload<>(&QWidget::update));
    connect(&project_, &jk::Project::fieldShownChanged, this, &SheetWindow::fieldShownChanged);
    connect(&project_, &jk::Project::spinePropagated, this, &SheetWindow::setSpineCaption);
}

SheetWindow::~SheetWindow() = default;

// Client area 10470 x 7560 twips.
QSize SheetWindow::sizeHint() const { return QSize(698, 504); }

QMdiSubWindow* SheetWindow::frameWindow() const { return qobject_cast<QMdiSubWindow*>(parentWidget()); }

void SheetWindow::apply(const CommandTable& t)
{
    if (const int page = actions_.apply(t)) editor_.pageRequest = page;
}

bool SheetWindow::isActiveSheet() const
{
    QMdiSubWindow* sub = frameWindow();
    return sub && sub->mdiArea() && sub->mdiArea()->currentSubWindow() == sub;
}

void SheetWindow::initialise(int code, const QString& caption)
{
    trimSystemMenu();
    QApplication::setOverrideCursor(Qt::WaitCursor);
    if (!caption.isEmpty()) setWindowTitle(caption);
    else if (jk::formatNameIndex(code) >= 0) setWindowTitle(jk::texts().formatName(code));
    apply(setupTable(isFormatCode(code) ? code : 0, project_.spinesHidden()));
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
    code_ = code;
    setProperty("Tag", QString::number(code));
    if (code == jk::FmtJacket) project_.setPrintWeights(16);
    else project_.setPrintWeights(project_.printWeights() + jk::compositionWeight(code));

    canvas_->setGeometry(canvasRectPixels(code));
    canvas_->show();
    if (code == jk::FmtInside) {
        folder1_->setGeometry(toPixels(spineRect(code, Spine::Left)));
        folder2_->setGeometry(toPixels(spineRect(code, Spine::Right)));
        folder1_->setVisible(!project_.spinesHidden());
        folder2_->setVisible(!project_.spinesHidden());
    }
    if (formatLayout(code).textPage) pictext_->setGeometry(toPixels(textPageRect(code)));
    const QString entry = toolsMenuEntry(code);
    const QString name = jk::texts().formatName(code);
    if (!entry.isEmpty() && !name.isEmpty())
        if (QAction* a = actions_.action(entry)) a->setText(name);
    // The objects are drawn from the records; the window keeps only their
    // stacking and shown borders. A sheet shows all of its records whatever
    // the text destination, so a sheet added again gets its objects back.
    hiddenPictures_.clear();
    restoreObjects();
    // A sheet with a text page shows the page that is requested.
    if (formatLayout(code).textPage) togglePage();
    canvas_->update();
}

void SheetWindow::activated()
{
    const bool printers = jk::printerAvailable();
    CommandTable t;
    for (const char* n : {"SSCommand1", "MFPrnSelect", "imprime", "IMPPRJ", "PRNSELECT", "PRINTPREVIEW", "PRTFNTCAT", "PRTPICCAT"})
        t.on(n, printers);
    apply(t);
    updateFormatCommands();
}

void SheetWindow::resized()
{
    updateFormatCommands();
    apply(pageCommandsTable(editor_.pageRequest == 2));
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
        if (QMenu* menu = actions_.popup(QStringLiteral("Toolsmenu"))) menu->popup(e->globalPosition().toPoint());
    } else {
        updateToolButtons();
    }
    e->accept();
}

void SheetWindow::updateToolButtons()
{
    apply(toolButtonsTable(code_, editor_.pageRequest));
}

void SheetWindow::updateFormatCommands()
{
    apply(formatCommandsTable(code_));
    updateToolButtons();
}

void SheetWindow::updateAddSheetCommands()
{
    project_.setModified(true);
    apply(addSheetCommandsTable(project_.sheetComposition()));
    if (code_ == jk::FmtInside) {
        jk::SpineFont font = project_.spineFont();
        font.name.clear();
        project_.setSpineFont(font);
        project_.setSpineText({});
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
    if (others == 0) {
        CommandTable t;
        t.on("removesheet");
        apply(t);
    }
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
    project_.setSheetComposition(project_.sheetComposition() - code_);
    if (QAction* a = actions_.action(toolsMenuEntry(code_))) a->setVisible(false);
    // The weight leaves the print weights, so a sheet added again is not
    // counted twice.
    project_.setPrintWeights(std::max(0, project_.printWeights() - jk::compositionWeight(code_)));
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
    const bool textPage = editor_.pageRequest != 1;
    for (int i = 1; i <= project_.pictures().count(); ++i) {
        if (project_.pictures().at(i).sheet != code_) continue;
        if (textPage) hiddenPictures_.insert(i);
        else hiddenPictures_.remove(i);
    }
    pictext_->setVisible(textPage);
    editor_.blockOnPage = textPage;
    canvas_->update();
}

void SheetWindow::toggleSpines()
{
    const bool hide = !project_.spinesHidden();
    // Only the inlay has spines; elsewhere the switch alone changes.
    if (code_ == jk::FmtInside) {
        folder1_->setVisible(!hide);
        folder2_->setVisible(!hide);
    }
    project_.setSpinesHidden(hide);
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
    const int i = sel_.object.index;
    if (sel_.object.kind != ObjKind::Picture || !project_.pictures().valid(i) ||
        project_.pictures().at(i).sheet != code_)
        return;
    jk::PictureRecord r = project_.pictures().at(i);
    QAction* view = actions_.action(QStringLiteral("PicView"));
    const QString caption = view ? view->text() : QString();
    const auto& fit = jk::texts().fitCaptions;
    if (caption == fit[0]) {
        r.displayMode = 1;
    } else if (caption == fit[1]) {
        r.displayMode = 2;
        const QSize size = actualSizeTwips(r.file);
        if (size.isValid()) {
            r.width = jk::i16(std::min(size.width(), 32767));
            r.height = jk::i16(std::min(size.height(), 32767));
        }
    }
    project_.setPicture(i, r);
    canvas_->update();
}

void SheetWindow::toggleDiscPreview()
{
    QAction* preview = actions_.action(QStringLiteral("PREVIEW"));
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
    QImage img = renderImage(project_, code_, kScreenDpi * dpr, o);
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
    const auto chosen = dialogs_.choosePicture(window(), PicturePurpose::Background);
    if (!chosen || !isFormatCode(code_)) return;
    project_.setBackground(code_, chosen->recordText());
    project_.setModified(true);
    canvas_->update();
    update();
}
