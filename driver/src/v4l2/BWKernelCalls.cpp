// SPDX-License-Identifier: GPL-3.0-or-later
#include "v4l2/BWKernelCalls.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

/// The result of the call, or its error as a negative number. Repeats the call while signals interrupt it.
template <typename Call>
auto uninterrupted(Call call) -> decltype(call())
{
    while (true) {
        const auto result = call();
        if (result >= 0)
            return result;
        if (errno != EINTR)
            return -errno;
    }
}

class SystemCalls : public BWKernelCalls {
public:
    int open(const char *path, int flags) override
    {
        return uninterrupted([=] { return ::open(path, flags | O_CLOEXEC); });
    }

    int close(int descriptor) override
    {
        // Linux has released the descriptor even on EINTR; a second try might close one of another thread.
        return ::close(descriptor) == 0 || errno == EINTR ? 0 : -errno;
    }

    int ioctl(int descriptor, unsigned long request, void *argument) override
    {
        return uninterrupted([=] { return ::ioctl(descriptor, request, argument); });
    }

    ssize_t read(int descriptor, void *bytes, std::size_t size) override
    {
        return uninterrupted([=] { return ::read(descriptor, bytes, size); });
    }

    int poll(pollfd *descriptors, nfds_t count, int timeout) override
    {
        return uninterrupted([=] { return ::poll(descriptors, count, timeout); });
    }

    void *map(int descriptor, std::size_t length, off_t offset, int &error) override
    {
        void *address = ::mmap(nullptr, length, PROT_READ, MAP_SHARED, descriptor, offset);
        if (address != MAP_FAILED)
            return address;
        error = errno;
        return nullptr;
    }

    void unmap(void *address, std::size_t length) override { ::munmap(address, length); }
};

} // namespace

BWKernelCalls &BWKernelCalls::system()
{
    static SystemCalls calls;
    return calls;
}
