#include "Model/Measuring/BWMeasurementList.h"

#include <utility>

void BWMeasurementList::set(const Items &items)
{
    if (items == m_items)
        return;
    if (!m_before) {
        m_undo.append(m_items);
        m_redo.clear();
    }
    m_items = items;
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

void BWMeasurementList::reset(const QList<BWMeasurement> &items)
{
    *this = {};
    m_items = items;
    m_saved = items;
}

void BWMeasurementList::undo()
{
    cancelChange();
    if (m_undo.isEmpty())
        return;
    m_redo.append(std::exchange(m_items, m_undo.takeLast()));
}

void BWMeasurementList::redo()
{
    cancelChange();
    if (m_redo.isEmpty())
        return;
    m_undo.append(std::exchange(m_items, m_redo.takeLast()));
}
