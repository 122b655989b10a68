// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Model/Capture/BWSeriesRun.h"
#include "Utils/BWMainQueue.h"
#include "Utils/BWWorkerPool.h"

#include <functional>
#include <QList>
#include <QObject>
#include <QUrl>

class BWLocalizationManager;
class BWMainWindow;
class BWStatusLine;

/// Offers to make a movie when a series has ended, in the camera window. It waits for questions that block the window, and
/// ends when the user closes it or begins another series. GUI thread.
class BWMovieOffer : public QObject {
    Q_OBJECT

public:
    /// All must outlive this object.
    struct Parts {
        BWMainWindow &window;
        BWStatusLine &statusLine;
        BWLocalizationManager &texts;
        std::function<BWSeriesFiles()> files; ///< of the last series
        std::function<void(const QList<QUrl> &pictures)> make; ///< asks how, then makes it
    };

    explicit BWMovieOffer(Parts parts);

    void seriesEnded(const BWSeriesResult &result);
    void seriesBegan();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void offer();
    void collect();
    void make(const QList<QUrl> &pictures);

    const Parts m_parts;
    BWAlbumPtr m_album; // of the series on offer; null without one
    bool m_isWaiting = false; // the offer
    bool m_isBlocked = false; // the window, by a question
    BWAliveToken m_alive;
    BWWorkerPool m_disk{1, std::chrono::milliseconds(0)}; // one that hangs must not hold up the program's end
};
