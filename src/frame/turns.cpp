#include "frame/turns.h"

#include <unistd.h>

#include <algorithm>
#include <climits>

namespace qel {

int nearestCacheSize() {
    static const int bytes = [] {
        constexpr long kUsual = 0x8000;
        const long told = sysconf(_SC_LEVEL1_DCACHE_SIZE);
        return static_cast<int>(std::min<long>(told > 0 ? told : kUsual, INT_MAX));
    }();
    return bytes;
}

int rowsPerTurn(int64_t bytesPerRow, int64_t bytesBesides, int most) {
    return static_cast<int>(std::clamp<int64_t>((nearestBytes() - bytesBesides) / bytesPerRow, 1, most));
}

}  // namespace qel
