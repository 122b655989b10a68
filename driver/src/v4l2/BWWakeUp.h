// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <sys/eventfd.h>
#include <unistd.h>

/// A descriptor through which any thread ends another thread's wait in poll().
class BWWakeUp {
public:
    BWWakeUp() : m_descriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) { }
    ~BWWakeUp()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    BWWakeUp(const BWWakeUp &) = delete;
    BWWakeUp &operator=(const BWWakeUp &) = delete;

    /// Readable from wake() to clear(). It is -1, which poll() ignores, only if the process has no descriptors left.
    int descriptor() const { return m_descriptor; }

    void wake() const
    {
        const uint64_t one = 1;
        // This fails only if the counter is full, and then the descriptor is readable already.
        [[maybe_unused]] const ssize_t written = ::write(m_descriptor, &one, sizeof one);
    }

    void clear() const
    {
        uint64_t count = 0;
        [[maybe_unused]] const ssize_t got = ::read(m_descriptor, &count, sizeof count);
    }

private:
    const int m_descriptor;
};
