// SPDX-License-Identifier: GPL-3.0-or-later
#include "App/LiveView/BWFreezeController.h"

#include "App/LiveView/BWSceneController.h"
#include "BWACUDriver/BWStill.h"
#include "Model/Capture/BWCaptureController.h"
#include "Model/LiveView/BWLiveRenderer.h"
#include "Views/MainWindow/BWControlBar.h"
#include "Views/MainWindow/BWMainMenu.h"
#include "Views/MainWindow/BWMainWindow.h"

#include <QAction>
#include <utility>

using Main = BWSceneController::Main;

BWFreezeController::BWFreezeController(BWMainWindow &window, BWSceneController &scene, BWLiveRenderer &live,
                                       BWCaptureController &capture, BWClock &clock)
    : m_window(window), m_scene(scene), m_live(live), m_capture(capture), m_clock(clock)
{
    connect(window.menu().freeze, &QAction::triggered, this, &BWFreezeController::toggle);
    connect(&window.controlBar(), &BWControlBar::freezeTriggered, this, &BWFreezeController::toggle);
    connect(&scene, &BWSceneController::mainChanged, this, &BWFreezeController::followScene);
}

BWFreezeController::~BWFreezeController()
{
    endAttempts();
}

void BWFreezeController::toggle()
{
    if (m_attempts || m_scene.main() == Main::Frozen) {
        goLive();
        return;
    }
    m_scene.showLive();
    m_tried.reset();
    m_attempts = DispatchAfterStrict::dispatchForQueue(
        this,
        [this] {
            goLive();
            Q_EMIT failed();
        },
        patience, m_clock);
    m_newImages = connect(&m_live, &BWLiveRenderer::imageReady, this, &BWFreezeController::tryFrame);
    followScene();
    tryFrame();
}

void BWFreezeController::goLive()
{
    endAttempts();
    m_scene.showLive();
    followScene();
}

void BWFreezeController::tryFrame()
{
    const BWFrame frame = m_live.currentFrame();
    if (!m_candidate.isNull() || frame.isNull() || frame.timestamp() == m_tried)
        return;
    m_tried = frame.timestamp();
    m_candidate = frame.copied();
    m_capture.setFrozenFrame(m_candidate); // at once, for a press that comes before the check is done
    m_worker.run([this, alive = m_alive.watch(), candidate = m_candidate, attempt = ++m_attempt] {
        const bool isWhole = BWStill::isWhole(candidate);
        BWMainQueue::post(alive, [this, attempt, isWhole] { frameChecked(attempt, isWhole); });
    });
}

void BWFreezeController::frameChecked(int attempt, bool isWhole)
{
    if (!m_attempts || attempt != m_attempt)
        return;
    const BWFrame frame = std::exchange(m_candidate, {});
    if (!isWhole) {
        m_capture.setFrozenFrame({});
        tryFrame(); // there may be a newer one
        return;
    }
    endAttempts();
    m_scene.showFrozen(frame);
}

void BWFreezeController::endAttempts()
{
    if (m_attempts)
        m_attempts->cancel();
    m_attempts.reset();
    disconnect(m_newImages);
    m_candidate = {};
    ++m_attempt;
}

void BWFreezeController::followScene()
{
    if (m_scene.main() == Main::Album)
        endAttempts();
    const bool frozen = m_scene.main() == Main::Frozen;
    if (!frozen && !m_attempts)
        m_capture.setFrozenFrame({});
    m_window.showFrozen(frozen, frozen || m_attempts);
}
