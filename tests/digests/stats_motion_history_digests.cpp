#include "digests/digest.h"
#include "qelcv/stats.h"

using digest::bySignature;

DIGESTS(bySignature, qeliUpdateMotionHistory_8u32f_C1IR, qeliUpdateMotionHistory_16u32f_C1IR,
        qeliUpdateMotionHistory_32f_C1IR);
