// The kernels that the fixed filters have built in, as sums of the samples of their taps. Included once per instruction
// set.
#include "filter/fixed_kernels.h"
#include "filter/taps-inl.h"

#if defined(QELCV_FILTER_FIXED_FORMULAS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QELCV_FILTER_FIXED_FORMULAS_INL_H_
#undef QELCV_FILTER_FIXED_FORMULAS_INL_H_
#else
#define QELCV_FILTER_FIXED_FORMULAS_INL_H_
#endif

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {

// A formula gets the samples of its taps from r(Tap<i>()), along a row or down a column. 16s sums wrap. Of 32f, sums
// are formed as they are written here.

template <int kFactor, class V>
HWY_INLINE V times(V v) {
    if constexpr (kFactor == 1) return v;
    if constexpr (kFactor == 2) return hn::Add(v, v);
    return hn::Mul(v, hn::Set(hn::DFromV<V>(), static_cast<hn::TFromV<V>>(kFactor)));
}

// The taps in pairs, from the outermost inwards, each pair added or subtracted before it is multiplied; the middle one
// last.
template <auto ker>
class FoldedTaps {
    static constexpr int kMiddle = ker.kCount / 2;
    static constexpr int magnitude(int i) { return ker.k[i] < 0 ? -ker.k[i] : ker.k[i]; }

public:
    static constexpr int kTaps = ker.kCount;

    template <class R>
    HWY_INLINE auto operator()(const R& r) const {
        return upTo<kMiddle>(r);
    }

private:
    template <int i, class R>
    static HWY_INLINE auto term(const R& r) {
        constexpr int kTwin = kTaps - 1 - i;
        if constexpr (i == kMiddle) {
            return r(Tap<i>());
        } else if constexpr (ker.k[i] == ker.k[kTwin]) {
            static_assert(ker.k[i] > 0);
            return hn::Add(r(Tap<i>()), r(Tap<kTwin>()));
        } else {
            static_assert(ker.k[i] == -ker.k[kTwin]);
            return ker.k[i] > 0 ? hn::Sub(r(Tap<i>()), r(Tap<kTwin>())) : hn::Sub(r(Tap<kTwin>()), r(Tap<i>()));
        }
    }

    static constexpr int firstTerm() {
        int i = 0;
        while (ker.k[i] == 0) ++i;
        return i;
    }

    template <int i, class R>
    static HWY_INLINE auto upTo(const R& r) {
        if constexpr (i == firstTerm()) {
            return times<magnitude(i)>(term<i>(r));
        } else if constexpr (ker.k[i] == 0) {
            return upTo<i - 1>(r);
        } else if constexpr (i == kMiddle && ker.k[i] < 0) {
            return hn::Sub(upTo<i - 1>(r), times<magnitude(i)>(term<i>(r)));
        } else {
            return hn::Add(upTo<i - 1>(r), times<magnitude(i)>(term<i>(r)));
        }
    }
};

template <class Formula>
struct Negated {
    static constexpr int kTaps = Formula::kTaps;
    template <class R>
    HWY_INLINE auto operator()(const R& r) const {
        return hn::Neg(Formula()(r));
    }
};

// The taps one after the other, of a kernel of ones.
template <auto ker>
struct SummedTaps {
    static constexpr int kTaps = ker.kCount;
    static_assert(ker.sum() == kTaps);

    template <class R>
    HWY_INLINE auto operator()(const R& r) const {
        return InTapOrder<kTaps>::sum(r);
    }
};

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#endif
