#pragma once
// The GUI tests' fixture: the scripted fake seam installed, a clean
// application context and a main window whose sheets ask scripted dialogs.
#include "Fixture.h"
#include "platform/FakeServices.h"
#include "render/SheetRenderer.h"
#include "ui/mainwindow/MainWindow.h"
#include "ui/widgets/DriveFolderFile.h"
#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QtTest>
#include <QTimer>
#include <QToolButton>
#include <deque>
#include <functional>
#include <memory>

namespace fixture {

// Answers the sheets' dialogs from queues; an empty queue answers Cancel.
// Every request is kept, so tests can see what the dialog was given.
struct ScriptedDialogs {
    std::deque<TextEditResult> texts;
    std::deque<std::optional<PictureChoice>> pictures;
    std::deque<FieldEditResult> fields;
    QList<TextEditRequest> textRequests;
    QList<PicturePurpose> pictureRequests;
    int fieldRequests = 0;

    void install(SheetDialogs& d)
    {
        d.editText = [this](QWidget*, const TextEditRequest& r) {
            textRequests.append(r);
            TextEditResult res;
            res.style = r.style;
            res.spineFont = r.spineFont;
            if (!texts.empty()) {
                res = texts.front();
                texts.pop_front();
            }
            return res;
        };
        d.choosePicture = [this](QWidget*, PicturePurpose p) {
            pictureRequests.append(p);
            std::optional<PictureChoice> c;
            if (!pictures.empty()) {
                c = pictures.front();
                pictures.pop_front();
            }
            return c;
        };
        auto field = [this] {
            ++fieldRequests;
            FieldEditResult res;
            if (!fields.empty()) {
                res = fields.front();
                fields.pop_front();
            }
            return res;
        };
        d.editCharField = [field](QWidget*, const jk::CharFieldRecord&) { return field(); };
        d.editNumField = [field](QWidget*, const jk::NumFieldRecord&) { return field(); };
    }
};

// An accepted text-dialog answer with the text in the default formatting.
inline TextEditResult textOk(const QString& text)
{
    TextEditResult r;
    r.accepted = true;
    r.text = text;
    return r;
}

struct Gui {
    std::unique_ptr<FakeServices> fake = std::make_unique<FakeServices>();
    std::unique_ptr<MainWindow> w;
    ScriptedDialogs dialogs;

    Gui()
    {
        resetApp();
        jk::sheet::clearPictureCache();
        fake->install();
        w = std::make_unique<MainWindow>();
        dialogs.install(w->dialogs());
    }
    jk::Project& project() { return w->project(); }
    bool enabled(const char* name) const { return w->actions().isEnabled(QString::fromLatin1(name)); }
    // The sheet as the window shows it, at 96 dpi.
    QImage shot(SheetWindow* s) const
    {
        return jk::sheet::renderImage(s->project(), s->formatCode(), jk::sheet::kScreenDpi, s->renderOptions());
    }
};

// A named control of a window; a missing one stops the test at once.
template <class T = QWidget>
T* child(const QObject* window, const char* name)
{
    T* w = window->findChild<T*>(QString::fromLatin1(name));
    if (!w) qFatal("no control %s", name);
    return w;
}

// Runs the script on the modal dialog of class D once it is up. A dialog the
// script leaves open is rejected, so a failing script cannot hang the test.
template <class D>
void whenModal(std::function<void(D*)> script)
{
    QTimer::singleShot(0, [script] {
        auto* d = qobject_cast<D*>(QApplication::activeModalWidget());
        if (!d) return;
        script(d);
        if (d->isVisible()) static_cast<QDialog*>(d)->reject();
    });
}

// Clicks a file of a file list where the user would; twice: a double click
// (which arrives as a click and a second, double press).
inline bool clickFile(FileList* list, const QString& name, bool twice = false)
{
    const QList<QListWidgetItem*> items = list->findItems(name, Qt::MatchExactly);
    if (items.size() != 1) return false;
    const QPoint at = list->visualItemRect(items.first()).center();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, at);
    if (twice) QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, at);
    return true;
}

