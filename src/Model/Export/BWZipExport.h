// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Export/BWExportResult.h"

#include <QList>

/// Packs files into a new ZIP archive, compressing on all processors at once, in little memory for any size. A file at
/// the target is replaced once the archive is whole. Any thread.
class BWZipExport {
public:
    /// Returns when that is done, cancelled or failed.
    static BWExportResult run(const QList<QUrl> &files, const QUrl &target, BWExportWatch &watch);
};
