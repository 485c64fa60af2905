#include "digests/digest.h"
#include "qelcv/feature.h"

namespace {

template <class T>
qelStatus canny(digest::Call& c,
                qelStatus (*function)(const T*, int, const T*, int, Qel8u*, int, QelSize, Qel32f, Qel32f, Qel8u*)) {
    const auto dx = c.input<T>();
    const auto dy = c.input<T>();
    const auto dst = c.output<Qel8u>();
    int bytes = 0;
    qeliCannyGetSize(c.size(), &bytes);
    return function(dx.data, dx.step, dy.data, dy.step, dst.data, dst.step, c.size(), 20, 60, c.scratch(bytes));
}

}  // namespace

DIGESTS(canny<Qel16s>, qeliCanny_16s8u_C1R);
DIGESTS(canny<Qel32f>, qeliCanny_32f8u_C1R);
DIGESTS_UNDER(({.sizeQuery = true}), digest::bySignature, qeliCannyGetSize);
