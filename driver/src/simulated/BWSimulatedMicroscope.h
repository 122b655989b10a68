#pragma once

#include "BWACUDriver/BWDetectedCamera.h"
#include "BWACUDriver/BWSimulatedCameras.h"
#include "simulated/BWSimulatedCable.h"
#include "simulated/BWSimulatedObstacle.h"

#include <memory>
#include <mutex>
#include <QString>

/// One simulated camera as the hand holds it: whether it is plugged in, being prepared or found.
class BWSimulatedMicroscope : public BWSimulatedCamera, public std::enable_shared_from_this<BWSimulatedMicroscope> {
public:
    BWSimulatedMicroscope(BWSimulatedCameraOptions options, QString title, QString uniqueIdentifier, BWClock &clock);

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

    /// From here on the camera reports that it is found and removed; at once, if it is plugged in. The time of
    /// preparation is waited for on the event loop of `queue`.
    void watch(BWCameraBackend::Events events, QObject *queue);
    /// Nothing is reported any more.
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

    // Held while events are reported, so that they keep their order.
    mutable std::mutex m_mutex;
    BWCameraBackend::Events m_events;
    QObject *m_queue = nullptr; ///< null while nobody watches
    std::shared_ptr<BWSimulatedCable> m_cable; ///< null while unplugged
    BWDetectedCameraPtr m_found;
};
