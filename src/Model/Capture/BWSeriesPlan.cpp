// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Capture/BWSeriesPlan.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

const QStringList endNames{u"number"_s, u"duration"_s, u"stopped"_s}; // in the order of the enum

bool isWithin(std::chrono::seconds time, std::chrono::seconds least, std::chrono::seconds most)
{
    return time >= least && time <= most;
}

std::chrono::seconds secondsIn(const QJsonObject &json, const QString &key)
{
    return std::chrono::seconds(json.value(key).toInteger(-1));
}

} // namespace

bool BWSeriesPlan::isValid() const
{
    constexpr std::chrono::seconds least(1);
    return isWithin(interval, least, longestInterval) && isWithin(delay, {}, longestTime)
        && isWithin(duration, least, longestTime) && number >= 1 && number <= mostPictures;
}

std::optional<qint64> BWSeriesPlan::pictures() const
{
    switch (end) {
    case End::Number:
        return number;
    case End::Duration:
        return duration / interval + 1;
    case End::UntilStopped:
        break;
    }
    return std::nullopt;
}

std::optional<std::chrono::seconds> BWSeriesPlan::length() const
{
    const std::optional<qint64> count = pictures();
    return count ? std::optional(delay + (*count - 1) * interval) : std::nullopt;
}

QJsonObject BWSeriesPlan::toJson() const
{
    return {{u"interval"_s, qint64(interval.count())},
            {u"delay"_s, qint64(delay.count())},
            {u"end"_s, endNames[static_cast<int>(end)]},
            {u"number"_s, number},
            {u"duration"_s, qint64(duration.count())}};
}

std::optional<BWSeriesPlan> BWSeriesPlan::fromJson(const QJsonObject &json)
{
    const qsizetype end = endNames.indexOf(json.value(u"end"_s).toString());
    BWSeriesPlan plan;
    plan.interval = secondsIn(json, u"interval"_s);
    plan.delay = secondsIn(json, u"delay"_s);
    plan.end = static_cast<End>(end);
    plan.number = json.value(u"number"_s).toInteger(-1);
    plan.duration = secondsIn(json, u"duration"_s);
    return end >= 0 && plan.isValid() ? std::optional(plan) : std::nullopt;
}
