// SPDX-License-Identifier: GPL-3.0-or-later
#include "v4l2/finding/BWCameraMaker.h"

#include "BWACUDriver/BWCameraDetector.h"
#include "v4l2/BWKernelCalls.h"
#include "v4l2/device/BWV4L2Device.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr BWResolution ultraFrom{2592, 1944};
constexpr BWResolution highFrom{1280, 1024};

qint64 area(const BWResolution &resolution)
{
    return qint64(resolution.width()) * resolution.height();
}

void chooseByAbilities(BWCameraKind &kind, const BWVideoAbilities &abilities)
{
    const std::vector<BWResolution> resolutions = abilities.resolutions();
    if (resolutions.empty()) {
        kind.why = u"it delivers no picture format that can be shown"_s;
        return;
    }
    if (abilities.hasNorms()) {
        kind.type = BWCameraDetector::descriptionForReceptorWirelessMicroscope()->identifierForCameraType;
        kind.why = u"it has video norms, as a receiver has"_s;
        return;
    }
    const BWResolution largest = resolutions.back();
    const auto description = area(largest) >= area(ultraFrom)
        ? BWCameraDetector::descriptionForUltraResolutionMicroscope()
        : area(largest) >= area(highFrom) ? BWCameraDetector::descriptionForHighResolutionMicroscope()
                                          : BWCameraDetector::descriptionForRegularMicroscope();
    kind.type = description->identifierForCameraType;
    kind.why = u"its largest picture is %1"_s.arg(largest.resolutionString());
}

} // namespace

BWCameraKind BWCameraKind::of(const BWVideoNode &node, const BWVideoAbilities &abilities, const BWCameraRule *rule)
{
    BWCameraKind kind;
    if (!abilities.captures) {
        kind.why = u"it does not capture pictures"_s;
        return kind;
    }
    if (rule && rule->ignore) {
        kind.why = u"%1 says to ignore it"_s.arg(rule->origin);
        return kind;
    }
    chooseByAbilities(kind, abilities);
    if (kind.type.isNull())
        return kind; // no entry can make it deliver pictures
    const QString wireless = BWCameraDetector::descriptionForReceptorWirelessMicroscope()->identifierForCameraType;
    if (rule) {
        if (!rule->type.isNull()) {
            kind.type = rule->type;
            kind.why = u"%1 says so"_s.arg(rule->origin);
        }
        kind.displayName = rule->displayName;
    }
    kind.bridgeChip = kind.type == wireless && node.driver == "em28xx"_L1;
    if (rule && rule->bridgeChip)
        kind.bridgeChip = *rule->bridgeChip;
    return kind;
}

BWCameraDescriptionPtr BWCameraKind::describe(const BWVideoAbilities &abilities,
                                              const QList<BWCameraDescriptionPtr> &types) const
{
    const auto found = std::find_if(types.begin(), types.end(), [this](const BWCameraDescriptionPtr &description) {
        return description->identifierForCameraType == type;
    });
    if (found == types.end())
        return nullptr;
    BWCameraDescription description = **found;
    if (!displayName.isNull()) {
        description.name = displayName;
        description.hasOwnName = true;
    }
    const std::vector<BWResolution> resolutions = abilities.resolutions();
    description.availableResolutions = {resolutions.begin(), resolutions.end()};
    description.acceptedSettings.clear();
    for (const BWVideoControl &control : abilities.controls)
        description.acceptedSettings.append(control.info.identifier);
    std::sort(description.acceptedSettings.begin(), description.acceptedSettings.end());
    description.isBridgeChip = bridgeChip;
    return std::make_shared<const BWCameraDescription>(description);
}

BWCameraMaker::BWCameraMaker(BWCameraTable table, QList<BWCameraDescriptionPtr> types, ReadAbilities read)
    : m_table(std::move(table)), m_types(std::move(types)), m_read(std::move(read))
{
}

bool BWCameraMaker::mayBeCamera(const BWVideoNode &node) const
{
    if (node.index != 0)
        return false;
    const BWCameraRule *rule = m_table.ruleFor(node);
    if (!rule)
        return true;
    const auto isOfRule = [rule](const BWCameraDescriptionPtr &type) {
        return type->identifierForCameraType == rule->type;
    };
    return !rule->ignore && (rule->type.isNull() || std::any_of(m_types.begin(), m_types.end(), isOfRule));
}

QString BWCameraMaker::nameOf(const BWVideoNode &node) const
{
    const BWCameraRule *rule = m_table.ruleFor(node);
    if (rule && !rule->displayName.isNull())
        return rule->displayName;
    return node.name.isEmpty() ? QStringLiteral("USB %1").arg(node.usbId) : node.name;
}

BWCameraKind BWCameraMaker::kindOf(const BWVideoNode &node, const BWVideoAbilities &abilities) const
{
    BWVideoNode named = node;
    if (named.driver.isNull()) // the node belongs to no device
        named.driver = abilities.driver;
    return BWCameraKind::of(named, abilities, m_table.ruleFor(named));
}

BWDetectedCameraPtr BWCameraMaker::make(const BWVideoNode &node, const BWVideoAbilities &abilities,
                                        const BWCameraKind &kind, const QString &uniqueIdentifier) const
{
    const BWCameraDescriptionPtr description = kind.describe(abilities, m_types);
    if (!description)
        return nullptr;
    const auto open = [node, abilities, bridgeChip = kind.bridgeChip]() -> std::unique_ptr<BWCaptureDevice> {
        return std::make_unique<BWV4L2Device>(node, abilities, bridgeChip, [node] { return node.buttonPath(); });
    };
    return std::make_shared<BWDetectedCamera>(description, uniqueIdentifier, open);
}

std::optional<BWVideoAbilities> BWCameraMaker::readFromKernel(const QByteArray &path, int &error)
{
    return BWVideoAbilities::read(BWKernelCalls::system(), path.constData(), error);
}
