// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWCameraSetting.h"

#include "camera/BWControlTable.h"

#include <algorithm>

namespace {

const BWKnownControl *known(int identifier)
{
    const auto *found =
        std::find_if(BWControlTable.begin(), BWControlTable.end(),
                     [identifier](const BWKnownControl &control) { return control.code == identifier; });
    return found == BWControlTable.end() ? nullptr : found;
}

} // namespace

BWCameraSetting::BWCameraSetting(int identifier, double min, double max, double step, double defaultValue)
    : m_identifier(identifier), m_min(min), m_max(max), m_step(step), m_default(defaultValue), m_value(defaultValue)
{
}

QString BWCameraSetting::stringForSettingIdentifier(int identifier)
{
    const BWKnownControl *control = known(identifier);
    return control ? QString::fromLatin1(control->string) : QString();
}

QString BWCameraSetting::nameForSettingIdentifier(int identifier)
{
    const BWKnownControl *control = known(identifier);
    return control ? QString::fromLatin1(control->name) : QString();
}

std::optional<int> BWCameraSetting::automaticModeFor(int identifier)
{
    const BWKnownControl *control = known(identifier);
    return control ? control->automaticMode : std::nullopt;
}
