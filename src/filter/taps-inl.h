// How the kernels along rows come by the samples of their taps. Included once per instruction set.
#include "filter/border_mode.h"
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
    forBlocks(block, block - lanesBeyondAlignment(d, out), count, [&](size_t x) HWY_ATTR { op(d, x, vectors); });
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
// The samples from kShift on of two vectors in a row.
template <int kShift, class V>
HWY_INLINE V joined(V low, V high) {
    const hn::DFromV<V> d;
    const hn::RebindToSigned<decltype(d)> di;
    // The form without a mask draws warnings from GCC 12.
    const auto both = _mm512_maskz_alignr_epi32(0xFFFF, hn::BitCast(di, high).raw, hn::BitCast(di, low).raw, kShift);
    return hn::BitCast(d, hn::Vec<decltype(di)>{both});
}

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
        return joined<kShift>(low, hn::LoadU(D(), p + kLanes));
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

// Or shifted out of three whole vectors that walk along the row, with the middle taps in the middle one: each sample is
// loaded once, and mostly from where loads are aligned if the results are.
#if HWY_TARGET <= HWY_AVX3
template <class D, int kTaps>
class Walking {
    static constexpr int kLanes = hn::MaxLanes(D());

public:
    // walk() first leads to the results whose first taps stand from `first` on. Vectors ahead of these are read.
    HWY_INLINE explicit Walking(const Qel32f* first) : next_(first + kTaps / 2) {
        at_ = hn::LoadU(D(), next_ - kLanes);
        behind_ = hn::LoadU(D(), next_);
    }

    HWY_INLINE void walk() {
        next_ += kLanes;
        before_ = at_;
        at_ = behind_;
        behind_ = hn::LoadU(D(), next_);
    }

    HWY_INLINE const Walking& vector(size_t) const { return *this; }

    // One of at most five taps, which is known when this is compiled.
    HWY_INLINE hn::Vec<D> operator()(int tap) const {
        switch (tap - kTaps / 2) {
            case -2:
                return joined<kLanes - 2>(before_, at_);
            case -1:
                return joined<kLanes - 1>(before_, at_);
            case 0:
                return at_;
            case 1:
                return joined<1>(at_, behind_);
            default:
                return joined<2>(at_, behind_);
        }
    }

private:
    const Qel32f* next_;
    hn::Vec<D> before_;
    hn::Vec<D> at_;
    hn::Vec<D> behind_;
};

// As forOverlapping for op(samples, x, vectors), which finds the samples of the results from x on in `samples`. The
// first samples are at p.
template <int kTaps, class D, class Op, class Few>
HWY_INLINE void forWalking(D d, const Qel32f* p, const Qel32f* out, size_t count, const Op& op, const Few& few) {
    constexpr size_t kBlock = 2 * hn::MaxLanes(d);
    if (count < kBlock) return few();
    const size_t last = count - kBlock;
    op(Loaded<D, Qel32f>{p}, 0, Vectors<2>());
    size_t x = kBlock - lanesBeyondAlignment(d, out);
    if (x < last) {
        Walking<D, kTaps> samples(p + x);
        do {
            samples.walk();
            op(samples, x, Vectors<1>());
            x += hn::MaxLanes(d);
        } while (x < last);
    }
    op(Loaded<D, Qel32f>{p + last}, last, Vectors<2>());
}
#endif

// The sample that stands `distance` places beyond an end of a row; near(i) and far(i) are those i places inside of this
// end and of the other one.
template <int kBorderMode, class T, class Near, class Far>
HWY_INLINE T sampleBeyond(int distance, const Near& near, const Far& far, T borderValue) {
    if constexpr (kBorderMode == qelBorderRepl) return near(0);
    if constexpr (kBorderMode == qelBorderWrap) return far(distance - 1);
    if constexpr (kBorderMode == qelBorderMirr) return near(distance);
    if constexpr (kBorderMode == qelBorderMirrR) return near(distance - 1);
    return borderValue;
}

// Calls op(x, samples) for the results of a row whose taps reach beyond an end of it: those of kTaps / 2 pixels at each
// end. The row is no narrower than the kernel.
template <int kTaps, int kBorderMode, class T, class Op>
HWY_INLINE void forEnds(const T* p, int width, T borderValue, const Op& op) {
    constexpr int kReach = kTaps / 2;
    const T* const last = p + (width - 1);
    const auto fromLeft = [p](int i) HWY_ATTR { return p[i]; };
    const auto fromRight = [last](int i) HWY_ATTR { return last[-i]; };
#pragma GCC unroll 2
    for (int i = 0; i < kReach; ++i) {
        op(i, [&](int tap) HWY_ATTR {
            const int x = i - kReach + tap;
            return x >= 0 ? p[x] : sampleBeyond<kBorderMode>(-x, fromLeft, fromRight, borderValue);
        });
        op(width - 1 - i, [&](int tap) HWY_ATTR {
            const int x = i + kReach - tap;
            return x >= 0 ? last[-x] : sampleBeyond<kBorderMode>(-x, fromRight, fromLeft, borderValue);
        });
    }
}

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#endif
