// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWSimulatedCameras.h"

#include "BWACUDriver/BWDetectedCamera.h"
#include "simulated/BWSimulatedCable.h"
#include "simulated/BWSimulatedDevice.h"
#include "simulated/BWSimulatedProfile.h"

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <mutex>
#include <QObject>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

using Type = BWSimulatedCameraOptions::Type;

struct TypeName {
    Type type;
    const char *name;
};

constexpr std::array typeTable{
    TypeName{Type::DX20, "dx20"},   TypeName{Type::Regular, "regular"},   TypeName{Type::High, "high"},
    TypeName{Type::Ultra, "ultra"}, TypeName{Type::Wireless, "wireless"},
};

std::shared_ptr<BWSimulatedCable> makeCable(const BWSimulatedCameraOptions &options)
{
    const bool manual = options.pacing == BWSimulatedCameraOptions::Pacing::Manual;
    return std::make_shared<BWSimulatedCable>(manual ? BWSimulatedCable::Pacing::Manual
                                                     : BWSimulatedCable::Pacing::RealTime);
}

/// One simulated camera as the hand sees it: unplugged, being prepared, or found.
class Microscope : public BWSimulatedCamera, public std::enable_shared_from_this<Microscope> {
public:
    Microscope(BWSimulatedCameraOptions options, QString title, QString uniqueIdentifier, BWClock &clock);

    const BWSimulatedCameraOptions &options() const override { return m_options; }
    QString title() const override { return m_title; }
    bool isPluggedIn() const override;
    void plugIn() override;
    void unplug() override;
    void pressButton() override;
    void setStartProblem(const BWStartProblem &problem) override { m_obstacle->set(problem); }
    BWStartProblem startProblem() const override { return m_obstacle->problem(); }
    void stall() override;
    void tearNextFrames(int count) override;
    void truncateNextFrames(int count) override;
    void loseNextFrames(int count) override;
    void pushFrames(int count) override;

    /// From here on the camera reports when it is found and removed; at once, if it is plugged in. The time of
    /// preparation passes on the event loop of `queue`.
    void watch(BWCameraBackend::Events events, QObject *queue);
    /// Ends the reports.
    void unwatch();

    /// Plugged in and watched, but not yet found.
    bool isPending() const;

private:
    void announce();
    void prepared(const std::shared_ptr<BWSimulatedCable> &cable);
    void reportFound();
    std::shared_ptr<BWSimulatedCable> cable() const;

    const BWSimulatedCameraOptions m_options;
    const QString m_title;
    const QString m_uniqueIdentifier;
    BWClock &m_clock;
    const std::shared_ptr<BWSimulatedObstacle> m_obstacle = std::make_shared<BWSimulatedObstacle>();

    // Held while events are reported, to keep their order.
    mutable std::mutex m_mutex;
    BWCameraBackend::Events m_events;
    QObject *m_queue = nullptr; ///< null while it is not watched
    std::shared_ptr<BWSimulatedCable> m_cable; ///< null while unplugged
    BWDetectedCameraPtr m_found;
};

Microscope::Microscope(BWSimulatedCameraOptions options, QString title, QString uniqueIdentifier, BWClock &clock)
    : m_options(std::move(options)),
      m_title(std::move(title)),
      m_uniqueIdentifier(std::move(uniqueIdentifier)),
      m_clock(clock),
      m_cable(m_options.pluggedIn ? makeCable(m_options) : nullptr)
{
}

bool Microscope::isPluggedIn() const
{
    return cable() != nullptr;
}

void Microscope::plugIn()
{
    const std::lock_guard lock(m_mutex);
    if (m_cable)
        return;
    m_cable = makeCable(m_options);
    announce();
}

void Microscope::unplug()
{
    const std::lock_guard lock(m_mutex);
    if (!m_cable)
        return;
    std::exchange(m_cable, nullptr)->pull();
    const BWDetectedCameraPtr found = std::exchange(m_found, nullptr);
    if (found && m_queue)
        m_events.removed(found);
    else if (m_events.changed)
        m_events.changed(); // it was still being prepared
}

void Microscope::pressButton()
{
    if (const auto attached = cable())
        attached->pressButton();
}

void Microscope::stall()
{
    if (const auto attached = cable())
        attached->stall();
}

void Microscope::tearNextFrames(int count)
{
    if (const auto attached = cable())
        attached->tearNextFrames(count);
}

void Microscope::truncateNextFrames(int count)
{
    if (const auto attached = cable())
        attached->truncateNextFrames(count);
}

