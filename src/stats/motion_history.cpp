#include "frame/check.h"
#include "qelcv/stats.h"
#include "stats/motion_history_kernels.h"

namespace qel {
namespace {

template <class T>
qelStatus updateMotionHistory(const T* pSilhouette, int silhStep, Qel32f* pMHI, int mhiStep, QelSize roiSize,
                              Qel32f timeStamp, Qel32f mhiDuration,
                              const Kernel<UpdateMotionHistoryKernel<T>>& kernel) {
    const RowOf silhouette = rowOf<T>(roiSize.width);
    const RowOf history = rowOf<Qel32f>(roiSize.width);
    const qelStatus status = Check()
                                 .pointers(pSilhouette, pMHI)
                                 .size(roiSize)
                                 .stepSizes(silhouette, silhStep)
                                 .stepSizes(history, mhiStep)
                                 .stepAlignments(silhouette, silhStep)
                                 .stepAlignments(history, mhiStep)
                                 .require(!(mhiDuration < 0), qelStatusOutOfRange)
                                 .status();
    if (status != qelStatusOk) return status;

    kernel(pSilhouette, silhStep, pMHI, mhiStep, roiSize, timeStamp, timeStamp - mhiDuration);
    return qelStatusOk;
}

}  // namespace
}  // namespace qel

#define UPDATE_MOTION_HISTORY(name, T, kernel)                                                                       \
    qelStatus name(const T* pSilhouette, int silhStep, Qel32f* pMHI, int mhiStep, QelSize roiSize, Qel32f timeStamp, \
                   Qel32f mhiDuration) {                                                                             \
        return qel::updateMotionHistory(pSilhouette, silhStep, pMHI, mhiStep, roiSize, timeStamp, mhiDuration,       \
                                        kernel);                                                                     \
    }
UPDATE_MOTION_HISTORY(qeliUpdateMotionHistory_8u32f_C1IR, Qel8u, qel::ownUpdateMotionHistory_8u32f_C1IR_W7)
UPDATE_MOTION_HISTORY(qeliUpdateMotionHistory_16u32f_C1IR, Qel16u, qel::ownUpdateMotionHistory_16u32f_C1IR_W7)
UPDATE_MOTION_HISTORY(qeliUpdateMotionHistory_32f_C1IR, Qel32f, qel::ownUpdateMotionHistory_32f_C1IR_W7)
#undef UPDATE_MOTION_HISTORY
