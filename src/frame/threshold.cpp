#include "frame/check.h"
#include "frame/image_primitives.h"
#include "frame/image_primitives_kernels.h"

namespace qel {
namespace {

template <class T>
Check checked(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize roiSize) {
    return Check().pointers(pSrc, pDst).size(roiSize).positiveSteps(srcStep, dstStep);
}

bool known(int compare) { return compare == kCompareLess || compare == kCompareGreater; }

struct ThresholdValKernels16u {
    const Kernel<ThresholdValKernel<Qel16u>>& plain;
    const Kernel<ThresholdValKernel<Qel16u>>& streaming;
};
constexpr ThresholdValKernels16u kGreater16u = {owniThreshold_GTVal_16u_C1R, owniThreshold_GTVal_16u_C1R_B};
constexpr ThresholdValKernels16u kLess16u = {owniThreshold_LTVal_16u_C1R, owniThreshold_LTVal_16u_C1R_B};

// An image of its own bypasses the cache where it is large and would fill more than half of it.
const Kernel<ThresholdValKernel<Qel16u>>& choose(const ThresholdValKernels16u& kernels, bool inPlace, QelSize roi) {
    const int64_t bytes = 2LL * roi.width * roi.height;
    return !inPlace && bytes > 0x40000 && bytes > owncvGetCacheSize() / 2 ? kernels.streaming : kernels.plain;
}

const Kernel<ThresholdValKernel<Qel8u>>& choose(const Kernel<ThresholdValKernel<Qel8u>>& kernel, bool, QelSize) {
    return kernel;
}

template <class T, class Kernels>
qelStatus thresholdVal(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize roiSize, T threshold, T value,
                       const Kernels& kernels) {
    const qelStatus status = checked(pSrc, srcStep, pDst, dstStep, roiSize).status();
    if (status != qelStatusOk) return status;
    choose(kernels, pSrc == pDst, roiSize)(pSrc, srcStep, pDst, dstStep, roiSize, threshold, value);
    return qelStatusOk;
}

}  // namespace

#define THRESHOLD_GT_VAL(name, nameInPlace, T, kernels)                                                       \
    qelStatus name(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize roiSize, T threshold, T value) { \
        return thresholdVal(pSrc, srcStep, pDst, dstStep, roiSize, threshold, value, kernels);                \
    }                                                                                                         \
    qelStatus nameInPlace(T* pSrcDst, int srcDstStep, QelSize roiSize, T threshold, T value) {                \
        return thresholdVal<T>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, threshold, value, kernels); \
    }
THRESHOLD_GT_VAL(qeliThreshold_GTVal_8u_C1R, qeliThreshold_GTVal_8u_C1IR, Qel8u, owniThreshold_GTVal_8u_C1R)
THRESHOLD_GT_VAL(qeliThreshold_GTVal_16u_C1R, qeliThreshold_GTVal_16u_C1IR, Qel16u, kGreater16u)
#undef THRESHOLD_GT_VAL

#define THRESHOLD_VAL(name, T, less, greater)                                                               \
    qelStatus name(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize roiSize, T threshold, T value, \
                   int compare) {                                                                           \
        if (!known(compare)) return qelStatusBadCompareOp;                                                  \
        return thresholdVal(pSrc, srcStep, pDst, dstStep, roiSize, threshold, value,                        \
                            compare == kCompareLess ? less : greater);                                      \
    }
THRESHOLD_VAL(qeliThreshold_Val_8u_C1R, Qel8u, owniThreshold_LTVal_8u_C1R, owniThreshold_GTVal_8u_C1R)
THRESHOLD_VAL(qeliThreshold_Val_16u_C1R, Qel16u, kLess16u, kGreater16u)
#undef THRESHOLD_VAL

qelStatus qeliThreshold_LT_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep, QelSize roiSize,
                                   Qel32f threshold) {
    return qeliThreshold_32f_C1R(pSrc, srcStep, pDst, dstStep, roiSize, threshold, kCompareLess);
}

qelStatus qeliThreshold_LT_32f_C1IR(Qel32f* pSrcDst, int srcDstStep, QelSize roiSize, Qel32f threshold) {
    return qeliThreshold_LT_32f_C1R(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, threshold);
}

qelStatus qeliThreshold_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep, QelSize roiSize,
                                Qel32f threshold, int compare) {
    const qelStatus status =
        checked(pSrc, srcStep, pDst, dstStep, roiSize).require(known(compare), qelStatusBadCompareOp).status();
    if (status != qelStatusOk) return status;
    const auto& kernel = compare == kCompareLess ? owniThreshold_LT_32f_C1R : owniThreshold_GT_32f_C1R;
    kernel(pSrc, srcStep, pDst, dstStep, roiSize, threshold);
    return qelStatusOk;
}

}  // namespace qel
