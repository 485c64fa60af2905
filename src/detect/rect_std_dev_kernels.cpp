// Deviations under a rectangle. Where a mean, a square or a difference is rounded to is part of each member's result,
// so the six formulas are written out one by one.
#include "detect/rect_std_dev_kernels.h"

#define HWY_TARGET_INCLUDE "detect/rect_std_dev_kernels.cpp"
#include "frame/simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// Each result takes reads at eight places: wider vectors would straddle more lines of the cache, and divide no faster.
constexpr size_t kVectorBytes = 32;
using Singles = hn::CappedTag<Qel32f, kVectorBytes / sizeof(Qel32f)>;
using Doubles = hn::CappedTag<Qel64f, kVectorBytes / sizeof(Qel64f)>;

// Sums over a rectangle. The order counts where elements are rounded.
struct Upright {
    template <class V>
    static HWY_INLINE V sum(V bottomRight, V bottomLeft, V topLeft, V topRight) {
        return hn::Add(hn::Sub(topLeft, topRight), hn::Sub(bottomRight, bottomLeft));
    }
};
struct Tilted {
    template <class V>
    static HWY_INLINE V sum(V bottom, V left, V right, V top) {
        return hn::Add(hn::Sub(hn::Sub(bottom, left), right), top);
    }
};

// Sums of elements x on, as `load` takes them from a pointer.
template <class Shape, class T, class Load>
HWY_INLINE auto sumAt(const Corners<T>& c, size_t x, const Load& load) {
    return Shape::sum(load(c.p[0] + x), load(c.p[1] + x), load(c.p[2] + x), load(c.p[3] + x));
}

template <class Shape, class D>
HWY_INLINE auto sumOf(D d, const Corners<hn::TFromD<D>>& c, size_t x) {
    return sumAt<Shape>(c, x, [=](const hn::TFromD<D>* p) HWY_ATTR { return hn::LoadU(d, p); });
}

// Sums of integers wrap; they are rounded to single precision once they stand.
template <class Shape, class D>
HWY_INLINE auto sumAsSingle(D d, const Corners<Qel32s>& c, size_t x) {
    return hn::ConvertTo(d, sumOf<Shape>(hn::RebindToSigned<D>(), c, x));
}
template <class Shape, class D>
HWY_INLINE auto sumAsSingle(D d, const Corners<Qel32f>& c, size_t x) {
    return sumOf<Shape>(d, c, x);
}

template <class D>
HWY_INLINE hn::Vec<D> roundedToSingle(D d, const Qel64f* p) {
    if constexpr (hn::MaxLanes(D()) == 1) {
        return hn::DemoteTo(d, hn::LoadU(hn::Rebind<Qel64f, D>(), p));
    } else {
        const hn::Half<D> half;
        const hn::Rebind<Qel64f, hn::Half<D>> wide;
        return hn::Combine(d, hn::DemoteTo(half, hn::LoadU(wide, p + hn::Lanes(half))),
                           hn::DemoteTo(half, hn::LoadU(wide, p)));
    }
}

// A variance below zero is zero; one that is a NaN stays one.
template <class D>
HWY_INLINE hn::Vec<D> notBelowZero(D d, hn::Vec<D> variance) {
    return hn::Max(hn::Zero(d), variance);
}

// Calls op(d, x), which returns as many results as d has lanes, all along the rows.
template <class D, class T, class Q, class R, class MakeOp>
HWY_INLINE void forRowsOfPixels(const Corners<T>& src, const Corners<Q>& sqr, Plane<R> dst, QelSize size,
                                const MakeOp& makeOp) {
    for (int y = 0; y < size.height; ++y) {
        R* const out = dst.row(y);
        const auto op = makeOp(src.from(y), sqr.from(y));
        forVectors(D(), size_t(size.width),
                   [&](auto d, size_t x) HWY_ATTR { hn::StoreU(op(d, x), hn::Rebind<R, decltype(d)>(), out + x); });
    }
}

