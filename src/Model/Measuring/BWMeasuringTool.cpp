// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Measuring/BWMeasuringTool.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

void BWMeasuringTool::setPicture(QSize pixels)
{
    const bool sameShape = qint64{pixels.width()} * m_pixels.height() == qint64{m_pixels.width()} * pixels.height();
    m_pixels = pixels;
    if (!sameShape) {
        m_points.clear();
        release();
    }
    m_cursor = inside(m_cursor);
}

void BWMeasuringTool::setKind(const QString &kind)
{
    m_kind = kind;
    m_points.clear();
    m_selection.reset();
    release();
}

QPointF BWMeasuringTool::inside(QPointF at) const
{
    const double height = m_pixels.isEmpty() ? 1 : static_cast<double>(m_pixels.height()) / m_pixels.width();
    return {std::clamp(at.x(), 0.0, 1.0), std::clamp(at.y(), 0.0, height)};
}

QPointF BWMeasuringTool::constrainedFrom(QPointF from, QPointF at)
{
    const QPointF way = at - from;
    constexpr double step = std::numbers::pi / 4;
    const double angle = std::round(std::atan2(way.y(), way.x()) / step) * step;
    const QPointF direction(std::cos(angle), std::sin(angle));
    return from + direction * QPointF::dotProduct(way, direction);
}

BWMeasurement BWMeasuringTool::unfinished() const
{
    if (m_points.isEmpty())
        return {};
    return {m_kind, awaitsText() ? m_points : m_points + BWPoints{m_cursor}};
}

bool BWMeasuringTool::awaitsText() const
{
    const BWMeasurementKind *kind = BWMeasurementKind::find(m_kind);
    return kind && kind->hasText && m_points.size() >= kind->mostPoints;
}

void BWMeasuringTool::setText(const QString &text)
{
    if (!awaitsText())
        return;
    const BWPoints points = std::exchange(m_points, {});
    if (!text.trimmed().isEmpty())
        m_list.add({m_kind, points, text.trimmed()});
}

std::optional<BWMeasuringTool::Selection> BWMeasuringTool::selection() const
{
    const QList<BWMeasurement> &items = m_list.items();
    const bool exists = m_selection && m_selection->measurement >= 0 && m_selection->measurement < items.size()
        && m_selection->point < items[m_selection->measurement].points.size();
    return exists ? m_selection : std::nullopt;
}

std::optional<BWMeasuringTool::Selection> BWMeasuringTool::pointAt(QPointF at, double reach) const
{
    std::optional<Selection> nearest;
    double least = reach;
    for (qsizetype m = 0; m < m_list.items().size(); ++m) {
        const BWPoints &points = m_list.items()[m].points;
        for (qsizetype p = 0; p < points.size(); ++p) {
            const double away = std::hypot(points[p].x() - at.x(), points[p].y() - at.y());
            if (away <= least) { // of points on one spot the newest, which lies on top
                nearest = Selection{m, p};
                least = away;
            }
        }
    }
    return nearest;
}

void BWMeasuringTool::press(QPointF at, double reach, bool constrained)
{
    move(at, constrained);
    const BWMeasurementKind *kind = BWMeasurementKind::find(m_kind);
    if (!kind) {
        m_selection = pointAt(at, reach);
        if (m_selection) {
            m_grip = m_list.items()[m_selection->measurement].points[m_selection->point] - at;
            m_list.beginChange();
        }
        return;
    }
    m_selection.reset();
    // A point on the last one would say nothing: people click twice out of habit.
    if (awaitsText() || (!m_points.isEmpty() && m_points.last() == m_cursor))
        return;
    m_points.append(m_cursor);
    if (m_points.size() >= kind->mostPoints && !kind->hasText)
        complete();
}

void BWMeasuringTool::move(QPointF at, bool constrained)
{
    m_cursor = inside(at);
    if (const auto selected = m_grip ? selection() : std::nullopt) {
        const BWPoints &points = m_list.items()[selected->measurement].points;
        QPointF to = at + *m_grip;
        if (constrained && points.size() > 1)
            to = constrainedFrom(points[selected->point > 0 ? selected->point - 1 : 1], to);
        moveTo(*selected, to);
    } else if (constrained && !m_points.isEmpty()) {
        m_cursor = inside(constrainedFrom(m_points.last(), at));
    }
}

void BWMeasuringTool::release()
{
    m_grip.reset();
    m_list.endChange();
}

void BWMeasuringTool::moveTo(const Selection &selected, QPointF at)
{
    BWMeasurement changed = m_list.items()[selected.measurement];
    changed.points[selected.point] = inside(at);
    m_list.replace(selected.measurement, changed);
}

void BWMeasuringTool::place(bool constrained)
{
    press(m_cursor, 0, constrained);
    if (!constrained || !isMoving())
        return;
    move(m_cursor, true);
    select(*m_selection); // the cursor goes along
}

void BWMeasuringTool::nudge(QPoint pixels)
{
    if (m_pixels.isEmpty())
        return;
    const QPointF way = QPointF(pixels) / m_pixels.width();
    const auto selected = selection();
    if (!selected) {
        m_cursor = inside(m_cursor + way);
        return;
    }
    const QPointF &point = m_list.items()[selected->measurement].points[selected->point];
    moveTo(*selected, point + way);
    m_cursor = m_list.items()[selected->measurement].points[selected->point];
}

void BWMeasuringTool::select(const Selection &selected)
{
    m_points.clear();
    release();
    m_selection = selected;
    if (selection())
        m_cursor = m_list.items()[selected.measurement].points[selected.point];
}

void BWMeasuringTool::selectNext(bool forward)
{
    QList<Selection> all;
    for (qsizetype m = 0; m < m_list.items().size(); ++m) {
        for (qsizetype p = 0; p < m_list.items()[m].points.size(); ++p)
            all.append({m, p});
    }
    const auto selected = selection();
    const qsizetype now = selected ? all.indexOf(*selected) : -1;
    const qsizetype next = now < 0 ? (forward ? 0 : all.size() - 1) : now + (forward ? 1 : -1);
    m_selection.reset();
    if (next >= 0 && next < all.size())
        select(all[next]);
}

void BWMeasuringTool::complete()
{
    m_list.add({m_kind, std::exchange(m_points, {})});
}

void BWMeasuringTool::finish()
{
    const BWMeasurementKind *kind = BWMeasurementKind::find(m_kind);
    if (kind && !m_points.isEmpty() && m_points.size() >= kind->fewestPoints)
        complete();
}

bool BWMeasuringTool::cancel()
{
    const bool any = !m_points.isEmpty() || m_grip || selection();
    if (!m_points.isEmpty())
        m_points.clear();
    else if (m_grip)
        m_list.cancelChange();
    else
        m_selection.reset();
    m_grip.reset();
    return any;
}

bool BWMeasuringTool::remove()
{
    if (!m_points.isEmpty()) {
        m_points.removeLast();
        return true;
    }
    const auto selected = selection();
    if (!selected)
        return false;
    release();
    m_list.remove(selected->measurement);
    m_selection.reset();
    return true;
}

void BWMeasuringTool::undo()
{
    if (!m_points.isEmpty() || m_grip)
        cancel();
    else
        m_list.undo();
}

void BWMeasuringTool::redo()
{
    if (m_points.isEmpty() && !m_grip)
        m_list.redo();
}
