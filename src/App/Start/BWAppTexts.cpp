// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/Start/BWAppTexts.h"

#include "BWACUDriver/BWCameraDetector.h"
#include "Model/Session/BWStartProblemText.h"
#include "Model/Texts/BWDisplayNames.h"
#include "Model/Texts/BWLocalizationManager.h"

using namespace Qt::StringLiterals;

void BWAppTexts::localizeWithManager(BWLocalizationManager &manager)
{
    // Registers texts that are shown elsewhere, so that a refreshed translation file has them.
    const QList<BWCameraDescriptionPtr> descriptions = BWCameraDetector::supportedDescriptions();
    for (const BWCameraDescriptionPtr &description : descriptions)
        BWDisplayNames::camera(*description, manager);
    manager.text(u"general"_s, u"option_ok"_s, u"OK"_s);
    manager.text(u"general"_s, u"option_cancel"_s, u"Cancel"_s);
    manager.text(u"flash_view"_s, u"snapshot_saved"_s, u"Snapshot saved"_s);
    manager.text(u"flash_view"_s, u"recording"_s, u"Recording..."_s);

    cameraAccessDeniedTitle =
        manager.text(u"camera_window"_s, u"camera_access_denied_title"_s, u"Camera access denied"_s);
    cameraAccessDeniedMessage =
        manager.text(u"camera_window"_s, u"camera_access_denied_message"_s,
                     u"BrimwellPro does not have permissions to access the camera. Please go to System Settings > "
                     "Privacy to grant access and restart BrimwellPro."_s)
        + u"\n\n"_s + BWStartProblemText::permissionFix(manager);
    cameraAccessRestrictedTitle =
        manager.text(u"camera_window"_s, u"camera_access_restricted_title"_s, u"Camera access restricted"_s);
    cameraAccessRestrictedMessage =
        manager.text(u"camera_window"_s, u"camera_access_restricted_message"_s,
                     u"It seems your user does not have enough permissions to allow camera access. Please try "
                     "running BrimwellPro with a different user"_s)
        + u"\n\n"_s
        + manager.text(u"camera_window"_s, u"camera_access_restricted_fix"_s,
                       u"A policy of this computer forbids it, as in a container or sandbox that was not given the "
                       "camera’s devices. An administrator can allow it."_s);
    errorInitializingAlbumsTitle =
        manager.text(u"camera_window"_s, u"error_initalizing_albums_title"_s, u"Error while initializing albums"_s);
    errorInitializingAlbumsMessage =
        manager.text(u"camera_window"_s, u"error_initalizing_albums_message"_s,
                     u"Albums could not be loaded. Please ensure that the following folders have write "
                     "permissions, or contact us for more information:"_s);
    homeNotUsableTitle =
        manager.text(u"camera_window"_s, u"home_not_usable_title"_s, u"The home folder cannot be used"_s);
    homeNotUsableMessage = manager.text(
        u"camera_window"_s, u"home_not_usable_message"_s,
        u"The path of your home folder or of the folder for settings contains characters that are not UTF-8. "
        "BrimwellPro cannot keep captures or settings there. Have the folder renamed, then start BrimwellPro again."_s);
    quitWhileSavingTitle = manager.text(u"camera_window"_s, u"quit_while_saving_title"_s, u"Quit and stop saving?"_s);
    quitWhileSavingMessage = manager.text(
        u"camera_window"_s, u"quit_while_saving_message"_s,
        u"Files of an album are still being saved elsewhere. If you quit now, they are not saved; the album "
        "keeps them."_s);
    quitUnsavedTitle = manager.text(u"measuring"_s, u"quit_unsaved_title"_s, u"Quit and lose measurements?"_s);
    quitUnsavedMessage = manager.text(
        u"measuring"_s, u"quit_unsaved_message"_s,
        u"Measurements could not be saved in the files of these pictures, and are lost if you quit now:\n%1"_s);
    quitWaitsForCaptures =
        manager.text(u"camera_window"_s, u"quit_waits_for_captures"_s,
                     u"Waiting for a capture on its way into the album. Quit again to leave it to the next start."_s);
    quitAtOnceTitle = manager.text(u"camera_window"_s, u"quit_at_once_title"_s, u"Quit at once?"_s);
    quitAtOnceMessage =
        manager.text(u"camera_window"_s, u"quit_at_once_message"_s,
                     u"A capture is still being copied into the album. If you quit now, nothing is lost: it is copied "
                     "when BrimwellPro starts the next time."_s);
    noCameraDetectedPlaceholder =
        manager.text(u"camera_window"_s, u"no_camera_detected_placeholder"_s, u"No camera detected"_s);
    liveStreamingWith = manager.text(u"camera_window"_s, u"live_streaming_with_prefix"_s, u"Live streaming with:"_s);
    lookingBack = manager.text(u"camera_window"_s, u"looking_back"_s,
                               u"Picture from the album. Esc goes back to the live image."_s);
    comparing =
        manager.text(u"camera_window"_s, u"comparing"_s, u"Comparison with a picture from the album. Esc ends it."_s);
    frozen = manager.text(u"camera_window"_s, u"frozen"_s,
                          u"Frozen: snapshots save this picture. %1 goes back to the live image."_s);
    gridDisclaimer =
        manager.text(u"camera_window"_s, u"grid_disclaimer"_s,
                     u"Grid represents 5x5mm when scope is resting on a flat target. Will vary on curved surfaces."_s);
    gridHoldsAt100 = manager.text(u"camera_window"_s, u"grid_holds_at_100"_s, u"Applies at 100%."_s);
    settingsNotStored = manager.text(u"camera_window"_s, u"settings_not_stored"_s,
                                     u"Settings could not be saved. Your choices apply until you quit."_s);
    notFrozen = manager.text(u"camera_window"_s, u"not_frozen"_s,
                             u"No undamaged picture has come from the camera. The image is still live."_s);
    fullScreenHint =
        manager.text(u"camera_window"_s, u"full_screen_hint"_s,
                     u"Esc leaves full screen. Move the pointer to the top edge for the bar and the menus."_s);
    staysAwake =
        manager.text(u"general"_s, u"stays_awake_reason"_s, u"A recording, a series or an export is running"_s);
}
