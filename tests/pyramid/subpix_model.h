// Bilinear samples by the rule, one at a time.
#ifndef QELCV_TESTS_PYRAMID_SUBPIX_MODEL_H_
#define QELCV_TESTS_PYRAMID_SUBPIX_MODEL_H_

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "kit/image.h"
#include "qelcv/types.h"

namespace subpix {

inline double floorDiv(double value, int places) { return std::floor(std::ldexp(value, -places)); }

// A sum in units of 2^-14 as a result: divided by 2^n, to nearest, halves upward, saturated.
template <class R>
R scaled(int sum, int scaleFactor) {
    const double result = std::floor(std::ldexp(double(sum), -(14 + scaleFactor)) + 0.5);
    return result > double(R(-1)) ? R(-1) : R(result);
}

template <class R>
R rounded(Qel32f sum) {
    if constexpr (std::is_same_v<R, Qel32f>) {
        return sum;
    } else {
        return R(std::clamp(std::nearbyint(sum), decltype(sum)(0), decltype(sum)(std::numeric_limits<R>::max())));
    }
}

inline int toQ14(Qel32f fraction) { return fraction < 0 ? 0 : int(fraction * 16384 + 0.5F); }

template <class R>
R fourQ14(int s00, int s01, int s10, int s11, Qel32f fx, Qel32f fy, int scaleFactor) {
    const int a = toQ14(fx), b = toQ14(fy), A = 16384 - a, B = 16384 - b;
    int w00 = (A * B + 16384) >> 14, w10 = (A * b + 16384) >> 14, w01 = (a * B + 16384) >> 14,
        w11 = (a * b + 16384) >> 14;
    const int rest = 16384 - (w00 + w10 + w01 + w11);
    if (rest < 0) {
        if (w00 >= w10 && w00 >= w01 && w00 >= w11) {
            w00 += rest;
        } else if (w10 >= w01 && w10 >= w11) {
            w10 += rest;
        } else if (w01 >= w11) {
            w01 += rest;
        } else {
            w11 += rest;
        }
    }
    return scaled<R>(s00 * w00 + s01 * w01 + (s10 * w10 + s11 * w11), scaleFactor);
}
template <class R>
R twoQ14(int s0, int s1, Qel32f f, int scaleFactor) {
    return scaled<R>(s0 * (16384 - toQ14(f)) + s1 * toQ14(f), scaleFactor);
}

template <class R>
R fourFloat(Qel32f s00, Qel32f s01, Qel32f s10, Qel32f s11, Qel32f fx, Qel32f fy) {
    const Qel32f w00 = (1 - fx) * (1 - fy), w01 = fx * (1 - fy), w10 = (1 - fx) * fy, w11 = fx * fy;
    return rounded<R>((s00 * w00 + s01 * w01) + (s10 * w10 + s11 * w11));
}
template <class R>
R twoFloat(Qel32f s0, Qel32f s1, Qel32f f) {
    return rounded<R>(s0 * (1 - f) + s1 * f);
}

// Whether a type goes by the integer weights.
template <class T, class R>
constexpr bool kIsQ14 = std::is_same_v<T, Qel8u>&& std::is_integral_v<R>;

template <class T, class R>
R four(const kit::Image<T>& src, int x, int y, Qel32f fx, Qel32f fy, int scaleFactor) {
    const T s00 = src.at(x, y), s01 = src.at(x + 1, y), s10 = src.at(x, y + 1), s11 = src.at(x + 1, y + 1);
    if constexpr (kIsQ14<T, R>) {
        return fourQ14<R>(s00, s01, s10, s11, fx, fy, scaleFactor);
    } else {
        return fourFloat<R>(s00, s01, s10, s11, fx, fy);
    }
}
template <class T, class R>
R two(T s0, T s1, Qel32f f, int scaleFactor) {
    if constexpr (kIsQ14<T, R>) {
        return twoQ14<R>(s0, s1, f, scaleFactor);
    } else {
        return twoFloat<R>(s0, s1, f);
    }
}
template <class T, class R>
R one(T s, int scaleFactor) {
    if constexpr (kIsQ14<T, R>) {
        return scaled<R>(s * 16384, scaleFactor);
    } else {
        return R(s);
    }
}

// Bit for bit, but for which of two NaNs a sum is.
template <class T>
testing::AssertionResult sameResults(kit::Image<T>& want, const kit::Image<T>& got) {
    if constexpr (std::is_same_v<T, Qel32f>) {
        for (int y = 0; y < want.size().height; ++y)
            for (int x = 0; x < want.size().width; ++x)
                if (std::isnan(want.at(x, y)) && std::isnan(got.at(x, y))) want.at(x, y) = got.at(x, y);
    }
    return sameBits(want, got);
}

}  // namespace subpix

#endif
