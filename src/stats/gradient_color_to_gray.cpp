#include "frame/check.h"
#include "frame/image.h"
#include "qelcv/stats.h"
#include "stats/gradient_color_to_gray_kernels.h"

namespace qel {
namespace {

// The kernels of a sample type by the number of their norm.
template <class T>
using ByNorm = const Kernel<GradientKernel<T>>* const[3];

constexpr ByNorm<Qel8u> owntabGrad_8u_C3C1R = {&ownGradInf_8u_C3C1R, &ownGradL1_8u_C3C1R, &ownGradL2_8u_C3C1R};
constexpr ByNorm<Qel16u> owntabGrad_16u_C3C1R = {&ownGradInf_16u_C3C1R, &ownGradL1_16u_C3C1R, &ownGradL2_16u_C3C1R};
constexpr ByNorm<Qel32f> owntabGrad_32f_C3C1R = {&ownGradInf_32f_C3C1R, &ownGradL1_32f_C3C1R, &ownGradL2_32f_C3C1R};

template <class T>
qelStatus gradientColorToGray(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize roiSize, int norm,
                              const ByNorm<T>& kernels) {
    const RowOf src = rowOf<T>(roiSize.width, 3);
    const RowOf dst = rowOf<T>(roiSize.width);
    const qelStatus status = Check()
                                 .pointers(pSrc, pDst)
                                 .size(roiSize)
                                 .stepSizes(src, srcStep)
                                 .stepSizes(dst, dstStep)
                                 .stepAlignments(src, srcStep)
                                 .stepAlignments(dst, dstStep)
                                 .require(norm >= 0 && norm <= 2, qelStatusBadArg)
                                 .status();
    if (status != qelStatusOk) return status;

    (*kernels[norm])(pSrc, srcStep, pDst, dstStep, roiSize.width, 0, roiSize.height);
    return qelStatusOk;
}

}  // namespace
}  // namespace qel

#define GRADIENT_COLOR_TO_GRAY(name, T, kernels)                                                  \
    qelStatus name(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize roiSize, int norm) { \
        return qel::gradientColorToGray(pSrc, srcStep, pDst, dstStep, roiSize, norm, kernels);    \
    }
GRADIENT_COLOR_TO_GRAY(qeliGradientColorToGray_8u_C3C1R, Qel8u, qel::owntabGrad_8u_C3C1R)
GRADIENT_COLOR_TO_GRAY(qeliGradientColorToGray_16u_C3C1R, Qel16u, qel::owntabGrad_16u_C3C1R)
GRADIENT_COLOR_TO_GRAY(qeliGradientColorToGray_32f_C3C1R, Qel32f, qel::owntabGrad_32f_C3C1R)
#undef GRADIENT_COLOR_TO_GRAY
