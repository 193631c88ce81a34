#include "ui/dialogs/PictureDialog.h"
#include "ui/dialogs/ScanDialog.h"
#include "file/Settings.h"
#include "platform/Scanner.h"
#include "ui/widgets/DriveFolderFile.h"
#include "platform/Pictures.h"
#include "platform/Services.h"
#include "model/Colors.h"
#include "model/AppContext.h"
#include <QApplication>
#include <QDir>
#include <QImageWriter>
#include <QMouseEvent>
#include <QSaveFile>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>
#include <QThreadPool>
#include <QVBoxLayout>

namespace {

// The captions come from the message table; its design-time text stands in
// for an entry the message file left empty.
QString caption(const QString& fromTable, const char* fallback)
{
    return fromTable.isEmpty() ? QString::fromLatin1(fallback) : fromTable;
}

// The preview never needs more than this many pixels a side: a big picture is
// scaled down on the worker thread, so the dialog holds and paints little.
constexpr int kPreviewMaxSide = 1600;

// Writes a scan under its file name's format (JPEG for one Qt cannot write)
// through a temporary file, so a failed save leaves nothing half-written
// under the chosen name.
bool writePicture(const QImage& image, const QString& path, QString* error)
{
    QByteArray format = QFileInfo(path).suffix().toLower().toLatin1();
    if (format == "jpg") format = "jpeg";
    if (!QImageWriter::supportedImageFormats().contains(format)) format = "jpeg";
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        *error = file.errorString();
        return false;
    }
    QImageWriter writer(&file, format);
    if (format == "jpeg") writer.setQuality(90);
    if (!writer.write(image)) {
        *error = writer.errorString();
        file.cancelWriting();
        return false;
    }
    if (!file.commit()) {
        *error = file.errorString();
        return false;
    }
    return true;
}

}  // namespace

// ----------------------------------------------------------- PicturePreview

