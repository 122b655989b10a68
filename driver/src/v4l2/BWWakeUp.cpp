#include "v4l2/BWWakeUp.h"

#include <cstdint>
#include <sys/eventfd.h>
#include <unistd.h>

BWWakeUp::BWWakeUp() : m_descriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) { }

BWWakeUp::~BWWakeUp()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

void BWWakeUp::wake() const
{
    const uint64_t one = 1;
    // It fails only when the counter is full, and then the descriptor is readable already.
    [[maybe_unused]] const ssize_t written = ::write(m_descriptor, &one, sizeof one);
}

void BWWakeUp::clear() const
{
    uint64_t count = 0;
    [[maybe_unused]] const ssize_t got = ::read(m_descriptor, &count, sizeof count);
}
