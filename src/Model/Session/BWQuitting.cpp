// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/Session/BWQuitting.h"

#include "BWACUDriver/DispatchAfterStrict.h"
#include "Utils/BWLogging.h"

#include <QPointer>
#include <utility>

namespace {

constexpr double movieInterval = 1; // seconds

const char *nameOf(BWQuitting::State state)
{
    using State = BWQuitting::State;
    switch (state) {
    case State::Running:
        return "cancelled";
    case State::Asking:
        return "asking whether to stop saving";
    case State::StoppingCamera:
        return "stopping the camera";
    case State::FinishingCaptures:
        return "waiting for captures on their way into the album";
    case State::Ended:
        return "end";
    }
    return "?";
}

} // namespace

BWQuitting::BWQuitting(Callbacks callbacks, BWClock &clock) : m_callbacks(std::move(callbacks)), m_clock(clock) { }

void BWQuitting::quit()
{
    switch (m_state) {
    case State::Running:
        if (m_callbacks.isSaving()) {
            setState(State::Asking);
            const bool may = m_callbacks.mayStopSaving();
            if (m_state != State::Asking)
                return; // the session has ended while the question was open
            if (!may) {
                setState(State::Running);
                return;
            }
        }
        stopCamera();
        return;
    case State::StoppingCamera:
        if (m_callbacks.completesMovie())
            offerToLeaveCaptures();
        return;
    case State::FinishingCaptures:
        offerToLeaveCaptures();
        return;
    case State::Asking:
    case State::Ended:
        return;
    }
}

void BWQuitting::quitWithoutQuestion()
{
    if (m_state == State::Running || m_state == State::Asking)
        stopCamera();
}

void BWQuitting::setState(State state)
{
    qCInfo(bwApp, "Quit: %s", nameOf(state));
    m_state = state;
}

void BWQuitting::stopCamera()
{
    setState(State::StoppingCamera);
    m_stopsSince = m_clock.now();
    waitForCamera(cameraPatience);
    m_callbacks.stopCamera([self = QPointer(this)] {
        if (self)
            self->finishCaptures();
    });
}

void BWQuitting::waitForCamera(double seconds)
{
    DispatchAfterStrict::dispatchForQueue(
        this,
        [this] {
            if (m_state != State::StoppingCamera)
                return;
            const std::chrono::duration<double> waited = m_clock.now() - m_stopsSince;
            if (m_callbacks.completesMovie() && waited.count() < moviePatience) {
                waitForCamera(movieInterval);
                return;
            }
            qCWarning(bwApp, "Quit: the camera did not stop in time");
            finishCaptures();
        },
        seconds, m_clock);
}

void BWQuitting::finishCaptures()
{
    if (m_state != State::StoppingCamera)
        return;
    setState(State::FinishingCaptures);
    DispatchAfterStrict::dispatchForQueue(
        this,
        [this] {
            if (m_state != State::FinishingCaptures)
                return;
            qCWarning(bwApp, "Quit: the album's disk takes too long; the next start takes the captures in");
            leaveCaptures();
        },
        capturePatience, m_clock);
    m_callbacks.finishCaptures([self = QPointer(this)] {
        if (self)
            self->end();
    });
}

void BWQuitting::offerToLeaveCaptures()
{
    if (std::exchange(m_offers, true))
        return;
    const bool may = m_callbacks.mayLeaveCaptures();
    m_offers = false;
    if (may)
        leaveCaptures();
}

void BWQuitting::leaveCaptures()
{
    if (m_state == State::Ended)
        return;
    m_callbacks.leaveCaptures();
    end();
}

void BWQuitting::end()
{
    if (m_state == State::Ended)
        return;
    setState(State::Ended);
    m_callbacks.end();
}
