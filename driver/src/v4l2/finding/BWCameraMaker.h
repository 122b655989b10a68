// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWDetectedCamera.h"
#include "v4l2/device/BWVideoAbilities.h"
#include "v4l2/finding/BWCameraTable.h"
#include "v4l2/finding/BWVideoNode.h"

#include <functional>
#include <optional>

/// Which type of camera a device is used as, and why.
struct BWCameraKind {
    QString type; ///< identifierForCameraType; null if the device is not used
    bool bridgeChip = false; ///< it has registers
    QString displayName; ///< replaces the type's name; null if there is none
    QString why; ///< in words, for the log and the listing

    /// Goes by the entry that fits (null if none does), else by what the device can do.
    static BWCameraKind of(const BWVideoNode &node, const BWVideoAbilities &abilities, const BWCameraRule *rule);

    /// Describes this one device: its own sizes and controls under the type's names. Null if the device is not used, or
    /// `types` lacks its type.
    BWCameraDescriptionPtr describe(const BWVideoAbilities &abilities,
                                    const QList<BWCameraDescriptionPtr> &types) const;
};

/// Decides which video nodes are cameras, and makes those. Immutable; safe on any thread.
class BWCameraMaker {
public:
    /// Opens the node for a moment. Nothing if that fails, and the errno number in `error`.
    using ReadAbilities = std::function<std::optional<BWVideoAbilities>(const QByteArray &path, int &error)>;

    /// `types` are those to look for.
    BWCameraMaker(BWCameraTable table, QList<BWCameraDescriptionPtr> types, ReadAbilities read = readFromKernel);

    /// Whether the node can become a camera of one of the types, as far as that is known without opening it.
    bool mayBeCamera(const BWVideoNode &node) const;

    /// What to call a device, in texts for people, that has not become a camera.
    QString nameOf(const BWVideoNode &node) const;

    std::optional<BWVideoAbilities> read(const BWVideoNode &node, int &error) const { return m_read(node.path, error); }

    BWCameraKind kindOf(const BWVideoNode &node, const BWVideoAbilities &abilities) const;

    /// Null if the device is of none of the types.
    BWDetectedCameraPtr make(const BWVideoNode &node, const BWVideoAbilities &abilities, const BWCameraKind &kind,
                             const QString &uniqueIdentifier) const;

    static std::optional<BWVideoAbilities> readFromKernel(const QByteArray &path, int &error);

private:
    BWCameraTable m_table;
    QList<BWCameraDescriptionPtr> m_types;
    ReadAbilities m_read;
};
