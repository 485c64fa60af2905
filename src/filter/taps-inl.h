// How the kernels along rows come by the samples of their taps. Included once per instruction set.
#include "frame/simd-inl.h"

#if defined(QELCV_FILTER_TAPS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QELCV_FILTER_TAPS_INL_H_
#undef QELCV_FILTER_TAPS_INL_H_
#else
#define QELCV_FILTER_TAPS_INL_H_
#endif

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {

// How many vectors an operation works on at once. Long kernels take several, which share what is loaded for each tap.
template <size_t n>
using Vectors = std::integral_constant<size_t, n>;

template <size_t n, class Op>
HWY_INLINE void forEachVector(Vectors<n>, const Op& op) {
#pragma GCC unroll 4
    for (size_t v = 0; v < n; ++v) op(v);
}

// Calls op(d, x, vectors) on blocks of vectors that cover `count` results from `out` on. Behind the first one, blocks
// begin where stores are aligned, and the last one begins early enough to end with the results, so some are computed
// twice. Where the results do not fill a block, op gets single vectors, and where they do not fill a vector, all of
// them are left to few().
template <size_t n, class D, class Out, class Op, class Few>
HWY_INLINE void forOverlapping(Vectors<n> vectors, D d, const Out* out, size_t count, const Op& op, const Few& few) {
    const size_t block = n * hn::Lanes(d);
    if (count < block) {
        if constexpr (n == 1) {
            return few();
        } else {
            return forOverlapping(Vectors<1>(), d, out, count, op, few);
        }
    }
    const size_t last = count - block;
    size_t step = block - reinterpret_cast<uintptr_t>(out) / sizeof(Out) % hn::Lanes(d);
    bool isLast = last == 0;
    // One call only, so that it is inlined.
    for (size_t x = 0;;) {
        op(d, x, vectors);
        x += step;
        step = block;
        if (x < last) continue;
        if (isLast) return;
        isLast = true;
        x = last;
    }
}

// Where a vector of sums finds the samples of its taps: loaded for each tap, and widened if they are narrower,
template <class D, class Src, int kChannels = 1>
struct Loaded {
    const Src* first;

    HWY_INLINE Loaded vector(size_t v) const { return {first + v * hn::Lanes(D())}; }
    HWY_INLINE hn::Vec<D> operator()(int tap) const {
        const Src* const p = first + tap * kChannels;
        if constexpr (sizeof(Src) == sizeof(hn::TFromD<D>)) {
            return hn::LoadU(D(), p);
        } else {
            return hn::PromoteTo(D(), hn::LoadU(hn::Rebind<Src, D>(), p));
        }
    }
};

// or joined from two whole vectors. Those as long as a line of the cache would nearly all straddle two lines if they
// were loaded for each tap, which takes twice as long.
constexpr bool kJoins = HWY_TARGET <= HWY_AVX3;
#if HWY_TARGET <= HWY_AVX3
template <class D, int kChannels = 1>
struct Joined {
    static constexpr size_t kLanes = hn::MaxLanes(D());
    const Qel32f* first;

    // How far the last of some vectors reads.
    static constexpr size_t samplesRead(int taps, size_t vectors) {
        return (size_t(taps - 1) * kChannels / kLanes + 1 + vectors) * kLanes;
    }

    HWY_INLINE Joined vector(size_t v) const { return {first + v * kLanes}; }

    template <int kTap>
    HWY_INLINE hn::Vec<D> at() const {
        constexpr int kShift = kTap * kChannels % kLanes;
        const Qel32f* const p = first + kTap * kChannels - kShift;
        const auto low = hn::LoadU(D(), p);
        if constexpr (kShift == 0) return low;
        const hn::RebindToSigned<D> di;
        const auto high = hn::LoadU(D(), p + kLanes);
        // The form without a mask draws warnings from GCC 12.
        const auto joined =
            _mm512_maskz_alignr_epi32(0xFFFF, hn::BitCast(di, high).raw, hn::BitCast(di, low).raw, kShift);
        return hn::BitCast(D(), hn::Vec<decltype(di)>{joined});
    }

    // One of the first five taps, which is known when this is compiled.
    HWY_INLINE hn::Vec<D> operator()(int tap) const {
        switch (tap) {
            case 0:
                return at<0>();
            case 1:
                return at<1>();
            case 2:
                return at<2>();
            case 3:
                return at<3>();
            default:
                return at<4>();
        }
    }
};
#endif

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#endif
