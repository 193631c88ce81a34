#pragma once
// The application frame: menus, tool bar, printer box, nudge-step controls and
// the area that holds the sheet windows. It owns the project, the editing
// state and the commands, and hands them to its sheet windows.
#include "model/EditorState.h"
#include "model/Project.h"
#include "output/PrintPlan.h"
#include "ui/dialogs/NewProjectDialog.h"
#include "ui/dialogs/PrintDialogs.h"
#include "ui/sheet/Actions.h"
#include "ui/sheet/SheetWindow.h"
#include <QMainWindow>
#include <functional>
#include <vector>

class QAction;
class QComboBox;
class QLabel;
class QLineEdit;
class QMdiArea;
class QMenu;
class QSlider;
class QToolBar;
class QToolButton;

class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    jk::Project& project() { return project_; }
    jk::EditorState& editor() { return editor_; }
    Actions& actions() { return actions_; }
    // The dialogs the sheets ask; tests put their own answers here.
    SheetDialogs& dialogs() { return dialogs_; }

    // Controls and commands by their historical names.
    QAction* action(const QString& name) const;
    QMenu* popup(const QString& name) const;
    QToolButton* button(const QString& name) const;
    QMdiArea* mdiArea() const { return mdi_; }
    QComboBox* printerBox() const { return combo1_; }
    QLineEdit* stepBox() const { return stepping_; }
    QSlider* stepSlider() const { return slider_; }
    QToolBar* toolBar() const { return panel_; }

    // Replaces every caption and tool-tip with the message-file texts.
    void applyTexts();
    // Fills the printer box and selects the current printer.
    void fillPrinterBox();
    // Enables the companion-program commands whose programs exist.
    void enableCompanions();
    // Sets the tool bar visible or hidden, with the Tools entry's check mark.
    void setToolBarShown(bool shown);

    // Commands
    void quit();           // restores the saved printer, then shutDown
    bool shutDown();       // false when the user cancelled
    void changePrinter();  // makes the printer box's entry the default printer
    void restoreSheetWindows(); // every sheet window to the normal state
    void arrange(int how); // 0 cascade, 1 tile horizontally, 2 tile vertically
    void stepChanged(const QString& text);
    void showHelp(const QString& page);
    // Starts a companion program without waiting; reports a failure.
    bool startCompanion(const QString& program, const QStringList& args = {});

    // Enables every print command when a printer is installed.
    void updatePrinterAvailability();
    bool printerAvailable() const { return printerAvailable_; }
    // The printer to restore on quitting (the default one at start-up).
    void setSavedPrinter(const QString& name) { savedPrinterName_ = name; }
    // The open sheet windows, first opened first.
    std::vector<SheetWindow*> sheets() const;
    void refresh();

    // Program names of the companion commands, looked up beside the program.
    static QString companionPath(const QString& baseName);

    // Sheet commands (MainWindow_Sheet.cpp)
    void addSimpleSheet();
    void addBookletSheet();
    void addInlaySheet();
    void addDiscSheet();
    // Creates and shows the sheet window of a format. Used by the add
    // commands and the project commands.
    class SheetWindow* createSheet(int code);
    class SheetWindow* activeSheet() const;
    class SheetWindow* sheetOf(int code) const;
    void removeSheet(bool fromButton);  // removesheet (true), Mremove (false)
    void bringSheetToFront(int code);   // FMSimple, FMDouble, FMInside, FMCDROM
    void toggleTextPage();              // SSCommand2
    void connectSheetCommands();

    // Object commands (MainWindow_Insert.cpp)
    void insertText();      // Insertext, SSCommand12
    void insertPicture();   // InsertPic, SSCommand13
    void newBackground();   // Backpic, SSCommand14
    void insertSpineText(); // Txtfold, SSCommand15
    void connectObjectCommands();

    // Clipboard (MainWindow_Edit.cpp)
    void copyObject();   // copySelected, copyobj
    void cutObject();    // clipcut, Cutobj: copy, then delete the object
    void pasteObject();  // Clipaste, Pasteobj
    void connectClipboardCommands();

    // Fields (MainWindow_Fields.cpp)
    void insertCharField();  // FieldCharacter, FDA
    void insertNumField();   // FieldNumeric, FDN
    void updateValueStepCommands();    // Next and Previous of the character-field menu
    void connectFieldCommands();

    // Project commands (MainWindow_File.cpp)
    bool newProject();      // false when the user cancelled the save question
    bool openProject();   // false when nothing was opened
    bool saveProject();       // false when not saved (cancelled or failed)
    bool saveAs();
    bool writeProjectFile();         // writes the project file name; reports a failure
    bool readProjectFile();         // reads the project file (path, else a file dialog)
    void newProjectCommand();             // newsheet, newprj
    void openCommand(bool fromButton);    // Openfile (false), openprj (true)
    // Start-up's last steps: the command-line project, then a new project.
    void startProject(const QString& commandLineProject);
    void setProjectTitle();
    void connectProjectCommands();
    // The new-project dialog; tests give their own answer.
    std::function<NewProjectChoice(QWidget*)> newProjectDialog = &NewProjectDialog::run;

    // Printing (MainWindow_Print.cpp)
    void printCurrentSheet();  // imprime, MPCS
    void printProject();       // IMPPRJ, MPPRJ
    void printSelected();      // PRNSELECT, MFPrnSelect
    void printPreview();       // PRINTPREVIEW, MPPREVIEW: the project's pages on the current printer's paper
    bool isPrinting() const { return printing_; }
    // The print dialogs; tests give their own answers.
    std::function<PrinterChoice(MainWindow*)> copiesDialog;
    std::function<int(QWidget*, int)> sheetSelectionDialog = &SheetSelectionDialog::run;
    std::function<DiscStockChoice(QWidget*, const std::vector<jk::print::DiscStock>&, const QString& preselect)>
        discStockDialog;

    // Export (MainWindow_Export.cpp)
    // Exportshhet: the save dialog, then the active sheet into image files
    // (a paper jacket is not exported).
    void exportCurrentSheet();
    void connectExportCommands();

    // Scanning (MainWindow_Scan.cpp)
    void selectScanSource();  // ScanSel: the scanner the next scan uses
    void connectScanCommands();

    // Companion programs (MainWindow_Companions.cpp)
    void connectCompanionCommands();
    // Capture: minimised while the capture program runs, then the picture
    // dialog on the picture it saved, for a new picture on the active sheet.
    void capture();
    void insertCapturedPicture(const QString& file);

    // Printer calibration (MainWindow_Calibration.cpp)
    void calibratePrinter();  // CALIBRATE: the printer box's printer, else the default one
    void connectCalibrationCommands();
    // The calibration dialog (CalibrationDialog::run); tests give their own.
    std::function<bool(QWidget*, const QString& printer)> calibrationDialog;

