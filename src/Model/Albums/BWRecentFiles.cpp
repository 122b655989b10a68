// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Albums/BWRecentFiles.h"

#include "Utils/BWLogging.h"

#include <functional>
#include <gio/gio.h>
#include <memory>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr auto ourName = "BrimwellPro";
constexpr auto opensIt = "xdg-open %u"; // this program opens no files by name

/// Reads the list, changes it, and replaces the file by a whole one. Nothing is written unless `change` wants it.
void changeList(const QString &list, const std::function<bool(GBookmarkFile *)> &change)
{
    const QByteArray path = QFile::encodeName(list);
    const std::unique_ptr<GBookmarkFile, void (*)(GBookmarkFile *)> bookmarks(g_bookmark_file_new(),
                                                                              g_bookmark_file_free);
    GError *error = nullptr;
    const bool isReadable = g_bookmark_file_load_from_file(bookmarks.get(), path.constData(), &error)
        || g_error_matches(error, G_FILE_ERROR, G_FILE_ERROR_NOENT);
    if (isReadable)
        g_clear_error(&error);
    if (isReadable && change(bookmarks.get())) {
        gsize length = 0;
        gchar *const data = g_bookmark_file_to_data(bookmarks.get(), &length, &error);
        constexpr int ownerOnly = 0600; // it tells what somebody has been working on
        if (data && QDir().mkpath(QFileInfo(list).path()))
            g_file_set_contents_full(path.constData(), data, gssize(length), G_FILE_SET_CONTENTS_CONSISTENT, ownerOnly,
                                     &error);
        g_free(data);
    }
    if (error)
        qCWarning(bwModel, "The list of recent files stays as it is: %s", error->message);
    g_clear_error(&error);
}

bool addTo(GBookmarkFile *bookmarks, const QUrl &file)
{
    const QByteArray address = file.toEncoded();
    const bool isMovie = address.endsWith(".mov");
    g_bookmark_file_add_application(bookmarks, address.constData(), ourName, opensIt);
    g_bookmark_file_set_mime_type(bookmarks, address.constData(), isMovie ? "video/quicktime" : "image/jpeg");
    return true;
}

bool removeOurs(GBookmarkFile *bookmarks)
{
    bool changed = false;
    gchar **const all = g_bookmark_file_get_uris(bookmarks, nullptr);
    for (gchar **address = all; *address; ++address) {
        if (!g_bookmark_file_has_application(bookmarks, *address, ourName, nullptr))
            continue;
        gsize programs = 0;
        g_strfreev(g_bookmark_file_get_applications(bookmarks, *address, &programs, nullptr));
        changed = (programs > 1 ? g_bookmark_file_remove_application(bookmarks, *address, ourName, nullptr)
                                : g_bookmark_file_remove_item(bookmarks, *address, nullptr))
            || changed;
    }
    g_strfreev(all);
    return changed;
}

} // namespace

BWRecentFiles::BWRecentFiles(QString list) : m_list(std::move(list)) { }

QString BWRecentFiles::defaultList()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + u"/recently-used.xbel"_s;
}

void BWRecentFiles::add(const QUrl &file)
{
    m_worker.run([list = m_list, file] {
        changeList(list, [&file](GBookmarkFile *bookmarks) { return addTo(bookmarks, file); });
    });
}

void BWRecentFiles::clear()
{
    m_worker.run([list = m_list] { changeList(list, removeOurs); });
}
