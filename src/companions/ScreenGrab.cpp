#include "companions/ScreenGrab.h"
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QGuiApplication>
#include <QPainter>
#include <QPixmap>
#include <QRandomGenerator>
#include <QScreen>
#include <QUrl>
#ifdef JK_HAVE_XCB
#include <xcb/xcb.h>
#include <cstdlib>
#endif

namespace jk::snap {

namespace {

const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kObject = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kScreenshot = QStringLiteral("org.freedesktop.portal.Screenshot");
const QString kRequest = QStringLiteral("org.freedesktop.portal.Request");

bool onX11() { return QGuiApplication::platformName() == QLatin1String("xcb"); }

}  // namespace

PortalScreenshot::PortalScreenshot(const QDBusConnection& bus, QObject* parent) : QObject(parent), bus_(bus) {}

bool PortalScreenshot::available(const QDBusConnection& bus)
{
    if (!bus.isConnected()) return false;
    if (bus.interface()->isServiceRegistered(kService)) return true;
    // Portals are usually started on their first call.
    const QDBusMessage call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
                                                             QStringLiteral("/org/freedesktop/DBus"),
                                                             QStringLiteral("org.freedesktop.DBus"),
                                                             QStringLiteral("ListActivatableNames"));
    const QDBusMessage reply = bus.call(call, QDBus::Block, 2000);
    return reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty() &&
           reply.arguments().first().toStringList().contains(kService);
}

void PortalScreenshot::listen(const QString& path)
{
    if (!requestPath_.isEmpty())
        bus_.disconnect(kService, requestPath_, kRequest, QStringLiteral("Response"), this,
                        SLOT(onResponse(uint, QVariantMap)));
    requestPath_ = path;
    bus_.connect(kService, requestPath_, kRequest, QStringLiteral("Response"), this, SLOT(onResponse(uint, QVariantMap)));
}

void PortalScreenshot::finish() { listen(QString()); }

void PortalScreenshot::request(bool interactive, const QString& parentWindow)
{
    // The answer comes as a signal on a path made of our bus name and a
    // token of ours; listen there before asking, or a quick answer is lost.
    const QString token = QStringLiteral("snaptool%1").arg(QRandomGenerator::global()->generate());
    QString sender = bus_.baseService().mid(1);
    sender.replace(u'.', u'_');
    listen(QStringLiteral("/org/freedesktop/portal/desktop/request/%1/%2").arg(sender, token));

    QDBusMessage call = QDBusMessage::createMethodCall(kService, kObject, kScreenshot, QStringLiteral("Screenshot"));
    const QVariantMap options{{QStringLiteral("handle_token"), token},
                              {QStringLiteral("modal"), true},
                              {QStringLiteral("interactive"), interactive}};
    call << parentWindow << options;
    // The user may spend a while in the desktop's own dialog.
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call, 120000), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* w) {
        w->deleteLater();
        const QDBusPendingReply<QDBusObjectPath> reply = *w;
        if (reply.isError()) {
            finish();
            Q_EMIT failed(reply.error().message());
            return;
        }
        // Older portals choose the path themselves.
        if (reply.value().path() != requestPath_) listen(reply.value().path());
    });
}

void PortalScreenshot::onResponse(uint response, const QVariantMap& results)
{
    finish();
    if (response == 1) {
        Q_EMIT cancelled();
        return;
    }
    const QUrl uri(results.value(QStringLiteral("uri")).toString());
    if (response != 0 || !uri.isLocalFile()) {
        Q_EMIT failed(QStringLiteral("the desktop gave no picture (answer %1).").arg(response));
        return;
    }
    QImage picture(uri.toLocalFile());
    if (picture.isNull()) {
        Q_EMIT failed(QStringLiteral("the desktop's picture cannot be read: %1").arg(uri.toLocalFile()));
        return;
    }
    Q_EMIT taken(picture);
}

bool canReadScreens() { return onX11() && !QGuiApplication::screens().isEmpty(); }

QImage grabDesktop(QString* error)
{
    if (!canReadScreens()) {
        if (error)
            *error = QStringLiteral("no desktop portal answers, and only an X11 session lets a program read the "
                                    "screen.");
        return {};
    }
    const QList<QScreen*> screens = QGuiApplication::screens();
    QRect desktop;
    for (QScreen* s : screens) desktop |= s->geometry();
    const qreal ratio = screens.first()->devicePixelRatio();
    QImage out(desktop.size() * ratio, QImage::Format_RGB32);
    out.fill(Qt::black);
    QPainter p(&out);
    for (QScreen* s : screens) {
        const QPixmap shot = s->grabWindow(0);
        if (shot.isNull()) continue;
        const QRect where = s->geometry().translated(-desktop.topLeft());
        p.drawPixmap(QRectF(QPointF(where.topLeft()) * ratio, QSizeF(where.size()) * ratio), shot,
                     QRectF(QPointF(0, 0), QSizeF(shot.size())));
    }
    p.end();
    return out;
}

QList<QRect> desktopWindows()
{
    QList<QRect> out;
#ifdef JK_HAVE_XCB
    if (!onX11()) return out;
    auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    xcb_connection_t* c = x11 ? x11->connection() : nullptr;
    if (!c) return out;
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(c)).data;
    xcb_query_tree_reply_t* tree = xcb_query_tree_reply(c, xcb_query_tree(c, screen->root), nullptr);
    if (!tree) return out;
    const xcb_window_t* children = xcb_query_tree_children(tree);
    const int n = xcb_query_tree_children_length(tree);
    // Ask for everything first, then read the answers: one round trip.
    std::vector<xcb_get_window_attributes_cookie_t> attributes;
    std::vector<xcb_get_geometry_cookie_t> geometries;
    for (int i = 0; i < n; ++i) {
        attributes.push_back(xcb_get_window_attributes(c, children[i]));
        geometries.push_back(xcb_get_geometry(c, children[i]));
    }
    // The tree lists the windows bottom first.
    QList<QRect> bottomFirst;
    for (int i = 0; i < n; ++i) {
        xcb_get_window_attributes_reply_t* a = xcb_get_window_attributes_reply(c, attributes[std::size_t(i)], nullptr);
        xcb_get_geometry_reply_t* g = xcb_get_geometry_reply(c, geometries[std::size_t(i)], nullptr);
        if (a && g && a->map_state == XCB_MAP_STATE_VIEWABLE && a->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT &&
            g->width > 1 && g->height > 1)
            bottomFirst << QRect(g->x, g->y, g->width + 2 * g->border_width, g->height + 2 * g->border_width);
        std::free(a);
        std::free(g);
    }
    std::free(tree);
    for (auto it = bottomFirst.crbegin(); it != bottomFirst.crend(); ++it) out << *it;
#endif
    return out;
}

}  // namespace jk::snap
