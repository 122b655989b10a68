#include "simulated/BWBufferPool.h"

BWBufferPool::BWBufferPool(std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        m_free.push_back(m_buffers.emplace_back(std::make_unique<Bytes>()).get());
}

BWBufferPool::Bytes *BWBufferPool::acquire()
{
    const std::lock_guard lock(m_mutex);
    if (m_free.empty())
        return nullptr;
    Bytes *buffer = m_free.back();
    m_free.pop_back();
    return buffer;
}

void BWBufferPool::release(Bytes *buffer)
{
    const std::lock_guard lock(m_mutex);
    m_free.push_back(buffer);
}
