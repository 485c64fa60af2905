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

/**
 * @name Minimum and maximum filters: the extreme of a rectangle around each pixel
 *
 *     pDst[x, y] = extreme over i, j of pSrc[x - anchor.x + i, y - anchor.y + j],
 *                  0 <= i < maskSize.width, 0 <= j < maskSize.height
 *
 * Where a coordinate lies outside of the region, that of the nearest edge takes its place. In a C3 or C4 image each
 * channel is filtered by itself. The cost does not grow with the height of the rectangle from 15 on, and by its width
 * with the logarithm only; a rectangle may be larger than the region.
 *
 * Results are samples of the source, bit for bit; infinities compare as numbers. A rectangle of 1 by 1 copies. Where a
 * rectangle holds zeros of either sign as its extreme, it is open which of them is the result; where it holds a NaN, it
 * is open which of its samples is. Neither depends on the processor.
 * @param pSrc      first sample of the source region
 * @param srcStep   bytes from one row of the source to the next: at least a row's bytes; 32f: a multiple of 4
 * @param pDst      first sample of the result, which does not overlap the source
 * @param dstStep   the same for the result
 * @param roiSize   region in pixels, at least 1 by 1
 * @param maskSize  rectangle in pixels, at least 1 by 1
 * @param anchor    the pixel of the rectangle that stands over the result, counted from 0
 * @param pBuffer   as many bytes as the GetBufferSize function of the same name reports, at any address. For one call
 *                  at a time
 *
 * @retval qelStatusOk                      the region is written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height of the region below 1
 * @retval qelStatusBadMaskSize             width or height of the rectangle below 1
 * @retval qelStatusBadAnchor               the anchor lies outside of the rectangle
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  32f: a step is not a multiple of 4
 * Tested in this order, but srcStep in both respects before dstStep; on an error nothing is written. No alignment is
 * needed. The caller's thread does all the work.
 */
/** @{ */
QEL_API qelStatus qeliFilterMaxBorderReplicate_8u_C1R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep,
                                                      QelSize roiSize, QelSize maskSize, QelPoint anchor,
                                                      Qel8u* pBuffer);
QEL_API qelStatus qeliFilterMaxBorderReplicate_8u_C3R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep,
                                                      QelSize roiSize, QelSize maskSize, QelPoint anchor,
                                                      Qel8u* pBuffer);
QEL_API qelStatus qeliFilterMaxBorderReplicate_8u_C4R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep,
                                                      QelSize roiSize, QelSize maskSize, QelPoint anchor,
                                                      Qel8u* pBuffer);
QEL_API qelStatus qeliFilterMaxBorderReplicate_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                       QelSize roiSize, QelSize maskSize, QelPoint anchor,
                                                       Qel8u* pBuffer);
QEL_API qelStatus qeliFilterMaxBorderReplicate_32f_C3R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                       QelSize roiSize, QelSize maskSize, QelPoint anchor,
                                                       Qel8u* pBuffer);
QEL_API qelStatus qeliFilterMaxBorderReplicate_32f_C4R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                       QelSize roiSize, QelSize maskSize, QelPoint anchor,
                                                       Qel8u* pBuffer);
QEL_API qelStatus qeliFilterMinBorderReplicate_8u_C1R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep,
                                                      QelSize roiSize, QelSize maskSize, QelPoint anchor,
                                                      Qel8u* pBuffer);
QEL_API qelStatus qeliFilterMinBorderReplicate_8u_C3R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep,
                                                      QelSize roiSize, QelSize maskSize, QelPoint anchor,
                                                      Qel8u* pBuffer);
QEL_API qelStatus qeliFilterMinBorderReplicate_8u_C4R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep,
                                                      QelSize roiSize, QelSize maskSize, QelPoint anchor,
                                                      Qel8u* pBuffer);
QEL_API qelStatus qeliFilterMinBorderReplicate_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                       QelSize roiSize, QelSize maskSize, QelPoint anchor,
                                                       Qel8u* pBuffer);
QEL_API qelStatus qeliFilterMinBorderReplicate_32f_C3R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                       QelSize roiSize, QelSize maskSize, QelPoint anchor,
                                                       Qel8u* pBuffer);
QEL_API qelStatus qeliFilterMinBorderReplicate_32f_C4R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                       QelSize roiSize, QelSize maskSize, QelPoint anchor,
                                                       Qel8u* pBuffer);
