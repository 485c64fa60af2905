// A row covered by vectors, the last of which overlaps the one before. Included once per instruction set.
#include "frame/simd-inl.h"

#if defined(QELCV_PYRAMID_COVER_ROW_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QELCV_PYRAMID_COVER_ROW_INL_H_
#undef QELCV_PYRAMID_COVER_ROW_INL_H_
#else
#define QELCV_PYRAMID_COVER_ROW_INL_H_
#endif

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {

// Calls op(d, x) on vectors that cover `count` lanes, at least kGroup of them, with the widest vector that they fill.
// The last one begins early enough to end with them: some lanes are computed twice, so op must not change what it
// reads.
template <size_t kGroup = 1, class D, class Op>
HWY_INLINE void coverRow(D d, size_t count, const Op& op) {
    if constexpr (hn::MaxLanes(D()) > kGroup) {
        if (count < hn::Lanes(d)) return coverRow<kGroup>(hn::Half<D>(), count, op);
    }
    if (count == 0) return;
    forBlocks(hn::Lanes(d), hn::Lanes(d), count, [&](size_t x) QEL_INLINE_LAMBDA { op(d, x); });
}

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#endif
