#ifndef QELCV_STATS_ABS_DIFF_KERNELS_H_
#define QELCV_STATS_ABS_DIFF_KERNELS_H_

#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

template <class T>
using AbsDiffKernel = void(const T* pSrc1, int src1Step, const T* pSrc2, int src2Step, T* pDst, int dstStep,
                           QelSize size);

template <class T>
using AbsDiffCKernel = void(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize size, T value);

extern const Kernel<AbsDiffKernel<Qel8u>> ownAbsDiff_8u_C1R_W7;
extern const Kernel<AbsDiffKernel<Qel8u>> ownAbsDiff_8u_C1R_W7_B;
extern const Kernel<AbsDiffKernel<Qel16u>> ownAbsDiff_16u_C1R_W7;
extern const Kernel<AbsDiffKernel<Qel16u>> ownAbsDiff_16u_C1R_W7_B;
extern const Kernel<AbsDiffKernel<Qel32f>> ownAbsDiff_32f_C1R_A6;
extern const Kernel<AbsDiffKernel<Qel32f>> ownAbsDiff_32f_C1R_A6_B;

extern const Kernel<AbsDiffCKernel<Qel8u>> ownAbsDiffC_8u_C1R_W7;
extern const Kernel<AbsDiffCKernel<Qel8u>> ownAbsDiffC_8u_C1R_W7_B;
extern const Kernel<AbsDiffCKernel<Qel16u>> ownAbsDiffC_16u_C1R_W7;
extern const Kernel<AbsDiffCKernel<Qel16u>> ownAbsDiffC_16u_C1R_W7_B;
extern const Kernel<AbsDiffCKernel<Qel32f>> ownAbsDiffC_32f_C1R_A6;
extern const Kernel<AbsDiffCKernel<Qel32f>> ownAbsDiffC_32f_C1R_A6_B;

}  // namespace qel

#endif
