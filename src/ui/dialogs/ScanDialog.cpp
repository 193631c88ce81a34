#include "ui/dialogs/ScanDialog.h"
#include "model/AppContext.h"
#include "platform/Services.h"
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QMouseEvent>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <cmath>

namespace pf = jk::platform;

namespace {

QString msg(jk::Msg m) { return jk::texts().msg(m); }

void complain(const QString& text)
{
    if (auto* m = pf::services().messages) m->show(text, msg(jk::Msg::ScanTitle), pf::Icon::Warning);
}

// What a user should be told about a scanner that let them down.
QString faultText(pf::ScanFault fault, const QString& detail)
{
    switch (fault) {
    case pf::ScanFault::Busy: return msg(jk::Msg::ScannerBusy);
    case pf::ScanFault::TooLarge: return msg(jk::Msg::ScanTooLarge);
    case pf::ScanFault::Gone:
    case pf::ScanFault::NotOpened:
        return detail.isEmpty() ? msg(jk::Msg::ScannerGone) : msg(jk::Msg::ScannerGone) + u'\n' + detail;
    case pf::ScanFault::Failed: break;
    }
    return detail.isEmpty() ? msg(jk::Msg::ScanFailed) : msg(jk::Msg::ScanFailed) + u'\n' + detail;
}

constexpr double kMmPerInch = 25.4;

// Devices by vendor and model; two alike are told apart by their SANE names.
QStringList deviceLabels(const QList<pf::ScanDevice>& devices)
{
    QStringList plain, labels;
    for (const pf::ScanDevice& d : devices) plain.append(d.label());
    for (const pf::ScanDevice& d : devices)
        labels.append(plain.count(d.label()) > 1 ? QStringLiteral("%1 (%2)").arg(d.label(), d.name) : d.label());
    return labels;
}

// Pixels across a length of millimetres, as SANE backends count them.
int pixels(double mm, int dpi) { return int(mm * dpi / kMmPerInch); }

}  // namespace

// ----------------------------------------------------------- ScanAreaView

ScanAreaView::ScanAreaView(QWidget* parent) : QWidget(parent)
{
    setMinimumSize(300, 300);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setCursor(Qt::CrossCursor);
}

void ScanAreaView::setWholeArea(const QRectF& mm)
{
    whole_ = mm;
    selection_ = QRectF();
    preview_ = QImage();
    update();
    Q_EMIT selectionChanged();
}

void ScanAreaView::setPreview(const QImage& image)
{
    preview_ = image;
    update();
}

void ScanAreaView::setSelection(const QRectF& mm)
{
    selection_ = mm.normalized().intersected(whole_);
    update();
    Q_EMIT selectionChanged();
}

QRectF ScanAreaView::page() const
{
    const QRectF box = QRectF(rect()).adjusted(4, 4, -4, -4);
    if (whole_.isEmpty() || box.isEmpty()) return box;
    const QSizeF size = whole_.size().scaled(box.size(), Qt::KeepAspectRatio);
    QRectF r(QPointF(), size);
    r.moveCenter(box.center());
    return r;
}

QPointF ScanAreaView::toMm(const QPointF& p) const
{
    const QRectF pg = page();
    if (pg.isEmpty()) return whole_.topLeft();
    const double x = std::clamp((p.x() - pg.left()) / pg.width(), 0.0, 1.0);
    const double y = std::clamp((p.y() - pg.top()) / pg.height(), 0.0, 1.0);
    return {whole_.left() + x * whole_.width(), whole_.top() + y * whole_.height()};
}

QRectF ScanAreaView::toWidget(const QRectF& mm) const
{
    const QRectF pg = page();
    if (whole_.isEmpty()) return pg;
    const double sx = pg.width() / whole_.width(), sy = pg.height() / whole_.height();
    return {pg.left() + (mm.left() - whole_.left()) * sx, pg.top() + (mm.top() - whole_.top()) * sy,
            mm.width() * sx, mm.height() * sy};
}

