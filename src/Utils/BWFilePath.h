// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <optional>
#include <QByteArray>
#include <QList>
#include <QUrl>

/// Converts between local file URLs and the system's file names, and looks at what is there.
///
/// A file name is bytes; a QString can hold only valid UTF-8, a URL any bytes. So files are passed around as URLs, and
/// opened by the bytes where a name may come from anywhere.
class BWFilePath {
public:
    /// The system's path of a local file URL; empty for any other URL.
    static QByteArray native(const QUrl &file);
    static QUrl url(const QByteArray &nativePath);
    /// Unlike QUrl::fromLocalFile(), takes nothing after two slashes for the name of a computer.
    static QUrl fromLocal(const QString &path);
    /// The URL of an entry of a folder, by its name's bytes.
    static QUrl entry(const QUrl &folder, const QByteArray &name);
    /// The bytes after the last slash, trailing slashes ignored.
    static QByteArray lastComponent(const QUrl &file);
    /// "a.jpg" becomes "a (2).jpg", a name or a path, in case "a.jpg" is taken.
    static QByteArray numbered(const QByteArray &path, int number);
    /// " (2)"; empty for the first, which has no number.
    static QByteArray numberSuffix(int number);
    /// The same folder or file always gives the same URL: no trailing slash, no "." or doubled slashes.
    static QUrl normalized(const QUrl &file);

    /// The names in a folder as the file system lists them, without "." and ".."; nothing when it cannot be listed.
    static std::optional<QList<QByteArray>> entries(const QUrl &folder);

    /// True also for a link that leads nowhere.
    static bool exists(const QUrl &file);
    static bool isFolder(const QUrl &file);
    /// The URLs that name folders, in the same order. Waits no longer than the patience for disks that do not answer, as
    /// one on a network may not; folders on these are included, since they are likely to come back. Not on the GUI
    /// thread.
    static QList<QUrl> foldersAmong(const QList<QUrl> &urls,
                                    std::chrono::milliseconds patience = std::chrono::seconds(1));
};
