/**
 * @file
 * Pixel arithmetic and statistics over regions.
 */
#ifndef QELCV_STATS_H_
#define QELCV_STATS_H_

#include "qelcv/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @name Absolute difference of two images: pDst[x, y] = |pSrc1[x, y] - pSrc2[x, y]|
 *
 * Integer results are exact. 32f rounds once, to single precision, and clears the sign, also that of a NaN.
 *
 * @param pSrc1, pSrc2  first sample of each source region; C3: three interleaved channels
 * @param src1Step, src2Step, dstStep  bytes from one row to the next: at least a row's bytes and a multiple of the
 *                      sample size; bytes between rows are neither read nor written
 * @param pDst          first sample of the result; may be pSrc1 or pSrc2 with an equal step
 * @param roiSize       region in pixels, at least 1 by 1
 *
 * @retval qelStatusOk                      the region is written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  16u, 32f: a step is not a multiple of the sample size
 *
 * Tested in this order; on an error nothing is written. No alignment is needed. From 0x40000 pixels on (C3: samples),
 * rows go to OpenMP threads; their number does not change the result.
 */
/** @{ */
QEL_API qelStatus qeliAbsDiff_8u_C1R(const Qel8u* pSrc1, int src1Step, const Qel8u* pSrc2, int src2Step, Qel8u* pDst,
                                     int dstStep, QelSize roiSize);
QEL_API qelStatus qeliAbsDiff_8u_C3R(const Qel8u* pSrc1, int src1Step, const Qel8u* pSrc2, int src2Step, Qel8u* pDst,
                                     int dstStep, QelSize roiSize);
QEL_API qelStatus qeliAbsDiff_16u_C1R(const Qel16u* pSrc1, int src1Step, const Qel16u* pSrc2, int src2Step,
                                      Qel16u* pDst, int dstStep, QelSize roiSize);
QEL_API qelStatus qeliAbsDiff_32f_C1R(const Qel32f* pSrc1, int src1Step, const Qel32f* pSrc2, int src2Step,
                                      Qel32f* pDst, int dstStep, QelSize roiSize);
/** @} */

/**
 * @name Absolute difference of an image and a constant: pDst[x, y] = |pSrc[x, y] - value|
 *
 * 8u and 16u clamp `value` to the range of their samples first: 300 acts as 255 on 8u, a negative value as 0. Integer
 * results are exact. 32f rounds once, to single precision, and clears the sign, also that of a NaN.
 *
 * @param pSrc      first sample of the source region
 * @param srcStep, dstStep  bytes from one row to the next: at least a row's bytes and a multiple of the sample size;
 *                  bytes between rows are neither read nor written
 * @param pDst      first sample of the result; may be pSrc with an equal step
 * @param roiSize   region in pixels, at least 1 by 1
 * @param value     the constant; any value is accepted
 *
 * @retval qelStatusOk                      the region is written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  16u, 32f: a step is not a multiple of the sample size
 *
 * Tested in this order; on an error nothing is written. No alignment is needed. From 0x40000 pixels on, rows go to
 * OpenMP threads; their number does not change the result.
 */
/** @{ */
QEL_API qelStatus qeliAbsDiffC_8u_C1R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep, QelSize roiSize,
                                      int value);
QEL_API qelStatus qeliAbsDiffC_16u_C1R(const Qel16u* pSrc, int srcStep, Qel16u* pDst, int dstStep, QelSize roiSize,
                                       int value);
QEL_API qelStatus qeliAbsDiffC_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep, QelSize roiSize,
                                       Qel32f value);
/** @} */

/**
 * @name Sum of images: pSrcDst[x, y] += pSrc[x, y]
 *
 * Samples are taken to single precision, which is exact, and the sum rounds once. A sum of two NaNs is one of them.
 *
 * @param pSrc          first sample of the source region
 * @param pMask         C1IMR: first byte of the mask; zero keeps a pixel's old value, bit for bit, any other byte lets
 *                      it take the new one
 * @param pSrcDst       first sample of the accumulator, read and written
 * @param srcStep, maskStep, srcDstStep  bytes from one row to the next: at least a row's bytes and, in 16u
 *                      and 32f images, a multiple of the sample size; bytes between rows are neither read nor written
 * @param roiSize       region in pixels, at least 1 by 1
 *
 * @retval qelStatusOk                      the region is updated
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  a step of a 16u or 32f image is not a multiple of the sample size
 *
 * Tested in this order, with one exception: 8u, 8s and 16u sources test each step against its row and at once against
 * the sample, so an odd step is reported before a short one behind it. On an error nothing is written. From 0x40000
 * pixels on, rows go to OpenMP threads; their number does not change the result.
 */
