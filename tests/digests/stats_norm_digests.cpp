#include "digests/digest.h"
#include "qelcv/stats.h"

using digest::bySignature;

DIGESTS(bySignature, qeliNorm_Inf_8u_C1MR, qeliNorm_Inf_8u_C3CMR, qeliNorm_Inf_8s_C1MR, qeliNorm_Inf_8s_C3CMR,
        qeliNorm_Inf_16u_C1MR, qeliNorm_Inf_16u_C3CMR, qeliNorm_Inf_32f_C1MR, qeliNorm_Inf_32f_C3CMR,
        qeliNorm_L1_8u_C1MR, qeliNorm_L1_8u_C3CMR, qeliNorm_L1_8s_C1MR, qeliNorm_L1_8s_C3CMR, qeliNorm_L1_16u_C1MR,
        qeliNorm_L1_16u_C3CMR, qeliNorm_L2_8u_C1MR, qeliNorm_L2_8u_C3CMR, qeliNorm_L2_8s_C1MR, qeliNorm_L2_8s_C3CMR,
        qeliNormDiff_Inf_8u_C1MR, qeliNormDiff_Inf_8u_C3CMR, qeliNormDiff_Inf_8s_C1MR, qeliNormDiff_Inf_8s_C3CMR,
        qeliNormDiff_Inf_16u_C1MR, qeliNormDiff_Inf_16u_C3CMR, qeliNormDiff_Inf_32f_C1MR, qeliNormDiff_Inf_32f_C3CMR,
        qeliNormDiff_L1_8u_C1MR, qeliNormDiff_L1_8u_C3CMR, qeliNormDiff_L1_8s_C1MR, qeliNormDiff_L1_8s_C3CMR,
        qeliNormDiff_L1_16u_C1MR, qeliNormDiff_L1_16u_C3CMR, qeliNormDiff_L2_8u_C1MR, qeliNormDiff_L2_8u_C3CMR,
        qeliNormDiff_L2_8s_C1MR, qeliNormDiff_L2_8s_C3CMR, qeliNormRel_Inf_8u_C1MR, qeliNormRel_Inf_8u_C3CMR,
        qeliNormRel_Inf_8s_C1MR, qeliNormRel_Inf_8s_C3CMR, qeliNormRel_Inf_16u_C1MR, qeliNormRel_Inf_16u_C3CMR,
        qeliNormRel_Inf_32f_C1MR, qeliNormRel_Inf_32f_C3CMR, qeliNormRel_L1_8u_C1MR, qeliNormRel_L1_8u_C3CMR,
        qeliNormRel_L1_8s_C1MR, qeliNormRel_L1_8s_C3CMR, qeliNormRel_L1_16u_C1MR, qeliNormRel_L1_16u_C3CMR,
        qeliNormRel_L2_8u_C1MR, qeliNormRel_L2_8u_C3CMR, qeliNormRel_L2_8s_C1MR, qeliNormRel_L2_8s_C3CMR);

// Sums of 32f and of squares of 16u depend on the threads in their last bits.
DIGESTS_UNDER(({.oneThread = true}), bySignature, qeliNorm_L1_32f_C1MR, qeliNorm_L1_32f_C3CMR, qeliNorm_L2_16u_C1MR,
              qeliNorm_L2_16u_C3CMR, qeliNorm_L2_32f_C1MR, qeliNorm_L2_32f_C3CMR, qeliNormDiff_L1_32f_C1MR,
              qeliNormDiff_L1_32f_C3CMR, qeliNormDiff_L2_16u_C1MR, qeliNormDiff_L2_16u_C3CMR, qeliNormDiff_L2_32f_C1MR,
              qeliNormDiff_L2_32f_C3CMR, qeliNormRel_L1_32f_C1MR, qeliNormRel_L1_32f_C3CMR, qeliNormRel_L2_16u_C1MR,
              qeliNormRel_L2_16u_C3CMR, qeliNormRel_L2_32f_C1MR, qeliNormRel_L2_32f_C3CMR);