/** @} */

/**
 * @name Scratch of the minimum and maximum filters
 *
 *     *pBufferSize = maskHeight * 16 + maskHeight * 2 * (bytes of a row + 32) + 32
 *
 * in 32-bit builds. In 64-bit builds maskHeight counts 32 times rather than 16: it stands for four pointers.
 * @param roiWidth     width of the region in pixels
 * @param maskWidth    width of the rectangle; does not change the size
 * @param maskHeight   height of the rectangle
 * @param pBufferSize  receives the bytes
 *
 * @retval qelStatusOk           *pBufferSize is written
 * @retval qelStatusNullPointer  pBufferSize is null
 * @retval qelStatusBadSize      roiWidth below 1
 * @retval qelStatusBadMaskSize  maskHeight or maskWidth below 1
 * @retval qelStatusOverflow     the size is beyond the range of int
 * Tested in this order; on an error nothing is written.
 */
/** @{ */
QEL_API qelStatus qeliFilterMaxGetBufferSize_8u_C1R(int roiWidth, int maskWidth, int maskHeight, int* pBufferSize);
QEL_API qelStatus qeliFilterMaxGetBufferSize_8u_C3R(int roiWidth, int maskWidth, int maskHeight, int* pBufferSize);
QEL_API qelStatus qeliFilterMaxGetBufferSize_8u_C4R(int roiWidth, int maskWidth, int maskHeight, int* pBufferSize);
QEL_API qelStatus qeliFilterMaxGetBufferSize_32f_C1R(int roiWidth, int maskWidth, int maskHeight, int* pBufferSize);
QEL_API qelStatus qeliFilterMaxGetBufferSize_32f_C3R(int roiWidth, int maskWidth, int maskHeight, int* pBufferSize);
QEL_API qelStatus qeliFilterMaxGetBufferSize_32f_C4R(int roiWidth, int maskWidth, int maskHeight, int* pBufferSize);
QEL_API qelStatus qeliFilterMinGetBufferSize_8u_C1R(int roiWidth, int maskWidth, int maskHeight, int* pBufferSize);
QEL_API qelStatus qeliFilterMinGetBufferSize_8u_C3R(int roiWidth, int maskWidth, int maskHeight, int* pBufferSize);
QEL_API qelStatus qeliFilterMinGetBufferSize_8u_C4R(int roiWidth, int maskWidth, int maskHeight, int* pBufferSize);
QEL_API qelStatus qeliFilterMinGetBufferSize_32f_C1R(int roiWidth, int maskWidth, int maskHeight, int* pBufferSize);
QEL_API qelStatus qeliFilterMinGetBufferSize_32f_C3R(int roiWidth, int maskWidth, int maskHeight, int* pBufferSize);
QEL_API qelStatus qeliFilterMinGetBufferSize_32f_C4R(int roiWidth, int maskWidth, int maskHeight, int* pBufferSize);
/** @} */

/**
 * A mask for dilation and erosion, analysed once. What the mask turns out to be decides what a call costs: a filled
 * rectangle costs what a minimum or maximum filter costs, whatever its size; a mask of one run of elements in a row,
 * each across the anchor's column and runs of one length in line, such as an ellipse or a diamond, costs a pass over
 * each row for each length of runs and one over its rows; any other costs a step for each of its elements; one without
 * elements copies the image.
 */
typedef struct QelMorphState QelMorphState;

/**
 * @name States of dilation and erosion
 *
 * GetSize tells the bytes of a state for a mask with its anchor at (width / 2, height / 2), Init builds one in the
 * caller's block, InitAlloc one in memory of its own, which qeliMorphologyFree releases. The size depends on the
 * elements and may be another for another anchor.
 *
 * A state is bound to the function's sample type and channels. It keeps a copy of the mask. Calls do not change it, but
 * use memory within it: one call at a time may work with a state, and states of their own make calls independent.
 *
 * @param roiWidth  width of the widest region that the state is to serve, in pixels, at least 1
 * @param pMask     maskSize.width * maskSize.height bytes without gaps between rows; an element is set where its byte
 *                  is not zero
 * @param maskSize  at least 1 by 1
 * @param anchor    the element that stands over the result's own pixel, within the mask, set or not
 * @param pSize     receives the bytes of the state
 * @param pState    the caller's block of as many bytes, at any address; it must outlive the calls that use it, and
 *                  cannot be moved
 * @param ppState   receives the state
 *
 * @retval qelStatusOk           the state or its size is written
 * @retval qelStatusNullPointer  pMask is null
 * @retval qelStatusBadSize      roiWidth, or the mask's width or height, below 1
 * @retval qelStatusBadAnchor    the anchor is outside of the mask
 * @retval qelStatusNoMemory     no memory for the analysis or, in InitAlloc, for the state
 * @retval qelStatusNullPointer  pSize, pState or ppState is null
 * @retval qelStatusOverflow     GetSize, Init: the bytes are beyond the range of int
 *
 * Tested in this order; on an error nothing is written and no memory is kept.
 */
