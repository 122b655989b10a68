// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Albums/BWAlbumContents.h"

#include <QObject>
#include <QUrl>

/// The last capture of the current album: what came into it last in this run, as long as it is there, else the newest of
/// its pictures and movies. GUI thread.
class BWLastCapture : public QObject {
    Q_OBJECT

public:
    /// Both must outlive this object. Nothing is known before the contents are listed.
    BWLastCapture(const BWAlbumManager &albums, const BWAlbumContents &contents);

    /// A capture has come into an album.
    void captureAdded(const QUrl &file);

    /// Empty if there is none.
    const QUrl &file() const { return m_file; }

Q_SIGNALS:
    void changed();

private:
    void update();
    void setFile(const QUrl &file);
    void compare(const QUrl &image, const QUrl &video);

    const BWAlbumManager &m_albums;
    const BWAlbumContents &m_contents;
    QUrl m_file;
    QUrl m_added;
    bool m_wasListed = false; // m_added
    unsigned m_question = 0;
    BWAliveToken m_alive;
    BWWorkerPool m_disk{1, std::chrono::milliseconds(0)};
};
