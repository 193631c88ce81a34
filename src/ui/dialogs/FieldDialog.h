#pragma once
// The field properties dialog: the values of a character field (typed, or
// opened and saved through its File menu), or the start value and digit
// count of a numeric field, and for both the font, colours, alignment,
// background and border.
//
// Hand-over:
//   in  G().selectedIndex   the field's slot
//       G().fieldSubKind    1 character field, 2 numeric field
//   out G().textAccepted    true after OK, false after Cancel
//       G().alignmentChoice 0 left, 1 right, 2 centre
//       fieldHandOver()     OK: the values text or the start value, the
//                           number text, the value file; Cancel: the texts
//                           emptied, the file left as it was
// The digit count, the spine link, the background and the border go into
// the record the moment they are set (also on Cancel); font, text colour,
// alignment and the value file on OK. A character field's values are
// written to its value file on OK.
#include <QDialog>
#include <QFont>
#include <QString>
#include <QStringList>
#include <optional>

class QAction;
class QCheckBox;
class QGroupBox;
class QLineEdit;
class QMenu;
class QMenuBar;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;

namespace jk::platform {
enum class Icon;
}
namespace jk {
struct TextStyle;
struct NumFieldRecord;
struct CharFieldRecord;
}  // namespace jk

class FieldDialog : public QDialog {
    Q_OBJECT
public:
    explicit FieldDialog(QWidget* parent = nullptr);

    // Shows the dialog modally for the selected field; true after OK.
    static bool run(QWidget* parent);

    // Loads the character field's value file into the values box.
    void loadValueFile();

    bool numericMode() const { return numeric_; }
    QString valueFile() const { return valueFile_; }

protected:
    void reject() override;

private:
    void initialise();
    void Text1_Edited(const QString& text);
    void digitOption(int digits);  // Option1-Option4
    void Check1_Click();
    void Option5_Click();
    void Option6_Click();
    void Check2_Click();
    void alignment(int a);  // Lft 0, Rgt 1, Cntr 2
    void Command1_Click();  // Fonts
    void ForeColor_Click();
    void Fopen_Click();
    void Fsave_Click();
    void Command3_Click();  // OK
    void Command2_Click();  // Cancel

    jk::NumFieldRecord* numRecord() const;
    jk::CharFieldRecord* charRecord() const;
    jk::TextStyle* style() const;
    // The values typed in the values box: one a line, blank lines dropped.
    QStringList typedValues() const;
    void showValues(const QStringList& values, bool complete);
    void message(const QString& text, jk::platform::Icon icon);
    void updatePreview();

    bool numeric_ = false;
    bool closing_ = false;
    QString valueFile_;
    bool fileCut_ = false;  // only the start of a very large file is shown
    std::optional<QFont> font_;
    int fore_ = 0;
    bool foreChosen_ = false;

    QMenuBar* menuBar_;
    QMenu* mfile_;
    QAction *fopen_, *fsave_;
    QGroupBox *frame1_, *frame2_, *frame3_, *frame4_;
    QPlainTextEdit* text2_;
    QLineEdit* text1_;
    QRadioButton* digits_[4];
    QCheckBox *check1_, *check2_;
    QRadioButton *lft_, *cntr_, *rgt_, *option5_, *option6_;
    QPushButton *command1_, *foreColor_, *command3_, *command2_;
};
