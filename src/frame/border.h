// Images with a border around them, for the families' own use: by repetition of the nearest edge pixel, or of one
// value.
//
// The destination of width by height `dstRoiSize` holds the source from column leftBorderWidth and row topBorderHeight
// on; what is left on the right and at the bottom is border, too. All four borders may be empty. Steps count bytes;
// pixels need no alignment. A function returns, tested in this order and with nothing written on an error:
//
//     qelStatusNullPointer  a pointer is null
//     qelStatusBadStep      a step is below 1; steps are not compared with the row
//     qelStatusBadSize      a width or height is below 1, a border is negative, or source and border are wider or
//     higher
//                           than the destination
//     qelStatusOk           the destination is written
//
// Where runs of pixels overlap - rows closer than they are long, a source inside the destination - the result is that
// of pixels written one by one, from left to right, in the order that the block gives.
#ifndef QELCV_FRAME_BORDER_H_
#define QELCV_FRAME_BORDER_H_

#include "qelcv/types.h"

namespace qel {

// A pixel of the border is the nearest pixel of the source. 32s copies bits and serves 32f images, too.
//
// Order: the source's rows from the top, each with its left part, its pixels and its right part; then the rows of the
// bottom border as copies of the last row so written, and the rows of the top border as copies of the first.
qelStatus qeliCopyReplicateBorder_8u_C1R(const Qel8u* pSrc, int srcStep, QelSize srcRoiSize, Qel8u* pDst, int dstStep,
                                         QelSize dstRoiSize, int topBorderHeight, int leftBorderWidth);
qelStatus qeliCopyReplicateBorder_8u_C3R(const Qel8u* pSrc, int srcStep, QelSize srcRoiSize, Qel8u* pDst, int dstStep,
                                         QelSize dstRoiSize, int topBorderHeight, int leftBorderWidth);
qelStatus qeliCopyReplicateBorder_8u_C4R(const Qel8u* pSrc, int srcStep, QelSize srcRoiSize, Qel8u* pDst, int dstStep,
                                         QelSize dstRoiSize, int topBorderHeight, int leftBorderWidth);
qelStatus qeliCopyReplicateBorder_32s_C1R(const Qel32s* pSrc, int srcStep, QelSize srcRoiSize, Qel32s* pDst,
                                          int dstStep, QelSize dstRoiSize, int topBorderHeight, int leftBorderWidth);
qelStatus qeliCopyReplicateBorder_32s_C3R(const Qel32s* pSrc, int srcStep, QelSize srcRoiSize, Qel32s* pDst,
                                          int dstStep, QelSize dstRoiSize, int topBorderHeight, int leftBorderWidth);
qelStatus qeliCopyReplicateBorder_32s_C4R(const Qel32s* pSrc, int srcStep, QelSize srcRoiSize, Qel32s* pDst,
                                          int dstStep, QelSize dstRoiSize, int topBorderHeight, int leftBorderWidth);

// The same around an image that stands in its destination already: pSrc is the image's first pixel, leftBorderWidth
// pixels and topBorderHeight rows behind the destination's. The image is not changed.
//
// Order: left and right part of the image's first row; the rows of the top border as copies of that row; left and right
// part of the other rows; the rows of the bottom border as copies of the last.
qelStatus qeliCopyReplicateBorder_8u_C1IR(Qel8u* pSrc, int srcDstStep, QelSize srcRoiSize, QelSize dstRoiSize,
                                          int topBorderHeight, int leftBorderWidth);
qelStatus qeliCopyReplicateBorder_8u_C3IR(Qel8u* pSrc, int srcDstStep, QelSize srcRoiSize, QelSize dstRoiSize,
                                          int topBorderHeight, int leftBorderWidth);
qelStatus qeliCopyReplicateBorder_8u_C4IR(Qel8u* pSrc, int srcDstStep, QelSize srcRoiSize, QelSize dstRoiSize,
                                          int topBorderHeight, int leftBorderWidth);
qelStatus qeliCopyReplicateBorder_32s_C1IR(Qel32s* pSrc, int srcDstStep, QelSize srcRoiSize, QelSize dstRoiSize,
                                           int topBorderHeight, int leftBorderWidth);
qelStatus qeliCopyReplicateBorder_32s_C3IR(Qel32s* pSrc, int srcDstStep, QelSize srcRoiSize, QelSize dstRoiSize,
                                           int topBorderHeight, int leftBorderWidth);
qelStatus qeliCopyReplicateBorder_32s_C4IR(Qel32s* pSrc, int srcDstStep, QelSize srcRoiSize, QelSize dstRoiSize,
                                           int topBorderHeight, int leftBorderWidth);

// A pixel of the border is `value`.
//
// Order: the rows of the top border; the source's rows, each with its left part, its pixels and its right part; the
// rows of the bottom border.
qelStatus qeliCopyConstBorder_8u_C1R(const Qel8u* pSrc, int srcStep, QelSize srcRoiSize, Qel8u* pDst, int dstStep,
                                     QelSize dstRoiSize, int topBorderHeight, int leftBorderWidth, Qel8u value);
qelStatus qeliCopyConstBorder_16s_C1R(const Qel16s* pSrc, int srcStep, QelSize srcRoiSize, Qel16s* pDst, int dstStep,
                                      QelSize dstRoiSize, int topBorderHeight, int leftBorderWidth, Qel16s value);
qelStatus qeliCopyConstBorder_16u_C1R(const Qel16u* pSrc, int srcStep, QelSize srcRoiSize, Qel16u* pDst, int dstStep,
                                      QelSize dstRoiSize, int topBorderHeight, int leftBorderWidth, Qel16u value);

}  // namespace qel

#endif
