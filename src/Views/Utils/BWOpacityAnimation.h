#pragma once

#include "BWACUDriver/BWClock.h"

#include <chrono>
#include <optional>

/// The rule by which something over the live image fades in and out: from 0 to 1 in half a second, back in another,
/// once or until it is stopped. It only tells; whoever draws asks. GUI thread.
class BWOpacityAnimation {
public:
    static constexpr std::chrono::milliseconds duration{500}; ///< of one way

    /// Gentle is for those who wish no moving pictures: fully there in place of every fading.
    enum class Motion { Full, Gentle };

    explicit BWOpacityAnimation(BWClock &clock) : m_clock(clock) { }

    /// Begin anew, whatever runs.
    void flashOnce(Motion motion = Motion::Full);
    void repeatFlash(Motion motion = Motion::Full);
    void stop();

    /// False also when a single flash is over.
    bool isRunning() const;
    /// 0 (nothing to be seen) to 1; 0 when it does not run.
    double opacity() const;
    /// When it is worth to look at it again; nothing if it stays as it is.
    std::optional<std::chrono::nanoseconds> nextStep() const;

private:
    enum class Repeat { Never, Once, Forever };

    void start(Repeat repeat, Motion motion);

    BWClock &m_clock;
    std::chrono::nanoseconds m_start{0};
    Repeat m_repeat = Repeat::Never;
    Motion m_motion = Motion::Full;
};
