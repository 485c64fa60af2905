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

#ifdef __cplusplus
}
#endif

#endif
