#include "Views/BWNoCameraBaseWindowController.h"

#include "BWACUDriver/DispatchAfterStrict.h"

#include <utility>

namespace {
constexpr double pollSeconds = 0.3;
}

BWNoCameraBaseWindowController::BWNoCameraBaseWindowController(Callbacks callbacks, BWClock &clock, QWidget *parent)
    : QDialog(parent), m_callbacks(std::move(callbacks)), m_clock(clock)
{
}

void BWNoCameraBaseWindowController::setPreparingCamera(bool) { }

void BWNoCameraBaseWindowController::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    // It appears without warning: a key that was meant for a snapshot must not press a button.
    setFocus();
}

void BWNoCameraBaseWindowController::windowDidLoad()
{
    watchPendingDevices();
}

void BWNoCameraBaseWindowController::watchPendingDevices()
{
    setPreparingCamera(m_callbacks.pendingDevices && m_callbacks.pendingDevices());
    setObstacle(m_callbacks.obstacle ? m_callbacks.obstacle() : QString());
    DispatchAfterStrict::dispatchForQueue(
        this, [this] { watchPendingDevices(); }, pollSeconds, m_clock);
}
