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

/**
 * @name Row pipelines, the horizontal half of a separable filter
 *
 * Row y of the region, extended by a border to both sides, is correlated with a kernel and goes to pRowDst[y]:
 *
 *     pRowDst[y][x] = sum over i of pKernel[i] * extended[y][x - anchor + i], divided by divisor
 *
 * In a C3 row, x counts pixels and each channel is filtered by itself. The other half, a column pipeline, reads its
 * rows through such pointers, too: a caller keeps a few rows in a ring, and the order of the pointers says which row
 * comes next and what lies above and below the image.
 *
 * Sums and quotients, where `interior` are the results whose samples all lie in the row, and `edges` the others:
 * - 8u16s: sums are exact within 32 bits. Divided by 1, they saturate. Else they are converted to 32f, rounding to
 *   nearest, and multiplied by the 32f value of 1 / divisor. The interior rounds to nearest, ties to even, and
 *   saturates; edges saturate and truncate toward zero. With other than 3 or 5 taps, the last n mod 8 of the n samples
 *   of the interior truncate as well.
 * - 16s: sums are 32f. The interior multiplies samples by the 32f values of pKernel[i] / divisor, formed as
 *   pKernel[i] * (1 / divisor), rounds to nearest, ties to even, and saturates; edges add products with the
 *   coefficients themselves, tap by tap, multiply the sum by 1 / divisor, saturate and truncate toward zero. 3 taps are
 *   added as (p0 + p2) + p1, 5 taps as ((p0 + p4) + (p1 + p3)) + p2; the samples of two equal coefficients at equal
 *   distances from the middle are added first, if that holds for the whole kernel. Any other number of taps is added
 *   tap by tap. C1: so are the last n mod 8 of the n samples of the interior. C3: in the interior, what exceeds the
 *   positive range of 32 bits turns into -32768.
 * - Low_16s: the caller promises that sums fit 16 bits. With r = 16384 / divisor, truncated, the interior adds products
 *   modulo 65536 and gives the product of the sum and r, shifted right by 14, saturated; edges add in 32 bits and give
 *   the low 16 bits of such a product. Neither rounds. Divided by 1, the interior is the sum. C1 with a symmetric
 *   kernel of 5 taps around its middle, qelBorderRepl, the divisor 16 and a width above 10: the two edge samples on the
 *   left are as the interior.
 * - 32f: 3 taps are added as (p0 + p2) + p1, and 5 taps as ((p0 + p4) + (p1 + p3)) + p2, or of a symmetric kernel as
 *   ((s0 + s4) * k0 + (s1 + s3) * k1) + s2 * k2; others as p0 + (p1 + p2), then + p3, then + (p4 + p5), and so on;
 *   edges tap by tap. C1 with 3 taps, anchor 1 and a width above 18 adds all results tap by tap; with 5 taps, anchor 2
 *   and a width above 16, all results are tap by tap or of the symmetric form. Of several NaNs, any may come through.
 *
 * @param pSrc        first sample of the source region
 * @param srcStep     bytes from one row to the next: at least a row's bytes and a multiple of the sample size; bytes
 *                    between rows are not read
 * @param pRowDst     a pointer to each of the roiSize.height result rows, of roiSize.width pixels. Rows may have any
 *                    order and distance, and one may stand several times in the list: it keeps the last of its results,
 *                    or, where threads share the region, any. No row overlaps the source.
 * @param roiSize     region in pixels, at least 1 by 1; it may be narrower than the kernel
 * @param pKernel     coefficients, applied in the order of the array
 * @param kernelSize  their number, at least 1
 * @param anchor      the coefficient that stands over the result's own pixel, from 0 to kernelSize - 1
 * @param borderMode  how a row is extended, a QelBorderMode
 * @param borderValue, pBorderValue  the constant of qelBorderConst, C3: one for each channel; else not read
 * @param divisor     of the sums, not 0; may be negative
 * @param pBuffer     scratch of the size that the function below tells, at any address and with any contents
 *
 * @retval qelStatusOk                      all rows are written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadMaskSize             kernelSize below 1
 * @retval qelStatusBadAnchor               anchor outside of the kernel
 * @retval qelStatusBadStep                 srcStep is shorter than a row
 * @retval qelStatusStepNotElementMultiple  16s, 32f: srcStep is not a multiple of the sample size
 * @retval qelStatusBadArg                  borderMode is none of the five
 * @retval qelStatusNullPointer             C3: pBorderValue is null for qelBorderConst
 * @retval qelStatusBadArg                  divisor is 0
 *
 * Tested in this order; on an error nothing is written. A null pointer in pRowDst gives qelStatusNullPointer, too: the
 * rows ahead of it are written, those behind it may be. No alignment is needed. From an area of 0x8000 pixels for each
 * thread of the limit on, rows go to OpenMP threads (16s_C1R: kernels of more than 3 taps; 32f_C1R: of other than 3 or
 * 5 taps, or where there are several cores); their number does not change the results.
 */
