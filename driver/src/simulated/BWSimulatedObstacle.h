#pragma once

#include "BWACUDriver/BWStartProblem.h"

#include <mutex>

/// What keeps a simulated camera from being started: set by the hand that holds it, met by the devices that are opened
/// on it. Any thread.
class BWSimulatedObstacle {
public:
    void set(const BWStartProblem &problem)
    {
        const std::lock_guard lock(m_mutex);
        m_problem = problem;
    }

    BWStartProblem problem() const
    {
        const std::lock_guard lock(m_mutex);
        return m_problem;
    }

private:
    mutable std::mutex m_mutex;
    BWStartProblem m_problem;
};
