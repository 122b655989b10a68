#pragma once

#include "Model/Import/BWOldSettings.h"
#include "Model/Import/BWOldSettingsImporter.h"

class BWLocalizationManager;

/// What the user is told of old settings that were taken over by hand, each in one sentence. `name` is from nameOf().
class BWImportTexts {
public:
    BWImportTexts() = delete;

    /// How a file is called in them: without its folder, and on one line whatever is in its name.
    static QString nameOf(const QString &path);

    static QString takenOver(const BWOldSettingsImporter::Result &result, const QString &name,
                             BWLocalizationManager &texts);
    /// Why nothing was taken over; the file has a problem.
    static QString refused(const BWOldSettingsFile &file, const QString &name, BWLocalizationManager &texts);
    /// They are in effect, but not on the disk.
    static QString notStored(BWLocalizationManager &texts);
    /// From the command line while the program is open, which would overwrite them.
    static QString programRuns(BWLocalizationManager &texts);
};
