// How fast this machine moves memory at all: the measure that a memory-bound function is held against.
#ifndef QELCV_BENCH_KIT_BANDWIDTH_H_
#define QELCV_BENCH_KIT_BANDWIDTH_H_

#include <cstddef>

namespace bench {

// Copies `bytes` bytes by memcpy, each thread a part of its own.
void copyMemory(char* to, const char* from, size_t bytes, int threads);

// Adds up `bytes` bytes with the widest vectors there are, each thread a part of its own.
void readMemory(const char* from, size_t bytes, int threads);

}  // namespace bench

#endif
