// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWCameraStatus.h"

#include <QByteArray>
#include <QString>

/// Why a video node cannot be opened or used, in plain words.
class BWNodeAccess {
public:
    /// `error` is an errno number. One sentence, with what helps if that is known.
    static QString problem(const QByteArray &path, int error);

    /// What kind of obstacle that is to a user; Failed for what only the log can explain.
    static BWStartProblem::Kind problemKind(int error);

    /// The name of the program that has the device node open, such as "guvcview"; one that streams from it takes
    /// precedence. Null if there is none, or none that this user may see; our own process does not count. Reads /proc:
    /// some milliseconds on a busy machine. Any thread.
    static QString programHolding(const QByteArray &path);
};