void ScanAreaView::paintEvent(QPaintEvent*)
{
    QPainter p(this);
    p.fillRect(rect(), palette().color(QPalette::Window));
    const QRectF pg = page();
    p.fillRect(pg, Qt::white);
    if (!preview_.isNull()) p.drawImage(pg, preview_);
    if (!selection_.isEmpty()) {
        // The part left out is dimmed, so the chosen area stands out.
        const QRectF sel = toWidget(selection_);
        QPainterPath outside;
        outside.addRect(pg);
        QPainterPath inside;
        inside.addRect(sel);
        p.fillPath(outside.subtracted(inside), QColor(0, 0, 0, 90));
        p.setPen(QPen(palette().color(QPalette::Highlight), 2, Qt::DashLine));
        p.drawRect(sel);
    }
    p.setPen(palette().color(QPalette::Mid));
    p.drawRect(pg);
}

void ScanAreaView::mousePressEvent(QMouseEvent* e)
{
    if (e->button() != Qt::LeftButton || whole_.isEmpty()) return;
    dragFrom_ = toMm(e->position());
}

void ScanAreaView::mouseMoveEvent(QMouseEvent* e)
{
    if (!dragFrom_) return;
    selection_ = QRectF(*dragFrom_, toMm(e->position())).normalized();
    update();
    Q_EMIT selectionChanged();
}

void ScanAreaView::mouseReleaseEvent(QMouseEvent* e)
{
    if (!dragFrom_) return;
    const QRectF r = QRectF(*dragFrom_, toMm(e->position())).normalized();
    dragFrom_.reset();
    // A click rather than a drag chooses the whole area again.
    setSelection(r.width() < 1 || r.height() < 1 ? QRectF() : r);
}

// ------------------------------------------------------------- ScanDialog

ScanDialog::ScanDialog(const QList<pf::ScanDevice>& devices, const QString& preferred, QWidget* parent)
    : QDialog(parent), devices_(devices), session_(new pf::ScannerSession(this))
{
    setObjectName("ScanDialog");
    setWindowTitle(msg(jk::Msg::ScanTitle));

    deviceBox_ = new QComboBox(this);
    deviceBox_->setObjectName("scanDevice");
    const QStringList labels = deviceLabels(devices_);
    for (qsizetype i = 0; i < devices_.size(); ++i) deviceBox_->addItem(labels[i], devices_[i].name);
    deviceBox_->setCurrentIndex(std::max(0, deviceBox_->findData(preferred)));
    modeBox_ = new QComboBox(this);
    modeBox_->setObjectName("scanMode");
    resolutionBox_ = new QComboBox(this);
    resolutionBox_->setObjectName("scanResolution");
    sizeLabel_ = new QLabel(this);
    sizeLabel_->setObjectName("scanSize");
    area_ = new ScanAreaView(this);
    area_->setObjectName("scanArea");
    auto* hint = new QLabel(msg(jk::Msg::ScanAreaHint), this);
    hint->setWordWrap(true);
    progress_ = new QProgressBar(this);
    progress_->setObjectName("scanProgress");
    progress_->setRange(0, 100);
    progress_->setValue(0);

    previewButton_ = new QPushButton(msg(jk::Msg::ScanPreviewButton), this);
    previewButton_->setObjectName("scanPreview");
    scanButton_ = new QPushButton(msg(jk::Msg::ScanButton), this);
    scanButton_->setObjectName("scanStart");
    scanButton_->setDefault(true);
    cancelButton_ = new QPushButton(msg(jk::Msg::Cancel).isEmpty() ? QStringLiteral("Cancel") : msg(jk::Msg::Cancel),
                                    this);
    cancelButton_->setObjectName("scanCancel");

    auto* form = new QFormLayout;
    form->addRow(msg(jk::Msg::ScanDeviceLabel), deviceBox_);
    form->addRow(msg(jk::Msg::ScanModeLabel), modeBox_);
    auto* resolutionRow = new QHBoxLayout;
    resolutionRow->addWidget(resolutionBox_);
    resolutionRow->addWidget(sizeLabel_, 1);
    auto* resolutionLabel = new QLabel(msg(jk::Msg::ScanResolutionLabel), this);
    resolutionLabel->setBuddy(resolutionBox_);
    form->addRow(resolutionLabel, resolutionRow);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(previewButton_);
    buttons->addWidget(scanButton_);
    buttons->addStretch(1);
    buttons->addWidget(cancelButton_);
    auto* top = new QVBoxLayout(this);
    top->addLayout(form);
    top->addWidget(area_, 1);
    top->addWidget(hint);
    top->addWidget(progress_);
    top->addLayout(buttons);
    resize(460, 640);

    connect(deviceBox_, &QComboBox::currentIndexChanged, this, &ScanDialog::openDevice);
    connect(resolutionBox_, &QComboBox::currentIndexChanged, this, &ScanDialog::showPixelSize);
    connect(area_, &ScanAreaView::selectionChanged, this, &ScanDialog::showPixelSize);
    connect(previewButton_, &QPushButton::clicked, this, &ScanDialog::preview);
    connect(scanButton_, &QPushButton::clicked, this, &ScanDialog::scan);
    connect(cancelButton_, &QPushButton::clicked, this, &ScanDialog::cancelOrClose);
    connect(session_, &pf::ScannerSession::opened, this, &ScanDialog::deviceOpened);
    connect(session_, &pf::ScannerSession::scanned, this, &ScanDialog::scanned);
    connect(session_, &pf::ScannerSession::failed, this, &ScanDialog::failed);
    connect(session_, &pf::ScannerSession::cancelled, this, [this] { setBusy(false); });
    connect(session_, &pf::ScannerSession::progress, this, [this](int percent) {
        progress_->setRange(0, percent < 0 ? 0 : 100);  // an unknown length shows as busy
        if (percent >= 0) progress_->setValue(percent);
    });
    openDevice();
}