/** @{ */
QEL_API qelStatus qeliAdd_8u32f_C1IR(const Qel8u* pSrc, int srcStep, Qel32f* pSrcDst, int srcDstStep, QelSize roiSize);
QEL_API qelStatus qeliAdd_8s32f_C1IR(const Qel8s* pSrc, int srcStep, Qel32f* pSrcDst, int srcDstStep, QelSize roiSize);
QEL_API qelStatus qeliAdd_16u32f_C1IR(const Qel16u* pSrc, int srcStep, Qel32f* pSrcDst, int srcDstStep,
                                      QelSize roiSize);
QEL_API qelStatus qeliAdd_8u32f_C1IMR(const Qel8u* pSrc, int srcStep, const Qel8u* pMask, int maskStep, Qel32f* pSrcDst,
                                      int srcDstStep, QelSize roiSize);
QEL_API qelStatus qeliAdd_8s32f_C1IMR(const Qel8s* pSrc, int srcStep, const Qel8u* pMask, int maskStep, Qel32f* pSrcDst,
                                      int srcDstStep, QelSize roiSize);
QEL_API qelStatus qeliAdd_16u32f_C1IMR(const Qel16u* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                       Qel32f* pSrcDst, int srcDstStep, QelSize roiSize);
QEL_API qelStatus qeliAdd_32f_C1IMR(const Qel32f* pSrc, int srcStep, const Qel8u* pMask, int maskStep, Qel32f* pSrcDst,
                                    int srcDstStep, QelSize roiSize);
/** @} */

/**
 * @name Sum of squares: pSrcDst[x, y] += pSrc[x, y] * pSrc[x, y]
 *
 * In single precision: the square rounds, then the sum. Squares of 8u and 8s are exact. A sum of two NaNs is one of
 * them.
 *
 * @param pSrc          first sample of the source region
 * @param pMask         C1IMR: first byte of the mask; zero keeps a pixel's old value, bit for bit, any other byte lets
 *                      it take the new one
 * @param pSrcDst       first sample of the accumulator, read and written
 * @param srcStep, maskStep, srcDstStep  bytes from one row to the next: at least a row's bytes and, in 16u
 *                      and 32f images, a multiple of the sample size; bytes between rows are neither read nor written
 * @param roiSize       region in pixels, at least 1 by 1
 *
 * @retval qelStatusOk                      the region is updated
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  a step of a 16u or 32f image is not a multiple of the sample size
 *
 * Tested in this order, with one exception: 8u, 8s and 16u sources test each step against its row and at once against
 * the sample, so an odd step is reported before a short one behind it. On an error nothing is written. From 0x40000
 * pixels on, rows go to OpenMP threads; their number does not change the result.
 */
/** @{ */
QEL_API qelStatus qeliAddSquare_8u32f_C1IR(const Qel8u* pSrc, int srcStep, Qel32f* pSrcDst, int srcDstStep,
                                           QelSize roiSize);
QEL_API qelStatus qeliAddSquare_8s32f_C1IR(const Qel8s* pSrc, int srcStep, Qel32f* pSrcDst, int srcDstStep,
                                           QelSize roiSize);
QEL_API qelStatus qeliAddSquare_16u32f_C1IR(const Qel16u* pSrc, int srcStep, Qel32f* pSrcDst, int srcDstStep,
                                            QelSize roiSize);
QEL_API qelStatus qeliAddSquare_32f_C1IR(const Qel32f* pSrc, int srcStep, Qel32f* pSrcDst, int srcDstStep,
                                         QelSize roiSize);
QEL_API qelStatus qeliAddSquare_8u32f_C1IMR(const Qel8u* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                            Qel32f* pSrcDst, int srcDstStep, QelSize roiSize);
QEL_API qelStatus qeliAddSquare_8s32f_C1IMR(const Qel8s* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                            Qel32f* pSrcDst, int srcDstStep, QelSize roiSize);
QEL_API qelStatus qeliAddSquare_16u32f_C1IMR(const Qel16u* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                             Qel32f* pSrcDst, int srcDstStep, QelSize roiSize);
QEL_API qelStatus qeliAddSquare_32f_C1IMR(const Qel32f* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                          Qel32f* pSrcDst, int srcDstStep, QelSize roiSize);
/** @} */