/** @{ */
QEL_API qelStatus qeliFilterRowBorderPipeline_8u16s_C1R(const Qel8u* pSrc, int srcStep, Qel16s* const* pRowDst,
                                                        QelSize roiSize, const Qel16s* pKernel, int kernelSize,
                                                        int anchor, int borderMode, Qel8u borderValue, int divisor,
                                                        Qel8u* pBuffer);
QEL_API qelStatus qeliFilterRowBorderPipeline_8u16s_C3R(const Qel8u* pSrc, int srcStep, Qel16s* const* pRowDst,
                                                        QelSize roiSize, const Qel16s* pKernel, int kernelSize,
                                                        int anchor, int borderMode, const Qel8u* pBorderValue,
                                                        int divisor, Qel8u* pBuffer);
QEL_API qelStatus qeliFilterRowBorderPipeline_16s_C1R(const Qel16s* pSrc, int srcStep, Qel16s* const* pRowDst,
                                                      QelSize roiSize, const Qel16s* pKernel, int kernelSize,
                                                      int anchor, int borderMode, Qel16s borderValue, int divisor,
                                                      Qel8u* pBuffer);
QEL_API qelStatus qeliFilterRowBorderPipeline_16s_C3R(const Qel16s* pSrc, int srcStep, Qel16s* const* pRowDst,
                                                      QelSize roiSize, const Qel16s* pKernel, int kernelSize,
                                                      int anchor, int borderMode, const Qel16s* pBorderValue,
                                                      int divisor, Qel8u* pBuffer);
QEL_API qelStatus qeliFilterRowBorderPipeline_Low_16s_C1R(const Qel16s* pSrc, int srcStep, Qel16s* const* pRowDst,
                                                          QelSize roiSize, const Qel16s* pKernel, int kernelSize,
                                                          int anchor, int borderMode, Qel16s borderValue, int divisor,
                                                          Qel8u* pBuffer);
QEL_API qelStatus qeliFilterRowBorderPipeline_Low_16s_C3R(const Qel16s* pSrc, int srcStep, Qel16s* const* pRowDst,
                                                          QelSize roiSize, const Qel16s* pKernel, int kernelSize,
                                                          int anchor, int borderMode, const Qel16s* pBorderValue,
                                                          int divisor, Qel8u* pBuffer);
QEL_API qelStatus qeliFilterRowBorderPipeline_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* const* pRowDst,
                                                      QelSize roiSize, const Qel32f* pKernel, int kernelSize,
                                                      int anchor, int borderMode, Qel32f borderValue, Qel8u* pBuffer);
QEL_API qelStatus qeliFilterRowBorderPipeline_32f_C3R(const Qel32f* pSrc, int srcStep, Qel32f* const* pRowDst,
                                                      QelSize roiSize, const Qel32f* pKernel, int kernelSize,
                                                      int anchor, int borderMode, const Qel32f* pBorderValue,
                                                      Qel8u* pBuffer);
/** @} */

/**
 * @name Scratch of the row pipelines
 *
 * With t for the thread limit, see qelGetNumThreads, the size is
 *
 *     t * (32 + (roiSize.height + kernelSize) * sizeof(void*) + own)
 *
 * | Form    | own, C1R            | own, C3R             |
 * |---------|---------------------|----------------------|
 * | 8u16s   | kernelSize * 36 + 112 | kernelSize * 60 + 112 |
 * | 16s     | kernelSize * 48 + 80 | kernelSize * 40 + 64 |
 * | Low_16s | kernelSize * 24 + 64 | kernelSize * 208 + 64 |
 * | 32f     | kernelSize * 64 + 64 | kernelSize * 192 + 32 |
 *
 * It serves every call with no more rows and no more taps, as long as the thread limit is not raised.
 *
 * @param roiSize      region of the call, at least 1 by 1
 * @param kernelSize   number of coefficients, at least 1
 * @param pBufferSize  receives the bytes
 *
 * @retval qelStatusOk           *pBufferSize is written
 * @retval qelStatusNullPointer  pBufferSize is null
 * @retval qelStatusBadSize      width, height or kernelSize below 1
 * @retval qelStatusOverflow     the size is beyond the range of int
 *
 * Tested in this order; on an error nothing is written.
 */
