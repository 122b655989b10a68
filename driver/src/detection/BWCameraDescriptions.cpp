#include "BWACUDriver/BWCameraDetector.h"
#include "BWACUDriver/BWCameraSetting.h"

using namespace Qt::StringLiterals;

namespace {

BWCameraDescriptionPtr describe(QString name, QString cameraType, QString products, QList<BWResolution> resolutions,
                                QList<int> settings, bool isBridgeChip = false)
{
    return std::make_shared<const BWCameraDescription>(
        BWCameraDescription{name, cameraType, products, resolutions, settings, isBridgeChip});
}

/// The supported types.
struct SupportedTypes {
    const QList<int> colour{BWSettingHue,       BWSettingContrast, BWSettingSaturation,   BWSettingBrightness,
                            BWSettingSharpness, BWSettingGamma,    BWSettingWhiteBalance, BWSettingAutoWhite};
    const QList<int> colourAndExposure =
        colour + QList<int>{BWSettingGain, BWSettingBacklight, BWSettingAutoExposure, BWSettingExposureAbsolute};
    const QList<int> analog{BWSettingHue,        BWSettingContrast,  BWSettingSaturation,
                            BWSettingBrightness, BWSettingSharpness, BWSettingVideoNorm};

    const BWCameraDescriptionPtr dx20 = describe(u"DX20 Examination Camera"_s, u"dx20"_s, u"wired_ultra"_s,
                                                 {{640, 480},
                                                  {800, 600},
                                                  {1024, 768},
                                                  {1280, 720},
                                                  {1280, 960},
                                                  {1280, 1024},
                                                  {1600, 1200},
                                                  {1920, 1080},
                                                  {2048, 1536},
                                                  {2592, 1944}},
                                                 colourAndExposure);
    const BWCameraDescriptionPtr regular = describe(u"Regular Microscope"_s, u"regular_microscope"_s,
                                                    u"wired_regular"_s, {{640, 480}, {800, 600}, {1280, 1024}}, colour);
    const BWCameraDescriptionPtr high = describe(u"High Resolution Microscope"_s, u"high_resolution_microscope"_s,
                                                 u"wired_high"_s, {{640, 480}, {1280, 1024}, {1600, 1200}}, colour);
    const BWCameraDescriptionPtr ultra =
        describe(u"Ultra Resolution Microscope"_s, u"ultra_resolution_microscope"_s, u"wired_ultra"_s,
                 {{640, 480}, {800, 600}, {1280, 1024}, {1600, 1200}, {1920, 1080}, {2048, 1536}, {2592, 1944}},
                 colourAndExposure);
    const BWCameraDescriptionPtr wireless = describe(u"Wireless Microscope"_s, u"receptor_wireless_microscope"_s,
                                                     u"wireless"_s, {{640, 480}, {720, 480}}, analog, true);

    static const SupportedTypes &table()
    {
        static const SupportedTypes types;
        return types;
    }
};

} // namespace

BWCameraDescriptionPtr BWCameraDetector::descriptionForDX20()
{
    return SupportedTypes::table().dx20;
}

BWCameraDescriptionPtr BWCameraDetector::descriptionForRegularMicroscope()
{
    return SupportedTypes::table().regular;
}

BWCameraDescriptionPtr BWCameraDetector::descriptionForHighResolutionMicroscope()
{
    return SupportedTypes::table().high;
}

BWCameraDescriptionPtr BWCameraDetector::descriptionForUltraResolutionMicroscope()
{
    return SupportedTypes::table().ultra;
}

BWCameraDescriptionPtr BWCameraDetector::descriptionForReceptorWirelessMicroscope()
{
    return SupportedTypes::table().wireless;
}

QList<BWCameraDescriptionPtr> BWCameraDetector::supportedDescriptions()
{
    const SupportedTypes &types = SupportedTypes::table();
    return {types.dx20, types.regular, types.high, types.ultra, types.wireless};
}
