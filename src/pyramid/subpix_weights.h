// Bilinear weights: what the four samples around a point between pixels count.
#ifndef QELCV_PYRAMID_SUBPIX_WEIGHTS_H_
#define QELCV_PYRAMID_SUBPIX_WEIGHTS_H_

#include <algorithm>
#include <cmath>

#include "qelcv/types.h"

namespace qel {

// The first digit is the row, the second the column.
template <class T>
struct Weights {
    T w00, w01, w10, w11;
};
using WeightsQ14 = Weights<Qel16s>;
using WeightsFloat = Weights<Qel32f>;

constexpr int kQ14 = 14, kOneQ14 = 1 << kQ14;

// A fraction in units of 2^-14. A centre that is rounded up to a whole number leaves one just below zero, which counts
// as zero.
inline int toQ14(Qel32f fraction) {
    if (!(fraction >= 0)) return 0;
    return static_cast<int>(std::min(fraction, 1.0F) * kOneQ14 + 0.5F);
}

// Each product is rounded up a little, so they add up to more than 1; the largest gives way.
inline WeightsQ14 weightsQ14(Qel32f fx, Qel32f fy) {
    const int right = toQ14(fx), below = toQ14(fy);
    const auto product = [](int x, int y) { return (x * y + kOneQ14) >> kQ14; };
    int w00 = product(kOneQ14 - right, kOneQ14 - below), w10 = product(kOneQ14 - right, below);
    int w01 = product(right, kOneQ14 - below), w11 = product(right, below);
    const int excess = w00 + w10 + w01 + w11 - kOneQ14;
    if (excess > 0) *std::max({&w00, &w10, &w01, &w11}, [](int* a, int* b) { return *a < *b; }) -= excess;
    return {static_cast<Qel16s>(w00), static_cast<Qel16s>(w01), static_cast<Qel16s>(w10), static_cast<Qel16s>(w11)};
}

inline WeightsFloat weightsFloat(Qel32f fx, Qel32f fy) {
    return {(1 - fx) * (1 - fy), fx * (1 - fy), (1 - fx) * fy, fx * fy};
}

// What lies beyond the last whole pixel, also of a negative shift: 0 to 1.
inline Qel32f fractionOf(Qel32f shift) {
    const Qel32f fraction = shift - std::trunc(shift);
    return fraction < 0 ? fraction + 1 : fraction;
}

// A sum of products in units of 2^-14 becomes a sample: ((sum + round) >> right) << left, saturated.
struct ScaleQ14 {
    int round, right, left;
};
inline ScaleQ14 scaleQ14(int scaleFactor) {
    // No sum reaches 2^23: from a shift by 24 on all results are 0, and 16 places up all but 0 are saturated.
    const int shift = std::clamp(scaleFactor, -kQ14 - 16, 24 - kQ14) + kQ14;
    return {shift > 0 ? 1 << (shift - 1) : 0, std::max(shift, 0), std::max(-shift, 0)};
}
template <class T>
inline T sampleQ14(int sum, const ScaleQ14& scale) {
    constexpr unsigned kLargest = T(-1);
    const unsigned scaled = std::min(static_cast<unsigned>(sum + scale.round) >> scale.right, kLargest);
    return static_cast<T>(std::min(scaled << scale.left, kLargest));
}

}  // namespace qel

#endif
