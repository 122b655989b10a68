#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

/// A fixed number of frame buffers that are used again and again, as a capture device has them. Any thread.
class BWBufferPool {
public:
    using Bytes = std::vector<uint8_t>;

    explicit BWBufferPool(std::size_t count);

    /// A buffer that nobody holds; null when all are held. What it contains is left over from earlier use.
    Bytes *acquire();
    void release(Bytes *buffer);

private:
    std::mutex m_mutex;
    std::vector<std::unique_ptr<Bytes>> m_buffers;
    std::vector<Bytes *> m_free;
};