std::optional<ScannedPicture> ScanDialog::acquire(QWidget* parent, const QList<pf::ScanDevice>& devices,
                                                  const QString& preferred)
{
    ScanDialog dlg(devices, preferred, parent);
    if (dlg.exec() != QDialog::Accepted || dlg.image().isNull()) return std::nullopt;
    return ScannedPicture{dlg.image(), dlg.device()};
}

QString ScanDialog::device() const { return deviceBox_->currentData().toString(); }

void ScanDialog::openDevice()
{
    // Nothing to choose until the device says what it offers.
    for (QWidget* w : {static_cast<QWidget*>(modeBox_), static_cast<QWidget*>(resolutionBox_),
                       static_cast<QWidget*>(previewButton_), static_cast<QWidget*>(scanButton_)})
        w->setEnabled(false);
    progress_->setRange(0, 0);
    area_->setWholeArea(QRectF());
    if (!device().isEmpty()) session_->open(device());
}

void ScanDialog::deviceOpened(const pf::ScanOptions& options)
{
    // A choice made on another device stays when this one offers it too.
    const QString mode = modeBox_->currentText();
    const int resolution = chosenResolution();
    modeBox_->clear();
    modeBox_->addItems(options.modes);
    modeBox_->setCurrentIndex(std::max(0, int(options.modes.indexOf(options.modes.contains(mode) ? mode : options.mode))));
    resolutionBox_->blockSignals(true);
    resolutionBox_->clear();
    for (int dpi : options.resolutions) resolutionBox_->addItem(QStringLiteral("%1 dpi").arg(dpi), dpi);
    int wanted = resolution > 0 ? resolution : 150;
    if (resolutionBox_->findData(wanted) < 0) wanted = options.resolution;
    resolutionBox_->setCurrentIndex(std::max(0, resolutionBox_->findData(wanted)));
    resolutionBox_->blockSignals(false);
    area_->setWholeArea(options.area);
    setBusy(false);
    Q_EMIT ready();
}

int ScanDialog::chosenResolution() const { return resolutionBox_->currentData().toInt(); }

void ScanDialog::showPixelSize()
{
    const QRectF a = area_->selection();
    const int dpi = chosenResolution();
    sizeLabel_->setText(a.isEmpty() || dpi <= 0
                            ? QString()
                            : QStringLiteral("%1 \u00d7 %2").arg(pixels(a.width(), dpi)).arg(pixels(a.height(), dpi)));
}

void ScanDialog::setBusy(bool busy)
{
    const bool ready = !busy && session_->isOpen();
    deviceBox_->setEnabled(!busy);
    modeBox_->setEnabled(ready && modeBox_->count() > 0);
    resolutionBox_->setEnabled(ready && resolutionBox_->count() > 0);
    previewButton_->setEnabled(ready && !area_->wholeArea().isEmpty());
    scanButton_->setEnabled(ready);
    // Back from a scan, Enter scans again rather than pressing Cancel,
    // where the focus went while the other buttons were off.
    if (ready) scanButton_->setFocus();
    progress_->setRange(0, 100);
    progress_->setValue(0);
}

