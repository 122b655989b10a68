// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/Capture/BWMovieOffer.h"

#include "Model/Texts/BWLocalizationManager.h"
#include "Views/MainWindow/BWMainWindow.h"
#include "Views/MainWindow/BWOfferStrip.h"
#include "Views/MainWindow/BWStatusLine.h"

#include <QEvent>
#include <utility>

using namespace Qt::StringLiterals;

BWMovieOffer::BWMovieOffer(Parts parts) : m_parts(std::move(parts))
{
    m_parts.window.installEventFilter(this);
    connect(&m_parts.window.offerStrip(), &BWOfferStrip::movieWanted, this, &BWMovieOffer::collect);
}

void BWMovieOffer::seriesEnded(const BWSeriesResult &result)
{
    m_album = result.makesMovie() ? result.album : nullptr;
    m_isWaiting = m_album != nullptr;
    offer();
}

void BWMovieOffer::seriesBegan()
{
    m_album.reset();
    m_isWaiting = false;
    m_parts.window.offerStrip().end();
}

bool BWMovieOffer::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::WindowBlocked)
        m_isBlocked = true;
    if (event->type() == QEvent::WindowUnblocked) {
        m_isBlocked = false;
        offer();
    }
    return QObject::eventFilter(watched, event);
}

void BWMovieOffer::offer()
{
    if (!m_isBlocked && std::exchange(m_isWaiting, false))
        m_parts.window.offerStrip().show();
}

/// The album may be a long one.
void BWMovieOffer::collect()
{
    m_parts.window.offerStrip().end();
    m_disk.run([this, album = *m_album, asked = m_album, files = m_parts.files(), alive = m_alive.watch()] {
        const QList<QUrl> pictures = files.among(album.contentsForType(BWMediaType::Image).value_or(QList<QUrl>()));
        BWMainQueue::post(alive, [this, pictures, asked] {
            if (asked == m_album) // no other series has begun
                make(pictures);
        });
    });
}

void BWMovieOffer::make(const QList<QUrl> &pictures)
{
    if (pictures.size() > 1)
        m_parts.make(pictures);
    else
        m_parts.statusLine.showForAMoment(m_parts.texts.text(
            u"series"_s, u"movie_files_gone"_s, u"The pictures of the series are not in the album any more."_s));
}
