// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/DispatchAfterStrict.h"
#include "Model/Albums/BWAlbumManager.h"
#include "Model/Albums/BWAlbumWatch.h"

#include <functional>
#include <memory>
#include <QObject>

/// What the current album holds, as far as it is known: listed and watched in the background. GUI thread.
class BWAlbumContents : public QObject {
    Q_OBJECT

public:
    enum class State {
        Reading, ///< the listing of another album, or at the start the list of albums, is on its way
        NotAnswering, ///< and has been for a while
        Listed,
        Unavailable, ///< the folder has vanished or may not be read
    };

    /// How long a folder may take to be listed before it counts as not answering, in seconds.
    static constexpr double patience = 1.5;

    explicit BWAlbumContents(BWAlbumManager &albums, BWClock &clock = BWClock::system());
    ~BWAlbumContents() override;

    /// Brings the list of the current album up to date, for changes made on this computer; then emits reloaded(), whether
    /// or not there were any. For an album that was not shown before also emits it at once, with nothing in it yet.
    void reload();

    /// Reloads now, and from now on whenever the manager reports a change.
    void follow();

    /// Lists it anew, and only emits changed(), if it has. For folders whose changes the system does not report.
    void refresh();

    /// Newest first; empty while they are not known.
    const QList<QUrl> &files(BWMediaType type) const;
    State state() const { return m_state; }

Q_SIGNALS:
    /// A reload is done.
    void reloaded();
    /// The folder was changed from outside, or has stopped or started to answer.
    void changed();
    /// Files that were there before have been written.
    void filesWritten();

private:
    void startWatch(const BWAlbumPtr &album);
    void take(const BWAlbumWatch::Report &report);
    void waitForAnswer();

    BWAlbumManager &m_albums;
    BWClock &m_clock;
    BWAlbumPtr m_album;
    std::unique_ptr<BWAlbumWatch> m_watch;
    BWAlbumWatch::Listing m_listing;
    State m_state = State::Reading;
    unsigned m_requested = 0;
    unsigned m_served = 0;
    unsigned m_reload = 0; // the latest request that reloaded() answers
    bool m_first = true; // no listing of this album has come yet
    DispatchAfterStrict::Handle m_noAnswer;
    BWAliveToken m_alive;
};
