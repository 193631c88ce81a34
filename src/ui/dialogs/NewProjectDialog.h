#pragma once
// The new-project dialog. The first tab picks the sheets of a new project (a
// cover kind: simple, double or paper jacket; plus an inside card and a disc
// label; a paper jacket leaves no room for an inside card); the second tab
// picks an existing ".prj" file instead.
//
// The dialog only records the choice in jk::G() and closes:
//   Command1 (create): openExisting = false, projectFilePath and
//       projectFileName emptied, simpleChoice, doubleChoice, jacketChoice,
//       insideChoice and cdChoice set (-1 chosen, 0 not).
//   Command2 (open), or a double click on a file: openExisting = true,
//       projectFilePath = projectFileName = the chosen file's full path.
//   Closed by Escape or the window frame: nothing is changed.
// The new-project command runs it with NewProjectDialog::run() and then creates
// the chosen sheets, or opens projectFilePath when openExisting is set.
#include <QDialog>
#include <QPixmap>

class DriveFolderFileTrio;
class QCheckBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTabWidget;

class NewProjectDialog : public QDialog {
    Q_OBJECT
public:
    enum Result { Closed = 0, Create = 1, OpenExisting = 2 };

    explicit NewProjectDialog(QWidget* parent = nullptr);

    // Creates the dialog, shows it modally and destroys it. Tells which of
    // the buttons closed it; the choices themselves are in jk::G().
    static Result run(QWidget* parent);

    Result choice() const { return result_; }
    // Which stored preview Picture1 shows: 2 the covers, 3 the paper jacket.
    int previewShown() const { return preview_; }

    // The stored preview pictures, drawn at the given size.
    static QPixmap coverPreview(const QSize& size);
    static QPixmap jacketPreview(const QSize& size);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void initialise();
    void Command1_Click();
    void Command2_Click();
    void File1_Click(const QString& name);
    void pointerOver(QWidget* w);
    void showPreview(int picture);
    void jacketRule();

    QTabWidget* tabs_;
    QGroupBox* frame1_;
    QRadioButton *simple_, *double_, *jacket_;
    QCheckBox *cdrom_, *inside_;
    QLabel *label1_, *picture1_, *picture2_, *picture3_;
    DriveFolderFileTrio* trio_;
    QLineEdit* text1_;
    QPushButton *command1_, *command2_;
    int preview_ = 2;
    Result result_ = Closed;
    bool centred_ = false;
};
