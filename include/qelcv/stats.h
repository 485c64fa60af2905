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
 * In single precision, with three roundings in this order: difference, product, sum. So alpha 0 keeps a finite
 * accumulator where the difference is finite, but for -0, which may become 0; alpha 1 does not always meet the source.
 * Where two NaNs meet, the result is one of them.
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

/**
 * @name Masked norms of an image: the largest magnitude (Inf), their sum (L1), the root of the sum of squares (L2)
 *
 * An empty mask gives 0. The magnitude of -128 is 128. Samples that the mask leaves out take no part, whatever they
 * are. 8u, 8s, and Inf and L1 of 16u are exact before the root is taken in double precision. Inf of 32f is exact and
 * passes over NaN.
 *
 * L2 of 16u squares each sample in single precision. Along each row, blocks of 32 samples, then one each of 16, 8 and
 * 4, are taken as vectors of 4 squares, which are added in single precision as halves of halves:
 * ((0 + 1) + (2 + 3)) + ((4 + 5) + (6 + 7)). The four sums and the squares of single samples that are left are added
 * up in double precision.
 *
 * L1 and L2 of 32f add along each row in single precision, in two times four lanes: a sample goes to the lane of its
 * place in each eight, those of a last four to the first four lanes, and single samples that are left to the first
 * lane. At the row's end both fours are added, then lanes 2 and 3 to lanes 0 and 1, and those two to double-precision
 * sums of their own. These two are added after the last row and rounded to single precision, from which the root is
 * taken in double precision.
 *
 * @param pSrc          first sample of the source region; C3: three interleaved channels
 * @param srcStep       bytes from one row to the next: at least a row's bytes and a multiple of the sample size
 * @param pMask         first byte of the mask: a byte per pixel, also for C3; a pixel counts where it is not zero
 * @param maskStep      bytes from one row of the mask to the next, at least the width
 * @param roiSize       region in pixels, at least 1 by 1
 * @param coi           C3: the channel that is taken, 1, 2 or 3
 * @param pValue        the norm
 *
 * @retval qelStatusOk                      the norm is written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step of an image is shorter than its row
 * @retval qelStatusStepNotElementMultiple  16u, 32f: a step of an image is not a multiple of the sample size
 * @retval qelStatusBadStep                 the step of the mask is shorter than its row
 * @retval qelStatusBadChannel              C3: coi is not 1, 2 or 3
 * @retval qelStatusNoMemory                more than 32 threads, and no memory for a table of their results
 *
 * Tested in this order; on an error nothing is written. No alignment is needed. Large regions go to OpenMP threads,
 * whose sums are added in their order in double precision. Their number changes the last bits of L2 of 16u and of L1
 * and L2 of 32f, and nothing else.
 */