/**
 * @name Sum of products: pSrcDst[x, y] += pSrc1[x, y] * pSrc2[x, y]
 *
 * In single precision: the product rounds, then the sum. Products of 8u and 8s are exact. Where two NaNs meet, the
 * result is one of them.
 *
 * @param pSrc1, pSrc2  first sample of each source region
 * @param pMask         C1IMR: first byte of the mask; zero keeps a pixel's old value, bit for bit, any other byte lets
 *                      it take the new one
 * @param pSrcDst       first sample of the accumulator, read and written
 * @param src1Step, src2Step, maskStep, srcDstStep  bytes from one row to the next: at least a row's bytes and, in 16u
 *                      and 32f images, a multiple of the sample size; bytes between rows are neither read nor written
 * @param roiSize       region in pixels, at least 1 by 1
 *
 * @retval qelStatusOk                      the region is updated
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  a step of a 16u or 32f image is not a multiple of the sample size
 *
 * Tested in this order, with one exception: 8u, 8s and 16u sources test each step against its row and at once against
 * the sample, so an odd step is reported before a short one behind it. On an error nothing is written. From 0x40000
 * pixels on, rows go to OpenMP threads; their number does not change the result.
 */
/** @{ */
QEL_API qelStatus qeliAddProduct_8u32f_C1IR(const Qel8u* pSrc1, int src1Step, const Qel8u* pSrc2, int src2Step,
                                            Qel32f* pSrcDst, int srcDstStep, QelSize roiSize);
QEL_API qelStatus qeliAddProduct_8s32f_C1IR(const Qel8s* pSrc1, int src1Step, const Qel8s* pSrc2, int src2Step,
                                            Qel32f* pSrcDst, int srcDstStep, QelSize roiSize);
QEL_API qelStatus qeliAddProduct_16u32f_C1IR(const Qel16u* pSrc1, int src1Step, const Qel16u* pSrc2, int src2Step,
                                             Qel32f* pSrcDst, int srcDstStep, QelSize roiSize);
QEL_API qelStatus qeliAddProduct_32f_C1IR(const Qel32f* pSrc1, int src1Step, const Qel32f* pSrc2, int src2Step,
                                          Qel32f* pSrcDst, int srcDstStep, QelSize roiSize);
QEL_API qelStatus qeliAddProduct_8u32f_C1IMR(const Qel8u* pSrc1, int src1Step, const Qel8u* pSrc2, int src2Step,
                                             const Qel8u* pMask, int maskStep, Qel32f* pSrcDst, int srcDstStep,
                                             QelSize roiSize);
QEL_API qelStatus qeliAddProduct_8s32f_C1IMR(const Qel8s* pSrc1, int src1Step, const Qel8s* pSrc2, int src2Step,
                                             const Qel8u* pMask, int maskStep, Qel32f* pSrcDst, int srcDstStep,
                                             QelSize roiSize);
QEL_API qelStatus qeliAddProduct_16u32f_C1IMR(const Qel16u* pSrc1, int src1Step, const Qel16u* pSrc2, int src2Step,
                                              const Qel8u* pMask, int maskStep, Qel32f* pSrcDst, int srcDstStep,
                                              QelSize roiSize);
QEL_API qelStatus qeliAddProduct_32f_C1IMR(const Qel32f* pSrc1, int src1Step, const Qel32f* pSrc2, int src2Step,
                                           const Qel8u* pMask, int maskStep, Qel32f* pSrcDst, int srcDstStep,
                                           QelSize roiSize);
/** @} */

/**
 * @name Running average: pSrcDst[x, y] += (pSrc[x, y] - pSrcDst[x, y]) * alpha
 *
 * In single precision, with three roundings in this order: difference, product, sum. So alpha 0 keeps a
 * finite accumulator unless the difference overflows, and alpha 1 does not always meet the source. Where two NaNs meet,
 * the result is one of them.
 *
 * @param pSrc          first sample of the source region
 * @param pMask         C1IMR: first byte of the mask; zero keeps a pixel's old value, bit for bit, any other byte lets
 *                      it take the new one
 * @param pSrcDst       first sample of the accumulator, read and written
 * @param srcStep, maskStep, srcDstStep  bytes from one row to the next: at least a row's bytes and, in 16u
 *                      and 32f images, a multiple of the sample size; bytes between rows are neither read nor written
 * @param roiSize       region in pixels, at least 1 by 1
 * @param alpha         weight of the source; any value is accepted
 *
 * @retval qelStatusOk                      the region is updated
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  a step of a 16u or 32f image is not a multiple of the sample size
 *
 * Tested in this order, with one exception: 8u, 8s and 16u sources test each step against its row and at once against
 * the sample, so an odd step is reported before a short one behind it. On an error nothing is written. From 0x40000
 * pixels on, rows go to OpenMP threads; their number does not change the result.
 */
