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

/**
 * @name A copy shifted by a fraction of a pixel
 *
 *     pDst[x, y] = (1 - a) (1 - b) s[x, y] + a (1 - b) s[x+1, y] + (1 - a) b s[x, y+1] + a b s[x+1, y+1]
 *
 * where s is the source, `a` the fraction of dx and `b` that of dy: what lies beyond the last whole number, also below
 * zero, so -0.25 has the fraction 0.75. Whole pixels of a shift have no effect.
 *
 * - 8u, 8u16u: the weights are in units of 2^-14: A = truncation of a * 16384 + 0.5, likewise B, a product is
 *   (A * B + 16384) >> 14, and so on for 16384 - A and 16384 - B. They then exceed 16384 by 1 to 4, by which the
 * largest is made less: the first largest of those at (x, y), (x, y+1), (x+1, y), (x+1, y+1). 8u is (sum + 8192) >> 14.
 * 8u16u is the sum divided by 2^n, n = 14 + scaleFactor, to the nearest integer, halves upward, saturated at 65535; any
 *   scaleFactor is accepted, and -7 gives the sample times 128.
 * - all others: weights and sums in single precision, as (s00 w00 + s01 w01) + (s10 w10 + s11 w11). 16u rounds to
 * nearest, ties to even. 8u32f and 16u32f use fractions of at least 1e-6 for dx and 1e-9 for dy, 32f of at least 1e-6
 * for both. 32f images below 65 pixels in width and in height take rows in pairs: in the second of a pair the upper
 * half of the sum is the lower half of the row above times (1 - b) / b.
 *
 * @param pSrc      first sample of the source: one column and one row more than roiSize are read
 * @param srcStep, dstStep  bytes from one row to the next: at least the bytes of `width` samples and a multiple of the
 *                  sample size
 * @param pDst      first sample of the result, apart from the source
 * @param roiSize   size of the result in pixels, at least 1 by 1
 * @param dx, dy    the shift to the right and downward, in pixels
 * @param scaleFactor  Sfs: places by which sums are made less
 *
 * @retval qelStatusOk                      the result is written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  a step is not a multiple of its sample size
 *
 * Tested in this order; on an error nothing is written. Runs on the caller's thread.
 */
/** @{ */
QEL_API qelStatus qeliCopySubpix_8u_C1R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep, QelSize roiSize,
                                        Qel32f dx, Qel32f dy);
QEL_API qelStatus qeliCopySubpix_8u16u_C1R_Sfs(const Qel8u* pSrc, int srcStep, Qel16u* pDst, int dstStep,
                                               QelSize roiSize, Qel32f dx, Qel32f dy, int scaleFactor);
QEL_API qelStatus qeliCopySubpix_8u32f_C1R(const Qel8u* pSrc, int srcStep, Qel32f* pDst, int dstStep, QelSize roiSize,
                                           Qel32f dx, Qel32f dy);
QEL_API qelStatus qeliCopySubpix_16u_C1R(const Qel16u* pSrc, int srcStep, Qel16u* pDst, int dstStep, QelSize roiSize,
                                         Qel32f dx, Qel32f dy);
QEL_API qelStatus qeliCopySubpix_16u32f_C1R(const Qel16u* pSrc, int srcStep, Qel32f* pDst, int dstStep, QelSize roiSize,
                                            Qel32f dx, Qel32f dy);
QEL_API qelStatus qeliCopySubpix_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep, QelSize roiSize,
                                         Qel32f dx, Qel32f dy);
/** @} */

/**
 * @name The window around a point between pixels
 *
 * A window of W by H results whose centre is the point (x, y). Where it reaches beyond the image, the image's edge
 * samples are repeated. Per axis, with the size W and the image's size sw:
 * - the window's start is x - (W - 1) * 0.5 in single precision, its whole part ix = truncation of start + W, less W,
 *   and its fraction start - ix
 * - results from min to max lie between two samples of the image. min is -ix where that is above 0, at most W. max is
 *   W - 1, or sw - ix - 2 where the image ends before. Where ix is sw or more, min is 0 and max is -1: nothing is seen.
 *
 * A result between min and max in both axes weighs four samples, as the shifted copy of the same type does; fractions
 * are not raised, and 32f knows no pairs of rows. Between them in one axis only, it weighs two samples of the nearest
 * row or column: with 16384 - A and A, or 1 - a and a. In neither, it is the corner's sample. Each is rounded as the
 * type says.
 *
 * @param pSrc        first sample of the image
 * @param srcStep, dstStep  bytes from one row to the next: at least a row's bytes and a multiple of the sample size;
 *                    bytes between rows are neither read nor written
 * @param srcRoiSize  size of the image in pixels, at least 1 by 1
 * @param pDst        first sample of the window, apart from the image
 * @param dstRoiSize  size of the window in pixels, at least 1 by 1
 * @param x, y        the centre, in pixels of the image
 * @param pMin, pMax  receive the first and the last column and row of the window that lie between samples of the image
 * @param scaleFactor Sfs: places by which sums are made less
 *
 * @retval qelStatusOk                      the window, *pMin and *pMax are written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 a width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  a step is not a multiple of its sample size
 *
 * Tested in this order; on an error nothing is written. Runs on the caller's thread.
 */
