#pragma once
// The field properties dialog: the values of a character field (typed, or
// opened and saved through its File menu), or the start value and digit
// count of a numeric field, and for both the font, colours, alignment,
// background and border.
//
// The dialog works on a copy of the field's record and hands back what
// became of it; the caller decides what to store, so the dialog never
// reaches into the project. The digit count (and with it a start value
// already typed), the spine link, the background and the border count the
// moment they are set, so the returned record carries them also after
// Cancel; font, text colour, alignment and the value file only after OK. A
// character field's values are written to its value file on OK.
#include "model/Records.h"
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

struct FieldEditResult {
    bool accepted = false;          // OK was pressed
    jk::CharFieldRecord charField;  // character mode: the record as the dialog leaves it
    jk::NumFieldRecord numField;    // numeric mode: the record as the dialog leaves it
    // After OK: the values text, one a line (character), or the start value
    // as typed (numeric); empty after Cancel.
    QString fieldText;
    QString numberText;             // after OK: the number text; empty after Cancel
};

class FieldDialog : public QDialog {
    Q_OBJECT
public:
    explicit FieldDialog(const jk::CharFieldRecord& record, QWidget* parent = nullptr);
    explicit FieldDialog(const jk::NumFieldRecord& record, QWidget* parent = nullptr);

    // Create the dialog, show it modally and destroy it. The record it gets
    // is the one to edit (a fresh one for a new field); the record not
    // edited stays empty in the result. The numeric record's number is not
    // set from the start value: numberText carries it.
    static FieldEditResult editCharField(QWidget* parent, const jk::CharFieldRecord& record);
    static FieldEditResult editNumField(QWidget* parent, const jk::NumFieldRecord& record);

    // What the dialog hands back, as it stands now (complete once closed).
    const FieldEditResult& result() const { return result_; }

    // Loads the character field's value file into the values box.
    void loadValueFile();

    bool numericMode() const { return numeric_; }
    QString valueFile() const { return valueFile_; }

protected:
    void reject() override;

private:
    // Builds the controls; the public constructors then fill them.
    FieldDialog(bool numeric, QWidget* parent);
    void initialise();
    void startValueEdited(const QString& text);
    void digitOption(int digits);  // Option1-Option4
    void toggleSpineLink();
    void setTransparent();
    void chooseBackground();
    void toggleBorder();
    void alignment(int a);  // Lft 0, Rgt 1, Cntr 2
    void chooseFont();  // Fonts
    void chooseTextColour();
    void openValueFile();
    void saveValueFile();
    void acceptField();  // OK
    void cancel();  // Cancel

    // The style of the record being edited.
    jk::TextStyle& style();
    // The values typed in the values box: one a line, blank lines dropped.
    QStringList typedValues() const;
    void showValues(const QStringList& values, bool complete);
    void message(const QString& text, jk::platform::Icon icon);
    void updatePreview();

    bool numeric_ = false;
    bool closing_ = false;
    FieldEditResult result_;  // the records take the at-once parts as they are set
    jk::i16 alignment_ = 0;   // the alignment buttons' choice: 0 left, 1 right, 2 centre
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
