#include "companions/SnapTool.h"
#include "companions/Companion.h"
#include "companions/ScreenGrab.h"
#include "file/Paths.h"
#include "model/AppContext.h"
#include "platform/Services.h"
#include <QButtonGroup>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QGroupBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QImageWriter>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QRadioButton>
#include <QSaveFile>
#include <QScreen>
#include <QSettings>
#include <QSpinBox>
#include <QTimer>
#include <QVBoxLayout>

namespace pf = jk::platform;

namespace jk::snap {

namespace {

// Time for the desktop to take our own window off the screen.
constexpr int kHideMs = 400;

QString title() { return texts().msgOr(Msg::SnapTool, "SnapTool"); }

QSettings choices() { return QSettings(paths::configDir() + QStringLiteral("/snaptool.conf"), QSettings::IniFormat); }

}  // namespace

// ---- Saving

const QList<SaveFormat>& saveFormats()
{
    static const QList<SaveFormat> formats{{"JPEG", "jpg"}, {"PNG", "png"}, {"Bitmap", "bmp"}};
    return formats;
}

QString proposedName(const QString& folder, const QDateTime& when, const QString& suffix)
{
    const QString stem = QStringLiteral("capture-") + when.toString(QStringLiteral("yyyyMMdd-HHmmss"));
    const QDir dir(folder);
    QString name = stem + u'.' + suffix;
    for (int n = 2; dir.exists(name); ++n) name = QStringLiteral("%1-%2.%3").arg(stem).arg(n).arg(suffix);
    return name;
}

bool savePicture(const QImage& picture, const QString& path, QString* error)
{
    const QByteArray format = QFileInfo(path).suffix().toLower().toLatin1();
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        if (error) *error = file.errorString();
        return false;
    }
    QImageWriter writer(&file, format == "jpeg" ? QByteArray("jpg") : format);
    if (format == "jpg" || format == "jpeg") writer.setQuality(95);
    // JPEG and BMP keep no transparency: flatten it onto white.
    QImage out = picture;
    if (format != "png" && picture.hasAlphaChannel()) {
        out = QImage(picture.size(), QImage::Format_RGB32);
        out.fill(Qt::white);
        QPainter(&out).drawImage(0, 0, picture);
    }
    if (!writer.write(out)) {
        file.cancelWriting();
        if (error) *error = writer.errorString();
        return false;
    }
    if (!file.commit()) {
        if (error) *error = file.errorString();
        return false;
    }
    return true;
}

// ---- Choosing an area or a window

RegionPicker::RegionPicker(const QImage& desktop, const QList<QRect>& windows)
    : QWidget(nullptr, Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::BypassWindowManagerHint),
      desktop_(desktop), windows_(windows)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setMouseTracking(true);
    setCursor(Qt::CrossCursor);
}

void RegionPicker::start()
{
    QRect desktop;
    for (QScreen* s : QGuiApplication::screens()) desktop |= s->geometry();
    setGeometry(desktop);
    show();
    raise();
    activateWindow();
    grabKeyboard();
}

QRect RegionPicker::toPicture(const QRectF& r) const
{
    const double sx = double(desktop_.width()) / width(), sy = double(desktop_.height()) / height();
    return QRectF(r.x() * sx, r.y() * sy, r.width() * sx, r.height() * sy).toAlignedRect() & desktop_.rect();
}

QRectF RegionPicker::toScreen(const QRect& r) const
{
    const double sx = double(width()) / desktop_.width(), sy = double(height()) / desktop_.height();
    return {r.x() * sx, r.y() * sy, r.width() * sx, r.height() * sy};
}

QRect RegionPicker::windowAt(const QPointF& onScreen) const
{
    const QPoint at = toPicture(QRectF(onScreen, QSizeF(1, 1))).topLeft();
    for (const QRect& w : windows_)
        if (w.contains(at)) return w & desktop_.rect();
    return {};
}

