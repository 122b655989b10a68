// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Import/BWOldSettings.h"
#include "Model/Import/BWOldSettingsImporter.h"

class BWLocalizationManager;

/// What the user reads about an import from a file, each in one sentence. `name` is from nameOf().
class BWImportTexts {
public:
    BWImportTexts() = delete;

    /// The file's name in them: without its folder, and always on one line.
    static QString nameOf(const QString &path);

    static QString takenOver(const BWOldSettingsImporter::Result &result, const QString &name,
                             BWLocalizationManager &texts);
    /// Why nothing was taken over from a file that has a problem.
    static QString refused(const BWOldSettingsFile &file, const QString &name, BWLocalizationManager &texts);
    /// They are in effect, but not on the disk.
    static QString notStored(BWLocalizationManager &texts);
    /// From the command line while the program is open, which would overwrite them.
    static QString programRuns(BWLocalizationManager &texts);
};
