// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <QList>
#include <QPointF>

/// What fingers on a touch screen do with a picture: one finger taps it or moves it, several move and zoom it about their
/// middle. Lengths are in points. A plain class.
class BWFingers {
public:
    /// So far a finger that taps may slip.
    static constexpr double tapReach = 10;

    struct Change {
        QPointF distance; ///< of their middle
        double factor = 1; ///< by how much they have spread
        QPointF middle; ///< where it is now
    };

    /// The first finger is down.
    void begin();
    /// Where all are that are down, whenever one comes, moves or goes.
    std::optional<Change> moveTo(const QList<QPointF> &fingers);
    /// Whether it was one finger all the time, and never moved: a tap. Until the last finger goes it may still be one.
    bool isTap() const { return m_isTap; }
    void ignoreTap() { m_isTap = false; }

private:
    QList<QPointF> m_fingers;
    bool m_isTap = false;
};
