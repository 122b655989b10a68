// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/DispatchAfterStrict.h"

#include <chrono>
#include <optional>
#include <QList>
#include <QSize>
#include <QUrl>

class BWThumbnailTableView;

/// Determines which thumbnails a grid needs, and makes the grid request them, at a limited rate however fast it is
/// scrolled. GUI thread.
class BWThumbnailRequests {
public:
    BWThumbnailRequests(BWThumbnailTableView &view, BWClock &clock);
    ~BWThumbnailRequests();

    /// The visible elements may have changed.
    void schedule();
    void scrolled(bool down);
    /// The elements may have changed: requests them again in any case.
    void renew();

    /// The elements that are visible, at least in part.
    QList<int> visibleIndexes() const;

private:
    QList<int> inOrder() const;
    QList<int> indexesOfRows(int first, int last, bool backwards = false) const;
    void request();

    BWThumbnailTableView &m_view; // owns this
    BWClock &m_clock;
    DispatchAfterStrict::Handle m_pending;
    std::optional<std::chrono::nanoseconds> m_lastTime;
    bool m_down = true;
    QList<QUrl> m_lastFiles;
    QSize m_lastSize;
};
