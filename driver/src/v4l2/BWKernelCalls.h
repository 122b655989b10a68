#pragma once

#include <cstddef>
#include <poll.h>
#include <sys/types.h>

/// The calls through which the backend reaches the kernel, so that every way in which they fail can be tried without
/// hardware. All of them return a negative errno number on failure and repeat a call that a signal interrupted.
/// Thread-safe.
class BWKernelCalls {
public:
    virtual ~BWKernelCalls() = default;

    /// Returns a file descriptor. O_CLOEXEC is added.
    virtual int open(const char *path, int flags) = 0;
    virtual int close(int descriptor) = 0;
    virtual int ioctl(int descriptor, unsigned long request, void *argument) = 0;
    virtual ssize_t read(int descriptor, void *bytes, std::size_t size) = 0;
    /// Number of descriptors with events; 0 when the time is over. `timeout` in milliseconds, -1 for ever.
    virtual int poll(pollfd *descriptors, nfds_t count, int timeout) = 0;
    /// Shared mapping for reading; null on failure, with the errno number in `error`.
    virtual void *map(int descriptor, std::size_t length, off_t offset, int &error) = 0;
    virtual void unmap(void *address, std::size_t length) = 0;

    /// The real kernel.
    static BWKernelCalls &system();
};
