// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Albums/BWFileManager.h"

#include "Model/Session/BWSessionBus.h"
#include "Utils/BWLogging.h"

namespace {

constexpr int showPatience = 10'000; // ms; the desktop may have to start it

bool showNow(const QList<QUrl> &files)
{
    BWSessionBus::Error error;
    const QByteArray bus = BWSessionBus::address();
    const BWSessionBus::Connection connection = bus.isEmpty() ? nullptr : BWSessionBus::connect(bus, nullptr, error);
    GVariant *answer = nullptr;
    if (connection) {
        GVariantBuilder addresses;
        g_variant_builder_init(&addresses, G_VARIANT_TYPE("as"));
        for (const QUrl &file : files)
            g_variant_builder_add(&addresses, "s", file.toEncoded().constData());
        GError *reason = nullptr;
        answer = g_dbus_connection_call_sync(connection.get(), "org.freedesktop.FileManager1",
                                             "/org/freedesktop/FileManager1", "org.freedesktop.FileManager1",
                                             "ShowItems", g_variant_new("(ass)", &addresses, ""), nullptr,
                                             G_DBUS_CALL_FLAGS_NONE, showPatience, nullptr, &reason);
        error.reset(reason);
    }
    if (error)
        qCInfo(bwModel, "The file manager shows only the folder: %s", error->message);
    if (answer)
        g_variant_unref(answer);
    return answer != nullptr;
}

} // namespace

void BWFileManager::show(const QList<QUrl> &files, std::function<void()> otherwise)
{
    m_worker.run([files, otherwise = std::move(otherwise), alive = m_alive.watch()] {
        if (!showNow(files))
            BWMainQueue::post(alive, otherwise);
    });
}
