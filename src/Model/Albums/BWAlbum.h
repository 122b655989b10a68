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

/// One folder of captures. The folder is the album: nothing else is kept, every listing is read afresh.
///
/// Files are told by local file URLs, which can carry any file name (see BWFilePath). GUI thread only, but addFile()
/// and what it calls may run on any one thread at a time.
class BWAlbum {
public:
    /// Answers today's date.
    using Today = std::function<QDate()>;
    using Progress = BWFileCopy::Progress;

    /// Does not touch the disk.
    explicit BWAlbum(const QUrl &path, Today today = {});

    /// Whether the folder of an album may be called that: a name, not a path, and not that of a hidden folder.
    static bool isName(const QString &name);

    /// The folder's name.
    const QString &name() const { return m_name; }
    /// What the user sees; the default album goes by a text.
    const QString &shownName(const QString &ofDefaultAlbum) const { return m_isDefaultAlbum ? ofDefaultAlbum : m_name; }
    const QUrl &path() const { return m_path; }
    bool isDefaultAlbum() const { return m_isDefaultAlbum; }
    void setIsDefaultAlbum(bool isDefault) { m_isDefaultAlbum = isDefault; }

    /// Today as yyyyMMdd.
    QString formatToday() const;

    /// Where the next capture of today goes: the lowest number that is free. Creates nothing.
    QUrl nextPathForType(BWMediaType type) const;

    /// Copies a finished capture into the album; `added` tells where to. Either the whole file is there and safe on
    /// disk, or nothing is: never a torn file, never an overwritten one. A name that another program takes meanwhile
    /// is left to it, for the next free one. False (and logged) when it did not work.
    /// The source stays; its bytes must not be changed any more, for the album may share them. `progress` is told how
    /// far a long copy has come, and may end it, on the calling thread.
    bool addFile(const QUrl &file, BWMediaType type, QUrl *added = nullptr, const Progress &progress = {}) const;

    /// Moves a file to the Trash. A failure is only logged.
    void removeFile(const QUrl &file, BWMediaType type) const;

    /// The captures of a type, newest (highest name) first; nothing when the folder cannot be listed.
    std::optional<QList<QUrl>> contentsForType(BWMediaType type) const;

private:
    QString m_name;
    QUrl m_path;
    Today m_today;
    bool m_isDefaultAlbum = false;
};

using BWAlbumPtr = std::shared_ptr<BWAlbum>;
