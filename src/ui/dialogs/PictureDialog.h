#pragma once
// The picture dialog: the user picks a picture file (previewed as it is
// clicked) or a plain colour, for a picture object or a sheet background.
//
//
// The caller says what the picture is for (which folder the dialog starts
// in) and gets the choice back as a value, or nothing after Cancel; the
// dialog itself never touches the project.
#include "model/Records.h"
#include <QColor>
#include <QDialog>
#include <QFrame>
#include <QImage>
#include <QPixmap>
#include <QPointer>
#include <QString>
#include <optional>

class DriveFolderFileTrio;
class QPushButton;

// The preview (ImageMan1): the picture scaled into the box keeping its
// proportions, or at 100 % (a scan: dragged with the mouse when larger than
// the box), or a plain colour, or a short note when the file cannot be
// shown.
class PicturePreview : public QFrame {
    Q_OBJECT
public:
    explicit PicturePreview(QWidget* parent = nullptr);

    void setPicture(const QImage& picture);
    void setPictureActualSize(const QImage& picture);
    void setColor(const QColor& color);
    void setNote(const QString& note);
    void clear();

    const QImage& picture() const { return picture_; }
    QColor color() const { return color_; }
    QString note() const { return note_; }

protected:
    void paintEvent(QPaintEvent* e) override;
    void resizeEvent(QResizeEvent* e) override;
    void mousePressEvent(QMouseEvent* e) override;
    void mouseMoveEvent(QMouseEvent* e) override;

private:
    QPoint clampedOffset(QPoint offset) const;

    QImage picture_;
    bool actualSize_ = false;
    QPoint offset_;     // at 100 %: the picture's top-left in the box
    QPoint dragFrom_;
    QPixmap scaled_;  // the picture at the box's size, made once per size
    QColor color_;
    QString note_;
};

// Which folder the dialog starts in: the background folder or the pictures
// folder.
enum class PicturePurpose { Background = 0, Picture = 1 };

// What the user picked: the last file clicked or colour chosen.
struct PictureChoice {
    QString file;                    // a picture file's full path, or
    std::optional<jk::i32> colour;   // a plain colour as a Windows RGB value (red in the low byte)
    // What a picture or background record stores: the file, or "~" and the
    // colour in decimal.
    QString recordText() const;
};

class PictureDialog : public QDialog {
    Q_OBJECT
public:
    explicit PictureDialog(PicturePurpose purpose, QWidget* parent = nullptr);
    // Starts in the background folder.
    explicit PictureDialog(QWidget* parent = nullptr);

    // Creates the dialog, shows it modally and destroys it. The choice after
    // Select; nullopt after Cancel, Escape or the window's close button.
    static std::optional<PictureChoice> choose(QWidget* parent, PicturePurpose purpose);

    // What Select hands back now: nullopt until a file was clicked or a
    // colour chosen, and again once the dialog was cancelled.
    const std::optional<PictureChoice>& choice() const { return choice_; }

    // Enables the Scanner button once SANE has listed a device (the list
    // comes from the scanner thread, so possibly after the dialog is up).
    void updateScannerButton();
    // Scanner: the scan dialog, then the scanned picture in the preview at
    // 100 %; Select saves it.
    void scan();
    // The scanned picture on show, waiting to be saved by Select.
    void showScan(const QImage& image);
    const QImage& scannedPicture() const { return scanned_; }

    void fileClicked();
    // Opens on that file as if it had been clicked: its folder listed, the
    // file selected and previewed, Select enabled. A file of a format the
    // list leaves out (a PNG capture) is chosen all the same. Call it once
    // the dialog is shown (showing lists the folder afresh).
    void selectFile(const QString& path);
    void select();  // Select
    void cancel();  // Cancel
    void chooseColour();  // Color

    // Escape and the window's close button cancel like cancelButton_.
    void reject() override;

    PicturePreview* preview() const { return preview_; }
    DriveFolderFileTrio* browser() const { return trio_; }

Q_SIGNALS:
    // A clicked file's preview is on show (its picture, or the note why not).
    void previewShown(const QString& path);

protected:
    void showEvent(QShowEvent* e) override;

private:
    void startPreview();
    bool saveScan();
    void previewDecoded(quint64 generation, const QString& path, const QImage& picture, const QString& error);

    DriveFolderFileTrio* trio_;
    PicturePreview* preview_;
    QPushButton* selectButton_;
    QPushButton* cancelButton_;
    QPushButton* colourButton_;
    QPushButton* scannerButton_;

    std::optional<PictureChoice> choice_;
    // The last scan; Select saves it while no file or colour was chosen since.
    QImage scanned_;

    // Pictures decode on a worker thread, one at a time; while one decodes
    // only the latest click waits, so holding an arrow key down in the file
    // list never queues a backlog.
    quint64 generation_ = 0;
    bool decoding_ = false;
    QString waiting_;
};
