#include "stats/gradient_color_to_gray_kernels.h"

#include "frame/image.h"

#define HWY_TARGET_INCLUDE "stats/gradient_color_to_gray_kernels.cpp"
#include "frame/channel-inl.h"
#include "frame/simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// The results of the samples that lie kShift bits up in their wide lanes, and of those above them.
template <int kShift, class DW, class V, class Op>
HWY_INLINE hn::Vec<DW> partsFrom(DW dw, V a, V b, V c, const Op& op) {
    using T = hn::TFromV<V>;
    constexpr int kNext = kShift + 8 * int(sizeof(T));
    constexpr bool kTop = kNext == 8 * int(sizeof(hn::TFromD<DW>));
    const auto part = [dw](V v) HWY_ATTR {
        const auto wide = hn::BitCast(dw, v);
        const auto moved = kShift == 0 ? wide : hn::ShiftRight<kShift>(wide);
        return kTop ? moved : hn::And(moved, hn::Set(dw, hwy::LimitsMax<T>()));
    };
    const auto results = op(dw, part(a), part(b), part(c));
    const auto moved = kShift == 0 ? results : hn::ShiftLeft<kShift>(results);
    if constexpr (kTop) {
        return moved;
    } else {
        return hn::Or(moved, partsFrom<kNext>(dw, a, b, c, op));
    }
}

// Computes op(dw, a, b, c) in lanes of type Wide, the results being as narrow as the samples. A vector is taken apart
// into its even and its odd samples, or into four such parts, which takes no shuffles.
template <class Wide, class D, class V, class Op>
HWY_INLINE V wideParts(D d, V a, V b, V c, const Op& op) {
    if constexpr (hn::MaxLanes(D()) * sizeof(hn::TFromD<D>) < sizeof(Wide)) {
        const hn::Rebind<Wide, D> dw;
        const auto result = op(dw, hn::PromoteTo(dw, a), hn::PromoteTo(dw, b), hn::PromoteTo(dw, c));
        return hn::DemoteTo(d, hn::BitCast(hn::RebindToSigned<decltype(dw)>(), result));
    } else {
        return hn::BitCast(d, partsFrom<0>(hn::Repartition<Wide, D>(), a, b, c, op));
    }
}

template <class V>
HWY_INLINE V sumOf(V a, V b, V c) {
    return hn::Add(hn::Add(a, b), c);
}

template <class V>
HWY_INLINE V squareSumOf(V a, V b, V c) {
    return sumOf(hn::Mul(a, a), hn::Mul(b, b), hn::Mul(c, c));
}

// One formula per norm and type.

struct Inf {
    template <class D, class V>
    HWY_INLINE V operator()(D, V a, V b, V c) const {
        if constexpr (hwy::IsFloat<hn::TFromD<D>>()) {
            return hn::Max(hn::Max(hn::Abs(a), hn::Abs(b)), hn::Abs(c));
        } else {
            return hn::Max(hn::Max(a, b), c);
        }
    }
};

struct L1Bytes {
    // (sum * 1365 + 2048) >> 12, with both numbers 8 times as large: a product of 15 fraction bits rounds so.
    template <class D, class V>
    HWY_INLINE V operator()(D d, V a, V b, V c) const {
        return wideParts<uint16_t>(d, a, b, c, [](auto dw, auto wideA, auto wideB, auto wideC) HWY_ATTR {
            const hn::RebindToSigned<decltype(dw)> di;
            const auto sum = hn::BitCast(di, sumOf(wideA, wideB, wideC));
            return hn::BitCast(dw, hn::MulFixedPoint15(sum, hn::Set(di, 8 * 1365)));
        });
    }
};

struct L1Words {
    static_assert(3 * 65535 * 5461LL + 8192 < 1LL << 32);
    template <class D, class V>
    HWY_INLINE V operator()(D d, V a, V b, V c) const {
        return wideParts<uint32_t>(d, a, b, c, [](auto dw, auto wideA, auto wideB, auto wideC) HWY_ATTR {
            const auto scaled = hn::Mul(sumOf(wideA, wideB, wideC), hn::Set(dw, 5461));
            return hn::ShiftRight<14>(hn::Add(scaled, hn::Set(dw, 8192)));
        });
    }
};

struct L1Floats {
    template <class D, class V>
    HWY_INLINE V operator()(D, V a, V b, V c) const {
        return sumOf(hn::Abs(a), hn::Abs(b), hn::Abs(c));
    }
};

// The rounded root of the mean square of three integers is the k with n between 3 k (k - 1) + 1 and 3 k (k + 1), where
// n is the sum of the squares: with an integer sum there is no tie. That leaves room to compute it faster than as
// trunc(sqrt(n / 3) + 0.5) in double precision, with the same result.

