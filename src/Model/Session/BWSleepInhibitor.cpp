// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Session/BWSleepInhibitor.h"

#include "Model/Session/BWSessionBus.h"
#include "Utils/BWLogging.h"

#include <array>
#include <gio/gunixfdlist.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr int answerPatience = 5000; // ms; nobody waits for the worker
constexpr int patienceAtTheEnd = 500;

/// An interface that keeps the computer awake between a call of Inhibit, which returns a number, and one of UnInhibit.
struct Service {
    const char *name;
    const char *path;
};

/// Of the screen; and of the battery, where the desktop has both.
constexpr std::array services{
    Service{"org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver"},
    Service{"org.freedesktop.PowerManagement.Inhibit", "/org/freedesktop/PowerManagement/Inhibit"}};

} // namespace

/// One stay awake, from the first reason to the last. It has a connection of its own: when that is closed, the desktop
/// forgets all that it was asked for, even what it never answered.
class BWSleepInhibitor::Request {
public:
    explicit Request(QByteArray explanation) : m_explanation(std::move(explanation)) { }
    ~Request() { close(); }
    Request(const Request &) = delete;
    Request &operator=(const Request &) = delete;

    /// Any thread: nobody is to wait for an answer any more.
    void giveUp() { g_cancellable_cancel(m_cancellable.get()); }

    // On the worker.
    void begin();
    void end();

private:
    using Error = BWSessionBus::Error;
    using Unref = BWSessionBus::Unref;

    bool connectTo(const char *address);
    int askDesktop();
    bool askSystem();
    GVariant *call(const char *name, const char *path, const char *interface, const char *method, GVariant *arguments,
                   int milliseconds, GCancellable *cancellable, GDBusCallFlags flags);
    void close();

    const QByteArray m_explanation;
    const std::unique_ptr<GCancellable, Unref> m_cancellable{g_cancellable_new()};
    BWSessionBus::Connection m_connection;
    std::array<guint32, services.size()> m_cookies{};
    int m_lock = -1; // the system stays awake as long as this file is open
};

/// Null without an answer, or with a refusal.
GVariant *BWSleepInhibitor::Request::call(const char *name, const char *path, const char *interface, const char *method,
                                          GVariant *arguments, int milliseconds, GCancellable *cancellable,
                                          GDBusCallFlags flags)
{
    GError *error = nullptr;
    GVariant *const answer = g_dbus_connection_call_sync(m_connection.get(), name, path, interface, method, arguments,
                                                         nullptr, flags, milliseconds, cancellable, &error);
    const Error reason(error);
    if (error)
        qCDebug(bwModel, "%s of %s: %s", method, name, error->message);
    return answer;
}

void BWSleepInhibitor::Request::begin()
{
    if (askDesktop() == 0 && !askSystem() && !g_cancellable_is_cancelled(m_cancellable.get()))
        qCInfo(bwModel, "Nothing on this computer keeps it awake");
}

bool BWSleepInhibitor::Request::connectTo(const char *address)
{
    Error error;
    m_connection = BWSessionBus::connect(address, m_cancellable.get(), error);
    if (!m_connection)
        qCDebug(bwModel, "No connection to %s: %s", address, error ? error->message : "no reason");
    return m_connection != nullptr;
}

/// How many take the request.
int BWSleepInhibitor::Request::askDesktop()
{
    const QByteArray address = BWSessionBus::address();
    if (address.isEmpty() || !connectTo(address.constData()))
        return 0;
    int taken = 0;
    for (std::size_t i = 0; i < services.size(); ++i) {
        GVariant *const answer = call(services[i].name, services[i].path, services[i].name, "Inhibit",
                                      g_variant_new("(ss)", "BrimwellPro", m_explanation.constData()), answerPatience,
                                      m_cancellable.get(), G_DBUS_CALL_FLAGS_NO_AUTO_START);
        if (!answer)
            continue;
        if (g_variant_is_of_type(answer, G_VARIANT_TYPE("(u)")))
            g_variant_get(answer, "(u)", &m_cookies[i]);
        g_variant_unref(answer);
        ++taken;
    }
    constexpr guint32 sleepAndIdle = 4 | 8;
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE("a{sv}"));
    g_variant_builder_add(&options, "{sv}", "reason", g_variant_new_string(m_explanation.constData()));
    GVariant *const portal =
        call("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Inhibit",
             "Inhibit", g_variant_new("(sua{sv})", "", sleepAndIdle, &options), answerPatience, m_cancellable.get(),
             G_DBUS_CALL_FLAGS_NONE);
    if (portal) {
        g_variant_unref(portal);
        ++taken;
    }
    return taken;
}

/// Where no desktop answers, as with a plain window manager: the login manager, which gives a file that is a lock.
bool BWSleepInhibitor::Request::askSystem()
{
    close(); // a desktop that is only slow is not to answer any more
    const std::unique_ptr<char, decltype(&g_free)> address(
        g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SYSTEM, m_cancellable.get(), nullptr), &g_free);
    if (!address || !connectTo(address.get()))
        return false;
    GUnixFDList *files = nullptr;
    GError *error = nullptr;
    GVariant *const answer = g_dbus_connection_call_with_unix_fd_list_sync(
        m_connection.get(), "org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager",
        "Inhibit", g_variant_new("(ssss)", "idle:sleep", "BrimwellPro", m_explanation.constData(), "block"),
        G_VARIANT_TYPE("(h)"), G_DBUS_CALL_FLAGS_NO_AUTO_START, answerPatience, nullptr, &files, m_cancellable.get(),
        &error);
    const Error reason(error);
    const std::unique_ptr<GUnixFDList, Unref> owned(files);
    if (error)
        qCDebug(bwModel, "Inhibit of the login manager: %s", error->message);
    if (answer)
        g_variant_unref(answer);
    m_lock = files ? g_unix_fd_list_get(files, 0, nullptr) : -1; // open only in this process, not in those it starts
    return m_lock >= 0;
}

void BWSleepInhibitor::Request::end()
{
    for (std::size_t i = 0; m_connection && i < services.size(); ++i) {
        if (m_cookies[i] == 0)
            continue;
        if (GVariant *const answer =
                call(services[i].name, services[i].path, services[i].name, "UnInhibit",
                     g_variant_new("(u)", m_cookies[i]), patienceAtTheEnd, nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START))
            g_variant_unref(answer);
    }
    close();
}

/// The portal's request ends with the connection, too.
void BWSleepInhibitor::Request::close()
{
    if (m_connection)
        g_dbus_connection_close_sync(m_connection.get(), nullptr, nullptr);
    m_connection.reset();
    if (m_lock >= 0)
        ::close(std::exchange(m_lock, -1));
}

BWSleepInhibitor::BWSleepInhibitor() = default;

BWSleepInhibitor::~BWSleepInhibitor()
{
    const std::set<Reason> reasons = m_reasons;
    for (const Reason reason : reasons)
        setActive(reason, false);
}

void BWSleepInhibitor::setActive(Reason reason, bool active)
{
    if (active)
        m_reasons.insert(reason);
    else
        m_reasons.erase(reason);
    if (!m_reasons.empty() && !m_request) {
        m_request = std::make_shared<Request>(m_explanation);
        m_worker.run([request = m_request] { request->begin(); });
    } else if (m_reasons.empty() && m_request) {
        m_request->giveUp();
        m_worker.run([request = std::exchange(m_request, nullptr)] { request->end(); });
    }
}
