// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "App/Capture/BWMovieOffer.h"
#include "Model/Capture/BWSeriesRun.h"
#include "Views/Capture/BWSeriesDialog.h"

#include <functional>
#include <QObject>

class BWConfigManager;
class BWLiveRenderer;
class BWLocalizationManager;
class BWMainWindow;
class BWStatusLine;

/// The series of pictures as the user meets it: the menu item that starts and stops it, its dialog, the status line, the
/// notice at its end, the offer of a movie, and the questions about one that an earlier run left, or when the program is to
/// quit. GUI thread.
class BWSeriesController : public QObject {
    Q_OBJECT

public:
    /// All must outlive this object.
    struct Parts {
        BWMainWindow &window;
        BWStatusLine &statusLine;
        const BWLiveRenderer &live;
        BWConfigManager &config;
        BWLocalizationManager &texts;
        BWAlbumManager &albums;
        BWCaptureController &capture;
        BWCaptureController::Callbacks feedback; ///< for the one picture of a self-timer, which is like any snapshot
        std::function<void(const QList<QUrl> &pictures)> makeMovie; ///< asks how, then makes it
    };

    /// `saved` hears of the newest picture: of each, but not more often than every ten seconds, so that a thumbnail of each
    /// of thousands is not made. `recordFile` is where a running series is recorded.
    BWSeriesController(Parts parts, std::function<BWCameraPtr()> camera, std::function<void(const QUrl &)> saved,
                       const QString &recordFile, BWClock &clock = BWClock::system());

    bool isRunning() const { return m_run.isRunning(); }

    /// Stops the series; without one, asks for another, unless another question is open.
    void toggle();
    /// Once, when the albums are there: asks whether to go on with a series that did not end in an earlier run.
    void offerToResume();
    /// Asks whether a series that runs may be stopped, and stops it then. True without one.
    bool askToStop();
    /// The program ends without asking: the next start offers to go on.
    void leaveForNextStart() { m_run.stop(BWSeries::Reason::LeftForNextStart); }

Q_SIGNALS:
    void runningChanged(bool running);

private:
    void ask();
    QString start(const BWSeriesDialog::Choice &choice);
    QString problemWith(const QString &name, QUrl *folder) const;
    QString freeName() const;
    bool isSingle() const;
    qint64 pictureBytes() const;
    void pictureSaved(const QUrl &file);
    void showProgress();
    void report(const BWSeriesResult &result);

    const Parts m_parts;
    const std::function<BWCameraPtr()> m_camera;
    const std::function<void(const QUrl &)> m_saved;
    BWClock &m_clock;
    std::optional<std::chrono::nanoseconds> m_savedAt; // when m_saved heard of one last
    BWSeriesRun m_run;
    BWMovieOffer m_offer;
};
