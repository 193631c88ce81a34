#include "ui/dialogs/PreferencesDialog.h"
#include "ui/dialogs/CalibrationDialog.h"
#include "ui/widgets/DriveFolderFile.h"
#include "model/AppContext.h"
#include "file/Paths.h"
#include "file/Settings.h"
#include <QDir>
#include <QEvent>
#include <QFileInfo>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QSpinBox>
#include <QVBoxLayout>
#include <algorithm>

namespace {

// The setting behind edit box `target` (1 editor to 4 project folder).
QString jk::UserSettings::*setting(int target)
{
    switch (target) {
    case 1: return &jk::UserSettings::picturesEditor;
    case 2: return &jk::UserSettings::picturesFolder;
    case 3: return &jk::UserSettings::backgroundFolder;
    default: return &jk::UserSettings::projectFolder;
    }
}

// The resolution of exported images, taken on OK only.
QSpinBox* addExportResolution(QGridLayout* grid, int row)
{
    auto* dpi = new QSpinBox(grid->parentWidget());
    dpi->setObjectName("ExportDpi");
    dpi->setRange(jk::kMinExportDpi, jk::kMaxExportDpi);
    dpi->setValue(std::clamp(jk::app().settings.exportDpi, jk::kMinExportDpi, jk::kMaxExportDpi));
    auto* label = new QLabel(jk::texts().msg(jk::Msg::ExportResolution), grid->parentWidget());
    label->setBuddy(dpi);
    grid->addWidget(label, row, 0);
    grid->addWidget(dpi, row, 1, Qt::AlignLeft);
    return dpi;
}

}  // namespace

PreferencesDialog::PreferencesDialog(QWidget* parent) : QDialog(parent)
{
    const jk::Texts& t = jk::texts();
    setObjectName("Preferences");
    setWindowTitle(t.msg(jk::Msg::PreferencesTitle));

    auto* grid = new QGridLayout(this);
    grid->setSizeConstraint(QLayout::SetMinimumSize);

    auto* heading = new QLabel(t.msg(jk::Msg::PreferencesTitle), this);
    heading->setObjectName("Label1");
    QFont big = heading->font();
    big.setBold(true);
    big.setPointSizeF(big.pointSizeF() * 1.2);
    heading->setFont(big);
    grid->addWidget(heading, 0, 0, 1, 2);

    for (int i = 0; i < 4; ++i) {
        auto* label = new QLabel(t.msg(jk::Msg(int(jk::Msg::PictureEditor) + i)), this);
        label->setObjectName(QStringLiteral("Label%1").arg(i + 2));
        text_[i] = new QLineEdit(this);
        text_[i]->setObjectName(QStringLiteral("Text%1").arg(i + 1));
        text_[i]->setMinimumWidth(320);
        text_[i]->installEventFilter(this);
        label->setBuddy(text_[i]);
        grid->addWidget(label, i + 1, 0);
        grid->addWidget(text_[i], i + 1, 1);
        const QString& value = jk::app().settings.*setting(i + 1);
        if (!value.isEmpty()) text_[i]->setText(value);
    }

    browse_ = new QPushButton(t.msg(jk::Msg::BrowseButton), this);
    browse_->setObjectName("Bbrowse");
    browse_->setEnabled(false);
    ok_ = new QPushButton(t.msg(jk::Msg::Ok), this);
    ok_->setObjectName("BOK");
    ok_->setDefault(true);
    cancel_ = new QPushButton(t.msg(jk::Msg::Cancel), this);
    cancel_->setObjectName("BCancel");
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(browse_);
    buttons->addStretch(1);
    buttons->addWidget(ok_);
    buttons->addWidget(cancel_);
    // Each printer's calibration, between the folders and the buttons.
    exportDpi_ = addExportResolution(grid, 5);
    grid->addWidget(new CalibrationList(this), 6, 0, 1, 2);
    grid->addLayout(buttons, 7, 0, 1, 2);

    // The browse panel, shown in place of the three buttons.
    frame_ = new QFrame(this);
    frame_->setObjectName("Frame1");
    frame_->setFrameShape(QFrame::StyledPanel);
    auto* panel = new QVBoxLayout(frame_);
    trio_ = new DriveFolderFileTrio(frame_);
    trio_->fileList()->setExecutablesOnly(true);
    trio_->setMinimumHeight(220);
    panel->addWidget(trio_, 1);
    auto* take = new QPushButton(t.msg(jk::Msg::Ok), frame_);
    take->setObjectName("CsCmdbtn2");
    auto* drop = new QPushButton(t.msg(jk::Msg::Cancel), frame_);
    drop->setObjectName("Cscmdbtn1");
    auto* panelButtons = new QHBoxLayout;
    panelButtons->addStretch(1);
    panelButtons->addWidget(take);
    panelButtons->addWidget(drop);
    panel->addLayout(panelButtons);
    grid->addWidget(frame_, 8, 0, 1, 2);
    grid->setRowStretch(8, 1);
    grid->setColumnStretch(1, 1);
    frame_->hide();

    connect(browse_, &QPushButton::clicked, this, &PreferencesDialog::openPanel);
    connect(take, &QPushButton::clicked, this, &PreferencesDialog::acceptPanel);
    connect(drop, &QPushButton::clicked, this, &PreferencesDialog::closePanel);
    connect(ok_, &QPushButton::clicked, this, &PreferencesDialog::writeAndClose);
    connect(cancel_, &QPushButton::clicked, this, &QDialog::reject);
}

