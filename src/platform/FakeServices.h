#pragma once
// Scripted stand-ins for every OS service, for tests: each service answers
// from a queue the test fills and records every call it gets. An empty
// queue gives the answer a user dismissing the dialog would give.
#include "platform/Services.h"
#include <QList>
#include <QSet>
#include <deque>

class FakeServices {
public:
    struct Messages final : jk::platform::IMessageBox {
        struct Call {
            QString text;
            QString title;
            jk::platform::Icon icon = jk::platform::Icon::None;
            jk::platform::Buttons buttons = jk::platform::Buttons::Ok;
            int defaultAnswer = 0;
            int answer = 0;
        };
        std::deque<int> answers;
        QList<Call> calls;
        QString aboutTitle;
        QString aboutText;
        int aboutCalls = 0;

        int show(const QString& text, const QString& title, jk::platform::Icon icon,
                 jk::platform::Buttons buttons, int defaultAnswer) override;
        void about(const QString& title, const QString& text) override;
    };

    struct Files final : jk::platform::IFileDialogs {
        struct Call {
            QString title;
            QString folder;
            QString filter;
            QString defaultSuffix;
        };
        std::deque<QString> openAnswers;
        std::deque<QString> saveAnswers;
        QList<Call> openCalls;
        QList<Call> saveCalls;

        QString openFile(const QString& title, const QString& folder, const QString& filter) override;
        // The default suffix is added to a scripted name without one, as the
        // real dialog does.
        QString saveFile(const QString& title, const QString& folder, const QString& filter,
                         const QString& defaultSuffix) override;
    };

    struct Fonts final : jk::platform::IFontDialog {
        struct Call {
            QFont initial;
            QString title;
        };
        std::deque<std::optional<QFont>> answers;
        QList<Call> calls;

        std::optional<QFont> chooseFont(const QFont& initial, const QString& title) override;
    };

    struct Colors final : jk::platform::IColorDialog {
        struct Call {
            QColor initial;
            QString title;
        };
        std::deque<std::optional<QColor>> answers;
        QList<Call> calls;

        std::optional<QColor> chooseColor(const QColor& initial, const QString& title) override;
    };

    struct Input final : jk::platform::IInputBox {
        struct Call {
            QString prompt;
            QString title;
            QString initial;
        };
        std::deque<std::optional<QString>> answers;
        QList<Call> calls;

        std::optional<QString> getText(const QString& prompt, const QString& title,
                                       const QString& initial) override;
    };

    // Time stands still until a pause moves it on, at once.
    struct Clock final : jk::platform::IClock {
        QDateTime current{QDate(2024, 3, 1), QTime(10, 0)};
        qint64 pausedMs = 0;
        QList<int> pauses;

        void setNow(const QDateTime& t) { current = t; }
        QDateTime now() override { return current; }
        // Advances the clock and lets queued events run once.
        void pause(int ms) override;
    };

    struct Printers final : jk::platform::IPrinters {
        QStringList list;
        QString defaultName;
        QStringList setCalls;  // every name asked for, successful or not
        bool failSet = false;
        QString failError = QStringLiteral("The default printer could not be saved.");

        QStringList printers() override { return list; }
        QString defaultPrinter() override { return defaultName; }
        // Fails, like the real one, for a name not in the list.
        bool setDefaultPrinter(const QString& name, QString* error) override;
    };

    struct Programs final : jk::platform::IPrograms {
        struct Call {
            QString program;
            QStringList args;
            bool waited = false;
            bool ok = false;
        };
        QSet<QString> existing;
        QStringList started;  // programs that did start, in order
        QList<Call> calls;    // every start and run, successful or not
        bool failStart = false;
        QString failError = QStringLiteral("The program could not be started.");

        bool exists(const QString& program) override { return existing.contains(program); }
        // Starts only programs in existing, unless failStart.
        bool start(const QString& program, const QStringList& args, QString* error) override;
        bool runAndWait(const QString& program, const QStringList& args, QString* error) override;

    private:
        bool launch(const QString& program, const QStringList& args, bool wait, QString* error);
    };

    struct Desktop final : jk::platform::IDesktop {
        QList<QUrl> urls;
        bool result = true;

        bool openUrl(const QUrl& url) override
        {
            urls.append(url);
            return result;
        }
    };

    struct Help final : jk::platform::IHelp {
        QStringList pages;
        int quitCalls = 0;

        void show(const QString& page) override { pages.append(page); }
        void quit() override { ++quitCalls; }
    };

    FakeServices() = default;
    ~FakeServices();
    FakeServices(const FakeServices&) = delete;
    FakeServices& operator=(const FakeServices&) = delete;

    Messages messages;
    Files files;
    Fonts fonts;
    Colors colors;
    Input input;
    Clock clock;
    Printers printers;
    Programs programs;
    Desktop desktop;
    Help help;

    jk::platform::Services services();
    void install();
};
