// Formulas that several families have. Included once per instruction set.
#include "frame/simd-inl.h"

#if defined(QELCV_FRAME_ARITHMETIC_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QELCV_FRAME_ARITHMETIC_INL_H_
#undef QELCV_FRAME_ARITHMETIC_INL_H_
#else
#define QELCV_FRAME_ARITHMETIC_INL_H_
#endif

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {

// |a - b| of unsigned integers, or of floats: one rounding, and no sign, not even of a NaN.
template <class V>
HWY_INLINE V absDiff(V a, V b) {
    if constexpr (hwy::IsFloat<hn::TFromV<V>>()) {
        return hn::Abs(hn::Sub(a, b));
    } else {
        return hn::Or(hn::SaturatedSub(a, b), hn::SaturatedSub(b, a));  // one of the two is zero
    }
}

// A sum of floats whose order is part of the result: four single-precision lanes on every machine, which are folded
// into two of double precision. Lanes 2 and 3 are added to lanes 0 and 1 in single precision, then both are widened and
// added to the total.
class FourLaneSum {
public:
    using D4 = hn::FixedTag<Qel32f, 4>;
    using D2 = hn::FixedTag<Qel64f, 2>;

    HWY_INLINE FourLaneSum() : total_(hn::Zero(D2())) {}

    HWY_INLINE void fold(hn::Vec<D4> lanes) {
        const hn::Half<D4> half;
        foldPair(hn::Add(hn::LowerHalf(half, lanes), hn::UpperHalf(half, lanes)));
    }

    // Lanes 0 and 1, to which lanes 2 and 3 have been added.
    HWY_INLINE void foldPair(hn::Vec<hn::Half<D4>> pair) { total_ = hn::Add(total_, hn::PromoteTo(D2(), pair)); }

    // The four lanes are widened first and then added.
    HWY_INLINE void foldWidened(hn::Vec<D4> lanes) {
        const hn::Half<D4> half;
        const auto low = hn::PromoteTo(D2(), hn::LowerHalf(half, lanes));
        const auto high = hn::PromoteTo(D2(), hn::UpperHalf(half, lanes));
        total_ = hn::Add(total_, hn::Add(low, high));
    }

    HWY_INLINE Qel64f get() const { return hn::GetLane(total_) + hn::GetLane(hn::Reverse2(D2(), total_)); }

private:
    hn::Vec<D2> total_;
};

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#endif
