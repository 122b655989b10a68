#pragma once

#include <QString>
#include <QUrl>

/// Copying files so that a power cut or a full disk never leaves half a file under the target's name. Any thread.
class BWFileCopy {
public:
    /// Copies a file, its date included. The data are written beside the target under a hidden name, brought to disk,
    /// and only then take the target's name, unless that is taken. False, with the reason in `error`, when anything
    /// failed; then nothing of the copy is left.
    static bool copyWithoutOverwriting(const QUrl &from, const QUrl &to, QString *error = nullptr);
};
