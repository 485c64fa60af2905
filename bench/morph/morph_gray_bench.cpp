#include <algorithm>
#include <cstdlib>

#include "kit/bench.h"
#include "qelcv.h"

namespace {

constexpr int kSide = 5;
constexpr int kReach = kSide / 2;

// A cap of a ball: small values, the largest at the anchor.
template <class Value>
void fillMask(Value* mask) {
    for (int j = -kReach; j <= kReach; ++j)
        for (int i = -kReach; i <= kReach; ++i) *mask++ = Value(8 - i * i - j * j);
}

template <class T, class Value>
struct Filter {
    bench::Image<T> src, out;
    Value mask[kSide * kSide];
};

// One row, with the coordinates clamped where the window leaves the image.
template <bool dilate, class T, class Value>
void plainRow(const Filter<T, Value>& f, int y) {
    const auto [width, height] = f.src.size;
    T* const out = f.out.row(y);
    for (int x = 0; x < width; ++x) {
        Value found = sizeof(T) == 1 ? Value(dilate ? 0 : 255) : Value(dilate ? -3.4028235e38F : 3.4028235e38F);
        const bool inside = x >= kReach && x < width - kReach;
        for (int j = 0; j < kSide; ++j) {
            const T* row = f.src.row(std::clamp(y + j - kReach, 0, height - 1));
            for (int i = 0; i < kSide; ++i) {
                const int from = inside ? x + i - kReach : std::clamp(x + i - kReach, 0, width - 1);
                const Value sum = f.mask[j * kSide + i] + row[from];
                if (dilate ? sum > found : sum < found) found = sum;
            }
        }
        if constexpr (sizeof(T) == 1) {
            out[x] = T(std::clamp<Value>(found, 0, 255));
        } else {
            out[x] = found;
        }
    }
}

template <class T, class Value, bool dilate, auto initAlloc, auto free, auto function>
void gray(bench::Case& c) {
    Filter<T, Value> f = {c.input<T>(), c.output<T>(), {}};
    fillMask(f.mask);
    QelMorphGrayState* made = nullptr;
    initAlloc(&made, c.size(), f.mask, {kSide, kSide}, {kReach, kReach});
    const auto* const state = c.keep(made, free);
    c.ours([=] { return function(f.src.data, f.src.step, f.out.data, f.out.step, f.src.size, 1, state); });
    c.plain([=] {
        for (int y = 0; y < f.src.size.height; ++y) plainRow<dilate>(f, y);
    });
}

template <class Value, auto getSize>
void sizeQuery(bench::Case& c) {
    static const Value mask[kSide * kSide] = {};
    int* const bytes = c.values<int>(1);
    c.ours([=] { return getSize({640, 480}, mask, {kSide, kSide}, bytes); });
}

template <class Value, auto getSize, auto init>
void makeState(bench::Case& c) {
    static const Value mask[kSide * kSide] = {};
    int bytes = 0;
    getSize({640, 480}, mask, {kSide, kSide}, &bytes);
    auto* const state = reinterpret_cast<QelMorphGrayState*>(c.scratch(size_t(bytes)));
    c.ours([=] { return init(state, {640, 480}, mask, {kSide, kSide}, {kReach, kReach}); });
}

template <class Value, auto initAlloc, auto free>
void makeAndFree(bench::Case& c) {
    static const Value mask[kSide * kSide] = {};
    c.ours([] {
        QelMorphGrayState* state = nullptr;
        initAlloc(&state, {640, 480}, mask, {kSide, kSide}, {kReach, kReach});
        return free(state);
    });
}

using bench::Sizes;
constexpr auto dilate8u =
    gray<Qel8u, Qel32s, true, qeliMorphGrayInitAlloc_8u_C1R, qeliMorphGrayFree_8u_C1R, qeliGrayDilateBorder_8u_C1R>;
constexpr auto erode8u =
    gray<Qel8u, Qel32s, false, qeliMorphGrayInitAlloc_8u_C1R, qeliMorphGrayFree_8u_C1R, qeliGrayErodeBorder_8u_C1R>;
constexpr auto dilate32f =
    gray<Qel32f, Qel32f, true, qeliMorphGrayInitAlloc_32f_C1R, qeliMorphGrayFree_32f_C1R, qeliGrayDilateBorder_32f_C1R>;
constexpr auto erode32f =
    gray<Qel32f, Qel32f, false, qeliMorphGrayInitAlloc_32f_C1R, qeliMorphGrayFree_32f_C1R, qeliGrayErodeBorder_32f_C1R>;

}  // namespace

BENCH_ROWS({"qeliGrayDilateBorder_8u_C1R", dilate8u}, {"qeliGrayErodeBorder_8u_C1R", erode8u},
           {"qeliGrayDilateBorder_32f_C1R", dilate32f}, {"qeliGrayErodeBorder_32f_C1R", erode32f},
           {"qeliMorphGrayGetSize_8u_C1R", sizeQuery<Qel32s, qeliMorphGrayGetSize_8u_C1R>, Sizes::One},
           {"qeliMorphGrayGetSize_32f_C1R", sizeQuery<Qel32f, qeliMorphGrayGetSize_32f_C1R>, Sizes::One},
           {"qeliMorphGrayInit_8u_C1R", makeState<Qel32s, qeliMorphGrayGetSize_8u_C1R, qeliMorphGrayInit_8u_C1R>,
            Sizes::One},
           {"qeliMorphGrayInit_32f_C1R", makeState<Qel32f, qeliMorphGrayGetSize_32f_C1R, qeliMorphGrayInit_32f_C1R>,
            Sizes::One},
           {"qeliMorphGrayInitAlloc_8u_C1R",
            makeAndFree<Qel32s, qeliMorphGrayInitAlloc_8u_C1R, qeliMorphGrayFree_8u_C1R>, Sizes::One},
           {"qeliMorphGrayInitAlloc_32f_C1R",
            makeAndFree<Qel32f, qeliMorphGrayInitAlloc_32f_C1R, qeliMorphGrayFree_32f_C1R>, Sizes::One});