/** @{ */
QEL_API qelStatus qeliAddWeighted_8u32f_C1IR(const Qel8u* pSrc, int srcStep, Qel32f* pSrcDst, int srcDstStep,
                                             QelSize roiSize, Qel32f alpha);
QEL_API qelStatus qeliAddWeighted_8s32f_C1IR(const Qel8s* pSrc, int srcStep, Qel32f* pSrcDst, int srcDstStep,
                                             QelSize roiSize, Qel32f alpha);
QEL_API qelStatus qeliAddWeighted_16u32f_C1IR(const Qel16u* pSrc, int srcStep, Qel32f* pSrcDst, int srcDstStep,
                                              QelSize roiSize, Qel32f alpha);
QEL_API qelStatus qeliAddWeighted_32f_C1IR(const Qel32f* pSrc, int srcStep, Qel32f* pSrcDst, int srcDstStep,
                                           QelSize roiSize, Qel32f alpha);
QEL_API qelStatus qeliAddWeighted_8u32f_C1IMR(const Qel8u* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                              Qel32f* pSrcDst, int srcDstStep, QelSize roiSize, Qel32f alpha);
QEL_API qelStatus qeliAddWeighted_8s32f_C1IMR(const Qel8s* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                              Qel32f* pSrcDst, int srcDstStep, QelSize roiSize, Qel32f alpha);
QEL_API qelStatus qeliAddWeighted_16u32f_C1IMR(const Qel16u* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                               Qel32f* pSrcDst, int srcDstStep, QelSize roiSize, Qel32f alpha);
QEL_API qelStatus qeliAddWeighted_32f_C1IMR(const Qel32f* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                            Qel32f* pSrcDst, int srcDstStep, QelSize roiSize, Qel32f alpha);
/** @} */

/**
 * @name Weighted sum of two images: pDst[x, y] = (pSrc1[x, y] - pSrc2[x, y]) * alpha + pSrc2[x, y]
 *
 * In single precision, with three roundings in this order: difference, product, sum. Where two NaNs meet, the
 * result is one of them.
 *
 * @param pSrc1, pSrc2  first sample of each source region
 * @param pDst          first sample of the result; may be pSrc1 or pSrc2 with an equal step
 * @param src1Step, src2Step, dstStep  bytes from one row to the next: at least a row's bytes and a multiple of 4; bytes
 *                      between rows are neither read nor written
 * @param roiSize       region in pixels, at least 1 by 1
 * @param alpha         weight of pSrc1; any value is accepted
 *
 * @retval qelStatusOk                      the region is written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  a step is not a multiple of 4
 *
 * Tested in this order; on an error nothing is written. No alignment is needed. Runs on the caller's thread.
 */
/** @{ */
QEL_API qelStatus qeliAddWeighted_32f_C1R(const Qel32f* pSrc1, int src1Step, const Qel32f* pSrc2, int src2Step,
                                          Qel32f* pDst, int dstStep, QelSize roiSize, Qel32f alpha);
/** @} */

/* Norms */

/* Mean and standard deviation */

/* Extremes with position */

/**
 * @name Motion history: the time of the last motion at each pixel, forgotten after a while
 *
 * A pixel of the silhouette that is not zero sets the history to timeStamp. Where the silhouette is zero, a history
 * value below timeStamp - mhiDuration, computed in single precision, becomes 0, and any other stays as it is, bit for
 * bit. A 32f silhouette compares as a number: -0 is zero, a NaN is not.
 *
 * @param pSilhouette   first sample of the silhouette
 * @param pMHI          first value of the history, read and written
 * @param silhStep, mhiStep  bytes from one row to the next: at least a row's bytes and, but for 8u, a multiple of the
 *                      sample size; bytes between rows are neither read nor written
 * @param roiSize       region in pixels, at least 1 by 1
 * @param timeStamp     the present, in the unit of the history
 * @param mhiDuration   how long a motion is remembered, in the same unit, not below 0
 *
 * @retval qelStatusOk                      the region is updated
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  a step of a 16u or 32f image is not a multiple of the sample size
 * @retval qelStatusOutOfRange              mhiDuration below 0
 *
 * Tested in this order; on an error nothing is written. No alignment is needed. Runs on the caller's thread.
 */
