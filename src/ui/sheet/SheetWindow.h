#pragma once
// The sheet window: one label sheet of one format, shown at real size inside
// the main window's MDI area. It shows the project's records of its format
// and changes them through the project's API; it keeps the main window's
// commands in step with the active sheet through the command tables.
#include "model/EditorState.h"
#include "ui/dialogs/FieldDialog.h"
#include "ui/dialogs/PictureDialog.h"
#include "ui/dialogs/TextBlockDialog.h"
#include "model/Project.h"
#include "render/SheetLayout.h"
#include "render/SheetObjects.h"
#include "render/SheetRenderer.h"
#include <QHash>
#include <QSet>
#include <QWidget>
#include <functional>
#include <optional>
#include <vector>

class QLabel;
class QMdiSubWindow;
class QMenu;

class Actions;

// The dialogs a sheet asks for values. The main window gives the real ones;
// tests give their own answers.
struct SheetDialogs {
    std::function<TextEditResult(QWidget*, const TextEditRequest&)> editText = &TextBlockDialog::edit;
    std::function<std::optional<PictureChoice>(QWidget*, PicturePurpose)> choosePicture = &PictureDialog::choose;
    std::function<FieldEditResult(QWidget*, const jk::CharFieldRecord&)> editCharField = &FieldDialog::editCharField;
    std::function<FieldEditResult(QWidget*, const jk::NumFieldRecord&)> editNumField = &FieldDialog::editNumField;
};

class SheetWindow : public QWidget {
    Q_OBJECT
public:
    // actions: the main window's commands this sheet keeps in step.
    SheetWindow(Actions& actions, SheetDialogs& dialogs, jk::Project& project, jk::EditorState& editor,
                QWidget* parent = nullptr);
    ~SheetWindow() override;

    // The load step: sets the sheet up as the format's sheet with that
    // caption (empty: the format's name). Call it once the sheet sits in
    // its MDI sub-window.
    void initialise(int code, const QString& caption = {});
    // The sheet became the active one.
    void activated();
    // The sheet was resized while active.
    void resized();

    // Public procedures, called on the active sheet by the main window.
    void updateToolButtons();
    void updateFormatCommands();
    void updateAddSheetCommands();
    void unloadSheet();
    void togglePage();
    void toggleSpines();
    void togglePictureMode();
    void toggleDiscPreview();
    void repaintLeftSpine();
    void repaintRightSpine();
    void changeBackground();

    // Objects (SheetWindow_Objects.cpp), called on the active sheet.
    void insertTextBlock();   // new free text block through the text dialog
    void insertPageTextBlock();   // new block of the text page
    void insertPictureObject();   // new picture through the picture dialog
    void editObject();  // the selected text block through the text dialog
    void deleteObject();   // deletes the selected text block, field or picture
    void deletePicture();   // deletes the selected picture
    void editSpineText(); // asks for the spine text
    void deselectObjects();
    void stepLeft();
    void stepRight();
    void stepUp();
    void stepDown();
    void bringToFront();
    void sendToBack();
    // The picture menu: the selected picture in the picture editor, or
    // another file in its place through the picture dialog.
    void editPictureExternally();
    void changePicture();
    // Rebuilds the window's objects from the records: stacking in restore
    // order, every shown border as stored.
    void restoreObjects();

    // Clipboard (SheetWindow_Clipboard.cpp): the program's own, one slot per
    // kind of object. copySelected copies the selected object (false when there
    // is none on this sheet); pasteCopied makes a new object on this sheet
    // from what was copied last. Both set the main window's clipboard
    // commands; disableClipboardCommands sets them for a selection cleared,
    // also when no sheet exists.
    bool copySelected();
    bool pasteCopied();
    static void disableClipboardCommands(Actions& actions, jk::EditorState& editor);
    static jk::sheet::CommandTable clipCopyTable(bool pasteWasEnabled);
    static jk::sheet::CommandTable clipPasteTable();
    static jk::sheet::CommandTable disableClipboardTable();