// All in single precision; elements of the table of squares are rounded to it before they are summed.
template <class T>
void rectStdDevRows(const Corners<T>& src, const Corners<Qel64f>& sqr, Plane<Qel32f> dst, QelSize size,
                    DeviationFactors factors) {
    const Qel32f singleArea = static_cast<Qel32f>(factors.area);
    const auto makeOp = [=](const Corners<T>& s, const Corners<Qel64f>& q) HWY_ATTR {
        return [=](auto d, size_t x) HWY_ATTR {
            const auto area = hn::Set(d, singleArea);
            const auto mean = hn::Div(sumAsSingle<Upright>(d, s, x), area);
            const auto sumOfSquares =
                sumAt<Upright>(q, x, [=](const Qel64f* p) HWY_ATTR { return roundedToSingle(d, p); });
            const auto meanOfSquares = hn::Div(sumOfSquares, area);
            return hn::Sqrt(notBelowZero(d, hn::Sub(meanOfSquares, hn::Mul(mean, mean))));
        };
    };
    forRowsOfPixels<Singles>(src, sqr, dst, size, makeOp);
}

// The root of a variance in double precision, single in the tilted member, as an integer: scaled, a half added, cut.
// What no integer can hold becomes what the processor's conversion makes of it.
template <class D>
HWY_INLINE auto scaledToInteger(D d, hn::Vec<D> root, Qel32f scale) {
    const auto value = hn::Add(hn::Mul(root, hn::Set(d, Qel64f(scale))), hn::Set(d, 0.5));
    constexpr Qel64f kPastLast = 2147483648.0;
    const auto inRange = hn::IfThenElse(hn::Lt(value, hn::Set(d, kPastLast)), value, hn::Set(d, -kPastLast));
    return hn::DemoteTo(hn::Rebind<Qel32s, D>(), inRange);
}

void rectStdDevIntegerRows(const Corners<Qel32s>& src, const Corners<Qel32s>& sqr, Plane<Qel32s> dst, QelSize size,
                           DeviationFactors factors) {
    const auto makeOp = [=](const Corners<Qel32s>& s, const Corners<Qel32s>& q) HWY_ATTR {
        return [=](auto d, size_t x) HWY_ATTR {
            const hn::Rebind<Qel32f, decltype(d)> ds;
            const auto area = hn::Set(ds, static_cast<Qel32f>(factors.area));
            const auto mean = hn::Div(sumAsSingle<Upright>(ds, s, x), area);
            const auto meanOfSquares = hn::Div(sumAsSingle<Upright>(ds, q, x), area);
            const auto variance = notBelowZero(ds, hn::Sub(meanOfSquares, hn::Mul(mean, mean)));
            return scaledToInteger(d, hn::Sqrt(hn::PromoteTo(d, variance)), factors.scale);
        };
    };
    forRowsOfPixels<Doubles>(src, sqr, dst, size, makeOp);
}

// The single root of a variance in double precision.
template <class D>
HWY_INLINE auto singleRoot(D d, hn::Vec<D> meanOfSquares, hn::Vec<D> mean) {
    const auto variance = notBelowZero(d, hn::Sub(meanOfSquares, hn::Mul(mean, mean)));
    return hn::Sqrt(hn::DemoteTo(hn::Rebind<Qel32f, D>(), variance));
}

// Double precision throughout: single elements are widened before they are summed.
void tiltedRectStdDevRows(const Corners<Qel32f>& src, const Corners<Qel64f>& sqr, Plane<Qel32f> dst, QelSize size,
                          DeviationFactors factors) {
    const auto makeOp = [=](const Corners<Qel32f>& s, const Corners<Qel64f>& q) HWY_ATTR {
        return [=](auto d, size_t x) HWY_ATTR {
            const hn::Rebind<Qel32f, decltype(d)> ds;
            const auto area = hn::Set(d, factors.area);
            const auto sum =
                sumAt<Tilted>(s, x, [=](const Qel32f* p) HWY_ATTR { return hn::PromoteTo(d, hn::LoadU(ds, p)); });
            return singleRoot(d, hn::Div(sumOf<Tilted>(d, q, x), area), hn::Div(sum, area));
        };
    };
    forRowsOfPixels<Doubles>(src, sqr, dst, size, makeOp);
}

