#ifndef QELCV_STATS_NORM_KERNELS_H_
#define QELCV_STATS_NORM_KERNELS_H_

#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

// What a norm is taken of. A norm of one image names it twice; an image of one channel has 1 for the channel of
// interest.
template <class T>
struct NormRegion {
    Plane<const T> src1;
    Plane<const T> src2;
    Plane<const Qel8u> mask;
    QelSize size;
    int coi;

    // A band of whole rows.
    NormRegion rows(int y, int height) const {
        return {src1.from(y), src2.from(y), mask.from(y), {size.width, height}, coi};
    }
};

// The largest magnitude, the sum of magnitudes or the sum of squares: of the image or of the difference, and of the
// second image where the norm is relative to it.
struct NormSums {
    Qel64f value = 0;
    Qel64f reference = 0;
};

template <class T>
using NormKernel = NormSums(const NormRegion<T>& region);

extern const Kernel<NormKernel<Qel8u>> ownNorm_Inf_8u_C1MR_W7;
extern const Kernel<NormKernel<Qel8u>> ownNorm_Inf_8u_C3CMR_W7;
extern const Kernel<NormKernel<Qel8s>> ownNorm_Inf_8s_C1MR_W7;
extern const Kernel<NormKernel<Qel8s>> ownNorm_Inf_8s_C3CMR_W7;
extern const Kernel<NormKernel<Qel16u>> ownNorm_Inf_16u_C1MR_W7;
extern const Kernel<NormKernel<Qel16u>> ownNorm_Inf_16u_C3CMR_W7;
extern const Kernel<NormKernel<Qel32f>> ownNorm_Inf_32f_C1MR_W7;
extern const Kernel<NormKernel<Qel32f>> ownNorm_Inf_32f_C3CMR_W7;
extern const Kernel<NormKernel<Qel8u>> ownNorm_L1_8u_C1MR_W7;
extern const Kernel<NormKernel<Qel8u>> ownNorm_L1_8u_C1MR_W7_B;
extern const Kernel<NormKernel<Qel8u>> ownNorm_L1_8u_C3CMR_A6;
extern const Kernel<NormKernel<Qel8s>> ownNorm_L1_8s_C1MR_W7;
extern const Kernel<NormKernel<Qel8s>> ownNorm_L1_8s_C3CMR_A6;
extern const Kernel<NormKernel<Qel16u>> ownNorm_L1_16u_C1MR_W7;
extern const Kernel<NormKernel<Qel16u>> ownNorm_L1_16u_C3CMR_W7;
extern const Kernel<NormKernel<Qel32f>> ownNorm_L1_32f_C1MR_W7;
extern const Kernel<NormKernel<Qel32f>> ownNorm_L1_32f_C3CMR_W7;
extern const Kernel<NormKernel<Qel8u>> ownNorm_L2_8u_C1MR_W7;
extern const Kernel<NormKernel<Qel8u>> ownNorm_L2_8u_C3CMR_A6;
extern const Kernel<NormKernel<Qel8s>> ownNorm_L2_8s_C1MR_W7;
extern const Kernel<NormKernel<Qel8s>> ownNorm_L2_8s_C3CMR_A6;
extern const Kernel<NormKernel<Qel16u>> ownNorm_L2_16u_C1MR_W7;
extern const Kernel<NormKernel<Qel16u>> ownNorm_L2_16u_C3CMR_W7;
extern const Kernel<NormKernel<Qel32f>> ownNorm_L2_32f_C1MR_W7;
extern const Kernel<NormKernel<Qel32f>> ownNorm_L2_32f_C3CMR_W7;

