#include <omp.h>

#include <algorithm>
#include <atomic>

#include "core/processor.h"
#include "qelcore.h"

namespace {

// What the caller set; below 1 for the default.
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
    chosenLimit.store(numThreads, std::memory_order_relaxed);
    return qelStatusOk;
}
