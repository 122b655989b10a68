// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "BWACUDriver/BWFrame.h"
#include "Model/LiveView/BWFrameRenderer.h"
#include "Model/LiveView/BWLiveViewMeter.h"
#include "Model/LiveView/BWRenderRequest.h"

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <QObject>
#include <QScopedPointer>
#include <thread>

/// Counts of frames since the start.
struct BWLiveViewStatistics {
    uint64_t received = 0; ///< handed over by the camera
    uint64_t decoded = 0; ///< made ready to be drawn
    uint64_t shown = 0; ///< drawn on the screen
    uint64_t bad = 0; ///< could not be decoded
    uint64_t dropped = 0; ///< replaced by a newer frame before they were decoded, though somebody could see the image
};

/// Makes screen pixels of the frames of one source on a thread of its own: a camera's, or the single frame that a still
/// picture is. The newest frame wins: one that is not drawn in time is dropped. The next is begun only when the last was
/// taken, so none is decoded that is not shown.
///
/// A frame that cannot be decoded is counted and the last good picture stays. At most three frames of a camera are held
/// at a time.
class BWLiveRenderer : public QObject {
    Q_OBJECT

public:
    explicit BWLiveRenderer(QObject *parent = nullptr);
    ~BWLiveRenderer() override;

    /// Hands over a frame to be shown. Any thread, in practice the camera's; never waits for the drawing.
    void prepareBuffer(const BWFrame &frame);

    /// Whether anybody can see the image, as is assumed at first. While nobody can, frames are only counted: none is kept,
    /// decoded or drawn. When the image is seen again, the last picture is drawn unless it was cleared.
    void setSeen(bool seen);

    /// The frame that is drawn; null if there is none. It may be one of a camera's few buffers: keep it for a moment only.
    BWFrame currentFrame() const;

    /// What to draw from now on; redraws the last picture.
    void setRequest(const BWRenderRequest &request);

    /// Releases all frames; nothing is drawn until the next one.
    void clear();

    /// Replaces `image` by the newest one and returns true, if there is a newer one. Called when painting, so that no image
    /// is made while nothing is painted.
    bool takeImage(BWRenderedImage &image);

    /// That image is in the window now. GUI thread.
    void imageShown(const BWRenderedImage &image);

    BWLiveViewStatistics statistics() const;
    BWLiveViewFigures figures() const;
    std::optional<BWLiveViewMeter::Latencies> latencies() const;

Q_SIGNALS:
    /// An image can be taken. Sent on the thread that this object lives in, by its event loop.
    void imageReady();

private:
    class Bell;

    void run();
    bool hasWork() const;
    template <typename Change>
    void change(const Change &change);

    mutable std::mutex m_mutex;
    std::condition_variable m_wake;
    BWFrame m_frame; // the newest, not yet looked at
    BWFrame m_current; // the one that is drawn
    BWRenderRequest m_request;
    BWRenderedImage m_image; // finished, not yet taken
    BWLiveViewStatistics m_statistics;
    BWLiveViewMeter m_meter;
    uint64_t m_lastShown = 0;
    uint64_t m_lastMeasured = 0;
    bool m_seen = true;
    bool m_imageWaiting = false;
    bool m_requestChanged = false;
    bool m_clear = false;
    bool m_quit = false;
    // A camera's thread may be the last to let go of this object, but only its own thread may destroy the bell.
    const std::unique_ptr<Bell, QScopedPointerDeleteLater> m_bell;
    std::thread m_thread; // last, because it uses the others from its start
};
