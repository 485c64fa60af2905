#include "feature/canny_kernels.h"

#define HWY_TARGET_INCLUDE "feature/canny_kernels.cpp"
#include "frame/simd-inl.h"
// Behind what it stands on.
#include "frame/lane_bits-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// Whole groups of eight samples saturate at 65535. Two of -32768 behind them do not: a documented result.
void magnitudes_16s(const Qel16s* pSrcDx, const Qel16s* pSrcDy, Qel32s* pMagnitudes, int width, Qel32s low) {
    const auto store = [=](auto d, size_t x, auto sum) HWY_ATTR {
        hn::StoreU(hn::IfThenElseZero(hn::Gt(sum, hn::Set(d, low)), sum), d, pMagnitudes + x);
    };
    const auto absolute = [](auto d, const Qel16s* p) HWY_ATTR {
        return hn::BitCast(hn::RebindToUnsigned<decltype(d)>(), hn::Abs(hn::LoadU(d, p)));
    };
    const hn::ScalableTag<Qel32s> d32;
    const size_t groups = size_t(width) & ~size_t{7};
    forVectors<8>(d32, groups, [=](auto d, size_t x) HWY_ATTR {
        const hn::Rebind<Qel16s, decltype(d)> d16;
        store(d, x, hn::PromoteTo(d, hn::SaturatedAdd(absolute(d16, pSrcDx + x), absolute(d16, pSrcDy + x))));
    });
    forVectors(
        hn::Half<decltype(d32)>(), size_t(width),
        [=](auto d, size_t x) HWY_ATTR {
            const hn::Rebind<Qel16s, decltype(d)> d16;
            const auto dx = hn::PromoteTo(d, absolute(d16, pSrcDx + x));
            const auto dy = hn::PromoteTo(d, absolute(d16, pSrcDy + x));
            store(d, x, hn::Add(dx, dy));
        },
        groups);
}

void magnitudes_32f(const Qel32f* pSrcDx, const Qel32f* pSrcDy, Qel32f* pMagnitudes, int width, Qel32f low) {
    forVectors(hn::ScalableTag<Qel32f>(), size_t(width), [=](auto d, size_t x) HWY_ATTR {
        const auto sum = hn::Add(hn::Abs(hn::LoadU(d, pSrcDx + x)), hn::Abs(hn::LoadU(d, pSrcDy + x)));
        hn::StoreU(hn::IfThenZeroElse(hn::Lt(sum, hn::Set(d, low)), sum), d, pMagnitudes + x);
    });
}

// |d| * tan 67.5 and 22.5 degrees, in single precision.
struct Tangents {
    template <class V>
    static HWY_INLINE V steep(V v) {
        return hn::Mul(v, hn::Set(hn::DFromV<V>(), 2.414213657F));
    }
    template <class V>
    static HWY_INLINE V flat(V v) {
        return hn::Mul(v, hn::Set(hn::DFromV<V>(), 0.414213568F));
    }
};
// The same, rounded from double precision. Some pairs of 16-bit derivatives lie between the two.
struct DoubleTangents {
    template <class V>
    static HWY_INLINE V times(V v, Qel64f tangent) {
        const hn::Rebind<Qel64f, hn::DFromV<V>> d64;
        return hn::DemoteTo(hn::DFromV<V>(), hn::Mul(hn::PromoteTo(d64, v), hn::Set(d64, tangent)));
    }
    template <class V>
    static HWY_INLINE V steep(V v) {
        return times(v, 2.414213562373095);
    }
    template <class V>
    static HWY_INLINE V flat(V v) {
        return times(v, 0.41421356237309503);
    }
};

// Derivatives as single precision with their signs, which holds any of 16 bits.
template <class D>
HWY_INLINE hn::Vec<D> derivatives(D d, const Qel32f* p) {
    return hn::LoadU(d, p);
}
template <class D>
HWY_INLINE hn::Vec<D> derivatives(D d, const Qel16s* p) {
    return hn::ConvertTo(d, hn::PromoteTo(hn::RebindToSigned<D>(), hn::LoadU(hn::Rebind<Qel16s, D>(), p)));
}

// a >= b, which no NaN is.
template <class V>
HWY_INLINE auto isAtLeast(V a, V b) {
    if constexpr (hwy::IsFloat<hn::TFromV<V>>()) {
        return hn::Ge(a, b);
    } else {
        return hn::Not(hn::Lt(a, b));
    }
}

