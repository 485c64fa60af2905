#ifndef QELCV_FEATURE_HOUGH_LINE_KERNELS_H_
#define QELCV_FEATURE_HOUGH_LINE_KERNELS_H_

#include <cstddef>

#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

// Writes the columns of a row's samples other than zero, in ascending order. Returns their number.
using HoughPointsKernel = int(const Qel8u* pSrc, int width, Qel32s* pColumns);
extern const Kernel<HoughPointsKernel> ownHoughPoints_8u32s_W7;

// For each row of the image the number of its points, then their columns. Behind each list, and behind the last one,
// are 64 bytes that can be read.
struct HoughPoints {
    const Qel32s* lists;
    std::ptrdiff_t pitch;
    int height;

    const Qel32s* list(int y) const { return lists + pitch * y; }
};

// An angle, in units of 1 / 1024 of a counter for each pixel, and how the distances there are counted: those from
// counter lo to hi. All others go to `outside`, or to lo and hi where there should be none.
struct HoughAngle {
    int cosine;
    int sine;
    int half;  // the counter of distance 0
    int lo;
    int hi;
    int outside;
};

// Counts the distances of all points from the origin, each rounded to a counter.
using HoughVoteKernel = void(const HoughPoints& points, const HoughAngle& angle, Qel32s* pCounters);
extern const Kernel<HoughVoteKernel> ownHoughVote_32f_W7;
extern const Kernel<HoughVoteKernel> ownHoughVote_Region_32s_W7;

// The counters of three angles that follow each other.
struct HoughRows {
    const Qel32s* previous;
    const Qel32s* current;
    const Qel32s* next;
};

// The first counter from `from` on that is above `least` and a peak: above its neighbours at the smaller distance and
// angle, at least those at the larger. `end`, where there is none.
using HoughPeakKernel = int(const HoughRows& rows, int from, int end, int least);
extern const Kernel<HoughPeakKernel> ownPeakBuf_w7;

}  // namespace qel

#endif
