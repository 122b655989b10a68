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

/// What is seen and heard of captures: the shutter sound, the flash over the live image, the record button, how far a
/// recording has come, and what became of it all. GUI thread.
class BWCaptureFeedback : public QObject {
    Q_OBJECT

public:
    struct Callbacks {
        std::function<BWCameraPtr()> currentCamera;
        std::function<void()> playSound;
    };

    BWCaptureFeedback(BWControlBar &bar, BWFlashActionViewController &flash, BWStatusLine &statusLine,
                      BWLocalizationManager &texts, Callbacks callbacks, BWClock &clock = BWClock::system());
    ~BWCaptureFeedback() override;

    /// For the capture controller, which must not outlive this object.
    BWCaptureController::Callbacks callbacks();

    /// Captures of an earlier run have come into the album.
    void tellRecovered(const QUrl &last);

    /// Nothing while the camera records: the flash is taken.
    void flashSnapshot();
    void flashVideo(bool recording);

private:
    void recordingChanged(bool recording);
    void showProgress();
    void stopProgress();
    void tell(const BWCaptureNotice &notice);
    void tellCopying(double done);
    void alert(const BWCaptureNotice &notice);

    BWControlBar &m_bar;
    BWFlashActionViewController &m_flash;
    BWStatusLine &m_statusLine;
    BWLocalizationManager &m_texts;
    Callbacks m_callbacks;
    BWClock &m_clock;
    DispatchAfterStrict::Handle m_progress; // while a recording runs
    std::optional<BWCaptureNotice> m_unread; ///< the newest that waits for an open alert to be closed
    bool m_alertIsOpen = false;
};
