#pragma once
// The seam between the program and the operating system. Every OS service the
// program uses has one small interface here, a real implementation
// (RealServices) and a scripted fake (FakeServices) that GUI tests install.
// This header needs only QtCore/QtGui, so widget-free code may call it.
#include <QColor>
#include <QDateTime>
#include <QFont>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <optional>

namespace jk::platform {

enum class Icon { None, Information, Warning, Critical, Question };
enum class Buttons { Ok, OkCancel, YesNo, YesNoCancel, RetryCancel };
// Answers, with the numbers the original message boxes returned.
enum Answer { AnswerOk = 1, AnswerCancel = 2, AnswerRetry = 4, AnswerYes = 6, AnswerNo = 7 };

class IMessageBox {
public:
    virtual ~IMessageBox() = default;
    // defaultAnswer 0 = the box's usual default.
    virtual int show(const QString& text, const QString& title, Icon icon,
                     Buttons buttons = Buttons::Ok, int defaultAnswer = 0) = 0;
    virtual void about(const QString& title, const QString& text) = 0;
};

class IFileDialogs {
public:
    virtual ~IFileDialogs() = default;
    // An empty result means cancelled.
    virtual QString openFile(const QString& title, const QString& folder, const QString& filter) = 0;
    virtual QString saveFile(const QString& title, const QString& folder, const QString& filter,
                             const QString& defaultSuffix) = 0;
};

class IFontDialog {
public:
    virtual ~IFontDialog() = default;
    virtual std::optional<QFont> chooseFont(const QFont& initial, const QString& title) = 0;
};

class IColorDialog {
public:
    virtual ~IColorDialog() = default;
    virtual std::optional<QColor> chooseColor(const QColor& initial, const QString& title) = 0;
};

class IInputBox {
public:
    virtual ~IInputBox() = default;
    virtual std::optional<QString> getText(const QString& prompt, const QString& title,
                                           const QString& initial) = 0;
};

class IClock {
public:
    virtual ~IClock() = default;
    virtual QDateTime now() = 0;
    // Waits ms milliseconds while the event loop keeps running.
    virtual void pause(int ms) = 0;
};

class IPrinters {
public:
    virtual ~IPrinters() = default;
    // Installed printers in the system's order.
    virtual QStringList printers() = 0;
    // The user's default (current) printer; empty when none.
    virtual QString defaultPrinter() = 0;
    // Makes name the user's default destination. False with a reason on failure.
    virtual bool setDefaultPrinter(const QString& name, QString* error) = 0;
};

class IPrograms {
public:
    virtual ~IPrograms() = default;
    virtual bool exists(const QString& program) = 0;
    // Starts a program detached. False with a reason when it cannot start.
    virtual bool start(const QString& program, const QStringList& args, QString* error) = 0;
    // Starts a program and waits (event loop running) until it ends.
    virtual bool runAndWait(const QString& program, const QStringList& args, QString* error) = 0;
};

class IDesktop {
public:
    virtual ~IDesktop() = default;
    virtual bool openUrl(const QUrl& url) = 0;
};

class IHelp {
public:
    virtual ~IHelp() = default;
    // Shows an HTML help page in the program's own help window.
    virtual void show(const QString& page) = 0;
    virtual void quit() = 0;
};

struct Services {
    IMessageBox* messages = nullptr;
    IFileDialogs* files = nullptr;
    IFontDialog* fonts = nullptr;
    IColorDialog* colors = nullptr;
    IInputBox* input = nullptr;
    IClock* clock = nullptr;
    IPrinters* printers = nullptr;
    IPrograms* programs = nullptr;
    IDesktop* desktop = nullptr;
    IHelp* help = nullptr;
};

// The installed services; install() replaces them (tests install fakes).
Services& services();
void install(const Services& s);

}  // namespace jk::platform
