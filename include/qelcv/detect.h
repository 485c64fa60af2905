/**
 * @file
 * Object detection: integral images, deviations over windows, Haar classifiers.
 */
#ifndef QELCV_DETECT_H_
#define QELCV_DETECT_H_

#include "qelcv/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @name Integral images: pDst[x, y] = val + the sum of pSrc over the columns left of x and the rows above y
 *
 * The table has one column and one row more than the source. Column 0 and row 0 hold `val` alone. The sum of a
 * rectangle of the source takes four reads, in which `val` cancels: with X = x + w and Y = y + h it is
 * pDst[X, Y] - pDst[x, Y] - pDst[X, y] + pDst[x, y].
 *
 * 32s wraps modulo 2^32, and so do differences: the sum of a rectangle below 2^31 is right even in a table that has
 * wrapped. 32f takes the sum of the row so far, exact below 2^24 and rounded from there on, and adds it to the element
 * above in single precision: errors grow down a column, not along a row.
 *
 * @param pSrc     first sample of the source region
 * @param srcStep  bytes from one source row to the next, at least a row's
 * @param pDst     the table: roiSize.width + 1 columns, roiSize.height + 1 rows; it does not overlap the source
 * @param dstStep  bytes from one row of the table to the next: at least 4 times its columns, and a multiple of 4; bytes
 *                 between rows are neither read nor written
 * @param roiSize  the source's region in pixels, at least 1 by 1
 * @param val      what every element contains besides its sum
 *
 * @retval qelStatusOk                      the table is written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  dstStep is not a multiple of 4
 *
 * Tested in this order; on an error nothing is written. The work is done on the calling thread.
 */
/** @{ */
QEL_API qelStatus qeliIntegral_8u32s_C1R(const Qel8u* pSrc, int srcStep, Qel32s* pDst, int dstStep, QelSize roiSize,
                                         Qel32s val);
QEL_API qelStatus qeliIntegral_8u32f_C1R(const Qel8u* pSrc, int srcStep, Qel32f* pDst, int dstStep, QelSize roiSize,
                                         Qel32f val);
/** @} */

/**
 * @name Integral images of samples and of their squares, in one pass
 *
 * pDst is what qeliIntegral gives, and pSqr the same of squared samples, with its own offset `valSqr`.
 *
 * 32s squares wrap modulo 2^32. 64f squares are summed exactly along the row and rounded where they are added to the
 * element above, which in practice never happens: below 2^53 the table is exact if `valSqr` is a whole number.
 *
 * @param pSrc     first sample of the source region
 * @param srcStep  bytes from one source row to the next, at least a row's
 * @param pDst     the table of sums: roiSize.width + 1 columns, roiSize.height + 1 rows
 * @param dstStep  bytes from one of its rows to the next: at least 4 times its columns, and a multiple of 4
 * @param pSqr     the table of sums of squares, of as many columns and rows; no two of the three images overlap
 * @param sqrStep  bytes from one of its rows to the next: at least its columns times the size of an element, and a
 *                 multiple of that size
 * @param roiSize  the source's region in pixels, at least 1 by 1
 * @param val      what every element of pDst contains besides its sum
 * @param valSqr   what every element of pSqr contains besides its sum
 *
 * @retval qelStatusOk                      the tables are written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  dstStep or sqrStep is not a multiple of the size of an element
 *
 * Tested in this order; on an error nothing is written. The work is done on the calling thread.
 */
/** @{ */
QEL_API qelStatus qeliSqrIntegral_8u32s_C1R(const Qel8u* pSrc, int srcStep, Qel32s* pDst, int dstStep, Qel32s* pSqr,
                                            int sqrStep, QelSize roiSize, Qel32s val, Qel32s valSqr);
QEL_API qelStatus qeliSqrIntegral_8u32s64f_C1R(const Qel8u* pSrc, int srcStep, Qel32s* pDst, int dstStep, Qel64f* pSqr,
                                               int sqrStep, QelSize roiSize, Qel32s val, Qel64f valSqr);
