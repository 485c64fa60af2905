#ifndef QELCV_PYRAMID_SRHN_KERNELS_H_
#define QELCV_PYRAMID_SRHN_KERNELS_H_

#include <cstdint>

#include "frame/kernel.h"
#include "qelcv/pyramid.h"

namespace qel {

// Parallel arrays of `len` samples: where each one's taps begin, in elements of the image, and which taps they are.
struct TapList {
    const unsigned int* pOffsets;
    const Qel16u* pCoeffIdx;
    int len;
};

// Floats of an entry of the table: rows of three taps end in a zero.
constexpr int kEntry_PSF2x2 = 4, kEntry_PSF3x3 = 12;

template <class T>
using ResidualKernel = void(const Qel32f* pHR, int hrStep, const T* pLR, const TapList& list, Qel32f* pResidual,
                            const Qel32f* pCoeffs);
using GradientKernel = void(Qel32f* pGrad, int gradStep, const TapList& list, const Qel32f* pResidual,
                            const Qel8u* pWeightIdx, const Qel32f* pWeights, const Qel32f* pCoeffs);

extern const Kernel<ResidualKernel<Qel8u>> ownSRHNCalcResidual_PSF2x2_8u32f_C1R;
extern const Kernel<ResidualKernel<Qel16u>> ownSRHNCalcResidual_PSF2x2_16u32f_C1R;
extern const Kernel<ResidualKernel<Qel8u>> ownSRHNCalcResidual_PSF3x3_8u32f_C1R;
extern const Kernel<ResidualKernel<Qel16u>> ownSRHNCalcResidual_PSF3x3_16u32f_C1R;
extern const Kernel<GradientKernel> ownSRHNUpdateGradient_PSF2x2_32f_C1R;
extern const Kernel<GradientKernel> ownSRHNUpdateGradient_PSF3x3_32f_C1R;

}  // namespace qel

#endif
