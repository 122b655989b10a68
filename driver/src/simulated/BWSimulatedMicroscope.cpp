#include "simulated/BWSimulatedMicroscope.h"

#include "simulated/BWSimulatedDevice.h"
#include "simulated/BWSimulatedProfile.h"

#include <utility>

namespace {

std::shared_ptr<BWSimulatedCable> makeCable(const BWSimulatedCameraOptions &options)
{
    const bool manual = options.pacing == BWSimulatedCameraOptions::Pacing::Manual;
    return std::make_shared<BWSimulatedCable>(manual ? BWSimulatedCable::Pacing::Manual
                                                     : BWSimulatedCable::Pacing::RealTime);
}

} // namespace

BWSimulatedMicroscope::BWSimulatedMicroscope(BWSimulatedCameraOptions options, QString title, QString uniqueIdentifier,
                                             BWClock &clock)
    : m_options(std::move(options)),
      m_title(std::move(title)),
      m_uniqueIdentifier(std::move(uniqueIdentifier)),
      m_clock(clock),
      m_cable(m_options.pluggedIn ? makeCable(m_options) : nullptr)
{
}

bool BWSimulatedMicroscope::isPluggedIn() const
{
    return cable() != nullptr;
}

void BWSimulatedMicroscope::plugIn()
{
    const std::lock_guard lock(m_mutex);
    if (m_cable)
        return;
    m_cable = makeCable(m_options);
    announce();
}

void BWSimulatedMicroscope::unplug()
{
    const std::lock_guard lock(m_mutex);
    if (!m_cable)
        return;
    std::exchange(m_cable, nullptr)->pull();
    const BWDetectedCameraPtr found = std::exchange(m_found, nullptr);
    if (found && m_queue)
        m_events.removed(found);
}

void BWSimulatedMicroscope::pressButton()
{
    if (const auto attached = cable())
        attached->pressButton();
}

void BWSimulatedMicroscope::stall()
{
    if (const auto attached = cable())
        attached->stall();
}

void BWSimulatedMicroscope::tearNextFrames(int count)
{
    if (const auto attached = cable())
        attached->tearNextFrames(count);
}

void BWSimulatedMicroscope::truncateNextFrames(int count)
{
    if (const auto attached = cable())
        attached->truncateNextFrames(count);
}

void BWSimulatedMicroscope::loseNextFrames(int count)
{
    if (const auto attached = cable())
        attached->loseNextFrames(count);
}

void BWSimulatedMicroscope::pushFrames(int count)
{
    if (const auto attached = cable())
        attached->pushFrames(count);
}

void BWSimulatedMicroscope::watch(BWCameraBackend::Events events, QObject *queue)
{
    const std::lock_guard lock(m_mutex);
    m_events = std::move(events);
    m_queue = queue;
    announce();
}

void BWSimulatedMicroscope::unwatch()
{
    const std::lock_guard lock(m_mutex);
    m_events = {};
    m_queue = nullptr;
}

bool BWSimulatedMicroscope::isPending() const
{
    const std::lock_guard lock(m_mutex);
    return m_queue && m_cable && !m_found;
}

void BWSimulatedMicroscope::announce()
{
    if (!m_cable || !m_queue)
        return;
    if (m_options.pendingSeconds <= 0) {
        reportFound();
        return;
    }
    const auto time =
        std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(m_options.pendingSeconds));
    m_clock.callAfter(time, m_queue, [self = shared_from_this(), cable = m_cable] { self->prepared(cable); });
}

void BWSimulatedMicroscope::prepared(const std::shared_ptr<BWSimulatedCable> &cable)
{
    const std::lock_guard lock(m_mutex);
    // Unplugged, or unplugged and plugged in again, meanwhile?
    if (m_queue && m_cable == cable)
        reportFound();
}

void BWSimulatedMicroscope::reportFound()
{
    const auto open = [options = m_options, cable = m_cable, obstacle = m_obstacle] {
        return std::make_unique<BWSimulatedDevice>(options, cable, obstacle);
    };
    m_found = std::make_shared<BWDetectedCamera>(BWSimulatedProfile::forType(m_options.type).description,
                                                 m_uniqueIdentifier, open);
    m_events.found(m_found);
}

std::shared_ptr<BWSimulatedCable> BWSimulatedMicroscope::cable() const
{
    const std::lock_guard lock(m_mutex);
    return m_cable;
}
