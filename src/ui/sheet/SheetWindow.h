#pragma once
// The sheet window: one label sheet of one format, shown at real size inside
// the main window's MDI area. It keeps the main window's commands in step
// with the active sheet; it reaches them by their object names through the
// main window it was made for, so this library needs no link to the app.
#include "render/SheetLayout.h"
#include "render/SheetObjects.h"
#include "render/SheetRenderer.h"
#include "model/Shell.h"
#include <QHash>
#include <QSet>
#include <QWidget>
#include <functional>
#include <optional>
#include <vector>

class QLabel;
class QMdiSubWindow;
class QMenu;

namespace jk::sheet {
// Sets the named commands (actions first, else widgets) of the main window.
void applyCommands(QObject* mainWindow, const CommandTable& t);
// The print-side copy of the composition code, taken when a sheet has set
// itself up; the print-selection dialog reads it to know the project's sheets.
i16& compositionCopy();
}  // namespace jk::sheet

class SheetWindow : public QWidget, public jk::ISheet {
    Q_OBJECT
public:
    // mainWindow: the frame whose commands this sheet keeps in step.
    explicit SheetWindow(QWidget* mainWindow, QWidget* parent = nullptr);
    ~SheetWindow() override;

    // The load step: takes the pending format and caption and sets the sheet
    // up. Call it once the sheet sits in its MDI sub-window.
    void initialise();
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

    // Objects (PictFold_Objects.cpp). The main window sets the hand-over
    // variables first (text destination, page, selection) and calls these
    // on the active sheet.
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
    // Carries out the picture menu's requests (Picedit, PicChg) for the
    // selected picture; the menu entries set the request flags and call it.
    void pictureRequests();
    // Rebuilds the window's objects from the records: stacking in restore
    // order, every shown border as stored.
    void restoreObjects();

    // Clipboard (PictFold_Clipboard.cpp): the program's own, one slot per
    // kind of object. copySelected copies the selected object (false when there
    // is none on this sheet); pasteCopied makes a new object on this sheet
    // from what was copied last. Both set the main window's clipboard
    // commands; enableClipboardCommands and disableClipboardCommands set them for a selection made
    // or cleared, also when no sheet exists.
    bool copySelected();
    bool pasteCopied();
    static void enableClipboardCommands(QObject* mainWindow);
    static void disableClipboardCommands(QObject* mainWindow);
    static jk::sheet::CommandTable clipCopyTable(bool pasteWasEnabled);
    static jk::sheet::CommandTable clipPasteTable();
    static jk::sheet::CommandTable disableClipboardTable();

    // Fields (PictFold_Fields.cpp). The main window sets the field mode
    // (field sub-kind 1 character, 2 numeric) and calls these on the active
    // sheet; the stepping procedures act on the selected field.
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
    // Fits a field to the text it shows once numbering changed it, and
    // repaints the sheets; installed once, by the first field command.
    static void installFieldHook();

    // Presses and releases, in canvas twips; the canvas calls them, tests may.
    void canvasPress(const QPoint& twips, const QPoint& globalPos);
    void canvasRelease();
    void objectPress(jk::sheet::ObjectRef ref, const QPoint& globalPos);
    void objectRelease(jk::sheet::ObjectRef ref);
    // The border style an object shows now (the mark, or the stored one).
    int shownBorder(jk::sheet::ObjectRef ref) const;
    // The canvas's objects back to front as this window shows them.
    std::vector<jk::sheet::ObjectRef> stackingOrder() const;

    // jk::ISheet
    int formatCode() const override { return code_; }
    void setSpineCaption(const QString& text) override;

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
    // The picture dialog that changeBackground shows first; while none is installed,
    // changeBackground applies the chosen-picture-file variable as it stands.
    static std::function<void()> pictureDialog;
    // The text dialog, shown modally. It reads and writes the hand-over
    // variables (pending text, text-accepted flag, spine-text mode, current
    // block, alignment) and writes font and colours into the block's record.
    // While none is installed, the procedures take the pending text as it
    // stands.
    static std::function<void()> textDialog;
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
    QObject* command(const QString& name) const;
    bool isActiveSheet() const;
    bool createTextBlock(bool textPage);
    bool refuseWhenFull(bool full, const QString& what, int capacity);
    std::optional<jk::sheet::ObjectRef> selectedObject(bool forStacking) const;
    void nudge(int dLeft, int dTop, int dWidth, int dHeight);
    void restack(bool toFront);
    void forget(jk::sheet::ObjectRef ref);
    void popUp(const char* menuName, const QPoint& globalPos);

    QWidget* main_ = nullptr;
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
