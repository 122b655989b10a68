#pragma once

#include "BWACUDriver/BWFrame.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <QByteArray>
#include <thread>

/// Makes stills of passing frames on a thread of its own, one for each request, in order. A frame that turns out to be
/// damaged is put aside and its request takes the next one. The thread starts with the first request.
class BWSnapshotWorker {
public:
    /// Called on the worker's thread.
    using Deliver = std::function<void(const QByteArray &jpeg)>;

    explicit BWSnapshotWorker(Deliver deliver);
    /// As finish().
    ~BWSnapshotWorker();

    /// Asks for one still. Capture thread.
    void request();

    /// Takes the frame if a request waits for one. Holds at most two frames at once, so that many requests do not
    /// starve the stream. Never waits. Capture thread.
    void offer(const BWFrame &frame);

    /// The stream has ended: requests without a frame are dropped. Frames already taken are still delivered, if they
    /// are good. Capture thread.
    void dropRequests();

    /// Waits until all frames that were taken are delivered, or turned out to be damaged. Capture thread.
    void waitUntilDelivered();

    /// dropRequests(), and waits until the last still is delivered. Nothing is delivered afterwards.
    void finish();

private:
    void run();
    bool waitForFrame(BWFrame &frame);
    void putBack();

    const Deliver m_deliver;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<BWFrame> m_frames;
    int m_wanted = 0; ///< requests that have no frame yet
    int m_held = 0; ///< frames here, the one being worked on included
    bool m_delivering = false; ///< or finding out whether the frame is good
    bool m_streaming = false;
    bool m_finishing = false;
    std::thread m_thread;
};
