#include "pyramid/srhn_kernels.h"

#include "frame/image.h"

#define HWY_TARGET_INCLUDE "pyramid/srhn_kernels.cpp"
#include "frame/simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

using D4 = hn::Full128<Qel32f>;
using D2 = hn::Full64<Qel32f>;
using D1 = hn::Full32<Qel32f>;
using V4 = hn::Vec<D4>;

// Two or three neighbours, and nothing beyond them.
HWY_INLINE V4 loadTwo(const Qel32f* p) { return hn::ZeroExtendVector(D4(), hn::LoadU(D2(), p)); }
HWY_INLINE V4 loadThree(const Qel32f* p) {
    const V4 third = hn::ZeroExtendVector(D4(), hn::ZeroExtendVector(D2(), hn::LoadU(D1(), p + 2)));
    return hn::ConcatLowerLower(D4(), third, loadTwo(p));
}
HWY_INLINE void storeTwo(V4 v, Qel32f* p) { hn::StoreU(hn::LowerHalf(D2(), v), D2(), p); }
HWY_INLINE void storeThree(V4 v, Qel32f* p) {
    storeTwo(v, p);
    hn::StoreU(hn::LowerHalf(D1(), hn::UpperHalf(D2(), v)), D1(), p + 2);
}

// Both rows of two taps as one vector.
HWY_INLINE V4 loadFour(const Qel32f* p, int step) {
    return hn::Combine(D4(), hn::LoadU(D2(), row(p, step, 1)), hn::LoadU(D2(), p));
}

// Lane k of vector i becomes lane i of vector k.
HWY_INLINE void transpose(V4 (&v)[4]) {
    const D4 d;
    const V4 low01 = hn::InterleaveLower(d, v[0], v[1]), high01 = hn::InterleaveUpper(d, v[0], v[1]);
    const V4 low23 = hn::InterleaveLower(d, v[2], v[3]), high23 = hn::InterleaveUpper(d, v[2], v[3]);
    v[0] = hn::ConcatLowerLower(d, low23, low01);
    v[1] = hn::ConcatUpperUpper(d, low23, low01);
    v[2] = hn::ConcatLowerLower(d, high23, high01);
    v[3] = hn::ConcatUpperUpper(d, high23, high01);
}

// Products of one row of taps of four samples, each vector one tap of all four.
template <class Products>
HWY_INLINE void productsOfFour(V4 (&v)[4], const Products& products) {
    for (int i = 0; i < 4; ++i) v[i] = products(i);
    transpose(v);
}

template <class T>
HWY_INLINE V4 observed(const T* pLR) {
    return hn::ConvertTo(D4(), hn::PromoteTo(hn::Full128<int32_t>(), hn::LoadU(hn::Rebind<T, D4>(), pLR)));
}

// The sum over the taps of four samples less what was observed, which is taken off behind the first tap.
struct Residual_PSF2x2 {
    static constexpr int kEntry = kEntry_PSF2x2;

    template <class Lane>
    HWY_INLINE V4 operator()(const Lane& lane, int step, V4 lr) const {
        V4 taps[4];
        productsOfFour(taps, [&](int i) QEL_INLINE_LAMBDA {
            return hn::Mul(loadFour(lane.pixels(i), step), hn::LoadU(D4(), lane.coeffs(i)));
        });
        return hn::Add(hn::Add(hn::Add(hn::Sub(taps[0], lr), taps[1]), taps[2]), taps[3]);
    }
};

struct Residual_PSF3x3 {
    static constexpr int kEntry = kEntry_PSF3x3;

    template <class Lane>
    HWY_INLINE V4 operator()(const Lane& lane, int step, V4 lr) const {
        V4 sum = hn::Zero(D4());
        for (int y = 0; y < 3; ++y) {
            V4 taps[4];
            productsOfFour(taps, [&](int i) QEL_INLINE_LAMBDA {
                return hn::Mul(loadThree(row(lane.pixels(i), step, y)), hn::LoadU(D4(), lane.coeffs(i) + 4 * y));
            });
            sum = y == 0 ? hn::Sub(taps[0], lr) : hn::Add(sum, taps[0]);
            sum = hn::Add(hn::Add(sum, taps[1]), taps[2]);
        }
        return sum;
    }
};

// Four samples of the list, from `first` on. Where fewer are left, the last of them stands in for the others.
template <int kEntry>
struct FourSamples {
    const Qel32f* pHR;
    const TapList& list;
    const Qel32f* pCoeffs;
    int first;

