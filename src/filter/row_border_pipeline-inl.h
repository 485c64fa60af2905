// What the row kernels share. Included once per instruction set.
#include "filter/row_border_pipeline_strips.h"
#include "frame/simd-inl.h"

#if defined(QELCV_FILTER_ROW_BORDER_PIPELINE_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QELCV_FILTER_ROW_BORDER_PIPELINE_INL_H_
#undef QELCV_FILTER_ROW_BORDER_PIPELINE_INL_H_
#else
#define QELCV_FILTER_ROW_BORDER_PIPELINE_INL_H_
#endif

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {

// The loop over rows. edge(strip, out, count) gives the results of a strip, interior(src, out, count) those whose
// samples all lie in the row.
template <class T, class Out, class K, class Edge, class Interior>
HWY_INLINE void forEachRow(const T* pSrc, int srcStep, Out* const* pRowDst, QelSize size, int channels,
                           const RowFilter<T, K>& filter, Carver& carver, const Edge& edge, const Interior& interior) {
    const RowGeometry geometry(size.width, channels, filter.kernelSize, filter.anchor);
    RowStrips<T> strips(geometry, filter, carver);
    const int count = geometry.samples - geometry.reach();
    for (int y = 0; y < size.height; ++y) {
        const T* const src = row(pSrc, srcStep, y);
        Out* const out = pRowDst[y];
        strips.fill(src);
        strips.forEach([&](const T* strip, int x, int results) HWY_ATTR { edge(strip, out + x, size_t(results)); });
        if (count > 0) interior(src, out + geometry.before, size_t(count));
    }
}

// Groups of results that are computed by one rule, while what is left over behind them follows another.
constexpr size_t kGroup = 8;

// Calls op(d, x) for the last count % kGroup results. Where there is a whole group ahead of them, op covers some of it,
// too: the groups come after.
template <class D, class Op>
HWY_INLINE void forLeftovers(D d, size_t count, const Op& op) {
    if (count % kGroup == 0) return;
    forVectors(d, count, op, count < kGroup ? 0 : count - kGroup);
}

// Calls op(d, x) on whole vectors, the last of which begins early enough to end with the row, so that some results are
// computed twice. Fewer than a vector's results are left to few(x, count), all of them.
template <class D, class Op, class Few>
HWY_INLINE void forOverlappingVectors(D d, size_t count, const Op& op, const Few& few) {
    const size_t lanes = hn::Lanes(d);
    if (count < lanes) return few();
    const size_t last = count - lanes;
    size_t x = 0;
    for (; x < last; x += lanes) op(d, x);
    op(d, last);
}

// Clamps to the range of 16 bits.
template <class D, class V = hn::Vec<D>>
HWY_INLINE V clamped16s(D d, V v) {
    return hn::Min(hn::Max(v, hn::Set(d, -32768.0F)), hn::Set(d, 32767.0F));
}

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#endif
