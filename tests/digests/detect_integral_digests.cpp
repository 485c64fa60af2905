#include "digests/digest.h"
#include "qelcv/detect.h"

namespace {

// Tables have `more` columns and rows more than the region.
template <int more>
struct Tables {
    static QelSize size(const digest::Call& c) { return {c.size().width + more, c.size().height + more}; }

    template <class D>
    qelStatus operator()(digest::Call& c, qelStatus (*function)(const Qel8u*, int, D*, int, QelSize, D)) const {
        const auto src = c.input<Qel8u>();
        const auto dst = c.output<D>(size(c), 1);
        return function(src.data, src.step, dst.data, dst.step, c.size(), D(5));
    }
    template <class D, class Q>
    qelStatus operator()(digest::Call& c,
                         qelStatus (*function)(const Qel8u*, int, D*, int, Q*, int, QelSize, D, Q)) const {
        const auto src = c.input<Qel8u>();
        const auto dst = c.output<D>(size(c), 1);
        const auto sqr = c.output<Q>(size(c), 1);
        return function(src.data, src.step, dst.data, dst.step, sqr.data, sqr.step, c.size(), D(5), Q(7));
    }
};

}  // namespace

DIGESTS(Tables<1>(), qeliIntegral_8u32s_C1R, qeliIntegral_8u32f_C1R, qeliSqrIntegral_8u32s_C1R,
        qeliSqrIntegral_8u32s64f_C1R, qeliSqrIntegral_8u32f64f_C1R);
DIGESTS(Tables<2>(), qeliTiltedIntegral_8u32s_C1R, qeliTiltedIntegral_8u32f_C1R, qeliTiltedSqrIntegral_8u32s_C1R,
        qeliTiltedSqrIntegral_8u32s64f_C1R, qeliTiltedSqrIntegral_8u32f64f_C1R);
