#pragma once

#include <functional>
#include <QString>
#include <QUrl>

/// Copying files so that a power cut or a full disk never leaves half a file under the target's name. Any thread.
class BWFileCopy {
public:
    /// How much of the data is copied, from 0 to 1; answers whether to go on. Called on the calling thread, every few
    /// megabytes. A copy that does not go on has failed.
    using Progress = std::function<bool(double done)>;

    /// Copies a file, its date included. The data are written beside the target under a hidden name, brought to disk,
    /// and only then take the target's name, unless that is taken. False, with the reason in `error`, when anything
    /// failed; then nothing of the copy is left.
    static bool copyWithoutOverwriting(const QUrl &from, const QUrl &to, QString *error = nullptr,
                                       const Progress &progress = {});

    /// The same for a file that nobody changes any more: on one disk it only gets a second name, and the rights that a
    /// copy would have, so that even an hour of video is there at once.
    static bool shareWithoutOverwriting(const QUrl &from, const QUrl &to, QString *error = nullptr,
                                        const Progress &progress = {});
};
