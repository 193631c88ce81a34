#include "ui/dialogs/NewProjectDialog.h"
#include "ui/widgets/DriveFolderFile.h"
#include "model/AppContext.h"
#include "model/Records.h"
#include <QCheckBox>
#include <QDir>
#include <QEvent>
#include <QFileInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QTabWidget>
#include <QVBoxLayout>

namespace {

const char* const kHelpTag = "helpTag";
const QSize kPreviewSize(300, 200);

QString formatNameOr(int i, const char* fallback)
{
    const QString& s = jk::texts().formatNames.at(std::size_t(i));
    return s.isEmpty() ? QString::fromUtf8(fallback) : s;
}

// ---- the preview drawings: paper parts seen from above, in simple shapes

const QColor kOutline(70, 70, 80);
const QColor kPaper(255, 255, 255);
const QColor kLines(150, 160, 175);

void paper(QPainter& p, const QRectF& r)
{
    p.setPen(QPen(kOutline, 1.2));
    p.setBrush(kPaper);
    p.drawRect(r);
}

// A picture on a page: sky, sun and hills.
void scene(QPainter& p, const QRectF& r)
{
    p.save();
    p.setClipRect(r);
    QLinearGradient sky(r.topLeft(), r.bottomLeft());
    sky.setColorAt(0, QColor(110, 170, 235));
    sky.setColorAt(1, QColor(215, 236, 255));
    p.fillRect(r, sky);
    const double s = std::min(r.width(), r.height());
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(255, 204, 51));
    p.drawEllipse(QPointF(r.right() - s * 0.28, r.top() + s * 0.28), s * 0.12, s * 0.12);
    QPainterPath hills;
    hills.moveTo(r.left(), r.bottom());
    hills.lineTo(r.left(), r.top() + r.height() * 0.72);
    hills.quadTo(r.left() + r.width() * 0.3, r.top() + r.height() * 0.45, r.left() + r.width() * 0.6,
                 r.top() + r.height() * 0.7);
    hills.quadTo(r.left() + r.width() * 0.8, r.top() + r.height() * 0.6, r.right(), r.top() + r.height() * 0.68);
    hills.lineTo(r.right(), r.bottom());
    hills.closeSubpath();
    p.setBrush(QColor(85, 160, 80));
    p.drawPath(hills);
    p.restore();
    p.setPen(QPen(kOutline, 1.2));
    p.setBrush(Qt::NoBrush);
    p.drawRect(r);
}

