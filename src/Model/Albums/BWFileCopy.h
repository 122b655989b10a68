// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <QString>
#include <QUrl>

/// Puts files in their place so that a power cut or a full disk never leaves half a file under a name, and no other
/// program's file is ever overwritten. Any thread.
class BWFileCopy {
public:
    /// How much of the data is copied, from 0 to 1; returns whether to go on. Called on the calling thread, every few
    /// megabytes. A copy that does not go on has failed.
    using Progress = std::function<bool(double done)>;
    /// Returns a name that is free.
    using FreeName = std::function<QUrl()>;

    /// Copies a file that no program changes any more, its date included. On one disk it only gets a second name, and
    /// the rights that a copy would have, so that even an hour of video is there at once. Elsewhere the data are
    /// written beside the target under a hidden name, brought to disk, and only then take the target's name.
    ///
    /// If another program takes the name first, asks for the next free one, without copying again. Returns the name it
    /// got; an empty URL, with the reason in `error`, if anything failed: then nothing of the copy is left.
    static QUrl shareUnderFreeName(const QUrl &from, const FreeName &freeName, QString *error = nullptr,
                                   const Progress &progress = {});

    /// Moves a file: on one disk it is only renamed. Elsewhere it is copied as above, with its rights and what other programs
    /// have noted with it, and removed when the copy is safe. An empty URL, with the reason in errno, if anything failed:
    /// then it is where it was. EEXIST if the last name was taken; EAGAIN if it changed while it was copied.
    static QUrl moveUnderFreeName(const QUrl &from, const FreeName &freeName, const Progress &progress = {});

    /// Native paths. False, with the reason in errno, on failure; EEXIST if the new name is taken.
    static bool renameWithoutOverwriting(const QByteArray &from, const QByteArray &to);
};
