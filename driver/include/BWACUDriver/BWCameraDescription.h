#pragma once

#include "BWACUDriver/BWResolution.h"

#include <memory>
#include <QList>
#include <QString>

/// What is known of a type of camera, or of one device of that type. Immutable, shared by pointer.
struct BWCameraDescription {
    QString name; ///< English display name of the type
    QString identifierForCameraType; ///< key of the translated name
    QString identifierForProducts; ///< "wired_ultra", "wired_high", "wired_regular" or "wireless"
    QList<BWResolution> availableResolutions; ///< in the order in which they are offered
    QList<int> acceptedSettings; ///< control codes (BWSettingCode)
    bool isBridgeChip = false; ///< sessions are BWEmpiaCamera objects
    bool hasOwnName = false; ///< the name was given to this device by a person, and is not translated

    bool acceptsSetting(int identifier) const { return acceptedSettings.contains(identifier); }
};

using BWCameraDescriptionPtr = std::shared_ptr<const BWCameraDescription>;
