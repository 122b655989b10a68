// SPDX-License-Identifier: GPL-3.0-or-later
#include "Views/Albums/BWThumbnailRequests.h"

#include "Views/Albums/BWThumbnailTableView.h"

#include <algorithm>

namespace {

using Seconds = std::chrono::duration<double>;

constexpr Seconds interval(0.03);
constexpr int screensNear = 2; // in each direction

} // namespace

BWThumbnailRequests::BWThumbnailRequests(BWThumbnailTableView &view, BWClock &clock) : m_view(view), m_clock(clock) { }

BWThumbnailRequests::~BWThumbnailRequests()
{
    if (m_pending)
        m_pending->cancel();
}

void BWThumbnailRequests::schedule()
{
    if (m_pending)
        return;
    // At once after a pause: the user waits for the first thumbnails.
    const Seconds sinceLast = m_lastTime ? m_clock.now() - *m_lastTime : interval;
    m_pending = DispatchAfterStrict::dispatchForQueue(
        &m_view,
        [this] {
            m_pending.reset();
            request();
        },
        (interval - sinceLast).count(), m_clock);
}

void BWThumbnailRequests::scrolled(bool down)
{
    m_down = down;
    schedule();
}

void BWThumbnailRequests::renew()
{
    m_lastSize = {};
    schedule();
}

QList<int> BWThumbnailRequests::visibleIndexes() const
{
    if (!m_view.isVisible() || m_view.model()->rowCount() == 0)
        return {};
    const int first = std::max(0, m_view.rowAt(0));
    const int bottom = m_view.rowAt(m_view.viewport()->height() - 1);
    return indexesOfRows(first, bottom < 0 ? m_view.model()->rowCount() - 1 : bottom);
}

QList<int> BWThumbnailRequests::indexesOfRows(int first, int last, bool backwards) const
{
    const int columns = std::min(m_view.model()->columnCount(), 2);
    const int elements = m_view.elementCount();
    first = std::max(first, 0);
    last = std::min(last, m_view.model()->rowCount() - 1);
    QList<int> indexes;
    for (int row = first; row <= last; ++row) {
        for (int column = 0; column < columns; ++column) {
            if (const int index = BWThumbnailTableView::cellIndex(row, column); index < elements)
                indexes.append(index);
        }
    }
    if (backwards)
        std::reverse(indexes.begin(), indexes.end());
    return indexes;
}

QList<int> BWThumbnailRequests::inOrder() const
{
    const QList<int> visible = visibleIndexes();
    if (visible.isEmpty())
        return {};
    const int first = visible.first() / 2;
    const int last = visible.last() / 2;
    const int rows = screensNear * (last - first + 1);
    const QList<int> below = indexesOfRows(last + 1, last + rows);
    const QList<int> above = indexesOfRows(first - rows, first - 1, true);
    return m_down ? visible + below + above : visible + above + below;
}

void BWThumbnailRequests::request()
{
    if (!m_view.isVisible())
        return; // being shown schedules the next request
    const QList<QUrl> elements = m_view.elements();
    QList<QUrl> files;
    for (const int index : inOrder())
        files.append(elements[index]);
    const QSize size = m_view.thumbnailPixelSize();
    if (files == m_lastFiles && size == m_lastSize)
        return;
    m_lastFiles = files;
    m_lastSize = size;
    m_lastTime = m_clock.now();
    Q_EMIT m_view.thumbnailsWanted(files, size);
}
