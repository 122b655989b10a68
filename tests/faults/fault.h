// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <stddef.h>

enum fault_call {
    FAULT_WRITE = 1, /* write, pwrite, writev, copy_file_range, ftruncate */
    FAULT_SYNC = 2, /* fsync, fdatasync, sync_file_range */
    FAULT_NAME = 4, /* rename, link */
    FAULT_OPEN = 8, /* open for writing, mkdir */
    FAULT_MEMORY = 16 /* malloc, calloc, realloc, mmap */
};

/* What failing_calls does. */
struct fault {
    int calls; /* which ones fail, or'ed */
    int error; /* their errno; 0: only half is written */
    int lasting; /* not the n-th alone, but all from there on */
    long nth; /* from 1 on */
    unsigned delay; /* in microseconds: they do not fail, but take that long */
    int separate; /* each folder is as on a disk of its own */
    size_t memory; /* only allocations of at least so many bytes */
    char where[4096]; /* only files whose paths begin or end so */
};

/* From now on; null: no more. Returns whether a call has failed. Programs find both by dlsym(). */
int fault_arm(const struct fault *fault);
/* The calling thread never lacks memory. */
void fault_spare(void);
