#include "capture/BWRecordingQueue.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int mostHeld = 2;
constexpr std::size_t mostCopied = 64 << 20; // bytes; two seconds of a fast 5-megapixel camera

std::size_t sizeOf(const BWFrame &frame)
{
    std::size_t size = 0;
    for (const BWPlane &plane : frame.info().planes)
        size += plane.size;
    return size;
}

BWFrame copyOf(const BWFrame &frame, std::size_t size)
{
    const std::shared_ptr<uint8_t[]> bytes(new uint8_t[size]);
    BWFrameInfo info = frame.info();
    uint8_t *next = bytes.get();
    for (BWPlane &plane : info.planes) {
        if (plane.size == 0)
            continue;
        const uint8_t *const from = std::exchange(plane.data, next);
        next = std::copy_n(from, plane.size, next);
    }
    return BWFrame(info, [bytes] {});
}

} // namespace

bool BWRecordingQueue::push(const BWFrame &frame)
{
    if (m_held < mostHeld) {
        m_entries.push_back({frame, 0, true});
        ++m_held;
        return true;
    }
    const std::size_t size = sizeOf(frame);
    if (m_copied + size > mostCopied)
        return false;
    m_entries.push_back({copyOf(frame, size), size, false});
    m_copied += size;
    return true;
}

BWFrame BWRecordingQueue::pop()
{
    if (m_entries.empty())
        return {};
    Entry first = std::move(m_entries.front());
    m_entries.pop_front();
    m_copied -= first.copied;
    m_held -= first.isHeld ? 1 : 0;
    return std::move(first.frame);
}

void BWRecordingQueue::clear()
{
    m_entries.clear();
    m_copied = 0;
    m_held = 0;
}
