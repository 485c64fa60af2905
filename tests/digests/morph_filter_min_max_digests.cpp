#include "digests/digest.h"
#include "qelcv/morph.h"

namespace {

// Windows with kernels of their own, and a larger one.
template <auto query>
struct Window {
    template <class T>
    qelStatus operator()(digest::Call& c,
                         qelStatus (*function)(const T*, int, T*, int, QelSize, QelSize, QelPoint, Qel8u*)) const {
        const auto src = c.input<T>();
        qelStatus status = qelStatusOk;
        for (const QelSize mask : {QelSize{3, 3}, {5, 5}, {9, 4}}) {
            int bytes = 0;
            query(c.size().width, mask.width, mask.height, &bytes);
            const auto dst = c.output<T>();
            if (status == qelStatusOk) {
                status = function(src.data, src.step, dst.data, dst.step, c.size(), mask,
                                  {mask.width / 2, mask.height / 2}, c.scratch(bytes));
            }
        }
        return status;
    }
};

qelStatus query(digest::Call& c, qelStatus (*function)(int, int, int, int*)) {
    return function(c.size().width, 7, 5, c.results<int>(1));
}

}  // namespace

DIGESTS(Window<qeliFilterMaxGetBufferSize_8u_C1R>(), qeliFilterMaxBorderReplicate_8u_C1R);
DIGESTS(Window<qeliFilterMaxGetBufferSize_8u_C3R>(), qeliFilterMaxBorderReplicate_8u_C3R);
DIGESTS(Window<qeliFilterMaxGetBufferSize_8u_C4R>(), qeliFilterMaxBorderReplicate_8u_C4R);
DIGESTS(Window<qeliFilterMaxGetBufferSize_32f_C1R>(), qeliFilterMaxBorderReplicate_32f_C1R);
DIGESTS(Window<qeliFilterMaxGetBufferSize_32f_C3R>(), qeliFilterMaxBorderReplicate_32f_C3R);
DIGESTS(Window<qeliFilterMaxGetBufferSize_32f_C4R>(), qeliFilterMaxBorderReplicate_32f_C4R);
DIGESTS(Window<qeliFilterMinGetBufferSize_8u_C1R>(), qeliFilterMinBorderReplicate_8u_C1R);
DIGESTS(Window<qeliFilterMinGetBufferSize_8u_C3R>(), qeliFilterMinBorderReplicate_8u_C3R);
DIGESTS(Window<qeliFilterMinGetBufferSize_8u_C4R>(), qeliFilterMinBorderReplicate_8u_C4R);
DIGESTS(Window<qeliFilterMinGetBufferSize_32f_C1R>(), qeliFilterMinBorderReplicate_32f_C1R);
DIGESTS(Window<qeliFilterMinGetBufferSize_32f_C3R>(), qeliFilterMinBorderReplicate_32f_C3R);
DIGESTS(Window<qeliFilterMinGetBufferSize_32f_C4R>(), qeliFilterMinBorderReplicate_32f_C4R);

DIGESTS_UNDER(({.sizeQuery = true}), query, qeliFilterMaxGetBufferSize_8u_C1R, qeliFilterMaxGetBufferSize_8u_C3R,
              qeliFilterMaxGetBufferSize_8u_C4R, qeliFilterMaxGetBufferSize_32f_C1R, qeliFilterMaxGetBufferSize_32f_C3R,
              qeliFilterMaxGetBufferSize_32f_C4R, qeliFilterMinGetBufferSize_8u_C1R, qeliFilterMinGetBufferSize_8u_C3R,
              qeliFilterMinGetBufferSize_8u_C4R, qeliFilterMinGetBufferSize_32f_C1R, qeliFilterMinGetBufferSize_32f_C3R,
              qeliFilterMinGetBufferSize_32f_C4R);