bool PreferencesDialog::eventFilter(QObject* watched, QEvent* event)
{
    // Only a click chooses the target: focus also arrives when a button
    // hides itself, and that must not change what is being browsed.
    if (event->type() == QEvent::MouseButtonPress)
        for (int i = 0; i < 4; ++i)
            if (watched == text_[i]) selectTarget(i + 1);
    return QDialog::eventFilter(watched, event);
}

void PreferencesDialog::selectTarget(int target)
{
    target_ = target;
    browse_->setEnabled(true);
    trio_->fileList()->setEnabled(target == 1);
}

void PreferencesDialog::openPanel()
{
    if (target_ == 0) return;
    browse_->hide();
    cancel_->hide();
    ok_->hide();
    trio_->fileList()->setVisible(target_ == 1);

    // Start where the current value lives, when that folder still exists.
    const QString value = jk::app().settings.*setting(target_);
    if (!value.isEmpty()) {
        const QFileInfo info(value);
        const QString folder = target_ == 1 ? info.absolutePath() : info.absoluteFilePath();
        if (QFileInfo(folder).isDir()) {
            trio_->setPath(folder);
            if (target_ == 1) trio_->fileList()->setFileName(info.fileName());
        }
    }
    frame_->show();
    adjustSize();
}

void PreferencesDialog::acceptPanel()
{
    const QString folder = trio_->path();
    // The editor always gets a separator before its name, even after "/".
    const QString value = target_ == 1 ? folder + u'/' + trio_->fileList()->fileName() : folder;
    if (target_ >= 1 && target_ <= 4) {
        // Taken at once, for this run even when the dialog is cancelled.
        jk::appSetup().settings.*setting(target_) = value;
        text_[target_ - 1]->setText(value);
    }
    closePanel();
}

void PreferencesDialog::closePanel()
{
    frame_->hide();
    browse_->show();
    cancel_->show();
    ok_->show();
    adjustSize();
}

void PreferencesDialog::writeAndClose()
{
    jk::appSetup().settings.exportDpi = exportDpi_->value();
    // A file that cannot be written is not reported: the values stay in memory.
    jk::saveAppSettings();
    Q_EMIT settingsWritten();
    accept();
}

void PreferencesDialog::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (centred_) return;
    centred_ = true;
    adjustSize();
    if (const QScreen* s = screen()) {
        QRect r = frameGeometry();
        r.moveCenter(s->availableGeometry().center());
        move(r.topLeft());
    }
}