QEL_API qelStatus qeliSqrIntegral_8u32f64f_C1R(const Qel8u* pSrc, int srcStep, Qel32f* pDst, int dstStep, Qel64f* pSqr,
                                               int sqrStep, QelSize roiSize, Qel32f val, Qel64f valSqr);
/** @} */

/**
 * @name Tilted integral images: each element sums the wedge of 45 degrees that opens upwards from it
 *
 * The table has two columns and two rows more than the source, of w by h pixels. Rows 0 and 1 hold `val` alone. Row
 * i + 2 follows from source row i and the two table rows above it:
 *
 *     pDst[0, i+2] = pDst[1, i+1]
 *     pDst[j, i+2] = pDst[j-1, i+1] + pDst[j+1, i+1] - pDst[j, i] + pSrc[j-1, i] + pSrc[j, i]    for j = 1 .. w-1
 *     pDst[w, i+2] = pDst[w-1, i+1] + pDst[w+1, i+1] - pDst[w, i] + pSrc[w-1, i]
 *     pDst[w+1, i+2] = pDst[w, i+1]
 *
 * The sum of a rectangle that stands on its corner takes four reads, as qeliTiltedRectStdDev and tilted Haar features
 * make them.
 *
 * 32s wraps modulo 2^32. 32f sums the terms of an element in double precision and rounds once. Its column w is not
 * assigned but added, in single precision, to what the table held there before the call: from row 2 on, set that column
 * to zero.
 *
 * @param pSrc     first sample of the source region
 * @param srcStep  bytes from one source row to the next, at least a row's
 * @param pDst     the table: roiSize.width + 2 columns, roiSize.height + 2 rows; it does not overlap the source
 * @param dstStep  bytes from one row of the table to the next: at least 4 times its columns, and a multiple of 4; bytes
 *                 between rows are neither read nor written
 * @param roiSize  the source's region in pixels, at least 1 by 1
 * @param val      what every element contains besides its sum
 *
 * @retval qelStatusOk                      the table is written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  dstStep is not a multiple of 4
 *
 * Tested in this order; on an error nothing is written. The work is done on the calling thread.
 */
/** @{ */
QEL_API qelStatus qeliTiltedIntegral_8u32s_C1R(const Qel8u* pSrc, int srcStep, Qel32s* pDst, int dstStep,
                                               QelSize roiSize, Qel32s val);
QEL_API qelStatus qeliTiltedIntegral_8u32f_C1R(const Qel8u* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                               QelSize roiSize, Qel32f val);
/** @} */

/**
 * @name Tilted integral images of samples and of their squares, in one pass
 *
 * pDst follows the rules of qeliTiltedIntegral, and pSqr the same rules on squared samples, with its own offset
 * `valSqr`. 64f assigns its column w, also where it stands beside a 32f table that adds.
 *
 * qeliTiltedSqrIntegral_8u32s_C1R has no rule of its own for column w: the second one above holds for j = w as well, on
 * both tables. It reads the byte behind each source row, behind the last one too, which must be readable.
 *
 * 64f forms an element as the two squares, plus pSqr[j-1, i+1], minus pSqr[j, i], plus pSqr[j+1, i+1], and that of
 * column w as the square, plus pSqr[w-1, i+1], plus pSqr[w+1, i+1], minus pSqr[w, i]. 32s wraps modulo 2^32.
 *
 * @param pSrc     first sample of the source region
 * @param srcStep  bytes from one source row to the next, at least a row's
 * @param pDst     the table of sums: roiSize.width + 2 columns, roiSize.height + 2 rows
 * @param dstStep  bytes from one of its rows to the next: at least 4 times its columns, and a multiple of 4
 * @param pSqr     the table of sums of squares, of as many columns and rows; no two of the three images overlap
 * @param sqrStep  bytes from one of its rows to the next: at least its columns times the size of an element, and a
 *                 multiple of that size
 * @param roiSize  the source's region in pixels, at least 1 by 1
 * @param val      what every element of pDst contains besides its sum
 * @param valSqr   what every element of pSqr contains besides its sum
 *
 * @retval qelStatusOk                      the tables are written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  dstStep or sqrStep is not a multiple of the size of an element
 *
 * Tested in this order; on an error nothing is written. The work is done on the calling thread.
 */
