#include "filter/column_pipeline_kernels.h"

#include <limits>

#define HWY_TARGET_INCLUDE "filter/column_pipeline_16s_kernels.cpp"
#include "filter/column_pipeline-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// The two middle ones of five taps go together.
struct FiveScaledTaps {
    const Qel32f* k;
    template <class D, class V>
    HWY_INLINE V operator()(D d, V r0, V r1, V r2, V r3, V r4) const {
        return hn::Add(hn::Add(hn::Add(hn::Mul(r0, hn::Set(d, k[0])), hn::Mul(r1, hn::Set(d, k[1]))),
                               hn::Mul(r4, hn::Set(d, k[4]))),
                       hn::Add(hn::Mul(r2, hn::Set(d, k[2])), hn::Mul(r3, hn::Set(d, k[3]))));
    }
};

// Rounds to nearest, ties to even. What lies below an int's range becomes its lowest value, as the processor has it;
// nothing may lie above.
template <class V>
HWY_INLINE auto nearestBelowOverflow(V v) {
    const hn::RebindToSigned<hn::DFromV<V>> d32;
    using V32 = hn::Vec<decltype(d32)>;
    if constexpr (hn::MaxLanes(d32) <= 4) return V32{_mm_cvtps_epi32(v.raw)};
#if HWY_TARGET <= HWY_AVX2
    else if constexpr (hn::MaxLanes(d32) == 8)
        return V32{_mm256_cvtps_epi32(v.raw)};
#endif
#if HWY_TARGET <= HWY_AVX3
    else if constexpr (hn::MaxLanes(d32) == 16)
        return V32{_mm512_maskz_cvtps_epi32(0xFFFF, v.raw)};  // the form without a mask draws warnings from GCC 12
#endif
}

// Rounds to nearest and saturates, sums beyond the range of an int like others.
template <class T, class V>
HWY_INLINE void storeRounded(V sum, T* p) {
    const hn::DFromV<V> d;
    const hn::Rebind<T, decltype(d)> dT;
    hn::StoreU(hn::DemoteTo(dT, nearestBelowOverflow(hn::Min(sum, hn::Set(d, 32767.0F)))), dT, p);
}

// Calls op(d, x) on the first `count` samples, a multiple of 4.
template <class Op>
HWY_INLINE void forGroups(size_t count, const Op& op) {
    const hn::ScalableTag<Qel32f> d;
    const hn::FixedTag<Qel32f, 4> d4;
    const size_t x = forWholeVectors(d, count, op, 0);
    if constexpr (hn::MaxLanes(d) > hn::MaxLanes(d4)) forWholeVectors(d4, count, op, x);
}

constexpr size_t wholeGroups(int width, int group) { return size_t(width & -group); }

// The samples of a row behind its last group. Their taps are not scaled, and the result is truncated. Both are
// documented results.
template <class T>
HWY_INLINE void truncateRest(const Qel16s* const* pRowSrc, T* out, size_t x, int width, const DividedTaps& taps) {
    using Limits = std::numeric_limits<T>;
    forVectors(
        hn::FixedTag<Qel32f, 4>(), size_t(width),
        [&](auto d, size_t i) HWY_ATTR {
            const hn::Rebind<T, decltype(d)> dT;
            auto sum = hn::Mul(loadSamples(d, pRowSrc[0] + i), hn::Set(d, Qel32f(taps.pKernel[0])));
            for (int tap = 1; tap < taps.kernelSize; ++tap)
                sum = hn::Add(sum, hn::Mul(loadSamples(d, pRowSrc[tap] + i), hn::Set(d, Qel32f(taps.pKernel[tap]))));
            const auto quotient = hn::Mul(sum, hn::Set(d, taps.reciprocal));
            const auto clamped = hn::Min(hn::Max(quotient, hn::Set(d, Limits::min())), hn::Set(d, Limits::max()));
            hn::StoreU(hn::DemoteTo(dT, hn::ConvertTo(hn::RebindToSigned<decltype(d)>(), clamped)), dT, out + i);
        },
        x);
}

