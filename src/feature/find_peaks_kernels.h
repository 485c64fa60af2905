#ifndef QELCV_FEATURE_FIND_PEAKS_KERNELS_H_
#define QELCV_FEATURE_FIND_PEAKS_KERNELS_H_

#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

// out[i] = the largest or the smallest of s[i], s[i + 1] and s[i + 2], for i from 0 to count - 3.
template <class T>
using FilterRow03Kernel = void(const T* s, T* out, int count);

extern const Kernel<FilterRow03Kernel<Qel32s>> ownSiftFilterMaxRow03_32s_C1R;
extern const Kernel<FilterRow03Kernel<Qel32s>> ownSiftFilterMinRow03_32s_C1R;
extern const Kernel<FilterRow03Kernel<Qel32f>> ownSiftFilterMaxRow03_32f_C1R;
extern const Kernel<FilterRow03Kernel<Qel32f>> ownSiftFilterMinRow03_32f_C1R;

// Three rows each, whose largest and smallest sample in a column are the extremes around the pixel there.
template <class T>
struct Neighbours {
    const T* high[3];
    const T* low[3];
};

// Where found peaks go: to the list's `room` entries that are still free.
struct PeakList {
    QelPoint* pPeak;
    int room;
};

// Stores the peaks among the `width` samples of a row, the first of which lies at `first`. Returns their number, at
// most the list's room.
template <class T>
using FindPeaksRowKernel = int(const T* pSrc, const Neighbours<T>& around, int width, T threshold, QelPoint first,
                               PeakList list);

extern const Kernel<FindPeaksRowKernel<Qel32s>> ownFindPeaksRow_32s_C1R_W7;
extern const Kernel<FindPeaksRowKernel<Qel32f>> ownFindPeaksRow_32f_C1R_W7;

}  // namespace qel

#endif
