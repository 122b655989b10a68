#pragma once

#include "Model/Import/BWOldSettings.h"

#include <QList>
#include <QUrl>

class BWAlbumManager;
class BWConfigManager;
class BWUserDefaults;

/// Takes over what the previous generation of the software left: which product each type of camera is, the products'
/// values, and the albums. GUI thread only.
class BWOldSettingsImporter {
public:
    /// What was taken over by hand, and what was not.
    struct Result {
        int cameras = 0; ///< types of camera whose product was set
        int products = 0;
        int albums = 0; ///< folders added to the list
        int unknownCameras = 0; ///< types of camera or their products that are not known here
        int unknownProducts = 0;
        int missingFolders = 0; ///< albums whose folders are not on this computer
        int knownAlbums = 0; ///< that were in the list already
    };

    /// The store that holds the two archives, which are only read. It must outlive the importer.
    explicit BWOldSettingsImporter(BWUserDefaults &defaults);

    /// Once, at the first start, before the albums are prepared. An archive that cannot be read is logged, left alone
    /// and not tried again; nothing of it is taken over.
    void importSettingsIfNecessary(BWConfigManager &config, BWAlbumManager &albums);
    /// True when there is no reason to try again at the next start, which a damaged archive is none.
    bool importSettings(BWConfigManager &config, BWAlbumManager &albums);

    /// Those of the old albums' folders that are there. Any thread; waits for the disks, but not for long.
    static QList<QUrl> foldersThere(const BWOldSettings &settings);

    /// At the user's wish, with albums that are prepared: none is removed from the list, and the one that is selected
    /// stays so. `there` comes from foldersThere(); folders that are not there are not made.
    static Result importByHand(const BWOldSettings &settings, const QList<QUrl> &there, BWConfigManager &config,
                               BWAlbumManager &albums);

private:
    bool importAlbums(BWConfigManager &config, BWAlbumManager &albums);
    bool importCameraSettings(BWConfigManager &config);

    BWUserDefaults &m_defaults;
};
