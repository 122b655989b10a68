// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/LiveView/BWFingers.h"

#include <numeric>
#include <QLineF>
#include <utility>

namespace {

QPointF middleOf(const QList<QPointF> &fingers)
{
    return std::accumulate(fingers.begin(), fingers.end(), QPointF()) / double(fingers.size());
}

/// How far they are from their middle, all added up.
double spreadOf(const QList<QPointF> &fingers)
{
    const QPointF middle = middleOf(fingers);
    return std::accumulate(fingers.begin(), fingers.end(), 0.0,
                           [middle](double sum, QPointF at) { return sum + QLineF(middle, at).length(); });
}

} // namespace

void BWFingers::begin()
{
    m_fingers.clear();
    m_isTap = true;
}

/// A finger more or less moves nothing by itself: what it does counts from where it is then.
std::optional<BWFingers::Change> BWFingers::moveTo(const QList<QPointF> &fingers)
{
    constexpr double closest = 20; // nearer to each other than fingers are thick, a tremble would be a zoom
    const bool areOthers = fingers.isEmpty() || fingers.size() != m_fingers.size();
    m_isTap = m_isTap && fingers.size() <= 1
        && (areOthers || QLineF(m_fingers.first(), fingers.first()).length() <= tapReach);
    if (m_isTap && !areOthers)
        return std::nullopt; // it would count from where the finger has come down
    const QList<QPointF> before = std::exchange(m_fingers, fingers);
    if (areOthers)
        return std::nullopt;
    const bool zooms = fingers.size() > 1 && spreadOf(before) >= closest && spreadOf(fingers) >= closest;
    const QPointF middle = middleOf(fingers);
    return Change{middle - middleOf(before), zooms ? spreadOf(fingers) / spreadOf(before) : 1, middle};
}