/** @{ */
QEL_API qelStatus qeliCopySubpixIntersect_8u_C1R(const Qel8u* pSrc, int srcStep, QelSize srcRoiSize, Qel8u* pDst,
                                                 int dstStep, QelSize dstRoiSize, Qel32f x, Qel32f y, QelPoint* pMin,
                                                 QelPoint* pMax);
QEL_API qelStatus qeliCopySubpixIntersect_8u16u_C1R_Sfs(const Qel8u* pSrc, int srcStep, QelSize srcRoiSize,
                                                        Qel16u* pDst, int dstStep, QelSize dstRoiSize, Qel32f x,
                                                        Qel32f y, QelPoint* pMin, QelPoint* pMax, int scaleFactor);
QEL_API qelStatus qeliCopySubpixIntersect_8u32f_C1R(const Qel8u* pSrc, int srcStep, QelSize srcRoiSize, Qel32f* pDst,
                                                    int dstStep, QelSize dstRoiSize, Qel32f x, Qel32f y, QelPoint* pMin,
                                                    QelPoint* pMax);
QEL_API qelStatus qeliCopySubpixIntersect_16u_C1R(const Qel16u* pSrc, int srcStep, QelSize srcRoiSize, Qel16u* pDst,
                                                  int dstStep, QelSize dstRoiSize, Qel32f x, Qel32f y, QelPoint* pMin,
                                                  QelPoint* pMax);
QEL_API qelStatus qeliCopySubpixIntersect_16u32f_C1R(const Qel16u* pSrc, int srcStep, QelSize srcRoiSize, Qel32f* pDst,
                                                     int dstStep, QelSize dstRoiSize, Qel32f x, Qel32f y,
                                                     QelPoint* pMin, QelPoint* pMax);
QEL_API qelStatus qeliCopySubpixIntersect_32f_C1R(const Qel32f* pSrc, int srcStep, QelSize srcRoiSize, Qel32f* pDst,
                                                  int dstStep, QelSize dstRoiSize, Qel32f x, Qel32f y, QelPoint* pMin,
                                                  QelPoint* pMax);
/** @} */

/**
 * @name The pixels on a line between two points
 *
 * Bresenham's line from pt1 to pt2, both included: one pixel for each step along the longer axis, that is
 * max(|x2 - x1|, |y2 - y1|) + 1 of them. Where both axes are as long, the line is the diagonal.
 *
 * @param pSrc      first sample of the image; C3: three interleaved channels
 * @param srcStep   bytes from one row to the next: at least a row's bytes and a multiple of the sample size
 * @param roiSize   size of the image in pixels, at least 1 by 1
 * @param pDst      receives the pixels one behind the other
 * @param pt1, pt2  first and last pixel of the line, both in the image
 *
 * @retval qelStatusOk                      the line is written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 the step is shorter than a row
 * @retval qelStatusStepNotElementMultiple  16u, 32f: the step is not a multiple of the sample size
 * @retval qelStatusOutOfRange              a point lies outside of the image
 *
 * Tested in this order; on an error nothing is written. Runs on the caller's thread.
 */
/** @{ */
QEL_API qelStatus qeliSampleLine_8u_C1R(const Qel8u* pSrc, int srcStep, QelSize roiSize, Qel8u* pDst, QelPoint pt1,
                                        QelPoint pt2);
QEL_API qelStatus qeliSampleLine_8u_C3R(const Qel8u* pSrc, int srcStep, QelSize roiSize, Qel8u* pDst, QelPoint pt1,
                                        QelPoint pt2);
QEL_API qelStatus qeliSampleLine_16u_C1R(const Qel16u* pSrc, int srcStep, QelSize roiSize, Qel16u* pDst, QelPoint pt1,
                                         QelPoint pt2);
QEL_API qelStatus qeliSampleLine_16u_C3R(const Qel16u* pSrc, int srcStep, QelSize roiSize, Qel16u* pDst, QelPoint pt1,
                                         QelPoint pt2);
QEL_API qelStatus qeliSampleLine_32f_C1R(const Qel32f* pSrc, int srcStep, QelSize roiSize, Qel32f* pDst, QelPoint pt1,
                                         QelPoint pt2);
QEL_API qelStatus qeliSampleLine_32f_C3R(const Qel32f* pSrc, int srcStep, QelSize roiSize, Qel32f* pDst, QelPoint pt1,
                                         QelPoint pt2);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
