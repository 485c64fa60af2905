/**
 * @file
 * Features: edges, corners, lines, peaks.
 */
#ifndef QELCV_FEATURE_H_
#define QELCV_FEATURE_H_

#include "qelcv/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @name Peaks: positive local maxima and negative local minima
 *
 * Lists the pixels whose sample v has |v| > threshold and is the extreme of its neighbourhood: a positive v its largest
 * sample, any other v its smallest. Equal neighbours are all peaks. Rows are gone through from top to bottom, and each
 * from left to right; with maxPeakCount peaks the list is full, and the function ends.
 *
 * - 32s: |v| of the lowest number, 2147483648, is above every threshold. With a threshold below zero each pixel is
 *   above it, so zeros may be minima.
 * - 32f: v counts as the extreme M where |v - M| is at most 1.17549435e-38, in single precision. So an infinity is no
 *   peak, nor is a NaN. Beside a NaN a sample may be one or not, the same on every machine.
 *
 * @param pSrc          first sample of the source region
 * @param srcStep       bytes from one row to the next: at least a row's bytes and a multiple of 4; bytes between rows
 *                      are not read
 * @param roiSize       region in pixels, at least 1 by 1
 * @param threshold     magnitude that a peak exceeds
 * @param pPeak         receives columns and rows, counted from the first sample of the region; entries behind the last
 *                      peak are not written
 * @param maxPeakCount  entries that pPeak has room for, at least 1
 * @param pPeakCount    receives the number of peaks in the list
 * @param norm          neighbourhood: 0 for the block of 3 by 3 pixels, 1 for the pixel with those left, right, above
 *                      and below
 * @param border        pixels along each edge of the region that are not tested, at least 1 and at most half of each
 *                      side; they are neighbours of those that are. With half of a side nothing is tested.
 * @param pBuffer       scratch of the size that the function below tells, at any address and with any contents
 *
 * @retval qelStatusOk                      the list is written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width, height, maxPeakCount or border below 1, or border above half of a
 *                                          side, compared in single precision
 * @retval qelStatusBadStep                 srcStep is shorter than a row
 * @retval qelStatusStepNotElementMultiple  srcStep is not a multiple of 4
 * @retval qelStatusBadArg                  norm is neither 0 nor 1
 *
 * Tested in this order; on an error nothing is written. No alignment is needed. Runs on the caller's thread.
 */
/** @{ */
QEL_API qelStatus qeliFindPeaks3x3_32s_C1R(const Qel32s* pSrc, int srcStep, QelSize roiSize, Qel32s threshold,
                                           QelPoint* pPeak, int maxPeakCount, int* pPeakCount, int norm, int border,
                                           Qel8u* pBuffer);
QEL_API qelStatus qeliFindPeaks3x3_32f_C1R(const Qel32f* pSrc, int srcStep, QelSize roiSize, Qel32f threshold,
                                           QelPoint* pPeak, int maxPeakCount, int* pPeakCount, int norm, int border,
                                           Qel8u* pBuffer);
/** @} */

/**
 * @name Scratch of the peak search
 *
 * The size is (width + 5) / 4 * 128 bytes, the quotient truncated, with bit 5 set. It serves every call of no larger
 * width.
 *
 * @param width        pixels of a row, at least 1
 * @param pBufferSize  receives the bytes
 *
 * @retval qelStatusOk           *pBufferSize is written
 * @retval qelStatusNullPointer  pBufferSize is null
 * @retval qelStatusBadSize      width below 1
 * @retval qelStatusOverflow     the size is beyond the range of int
 *
 * Tested in this order; on an error nothing is written.
 */
/** @{ */
QEL_API qelStatus qeliFindPeaks3x3GetBufferSize_32s_C1R(int width, int* pBufferSize);
QEL_API qelStatus qeliFindPeaks3x3GetBufferSize_32f_C1R(int width, int* pBufferSize);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
