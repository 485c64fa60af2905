#ifndef QELCV_FRAME_VECTOR_PRIMITIVES_KERNELS_H_
#define QELCV_FRAME_VECTOR_PRIMITIVES_KERNELS_H_

#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

extern const Kernel<void(const Qel8u* pSrc, Qel8u* pDst, size_t bytes)> ownsCopy_8u;
extern const Kernel<void(Qel8u value, Qel8u* pDst, size_t bytes)> ownsSet_8u;
extern const Kernel<void(Qel32s value, Qel32s* pDst, size_t count)> ownsSet_32s;
extern const Kernel<void(Qel8u* pDst, size_t bytes)> ownsZero_8u;

extern const Kernel<void(const Qel16u* pSrc, Qel32f* pDst, int len)> ownqelsCnvrt_16u32f;

template <class T>
using EveryKernel = void(const T* pSrc1, const T* pSrc2, T* pDst, int len);
template <class T>
using EveryInPlaceKernel = void(const T* pSrc, T* pSrcDst, int len);

// A len below 1 does nothing.
extern const Kernel<EveryKernel<Qel8u>> ownps_MinEvery_8u;
extern const Kernel<EveryKernel<Qel8u>> ownps_MaxEvery_8u;
extern const Kernel<EveryKernel<Qel32f>> ownps_MinEvery_32f;
extern const Kernel<EveryKernel<Qel32f>> ownps_MaxEvery_32f;
extern const Kernel<EveryInPlaceKernel<Qel8u>> ownps_MinEvery_8u_I;
extern const Kernel<EveryInPlaceKernel<Qel8u>> ownps_MaxEvery_8u_I;
extern const Kernel<EveryInPlaceKernel<Qel32f>> ownps_MinEvery_32f_I;
extern const Kernel<EveryInPlaceKernel<Qel32f>> ownps_MaxEvery_32f_I;

extern const Kernel<void(Qel32f value, Qel32f* pSrcDst, int len)> ownps_MulC_32f_I;

// Products divided by 2^shift, 1 to 30, or multiplied by 2^shift, 0 to 15.
using MulCShiftKernel = void(Qel16s value, Qel16s* pSrcDst, int len, int shift);
extern const Kernel<MulCShiftKernel> ownps_MulCRight_16s_I;
extern const Kernel<MulCShiftKernel> ownps_MulCLeft_16s_I;

// True where an element is negative.
extern const Kernel<bool(Qel32f* pSrcDst, int len)> ownps_Sqrt_32f_I;
extern const Kernel<bool(const Qel32s* pSrc, Qel16s* pDst, int len, Qel64f scale)> ownps_Sqrt_32s16s;

}  // namespace qel

#endif
