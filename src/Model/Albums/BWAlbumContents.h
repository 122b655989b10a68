#pragma once

#include "BWACUDriver/DispatchAfterStrict.h"
#include "Model/Albums/BWAlbumManager.h"
#include "Model/Albums/BWAlbumWatch.h"

#include <functional>
#include <memory>
#include <QObject>

/// What the current album holds, as far as is known: listed and followed in the background. GUI thread.
class BWAlbumContents : public QObject {
    Q_OBJECT

public:
    enum class State {
        Reading, ///< another album; its list is on its way, or at the start that of the albums
        NotAnswering, ///< and has been for a while
        Listed,
        Unavailable, ///< the folder has vanished or may not be read
    };

    /// How long a folder may take to be listed before it counts as not answering, in seconds.
    static constexpr double patience = 1.5;

    explicit BWAlbumContents(const BWAlbumManager &albums, BWClock &clock = BWClock::system());
    ~BWAlbumContents() override;

    /// Lists the current album anew; then tells, whether or not something changed. An album that was not shown before
    /// is told at once, too, with nothing in it yet.
    void reload();

    /// Lists it anew, too, but only tells what has changed. For folders of which nobody tells when they change.
    void refresh();

    /// Newest first; empty while they are not known.
    const QList<QUrl> &files(BWMediaType type) const;
    State state() const { return m_state; }

Q_SIGNALS:
    /// A reload is done.
    void reloaded();
    /// The folder was changed from outside, or answers again, or not any more.
    void changed();
    /// Files have been written that were there before.
    void filesWritten();

private:
    void startWatch(const BWAlbumPtr &album);
    void take(const BWAlbumWatch::Report &report);
    void waitForAnswer();

    const BWAlbumManager &m_albums;
    BWClock &m_clock;
    BWAlbumPtr m_album;
    std::unique_ptr<BWAlbumWatch> m_watch;
    BWAlbumWatch::Listing m_listing;
    State m_state = State::Reading;
    unsigned m_asked = 0;
    unsigned m_served = 0;
    unsigned m_reload = 0; // the latest of those that were asked for to be told in any case
    bool m_first = true; // no listing of this album has come yet
    DispatchAfterStrict::Handle m_noAnswer;
};
