#ifndef QELCV_STATS_MOTION_HISTORY_KERNELS_H_
#define QELCV_STATS_MOTION_HISTORY_KERNELS_H_

#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

// History values below `limit` end where nothing moves.
template <class T>
using UpdateMotionHistoryKernel = void(const T* pSilhouette, int silhStep, Qel32f* pMHI, int mhiStep, QelSize size,
                                       Qel32f timeStamp, Qel32f limit);

extern const Kernel<UpdateMotionHistoryKernel<Qel8u>> ownUpdateMotionHistory_8u32f_C1IR_W7;
extern const Kernel<UpdateMotionHistoryKernel<Qel16u>> ownUpdateMotionHistory_16u32f_C1IR_W7;
extern const Kernel<UpdateMotionHistoryKernel<Qel32f>> ownUpdateMotionHistory_32f_C1IR_W7;

}  // namespace qel

#endif
