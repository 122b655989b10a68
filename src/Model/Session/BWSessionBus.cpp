// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Session/BWSessionBus.h"

QByteArray BWSessionBus::address()
{
    const QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    const QByteArray folder = qgetenv("XDG_RUNTIME_DIR");
    return !address.isEmpty() || folder.isEmpty() ? address : "unix:path=" + folder + "/bus";
}

BWSessionBus::Connection BWSessionBus::connect(const QByteArray &bus, GCancellable *cancellable, Error &error)
{
    GError *reason = nullptr;
    constexpr auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT
                                                             | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    Connection connection(
        g_dbus_connection_new_for_address_sync(bus.constData(), flags, nullptr, cancellable, &reason));
    error.reset(reason);
    return connection;
}
