// Included ahead of everything else in 32-bit builds. Highway leaves its AVX2 and AVX-512 versions out there, for want
// of one 64-bit instruction; with that in place they compile and run.
#ifndef QELCV_FRAME_HIGHWAY_I386_H_
#define QELCV_FRAME_HIGHWAY_I386_H_

#define HWY_BROKEN_TARGETS 0

#include <immintrin.h>

// Zeroes the bits of `value` from position `index` upward. Like the instruction, it reads the low byte of the index
// only.
static inline unsigned long long _bzhi_u64(unsigned long long value, unsigned long long index) {
    const unsigned position = index & 0xFF;
    return position < 64 ? value & ((1ULL << position) - 1) : value;
}

#endif
