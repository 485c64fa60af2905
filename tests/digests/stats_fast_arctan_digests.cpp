#include "digests/digest.h"
#include "qelcv/stats.h"

DIGESTS(
    [](digest::Call& c, auto function) {
        const int len = c.size().width * c.size().height;
        const Qel32f* const pSrcY = c.numbers<Qel32f>(len);
        const Qel32f* const pSrcX = c.numbers<Qel32f>(len);
        return function(pSrcY, pSrcX, c.results<Qel32f>(len), len);
    },
    qelibFastArctan_32f);
