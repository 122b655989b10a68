// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/types.h>

/// The system calls that reach the kernel's cameras, so that tests can make each of them fail without hardware. All of
/// them return a negative errno number on failure, and are repeated if a signal interrupts them. Thread-safe.
class BWKernelCalls {
public:
    virtual ~BWKernelCalls() = default;

    /// Returns a file descriptor. O_CLOEXEC is added.
    virtual int open(const char *path, int flags) = 0;
    virtual int close(int descriptor) = 0;
    virtual int ioctl(int descriptor, unsigned long request, void *argument) = 0;
    virtual ssize_t read(int descriptor, void *bytes, std::size_t size) = 0;
    /// The number of descriptors with events; 0 on a timeout. `timeout` in milliseconds, -1 for no limit.
    virtual int poll(pollfd *descriptors, nfds_t count, int timeout) = 0;
    /// A shared mapping for reading; null on failure, with the errno number in `error`.
    virtual void *map(int descriptor, std::size_t length, off_t offset, int &error) = 0;
    virtual void unmap(void *address, std::size_t length) = 0;

    /// The real kernel.
    static BWKernelCalls &system();
};

/// An open device node. Errors are negative errno numbers, as in BWKernelCalls.
class BWKernelFile {
public:
    /// Reads and dequeues from it never block. Check isOpen() afterwards.
    BWKernelFile(BWKernelCalls &kernel, const char *path, int access = O_RDWR)
        : m_kernel(kernel), m_descriptor(kernel.open(path, access | O_NONBLOCK))
    {
    }
    ~BWKernelFile()
    {
        if (isOpen())
            m_kernel.close(m_descriptor);
    }
    BWKernelFile(const BWKernelFile &) = delete;
    BWKernelFile &operator=(const BWKernelFile &) = delete;

    bool isOpen() const { return m_descriptor >= 0; }
    /// Why it could not be opened.
    int openError() const { return isOpen() ? 0 : m_descriptor; }
    int descriptor() const { return m_descriptor; }
    BWKernelCalls &kernel() const { return m_kernel; }

    template <typename Argument>
    int ioctl(unsigned long request, Argument &argument) const
    {
        return m_kernel.ioctl(m_descriptor, request, &argument);
    }
    ssize_t read(void *bytes, std::size_t size) const { return m_kernel.read(m_descriptor, bytes, size); }

private:
    BWKernelCalls &m_kernel;
    const int m_descriptor;
};

/// The text of an error, given as a negative errno number.
inline const char *kernelErrorText(int error)
{
    return std::strerror(-error);
}
