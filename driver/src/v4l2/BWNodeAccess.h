#pragma once

#include <QByteArray>
#include <QString>

/// Tells in plain words why a video node cannot be opened.
class BWNodeAccess {
public:
    /// `error` is an errno number. One sentence, with what helps, where that is known.
    static QString problem(const QByteArray &path, int error);
};
