/**
 * @file
 * Distance transforms, fast marching, inpainting.
 */
#ifndef QELCV_DISTANCE_H_
#define QELCV_DISTANCE_H_

#include "qelcv/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @name True Euclidean distance: of each pixel to the nearest zero
 *
 * A pixel of zero gets 0, each other one sqrt(dx * dx + dy * dy), with dx and dy the columns and rows to the nearest
 * zero. Method: squared distances within columns, then the lower envelope of parabolas along each row; Felzenszwalb and
 * Huttenlocher, Distance Transforms of Sampled Functions, 2004. The time is linear in the pixels.
 *
 * 8u32f: the correctly rounded root of the squared distance. 8u16u: the root is multiplied by 2 to the power
 * -scaleFactor, rounded to nearest, ties to even, and saturated at 32767.
 *
 * Details to the bit: envelopes are found, and squares added, in single precision. Below 2 to the 24 squares are exact.
 * Without a single zero in the image the distance is infinite: 8u32f gives the root of the largest float, 1.8446743e19;
 * 8u16u that of 2147483647, 46341, scaled and saturated.
 *
 * The scratch is sized by qeliTrueDistanceTransformGetBufferSize_8u32f_C1R or
 * qeliTrueDistanceTransformGetBufferSize_8u16u_C1RSfs for the same region, under the same thread limit. It needs no
 * alignment, and serves one call at a time. With M the larger of width and height, rounded up to a multiple of 4
 * (8u16u: 8), and A the width rounded up to a multiple of 8: (24 M + 56) bytes for each thread of the limit; 8u16u: (24
 * M + 24) for each, and 4 A * height + 32.
 * @param pSrc         first sample of the source region
 * @param pDst         first sample of the result; may not overlap the source
 * @param srcStep, dstStep  bytes from one row to the next: at least a row's bytes, dstStep a multiple of the sample
 *                     size; bytes between rows are neither read nor written
 * @param roiSize      region in pixels, at least 1 by 1
 * @param scaleFactor  8u16u: any number; negative for fractional bits
 * @param pBuffer      scratch of at least the queried size
 * @param pBufferSize  where the query writes the bytes
 *
 * @retval qelStatusOk                      the region is written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  dstStep is not a multiple of the sample size
 * @retval qelStatusOverflow                queries: the size exceeds the range of int
 *
 * Tested in this order; on an error nothing is written. No alignment is needed. Columns are searched on the caller's
 * thread. Rows go to OpenMP threads from a limit of 2 threads on, where there are several cores, or where limit times
 * height and width are both at least 256; their number does not change the result.
 */
/** @{ */
QEL_API qelStatus qeliTrueDistanceTransformGetBufferSize_8u32f_C1R(QelSize roiSize, int* pBufferSize);
QEL_API qelStatus qeliTrueDistanceTransformGetBufferSize_8u16u_C1RSfs(QelSize roiSize, int* pBufferSize);
QEL_API qelStatus qeliTrueDistanceTransform_8u32f_C1R(const Qel8u* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                      QelSize roiSize, Qel8u* pBuffer);
QEL_API qelStatus qeliTrueDistanceTransform_8u16u_C1RSfs(const Qel8u* pSrc, int srcStep, Qel16u* pDst, int dstStep,
                                                         QelSize roiSize, int scaleFactor, Qel8u* pBuffer);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
