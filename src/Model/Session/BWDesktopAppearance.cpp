// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Session/BWDesktopAppearance.h"

#include "Model/Session/BWSessionBus.h"
#include "Utils/BWLogging.h"

#include <cstring>
#include <mutex>
#include <utility>

namespace {

constexpr auto service = "org.freedesktop.portal.Desktop";
constexpr auto place = "/org/freedesktop/portal/desktop";
constexpr auto settings = "org.freedesktop.portal.Settings";
constexpr auto appearance = "org.freedesktop.appearance";
constexpr int patience = 25'000; // ms; the desktop may have to start it

struct UnrefVariant {
    void operator()(GVariant *variant) const { g_variant_unref(variant); }
};
using Variant = std::unique_ptr<GVariant, UnrefVariant>;

/// The number in a value, which older portals wrap once more.
std::optional<guint32> numberIn(GVariant *value)
{
    if (g_variant_is_of_type(value, G_VARIANT_TYPE_VARIANT))
        return numberIn(Variant(g_variant_get_variant(value)).get());
    return g_variant_is_of_type(value, G_VARIANT_TYPE_UINT32) ? std::optional(g_variant_get_uint32(value))
                                                              : std::nullopt;
}

} // namespace

/// Shared with the worker, which may be left behind while it waits, and with the thread of the connection.
class BWDesktopAppearance::Portal : public std::enable_shared_from_this<Portal> {
public:
    Portal(std::weak_ptr<void> owner, std::function<void(const Wish &)> changed)
        : m_owner(std::move(owner)), m_changed(std::move(changed))
    {
    }

    /// Any thread: nobody is to wait for an answer any more.
    void giveUp() { g_cancellable_cancel(m_cancellable.get()); }

    /// On the worker.
    void begin()
    {
        const QByteArray bus = BWSessionBus::address();
        BWSessionBus::Error error;
        if (!bus.isEmpty())
            m_connection = BWSessionBus::connect(bus, m_cancellable.get(), error);
        if (!m_connection)
            return;
        // Without a main loop of GLib, which not every platform of Qt runs.
        g_dbus_connection_add_filter(m_connection.get(), &Portal::filter, Watch::of(weak_from_this()), &Watch::end);
        const QByteArray rule = QByteArray("type='signal',member='SettingChanged',sender='") + service + "',interface='"
            + settings + "',arg0='" + appearance + '\'';
        call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "AddMatch",
             g_variant_new("(s)", rule.constData()), "()");
        const char *const wanted[]{appearance, nullptr};
        if (const Variant answer =
                call(service, place, settings, "ReadAll", g_variant_new("(^as)", wanted), "(a{sa{sv}})"))
            take(answer.get());
    }

private:
    /// What the thread of the connection gets. It crosses under a mutex of ours, as the thread sanitizer cannot look into
    /// GLib.
    class Watch {
    public:
        static void *of(const std::weak_ptr<Portal> &portal)
        {
            const std::lock_guard lock(mutex);
            return new std::weak_ptr(portal);
        }
        static std::shared_ptr<Portal> portal(void *watch)
        {
            const std::lock_guard lock(mutex);
            return static_cast<std::weak_ptr<Portal> *>(watch)->lock();
        }
        static void end(void *watch)
        {
            const std::lock_guard lock(mutex);
            delete static_cast<std::weak_ptr<Portal> *>(watch);
        }

    private:
        static inline std::mutex mutex;
    };

    Variant call(const char *name, const char *path, const char *interface, const char *method, GVariant *arguments,
                 const char *answerType)
    {
        GError *reason = nullptr;
        Variant answer(g_dbus_connection_call_sync(m_connection.get(), name, path, interface, method, arguments,
                                                   G_VARIANT_TYPE(answerType), G_DBUS_CALL_FLAGS_NONE, patience,
                                                   m_cancellable.get(), &reason));
        const BWSessionBus::Error error(reason);
        if (error)
            qCDebug(bwModel, "%s of %s: %s", method, name, error->message);
        return answer;
    }

    /// What was read. A change may have overtaken it.
    void take(GVariant *all)
    {
        const Variant groups(g_variant_get_child_value(all, 0));
        const Variant ours(g_variant_lookup_value(groups.get(), appearance, G_VARIANT_TYPE_VARDICT));
        for (const auto &[key, setting] : {std::pair("color-scheme", &m_scheme), std::pair("contrast", &m_contrast)}) {
            const Variant value(ours ? g_variant_lookup_value(ours.get(), key, nullptr) : nullptr);
            const std::lock_guard lock(m_mutex);
            if (value && !*setting)
                *setting = numberIn(value.get());
        }
        report();
    }

    static GDBusMessage *filter(GDBusConnection *, GDBusMessage *message, gboolean incoming, void *portal)
    {
        const bool isChange = incoming && g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_SIGNAL
            && g_strcmp0(g_dbus_message_get_interface(message), settings) == 0
            && g_strcmp0(g_dbus_message_get_member(message), "SettingChanged") == 0;
        GVariant *const body = isChange ? g_dbus_message_get_body(message) : nullptr;
        if (body && g_variant_is_of_type(body, G_VARIANT_TYPE("(ssv)"))) {
            if (const auto self = Watch::portal(portal))
                self->change(body);
        }
        return message;
    }

    /// On the thread of the connection.
    void change(GVariant *body)
    {
        const char *group = nullptr;
        const char *key = nullptr;
        GVariant *value = nullptr;
        g_variant_get(body, "(&s&sv)", &group, &key, &value);
        const Variant owned(value);
        const std::optional<guint32> number = numberIn(value);
        if (!number || std::strcmp(group, appearance) != 0)
            return;
        {
            const std::lock_guard lock(m_mutex);
            if (std::strcmp(key, "color-scheme") == 0)
                m_scheme = number;
            else if (std::strcmp(key, "contrast") == 0)
                m_contrast = number;
        }
        report();
    }

    void report()
    {
        const std::lock_guard lock(m_mutex); // and in this order
        constexpr guint32 darkScheme = 1;
        constexpr guint32 lightScheme = 2;
        Wish wish;
        if (m_scheme == darkScheme || m_scheme == lightScheme)
            wish.dark = m_scheme == darkScheme;
        wish.highContrast = m_contrast == 1U;
        if (std::exchange(m_reported, wish) != wish)
            BWMainQueue::post(m_owner, [changed = m_changed, wish] { changed(wish); });
    }

    const std::weak_ptr<void> m_owner;
    const std::function<void(const Wish &)> m_changed;
    const std::unique_ptr<GCancellable, BWSessionBus::Unref> m_cancellable{g_cancellable_new()};
    BWSessionBus::Connection m_connection; // the worker's
    std::mutex m_mutex; // for the rest
    std::optional<guint32> m_scheme;
    std::optional<guint32> m_contrast;
    Wish m_reported;
};

BWDesktopAppearance::BWDesktopAppearance(std::function<void(const Wish &)> changed)
    : m_portal(std::make_shared<Portal>(m_alive.watch(), std::move(changed)))
{
    m_worker.run([portal = m_portal] { portal->begin(); });
}

BWDesktopAppearance::~BWDesktopAppearance()
{
    m_portal->giveUp();
}
