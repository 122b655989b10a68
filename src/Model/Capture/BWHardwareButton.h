#pragma once

/// The button on the camera, where the desktop hands it to the window as a key.
class BWHardwareButton {
public:
    /// Whether that key press is a press of the current camera's button. It is not where the camera reads its button
    /// itself (`readByCamera`), or every press would count twice.
    static bool isPress(int key, bool autoRepeat, bool readByCamera);
};
