#pragma once
// The program's help window: HTML pages from the help folder in a text
// browser with the usual Back / Forward / Home / Contents buttons. Links
// between local pages are followed here; web links go to the desktop's
// browser.
#include <QUrl>
#include <QWidget>

class QTextBrowser;
class QToolButton;

class HelpWindow : public QWidget {
    Q_OBJECT
public:
    explicit HelpWindow(QWidget* parent = nullptr);

    // Opens a local page (file path or URL); it becomes the Home page.
    void showPage(const QString& page);
    QTextBrowser* browser() const { return browser_; }
    QUrl homeUrl() const { return home_; }
    // index.html of the help folder the Home page is in (the Home page
    // itself when there is none).
    QUrl contentsUrl() const;

    // The one help window the program uses: made on first use, raised on
    // every later page.
    static HelpWindow* shared();
    static HelpWindow* showShared(const QString& page);
    static bool hasShared();
    static void closeShared();

private:
    void followLink(const QUrl& url);
    void updateTitle();

    QTextBrowser* browser_ = nullptr;
    QToolButton* back_ = nullptr;
    QToolButton* forward_ = nullptr;
    QToolButton* homeButton_ = nullptr;
    QToolButton* contents_ = nullptr;
    QUrl home_;
};
