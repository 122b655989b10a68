// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWFileBytes.h"
#include "Utils/BWTemporaryFiles.h"

#include <ctime>
#include <memory>
#include <optional>
#include <QByteArray>
#include <QUrl>
#include <sys/types.h>

/// A note of a part file that is being written, kept in the folder for temporary files for as long as the object lives.
/// A note whose program is gone names the part that the program left behind. Any thread.
class BWPartNote {
public:
    /// The part is about to be made. Does without a note that cannot be written.
    explicit BWPartNote(const QByteArray &part);
    ~BWPartNote();
    BWPartNote(const BWPartNote &) = delete;
    BWPartNote &operator=(const BWPartNote &) = delete;

    /// The part is open. Until then only an empty file that is as old as the note is taken for it.
    void partIsOpen(int descriptor);

    /// Removes the parts that killed programs have left in that folder, whose path ends with a slash. Leaves alone what
    /// has taken the name of such a part since.
    static void clearParts(const QByteArray &folder);

private:
    QByteArray m_path;
    std::shared_ptr<BWFileClaim> m_claim;
};

/// A file that is written beside its target, as NAME.part, and takes the target's place only when it is whole and safe
/// on the disk. Until then a file at the target stays as it is. One thread.
///
/// Operations that fail return false and leave the reason in `errno`.
class BWPartFile {
public:
    explicit BWPartFile(const QUrl &target);
    /// Removes the part, unless it is complete or kept.
    ~BWPartFile();
    BWPartFile(const BWPartFile &) = delete;
    BWPartFile &operator=(const BWPartFile &) = delete;

    const QUrl &target() const { return m_target; }
    /// Takes another name if NAME.part is in use or too long. First removes the parts that killed programs have left in
    /// the folder. `rights` are those of the file, without those that the user gives to no new file.
    bool create(mode_t rights = 0666);
    int descriptor() const { return m_descriptor; }

    bool writeAt(qint64 offset, const char *bytes, qint64 size);
    /// To be called after writing through descriptor(). Keeps the amount that waits for the disk small, so that
    /// completing a large file takes no longer than a small one, and cancelling takes no time.
    bool written(qint64 end) { return m_writing.written(m_descriptor, end); }

    /// Brings the file to disk and gives it the target's name, replacing any file there, but no folder. `modified`
    /// becomes its date, if the disk can keep one.
    bool complete(const std::optional<timespec> &modified = {});
    /// Leaves the part where it is, and returns where; removes an empty one, and returns an empty URL.
    QUrl keep();

private:
    QByteArray partName(int attempt) const;
    void discard();

    const QUrl m_target;
    QByteArray m_folder; // ends with a slash
    QByteArray m_name;
    qint64 m_longestName = 255; // bytes
    QByteArray m_part; // empty unless the file there is ours
    std::optional<BWPartNote> m_note; // while it is neither complete nor kept
    int m_descriptor = -1;
    BWSteadyWriting m_writing;
};
