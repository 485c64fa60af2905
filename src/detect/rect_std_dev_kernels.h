#ifndef QELCV_DETECT_RECT_STD_DEV_KERNELS_H_
#define QELCV_DETECT_RECT_STD_DEV_KERNELS_H_

#include "frame/image.h"
#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

// Where a table is read for the first pixel of the result: the corners of the rectangle. Upright: bottom right, bottom
// left, top left, top right. Tilted: bottom, left, right, top.
template <class T>
struct Corners {
    const T* p[4];
    int step;

    Corners from(int y) const {
        return {{row(p[0], step, y), row(p[1], step, y), row(p[2], step, y), row(p[3], step, y)}, step};
    }
};

// What sums are divided by, and what integer results are multiplied by.
struct DeviationFactors {
    Qel64f area;  // exact
    Qel32f scale;
};

template <class T, class Q, class R>
using RectStdDevKernel = void(const Corners<T>& src, const Corners<Q>& sqr, Plane<R> dst, QelSize size,
                              DeviationFactors factors);

extern const Kernel<RectStdDevKernel<Qel32f, Qel64f, Qel32f>> ownRectStdDev_32f_C1R_W7;
extern const Kernel<RectStdDevKernel<Qel32s, Qel64f, Qel32f>> ownRectStdDev_32s32f_C1R_W7;
extern const Kernel<RectStdDevKernel<Qel32s, Qel32s, Qel32s>> ownRectStdDev_32s_C1RSfs_W7;
extern const Kernel<RectStdDevKernel<Qel32f, Qel64f, Qel32f>> ownTiltedRectStdDev_32f_C1R_W7;
extern const Kernel<RectStdDevKernel<Qel32s, Qel64f, Qel32f>> ownTiltedRectStdDev_32s32f_C1R_W7;
extern const Kernel<RectStdDevKernel<Qel32s, Qel32s, Qel32s>> ownTiltedRectStdDev_32s_C1RSfs_W7;

}  // namespace qel

#endif
