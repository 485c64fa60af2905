#include "feature/eigen_kernels.h"

#define HWY_TARGET_INCLUDE "feature/eigen_kernels.cpp"
#include "frame/simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

template <class D>
HWY_INLINE hn::Vec<D> derivatives(D d, const Qel32f* p) {
    return hn::LoadU(d, p);
}
template <class D>
HWY_INLINE hn::Vec<D> derivatives(D d, const Qel16s* p) {
    return hn::ConvertTo(d, hn::PromoteTo(hn::RebindToSigned<D>(), hn::LoadU(hn::Rebind<Qel16s, D>(), p)));
}

template <class T>
void products(const T* pDx, const T* pDy, const GradientRow<Qel32f>& out, int width) {
    forVectors(hn::ScalableTag<Qel32f>(), size_t(width), [=](auto d, size_t x) HWY_ATTR {
        const auto dx = derivatives(d, pDx + x);
        const auto dy = derivatives(d, pDy + x);
        hn::StoreU(hn::Mul(dx, dx), d, out.dxx + x);
        hn::StoreU(hn::Mul(dx, dy), d, out.dxy + x);
        hn::StoreU(hn::Mul(dy, dy), d, out.dyy + x);
    });
}

// sqrt((a - b)^2 + 4 c^2)
template <class V>
HWY_INLINE V distance(V a, V b, V c) {
    const V difference = hn::Sub(a, b);
    const V four = hn::Set(hn::DFromV<V>(), 4.0F);
    return hn::Sqrt(hn::Add(hn::Mul(difference, difference), hn::Mul(four, hn::Mul(c, c))));
}

void smallerEigenvalues(const GradientRow<const Qel32f>& matrices, Qel32f* pDst, int width, Qel32f scale, Qel32f) {
    const Qel32f halfScale = scale * 0.5F;
    forVectors(hn::ScalableTag<Qel32f>(), size_t(width), [=](auto d, size_t x) HWY_ATTR {
        const auto a = hn::LoadU(d, matrices.dxx + x);
        const auto b = hn::LoadU(d, matrices.dyy + x);
        const auto c = hn::LoadU(d, matrices.dxy + x);
        hn::StoreU(hn::Mul(hn::Sub(hn::Add(a, b), distance(a, b, c)), hn::Set(d, halfScale)), d, pDst + x);
    });
}

// Numbers of a pixel: two eigenvalues, the vector of the larger, that of the smaller.
constexpr size_t kNumbers = 6;
constexpr size_t kBlock = 64;
using Planes = Qel32f[kNumbers][kBlock];

// sign * c and minus the other, divided by their length, if that is not tiny.
template <class D, class V = hn::Vec<D>>
HWY_INLINE void storeVector(D d, V c, V other, hn::Mask<D> isZero, hn::Mask<D> isUnit, V unitX, V unitY, Qel32f* pX,
                            Qel32f* pY) {
    const V length = hn::Sqrt(hn::Add(hn::Mul(other, other), hn::Mul(c, c)));
    const V n = hn::Div(hn::Set(d, 1.0F), hn::Max(hn::Set(d, 1.1920929e-7F), length));
    const V x = hn::IfThenElse(isUnit, unitX, hn::Mul(c, n));
    const V y = hn::IfThenElse(isUnit, unitY, hn::Mul(hn::Neg(other), n));
    hn::Store(hn::IfThenZeroElse(isZero, x), d, pX);
    hn::Store(hn::IfThenZeroElse(isZero, y), d, pY);
}

