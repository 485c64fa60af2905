#include "frame/vector_primitives.h"

#include <algorithm>
#include <cmath>

namespace qel {
namespace {

template <class T>
qelStatus everyInPlace(const Kernel<EveryInPlaceKernel<T>>& kernel, const T* pSrc, T* pSrcDst, int len) {
    const qelStatus status = Check().pointers(pSrc, pSrcDst).length(len).status();
    if (status == qelStatusOk) kernel(pSrc, pSrcDst, len);
    return status;
}

constexpr qelStatus sqrtStatus(bool negative) { return negative ? qelStatusSqrtNegative : qelStatusOk; }

}  // namespace

qelStatus qelsConvert_16u32f(const Qel16u* pSrc, Qel32f* pDst, int len) {
    const qelStatus status = Check().pointers(pSrc, pDst).length(len).status();
    if (status == qelStatusOk) ownqelsCnvrt_16u32f(pSrc, pDst, len);
    return status;
}

#define EVERY(name, T, kernel)                                         \
    qelStatus name(const T* pSrc1, const T* pSrc2, T* pDst, int len) { \
        kernel(pSrc1, pSrc2, pDst, len);                               \
        return qelStatusOk;                                            \
    }
EVERY(qelsMinEvery_8u, Qel8u, ownps_MinEvery_8u)
EVERY(qelsMaxEvery_8u, Qel8u, ownps_MaxEvery_8u)
EVERY(qelsMinEvery_32f, Qel32f, ownps_MinEvery_32f)
EVERY(qelsMaxEvery_32f, Qel32f, ownps_MaxEvery_32f)
#undef EVERY

#define EVERY_IN_PLACE(name, T, kernel) \
    qelStatus name(const T* pSrc, T* pSrcDst, int len) { return everyInPlace<T>(kernel, pSrc, pSrcDst, len); }
EVERY_IN_PLACE(qelsMinEvery_8u_I, Qel8u, ownps_MinEvery_8u_I)
EVERY_IN_PLACE(qelsMaxEvery_8u_I, Qel8u, ownps_MaxEvery_8u_I)
EVERY_IN_PLACE(qelsMinEvery_32f_I, Qel32f, ownps_MinEvery_32f_I)
EVERY_IN_PLACE(qelsMaxEvery_32f_I, Qel32f, ownps_MaxEvery_32f_I)
#undef EVERY_IN_PLACE

qelStatus qelsMulC_32f_I(Qel32f value, Qel32f* pSrcDst, int len) {
    const qelStatus status = Check().pointers(pSrcDst).length(len).status();
    if (status != qelStatusOk || value == 1.0F) return status;
    if (value == 0.0F) return qelsZero_32f(pSrcDst, len);
    ownps_MulC_32f_I(value, pSrcDst, len);
    return qelStatusOk;
}

qelStatus qelsMulC_16s_ISfs(Qel16s value, Qel16s* pSrcDst, int len, int scaleFactor) {
    const qelStatus status = Check().pointers(pSrcDst).length(len).status();
    if (status != qelStatusOk || (value == 1 && scaleFactor == 0)) return status;
    if (value == 0 || scaleFactor > 30) return qelsZero_16s(pSrcDst, len);
    if (scaleFactor > 0) {
        ownps_MulCRight_16s_I(value, pSrcDst, len, scaleFactor);
    } else {
        // 15 places saturate any product but 0; more of them are no different.
        ownps_MulCLeft_16s_I(value, pSrcDst, len, -std::max(scaleFactor, -15));
    }
    return qelStatusOk;
}

qelStatus qelsSqrt_32f_I(Qel32f* pSrcDst, int len) {
    const qelStatus status = Check().pointers(pSrcDst).length(len).status();
    if (status != qelStatusOk) return status;
    return sqrtStatus(ownps_Sqrt_32f_I(pSrcDst, len));
}

qelStatus qelsSqrt_32s16s_Sfs(const Qel32s* pSrc, Qel16s* pDst, int len, int scaleFactor) {
    const qelStatus status = Check().pointers(pSrc, pDst).length(len).status();
    if (status != qelStatusOk) return status;
    // From the ends on every positive root saturates or rounds to 0.
    static_assert(32767 < 32768 && 46341 < 1 << 16);
    return sqrtStatus(ownps_Sqrt_32s16s(pSrc, pDst, len, std::ldexp(1.0, -std::clamp(scaleFactor, -15, 17))));
}

}  // namespace qel
