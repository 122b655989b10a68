// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <QByteArray>
#include <span>

/// Whole reads and writes of open files, and bringing files to the disk. Any thread.
///
/// Operations that fail return false and leave the reason in `errno`; a signal interrupts none of them.
class BWFileBytes {
public:
    BWFileBytes() = delete;

    /// All of the bytes, where the file stands.
    static bool write(int file, const char *bytes, int64_t size);
    /// One part after the other; in one piece, if the file system can.
    static bool write(int file, std::span<const std::span<const uint8_t>> parts);
    static bool writeAt(int file, int64_t offset, const char *bytes, int64_t size);
    /// How many bytes there were to be read, up to `size`; -1 on failure.
    static int64_t readAt(int file, int64_t offset, void *bytes, int64_t size);

    /// Returns when the contents are on the disk, at once if the file system has nothing to bring there.
    static bool synchronizeData(int file);
    /// The same for the contents, the date and the rights.
    static bool synchronize(int file);
    /// The same for the names in a folder. A folder that cannot be brought to the disk is left as it is.
    static void synchronizeFolder(const QByteArray &path);
};

/// Keeps the amount that waits for the disk small while a large file is written, so that bringing it to the disk in the end
/// takes no longer than for a small one, and giving it up takes no time. One thread at a time.
class BWSteadyWriting {
public:
    /// To be called after each part, with how much of the file there is. False, with the reason in `errno`, if the disk did
    /// not take something: a later synchronize() need not say so again.
    bool written(int file, int64_t end);

private:
    int64_t m_begun = 0; // the kernel has begun to write up to here
};