void ScanDialog::start(const pf::ScanRequest& request, bool preview)
{
    if (!session_->isOpen() || session_->isScanning()) return;
    previewing_ = preview;
    setBusy(true);
    session_->scan(request);
}

void ScanDialog::preview()
{
    // Just enough pixels for the preview box: the lowest resolution that
    // fills it, from what the device offers.
    const QRectF whole = area_->wholeArea();
    const double needed = area_->width() / (std::max(whole.width(), 1.0) / kMmPerInch);
    int dpi = resolutionBox_->itemData(resolutionBox_->count() - 1).toInt();
    for (int i = 0; i < resolutionBox_->count(); ++i)
        if (resolutionBox_->itemData(i).toInt() >= needed) {
            dpi = resolutionBox_->itemData(i).toInt();
            break;
        }
    start({modeBox_->currentText(), dpi, whole, true}, true);
}

void ScanDialog::scan() { start({modeBox_->currentText(), chosenResolution(), area_->selection(), false}, false); }

void ScanDialog::scanned(const QImage& image)
{
    setBusy(false);
    if (previewing_) {
        area_->setPreview(image);
        return;
    }
    image_ = image;
    accept();
}

void ScanDialog::failed(pf::ScanFault fault, const QString& detail)
{
    setBusy(false);
    complain(faultText(fault, detail));
}

void ScanDialog::cancelOrClose()
{
    if (session_->isScanning()) session_->cancel();
    else reject();
}

void ScanDialog::reject()
{
    // Closing during a scan stops it: the session goes with the dialog.
    session_->cancel();
    QDialog::reject();
}

// ------------------------------------------------------- ScanSourceDialog

ScanSourceDialog::ScanSourceDialog(const QList<pf::ScanDevice>& devices, const QString& current, QWidget* parent)
    : QDialog(parent)
{
    setObjectName("ScanSourceDialog");
    QString title = jk::texts().extraCaptions[1];
    title.remove(u'&').remove(QStringLiteral("..."));
    setWindowTitle(title.isEmpty() ? QStringLiteral("Select source") : title);
    list_ = new QListWidget(this);
    list_->setObjectName("scanSources");
    const QStringList labels = deviceLabels(devices);
    for (qsizetype i = 0; i < devices.size(); ++i) {
        const pf::ScanDevice& d = devices[i];
        auto* item = new QListWidgetItem(labels[i], list_);
        item->setData(Qt::UserRole, d.name);
        item->setToolTip(d.name + (d.type.isEmpty() ? QString() : QStringLiteral(", ") + d.type));
        if (d.name == current) list_->setCurrentItem(item);
    }
    if (!list_->currentItem()) list_->setCurrentRow(0);
    auto* box = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    if (!msg(jk::Msg::Ok).isEmpty()) box->button(QDialogButtonBox::Ok)->setText(msg(jk::Msg::Ok));
    if (!msg(jk::Msg::Cancel).isEmpty()) box->button(QDialogButtonBox::Cancel)->setText(msg(jk::Msg::Cancel));
    auto* top = new QVBoxLayout(this);
    top->addWidget(new QLabel(msg(jk::Msg::ScanSourcePrompt), this));
    top->addWidget(list_);
    top->addWidget(box);
    connect(box, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(box, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(list_, &QListWidget::itemDoubleClicked, this, &QDialog::accept);
    resize(420, 260);
}

QString ScanSourceDialog::chosen() const
{
    const QListWidgetItem* item = list_->currentItem();
    return item ? item->data(Qt::UserRole).toString() : QString();
}

std::optional<QString> ScanSourceDialog::choose(QWidget* parent, const QList<pf::ScanDevice>& devices,
                                                const QString& current)
{
    ScanSourceDialog dlg(devices, current, parent);
    if (dlg.exec() != QDialog::Accepted || dlg.chosen().isEmpty()) return std::nullopt;
    return dlg.chosen();
}
