// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWFrame.h"
#include "BWACUDriver/DispatchAfterStrict.h"
#include "Utils/BWMainQueue.h"
#include "Utils/BWWorkerPool.h"

#include <chrono>
#include <optional>
#include <QObject>

class BWCaptureController;
class BWLiveRenderer;
class BWMainWindow;
class BWSceneController;

/// Freezes the picture and lets it go: takes the frame on the screen, or the next one if that is torn, shows it as a still,
/// and has snapshots save it. Camera and recordings go on. GUI thread.
class BWFreezeController : public QObject {
    Q_OBJECT

public:
    /// For a picture that is whole.
    static constexpr double patience = 1; // seconds

    /// All must outlive this object.
    BWFreezeController(BWMainWindow &window, BWSceneController &scene, BWLiveRenderer &live,
                       BWCaptureController &capture, BWClock &clock = BWClock::system());
    ~BWFreezeController() override;

    void toggle();
    /// Shows the live image in place of any still.
    void goLive();

Q_SIGNALS:
    /// No whole picture has come in time; the image is live.
    void failed();

private:
    using Time = std::chrono::steady_clock::time_point;

    void tryFrame();
    void frameChecked(int attempt, bool isWhole);
    void endAttempts();
    void followScene();

    BWMainWindow &m_window;
    BWSceneController &m_scene;
    BWLiveRenderer &m_live;
    BWCaptureController &m_capture;
    BWClock &m_clock;
    DispatchAfterStrict::Handle m_attempts; // while the right frame is looked for
    QMetaObject::Connection m_newImages;
    BWFrame m_candidate; // being checked
    std::optional<Time> m_tried;
    int m_attempt = 0;
    BWAliveToken m_alive;
    BWWorkerPool m_worker; // the GUI thread does not wait for a decoder
};
