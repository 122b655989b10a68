// SPDX-License-Identifier: GPL-3.0-or-later
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
    /// What an import from a file took over, and what it did not.
    struct Result {
        int cameras = 0; ///< types of camera whose product was set
        int products = 0;
        int albums = 0; ///< folders added to the list
        int unknownCameras = 0; ///< types of camera that are, or whose products are, unknown here
        int unknownProducts = 0;
        int missingFolders = 0; ///< albums whose folders are not on this computer
        int knownAlbums = 0; ///< that were in the list already
    };

    /// The store that holds the two archives, which are only read. It must outlive the importer.
    explicit BWOldSettingsImporter(BWUserDefaults &defaults);

    /// Once, at the first start, before the albums are prepared. An archive that cannot be read is logged and not tried
    /// again; nothing of it is taken over.
    void importSettingsIfNecessary(BWConfigManager &config, BWAlbumManager &albums);
    /// The same each time it is called.
    void importSettings(BWConfigManager &config, BWAlbumManager &albums);

    /// Those of the old albums' folders that exist. Any thread; waits for the disks, but not for long.
    static QList<QUrl> foldersThere(const BWOldSettings &settings);

    /// At the user's request, with prepared albums: removes none from the list, and keeps the selected one. `there`
    /// comes from foldersThere(); missing folders are not made.
    static Result importByHand(const BWOldSettings &settings, const QList<QUrl> &there, BWConfigManager &config,
                               BWAlbumManager &albums);

private:
    void importAlbums(BWConfigManager &config, BWAlbumManager &albums);
    void importCameraSettings(BWConfigManager &config);

    BWUserDefaults &m_defaults;
};
