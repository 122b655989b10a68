// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Utils/Windows/BWWindowVisibility.h"

#include <cstdlib>
#include <memory>
#include <optional>
#include <QCoreApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <QWindow>
#include <string_view>
#include <utility>
#include <xcb/xcb.h>

namespace {

struct Free {
    void operator()(void *reply) const { std::free(reply); }
};
template <typename Reply>
std::unique_ptr<Reply, Free> owned(Reply *reply)
{
    return std::unique_ptr<Reply, Free>(reply);
}

/// Null where there is no X.
xcb_connection_t *connection()
{
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

xcb_intern_atom_cookie_t askForAtom(std::string_view name)
{
    return xcb_intern_atom(connection(), false, static_cast<uint16_t>(name.size()), name.data());
}

xcb_atom_t atom(xcb_intern_atom_cookie_t cookie)
{
    const auto reply = owned(xcb_intern_atom_reply(connection(), cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

xcb_get_property_cookie_t askForNumber(xcb_window_t window, xcb_atom_t property)
{
    return xcb_get_property(connection(), false, window, property, XCB_ATOM_CARDINAL, 0, 1);
}

std::optional<uint32_t> number(xcb_get_property_cookie_t cookie)
{
    const auto reply = owned(xcb_get_property_reply(connection(), cookie, nullptr));
    if (!reply || xcb_get_property_value_length(reply.get()) != sizeof(uint32_t))
        return std::nullopt;
    return *static_cast<const uint32_t *>(xcb_get_property_value(reply.get()));
}

} // namespace

BWWindowVisibility::BWWindowVisibility(QWidget &window) : m_window(window)
{
    window.installEventFilter(this);
    for (const auto screensChanged : {&QGuiApplication::screenAdded, &QGuiApplication::screenRemoved})
        connect(qGuiApp, screensChanged, this, &BWWindowVisibility::readDesktop);
}

bool BWWindowVisibility::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == &m_window && event->type() == QEvent::Show)
        watchHandle();
    if (watched == &m_window && event->type() == QEvent::WindowStateChange)
        update();
    if (watched == m_window.windowHandle() && event->type() == QEvent::Expose) {
        m_isExposed = m_window.windowHandle()->isExposed();
        update();
    }
    return QObject::eventFilter(watched, event);
}

/// Another one may have been made since the window last showed. Qt asks the server for no news of its visibility.
void BWWindowVisibility::watchHandle()
{
    m_window.windowHandle()->installEventFilter(this);
    if (!connection())
        return;
    const auto window = static_cast<xcb_window_t>(m_window.winId());
    const auto attributesCookie = xcb_get_window_attributes(connection(), window);
    const auto geometryCookie = xcb_get_geometry(connection(), window);
    const auto currentDesktopCookie = askForAtom("_NET_CURRENT_DESKTOP");
    const auto windowDesktopCookie = askForAtom("_NET_WM_DESKTOP");
    const auto attributes = owned(xcb_get_window_attributes_reply(connection(), attributesCookie, nullptr));
    const auto geometry = owned(xcb_get_geometry_reply(connection(), geometryCookie, nullptr));
    m_currentDesktop = atom(currentDesktopCookie);
    m_windowDesktop = atom(windowDesktopCookie);
    if (!attributes || !geometry)
        return;
    m_root = geometry->root;
    m_isCovered = false;
    const uint32_t events = attributes->your_event_mask | XCB_EVENT_MASK_VISIBILITY_CHANGE;
    xcb_change_window_attributes(connection(), window, XCB_CW_EVENT_MASK, &events);
    QCoreApplication::instance()->installNativeEventFilter(this);
    readDesktop();
}

bool BWWindowVisibility::nativeEventFilter(const QByteArray &, void *message, qintptr *)
{
    constexpr uint8_t ownBits = 0x7f; // the remaining one says that another client has sent the event
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    switch (event->response_type & ownBits) {
    case XCB_VISIBILITY_NOTIFY: {
        const auto *visibility = reinterpret_cast<const xcb_visibility_notify_event_t *>(event);
        if (visibility->window == m_window.effectiveWinId()) {
            m_isCovered = visibility->state == XCB_VISIBILITY_FULLY_OBSCURED;
            update();
        }
        break;
    }
    case XCB_PROPERTY_NOTIFY: {
        const xcb_atom_t property = reinterpret_cast<const xcb_property_notify_event_t *>(event)->atom;
        if (property == m_currentDesktop || property == m_windowDesktop)
            readDesktop();
        break;
    }
    default:
        break;
    }
    return false;
}

/// Some window managers leave the windows of the other desktops where they are and only do not paint them. On several
/// screens the current desktop says nothing, because each screen may show one of its own.
void BWWindowVisibility::readDesktop()
{
    if (m_root == 0)
        return;
    const auto currentCookie = askForNumber(m_root, m_currentDesktop);
    const auto ownCookie = askForNumber(static_cast<xcb_window_t>(m_window.effectiveWinId()), m_windowDesktop);
    const std::optional<uint32_t> current = number(currentCookie);
    const std::optional<uint32_t> own = number(ownCookie);
    constexpr uint32_t all = 0xffffffff;
    m_isElsewhere = current && own && *own != all && *own != *current && QGuiApplication::screens().size() == 1;
    update();
}

void BWWindowVisibility::update()
{
    const bool isSeen =
        m_window.isVisible() && !m_window.isMinimized() && m_isExposed && !m_isCovered && !m_isElsewhere;
    if (std::exchange(m_isSeen, isSeen) != isSeen)
        Q_EMIT changed();
}
