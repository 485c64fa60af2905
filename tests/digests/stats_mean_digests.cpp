#include "digests/digest.h"
#include "qelcv/stats.h"

using digest::bySignature;

DIGESTS(bySignature, qeliMean_8u_C1MR, qeliMean_8u_C3CMR, qeliMean_8s_C1MR, qeliMean_8s_C3CMR, qeliMean_16u_C1MR,
        qeliMean_16u_C3CMR, qeliMean_StdDev_8u_C1R, qeliMean_StdDev_8u_C3CR, qeliMean_StdDev_8u_C1MR,
        qeliMean_StdDev_8u_C3CMR, qeliMean_StdDev_8s_C1R, qeliMean_StdDev_8s_C3CR, qeliMean_StdDev_8s_C1MR,
        qeliMean_StdDev_8s_C3CMR, qeliMean_StdDev_16u_C1R, qeliMean_StdDev_16u_C3CR, qeliMean_StdDev_16u_C1MR,
        qeliMean_StdDev_16u_C3CMR);

// Sums of 32f depend on the threads in their last bits.
DIGESTS_UNDER(({.oneThread = true}), bySignature, qeliMean_32f_C1MR, qeliMean_32f_C3CMR, qeliMean_StdDev_32f_C1R,
              qeliMean_StdDev_32f_C3CR, qeliMean_StdDev_32f_C1MR, qeliMean_StdDev_32f_C3CMR);
