// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Thumbnails/BWJpegPicture.h"
#include "Model/Thumbnails/BWThumbnail.h"

#include <cstdint>
#include <optional>
#include <QByteArray>
#include <vector>

/// Tells a file that has changed from what it was.
struct BWFileStamp {
    int64_t modified = 0; ///< seconds since 1970
    int64_t modifiedNanoseconds = 0;
    int64_t changed = 0; ///< nanoseconds since 1970, of contents, owner or rights
    int64_t size = 0; ///< bytes
    uint64_t inode = 0;

    friend bool operator==(const BWFileStamp &, const BWFileStamp &) = default;
};

/// A regular file, open for reading. Pipes, devices, folders and the like are not opened, so that nothing hangs or is
/// set off.
class BWThumbnailFile {
public:
    /// Nothing unless it is a regular file, or a link to one.
    static std::optional<BWFileStamp> stampOf(const QByteArray &path);

    explicit BWThumbnailFile(const QByteArray &path);
    ~BWThumbnailFile();
    BWThumbnailFile(const BWThumbnailFile &) = delete;
    BWThumbnailFile &operator=(const BWThumbnailFile &) = delete;

    bool isOpen() const { return m_file >= 0; }
    int descriptor() const { return m_file; }
    /// As the open file is now.
    std::optional<BWFileStamp> stamp() const;

    /// The first bytes, fewer where the file ends; empty on failure.
    QByteArray head(int count) const;
    /// The whole file; false if it cannot be read or is larger than `most`.
    bool read(std::vector<uint8_t> &bytes, int64_t most) const;

private:
    int m_file;
};

/// The outcome of looking at a file.
struct BWMadeThumbnail {
    BWThumbnail thumbnail{};
    std::optional<BWFileStamp> stamp{}; ///< of the file looked at; nothing unless it is regular and could be read
    bool worthKeeping = false; ///< will hold as long as the stamp does
    bool unsettled = false; ///< the file may still be written, or there was no memory: worth another look soon
};

/// Makes the thumbnail of one file after the other: JPEG pictures and QuickTime movies, recognized by their contents.
/// One thread at a time.
class BWThumbnailMaker {
public:
    BWMadeThumbnail make(const QByteArray &path, BWThumbnailSize size);

private:
    BWThumbnail picture(const BWThumbnailFile &file, BWThumbnailSize size, QString &error);
    static BWThumbnail movie(const BWThumbnailFile &file, BWThumbnailSize size, QString &error);

    BWJpegPicture m_jpeg;
    std::vector<uint8_t> m_bytes; // of the last picture; its memory is used again
};
