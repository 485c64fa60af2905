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
 *   distances from the middle are added first, if that holds for the whole kernel. C1: the last n mod 8 of the n
 * samples of the interior add tap by tap. Any other number of taps is added tap by tap. C3: in the interior, what
 * exceeds the positive range of 32 bits turns into -32768.
 * - Low_16s: the caller promises that sums fit 16 bits. With r = 16384 / divisor, truncated, the interior adds products
 *   modulo 65536 and gives (sum * r) >> 14, saturated; edges add in 32 bits and give the low 16 bits of (sum * r)
 * >> 14. Neither rounds. Divided by 1, the interior is the sum. C1 with a symmetric kernel of 5 taps around its middle,
 *   qelBorderRepl, the divisor 16 and a width above 10: the two edge samples on the left are as the interior.
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

/* Filters with fixed kernels */

/* Gaussian filter */

#ifdef __cplusplus
}
#endif

#endif
