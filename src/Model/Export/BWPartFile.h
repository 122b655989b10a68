#pragma once

#include "Model/Export/BWPartNote.h"

#include <ctime>
#include <optional>
#include <QByteArray>
#include <QUrl>

/// A file that is written beside its target, as NAME.part, and takes the target's place only when it is whole and safe
/// on the disk. Until then whatever stands at the target stays as it is. One thread.
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
    /// Another name is taken where NAME.part is in use or too long. Removes before what runs that were killed have left
    /// in the folder.
    bool create();
    int descriptor() const { return m_descriptor; }

    bool writeAt(qint64 offset, const char *bytes, qint64 size);
    /// To be told of what is written through descriptor(). Keeps what waits for the disk small, so that the end of a
    /// large file comes soon after its last byte, and a cancelled one lets go at once.
    bool written(qint64 end);

    /// Brings the file to disk and gives it the target's name, replacing any file there, but no folder. `modified` is
    /// the date that it gets, where the disk can keep one.
    bool complete(const std::optional<timespec> &modified = {});
    /// Leaves the part where it is; an empty one is removed. Returns where it is, an empty URL if it was.
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
    qint64 m_begun = 0; // up to here the kernel was asked to write
};
