// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/LiveView/BWFingers.h"

#include <algorithm>
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

bool BWFingers::isPalm(QSizeF contact)
{
    constexpr double widestFinger = 84; // 22 mm on usual screens; a thumb laid flat has about 20
    return std::max(contact.width(), contact.height()) > widestFinger;
}

void BWFingers::begin(Time now)
{
    constexpr std::chrono::milliseconds bounce(250);
    m_fingers.clear();
    m_isTap = m_isAlone = !m_several || now - *m_several >= bounce;
}

/// A finger more or less moves nothing by itself: what it does counts from where it is then.
std::optional<BWFingers::Change> BWFingers::moveTo(const QList<QPointF> &fingers, Time now)
{
    constexpr double closest = 20; // nearer to each other than fingers are thick, a tremble would be a zoom
    const bool areOthers = fingers.isEmpty() || fingers.size() != m_fingers.size();
    if (std::max(fingers.size(), m_fingers.size()) > 1) {
        m_several = now;
        m_isAlone = false;
    }
    if (fingers.size() == 1)
        m_place = fingers.first();
    m_isTap = m_isTap && m_isAlone && (areOthers || QLineF(m_fingers.first(), fingers.first()).length() <= tapReach);
    if (m_isTap && !areOthers)
        return std::nullopt; // it would count from where the finger has come down
    const QList<QPointF> before = std::exchange(m_fingers, fingers);
    if (areOthers)
        return std::nullopt;
    const bool zooms = fingers.size() > 1 && spreadOf(before) >= closest && spreadOf(fingers) >= closest;
    const QPointF middle = middleOf(fingers);
    return Change{middle - middleOf(before), zooms ? spreadOf(fingers) / spreadOf(before) : 1, middle};
}

int BWFingers::countTap(Time now, Time interval)
{
    constexpr double spot = 2 * tapReach; // fingers do not come down twice on one point
    const bool isSecond = m_tapped && now - *m_tapped < interval && QLineF(m_tappedAt, m_place).length() <= spot;
    m_tapped = isSecond ? std::nullopt : std::optional(now);
    m_tappedAt = m_place;
    return isSecond ? 2 : 1;
}
