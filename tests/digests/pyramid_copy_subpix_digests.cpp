#include "digests/digest.h"
#include "qelcv/pyramid.h"

namespace {

struct Shift {
    template <class S, class D, class... Scale>
    qelStatus operator()(digest::Call& c,
                         qelStatus (*function)(const S*, int, D*, int, QelSize, Qel32f, Qel32f, Scale...)) const {
        const auto src = c.input<S>({c.size().width + 1, c.size().height + 1}, 1);
        const auto dst = c.output<D>();
        return function(src.data, src.step, dst.data, dst.step, c.size(), 0.3F, 0.6F, Scale(0)...);
    }
};

struct Window {
    template <class S, class D, class... Scale>
    qelStatus operator()(digest::Call& c, qelStatus (*function)(const S*, int, QelSize, D*, int, QelSize, Qel32f,
                                                                Qel32f, QelPoint*, QelPoint*, Scale...)) const {
        const auto src = c.input<S>();
        const QelSize window = {c.size().width / 2 + 9, c.size().height / 2 + 5};
        const auto dst = c.output<D>(window, 1);
        QelPoint* const pMin = reinterpret_cast<QelPoint*>(c.results<int>(2));
        QelPoint* const pMax = reinterpret_cast<QelPoint*>(c.results<int>(2));
        return function(src.data, src.step, c.size(), dst.data, dst.step, window, Qel32f(c.size().width) / 4 + 0.3F,
                        Qel32f(c.size().height) / 3 + 0.6F, pMin, pMax, Scale(0)...);
    }
};

struct Line {
    template <class T>
    qelStatus operator()(digest::Call& c, qelStatus (*function)(const T*, int, QelSize, T*, QelPoint, QelPoint)) const {
        const QelSize size = c.size();
        const auto src = c.input<T>();
        T* const pDst = c.results<T>(c.channels() * (size.width + size.height));
        return function(src.data, src.step, size, pDst, {size.width - 1, 0}, {0, size.height / 2});
    }
};

}  // namespace

DIGESTS(Shift(), qeliCopySubpix_8u_C1R, qeliCopySubpix_8u16u_C1R_Sfs, qeliCopySubpix_8u32f_C1R, qeliCopySubpix_16u_C1R,
        qeliCopySubpix_16u32f_C1R, qeliCopySubpix_32f_C1R);
DIGESTS(Window(), qeliCopySubpixIntersect_8u_C1R, qeliCopySubpixIntersect_8u16u_C1R_Sfs,
        qeliCopySubpixIntersect_8u32f_C1R, qeliCopySubpixIntersect_16u_C1R, qeliCopySubpixIntersect_16u32f_C1R,
        qeliCopySubpixIntersect_32f_C1R);
DIGESTS(Line(), qeliSampleLine_8u_C1R, qeliSampleLine_8u_C3R, qeliSampleLine_16u_C1R, qeliSampleLine_16u_C3R,
        qeliSampleLine_32f_C1R, qeliSampleLine_32f_C3R);
