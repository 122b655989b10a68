#pragma once

#include "Model/Export/BWExportResult.h"

#include <QList>

/// Packs files into a new ZIP archive, compressing on all processors at once in little memory whatever the size. A file
/// that stands at the target is replaced once the archive is whole. Any thread.
class BWZipExport {
public:
    /// Returns when that is done, cancelled or failed.
    static BWExportResult run(const QList<QUrl> &files, const QUrl &target, BWExportWatch &watch);
};