// The lanes of column x that are maxima across the edge. The gradient points into one of four sectors: of the two
// neighbours there, ties go to the left or the upper pixel, and on diagonals to none.
template <class Angles, class D, class T>
HWY_INLINE hn::Mask<D> maxima(D d, const CannyRow<T>& row, size_t x, hn::Vec<D> m) {
    const hn::Rebind<Qel32f, D> df;
    const auto dx = derivatives(df, row.pSrcDx + x);
    const auto dy = derivatives(df, row.pSrcDy + x);
    const auto vertical = hn::RebindMask(d, hn::Lt(Angles::steep(hn::Abs(dx)), hn::Abs(dy)));
    const auto horizontal = hn::RebindMask(d, hn::Gt(Angles::flat(hn::Abs(dx)), hn::Abs(dy)));
    const hn::RebindToSigned<D> di;
    const auto rising = hn::RebindMask(d, hn::Lt(hn::BitCast(di, hn::Xor(dx, dy)), hn::Zero(di)));

    const auto above = [=](const Magnitude<T>* p) HWY_ATTR { return hn::Gt(m, hn::LoadU(d, p)); };
    const auto notBelow = [=](const Magnitude<T>* p) HWY_ATTR { return isAtLeast(m, hn::LoadU(d, p)); };
    const Magnitude<T>* const p = row.pPrevious + x;
    const Magnitude<T>* const c = row.pCurrent + x;
    const Magnitude<T>* const n = row.pNext + x;
    const auto acrossVertical = hn::And(above(p), notBelow(n));
    const auto acrossHorizontal = hn::And(above(c - 1), notBelow(c + 1));
    const auto acrossFalling = hn::And(above(p - 1), above(n + 1));
    const auto acrossRising = hn::And(above(p + 1), above(n - 1));
    const auto acrossDiagonal = hn::Or(hn::And(rising, acrossRising), hn::AndNot(rising, acrossFalling));
    const auto acrossLevel = hn::Or(hn::And(horizontal, acrossHorizontal), hn::AndNot(horizontal, acrossDiagonal));
    return hn::Or(hn::And(vertical, acrossVertical), hn::AndNot(vertical, acrossLevel));
}

// The edges and candidates among the lanes of column x. Most blocks of a picture have none.
template <class Angles, class D, class T, class Coordinate>
HWY_INLINE EdgePixel<Coordinate>* suppressBlock(D d, const CannyRow<T>& row, size_t x, Magnitude<T> high,
                                                EdgePixel<Coordinate>* pTop) {
    const auto m = hn::LoadU(d, row.pCurrent + x);
    const auto kept = hn::Ne(m, hn::Zero(d));
    if (hn::AllFalse(d, kept)) return pTop;
    const auto passing = hn::And(kept, maxima<Angles>(d, row, x, m));
    if (hn::AllFalse(d, passing)) return pTop;
    const uint64_t strong = laneBits(d, hn::Gt(m, hn::Set(d, high)));
    forSetBits(laneBits(d, passing), [&](int lane) HWY_ATTR {
        const size_t i = size_t(lane);
        if ((strong >> i & 1) != 0) {
            *pTop++ = {static_cast<Coordinate>(row.y), static_cast<Coordinate>(x + i)};
            row.pDst[x + i] = kEdge;
        } else {
            row.pEdgeMap[x + i] = kEdgeCandidate;
        }
    });
    return pTop;
}

template <class T, class Coordinate>
EdgePixel<Coordinate>* suppress(const CannyRow<T>& row, Magnitude<T> high, EdgePixel<Coordinate>* pTop) {
    const hn::ScalableTag<Magnitude<T>> whole;
    const size_t width = size_t(row.width);
    const size_t single = std::is_same_v<T, Qel16s> ? width & ~size_t{3} : width;
    forVectors(whole, single,
               [&](auto d, size_t x) HWY_ATTR { pTop = suppressBlock<Tangents>(d, row, x, high, pTop); });
    if constexpr (std::is_same_v<T, Qel16s>) {  // the documented result of the last columns
        const hn::FixedTag<Magnitude<T>, 2> pair;
        forVectors(
            pair, width,
            [&](auto d, size_t x) HWY_ATTR { pTop = suppressBlock<DoubleTangents>(d, row, x, high, pTop); }, single);
    }
    return pTop;
}

}  // namespace

constexpr auto& ownCanny_16s8u_C1R_Mag_W7 = magnitudes_16s;
constexpr auto& ownCanny_32f8u_C1R_Mag_W7 = magnitudes_32f;
constexpr auto& ownCanny_16s8u_C1R_16u_W7 = suppress<Qel16s, Qel16u>;
constexpr auto& ownCanny_16s8u_C1R_32s_W7 = suppress<Qel16s, Qel32s>;
constexpr auto& ownCanny_32f8u_C1R_16u_W7 = suppress<Qel32f, Qel16u>;
constexpr auto& ownCanny_32f8u_C1R_32s_W7 = suppress<Qel32f, Qel32s>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownCanny_16s8u_C1R_Mag_W7);
QEL_KERNEL(ownCanny_32f8u_C1R_Mag_W7);
QEL_KERNEL(ownCanny_16s8u_C1R_16u_W7);
QEL_KERNEL(ownCanny_16s8u_C1R_32s_W7);
QEL_KERNEL(ownCanny_32f8u_C1R_16u_W7);
QEL_KERNEL(ownCanny_32f8u_C1R_32s_W7);
}  // namespace qel
#endif
