#include "digests/digest.h"
#include "qelcv/stats.h"

using digest::bySignature;

DIGESTS(bySignature, qeliAbsDiff_8u_C1R, qeliAbsDiff_8u_C3R, qeliAbsDiff_16u_C1R, qeliAbsDiff_32f_C1R,
        qeliAbsDiffC_8u_C1R, qeliAbsDiffC_16u_C1R, qeliAbsDiffC_32f_C1R);
