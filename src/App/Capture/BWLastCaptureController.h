// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Albums/BWLastCapture.h"
#include "Model/Thumbnails/BWThumbnails.h"

#include <QObject>

class BWControlBar;

/// Shows the last capture of the current album in the control bar. GUI thread.
class BWLastCaptureController : public QObject {
    Q_OBJECT

public:
    /// All must outlive this object.
    BWLastCaptureController(const BWAlbumManager &albums, const BWAlbumContents &contents, BWControlBar &bar);

    /// A capture has come into an album.
    void captureAdded(const QUrl &file) { m_capture.captureAdded(file); }

    /// Empty if there is none.
    const QUrl &file() const { return m_capture.file(); }

Q_SIGNALS:
    /// The user wants to see it.
    void showRequested(const QUrl &file);

private:
    void request();
    void show();

    BWControlBar &m_bar;
    BWLastCapture m_capture;
    BWThumbnails m_thumbnails;
};
