#include "frame/image_primitives_kernels.h"

#include "frame/image.h"

#define HWY_TARGET_INCLUDE "frame/image_primitives_kernels.cpp"
#include "frame/simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

void copyRows(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep, size_t rowBytes, int rows) {
    for (int y = 0; y < rows; ++y) {
        const Qel8u* in = row(pSrc, srcStep, y);
        Qel8u* out = row(pDst, dstStep, y);
        forVectorsInto<true>(out, hn::ScalableTag<Qel8u>(), rowBytes,
                             [=](auto d, size_t x, auto store) HWY_ATTR { store(hn::LoadU(d, in + x), d, out + x); });
    }
    finishStores<true>();
}

void setRows(Qel8u value, Qel8u* pDst, int dstStep, size_t rowBytes, int rows) {
    for (int y = 0; y < rows; ++y) {
        Qel8u* out = row(pDst, dstStep, y);
        forVectorsInto<true>(out, hn::ScalableTag<Qel8u>(), rowBytes,
                             [=](auto d, size_t x, auto store) HWY_ATTR { store(hn::Set(d, value), d, out + x); });
    }
    finishStores<true>();
}

struct Greater {
    template <class V>
    HWY_INLINE auto operator()(V a, V b) const {
        return hn::Gt(a, b);
    }
};
struct Less {
    template <class V>
    HWY_INLINE auto operator()(V a, V b) const {
        return hn::Lt(a, b);
    }
};

template <class T, class Compare, bool Streaming = false>
void thresholdValRows(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize size, T threshold, T value) {
    for (int y = 0; y < size.height; ++y) {
        const T* in = row(pSrc, srcStep, y);
        T* out = row(pDst, dstStep, y);  // may be row in
        forVectorsInto<Streaming>(
            out, hn::ScalableTag<T>(), size_t(size.width), [=](auto d, size_t x, auto store) HWY_ATTR {
                const auto v = hn::LoadU(d, in + x);
                store(hn::IfThenElse(Compare()(v, hn::Set(d, threshold)), hn::Set(d, value), v), d, out + x);
            });
    }
    finishStores<Streaming>();
}

// The sample stands second: where it does not compare with the threshold, it is what Min and Max give.
struct AtLeast {
    template <class V>
    HWY_INLINE V operator()(V sample, V threshold) const {
        return hn::Max(threshold, sample);
    }
};
struct AtMost {
    template <class V>
    HWY_INLINE V operator()(V sample, V threshold) const {
        return hn::Min(threshold, sample);
    }
};

template <class Limit>
void thresholdRows(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep, QelSize size, Qel32f threshold) {
    for (int y = 0; y < size.height; ++y) {
        const Qel32f* in = row(pSrc, srcStep, y);
        Qel32f* out = row(pDst, dstStep, y);  // may be row in
        forVectors(hn::ScalableTag<Qel32f>(), size_t(size.width), [=](auto d, size_t x) HWY_ATTR {
            hn::StoreU(Limit()(hn::LoadU(d, in + x), hn::Set(d, threshold)), d, out + x);
        });
    }
}

void subRow32f(const Qel32f* pSrc1, const Qel32f* pSrc2, Qel32f* pDst, int len) {
    forVectors(hn::ScalableTag<Qel32f>(), size_t(len), [=](auto d, size_t x) HWY_ATTR {
        hn::StoreU(hn::Sub(hn::LoadU(d, pSrc2 + x), hn::LoadU(d, pSrc1 + x)), d, pDst + x);
    });
}

struct Unscaled {
    template <class V>
    HWY_INLINE V operator()(V difference, int) const {
        return difference;
    }
};

// Rounds up where what is shifted out, plus one for an odd quotient, exceeds a half.
struct DividedRounding {
    template <class V, class D = hn::DFromV<V>>
    HWY_INLINE V operator()(V difference, int shift) const {
        const V one = hn::Set(D(), Qel8u{1});
        const V half = hn::Set(D(), static_cast<Qel8u>(1 << (shift - 1)));
        const V fraction = hn::Set(D(), static_cast<Qel8u>((1 << shift) - 1));
        const V quotient = hn::ShiftRightSame(difference, shift);
        const V rest = hn::Add(hn::And(difference, fraction), hn::And(quotient, one));
        return hn::Add(quotient, hn::Min(hn::SaturatedSub(rest, half), one));
    }
};

struct MultipliedSaturating {
    template <class V, class D = hn::DFromV<V>>
    HWY_INLINE V operator()(V difference, int shift) const {
        const V largest = hn::Set(D(), static_cast<Qel8u>(255 >> shift));
        const V shifted = hn::ShiftLeftSame(difference, HWY_MIN(shift, 7));
        return hn::IfThenElse(hn::Gt(difference, largest), hn::Set(D(), Qel8u{255}), shifted);
    }
};

template <class Scale>
void subRow(const Qel8u* pSrc1, const Qel8u* pSrc2, Qel8u* pDst, int len, int shift) {
    forVectors(hn::ScalableTag<Qel8u>(), size_t(len), [=](auto d, size_t x) HWY_ATTR {
        const auto difference = hn::SaturatedSub(hn::LoadU(d, pSrc2 + x), hn::LoadU(d, pSrc1 + x));
        hn::StoreU(Scale()(difference, shift), d, pDst + x);
    });
}

}  // namespace

constexpr auto& owniCopy_8u_C1_W7 = copyRows;
constexpr auto& owniSet_8u_C1_W7 = setRows;

constexpr auto& owniThreshold_GTVal_8u_C1R = thresholdValRows<Qel8u, Greater>;
constexpr auto& owniThreshold_LTVal_8u_C1R = thresholdValRows<Qel8u, Less>;
constexpr auto& owniThreshold_GTVal_16u_C1R = thresholdValRows<Qel16u, Greater>;
constexpr auto& owniThreshold_LTVal_16u_C1R = thresholdValRows<Qel16u, Less>;
constexpr auto& owniThreshold_GTVal_16u_C1R_B = thresholdValRows<Qel16u, Greater, true>;
constexpr auto& owniThreshold_LTVal_16u_C1R_B = thresholdValRows<Qel16u, Less, true>;
constexpr auto& owniThreshold_LT_32f_C1R = thresholdRows<AtLeast>;
constexpr auto& owniThreshold_GT_32f_C1R = thresholdRows<AtMost>;

constexpr auto& ownps_Sub_32f = subRow32f;
constexpr auto& ownps_Sub_8u = subRow<Unscaled>;
constexpr auto& ownps_SubLeft_8u = subRow<MultipliedSaturating>;
constexpr auto& ownps_SubRight_8u = subRow<DividedRounding>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(owniCopy_8u_C1_W7);
QEL_KERNEL(owniSet_8u_C1_W7);
QEL_KERNEL(owniThreshold_GTVal_8u_C1R);
QEL_KERNEL(owniThreshold_LTVal_8u_C1R);
QEL_KERNEL(owniThreshold_GTVal_16u_C1R);
QEL_KERNEL(owniThreshold_LTVal_16u_C1R);
QEL_KERNEL(owniThreshold_GTVal_16u_C1R_B);
QEL_KERNEL(owniThreshold_LTVal_16u_C1R_B);
QEL_KERNEL(owniThreshold_LT_32f_C1R);
QEL_KERNEL(owniThreshold_GT_32f_C1R);
QEL_KERNEL(ownps_Sub_32f);
QEL_KERNEL(ownps_Sub_8u);
QEL_KERNEL(ownps_SubLeft_8u);
QEL_KERNEL(ownps_SubRight_8u);
}  // namespace qel
#endif
