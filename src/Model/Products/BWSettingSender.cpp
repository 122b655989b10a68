#include "Model/Products/BWSettingSender.h"

#include "BWACUDriver/BWCamera.h"

void BWSettingSender::send(BWCamera &camera, BWCameraSetting &setting, double value)
{
    // Before it is sent: what the camera answers is the truth, and must not be overwritten.
    setting.setValue(value);
    if (setting.identifier() != BWSettingVideoNorm)
        camera.setSetting(setting.identifier(), value);
    else if (auto *bridge = dynamic_cast<BWEmpiaCamera *>(&camera))
        bridge->setVideoNorm(static_cast<int>(value), {});
}