// The mean in single precision, the rest in double; the area as single precision holds it.
void tiltedRectStdDevMixedRows(const Corners<Qel32s>& src, const Corners<Qel64f>& sqr, Plane<Qel32f> dst, QelSize size,
                               DeviationFactors factors) {
    const Qel32f singleArea = static_cast<Qel32f>(factors.area);
    const auto makeOp = [=](const Corners<Qel32s>& s, const Corners<Qel64f>& q) HWY_ATTR {
        return [=](auto d, size_t x) HWY_ATTR {
            const hn::Rebind<Qel32f, decltype(d)> ds;
            const auto mean = hn::Div(sumAsSingle<Tilted>(ds, s, x), hn::Set(ds, singleArea));
            const auto meanOfSquares = hn::Div(sumOf<Tilted>(d, q, x), hn::Set(d, Qel64f(singleArea)));
            return singleRoot(d, meanOfSquares, hn::PromoteTo(d, mean));
        };
    };
    forRowsOfPixels<Doubles>(src, sqr, dst, size, makeOp);
}

// Both means in single precision, their variance in double, its root in single.
void tiltedRectStdDevIntegerRows(const Corners<Qel32s>& src, const Corners<Qel32s>& sqr, Plane<Qel32s> dst,
                                 QelSize size, DeviationFactors factors) {
    const auto makeOp = [=](const Corners<Qel32s>& s, const Corners<Qel32s>& q) HWY_ATTR {
        return [=](auto d, size_t x) HWY_ATTR {
            const hn::Rebind<Qel32f, decltype(d)> ds;
            const auto area = hn::Set(ds, static_cast<Qel32f>(factors.area));
            const auto mean = hn::Div(sumAsSingle<Tilted>(ds, s, x), area);
            const auto meanOfSquares = hn::Div(sumAsSingle<Tilted>(ds, q, x), area);
            const auto root = singleRoot(d, hn::PromoteTo(d, meanOfSquares), hn::PromoteTo(d, mean));
            return scaledToInteger(d, hn::PromoteTo(d, root), factors.scale);
        };
    };
    forRowsOfPixels<Doubles>(src, sqr, dst, size, makeOp);
}

}  // namespace

constexpr auto& ownRectStdDev_32f_C1R_W7 = rectStdDevRows<Qel32f>;
constexpr auto& ownRectStdDev_32s32f_C1R_W7 = rectStdDevRows<Qel32s>;
constexpr auto& ownRectStdDev_32s_C1RSfs_W7 = rectStdDevIntegerRows;
constexpr auto& ownTiltedRectStdDev_32f_C1R_W7 = tiltedRectStdDevRows;
constexpr auto& ownTiltedRectStdDev_32s32f_C1R_W7 = tiltedRectStdDevMixedRows;
constexpr auto& ownTiltedRectStdDev_32s_C1RSfs_W7 = tiltedRectStdDevIntegerRows;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownRectStdDev_32f_C1R_W7);
QEL_KERNEL(ownRectStdDev_32s32f_C1R_W7);
QEL_KERNEL(ownRectStdDev_32s_C1RSfs_W7);
QEL_KERNEL(ownTiltedRectStdDev_32f_C1R_W7);
QEL_KERNEL(ownTiltedRectStdDev_32s32f_C1R_W7);
QEL_KERNEL(ownTiltedRectStdDev_32s_C1RSfs_W7);
}  // namespace qel
#endif
