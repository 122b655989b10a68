#pragma once

#include "BWACUDriver/BWCamera.h"

class BWSettingsWindowController;

/// Does what the settings window cannot do itself. GUI thread.
class BWSettingsWindowControllerDelegate {
public:
    virtual ~BWSettingsWindowControllerDelegate() = default;

    /// The user picked that camera; it may be the current one.
    virtual void changeCurrentCamera(BWSettingsWindowController &sender, const BWCameraPtr &camera) = 0;
};
