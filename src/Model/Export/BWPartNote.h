#pragma once

#include "Utils/BWFileClaim.h"

#include <QByteArray>

/// A note of a part file that is being written, kept in the folder for temporary files for as long as the object lives.
/// One that is still there when its program is not tells which part that program left. Any thread.
class BWPartNote {
public:
    /// The part is open. Where the note cannot be written there is none.
    BWPartNote(const QByteArray &part, int descriptor);
    ~BWPartNote();
    BWPartNote(const BWPartNote &) = delete;
    BWPartNote &operator=(const BWPartNote &) = delete;

    /// Removes the parts in that folder, whose path ends with a slash, that programs which were killed have left. What
    /// has taken the name of such a part since is left alone.
    static void clearParts(const QByteArray &folder);

private:
    QByteArray m_path;
    std::shared_ptr<BWFileClaim> m_claim;
};
