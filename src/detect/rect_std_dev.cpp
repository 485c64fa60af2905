#include <algorithm>

#include "detect/rect_std_dev_kernels.h"
#include "frame/check.h"
#include "frame/rows.h"
#include "qelcv/detect.h"

namespace qel {
namespace {

// The two forms of a rectangle: what their tables must hold, where they are read, what their sums are divided by. All
// in 64 bits, since the rectangle is tested last.
struct UprightRect {
    static constexpr bool kTilted = false;
    static int64_t columns(QelSize roiSize, QelRect r) { return int64_t{roiSize.width} + r.x + r.width; }
    static int64_t area(QelRect r) { return int64_t{r.width} * r.height; }
};
struct TiltedRect {
    static constexpr bool kTilted = true;
    static int64_t columns(QelSize roiSize, QelRect r) {
        return int64_t{r.width} + r.height + r.x + r.y + roiSize.width - 1;
    }
    static int64_t area(QelRect r) { return 2 * int64_t{r.width} * r.height; }
};

template <class T>
const T* element(const T* p, int step, int64_t column, int64_t y) {
    return reinterpret_cast<const T*>(reinterpret_cast<const char*>(p) +
                                      static_cast<std::ptrdiff_t>(step * y + column * int64_t{sizeof(T)}));
}

template <class Rect, class T>
Corners<T> cornersOf(const T* p, int step, QelRect r) {
    const int64_t x = r.x, y = r.y, w = r.width, h = r.height;
    const auto at = [=](int64_t column, int64_t line) { return element(p, step, column, line); };
    if constexpr (Rect::kTilted) {
        const int64_t column = x - y, line = x + y;  // of the corner at the top
        return {
            {at(column + w - h, line + w + h), at(column - h, line + h), at(column + w, line + w), at(column, line)},
            step};
    } else {
        return {{at(x + w, y + h), at(x, y + h), at(x, y), at(x + w, y)}, step};
    }
}

// 2 to the power -scaleFactor, of whose exponent 5 bits count.
Qel32f scaleOf(int scaleFactor) {
    const unsigned exponent = scaleFactor < 0 ? 0U - unsigned(scaleFactor) : unsigned(scaleFactor);
    const Qel32f power = static_cast<Qel32f>(1U << (exponent & 31));
    return scaleFactor < 0 ? power : 1 / power;
}

// Threads get at least this many pixels each.
constexpr int kPixelsPerThreadLog2 = 10;
constexpr int kMostThreads = 32;

int teamFor(QelSize roiSize) {
    const int worthwhile = std::min(owncvGetMaxNumThreads(), area(roiSize) >> kPixelsPerThreadLog2);
    return worthwhile < 2 ? 1 : std::min({worthwhile, kMostThreads, ownGetNumThreads()});
}
int onCallersThread(QelSize) { return 1; }

template <class Rect, class T, class Q, class R>
qelStatus rectStdDev(Plane<const T> src, Plane<const Q> sqr, Plane<R> dst, QelSize roiSize, QelRect rect,
                     int scaleFactor, const Kernel<RectStdDevKernel<T, Q, R>>& kernel, int (*team)(QelSize)) {
    const int64_t columns = Rect::columns(roiSize, rect);
    const RowOf rowOfSrc = {columns * int64_t{sizeof(T)}, int{sizeof(T)}};
    const RowOf rowOfSqr = {columns * int64_t{sizeof(Q)}, int{sizeof(Q)}};
    const RowOf rowOfDst = rowOf<R>(roiSize.width);
    const qelStatus status =
        Check()
            .pointers(src.p, sqr.p, dst.p)
            .size(roiSize)
            .stepSizes(rowOfSrc, src.step)
            .stepSizes(rowOfSqr, sqr.step)
            .stepSizes(rowOfDst, dst.step)
            .stepAlignments(rowOfSrc, src.step)
            .stepAlignments(rowOfSqr, sqr.step)
            .stepAlignments(rowOfDst, dst.step)
            .require(rect.x >= 0 && rect.y >= 0 && rect.width >= 1 && rect.height >= 1, qelStatusBadSize)
            .status();
    if (status != qelStatusOk) return status;

    const Corners<T> ofSrc = cornersOf<Rect>(src.p, src.step, rect);
    const Corners<Q> ofSqr = cornersOf<Rect>(sqr.p, sqr.step, rect);
    const DeviationFactors factors = {static_cast<Qel64f>(Rect::area(rect)), scaleOf(scaleFactor)};
    onThreads(team(roiSize), [&](int thread, int threads) {
        const Share s = shareOf(roiSize, threads, thread);
        if (s.size.height > 0) kernel(ofSrc.from(s.y), ofSqr.from(s.y), dst.from(s.y), s.size, factors);
    });
    return qelStatusOk;
}

}  // namespace
}  // namespace qel

#define RECT_STD_DEV(name, Rect, T, kernel, team)                                                               \
    qelStatus name(const T* pSrc, int srcStep, const Qel64f* pSqr, int sqrStep, Qel32f* pDst, int dstStep,      \
                   QelSize roiSize, QelRect rect) {                                                             \
        return qel::rectStdDev<qel::Rect, T, Qel64f, Qel32f>({pSrc, srcStep}, {pSqr, sqrStep}, {pDst, dstStep}, \
                                                             roiSize, rect, 0, qel::kernel, qel::team);         \
    }
RECT_STD_DEV(qeliRectStdDev_32f_C1R, UprightRect, Qel32f, ownRectStdDev_32f_C1R_W7, teamFor)
RECT_STD_DEV(qeliRectStdDev_32s32f_C1R, UprightRect, Qel32s, ownRectStdDev_32s32f_C1R_W7, onCallersThread)
RECT_STD_DEV(qeliTiltedRectStdDev_32f_C1R, TiltedRect, Qel32f, ownTiltedRectStdDev_32f_C1R_W7, onCallersThread)
RECT_STD_DEV(qeliTiltedRectStdDev_32s32f_C1R, TiltedRect, Qel32s, ownTiltedRectStdDev_32s32f_C1R_W7, onCallersThread)
#undef RECT_STD_DEV

#define RECT_STD_DEV_SFS(name, Rect, kernel)                                                                         \
    qelStatus name(const Qel32s* pSrc, int srcStep, const Qel32s* pSqr, int sqrStep, Qel32s* pDst, int dstStep,      \
                   QelSize roiSize, QelRect rect, int scaleFactor) {                                                 \
        return qel::rectStdDev<qel::Rect, Qel32s, Qel32s, Qel32s>({pSrc, srcStep}, {pSqr, sqrStep}, {pDst, dstStep}, \
                                                                  roiSize, rect, scaleFactor, qel::kernel,           \
                                                                  qel::onCallersThread);                             \
    }
RECT_STD_DEV_SFS(qeliRectStdDev_32s_C1RSfs, UprightRect, ownRectStdDev_32s_C1RSfs_W7)
RECT_STD_DEV_SFS(qeliTiltedRectStdDev_32s_C1RSfs, TiltedRect, ownTiltedRectStdDev_32s_C1RSfs_W7)
#undef RECT_STD_DEV_SFS
