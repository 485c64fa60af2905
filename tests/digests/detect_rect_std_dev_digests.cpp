#include "digests/digest.h"
#include "qelcv/detect.h"

namespace {

// Tables of samples up to 255, large enough for the rectangle at every place.
template <bool tilted>
struct Deviation {
    template <class S, class Q, class D, class... Scale>
    qelStatus operator()(digest::Call& c, qelStatus (*function)(const S*, int, const Q*, int, D*, int, QelSize, QelRect,
                                                                Scale...)) const {
        constexpr int kMore = 16;
        const QelSize size = {c.size().width + 2 * kMore, c.size().height + 2 * kMore};
        const auto sum = c.input<S>(size, 1);
        const auto sqr = c.input<Q>(size, 1);
        const auto dst = c.output<D>();
        const QelRect rect = tilted ? QelRect{6, 1, 4, 3} : QelRect{1, 2, 7, 5};
        return function(sum.data, sum.step, sqr.data, sqr.step, dst.data, dst.step, c.size(), rect, Scale(0)...);
    }
};

}  // namespace

DIGESTS(Deviation<false>(), qeliRectStdDev_32f_C1R, qeliRectStdDev_32s32f_C1R, qeliRectStdDev_32s_C1RSfs);
DIGESTS(Deviation<true>(), qeliTiltedRectStdDev_32f_C1R, qeliTiltedRectStdDev_32s32f_C1R,
        qeliTiltedRectStdDev_32s_C1RSfs);
