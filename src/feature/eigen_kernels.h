#ifndef QELCV_FEATURE_EIGEN_KERNELS_H_
#define QELCV_FEATURE_EIGEN_KERNELS_H_

#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

// A row of the symmetric matrices {dxx, dxy; dxy, dyy}: products of derivatives, or averages of them.
template <class T>
struct GradientRow {
    T* dxx;
    T* dxy;
    T* dyy;
};

// dx * dx, dx * dy and dy * dy in single precision.
template <class T>
using GradientProductsKernel = void(const T* pDx, const T* pDy, const GradientRow<Qel32f>& products, int width);
extern const Kernel<GradientProductsKernel<Qel16s>> ownMinEigenVal_16s32f_C1R_W7;
extern const Kernel<GradientProductsKernel<Qel32f>> ownMinEigenVal_32f_C1R_W7;

// Results of a row of matrices, times `scale`: the smaller eigenvalue of each, or six numbers, where the eigenvectors
// are turned by `sign`.
using EigenKernel = void(const GradientRow<const Qel32f>& matrices, Qel32f* pDst, int width, Qel32f scale, Qel32f sign);
extern const Kernel<EigenKernel> owncalcMinValues_W7;
extern const Kernel<EigenKernel> calcValues;

}  // namespace qel

#endif
