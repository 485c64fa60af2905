#include <omp.h>

#include <algorithm>
#include <atomic>

#include "core/processor.h"
#include "qelcore.h"

namespace {

// What the caller set, or 0 for the default.
std::atomic<int> chosenLimit{0};

}  // namespace

int ownGetNumThreads() {
    const int chosen = chosenLimit.load(std::memory_order_relaxed);
    return chosen > 0 ? chosen : std::clamp(omp_get_max_threads(), 1, qel::usableProcessors());
}

qelStatus qelGetNumThreads(int* pNumThreads) {
    if (pNumThreads == nullptr) return qelStatusNullPointer;
    *pNumThreads = ownGetNumThreads();
    return qelStatusOk;
}

qelStatus qelSetNumThreads(int numThreads) {
    chosenLimit.store(std::max(numThreads, 0), std::memory_order_relaxed);
    return qelStatusOk;
}