// Presses the named buttons in turn ("Escape": that key on the window).
inline void clickAll(QWidget* window, const QString& names)
{
    for (const QString& name : names.split(u' ', Qt::SkipEmptyParts)) {
        if (name == u"Escape") QTest::keyClick(window, Qt::Key_Escape);
        else child<QAbstractButton>(window, qPrintable(name))->click();
    }
}

// One dialog tested on its own: the scripted seam, clean texts, and the
// dialog, made afresh by open(). The dialog goes before the seam.
template <class D>
struct Dialog {
    std::unique_ptr<FakeServices> fake = std::make_unique<FakeServices>();
    std::unique_ptr<D> dialog;

    Dialog()
    {
        resetApp();
        fake->install();
    }
    template <class... Args>
    D* open(Args&&... args)
    {
        dialog = std::make_unique<D>(std::forward<Args>(args)...);
        dialog->show();
        if (!QTest::qWaitForWindowExposed(dialog.get())) qWarning("the dialog was not exposed");
        return dialog.get();
    }
    QWidget* control(const char* name) const { return child(dialog.get(), name); }
    // A click in the middle of the control.
    void click(const char* name) const { QTest::mouseClick(control(name), Qt::LeftButton); }
};

}  // namespace fixture

// ---- Sheets and their objects: the sheet-window tests' helpers.
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>

namespace fixture {

// The main window on screen, large enough for every sheet.
inline void show(Gui& gui)
{
    gui.w->resize(1200, 900);
    gui.w->show();
}

// Makes the sheet of that format the active one, as a click on it does.
inline SheetWindow* activate(Gui& gui, int code)
{
    SheetWindow* s = gui.w->sheetOf(code);
    if (s) gui.w->mdiArea()->setActiveSubWindow(s->frameWindow());
    return s;
}

// A left click on a sheet's canvas, at a point in twips.
inline void click(SheetWindow* s, QPoint twips) { QTest::mouseClick(s->canvas(), Qt::LeftButton, {}, px(twips)); }

// Records the object pop-ups instead of showing them: a menu on screen
// would take the next click.
struct Popups {
    QStringList shown;
    Popups() { SheetWindow::showPopup = [this](QMenu* m, const QPoint&) { shown << m->objectName(); }; }
    ~Popups() { SheetWindow::showPopup = nullptr; }
    Popups(const Popups&) = delete;
    Popups& operator=(const Popups&) = delete;
};

// The fixture of the sheet tests: the main window on screen, pop-ups recorded.
struct SheetGui : Gui {
    Popups popups;
    SheetGui() { show(*this); }
};

// A picture file of one colour.
inline QString pictureFile(const QString& path, QSize size, const QColor& colour)
{
    QImage img(size, QImage::Format_RGB32);
    img.fill(colour);
    img.save(path);
    return path;
}

// Records as a project file gives them: Arial 10 at a place in twips.
inline jk::TextStyle styleAt(QRect twips)
{
    jk::TextStyle s;
    s.fontName = QStringLiteral("Arial");
    s.fontSize = 10;
    s.left = jk::i16(twips.left());
    s.top = jk::i16(twips.top());
    s.width = jk::i16(twips.width());
    s.height = jk::i16(twips.height());
    return s;
}
inline jk::TextRecord textAt(int sheet, const QString& text, QRect twips) { return {jk::i16(sheet), text, styleAt(twips)}; }
inline jk::PictureRecord pictureAt(int sheet, const QString& file, QRect twips)
{
    return {jk::i16(sheet), file, jk::i16(twips.top()), jk::i16(twips.left()), jk::i16(twips.width()),
            jk::i16(twips.height()), 1};
}
inline jk::CharFieldRecord charAt(int sheet, const QString& valueFile, const QString& shown, QRect twips)
{
    return {jk::i16(sheet), valueFile, shown, styleAt(twips)};
}
inline jk::NumFieldRecord numAt(int sheet, int digits, int number, bool spineLink, QRect twips)
{
    return {jk::i16(sheet), jk::i16(digits), jk::i16(number), spineLink, styleAt(twips)};
}

}  // namespace fixture
