#pragma once
// Taking a picture of the screen. Where the desktop runs the screenshot
// portal (org.freedesktop.portal.Screenshot over D-Bus) the picture comes
// from it: that works on Wayland and X11 alike and asks the user's leave
// where the desktop wants that. Without a portal, on X11, the screens are
// read directly.
#include <QDBusConnection>
#include <QImage>
#include <QList>
#include <QObject>
#include <QRect>
#include <QString>
#include <QVariantMap>

namespace jk::snap {

class PortalScreenshot : public QObject {
    Q_OBJECT
public:
    explicit PortalScreenshot(const QDBusConnection& bus, QObject* parent = nullptr);

    // True when the bus has the portal running or can start it.
    static bool available(const QDBusConnection& bus);

    // Asks for one picture; exactly one of the signals follows. interactive:
    // the desktop lets the user choose what to take (a window, say).
    // parentWindow: "x11:<hex id>" or empty.
    void request(bool interactive, const QString& parentWindow = {});

Q_SIGNALS:
    void taken(const QImage& picture);
    void cancelled();
    void failed(const QString& why);

private Q_SLOTS:
    void onResponse(uint response, const QVariantMap& results);

private:
    void listen(const QString& path);
    void finish();

    QDBusConnection bus_;
    QString requestPath_;
};

// The whole desktop, every screen in one picture, read from the X11
// display; a null picture with the reason elsewhere.
bool canReadScreens();
QImage grabDesktop(QString* error);

// The visible top-level windows of the X11 display, topmost first, in the
// desktop's pixels (the picture grabDesktop gives); empty elsewhere.
QList<QRect> desktopWindows();

}  // namespace jk::snap
