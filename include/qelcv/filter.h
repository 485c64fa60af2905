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

/* Column pipelines */

/* Filters with fixed kernels */

/* Gaussian filter */

#ifdef __cplusplus
}
#endif

#endif
