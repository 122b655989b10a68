// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Measuring/BWMeasurementList.h"

#include <optional>
#include <QPointF>
#include <QSize>

/// What a hand does with measurements, by mouse or by keys: places points, picks and moves them. Places are in widths of the
/// picture and never leave it. One thread at a time.
///
/// There is always a cursor, which the pointer leads and the arrow keys move. With a kind chosen, a press sets a point of a
/// new measurement there; without one it picks what lies there.
class BWMeasuringTool {
public:
    /// A point of a measurement in the list.
    struct Selection {
        qsizetype measurement;
        qsizetype point;
        bool operator==(const Selection &) const = default;
    };

    /// The list must outlive this object.
    explicit BWMeasuringTool(BWMeasurementList &list) : m_list(list) { }

    /// Of the picture in its full resolution. Drops what is unfinished if it is another picture's shape.
    void setPicture(QSize pixels);

    /// The kind that presses begin; null: they pick and move. Drops what is unfinished.
    void setKind(const QString &kind);
    const QString &kind() const { return m_kind; }

    QPointF cursor() const { return m_cursor; }
    /// The measurement that is being placed, with the cursor as its next point; without points if there is none. One that
    /// awaits its text has all its points.
    BWMeasurement unfinished() const;
    /// None if what was selected is gone.
    std::optional<Selection> selection() const;
    /// Gives up what is unfinished. One that does not exist leaves none selected.
    void select(const Selection &selection);
    bool hasPointAt(QPointF at, double reach) const { return pointAt(at, reach).has_value(); }
    /// Whether the pointer holds the selected point.
    bool isMoving() const { return m_grip && selection(); }
    /// All points of a remark are set: it is complete with a text.
    bool awaitsText() const;
    /// A text of blanks gives the remark up, as cancel() does.
    void setText(const QString &text);

    /// The pointer: `reach` is how near a point it has to be to mean that one. `constrained` keeps lines level, upright or
    /// at 45 degrees.
    void press(QPointF at, double reach, bool constrained);
    void move(QPointF at, bool constrained);
    void release();

    /// The keys. Moves the selected point, or the cursor if none is selected, by pixels of the picture.
    void nudge(QPoint pixels);
    /// Sets a point at the cursor, as a press does; without a kind, `constrained` moves the point that lies there.
    void place(bool constrained = false);
    /// Selects the next point of all measurements, or the one before; beyond the last, none.
    void selectNext(bool forward);
    /// Completes a measurement that takes any number of points, if it has enough.
    void finish();
    /// Gives up what is unfinished or being moved, else the selection; false if there was nothing of these.
    bool cancel();
    /// Of the list; what is being placed or moved is given up first.
    void undo();
    void redo();
    /// Removes the last point placed of what is unfinished, else the selected measurement; false if there was neither.
    bool remove();

private:
    QPointF inside(QPointF at) const;
    /// `at`, or the nearest place to it that lies in one of eight directions from `from`.
    static QPointF constrainedFrom(QPointF from, QPointF at);
    std::optional<Selection> pointAt(QPointF at, double reach) const;
    void moveTo(const Selection &selected, QPointF at);
    void complete();

    BWMeasurementList &m_list;
    QSize m_pixels;
    QString m_kind;
    BWPoints m_points; // of what is unfinished
    QPointF m_cursor{0.5, 0.25};
    std::optional<Selection> m_selection;
    std::optional<QPointF> m_grip; // from the pointer to the point that it drags
};