// Where the matrix is nearly singular, all six are 0; where it is nearly diagonal, the vectors are the axes.
template <class D>
HWY_INLINE void analyse(D d, hn::Vec<D> a, hn::Vec<D> b, hn::Vec<D> c, Qel32f sign, size_t i, Planes& out) {
    const auto half = hn::Set(d, 0.5F);
    const auto zero = hn::Zero(d);
    const auto one = hn::Set(d, 1.0F);
    const auto t = hn::Mul(hn::Set(d, 0.01F), hn::Max(a, b));
    const auto r = distance(a, b, c);
    const auto larger = hn::Mul(hn::Add(hn::Add(a, b), r), half);
    const auto smaller = hn::Mul(hn::Sub(hn::Add(a, b), r), half);
    const auto determinant = hn::Sub(hn::Mul(a, b), hn::Mul(c, c));
    const auto isZero = hn::Or(hn::Gt(t, hn::Min(a, b)), hn::Gt(t, determinant));
    const auto isUnit = hn::Gt(t, hn::Abs(c));
    const auto turned = hn::Mul(c, hn::Set(d, sign));
    hn::Store(hn::IfThenZeroElse(isZero, larger), d, out[0] + i);
    hn::Store(hn::IfThenZeroElse(isZero, smaller), d, out[1] + i);
    storeVector(d, turned, hn::Sub(a, larger), isZero, isUnit, one, zero, out[2] + i, out[3] + i);
    storeVector(d, turned, hn::Sub(a, smaller), isZero, isUnit, zero, one, out[4] + i, out[5] + i);
}

// Two pixels out of pairs of their numbers.
template <class D, class V = hn::Vec<D>>
HWY_INLINE void storeTwoPixels(D d, V values, V first, V second, Qel32f* pDst) {
    hn::StoreU(hn::ConcatLowerLower(d, first, values), d, pDst);
    hn::StoreU(hn::ConcatUpperLower(d, values, second), d, pDst + 4);
    hn::StoreU(hn::ConcatUpperUpper(d, second, first), d, pDst + 8);
}

HWY_INLINE void interleave(const Planes& in, size_t count, Qel32f* pDst) {
    const hn::FixedTag<Qel32f, 4> d;
    size_t i = 0;
    for (; i + 4 <= count; i += 4) {
        const auto plane = [&](size_t n) HWY_ATTR { return hn::Load(d, in[n] + i); };
        const auto lower = [&](size_t n) HWY_ATTR { return hn::InterleaveLower(d, plane(n), plane(n + 1)); };
        const auto upper = [&](size_t n) HWY_ATTR { return hn::InterleaveUpper(d, plane(n), plane(n + 1)); };
        storeTwoPixels(d, lower(0), lower(2), lower(4), pDst + kNumbers * i);
        storeTwoPixels(d, upper(0), upper(2), upper(4), pDst + kNumbers * (i + 2));
    }
    for (; i < count; ++i) {
        for (size_t n = 0; n < kNumbers; ++n) {
            hwy::CopyBytes<sizeof(Qel32f)>(in[n] + i, pDst + kNumbers * i + n);
        }
    }
}

void eigenvaluesAndVectors(const GradientRow<const Qel32f>& matrices, Qel32f* pDst, int width, Qel32f scale,
                           Qel32f sign) {
    alignas(64) Planes planes;
    for (size_t x = 0; x < size_t(width); x += kBlock) {
        const size_t count = HWY_MIN(kBlock, size_t(width) - x);
        forVectors(hn::ScalableTag<Qel32f>(), count, [&](auto d, size_t i) HWY_ATTR {
            const auto scaled = [&](const Qel32f* p)
                                    HWY_ATTR { return hn::Mul(hn::LoadU(d, p + x + i), hn::Set(d, scale)); };
            analyse(d, scaled(matrices.dxx), scaled(matrices.dyy), scaled(matrices.dxy), sign, i, planes);
        });
        interleave(planes, count, pDst + kNumbers * x);
    }
}

}  // namespace

constexpr auto& ownMinEigenVal_16s32f_C1R_W7 = products<Qel16s>;
constexpr auto& ownMinEigenVal_32f_C1R_W7 = products<Qel32f>;
constexpr auto& owncalcMinValues_W7 = smallerEigenvalues;
constexpr auto& calcValues = eigenvaluesAndVectors;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownMinEigenVal_16s32f_C1R_W7);
QEL_KERNEL(ownMinEigenVal_32f_C1R_W7);
QEL_KERNEL(owncalcMinValues_W7);
QEL_KERNEL(calcValues);
}  // namespace qel
#endif
