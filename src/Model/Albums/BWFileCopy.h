#pragma once

#include <functional>
#include <QString>
#include <QUrl>

/// Putting files in their place so that a power cut or a full disk never leaves half a file under a name, and nobody
/// else's file is ever overwritten. Any thread.
class BWFileCopy {
public:
    /// How much of the data is copied, from 0 to 1; answers whether to go on. Called on the calling thread, every few
    /// megabytes. A copy that does not go on has failed.
    using Progress = std::function<bool(double done)>;
    /// Tells a name that is free by now.
    using FreeName = std::function<QUrl()>;

    /// Copies a file that nobody changes any more, its date included. On one disk it only gets a second name, and
    /// the rights that a copy would have, so that even an hour of video is there at once. Elsewhere the data are written beside the target under a hidden name,
    /// brought to disk, and only then take the target's name.
    ///
    /// Where another program is faster and takes the name, the next free one is asked for, without copying again.
    /// Answers which it became; an empty URL, with the reason in `error`, when anything failed: then nothing of the copy
    /// is left.
    static QUrl shareUnderFreeName(const QUrl &from, const FreeName &freeName, QString *error = nullptr,
                                   const Progress &progress = {});

    /// Native paths. False, with the reason in errno, when it failed; EEXIST where the new name is taken.
    static bool renameWithoutOverwriting(const QByteArray &from, const QByteArray &to);
};
