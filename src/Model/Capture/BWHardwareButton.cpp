#include "Model/Capture/BWHardwareButton.h"

#include <Qt>

bool BWHardwareButton::isPress(int key, bool autoRepeat, bool readByCamera)
{
    // X11 and Wayland keyboards have the kernel's camera key as the one of webcams.
    return (key == Qt::Key_WebCam || key == Qt::Key_Camera) && !autoRepeat && !readByCamera;
}
