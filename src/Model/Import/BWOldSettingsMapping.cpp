#include "Model/Import/BWOldSettingsMapping.h"

#include "BWACUDriver/BWCameraSetting.h"
#include "Model/Settings/BWConfigManager.h"

using namespace Qt::StringLiterals;

BWOldSettingsMapping::BWOldSettingsMapping(const BWConfigManager &config)
{
    for (const BWCameraProductPtr &product : config.allProducts()) {
        m_products.insert(product->oldEnglishName(), product->identifier());
        if (!product->oldGermanName().isNull())
            m_products.insert(product->oldGermanName(), product->identifier());
    }
}

QString BWOldSettingsMapping::camera(const QString &oldName)
{
    static const QHash<QString, QString> cameras{
        {u"Brimwell Camera"_s, u"wired_regular"_s},
        {u"Brimwell High Resolution Camera"_s, u"wired_high"_s},
        {u"Brimwell Ultra Resolution Camera"_s, u"wired_ultra"_s},
        {u"Brimwell Wireless Camera"_s, u"wireless"_s},
    };
    return cameras.value(oldName);
}

std::optional<int> BWOldSettingsMapping::setting(const QString &oldName)
{
    static const QHash<QString, int> settings{
        {u"hue"_s, BWSettingHue},
        {u"contrast"_s, BWSettingContrast},
        {u"saturation"_s, BWSettingSaturation},
        {u"brightness"_s, BWSettingBrightness},
        {u"sharpness"_s, BWSettingSharpness},
        {u"gamma"_s, BWSettingGamma},
        {u"whiteBalance"_s, BWSettingWhiteBalance},
        {u"autoWhite"_s, BWSettingAutoWhite},
        {u"gain"_s, BWSettingGain},
        {u"backlight"_s, BWSettingBacklight},
        {u"autoExposure"_s, BWSettingAutoExposure},
        {u"exposureAbsolute"_s, BWSettingExposureAbsolute},
    };
    const auto found = settings.constFind(oldName);
    return found == settings.constEnd() ? std::nullopt : std::optional(*found);
}
