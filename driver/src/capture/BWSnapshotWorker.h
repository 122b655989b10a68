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
    /// Called on the worker's thread.
    using Deliver = std::function<void(const QByteArray &jpeg)>;

    explicit BWSnapshotWorker(Deliver deliver);
    /// As finish().
    ~BWSnapshotWorker();

    /// Requests one still. Capture thread.
    void request();

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
    void run();
    bool waitForFrame(BWFrame &frame);
    void putBack();

    const Deliver m_deliver;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<BWFrame> m_frames;
    int m_requests = 0; ///< those without a frame
    int m_held = 0; ///< frames here, including the one being worked on
    bool m_delivering = false; ///< or checking whether the frame is good
    bool m_streaming = false;
    bool m_finishing = false;
    std::thread m_thread;
};
