// The engine of the filters with fixed kernels: an image runs in strips of 16 rows, or of fewer where rows are long,
// through a ring of row buffers. The row stage fills the ring, the column stage reads it while it is in the cache.
#ifndef QELCV_FILTER_FILTER_CONVOLUTION_H_
#define QELCV_FILTER_FILTER_CONVOLUTION_H_

#include "filter/fixed_kernels.h"

namespace qel {

// Rows that the ring holds beyond the taps of the column kernel, and pointers of the engine's array.
constexpr int ringRows(int taps) { return taps + 15; }
constexpr int pointerCount(int taps) { return 2 * ringRows(taps) + taps; }

// A pass: which kernel goes along the rows, and the routines for rows and columns. Both kernels are equally long.
template <class Src, class Mid, class Dst>
struct FixedPass {
    int row;  // a RowIndex
    const Kernel<FixedRowKernel<Src, Mid>>& rows;
    const Kernel<FixedColumnKernel<Mid, Dst>>& columns;
};

// Where in its image a slice lies: mirrored and wrapped rows may come from anywhere in it.
template <class Src>
struct SliceOf {
    const Src* pSrc;  // first row of the image, where the slice's rows begin
    int height;       // of the image
    int y;            // first row of the slice
};

// Columns that pay to be filtered at a time: all, or those of a stripe. An image beyond the caches goes whole, because
// memory is read ahead along rows.
template <class Src, class Mid, class Dst>
int stripeWidth(const FixedPass<Src, Mid, Dst>& pass, QelSize size);

// Filters a slice of size.width by size.height, which begins at pSrc. Flags of borderMode say that the rows next to the
// slice are rows of an image, and are read. The slice may be a stripe of its rows.
template <class Src, class Mid, class Dst>
void filterConvolution(const Src* pSrc, int srcStep, Dst* pDst, int dstStep, QelSize size, Beside beside,
                       const FixedPass<Src, Mid, Dst>& pass, int borderMode, Src borderValue, int divisor,
                       const SliceOf<Src>& image, void* pScratch);

constexpr auto ownFilterConvolution_32f_C1R = filterConvolution<Qel32f, Qel32f, Qel32f>;
constexpr auto ownFilterConvolution_8u16s_C1R = filterConvolution<Qel8u, Qel16s, Qel16s>;
constexpr auto ownFilterConvolution_8u8s_C1R = filterConvolution<Qel8u, Qel16s, Qel8s>;
constexpr auto ownFilterConvolution_8u_C1R = filterConvolution<Qel8u, Qel16s, Qel8u>;

}  // namespace qel

#endif
