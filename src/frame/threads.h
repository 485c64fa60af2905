// What the core library and the OpenMP runtime tell about threads and caches.
#ifndef QELCV_FRAME_THREADS_H_
#define QELCV_FRAME_THREADS_H_

#include <omp.h>

#include "qelcore.h"

namespace qel {

// Size of the current team.
inline int owncvGetNumThreads() { return omp_get_num_threads(); }

// This thread's number in its team.
inline int owncvGetIdThreads() { return omp_get_thread_num(); }

// The thread limit: the bound that sizes per-thread scratch and scales limits.
inline int owncvGetMaxNumThreads() {
    int numThreads = 1;
    qelGetNumThreads(&numThreads);
    return numThreads;
}

// Bytes of the largest cache, 0 where that is not known.
inline int owncvGetCacheSize() {
    int sizeByte = 0;
    qelGetMaxCacheSizeB(&sizeByte);
    return sizeByte;
}

// Non-zero where threads are worth starting.
inline int runomp() {
    const int cores = qelGetNumCoresOnDie();
    return cores == 1 ? 0 : cores;
}

// As runomp for kernels of 3 and 5 taps; longer ones are worth a thread on any machine.
inline int runsepomp(int kernelLength) { return kernelLength == 3 || kernelLength == 5 ? runomp() : runomp() | 1; }

}  // namespace qel

#endif