/** @{ */
QEL_API qelStatus qeliMorphologyGetSize_8u_C1R(int roiWidth, const Qel8u* pMask, QelSize maskSize, int* pSize);
QEL_API qelStatus qeliMorphologyInit_8u_C1R(int roiWidth, const Qel8u* pMask, QelSize maskSize, QelPoint anchor,
                                            QelMorphState* pState);
QEL_API qelStatus qeliMorphologyInitAlloc_8u_C1R(int roiWidth, const Qel8u* pMask, QelSize maskSize, QelPoint anchor,
                                                 QelMorphState** ppState);
QEL_API qelStatus qeliMorphologyGetSize_8u_C3R(int roiWidth, const Qel8u* pMask, QelSize maskSize, int* pSize);
QEL_API qelStatus qeliMorphologyInit_8u_C3R(int roiWidth, const Qel8u* pMask, QelSize maskSize, QelPoint anchor,
                                            QelMorphState* pState);
QEL_API qelStatus qeliMorphologyInitAlloc_8u_C3R(int roiWidth, const Qel8u* pMask, QelSize maskSize, QelPoint anchor,
                                                 QelMorphState** ppState);
QEL_API qelStatus qeliMorphologyGetSize_8u_C4R(int roiWidth, const Qel8u* pMask, QelSize maskSize, int* pSize);
QEL_API qelStatus qeliMorphologyInit_8u_C4R(int roiWidth, const Qel8u* pMask, QelSize maskSize, QelPoint anchor,
                                            QelMorphState* pState);
QEL_API qelStatus qeliMorphologyInitAlloc_8u_C4R(int roiWidth, const Qel8u* pMask, QelSize maskSize, QelPoint anchor,
                                                 QelMorphState** ppState);
QEL_API qelStatus qeliMorphologyGetSize_32f_C1R(int roiWidth, const Qel8u* pMask, QelSize maskSize, int* pSize);
QEL_API qelStatus qeliMorphologyInit_32f_C1R(int roiWidth, const Qel8u* pMask, QelSize maskSize, QelPoint anchor,
                                             QelMorphState* pState);
QEL_API qelStatus qeliMorphologyInitAlloc_32f_C1R(int roiWidth, const Qel8u* pMask, QelSize maskSize, QelPoint anchor,
                                                  QelMorphState** ppState);
QEL_API qelStatus qeliMorphologyGetSize_32f_C3R(int roiWidth, const Qel8u* pMask, QelSize maskSize, int* pSize);
QEL_API qelStatus qeliMorphologyInit_32f_C3R(int roiWidth, const Qel8u* pMask, QelSize maskSize, QelPoint anchor,
                                             QelMorphState* pState);
QEL_API qelStatus qeliMorphologyInitAlloc_32f_C3R(int roiWidth, const Qel8u* pMask, QelSize maskSize, QelPoint anchor,
                                                  QelMorphState** ppState);
QEL_API qelStatus qeliMorphologyGetSize_32f_C4R(int roiWidth, const Qel8u* pMask, QelSize maskSize, int* pSize);
QEL_API qelStatus qeliMorphologyInit_32f_C4R(int roiWidth, const Qel8u* pMask, QelSize maskSize, QelPoint anchor,
                                             QelMorphState* pState);
QEL_API qelStatus qeliMorphologyInitAlloc_32f_C4R(int roiWidth, const Qel8u* pMask, QelSize maskSize, QelPoint anchor,
                                                  QelMorphState** ppState);
/** @} */

/**
 * Releases a state that a qeliMorphologyInitAlloc function made. One in a caller's block is the caller's to release.
 *
 * @retval qelStatusOk           the state is released
 * @retval qelStatusNullPointer  pState is null
 */
QEL_API qelStatus qeliMorphologyFree(QelMorphState* pState);

