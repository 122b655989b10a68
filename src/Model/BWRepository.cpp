// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/BWRepository.h"

#include "Model/Albums/BWAlbumManager.h"
#include "Model/BWApplicationDelegate.h"
#include "Model/Import/BWOldSettingsImporter.h"
#include "Model/Settings/BWConfigManager.h"
#include "Model/Settings/BWSettingsFile.h"
#include "Model/Texts/BWLocalizationManager.h"

#include <optional>
#include <QDir>
#include <QLocale>

namespace {

std::optional<BWRepository::Options> singletonOptions;
bool singletonExists = false;

/// Asks the application, because the repository that owns the settings may not be complete yet.
QString currentCameraIdentifier()
{
    const BWApplicationDelegate *delegate = BWApplicationDelegate::shared();
    const BWCameraPtr camera = delegate ? delegate->currentCamera() : nullptr;
    return camera ? camera->identifierForProducts() : QString();
}

} // namespace

BWRepository::Options BWRepository::Options::standard()
{
    return {BWSettingsFile::defaultPath(), QDir::homePath(), QLocale::system().uiLanguages(),
            QStringLiteral(":/localization.json")};
}

void BWRepository::setOptions(const Options &options)
{
    if (singletonExists)
        qFatal("The repository is in use already");
    singletonOptions = options;
}

BWRepository &BWRepository::singleton()
{
    static BWRepository repository(singletonOptions.value_or(Options::standard()));
    singletonExists = true;
    return repository;
}

BWRepository::BWRepository(const Options &options)
    : m_settingsFile(options.settingsFile),
      m_userDefaults(std::make_unique<BWSettingsFile>(options.settingsFile)),
      m_oldSettingsImporter(std::make_unique<BWOldSettingsImporter>(*m_userDefaults)),
      m_localizationManager(
          std::make_unique<BWLocalizationManager>(options.localizationFile, options.preferredLanguages)),
      m_configManager(std::make_unique<BWConfigManager>(*m_userDefaults, currentCameraIdentifier)),
      m_albumManager(std::make_unique<BWAlbumManager>(*m_userDefaults, options.home))
{
    prepare();
}

BWRepository::~BWRepository() = default;

void BWRepository::prepare()
{
    m_oldSettingsImporter->importSettingsIfNecessary(*m_configManager, *m_albumManager);
    if (!m_configManager->defaultAlbumName().isEmpty())
        m_albumManager->setOldDefaultAlbumName(m_configManager->defaultAlbumName());
    m_albumManager->prepareInBackground();
    m_configManager->localizeWithManager(*m_localizationManager);
}

BWApplicationDelegate *BWRepository::appDelegate() const
{
    return BWApplicationDelegate::shared();
}
