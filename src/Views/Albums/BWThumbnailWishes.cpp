#include "Views/Albums/BWThumbnailWishes.h"

#include "Views/Albums/BWThumbnailTableView.h"

#include <algorithm>

namespace {

using Seconds = std::chrono::duration<double>;

constexpr Seconds interval(0.03);
constexpr int screensNear = 2; // each way

} // namespace

BWThumbnailWishes::BWThumbnailWishes(BWThumbnailTableView &view, BWClock &clock) : m_view(view), m_clock(clock) { }

BWThumbnailWishes::~BWThumbnailWishes()
{
    if (m_pending)
        m_pending->cancel();
}

void BWThumbnailWishes::schedule()
{
    if (m_pending)
        return;
    // At once after a while of rest: what is wished for first is what the user waits for.
    const Seconds sinceLast = m_lastTold ? m_clock.now() - *m_lastTold : interval;
    m_pending = DispatchAfterStrict::dispatchForQueue(
        &m_view,
        [this] {
            m_pending.reset();
            tell();
        },
        (interval - sinceLast).count(), m_clock);
}

void BWThumbnailWishes::scrolled(bool down)
{
    m_down = down;
    schedule();
}

void BWThumbnailWishes::renew()
{
    m_toldSize = {};
    schedule();
}

QList<int> BWThumbnailWishes::visibleIndexes() const
{
    if (!m_view.isVisible() || m_view.model()->rowCount() == 0)
        return {};
    const int first = std::max(0, m_view.rowAt(0));
    const int bottom = m_view.rowAt(m_view.viewport()->height() - 1);
    return indexesOfRows(first, bottom < 0 ? m_view.model()->rowCount() - 1 : bottom);
}

QList<int> BWThumbnailWishes::indexesOfRows(int first, int last, bool backwards) const
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

QList<int> BWThumbnailWishes::inOrder() const
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

void BWThumbnailWishes::tell()
{
    if (!m_view.isVisible())
        return; // shown again, it tells
    const QList<QUrl> elements = m_view.elements();
    QList<QUrl> wishes;
    for (const int index : inOrder())
        wishes.append(elements[index]);
    const QSize size = m_view.thumbnailPixelSize();
    if (wishes == m_told && size == m_toldSize)
        return;
    m_told = wishes;
    m_toldSize = size;
    m_lastTold = m_clock.now();
    Q_EMIT m_view.thumbnailsWanted(wishes, size);
}
