#include "App/Start/BWImportCommand.h"

#include "Model/Albums/BWAlbumManager.h"
#include "Model/BWRepository.h"
#include "Model/Import/BWImportTexts.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Model/Settings/BWSettingsUse.h"
#include "Model/Settings/BWUserDefaults.h"
#include "Model/Texts/BWLocalizationManager.h"

#include <QTextStream>

int BWImportCommand::run(const BWRepository::Options &options, const QString &path)
{
    const auto refuse = [](const QString &sentence) {
        QTextStream(stderr) << "brimwellpro: " << sentence << '\n';
        return 1;
    };
    BWLocalizationManager texts(options.localizationFile, options.preferredLanguages);
    const QString name = BWImportTexts::nameOf(path);
    const BWOldSettingsFile file = BWOldSettingsFile::read(path);
    if (file.problem != BWOldSettingsFile::Problem::None)
        return refuse(BWImportTexts::refused(file, name, texts));
    const BWSettingsUse use(options.settingsFile);
    if (!use.isGranted())
        return refuse(BWImportTexts::programRuns(texts));

    const BWRepository repository(options);
    repository.albumManager().waitUntilPrepared();
    const auto result =
        BWOldSettingsImporter::importByHand(file.settings, BWOldSettingsImporter::foldersThere(file.settings),
                                            repository.configManager(), repository.albumManager());
    if (!repository.userDefaults().synchronize())
        return refuse(BWImportTexts::notStored(texts));
    QTextStream(stdout) << BWImportTexts::takenOver(result, name, texts) << '\n';
    return 0;
}
