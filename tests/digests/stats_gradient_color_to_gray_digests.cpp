#include "digests/digest.h"
#include "qelcv/stats.h"

namespace {

template <class T>
qelStatus byAllNorms(digest::Call& c, qelStatus (*function)(const T*, int, T*, int, QelSize, int)) {
    const auto src = c.input<T>();
    qelStatus status = qelStatusOk;
    for (const int norm : {0, 1, 2}) {
        const auto dst = c.output<T>(c.size(), 1);
        if (status == qelStatusOk) status = function(src.data, src.step, dst.data, dst.step, c.size(), norm);
    }
    return status;
}

}  // namespace

DIGESTS(byAllNorms<Qel8u>, qeliGradientColorToGray_8u_C3C1R);
DIGESTS(byAllNorms<Qel16u>, qeliGradientColorToGray_16u_C3C1R);
DIGESTS(byAllNorms<Qel32f>, qeliGradientColorToGray_32f_C3C1R);
