#pragma once
// The text dialog: the user types or loads the text of a text block (or of
// the spine strip) and sets its font, colours, border and alignment.
//
// It works on a copy of the block's style (or of the spine font) that it is
// given, and hands back what became of it, so it never reaches into the
// project: the caller decides what to store. Font, colours, border and
// background count the moment the user sets them, so the returned style
// carries them also after Cancel; the text and the alignment count only
// after OK.
#include "model/Project.h"
#include "model/Records.h"
#include "sources/disc/DiscListing.h"
#include <QDialog>
#include <QFont>
#include <QString>
#include <optional>

class DriveFolderFileTrio;
class QAction;
class QCheckBox;
class QGroupBox;
class QMenu;
class QMenuBar;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;

// What the text dialog starts from.
struct TextEditRequest {
    enum class Mode { Block, Spine } mode = Mode::Block;
    QString text;            // the text the box starts with (empty for a new block)
    jk::TextStyle style;     // Block mode: the block's record style; fontName empty means the record has had no formatting yet
    jk::SpineFont spineFont; // Spine mode: the spine's font and colours
};

// What the text dialog leaves.
struct TextEditResult {
    bool accepted = false;   // OK was pressed
    // After OK: the text, each tab expanded to 8 spaces. After Cancel: empty
    // in Block mode, the text it started with in Spine mode.
    QString text;
    // Block mode: the style as the user left it. Font, colours, border and
    // background count also after Cancel; the alignment (0 left, 1 right,
    // 2 centre) changes only on OK. A block that got its first formatting
    // here starts from the block defaults, so its fontName is no longer
    // empty. In Spine mode the style it was given.
    jk::TextStyle style;
    // Spine mode: likewise (a background colour chosen in spine mode goes to
    // the spine's backColor). In Block mode the spine font it was given.
    jk::SpineFont spineFont;
    bool fromListing = false; // the text came from a drive listing
};

class TextBlockDialog : public QDialog {
    Q_OBJECT
public:
    // An empty new block.
    explicit TextBlockDialog(QWidget* parent = nullptr);
    explicit TextBlockDialog(const TextEditRequest& request, QWidget* parent = nullptr);

    // Creates the dialog, shows it modally and destroys it.
    static TextEditResult edit(QWidget* parent, const TextEditRequest& request);

    // What the dialog hands back, as it stands now (complete once closed).
    TextEditResult result() const { return result_; }

    // Alignment buttons: 0 left, 2 centre, 1 right.
    void alignLeft();
    void alignCentre();
    void alignRight();

    // Longest text file the edit box takes: anything bigger is refused with a
    // message instead of freezing the dialog while it lays the text out.
    static constexpr qint64 kMaxFileBytes = 1024 * 1024;
    // The most characters the spine strip takes.
    static constexpr int kSpineMaxChars = 60;

    // Reads a text file the way Open does: UTF-8 when valid, else
    // Windows-1252 (UTF-16 when it has a byte-order mark); line breaks become
    // "\n"; a file written by Save loses its quotes again. False with a
    // message for the user when the file is too big, binary or unreadable.
    static bool readTextFile(const QString& path, QString* text, QString* error);
    // Writes the text as one quoted record and a line break (CR LF line ends,
    // Windows-1252 when every character fits, else UTF-8).
    static bool writeTextFile(const QString& path, const QString& text, QString* error);

    QPlainTextEdit* textInput() const { return textinput_; }

    // The "Scan drive" panel (Frame1): a listing of the chosen folder or
    // disc replaces the text, in the fixed-pitch face.
    void openScanPanel();
    // Back to the typing options (what opening the File menu does).
    void showTypingPanel();
    // Rebuilds the whole text from the drive, folder, kind and options;
    // runs on every change of them while the panel is open.
    void scanDisk();
    // The drive list's entry that asks for a disc image file.
    static const QString kDiscImageChoice;

protected:
    void reject() override;

private:
    void initialise(const TextEditRequest& request);
    void acceptText();
    void cancel();
    void chooseFont();
    void chooseTextColour();
    void setTransparent();
    void chooseBackground();
    void toggleBorder();
    void openTextFile();
    void saveTextFile();

    void buildScanPanel();
    void chooseSource(const QString& key);
    // Reads the audio disc of a drive or image into disc_, offering Retry
    // while there is none; false when there is none or it cannot be read.
    bool loadDisc(const QString& source);
    bool askRetry(const QString& reason);
    // The file list holds an audio disc's tracks ("Track01.cda"…).
    bool listsAudioDisc() const;
    // Offers to store the disc's artist, title and the accepted lines as its
    // track titles in the CD player database.
    void storeDisc(const QString& text);

    // A style that gets its first formatting starts from the block defaults,
    // so that the sheet keeps the formatting instead of replacing it.
    void ensureStyled();
    void updatePreview();
    void limitLength(int position, int added);
    void showError(const QString& text);

    bool spine_ = false;
    bool closing_ = false;
    QString startText_;      // a cancelled spine edit hands it back
    jk::i16 alignment_ = 0;  // the alignment buttons' choice: 0 left, 1 right, 2 centre
    bool fromListing_ = false;
    TextEditResult result_;  // style and spine font change as the user sets them
    bool limiting_ = false;
    int changePos_ = 0, changeAdded_ = 0;  // the edit the document reported last
    // The colours the preview shows.
    qint32 fore_ = 0, back_ = 0xFFFFFF;
    bool opaque_ = false;
    std::optional<QFont> lastFont_;  // the font dialog's last choice

    QMenuBar* menuBar_;
    QMenu* txtFile_;
    QAction *fopen_, *fsave_;
    QGroupBox *frame2_, *frame4_, *frame5_, *panel_;
    QPlainTextEdit* textinput_;
    QPushButton *ok_, *cancel_, *fonts_, *foreColor_;
    QRadioButton *lft_, *cntr_, *rgt_, *option1_, *option2_;
    QCheckBox* check1_;

    // The scan panel, made when first opened.
    QAction* scancd_;
    QGroupBox* frame1_ = nullptr;
    DriveFolderFileTrio* trio_ = nullptr;
    QRadioButton *option3_ = nullptr, *option4_ = nullptr;
    QCheckBox *datetime_ = nullptr, *filesize_ = nullptr;
    QString shownDrive_;  // the drive entry listed last, to go back to
    std::optional<jk::sources::AudioDisc> disc_;  // the audio disc being listed
    QString listedText_;  // the text the last listing put into the box
    bool scanning_ = false;
};
