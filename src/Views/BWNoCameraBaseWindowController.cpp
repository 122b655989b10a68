#include "Views/BWNoCameraBaseWindowController.h"

namespace {
constexpr double pollSeconds = 0.3;
}

BWNoCameraBaseWindowController::BWNoCameraBaseWindowController(PendingDevices pendingDevices, BWClock &clock,
                                                               QWidget *parent)
    : QDialog(parent), m_pendingDevices(std::move(pendingDevices)), m_clock(clock)
{
}

void BWNoCameraBaseWindowController::setPreparingCamera(bool) { }

void BWNoCameraBaseWindowController::windowDidLoad()
{
    watchPendingDevices();
}

void BWNoCameraBaseWindowController::watchPendingDevices()
{
    setPreparingCamera(m_pendingDevices && m_pendingDevices());
    DispatchAfterStrict::dispatchForQueue(
        this, [this] { watchPendingDevices(); }, pollSeconds, m_clock);
}
