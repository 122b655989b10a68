#pragma once

#include <optional>
#include <QByteArray>
#include <QString>
#include <QVariant>

/// Decodes keyed archives: property lists of archived objects that refer to each other by their positions. Any thread.
class BWKeyedArchive {
public:
    /// The root object in plain values: arrays become a QVariantList, dictionaries a QVariantMap (entries whose keys are
    /// no texts are left out), objects of all other classes a QVariantMap of their fields; an object that was nil
    /// becomes an invalid QVariant. The limits are those of BWPropertyList, where values that are referred to several
    /// times count each time.
    ///
    /// Nothing when the archive is refused because it is damaged, refers out of itself or to itself, or exceeds the
    /// limits, be it in an object that the root does not need; `problem` then says why, for the log.
    static std::optional<QVariant> root(const QByteArray &archive, QString &problem);
};
