#pragma once

/// Marks a function with plain inner loops over many pixels: it is compiled once for every PC and once for those with
/// AVX2, and the better one is picked at start. Sanitizers do not get along with the picking.
#if defined(__x86_64__) && defined(__gnu_linux__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)   \
    && !defined(__clang__)
#define BW_VECTOR_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define BW_VECTOR_CLONES
#endif
