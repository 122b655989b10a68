// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Utils/BWMainQueue.h"
#include "Utils/BWWorkerPool.h"

#include <functional>
#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>
#include <sys/types.h>

/// A file that was moved to the Trash and can be put back. Any thread; waits for the disk.
class BWTrashedFile {
public:
    /// False, with the reason in `error`, when the file stays where it is; `trashed` may be null.
    static bool moveToTrash(const QUrl &file, BWTrashedFile *trashed, QString *error);

    /// Where it was.
    QUrl original() const;
    /// Where it is; empty if that is unknown.
    QUrl inTrash() const;

    /// Puts it back under its old name, or, if that name is taken, with " (2)" before the extension; `restored` becomes
    /// its new place. False, with the reason in `error`, when it is no longer in the Trash or cannot be put back;
    /// nothing has changed then.
    bool restore(QUrl *restored, QString *error) const;

private:
    bool isStillThere() const;

    QByteArray m_original;
    QByteArray m_trashed;
    dev_t m_device = 0;
    ino_t m_inode = 0;
};

/// The desktop's Trash. Moves files there in the background, and puts those of the last move back. When destroyed it
/// still moves the files it was given, but does not wait for a disk that hangs, and calls nothing any more. GUI thread
/// only.
class BWTrash {
public:
    struct Failure {
        QUrl file; ///< where it was before the move
        QString reason;
    };
    struct Moved {
        QList<QUrl> files; ///< where they were
        QList<Failure> stayed;
    };
    struct Restored {
        struct File {
            QUrl original;
            QUrl now; ///< differs if its name has been taken meanwhile
        };
        QList<File> files;
        QList<Failure> failed; ///< stay in the Trash
    };

    /// Moves files there; calls `finished` once, later, even for no files. Logs each file that stays. Requests are
    /// served in order.
    void move(const QList<QUrl> &files, std::function<void(const Moved &result)> finished);

    /// Whether there are files to put back: those of the last move() that moved any, until undo().
    bool canUndo() const { return !m_last.isEmpty(); }
    /// Puts back all of them that are still in the Trash, and logs those that it cannot. Once only.
    void undo(std::function<void(const Restored &result)> finished);

private:
    QList<BWTrashedFile> m_last;
    BWAliveToken m_alive;
    BWWorkerPool m_thread;
};
