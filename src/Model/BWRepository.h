// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <QString>
#include <QStringList>

class BWAlbumManager;
class BWApplicationDelegate;
class BWConfigManager;
class BWLocalizationManager;
class BWOldSettingsImporter;
class BWUserDefaults;

/// Owns the managers for the whole run of the program. GUI thread only.
class BWRepository {
public:
    /// Where things are. Set them before the first use, to run in another home folder.
    struct Options {
        QString settingsFile; ///< BWSettingsFile::defaultPath()
        QString home; ///< the user's home folder
        QStringList preferredLanguages; ///< the system's
        QString localizationFile; ///< the built-in one

        /// What the program uses by default.
        static Options standard();
    };

    /// For singleton(); fatal once that exists.
    static void setOptions(const Options &options);

    /// Made at its first use, with old settings imported and texts and settings ready. The albums follow as soon as the
    /// disks have answered.
    static BWRepository &singleton();

    /// A separate repository, prepared like the singleton.
    explicit BWRepository(const Options &options);
    ~BWRepository();
    BWRepository(const BWRepository &) = delete;
    BWRepository &operator=(const BWRepository &) = delete;

    const QString &settingsFile() const { return m_settingsFile; }
    BWUserDefaults &userDefaults() const { return *m_userDefaults; }
    BWOldSettingsImporter &oldSettingsImporter() const { return *m_oldSettingsImporter; }
    BWConfigManager &configManager() const { return *m_configManager; }
    BWAlbumManager &albumManager() const { return *m_albumManager; }
    BWLocalizationManager &localizationManager() const { return *m_localizationManager; }
    /// The application's delegate, looked up at each call; null before it exists.
    BWApplicationDelegate *appDelegate() const;

private:
    void prepare();

    const QString m_settingsFile;
    std::unique_ptr<BWUserDefaults> m_userDefaults;
    std::unique_ptr<BWOldSettingsImporter> m_oldSettingsImporter;
    std::unique_ptr<BWLocalizationManager> m_localizationManager;
    std::unique_ptr<BWConfigManager> m_configManager;
    std::unique_ptr<BWAlbumManager> m_albumManager;
};
