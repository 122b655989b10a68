#pragma once

#include "BWACUDriver/BWCameraDescription.h"

struct BWCameraRule;
struct BWVideoAbilities;
struct BWVideoNode;

/// What a device is taken for, and why.
struct BWCameraKind {
    QString type; ///< identifierForCameraType; null where the device is not to be used
    bool bridgeChip = false; ///< it has registers
    QString displayName; ///< in place of the type's name; null if not told
    QString why; ///< in words, for the log and the listing

    /// By the entry that fits (null if none does), else by what the device can do.
    static BWCameraKind of(const BWVideoNode &node, const BWVideoAbilities &abilities, const BWCameraRule *rule);

    /// Describes the one device: its own sizes and controls under the type's names. Null where `types` has not the
    /// type, or the device is not to be used.
    BWCameraDescriptionPtr describe(const BWVideoAbilities &abilities,
                                    const QList<BWCameraDescriptionPtr> &types) const;
};
