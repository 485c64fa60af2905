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

/**
 * @name Undoing the distortion of a lens: one image
 *
 * Pixel (x, y) of the result is the source at (xs, ys), where a lens with the radial coefficients k1 and k2 put it:
 *
 *     X = x - cx    Y = y - cy    rx = X^2 / fx^2    ry = Y^2 / fy^2    t = k1 (rx + ry) + k2 (rx + ry)^2
 *     xs = X t + x    ys = Y t + y
 *
 * All of it in single precision and in this order: ry = ((1 / (fy fy)) Y) Y, A = (k2 ry + k1) ry, B = (2 k2) ry,
 * rx = ((1 / (fx fx)) X) X, t = (k2 rx + k1) rx + (B rx + A). With the whole parts i, j and the fractions a, b of xs
 * and ys, the weights (1 - b)(1 - a), (1 - b) a, b (1 - a), b a, and s the source:
 *
 *     result = (s[i+1, j] w01 + s[i+1, j+1] w11) + (s[i, j] w00 + s[i, j+1] w10)
 *
 * 8u and 16u add 0.5 and truncate. A pixel whose (xs, ys) does not lie in 0 <= xs < width - 1, 0 <= ys < height - 1 is
 * not written.
 *
 * @param pSrc      first sample of the source region; C3: three interleaved channels
 * @param srcStep, dstStep  bytes from one row to the next: at least a row's bytes and a multiple of the sample size;
 *                  bytes between rows are neither read nor written
 * @param pDst      first sample of the result, of the same size, apart from the source
 * @param roiSize   region in pixels, at least 1 by 1
 * @param fx, fy    focal lengths in pixels, not 0
 * @param cx, cy    the principal point, in pixels of the region
 * @param k1, k2    radial coefficients
 * @param pBuffer   null or qeliUndistortGetSize bytes; makes no difference
 *
 * @retval qelStatusOk                      the region is written, where there is something to write
 * @retval qelStatusNullPointer             pSrc or pDst is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  16u, 32f: a step is not a multiple of the sample size
 * @retval qelStatusBadArg                  fx or fy is 0, of either sign
 *
 * Tested in this order; on an error nothing is written. Runs on the caller's thread.
 */
/** @{ */
QEL_API qelStatus qeliUndistortRadial_8u_C1R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep, QelSize roiSize,
                                             Qel32f fx, Qel32f fy, Qel32f cx, Qel32f cy, Qel32f k1, Qel32f k2,
                                             Qel8u* pBuffer);
QEL_API qelStatus qeliUndistortRadial_8u_C3R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep, QelSize roiSize,
                                             Qel32f fx, Qel32f fy, Qel32f cx, Qel32f cy, Qel32f k1, Qel32f k2,
                                             Qel8u* pBuffer);
QEL_API qelStatus qeliUndistortRadial_16u_C1R(const Qel16u* pSrc, int srcStep, Qel16u* pDst, int dstStep,
                                              QelSize roiSize, Qel32f fx, Qel32f fy, Qel32f cx, Qel32f cy, Qel32f k1,
                                              Qel32f k2, Qel8u* pBuffer);
QEL_API qelStatus qeliUndistortRadial_16u_C3R(const Qel16u* pSrc, int srcStep, Qel16u* pDst, int dstStep,
                                              QelSize roiSize, Qel32f fx, Qel32f fy, Qel32f cx, Qel32f cy, Qel32f k1,
                                              Qel32f k2, Qel8u* pBuffer);
QEL_API qelStatus qeliUndistortRadial_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                              QelSize roiSize, Qel32f fx, Qel32f fy, Qel32f cx, Qel32f cy, Qel32f k1,
                                              Qel32f k2, Qel8u* pBuffer);
QEL_API qelStatus qeliUndistortRadial_32f_C3R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                              QelSize roiSize, Qel32f fx, Qel32f fy, Qel32f cx, Qel32f cy, Qel32f k1,
                                              Qel32f k2, Qel8u* pBuffer);
/** @} */

