// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Albums/BWThumbnailViewMouseEventHandler.h"

#include "Utils/BWLogging.h"
#include "Views/Albums/BWThumbnailDrag.h"
#include "Views/Albums/BWThumbnailMenu.h"
#include "Views/Albums/BWThumbnailTableView.h"
#include "Views/Albums/BWThumbnailTableViewDelegate.h"

#include <algorithm>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QStyleHints>
#include <utility>

namespace {

constexpr double dragDelay = 0.5;
constexpr double selectionDelay = 0.3;

QList<int> ascending(const QSet<int> &indexes)
{
    QList<int> list = indexes.values();
    std::sort(list.begin(), list.end());
    return list;
}

void cancel(DispatchAfterStrict::Handle &handle)
{
    if (const auto pending = std::exchange(handle, nullptr))
        pending->cancel();
}

} // namespace

BWThumbnailViewMouseEventHandler::BWThumbnailViewMouseEventHandler(BWThumbnailTableView &view, BWClock &clock)
    : m_view(&view), m_clock(clock)
{
}

BWThumbnailViewMouseEventHandler::~BWThumbnailViewMouseEventHandler()
{
    retire();
}

void BWThumbnailViewMouseEventHandler::retire()
{
    cancel(m_pendingDrag);
    cancel(m_pendingSelection);
    m_view.clear();
}

QList<int> BWThumbnailViewMouseEventHandler::selectedIndexes() const
{
    return ascending(m_selected);
}

void BWThumbnailViewMouseEventHandler::selectAllCells()
{
    if (!m_view)
        return;
    const int count = m_view->elementCount();
    m_selected.clear();
    m_selected.reserve(count);
    addRange(0, count - 1);
    redraw();
}

void BWThumbnailViewMouseEventHandler::unselectAllCells()
{
    m_selected.clear();
    redraw();
}

void BWThumbnailViewMouseEventHandler::updateSelectedStateWithShift(bool shift)
{
    const int index = lastIndex();
    if (shift && m_anchor >= 0) {
        addRange(std::min(index, m_anchor), std::max(index, m_anchor));
    } else {
        m_selected.clear();
        m_anchor = index == m_anchor ? -1 : index;
        if (m_anchor >= 0)
            m_selected.insert(index);
    }
    redraw();
}

void BWThumbnailViewMouseEventHandler::updateOperationIndexesFromIndex(int index)
{
    m_operationIndexes = isSelected(index) ? selectedIndexes() : QList<int>{index};
}

bool BWThumbnailViewMouseEventHandler::indexIsValidForRow(int row, int column) const
{
    return m_view && row >= 0 && column >= 0 && BWThumbnailTableView::cellIndex(row, column) < m_view->elementCount();
}

bool BWThumbnailViewMouseEventHandler::acceptMouseDown(const QMouseEvent &event, int clickCount)
{
    if (!m_view)
        return false;
    const QPoint place = event.position().toPoint();
    const int row = m_view->rowAt(place.y());
    const int column = m_view->columnAt(place.x());
    if (!indexIsValidForRow(row, column))
        return false;

    const std::chrono::milliseconds interval(QGuiApplication::styleHints()->mouseDoubleClickInterval());
    const bool another =
        m_clickCount >= 2 && row == m_row && column == m_column && m_clock.now() - m_clickTime < interval;
    if (clickCount == 1 && another)
        clickCount = m_clickCount + 1;
    m_clickTime = m_clock.now();
    if (clickCount >= 2)
        cancel(m_pendingSelection);
    else
        performPendingSelection(); // the last click was not the first half of a double click
    cancel(m_pendingDrag);
    m_row = row;
    m_column = column;
    m_clickCount = clickCount;
    const int index = lastIndex();
    if (clickCount >= 2) {
        qCInfo(bwViews) << "Case 2";
        updateOperationIndexesFromIndex(index);
        m_view->performDoubleClickForIndex(index);
    } else {
        m_pendingDrag = DispatchAfterStrict::dispatchForQueue(
            m_view,
            [handler = weak_from_this(), index] {
                if (const auto self = handler.lock())
                    self->performDragForEvent(index);
            },
            dragDelay, m_clock);
    }
    return false;
}

