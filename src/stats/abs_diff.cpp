#include <algorithm>
#include <limits>

#include "frame/check.h"
#include "frame/rows.h"
#include "qelcv/stats.h"
#include "stats/abs_diff_kernels.h"

namespace qel {
namespace {

template <class T, class Kernels>
qelStatus absDiff(const T* pSrc1, int src1Step, const T* pSrc2, int src2Step, T* pDst, int dstStep, QelSize roiSize,
                  int channels, const Kernels& kernels) {
    const qelStatus status = Check()
                                 .pointers(pSrc1, pSrc2, pDst)
                                 .size(roiSize)
                                 .steps(rowOf<T>(roiSize.width, channels), src1Step, src2Step, dstStep)
                                 .status();
    if (status != qelStatusOk) return status;

    const QelSize size = samples(roiSize, channels);
    forRows(size, kElementwise.reachedBy(size), [&](const Share& s) {
        AbsDiffKernel<T>* const kernel = pick(kernels, s.size);
        kernel(row(pSrc1, src1Step, s.y), src1Step, row(pSrc2, src2Step, s.y), src2Step, row(pDst, dstStep, s.y),
               dstStep, s.size);
    });
    return qelStatusOk;
}

template <class T, class Kernels>
qelStatus absDiffC(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize roiSize, T value, const Kernels& kernels) {
    const qelStatus status =
        Check().pointers(pSrc, pDst).size(roiSize).steps(rowOf<T>(roiSize.width), srcStep, dstStep).status();
    if (status != qelStatusOk) return status;

    forRows(roiSize, kElementwise.reachedBy(roiSize), [&](const Share& s) {
        AbsDiffCKernel<T>* const kernel = pick(kernels, s.size);
        kernel(row(pSrc, srcStep, s.y), srcStep, row(pDst, dstStep, s.y), dstStep, s.size, value);
    });
    return qelStatusOk;
}

// The constant as a sample: integers are clamped, 32f is taken as it is.
template <class T, class Value>
T sampleOf(Value value) {
    if constexpr (std::is_integral_v<T>) {
        return static_cast<T>(std::clamp<Value>(value, 0, std::numeric_limits<T>::max()));
    } else {
        return value;
    }
}

}  // namespace
}  // namespace qel

#define ABS_DIFF(name, T, channels, ...)                                                                      \
    qelStatus name(const T* pSrc1, int src1Step, const T* pSrc2, int src2Step, T* pDst, int dstStep,          \
                   QelSize roiSize) {                                                                         \
        return qel::absDiff(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep, roiSize, channels, __VA_ARGS__); \
    }
ABS_DIFF(qeliAbsDiff_8u_C1R, Qel8u, 1, qel::ByVolume{qel::ownAbsDiff_8u_C1R_W7, qel::ownAbsDiff_8u_C1R_W7_B, 3})
ABS_DIFF(qeliAbsDiff_8u_C3R, Qel8u, 3, qel::ByVolume{qel::ownAbsDiff_8u_C1R_W7, qel::ownAbsDiff_8u_C1R_W7_B, 3})
ABS_DIFF(qeliAbsDiff_16u_C1R, Qel16u, 1, qel::ByVolume{qel::ownAbsDiff_16u_C1R_W7, qel::ownAbsDiff_16u_C1R_W7_B, 6})
ABS_DIFF(qeliAbsDiff_32f_C1R, Qel32f, 1, qel::ByVolume{qel::ownAbsDiff_32f_C1R_A6, qel::ownAbsDiff_32f_C1R_A6_B, 12})
#undef ABS_DIFF

// 16u counts 6 bytes per pixel here too, although only two images of 2 bytes are touched: the choice is part of the
// contract, and shared with the form of two images.
#define ABS_DIFF_C(name, T, Value, ...)                                                                    \
    qelStatus name(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize roiSize, Value value) {       \
        return qel::absDiffC(pSrc, srcStep, pDst, dstStep, roiSize, qel::sampleOf<T>(value), __VA_ARGS__); \
    }
ABS_DIFF_C(qeliAbsDiffC_8u_C1R, Qel8u, int, qel::ByVolume{qel::ownAbsDiffC_8u_C1R_W7, qel::ownAbsDiffC_8u_C1R_W7_B, 2})
ABS_DIFF_C(qeliAbsDiffC_16u_C1R, Qel16u, int,
           qel::ByVolume{qel::ownAbsDiffC_16u_C1R_W7, qel::ownAbsDiffC_16u_C1R_W7_B, 6})
ABS_DIFF_C(qeliAbsDiffC_32f_C1R, Qel32f, Qel32f,
           qel::ByVolume{qel::ownAbsDiffC_32f_C1R_A6, qel::ownAbsDiffC_32f_C1R_A6_B, 8})
#undef ABS_DIFF_C
