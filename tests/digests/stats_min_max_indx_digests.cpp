#include "digests/digest.h"
#include "qelcv/stats.h"

using digest::bySignature;

DIGESTS(bySignature, qeliMinMaxIndx_8u_C1R, qeliMinMaxIndx_8s_C1R, qeliMinMaxIndx_16u_C1R, qeliMinMaxIndx_32f_C1R,
        qeliMinMaxIndx_8u_C3CR, qeliMinMaxIndx_8s_C3CR, qeliMinMaxIndx_16u_C3CR, qeliMinMaxIndx_32f_C3CR,
        qeliMinMaxIndx_8u_C1MR, qeliMinMaxIndx_8s_C1MR, qeliMinMaxIndx_16u_C1MR, qeliMinMaxIndx_32f_C1MR,
        qeliMinMaxIndx_8u_C3CMR, qeliMinMaxIndx_8s_C3CMR, qeliMinMaxIndx_16u_C3CMR, qeliMinMaxIndx_32f_C3CMR);
