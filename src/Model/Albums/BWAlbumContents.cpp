// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Albums/BWAlbumContents.h"

#include <utility>

BWAlbumContents::BWAlbumContents(BWAlbumManager &albums, BWClock &clock) : m_albums(albums), m_clock(clock) { }

BWAlbumContents::~BWAlbumContents()
{
    if (m_noAnswer)
        m_noAnswer->cancel();
}

const QList<QUrl> &BWAlbumContents::files(BWMediaType type) const
{
    return type == BWMediaType::Image ? m_listing.images : m_listing.videos;
}

void BWAlbumContents::reload()
{
    const BWAlbumPtr album = m_albums.currentAlbum();
    if (album != m_album || !m_watch)
        startWatch(album); // also without an album, to report that there is none
    else
        m_reload = m_requested = m_watch->request(BWAlbumWatch::Depth::Follow);
    waitForAnswer();
}

void BWAlbumContents::follow()
{
    m_albums.addListener(
        m_alive, [this] { reload(); }, [this] { reload(); });
    reload();
}

void BWAlbumContents::refresh()
{
    if (!m_watch || m_first)
        return;
    m_requested = m_watch->request(BWAlbumWatch::Depth::ListAnew);
    waitForAnswer();
}

void BWAlbumContents::startWatch(const BWAlbumPtr &album)
{
    m_album = album;
    m_watch.reset();
    m_listing = {};
    m_requested = 0;
    m_served = 0;
    m_reload = 0;
    m_first = true;
    if (album)
        m_watch = std::make_unique<BWAlbumWatch>(*album, [this](const auto &report) { take(report); });
    m_state = album || !m_albums.isPrepared() ? State::Reading : State::Unavailable;
    Q_EMIT reloaded();
}

/// A folder that is silent for too long does not answer, until its next report.
void BWAlbumContents::waitForAnswer()
{
    if (m_noAnswer)
        m_noAnswer->cancel();
    m_noAnswer = DispatchAfterStrict::dispatchForQueue(
        this,
        [this] {
            m_noAnswer.reset();
            const bool isPending = m_watch && (m_first || m_served != m_requested);
            if (isPending || !m_albums.isPrepared()) {
                m_state = State::NotAnswering;
                Q_EMIT changed();
            }
        },
        patience, m_clock);
}

void BWAlbumContents::take(const BWAlbumWatch::Report &report)
{
    const bool wasRequested = std::exchange(m_first, false) || (m_reload > m_served && report.requests >= m_reload);
    m_served = report.requests;
    const State state = report.listing ? State::Listed : State::Unavailable;
    const bool differs = state != m_state || report.differs;
    m_state = state;
    m_listing = report.listing.value_or(BWAlbumWatch::Listing{});
    if (wasRequested)
        Q_EMIT reloaded();
    else if (differs)
        Q_EMIT changed();
    if (report.filesWritten)
        Q_EMIT filesWritten();
}
