// Where a filter reads beyond the end of a row or a column.
#ifndef QELCV_FILTER_BORDER_MODE_H_
#define QELCV_FILTER_BORDER_MODE_H_

#include <cstdint>

#include "qelcv/types.h"

namespace qel {

// Flags above the mode: the rows above or below the region lie in memory and are read as real pixels.
constexpr int kBorderModeMask = 0x0F;
constexpr int kRowsAboveInMemory = 0x10;
constexpr int kRowsBelowInMemory = 0x20;

constexpr bool isBorderMode(int mode) { return mode >= qelBorderConst && mode <= qelBorderMirrR; }

// `a` modulo `n`, from 0 up to n - 1 for negative `a` too. A period may be twice as long as the longest row.
constexpr int64_t modulo(int64_t a, int64_t n) {
    if (a < 0 && a + n >= 0) return a + n;  // the usual distance takes no division
    if (a >= n && a - n < n) return a - n;
    return a % n < 0 ? a % n + n : a % n;
}

// What stands beyond the ends of a row or a column.
template <class T>
struct Border {
    int mode;
    T value;  // where the mode is qelBorderConst
};

// What extendedIndex gives where the border's constant stands.
constexpr int kConstantSample = -1;

// The sample of a row of n that stands at position i, which may lie any distance outside of 0..n-1. Serves rows of an
// image as well as samples of a row.
constexpr int extendedIndex(int mode, int i, int n) {
    if (i >= 0 && i < n) return i;
    switch (mode) {
        case qelBorderRepl:
            return i < 0 ? 0 : n - 1;
        case qelBorderWrap:
            return static_cast<int>(modulo(i, n));
        case qelBorderMirr: {
            if (n == 1) return 0;
            const int64_t last = n - 1;
            const int64_t phase = modulo(i, 2 * last);
            return static_cast<int>(phase < n ? phase : 2 * last - phase);
        }
        case qelBorderMirrR: {
            const int64_t period = 2 * int64_t{n};
            const int64_t phase = modulo(i, period);
            return static_cast<int>(phase < n ? phase : period - 1 - phase);
        }
        default:
            return kConstantSample;
    }
}

}  // namespace qel

#endif
