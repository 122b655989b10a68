// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <csignal>
#include <sys/resource.h>

/// Takes the disk away from this process: no file may grow beyond that size.
class SmallDisk {
public:
    explicit SmallDisk(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit small{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~SmallDisk() { setrlimit(RLIMIT_FSIZE, &m_before); }
    SmallDisk(const SmallDisk &) = delete;
    SmallDisk &operator=(const SmallDisk &) = delete;

private:
    rlimit m_before{};
};
