#include "filter/column_pipeline_kernels.h"

#define HWY_TARGET_INCLUDE "filter/column_pipeline_32f_kernels.cpp"
#include "filter/column_pipeline-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

template <int kTaps, bool Streaming, class Formula>
HWY_INLINE void tapRows(const Qel32f* const* pRowSrc, Qel32f* pDst, int dstStep, QelSize size, Formula formula) {
    forSourceRows<kTaps>(pRowSrc, size.height, goTogether<Streaming>(dstStep), [=](int y, const auto& rows) HWY_ATTR {
        Qel32f* const out = row(pDst, dstStep, y);
        forVectorsInto<Streaming>(
            out, hn::ScalableTag<Qel32f>(), size_t(size.width), [=](auto d, size_t x, auto store) HWY_ATTR {
                rows.filter(d, x, formula, [=](int i, auto sum) HWY_ATTR { store(sum, d, row(out, dstStep, i) + x); });
            });
    });
    finishStores<Streaming>();
}

template <bool Streaming>
void floatColumns3x3(const Qel32f* const* pRowSrc, Qel32f* pDst, int dstStep, QelSize size, const Qel32f* pKernel,
                     int) {
    if (pKernel[0] == pKernel[2]) {
        tapRows<3, Streaming>(pRowSrc, pDst, dstStep, size, SymmetricThreeTaps<Qel32f>{pKernel});
    } else {
        tapRows<3, Streaming>(pRowSrc, pDst, dstStep, size, ThreeTaps<Qel32f>{pKernel});
    }
}

template <bool Streaming>
void floatColumns5x5(const Qel32f* const* pRowSrc, Qel32f* pDst, int dstStep, QelSize size, const Qel32f* pKernel,
                     int) {
    if (pKernel[0] == pKernel[4] && pKernel[1] == pKernel[3]) {
        tapRows<5, Streaming>(pRowSrc, pDst, dstStep, size, SymmetricFiveTaps<Qel32f>{pKernel});
    } else {
        tapRows<5, Streaming>(pRowSrc, pDst, dstStep, size, FiveTaps<Qel32f>{pKernel});
    }
}

template <bool Streaming>
void floatColumnsX(const Qel32f* const* pRowSrc, Qel32f* pDst, int dstStep, QelSize size, const Qel32f* pKernel,
                   int kernelSize) {
    forFoursAndOnes(
        size.height, goTogether<Streaming>(dstStep) ? kernelSize : 1,
        [=](int y) HWY_ATTR {
            Qel32f* const out = row(pDst, dstStep, y);
            forVectorsInto<Streaming>(
                out, hn::ScalableTag<Qel32f>(), size_t(size.width), [=](auto d, size_t x, auto store) HWY_ATTR {
                    sumFourRows(d, pRowSrc + y, x, pKernel, kernelSize,
                                [=](int i, auto sum) HWY_ATTR { store(sum, d, row(out, dstStep, i) + x); });
                });
        },
        [=](int y) HWY_ATTR {
            Qel32f* const out = row(pDst, dstStep, y);
            forVectorsInto<Streaming>(out, hn::ScalableTag<Qel32f>(), size_t(size.width),
                                      [=](auto d, size_t x, auto store) HWY_ATTR {
                                          sumOneRow(d, pRowSrc + y, x, pKernel, kernelSize,
                                                    [=](int, auto sum) HWY_ATTR { store(sum, d, out + x); });
                                      });
        });
    finishStores<Streaming>();
}

}  // namespace

constexpr auto& ownFilterColumnPipeline_32f_C1R_3x3_W7cn = floatColumns3x3<false>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_3x3_W7cn_B = floatColumns3x3<true>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_5x5_W7cn = floatColumns5x5<false>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_5x5_W7cn_B = floatColumns5x5<true>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_X_W7cn = floatColumnsX<false>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_X_W7cn_B = floatColumnsX<true>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownFilterColumnPipeline_32f_C1R_3x3_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_32f_C1R_3x3_W7cn_B);
QEL_KERNEL(ownFilterColumnPipeline_32f_C1R_5x5_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_32f_C1R_5x5_W7cn_B);
QEL_KERNEL(ownFilterColumnPipeline_32f_C1R_X_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_32f_C1R_X_W7cn_B);
}  // namespace qel
#endif