    // Fields (SheetWindow_Fields.cpp); the stepping procedures act on the
    // selected field.
    void insertCharField();       // new character field through the field dialog
    void insertNumField();        // new numeric field through the field dialog
    void editField();      // the selected field through the field dialog
    void deleteField();       // deletes the selected field
    void stepNumberForward();         // next number, in every open sheet
    void stepNumberBack();        // previous number, never below 0
    void resetNumbers();         // back to 1
    void nextValue();          // next value of the character field's file
    void previousValue();       // previous value
    void updateValueMenu();  // enables Next and Previous of the character field's menu
    void advanceFields();         // advances this sheet's fields by one label

    // Presses and releases, in canvas twips; the canvas calls them, tests may.
    void canvasPress(const QPoint& twips, const QPoint& globalPos);
    void canvasRelease();
    void objectPress(jk::sheet::ObjectRef ref, const QPoint& globalPos);
    void objectRelease(jk::sheet::ObjectRef ref);
    // The border style an object shows now (the mark, or the stored one).
    int shownBorder(jk::sheet::ObjectRef ref) const;
    // The canvas's objects back to front as this window shows them.
    std::vector<jk::sheet::ObjectRef> stackingOrder() const;

    int formatCode() const { return code_; }
    jk::Project& project() const { return project_; }

    // What the drawing path needs of this window's display state.
    jk::sheet::RenderOptions renderOptions() const;
    bool pictureVisible(int slot) const { return !hiddenPictures_.contains(slot); }
    bool textPageShown() const;
    bool spinesShown() const;
    bool previewShown() const;
    QString spineCaption() const { return spineCaption_; }
    QWidget* canvas() const { return canvas_; }
    QMdiSubWindow* frameWindow() const;
    QSize sizeHint() const override;

    // The answer to a close request from the sub-window's frame: false keeps
    // the sheet open. The main window sets it while it closes sheets itself.
    static bool mayClose;
    // Shows an object's pop-up menu; by default QMenu::popup, which does not
    // block. Tests install their own to see which menu comes up.
    static std::function<void(QMenu* menu, const QPoint& globalPos)> showPopup;

protected:
    void closeEvent(QCloseEvent* e) override;
    void resizeEvent(QResizeEvent* e) override;
    void mousePressEvent(QMouseEvent* e) override;

private:
    void setUp(int code);
    void trimSystemMenu();
    void closingBookkeeping();
    void apply(const jk::sheet::CommandTable& t);
    bool isActiveSheet() const;
    void setSpineCaption(const QString& text);
    // Fits a field to the text it shows once numbering changed it.
    void fieldShownChanged(jk::ObjectRef ref);
    int selectedField(bool chars) const;
    bool createTextBlock(bool textPage);
    bool refuseWhenFull(bool full, const QString& what, int capacity);
    std::optional<jk::sheet::ObjectRef> selectedObject(bool forStacking) const;
    void nudge(int dLeft, int dTop, int dWidth, int dHeight);
    void restack(bool toFront);
    void forget(jk::sheet::ObjectRef ref);
    void popUp(const char* menuName, const QPoint& globalPos);

    Actions& actions_;
    SheetDialogs& dialogs_;
    jk::Project& project_;
    jk::EditorState& editor_;
    jk::Selection& sel_;
    int code_ = 0;
    bool loaded_ = false;
    QWidget* canvas_ = nullptr;   // CSPicture1
    QWidget* folder1_ = nullptr;  // left spine
    QWidget* folder2_ = nullptr;  // right spine
    QWidget* pictext_ = nullptr;  // text page
    QLabel* cdpic_ = nullptr;     // disc preview surface
    QSet<int> hiddenPictures_;
    QString spineCaption_;
    std::vector<jk::sheet::ObjectRef> stacking_;      // canvas objects, back to front
    std::vector<jk::sheet::ObjectRef> pageStacking_;  // text-page blocks, back to front
    QHash<jk::sheet::ObjectRef, int> shownBorder_;   // borders shown instead of the stored ones
    std::optional<jk::sheet::ObjectRef> markedRef_;   // the object the marked flag is about
    std::optional<jk::sheet::ObjectRef> pressed_;     // the object that gets the release
};
