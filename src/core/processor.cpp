#include "core/processor.h"

#include <unistd.h>

#include <algorithm>
#include <climits>

#include "core/system.h"
#include "qelcore.h"

namespace qel {

namespace {

struct Processors {
    int usable;
    int cores;
};

// Read once: the quota and the mask of a running process rarely change, and the calls are on hot paths.
const Processors& processors() {
    static const Processors found = [] {
        const CpuSet cpus = allowedCpus();
        const int quota = cpuQuota("");
        const int usable = std::clamp(cpus.count(), 1, quota);
        const int cores = coresOnLargestDie("", cpus);
        return Processors{usable, cores > 0 ? std::min(cores, quota) : usable};
    }();
    return found;
}

int maxCacheBytes() {
    static const int bytes = [] {
        const int largest = largestCacheBytes("", allowedCpus());
        if (largest > 0) return largest;
        const long asked =
            std::max({sysconf(_SC_LEVEL2_CACHE_SIZE), sysconf(_SC_LEVEL3_CACHE_SIZE), sysconf(_SC_LEVEL4_CACHE_SIZE)});
        return static_cast<int>(std::clamp<long>(asked, 0, INT_MAX));
    }();
    return bytes;
}

}  // namespace

int usableProcessors() { return processors().usable; }

}  // namespace qel

int qelGetNumCoresOnDie() { return qel::processors().cores; }

qelStatus qelGetMaxCacheSizeB(int* pSizeByte) {
    if (pSizeByte == nullptr) return qelStatusNullPointer;
    const int bytes = qel::maxCacheBytes();
    if (bytes == 0) return qelStatusBadArg;
    *pSizeByte = bytes;
    return qelStatusOk;
}