/** @{ */
QEL_API qelStatus qeliTiltedSqrIntegral_8u32s_C1R(const Qel8u* pSrc, int srcStep, Qel32s* pDst, int dstStep,
                                                  Qel32s* pSqr, int sqrStep, QelSize roiSize, Qel32s val,
                                                  Qel32s valSqr);
QEL_API qelStatus qeliTiltedSqrIntegral_8u32s64f_C1R(const Qel8u* pSrc, int srcStep, Qel32s* pDst, int dstStep,
                                                     Qel64f* pSqr, int sqrStep, QelSize roiSize, Qel32s val,
                                                     Qel64f valSqr);
QEL_API qelStatus qeliTiltedSqrIntegral_8u32f64f_C1R(const Qel8u* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                                     Qel64f* pSqr, int sqrStep, QelSize roiSize, Qel32f val,
                                                     Qel64f valSqr);
/** @} */

/**
 * @name Standard deviation under a rectangle, at every place of it
 *
 * The tables are those of qeliSqrIntegral. With `rect` moved by the pixel's column c and row r, S(t) is
 * (t[x, y] - t[x + w, y]) + (t[x + w, y + h] - t[x, y + h]) on a table t, and the result is
 *
 *     pDst[c, r] = sqrt(max(0, S(pSqr) / (w h) - (S(pSrc) / (w h))^2))
 *
 * The result is the normaliser that qeliApplyHaarClassifier takes.
 *
 * Arithmetic is in single precision: 32s sums are formed in integers that wrap and then rounded, 64f elements are
 * rounded before they are summed, and each operation rounds once. 32s results come from the root of the single variance
 * in double precision, times 2 to the power -scaleFactor, plus 0.5, cut to an integer. They do not saturate: beyond the
 * range the result is -2^31. Only the 5 low bits of the magnitude of `scaleFactor` count.
 *
 * @param pSrc      element [0, 0] of the table of sums
 * @param srcStep   bytes from one of its rows to the next: at least 4 times (roiSize.width + rect.x + rect.width), and
 *                  a multiple of 4
 * @param pSqr      element [0, 0] of the table of squares
 * @param sqrStep   bytes from one of its rows to the next: at least as many columns, and a multiple of the element size
 * @param pDst      first pixel of the result; it does not overlap the tables
 * @param dstStep   bytes from one row of the result to the next: at least a row's, and a multiple of 4
 * @param roiSize   the result's region in pixels, at least 1 by 1
 * @param rect      the rectangle at the first pixel: x and y at least 0, width and height at least 1
 * @param scaleFactor  Sfs: results are divided by 2 to this power
 *
 * @retval qelStatusOk                      the region is written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height of roiSize below 1; tested last: x or y of `rect` below 0,
 * its width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  a step is not a multiple of the element size
 *
 * Tested in the order pointers, roiSize, steps, rect; on an error nothing is written. qeliRectStdDev_32f_C1R shares its
 * rows among OpenMP threads from 2048 pixels on, at least 1024 for each; their number does not change the result.
 */
/** @{ */
QEL_API qelStatus qeliRectStdDev_32f_C1R(const Qel32f* pSrc, int srcStep, const Qel64f* pSqr, int sqrStep, Qel32f* pDst,
                                         int dstStep, QelSize roiSize, QelRect rect);
QEL_API qelStatus qeliRectStdDev_32s32f_C1R(const Qel32s* pSrc, int srcStep, const Qel64f* pSqr, int sqrStep,
                                            Qel32f* pDst, int dstStep, QelSize roiSize, QelRect rect);
QEL_API qelStatus qeliRectStdDev_32s_C1RSfs(const Qel32s* pSrc, int srcStep, const Qel32s* pSqr, int sqrStep,
                                            Qel32s* pDst, int dstStep, QelSize roiSize, QelRect rect, int scaleFactor);
