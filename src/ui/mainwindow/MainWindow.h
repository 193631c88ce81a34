#pragma once
// The application frame: menus, tool bar, printer box, nudge-step controls and
// the area that holds the sheet windows.
#include "model/Shell.h"
#include <QHash>
#include <QMainWindow>
#include <functional>

class QAction;
class QComboBox;
class QLabel;
class QLineEdit;
class QMdiArea;
class QMenu;
class QSlider;
class QToolBar;
class QToolButton;

class MainWindow : public QMainWindow, public jk::IShell {
    Q_OBJECT
public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

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
    void startCompanion(const QString& program, bool wait);

    // IShell
    void setPrintCommandsEnabled(bool enabled) override;
    std::vector<jk::ISheet*> sheets() const override;
    void refresh() override;  // Rafraichir

    // Program names of the companion commands, looked up beside the program.
    static QString companionPath(const QString& baseName);

    // Sheet commands (src/sheet/MDIForm1_Sheets.cpp)
    void addSimpleSheet();
    void addBookletSheet();
    void addInlaySheet();
    void addDiscSheet();
    // Creates and shows the sheet window of a format; its caption is the
    // pending sheet caption. Used by the add commands and the project commands.
    class SheetWindow* createSheet(int code);
    class SheetWindow* activeSheet() const;
    class SheetWindow* sheetOf(int code) const;
    void removeSheet(bool fromButton);  // removesheet (true), Mremove (false)
    void bringSheetToFront(int code);   // FMSimple, FMDouble, FMInside, FMCDROM
    void toggleTextPage();              // SSCommand2
    void connectSheetCommands();

    // Object commands (src/sheet/MDIForm1_Objects.cpp)
    void insertText();      // Insertext, SSCommand12
    void insertPicture();   // InsertPic, SSCommand13
    void newBackground();   // Backpic, SSCommand14
    void insertSpineText(); // Txtfold, SSCommand15
    void connectObjectCommands();

    // Clipboard (src/sheet/MDIForm1_Clipboard.cpp)
    void copyObject();   // copySelected, copyobj
    void cutObject();    // clipcut, Cutobj: copy, then delete the object
    void pasteObject();  // Clipaste, Pasteobj
    void connectClipboardCommands();

    // Fields (src/sheet/MDIForm1_Fields.cpp)
    void insertCharField();  // FieldCharacter, FDA
    void insertNumField();   // FieldNumeric, FDN
    void updateValueStepCommands();    // Next and Previous of the character-field menu
    void connectFieldCommands();

    // Project commands (src/project/MDIForm1_Project.cpp)
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
    // The new-project dialog; returns NewProjectDialog's result. Tests replace it.
    static std::function<int(QWidget*)> newProjectDialog;

protected:
    void closeEvent(QCloseEvent* e) override;
    bool eventFilter(QObject* watched, QEvent* e) override;

private:
    void buildMenus();
    void buildPopups();
    void buildToolBar();
    void connectCommands();
    QAction* addAction(QMenu* menu, const QString& name, const QString& designCaption);
    QMenu* addMenu(QWidget* parent, const QString& name, const QString& designCaption);
    QToolButton* addButton(const QString& name);
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
    QHash<QString, QAction*> actions_;
    QHash<QString, QMenu*> popups_;
    QHash<QString, QToolButton*> buttons_;
    bool quitting_ = false;
    bool updatingStep_ = false;
};