template <class T>
HWY_INLINE void truncateRests(const Qel16s* const* pRowSrc, T* pDst, int dstStep, QelSize size, size_t x,
                              const DividedTaps& taps) {
    if (x == size_t(size.width)) return;
    for (int y = 0; y < size.height; ++y) truncateRest(pRowSrc + y, row(pDst, dstStep, y), x, size.width, taps);
}

template <int kTaps, int kGroup, class T, class Formula>
HWY_INLINE void tapRows(const Qel16s* const* pRowSrc, T* pDst, int dstStep, QelSize size, const DividedTaps& taps,
                        Formula formula) {
    const size_t rounded = wholeGroups(size.width, kGroup);
    forSourceRows<kTaps>(pRowSrc, size.height, true, [=](int y, const auto& rows) HWY_ATTR {
        T* const out = row(pDst, dstStep, y);
        forGroups(rounded, [=](auto d, size_t x) HWY_ATTR {
            rows.filter(d, x, formula, [=](int i, auto sum) HWY_ATTR { storeRounded(sum, row(out, dstStep, i) + x); });
        });
    });
    truncateRests(pRowSrc, pDst, dstStep, size, rounded, taps);
}

// Three small taps undivided: single precision holds every sum exactly, in whatever order. So do integers, which form
// two products at a time, and truncation finds nothing to cut off behind the groups.
bool isExact(const DividedTaps& taps) {
    const auto magnitude = [](int tap) { return tap < 0 ? -tap : tap; };
    const Qel16s* const k = taps.pKernel;
    static_assert((512 << 15) == 1 << 24, "the largest of the integers that are all floats");
    return taps.reciprocal == 1.0F && magnitude(k[0]) + magnitude(k[1]) + magnitude(k[2]) <= 512;
}

// Products of neighbouring lanes, added to one another.
template <class D32, class V>
HWY_INLINE hn::Vec<D32> multiplyPairs(D32 d32, V a, V b) {
    auto unused = hn::Zero(d32);
    return hn::ReorderWidenMulAccumulate(d32, a, b, hn::Zero(d32), unused);
}

// Source rows are interleaved by twos: each row's samples meet the first tap beside those of the next row, and the last
// tap behind those of the row before.
struct ExactThreeTaps {
    const Qel16s* k;
    template <class D, class V>
    HWY_INLINE V operator()(D d, V r0, V r1, V r2) const {
        const hn::RepartitionToWide<D> d32;
        const V k01 = hn::BitCast(d, hn::Set(d32, int32_t(uint32_t(uint16_t(k[0])) | uint32_t(k[1]) << 16)));
        const V k2 = hn::BitCast(d, hn::Set(d32, int32_t(uint32_t(k[2]) << 16)));
        const auto lower = hn::Add(multiplyPairs(d32, hn::InterleaveLower(d, r0, r1), k01),
                                   multiplyPairs(d32, hn::InterleaveLower(d, r1, r2), k2));
        const auto upper = hn::Add(multiplyPairs(d32, hn::InterleaveUpper(d, r0, r1), k01),
                                   multiplyPairs(d32, hn::InterleaveUpper(d, r1, r2), k2));
        return hn::ReorderDemote2To(d, lower, upper);
    }
};

template <class T>
HWY_INLINE void exactThreeTapRows(const Qel16s* const* pRowSrc, T* pDst, int dstStep, QelSize size, const Qel16s* k) {
    forSourceRows<3>(pRowSrc, size.height, true, [=](int y, const auto& rows) HWY_ATTR {
        T* const out = row(pDst, dstStep, y);
        const auto op = [=](auto d, size_t x) HWY_ATTR {
            rows.filter(d, x, ExactThreeTaps{k}, [=](int i, auto sum) HWY_ATTR {
                T* const p = row(out, dstStep, i) + x;
                if constexpr (sizeof(T) == 1) {
                    const hn::Rebind<T, decltype(d)> dT;
                    hn::StoreU(hn::DemoteTo(dT, sum), dT, p);
                } else {
                    hn::StoreU(sum, d, p);
                }
            });
        };
        const hn::ScalableTag<Qel16s> d;
        const hn::FixedTag<Qel16s, 8> d8;
        const size_t count = size_t(size.width & -8);
        const size_t x = forWholeVectors(d, count, op, 0);
        if constexpr (hn::MaxLanes(d) > hn::MaxLanes(d8)) forWholeVectors(d8, count, op, x);
    });
}

