// A double of libqelcore. Every test program carries it; its functions stand in front of the library's, so a test says
// how many threads and cores there are, how large the cache is, and whether an allocation fails.
#ifndef QELCV_TESTS_KIT_CORE_DOUBLE_H_
#define QELCV_TESTS_KIT_CORE_DOUBLE_H_

#include <atomic>

namespace kit {

struct CoreDouble {
    int threads = 1;                 // ownGetNumThreads, qelGetNumThreads
    int cores = 2;                   // qelGetNumCoresOnDie
    int cacheSize = 1 << 22;         // qelGetMaxCacheSizeB; 0 makes the query fail
    int allocationsLeft = -1;        // that many succeed before all fail; negative: all succeed
    std::atomic<int> allocated{};    // blocks not yet freed
    std::atomic<int> allocations{};  // blocks ever given out

    // Back to the values above. Blocks still allocated stay counted.
    void reset();
};

CoreDouble& core();

}  // namespace kit

#endif
