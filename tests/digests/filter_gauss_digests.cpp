#include "digests/digest.h"
#include "qelcv/filter.h"

namespace {

qelStatus gauss(digest::Call& c, decltype(&qeliFilterGaussBorder_32f_C1R) function) {
    const auto src = c.input<Qel32f>();
    qelStatus status = qelStatusOk;
    for (const int taps : {3, 5, 9}) {
        const auto dst = c.output<Qel32f>();
        int bytes = 0;
        qeliFilterGaussGetBufferSize_32f_C1R(c.size(), taps, &bytes);
        if (status == qelStatusOk) {
            status = function(src.data, src.step, dst.data, dst.step, c.size(), taps, 1.5F, qelBorderRepl, 0,
                              c.scratch(bytes));
        }
    }
    return status;
}

qelStatus fiveTaps(digest::Call& c, qelStatus (*function)(QelSize, int, int*)) {
    return function(c.size(), 5, c.results<int>(1));
}

}  // namespace

DIGESTS(gauss, qeliFilterGaussBorder_32f_C1R);
DIGESTS_UNDER(({.sizeQuery = true}), fiveTaps, qeliFilterGaussGetBufferSize_32f_C1R);
DIGESTS(
    [](digest::Call& c, auto function) {
        return function(c.output<Qel16s>({7, 1}, 1).data, 7, 2, 1);
    },
    qeliGenSobelKernel_16s);
DIGESTS(
    [](digest::Call& c, auto function) {
        return function(c.output<Qel32f>({7, 1}, 1).data, 7, 2, 1);
    },
    qeliGenSobelKernel_32f);