bool BWThumbnailViewMouseEventHandler::acceptMouseUp(const QMouseEvent &event)
{
    if (!m_pendingDrag)
        return false;
    cancel(m_pendingDrag);
    if (m_clickCount != 1 || !indexIsValidForRow(m_row, m_column))
        return false;
    m_pendingModifiers = event.modifiers();
    m_pendingSelection = DispatchAfterStrict::dispatchForQueue(
        m_view,
        [handler = weak_from_this()] {
            if (const auto self = handler.lock())
                self->performPendingSelection();
        },
        selectionDelay, m_clock);
    return false;
}

void BWThumbnailViewMouseEventHandler::performPendingSelection()
{
    if (!m_pendingSelection)
        return;
    cancel(m_pendingSelection);
    if (!indexIsValidForRow(m_row, m_column))
        return;
    updateOperationIndexesFromIndex(lastIndex());
    if (m_pendingModifiers & Qt::ControlModifier)
        toggle(lastIndex());
    else
        updateSelectedStateWithShift(m_pendingModifiers & Qt::ShiftModifier);
}

QMenu *BWThumbnailViewMouseEventHandler::menuForRightClick(QPoint place)
{
    if (!m_view)
        return nullptr;
    const int row = m_view->rowAt(place.y());
    const int column = m_view->columnAt(place.x());
    if (!indexIsValidForRow(row, column))
        return nullptr;
    cancel(m_pendingDrag);
    performPendingSelection(); // of the cell that was clicked before
    m_row = row;
    m_column = column;
    updateOperationIndexesFromIndex(lastIndex());
    return m_view->rightMenu();
}

void BWThumbnailViewMouseEventHandler::performDragForEvent(int index)
{
    cancel(m_pendingDrag);
    BWThumbnailTableViewDelegate *model = m_view ? m_view->modelDelegate() : nullptr;
    if (!model)
        return;
    const QList<QUrl> elements = model->elementsForThumbnailTableView(*m_view);
    if (index >= elements.size())
        return;
    updateOperationIndexesFromIndex(index);
    QList<BWThumbnailDragItem> items;
    items.reserve(m_operationIndexes.size());
    for (const int each : std::as_const(m_operationIndexes)) {
        if (each < elements.size())
            items.append({elements[each], model->dragTypeForElementAt(*m_view, each),
                          model->draggingSizeForElementAt(*m_view, each),
                          model->thumbnailForElementAtIndex(*m_view, each)});
    }
    m_view->beginDraggingSession(items);
}

QStringList BWThumbnailViewMouseEventHandler::completeDragOperationAtDestination(const QUrl &folder)
{
    if (!m_view || !m_view->modelDelegate() || !m_view->dataSource())
        return {};
    const QList<QUrl> elements = m_view->modelDelegate()->elementsForThumbnailTableView(*m_view);
    QList<QUrl> files;
    for (const int index : std::as_const(m_operationIndexes)) {
        if (index < elements.size())
            files.append(elements[index]);
    }
    QStringList names = m_view->dataSource()->copyFiles(files, folder);
    qCInfo(bwViews).noquote() << "Completed drag operation at:" << folder.toDisplayString();
    return names;
}

void BWThumbnailViewMouseEventHandler::selectOnly(int index)
{
    m_selected = {index};
    m_anchor = index;
    redraw();
}

void BWThumbnailViewMouseEventHandler::moveRangeEnd(int from, int to)
{
    if (m_anchor < 0)
        m_anchor = from;
    for (int index = std::min(from, m_anchor); index <= std::max(from, m_anchor); ++index)
        m_selected.remove(index);
    addRange(std::min(to, m_anchor), std::max(to, m_anchor));
    redraw();
}

void BWThumbnailViewMouseEventHandler::toggle(int index)
{
    if (!m_selected.remove(index))
        m_selected.insert(index);
    m_anchor = index;
    redraw();
}

void BWThumbnailViewMouseEventHandler::adoptSelection(const QSet<int> &indexes, int anchor)
{
    m_selected = indexes;
    m_anchor = anchor;
}

void BWThumbnailViewMouseEventHandler::addRange(int from, int to)
{
    for (int index = from; index <= to; ++index)
        m_selected.insert(index);
}

int BWThumbnailViewMouseEventHandler::lastIndex() const
{
    return BWThumbnailTableView::cellIndex(m_row, m_column);
}

void BWThumbnailViewMouseEventHandler::redraw()
{
    if (m_view)
        m_view->showSelection();
}
