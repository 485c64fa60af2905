#include <algorithm>
#include <cmath>
#include <cstring>

#include "kit/bench.h"
#include "qelcv.h"

namespace {

template <class T, bool dilates>
bool plainRow(const T* near, const T* mask, T* row, int width, bool forward, bool eight) {
    bool changed = false;
    T carry = row[forward ? 0 : width - 1];
    for (int i = 0; i < width; ++i) {
        const int x = forward ? i : width - 1 - i;
        const auto grow = [&](T sample) { carry = dilates ? std::max(carry, sample) : std::min(carry, sample); };
        grow(row[x]);
        if (near != nullptr) {
            grow(near[x]);
            if (eight && x > 0) grow(near[x - 1]);
            if (eight && x + 1 < width) grow(near[x + 1]);
        }
        carry = dilates ? std::min(carry, mask[x]) : std::max(carry, mask[x]);
        changed |= carry != row[x];
        row[x] = carry;
    }
    return changed;
}

// Raster scans down and up until nothing changes.
template <class T, bool dilates>
void plainReconstruct(bench::Image<T> mask, bench::Image<T> marker, bool eight) {
    const auto [width, height] = mask.size;
    for (bool changed = true; changed;) {
        changed = false;
        for (int y = 0; y < height; ++y)
            changed |= plainRow<T, dilates>(y > 0 ? marker.row(y - 1) : nullptr, mask.row(y), marker.row(y), width,
                                            true, eight);
        for (int y = height - 1; y >= 0; --y)
            changed |= plainRow<T, dilates>(y + 1 < height ? marker.row(y + 1) : nullptr, mask.row(y), marker.row(y),
                                            width, false, eight);
    }
}

// Domes (holes) of a picture of hills, waves and a little noise. The marker is laid anew before each reconstruction.
template <class T, bool dilates, auto bufferSize, auto function, int norm>
void domes(bench::Case& c) {
    constexpr bool eight = norm == qelMorphNormInf;
    const auto mask = c.input<T>();
    const auto marker = c.update<T>();
    const QelSize size = c.size();
    bench::Noise noise(7);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const double hills = std::sin(x * 0.021) * std::cos(y * 0.017) + std::sin((x + y) * 0.11) * 0.5;
            mask.row(y)[x] = T(127 + 55 * hills + noise.next() % 24);
        }
    }
    const auto lay = [=] {
        for (int y = 0; y < size.height; ++y) {
            const T* const from = mask.row(y);
            T* const to = marker.row(y);
            for (int x = 0; x < size.width; ++x) {
                if (dilates) {
                    to[x] = from[x] > 40 ? T(from[x] - 40) : T(0);
                } else {
                    to[x] = from[x] < 215 ? T(from[x] + 40) : T(255);
                }
            }
        }
    };
    int bytes = 0;
    bufferSize(size, &bytes);
    auto* const scratch = reinterpret_cast<Qel8u*>(c.scratch(size_t(bytes)));
    c.ours([=] {
        lay();
        return function(mask.data, mask.step, marker.data, marker.step, size, scratch, norm);
    });
    c.plain([=] {
        lay();
        plainReconstruct<T, dilates>(mask, marker, eight);
    });
}

template <auto function>
void sizeQuery(bench::Case& c) {
    int* const bytes = c.values<int>(1);
    c.ours([=] { return function({640, 480}, bytes); });
}

}  // namespace

BENCH_ROWS({"qeliMorphReconstructDilate_8u_C1IR",
            domes<Qel8u, true, qeliMorphReconstructGetBufferSize_8u_C1, qeliMorphReconstructDilate_8u_C1IR, 0>},
           {"qeliMorphReconstructDilate_8u_C1IR L1",
            domes<Qel8u, true, qeliMorphReconstructGetBufferSize_8u_C1, qeliMorphReconstructDilate_8u_C1IR, 1>},
           {"qeliMorphReconstructErode_8u_C1IR",
            domes<Qel8u, false, qeliMorphReconstructGetBufferSize_8u_C1, qeliMorphReconstructErode_8u_C1IR, 0>},
           {"qeliMorphReconstructDilate_32f_C1IR",
            domes<Qel32f, true, qeliMorphReconstructGetBufferSize_32f_C1, qeliMorphReconstructDilate_32f_C1IR, 0>},
           {"qeliMorphReconstructErode_32f_C1IR",
            domes<Qel32f, false, qeliMorphReconstructGetBufferSize_32f_C1, qeliMorphReconstructErode_32f_C1IR, 0>},
           {"qeliMorphReconstructGetBufferSize_8u_C1", sizeQuery<qeliMorphReconstructGetBufferSize_8u_C1>,
            bench::Sizes::One},
           {"qeliMorphReconstructGetBufferSize_32f_C1", sizeQuery<qeliMorphReconstructGetBufferSize_32f_C1>,
            bench::Sizes::One});