/**
 * @name Dilation and erosion with a mask: the largest and the smallest sample under its elements
 *
 * For each channel, over all set elements (i, j) of the mask, with coordinates clamped to the region:
 *
 *     pDst[x, y] = max or min of pSrc[x + i - anchor.x, y + j - anchor.y]
 *
 * So the region's edge pixels repeat beyond it. A mask without set elements copies the source. Samples under clear
 * elements have no effect, NaNs and infinities included. A NaN under a set element, and zeros of both signs under
 * several, leave open which of the samples, or which zero, is the result.
 *
 * @param pSrc        first sample of the source region
 * @param srcStep, dstStep  bytes from one row to the next: at least a row's bytes and a multiple of the sample size;
 *                    bytes between rows are neither read nor written
 * @param pDst        first sample of the result, which does not overlap the source
 * @param roiSize     region in pixels, at least 1 by 1 and not wider than the state's roiWidth; of any height
 * @param borderMode  qelBorderRepl, the only one that there is
 * @param pState      a state made for the function's sample type and channels
 *
 * @retval qelStatusOk                      the region is written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  32f: a step is not a multiple of the sample size
 * @retval qelStatusBadArg                  borderMode is not qelBorderRepl
 * @retval qelStatusBadSize                 the region is wider than the state serves
 *
 * Tested in this order; on an error nothing is written. No alignment is needed. All work is done on the calling thread.
 */
/** @{ */
QEL_API qelStatus qeliDilateBorderReplicate_8u_C1R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep,
                                                   QelSize roiSize, int borderMode, QelMorphState* pState);
QEL_API qelStatus qeliErodeBorderReplicate_8u_C1R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep,
                                                  QelSize roiSize, int borderMode, QelMorphState* pState);
QEL_API qelStatus qeliDilateBorderReplicate_8u_C3R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep,
                                                   QelSize roiSize, int borderMode, QelMorphState* pState);
QEL_API qelStatus qeliErodeBorderReplicate_8u_C3R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep,
                                                  QelSize roiSize, int borderMode, QelMorphState* pState);
QEL_API qelStatus qeliDilateBorderReplicate_8u_C4R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep,
                                                   QelSize roiSize, int borderMode, QelMorphState* pState);
QEL_API qelStatus qeliErodeBorderReplicate_8u_C4R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep,
                                                  QelSize roiSize, int borderMode, QelMorphState* pState);
QEL_API qelStatus qeliDilateBorderReplicate_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                    QelSize roiSize, int borderMode, QelMorphState* pState);
QEL_API qelStatus qeliErodeBorderReplicate_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                   QelSize roiSize, int borderMode, QelMorphState* pState);
QEL_API qelStatus qeliDilateBorderReplicate_32f_C3R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                    QelSize roiSize, int borderMode, QelMorphState* pState);
QEL_API qelStatus qeliErodeBorderReplicate_32f_C3R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                   QelSize roiSize, int borderMode, QelMorphState* pState);
QEL_API qelStatus qeliDilateBorderReplicate_32f_C4R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                    QelSize roiSize, int borderMode, QelMorphState* pState);
QEL_API qelStatus qeliErodeBorderReplicate_32f_C4R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                   QelSize roiSize, int borderMode, QelMorphState* pState);
/** @} */

/** A mask for opening, closing and what else is composed of dilation and erosion, with an image between the two. */
typedef struct QelMorphAdvState QelMorphAdvState;

/**
 * @name States of advanced morphology
 *
 * A state holds the mask, the mask turned by half a circle with its anchor, and an image of the size of the region.
 * GetSize tells the bytes of a state, for any anchor, Init builds one in the caller's block, InitAlloc one in memory of
 * its own, which qeliMorphAdvFree releases. Results do not depend on where a state is; one of InitAlloc is faster with
 * masks such as ellipses.
 *
 * A state is bound to the function's sample type and channels. It keeps a copy of the mask. Calls do not change it, but
 * use memory within it: one call at a time may work with a state.
 *
 * @param roiSize   size of the regions that the state is to serve, at least 1 by 1
 * @param pMask     maskSize.width * maskSize.height bytes without gaps between rows; an element is set where its byte
 *                  is not zero
 * @param maskSize  at least 1 by 1
 * @param anchor    the element that stands over the result's own pixel, within the mask, set or not
 * @param pSize     receives the bytes of the state
 * @param pState    the caller's block of as many bytes, at any address; it must outlive the calls that use it, and
 *                  cannot be moved
 * @param ppState   receives the state
 *
 * @retval qelStatusOk           the state or its size is written
 * @retval qelStatusNullPointer  InitAlloc: ppState is null
 * @retval qelStatusBadSize      the region's height below 1
 * @retval qelStatusNullPointer  GetSize: pSize, Init: pState is null
 * @retval qelStatusNullPointer  pMask is null
 * @retval qelStatusBadSize      the region's width, or the mask's width or height, below 1
 * @retval qelStatusBadAnchor    the anchor is outside of the mask
 * @retval qelStatusNoMemory     no memory for the analysis or, in InitAlloc, for the state
 * @retval qelStatusOverflow     GetSize, Init: the bytes are beyond the range of int
 *
 * Tested in this order; on an error nothing is written to pSize and ppState, and no memory is kept.
 */
