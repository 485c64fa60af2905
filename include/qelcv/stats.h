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

/* Accumulators */

/* Norms */

/* Mean and standard deviation */

/* Extremes with position */

/* Motion history */

/* Colour gradient */

/* Arctangent */

#ifdef __cplusplus
}
#endif

#endif
