// What the row kernels share. Included once per instruction set.
#include "filter/row_border_pipeline_strips.h"
#include "filter/taps-inl.h"
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
    strips.fill(pSrc);
    for (int y = 0; y < size.height; ++y) {
        const T* const src = row(pSrc, srcStep, y);
        Out* const out = pRowDst[y];
        strips.forEach([&](const T* strip, int x, int results) HWY_ATTR { edge(strip, out + x, size_t(results)); });
        // Early, for a vector of the strip to be loaded when the samples that it is made of have reached the cache.
        if (y + 1 < size.height) strips.fill(row(pSrc, srcStep, y + 1));
        if (count > 0) interior(src, out + geometry.before, size_t(count));
    }
}

// Groups of results that are computed by one rule, while what is left over behind them follows another.
constexpr size_t kGroup = 8;

// The results to compute by the other rule, in front of the groups: where there is a whole group, as many as that, of
// which some are the groups' own and will be overwritten.
struct Leftover {
    explicit Leftover(size_t results)
        : groups(results - results % kGroup),
          count(results % kGroup == 0 ? 0 : HWY_MIN(results, kGroup)),
          begin(results - count) {}
    size_t groups;  // results of all groups
    size_t count;
    size_t begin;
};

// A kernel of kTaps coefficients, or of any number where that is 0. Those of a small kernel stand where the compiler
// can see that no store changes them.
template <int kTaps, class K>
class Coefficients {
public:
    Coefficients(const K* pKernel, int kernelSize) : pKernel_(pKernel), size_(kernelSize) {
        for (int i = 0; i < kTaps; ++i) own_[i] = pKernel[i];
    }
    HWY_INLINE int size() const { return kTaps == 0 ? size_ : kTaps; }
    HWY_INLINE const K* taps() const { return kTaps == 0 ? pKernel_ : own_; }
    HWY_INLINE K operator[](int i) const { return kTaps == 0 ? pKernel_[i] : own_[i]; }

private:
    const K* pKernel_;
    int size_;
    K own_[kTaps + 1];
};

// Clamps to the range of 16 bits.
template <class D, class V = hn::Vec<D>>
HWY_INLINE V clamped16s(D d, V v) {
    return hn::Min(hn::Max(v, hn::Set(d, -32768.0F)), hn::Set(d, 32767.0F));
}

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#endif
