#pragma once

#include "BWACUDriver/BWStartProblem.h"

#include <QByteArray>
#include <QString>

/// Tells in plain words why a video node cannot be opened.
class BWNodeAccess {
public:
    /// `error` is an errno number. One sentence, with what helps, where that is known.
    static QString problem(const QByteArray &path, int error);

    /// What kind of obstacle that is to a user; Failed for what only the log can explain.
    static BWStartProblem::Kind problemKind(int error);
};