/** @{ */
QEL_API qelStatus qeliNorm_Inf_8u_C1MR(const Qel8u* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                       QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNorm_Inf_8u_C3CMR(const Qel8u* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                        QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNorm_Inf_8s_C1MR(const Qel8s* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                       QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNorm_Inf_8s_C3CMR(const Qel8s* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                        QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNorm_Inf_16u_C1MR(const Qel16u* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                        QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNorm_Inf_16u_C3CMR(const Qel16u* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                         QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNorm_Inf_32f_C1MR(const Qel32f* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                        QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNorm_Inf_32f_C3CMR(const Qel32f* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                         QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNorm_L1_8u_C1MR(const Qel8u* pSrc, int srcStep, const Qel8u* pMask, int maskStep, QelSize roiSize,
                                      Qel64f* pValue);
QEL_API qelStatus qeliNorm_L1_8u_C3CMR(const Qel8u* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                       QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNorm_L1_8s_C1MR(const Qel8s* pSrc, int srcStep, const Qel8u* pMask, int maskStep, QelSize roiSize,
                                      Qel64f* pValue);
QEL_API qelStatus qeliNorm_L1_8s_C3CMR(const Qel8s* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                       QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNorm_L1_16u_C1MR(const Qel16u* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                       QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNorm_L1_16u_C3CMR(const Qel16u* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                        QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNorm_L1_32f_C1MR(const Qel32f* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                       QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNorm_L1_32f_C3CMR(const Qel32f* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                        QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNorm_L2_8u_C1MR(const Qel8u* pSrc, int srcStep, const Qel8u* pMask, int maskStep, QelSize roiSize,
                                      Qel64f* pValue);
QEL_API qelStatus qeliNorm_L2_8u_C3CMR(const Qel8u* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                       QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNorm_L2_8s_C1MR(const Qel8s* pSrc, int srcStep, const Qel8u* pMask, int maskStep, QelSize roiSize,
                                      Qel64f* pValue);
QEL_API qelStatus qeliNorm_L2_8s_C3CMR(const Qel8s* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                       QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNorm_L2_16u_C1MR(const Qel16u* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                       QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNorm_L2_16u_C3CMR(const Qel16u* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                        QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNorm_L2_32f_C1MR(const Qel32f* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                       QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNorm_L2_32f_C3CMR(const Qel32f* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                        QelSize roiSize, int coi, Qel64f* pValue);
/** @} */

/**
 * @name Masked norms of the difference of two images: those of |pSrc1[x, y] - pSrc2[x, y]|
 *
 * As the norms of an image above, except for what follows. The difference of integers is exact; that of 8s has a
 * magnitude of up to 255. 32f subtracts in single precision, and adds along each row in four lanes: a sample goes to
 * the lane of its place in each four, single samples that are left to the first lane.
 *
 * @param pSrc1, pSrc2  first sample of each source region; C3: three interleaved channels
 * @param src1Step, src2Step  bytes from one row to the next: at least a row's bytes and a multiple of the sample size
 * @param pMask         first byte of the mask: a byte per pixel, also for C3; a pixel counts where it is not zero
 * @param maskStep      bytes from one row of the mask to the next, at least the width
 * @param roiSize       region in pixels, at least 1 by 1
 * @param coi           C3: the channel that is taken, 1, 2 or 3
 * @param pValue        the norm
 *
 * @retval qelStatusOk                      the norm is written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step of an image is shorter than its row
 * @retval qelStatusStepNotElementMultiple  16u, 32f: a step of an image is not a multiple of the sample size
 * @retval qelStatusBadStep                 the step of the mask is shorter than its row
 * @retval qelStatusBadChannel              C3: coi is not 1, 2 or 3
 * @retval qelStatusNoMemory                more than 32 threads, and no memory for a table of their results
 *
 * Tested in this order; on an error nothing is written. No alignment is needed. Large regions go to OpenMP threads,
 * those of Inf and of 32f excepted; their number changes the last bits of L2 of 16u, and nothing else.
 */
/** @{ */
QEL_API qelStatus qeliNormDiff_Inf_8u_C1MR(const Qel8u* pSrc1, int src1Step, const Qel8u* pSrc2, int src2Step,
                                           const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNormDiff_Inf_8u_C3CMR(const Qel8u* pSrc1, int src1Step, const Qel8u* pSrc2, int src2Step,
                                            const Qel8u* pMask, int maskStep, QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNormDiff_Inf_8s_C1MR(const Qel8s* pSrc1, int src1Step, const Qel8s* pSrc2, int src2Step,
                                           const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNormDiff_Inf_8s_C3CMR(const Qel8s* pSrc1, int src1Step, const Qel8s* pSrc2, int src2Step,
                                            const Qel8u* pMask, int maskStep, QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNormDiff_Inf_16u_C1MR(const Qel16u* pSrc1, int src1Step, const Qel16u* pSrc2, int src2Step,
                                            const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNormDiff_Inf_16u_C3CMR(const Qel16u* pSrc1, int src1Step, const Qel16u* pSrc2, int src2Step,
                                             const Qel8u* pMask, int maskStep, QelSize roiSize, int coi,
                                             Qel64f* pValue);
QEL_API qelStatus qeliNormDiff_Inf_32f_C1MR(const Qel32f* pSrc1, int src1Step, const Qel32f* pSrc2, int src2Step,
                                            const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNormDiff_Inf_32f_C3CMR(const Qel32f* pSrc1, int src1Step, const Qel32f* pSrc2, int src2Step,
                                             const Qel8u* pMask, int maskStep, QelSize roiSize, int coi,
                                             Qel64f* pValue);
QEL_API qelStatus qeliNormDiff_L1_8u_C1MR(const Qel8u* pSrc1, int src1Step, const Qel8u* pSrc2, int src2Step,
                                          const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNormDiff_L1_8u_C3CMR(const Qel8u* pSrc1, int src1Step, const Qel8u* pSrc2, int src2Step,
                                           const Qel8u* pMask, int maskStep, QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNormDiff_L1_8s_C1MR(const Qel8s* pSrc1, int src1Step, const Qel8s* pSrc2, int src2Step,
                                          const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNormDiff_L1_8s_C3CMR(const Qel8s* pSrc1, int src1Step, const Qel8s* pSrc2, int src2Step,
                                           const Qel8u* pMask, int maskStep, QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNormDiff_L1_16u_C1MR(const Qel16u* pSrc1, int src1Step, const Qel16u* pSrc2, int src2Step,
                                           const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNormDiff_L1_16u_C3CMR(const Qel16u* pSrc1, int src1Step, const Qel16u* pSrc2, int src2Step,
                                            const Qel8u* pMask, int maskStep, QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNormDiff_L1_32f_C1MR(const Qel32f* pSrc1, int src1Step, const Qel32f* pSrc2, int src2Step,
                                           const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNormDiff_L1_32f_C3CMR(const Qel32f* pSrc1, int src1Step, const Qel32f* pSrc2, int src2Step,
                                            const Qel8u* pMask, int maskStep, QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNormDiff_L2_8u_C1MR(const Qel8u* pSrc1, int src1Step, const Qel8u* pSrc2, int src2Step,
                                          const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNormDiff_L2_8u_C3CMR(const Qel8u* pSrc1, int src1Step, const Qel8u* pSrc2, int src2Step,
                                           const Qel8u* pMask, int maskStep, QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNormDiff_L2_8s_C1MR(const Qel8s* pSrc1, int src1Step, const Qel8s* pSrc2, int src2Step,
                                          const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNormDiff_L2_8s_C3CMR(const Qel8s* pSrc1, int src1Step, const Qel8s* pSrc2, int src2Step,
                                           const Qel8u* pMask, int maskStep, QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNormDiff_L2_16u_C1MR(const Qel16u* pSrc1, int src1Step, const Qel16u* pSrc2, int src2Step,
                                           const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNormDiff_L2_16u_C3CMR(const Qel16u* pSrc1, int src1Step, const Qel16u* pSrc2, int src2Step,
                                            const Qel8u* pMask, int maskStep, QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNormDiff_L2_32f_C1MR(const Qel32f* pSrc1, int src1Step, const Qel32f* pSrc2, int src2Step,
                                           const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNormDiff_L2_32f_C3CMR(const Qel32f* pSrc1, int src1Step, const Qel32f* pSrc2, int src2Step,
                                            const Qel8u* pMask, int maskStep, QelSize roiSize, int coi, Qel64f* pValue);
/** @} */

/**
 * @name Masked relative norms: the norm of the difference of two images, divided by that of the second one
 *
 * Both are those above, without the root; of 32f both are added in the manner of the difference. They are divided in
 * double precision, and L2 then takes the root. If that of the second image is zero, the result is a NaN where that
 * of the difference is zero, too, infinity where it is greater, and negative infinity where it is a NaN.
 *
 * @param pSrc1, pSrc2  first sample of each source region; C3: three interleaved channels
 * @param src1Step, src2Step  bytes from one row to the next: at least a row's bytes and a multiple of the sample size
 * @param pMask         first byte of the mask: a byte per pixel, also for C3; a pixel counts where it is not zero
 * @param maskStep      bytes from one row of the mask to the next, at least the width
 * @param roiSize       region in pixels, at least 1 by 1
 * @param coi           C3: the channel that is taken, 1, 2 or 3
 * @param pValue        the norm
 *
 * @retval qelStatusOk                      the norm is written
 * @retval qelStatusDivideByZero            warning: the norm of the second image is zero; the value above is written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step of an image is shorter than its row
 * @retval qelStatusStepNotElementMultiple  16u, 32f: a step of an image is not a multiple of the sample size
 * @retval qelStatusBadStep                 the step of the mask is shorter than its row
 * @retval qelStatusBadChannel              C3: coi is not 1, 2 or 3
 * @retval qelStatusNoMemory                more than 32 threads, and no memory for a table of their results
 *
 * Tested in this order; on an error nothing is written. No alignment is needed. Large regions go to OpenMP threads,
 * those of 32f and of L1 of 8u C1MR excepted; their number changes the last bits of L2 of 16u, and nothing else.
 */
/** @{ */
QEL_API qelStatus qeliNormRel_Inf_8u_C1MR(const Qel8u* pSrc1, int src1Step, const Qel8u* pSrc2, int src2Step,
                                          const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNormRel_Inf_8u_C3CMR(const Qel8u* pSrc1, int src1Step, const Qel8u* pSrc2, int src2Step,
                                           const Qel8u* pMask, int maskStep, QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNormRel_Inf_8s_C1MR(const Qel8s* pSrc1, int src1Step, const Qel8s* pSrc2, int src2Step,
                                          const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNormRel_Inf_8s_C3CMR(const Qel8s* pSrc1, int src1Step, const Qel8s* pSrc2, int src2Step,
                                           const Qel8u* pMask, int maskStep, QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNormRel_Inf_16u_C1MR(const Qel16u* pSrc1, int src1Step, const Qel16u* pSrc2, int src2Step,
                                           const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNormRel_Inf_16u_C3CMR(const Qel16u* pSrc1, int src1Step, const Qel16u* pSrc2, int src2Step,
                                            const Qel8u* pMask, int maskStep, QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNormRel_Inf_32f_C1MR(const Qel32f* pSrc1, int src1Step, const Qel32f* pSrc2, int src2Step,
                                           const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNormRel_Inf_32f_C3CMR(const Qel32f* pSrc1, int src1Step, const Qel32f* pSrc2, int src2Step,
                                            const Qel8u* pMask, int maskStep, QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNormRel_L1_8u_C1MR(const Qel8u* pSrc1, int src1Step, const Qel8u* pSrc2, int src2Step,
                                         const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNormRel_L1_8u_C3CMR(const Qel8u* pSrc1, int src1Step, const Qel8u* pSrc2, int src2Step,
                                          const Qel8u* pMask, int maskStep, QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNormRel_L1_8s_C1MR(const Qel8s* pSrc1, int src1Step, const Qel8s* pSrc2, int src2Step,
                                         const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNormRel_L1_8s_C3CMR(const Qel8s* pSrc1, int src1Step, const Qel8s* pSrc2, int src2Step,
                                          const Qel8u* pMask, int maskStep, QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNormRel_L1_16u_C1MR(const Qel16u* pSrc1, int src1Step, const Qel16u* pSrc2, int src2Step,
                                          const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNormRel_L1_16u_C3CMR(const Qel16u* pSrc1, int src1Step, const Qel16u* pSrc2, int src2Step,
                                           const Qel8u* pMask, int maskStep, QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNormRel_L1_32f_C1MR(const Qel32f* pSrc1, int src1Step, const Qel32f* pSrc2, int src2Step,
                                          const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNormRel_L1_32f_C3CMR(const Qel32f* pSrc1, int src1Step, const Qel32f* pSrc2, int src2Step,
                                           const Qel8u* pMask, int maskStep, QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNormRel_L2_8u_C1MR(const Qel8u* pSrc1, int src1Step, const Qel8u* pSrc2, int src2Step,
                                         const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNormRel_L2_8u_C3CMR(const Qel8u* pSrc1, int src1Step, const Qel8u* pSrc2, int src2Step,
                                          const Qel8u* pMask, int maskStep, QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNormRel_L2_8s_C1MR(const Qel8s* pSrc1, int src1Step, const Qel8s* pSrc2, int src2Step,
                                         const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNormRel_L2_8s_C3CMR(const Qel8s* pSrc1, int src1Step, const Qel8s* pSrc2, int src2Step,
                                          const Qel8u* pMask, int maskStep, QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNormRel_L2_16u_C1MR(const Qel16u* pSrc1, int src1Step, const Qel16u* pSrc2, int src2Step,
                                          const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNormRel_L2_16u_C3CMR(const Qel16u* pSrc1, int src1Step, const Qel16u* pSrc2, int src2Step,
                                           const Qel8u* pMask, int maskStep, QelSize roiSize, int coi, Qel64f* pValue);
QEL_API qelStatus qeliNormRel_L2_32f_C1MR(const Qel32f* pSrc1, int src1Step, const Qel32f* pSrc2, int src2Step,
                                          const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pValue);
QEL_API qelStatus qeliNormRel_L2_32f_C3CMR(const Qel32f* pSrc1, int src1Step, const Qel32f* pSrc2, int src2Step,
                                           const Qel8u* pMask, int maskStep, QelSize roiSize, int coi, Qel64f* pValue);
/** @} */

/**
 * @name Mean under a mask: *pMean = the sum of the samples where the mask is not zero, divided by their number
 *
 * C3CMR: three interleaved channels, of which `coi` alone is read into the mean. The mean of an empty mask is 0.0.
 * The sums of 8u, 8s and 16u are exact, whatever the size. 32f adds in an order that depends on the size of the region
 * and the number of threads alone, never on the instruction set: C1MR in single precision, in four lanes over all rows,
 * so that a large sum loses its low bits; C3CMR in double precision, pixel after pixel.
 *
 * @param pSrc      first sample of the source region
 * @param srcStep   bytes from one row to the next: at least a row's bytes and a multiple of the sample size
 * @param pMask     first byte of the mask, one byte for each pixel: the pixel takes part where it is not zero. Samples
 *                  that take no part may hold anything, a NaN too
 * @param maskStep  bytes from one row of the mask to the next: at least the width
 * @param roiSize   region in pixels, at least 1 by 1
 * @param coi       C3CMR: the channel, 1, 2 or 3
 * @param pMean     the result
 *
 * @retval qelStatusOk                      *pMean is written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 srcStep is shorter than its row
 * @retval qelStatusStepNotElementMultiple  16u, 32f: srcStep is not a multiple of the sample size
 * @retval qelStatusBadStep                 maskStep is shorter than its row
 * @retval qelStatusBadChannel              C3CMR: coi is not 1, 2 or 3
 * @retval qelStatusNoMemory                there are more than 32 threads and no memory for their sums
 *
 * Tested in this order; on an error nothing is written. No alignment is needed. From 0x20000 pixels for each thread of
 * the limit on, rows go to OpenMP threads, except for qeliMean_8u_C1MR; that can change the last bits of 32f, and
 * nothing else.
 */
/** @{ */
QEL_API qelStatus qeliMean_8u_C1MR(const Qel8u* pSrc, int srcStep, const Qel8u* pMask, int maskStep, QelSize roiSize,
                                   Qel64f* pMean);
QEL_API qelStatus qeliMean_8u_C3CMR(const Qel8u* pSrc, int srcStep, const Qel8u* pMask, int maskStep, QelSize roiSize,
                                    int coi, Qel64f* pMean);
QEL_API qelStatus qeliMean_8s_C1MR(const Qel8s* pSrc, int srcStep, const Qel8u* pMask, int maskStep, QelSize roiSize,
                                   Qel64f* pMean);
QEL_API qelStatus qeliMean_8s_C3CMR(const Qel8s* pSrc, int srcStep, const Qel8u* pMask, int maskStep, QelSize roiSize,
                                    int coi, Qel64f* pMean);
QEL_API qelStatus qeliMean_16u_C1MR(const Qel16u* pSrc, int srcStep, const Qel8u* pMask, int maskStep, QelSize roiSize,
                                    Qel64f* pMean);
QEL_API qelStatus qeliMean_16u_C3CMR(const Qel16u* pSrc, int srcStep, const Qel8u* pMask, int maskStep, QelSize roiSize,
                                     int coi, Qel64f* pMean);
QEL_API qelStatus qeliMean_32f_C1MR(const Qel32f* pSrc, int srcStep, const Qel8u* pMask, int maskStep, QelSize roiSize,
                                    Qel64f* pMean);
QEL_API qelStatus qeliMean_32f_C3CMR(const Qel32f* pSrc, int srcStep, const Qel8u* pMask, int maskStep, QelSize roiSize,
                                     int coi, Qel64f* pMean);
/** @} */

/**
 * @name Mean and standard deviation, over a region or under a mask
 *
 * *pMean is the mean of the samples and *pStdDev the square root of the mean of their squared distances from it: the
 * divisor is the number of pixels. C3CR and C3CMR: of one channel out of three interleaved ones. Under a mask, only
 * pixels whose mask byte is not zero take part; an empty mask gives 0.0 and 0.0.
 *
 * The sums of 8u, 8s and 16u are exact, whatever the size; the deviation is the root of the magnitude of the mean
 * square less the squared mean, in double precision. 32f adds samples and their squares in single precision and folds
 * these sums into double precision after every row or two, small regions at their end; the order depends on the size
 * and alignment of the region and the number of threads alone, never on the instruction set. Where the variance so
 * found is less than 0.05 of the squared mean, a second pass adds up the squared distances from the mean, and where all
 * samples are equal, the deviation is exactly 0.0.
 *
 * @param pSrc      first sample of the source region
 * @param srcStep   bytes from one row to the next: at least a row's bytes and a multiple of the sample size
 * @param pMask     C1MR, C3CMR: first byte of the mask, one byte for each pixel. Samples that take no part may hold
 *                  anything, a NaN too
 * @param maskStep  bytes from one row of the mask to the next: at least the width
 * @param roiSize   region in pixels, at least 1 by 1
 * @param coi       C3CR, C3CMR: the channel, 1, 2 or 3
 * @param pMean, pStdDev  the results; null where one is not wanted
 *
 * @retval qelStatusOk                      the results are written
 * @retval qelStatusNullPointer             pSrc or pMask is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 srcStep is shorter than its row
 * @retval qelStatusStepNotElementMultiple  16u, 32f: srcStep is not a multiple of the sample size
 * @retval qelStatusBadStep                 maskStep is shorter than its row
 * @retval qelStatusBadChannel              C3CR, C3CMR: coi is not 1, 2 or 3
 * @retval qelStatusNoMemory                there are more than 32 threads and no memory for their sums
 *
 * Tested in this order; on an error nothing is written. No alignment is needed. From 0x20000 pixels for each thread of
 * the limit on, rows go to OpenMP threads; qeliMean_StdDev_32f_C1R needs half as many, qeliMean_StdDev_8u_C1R more than
 * one core, and qeliMean_StdDev_32f_C3CR stays on the caller's thread. That can change the last bits of 32f, and
 * nothing else; the second pass runs on the caller's thread.
 */
/** @{ */
QEL_API qelStatus qeliMean_StdDev_8u_C1R(const Qel8u* pSrc, int srcStep, QelSize roiSize, Qel64f* pMean,
                                         Qel64f* pStdDev);
QEL_API qelStatus qeliMean_StdDev_8u_C3CR(const Qel8u* pSrc, int srcStep, QelSize roiSize, int coi, Qel64f* pMean,
                                          Qel64f* pStdDev);
QEL_API qelStatus qeliMean_StdDev_8u_C1MR(const Qel8u* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                          QelSize roiSize, Qel64f* pMean, Qel64f* pStdDev);
QEL_API qelStatus qeliMean_StdDev_8u_C3CMR(const Qel8u* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                           QelSize roiSize, int coi, Qel64f* pMean, Qel64f* pStdDev);
QEL_API qelStatus qeliMean_StdDev_8s_C1R(const Qel8s* pSrc, int srcStep, QelSize roiSize, Qel64f* pMean,
                                         Qel64f* pStdDev);
QEL_API qelStatus qeliMean_StdDev_8s_C3CR(const Qel8s* pSrc, int srcStep, QelSize roiSize, int coi, Qel64f* pMean,
                                          Qel64f* pStdDev);
QEL_API qelStatus qeliMean_StdDev_8s_C1MR(const Qel8s* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                          QelSize roiSize, Qel64f* pMean, Qel64f* pStdDev);
QEL_API qelStatus qeliMean_StdDev_8s_C3CMR(const Qel8s* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                           QelSize roiSize, int coi, Qel64f* pMean, Qel64f* pStdDev);
QEL_API qelStatus qeliMean_StdDev_16u_C1R(const Qel16u* pSrc, int srcStep, QelSize roiSize, Qel64f* pMean,
                                          Qel64f* pStdDev);
QEL_API qelStatus qeliMean_StdDev_16u_C3CR(const Qel16u* pSrc, int srcStep, QelSize roiSize, int coi, Qel64f* pMean,
                                           Qel64f* pStdDev);
QEL_API qelStatus qeliMean_StdDev_16u_C1MR(const Qel16u* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                           QelSize roiSize, Qel64f* pMean, Qel64f* pStdDev);
QEL_API qelStatus qeliMean_StdDev_16u_C3CMR(const Qel16u* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                            QelSize roiSize, int coi, Qel64f* pMean, Qel64f* pStdDev);
QEL_API qelStatus qeliMean_StdDev_32f_C1R(const Qel32f* pSrc, int srcStep, QelSize roiSize, Qel64f* pMean,
                                          Qel64f* pStdDev);
QEL_API qelStatus qeliMean_StdDev_32f_C3CR(const Qel32f* pSrc, int srcStep, QelSize roiSize, int coi, Qel64f* pMean,
                                           Qel64f* pStdDev);
QEL_API qelStatus qeliMean_StdDev_32f_C1MR(const Qel32f* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                           QelSize roiSize, Qel64f* pMean, Qel64f* pStdDev);
QEL_API qelStatus qeliMean_StdDev_32f_C3CMR(const Qel32f* pSrc, int srcStep, const Qel8u* pMask, int maskStep,
                                            QelSize roiSize, int coi, Qel64f* pMean, Qel64f* pStdDev);
/** @} */

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
 * Tested in this order; on an error nothing is written. No alignment is needed. Runs on the caller's thread.
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
