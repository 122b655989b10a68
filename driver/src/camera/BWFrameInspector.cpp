// SPDX-License-Identifier: GPL-3.0-or-later
#include "camera/BWFrameInspector.h"

#include "base/BWDriverLog.h"
#include "media/BWJpeg.h"

#include <algorithm>

namespace {

bool isWhole(const BWFrameInfo &info)
{
    return info.pixelFormat == BWPixelFormat::MJPEG ? BWJpeg::looksComplete(info.planes[0].data, info.planes[0].size)
                                                    : info.isWholeRawPicture();
}

} // namespace

void BWFrameInspector::streamStarted()
{
    m_lastSequence.reset();
    m_unnumbered = 0;
}

void BWFrameInspector::streamRestarted()
{
    ++m_restarts;
}

bool BWFrameInspector::accept(const BWFrame &frame)
{
    countGap(frame.sequence());
    if (!isWhole(frame.info())) {
        if (m_bad++ == 0)
            qCWarning(bwDriver) << "Frame" << frame.sequence() << "arrived incomplete and was skipped";
        return false;
    }
    ++m_delivered;
    return true;
}

void BWFrameInspector::reject(const BWFrame &frame)
{
    if (frame)
        countGap(frame.sequence());
    else
        ++m_unnumbered;
    if (m_bad++ == 0)
        qCWarning(bwDriver) << "The device flagged a frame in error; it was skipped";
}

BWCameraStatistics BWFrameInspector::statistics() const
{
    return {m_delivered, m_bad, m_lost, m_restarts};
}

void BWFrameInspector::countGap(uint64_t sequence)
{
    if (m_lastSequence && sequence > *m_lastSequence) {
        const uint64_t missing = sequence - *m_lastSequence - 1;
        m_lost += missing - std::min(missing, m_unnumbered);
    }
    m_lastSequence = sequence;
    m_unnumbered = 0;
}
