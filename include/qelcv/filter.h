/**
 * @file
 * Linear filtering: separable pipelines and the filters with fixed kernels.
 */
#ifndef QELCV_FILTER_H_
#define QELCV_FILTER_H_

#include "qelcv/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Row pipelines */

/* Column pipelines */

/**
 * @name Derivatives, averages and Laplacians with fixed kernels and a border
 *
 * Each filter correlates the image, extended by a border, with a kernel across and a kernel down; the 3x3 kernels, and
 * those of 5x5 in brackets:
 *
 * | Filter           | across                        | down                            |
 * |------------------|-------------------------------|---------------------------------|
 * | SobelHoriz       | 1 2 1 (1 4 6 4 1)             | -1 0 1 (-1 -2 0 2 1)            |
 * | SobelVert        | 1 0 -1 (1 2 0 -2 -1)          | 1 2 1 (1 4 6 4 1)               |
 * | SobelNegVert     | 1 0 -1 (1 2 0 -2 -1)          | -1 -2 -1 (-1 -4 -6 -4 -1)       |
 * | SobelHorizSecond | 1 2 1 (1 4 6 4 1)             | 1 -2 1 (1 0 -2 0 1)             |
 * | SobelVertSecond  | 1 -2 1 (1 0 -2 0 1)           | 1 2 1 (1 4 6 4 1)               |
 * | SobelCross       | 1 0 -1 (1 2 0 -2 -1)          | -1 0 1 (-1 -2 0 2 1)            |
 * | ScharrHoriz      | 3 10 3                        | -1 0 1                          |
 * | ScharrVert       | -1 0 1                        | 3 10 3                          |
 * | Lowpass          | 1 1 1 (1 1 1 1 1)             | 1 1 1 (1 1 1 1 1), the mean     |
 *
 * Laplacian 3x3 is 2 0 2 / 0 -8 0 / 2 0 2; 5x5 is the sum of SobelHorizSecond and SobelVertSecond.
 *
 * Results:
 * - 8u16s is exact.
 * - 8u8s multiplies the exact sum by the 32f value of 1 / divisor. The first 8 * (width / 8) samples of a row round to
 *   nearest, ties to even, and saturate; those behind them, and all of a 5x5 Laplacian, saturate and truncate toward
 *   zero.
 * - Lowpass 8u: ((sum + 5) * 7280) >> 16 of 3x3, and (sum * 2621) >> 16 of 5x5, which does not round: 255 throughout
 *   gives 254.
 * - 32f rounds after each operation. Across: (s0 + s2) + 2 s1 where a kernel reads 1 2 1, 3 (s0 + s2) + 10 s1,
 *   (s0 + s2) - 2 s1, ((s0 + s4) + 4 (s1 + s3)) + 6 s2, (s0 - s4) + 2 (s1 - s3), (s0 + s4) - 2 s2; down likewise.
 *   Averages add in order and multiply by 0.11111111 or 0.04. The Laplacian 3x3 is 2 (a + b) - 8 s, where a and b are
 *   the sums of the two diagonal neighbours above and below; 5x5 adds its second part to the first. Where borderMode
 *   is qelBorderConst, a row beyond the image is borderValue times the sum of the kernel across.
 *
 * @param pSrc        first sample of the source region
 * @param srcStep, dstStep  bytes from one row to the next: at least a row's bytes and a multiple of the sample size
 * @param pDst        first sample of the result, which must not overlap the source
 * @param roiSize     region in pixels, at least 1 by 1; it may be smaller than the mask
 * @param mask        33 for 3x3, 55 for 5x5
 * @param borderMode  how the image is extended, a QelBorderMode. Added to it, 0x10 says that the rows above the region
 *                    lie in memory and are read as they are, 0x20 says so of the rows below. Left and right always
 *                    follow the mode.
 * @param borderValue the constant of qelBorderConst; else not read
 * @param divisor     of 8u8s sums, not 0; may be negative
 * @param pBuffer     scratch of the size that the function of the same name with GetBufferSize tells, at any address
 *                    and with any contents
 *
 * @retval qelStatusOk                      the region is written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  16s, 32f: a step is not a multiple of the sample size
 * @retval qelStatusBadArg                  borderMode is none of the five, or has other flags only; then divisor is 0
 * @retval qelStatusBadMaskSize             mask is neither 33 nor 55
 *
 * Tested in this order; on an error nothing is written. No alignment is needed. Where there are several cores and the
 * thread limit t is above 1, regions of a width of 256 and a height of 256 (8u8s Laplacian 5x5: 64) and 5 t rows at
 * least go to OpenMP threads; their number does not change the result.
 */
