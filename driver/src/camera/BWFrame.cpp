#include "BWACUDriver/BWFrame.h"

#include <utility>

struct BWFrame::Buffer {
    Buffer(const BWFrameInfo &frameInfo, std::function<void()> releaseFunction)
        : info(frameInfo), release(std::move(releaseFunction))
    {
    }
    ~Buffer()
    {
        if (release)
            release();
    }
    Buffer(const Buffer &) = delete;
    Buffer &operator=(const Buffer &) = delete;

    BWFrameInfo info;
    std::function<void()> release;
};

BWFrame::BWFrame(const BWFrameInfo &info, std::function<void()> release)
    : m_buffer(std::make_shared<const Buffer>(info, std::move(release)))
{
}

const BWFrameInfo &BWFrame::info() const
{
    static const BWFrameInfo none;
    return m_buffer ? m_buffer->info : none;
}
