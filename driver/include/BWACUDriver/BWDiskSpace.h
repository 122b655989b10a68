// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <QByteArray>

/// Free space on a disk.
class BWDiskSpace {
public:
    BWDiskSpace() = delete;

    static constexpr uint64_t reserve = 4 << 20;

    /// Whether so little space is left on the disk of that file or folder, once `toCome` bytes are added, that nothing
    /// more should be written: less than a twentieth of the disk, but at least `least` and at most 256 MiB. A
    /// recording needs room for its index at the end, and a desktop works badly on a full disk. May wait for the disk.
    /// False if it cannot be determined.
    static bool isNearlyFull(const QByteArray &path, uint64_t toCome = 0, uint64_t least = reserve);
};
