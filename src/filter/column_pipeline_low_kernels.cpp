#include "filter/column_pipeline_kernels.h"

#define HWY_TARGET_INCLUDE "filter/column_pipeline_low_kernels.cpp"
#include "filter/column_pipeline-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// Products and sums keep their low 16 bits, so their order does not matter.

// How a sum becomes a result.
struct AsItIs {
    template <class D, class V>
    HWY_INLINE V operator()(D, V sum) const {
        return sum;
    }
};

// sum * reciprocal / 16384, rounded down and saturated. The product has at most 30 bits, since a reciprocal lies
// between -16384 and 16384: four times its high half can only saturate to 32767, and then its low half is zero.
struct TimesReciprocal {
    Qel16s reciprocal;
    template <class D, class V>
    HWY_INLINE V operator()(D d, V sum) const {
        const V r = hn::Set(d, reciprocal);
        const hn::RebindToUnsigned<D> du;
        const V low = hn::BitCast(d, hn::ShiftRight<14>(hn::BitCast(du, hn::Mul(sum, r))));
        const V high = hn::MulHigh(sum, r);
        const V doubled = hn::SaturatedAdd(high, high);
        return hn::SaturatedAdd(hn::SaturatedAdd(doubled, doubled), low);
    }
};

struct Sixteenth {
    template <class D, class V>
    HWY_INLINE V operator()(D, V sum) const {
        return hn::ShiftRight<4>(sum);
    }
};

constexpr int kUnity = 16384;  // the reciprocal of 1

// Calls op with the way from sums to results.
template <class Op>
HWY_INLINE void withFinish(int reciprocal, const Op& op) {
    if (reciprocal == kUnity) {
        op(AsItIs());
    } else {
        op(TimesReciprocal{Qel16s(reciprocal)});
    }
}

// The last width % 8 samples of each row are summed in 32 bits and keep bits 14 to 29 of the product with the
// reciprocal.
void keepLowBitsOfRests(const Qel16s* const* pRowSrc, Qel16s* pDst, int dstStep, QelSize size, const Qel16s* pKernel,
                        int kernelSize, int reciprocal) {
    for (int y = 0; y < size.height; ++y) {
        Qel16s* const out = row(pDst, dstStep, y);
        for (int x = size.width & -8; x < size.width; ++x) {
            uint32_t sum = 0;
            for (int i = 0; i < kernelSize; ++i) sum += uint32_t(pRowSrc[y + i][x] * pKernel[i]);
            out[x] = Qel16s(sum * uint32_t(reciprocal) >> 14);
        }
    }
}

// Calls op(d, x, store) on the first `count` samples, a multiple of 8.
template <bool Streaming, class Op>
HWY_INLINE void forGroupsInto(Qel16s* out, size_t count, const Op& op) {
    forVectorsInto<Streaming>(out, hn::ScalableTag<Qel16s>(), count, op);
}

template <int kTaps, bool Streaming, class Formula, class Finish>
HWY_INLINE void tapRows(const Qel16s* const* pRowSrc, Qel16s* pDst, int dstStep, QelSize size, size_t count,
                        Formula formula, Finish finish) {
    forSourceRows<kTaps>(pRowSrc, size.height, goTogether<Streaming>(dstStep), [=](int y, const auto& rows) HWY_ATTR {
        Qel16s* const out = row(pDst, dstStep, y);
        forGroupsInto<Streaming>(out, count, [=](auto d, size_t x, auto store) HWY_ATTR {
            rows.filter(d, x, formula,
                        [=](int i, auto sum) HWY_ATTR { store(finish(d, sum), d, row(out, dstStep, i) + x); });
        });
    });
    finishStores<Streaming>();
}

template <bool Streaming>
void columnsLow3x3(const Qel16s* const* pRowSrc, Qel16s* pDst, int dstStep, QelSize size, const Qel16s* pKernel,
                   int kernelSize, int reciprocal) {
    const size_t groups = size_t(size.width & -8);
    withFinish(reciprocal, [=](auto finish) HWY_ATTR {
        if (pKernel[0] == pKernel[2]) {
            tapRows<3, Streaming>(pRowSrc, pDst, dstStep, size, groups, SymmetricThreeTaps<Qel16s>{pKernel}, finish);
        } else {
            tapRows<3, Streaming>(pRowSrc, pDst, dstStep, size, groups, ThreeTaps<Qel16s>{pKernel}, finish);
        }
    });
    keepLowBitsOfRests(pRowSrc, pDst, dstStep, size, pKernel, kernelSize, reciprocal);
}