protected:
    void closeEvent(QCloseEvent* e) override;
    bool eventFilter(QObject* watched, QEvent* e) override;

private:
    void buildMenus();
    void buildPopups();
    void buildToolBar();
    void connectCommands();
    void connectPrintCommands();
    void runPrint(jk::print::RunKind kind);
    void setPrintCommandsEnabled(bool on);
    QAction* addAction(QMenu* menu, const QString& name, const QString& designCaption);
    QMenu* addMenu(QWidget* parent, const QString& name, const QString& designCaption);
    QToolButton* addButton(const QString& name);
    void addSheet(int code);
    void enableCommand(const char* name, bool on);
    // Project command helpers
    bool askSaveChanges(bool askNameWhenUntitled);
    QString chooseSaveName(const QString& proposed);
    QString chooseOpenName();
    void unloadSheets();
    void hideSheetEntries();
    void enableProjectCommands();

    QMdiArea* mdi_ = nullptr;
    QToolBar* panel_ = nullptr;
    QComboBox* combo1_ = nullptr;
    QLineEdit* stepping_ = nullptr;
    QSlider* slider_ = nullptr;
    QLabel* picture1_ = nullptr;
    jk::Project project_;
    jk::EditorState editor_;
    Actions actions_;
    SheetDialogs dialogs_;
    int chosenSheets_ = 0;       // the sheets of the project: sum of format codes
    bool openExisting_ = false;  // the new-project command may open a file instead
    bool printerAvailable_ = false;
    QString savedPrinterName_;
    bool printing_ = false;
    bool quitting_ = false;
    bool updatingStep_ = false;
};
