#include "BWImportCommand.h"

#include "Model/BWAlbumManager.h"
#include "Model/BWLocalizationManager.h"
#include "Model/BWRepository.h"
#include "Model/BWSettingsFile.h"
#include "Model/BWSettingsUse.h"
#include "Model/BWUserDefaults.h"
#include "Model/Import/BWImportTexts.h"

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
