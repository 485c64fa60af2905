// What the column kernels share: ways down a column of vectors on which each source row is loaded once for several
// output rows. Included once per instruction set.
#include "frame/image.h"
#include "frame/simd-inl.h"

#if defined(QELCV_FILTER_COLUMN_PIPELINE_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QELCV_FILTER_COLUMN_PIPELINE_INL_H_
#undef QELCV_FILTER_COLUMN_PIPELINE_INL_H_
#else
#define QELCV_FILTER_COLUMN_PIPELINE_INL_H_
#endif

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {

// Samples as the lanes that are summed: as they are, or 16-bit samples as exact floats.
template <class D>
HWY_INLINE hn::Vec<D> loadSamples(D d, const hn::TFromD<D>* p) {
    return hn::LoadU(d, p);
}
template <class D>
requires(hwy::IsFloat<hn::TFromD<D>>()) HWY_INLINE hn::Vec<D> loadSamples(D d, const Qel16s* p) {
    const hn::Rebind<Qel16s, D> d16;
    return hn::ConvertTo(d, hn::PromoteTo(hn::RebindToSigned<D>(), hn::LoadU(d16, p)));
}

// Asks for what the next steps along a row will load or store. A block of rows is more streams than processors follow
// unasked. Nothing is touched, also beyond the row's end.
template <class T>
HWY_INLINE void prefetchAhead(const T* p) {
    constexpr int kBytesAhead = 1024;
    hwy::Prefetch(reinterpret_cast<const char*>(p) + kBytesAhead);
}

// Three taps: emit(y, r0, r1, r2) for each output row y, from the source rows y to y + 2.
template <class D, class Src, class Emit>
HWY_INLINE void slideThree(D d, const Src* const* pRowSrc, int rows, size_t x, const Emit& emit) {
    auto r0 = loadSamples(d, pRowSrc[0] + x);
    auto r1 = loadSamples(d, pRowSrc[1] + x);
    for (int y = 0; y < rows; ++y) {
        prefetchAhead(pRowSrc[y + 2] + x);
        const auto r2 = loadSamples(d, pRowSrc[y + 2] + x);
        emit(y, r0, r1, r2);
        r0 = r1;
        r1 = r2;
    }
}

// Five taps: emit(y, r0, r1, r2, r3, r4).
template <class D, class Src, class Emit>
HWY_INLINE void slideFive(D d, const Src* const* pRowSrc, int rows, size_t x, const Emit& emit) {
    auto r0 = loadSamples(d, pRowSrc[0] + x);
    auto r1 = loadSamples(d, pRowSrc[1] + x);
    auto r2 = loadSamples(d, pRowSrc[2] + x);
    auto r3 = loadSamples(d, pRowSrc[3] + x);
    for (int y = 0; y < rows; ++y) {
        prefetchAhead(pRowSrc[y + 4] + x);
        const auto r4 = loadSamples(d, pRowSrc[y + 4] + x);
        emit(y, r0, r1, r2, r3, r4);
        r0 = r1;
        r1 = r2;
        r2 = r3;
        r3 = r4;
    }
}

// Output rows that slide down together: enough that the rows loaded ahead of the first are few among them.
constexpr int kSlidingRows = 8;

// Any number of taps, summed in their order: emit(y, sum) for one output row or for four.
constexpr int kSummedRows = 4;

template <class D, class Src, class K, class Emit>
HWY_INLINE void sumOneRow(D d, const Src* const* pRowSrc, size_t x, const K* taps, int count, const Emit& emit) {
    auto sum = hn::Mul(loadSamples(d, pRowSrc[0] + x), hn::Set(d, taps[0]));
    for (int i = 1; i < count; ++i) sum = hn::Add(sum, hn::Mul(loadSamples(d, pRowSrc[i] + x), hn::Set(d, taps[i])));
    emit(0, sum);
}

// Source row i takes part in output row y as its tap i - y: each tap serves one output row after the other, while it
// stays in a register. Needs four taps.
template <class D, class Src, class K, class Emit>
HWY_INLINE void sumFourRows(D d, const Src* const* pRowSrc, size_t x, const K* taps, int count, const Emit& emit) {
    for (int i = count - 1; i < count + 3; ++i) prefetchAhead(pRowSrc[i] + x);
    auto k0 = hn::Set(d, taps[0]);
    auto r = loadSamples(d, pRowSrc[0] + x);
    auto sum0 = hn::Mul(r, k0);
    auto k1 = k0;
    k0 = hn::Set(d, taps[1]);
    r = loadSamples(d, pRowSrc[1] + x);
    sum0 = hn::Add(sum0, hn::Mul(r, k0));
    auto sum1 = hn::Mul(r, k1);
    auto k2 = k1;
    k1 = k0;
    k0 = hn::Set(d, taps[2]);
    r = loadSamples(d, pRowSrc[2] + x);
    sum0 = hn::Add(sum0, hn::Mul(r, k0));
    sum1 = hn::Add(sum1, hn::Mul(r, k1));
    auto sum2 = hn::Mul(r, k2);
    auto k3 = k2;
    k2 = k1;
    k1 = k0;
    k0 = hn::Set(d, taps[3]);
    r = loadSamples(d, pRowSrc[3] + x);
    sum0 = hn::Add(sum0, hn::Mul(r, k0));
    sum1 = hn::Add(sum1, hn::Mul(r, k1));
    sum2 = hn::Add(sum2, hn::Mul(r, k2));
    auto sum3 = hn::Mul(r, k3);
    for (int i = 4; i < count; ++i) {
        k3 = k2;
        k2 = k1;
        k1 = k0;
        k0 = hn::Set(d, taps[i]);
        r = loadSamples(d, pRowSrc[i] + x);
        sum0 = hn::Add(sum0, hn::Mul(r, k0));
        sum1 = hn::Add(sum1, hn::Mul(r, k1));
        sum2 = hn::Add(sum2, hn::Mul(r, k2));
        sum3 = hn::Add(sum3, hn::Mul(r, k3));
    }
    emit(0, sum0);
    r = loadSamples(d, pRowSrc[count] + x);
    sum1 = hn::Add(sum1, hn::Mul(r, k0));
    sum2 = hn::Add(sum2, hn::Mul(r, k1));
    sum3 = hn::Add(sum3, hn::Mul(r, k2));
    emit(1, sum1);
    r = loadSamples(d, pRowSrc[count + 1] + x);
    sum2 = hn::Add(sum2, hn::Mul(r, k0));
    sum3 = hn::Add(sum3, hn::Mul(r, k1));
    emit(2, sum2);
    r = loadSamples(d, pRowSrc[count + 2] + x);
    emit(3, hn::Add(sum3, hn::Mul(r, k0)));
}

// Calls op(y, rows) for consecutive blocks of at most `block` rows.
template <class Op>
HWY_INLINE void forBlocks(int height, int block, const Op& op) {
    for (int y = 0; y < height; y += block) op(y, HWY_MIN(block, height - y));
}

// As forBlocks for sumFourRows and sumOneRow: four rows at a time where there are as many and four taps.
template <class Four, class One>
HWY_INLINE void forFoursAndOnes(int height, int taps, const Four& four, const One& one) {
    int y = 0;
    if (taps >= kSummedRows) {
        for (; height - y >= kSummedRows; y += kSummedRows) four(y);
    }
    for (; y < height; ++y) one(y);
}

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#endif
