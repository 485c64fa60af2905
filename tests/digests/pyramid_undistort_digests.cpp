#include "digests/digest.h"
#include "qelcv/pyramid.h"

namespace {

// A camera whose centre is that of the region; the buffer may be null.
struct Radial {
    template <class T>
    qelStatus operator()(digest::Call& c, qelStatus (*function)(const T*, int, T*, int, QelSize, Qel32f, Qel32f, Qel32f,
                                                                Qel32f, Qel32f, Qel32f, Qel8u*)) const {
        const Qel32f width = Qel32f(c.size().width);
        const Qel32f height = Qel32f(c.size().height);
        const auto src = c.input<T>();
        const auto dst = c.output<T>();
        return function(src.data, src.step, dst.data, dst.step, c.size(), width, height, width / 2, height / 2, 0.125F,
                        -0.0625F, nullptr);
    }
};

qelStatus map(digest::Call& c, decltype(&qeliCreateMapCameraUndistort_32f_C1R) function) {
    const Qel32f width = Qel32f(c.size().width);
    const Qel32f height = Qel32f(c.size().height);
    const auto x = c.output<Qel32f>();
    const auto y = c.output<Qel32f>();
    return function(x.data, x.step, y.data, y.step, c.size(), width, height, width / 2, height / 2, 0.125F, -0.0625F,
                    0.01F, 0.02F, nullptr);
}

}  // namespace

DIGESTS(Radial(), qeliUndistortRadial_8u_C1R, qeliUndistortRadial_8u_C3R, qeliUndistortRadial_16u_C1R,
        qeliUndistortRadial_16u_C3R, qeliUndistortRadial_32f_C1R, qeliUndistortRadial_32f_C3R);
DIGESTS(map, qeliCreateMapCameraUndistort_32f_C1R);
DIGESTS_UNDER(({.sizeQuery = true}), digest::bySignature, qeliUndistortGetSize);
