#include "core/processor.h"

#include <sched.h>
#include <unistd.h>

#include <algorithm>

#include "qelcore.h"

namespace qel {

int usableProcessors() {
    static const int count = [] {
        cpu_set_t set;
        return sched_getaffinity(0, sizeof set, &set) == 0 ? std::max(CPU_COUNT(&set), 1) : 1;
    }();
    return count;
}

}  // namespace qel

int qelGetNumCoresOnDie() { return qel::usableProcessors(); }

qelStatus qelGetMaxCacheSizeB(int* pSizeByte) {
    if (pSizeByte == nullptr) return qelStatusNullPointer;
    static const long bytes =
        std::max({sysconf(_SC_LEVEL2_CACHE_SIZE), sysconf(_SC_LEVEL3_CACHE_SIZE), sysconf(_SC_LEVEL4_CACHE_SIZE)});
    if (bytes <= 0) return qelStatusBadArg;
    *pSizeByte = static_cast<int>(bytes);
    return qelStatusOk;
}
