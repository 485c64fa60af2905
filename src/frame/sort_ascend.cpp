#include "frame/sort_ascend.h"

#include "frame/vector_primitives.h"

namespace qel {

qelStatus qelsSortAscend_64f_I(Qel64f* pSrcDst, int len) {
    const qelStatus status = Check().pointers(pSrcDst).length(len).status();
    if (status != qelStatusOk || len == 1) return status;
    PendingRanges pending;
    sortAscend(pSrcDst, len, pending);
    return qelStatusOk;
}

}  // namespace qel