/** @{ */
QEL_API qelStatus qeliFilterRowBorderPipelineGetBufferSize_8u16s_C1R(QelSize roiSize, int kernelSize, int* pBufferSize);
QEL_API qelStatus qeliFilterRowBorderPipelineGetBufferSize_8u16s_C3R(QelSize roiSize, int kernelSize, int* pBufferSize);
QEL_API qelStatus qeliFilterRowBorderPipelineGetBufferSize_16s_C1R(QelSize roiSize, int kernelSize, int* pBufferSize);
QEL_API qelStatus qeliFilterRowBorderPipelineGetBufferSize_16s_C3R(QelSize roiSize, int kernelSize, int* pBufferSize);
QEL_API qelStatus qeliFilterRowBorderPipelineGetBufferSize_Low_16s_C1R(QelSize roiSize, int kernelSize,
                                                                       int* pBufferSize);
QEL_API qelStatus qeliFilterRowBorderPipelineGetBufferSize_Low_16s_C3R(QelSize roiSize, int kernelSize,
                                                                       int* pBufferSize);
QEL_API qelStatus qeliFilterRowBorderPipelineGetBufferSize_32f_C1R(QelSize roiSize, int kernelSize, int* pBufferSize);
QEL_API qelStatus qeliFilterRowBorderPipelineGetBufferSize_32f_C3R(QelSize roiSize, int kernelSize, int* pBufferSize);
/** @} */

/**
 * @name Column pipeline: the vertical half of a separable filter
 *
 * pDst[x, y] = sum over i of pKernel[i] * pRowSrc[y + i][x], over the divisor where there is one. The first tap meets
 * the upper row; there is no anchor and no border, since the row pointers say which row stands where: one row may stand
 * in several places, and a ring of a few rows can be a whole image.
 *
 * A row is computed in groups of samples (C3: interleaved samples, three to a pixel); those behind its last whole group
 * follow a rule of their own.
 *
 * 16s, 16s8u, 16s8s sum in single precision. In groups each tap is multiplied by the single-precision reciprocal of the
 * divisor first, and the sum is rounded to nearest, ties to even, and saturated. Samples left over are summed in the
 * order of the taps, the sum is multiplied by the reciprocal, clamped to the range of the result and truncated.
 *
 * | Taps | Order of summation in groups                                             | Group |
 * |------|--------------------------------------------------------------------------|-------|
 * | 3    | (r0 k0 + r1 k1) + r2 k2; for k0 = k2, but in row 0: (r0 + r2) k0 + r1 k1 | 8; 4 in row 0 |
 * | 5    | ((r0 k0 + r1 k1) + r4 k4) + (r2 k2 + r3 k3)                              | 4     |
 * | else | the order of the taps                                                    | 16    |
 *
 * Low_16s keeps the low 16 bits of products and sums, in groups of 8: it is for sums that are known to fit. With the
 * reciprocal r = 16384 / divisor, rounded towards zero, the result is sum * r / 16384, rounded down and saturated.
 * Samples left over are summed in 32 bits and keep the low 16 bits of (sum * r) >> 14, a product of 32 bits shifted
 * without its sign. Symmetric kernels of 5 taps over a divisor of 16, in regions of at least 3 rows, have no samples
 * left over: all are the low 16 bits of the sum, with their sign, shifted right by 4.
 *
 * 32f sums in this order, all samples alike: for symmetric kernels, compared as numbers, (r0 + r2) k0 + r1 k1 of 3
 * taps and ((r0 + r4) k0 + (r1 + r3) k1) + r2 k2 of 5; else the order of the taps.
 *
 * @param pRowSrc     roiSize.height + kernelSize - 1 pointers to rows of roiSize.width pixels, from top to bottom
 * @param pDst        first sample of the result; may not overlap a source row
 * @param dstStep     bytes from one row of the result to the next: at least a row's bytes and a multiple of the sample
 *                    size; bytes between rows are neither read nor written
 * @param roiSize     region in pixels, at least 1 by 1
 * @param pKernel     the taps
 * @param kernelSize  their number, at least 1
 * @param divisor     what the sum is divided by, of either sign
 * @param pBuffer     scratch of the size that the query of the same ending tells; what is in it does not matter
 *
 * @retval qelStatusOk                      the region is written
 * @retval qelStatusNullPointer             pRowSrc, pDst or pKernel is null
 * @retval qelStatusBadSize                 width, height or kernelSize below 1
 * @retval qelStatusBadStep                 dstStep is shorter than its row
 * @retval qelStatusStepNotElementMultiple  16s, Low_16s, 32f: dstStep is not a multiple of the sample size
 * @retval qelStatusNullPointer             pBuffer is null
 * @retval qelStatusBadArg                  divisor is 0
 * @retval qelStatusNullPointer             a row pointer is null
 *
 * Tested in this order; on an error nothing is written. No alignment is needed. Rows of the forms with a divisor go to
 * OpenMP threads from 0x8000 pixels for each thread of the limit on, with 3 and 5 taps only where there are several
 * cores; the number of threads does not change the result. 32f runs on the caller's thread.
 */