/** @{ */
QEL_API qelStatus qeliFilterSobelHorizBorder_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                     QelSize roiSize, int mask, int borderMode, Qel32f borderValue,
                                                     Qel8u* pBuffer);
QEL_API qelStatus qeliFilterSobelHorizBorder_8u16s_C1R(const Qel8u* pSrc, int srcStep, Qel16s* pDst, int dstStep,
                                                       QelSize roiSize, int mask, int borderMode, Qel8u borderValue,
                                                       Qel8u* pBuffer);
QEL_API qelStatus qeliFilterSobelHorizBorder_8u8s_C1R(const Qel8u* pSrc, int srcStep, Qel8s* pDst, int dstStep,
                                                      QelSize roiSize, int mask, int borderMode, Qel8u borderValue,
                                                      int divisor, Qel8u* pBuffer);
QEL_API qelStatus qeliFilterSobelVertBorder_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                    QelSize roiSize, int mask, int borderMode, Qel32f borderValue,
                                                    Qel8u* pBuffer);
QEL_API qelStatus qeliFilterSobelVertBorder_8u16s_C1R(const Qel8u* pSrc, int srcStep, Qel16s* pDst, int dstStep,
                                                      QelSize roiSize, int mask, int borderMode, Qel8u borderValue,
                                                      Qel8u* pBuffer);
QEL_API qelStatus qeliFilterSobelVertBorder_8u8s_C1R(const Qel8u* pSrc, int srcStep, Qel8s* pDst, int dstStep,
                                                     QelSize roiSize, int mask, int borderMode, Qel8u borderValue,
                                                     int divisor, Qel8u* pBuffer);
QEL_API qelStatus qeliFilterSobelNegVertBorder_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                       QelSize roiSize, int mask, int borderMode, Qel32f borderValue,
                                                       Qel8u* pBuffer);
QEL_API qelStatus qeliFilterSobelNegVertBorder_8u16s_C1R(const Qel8u* pSrc, int srcStep, Qel16s* pDst, int dstStep,
                                                         QelSize roiSize, int mask, int borderMode, Qel8u borderValue,
                                                         Qel8u* pBuffer);
QEL_API qelStatus qeliFilterSobelNegVertBorder_8u8s_C1R(const Qel8u* pSrc, int srcStep, Qel8s* pDst, int dstStep,
                                                        QelSize roiSize, int mask, int borderMode, Qel8u borderValue,
                                                        int divisor, Qel8u* pBuffer);
QEL_API qelStatus qeliFilterSobelHorizSecondBorder_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                           QelSize roiSize, int mask, int borderMode,
                                                           Qel32f borderValue, Qel8u* pBuffer);
QEL_API qelStatus qeliFilterSobelHorizSecondBorder_8u16s_C1R(const Qel8u* pSrc, int srcStep, Qel16s* pDst, int dstStep,
                                                             QelSize roiSize, int mask, int borderMode,
                                                             Qel8u borderValue, Qel8u* pBuffer);
QEL_API qelStatus qeliFilterSobelHorizSecondBorder_8u8s_C1R(const Qel8u* pSrc, int srcStep, Qel8s* pDst, int dstStep,
                                                            QelSize roiSize, int mask, int borderMode,
                                                            Qel8u borderValue, int divisor, Qel8u* pBuffer);
QEL_API qelStatus qeliFilterSobelVertSecondBorder_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                          QelSize roiSize, int mask, int borderMode, Qel32f borderValue,
                                                          Qel8u* pBuffer);
QEL_API qelStatus qeliFilterSobelVertSecondBorder_8u16s_C1R(const Qel8u* pSrc, int srcStep, Qel16s* pDst, int dstStep,
                                                            QelSize roiSize, int mask, int borderMode,
                                                            Qel8u borderValue, Qel8u* pBuffer);
QEL_API qelStatus qeliFilterSobelVertSecondBorder_8u8s_C1R(const Qel8u* pSrc, int srcStep, Qel8s* pDst, int dstStep,
                                                           QelSize roiSize, int mask, int borderMode, Qel8u borderValue,
                                                           int divisor, Qel8u* pBuffer);
QEL_API qelStatus qeliFilterSobelCrossBorder_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                     QelSize roiSize, int mask, int borderMode, Qel32f borderValue,
                                                     Qel8u* pBuffer);
QEL_API qelStatus qeliFilterSobelCrossBorder_8u16s_C1R(const Qel8u* pSrc, int srcStep, Qel16s* pDst, int dstStep,
                                                       QelSize roiSize, int mask, int borderMode, Qel8u borderValue,
                                                       Qel8u* pBuffer);