/** @} */

/**
 * @name Standard deviation under a tilted rectangle, at every place of it
 *
 * The tables are those of qeliTiltedSqrIntegral. The rectangle stands on its corner: its top is at column X = x - y and
 * row Y = x + y, a side of `width` runs down to the right and one of `height` down to the left. With it moved by the
 * pixel's column and row, S(t) is t[X + w - h, Y + w + h] - t[X - h, Y + h] - t[X + w, Y + w] + t[X, Y], from left to
 * right, and the result is
 *
 *     pDst[c, r] = sqrt(max(0, S(pSqr) / (2 w h) - (S(pSrc) / (2 w h))^2))
 *
 * 32f is computed in double precision up to the variance, which is rounded to single precision for the root. 32s tables
 * are summed in integers that wrap; their means are rounded to single precision, the table of 64f squares is summed and
 * divided in double precision, and the variance is formed in double precision and rounded for the root. 32s results are
 * that root, times 2 to the power -scaleFactor, plus 0.5, cut to an integer, or -2^31 beyond the range; only the 5 low
 * bits of the magnitude of `scaleFactor` count.
 *
 * @param pSrc      element [0, 0] of the table of sums. Where x - y - h is negative, columns left of it are read
 * @param srcStep   bytes from one of its rows to the next: at least 4 times
 *                  (rect.width + rect.height + rect.x + rect.y + roiSize.width - 1), and a multiple of 4
 * @param pSqr      element [0, 0] of the table of squares, read at the same places
 * @param sqrStep   bytes from one of its rows to the next: at least as many columns, and a multiple of the element size
 * @param pDst      first pixel of the result; it does not overlap the tables
 * @param dstStep   bytes from one row of the result to the next: at least a row's, and a multiple of 4
 * @param roiSize   the result's region in pixels, at least 1 by 1
 * @param rect      the rectangle at the first pixel: x and y at least 0, width and height at least 1
 * @param scaleFactor  Sfs: results are divided by 2 to this power
 *
 * @retval qelStatusOk                      the region is written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height of roiSize below 1; tested last: x or y of `rect` below 0,
 * its width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  a step is not a multiple of the element size
 *
 * Tested in the order pointers, roiSize, steps, rect; on an error nothing is written. The work is done on the calling
 * thread.
 */
/** @{ */
QEL_API qelStatus qeliTiltedRectStdDev_32f_C1R(const Qel32f* pSrc, int srcStep, const Qel64f* pSqr, int sqrStep,
                                               Qel32f* pDst, int dstStep, QelSize roiSize, QelRect rect);
QEL_API qelStatus qeliTiltedRectStdDev_32s32f_C1R(const Qel32s* pSrc, int srcStep, const Qel64f* pSqr, int sqrStep,
                                                  Qel32f* pDst, int dstStep, QelSize roiSize, QelRect rect);
QEL_API qelStatus qeliTiltedRectStdDev_32s_C1RSfs(const Qel32s* pSrc, int srcStep, const Qel32s* pSqr, int sqrStep,
                                                  Qel32s* pDst, int dstStep, QelSize roiSize, QelRect rect,
                                                  int scaleFactor);
/** @} */

/**
 * One stage of a cascade: classifiers of rectangles, weights and thresholds. The caller owns it. The calls that use it
 * do not change it, except qeliTiltHaarFeatures, so any number of threads may apply the same stage at once.
 */
typedef struct QelHaarClassifierState QelHaarClassifierState;

