// SPDX-License-Identifier: GPL-3.0-or-later
#include "Model/LiveView/BWLiveRenderer.h"

#include "Utils/BWLogging.h"

#include <cerrno>
#include <cstring>
#include <pthread.h>
#include <QSocketNotifier>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace {
using Clock = std::chrono::steady_clock;
}

/// Wakes the event loop from the drawing thread. Unlike a posted event, it allocates nothing.
class BWLiveRenderer::Bell : public QSocketNotifier {
public:
    Bell() : QSocketNotifier(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), Read), m_descriptor(static_cast<int>(socket()))
    {
        if (m_descriptor < 0)
            qFatal("No eventfd: %s", std::strerror(errno));
    }
    ~Bell() override
    {
        setEnabled(false);
        ::close(m_descriptor);
    }
    void ring() const { ::eventfd_write(m_descriptor, 1); }
    void silence() const
    {
        eventfd_t rings = 0;
        ::eventfd_read(m_descriptor, &rings);
    }

private:
    const int m_descriptor;
};

BWLiveRenderer::BWLiveRenderer(QObject *parent) : QObject(parent), m_bell(new Bell), m_thread([this] { run(); })
{
    connect(m_bell.get(), &QSocketNotifier::activated, this, [this] {
        m_bell->silence();
        Q_EMIT imageReady();
    });
}

BWLiveRenderer::~BWLiveRenderer()
{
    change([this] { m_quit = true; });
    m_thread.join();
}

/// Under the lock. Wakes the drawing thread only if there is something to draw: each time costs a switch of threads.
template <typename Change>
void BWLiveRenderer::change(const Change &change)
{
    bool wake = false;
    {
        const std::lock_guard lock(m_mutex);
        change();
        wake = hasWork();
    }
    if (wake)
        m_wake.notify_one();
}

void BWLiveRenderer::prepareBuffer(const BWFrame &frame)
{
    BWFrame previous = frame; // released outside the lock: its buffer goes back to the driver
    const Clock::time_point now = Clock::now();
    change([&] {
        ++m_statistics.received;
        m_meter.addReceived(now);
        if (!m_seen)
            return;
        std::swap(m_frame, previous);
        if (!previous.isNull()) {
            ++m_statistics.dropped;
            m_meter.addDropped();
        }
    });
}

void BWLiveRenderer::setSeen(bool seen)
{
    BWFrame previous;
    change([&] {
        m_requestChanged = m_requestChanged || (seen && !m_seen);
        m_seen = seen;
        if (!seen) {
            std::swap(m_frame, previous);
            m_image = {};
            m_imageWaiting = false;
        }
    });
}

BWFrame BWLiveRenderer::currentFrame() const
{
    const std::lock_guard lock(m_mutex);
    return m_current;
}

void BWLiveRenderer::setRequest(const BWRenderRequest &request)
{
    change([&] {
        m_requestChanged = m_requestChanged || m_request != request;
        m_request = request;
    });
}

void BWLiveRenderer::clear()
{
    BWFrame previous;
    BWFrame current;
    change([&] {
        std::swap(m_frame, previous);
        std::swap(m_current, current);
        m_image = {};
        m_imageWaiting = false;
        m_clear = true;
        m_meter.restart(Clock::now());
    });
}

bool BWLiveRenderer::takeImage(BWRenderedImage &image)
{
    bool taken = false;
    change([&] {
        taken = std::exchange(m_imageWaiting, false);
        if (!taken)
            return;
        // The old image is let go of under the lock: the drawing thread may then use its memory again.
        image = std::exchange(m_image, {});
        if (image.frameNumber != m_lastShown) {
            m_lastShown = image.frameNumber;
            ++m_statistics.shown;
        }
    });
    return taken;
}

void BWLiveRenderer::imageShown(const BWRenderedImage &image)
{
    const Clock::time_point now = Clock::now();
    const std::lock_guard lock(m_mutex);
    // The same frame drawn anew, after scrolling, says nothing about the way from the camera.
    if (std::exchange(m_lastMeasured, image.frameNumber) != image.frameNumber)
        m_meter.addShown(image.captured, now);
}

BWLiveViewStatistics BWLiveRenderer::statistics() const
{
    const std::lock_guard lock(m_mutex);
    return m_statistics;
}

BWLiveViewFigures BWLiveRenderer::figures() const
{
    const std::lock_guard lock(m_mutex);
    return m_meter.figures(Clock::now());
}

std::optional<BWLiveViewMeter::Latencies> BWLiveRenderer::latencies() const
{
    const std::lock_guard lock(m_mutex);
    return m_meter.latencies();
}

bool BWLiveRenderer::hasWork() const
{
    const bool canShow = !m_imageWaiting && !m_request.visible.isEmpty();
    return m_quit || m_clear || (m_seen && (m_requestChanged || (!m_frame.isNull() && canShow)));
}

void BWLiveRenderer::run()
{
    pthread_setname_np(pthread_self(), "live view");
    BWFrameRenderer renderer;
    Clock::time_point captured;
    bool badReported = false;
    for (;;) {
        BWFrame frame;
        BWRenderRequest request;
        bool requestChanged = false;
        bool cleared = false;
        {
            std::unique_lock lock(m_mutex);
            m_wake.wait(lock, [this] { return hasWork(); });
            if (m_quit)
                return;
            std::swap(frame, m_frame);
            request = m_request;
            requestChanged = std::exchange(m_requestChanged, false);
            cleared = std::exchange(m_clear, false);
        }
        if (cleared)
            renderer.clear();
        if (!frame.isNull()) {
            const bool good = renderer.setFrame(frame, request);
            if (good)
                captured = frame.timestamp();
            {
                const std::lock_guard lock(m_mutex);
                ++(good ? m_statistics.decoded : m_statistics.bad);
                if (good && !m_clear)
                    std::swap(m_current, frame);
            }
            if (good) {
                frame = {}; // the camera has the last one's buffer back at once
                badReported = false;
            } else {
                // One line for a run of bad frames; statistics() counts them.
                if (!std::exchange(badReported, true))
                    qCWarning(bwViews, "Frame %llu cannot be decoded; the last good picture stays",
                              static_cast<unsigned long long>(frame.sequence()));
                if (!requestChanged)
                    continue;
            }
        }
        BWRenderedImage image = renderer.render(request);
        if (image.image.isNull())
            continue;
        {
            const std::lock_guard lock(m_mutex);
            if (m_clear || !m_seen)
                continue;
            m_image = std::move(image);
            m_image.captured = captured;
            m_imageWaiting = true;
        }
        m_bell->ring();
    }
}
