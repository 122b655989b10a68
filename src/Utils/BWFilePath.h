#pragma once

#include <optional>
#include <QByteArray>
#include <QList>
#include <QUrl>

/// Between local file URLs and the system's file names.
///
/// A file name is bytes; a QString can hold only those that are valid UTF-8, a URL all of them. So files are handed
/// around as URLs, and opened with the bytes where a name may come from anywhere.
class BWFilePath {
public:
    /// The system's path of a local file URL; empty for any other URL.
    static QByteArray native(const QUrl &file);
    static QUrl url(const QByteArray &nativePath);
    /// Not QUrl::fromLocalFile(), which takes what follows two slashes for the name of a computer.
    static QUrl fromLocal(const QString &path);
    /// The URL of an entry of a folder, by its name's bytes.
    static QUrl entry(const QUrl &folder, const QByteArray &name);
    /// The bytes after the last slash, trailing slashes left aside.
    static QByteArray lastComponent(const QUrl &file);
    /// "a.jpg" becomes "a (2).jpg", a name or a path, in case "a.jpg" is taken.
    static QByteArray numbered(const QByteArray &path, int number);
    /// " (2)"; empty for the first, which has no number.
    static QByteArray numberSuffix(int number);
    /// The same folder or file always gives the same URL: no trailing slash, no "." or doubled slashes.
    static QUrl normalized(const QUrl &file);

    /// The names in a folder as the file system lists them, without "." and ".."; nothing when it cannot be listed.
    static std::optional<QList<QByteArray>> entries(const QUrl &folder);

    /// Whether something is there, be it a link that leads nowhere.
    static bool exists(const QUrl &file);
    static bool isFolder(const QUrl &file);
};
