/**
 * @file
 * Pyramids, motion and geometry: Gaussian steps, pyramids of any rate, optical flow, subpixel samples, undistortion,
 * super-resolution.
 */
#ifndef QELCV_PYRAMID_H_
#define QELCV_PYRAMID_H_

#include "qelcv/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @name One step down a Gaussian pyramid: half the width and height, rounded up
 *
 *     pDst[x, y] = sum over i and j of w[i] * w[j] * pSrc[2 x + i, 2 y + j] / 256,  i and j from -2 to 2
 *
 * with the weights w = 1 4 6 4 1, and the source reflected about its edge samples: beside 0 lies 1, beside w - 1 lies
 * w - 2, as often as it takes in an image of one or two pixels. Channels are filtered each by itself.
 *
 * 8u and 8s round to nearest, halves upward, and cannot overflow. 32f adds rows first, then columns, in single
 * precision and in this order, where `c` is the centre, `a` to `e` are the five from first to last:
 * - the first pixel of a row: c * 6 + d * 8 + e * 2
 * - the last pixel of a row of odd width: c * 6 + b * 8 + a * 2, of even width: (b + d) * 4 + a + c * 7
 * - all others, and all columns: c * 6 + (b + d) * 4 + a + e, times 1 / 256 at the end
 * - of one or two rows, (first row's sum + last row's sum) * 8 / 256; of one or two columns likewise; where a row has
 *   one or two pixels, too, its sum is (first + last) * 8
 *
 * @param pSrc      first sample of the source region; C3: three interleaved channels
 * @param srcStep, dstStep  bytes from one row to the next: at least a row's bytes and, 32f, a multiple of 4; bytes
 *                  between rows are neither read nor written
 * @param pDst      first sample of the result, (width + 1) / 2 by (height + 1) / 2 pixels, apart from the source
 * @param roiSize   the source region in pixels, at least 1 by 1
 * @param pBuffer   scratch of qeliPyrDownGetBufSize_Gauss5x5 bytes, at any address; not touched where width or height
 *                  is below 3, but not null either
 *
 * @retval qelStatusOk                      the result is written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  32f: a step is not a multiple of 4
 *
 * Tested in this order; on an error nothing is written. Runs on the caller's thread.
 */
/** @{ */
QEL_API qelStatus qeliPyrDown_Gauss5x5_8u_C1R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep, QelSize roiSize,
                                              Qel8u* pBuffer);
QEL_API qelStatus qeliPyrDown_Gauss5x5_8u_C3R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep, QelSize roiSize,
                                              Qel8u* pBuffer);
QEL_API qelStatus qeliPyrDown_Gauss5x5_8s_C1R(const Qel8s* pSrc, int srcStep, Qel8s* pDst, int dstStep, QelSize roiSize,
                                              Qel8u* pBuffer);
QEL_API qelStatus qeliPyrDown_Gauss5x5_8s_C3R(const Qel8s* pSrc, int srcStep, Qel8s* pDst, int dstStep, QelSize roiSize,
                                              Qel8u* pBuffer);
QEL_API qelStatus qeliPyrDown_Gauss5x5_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                               QelSize roiSize, Qel8u* pBuffer);
QEL_API qelStatus qeliPyrDown_Gauss5x5_32f_C3R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                               QelSize roiSize, Qel8u* pBuffer);
/** @} */

/**
 * @name One step up a Gaussian pyramid: twice the width and height
 *
 * The weights 1 4 6 4 1 in each direction over the source with a zero behind each of its samples, divided by 64. In
 * terms of a row s[0..w-1], its pixels 2 i and 2 i + 1 are
 *
 *     even[i] = (s[i-1] + 6 s[i] + s[i+1]) / 8    odd[i] = (s[i] + s[i+1]) / 2
 *
 * and columns likewise. Reflection is that of the row with its zeros: s[-1] is s[1], but s[w] is s[w-1]. A single
 * pixel is s[0] all the way. Channels are filtered each by itself.
 *
 * 8u and 8s round once, to nearest, halves upward, and cannot overflow. 32f adds rows first, then columns, in single
 * precision and in this order, where `a`, `c` and `e` are the sample before, here and behind:
 * - even: c * 6 + a + e; in the first pixel of a row c * 6 + e * 2, in the last c + c * 6 + a; in a single one c * 8
 * - odd: (c + e) * 4; in the last pixel (c + c) * 4; in a single one c * 8
 * - columns: c * 6 + a + e and (c + e) * 4, each times 1 / 64 at the end; a single row or column: the sum of the
 *   other direction * 8 / 64
 *
 * @param pSrc      first sample of the source region; C3: three interleaved channels
 * @param srcStep, dstStep  bytes from one row to the next: at least a row's bytes and, 32f, a multiple of 4; bytes
 *                  between rows are neither read nor written
 * @param pDst      first sample of the result, 2 width by 2 height pixels, apart from the source
 * @param roiSize   the source region in pixels, at least 1 by 1
 * @param pBuffer   scratch of qeliPyrUpGetBufSize_Gauss5x5 bytes, at any address; not touched where width or height is
 *                  1, but not null either
 *
 * @retval qelStatusOk                      the result is written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  32f: a step is not a multiple of 4
 *
 * Tested in this order; on an error nothing is written. Runs on the caller's thread.
 */
/** @{ */
QEL_API qelStatus qeliPyrUp_Gauss5x5_8u_C1R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep, QelSize roiSize,
                                            Qel8u* pBuffer);
QEL_API qelStatus qeliPyrUp_Gauss5x5_8u_C3R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep, QelSize roiSize,
                                            Qel8u* pBuffer);
QEL_API qelStatus qeliPyrUp_Gauss5x5_8s_C1R(const Qel8s* pSrc, int srcStep, Qel8s* pDst, int dstStep, QelSize roiSize,
                                            Qel8u* pBuffer);
QEL_API qelStatus qeliPyrUp_Gauss5x5_8s_C3R(const Qel8s* pSrc, int srcStep, Qel8s* pDst, int dstStep, QelSize roiSize,
                                            Qel8u* pBuffer);
QEL_API qelStatus qeliPyrUp_Gauss5x5_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                             QelSize roiSize, Qel8u* pBuffer);
QEL_API qelStatus qeliPyrUp_Gauss5x5_32f_C3R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                             QelSize roiSize, Qel8u* pBuffer);
/** @} */

/**
 * @name Scratch of the Gaussian steps
 *
 * Rows of 32-bit sums, each rounded up to a multiple of 16 bytes: six of the source's width for a step down, three of
 * twice that width for a step up, and 32 bytes more. The data type does not change the number. It is counted in 32
 * bits: a width whose bytes they cannot hold wraps around.
 *
 * @param width        width of the source region in pixels, at least 1
 * @param dataType     1 for 8u, 3 for 8s, 13 for 32f
 * @param channels     1 or 3
 * @param pBufferSize  receives the bytes
 *
 * @retval qelStatusOk               *pBufferSize is written
 * @retval qelStatusNullPointer      pBufferSize is null
 * @retval qelStatusBadSize          width below 1
 * @retval qelStatusBadChannelCount  channels neither 1 nor 3
 * @retval qelStatusBadDataType      dataType not one of the three
 *
 * Tested in this order; on an error nothing is written.
 */
/** @{ */
QEL_API qelStatus qeliPyrDownGetBufSize_Gauss5x5(int width, int dataType, int channels, int* pBufferSize);
QEL_API qelStatus qeliPyrUpGetBufSize_Gauss5x5(int width, int dataType, int channels, int* pBufferSize);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
