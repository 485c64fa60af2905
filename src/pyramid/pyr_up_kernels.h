#ifndef QELCV_PYRAMID_PYR_UP_KERNELS_H_
#define QELCV_PYRAMID_PYR_UP_KERNELS_H_

#include <cstdint>

#include "frame/image.h"
#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

// A source of at least 2 by 2 pixels, doubled. The scratch has `scratchBytes` bytes from an address that suits a
// sample.
template <class T>
using PyrUpKernel = void(Plane<const T> src, Plane<T> dst, QelSize size, void* pScratch, int64_t scratchBytes);

extern const Kernel<PyrUpKernel<Qel8u>> ownPyrUpG5x5_8u_C1;
extern const Kernel<PyrUpKernel<Qel8u>> ownPyrUpG5x5_8u_C3;
extern const Kernel<PyrUpKernel<Qel8s>> ownPyrUpG5x5_8s_C1;
extern const Kernel<PyrUpKernel<Qel8s>> ownPyrUpG5x5_8s_C3;
extern const Kernel<PyrUpKernel<Qel32f>> ownPyrUpG5x5_32f_C1;
extern const Kernel<PyrUpKernel<Qel32f>> ownPyrUpG5x5_32f_C3;

}  // namespace qel

#endif
