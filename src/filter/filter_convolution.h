// The engine of the filters with fixed kernels: rows are filtered into a ring of intermediate values, and columns of
// these into the result, while both are in the cache that is nearest.
#ifndef QELCV_FILTER_FILTER_CONVOLUTION_H_
#define QELCV_FILTER_FILTER_CONVOLUTION_H_

#include "filter/fixed_kernels.h"
#include "frame/rows.h"

namespace qel {

// Rows that a turn gives at most, rows that the ring has room for, and pointers of the engine's array.
constexpr int kStripRows = 16;
constexpr int ringRows(int taps) { return taps + kStripRows - 1; }
constexpr int pointerCount(int taps) { return 2 * ringRows(taps) + taps; }

// A filter of one mask, by its two routines. Their kernels are equally long.
template <class Src, class Mid, class Dst>
struct FixedFilter {
    const FixedRows<Src, Mid>& rows;
    const FixedColumns<Mid, Dst>& columns;
};

// The arguments of a call.
template <class Src, class Dst>
struct FixedCall {
    Plane<const Src> source;
    Plane<Dst> dst;
    QelSize roiSize;
    int mask;
    int borderMode;
    Src borderValue;
    int divisor;
    Qel8u* pBuffer;
};

// Filters a share of the call's rows. At a seam between shares, and where flags of the mode say so, rows beside the
// share are read from the image.
template <class Src, class Mid, class Dst>
void filterConvolution(const FixedCall<Src, Dst>& call, const FixedFilter<Src, Mid, Dst>& filter, const Share& share,
                       void* pScratch);

constexpr auto ownFilterConvolution_32f_C1R = filterConvolution<Qel32f, Qel32f, Qel32f>;
constexpr auto ownFilterConvolution_8u16s_C1R = filterConvolution<Qel8u, Qel16s, Qel16s>;
constexpr auto ownFilterConvolution_8u8s_C1R = filterConvolution<Qel8u, Qel16s, Qel8s>;
constexpr auto ownFilterConvolution_8u_C1R = filterConvolution<Qel8u, Qel16s, Qel8u>;

}  // namespace qel

#endif
