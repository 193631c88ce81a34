#pragma once
// The new-project dialog. The first tab picks the sheets of a new project (a
// cover kind: simple, double or paper jacket; plus an inside card and a disc
// label; a paper jacket leaves no room for an inside card); the second tab
// picks an existing ".prj" file instead.
//
// The dialog only hands the choice back as a value and closes; the
// new-project command runs it with NewProjectDialog::run() and then creates
// the chosen sheets or opens the chosen file:
//   Command1 (create): Create and the sum of the chosen format codes.
//   Command2 (open), or a double click on a file: OpenExisting and the
//       chosen file's full path.
//   Closed by Escape or the window frame: Closed, nothing chosen.
#include <QDialog>
#include <QPixmap>
#include <QString>

class DriveFolderFileTrio;
class QCheckBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTabWidget;

struct NewProjectChoice;

class NewProjectDialog : public QDialog {
    Q_OBJECT
public:
    enum Result { Closed = 0, Create = 1, OpenExisting = 2 };

    explicit NewProjectDialog(QWidget* parent = nullptr);

    // Creates the dialog, shows it modally and destroys it.
    static NewProjectChoice run(QWidget* parent);

    // Which button closed it (Closed while it is open).
    Result choice() const { return result_; }
    // The whole choice, as run() hands it back.
    NewProjectChoice outcome() const;
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
    void createProject();
    void openChosenProject();
    void fileClicked(const QString& name);
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
    int sheets_ = 0;
    QString file_;
    bool centred_ = false;
};

struct NewProjectChoice {
    NewProjectDialog::Result result = NewProjectDialog::Closed;
    // Create: the sum of the chosen format codes (jk::FmtSimple, FmtDouble,
    // FmtInside, FmtCdRom, FmtJacket); 0 otherwise.
    int sheets = 0;
    QString file;  // OpenExisting: the chosen .prj's full path; empty otherwise
};
