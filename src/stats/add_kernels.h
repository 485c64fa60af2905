#ifndef QELCV_STATS_ADD_KERNELS_H_
#define QELCV_STATS_ADD_KERNELS_H_

#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

template <class T>
using AddKernel = void(const T* pSrc, int srcStep, Qel32f* pSrcDst, int srcDstStep, QelSize size);

template <class T>
using AddMaskedKernel = void(const T* pSrc, int srcStep, const Qel8u* pMask, int maskStep, Qel32f* pSrcDst,
                             int srcDstStep, QelSize size);

template <class T>
using AddProductKernel = void(const T* pSrc1, int src1Step, const T* pSrc2, int src2Step, Qel32f* pSrcDst,
                              int srcDstStep, QelSize size);

// With nonTemporal, 1 or 0, stores bypass the cache.
template <class T>
using AddProductMaskedKernel = void(const T* pSrc1, int src1Step, const T* pSrc2, int src2Step, const Qel8u* pMask,
                                    int maskStep, Qel32f* pSrcDst, int srcDstStep, QelSize size, int nonTemporal);

template <class T>
using AddWeightedKernel = void(const T* pSrc, int srcStep, Qel32f* pSrcDst, int srcDstStep, QelSize size, Qel32f alpha);

template <class T>
using AddWeightedMaskedKernel = void(const T* pSrc, int srcStep, const Qel8u* pMask, int maskStep, Qel32f* pSrcDst,
                                     int srcDstStep, QelSize size, Qel32f alpha, int nonTemporal);

using AddWeightedTwoKernel = void(const Qel32f* pSrc1, int src1Step, const Qel32f* pSrc2, int src2Step, Qel32f* pDst,
                                  int dstStep, QelSize size, Qel32f alpha);

extern const Kernel<AddKernel<Qel8u>> ownAdd_8u32f_C1IR_W7;
extern const Kernel<AddKernel<Qel8s>> ownAdd_8s32f_C1IR_W7;
extern const Kernel<AddKernel<Qel16u>> ownAdd_16u32f_C1IR_W7;
extern const Kernel<AddMaskedKernel<Qel8u>> ownAdd_8u32f_C1IMR_W7;
extern const Kernel<AddMaskedKernel<Qel8s>> ownAdd_8s32f_C1IMR_W7;
extern const Kernel<AddMaskedKernel<Qel16u>> ownAdd_16u32f_C1IMR_W7;
extern const Kernel<AddMaskedKernel<Qel32f>> ownAdd_32f_C1IMR_W7;

extern const Kernel<AddKernel<Qel8u>> ownAddSquare_8u32f_C1IR_W7;
extern const Kernel<AddKernel<Qel8s>> ownAddSquare_8s32f_C1IR_W7;
extern const Kernel<AddKernel<Qel16u>> ownAddSquare_16u32f_C1IR_W7;
extern const Kernel<AddKernel<Qel32f>> ownAddSquare_32f_C1IR_W7;
extern const Kernel<AddMaskedKernel<Qel8u>> ownAddSquare_8u32f_C1IMR_W7;
extern const Kernel<AddMaskedKernel<Qel8s>> ownAddSquare_8s32f_C1IMR_W7;
extern const Kernel<AddMaskedKernel<Qel16u>> ownAddSquare_16u32f_C1IMR_W7;
extern const Kernel<AddMaskedKernel<Qel32f>> ownAddSquare_32f_C1IMR_W7;

extern const Kernel<AddProductKernel<Qel8u>> ownAddProduct_8u32f_C1IR_W7;
extern const Kernel<AddProductKernel<Qel8s>> ownAddProduct_8s32f_C1IR_W7;
extern const Kernel<AddProductKernel<Qel16u>> ownAddProduct_16u32f_C1IR_W7;
extern const Kernel<AddProductKernel<Qel32f>> ownAddProduct_32f_C1IR_W7;
extern const Kernel<AddProductMaskedKernel<Qel8u>> ownAddProduct_8u32f_C1IMR_W7;
extern const Kernel<AddProductMaskedKernel<Qel8s>> ownAddProduct_8s32f_C1IMR_W7;
extern const Kernel<AddProductMaskedKernel<Qel16u>> ownAddProduct_16u32f_C1IMR_W7;
extern const Kernel<AddProductMaskedKernel<Qel32f>> ownAddProduct_32f_C1IMR_W7;

extern const Kernel<AddWeightedKernel<Qel8u>> ownAddWeighted_8u32f_C1IR_W7;
extern const Kernel<AddWeightedKernel<Qel8s>> ownAddWeighted_8s32f_C1IR_W7;
extern const Kernel<AddWeightedKernel<Qel16u>> ownAddWeighted_16u32f_C1IR_W7;
extern const Kernel<AddWeightedKernel<Qel32f>> ownAddWeighted_32f_C1IR_W7;
extern const Kernel<AddWeightedMaskedKernel<Qel8u>> ownAddWeighted_8u32f_C1IMR_W7;
extern const Kernel<AddWeightedMaskedKernel<Qel8s>> ownAddWeighted_8s32f_C1IMR_W7;
extern const Kernel<AddWeightedMaskedKernel<Qel16u>> ownAddWeighted_16u32f_C1IMR_W7;
extern const Kernel<AddWeightedMaskedKernel<Qel32f>> ownAddWeighted_32f_C1IMR_W7;
extern const Kernel<AddWeightedTwoKernel> ownvcAddWeighted_32f_C1R;

}  // namespace qel

#endif
