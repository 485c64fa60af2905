#ifndef QELCV_FRAME_IMAGE_PRIMITIVES_KERNELS_H_
#define QELCV_FRAME_IMAGE_PRIMITIVES_KERNELS_H_

#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

// Stores that bypass the cache.
extern const Kernel<void(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep, size_t rowBytes, int rows)>
    owniCopy_8u_C1_W7;
extern const Kernel<void(Qel8u value, Qel8u* pDst, int dstStep, size_t rowBytes, int rows)> owniSet_8u_C1_W7;

template <class T>
using ThresholdValKernel = void(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize size, T threshold, T value);

extern const Kernel<ThresholdValKernel<Qel8u>> owniThreshold_GTVal_8u_C1R;
extern const Kernel<ThresholdValKernel<Qel8u>> owniThreshold_LTVal_8u_C1R;
extern const Kernel<ThresholdValKernel<Qel16u>> owniThreshold_GTVal_16u_C1R;
extern const Kernel<ThresholdValKernel<Qel16u>> owniThreshold_LTVal_16u_C1R;
extern const Kernel<ThresholdValKernel<Qel16u>> owniThreshold_GTVal_16u_C1R_B;
extern const Kernel<ThresholdValKernel<Qel16u>> owniThreshold_LTVal_16u_C1R_B;

using ThresholdKernel = void(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep, QelSize size,
                             Qel32f threshold);

extern const Kernel<ThresholdKernel> owniThreshold_LT_32f_C1R;
extern const Kernel<ThresholdKernel> owniThreshold_GT_32f_C1R;

using SubKernel = void(const Qel32f* pSrc1, const Qel32f* pSrc2, Qel32f* pDst, int len);
extern const Kernel<SubKernel> ownps_Sub_32f;

// Differences multiplied by 2^shift, 0 to 8, or divided by 2^shift, 1 to 8.
using SubShiftKernel = void(const Qel8u* pSrc1, const Qel8u* pSrc2, Qel8u* pDst, int len, int shift);
extern const Kernel<SubShiftKernel> ownps_Sub_8u;
extern const Kernel<SubShiftKernel> ownps_SubLeft_8u;
extern const Kernel<SubShiftKernel> ownps_SubRight_8u;

}  // namespace qel

#endif