/**
 * @name Undoing the distortion of a lens: maps for any image
 *
 * pxMap[x, y] and pyMap[x, y] are where pixel (x, y) lies in the distorted image, whether inside of it or not. In
 * single precision and in this order, with X = x - cx and Y = y - cy:
 * - p1 or p2 not 0: u = X (1 / fx), v = Y (1 / fy), r2 = u u + v v, t = (k2 r2 + k1) r2 + (2 p2) u + (2 p1) v,
 *   pxMap = t X + ((fx p2) r2 + x), pyMap = t Y + ((fy p1) r2 + y)
 * - else: rx = (X X) (1 / (fx fx)), ry = (Y Y) (1 / (fy fy)),
 *   t = ((2 k2) ry) rx + ((k2 rx + k1) rx + (k2 ry + k1) ry), pxMap = X t + x, pyMap = Y t + y
 *
 * @param pxMap, pyMap  first sample of each map
 * @param xStep, yStep  bytes from one row of a map to the next: at least a row's bytes and a multiple of 4; bytes
 *                  between rows are not written
 * @param roiSize   size of the maps in pixels, at least 1 by 1
 * @param fx, fy    focal lengths in pixels, not 0
 * @param cx, cy    the principal point, in pixels
 * @param k1, k2    radial coefficients
 * @param p1, p2    tangential coefficients
 * @param pBuffer   null or qeliUndistortGetSize bytes; makes no difference
 *
 * @retval qelStatusOk                      the maps are written
 * @retval qelStatusNullPointer             pxMap or pyMap is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than a row
 * @retval qelStatusStepNotElementMultiple  a step is not a multiple of 4
 * @retval qelStatusBadArg                  fx or fy is 0, of either sign
 *
 * Tested in this order; on an error nothing is written. From 0x20000 pixels on, maps whose addresses and steps are
 * multiples of 16 bypass the cache. Runs on the caller's thread.
 */
QEL_API qelStatus qeliCreateMapCameraUndistort_32f_C1R(Qel32f* pxMap, int xStep, Qel32f* pyMap, int yStep,
                                                       QelSize roiSize, Qel32f fx, Qel32f fy, Qel32f cx, Qel32f cy,
                                                       Qel32f k1, Qel32f k2, Qel32f p1, Qel32f p2, Qel8u* pBuffer);

/**
 * The bytes of the optional buffer above: 24 for each column, their number rounded up to a multiple of 4, and 32 more.
 *
 * @param roiSize      region in pixels, at least 1 by 1
 * @param pBufferSize  receives the bytes
 *
 * @retval qelStatusOk           *pBufferSize is written
 * @retval qelStatusNullPointer  pBufferSize is null
 * @retval qelStatusBadSize      width or height below 1
 * @retval qelStatusOverflow     the bytes do not fit in an int
 */
QEL_API qelStatus qeliUndistortGetSize(QelSize roiSize, int* pBufferSize);

/** The tables of point-spread functions of a super-resolution solver. Calls only read it. */
typedef struct QelSRHNState {
    Qel32f* pCoeffs; /**< entries of 4 taps, or of 12: three rows of three taps and a zero */
} QelSRHNState;

/**
 * @name Super-resolution: the table of point-spread functions
 *
 * A sample of low resolution is modelled as a weighted sum of 2 by 2 or 3 by 3 pixels of high resolution. Which weights
 * depends on where the sample lies between those pixels; the table holds a set of them for each case.
 *
 * @param ppState    receives the state, allocated by qelMalloc, which the caller releases with the Free function of the
 *                   same size; it may be shared between threads
 * @param pCoeffs    the table: 4 or 9 taps an entry, row by row, without gaps; copied
 * @param tableSize  number of entries, at least 1
 * @param pState     a state of InitAlloc, gone after the call
 *
 * @retval qelStatusOk           *ppState is written; the state is released
 * @retval qelStatusNullPointer  a pointer is null
 * @retval qelStatusBadSize      tableSize below 1
 * @retval qelStatusNoMemory     an allocation failed, or the table is beyond the range of an int; nothing is left
 * behind
 *
 * Tested in this order; on an error nothing is written.
 */
/** @{ */
QEL_API qelStatus qeliSRHNInitAlloc_PSF2x2(QelSRHNState** ppState, const Qel32f* pCoeffs, int tableSize);
QEL_API qelStatus qeliSRHNInitAlloc_PSF3x3(QelSRHNState** ppState, const Qel32f* pCoeffs, int tableSize);
QEL_API qelStatus qeliSRHNFree_PSF2x2(QelSRHNState* pState);
QEL_API qelStatus qeliSRHNFree_PSF3x3(QelSRHNState* pState);
/** @} */

