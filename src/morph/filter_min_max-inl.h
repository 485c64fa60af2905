// What the row and the column stage of the min and max filters share. Included once per instruction set.
#include "frame/simd-inl.h"

#if defined(QELCV_MORPH_FILTER_MIN_MAX_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QELCV_MORPH_FILTER_MIN_MAX_INL_H_
#undef QELCV_MORPH_FILTER_MIN_MAX_INL_H_
#else
#define QELCV_MORPH_FILTER_MIN_MAX_INL_H_
#endif

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {

// Of floats that do not compare or are equal both give the second operand.
struct Larger {
    template <class V>
    HWY_INLINE V operator()(V a, V b) const {
        return hn::Max(a, b);
    }
};
struct Smaller {
    template <class V>
    HWY_INLINE V operator()(V a, V b) const {
        return hn::Min(a, b);
    }
};

// Calls op(d, x) on vectors that cover `count` samples, at least one. The last vector begins early enough to end with
// them, so op must give the same when it comes to a sample twice.
template <class T, class Op>
HWY_INLINE void forCovering(size_t count, const Op& op) {
    const hn::ScalableTag<T> whole;
    const hn::CappedTag<T, 16 / sizeof(T)> part;
    const size_t n = hn::Lanes(whole);
    if (count >= n) {
        forBlocks(n, n, count, [&](size_t x) HWY_ATTR { op(whole, x); });
    } else if (count >= hn::Lanes(part)) {
        forBlocks(hn::Lanes(part), hn::Lanes(part), count, [&](size_t x) HWY_ATTR { op(part, x); });
    } else {
        for (size_t x = 0; x < count; ++x) op(hn::CappedTag<T, 1>(), x);
    }
}

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#endif