/**
 * @name Stages of a Haar cascade
 *
 * A classifier compares the weighted sum of its rectangles with a threshold and gives one of two values; a stage adds
 * them up. The rectangles of all classifiers lie one behind the other in `pFeature`, those of classifier i being the
 * next `pNum[i]`, placed relative to the window's first pixel.
 *
 * Upright: a rectangle covers the columns x to x + width - 1 and the rows y to y + height - 1. Stages order their
 * classifiers: those of 2 rectangles first, then those of 3, then all others, each in the caller's order. That is the
 * order in which values are added.
 *
 * Tilted: a rectangle stands on its corner, with its top corner at x, y, a side of `width` down to the right and one of
 * `height` down to the left, for a tilted table. The caller's order is kept.
 *
 * @param pState      receives the stage, to be released by qeliHaarClassifierFree of the same type
 * @param pFeature    all rectangles
 * @param pWeight     a weight for each rectangle
 * @param pThreshold  a threshold for each classifier, multiplied by the normaliser before the comparison
 * @param pVal1       what a classifier gives where its sum is below the threshold
 * @param pVal2       what it gives otherwise
 * @param pNum        rectangles of each classifier, at least 1
 * @param length      number of classifiers; with 0 the arrays are not read
 *
 * @retval qelStatusOk           *pState is a stage
 * @retval qelStatusNullPointer  a pointer is null
 * @retval qelStatusBadSize      length below 0, or an element of pNum below 1
 * @retval qelStatusNoMemory     there is no memory for the stage
 * @retval qelStatusBadArg       a rectangle has x or y below 0, or width or height below 1; tilted: also x + 1 below
 * its height. Upright 32f tests this before it allocates, the others afterwards
 *
 * Tested in the order given. On an error *pState is left as it was; tilted forms set it to null where a rectangle is
 * refused.
 */
/** @{ */
QEL_API qelStatus qeliHaarClassifierInitAlloc_32f(QelHaarClassifierState** pState, const QelRect* pFeature,
                                                  const Qel32f* pWeight, const Qel32f* pThreshold, const Qel32f* pVal1,
                                                  const Qel32f* pVal2, const int* pNum, int length);
QEL_API qelStatus qeliHaarClassifierInitAlloc_32s(QelHaarClassifierState** pState, const QelRect* pFeature,
                                                  const Qel32s* pWeight, const Qel32s* pThreshold, const Qel32s* pVal1,
                                                  const Qel32s* pVal2, const int* pNum, int length);
QEL_API qelStatus qeliTiltedHaarClassifierInitAlloc_32f(QelHaarClassifierState** pState, const QelRect* pFeature,
                                                        const Qel32f* pWeight, const Qel32f* pThreshold,
                                                        const Qel32f* pVal1, const Qel32f* pVal2, const int* pNum,
                                                        int length);
QEL_API qelStatus qeliTiltedHaarClassifierInitAlloc_32s(QelHaarClassifierState** pState, const QelRect* pFeature,
                                                        const Qel32s* pWeight, const Qel32s* pThreshold,
                                                        const Qel32s* pVal1, const Qel32s* pVal2, const int* pNum,
                                                        int length);
/** @} */

/**
 * @name Release of a stage
 *
 * @param pState  a stage that qeliHaarClassifierInitAlloc or its tilted form made; it is not valid afterwards
 *
 * @retval qelStatusOk           the stage is released
 * @retval qelStatusNullPointer  pState is null
 */
/** @{ */
QEL_API qelStatus qeliHaarClassifierFree_32f(QelHaarClassifierState* pState);
QEL_API qelStatus qeliHaarClassifierFree_32s(QelHaarClassifierState* pState);
/** @} */

/**
 * @name Size of a stage's window
 *
 * Width is the largest x + width of its rectangles, height the largest y + height: how far right and down of a pixel
 * the tables are read. For tilted rectangles they are those of the right and the bottom corner.
 *
 * @param pState  a stage
 * @param pSize   receives the size; 0 by 0 of a stage without classifiers
 *
 * @retval qelStatusOk           *pSize is written
 * @retval qelStatusNullPointer  a pointer is null
 */
/** @{ */
QEL_API qelStatus qeliGetHaarClassifierSize_32f(const QelHaarClassifierState* pState, QelSize* pSize);
QEL_API qelStatus qeliGetHaarClassifierSize_32s(const QelHaarClassifierState* pState, QelSize* pSize);
/** @} */

