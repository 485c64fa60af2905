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

/**
 * @name Smallest and largest sample of a region, and where each comes first
 *
 * C1MR and C3CMR look at the pixels whose mask byte is not zero only, C3CR and C3CMR at channel `coi` of three. Of
 * equal samples the first in raster order counts: the topmost, in its row the leftmost. Integers are converted to 32f
 * without loss, a 32f sample is reported with its bits: the two zeros are equal, and the first of them is reported.
 *
 * The search begins with the largest value of the type (32f: the largest finite one) as the minimum, the smallest as
 * the maximum, and row 0 for both. Only a sample strictly beyond replaces a value and its row; the column is the first
 * in that row with a sample equal to the value, and 0 where there is none. So a mask that takes only 255s, all below
 * row 0, gives minimum 255 at (0, 0). A 32f NaN is passed over; a region of NaNs only, or of +infinity only, gives the
 * largest finite value as its minimum. A mask that is zero everywhere gives 0 at (0, 0) for both.
 *
 * @param pSrc      first sample of the source region; C3C: of channel 1 of its first pixel
 * @param srcStep   bytes from one row to the next: at least a row's bytes and a multiple of the sample size
 * @param pMask     first byte of the mask, which is of the region's size
 * @param maskStep  bytes from one row of the mask to the next, at least the width
 * @param roiSize   region in pixels, at least 1 by 1
 * @param coi       channel of interest: 1, 2 or 3
 * @param pMinVal, pMaxVal      receive the values; null where not wanted
 * @param pMinIndex, pMaxIndex  receive column and row; null where not wanted
 *
 * @retval qelStatusOk                      the outputs are written, also for an empty mask
 * @retval qelStatusNullPointer             pSrc or pMask is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  16u, 32f: srcStep is not a multiple of the sample size
 * @retval qelStatusBadChannel              coi is not 1, 2 or 3
 * @retval qelStatusNoMemory                more than 32 threads, and no memory for their results
 *
 * Tested in this order; on an error nothing is written. No alignment is needed. From 0x4000 pixels on, rows go to
 * OpenMP threads; their number does not change the result.
 */
/** @{ */
QEL_API qelStatus qeliMinMaxIndx_8u_C1R(const Qel8u* pSrc, int srcStep, QelSize roiSize, Qel32f* pMinVal,
                                        Qel32f* pMaxVal, QelPoint* pMinIndex, QelPoint* pMaxIndex);
QEL_API qelStatus qeliMinMaxIndx_8s_C1R(const Qel8s* pSrc, int srcStep, QelSize roiSize, Qel32f* pMinVal,
                                        Qel32f* pMaxVal, QelPoint* pMinIndex, QelPoint* pMaxIndex);
QEL_API qelStatus qeliMinMaxIndx_16u_C1R(const Qel16u* pSrc, int srcStep, QelSize roiSize, Qel32f* pMinVal,
                                         Qel32f* pMaxVal, QelPoint* pMinIndex, QelPoint* pMaxIndex);
QEL_API qelStatus qeliMinMaxIndx_32f_C1R(const Qel32f* pSrc, int srcStep, QelSize roiSize, Qel32f* pMinVal,
                                         Qel32f* pMaxVal, QelPoint* pMinIndex, QelPoint* pMaxIndex);
QEL_API qelStatus qeliMinMaxIndx_8u_C3CR(const Qel8u* pSrc, int srcStep, QelSize roiSize, int coi, Qel32f* pMinVal,
                                         Qel32f* pMaxVal, QelPoint* pMinIndex, QelPoint* pMaxIndex);
QEL_API qelStatus qeliMinMaxIndx_8s_C3CR(const Qel8s* pSrc, int srcStep, QelSize roiSize, int coi, Qel32f* pMinVal,
                                         Qel32f* pMaxVal, QelPoint* pMinIndex, QelPoint* pMaxIndex);
QEL_API qelStatus qeliMinMaxIndx_16u_C3CR(const Qel16u* pSrc, int srcStep, QelSize roiSize, int coi, Qel32f* pMinVal,
                                          Qel32f* pMaxVal, QelPoint* pMinIndex, QelPoint* pMaxIndex);
QEL_API qelStatus qeliMinMaxIndx_32f_C3CR(const Qel32f* pSrc, int srcStep, QelSize roiSize, int coi, Qel32f* pMinVal,
                                          Qel32f* pMaxVal, QelPoint* pMinIndex, QelPoint* pMaxIndex);
QEL_API qelStatus qeliMinMaxIndx_8u_C1MR(const Qel8u* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                         QelSize roiSize, Qel32f* pMinVal, Qel32f* pMaxVal, QelPoint* pMinIndex,
                                         QelPoint* pMaxIndex);
QEL_API qelStatus qeliMinMaxIndx_8s_C1MR(const Qel8s* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                         QelSize roiSize, Qel32f* pMinVal, Qel32f* pMaxVal, QelPoint* pMinIndex,
                                         QelPoint* pMaxIndex);
QEL_API qelStatus qeliMinMaxIndx_16u_C1MR(const Qel16u* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                          QelSize roiSize, Qel32f* pMinVal, Qel32f* pMaxVal, QelPoint* pMinIndex,
                                          QelPoint* pMaxIndex);
QEL_API qelStatus qeliMinMaxIndx_32f_C1MR(const Qel32f* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                          QelSize roiSize, Qel32f* pMinVal, Qel32f* pMaxVal, QelPoint* pMinIndex,
                                          QelPoint* pMaxIndex);
QEL_API qelStatus qeliMinMaxIndx_8u_C3CMR(const Qel8u* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                          QelSize roiSize, int coi, Qel32f* pMinVal, Qel32f* pMaxVal,
                                          QelPoint* pMinIndex, QelPoint* pMaxIndex);
QEL_API qelStatus qeliMinMaxIndx_8s_C3CMR(const Qel8s* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                          QelSize roiSize, int coi, Qel32f* pMinVal, Qel32f* pMaxVal,
                                          QelPoint* pMinIndex, QelPoint* pMaxIndex);
QEL_API qelStatus qeliMinMaxIndx_16u_C3CMR(const Qel16u* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                           QelSize roiSize, int coi, Qel32f* pMinVal, Qel32f* pMaxVal,
                                           QelPoint* pMinIndex, QelPoint* pMaxIndex);
QEL_API qelStatus qeliMinMaxIndx_32f_C3CMR(const Qel32f* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                           QelSize roiSize, int coi, Qel32f* pMinVal, Qel32f* pMaxVal,
                                           QelPoint* pMinIndex, QelPoint* pMaxIndex);
/** @} */

/* Motion history */

/* Colour gradient */

/* Arctangent */

#ifdef __cplusplus
}
#endif

#endif
