// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <optional>
#include <QList>
#include <QPointF>
#include <QSizeF>

/// What fingers on a touch screen do: one finger taps, points or moves, several move and zoom about their middle. Lengths
/// are in points; the caller brings the time. A plain class.
class BWFingers {
public:
    using Time = std::chrono::nanoseconds;

    /// So far a finger that taps may slip.
    static constexpr double tapReach = 10;

    struct Change {
        QPointF distance; ///< of their middle
        double factor = 1; ///< by how much they have spread
        QPointF middle; ///< where it is now
    };

    /// Whether what touches so much of the screen is no finger but a palm.
    static bool isPalm(QSizeF contact);

    /// The first finger is down. One that bounces, just after there were several, neither taps nor points.
    void begin(Time now);
    /// Where all are that are down, whenever one comes, moves or goes.
    std::optional<Change> moveTo(const QList<QPointF> &fingers, Time now);
    /// Whether it was one finger all the time, which a second one ends for good. Also after it is gone.
    bool isAlone() const { return m_isAlone; }
    /// The same, and it never moved: a tap. Until the last finger goes it may still be one.
    bool isTap() const { return m_isTap; }
    /// It neither taps nor points, whatever it does.
    void ignoreTap() { m_isTap = m_isAlone = false; }
    /// Where the finger that is alone was last.
    QPointF place() const { return m_place; }
    /// It has tapped or pointed, and is gone: 2 for the second of two on one spot within the interval, else 1.
    int countTap(Time now, Time interval);

private:
    QList<QPointF> m_fingers;
    QPointF m_place;
    bool m_isTap = false;
    bool m_isAlone = false;
    std::optional<Time> m_several; // when there were last
    std::optional<Time> m_tapped; // when, if the next one may be its second
    QPointF m_tappedAt;
};
