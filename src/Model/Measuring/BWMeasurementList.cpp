// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Measuring/BWMeasurementList.h"

#include <algorithm>
#include <utility>

void BWMeasurementList::set(const Items &items)
{
    if (items == m_items)
        return;
    if (!m_before) {
        const qsizetype shorter = std::min(items.size(), m_items.size());
        qsizetype head = 0;
        while (head < shorter && items[head] == m_items[head])
            ++head;
        qsizetype tail = 0;
        while (tail < shorter - head && items[items.size() - 1 - tail] == m_items[m_items.size() - 1 - tail])
            ++tail;
        m_undo.append(
            {head, m_items.mid(head, m_items.size() - tail - head), items.mid(head, items.size() - tail - head)});
        m_redo.clear();
    }
    m_items = items;
}

void BWMeasurementList::replaceRange(qsizetype at, qsizetype count, const Items &by)
{
    m_items = m_items.first(at) + by + m_items.sliced(at + count);
}

void BWMeasurementList::add(const BWMeasurement &measurement)
{
    Items items = m_items;
    items.append(measurement);
    set(items);
}

void BWMeasurementList::replace(qsizetype index, const BWMeasurement &measurement)
{
    if (index < 0 || index >= m_items.size())
        return;
    Items items = m_items;
    items[index] = measurement;
    set(items);
}

void BWMeasurementList::remove(qsizetype index)
{
    if (index < 0 || index >= m_items.size())
        return;
    Items items = m_items;
    items.removeAt(index);
    set(items);
}

void BWMeasurementList::clear()
{
    set({});
}

void BWMeasurementList::beginChange()
{
    if (!m_before)
        m_before = m_items;
}

void BWMeasurementList::endChange()
{
    if (!m_before)
        return;
    const Items now = std::exchange(m_items, *std::exchange(m_before, std::nullopt));
    set(now);
}

void BWMeasurementList::cancelChange()
{
    if (m_before)
        m_items = *std::exchange(m_before, std::nullopt);
}

void BWMeasurementList::reset(QList<BWMeasurement> items)
{
    m_items = items;
    m_saved = std::move(items);
    m_undo.clear();
    m_redo.clear();
    m_before.reset();
}

void BWMeasurementList::undo()
{
    cancelChange();
    if (m_undo.isEmpty())
        return;
    const Step step = m_undo.takeLast();
    replaceRange(step.at, step.after.size(), step.before);
    m_redo.append(step);
}

void BWMeasurementList::redo()
{
    cancelChange();
    if (m_redo.isEmpty())
        return;
    const Step step = m_redo.takeLast();
    replaceRange(step.at, step.before.size(), step.after);
    m_undo.append(step);
}
