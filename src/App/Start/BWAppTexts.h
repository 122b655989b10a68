// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Texts/BWLocalizationManager.h"

#include <QString>

/// The texts that belong to no particular window.
struct BWAppTexts : public BWLocalizationManagerDelegate {
    void localizeWithManager(BWLocalizationManager &manager) override;

    QString noCameraDetectedPlaceholder;
    QString liveStreamingWith;
    QString lookingBack;
    QString comparing;
    QString frozen; ///< %1 is the key that ends it
    QString gridDisclaimer;
    QString gridHoldsAt100; ///< the lines keep their distance on the screen at every zoom
    QString settingsNotStored;
    QString notFrozen;
    QString fullScreenHint;
    QString cameraAccessDeniedTitle;
    QString cameraAccessDeniedMessage;
    QString cameraAccessRestrictedTitle;
    QString cameraAccessRestrictedMessage;
    QString errorInitializingAlbumsTitle;
    QString errorInitializingAlbumsMessage;
    QString homeNotUsableTitle;
    QString homeNotUsableMessage;
    QString quitWhileSavingTitle;
    QString quitWhileSavingMessage;
    QString quitUnsavedTitle;
    QString quitUnsavedMessage; ///< with %1, names of pictures
    QString quitWaitsForCaptures;
    QString quitAtOnceTitle;
    QString quitAtOnceMessage;
    QString staysAwake;
};