/**
 * @name Tilting of classifiers of an upright stage
 *
 * The rectangles of the classifiers that are chosen turn by 45 degrees. Their order in the stage, and so that of the
 * sums, stays. A stage is tilted once.
 *
 * @param pMask   a byte for each classifier, in the order in which the stage was built; those not zero are tilted. All
 *                zero leaves the stage as it is
 * @param flag    not zero: the rectangle's corner x, y becomes the top corner. Zero: its lower left corner x,
 *                y + height becomes the bottom corner
 * @param pState  an upright stage
 *
 * @retval qelStatusOk           the stage is tilted as the mask says
 * @retval qelStatusNullPointer  a pointer is null
 * @retval qelStatusBadArg       the stage has been tilted before, or built as a tilted one
 *
 * Tested in this order.
 */
/** @{ */
QEL_API qelStatus qeliTiltHaarFeatures_32f(const Qel8u* pMask, int flag, QelHaarClassifierState* pState);
QEL_API qelStatus qeliTiltHaarFeatures_32s(const Qel8u* pMask, int flag, QelHaarClassifierState* pState);
/** @} */

/**
 * @name A stage of a cascade at every window that is still possible
 *
 * A pixel of the region is the first pixel of a window, and takes part where its mask byte is not zero. At each, a
 * classifier's sum f is that of T(x+w, y+h) - T(x, y+h) - T(x+w, y) + T(x, y) times the weight over its rectangles,
 * read from the table at the pixel. If f is below the classifier's threshold times the pixel's normaliser, the stage
 * sum grows by the classifier's first value, otherwise by the second. A pixel whose stage sum is below `threshold` is
 * cleared in the mask. A cascade is one call after the other over the same mask.
 *
 * 32f: single precision, each operation rounded, in the order given, rectangles and classifiers in the order of the
 * stage. 32s32f: rectangles are summed in integers that wrap, then rounded to single precision. 32s: all integers that
 * wrap; `scaleFactor` has no effect.
 *
 * 32f expects in *pPositive how many pixels of the mask are set. It only steers the way of working, with these effects:
 * 0 leaves the mask as it is. If every classifier of the stage has a first weight in (-2, -1], the first rectangles of
 * classifiers of 2 and of 3 count with a weight of exactly -1. With fewer than 4 pixels of the region for each expected
 * one, in the whole groups of 8 pixels from a row's start, a pixel that passes keeps only bit 0 of its mask byte, and
 * counts as that bit; the same holds with 4 to 7 pixels and those first weights in groups of 4. Masks of 0 and 1 behave
 * the same everywhere. A sum that is a NaN counts as below, for a classifier and for the stage. In the other forms a
 * passing pixel keeps its byte, and a NaN counts as not below.
 *
 * @param pSrc       the table's element of the region's first pixel
 * @param srcStep    bytes from one of its rows to the next: at least 4 times the width, and a multiple of 4
 * @param pNorm      the normaliser of each pixel, as qeliRectStdDev gives it
 * @param normStep   bytes from one of its rows to the next: at least 4 times the width, and a multiple of 4
 * @param pMask      a byte for each pixel
 * @param maskStep   bytes from one of its rows to the next: at least the width
 * @param roiSize    region of windows, at least 1 by 1. The table must hold what the stage reads at all set pixels, and
 *                   at those beside them in the region
 * @param pPositive  receives the number of pixels that stay set; 32f: holds what to expect
 * @param threshold  what a stage sum must reach
 * @param pState     a stage; 32f and 32s32f: of type 32f
 * @param scaleFactor  not read
 *
 * @retval qelStatusOk                      the mask and *pPositive are written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  srcStep or normStep is not a multiple of 4
 * @retval qelStatusNoMemory                there is no memory to work with
 *
 * Tested in this order; on an error nothing is written. The work is done on the calling thread.
 */
/** @{ */
QEL_API qelStatus qeliApplyHaarClassifier_32f_C1R(const Qel32f* pSrc, int srcStep, const Qel32f* pNorm, int normStep,
                                                  Qel8u* pMask, int maskStep, QelSize roiSize, int* pPositive,
                                                  Qel32f threshold, const QelHaarClassifierState* pState);