/**
 * @name Super-resolution: how far the model is from what was observed
 *
 * For each sample i, with p = pHR + pOffsets[i], R the step in elements and c entry pCoeffIdx[i] of the table, in
 * single precision and from left to right:
 *
 *     PSF2x2: pResidual[i] = p[0] c00 - pLR[i] + p[1] c01 + p[R] c10 + p[R+1] c11
 *     PSF3x3: pResidual[i] = p[0] c00 - pLR[i] + p[1] c01 + p[2] c02 + p[R] c10 + ... + p[2R+2] c22
 *
 * Nothing but the taps is read.
 *
 * @param pHR        the image of high resolution
 * @param hrStep     bytes from one of its rows to the next: a multiple of 4, at least 8 for PSF2x2, 12 for PSF3x3
 * @param pLR        the observed samples, one behind the other
 * @param pOffsets   where the first tap of each sample lies, in elements from pHR
 * @param pCoeffIdx  entry of the table for each sample; not tested
 * @param pResidual  receives the residuals
 * @param len        number of samples, at least 1
 * @param pState     the table, of the same size of taps
 *
 * @retval qelStatusOk           the residuals are written
 * @retval qelStatusNullPointer  a pointer is null
 * @retval qelStatusBadSize      len below 1
 * @retval qelStatusBadStep      the step is too small or not a multiple of 4
 *
 * Tested in this order; on an error nothing is written. Runs on the caller's thread.
 */
/** @{ */
QEL_API qelStatus qeliSRHNCalcResidual_PSF2x2_8u32f_C1R(const Qel32f* pHR, int hrStep, const Qel8u* pLR,
                                                        const unsigned int* pOffsets, const Qel16u* pCoeffIdx,
                                                        Qel32f* pResidual, int len, const QelSRHNState* pState);
QEL_API qelStatus qeliSRHNCalcResidual_PSF2x2_16u32f_C1R(const Qel32f* pHR, int hrStep, const Qel16u* pLR,
                                                         const unsigned int* pOffsets, const Qel16u* pCoeffIdx,
                                                         Qel32f* pResidual, int len, const QelSRHNState* pState);
QEL_API qelStatus qeliSRHNCalcResidual_PSF3x3_8u32f_C1R(const Qel32f* pHR, int hrStep, const Qel8u* pLR,
                                                        const unsigned int* pOffsets, const Qel16u* pCoeffIdx,
                                                        Qel32f* pResidual, int len, const QelSRHNState* pState);
QEL_API qelStatus qeliSRHNCalcResidual_PSF3x3_16u32f_C1R(const Qel32f* pHR, int hrStep, const Qel16u* pLR,
                                                         const unsigned int* pOffsets, const Qel16u* pCoeffIdx,
                                                         Qel32f* pResidual, int len, const QelSRHNState* pState);
/** @} */

/**
 * @name Super-resolution: residuals back to the pixels that made them
 *
 * For each sample i in order, with g = pGrad + pOffsets[i], c entry pCoeffIdx[i] of the table and
 * w = pWeights[pWeightIdx[i]] * pResidual[i]: each tap becomes g[k] = c[k] * w + g[k], in single precision. Samples may
 * share pixels; a later one adds to what an earlier one left. Nothing but the taps is read and written.
 *
 * @param pGrad       the gradient image, read and written
 * @param gradStep    bytes from one of its rows to the next: a multiple of 4, at least 8 for PSF2x2, 12 for PSF3x3
 * @param pOffsets    where the first tap of each sample lies, in elements from pGrad
 * @param pCoeffIdx   entry of the table for each sample; not tested
 * @param pResidual   the residuals
 * @param pWeightIdx  element of pWeights for each sample
 * @param len         number of samples, at least 1
 * @param pWeights    weights of samples
 * @param pState      the table, of the same size of taps
 *
 * @retval qelStatusOk           the gradient is updated
 * @retval qelStatusNullPointer  a pointer is null
 * @retval qelStatusBadSize      len below 1
 * @retval qelStatusBadStep      the step is too small or not a multiple of 4
 *
 * Tested in this order; on an error nothing is written. Runs on the caller's thread.
 */
/** @{ */
QEL_API qelStatus qeliSRHNUpdateGradient_PSF2x2_32f_C1R(Qel32f* pGrad, int gradStep, const unsigned int* pOffsets,
                                                        const Qel16u* pCoeffIdx, const Qel32f* pResidual,
                                                        const Qel8u* pWeightIdx, int len, const Qel32f* pWeights,
                                                        const QelSRHNState* pState);
QEL_API qelStatus qeliSRHNUpdateGradient_PSF3x3_32f_C1R(Qel32f* pGrad, int gradStep, const unsigned int* pOffsets,
                                                        const Qel16u* pCoeffIdx, const Qel32f* pResidual,
                                                        const Qel8u* pWeightIdx, int len, const Qel32f* pWeights,
                                                        const QelSRHNState* pState);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
