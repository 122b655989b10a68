#pragma once

#include <chrono>
#include <functional>
#include <memory>

/// One thread for work with files that may hang as long as a disk or a network does. The work must keep alive what it
/// uses, since it may outlive this object.
class BWPatientThread {
public:
    /// `patience` is how long the end waits for what is under way.
    explicit BWPatientThread(std::chrono::milliseconds patience = std::chrono::seconds(3));
    /// Waits until all work is done, but no longer than that; then a thread that hangs is left behind, and what has not
    /// begun is dropped.
    ~BWPatientThread();
    BWPatientThread(const BWPatientThread &) = delete;
    BWPatientThread &operator=(const BWPatientThread &) = delete;

    void setPatience(std::chrono::milliseconds patience) { m_patience = patience; }

    /// Piece after piece, in order. Returns at once.
    void run(std::function<void()> work);

private:
    struct State;
    static void loop(const std::shared_ptr<State> &state);

    std::chrono::milliseconds m_patience;
    const std::shared_ptr<State> m_state;
};
