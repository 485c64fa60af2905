#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "frame/check.h"
#include "frame/image.h"
#include "qelcv/pyramid.h"

namespace qel {
namespace {

bool isInside(QelPoint p, QelSize roi) { return p.x >= 0 && p.y >= 0 && p.x < roi.width && p.y < roi.height; }

// Bresenham, Algorithm for computer control of a digital plotter, 1965. A tie between the axes makes y the major one.
template <class Pixel>
void walkLine(Plane<const Pixel> src, Pixel* pDst, QelPoint pt1, QelPoint pt2) {
    const ptrdiff_t alongX = pt2.x >= pt1.x ? ptrdiff_t{sizeof(Pixel)} : -ptrdiff_t{sizeof(Pixel)};
    const ptrdiff_t alongY = pt2.y >= pt1.y ? src.step : -ptrdiff_t{src.step};
    const int64_t dx = std::abs(pt2.x - pt1.x), dy = std::abs(pt2.y - pt1.y);
    const bool isSteep = dx <= dy;
    const int64_t longer = std::max(dx, dy), shorter = std::min(dx, dy);
    const ptrdiff_t along = isSteep ? alongY : alongX;
    const ptrdiff_t aside = isSteep ? alongX : alongY;

    const char* p = reinterpret_cast<const char*>(src.row(pt1.y) + pt1.x);
    int64_t error = longer;
    for (int64_t i = 0;; ++i) {
        std::memcpy(pDst + i, p, sizeof(Pixel));
        if (i == longer) return;
        p += along;
        error -= 2 * shorter;
        if (error < 0) {
            error += 2 * longer;
            p += aside;
        }
    }
}

template <class T, int kChannels>
struct Pixel {
    T channels[kChannels];
};

template <class T, int kChannels>
qelStatus sampleLine(const T* pSrc, int srcStep, QelSize roiSize, T* pDst, QelPoint pt1, QelPoint pt2) {
    // Both ends lie in the image, so the number of samples cannot overflow.
    const qelStatus status = Check()
                                 .pointers(pSrc, pDst)
                                 .size(roiSize)
                                 .steps(rowOf<T>(roiSize.width, kChannels), srcStep)
                                 .require(isInside(pt1, roiSize) && isInside(pt2, roiSize), qelStatusOutOfRange)
                                 .status();
    if (status != qelStatusOk) return status;

    using P = Pixel<T, kChannels>;
    walkLine<P>({reinterpret_cast<const P*>(pSrc), srcStep}, reinterpret_cast<P*>(pDst), pt1, pt2);
    return qelStatusOk;
}

}  // namespace
}  // namespace qel

#define SAMPLE_LINE(name, T, channels)                                                                 \
    qelStatus name(const T* pSrc, int srcStep, QelSize roiSize, T* pDst, QelPoint pt1, QelPoint pt2) { \
        return qel::sampleLine<T, channels>(pSrc, srcStep, roiSize, pDst, pt1, pt2);                   \
    }
SAMPLE_LINE(qeliSampleLine_8u_C1R, Qel8u, 1)
SAMPLE_LINE(qeliSampleLine_8u_C3R, Qel8u, 3)
SAMPLE_LINE(qeliSampleLine_16u_C1R, Qel16u, 1)
SAMPLE_LINE(qeliSampleLine_16u_C3R, Qel16u, 3)
SAMPLE_LINE(qeliSampleLine_32f_C1R, Qel32f, 1)
SAMPLE_LINE(qeliSampleLine_32f_C3R, Qel32f, 3)
#undef SAMPLE_LINE
