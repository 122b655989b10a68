#pragma once

#include <QList>
#include <QStringList>
#include <QThreadPool>
#include <QUrl>

/// Copies files into folders in the background, each on its own. GUI thread only.
class BWFolderCopies {
public:
    BWFolderCopies();
    /// Finishes what was begun.
    ~BWFolderCopies();

    /// Begins to copy each file into the folder under its own name, and returns the names at once. A file of that name
    /// is replaced without asking, once the copy is whole. A failure is logged.
    QStringList copy(const QList<QUrl> &files, const QUrl &folder);

private:
    QThreadPool m_pool;
};