/** @{ */
QEL_API qelStatus qeliFilterColumnPipeline_16s_C1R(const Qel16s* const* pRowSrc, Qel16s* pDst, int dstStep,
                                                   QelSize roiSize, const Qel16s* pKernel, int kernelSize, int divisor,
                                                   Qel8u* pBuffer);
QEL_API qelStatus qeliFilterColumnPipeline_16s_C3R(const Qel16s* const* pRowSrc, Qel16s* pDst, int dstStep,
                                                   QelSize roiSize, const Qel16s* pKernel, int kernelSize, int divisor,
                                                   Qel8u* pBuffer);
QEL_API qelStatus qeliFilterColumnPipeline_16s8u_C1R(const Qel16s* const* pRowSrc, Qel8u* pDst, int dstStep,
                                                     QelSize roiSize, const Qel16s* pKernel, int kernelSize,
                                                     int divisor, Qel8u* pBuffer);
QEL_API qelStatus qeliFilterColumnPipeline_16s8u_C3R(const Qel16s* const* pRowSrc, Qel8u* pDst, int dstStep,
                                                     QelSize roiSize, const Qel16s* pKernel, int kernelSize,
                                                     int divisor, Qel8u* pBuffer);
QEL_API qelStatus qeliFilterColumnPipeline_16s8s_C1R(const Qel16s* const* pRowSrc, Qel8s* pDst, int dstStep,
                                                     QelSize roiSize, const Qel16s* pKernel, int kernelSize,
                                                     int divisor, Qel8u* pBuffer);
QEL_API qelStatus qeliFilterColumnPipeline_16s8s_C3R(const Qel16s* const* pRowSrc, Qel8s* pDst, int dstStep,
                                                     QelSize roiSize, const Qel16s* pKernel, int kernelSize,
                                                     int divisor, Qel8u* pBuffer);
QEL_API qelStatus qeliFilterColumnPipeline_Low_16s_C1R(const Qel16s* const* pRowSrc, Qel16s* pDst, int dstStep,
                                                       QelSize roiSize, const Qel16s* pKernel, int kernelSize,
                                                       int divisor, Qel8u* pBuffer);
QEL_API qelStatus qeliFilterColumnPipeline_Low_16s_C3R(const Qel16s* const* pRowSrc, Qel16s* pDst, int dstStep,
                                                       QelSize roiSize, const Qel16s* pKernel, int kernelSize,
                                                       int divisor, Qel8u* pBuffer);
QEL_API qelStatus qeliFilterColumnPipeline_32f_C1R(const Qel32f* const* pRowSrc, Qel32f* pDst, int dstStep,
                                                   QelSize roiSize, const Qel32f* pKernel, int kernelSize,
                                                   Qel8u* pBuffer);
QEL_API qelStatus qeliFilterColumnPipeline_32f_C3R(const Qel32f* const* pRowSrc, Qel32f* pDst, int dstStep,
                                                   QelSize roiSize, const Qel32f* pKernel, int kernelSize,
                                                   Qel8u* pBuffer);
/** @} */

/**
 * @name Column pipeline: bytes of scratch
 *
 * With n the thread limit: n * (32 + (height + kernelSize) * sizeof(void*) + samples * 12 + 32), where `samples` is the
 * width rounded up to a multiple of 4 (Low_16s: of 8), times the channels. 32f: 32.
 *
 * @param roiSize      region of the filter in pixels, at least 1 by 1
 * @param kernelSize   number of taps, at least 1
 * @param pBufferSize  the bytes that pBuffer of the filter needs, at any address
 *
 * @retval qelStatusOk           *pBufferSize is written
 * @retval qelStatusNullPointer  pBufferSize is null
 * @retval qelStatusBadSize      width, height or kernelSize below 1
 * @retval qelStatusOverflow     the bytes are beyond the range of int
 *
 * Tested in this order; on an error nothing is written.
 */