QEL_API qelStatus qeliFilterSobelCrossBorder_8u8s_C1R(const Qel8u* pSrc, int srcStep, Qel8s* pDst, int dstStep,
                                                      QelSize roiSize, int mask, int borderMode, Qel8u borderValue,
                                                      int divisor, Qel8u* pBuffer);
QEL_API qelStatus qeliFilterScharrHorizBorder_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                      QelSize roiSize, int borderMode, Qel32f borderValue,
                                                      Qel8u* pBuffer);
QEL_API qelStatus qeliFilterScharrHorizBorder_8u16s_C1R(const Qel8u* pSrc, int srcStep, Qel16s* pDst, int dstStep,
                                                        QelSize roiSize, int borderMode, Qel8u borderValue,
                                                        Qel8u* pBuffer);
QEL_API qelStatus qeliFilterScharrHorizBorder_8u8s_C1R(const Qel8u* pSrc, int srcStep, Qel8s* pDst, int dstStep,
                                                       QelSize roiSize, int borderMode, Qel8u borderValue, int divisor,
                                                       Qel8u* pBuffer);
QEL_API qelStatus qeliFilterScharrVertBorder_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                     QelSize roiSize, int borderMode, Qel32f borderValue,
                                                     Qel8u* pBuffer);
QEL_API qelStatus qeliFilterScharrVertBorder_8u16s_C1R(const Qel8u* pSrc, int srcStep, Qel16s* pDst, int dstStep,
                                                       QelSize roiSize, int borderMode, Qel8u borderValue,
                                                       Qel8u* pBuffer);
QEL_API qelStatus qeliFilterScharrVertBorder_8u8s_C1R(const Qel8u* pSrc, int srcStep, Qel8s* pDst, int dstStep,
                                                      QelSize roiSize, int borderMode, Qel8u borderValue, int divisor,
                                                      Qel8u* pBuffer);
QEL_API qelStatus qeliFilterLaplacianBorder_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                    QelSize roiSize, int mask, int borderMode, Qel32f borderValue,
                                                    Qel8u* pBuffer);
QEL_API qelStatus qeliFilterLaplacianBorder_8u16s_C1R(const Qel8u* pSrc, int srcStep, Qel16s* pDst, int dstStep,
                                                      QelSize roiSize, int mask, int borderMode, Qel8u borderValue,
                                                      Qel8u* pBuffer);
QEL_API qelStatus qeliFilterLaplacianBorder_8u8s_C1R(const Qel8u* pSrc, int srcStep, Qel8s* pDst, int dstStep,
                                                     QelSize roiSize, int mask, int borderMode, Qel8u borderValue,
                                                     int divisor, Qel8u* pBuffer);
QEL_API qelStatus qeliFilterLowpassBorder_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                  QelSize roiSize, int mask, int borderMode, Qel32f borderValue,
                                                  Qel8u* pBuffer);
QEL_API qelStatus qeliFilterLowpassBorder_8u_C1R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep,
                                                 QelSize roiSize, int mask, int borderMode, Qel8u borderValue,
                                                 Qel8u* pBuffer);
/** @} */

/**
 * @name Scratch of the filters with fixed kernels
 *
 * The size grows with the region, the mask and the thread limit, see qelGetNumThreads. It serves calls on a region of
 * the same size with the same mask as long as the thread limit stays.
 *
 * @param roiSize      region of the call, at least 1 by 1
 * @param mask         33 or 55
 * @param pBufferSize  receives the bytes
 *
 * @retval qelStatusOk           *pBufferSize is written
 * @retval qelStatusNullPointer  pBufferSize is null
 * @retval qelStatusBadSize      width or height below 1
 * @retval qelStatusBadMaskSize  mask is neither 33 nor 55
 * @retval qelStatusOverflow     the size is beyond the range of int
 *
 * Tested in this order; on an error nothing is written.
 */
