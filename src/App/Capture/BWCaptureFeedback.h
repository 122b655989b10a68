// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/DispatchAfterStrict.h"
#include "Model/Capture/BWCaptureController.h"
#include "Model/Capture/BWCaptureNotice.h"

#include <functional>
#include <optional>
#include <QObject>

class BWControlBar;
class BWFlashActionViewController;
class BWLocalizationManager;
class BWStatusLine;

/// Shows and sounds what captures do: the shutter sound, the flash over the live image, the record button, the progress of
/// a recording, and the outcome. GUI thread.
class BWCaptureFeedback : public QObject {
    Q_OBJECT

public:
    struct Callbacks {
        std::function<BWCameraPtr()> currentCamera;
        std::function<void()> playSound;
        /// A capture is in an album.
        std::function<void(const QUrl &file)> added = {};
    };

    BWCaptureFeedback(BWControlBar &bar, BWFlashActionViewController &flash, BWStatusLine &statusLine,
                      BWLocalizationManager &texts, Callbacks callbacks, BWClock &clock = BWClock::system());
    ~BWCaptureFeedback() override;

    /// For the capture controller, which must not outlive this object.
    BWCaptureController::Callbacks callbacks();

    /// Captures of an earlier run are now in the album.
    void reportRecovered(const QUrl &last);

    /// Does nothing while the camera records, as the flash then shows the recording.
    void flashSnapshot();
    void flashVideo(bool recording);

private:
    void recordingChanged(bool recording);
    void showProgress();
    void stopProgress();
    void report(const BWCaptureNotice &notice);
    void showCopying(double done);
    void alert(const BWCaptureNotice &notice);

    BWControlBar &m_bar;
    BWFlashActionViewController &m_flash;
    BWStatusLine &m_statusLine;
    BWLocalizationManager &m_texts;
    Callbacks m_callbacks;
    BWClock &m_clock;
    DispatchAfterStrict::Handle m_progress; // while a recording runs
    std::optional<BWCaptureNotice> m_unread; ///< the newest one, until the open alert is closed
    bool m_alertIsOpen = false;
};