void Microscope::loseNextFrames(int count)
{
    if (const auto attached = cable())
        attached->loseNextFrames(count);
}

void Microscope::pushFrames(int count)
{
    if (const auto attached = cable())
        attached->pushFrames(count);
}

void Microscope::watch(BWCameraBackend::Events events, QObject *queue)
{
    const std::lock_guard lock(m_mutex);
    m_events = std::move(events);
    m_queue = queue;
    announce();
}

void Microscope::unwatch()
{
    const std::lock_guard lock(m_mutex);
    m_events = {};
    m_queue = nullptr;
}

bool Microscope::isPending() const
{
    const std::lock_guard lock(m_mutex);
    return m_queue && m_cable && !m_found;
}

void Microscope::announce()
{
    if (!m_cable || !m_queue)
        return;
    if (m_options.pendingSeconds <= 0) {
        reportFound();
        return;
    }
    if (m_events.changed)
        m_events.changed();
    const auto time =
        std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(m_options.pendingSeconds));
    m_clock.callAfter(time, m_queue, [self = shared_from_this(), cable = m_cable] { self->prepared(cable); });
}

void Microscope::prepared(const std::shared_ptr<BWSimulatedCable> &cable)
{
    const std::lock_guard lock(m_mutex);
    // Unplugged, or unplugged and plugged in again, meanwhile?
    if (m_queue && m_cable == cable)
        reportFound();
}

void Microscope::reportFound()
{
    const auto open = [options = m_options, cable = m_cable, obstacle = m_obstacle] {
        return std::make_unique<BWSimulatedDevice>(options, cable, obstacle);
    };
    m_found = std::make_shared<BWDetectedCamera>(BWSimulatedProfile::forType(m_options.type).description,
                                                 m_uniqueIdentifier, open);
    m_events.found(m_found);
}

std::shared_ptr<BWSimulatedCable> Microscope::cable() const
{
    const std::lock_guard lock(m_mutex);
    return m_cable;
}

class Backend : public BWSimulatedBackend {
public:
    Backend(const QList<BWSimulatedCameraOptions> &cameras, BWClock &clock)
    {
        std::map<Type, int> countOfType;
        for (const BWSimulatedCameraOptions &options : cameras) {
            const QString title = u"%1 %2"_s.arg(BWSimulatedProfile::forType(options.type).description->name)
                                      .arg(++countOfType[options.type]);
            const QString identifier = u"simulated:%1"_s.arg(m_microscopes.size() + 1);
            m_microscopes.append(std::make_shared<Microscope>(options, title, identifier, clock));
        }
    }

    ~Backend() override
    {
        for (const auto &microscope : m_microscopes)
            microscope->unwatch();
    }

    void start(const QList<BWCameraDescriptionPtr> &descriptions, Events events) override
    {
        for (const auto &microscope : m_microscopes) {
            const QString &type =
                BWSimulatedProfile::forType(microscope->options().type).description->identifierForCameraType;
            if (std::any_of(descriptions.cbegin(), descriptions.cend(),
                            [&type](const auto &description) { return description->identifierForCameraType == type; }))
                microscope->watch(events, &m_queue);
        }
    }

    bool pendingDevices() const override
    {
        return std::any_of(m_microscopes.cbegin(), m_microscopes.cend(),
                           [](const auto &microscope) { return microscope->isPending(); });
    }

    QList<std::shared_ptr<BWSimulatedCamera>> cameras() const override
    {
        return {m_microscopes.cbegin(), m_microscopes.cend()};
    }

private:
    QObject m_queue; ///< its thread's event loop times the preparation
    QList<std::shared_ptr<Microscope>> m_microscopes;
};

} // namespace

std::optional<BWSimulatedCameraOptions::Type> BWSimulatedCameraOptions::typeFromName(const QString &name)
{
    const auto entry = std::find_if(typeTable.begin(), typeTable.end(), [&name](const TypeName &candidate) {
        return name == QLatin1String(candidate.name);
    });
    return entry == typeTable.end() ? std::nullopt : std::optional(entry->type);
}

QStringList BWSimulatedCameraOptions::typeNames()
{
    QStringList names;
    for (const TypeName &entry : typeTable)
        names.append(QLatin1String(entry.name));
    return names;
}

std::unique_ptr<BWSimulatedBackend> BWSimulatedBackend::create(const QList<BWSimulatedCameraOptions> &cameras,
                                                               BWClock &clock)
{
    return std::make_unique<Backend>(cameras, clock);
}
