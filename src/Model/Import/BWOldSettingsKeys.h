#pragma once

#include <QString>

/// Under which names the previous generation stored its two keyed archives.
class BWOldSettingsKeys {
public:
    static QString cameras() { return QStringLiteral("brimwellProCameraConfigs49"); }
    static QString albums() { return QStringLiteral("brimwellProAlbumStats30"); }
};
