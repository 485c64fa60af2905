#ifndef QELCV_MORPH_MORPH_GRAY_KERNELS_H_
#define QELCV_MORPH_MORPH_GRAY_KERNELS_H_

#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

// What is added to the samples, row by row, at any address. The anchor is one of the elements.
template <class Value>
struct GrayMask {
    const Value* pMaskValues;
    int maskWidth;
    int maskHeight;
    int anchorX;
    int anchorY;
};

// The extreme of the sums over the mask, for each pixel of a region whose edge samples are repeated without end. The
// images do not overlap.
template <class T, class Value>
using GrayMorphKernel = void(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize size,
                             const GrayMask<Value>& mask);

extern const Kernel<GrayMorphKernel<Qel8u, Qel32s>> ownGrayDilateBorder_8u_C1R;
extern const Kernel<GrayMorphKernel<Qel32f, Qel32f>> ownGrayDilateBorder_32f_C1R;
extern const Kernel<GrayMorphKernel<Qel8u, Qel32s>> ownGrayErodeBorder_8u_C1R;
extern const Kernel<GrayMorphKernel<Qel32f, Qel32f>> ownGrayErodeBorder_32f_C1R;

}  // namespace qel

#endif