/** @{ */
QEL_API qelStatus qeliMorphAdvGetSize_8u_C1R(QelSize roiSize, const Qel8u* pMask, QelSize maskSize, int* pSize);
QEL_API qelStatus qeliMorphAdvInit_8u_C1R(QelMorphAdvState* pState, QelSize roiSize, const Qel8u* pMask,
                                          QelSize maskSize, QelPoint anchor);
QEL_API qelStatus qeliMorphAdvInitAlloc_8u_C1R(QelMorphAdvState** ppState, QelSize roiSize, const Qel8u* pMask,
                                               QelSize maskSize, QelPoint anchor);
QEL_API qelStatus qeliMorphAdvGetSize_8u_C3R(QelSize roiSize, const Qel8u* pMask, QelSize maskSize, int* pSize);
QEL_API qelStatus qeliMorphAdvInit_8u_C3R(QelMorphAdvState* pState, QelSize roiSize, const Qel8u* pMask,
                                          QelSize maskSize, QelPoint anchor);
QEL_API qelStatus qeliMorphAdvInitAlloc_8u_C3R(QelMorphAdvState** ppState, QelSize roiSize, const Qel8u* pMask,
                                               QelSize maskSize, QelPoint anchor);
QEL_API qelStatus qeliMorphAdvGetSize_8u_C4R(QelSize roiSize, const Qel8u* pMask, QelSize maskSize, int* pSize);
QEL_API qelStatus qeliMorphAdvInit_8u_C4R(QelMorphAdvState* pState, QelSize roiSize, const Qel8u* pMask,
                                          QelSize maskSize, QelPoint anchor);
QEL_API qelStatus qeliMorphAdvInitAlloc_8u_C4R(QelMorphAdvState** ppState, QelSize roiSize, const Qel8u* pMask,
                                               QelSize maskSize, QelPoint anchor);
QEL_API qelStatus qeliMorphAdvGetSize_32f_C1R(QelSize roiSize, const Qel8u* pMask, QelSize maskSize, int* pSize);
QEL_API qelStatus qeliMorphAdvInit_32f_C1R(QelMorphAdvState* pState, QelSize roiSize, const Qel8u* pMask,
                                           QelSize maskSize, QelPoint anchor);
QEL_API qelStatus qeliMorphAdvInitAlloc_32f_C1R(QelMorphAdvState** ppState, QelSize roiSize, const Qel8u* pMask,
                                                QelSize maskSize, QelPoint anchor);
QEL_API qelStatus qeliMorphAdvGetSize_32f_C3R(QelSize roiSize, const Qel8u* pMask, QelSize maskSize, int* pSize);
QEL_API qelStatus qeliMorphAdvInit_32f_C3R(QelMorphAdvState* pState, QelSize roiSize, const Qel8u* pMask,
                                           QelSize maskSize, QelPoint anchor);
QEL_API qelStatus qeliMorphAdvInitAlloc_32f_C3R(QelMorphAdvState** ppState, QelSize roiSize, const Qel8u* pMask,
                                                QelSize maskSize, QelPoint anchor);
QEL_API qelStatus qeliMorphAdvGetSize_32f_C4R(QelSize roiSize, const Qel8u* pMask, QelSize maskSize, int* pSize);
QEL_API qelStatus qeliMorphAdvInit_32f_C4R(QelMorphAdvState* pState, QelSize roiSize, const Qel8u* pMask,
                                           QelSize maskSize, QelPoint anchor);
