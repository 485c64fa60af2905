#ifndef QELCV_FEATURE_EIGEN_KERNELS_H_
#define QELCV_FEATURE_EIGEN_KERNELS_H_

#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

enum KernType { kSobel, kScharr };

// How to measure: by which derivatives, over which window.
struct EigenForm {
    int kernType;
    int apertureSize;
    int avgWindow;

    // 32f has the range of 8u.
    Qel32f scale() const {
        const Qel32f scale = 1.0F / (255.0F * static_cast<Qel32f>(1 << (2 * apertureSize - 2)));
        return kernType == kScharr ? scale * 0.612500012F : scale;
    }
    // Sobel's filter points against the x axis.
    Qel32f sign() const { return kernType == kSobel ? -1.0F : 1.0F; }
};

// A row of the symmetric matrices {dxx, dxy; dxy, dyy}, or of sums of them along the row, is three rows one behind the
// other, this many samples apart: each begins with a line of the cache if the first does.
constexpr int gradientStride(int width) { return (width + 15) & ~15; }

// Rows for the derivatives of one row, with room for kMargin samples ahead of each and behind it.
struct DerivativeRows {
    static constexpr int kMargin = 16;
    Qel32f* dx;
    Qel32f* dy;
};

// From the rows of the source that a mask covers, form.apertureSize pointers, to the sums of dx * dx, dx * dy and
// dy * dy over a window along the row, in single precision. Pixels beyond the ends of a row are those at its ends.
template <class Src>
using GradientSumsKernel = void(const Src* const* pRows, Qel32f* pSums, int width, const EigenForm& form,
                                const DerivativeRows& derivatives);
extern const Kernel<GradientSumsKernel<Qel8u>> ownMinEigenVal_16s32f_C1R_W7;
extern const Kernel<GradientSumsKernel<Qel32f>> ownMinEigenVal_32f_C1R_W7;

// A row of results from the rows of sums that a window covers, form.avgWindow pointers: the smaller eigenvalue of each
// matrix of means, or six numbers, whose stores may bypass the cache.
using EigenKernel = void(const Qel32f* const* pSums, Qel32f* pDst, int width, const EigenForm& form,
                         bool bypassesCache);
extern const Kernel<EigenKernel> owncalcMinValues_W7;
extern const Kernel<EigenKernel> calcValues;

}  // namespace qel

#endif
