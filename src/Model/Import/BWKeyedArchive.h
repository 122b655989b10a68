// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <QByteArray>
#include <QString>
#include <QVariant>

/// Decodes keyed archives: property lists of archived objects that refer to each other by their positions. Any thread.
class BWKeyedArchive {
public:
    /// The root object in plain values: arrays become a QVariantList, dictionaries a QVariantMap (without entries whose
    /// keys are not texts), objects of all other classes a QVariantMap of their fields, and nil an invalid QVariant.
    /// The limits are those of BWPropertyList; values count each time they are referred to.
    ///
    /// Nothing if the archive is refused: damaged, with references out of itself or back to itself, or beyond the
    /// limits, even in an object that the root does not need; `problem` then says why, for the log.
    static std::optional<QVariant> root(const QByteArray &archive, QString &problem);
};
