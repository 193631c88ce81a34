#include "ui/dialogs/PictureDialog.h"
#include "ui/widgets/DriveFolderFile.h"
#include "platform/Pictures.h"
#include "platform/Services.h"
#include "model/Colors.h"
#include "model/AppContext.h"
#include <QApplication>
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
    note_.clear();
    update();
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
    color_ = QColor();
    note_.clear();
    update();
}

void PicturePreview::resizeEvent(QResizeEvent* e)
{
    scaled_ = QPixmap();
    QFrame::resizeEvent(e);
}

void PicturePreview::paintEvent(QPaintEvent* e)
{
    QFrame::paintEvent(e);
    QPainter p(this);
    const QRect box = contentsRect();
    p.fillRect(box, color_.isValid() ? color_ : palette().color(QPalette::Base));
    if (!picture_.isNull()) {
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
}

std::optional<PictureChoice> PictureDialog::choose(QWidget* parent, PicturePurpose purpose)
{
    PictureDialog dlg(purpose, parent);
    if (dlg.exec() != QDialog::Accepted) return std::nullopt;
    return dlg.choice();
}

void PictureDialog::updateScannerButton()
{
    constexpr int imageSources = 0;  // no scanning service yet
    scannerButton_->setEnabled(imageSources > 0);
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
    preview_->clear();
    ++generation_;
    waiting_ = path;
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
    preview_->clear();
    preview_->setColor(*chosen);
    choice_ = PictureChoice{QString(), jk::i32(jk::toWinColor(*chosen))};
    selectButton_->setEnabled(true);
}
