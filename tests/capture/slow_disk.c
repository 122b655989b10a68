// SPDX-License-Identifier: GPL-3.0-or-later
/* Preloaded into a program, makes every write to a movie file take a while, as a tired disk does; or, with SLOW_COPIES set,
   every write to a half-done copy, as a disk on the other end of a cable does. */

#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/uio.h>
#include <unistd.h>

static void wait_for(int descriptor)
{
    const char *ending = getenv("SLOW_COPIES") ? "part" : ".mov";
    char link[64];
    char path[PATH_MAX];
    snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    const ssize_t length = readlink(link, path, sizeof path);
    if (length > 4 && memcmp(path + length - 4, ending, 4) == 0)
        usleep(getenv("SLOW_COPIES") ? 700000 : 150000);
}

ssize_t write(int descriptor, const void *bytes, size_t size)
{
    static ssize_t (*next)(int, const void *, size_t);
    if (!next)
        *(void **)&next = dlsym(RTLD_NEXT, "write");
    wait_for(descriptor);
    return next(descriptor, bytes, size);
}

ssize_t writev(int descriptor, const struct iovec *parts, int count)
{
    static ssize_t (*next)(int, const struct iovec *, int);
    if (!next)
        *(void **)&next = dlsym(RTLD_NEXT, "writev");
    wait_for(descriptor);
    return next(descriptor, parts, count);
}

/* Between two disks of different kinds there is no such short cut. */
ssize_t copy_file_range(int from, off64_t *from_offset, int to, off64_t *to_offset, size_t size, unsigned flags)
{
    (void)from, (void)from_offset, (void)to, (void)to_offset, (void)size, (void)flags;
    errno = EXDEV;
    return -1;
}
