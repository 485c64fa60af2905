#include "digests/digest.h"
#include "qelcv/distance.h"

namespace {

int bytesOf(qelStatus (*query)(QelSize, int*), QelSize size) {
    int bytes = 0;
    query(size, &bytes);
    return bytes;
}

qelStatus to32f(digest::Call& c, decltype(qeliTrueDistanceTransform_8u32f_C1R)* function) {
    const auto src = c.input<Qel8u>();
    const auto dst = c.output<Qel32f>();
    Qel8u* const pBuffer = c.scratch(bytesOf(qeliTrueDistanceTransformGetBufferSize_8u32f_C1R, c.size()));
    return function(src.data, src.step, dst.data, dst.step, c.size(), pBuffer);
}

qelStatus to16u(digest::Call& c, decltype(qeliTrueDistanceTransform_8u16u_C1RSfs)* function) {
    const auto src = c.input<Qel8u>();
    const auto dst = c.output<Qel16u>();
    Qel8u* const pBuffer = c.scratch(bytesOf(qeliTrueDistanceTransformGetBufferSize_8u16u_C1RSfs, c.size()));
    return function(src.data, src.step, dst.data, dst.step, c.size(), -5, pBuffer);
}

qelStatus query(digest::Call& c, decltype(qeliTrueDistanceTransformGetBufferSize_8u32f_C1R)* function) {
    return function(c.size(), c.results<int>(1));
}

}  // namespace

DIGESTS(to32f, qeliTrueDistanceTransform_8u32f_C1R);
DIGESTS(to16u, qeliTrueDistanceTransform_8u16u_C1RSfs);
DIGESTS_UNDER(({.sizeQuery = true}), query, qeliTrueDistanceTransformGetBufferSize_8u32f_C1R,
              qeliTrueDistanceTransformGetBufferSize_8u16u_C1RSfs);