QEL_API qelStatus qeliMorphAdvInitAlloc_32f_C4R(QelMorphAdvState** ppState, QelSize roiSize, const Qel8u* pMask,
                                                QelSize maskSize, QelPoint anchor);
/** @} */

/**
 * Releases a state that a qeliMorphAdvInitAlloc function made. One in a caller's block is the caller's to release.
 *
 * @retval qelStatusOk           the state is released
 * @retval qelStatusNullPointer  pState is null
 */
QEL_API qelStatus qeliMorphAdvFree(QelMorphAdvState* pState);

/**
 * @name Opening, closing, top-hat, black-hat and gradient
 *
 * With dilation and erosion as above, `'` for those with the mask turned by half a circle, and S - T as the difference
 * of samples that is 0 where it would be negative (32f: rounded once to single precision; a NaN stays):
 *
 * - Open: dilation' of the erosion of the source. Takes away what is bright and smaller than the mask.
 * - Close: erosion' of the dilation of the source. Takes away what is dark and smaller than the mask.
 * - Tophat: source - opening. What is bright and smaller than the mask.
 * - Blackhat: closing - source. What is dark and smaller than the mask.
 * - Gradient: dilation - erosion, both of the source with the mask as it is.
 *
 * @param pSrc        first sample of the source region
 * @param srcStep, dstStep  bytes from one row to the next: at least a row's bytes and a multiple of the sample size;
 *                    bytes between rows are neither read nor written
 * @param pDst        first sample of the result, which does not overlap the source
 * @param roiSize     region in pixels, at least 1 by 1: of the state's size, or narrower where it is so much higher
 *                    that the work image, of rows rounded up to 32 bytes, is as large. A larger one is the caller's
 *                    fault and is not detected.
 * @param borderMode  qelBorderRepl, the only one that there is
 * @param pState      a state made for the function's sample type and channels
 *
 * @retval qelStatusOk                      the region is written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  32f: a step is not a multiple of the sample size
 * @retval qelStatusBadArg                  borderMode is not qelBorderRepl
 * @retval qelStatusBadSize                 the region is wider than the state serves
 * @retval qelStatusBadSize                 the region's work image would be smaller than the state's
 *
 * Tested in this order; on an error nothing is written. No alignment is needed. All work is done on the calling thread.
 */
/** @{ */
QEL_API qelStatus qeliMorphOpenBorder_8u_C1R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep, QelSize roiSize,
                                             int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphCloseBorder_8u_C1R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep, QelSize roiSize,
                                              int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphTophatBorder_8u_C1R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep,
                                               QelSize roiSize, int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphBlackhatBorder_8u_C1R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep,
                                                 QelSize roiSize, int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphGradientBorder_8u_C1R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep,
                                                 QelSize roiSize, int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphOpenBorder_8u_C3R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep, QelSize roiSize,
                                             int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphCloseBorder_8u_C3R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep, QelSize roiSize,
                                              int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphTophatBorder_8u_C3R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep,
                                               QelSize roiSize, int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphBlackhatBorder_8u_C3R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep,
                                                 QelSize roiSize, int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphGradientBorder_8u_C3R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep,
                                                 QelSize roiSize, int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphOpenBorder_8u_C4R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep, QelSize roiSize,
                                             int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphCloseBorder_8u_C4R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep, QelSize roiSize,
                                              int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphTophatBorder_8u_C4R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep,
                                               QelSize roiSize, int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphBlackhatBorder_8u_C4R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep,
                                                 QelSize roiSize, int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphGradientBorder_8u_C4R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep,
                                                 QelSize roiSize, int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphOpenBorder_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                              QelSize roiSize, int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphCloseBorder_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                               QelSize roiSize, int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphTophatBorder_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                QelSize roiSize, int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphBlackhatBorder_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                  QelSize roiSize, int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphGradientBorder_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                  QelSize roiSize, int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphOpenBorder_32f_C3R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                              QelSize roiSize, int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphCloseBorder_32f_C3R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                               QelSize roiSize, int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphTophatBorder_32f_C3R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                QelSize roiSize, int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphBlackhatBorder_32f_C3R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                  QelSize roiSize, int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphGradientBorder_32f_C3R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                  QelSize roiSize, int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphOpenBorder_32f_C4R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                              QelSize roiSize, int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphCloseBorder_32f_C4R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                               QelSize roiSize, int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphTophatBorder_32f_C4R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                QelSize roiSize, int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphBlackhatBorder_32f_C4R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                  QelSize roiSize, int borderMode, QelMorphAdvState* pState);
