#include "frame/vector_primitives_kernels.h"

#define HWY_TARGET_INCLUDE "frame/vector_primitives_kernels.cpp"
#include "frame/simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// Four vectors at a time: a loop of one load and one store is bound by its own counting.
void copyBytes(const Qel8u* pSrc, Qel8u* pDst, size_t bytes) {
    const hn::ScalableTag<Qel8u> d;
    const size_t n = hn::Lanes(d);
    size_t x = 0;
    for (; x + 4 * n <= bytes; x += 4 * n) {
        const auto v0 = hn::LoadU(d, pSrc + x);
        const auto v1 = hn::LoadU(d, pSrc + x + n);
        const auto v2 = hn::LoadU(d, pSrc + x + 2 * n);
        const auto v3 = hn::LoadU(d, pSrc + x + 3 * n);
        hn::StoreU(v0, d, pDst + x);
        hn::StoreU(v1, d, pDst + x + n);
        hn::StoreU(v2, d, pDst + x + 2 * n);
        hn::StoreU(v3, d, pDst + x + 3 * n);
    }
    forVectors(
        d, bytes, [=](auto dx, size_t i) HWY_ATTR { hn::StoreU(hn::LoadU(dx, pSrc + i), dx, pDst + i); }, x);
}

template <class T>
void setAll(T value, T* pDst, size_t count) {
    forVectors(hn::ScalableTag<T>(), count,
               [=](auto d, size_t x) HWY_ATTR { hn::StoreU(hn::Set(d, value), d, pDst + x); });
}

void zeroBytes(Qel8u* pDst, size_t bytes) { setAll<Qel8u>(0, pDst, bytes); }

void convert(const Qel16u* pSrc, Qel32f* pDst, int len) {
    forVectors(hn::ScalableTag<Qel32f>(), size_t(len), [=](auto d, size_t x) HWY_ATTR {
        const hn::Rebind<Qel16u, decltype(d)> d16;
        const hn::RebindToSigned<decltype(d)> d32;
        hn::StoreU(hn::ConvertTo(d, hn::PromoteTo(d32, hn::LoadU(d16, pSrc + x))), d, pDst + x);
    });
}

// Of floats that do not compare both give the second operand.
struct Smaller {
    template <class V>
    HWY_INLINE V operator()(V a, V b) const {
        return hn::Min(a, b);
    }
};
struct Larger {
    template <class V>
    HWY_INLINE V operator()(V a, V b) const {
        return hn::Max(a, b);
    }
};

template <class T, class Choose>
void every(const T* pSrc1, const T* pSrc2, T* pDst, int len) {
    forVectors(hn::ScalableTag<T>(), size_t(HWY_MAX(len, 0)), [=](auto d, size_t x) HWY_ATTR {
        hn::StoreU(Choose()(hn::LoadU(d, pSrc1 + x), hn::LoadU(d, pSrc2 + x)), d, pDst + x);
    });
}

template <class T, class Choose>
void everyInPlace(const T* pSrc, T* pSrcDst, int len) {
    every<T, Choose>(pSrc, pSrcDst, pSrcDst, len);
}

void mulC(Qel32f value, Qel32f* pSrcDst, int len) {
    forVectors(hn::ScalableTag<Qel32f>(), size_t(len), [=](auto d, size_t x) HWY_ATTR {
        hn::StoreU(hn::Mul(hn::LoadU(d, pSrcDst + x), hn::Set(d, value)), d, pSrcDst + x);
    });
}

// To nearest, ties to even: half a unit less one, plus one where the quotient is odd.
struct ShiftRightRounding {
    template <class V, class D = hn::DFromV<V>>
    HWY_INLINE V operator()(V product, int shift) const {
        const V belowHalf = hn::Set(D(), (1 << (shift - 1)) - 1);
        const V odd = hn::And(hn::ShiftRightSame(product, shift), hn::Set(D(), 1));
        return hn::ShiftRightSame(hn::Add(hn::Add(product, belowHalf), odd), shift);
    }
};
static_assert((1LL << 30) + (1LL << 29) < (1LL << 31), "the rounded product of two 16-bit values stays in 32 bits");

// A product saturated ahead of the shift stays saturated, and one of 16 bits cannot overflow.
struct ShiftLeftSaturated {
    template <class V, class D = hn::DFromV<V>>
    HWY_INLINE V operator()(V product, int shift) const {
        const hn::Rebind<Qel16s, D> d16;
        return hn::ShiftLeftSame(hn::PromoteTo(D(), hn::DemoteTo(d16, product)), shift);
    }
};

template <class Scale>
void mulCShift(Qel16s value, Qel16s* pSrcDst, int len, int shift) {
    forVectors(hn::ScalableTag<Qel32s>(), size_t(len), [=](auto d, size_t x) HWY_ATTR {
        const hn::Rebind<Qel16s, decltype(d)> d16;
        const auto product = hn::Mul(hn::PromoteTo(d, hn::LoadU(d16, pSrcDst + x)), hn::Set(d, Qel32s{value}));
        hn::StoreU(hn::DemoteTo(d16, Scale()(product, shift)), d16, pSrcDst + x);
    });
}

