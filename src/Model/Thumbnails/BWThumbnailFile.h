#pragma once

#include <cstdint>
#include <optional>
#include <QByteArray>
#include <vector>

/// By what a file that has changed is told from what it was.
struct BWFileStamp {
    int64_t modified = 0; ///< seconds since 1970
    int64_t modifiedNanoseconds = 0;
    int64_t changed = 0; ///< nanoseconds since 1970, of contents, owner or rights
    int64_t size = 0; ///< bytes
    uint64_t inode = 0;

    friend bool operator==(const BWFileStamp &, const BWFileStamp &) = default;
};

/// A regular file, open for reading. Whatever else a name may stand for, a pipe, a device, a folder, is not opened, so
/// that nothing hangs or is set off.
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
