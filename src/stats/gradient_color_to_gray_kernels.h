#ifndef QELCV_STATS_GRADIENT_COLOR_TO_GRAY_KERNELS_H_
#define QELCV_STATS_GRADIENT_COLOR_TO_GRAY_KERNELS_H_

#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

// Handles as many rows as lie from startRow up to endRow, the first of them the one that the pointers say: they are
// not advanced by startRow.
template <class T>
using GradientKernel = void(const T* pSrc, int srcStep, T* pDst, int dstStep, int width, int startRow, int endRow);

extern const Kernel<GradientKernel<Qel8u>> ownGradInf_8u_C3C1R;
extern const Kernel<GradientKernel<Qel8u>> ownGradL1_8u_C3C1R;
extern const Kernel<GradientKernel<Qel8u>> ownGradL2_8u_C3C1R;
extern const Kernel<GradientKernel<Qel16u>> ownGradInf_16u_C3C1R;
extern const Kernel<GradientKernel<Qel16u>> ownGradL1_16u_C3C1R;
extern const Kernel<GradientKernel<Qel16u>> ownGradL2_16u_C3C1R;
extern const Kernel<GradientKernel<Qel32f>> ownGradInf_32f_C3C1R;
extern const Kernel<GradientKernel<Qel32f>> ownGradL1_32f_C3C1R;
extern const Kernel<GradientKernel<Qel32f>> ownGradL2_32f_C3C1R;

}  // namespace qel

#endif
