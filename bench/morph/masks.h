// Masks, and the plain loop over their elements. All in an unnamed namespace, since the program holds two builds of it.
#ifndef QELCV_BENCH_MORPH_MASKS_H_
#define QELCV_BENCH_MORPH_MASKS_H_

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "kit/bench.h"

namespace {

// Masks of n by n elements with the anchor in the middle.
enum class Shape { kRect, kCross, kEllipse, kGeneral };

struct Mask {
    std::vector<Qel8u> elements;
    QelSize size;
    QelPoint anchor;
};

inline Mask makeMask(Shape shape, int n) {
    Mask mask = {std::vector<Qel8u>(size_t(n) * size_t(n)), {n, n}, {n / 2, n / 2}};
    bench::Noise noise(7);
    const int r = n / 2;
    for (int y = -r; y < n - r; ++y) {
        const int reach = static_cast<int>(std::lround(std::sqrt(double(r * r - std::min(y * y, r * r)))));
        for (int x = -r; x < n - r; ++x) {
            const bool set = shape == Shape::kRect      ? true
                             : shape == Shape::kCross   ? x == 0 || y == 0
                             : shape == Shape::kEllipse ? std::abs(x) <= reach
                                                        : (noise.next() & 0x100) != 0;
            mask.elements[size_t(y + r) * size_t(n) + size_t(x + r)] = set;
        }
    }
    return mask;
}

template <class T>
T extreme(bool dilates, T a, T b) {
    return dilates ? std::max(a, b) : std::min(a, b);
}

// The image within a border as wide as the mask, then a pass for each set element.
template <class T>
struct Plain {
    bool dilates;
    Mask mask;
    std::vector<T> bordered = {};

    void operator()(const bench::Image<T>& in, const bench::Image<T>& out) {
        const auto [width, height] = in.size;
        const int c = in.channels;
        const size_t pitch = size_t(width + mask.size.width - 1) * size_t(c);
        bordered.resize(pitch * size_t(height + mask.size.height - 1));
        for (int y = 0; y < height + mask.size.height - 1; ++y) {
            const T* p = in.row(std::clamp(y - mask.anchor.y, 0, height - 1));
            T* q = bordered.data() + pitch * size_t(y);
            for (int x = 0; x < width + mask.size.width - 1; ++x)
                std::memcpy(q + x * c, p + std::clamp(x - mask.anchor.x, 0, width - 1) * c, sizeof(T) * size_t(c));
        }
        for (int y = 0; y < height; ++y) results(y, pitch, out.row(y), size_t(width) * size_t(c), size_t(c));
    }

    void results(int y, size_t pitch, T* q, size_t samples, size_t c) const {
        bool first = true;
        for (int j = 0; j < mask.size.height; ++j) {
            for (int i = 0; i < mask.size.width; ++i) {
                if (mask.elements[size_t(j) * size_t(mask.size.width) + size_t(i)] == 0) continue;
                const T* p = bordered.data() + pitch * size_t(y + j) + size_t(i) * c;
                if (first) {
                    std::memcpy(q, p, samples * sizeof(T));
                } else {
                    for (size_t x = 0; x < samples; ++x) q[x] = extreme(dilates, q[x], p[x]);
                }
                first = false;
            }
        }
    }
};

}  // namespace

#endif
