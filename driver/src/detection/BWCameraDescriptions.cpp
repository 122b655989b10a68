// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWCameraDetector.h"
#include "camera/BWControlTable.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace {

using Groups = QList<BWControlGroup>;

QList<int> controlsOf(const Groups &groups)
{
    QList<int> codes;
    for (const BWKnownControl &control : BWControlTable) {
        if (groups.contains(control.group))
            codes.append(control.code);
    }
    return codes;
}

BWCameraDescriptionPtr describe(QString name, QString cameraType, QString products, QList<BWResolution> resolutions,
                                const Groups &groups, bool isBridgeChip = false)
{
    return std::make_shared<const BWCameraDescription>(BWCameraDescription{std::move(name), std::move(cameraType),
                                                                           std::move(products), std::move(resolutions),
                                                                           controlsOf(groups), isBridgeChip});
}

/// The supported types.
struct SupportedTypes {
    const Groups colour{BWControlGroup::Picture, BWControlGroup::Colour};
    const Groups colourAndExposure{BWControlGroup::Picture, BWControlGroup::Colour, BWControlGroup::Exposure};
    const Groups analog{BWControlGroup::Picture, BWControlGroup::Receiver};

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