void columnsLow5x5(const Qel16s* const* pRowSrc, Qel16s* pDst, int dstStep, QelSize size, const Qel16s* pKernel,
                   int kernelSize, int reciprocal) {
    withFinish(reciprocal, [=](auto finish) HWY_ATTR {
        tapRows<5, false>(pRowSrc, pDst, dstStep, size, size_t(size.width & -8), FiveTaps<Qel16s>{pKernel}, finish);
    });
    keepLowBitsOfRests(pRowSrc, pDst, dstStep, size, pKernel, kernelSize, reciprocal);
}

// No sample is left over: the whole row keeps 16 bits of its sums.
template <bool Streaming>
void columnsLow5x5Over16(const Qel16s* const* pRowSrc, Qel16s* pDst, int dstStep, QelSize size, const Qel16s* pKernel,
                         int, int) {
    tapRows<5, Streaming>(pRowSrc, pDst, dstStep, size, size_t(size.width), SymmetricFiveTaps<Qel16s>{pKernel},
                          Sixteenth());
}

void columnsLowX(const Qel16s* const* pRowSrc, Qel16s* pDst, int dstStep, QelSize size, const Qel16s* pKernel,
                 int kernelSize, int reciprocal) {
    const size_t groups = size_t(size.width & -8);
    withFinish(reciprocal, [=](auto finish) HWY_ATTR {
        const auto rowsFrom = [=](int y, const auto& sumRows) HWY_ATTR {
            Qel16s* const out = row(pDst, dstStep, y);
            forGroupsInto<false>(out, groups, [=](auto d, size_t x, auto store) HWY_ATTR {
                sumRows(d, pRowSrc + y, x,
                        [=](int i, auto sum) HWY_ATTR { store(finish(d, sum), d, row(out, dstStep, i) + x); });
            });
        };
        const auto four = [=](auto d, const Qel16s* const* rows, size_t x, const auto& emit)
                              HWY_ATTR { sumFourRows(d, rows, x, pKernel, kernelSize, emit); };
        const auto one = [=](auto d, const Qel16s* const* rows, size_t x, const auto& emit)
                             HWY_ATTR { sumOneRow(d, rows, x, pKernel, kernelSize, emit); };
        forFoursAndOnes(
            size.height, kernelSize, [=](int y) HWY_ATTR { rowsFrom(y, four); },
            [=](int y) HWY_ATTR { rowsFrom(y, one); });
    });
    keepLowBitsOfRests(pRowSrc, pDst, dstStep, size, pKernel, kernelSize, reciprocal);
}

}  // namespace

constexpr auto& ownFilterColumnLowPipeline_16s_C1R_3x3_W7cn = columnsLow3x3<false>;
constexpr auto& ownFilterColumnLowPipeline_16s_C1R_3x3_W7cn_B = columnsLow3x3<true>;
constexpr auto& ownFilterColumnLowPipeline_16s_C1R_5x5_W7cn = columnsLow5x5;
constexpr auto& ownFilterColumnLowPipeline_16s_C1R_5x5_16_AAS_W7cn = columnsLow5x5Over16<false>;
constexpr auto& ownFilterColumnLowPipeline_16s_C1R_5x5_16_AAB_W7cn = columnsLow5x5Over16<true>;
constexpr auto& ownFilterColumnLowPipeline_16s_C1R_X_W7cn = columnsLowX;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownFilterColumnLowPipeline_16s_C1R_3x3_W7cn);
QEL_KERNEL(ownFilterColumnLowPipeline_16s_C1R_3x3_W7cn_B);
QEL_KERNEL(ownFilterColumnLowPipeline_16s_C1R_5x5_W7cn);
QEL_KERNEL(ownFilterColumnLowPipeline_16s_C1R_5x5_16_AAS_W7cn);
QEL_KERNEL(ownFilterColumnLowPipeline_16s_C1R_5x5_16_AAB_W7cn);
QEL_KERNEL(ownFilterColumnLowPipeline_16s_C1R_X_W7cn);
}  // namespace qel
#endif
