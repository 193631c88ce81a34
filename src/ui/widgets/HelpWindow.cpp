#include "ui/widgets/HelpWindow.h"
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QPointer>
#include <QTextBrowser>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

QPointer<HelpWindow> g_shared;

QUrl pageUrl(const QString& page)
{
    const QUrl url(page);
    if (url.isValid() && !url.scheme().isEmpty() && url.scheme().size() > 1) return url;
    // A plain path (a one-letter "scheme" would be a Windows drive).
    return QUrl::fromLocalFile(QFileInfo(page).absoluteFilePath());
}

bool isLocalPage(const QUrl& url)
{
    if (!url.isLocalFile() && url.scheme() != QLatin1String("qrc")) return false;
    const QString suffix = QFileInfo(url.path()).suffix().toLower();
    return suffix == QLatin1String("html") || suffix == QLatin1String("htm") || suffix.isEmpty();
}

}  // namespace

HelpWindow::HelpWindow(QWidget* parent) : QWidget(parent, Qt::Window)
{
    setObjectName(QStringLiteral("HelpWindow"));
    setWindowTitle(tr("Help"));
    resize(640, 560);
    // An open help window must not keep the program running after the main
    // window has gone.
    setAttribute(Qt::WA_QuitOnClose, false);

    auto makeButton = [this](const char* name, const QString& text) {
        auto* b = new QToolButton(this);
        b->setObjectName(QLatin1String(name));
        b->setText(text);
        b->setToolButtonStyle(Qt::ToolButtonTextOnly);
        return b;
    };
    back_ = makeButton("helpBack", tr("&Back"));
    forward_ = makeButton("helpForward", tr("&Forward"));
    homeButton_ = makeButton("helpHome", tr("&Home"));
    contents_ = makeButton("helpContents", tr("&Contents"));
    back_->setEnabled(false);
    forward_->setEnabled(false);

    browser_ = new QTextBrowser(this);
    browser_->setObjectName(QStringLiteral("helpBrowser"));
    // Links are dispatched here: local pages stay in the window, the rest
    // goes to the desktop.
    browser_->setOpenLinks(false);
    browser_->setOpenExternalLinks(false);

    auto* bar = new QHBoxLayout;
    bar->addWidget(back_);
    bar->addWidget(forward_);
    bar->addWidget(homeButton_);
    bar->addWidget(contents_);
    bar->addStretch(1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addLayout(bar);
    layout->addWidget(browser_, 1);

    connect(back_, &QToolButton::clicked, browser_, &QTextBrowser::backward);
    connect(forward_, &QToolButton::clicked, browser_, &QTextBrowser::forward);
    connect(homeButton_, &QToolButton::clicked, this, [this] {
        if (home_.isValid()) browser_->setSource(home_);
    });
    connect(contents_, &QToolButton::clicked, this, [this] {
        const QUrl url = contentsUrl();
        if (url.isValid()) browser_->setSource(url);
    });
    connect(browser_, &QTextBrowser::backwardAvailable, back_, &QWidget::setEnabled);
    connect(browser_, &QTextBrowser::forwardAvailable, forward_, &QWidget::setEnabled);
    connect(browser_, &QTextBrowser::anchorClicked, this, &HelpWindow::followLink);
    connect(browser_, &QTextBrowser::sourceChanged, this, &HelpWindow::updateTitle);
}

void HelpWindow::showPage(const QString& page)
{
    home_ = pageUrl(page);
    browser_->setSource(home_);
    updateTitle();
}

QUrl HelpWindow::contentsUrl() const
{
    if (!home_.isLocalFile()) return home_;
    const QFileInfo index(QFileInfo(home_.toLocalFile()).dir(), QStringLiteral("index.html"));
    return index.exists() ? QUrl::fromLocalFile(index.absoluteFilePath()) : home_;
}

void HelpWindow::followLink(const QUrl& link)
{
    const QUrl url = browser_->source().resolved(link);
    if (isLocalPage(url)) {
        browser_->setSource(url);
        return;
    }
    // Web pages, mail and non-HTML files belong to the desktop's programs.
    QDesktopServices::openUrl(url);
}

void HelpWindow::updateTitle()
{
    const QString title = browser_->documentTitle().trimmed();
    setWindowTitle(title.isEmpty() ? tr("Help") : title);
}

HelpWindow* HelpWindow::shared()
{
    if (!g_shared) g_shared = new HelpWindow;
    return g_shared;
}

HelpWindow* HelpWindow::showShared(const QString& page)
{
    HelpWindow* w = shared();
    w->showPage(page);
    w->show();
    w->raise();
    w->activateWindow();
    return w;
}

bool HelpWindow::hasShared() { return !g_shared.isNull(); }

void HelpWindow::closeShared()
{
    if (!g_shared) return;
    HelpWindow* w = g_shared;
    g_shared = nullptr;
    w->close();
    delete w;
}