QEL_API qelStatus qeliApplyHaarClassifier_32s32f_C1R(const Qel32s* pSrc, int srcStep, const Qel32f* pNorm, int normStep,
                                                     Qel8u* pMask, int maskStep, QelSize roiSize, int* pPositive,
                                                     Qel32f threshold, const QelHaarClassifierState* pState);
QEL_API qelStatus qeliApplyHaarClassifier_32s_C1RSfs(const Qel32s* pSrc, int srcStep, const Qel32s* pNorm, int normStep,
                                                     Qel8u* pMask, int maskStep, QelSize roiSize, int* pPositive,
                                                     Qel32s threshold, const QelHaarClassifierState* pState,
                                                     int scaleFactor);
/** @} */

/**
 * @name A stage with upright and tilted classifiers at every window that is still possible
 *
 * As qeliApplyHaarClassifier, except that tilted classifiers read the tilted table, one row and one column further on
 * than the pixel. A passing pixel keeps its mask byte, *pPositive is only written, weights count as they are, and a NaN
 * counts as not below.
 *
 * 32s sums the weighted rectangles, of 32 bits each, in 64 bits, shifts that left by -scaleFactor and compares it with
 * the full product of threshold and normaliser.
 *
 * @param pSrc       the upright table's element of the region's first pixel
 * @param srcStep    bytes from one of its rows to the next: at least 4 times the width, and a multiple of 4
 * @param pTilt      the tilted table's element of that pixel
 * @param tiltStep   bytes from one of its rows to the next: at least 4 times the width, and a multiple of 4
 * @param pNorm      the normaliser of each pixel
 * @param normStep   bytes from one of its rows to the next: at least 4 times the width, and a multiple of 4
 * @param pMask      a byte for each pixel
 * @param maskStep   bytes from one of its rows to the next: at least the width
 * @param roiSize    region of windows, at least 1 by 1. The tables must hold what the stage reads at all set pixels,
 * and at those beside them in the region
 * @param pPositive  receives the number of pixels that stay set
 * @param threshold  what a stage sum must reach
 * @param pState     a stage; 32f and 32s32f: of type 32f
 * @param scaleFactor  0 or less: by how many bits sums are shifted left; 64 or more leave 0
 *
 * @retval qelStatusOk                      the mask and *pPositive are written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  srcStep, tiltStep or normStep is not a multiple of 4
 * @retval qelStatusBadArg                  32s: scaleFactor above 0
 * @retval qelStatusNoMemory                there is no memory to work with
 *
 * Tested in this order; on an error nothing is written. The work is done on the calling thread.
 */
/** @{ */
QEL_API qelStatus qeliApplyMixedHaarClassifier_32f_C1R(const Qel32f* pSrc, int srcStep, const Qel32f* pTilt,
                                                       int tiltStep, const Qel32f* pNorm, int normStep, Qel8u* pMask,
                                                       int maskStep, QelSize roiSize, int* pPositive, Qel32f threshold,
                                                       const QelHaarClassifierState* pState);
QEL_API qelStatus qeliApplyMixedHaarClassifier_32s32f_C1R(const Qel32s* pSrc, int srcStep, const Qel32s* pTilt,
                                                          int tiltStep, const Qel32f* pNorm, int normStep, Qel8u* pMask,
                                                          int maskStep, QelSize roiSize, int* pPositive,
                                                          Qel32f threshold, const QelHaarClassifierState* pState);
QEL_API qelStatus qeliApplyMixedHaarClassifier_32s_C1RSfs(const Qel32s* pSrc, int srcStep, const Qel32s* pTilt,
                                                          int tiltStep, const Qel32s* pNorm, int normStep, Qel8u* pMask,
                                                          int maskStep, QelSize roiSize, int* pPositive,
                                                          Qel32s threshold, const QelHaarClassifierState* pState,
                                                          int scaleFactor);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