QEL_API qelStatus qeliMorphGradientBorder_32f_C4R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                  QelSize roiSize, int borderMode, QelMorphAdvState* pState);
/** @} */

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

/** Which pixels are neighbours in a reconstruction. Functions take the value as an int. */
typedef enum QelMorphNorm {
    qelMorphNormInf = 0, /**< the eight around a pixel */
    qelMorphNormL1 = 1   /**< the four beside, above and below it */
} QelMorphNorm;

/**
 * @name Reconstruction of a mask from a marker, in place
 *
 * In a dilation each sample of the marker grows to the largest of itself and its neighbours, but no further than the
 * mask, again and again until nothing changes: bright parts of the mask that the marker has touched come back whole, up
 * to the marker's height, all others are levelled. An erosion has smallest for largest: the marker shrinks down to the
 * mask. A marker that lies above the mask (erosion: below) is first brought to it.
 *
 * With a marker of the mask minus h, the mask minus the result holds the domes of height h; with a marker that
 * is the mask along the edge and the largest value elsewhere, an erosion fills the holes that the edge cannot drain.
 * Method: L. Vincent, Morphological Grayscale Reconstruction in Image Analysis, IEEE Transactions on Image Processing
 * 2(2), 1993: sweeps down and up, here only of rows that may still change.
 *
 * The result is exact and depends neither on the order of the sweeps nor on threads. 32f samples are ordered by their
 * bits: -0 below 0, a NaN beyond the infinity of its sign.
 *
 * @param pSrc        first sample of the mask
 * @param pSrcDst     first sample of the marker, which becomes the result; the images must not overlap
 * @param srcStep, srcDstStep  bytes from one row to the next: at least a row's bytes and a multiple of the sample size;
 *                    bytes between rows are neither read nor written
 * @param roiSize     region in pixels, at least 1 by 1
 * @param pBuffer     scratch of as many bytes as ...GetBufferSize_... tells, at any address
 * @param norm        a QelMorphNorm
 *
 * @retval qelStatusOk                      the marker is reconstructed
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  32f: a step is not a multiple of the sample size
 * @retval qelStatusBadArg                  norm is neither 0 nor 1
 *
 * Tested in this order; on an error nothing is written. No alignment is needed. Where width and height are above 10 and
 * more than one thread is allowed, the halves of the region go to two OpenMP threads.
 */
/** @{ */
QEL_API qelStatus qeliMorphReconstructDilate_8u_C1IR(const Qel8u* pSrc, int srcStep, Qel8u* pSrcDst, int srcDstStep,
                                                     QelSize roiSize, Qel8u* pBuffer, int norm);
QEL_API qelStatus qeliMorphReconstructDilate_32f_C1IR(const Qel32f* pSrc, int srcStep, Qel32f* pSrcDst, int srcDstStep,
                                                      QelSize roiSize, Qel8u* pBuffer, int norm);
QEL_API qelStatus qeliMorphReconstructErode_8u_C1IR(const Qel8u* pSrc, int srcStep, Qel8u* pSrcDst, int srcDstStep,
                                                    QelSize roiSize, Qel8u* pBuffer, int norm);
QEL_API qelStatus qeliMorphReconstructErode_32f_C1IR(const Qel32f* pSrc, int srcStep, Qel32f* pSrcDst, int srcDstStep,
                                                     QelSize roiSize, Qel8u* pBuffer, int norm);
/** @} */

/**
 * @name Bytes of the scratch of a reconstruction
 *
 * 8u: roiSize.height + 4 roiSize.width + 161; 32f: roiSize.height + 16 roiSize.width + 164.
 *
 * @param roiSize      region in pixels, at least 1 by 1
 * @param pBufferSize  receives the number of bytes
 *
 * @retval qelStatusOk           the size is told
 * @retval qelStatusNullPointer  pBufferSize is null
 * @retval qelStatusBadSize      width or height below 1
 * @retval qelStatusOverflow     an int cannot hold the number of bytes
 *
 * Tested in this order; on an error nothing is written.
 */
/** @{ */
QEL_API qelStatus qeliMorphReconstructGetBufferSize_8u_C1(QelSize roiSize, int* pBufferSize);
QEL_API qelStatus qeliMorphReconstructGetBufferSize_32f_C1(QelSize roiSize, int* pBufferSize);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
