#ifndef QELCV_DETECT_INTEGRAL_KERNELS_H_
#define QELCV_DETECT_INTEGRAL_KERNELS_H_

#include "frame/image.h"
#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

// A table of sums: its rows, and the number that every element contains.
template <class T>
struct SumTable {
    T* p;
    int step;
    T offset;

    T* row(int y) const { return qel::row(p, step, y); }
};

// The kernels form the rows of a table below those that hold the offset alone: from row 1 on of an upright table, from
// row 2 on of a tilted one.
template <class T>
using IntegralKernel = void(Plane<const Qel8u> src, const SumTable<T>& sums, QelSize size);

template <class T, class Q>
using SqrIntegralKernel = void(Plane<const Qel8u> src, const SumTable<T>& sums, const SumTable<Q>& squares,
                               QelSize size);

extern const Kernel<IntegralKernel<Qel32s>> ownIntegral_8u32s_C1R_W7;
extern const Kernel<IntegralKernel<Qel32f>> ownIntegral_8u32f_C1R_W7;
extern const Kernel<SqrIntegralKernel<Qel32s, Qel32s>> ownSqrIntegral_8u32s_C1R_W7;
extern const Kernel<SqrIntegralKernel<Qel32s, Qel64f>> ownSqrIntegral_8u32s64f_C1R_W7;
extern const Kernel<SqrIntegralKernel<Qel32f, Qel64f>> ownSqrIntegral_8u32f64f_C1R_W7;

extern const Kernel<IntegralKernel<Qel32s>> ownTiltedIntegral_8u32s_C1R_W7;
extern const Kernel<IntegralKernel<Qel32f>> ownTiltedIntegral_8u32f_C1R_W7;
extern const Kernel<SqrIntegralKernel<Qel32s, Qel32s>> ownTiltedSqrIntegral_8u32s_C1R_W7;
extern const Kernel<SqrIntegralKernel<Qel32s, Qel64f>> ownTiltedSqrIntegral_8u32s64f_C1R_W7;
extern const Kernel<SqrIntegralKernel<Qel32f, Qel64f>> ownTiltedSqrIntegral_8u32f64f_C1R_W7;

}  // namespace qel

#endif
