#pragma once

#include "BWACUDriver/BWDetectedCamera.h"
#include "v4l2/device/BWVideoAbilities.h"
#include "v4l2/finding/BWCameraKind.h"
#include "v4l2/finding/BWCameraTable.h"
#include "v4l2/finding/BWVideoNode.h"

#include <functional>
#include <optional>

/// Decides which video nodes are cameras, and makes those. Immutable; safe on any thread.
class BWCameraMaker {
public:
    /// Opens the node for a moment; nothing, and the errno number, where that fails.
    using ReadAbilities = std::function<std::optional<BWVideoAbilities>(const QByteArray &path, int &error)>;

    /// `types` are those that are looked for.
    BWCameraMaker(BWCameraTable table, QList<BWCameraDescriptionPtr> types, ReadAbilities read = readFromKernel);

    /// Whether the node, judged without opening it, can become a camera of one of the types.
    bool mayBeCamera(const BWVideoNode &node) const;

    /// What to call a device for people that has not become a camera.
    QString nameOf(const BWVideoNode &node) const;

    std::optional<BWVideoAbilities> read(const BWVideoNode &node, int &error) const { return m_read(node.path, error); }

    BWCameraKind kindOf(const BWVideoNode &node, const BWVideoAbilities &abilities) const;

    /// Null where the device is none of the types.
    BWDetectedCameraPtr make(const BWVideoNode &node, const BWVideoAbilities &abilities, const BWCameraKind &kind,
                             const QString &uniqueIdentifier) const;

    static std::optional<BWVideoAbilities> readFromKernel(const QByteArray &path, int &error);

private:
    BWCameraTable m_table;
    QList<BWCameraDescriptionPtr> m_types;
    ReadAbilities m_read;
};