/** @{ */
QEL_API qelStatus qeliUpdateMotionHistory_8u32f_C1IR(const Qel8u* pSilhouette, int silhStep, Qel32f* pMHI, int mhiStep,
                                                     QelSize roiSize, Qel32f timeStamp, Qel32f mhiDuration);
QEL_API qelStatus qeliUpdateMotionHistory_16u32f_C1IR(const Qel16u* pSilhouette, int silhStep, Qel32f* pMHI,
                                                      int mhiStep, QelSize roiSize, Qel32f timeStamp,
                                                      Qel32f mhiDuration);
QEL_API qelStatus qeliUpdateMotionHistory_32f_C1IR(const Qel32f* pSilhouette, int silhStep, Qel32f* pMHI, int mhiStep,
                                                   QelSize roiSize, Qel32f timeStamp, Qel32f mhiDuration);
/** @} */

/**
 * @name Colour gradient: one magnitude out of the three channels a, b, c of a pixel
 *
 * norm 0 is the largest magnitude. norm 1 is the mean of the magnitudes, norm 2 the root of the mean of the squares,
 * both rounded to the nearest integer, by these formulas:
 *
 *     8u, norm 1:   ((a + b + c) * 1365 + 2048) >> 12
 *     16u, norm 1:  ((a + b + c) * 5461 + 8192) >> 14, at most 65531
 *     8u, 16u, norm 2:  trunc(sqrt((a * a + b * b + c * c) / 3) + 0.5), exactly
 *
 * 32f does not divide by 3: norm 1 is |a| + |b| + |c|, norm 2 is sqrt(a * a + b * b + c * c), each operation from left
 * to right and rounded to single precision. With norm 0 of 32f a NaN counts in the third channel only.
 *
 * @param pSrc      first sample of the source region, three interleaved channels
 * @param pDst      first sample of the result, one channel
 * @param srcStep, dstStep  bytes from one row to the next: at least a row's bytes and a multiple of the sample size;
 * bytes between rows are neither read nor written
 * @param roiSize   region in pixels, at least 1 by 1
 * @param norm      0, 1 or 2
 *
 * @retval qelStatusOk                      the region is written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  16u, 32f: a step is not a multiple of the sample size
 * @retval qelStatusBadArg                  norm is another number
 *
 * Tested in this order; on an error nothing is written. No alignment is needed. Runs on the caller's thread. To be
 * called from outside of OpenMP regions: a thread of a team of several gets the upper rows of the region only.
 */
/** @{ */
QEL_API qelStatus qeliGradientColorToGray_8u_C3C1R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep,
                                                   QelSize roiSize, int norm);
QEL_API qelStatus qeliGradientColorToGray_16u_C3C1R(const Qel16u* pSrc, int srcStep, Qel16u* pDst, int dstStep,
                                                    QelSize roiSize, int norm);
QEL_API qelStatus qeliGradientColorToGray_32f_C3C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                    QelSize roiSize, int norm);
/** @} */

/**
 * @name Arctangent of pSrcY[i] / pSrcX[i] in degrees, by quadrant
 *
 * From 0 at the positive x axis, by 90 at the positive y axis, up to 360. A parabola through each octant keeps the
 * angle to 0.15 degrees; it does not pass through its ends, so that the positive x axis gives -0.1405, and so does the
 * pair of two zeros. Below 1e-8, the larger coordinate is divided by as if it were that large. Results are the same
 * bits on every machine, at any position in the vector and for any `len`. An infinite coordinate or a NaN gives any
 * value.
 *
 * @param pSrcY, pSrcX  the coordinates
 * @param pDst          the angles; may be pSrcY or pSrcX
 * @param len           number of elements, at least 1
 *
 * @retval qelStatusOk           the angles are written
 * @retval qelStatusNullPointer  a pointer is null
 * @retval qelStatusBadSize      len below 1
 *
 * Tested in this order; on an error nothing is written. No alignment is needed. Runs on the caller's thread.
 */
/** @{ */
QEL_API qelStatus qelibFastArctan_32f(const Qel32f* pSrcY, const Qel32f* pSrcX, Qel32f* pDst, int len);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
