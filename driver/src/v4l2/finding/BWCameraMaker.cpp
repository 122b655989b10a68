#include "v4l2/finding/BWCameraMaker.h"

#include "v4l2/BWKernelCalls.h"
#include "v4l2/device/BWMakeBridgeRegisters.h"
#include "v4l2/device/BWV4L2Device.h"
#include "v4l2/finding/BWButtonFinder.h"

#include <algorithm>
#include <utility>

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
    if (named.driver.isNull()) // a node that hangs on no device
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
        const auto findButton = [sysPath = node.sysPath] { return BWButtonFinder::eventNode(sysPath); };
        auto registers = bridgeChip ? makeBridgeRegisters(node, BWKernelCalls::system()) : nullptr;
        return std::make_unique<BWV4L2Device>(node, abilities, findButton, std::move(registers));
    };
    return std::make_shared<BWDetectedCamera>(description, uniqueIdentifier, open);
}

std::optional<BWVideoAbilities> BWCameraMaker::readFromKernel(const QByteArray &path, int &error)
{
    return BWVideoAbilities::read(BWKernelCalls::system(), path.constData(), error);
}
