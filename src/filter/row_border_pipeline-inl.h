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
