// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <QByteArray>
#include <QMetaType>
#include <QString>
#include <QVariant>

/// A reference within a keyed archive: the position of an archived object.
struct BWArchiveReference {
    quint64 index = 0;
};
Q_DECLARE_METATYPE(BWArchiveReference)

/// Reads property lists, binary or XML, from any source: refuses what is damaged or made to do harm, in bounded time
/// and memory. Any thread.
///
/// Values become a QString, qlonglong, double, bool, QByteArray, BWArchiveReference, QVariantList or QVariantMap; a
/// date, which is not needed here, becomes an invalid QVariant.
class BWPropertyList {
public:
    // Far above what any program keeps as its defaults, and read within a second.
    static constexpr qsizetype maximumBytes = 16 << 20; ///< of the input, and of the texts and data read from it
    static constexpr qsizetype maximumValues = 100'000; ///< counting a value each time it is referred to
    static constexpr int maximumDepth = 64; ///< containers within containers

    /// The list's topmost value. Nothing if it is refused; `problem` then says why, for the log.
    static std::optional<QVariant> read(const QByteArray &bytes, QString &problem);
};
