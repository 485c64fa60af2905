#include "filter/column_pipeline_kernels.h"

#define HWY_TARGET_INCLUDE "filter/column_pipeline_32f_kernels.cpp"
#include "filter/column_pipeline-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// The order of each sum is part of the result.

struct ThreeTaps {
    const Qel32f* k;
    template <class D, class V>
    HWY_INLINE V operator()(D d, V r0, V r1, V r2) const {
        return hn::Add(hn::Add(hn::Mul(r0, hn::Set(d, k[0])), hn::Mul(r1, hn::Set(d, k[1]))),
                       hn::Mul(r2, hn::Set(d, k[2])));
    }
};

struct SymmetricThreeTaps {
    const Qel32f* k;
    template <class D, class V>
    HWY_INLINE V operator()(D d, V r0, V r1, V r2) const {
        return hn::Add(hn::Mul(hn::Add(r0, r2), hn::Set(d, k[0])), hn::Mul(r1, hn::Set(d, k[1])));
    }
};

struct FiveTaps {
    const Qel32f* k;
    template <class D, class V>
    HWY_INLINE V operator()(D d, V r0, V r1, V r2, V r3, V r4) const {
        const V upper = hn::Add(hn::Add(hn::Mul(r0, hn::Set(d, k[0])), hn::Mul(r1, hn::Set(d, k[1]))),
                                hn::Mul(r2, hn::Set(d, k[2])));
        return hn::Add(hn::Add(upper, hn::Mul(r3, hn::Set(d, k[3]))), hn::Mul(r4, hn::Set(d, k[4])));
    }
};

struct SymmetricFiveTaps {
    const Qel32f* k;
    template <class D, class V>
    HWY_INLINE V operator()(D d, V r0, V r1, V r2, V r3, V r4) const {
        return hn::Add(hn::Add(hn::Mul(hn::Add(r0, r4), hn::Set(d, k[0])), hn::Mul(hn::Add(r1, r3), hn::Set(d, k[1]))),
                       hn::Mul(r2, hn::Set(d, k[2])));
    }
};

// Stores a vector. What bypasses the cache is not to be fetched into it first.
template <bool Streaming, class D, class Store, class V = hn::Vec<D>>
HWY_INLINE void storeInto(Store store, V sum, D d, Qel32f* p) {
    if constexpr (!Streaming) prefetchAhead(p);
    store(sum, d, p);
}

template <int kTaps, bool Streaming, class Formula>
HWY_INLINE void tapRows(const Qel32f* const* pRowSrc, Qel32f* pDst, int dstStep, QelSize size, Formula formula) {
    forSourceRows<kTaps>(pRowSrc, size.height, goTogether<Streaming>(dstStep), [=](int y, const auto& rows) HWY_ATTR {
        Qel32f* const out = row(pDst, dstStep, y);
        forVectorsInto<Streaming>(out, hn::ScalableTag<Qel32f>(), size_t(size.width),
                                  [=](auto d, size_t x, auto store) HWY_ATTR {
                                      rows.filter(d, x, formula, [=](int i, auto sum) HWY_ATTR {
                                          storeInto<Streaming>(store, sum, d, row(out, dstStep, i) + x);
                                      });
                                  });
    });
    finishStores<Streaming>();
}

template <bool Streaming>
void floatColumns3x3(const Qel32f* const* pRowSrc, Qel32f* pDst, int dstStep, QelSize size, const Qel32f* pKernel,
                     int) {
    if (pKernel[0] == pKernel[2]) {
        tapRows<3, Streaming>(pRowSrc, pDst, dstStep, size, SymmetricThreeTaps{pKernel});
    } else {
        tapRows<3, Streaming>(pRowSrc, pDst, dstStep, size, ThreeTaps{pKernel});
    }
}

template <bool Streaming>
void floatColumns5x5(const Qel32f* const* pRowSrc, Qel32f* pDst, int dstStep, QelSize size, const Qel32f* pKernel,
                     int) {
    if (pKernel[0] == pKernel[4] && pKernel[1] == pKernel[3]) {
        tapRows<5, Streaming>(pRowSrc, pDst, dstStep, size, SymmetricFiveTaps{pKernel});
    } else {
        tapRows<5, Streaming>(pRowSrc, pDst, dstStep, size, FiveTaps{pKernel});
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
                    sumFourRows(d, pRowSrc + y, x, pKernel, kernelSize, [=](int i, auto sum) HWY_ATTR {
                        storeInto<Streaming>(store, sum, d, row(out, dstStep, i) + x);
                    });
                });
        },
        [=](int y) HWY_ATTR {
            Qel32f* const out = row(pDst, dstStep, y);
            forVectorsInto<Streaming>(
                out, hn::ScalableTag<Qel32f>(), size_t(size.width), [=](auto d, size_t x, auto store) HWY_ATTR {
                    sumOneRow(d, pRowSrc + y, x, pKernel, kernelSize,
                              [=](int, auto sum) HWY_ATTR { storeInto<Streaming>(store, sum, d, out + x); });
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
