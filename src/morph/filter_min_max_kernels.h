// The two stages of the min and max filters: rows into lines, lines into rows of the result.
#ifndef QELCV_MORPH_FILTER_MIN_MAX_KERNELS_H_
#define QELCV_MORPH_FILTER_MIN_MAX_KERNELS_H_

#include "frame/image.h"
#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

// The extremes of a window that slides along one line of `width` pixels: windowWidth pixels, of which the pixel
// numbered `anchor` stands over the result. Any window of at least 1 with the anchor in it; the line's end pixels stand
// for those beyond. The lines do not overlap.
//
// Of two floats that do not compare or are equal, the order of the samples and the window's width say which one is
// taken; the instruction set does not.
template <class T>
using MinMaxRowKernel = void(const T* pSrcLine, T* pDstLine, int width, int windowWidth, int anchor);

template <class T>
using MinMaxRow = Kernel<MinMaxRowKernel<T>>;

extern const MinMaxRow<Qel8u> ownFilterMaxRow_8u_C1R;
extern const MinMaxRow<Qel8u> ownFilterMaxRow_8u_C3R;
extern const MinMaxRow<Qel8u> ownFilterMaxRow_8u_C4R;
extern const MinMaxRow<Qel32f> ownFilterMaxRow_32f_C1R;
extern const MinMaxRow<Qel32f> ownFilterMaxRow_32f_C3R;
extern const MinMaxRow<Qel32f> ownFilterMaxRow_32f_C4R;
extern const MinMaxRow<Qel8u> ownFilterMinRow_8u_C1R;
extern const MinMaxRow<Qel8u> ownFilterMinRow_8u_C3R;
extern const MinMaxRow<Qel8u> ownFilterMinRow_8u_C4R;
extern const MinMaxRow<Qel32f> ownFilterMinRow_32f_C1R;
extern const MinMaxRow<Qel32f> ownFilterMinRow_32f_C3R;
extern const MinMaxRow<Qel32f> ownFilterMinRow_32f_C4R;

// The extremes of size.height windows down the lines, size.width samples each: row y of the result is that of the
// windowHeight lines from pLines[y] on. A line may stand several times in a row. size.height is what minMaxBlock says
// or a part of it, as minMaxPart cuts it. Lines may be overwritten, but the results that follow stay the same.
template <class T>
using MinMaxColumnKernel = void(T* const* pLines, const Plane<T>& dst, QelSize size, int windowHeight);

template <class T>
using MinMaxColumn = Kernel<MinMaxColumnKernel<T>>;

extern const MinMaxColumn<Qel8u> ownFilterMaxColumn01_8u_C1R;
extern const MinMaxColumn<Qel8u> ownFilterMaxColumn03_8u_C1R;
extern const MinMaxColumn<Qel8u> ownFilterMaxColumn05_8u_C1R;
extern const MinMaxColumn<Qel8u> ownFilterMaxColumnVH_8u_C1R;
extern const MinMaxColumn<Qel32f> ownFilterMaxColumn01_32f_C1R;
extern const MinMaxColumn<Qel32f> ownFilterMaxColumn03_32f_C1R;
extern const MinMaxColumn<Qel32f> ownFilterMaxColumn05_32f_C1R;
extern const MinMaxColumn<Qel32f> ownFilterMaxColumnVH_32f_C1R;
extern const MinMaxColumn<Qel8u> ownFilterMinColumn01_8u_C1R;
extern const MinMaxColumn<Qel8u> ownFilterMinColumn03_8u_C1R;
extern const MinMaxColumn<Qel8u> ownFilterMinColumn05_8u_C1R;
extern const MinMaxColumn<Qel8u> ownFilterMinColumnVH_8u_C1R;
extern const MinMaxColumn<Qel32f> ownFilterMinColumn01_32f_C1R;
extern const MinMaxColumn<Qel32f> ownFilterMinColumn03_32f_C1R;
extern const MinMaxColumn<Qel32f> ownFilterMinColumn05_32f_C1R;
extern const MinMaxColumn<Qel32f> ownFilterMinColumnVH_32f_C1R;

// Rows of the result that are made together, from the lines that all their windows share. Where the lines of a window
// are too many for that, the rows are as many as the window is high, and two scans of lines meet in each of them (van
// Herk).
constexpr int kMinMaxTallest = 40;  // window whose lines are shared

constexpr int minMaxBlock(int windowHeight) {
    return windowHeight == 1                ? 1
           : windowHeight <= 4              ? 2
           : windowHeight <= 8              ? 4
           : windowHeight <= 20             ? 8
           : windowHeight <= kMinMaxTallest ? 16
                                            : windowHeight;
}

// How many of `rows` rows that are left to make the next call makes.
constexpr int minMaxPart(int windowHeight, int rows) {
    int block = minMaxBlock(windowHeight);
    if (windowHeight > kMinMaxTallest) return block < rows ? block : rows;
    while (block > rows) block /= 2;
    return block;
}

// Four rows of the extremes of squares of 3 or 5 pixels, in one step: from 3 rows more than the square is
// high, each of at least kMinMaxSquareBytes bytes. Rows may stand several times.
template <class T>
using MinMaxSquareKernel = void(const T* const* pRows, T* const* pDstRows, int width, int anchor);
template <class T>
using MinMaxSquare = Kernel<MinMaxSquareKernel<T>>;
constexpr int kMinMaxSquareRows = 4;
constexpr int kMinMaxSquareBytes = 64;
constexpr int kMinMaxSquareLargest = 5;

extern const MinMaxSquare<Qel8u> ownFilterMaxSquare03_8u_C1R;
extern const MinMaxSquare<Qel8u> ownFilterMaxSquare03_8u_C3R;
extern const MinMaxSquare<Qel8u> ownFilterMaxSquare03_8u_C4R;
extern const MinMaxSquare<Qel32f> ownFilterMaxSquare03_32f_C1R;
extern const MinMaxSquare<Qel8u> ownFilterMaxSquare05_8u_C1R;
extern const MinMaxSquare<Qel8u> ownFilterMaxSquare05_8u_C3R;
extern const MinMaxSquare<Qel8u> ownFilterMaxSquare05_8u_C4R;
extern const MinMaxSquare<Qel32f> ownFilterMaxSquare05_32f_C1R;
extern const MinMaxSquare<Qel8u> ownFilterMinSquare03_8u_C1R;
extern const MinMaxSquare<Qel8u> ownFilterMinSquare03_8u_C3R;
extern const MinMaxSquare<Qel8u> ownFilterMinSquare03_8u_C4R;
extern const MinMaxSquare<Qel32f> ownFilterMinSquare03_32f_C1R;
extern const MinMaxSquare<Qel8u> ownFilterMinSquare05_8u_C1R;
extern const MinMaxSquare<Qel8u> ownFilterMinSquare05_8u_C3R;
extern const MinMaxSquare<Qel8u> ownFilterMinSquare05_8u_C4R;
extern const MinMaxSquare<Qel32f> ownFilterMinSquare05_32f_C1R;

}  // namespace qel

#endif
