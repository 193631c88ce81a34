#pragma once
// The sheet window: one label sheet of one format, shown at real size inside
// the main window's MDI area. It keeps the main window's commands in step
// with the active sheet; it reaches them by their object names through the
// main window it was made for, so this library needs no link to the app.
#include "sheet/SheetLayout.h"
#include "sheet/SheetRenderer.h"
#include "state/Shell.h"
#include <QSet>
#include <QWidget>
#include <functional>

class QLabel;
class QMdiSubWindow;

namespace jk::sheet {
// Sets the named commands (actions first, else widgets) of the main window.
void applyCommands(QObject* mainWindow, const CommandTable& t);
// The print-side copy of the composition code, taken when a sheet has set
// itself up; the print-selection dialog reads it to know the project's sheets.
i16& compositionCopy();
}  // namespace jk::sheet

class PictFold : public QWidget, public jk::ISheet {
    Q_OBJECT
public:
    // mainWindow: the frame whose commands this sheet keeps in step.
    explicit PictFold(QWidget* mainWindow, QWidget* parent = nullptr);
    ~PictFold() override;

    // The load step: takes the pending format and caption and sets the sheet
    // up. Call it once the sheet sits in its MDI sub-window.
    void Form_Load();
    // The sheet became the active one.
    void Form_Activate();
    // The sheet was resized while active.
    void Form_Resize();

    // Public procedures, called on the active sheet by the main window.
    void boutons();
    void winres();
    void Control_Box();
    void Deload();
    void Choisir();
    void SPMode();
    void CHGMODE();
    void PrevCD();
    void UpdatePic();
    void UpdatePic1();
    void CHGBACK();

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
    // The picture dialog that CHGBACK shows first; while none is installed,
    // CHGBACK applies the chosen-picture-file variable as it stands.
    static std::function<void()> pictureDialog;

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
};
