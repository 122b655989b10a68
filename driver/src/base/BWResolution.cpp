// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWResolution.h"

#include <algorithm>
#include <cstdlib>
#include <QRegularExpression>
#include <utility>

QString BWResolution::resolutionString() const
{
    return QStringLiteral("%1x%2").arg(m_width).arg(m_height);
}

std::optional<BWResolution> BWResolution::fromResolutionString(const QString &text)
{
    static const QRegularExpression pattern(QStringLiteral("\\A([0-9]{1,5})x([0-9]{1,5})\\z"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    constexpr int limit = 32768;
    const BWResolution resolution(match.captured(1).toInt(), match.captured(2).toInt());
    if (!resolution.isValid() || resolution.width() > limit || resolution.height() > limit)
        return std::nullopt;
    return resolution;
}

BWResolution BWResolution::nearestOf(std::span<const BWResolution> sizes) const
{
    const auto distance = [this](BWResolution size) {
        const int64_t difference = int64_t(size.width()) * size.height() - int64_t(m_width) * m_height;
        return std::pair(std::abs(difference), size != *this);
    };
    const auto nearest = std::min_element(sizes.begin(), sizes.end(), [&](BWResolution left, BWResolution right) {
        return distance(left) < distance(right);
    });
    return nearest == sizes.end() ? BWResolution() : *nearest;
}