bool squareRoot(Qel32f* pSrcDst, int len) {
    bool negative = false;
    forVectors(hn::ScalableTag<Qel32f>(), size_t(len), [=, &negative](auto d, size_t x) HWY_ATTR {
        const auto v = hn::LoadU(d, pSrcDst + x);
        negative |= !hn::AllFalse(d, hn::Lt(v, hn::Zero(d)));
        hn::StoreU(hn::Sqrt(v), d, pSrcDst + x);
    });
    return negative;
}

// Rounds to the nearest integer, ties to even, where the result is below 2^51: there a double has no bits for less.
template <class V, class D = hn::DFromV<V>>
HWY_INLINE V nearestInteger(V v) {
    const V noFraction = hn::Set(D(), 0x1.8p52);
    return hn::Sub(hn::Add(v, noFraction), noFraction);
}

// A root that is not an odd multiple of half the last place differs from it by more than 1e-5 of that place, and a
// double holds it to 2^-36: its rounding decides as the root itself would.
bool squareRootScaled(const Qel32s* pSrc, Qel16s* pDst, int len, Qel64f scale) {
    bool negative = false;
    forVectors(hn::ScalableTag<Qel64f>(), size_t(len), [=, &negative](auto d, size_t x) HWY_ATTR {
        const hn::Rebind<Qel32s, decltype(d)> d32;
        const hn::Rebind<Qel16s, decltype(d)> d16;
        const auto v = hn::LoadU(d32, pSrc + x);
        negative |= !hn::AllFalse(d32, hn::Lt(v, hn::Zero(d32)));
        const auto root = hn::Sqrt(hn::PromoteTo(d, hn::Max(v, hn::Zero(d32))));
        const auto scaled = hn::Min(hn::Mul(root, hn::Set(d, scale)), hn::Set(d, 32767.0));
        hn::StoreU(hn::DemoteTo(d16, hn::DemoteTo(d32, nearestInteger(scaled))), d16, pDst + x);
    });
    return negative;
}

}  // namespace

constexpr auto& ownsCopy_8u = copyBytes;
constexpr auto& ownsSet_8u = setAll<Qel8u>;
constexpr auto& ownsSet_32s = setAll<Qel32s>;
constexpr auto& ownsZero_8u = zeroBytes;
constexpr auto& ownqelsCnvrt_16u32f = convert;

constexpr auto& ownps_MinEvery_8u = every<Qel8u, Smaller>;
constexpr auto& ownps_MaxEvery_8u = every<Qel8u, Larger>;
constexpr auto& ownps_MinEvery_32f = every<Qel32f, Smaller>;
constexpr auto& ownps_MaxEvery_32f = every<Qel32f, Larger>;
constexpr auto& ownps_MinEvery_8u_I = everyInPlace<Qel8u, Smaller>;
constexpr auto& ownps_MaxEvery_8u_I = everyInPlace<Qel8u, Larger>;
constexpr auto& ownps_MinEvery_32f_I = everyInPlace<Qel32f, Smaller>;
constexpr auto& ownps_MaxEvery_32f_I = everyInPlace<Qel32f, Larger>;

constexpr auto& ownps_MulC_32f_I = mulC;
constexpr auto& ownps_MulCRight_16s_I = mulCShift<ShiftRightRounding>;
constexpr auto& ownps_MulCLeft_16s_I = mulCShift<ShiftLeftSaturated>;
constexpr auto& ownps_Sqrt_32f_I = squareRoot;
constexpr auto& ownps_Sqrt_32s16s = squareRootScaled;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownsCopy_8u);
QEL_KERNEL(ownsSet_8u);
QEL_KERNEL(ownsSet_32s);
QEL_KERNEL(ownsZero_8u);
QEL_KERNEL(ownqelsCnvrt_16u32f);
QEL_KERNEL(ownps_MinEvery_8u);
QEL_KERNEL(ownps_MaxEvery_8u);
QEL_KERNEL(ownps_MinEvery_32f);
QEL_KERNEL(ownps_MaxEvery_32f);
QEL_KERNEL(ownps_MinEvery_8u_I);
QEL_KERNEL(ownps_MaxEvery_8u_I);
QEL_KERNEL(ownps_MinEvery_32f_I);
QEL_KERNEL(ownps_MaxEvery_32f_I);
QEL_KERNEL(ownps_MulC_32f_I);
QEL_KERNEL(ownps_MulCRight_16s_I);
QEL_KERNEL(ownps_MulCLeft_16s_I);
QEL_KERNEL(ownps_Sqrt_32f_I);
QEL_KERNEL(ownps_Sqrt_32s16s);
}  // namespace qel
#endif