extern const Kernel<NormKernel<Qel8u>> ownNormDiff_Inf_8u_C1MR_W7;
extern const Kernel<NormKernel<Qel8u>> ownNormDiff_Inf_8u_C3CMR_W7;
extern const Kernel<NormKernel<Qel8s>> ownNormDiff_Inf_8s_C1MR_W7;
extern const Kernel<NormKernel<Qel8s>> ownNormDiff_Inf_8s_C3CMR_W7;
extern const Kernel<NormKernel<Qel16u>> ownNormDiff_Inf_16u_C1MR_W7;
extern const Kernel<NormKernel<Qel16u>> ownNormDiff_Inf_16u_C3CMR_W7;
extern const Kernel<NormKernel<Qel32f>> ownNormDiff_Inf_32f_C1MR_W7;
extern const Kernel<NormKernel<Qel32f>> ownNormDiff_Inf_32f_C3CMR_W7;
extern const Kernel<NormKernel<Qel8u>> ownNormDiff_L1_8u_C1MR_W7;
extern const Kernel<NormKernel<Qel8u>> ownNormDiff_L1_8u_C3CMR_W7;
extern const Kernel<NormKernel<Qel8s>> ownNormDiff_L1_8s_C1MR_W7;
extern const Kernel<NormKernel<Qel8s>> ownNormDiff_L1_8s_C3CMR_W7;
extern const Kernel<NormKernel<Qel16u>> ownNormDiff_L1_16u_C1MR_W7;
extern const Kernel<NormKernel<Qel16u>> ownNormDiff_L1_16u_C3CMR_W7;
extern const Kernel<NormKernel<Qel32f>> ownNormDiff_L1_32f_C1MR_W7;
extern const Kernel<NormKernel<Qel32f>> ownNormDiff_L1_32f_C3CMR_W7;
extern const Kernel<NormKernel<Qel8u>> ownNormDiff_L2_8u_C1MR_W7;
extern const Kernel<NormKernel<Qel8u>> ownNormDiff_L2_8u_C3CMR_W7;
extern const Kernel<NormKernel<Qel8s>> ownNormDiff_L2_8s_C1MR_W7;
extern const Kernel<NormKernel<Qel8s>> ownNormDiff_L2_8s_C3CMR_W7;
extern const Kernel<NormKernel<Qel16u>> ownNormDiff_L2_16u_C1MR_W7;
extern const Kernel<NormKernel<Qel16u>> ownNormDiff_L2_16u_C3CMR_W7;
extern const Kernel<NormKernel<Qel32f>> ownNormDiff_L2_32f_C1MR_W7;
extern const Kernel<NormKernel<Qel32f>> ownNormDiff_L2_32f_C3CMR_W7;

extern const Kernel<NormKernel<Qel8u>> ownNormRel_Inf_8u_C1MR_W7;
extern const Kernel<NormKernel<Qel8u>> ownNormRel_Inf_8u_C3CMR_W7;
extern const Kernel<NormKernel<Qel8s>> ownNormRel_Inf_8s_C1MR_W7;
extern const Kernel<NormKernel<Qel8s>> ownNormRel_Inf_8s_C3CMR_W7;
extern const Kernel<NormKernel<Qel16u>> ownNormRel_Inf_16u_C1MR_W7;
extern const Kernel<NormKernel<Qel16u>> ownNormRel_Inf_16u_C3CMR_W7;
extern const Kernel<NormKernel<Qel32f>> ownNormRel_Inf_32f_C1MR_W7;
extern const Kernel<NormKernel<Qel32f>> ownNormRel_Inf_32f_C3CMR_W7;
extern const Kernel<NormKernel<Qel8u>> ownNormRel_L1_8u_C1MR_W7;
extern const Kernel<NormKernel<Qel8u>> ownNormRel_L1_8u_C3CMR_A6;
extern const Kernel<NormKernel<Qel8s>> ownNormRel_L1_8s_C1MR_W7;
extern const Kernel<NormKernel<Qel8s>> ownNormRel_L1_8s_C3CMR_A6;
extern const Kernel<NormKernel<Qel16u>> ownNormRel_L1_16u_C1MR_W7;
extern const Kernel<NormKernel<Qel16u>> ownNormRel_L1_16u_C3CMR_W7;
extern const Kernel<NormKernel<Qel32f>> ownNormRel_L1_32f_C1MR_W7;
extern const Kernel<NormKernel<Qel32f>> ownNormRel_L1_32f_C3CMR_W7;
extern const Kernel<NormKernel<Qel8u>> ownNormRel_L2_8u_C1MR_W7;
extern const Kernel<NormKernel<Qel8u>> ownNormRel_L2_8u_C3CMR_W7;
extern const Kernel<NormKernel<Qel8s>> ownNormRel_L2_8s_C1MR_W7;
extern const Kernel<NormKernel<Qel8s>> ownNormRel_L2_8s_C3CMR_W7;
extern const Kernel<NormKernel<Qel16u>> ownNormRel_L2_16u_C1MR_W7;
extern const Kernel<NormKernel<Qel16u>> ownNormRel_L2_16u_C3CMR_W7;
extern const Kernel<NormKernel<Qel32f>> ownNormRel_L2_32f_C1MR_W7;
extern const Kernel<NormKernel<Qel32f>> ownNormRel_L2_32f_C3CMR_W7;

}  // namespace qel

#endif