    HWY_INLINE int index(int i) const { return HWY_MIN(first + i, list.len - 1); }
    HWY_INLINE const Qel32f* pixels(int i) const { return pHR + size_t{list.pOffsets[index(i)]}; }
    HWY_INLINE const Qel32f* coeffs(int i) const { return pCoeffs + size_t{list.pCoeffIdx[index(i)]} * kEntry; }
};

template <class T, class Residual>
void calcResidual(const Qel32f* pHR, int hrStep, const T* pLR, const TapList& list, Qel32f* pResidual,
                  const Qel32f* pCoeffs) {
    constexpr int kEntry = Residual::kEntry;
    const Residual residual;
    int i = 0;
    for (; list.len - i >= 4; i += 4) {
        const FourSamples<kEntry> samples = {pHR, list, pCoeffs, i};
        hn::StoreU(residual(samples, hrStep, observed(pLR + i)), D4(), pResidual + i);
    }
    if (i == list.len) return;
    HWY_ALIGN T lr[4] = {};
    HWY_ALIGN Qel32f results[4];
    for (int k = 0; k < list.len - i; ++k) lr[k] = pLR[i + k];
    hn::Store(residual(FourSamples<kEntry>{pHR, list, pCoeffs, i}, hrStep, observed(lr)), D4(), results);
    for (int k = 0; k < list.len - i; ++k) pResidual[i + k] = results[k];
}

HWY_INLINE V4 withTap(V4 coeffs, V4 weight, V4 gradient) { return hn::Add(hn::Mul(coeffs, weight), gradient); }

// One sample after the other: two of them may meet in a pixel.
template <int kEntry>
void updateGradient(Qel32f* pGrad, int gradStep, const TapList& list, const Qel32f* pResidual, const Qel8u* pWeightIdx,
                    const Qel32f* pWeights, const Qel32f* pCoeffs) {
    const D4 d;
    for (int i = 0; i < list.len; ++i) {
        Qel32f* const g = pGrad + size_t{list.pOffsets[i]};
        const Qel32f* const c = pCoeffs + size_t{list.pCoeffIdx[i]} * kEntry;
        const V4 weight = hn::Set(d, pWeights[pWeightIdx[i]] * pResidual[i]);
        if constexpr (kEntry == kEntry_PSF2x2) {
            const V4 sum = withTap(hn::LoadU(d, c), weight, loadFour(g, gradStep));
            storeTwo(sum, g);
            hn::StoreU(hn::UpperHalf(D2(), sum), D2(), row(g, gradStep, 1));
        } else {
            for (int y = 0; y < 3; ++y) {
                Qel32f* const taps = row(g, gradStep, y);
                storeThree(withTap(hn::LoadU(d, c + 4 * y), weight, loadThree(taps)), taps);
            }
        }
    }
}

}  // namespace

constexpr auto& ownSRHNCalcResidual_PSF2x2_8u32f_C1R = calcResidual<Qel8u, Residual_PSF2x2>;
constexpr auto& ownSRHNCalcResidual_PSF2x2_16u32f_C1R = calcResidual<Qel16u, Residual_PSF2x2>;
constexpr auto& ownSRHNCalcResidual_PSF3x3_8u32f_C1R = calcResidual<Qel8u, Residual_PSF3x3>;
constexpr auto& ownSRHNCalcResidual_PSF3x3_16u32f_C1R = calcResidual<Qel16u, Residual_PSF3x3>;
constexpr auto& ownSRHNUpdateGradient_PSF2x2_32f_C1R = updateGradient<kEntry_PSF2x2>;
constexpr auto& ownSRHNUpdateGradient_PSF3x3_32f_C1R = updateGradient<kEntry_PSF3x3>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownSRHNCalcResidual_PSF2x2_8u32f_C1R);
QEL_KERNEL(ownSRHNCalcResidual_PSF2x2_16u32f_C1R);
QEL_KERNEL(ownSRHNCalcResidual_PSF3x3_8u32f_C1R);
QEL_KERNEL(ownSRHNCalcResidual_PSF3x3_16u32f_C1R);
QEL_KERNEL(ownSRHNUpdateGradient_PSF2x2_32f_C1R);
QEL_KERNEL(ownSRHNUpdateGradient_PSF3x3_32f_C1R);
}  // namespace qel
#endif
