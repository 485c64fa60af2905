/**
 * @file
 * Rank filters and morphology: minimum and maximum, dilation and erosion, what is composed of them, grey structuring
 * elements, reconstruction.
 */
#ifndef QELCV_MORPH_H_
#define QELCV_MORPH_H_

#include "qelcv/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A grey structuring element, for regions up to a size. Its bytes lead to each other: a copy of it is of no use. */
typedef struct QelMorphGrayState QelMorphGrayState;

/**
 * @name States of grey structuring elements: made in memory of the caller's, or allocated
 *
 * The element is a mask of maskSize.width by maskSize.height values, row by row without gaps, of which each takes part,
 * also a zero. They are copied. 8u samples take values of 32 bits, 32f samples single precision.
 *
 * ...GetSize_... tells the bytes of a state: the mask's values and 28 more (64-bit programs: 32). ...Init_... makes a
 * state in a block of that size, at any address; the block stays the caller's. ...InitAlloc_... allocates one, which
 * ...Free_... releases. A call that uses a state does not change it: several may share it at once.
 *
 * @param pState    Init: the block; Free: what InitAlloc has given
 * @param ppState   receives the state
 * @param roiSize   the largest region that the state is for, in pixels, at least 1 by 1
 * @param pMask     the values; ...GetSize_... does not read them
 * @param maskSize  columns and rows of the mask, at least 1 by 1
 * @param anchor    the element that is added to the pixel itself, from column 0 and row 0
 * @param pSize     receives the number of bytes
 *
 * @retval qelStatusOk           the size is told, the state made or released
 * @retval qelStatusNullPointer  a pointer is null
 * @retval qelStatusBadSize      a width or height below 1
 * @retval qelStatusBadAnchor    Init, InitAlloc: the anchor lies outside of the mask
 * @retval qelStatusOverflow     GetSize: an int cannot hold the number of bytes
 * @retval qelStatusNoMemory     InitAlloc: the state cannot be allocated
 *
 * Tested in this order; on an error nothing is written.
 */
/** @{ */
QEL_API qelStatus qeliMorphGrayGetSize_8u_C1R(QelSize roiSize, const Qel32s* pMask, QelSize maskSize, int* pSize);
QEL_API qelStatus qeliMorphGrayGetSize_32f_C1R(QelSize roiSize, const Qel32f* pMask, QelSize maskSize, int* pSize);
QEL_API qelStatus qeliMorphGrayInit_8u_C1R(QelMorphGrayState* pState, QelSize roiSize, const Qel32s* pMask,
                                           QelSize maskSize, QelPoint anchor);
QEL_API qelStatus qeliMorphGrayInit_32f_C1R(QelMorphGrayState* pState, QelSize roiSize, const Qel32f* pMask,
                                            QelSize maskSize, QelPoint anchor);
QEL_API qelStatus qeliMorphGrayInitAlloc_8u_C1R(QelMorphGrayState** ppState, QelSize roiSize, const Qel32s* pMask,
                                                QelSize maskSize, QelPoint anchor);
QEL_API qelStatus qeliMorphGrayInitAlloc_32f_C1R(QelMorphGrayState** ppState, QelSize roiSize, const Qel32f* pMask,
                                                 QelSize maskSize, QelPoint anchor);
QEL_API qelStatus qeliMorphGrayFree_8u_C1R(QelMorphGrayState* pState);
QEL_API qelStatus qeliMorphGrayFree_32f_C1R(QelMorphGrayState* pState);
/** @} */

/**
 * @name Dilation and erosion by a grey structuring element
 *
 * pDst[x, y] = the largest (erosion: the smallest) of value[i, j] + pSrc[x + i - anchor.x, y + j - anchor.y] over all
 * elements (i, j) of the mask. Beyond its edges the region's edge samples are repeated. Erosion adds the values just as
 * dilation does: who wants the dual of a dilation passes the negated mask.
 *
 * 8u: exact; a result below 0 is 0, one above 255 is 255. So in a dilation an element of -255 or less is as good as
 * absent, in an erosion one of 255 or more.
 *
 * 32f: each sum rounds once, to single precision. The search begins at -3.4028235e38 (erosion: 3.4028235e38): where no
 * sum lies beyond it, that is the result. A sum that is a NaN is passed over. Of equal sums, which zeros of either
 * sign are, the first in the mask counts.
 *
 * @param pSrc        first sample of the source region
 * @param srcStep, dstStep  bytes from one row to the next: at least a row's bytes and a multiple of the sample size;
 *                    bytes between rows are neither read nor written
 * @param pDst        first sample of the result; the images must not overlap
 * @param roiSize     region in pixels, at least 1 by 1, in neither direction more than the state was made for
 * @param borderMode  qelBorderRepl (1), the only one
 * @param pState      the structuring element, made for the type of sample
 *
 * @retval qelStatusOk                      the region is written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  32f: a step is not a multiple of the sample size
 * @retval qelStatusBadArg                  borderMode is not 1
 * @retval qelStatusBadSize                 the region is wider or higher than the state was made for
 *
 * Tested in this order; on an error nothing is written. No alignment is needed. Runs on the calling thread.
 */
/** @{ */
QEL_API qelStatus qeliGrayDilateBorder_8u_C1R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep, QelSize roiSize,
                                              int borderMode, const QelMorphGrayState* pState);
QEL_API qelStatus qeliGrayDilateBorder_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                               QelSize roiSize, int borderMode, const QelMorphGrayState* pState);
QEL_API qelStatus qeliGrayErodeBorder_8u_C1R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep, QelSize roiSize,
                                             int borderMode, const QelMorphGrayState* pState);
QEL_API qelStatus qeliGrayErodeBorder_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                              QelSize roiSize, int borderMode, const QelMorphGrayState* pState);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
