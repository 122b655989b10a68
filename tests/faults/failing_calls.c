// SPDX-License-Identifier: GPL-3.0-or-later
/* Preloaded into a program, makes chosen calls of it fail: those that it names to fault_arm(), or, from its start, those in
   FAULT="CALLS ERROR LASTING NTH DELAY SEPARATE WHERE". */

#define _GNU_SOURCE
#include "fault.h"

#include <dlfcn.h>
#include <errno.h>
#include <limits.h>
#include <linux/fcntl.h> /* which declares no open(), so that it can be defined with all it takes */
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

static struct fault fault;
static atomic_int armed;
static atomic_long calls;
static atomic_int failed;
static __thread int spared __attribute__((tls_model("initial-exec")));

void fault_spare(void)
{
    spared = 1;
}

int fault_arm(const struct fault *wanted)
{
    atomic_store(&armed, 0);
    if (wanted) {
        fault = *wanted;
        atomic_store(&calls, 0);
        atomic_store(&armed, 1);
    }
    return atomic_exchange(&failed, 0);
}

__attribute__((constructor)) static void arm_at_start(void)
{
    struct fault wanted = {0};
    const char *text = getenv("FAULT");
    if (text
        && sscanf(text, "%d %d %d %ld %u %d %4095s", &wanted.calls, &wanted.error, &wanted.lasting, &wanted.nth,
                  &wanted.delay, &wanted.separate, wanted.where)
            == 7)
        fault_arm(&wanted);
}

static int is_meant(int call)
{
    return atomic_load(&armed) && (fault.calls & call);
}

static int hits(void)
{
    const long number = atomic_fetch_add(&calls, 1) + 1;
    if (fault.lasting ? number < fault.nth : number != fault.nth)
        return 0;
    if (fault.delay > 0) {
        usleep(fault.delay);
        return 0;
    }
    atomic_store(&failed, 1);
    errno = fault.error;
    return 1;
}

static int hits_path(int call, const char *path)
{
    char real[PATH_MAX];
    if (!is_meant(call))
        return 0;
    const ssize_t length = strncmp(path, "/proc/self/fd/", 14) == 0 ? readlink(path, real, sizeof real - 1) : 0;
    if (length > 0) {
        real[length] = '\0';
        path = real;
    }
    const size_t size = strlen(fault.where);
    const size_t whole = strlen(path);
    return whole >= size
        && (memcmp(path, fault.where, size) == 0 || memcmp(path + whole - size, fault.where, size) == 0) && hits();
}

static int hits_file(int call, int file)
{
    char link[64];
    snprintf(link, sizeof link, "/proc/self/fd/%d", file);
    return is_meant(call) && hits_path(call, link);
}

static int hits_name(const char *from, const char *to)
{
    const size_t length = (size_t)(strrchr(from, '/') - from);
    errno = EXDEV;
    return (atomic_load(&armed) && fault.separate
            && (strncmp(from, to, length) != 0 || strrchr(to, '/') != to + length))
        || hits_path(FAULT_NAME, to);
}

static int is_copied_by_hand(void)
{
    errno = EXDEV;
    return atomic_load(&armed) && fault.separate;
}

static int lacks(size_t size)
{
    return !spared && is_meant(FAULT_MEMORY) && size >= fault.memory && hits();
}

#define HITS_WRITE(file, size) (hits_file(FAULT_WRITE, file) && (fault.error != 0 || !((size) = ((size) + 1) / 2)))
#define CALL(type, name, parameters, arguments, fails)                                                                 \
    type name parameters                                                                                               \
    {                                                                                                                  \
        static type(*next) parameters;                                                                                 \
        if (!next)                                                                                                     \
            *(void **)&next = dlsym(RTLD_NEXT, #name);                                                                 \
        return (fails) ? (type)-1 : next arguments;                                                                    \
    }
#define ALSO(name, other) extern __typeof(other) name __attribute__((alias(#other)))

CALL(ssize_t, write, (int file, const void *bytes, size_t size), (file, bytes, size), HITS_WRITE(file, size))
CALL(ssize_t, pwrite, (int file, const void *bytes, size_t size, off_t at), (file, bytes, size, at),
     HITS_WRITE(file, size))
CALL(ssize_t, writev, (int file, const struct iovec *parts, int count), (file, parts, count), HITS_WRITE(file, count))
CALL(ssize_t, copy_file_range, (int from, off_t *at, int to, off_t *to_at, size_t size, unsigned flags),
     (from, at, to, to_at, size, flags), is_copied_by_hand() || HITS_WRITE(to, size))
CALL(int, ftruncate, (int file, off_t size), (file, size), fault.error != 0 && hits_file(FAULT_WRITE, file))
CALL(int, fsync, (int file), (file), hits_file(FAULT_SYNC, file))
CALL(int, fdatasync, (int file), (file), hits_file(FAULT_SYNC, file))
CALL(int, sync_file_range, (int file, off_t at, off_t size, unsigned flags), (file, at, size, flags),
     hits_file(FAULT_SYNC, file))
CALL(int, rename, (const char *from, const char *to), (from, to), hits_name(from, to))
CALL(int, renameat2, (int folder, const char *from, int other, const char *to, unsigned flags),
     (folder, from, other, to, flags), hits_name(from, to))
CALL(int, link, (const char *from, const char *to), (from, to), hits_name(from, to))
CALL(int, mkdir, (const char *path, mode_t mode), (path, mode), hits_path(FAULT_OPEN, path))
CALL(int, mkostemp, (char *path, int flags), (path, flags), hits_path(FAULT_OPEN, path))
ALSO(pwrite64, pwrite);
ALSO(ftruncate64, ftruncate);
ALSO(mkostemp64, mkostemp);

int openat(int folder, const char *path, int flags, mode_t mode)
{
    if ((flags & O_ACCMODE) != O_RDONLY && hits_path(FAULT_OPEN, path))
        return -1;
    return (int)syscall(SYS_openat, folder, path, flags, mode);
}

int open(const char *path, int flags, mode_t mode)
{
    return openat(AT_FDCWD, path, flags, mode);
}

ALSO(openat64, openat);
ALSO(open64, open);

#define ALLOCATOR(name, parameters, arguments, size)                                                                   \
    extern void *__libc_##name parameters;                                                                             \
    extern void *__interceptor_##name parameters __attribute__((weak)); /* a sanitizer's, if it is there */            \
    void *name parameters                                                                                              \
    {                                                                                                                  \
        return lacks(size) ? NULL : __interceptor_##name ? __interceptor_##name arguments : __libc_##name arguments;   \
    }

ALLOCATOR(malloc, (size_t size), (size), size)
ALLOCATOR(calloc, (size_t count, size_t size), (count, size), count *size)
ALLOCATOR(realloc, (void *block, size_t size), (block, size), size)
CALL(void *, mmap, (void *place, size_t size, int protection, int flags, int file, off_t at),
     (place, size, protection, flags, file, at), lacks(size))
ALSO(mmap64, mmap);

#ifdef SANITIZED /* whose operators ask none of these */
extern void _ZSt17__throw_bad_allocv(void) __attribute__((weak));

static int throws(size_t size)
{
    if (lacks(size))
        _ZSt17__throw_bad_allocv();
    return 0;
}

CALL(void *, _Znwm, (size_t size), (size), throws(size))
CALL(void *, _Znam, (size_t size), (size), throws(size))
#endif
