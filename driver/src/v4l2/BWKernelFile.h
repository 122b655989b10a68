#pragma once

#include "v4l2/BWKernelCalls.h"

#include <cstring>
#include <fcntl.h>

/// A device node held open. Errors are negative errno numbers, as in BWKernelCalls.
class BWKernelFile {
public:
    /// Never waits in a read or a dequeue. Ask isOpen() afterwards.
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

/// Text for an error of the kernel, given as a negative number.
inline const char *kernelErrorText(int error)
{
    return std::strerror(-error);
}
