#ifndef QELCV_STATS_MIN_MAX_INDX_KERNELS_H_
#define QELCV_STATS_MIN_MAX_INDX_KERNELS_H_

#include <limits>

#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

// The smallest and the largest sample of some rows, and the first row that holds each. Only samples strictly beyond
// these initial values are recorded: a region whose smallest sample is 255, or infinity, keeps row 0.
template <class T>
struct Extremes {
    T low = std::numeric_limits<T>::max();
    T high = std::numeric_limits<T>::lowest();
    int lowRow = 0;
    int highRow = 0;
};

// Row phase. A NaN is never recorded. Forms without a mask ignore `mask`, forms of one channel ignore coi.
template <class T>
using ExtremesKernel = void(Plane<const T> src, Plane<const Qel8u> mask, QelSize size, int coi, Extremes<T>* pExtremes);

// Column phase: the first pixel of a row whose sample equals *pValue, which becomes that sample: of the two zeros, the
// one that comes first. Where none does, 0.
template <class T>
using ColumnKernel = int(const T* pSrc, const Qel8u* pMask, int width, int coi, T* pValue);

extern const Kernel<ExtremesKernel<Qel8u>> ownMinMaxIndx_8u_C1R_1;
extern const Kernel<ExtremesKernel<Qel8s>> ownMinMaxIndx_8s_C1R_1;
extern const Kernel<ExtremesKernel<Qel16u>> ownMinMaxIndx_16u_C1R_1;
extern const Kernel<ExtremesKernel<Qel32f>> ownMinMaxIndx_32f_C1R_1;
extern const Kernel<ExtremesKernel<Qel8u>> ownMinMaxIndx_8u_C3CR_1;
extern const Kernel<ExtremesKernel<Qel8s>> ownMinMaxIndx_8s_C3CR_1;
extern const Kernel<ExtremesKernel<Qel16u>> ownMinMaxIndx_16u_C3CR_1;
extern const Kernel<ExtremesKernel<Qel32f>> ownMinMaxIndx_32f_C3CR_1;
extern const Kernel<ExtremesKernel<Qel8u>> ownMinMaxIndx_8u_C1MR_1;
extern const Kernel<ExtremesKernel<Qel8s>> ownMinMaxIndx_8s_C1MR_1;
extern const Kernel<ExtremesKernel<Qel16u>> ownMinMaxIndx_16u_C1MR_1;
extern const Kernel<ExtremesKernel<Qel32f>> ownMinMaxIndx_32f_C1MR_1;
extern const Kernel<ExtremesKernel<Qel8u>> ownMinMaxIndx_8u_C3CMR_1;
extern const Kernel<ExtremesKernel<Qel8s>> ownMinMaxIndx_8s_C3CMR_1;
extern const Kernel<ExtremesKernel<Qel16u>> ownMinMaxIndx_16u_C3CMR_1;
extern const Kernel<ExtremesKernel<Qel32f>> ownMinMaxIndx_32f_C3CMR_1;

extern const Kernel<ColumnKernel<Qel8u>> ownMinMaxIndx_8u_C1R_2;
extern const Kernel<ColumnKernel<Qel8s>> ownMinMaxIndx_8s_C1R_2;
extern const Kernel<ColumnKernel<Qel16u>> ownMinMaxIndx_16u_C1R_2;
extern const Kernel<ColumnKernel<Qel32f>> ownMinMaxIndx_32f_C1R_2;
extern const Kernel<ColumnKernel<Qel8u>> ownMinMaxIndx_8u_C3CR_2;
extern const Kernel<ColumnKernel<Qel8s>> ownMinMaxIndx_8s_C3CR_2;
extern const Kernel<ColumnKernel<Qel16u>> ownMinMaxIndx_16u_C3CR_2;
extern const Kernel<ColumnKernel<Qel32f>> ownMinMaxIndx_32f_C3CR_2;
extern const Kernel<ColumnKernel<Qel8u>> ownMinMaxIndx_8u_C1MR_2;
extern const Kernel<ColumnKernel<Qel8s>> ownMinMaxIndx_8s_C1MR_2;
extern const Kernel<ColumnKernel<Qel16u>> ownMinMaxIndx_16u_C1MR_2;
extern const Kernel<ColumnKernel<Qel32f>> ownMinMaxIndx_32f_C1MR_2;
extern const Kernel<ColumnKernel<Qel8u>> ownMinMaxIndx_8u_C3CMR_2;
extern const Kernel<ColumnKernel<Qel8s>> ownMinMaxIndx_8s_C3CMR_2;
extern const Kernel<ColumnKernel<Qel16u>> ownMinMaxIndx_16u_C3CMR_2;
extern const Kernel<ColumnKernel<Qel32f>> ownMinMaxIndx_32f_C3CMR_2;

}  // namespace qel

#endif
