// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Thumbnails/BWThumbnailMaker.h"

#include <atomic>
#include <optional>
#include <QByteArray>

/// The thumbnails that all programs of the desktop share, as the Thumbnail Managing Standard of freedesktop.org has it.
/// What cannot be stored is left out; the first time, the log says why. Where all programs together have stored too much,
/// the oldest thumbnails that are ours are removed. Any threads at once.
class BWThumbnailStore {
public:
    static constexpr int64_t mostBytes = 1 << 30; ///< of all, which is some ten thousand

    /// `folder` is made when something is to be stored. If it is empty nothing is found and nothing stored.
    explicit BWThumbnailStore(const QByteArray &folder, int64_t most = mostBytes);

    /// The desktop's folder for them.
    static QByteArray defaultFolder();

    /// What is stored of the file as it is now; scales down a larger one. Impossible if we have failed to make one
    /// before. Does not find a movie's thumbnail that lacks the movie's length.
    std::optional<BWThumbnail> find(const QByteArray &path, const BWFileStamp &stamp, BWThumbnailSize wanted) const;

    /// Stores a thumbnail, or that none can be made. Thumbnails of thumbnails are not stored.
    void keep(const QByteArray &path, const BWFileStamp &stamp, BWThumbnailSize size, const BWThumbnail &thumbnail);

    /// Removes what any program has stored of a file that is no longer at this path: the thumbnail shows the picture, and
    /// names the path.
    void forget(const QByteArray &path) const;

    /// The address by which all programs know the file: the bytes of its path, percent-encoded.
    static QByteArray uri(const QByteArray &path);

private:
    bool isInside(const QByteArray &path) const;
    void write(const QByteArray &subfolder, const QByteArray &name, const QByteArray &png);
    void countWritten(int64_t bytes);
    void trim() const;
    void logFault(const QByteArray &what, int error);

    QByteArray m_folder;
    QByteArray m_failedFolder; // relative
    const int64_t m_most;
    std::atomic<int64_t> m_untilTrim; // bytes to write
    std::atomic_bool m_faultLogged = false;
};
