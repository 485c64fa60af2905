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