void RegionPicker::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    p.drawImage(rect(), desktop_);
    // Everything but the choice is dimmed.
    QRectF chosen;
    if (!windows_.isEmpty()) chosen = toScreen(hovered_);
    else if (dragging_) chosen = QRectF(from_, to_).normalized();
    QPainterPath dim;
    dim.addRect(rect());
    if (!chosen.isEmpty()) dim.addRect(chosen);
    p.fillPath(dim, QColor(0, 0, 0, 110));
    if (!chosen.isEmpty()) {
        p.setPen(QPen(QColor(60, 140, 255), 2));
        p.drawRect(chosen);
    }
    const QString help = windows_.isEmpty() ? tr("Drag over the area to take. Escape cancels.")
                                            : tr("Click the window to take. Escape cancels.");
    QFont f = font();
    f.setPointSize(12);
    p.setFont(f);
    QRectF box = p.boundingRect(rect(), Qt::AlignHCenter | Qt::AlignTop, help).adjusted(-12, -6, 12, 6);
    box.moveTop(16);
    p.fillRect(box, QColor(0, 0, 0, 170));
    p.setPen(Qt::white);
    p.drawText(box, Qt::AlignCenter, help);
}

void RegionPicker::mousePressEvent(QMouseEvent* e)
{
    if (e->button() == Qt::RightButton) {
        close();
        Q_EMIT cancelled();
        return;
    }
    if (e->button() != Qt::LeftButton) return;
    if (!windows_.isEmpty()) {
        const QRect w = windowAt(e->position());
        if (w.isEmpty()) return;
        close();
        Q_EMIT picked(w);
        return;
    }
    dragging_ = true;
    from_ = to_ = e->position();
}

void RegionPicker::mouseMoveEvent(QMouseEvent* e)
{
    if (dragging_) to_ = e->position();
    else if (!windows_.isEmpty()) hovered_ = windowAt(e->position());
    update();
}

void RegionPicker::mouseReleaseEvent(QMouseEvent* e)
{
    if (!dragging_ || e->button() != Qt::LeftButton) return;
    dragging_ = false;
    const QRect area = toPicture(QRectF(from_, e->position()).normalized());
    // A click without a drag is no area: try again.
    if (area.width() < 4 || area.height() < 4) {
        update();
        return;
    }
    close();
    Q_EMIT picked(area);
}

void RegionPicker::keyPressEvent(QKeyEvent* e)
{
    if (e->key() != Qt::Key_Escape) return QWidget::keyPressEvent(e);
    close();
    Q_EMIT cancelled();
}

// ---- The window

