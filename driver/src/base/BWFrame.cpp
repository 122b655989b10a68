// SPDX-License-Identifier: GPL-3.0-or-later
#include "BWACUDriver/BWFrame.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <numeric>
#include <utility>

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
/// To recycle memory would hide from them that it is used too late, and its lock what threads share without one.
template <typename T>
using RecyclingAllocator = std::allocator<T>;
#else
/// Keeps the memory of objects that are gone for the next ones of their type. Any thread.
template <typename T>
class RecyclingAllocator {
public:
    using value_type = T;

    RecyclingAllocator() = default;
    template <typename Other>
    explicit RecyclingAllocator(const RecyclingAllocator<Other> &)
    {
    }

    T *allocate(std::size_t count)
    {
        const std::lock_guard lock(pool.mutex);
        return static_cast<T *>(pool.count > 0 ? pool.free[--pool.count] : ::operator new(count * sizeof(T)));
    }
    void deallocate(T *object, std::size_t)
    {
        const std::lock_guard lock(pool.mutex);
        if (pool.count < pool.free.size())
            pool.free[pool.count++] = object;
        else
            ::operator delete(object);
    }
    bool operator==(const RecyclingAllocator &) const { return true; }

private:
    struct Pool {
        std::mutex mutex;
        std::array<void *, 32> free;
        std::size_t count;
    };
    static inline constinit Pool pool{}; // never destroyed, as the last frame may outlive main()
};
#endif

} // namespace

struct BWFrame::Buffer {
    Buffer(const BWFrameInfo &frameInfo, std::function<void()> releaseFunction, std::shared_ptr<void> itsOwner)
        : info(frameInfo), owner(std::move(itsOwner)), release(std::move(releaseFunction))
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
    std::shared_ptr<void> owner;
    std::function<void()> release;
};

std::array<BWPlaneSize, 3> BWFrameInfo::planeSizes() const
{
    const int halfWidth = (width + 1) / 2;
    const int halfHeight = (height + 1) / 2;
    switch (pixelFormat) {
    case BWPixelFormat::YUYV:
    case BWPixelFormat::UYVY:
        return {{{halfWidth * 4, height}}};
    case BWPixelFormat::NV12:
        return {{{width, height}, {halfWidth * 2, halfHeight}}};
    case BWPixelFormat::YU12:
        return {{{width, height}, {halfWidth, halfHeight}, {halfWidth, halfHeight}}};
    case BWPixelFormat::GREY:
        return {{{width, height}}};
    case BWPixelFormat::RGB24:
    case BWPixelFormat::BGR24:
        return {{{width * 3, height}}};
    case BWPixelFormat::XBGR32:
        return {{{width * 4, height}}};
    case BWPixelFormat::None:
    case BWPixelFormat::MJPEG:
        break;
    }
    return {};
}

bool BWFrameInfo::isWholeRawPicture() const
{
    const std::array<BWPlaneSize, 3> sizes = planeSizes();
    if (width <= 0 || height <= 0 || sizes[0].rows == 0)
        return false;
    return std::equal(sizes.begin(), sizes.end(), planes.begin(), [](const BWPlaneSize &least, const BWPlane &plane) {
        if (least.rows == 0)
            return true;
        // The last row may end with its last pixel.
        return plane.data && plane.stride >= least.rowBytes
            && plane.size >= std::size_t(plane.stride) * std::size_t(least.rows - 1) + std::size_t(least.rowBytes);
    });
}

std::size_t BWFrameInfo::byteCount() const
{
    return std::accumulate(planes.begin(), planes.end(), std::size_t(0),
                           [](std::size_t sum, const BWPlane &plane) { return sum + plane.size; });
}

BWFrame::BWFrame(const BWFrameInfo &info, std::function<void()> release, std::shared_ptr<void> owner)
    : m_buffer(
        std::allocate_shared<const Buffer>(RecyclingAllocator<Buffer>(), info, std::move(release), std::move(owner)))
{
}

const BWFrameInfo &BWFrame::info() const
{
    static const BWFrameInfo none;
    return m_buffer ? m_buffer->info : none;
}

BWFrame BWFrame::copied() const
{
    if (isNull())
        return {};
    BWFrameInfo copy = info();
    const std::shared_ptr<uint8_t[]> bytes(new uint8_t[copy.byteCount()]);
    uint8_t *next = bytes.get();
    for (BWPlane &plane : copy.planes) {
        if (plane.size == 0)
            continue;
        const uint8_t *const from = std::exchange(plane.data, next);
        next = std::copy_n(from, plane.size, next);
    }
    return {copy, {}, bytes};
}