PicturePreview::PicturePreview(QWidget* parent) : QFrame(parent)
{
    setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    setMinimumSize(240, 180);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void PicturePreview::setPicture(const QImage& picture)
{
    picture_ = picture;
    scaled_ = QPixmap();
    actualSize_ = false;
    note_.clear();
    setCursor(Qt::ArrowCursor);
    update();
}

void PicturePreview::setPictureActualSize(const QImage& picture)
{
    setPicture(picture);
    actualSize_ = true;
    offset_ = clampedOffset(QPoint());
    if (picture.width() > contentsRect().width() || picture.height() > contentsRect().height())
        setCursor(Qt::OpenHandCursor);
    update();
}

QPoint PicturePreview::clampedOffset(QPoint offset) const
{
    // A picture smaller than the box sits in its middle; a larger one can
    // be moved only as far as its edges.
    const QSize box = contentsRect().size(), pic = picture_.size();
    auto axis = [](int at, int boxSide, int picSide) {
        return picSide <= boxSide ? (boxSide - picSide) / 2 : std::clamp(at, boxSide - picSide, 0);
    };
    return {axis(offset.x(), box.width(), pic.width()), axis(offset.y(), box.height(), pic.height())};
}

void PicturePreview::mousePressEvent(QMouseEvent* e)
{
    dragFrom_ = e->position().toPoint() - offset_;
    QFrame::mousePressEvent(e);
}

void PicturePreview::mouseMoveEvent(QMouseEvent* e)
{
    if (actualSize_ && (e->buttons() & Qt::LeftButton)) {
        offset_ = clampedOffset(e->position().toPoint() - dragFrom_);
        update();
    }
    QFrame::mouseMoveEvent(e);
}

void PicturePreview::setColor(const QColor& color)
{
    color_ = color;
    update();
}

void PicturePreview::setNote(const QString& note)
{
    note_ = note;
    update();
}

void PicturePreview::clear()
{
    picture_ = QImage();
    scaled_ = QPixmap();
    actualSize_ = false;
    setCursor(Qt::ArrowCursor);
    color_ = QColor();
    note_.clear();
    update();
}

void PicturePreview::resizeEvent(QResizeEvent* e)
{
    scaled_ = QPixmap();
    QFrame::resizeEvent(e);
    if (actualSize_) offset_ = clampedOffset(offset_);
}

void PicturePreview::paintEvent(QPaintEvent* e)
{
    QFrame::paintEvent(e);
    QPainter p(this);
    const QRect box = contentsRect();
    p.fillRect(box, color_.isValid() ? color_ : palette().color(QPalette::Base));
    if (!picture_.isNull() && actualSize_) {
        p.setClipRect(box);
        p.drawImage(box.topLeft() + offset_, picture_);
    } else if (!picture_.isNull()) {
        if (scaled_.isNull())  // made again after a resize
            scaled_ = QPixmap::fromImage(picture_.scaled(box.size(), Qt::KeepAspectRatio, Qt::SmoothTransformation));
        QRect where(QPoint(), scaled_.size());
        where.moveCenter(box.center());
        p.drawPixmap(where, scaled_);
    } else if (!note_.isEmpty()) {
        p.setPen(palette().color(QPalette::PlaceholderText));
        p.drawText(box.adjusted(12, 12, -12, -12), Qt::AlignCenter | Qt::TextWordWrap, note_);
    }
}

// ---------------------------------------------------------------- PictureChoice

QString PictureChoice::recordText() const
{
    if (colour) return u'~' + QString::number(*colour);
    return file;
}

// ---------------------------------------------------------------- PictureDialog

PictureDialog::PictureDialog(QWidget* parent) : PictureDialog(PicturePurpose::Background, parent) {}

PictureDialog::PictureDialog(PicturePurpose purpose, QWidget* parent) : QDialog(parent)
{
    const jk::Texts& t = jk::texts();
    setObjectName("PICSELECT");
    setWindowTitle(QStringLiteral("PICTURE SELECTOR"));

    trio_ = new DriveFolderFileTrio(this);
    trio_->setMinimumSize(360, 300);
    preview_ = new PicturePreview(this);
    preview_->setObjectName("ImageMan1");

    selectButton_ = new QPushButton(caption(t.msg(jk::Msg::SelectButton), "Select"), this);
    selectButton_->setObjectName("Command1");
    selectButton_->setDefault(true);
    cancelButton_ = new QPushButton(caption(t.msg(jk::Msg::Cancel), "Cancel"), this);
    cancelButton_->setObjectName("Command2");
    colourButton_ = new QPushButton(caption(t.msg(jk::Msg::ColorButton), "Color"), this);
    colourButton_->setObjectName("Command3");
    scannerButton_ = new QPushButton(caption(t.extraCaptions[2], "Scanner"), this);
    scannerButton_->setObjectName("Scanner");

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(selectButton_);
    buttons->addWidget(colourButton_);
    buttons->addWidget(scannerButton_);
    buttons->addStretch(1);
    buttons->addWidget(cancelButton_);
    auto* right = new QVBoxLayout;
    right->addWidget(preview_, 1);
    right->addLayout(buttons);
    auto* top = new QHBoxLayout(this);
    top->addWidget(trio_, 3);
    top->addLayout(right, 2);
    resize(820, 400);

    updateScannerButton();
    selectButton_->setEnabled(false);

    // Start where this kind of picture lives.
    const jk::UserSettings& settings = jk::app().settings;
    const QString start = purpose == PicturePurpose::Background ? settings.backgroundFolder
                          : purpose == PicturePurpose::Picture  ? settings.picturesFolder
                                                                : QString();
    if (!start.isEmpty()) trio_->setPath(start);
    trio_->fileList()->setPattern(QString::fromLatin1(jk::platform::kPicturePattern));

    connect(trio_, &DriveFolderFileTrio::fileClicked, this, &PictureDialog::fileClicked);
    connect(trio_, &DriveFolderFileTrio::fileDoubleClicked, this, [this] {
        if (selectButton_->isEnabled()) select();
    });
    connect(selectButton_, &QPushButton::clicked, this, &PictureDialog::select);
    connect(cancelButton_, &QPushButton::clicked, this, &PictureDialog::cancel);
    connect(colourButton_, &QPushButton::clicked, this, &PictureDialog::chooseColour);
    connect(scannerButton_, &QPushButton::clicked, this, &PictureDialog::scan);
}

std::optional<PictureChoice> PictureDialog::choose(QWidget* parent, PicturePurpose purpose)
{
    PictureDialog dlg(purpose, parent);
    if (dlg.exec() != QDialog::Accepted) return std::nullopt;
    return dlg.choice();
}

void PictureDialog::updateScannerButton()
{
    scannerButton_->setEnabled(false);
    jk::platform::findScanDevices(this, [this](const QList<jk::platform::ScanDevice>& devices) {
        scannerButton_->setEnabled(!devices.isEmpty());
    });
}

void PictureDialog::scan()
{
    const auto devices = jk::platform::knownScanDevices();
    if (!devices || devices->isEmpty()) return;
    const QString preferred = jk::app().settings.scannerSource;
    const std::optional<ScannedPicture> scanned = ScanDialog::acquire(this, *devices, preferred);
    if (!scanned) return;
    // The device used is the one the next scan starts with.
    if (scanned->device != preferred) {
        jk::appSetup().settings.scannerSource = scanned->device;
        jk::saveAppSettings();
    }
    showScan(scanned->image);
}

void PictureDialog::showScan(const QImage& image)
{
    // A picture still decoding must not cover the scan when it arrives.
    ++generation_;
    waiting_.clear();
    scanned_ = image;
    choice_.reset();
    preview_->clear();
    preview_->setPictureActualSize(image);
    selectButton_->setEnabled(true);
}

bool PictureDialog::saveScan()
{
    auto* files = jk::platform::services().files;
    if (!files) return false;
    const QString& folder = jk::app().settings.picturesFolder;
    QString title = jk::texts().msg(jk::Msg::SaveMenu);
    title.remove(u'&').remove(QStringLiteral("..."));
    const QString path = files->saveFile(
        title.isEmpty() ? QStringLiteral("Save") : title,
        QDir(folder.isEmpty() ? QDir::homePath() : folder).filePath(QStringLiteral("untitled.jpg")),
        QStringLiteral("Bitmap (*.bmp);;JPEG (*.jpg);;All files (*)"), QStringLiteral("jpg"));
    // Cancelled: nothing saved, and the scan stays on show to save later.
    if (path.isEmpty()) return false;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    QString error;
    const bool saved = writePicture(scanned_, path, &error);
    QApplication::restoreOverrideCursor();
    if (!saved) {
        if (auto* m = jk::platform::services().messages)
            m->show(jk::texts().msg(jk::Msg::ScanNotSaved) + u'\n' + QDir::toNativeSeparators(path) + u'\n' + error,
                    jk::texts().msg(jk::Msg::ProgramTitle), jk::platform::Icon::Warning);
        return false;
    }
    choice_ = PictureChoice{path, std::nullopt};
    return true;
}

void PictureDialog::showEvent(QShowEvent* e)
{
    // Shown again, the folder may hold new pictures: list it afresh.
    trio_->fileList()->setPattern(QString::fromLatin1(jk::platform::kPicturePattern));
    QDialog::showEvent(e);
}

void PictureDialog::fileClicked()
{
    const QString path = trio_->filePath();
    if (path.isEmpty()) return;
    choice_ = PictureChoice{path, std::nullopt};
    scanned_ = QImage();
    preview_->clear();
    ++generation_;
    waiting_ = path;
    startPreview();
    selectButton_->setEnabled(true);
}

void PictureDialog::selectFile(const QString& path)
{
    const QFileInfo info(path);
    trio_->setPath(info.absolutePath());
    trio_->fileList()->setFileName(info.fileName());
    choice_ = PictureChoice{info.absoluteFilePath(), std::nullopt};
    preview_->clear();
    ++generation_;
    waiting_ = choice_->file;
    startPreview();
    selectButton_->setEnabled(true);
}

void PictureDialog::startPreview()
{
    if (decoding_ || waiting_.isEmpty()) return;
    decoding_ = true;
    const QString path = std::exchange(waiting_, QString());
    const quint64 generation = generation_;
    const QPointer<PictureDialog> self(this);
    QThreadPool::globalInstance()->start([self, path, generation] {
        QString error;
        QImage picture = jk::platform::loadPicture(path, &error);
        if (picture.width() > kPreviewMaxSide || picture.height() > kPreviewMaxSide)
            picture = picture.scaled(kPreviewMaxSide, kPreviewMaxSide, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        QMetaObject::invokeMethod(
            qApp,
            [self, path, generation, picture, error] {
                if (self) self->previewDecoded(generation, path, picture, error);
            },
            Qt::QueuedConnection);
    });
}

void PictureDialog::previewDecoded(quint64 generation, const QString& path, const QImage& picture, const QString& error)
{
    decoding_ = false;
    if (generation == generation_) {
        if (picture.isNull()) preview_->setNote(error);
        else preview_->setPicture(picture);
        Q_EMIT previewShown(path);
    }
    startPreview();
}

void PictureDialog::select()
{
    if (!choice_ && !scanned_.isNull() && !saveScan()) return;
    accept();
}

void PictureDialog::cancel()
{
    reject();
}

void PictureDialog::reject()
{
    choice_.reset();
    QDialog::reject();
}

void PictureDialog::chooseColour()
{
    const QColor initial = preview_->color().isValid() ? preview_->color() : QColor(Qt::white);
    QString title = colourButton_->text();
    title.remove(u'&').remove(QStringLiteral("..."));
    const std::optional<QColor> chosen = jk::platform::services().colors->chooseColor(initial, title);
    if (!chosen || !chosen->isValid()) return;
    // A picture still decoding must not cover the colour when it arrives.
    ++generation_;
    waiting_.clear();
    scanned_ = QImage();
    preview_->clear();
    preview_->setColor(*chosen);
    choice_ = PictureChoice{QString(), jk::i32(jk::toWinColor(*chosen))};
    selectButton_->setEnabled(true);
}
