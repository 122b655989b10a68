#pragma once

#include "Model/Import/BWOldSettings.h"

/// The old settings in a file as the other platform keeps a program's defaults: a property list with the two archives.
struct BWOldSettingsFile {
    enum class Problem {
        None,
        NotThere,
        Unreadable, ///< `detail` is in the system's words
        TooLarge,
        Foreign, ///< no property list, or a damaged one
        NothingOld, ///< a property list without old settings
        Damaged, ///< the old settings themselves
    };

    Problem problem = Problem::None;
    QString detail; ///< why, for the log
    BWOldSettings settings; ///< decoded as a whole; empty unless there is no problem

    /// Reads the file, which is left as it is. Any thread; may take as long as the disk.
    static BWOldSettingsFile read(const QString &path);
    /// The same for what was read of it.
    static BWOldSettingsFile decode(const QByteArray &content);
};
