// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWFrame.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <QByteArray>
#include <thread>

/// Makes stills of passing frames on its own thread, one for each request, in order. A frame that turns out to be
/// damaged is dropped and its request takes the next one. The thread starts with the first request.
class BWSnapshotWorker {
public:
    /// Who requested a still, if not all users of the camera; gets no data if there is none.
    using Receiver = std::function<void(const QByteArray &jpeg)>;
    /// Called on the worker's thread, with the receiver of the request, which may be null; with no data if a whole frame
    /// could not be encoded.
    using Deliver = std::function<void(const QByteArray &jpeg, const Receiver &receiver)>;

    /// Called with the receiver of a request for which no good frame came, on the thread that ended the stream or on the
    /// worker's.
    using Drop = std::function<void(const Receiver &receiver)>;

    BWSnapshotWorker(Deliver deliver, Drop drop);
    /// As finish().
    ~BWSnapshotWorker();

    /// Requests one still. Capture thread.
    void request(const Receiver &receiver);

    /// Takes the frame if a request waits for one. Holds at most two frames at once, so that many requests do not
    /// starve the stream. Never waits. Capture thread.
    void offer(const BWFrame &frame);

    /// The stream has ended: drops requests without a frame. Frames already taken are still delivered if they are good.
    /// Capture thread.
    void dropRequests();

    /// Waits until every frame taken has been delivered, or has turned out to be damaged. Capture thread.
    void waitUntilDelivered();

    /// dropRequests(), and waits until the last still is delivered. Nothing is delivered afterwards.
    void finish();

private:
    struct Taken {
        BWFrame frame;
        Receiver receiver;
    };

    void run();
    bool waitForFrame(Taken &taken);
    void putBack(const Receiver &receiver);

    const Deliver m_deliver;
    const Drop m_drop;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Taken> m_frames;
    std::deque<Receiver> m_requests; ///< those without a frame
    int m_held = 0; ///< frames here, including the one being worked on
    bool m_delivering = false; ///< or checking whether the frame is good
    bool m_streaming = false;
    bool m_finishing = false;
    std::thread m_thread;
};
