#pragma once

#include <cstdint>
#include <QByteArray>

/// Room on a disk.
class BWDiskSpace {
public:
    BWDiskSpace() = delete;

    static constexpr uint64_t reserve = 4 << 20;

    /// Whether so little is left on the disk of that file or folder, once `toCome` bytes are added, that nothing more
    /// should be: less than a twentieth of it, but at least `reserve` and at most 256 MiB. A recording ends well only
    /// while there is room for its index, and a desktop without any room is no good to anyone. May wait for the disk.
    /// False where it cannot be told.
    static bool isNearlyFull(const QByteArray &path, uint64_t toCome = 0, uint64_t reserve = BWDiskSpace::reserve);
};
