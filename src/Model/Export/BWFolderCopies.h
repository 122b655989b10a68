#pragma once

#include "Utils/BWWorkerPool.h"

#include <QList>
#include <QStringList>
#include <QUrl>

/// Copies files into folders in the background, each on its own. Its end waits for all of them. GUI thread only.
class BWFolderCopies {
public:
    /// Begins to copy each file into the folder under its own name, and returns the names at once. A file of that name
    /// is replaced without asking, once the copy is whole. A failure is logged.
    QStringList copy(const QList<QUrl> &files, const QUrl &folder);

private:
    BWWorkerPool m_pool{2, BWWorkerPool::untilDone}; // a disk is not faster with more threads
};
