#include "pyramid/srhn_kernels.h"

#include "frame/image.h"

#define HWY_TARGET_INCLUDE "pyramid/srhn_kernels.cpp"
#include "frame/simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

using D2 = hn::Full64<Qel32f>;
using D1 = hn::Full32<Qel32f>;

// The sum over the taps less what was observed, which is taken off behind the first tap. One tap after the other: the
// order is part of the result, samples overlap each other's waits, and turning the taps of several samples into vectors
// takes longer than the sums.
HWY_INLINE Qel32f residual_PSF2x2(const Qel32f* p, int step, const Qel32f* c, Qel32f lr) {
    const Qel32f* q = row(p, step, 1);
    return p[0] * c[0] - lr + p[1] * c[1] + q[0] * c[2] + q[1] * c[3];
}
HWY_INLINE Qel32f residual_PSF3x3(const Qel32f* p, int step, const Qel32f* c, Qel32f lr) {
    const Qel32f *q = row(p, step, 1), *r = row(p, step, 2);
    return p[0] * c[0] - lr + p[1] * c[1] + p[2] * c[2] + q[0] * c[4] + q[1] * c[5] + q[2] * c[6] + r[0] * c[8] +
           r[1] * c[9] + r[2] * c[10];
}

template <class T, int kEntry>
void calcResidual(const Qel32f* pHR, int hrStep, const T* pLR, const TapList& list, Qel32f* pResidual,
                  const Qel32f* pCoeffs) {
    const TapList l = list;
    for (int i = 0; i < l.len; ++i) {
        const Qel32f* const p = pHR + size_t{l.pOffsets[i]};
        const Qel32f* const c = pCoeffs + size_t{l.pCoeffIdx[i]} * kEntry;
        const Qel32f lr = static_cast<Qel32f>(pLR[i]);
        if constexpr (kEntry == kEntry_PSF2x2) pResidual[i] = residual_PSF2x2(p, hrStep, c, lr);
        if constexpr (kEntry == kEntry_PSF3x3) pResidual[i] = residual_PSF3x3(p, hrStep, c, lr);
    }
}

// Taps that lie side by side, as many as there are lanes.
template <class D>
HWY_INLINE void addTaps(D d, const Qel32f* c, Qel32f weight, Qel32f* g) {
    hn::StoreU(hn::Add(hn::Mul(hn::LoadU(d, c), hn::Set(d, weight)), hn::LoadU(d, g)), d, g);
}

// One sample after the other: two of them may meet in a pixel. Of three taps the first goes by itself, since it is the
// one that the sample before, two pixels to the left, has just stored: read back alone it need not wait.
template <int kEntry>
void updateGradient(Qel32f* pGrad, int gradStep, const TapList& list, const Qel32f* pResidual, const Qel8u* pWeightIdx,
                    const Qel32f* pWeights, const Qel32f* pCoeffs) {
    const TapList l = list;
    for (int i = 0; i < l.len; ++i) {
        Qel32f* const g = pGrad + size_t{l.pOffsets[i]};
        const Qel32f* const c = pCoeffs + size_t{l.pCoeffIdx[i]} * kEntry;
        const Qel32f weight = pWeights[pWeightIdx[i]] * pResidual[i];
        if constexpr (kEntry == kEntry_PSF2x2) {
            addTaps(D2(), c, weight, g);
            addTaps(D2(), c + 2, weight, row(g, gradStep, 1));
        } else {
            for (int y = 0; y < 3; ++y) {
                Qel32f* const taps = row(g, gradStep, y);
                addTaps(D1(), c + 4 * y, weight, taps);
                addTaps(D2(), c + 4 * y + 1, weight, taps + 1);
            }
        }
    }
}

}  // namespace

constexpr auto& ownSRHNCalcResidual_PSF2x2_8u32f_C1R = calcResidual<Qel8u, kEntry_PSF2x2>;
constexpr auto& ownSRHNCalcResidual_PSF2x2_16u32f_C1R = calcResidual<Qel16u, kEntry_PSF2x2>;
constexpr auto& ownSRHNCalcResidual_PSF3x3_8u32f_C1R = calcResidual<Qel8u, kEntry_PSF3x3>;
constexpr auto& ownSRHNCalcResidual_PSF3x3_16u32f_C1R = calcResidual<Qel16u, kEntry_PSF3x3>;
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
