// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Albums/BWFileCopy.h"

#include <functional>
#include <memory>
#include <optional>
#include <QDate>
#include <QList>
#include <QUrl>

/// What a capture is. Callers use the numbers, so they keep their values.
enum class BWMediaType {
    Image = 0, ///< snapshot, .jpg
    Video = 1, ///< recording, .mov
};

/// One folder of captures. The folder is the album: nothing else is kept, and every listing is read from the disk.
///
/// Files are named by local file URLs, which can carry any file name (see BWFilePath). GUI thread only, but addFile()
/// and what it calls may run on any one thread at a time.
class BWAlbum {
public:
    /// Returns today's date.
    using Today = std::function<QDate()>;
    using Progress = BWFileCopy::Progress;

    /// Does not touch the disk.
    explicit BWAlbum(const QUrl &path, Today today = {});

    /// Whether the folder of an album may have that name: not a path, and not hidden.
    static bool isName(const QString &name);

    /// The folder's name.
    const QString &name() const { return m_name; }
    /// What the user sees; the default album has a translated name.
    const QString &shownName(const QString &ofDefaultAlbum) const { return m_isDefaultAlbum ? ofDefaultAlbum : m_name; }
    const QUrl &path() const { return m_path; }
    bool isDefaultAlbum() const { return m_isDefaultAlbum; }
    void setIsDefaultAlbum(bool isDefault) { m_isDefaultAlbum = isDefault; }

    /// How a number stands in the names of files.
    static QByteArray numberText(qint64 number);
    /// Today as yyyyMMdd.
    QString formatToday() const;

    /// Where today's next capture goes: the lowest number that no file has, whatever follows it. Creates nothing. Quick after addFile(), unless somebody
    /// else has changed the folder since.
    QUrl nextPathForType(BWMediaType type) const;

    /// Copies a finished capture into the album; `added` becomes its new place. Either the whole file is there and safe
    /// on disk, or nothing is: never a torn file, never an overwritten one. If another program takes the name first,
    /// uses the next free one. False, and logged, on failure. The source stays; its bytes must not change any more, for
    /// the album may share them. `progress` is called with how far a long copy has come, and may end it, on the calling
    /// thread.
    bool addFile(const QUrl &file, BWMediaType type, QUrl *added = nullptr, const Progress &progress = {}) const;

    /// Moves a file to the Trash. A failure is only logged.
    void removeFile(const QUrl &file, BWMediaType type) const;

    /// The captures of a type, newest (highest name) first; nothing if the folder cannot be listed.
    std::optional<QList<QUrl>> contentsForType(BWMediaType type) const;

    /// The captures of all types, newest first.
    struct Contents {
        QList<QUrl> images;
        QList<QUrl> videos;
        bool operator==(const Contents &) const = default;
    };
    /// All of them, at the price of one type; nothing if the folder cannot be listed.
    std::optional<Contents> contents() const;
    /// Brings a listing up to date after a file of that name came into the folder or left it. False if nothing changes.
    bool follow(Contents &contents, const QByteArray &name, bool isThere) const;

private:
    struct Numbers;

    QString m_name;
    QUrl m_path;
    Today m_today;
    bool m_isDefaultAlbum = false;
    std::shared_ptr<Numbers> m_numbers; // of the last captures; copies of this object may be on other threads
};

using BWAlbumPtr = std::shared_ptr<BWAlbum>;