/** @{ */
QEL_API qelStatus qeliFilterSobelHorizGetBufferSize_32f_C1R(QelSize roiSize, int mask, int* pBufferSize);
QEL_API qelStatus qeliFilterSobelHorizGetBufferSize_8u16s_C1R(QelSize roiSize, int mask, int* pBufferSize);
QEL_API qelStatus qeliFilterSobelHorizGetBufferSize_8u8s_C1R(QelSize roiSize, int mask, int* pBufferSize);
QEL_API qelStatus qeliFilterSobelVertGetBufferSize_32f_C1R(QelSize roiSize, int mask, int* pBufferSize);
QEL_API qelStatus qeliFilterSobelVertGetBufferSize_8u16s_C1R(QelSize roiSize, int mask, int* pBufferSize);
QEL_API qelStatus qeliFilterSobelVertGetBufferSize_8u8s_C1R(QelSize roiSize, int mask, int* pBufferSize);
QEL_API qelStatus qeliFilterSobelNegVertGetBufferSize_32f_C1R(QelSize roiSize, int mask, int* pBufferSize);
QEL_API qelStatus qeliFilterSobelNegVertGetBufferSize_8u16s_C1R(QelSize roiSize, int mask, int* pBufferSize);
QEL_API qelStatus qeliFilterSobelNegVertGetBufferSize_8u8s_C1R(QelSize roiSize, int mask, int* pBufferSize);
QEL_API qelStatus qeliFilterSobelHorizSecondGetBufferSize_32f_C1R(QelSize roiSize, int mask, int* pBufferSize);
QEL_API qelStatus qeliFilterSobelHorizSecondGetBufferSize_8u16s_C1R(QelSize roiSize, int mask, int* pBufferSize);
QEL_API qelStatus qeliFilterSobelHorizSecondGetBufferSize_8u8s_C1R(QelSize roiSize, int mask, int* pBufferSize);
QEL_API qelStatus qeliFilterSobelVertSecondGetBufferSize_32f_C1R(QelSize roiSize, int mask, int* pBufferSize);
QEL_API qelStatus qeliFilterSobelVertSecondGetBufferSize_8u16s_C1R(QelSize roiSize, int mask, int* pBufferSize);
QEL_API qelStatus qeliFilterSobelVertSecondGetBufferSize_8u8s_C1R(QelSize roiSize, int mask, int* pBufferSize);
QEL_API qelStatus qeliFilterSobelCrossGetBufferSize_32f_C1R(QelSize roiSize, int mask, int* pBufferSize);
QEL_API qelStatus qeliFilterSobelCrossGetBufferSize_8u16s_C1R(QelSize roiSize, int mask, int* pBufferSize);
QEL_API qelStatus qeliFilterSobelCrossGetBufferSize_8u8s_C1R(QelSize roiSize, int mask, int* pBufferSize);
QEL_API qelStatus qeliFilterScharrHorizGetBufferSize_32f_C1R(QelSize roiSize, int* pBufferSize);
QEL_API qelStatus qeliFilterScharrHorizGetBufferSize_8u16s_C1R(QelSize roiSize, int* pBufferSize);
QEL_API qelStatus qeliFilterScharrHorizGetBufferSize_8u8s_C1R(QelSize roiSize, int* pBufferSize);
QEL_API qelStatus qeliFilterScharrVertGetBufferSize_32f_C1R(QelSize roiSize, int* pBufferSize);
QEL_API qelStatus qeliFilterScharrVertGetBufferSize_8u16s_C1R(QelSize roiSize, int* pBufferSize);
QEL_API qelStatus qeliFilterScharrVertGetBufferSize_8u8s_C1R(QelSize roiSize, int* pBufferSize);
QEL_API qelStatus qeliFilterLaplacianGetBufferSize_32f_C1R(QelSize roiSize, int mask, int* pBufferSize);
QEL_API qelStatus qeliFilterLaplacianGetBufferSize_8u16s_C1R(QelSize roiSize, int mask, int* pBufferSize);
QEL_API qelStatus qeliFilterLaplacianGetBufferSize_8u8s_C1R(QelSize roiSize, int mask, int* pBufferSize);
QEL_API qelStatus qeliFilterLowpassGetBufferSize_32f_C1R(QelSize roiSize, int mask, int* pBufferSize);
QEL_API qelStatus qeliFilterLowpassGetBufferSize_8u_C1R(QelSize roiSize, int mask, int* pBufferSize);
/** @} */

/**
 * @name Kernels of Sobel filters of any size
 *
 * Fills pKernel with the binomial coefficients of kernelSize - dx - 1 sums, differentiated dx times: 1 2 1, -1 0 1 and
 * 1 -2 1 are those of size 3. 16s coefficients wrap at 16 bits, which they do from size 19 on.
 *
 * @param pKernel     receives kernelSize coefficients
 * @param kernelSize  odd, at least 1
 * @param dx          order of the derivative, from 0 to kernelSize - 1
 * @param sign        negative: the coefficients are negated
 *
 * @retval qelStatusOk           pKernel is written
 * @retval qelStatusNullPointer  pKernel is null
 * @retval qelStatusBadSize      kernelSize is below 1 or even, or dx outside of its range
 *
 * Tested in this order; on an error nothing is written.
 */
/** @{ */
QEL_API qelStatus qeliGenSobelKernel_16s(Qel16s* pKernel, int kernelSize, int dx, int sign);
QEL_API qelStatus qeliGenSobelKernel_32f(Qel32f* pKernel, int kernelSize, int dx, int sign);
/** @} */

/* Gaussian filter */

#ifdef __cplusplus
}
#endif

#endif
