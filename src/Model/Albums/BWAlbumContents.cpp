#include "Model/Albums/BWAlbumContents.h"

#include <utility>

BWAlbumContents::BWAlbumContents(const BWAlbumManager &albums, BWClock &clock) : m_albums(albums), m_clock(clock) { }

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
        startWatch(album); // also without an album: that there is none has to be told
    else
        m_reload = m_asked = m_watch->ask();
    waitForAnswer();
}

void BWAlbumContents::refresh()
{
    if (!m_watch || m_first)
        return;
    m_asked = m_watch->ask();
    waitForAnswer();
}

void BWAlbumContents::startWatch(const BWAlbumPtr &album)
{
    m_album = album;
    m_watch.reset();
    m_listing = {};
    m_asked = 0;
    m_served = 0;
    m_reload = 0;
    m_first = true;
    if (album)
        m_watch = std::make_unique<BWAlbumWatch>(*album, [this](const auto &report) { take(report); });
    m_state = album || !m_albums.isPrepared() ? State::Reading : State::Unavailable;
    Q_EMIT reloaded();
}

/// Until the next report says otherwise, the folder does not answer when it is silent for too long.
void BWAlbumContents::waitForAnswer()
{
    if (m_noAnswer)
        m_noAnswer->cancel();
    m_noAnswer = DispatchAfterStrict::dispatchForQueue(
        this,
        [this] {
            m_noAnswer.reset();
            const bool isAsked = m_watch && (m_first || m_served != m_asked);
            if (isAsked || !m_albums.isPrepared()) {
                m_state = State::NotAnswering;
                Q_EMIT changed();
            }
        },
        patience, m_clock);
}

void BWAlbumContents::take(const BWAlbumWatch::Report &report)
{
    const bool wasAsked = std::exchange(m_first, false) || (m_reload > m_served && report.asked >= m_reload);
    m_served = report.asked;
    const State state = report.listing ? State::Listed : State::Unavailable;
    const BWAlbumWatch::Listing listing = report.listing.value_or(BWAlbumWatch::Listing{});
    const bool differs = state != m_state || listing != m_listing;
    m_state = state;
    m_listing = listing;
    if (wasAsked)
        Q_EMIT reloaded();
    else if (differs)
        Q_EMIT changed();
    if (report.filesWritten)
        Q_EMIT filesWritten();
}
