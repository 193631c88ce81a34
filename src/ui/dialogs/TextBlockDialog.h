#pragma once
// The text dialog: the user types or loads the text of a text block (or of
// the spine strip) and sets its font, colours, border and alignment.
//
// Hand-over through jk::G():
//   in  pendingText      the text to show; "ZILCH" means none
//       spineTextMode    true: edit the spine text (spineText, spineFont)
//       currentBlock     the slot being inserted or edited
//       pageRequest      1: that slot is in freeText, else in pageText (font,
//                        colours, the starting state)
//       blockSelector    1: freeText, else pageText (border and background)
//       textDestination  2: a background colour chosen in spine mode goes to
//                        the spine
//   out textAccepted     true after OK, false after Cancel
//       pendingText      OK: the text, each tab expanded to 8 spaces;
//                        Cancel: empty, or in spine mode the old spine text
//       alignmentChoice  0 left, 1 right, 2 centre (also stored in the record)
//       listingFlag      the text is a drive listing
// Font, colours, border and background are written into the record (or the
// spine font) the moment the user sets them, and stay written on Cancel.
#include <QDialog>
#include <QFont>
#include <QString>
#include <optional>

class QAction;
class QCheckBox;
class QGroupBox;
class QMenu;
class QMenuBar;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;

namespace jk {
struct TextRecord;
}

class TextBlockDialog : public QDialog {
    Q_OBJECT
public:
    explicit TextBlockDialog(QWidget* parent = nullptr);

    // Creates the dialog, shows it modally and destroys it; the results are
    // in jk::G() afterwards.
    static void run(QWidget* parent);

    // Alignment buttons: 0 left, 2 centre, 1 right.
    void Lft_Click();
    void Cntr_Click();
    void Rgt_Click();

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

protected:
    void reject() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void initialise();
    void Command1_Click();
    void Command2_Click();
    void Command4_Click();
    void ForeColor_Click();
    void Option1_Click();
    void Option2_Click();
    void Check1_Click();
    void Fopen_Click();
    void Fsave_Click();

    // The record being edited, from the table the page request names (or the
    // block selector, for border and background); null when there is none.
    jk::TextRecord* record(bool bySelector) const;
    // A record that gets its first formatting starts from the block defaults,
    // so that the sheet keeps the formatting instead of replacing it.
    void ensureStyled(jk::TextRecord* r) const;
    void updatePreview();
    void limitLength(int position, int added);
    void showError(const QString& text);

    bool spine_ = false;
    bool closing_ = false;
    bool limiting_ = false;
    int changePos_ = 0, changeAdded_ = 0;  // the edit the document reported last
    // What the preview shows when there is no record to read it from.
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
};
