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

// A tap that is known when this is compiled: a kernel that has no such tap does not compile.
template <int i>
using Tap = std::integral_constant<int, i>;

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

// The orders of summation, each a documented result. Terms are products of samples and coefficients: t(tap) is one of
// them, t.pair(a, b) that of two samples, added, and the coefficient of the first.
template <int kSize>
struct InTapOrder {
    static constexpr int kTaps = kSize;

    template <class Terms, int i = kSize - 1>
    static HWY_INLINE auto sum(const Terms& t, Tap<i> = {}) {
        if constexpr (i == 0) {
            return t(Tap<0>());
        } else {
            return hn::Add(sum(t, Tap<i - 1>()), t(Tap<i>()));
        }
    }
};
// Of t.size() terms.
template <>
struct InTapOrder<0> {
    static constexpr int kTaps = 0;

    template <class Terms>
    static HWY_INLINE auto sum(const Terms& t) {
        auto sum = t(0);
        const int taps = t.size();
        for (int i = 1; i < taps; ++i) sum = hn::Add(sum, t(i));
        return sum;
    }
};

// From the outside in.
template <int kSize>
struct Inwards {
    static constexpr int kTaps = kSize;

    template <class Terms>
    static HWY_INLINE auto sum(const Terms& t) {
        auto sum = hn::Add(t(Tap<0>()), t(Tap<kSize - 1>()));
        if constexpr (kSize == 5) sum = hn::Add(sum, hn::Add(t(Tap<1>()), t(Tap<3>())));
        return hn::Add(sum, t(Tap<kSize / 2>()));
    }
};

// As Inwards for symmetric kernels: what has the same coefficient is added first.
template <int kSize>
struct Folded {
    static constexpr int kTaps = kSize;

    template <class Terms>
    static HWY_INLINE auto sum(const Terms& t) {
        auto sum = t.pair(Tap<0>(), Tap<kSize - 1>());
        if constexpr (kSize == 5) sum = hn::Add(sum, t.pair(Tap<1>(), Tap<3>()));
        return hn::Add(sum, t(Tap<kSize / 2>()));
    }
};

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

    template <int i>
    HWY_INLINE hn::Vec<D> operator()(Tap<i>) const {
        constexpr int kShift = i * kChannels % kLanes;
        const Qel32f* const p = first + i * kChannels - kShift;
        const auto low = hn::LoadU(D(), p);
        if constexpr (kShift == 0) return low;
        return joined<kShift>(low, hn::LoadU(D(), p + kLanes));
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

    template <int i>
    HWY_INLINE hn::Vec<D> operator()(Tap<i>) const {
        constexpr int kDistance = i - kTaps / 2;
        static_assert(i >= 0 && i < kTaps);
        if constexpr (kDistance < 0) return joined<kLanes + kDistance>(before_, at_);
        if constexpr (kDistance > 0) return joined<kDistance>(at_, behind_);
        return at_;
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

// The results of a row whose taps reach beyond an end of it: those of kReach pixels at each end, or all of them.
template <int kReach, class T>
class RowEnds {
public:
    RowEnds(const Border<T>& border, int width)
        : width_(width), isConstant_(border.mode == qelBorderConst), constant_(border.value) {
        for (int i = 0; i < kReach; ++i) {
            before_[i] = isConstant_ ? 0 : extendedIndex(border.mode, i - kReach, width);
            behind_[i] = isConstant_ ? 0 : extendedIndex(border.mode, width + i, width);
        }
    }

    // Calls op(x, samples) for each of them, where samples(tap) is a sample of row p or of the border.
    template <class Op>
    HWY_INLINE void forEach(const T* p, const Op& op) const {
        const T* const beyond = isConstant_ ? &constant_ : p;
        const T* const end = p + width_;
        if (width_ < 2 * kReach) {
            for (int x = 0; x < width_; ++x) {
                op(x, [=, this](int tap) HWY_ATTR {
                    const int at = x - kReach + tap;
                    return at < 0 ? beyond[before_[at + kReach]] : at < width_ ? p[at] : beyond[behind_[at - width_]];
                });
            }
            return;
        }
        // Which samples lie beyond an end is known when this is compiled.
#pragma GCC unroll 2
        for (int i = 0; i < kReach; ++i) {
            op(i, [=, this](int tap) HWY_ATTR {
                const int at = i - kReach + tap;
                return at < 0 ? beyond[before_[at + kReach]] : p[at];
            });
            op(width_ - kReach + i, [=, this](int tap) HWY_ATTR {
                const int at = i - 2 * kReach + tap;
                return at < 0 ? end[at] : beyond[behind_[at]];
            });
        }
    }

private:
    int width_;
    bool isConstant_;
    T constant_;
    int before_[kReach];
    int behind_[kReach];
};

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#endif
