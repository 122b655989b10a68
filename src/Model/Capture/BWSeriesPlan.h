// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <optional>
#include <QJsonObject>

/// A series of pictures at intervals, as the user wants it. A self-timer is a series of one picture with a delay.
struct BWSeriesPlan {
    enum class End {
        Number, ///< when so many pictures are taken, however long that takes
        Duration, ///< so long after the first picture
        UntilStopped,
    };

    static constexpr std::chrono::seconds longestInterval = std::chrono::hours(24);
    static constexpr std::chrono::seconds longestTime = std::chrono::hours(9999); ///< delay or duration
    static constexpr qint64 mostPictures = 1'000'000;

    std::chrono::seconds interval{10}; ///< at least one second
    std::chrono::seconds delay{0}; ///< before the first picture
    End end = End::Number;
    qint64 number = 100; ///< counts with End::Number
    std::chrono::seconds duration{3600}; ///< counts with End::Duration

    bool operator==(const BWSeriesPlan &) const = default;

    /// Whether everything is within its limits.
    bool isValid() const;
    /// How many pictures it takes if none is missed; nothing if it ends only when stopped.
    std::optional<qint64> pictures() const;
    /// From the start to its last picture.
    std::optional<std::chrono::seconds> length() const;

    QJsonObject toJson() const;
    /// Nothing for what is not a valid plan.
    static std::optional<BWSeriesPlan> fromJson(const QJsonObject &json);
};
