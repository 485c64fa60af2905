#include "frame/check.h"
#include "qelcv/stats.h"
#include "stats/fast_arctan_kernels.h"

qelStatus qelibFastArctan_32f(const Qel32f* pSrcY, const Qel32f* pSrcX, Qel32f* pDst, int len) {
    const qelStatus status = qel::Check().pointers(pSrcY, pSrcX, pDst).length(len).status();
    if (status != qelStatusOk) return status;

    qel::ownFastArctan_32f_A6(pSrcY, pSrcX, pDst, len);
    return qelStatusOk;
}
