#pragma once

#include "Model/Export/BWExportResult.h"

class BWExportWatch;

/// Copies one file to a target that may exist, and is then replaced once the copy is whole. The date stays. Any thread.
class BWExportCopy {
public:
    /// Returns when that is done, cancelled or failed. Nothing happens, and that is well, where the target is the file
    /// itself.
    static BWExportResult run(const QUrl &file, const QUrl &target, BWExportWatch &watch);
};