/** @{ */
QEL_API qelStatus qeliFilterColumnPipelineGetBufferSize_16s_C1R(QelSize roiSize, int kernelSize, int* pBufferSize);
QEL_API qelStatus qeliFilterColumnPipelineGetBufferSize_16s_C3R(QelSize roiSize, int kernelSize, int* pBufferSize);
QEL_API qelStatus qeliFilterColumnPipelineGetBufferSize_16s8u_C1R(QelSize roiSize, int kernelSize, int* pBufferSize);
QEL_API qelStatus qeliFilterColumnPipelineGetBufferSize_16s8u_C3R(QelSize roiSize, int kernelSize, int* pBufferSize);
QEL_API qelStatus qeliFilterColumnPipelineGetBufferSize_16s8s_C1R(QelSize roiSize, int kernelSize, int* pBufferSize);
QEL_API qelStatus qeliFilterColumnPipelineGetBufferSize_16s8s_C3R(QelSize roiSize, int kernelSize, int* pBufferSize);
QEL_API qelStatus qeliFilterColumnPipelineGetBufferSize_Low_16s_C1R(QelSize roiSize, int kernelSize, int* pBufferSize);
QEL_API qelStatus qeliFilterColumnPipelineGetBufferSize_Low_16s_C3R(QelSize roiSize, int kernelSize, int* pBufferSize);
QEL_API qelStatus qeliFilterColumnPipelineGetBufferSize_32f_C1R(QelSize roiSize, int kernelSize, int* pBufferSize);
QEL_API qelStatus qeliFilterColumnPipelineGetBufferSize_32f_C3R(QelSize roiSize, int kernelSize, int* pBufferSize);
/** @} */

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
 * @retval qelStatusBadArg                  borderMode is none of the five, or has some of the flags 0xFFC0 but neither
 *                                          of the two that are known; beside one of these, and above 0xFFFF, any flag
 *                                          is passed over; then divisor is 0
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
 * 1 -2 1 are those of size 3. 16s coefficients wrap at 16 bits, which those of order 0 do from
 * size 19 on.
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

/**
 * @name Gaussian filter
 *
 * Correlates the image, extended by a border, with a Gaussian of kernelSize taps across and down. With a = kernelSize /
 * 2, tap i is exp(-(i - a)^2 / (2 sigma^2)), rounded to single precision and divided by the sum of all taps, which is
 * added up in single precision from tap 0 on. Rows go through qeliFilterRowBorderPipeline_32f_C1R, then columns through
 * qeliFilterColumnPipeline_32f_C1R: results are theirs to the bit.
 *
 * @param pSrc        first sample of the source region
 * @param srcStep, dstStep  bytes from one row to the next: at least a row's bytes and a multiple of the sample size
 * @param pDst        first sample of the result
 * @param roiSize     region in pixels, at least 1 by 1; it may be smaller than the kernel
 * @param kernelSize  number of taps, odd, at least 3
 * @param sigma       standard deviation in pixels; it is not tested, and 0 gives NaNs
 * @param borderMode  how the image is extended, a QelBorderMode. Added to it, 0x10 says that kernelSize / 2 rows above
 * the region lie in memory and are read as they are, 0x20 says so of the rows below. Left and right always follow the
 * mode. A single row or column repeats itself, unless the mode is qelBorderConst.
 * @param borderValue the constant of qelBorderConst; else not read. Down the columns it stands for filtered rows.
 * @param pBuffer     scratch of the size that qeliFilterGaussGetBufferSize_32f_C1R tells for the same region and
 * kernel, at any address and with any contents
 * @param pBufferSize receives the bytes
 *
 * @retval qelStatusOk           the region is written. A step that is shorter than its row in bytes, although not below
 *                               the width in pixels, or that is not a multiple of the sample size, leaves it as it was.
 * @retval qelStatusNullPointer  a pointer is null
 * @retval qelStatusBadSize      width or height below 1
 * @retval qelStatusBadStep      a step is below the width in pixels
 * @retval qelStatusBadArg       kernelSize is below 3 or even; then borderMode is none of the five
 * @retval qelStatusOverflow     the scratch is beyond the range of int
 *
 * Tested in this order; on an error nothing is written. No alignment is needed. Rows go to OpenMP threads as the row
 * pipeline has it; their number does not change the result.
 */
/** @{ */
QEL_API qelStatus qeliFilterGaussBorder_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                QelSize roiSize, int kernelSize, Qel32f sigma, int borderMode,
                                                Qel32f borderValue, Qel8u* pBuffer);
QEL_API qelStatus qeliFilterGaussGetBufferSize_32f_C1R(QelSize roiSize, int kernelSize, int* pBufferSize);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
