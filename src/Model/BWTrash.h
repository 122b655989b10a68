#pragma once

#include <QString>
#include <QUrl>

/// The desktop's Trash. GUI thread only.
class BWTrash {
public:
    /// Moves a file there. False, with the reason in `error`, when it stays where it is.
    static bool moveToTrash(const QUrl &file, QString *error = nullptr);
};