SnapWindow::SnapWindow(const QString& report, QWidget* parent) : QWidget(parent), report_(report)
{
    setWindowTitle(title());
    const QSettings remembered = choices();

    auto* what = new QGroupBox(tr("Take"), this);
    modes_ = new QButtonGroup(this);
    auto* whatLayout = new QVBoxLayout(what);
    const char* modeNames[] = {"Whole &screen", "One &window", "&Area"};
    for (int i = 0; i < 3; ++i) {
        auto* b = new QRadioButton(tr(modeNames[i]), what);
        b->setObjectName(QStringLiteral("mode%1").arg(i));
        modes_->addButton(b, i);
        whatLayout->addWidget(b);
    }
    const int mode = std::clamp(remembered.value(QStringLiteral("mode")).toInt(), 0, 2);
    modes_->button(mode)->setChecked(true);

    delay_ = new QSpinBox(this);
    delay_->setObjectName("delay");
    delay_->setRange(0, 60);
    delay_->setSuffix(tr(" s"));
    delay_->setValue(remembered.value(QStringLiteral("delay")).toInt());
    takeButton_ = new QPushButton(tr("&Take picture"), this);
    takeButton_->setObjectName("take");
    takeButton_->setDefault(true);
    connect(takeButton_, &QPushButton::clicked, this, &SnapWindow::take);

    preview_ = new QLabel(tr("No picture taken yet."), this);
    preview_->setAlignment(Qt::AlignCenter);
    preview_->setMinimumSize(360, 200);
    preview_->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);

    folder_ = new QLineEdit(QDir::toNativeSeparators(companion::picturesFolder()), this);
    folder_->setObjectName("folder");
    auto* browse = new QPushButton(tr("&Browse..."), this);
    connect(browse, &QPushButton::clicked, this, [this] {
        const QString chosen = QFileDialog::getExistingDirectory(this, QString(), folder_->text());
        if (!chosen.isEmpty()) folder_->setText(QDir::toNativeSeparators(chosen));
    });
    name_ = new QLineEdit(this);
    name_->setObjectName("name");
    format_ = new QComboBox(this);
    format_->setObjectName("format");
    for (const SaveFormat& f : saveFormats())
        format_->addItem(QStringLiteral("%1 (*.%2)").arg(QLatin1String(f.label), QLatin1String(f.suffix)));
    format_->setCurrentIndex(std::clamp(remembered.value(QStringLiteral("format")).toInt(), 0, 2));
    connect(format_, &QComboBox::currentIndexChanged, this, &SnapWindow::formatChosen);

    saveButton_ = new QPushButton(tr("&Save"), this);
    saveButton_->setObjectName("save");
    saveButton_->setEnabled(false);
    connect(saveButton_, &QPushButton::clicked, this, &SnapWindow::save);
    auto* close = new QPushButton(tr("&Close"), this);
    connect(close, &QPushButton::clicked, this, &QWidget::close);

    auto* takeRow = new QHBoxLayout;
    auto* delayLabel = new QLabel(tr("&Delay:"), this);
    delayLabel->setBuddy(delay_);
    takeRow->addWidget(delayLabel);
    takeRow->addWidget(delay_);
    takeRow->addStretch(1);
    takeRow->addWidget(takeButton_);
    auto* folderRow = new QHBoxLayout;
    folderRow->addWidget(folder_, 1);
    folderRow->addWidget(browse);
    auto* nameRow = new QHBoxLayout;
    nameRow->addWidget(name_, 1);
    nameRow->addWidget(format_);
    auto* form = new QFormLayout;
    auto* folderLabel = new QLabel(tr("&Folder:"), this);
    folderLabel->setBuddy(folder_);
    auto* nameLabel = new QLabel(tr("&Name:"), this);
    nameLabel->setBuddy(name_);
    form->addRow(folderLabel, folderRow);
    form->addRow(nameLabel, nameRow);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(saveButton_);
    buttons->addWidget(close);
    auto* top = new QVBoxLayout(this);
    top->addWidget(what);
    top->addLayout(takeRow);
    top->addWidget(preview_, 1);
    top->addLayout(form);
    top->addLayout(buttons);
    resize(520, 520);
}

SnapWindow::~SnapWindow() { rememberChoices(); }

void SnapWindow::rememberChoices() const
{
    QSettings s = choices();
    s.setValue(QStringLiteral("mode"), modes_->checkedId());
    s.setValue(QStringLiteral("delay"), delay_->value());
    s.setValue(QStringLiteral("format"), format_->currentIndex());
}

Mode SnapWindow::mode() const { return Mode(modes_->checkedId()); }

void SnapWindow::take()
{
    takeButton_->setEnabled(false);
    // Out of the picture first; the delay counts from here.
    hide();
    QTimer::singleShot(std::max(kHideMs, delay_->value() * 1000), this, &SnapWindow::grab);
}

void SnapWindow::grab()
{
    // The desktop's portal where one runs; it may let the user pick the
    // window itself.
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (PortalScreenshot::available(bus)) {
        if (!portal_) {
            portal_ = new PortalScreenshot(bus, this);
            connect(portal_, &PortalScreenshot::taken, this,
                    [this](const QImage& shot) { gotDesktop(shot, {}, mode() == Mode::Window); });
            connect(portal_, &PortalScreenshot::cancelled, this, [this] {
                comeBack();
                if (auto* m = pf::services().messages)
                    m->show(texts().msg(Msg::CaptureCancelled), title(), pf::Icon::Information);
            });
            connect(portal_, &PortalScreenshot::failed, this, [this](const QString& why) {
                // A portal without a screenshot service: read the screen where we can.
                if (canReadScreens()) {
                    QString error;
                    const QImage shot = grabDesktop(&error);
                    if (!shot.isNull()) return gotDesktop(shot, desktopWindows(), false);
                }
                failed(why);
            });
        }
        portal_->request(mode() == Mode::Window);
        return;
    }
    QString error;
    const QImage shot = grabDesktop(&error);
    if (shot.isNull()) return failed(error);
    gotDesktop(shot, desktopWindows(), false);
}

