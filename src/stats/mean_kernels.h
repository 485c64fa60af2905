#ifndef QELCV_STATS_MEAN_KERNELS_H_
#define QELCV_STATS_MEAN_KERNELS_H_

#include <cstdint>

#include "frame/image.h"
#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

// The samples that a sum runs over: one channel of a region, where the mask is not zero.
template <class T>
struct Samples {
    Plane<const T> src;
    Plane<const Qel8u> mask;  // null where all pixels count
    QelSize roiSize;
    int coi;  // 1, 2 or 3; 1 where there is but one channel

    // A band of whole rows.
    Samples rows(int y, int height) const {
        return {src.from(y), mask.p == nullptr ? mask : mask.from(y), {roiSize.width, height}, coi};
    }
};

struct Sums {
    Qel64f sum = 0;
    Qel64f squares = 0;  // where the kernel has them
    int64_t count = 0;
};

template <class T>
using SumKernel = void(const Samples<T>& samples, Sums* pSums);

// The sum of the squares of the samples' distances from `mean`.
using SquaresKernel = void(const Samples<Qel32f>& samples, Qel32f mean, Qel64f* pSum);

extern const Kernel<SumKernel<Qel8u>> ownSum_8u_C1MR_W7;
extern const Kernel<SumKernel<Qel8u>> ownSum_8u_C3CMR_W7;
extern const Kernel<SumKernel<Qel8u>> ownSumSq_8u_C1R_W7;
extern const Kernel<SumKernel<Qel8u>> ownSumSq_8u_C3CR_W7;
extern const Kernel<SumKernel<Qel8u>> ownSumSq_8u_C1MR_W7;
extern const Kernel<SumKernel<Qel8u>> ownSumSq_8u_C3CMR_W7;

extern const Kernel<SumKernel<Qel8s>> ownSum_8s_C1MR_W7;
extern const Kernel<SumKernel<Qel8s>> ownSum_8s_C3CMR_W7;
extern const Kernel<SumKernel<Qel8s>> ownSumSq_8s_C1R_W7;
extern const Kernel<SumKernel<Qel8s>> ownSumSq_8s_C3CR_W7;
extern const Kernel<SumKernel<Qel8s>> ownSumSq_8s_C1MR_W7;
extern const Kernel<SumKernel<Qel8s>> ownSumSq_8s_C3CMR_W7;

extern const Kernel<SumKernel<Qel16u>> ownSum_16u_C1MR_W7;
extern const Kernel<SumKernel<Qel16u>> ownSum_16u_C3CMR_W7;
extern const Kernel<SumKernel<Qel16u>> ownSumSq_16u_C1R_W7;
extern const Kernel<SumKernel<Qel16u>> ownSumSq_16u_C3CR_W7;
extern const Kernel<SumKernel<Qel16u>> ownSumSq_16u_C1MR_W7;
extern const Kernel<SumKernel<Qel16u>> ownSumSq_16u_C3CMR_W7;

// The forms of 32f differ in how often they fold into double precision, so they are not interchangeable.
extern const Kernel<SumKernel<Qel32f>> ownSum_32f_C1MR_W7;
extern const Kernel<SumKernel<Qel32f>> ownSum_32f_C3CMR_W7;
extern const Kernel<SumKernel<Qel32f>> ownSumSq_32f_C1R_W7;
extern const Kernel<SumKernel<Qel32f>> ownSumSq_32f_C1R_W7_Al;
extern const Kernel<SumKernel<Qel32f>> ownSumSq_32f_C1R_smallsize_W7;
extern const Kernel<SumKernel<Qel32f>> ownSumSq_32f_C3CR_W7;
extern const Kernel<SumKernel<Qel32f>> ownSumSq_32f_C3CR_W7_Al;
extern const Kernel<SumKernel<Qel32f>> ownSumSq_32f_C3CR_smallsize_W7;
extern const Kernel<SumKernel<Qel32f>> ownSumSq_32f_C1MR_W7;
extern const Kernel<SumKernel<Qel32f>> ownSumSq_32f_C3CMR_W7;

extern const Kernel<SquaresKernel> ownSq_32f_C1R_W7;
extern const Kernel<SquaresKernel> ownSq_32f_C3CR_W7;
extern const Kernel<SquaresKernel> ownSq_32f_C1MR_W7;
extern const Kernel<SquaresKernel> ownSq_32f_C3CMR_W7;

}  // namespace qel

#endif
