#pragma once
// The GUI tests' fixture: the scripted fake seam installed, a clean
// application context and a main window whose sheets ask scripted dialogs.
#include "Fixture.h"
#include "platform/FakeServices.h"
#include "render/SheetRenderer.h"
#include "ui/mainwindow/MainWindow.h"
#include <QAction>
#include <QToolButton>
#include <deque>
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

}  // namespace fixture
