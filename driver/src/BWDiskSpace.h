#pragma once

#include <QString>

/// Room on a disk.
class BWDiskSpace {
public:
    BWDiskSpace() = delete;

    /// Whether so little is left on the disk of that file that nothing should be added any more: a recording ends well
    /// only while there is room for its index, and a desktop without any room is no good to anyone. May wait for the
    /// disk. False where that cannot be told.
    static bool isNearlyFull(const QString &path);
};
