// SPDX-License-Identifier: GPL-3.0-or-later
/* Preloaded into a program, makes everything below a folder named "hanging" never answer, as a server that has gone does. */

#define _GNU_SOURCE
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <stdarg.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

static void ask(const char *path)
{
    while (path && strstr(path, "/hanging/"))
        pause();
}

int stat(const char *path, struct stat *status)
{
    ask(path);
    return ((int (*)(const char *, struct stat *))dlsym(RTLD_NEXT, "stat"))(path, status);
}

int lstat(const char *path, struct stat *status)
{
    ask(path);
    return ((int (*)(const char *, struct stat *))dlsym(RTLD_NEXT, "lstat"))(path, status);
}

DIR *opendir(const char *path)
{
    ask(path);
    return ((DIR * (*)(const char *))dlsym(RTLD_NEXT, "opendir"))(path);
}

static int open_file(const char *path, int flags, va_list rest)
{
    const unsigned mode = flags & O_CREAT ? va_arg(rest, unsigned) : 0;
    ask(path);
    /* Not by libc: the thread sanitizer would note the opening there, but not the closing, which is Qt's. */
    return (int)syscall(SYS_openat, AT_FDCWD, path, flags, mode);
}

int open64(const char *path, int flags, ...)
{
    va_list rest;
    va_start(rest, flags);
    const int file = open_file(path, flags, rest);
    va_end(rest);
    return file;
}

int open(const char *path, int flags, ...)
{
    va_list rest;
    va_start(rest, flags);
    const int file = open_file(path, flags, rest);
    va_end(rest);
    return file;
}