// The image's first row has groups of its own and, where the kernel is symmetric, an order of summation of its own.
template <class T>
void columns3x3(const Qel16s* const* pRowSrc, T* pDst, int dstStep, QelSize size, const DividedTaps& taps,
                bool firstOfImage) {
    if (isExact(taps)) {
        exactThreeTapRows(pRowSrc, pDst, dstStep, size, taps.pKernel);
        return truncateRests(pRowSrc, pDst, dstStep, size, wholeGroups(size.width, 8), taps);
    }
    const ThreeTaps<Qel32f> formula{taps.pScaled};
    if (firstOfImage) {
        tapRows<3, 4>(pRowSrc, pDst, dstStep, {size.width, 1}, taps, formula);
        ++pRowSrc;
        pDst = row(pDst, dstStep, 1);
        --size.height;
    }
    if (taps.pKernel[0] == taps.pKernel[2]) {
        tapRows<3, 8>(pRowSrc, pDst, dstStep, size, taps, SymmetricThreeTaps<Qel32f>{taps.pScaled});
    } else {
        tapRows<3, 8>(pRowSrc, pDst, dstStep, size, taps, formula);
    }
}

template <class T>
void columns5x5(const Qel16s* const* pRowSrc, T* pDst, int dstStep, QelSize size, const DividedTaps& taps, bool) {
    tapRows<5, 4>(pRowSrc, pDst, dstStep, size, taps, FiveScaledTaps{taps.pScaled});
}

template <class T>
void columnsX(const Qel16s* const* pRowSrc, T* pDst, int dstStep, QelSize size, const DividedTaps& taps, bool) {
    const size_t rounded = wholeGroups(size.width, 16);
    const Qel32f* const k = taps.pScaled;
    const int count = taps.kernelSize;
    forFoursAndOnes(
        size.height, count,
        [=](int y) HWY_ATTR {
            T* const out = row(pDst, dstStep, y);
            forGroups(rounded, [=](auto d, size_t x) HWY_ATTR {
                sumFourRows(d, pRowSrc + y, x, k, count,
                            [=](int i, auto sum) HWY_ATTR { storeRounded(sum, row(out, dstStep, i) + x); });
            });
        },
        [=](int y) HWY_ATTR {
            T* const out = row(pDst, dstStep, y);
            forGroups(rounded, [=](auto d, size_t x) HWY_ATTR {
                sumOneRow(d, pRowSrc + y, x, k, count, [=](int, auto sum) HWY_ATTR { storeRounded(sum, out + x); });
            });
        });
    truncateRests(pRowSrc, pDst, dstStep, size, rounded, taps);
}

}  // namespace

constexpr auto& ownFilterColumnPipeline_16s_C1R_3x3_W7cn = columns3x3<Qel16s>;
constexpr auto& ownFilterColumnPipeline_16s_C1R_5x5_W7cn = columns5x5<Qel16s>;
constexpr auto& ownFilterColumnPipeline_16s_C1R_X_W7cn = columnsX<Qel16s>;
constexpr auto& ownFilterColumnPipeline_16s8u_C1R_3x3_W7cn = columns3x3<Qel8u>;
constexpr auto& ownFilterColumnPipeline_16s8u_C1R_5x5_W7cn = columns5x5<Qel8u>;
constexpr auto& ownFilterColumnPipeline_16s8u_C1R_X_W7cn = columnsX<Qel8u>;
constexpr auto& ownFilterColumnPipeline_16s8s_C1R_3x3_W7cn = columns3x3<Qel8s>;
constexpr auto& ownFilterColumnPipeline_16s8s_C1R_5x5_W7cn = columns5x5<Qel8s>;
constexpr auto& ownFilterColumnPipeline_16s8s_C1R_X_W7cn = columnsX<Qel8s>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownFilterColumnPipeline_16s_C1R_3x3_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s_C1R_5x5_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s_C1R_X_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s8u_C1R_3x3_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s8u_C1R_5x5_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s8u_C1R_X_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s8s_C1R_3x3_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s8s_C1R_5x5_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s8s_C1R_X_W7cn);
}  // namespace qel
#endif
