#ifndef QELCV_STATS_FAST_ARCTAN_KERNELS_H_
#define QELCV_STATS_FAST_ARCTAN_KERNELS_H_

#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

using FastArctanKernel = void(const Qel32f* pSrcY, const Qel32f* pSrcX, Qel32f* pDst, int len);

extern const Kernel<FastArctanKernel> ownFastArctan_32f_A6;

}  // namespace qel

#endif
