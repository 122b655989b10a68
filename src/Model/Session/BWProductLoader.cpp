#include "Model/Session/BWProductLoader.h"

#include "BWACUDriver/BWCamera.h"
#include "Model/BWCameraProduct.h"

const QList<int> &BWProductLoader::settingsOrder()
{
    static const QList<int> order{BWSettingHue,       BWSettingContrast,         BWSettingSharpness,
                                  BWSettingGain,      BWSettingSaturation,       BWSettingBrightness,
                                  BWSettingGamma,     BWSettingExposureAbsolute, BWSettingWhiteBalance,
                                  BWSettingAutoWhite, BWSettingVideoNorm,        BWSettingAutoExposure};
    return order;
}

void BWProductLoader::load(const BWCameraProduct &product, BWCamera &camera, VideoNorm norm)
{
    for (const int setting : settingsOrder()) {
        const auto value = product.valueForSetting(setting);
        if (!value || !camera.detectedCamera()->cameraDescription()->acceptsSetting(setting))
            continue;
        if (setting != BWSettingVideoNorm) {
            camera.setSetting(setting, *value);
        } else if (norm == VideoNorm::Send) {
            if (auto *bridge = dynamic_cast<BWEmpiaCamera *>(&camera))
                bridge->setVideoNorm(static_cast<int>(*value), {});
        }
    }
}
