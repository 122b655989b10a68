// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>

/// What the live image does at a moment. Absent values: nothing to say.
struct BWLiveViewFigures {
    std::optional<double> cameraRate; ///< frames per second from the camera; 0 while it stalls
    std::optional<double> screenRate; ///< frames per second on the screen
    std::optional<uint64_t> dropped; ///< since the camera began to deliver: came too early for the screen
    std::optional<std::chrono::microseconds> latency; ///< median of the last second
};

/// Measures the live image: rates, dropped frames, and how old a picture is when it appears. Keeps a fixed number of
/// measurements and allocates nothing. One thread at a time; the caller brings the time, which must not go backwards.
class BWLiveViewMeter {
public:
    using Time = std::chrono::steady_clock::time_point;

    struct Latencies {
        std::chrono::microseconds median;
        std::chrono::microseconds percentile99; ///< 1 of 100 pictures is older
    };

    void addReceived(Time now);
    void addDropped() { ++m_dropped; }
    /// A frame that the camera captured then is on the screen now.
    void addShown(Time captured, Time now);
    /// What comes now is another stream, or none: figures() starts again.
    void restart(Time now);

    BWLiveViewFigures figures(Time now) const;
    /// Over all streams, but only the last pictures of a long run; nothing before the first one.
    std::optional<Latencies> latencies() const;

private:
    static constexpr std::size_t longest = 1024; // half a minute of a usual camera

    /// The last values.
    template <typename Value>
    struct Ring {
        std::array<Value, longest> values{};
        std::size_t added = 0;

        void add(const Value &value) { values[added++ % longest] = value; }
        std::size_t count() const { return added < longest ? added : longest; }
        /// 0 is the newest.
        const Value &newest(std::size_t age) const { return values[(added - 1 - age) % longest]; }
    };

    static std::size_t countSince(const Ring<Time> &ring, Time begin);
    static double rate(const Ring<Time> &ring, std::size_t count);
    Latencies latenciesOfNewest(std::size_t count) const;

    Ring<Time> m_received;
    Ring<Time> m_shown;
    Ring<std::chrono::microseconds> m_latencies; // of those shown
    uint64_t m_dropped = 0;
    bool m_delivers = false; // since the restart
    Time m_restarted;
};
