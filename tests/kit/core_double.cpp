#include "kit/core_double.h"

#include <cstdlib>
#include <cstring>

#include "qelcore.h"

namespace kit {

CoreDouble& core() {
    static CoreDouble instance;
    return instance;
}

void CoreDouble::reset() {
    threads = 1;
    cores = 2;
    cacheSize = 1 << 22;
    allocationsLeft = -1;
}

}  // namespace kit

// Blocks come filled with garbage: nothing may depend on what they hold.
void* qelMalloc(int bytes) {
    kit::CoreDouble& core = kit::core();
    if (bytes < 1 || core.allocationsLeft == 0) return nullptr;
    if (core.allocationsLeft > 0) --core.allocationsLeft;
    constexpr size_t kAlignment = 64;
    const size_t rounded = (static_cast<size_t>(bytes) + kAlignment - 1) & ~(kAlignment - 1);
    void* const p = std::aligned_alloc(kAlignment, rounded);
    if (p == nullptr) return nullptr;
    std::memset(p, 0xC5, rounded);
    ++core.allocated;
    ++core.allocations;
    return p;
}

void qelFree(void* p) {
    if (p != nullptr) --kit::core().allocated;
    std::free(p);
}

int ownGetNumThreads() { return kit::core().threads; }

qelStatus qelGetNumThreads(int* pNumThreads) {
    *pNumThreads = kit::core().threads;
    return qelStatusOk;
}

qelStatus qelSetNumThreads(int numThreads) {
    kit::core().threads = numThreads;
    return qelStatusOk;
}

int qelGetNumCoresOnDie() { return kit::core().cores; }

qelStatus qelGetMaxCacheSizeB(int* pSizeByte) {
    if (kit::core().cacheSize == 0) return qelStatusBadArg;
    *pSizeByte = kit::core().cacheSize;
    return qelStatusOk;
}
