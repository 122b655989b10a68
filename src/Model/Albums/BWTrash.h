#pragma once

#include "Model/Albums/BWTrashedFile.h"
#include "Utils/BWMainQueue.h"
#include "Utils/BWWorkerPool.h"

#include <functional>
#include <QList>
#include <QString>
#include <QUrl>

/// The desktop's Trash. Moves files there while the program goes on, and puts the last ones back. At its end it still
/// finishes the moves that were requested, within reason, but calls nothing any more. GUI thread only.
class BWTrash {
public:
    struct Failure {
        QUrl file; ///< where it was before it was to be moved to the Trash
        QString reason;
    };
    struct Moved {
        QList<QUrl> files; ///< where they were
        QList<Failure> stayed;
    };
    struct Restored {
        struct File {
            QUrl original;
            QUrl now; ///< differs where its name was taken meanwhile
        };
        QList<File> files;
        QList<Failure> failed; ///< stay in the Trash
    };

    /// Moves a file there. False, with the reason in `error`, when it stays where it is. Waits for the disk.
    static bool moveToTrash(const QUrl &file, QString *error = nullptr);

    /// Moves files there; `finished` is called once, later, even for none. A file that stays is logged. What is asked
    /// for meanwhile comes afterwards, in order.
    void move(const QList<QUrl> &files, std::function<void(const Moved &result)> finished);

    /// Whether there are files to put back: those of the last move() that moved any, until undo().
    bool canUndo() const { return !m_last.isEmpty(); }
    /// Puts them back, all that still are in the Trash; a file that cannot be put back is logged. Once only.
    void undo(std::function<void(const Restored &result)> finished);

private:
    QList<BWTrashedFile> m_last;
    BWAliveToken m_alive;
    BWWorkerPool m_thread;
};
