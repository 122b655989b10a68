#pragma once

#include "BWACUDriver/DispatchAfterStrict.h"

#include <chrono>
#include <optional>
#include <QList>
#include <QSize>
#include <QUrl>

class BWThumbnailTableView;

/// Finds out which thumbnails a grid is in want of, and has it tell so. However fast it is scrolled, that happens a few
/// times a second only. GUI thread.
class BWThumbnailWishes {
public:
    BWThumbnailWishes(BWThumbnailTableView &view, BWClock &clock);
    ~BWThumbnailWishes();

    /// What is seen may have changed.
    void schedule();
    void scrolled(bool down);
    /// The elements may be others: tells in any case.
    void renew();

    /// The elements to be seen, be it partly.
    QList<int> visibleIndexes() const;

private:
    QList<int> inOrder() const;
    QList<int> indexesOfRows(int first, int last, bool backwards = false) const;
    void tell();

    BWThumbnailTableView &m_view; // owns this
    BWClock &m_clock;
    DispatchAfterStrict::Handle m_pending;
    std::optional<std::chrono::nanoseconds> m_lastTold; // when
    bool m_down = true;
    QList<QUrl> m_told;
    QSize m_toldSize;
};