// Lines of text on a page.
void textLines(QPainter& p, const QRectF& r, int count)
{
    p.save();
    const double gap = r.height() / (count + 1);
    for (int i = 1; i <= count; ++i) {
        const double y = r.top() + gap * i;
        const double shorten = (i % 3 == 0) ? 0.35 : (i % 2 == 0 ? 0.15 : 0.0);
        p.setPen(QPen(i == 1 ? kOutline : kLines, i == 1 ? 2.4 : 1.6, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(QPointF(r.left() + r.width() * 0.12, y),
                   QPointF(r.right() - r.width() * (0.12 + shorten), y));
    }
    p.restore();
}

void fold(QPainter& p, const QPointF& a, const QPointF& b)
{
    p.save();
    p.setPen(QPen(kOutline, 1, Qt::DashLine));
    p.drawLine(a, b);
    p.restore();
}

void disc(QPainter& p, const QPointF& c, double radius)
{
    p.save();
    QRadialGradient shine(c, radius);
    shine.setColorAt(0, QColor(245, 245, 250));
    shine.setColorAt(0.6, QColor(205, 215, 230));
    shine.setColorAt(1, QColor(175, 190, 215));
    p.setPen(QPen(kOutline, 1.2));
    p.setBrush(shine);
    p.drawEllipse(c, radius, radius);
    // The printable ring of a label, and the centre hole.
    p.setPen(QPen(kLines, 1));
    p.setBrush(Qt::NoBrush);
    p.drawEllipse(c, radius * 0.42, radius * 0.42);
    p.setPen(QPen(kOutline, 1.2));
    p.setBrush(QColor(240, 240, 240));
    p.drawEllipse(c, radius * 0.15, radius * 0.15);
    p.restore();
}

// The drawings are made on a 300 x 200 grid, scaled to the pixmap.
QPixmap canvas(const QSize& size, QPainter& p)
{
    QPixmap pm(size);
    pm.fill(Qt::transparent);
    p.begin(&pm);
    p.setRenderHint(QPainter::Antialiasing);
    p.scale(size.width() / 300.0, size.height() / 200.0);
    return pm;
}

}  // namespace

QPixmap NewProjectDialog::coverPreview(const QSize& size)
{
    QPainter p;
    QPixmap pm = canvas(size, p);
    // Front cover of the case: one page with a picture and a title.
    const QRectF front(8, 8, 92, 92);
    paper(p, front);
    scene(p, front.adjusted(6, 22, -6, -6));
    textLines(p, QRectF(front.left(), front.top(), front.width(), 24), 1);
    // Booklet: a picture page and a text page, folded in the middle.
    const QRectF left(122, 15, 78, 78), right(200, 15, 78, 78);
    paper(p, left);
    paper(p, right);
    textLines(p, left.adjusted(4, 6, -4, -6), 6);
    scene(p, right.adjusted(6, 6, -6, -6));
    fold(p, left.topRight(), left.bottomRight());
    // Inside card: the tray inlay with a spine on either side.
    const QRectF inlay(8, 116, 150, 76);
    paper(p, inlay);
    fold(p, QPointF(inlay.left() + 8, inlay.top()), QPointF(inlay.left() + 8, inlay.bottom()));
    fold(p, QPointF(inlay.right() - 8, inlay.top()), QPointF(inlay.right() - 8, inlay.bottom()));
    textLines(p, inlay.adjusted(14, 4, -14, -4), 5);
    p.setPen(QPen(kOutline, 1.6, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(inlay.left() + 4, inlay.top() + 14), QPointF(inlay.left() + 4, inlay.bottom() - 24));
    p.drawLine(QPointF(inlay.right() - 4, inlay.top() + 24), QPointF(inlay.right() - 4, inlay.bottom() - 14));
    // Disc label.
    disc(p, QPointF(232, 152), 40);
    p.end();
    return pm;
}

QPixmap NewProjectDialog::jacketPreview(const QSize& size)
{
    QPainter p;
    QPixmap pm = canvas(size, p);
    // The disc slides out of the sleeve's open top.
    disc(p, QPointF(206, 66), 50);
    const QRectF back(40, 62, 104, 104), front(144, 62, 104, 104);
    // Glue flaps around the back page.
    p.setPen(QPen(kOutline, 1.2));
    p.setBrush(QColor(235, 235, 240));
    p.drawPolygon(QPolygonF({back.topLeft(), back.topRight(), QPointF(back.right() - 10, back.top() - 12),
                             QPointF(back.left() + 10, back.top() - 12)}));
    p.drawPolygon(QPolygonF({back.bottomLeft(), back.bottomRight(),
                             QPointF(back.right() - 10, back.bottom() + 12),
                             QPointF(back.left() + 10, back.bottom() + 12)}));
    p.drawPolygon(QPolygonF({back.topLeft(), back.bottomLeft(), QPointF(back.left() - 14, back.bottom() - 10),
                             QPointF(back.left() - 14, back.top() + 10)}));
    paper(p, back);
    textLines(p, back.adjusted(6, 8, -6, -8), 7);
    paper(p, front);
    scene(p, front.adjusted(8, 26, -8, -8));
    textLines(p, QRectF(front.left(), front.top(), front.width(), 26), 1);
    fold(p, back.topRight(), back.bottomRight());
    p.end();
    return pm;
}

NewProjectDialog::NewProjectDialog(QWidget* parent) : QDialog(parent)
{
    setObjectName("Creeprojet");
    setWindowTitle(jk::texts().msgOr(jk::Msg::NewProjectTitle, "New Project"));

    tabs_ = new QTabWidget(this);
    tabs_->setObjectName("SSTab1");

    // ---- first tab: a new project
    auto* page1 = new QWidget;
    page1->setObjectName("Page1");
    frame1_ = new QGroupBox(page1);
    frame1_->setObjectName("Frame1");
    simple_ = new QRadioButton(formatNameOr(0, "Cover simple"), frame1_);
    simple_->setObjectName("Simple");
    simple_->setProperty(kHelpTag, jk::texts().msgOr(jk::Msg::HelpFrontCover, "A single page for the front of the case"));
    double_ = new QRadioButton(formatNameOr(1, "Cover double"), frame1_);
    double_->setObjectName("DOUBLEC");
    double_->setProperty(kHelpTag, jk::texts().msgOr(jk::Msg::HelpBooklet, "A folded booklet with a picture page and a text page"));
    jacket_ = new QRadioButton(formatNameOr(2, "Paper jacket"), frame1_);
    jacket_->setObjectName("Option1");
    jacket_->setProperty(kHelpTag, jk::texts().msgOr(jk::Msg::HelpPaperJacket, "A paper sleeve with a picture page and a text page"));
    cdrom_ = new QCheckBox(formatNameOr(3, "CD ROM"), frame1_);
    cdrom_->setObjectName("CDROM");
    cdrom_->setProperty(kHelpTag, jk::texts().msgOr(jk::Msg::HelpDiscLabel, "A round label for the disc itself"));
    inside_ = new QCheckBox(formatNameOr(4, "Inside"), frame1_);
    inside_->setObjectName("Inside");
    inside_->setProperty(kHelpTag, jk::texts().msgOr(jk::Msg::HelpInsideCard, "The tray inlay with a spine on each side"));
    simple_->setChecked(true);

    auto* kinds = new QVBoxLayout(frame1_);
    kinds->addWidget(simple_);
    kinds->addWidget(double_);
    kinds->addWidget(jacket_);
    kinds->addSpacing(12);
    kinds->addWidget(inside_);
    kinds->addWidget(cdrom_);
    kinds->addStretch(1);

    picture1_ = new QLabel(page1);
    picture1_->setObjectName("Picture1");
    picture1_->setFixedSize(kPreviewSize);
    picture1_->setFrameShape(QFrame::StyledPanel);
    picture1_->setAlignment(Qt::AlignCenter);
    // The two stored previews; Picture1 shows one of them.
    picture2_ = new QLabel(page1);
    picture2_->setObjectName("Picture2");
    picture2_->setPixmap(coverPreview(kPreviewSize - QSize(4, 4)));
    picture2_->hide();
    picture3_ = new QLabel(page1);
    picture3_->setObjectName("Picture3");
    picture3_->setPixmap(jacketPreview(kPreviewSize - QSize(4, 4)));
    picture3_->hide();

    label1_ = new QLabel(page1);
    label1_->setObjectName("Label1");
    label1_->setWordWrap(true);
    label1_->setMinimumHeight(label1_->fontMetrics().lineSpacing() * 2 + 4);
    label1_->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);

    command1_ = new QPushButton(jk::texts().msgOr(jk::Msg::Ok, "OK"), page1);
    command1_->setObjectName("Command1");
    command1_->setDefault(true);

    auto* grid1 = new QGridLayout(page1);
    grid1->addWidget(frame1_, 0, 0);
    grid1->addWidget(picture1_, 0, 1);
    grid1->addWidget(label1_, 1, 0, 1, 2);
    auto* row1 = new QHBoxLayout;
    row1->addStretch(1);
    row1->addWidget(command1_);
    grid1->addLayout(row1, 2, 0, 1, 2);
    grid1->setColumnStretch(0, 1);

    // ---- second tab: an existing project
    auto* page2 = new QWidget;
    page2->setObjectName("Page2");
    trio_ = new DriveFolderFileTrio(page2);
    trio_->fileList()->setPattern(QStringLiteral("*.prj"));
    text1_ = new QLineEdit(page2);
    text1_->setObjectName("Text1");
    command2_ = new QPushButton(jk::texts().msgOr(jk::Msg::OpenButton, "&Open"), page2);
    command2_->setObjectName("Command2");
    auto* box2 = new QVBoxLayout(page2);
    box2->addWidget(trio_, 1);
    auto* row2 = new QHBoxLayout;
    row2->addWidget(text1_, 1);
    row2->addWidget(command2_);
    box2->addLayout(row2);

    tabs_->addTab(page1, jk::texts().msgOr(jk::Msg::NewProjectTab, "New project"));
    tabs_->addTab(page2, jk::texts().msgOr(jk::Msg::ExistingProjectTab, "Existing project"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tabs_);

    // Pointer movement drives the help line and the preview: the buttons
    // report entering, the backgrounds report moves.
    for (QWidget* w : {static_cast<QWidget*>(simple_), static_cast<QWidget*>(double_),
                       static_cast<QWidget*>(jacket_), static_cast<QWidget*>(cdrom_),
                       static_cast<QWidget*>(inside_), static_cast<QWidget*>(command1_)})
        w->installEventFilter(this);
    for (QWidget* w : {page1, static_cast<QWidget*>(frame1_), static_cast<QWidget*>(this)}) {
        w->setMouseTracking(true);
        w->installEventFilter(this);
    }

    connect(command1_, &QPushButton::clicked, this, &NewProjectDialog::createProject);
    connect(command2_, &QPushButton::clicked, this, &NewProjectDialog::openChosenProject);
    // Keys choose a kind without any pointer movement: keep the rule anyway.
    connect(jacket_, &QRadioButton::toggled, this, [this] {
        jacketRule();
        showPreview(jacket_->isChecked() ? 3 : 2);
    });
    connect(trio_, &DriveFolderFileTrio::driveChanged, this, [this] { command2_->setEnabled(false); });
    connect(trio_, &DriveFolderFileTrio::pathChanged, this, [this] { command2_->setEnabled(false); });
    connect(trio_, &DriveFolderFileTrio::fileClicked, this, &NewProjectDialog::fileClicked);
    connect(trio_, &DriveFolderFileTrio::fileDoubleClicked, this, [this](const QString& name) {
        fileClicked(name);
        openChosenProject();
    });
    // A file picked on the tab before counts no more once the tab is left.
    connect(tabs_, &QTabWidget::currentChanged, this, [this] { command2_->setEnabled(false); });

    initialise();
}

NewProjectChoice NewProjectDialog::run(QWidget* parent)
{
    NewProjectDialog dialog(parent);
    dialog.exec();
    return dialog.outcome();
}

NewProjectChoice NewProjectDialog::outcome() const
{
    return NewProjectChoice{result_, sheets_, file_};
}

void NewProjectDialog::initialise()
{
    command2_->setEnabled(false);
    QString folder = jk::app().settings.projectFolder;
    if (folder.isEmpty() || !QFileInfo(folder).isDir()) folder = QDir::homePath();
    trio_->setPath(folder);
    command2_->setEnabled(false);
    showPreview(2);
}

void NewProjectDialog::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    command2_->setEnabled(false);
    if (centred_) return;
    centred_ = true;
    if (QScreen* s = screen()) {
        const QRect area = s->geometry();
        move(area.x() + (area.width() - width()) / 2, area.y() + (area.height() - height()) / 2);
    }
}

void NewProjectDialog::showPreview(int picture)
{
    preview_ = picture;
    picture1_->setPixmap((picture == 3 ? picture3_ : picture2_)->pixmap());
}

void NewProjectDialog::jacketRule()
{
    // A paper jacket holds the disc itself: there is no tray for an inlay.
    if (jacket_->isChecked()) {
        inside_->setChecked(false);
        inside_->setEnabled(false);
    } else {
        inside_->setEnabled(true);
    }
}

void NewProjectDialog::pointerOver(QWidget* w)
{
    if (w == simple_ || w == double_ || w == jacket_ || w == cdrom_ || w == inside_) {
        label1_->setText(w->property(kHelpTag).toString());
        if (w == simple_ || w == double_) {
            showPreview(2);
            if (!jacket_->isChecked()) inside_->setEnabled(true);
        } else if (w == jacket_) {
            showPreview(3);
            jacketRule();
        }
        return;
    }
    // Command1 or the background.
    label1_->clear();
    showPreview(jacket_->isChecked() ? 3 : 2);
}

bool NewProjectDialog::eventFilter(QObject* watched, QEvent* event)
{
    auto* w = qobject_cast<QWidget*>(watched);
    if (w && (event->type() == QEvent::Enter || event->type() == QEvent::MouseMove)) {
        QWidget* under = w;
        if (event->type() == QEvent::MouseMove) {
            // A move over a child without tracking reaches its parents: find
            // the control actually under the pointer.
            if (QWidget* c = w->childAt(static_cast<QMouseEvent*>(event)->position().toPoint())) under = c;
        }
        for (QWidget* p = under; p; p = p->parentWidget()) {
            if (p == simple_ || p == double_ || p == jacket_ || p == cdrom_ || p == inside_ || p == command1_) {
                pointerOver(p);
                break;
            }
            if (p->objectName() == QLatin1String("Page1") || p == frame1_ || p == this) {
                // Only the bare background counts; other controls (the
                // preview, the help line, the tab bar) leave things as they are.
                if (p == under) pointerOver(nullptr);
                break;
            }
        }
    }
    return QDialog::eventFilter(watched, event);
}

void NewProjectDialog::fileClicked(const QString& name)
{
    if (name.isEmpty()) return;
    const QString folder = trio_->path();
    text1_->setText(folder.endsWith(u'/') ? folder + name : folder + u'/' + name);
    command2_->setEnabled(true);
}

void NewProjectDialog::createProject()
{
    int sheets = 0;
    if (simple_->isChecked()) sheets += jk::FmtSimple;
    if (double_->isChecked()) sheets += jk::FmtDouble;
    if (jacket_->isChecked()) sheets += jk::FmtJacket;
    // A paper jacket has no tray for an inside card.
    if (inside_->isChecked() && !jacket_->isChecked()) sheets += jk::FmtInside;
    if (cdrom_->isChecked()) sheets += jk::FmtCdRom;
    sheets_ = sheets;
    file_.clear();
    result_ = Create;
    accept();
}

void NewProjectDialog::openChosenProject()
{
    if (!command2_->isEnabled()) return;
    const QString path = text1_->text().trimmed();
    if (path.isEmpty()) return;
    sheets_ = 0;
    file_ = path;
    result_ = OpenExisting;
    accept();
}
