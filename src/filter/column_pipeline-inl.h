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

// Streamed rows go together only where they meet the address of a vector at the same sample.
template <bool Streaming>
HWY_INLINE bool goTogether(int dstStep) {
    const int vectorBytes = int(hn::Lanes(hn::ScalableTag<Qel8u>()));
    return !Streaming || dstStep % vectorBytes == 0;
}

// Output rows that are formed together: a sample is loaded once for all of them.
constexpr int kRowsTogether = 4;

// The source rows of kRows output rows by 3 or 5 taps. They are kept at hand: in memory, a store could change where
// they point to, as far as a compiler knows.
template <int kTaps, int kRows, class Src>
class SourceRows {
    static_assert((kTaps == 3 || kTaps == 5) && (kRows == 1 || kRows == kRowsTogether));

public:
    explicit SourceRows(const Src* const* pRowSrc) {
        for (int i = 0; i < kRows + kTaps - 1; ++i) rows_[i] = pRowSrc[i];
    }

    // Calls emit(i, sum) for each output row, when all sums are formed: formula(d, r0, r1, ...) gives one.
    template <class D, class Formula, class Emit>
    HWY_INLINE void filter(D d, size_t x, const Formula& formula, const Emit& emit) const {
        const auto sum0 = sum<0>(d, x, formula);
        if constexpr (kRows == 1) {
            emit(0, sum0);
        } else {
            const auto sum1 = sum<1>(d, x, formula);
            const auto sum2 = sum<2>(d, x, formula);
            const auto sum3 = sum<3>(d, x, formula);
            emit(0, sum0);
            emit(1, sum1);
            emit(2, sum2);
            emit(3, sum3);
        }
    }

private:
    template <int kRow, class D>
    HWY_INLINE hn::Vec<D> samples(D d, size_t x) const {
        return loadSamples(d, rows_[kRow] + x);
    }

    template <int i, class D, class Formula>
    HWY_INLINE hn::Vec<D> sum(D d, size_t x, const Formula& formula) const {
        if constexpr (kTaps == 3) {
            return formula(d, samples<i>(d, x), samples<i + 1>(d, x), samples<i + 2>(d, x));
        } else {
            return formula(d, samples<i>(d, x), samples<i + 1>(d, x), samples<i + 2>(d, x), samples<i + 3>(d, x),
                           samples<i + 4>(d, x));
        }
    }

    const Src* rows_[kRows + kTaps - 1];
};

// Calls op(y, rows) for SourceRows of four output rows from y on, as far as there are as many, then of one.
template <int kTaps, class Src, class Op>
HWY_INLINE void forSourceRows(const Src* const* pRowSrc, int height, bool together, const Op& op) {
    int y = 0;
    if (together) {
        for (; height - y >= kRowsTogether; y += kRowsTogether)
            op(y, SourceRows<kTaps, kRowsTogether, Src>(pRowSrc + y));
    }
    for (; y < height; ++y) op(y, SourceRows<kTaps, 1, Src>(pRowSrc + y));
}

// Sums of three and five taps; their order is part of a 32f result. A symmetric kernel adds first what has the same
// tap.
template <class K>
struct ThreeTaps {
    const K* k;
    template <class D, class V>
    HWY_INLINE V operator()(D d, V r0, V r1, V r2) const {
        return hn::Add(hn::Add(hn::Mul(r0, hn::Set(d, k[0])), hn::Mul(r1, hn::Set(d, k[1]))),
                       hn::Mul(r2, hn::Set(d, k[2])));
    }
};

template <class K>
struct SymmetricThreeTaps {
    const K* k;
    template <class D, class V>
    HWY_INLINE V operator()(D d, V r0, V r1, V r2) const {
        return hn::Add(hn::Mul(hn::Add(r0, r2), hn::Set(d, k[0])), hn::Mul(r1, hn::Set(d, k[1])));
    }
};

template <class K>
struct FiveTaps {
    const K* k;
    template <class D, class V>
    HWY_INLINE V operator()(D d, V r0, V r1, V r2, V r3, V r4) const {
        const V upper = ThreeTaps<K>{k}(d, r0, r1, r2);
        return hn::Add(hn::Add(upper, hn::Mul(r3, hn::Set(d, k[3]))), hn::Mul(r4, hn::Set(d, k[4])));
    }
};

template <class K>
struct SymmetricFiveTaps {
    const K* k;
    template <class D, class V>
    HWY_INLINE V operator()(D d, V r0, V r1, V r2, V r3, V r4) const {
        return hn::Add(hn::Add(hn::Mul(hn::Add(r0, r4), hn::Set(d, k[0])), hn::Mul(hn::Add(r1, r3), hn::Set(d, k[1]))),
                       hn::Mul(r2, hn::Set(d, k[2])));
    }
};

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

// Calls four(y) for four rows from y on, as far as there are as many and four taps, then one(y) for each row.
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
