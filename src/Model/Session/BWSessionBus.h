// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gio/gio.h>
#include <memory>
#include <QByteArray>

/// The D-Bus of the user's session. Any thread; waits for it.
class BWSessionBus {
public:
    struct Unref {
        void operator()(void *object) const { g_object_unref(object); }
    };
    struct Free {
        void operator()(GError *error) const { g_error_free(error); }
    };
    using Connection = std::unique_ptr<GDBusConnection, Unref>;
    using Error = std::unique_ptr<GError, Free>;

    /// Empty if there is none: GLib itself would start one.
    static QByteArray address();
    /// A connection of its own: what closes it ends what was asked for over it. Null, with the reason in `error`, if it
    /// fails. Another bus can be given, too.
    static Connection connect(const QByteArray &bus, GCancellable *cancellable, Error &error);
};
