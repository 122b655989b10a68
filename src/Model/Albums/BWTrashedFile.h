#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>
#include <sys/types.h>

/// A file that was moved to the Trash, and the way back. Any thread.
class BWTrashedFile {
public:
    /// False, with the reason in `error`, when the file stays where it is; `trashed` may be null.
    static bool moveToTrash(const QUrl &file, BWTrashedFile *trashed, QString *error);

    /// Where it was.
    QUrl original() const;
    /// Where it is; empty if that could not be found out.
    QUrl inTrash() const;

    /// Puts it back, and tells where: under its old name, or, where that is taken by now, with " (2)" before the
    /// extension. False, with the reason in `error`, when it is no longer in the Trash or cannot be put back; then
    /// nothing has changed.
    bool restore(QUrl *restored, QString *error) const;

private:
    bool isStillThere() const;

    QByteArray m_original;
    QByteArray m_trashed;
    dev_t m_device = 0;
    ino_t m_inode = 0;
};