// An approximate root of the mean square, in single precision.
template <class DW, class V, class DF = hn::Rebind<Qel32f, DW>>
HWY_INLINE hn::Vec<DF> rootMeanSquare(DW, V a, V b, V c) {
    const DF df;
    const auto single = [=](V v) HWY_ATTR { return hn::ConvertTo(df, hn::BitCast(hn::RebindToSigned<DW>(), v)); };
    return hn::Sqrt(hn::Mul(squareSumOf(single(a), single(b), single(c)), hn::Set(df, 1.0F / 3)));
}

struct L2Bytes {
    // The sum is exact in single precision and the root, up to 255, is off by less than 4e-5, while that of the n next
    // to a limit is 1.6e-4 or more away from it.
    template <class D, class V>
    HWY_INLINE V operator()(D d, V a, V b, V c) const {
        return wideParts<uint32_t>(d, a, b, c, [](auto dw, auto wideA, auto wideB, auto wideC) HWY_ATTR {
            return hn::BitCast(dw, hn::NearestInt(rootMeanSquare(dw, wideA, wideB, wideC)));
        });
    }
};

struct L2Words {
    // The root, up to 65535, is off by less than 1/32. So what is truncated after adding 1/2 - 1/32 is k or k - 1, and
    // the exact sum of the squares, of which the low 32 bits do, tells which.
    template <class D, class V>
    HWY_INLINE V operator()(D d, V a, V b, V c) const {
        return wideParts<uint32_t>(d, a, b, c, [](auto dw, auto wideA, auto wideB, auto wideC) HWY_ATTR {
            const hn::RebindToSigned<decltype(dw)> di;
            const auto root = rootMeanSquare(dw, wideA, wideB, wideC);
            const auto lower = hn::Add(root, hn::Set(hn::DFromV<decltype(root)>(), 0.5F - 1.0F / 32));
            const auto k = hn::BitCast(dw, hn::ConvertTo(di, lower));
            const auto third = hn::Add(hn::Mul(k, k), k);
            const auto lastOfK = sumOf(third, third, third);
            const auto room = hn::Sub(lastOfK, squareSumOf(wideA, wideB, wideC));
            return hn::Add(k, hn::ShiftRight<31>(room));  // plus 1 where there is less than none
        });
    }
};

struct L2Floats {
    template <class D, class V>
    HWY_INLINE V operator()(D, V a, V b, V c) const {
        return hn::Sqrt(squareSumOf(a, b, c));
    }
};

template <class T, class Norm>
void gradientRows(const T* pSrc, int srcStep, T* pDst, int dstStep, int width, int startRow, int endRow) {
    const bool gapless = isGapless(Plane{pSrc, srcStep}, width, 3) && isGapless(Plane{pDst, dstStep}, width);
    const QelSize size = joinRows({width, endRow - startRow}, gapless);
    for (int y = 0; y < size.height; ++y) {
        const T* in = row(pSrc, srcStep, y);
        T* out = row(pDst, dstStep, y);
        forVectors(hn::ScalableTag<T>(), size_t(size.width), [=](auto d, size_t x) HWY_ATTR {
            hn::Vec<decltype(d)> a, b, c;
            ChannelSplitter<decltype(d)>().load(in + 3 * x, a, b, c);
            hn::StoreU(Norm()(d, a, b, c), d, out + x);
        });
    }
}

}  // namespace

constexpr auto& ownGradInf_8u_C3C1R = gradientRows<Qel8u, Inf>;
constexpr auto& ownGradL1_8u_C3C1R = gradientRows<Qel8u, L1Bytes>;
constexpr auto& ownGradL2_8u_C3C1R = gradientRows<Qel8u, L2Bytes>;
constexpr auto& ownGradInf_16u_C3C1R = gradientRows<Qel16u, Inf>;
constexpr auto& ownGradL1_16u_C3C1R = gradientRows<Qel16u, L1Words>;
constexpr auto& ownGradL2_16u_C3C1R = gradientRows<Qel16u, L2Words>;
constexpr auto& ownGradInf_32f_C3C1R = gradientRows<Qel32f, Inf>;
constexpr auto& ownGradL1_32f_C3C1R = gradientRows<Qel32f, L1Floats>;
constexpr auto& ownGradL2_32f_C3C1R = gradientRows<Qel32f, L2Floats>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownGradInf_8u_C3C1R);
QEL_KERNEL(ownGradL1_8u_C3C1R);
QEL_KERNEL(ownGradL2_8u_C3C1R);
QEL_KERNEL(ownGradInf_16u_C3C1R);
QEL_KERNEL(ownGradL1_16u_C3C1R);
QEL_KERNEL(ownGradL2_16u_C3C1R);
QEL_KERNEL(ownGradInf_32f_C3C1R);
QEL_KERNEL(ownGradL1_32f_C3C1R);
QEL_KERNEL(ownGradL2_32f_C3C1R);
}  // namespace qel
#endif