void SnapWindow::gotDesktop(const QImage& desktop, const QList<QRect>& windows, bool chosenByDesktop)
{
    if (mode() == Mode::Screen || chosenByDesktop) {
        setPicture(desktop);
        return;
    }
    // Without a list of windows, one is taken like an area.
    auto* picker = new RegionPicker(desktop, mode() == Mode::Window ? windows : QList<QRect>());
    connect(picker, &RegionPicker::picked, this, [this, desktop](const QRect& r) { setPicture(desktop.copy(r)); });
    connect(picker, &RegionPicker::cancelled, this, &SnapWindow::comeBack);
    picker->start();
}

void SnapWindow::setPicture(const QImage& picture)
{
    picture_ = picture;
    preview_->setPixmap(QPixmap::fromImage(
        picture.scaled(preview_->size().boundedTo(picture.size()), Qt::KeepAspectRatio, Qt::SmoothTransformation)));
    const QString suffix = QLatin1String(saveFormats().at(format_->currentIndex()).suffix);
    name_->setText(proposedName(QDir::fromNativeSeparators(folder_->text()), QDateTime::currentDateTime(), suffix));
    saveButton_->setEnabled(true);
    saveButton_->setDefault(true);
    comeBack();
}

void SnapWindow::comeBack()
{
    takeButton_->setEnabled(true);
    show();
    raise();
    activateWindow();
}

void SnapWindow::failed(const QString& why)
{
    comeBack();
    if (auto* m = pf::services().messages)
        m->show(texts().msg(Msg::CaptureFailed) + u' ' + why, title(), pf::Icon::Critical);
}

void SnapWindow::formatChosen()
{
    // The name follows the format.
    const QString suffix = QLatin1String(saveFormats().at(format_->currentIndex()).suffix);
    const QFileInfo info(name_->text().trimmed());
    if (!info.fileName().isEmpty()) name_->setText(info.completeBaseName() + u'.' + suffix);
}

bool SnapWindow::save()
{
    if (picture_.isNull()) return false;
    const QString suffix = QLatin1String(saveFormats().at(format_->currentIndex()).suffix);
    const QString folder = QDir::fromNativeSeparators(folder_->text().trimmed());
    QString name = name_->text().trimmed();
    if (name.isEmpty()) name = proposedName(folder, QDateTime::currentDateTime(), suffix);
    if (QFileInfo(name).suffix().compare(suffix, Qt::CaseInsensitive) != 0) name += u'.' + suffix;
    const QString path = QDir(folder).absoluteFilePath(name);
    auto* m = pf::services().messages;
    if (QFileInfo::exists(path) && m &&
        m->show(tr("%1 already exists.\nDo you want to replace it?").arg(QDir::toNativeSeparators(path)), title(),
                pf::Icon::Warning, pf::Buttons::YesNo, pf::AnswerNo) != pf::AnswerYes)
        return false;
    QString error;
    if (!savePicture(picture_, path, &error)) {
        if (m)
            m->show(texts().msg(Msg::CaptureNotSaved) + u' ' + QDir::toNativeSeparators(path) + QStringLiteral(": ") +
                        error,
                    title(), pf::Icon::Critical);
        return false;
    }
    if (!report_.isEmpty()) {
        QFile out(report_);
        if (out.open(QIODevice::Append)) out.write(path.toUtf8() + '\n');
    }
    close();
    return true;
}

}  // namespace jk::snap
