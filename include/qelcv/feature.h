/**
 * @file
 * Features: edges, corners, lines, peaks.
 */
#ifndef QELCV_FEATURE_H_
#define QELCV_FEATURE_H_

#include "qelcv/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @name Corner measures: eigenvalues of the gradient's covariance
 *
 * At each pixel the matrix {dxx, dxy; dxy, dyy} is the average, over avgWindow by avgWindow pixels, of the products of
 * two derivatives dx and dy. Beyond the edges, samples, and then products, are those of the nearest pixel. Both
 * eigenvalues are large at a corner, one is at an edge, none in a flat area.
 *
 * | kernType | dx                           | dy                            | apertureSize |
 * |----------|------------------------------|-------------------------------|--------------|
 * | 0        | qeliFilterSobelVertBorder    | qeliFilterSobelHorizBorder    | 3 or 5       |
 * | 1        | qeliFilterScharrVertBorder   | qeliFilterScharrHorizBorder   | 3            |
 *
 * The average is that of qeliFilterLowpassBorder_32f_C1R; all filters run with qelBorderRepl. From the derivatives on
 * all is of single precision, each operation rounded, in the order written. The scale s is
 * 1 / (255 * 2^(2 * apertureSize - 2)), with kernType 1 times 0.6125: 32f samples are expected to have the range of 8u.
 *
 * qeliMinEigenVal writes the smaller eigenvalue,
 *
 *     ((dxx + dyy) - sqrt((dxx - dyy) * (dxx - dyy) + 4 * (dxy * dxy))) * (s * 0.5)
 *
 * It may be slightly negative.
 *
 * qeliEigenValsVecs writes six numbers for each pixel: the larger eigenvalue v1, the smaller v2, the vector of the
 * larger (x1, y1) and that of the smaller (x2, y2). With a = dxx * s, b = dyy * s, c = dxy * s and
 * t = 0.01 * max(a, b):
 *
 * - where t > min(a, b) or t > a * b - c * c, all six are 0: in flat areas and at edges
 * - else v1 and v2 are ((a + b) + r) * 0.5 and ((a + b) - r) * 0.5, with r = sqrt((a - b) * (a - b) + 4 * (c * c))
 *   - where t > |c|, the vectors are (1, 0) and (0, 1), in this order
 *   - else they are (c', v1 - a) and (c', v2 - a), each divided by the larger of its length and 1.1920929e-7, as a
 *     multiplication by the quotient of 1. c' is c, with kernType 0 -c.
 *
 * Jianbo Shi and Carlo Tomasi, Good Features to Track, 1994.
 *
 * @param pSrc          first sample of the source region
 * @param srcStep       bytes from one row to the next: at least a row's bytes, 32f: and a multiple of 4; bytes between
 *                      rows are not read
 * @param pMinEigenVal  first sample of the result; it does not overlap the source
 * @param pEigenVV      first sample of the result, of six interleaved numbers for each pixel; likewise
 * @param minValStep, eigenVVStep  bytes from one row of the result to the next: at least a row's bytes and a multiple
 *                      of 4; bytes between rows are not written
 * @param roiSize       region in pixels, at least 1 by 1
 * @param kernType      the derivatives, see above
 * @param apertureSize  side of their masks
 * @param avgWindow     side of the average: 3 or 5
 * @param pBuffer       scratch of the size that the function below tells, at any address and with any contents
 *
 * @retval qelStatusOk                      the region is written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  the step of 32f samples is not a multiple of 4
 * @retval qelStatusBadSize                 kernType 0: apertureSize is neither 3 nor 5
 * @retval qelStatusBadArg                  kernType is neither 0 nor 1
 * @retval qelStatusBadSize                 kernType 1: apertureSize is not 3
 * @retval qelStatusBadSize                 avgWindow is neither 3 nor 5
 *
 * Tested in this order; on an error nothing is written. No alignment is needed. Filters use OpenMP threads as they do
 * by themselves; the number of threads does not change the result.
 */
/** @{ */
QEL_API qelStatus qeliMinEigenVal_8u32f_C1R(const Qel8u* pSrc, int srcStep, Qel32f* pMinEigenVal, int minValStep,
                                            QelSize roiSize, int kernType, int apertureSize, int avgWindow,
                                            Qel8u* pBuffer);
QEL_API qelStatus qeliMinEigenVal_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pMinEigenVal, int minValStep,
                                          QelSize roiSize, int kernType, int apertureSize, int avgWindow,
                                          Qel8u* pBuffer);
QEL_API qelStatus qeliEigenValsVecs_8u32f_C1R(const Qel8u* pSrc, int srcStep, Qel32f* pEigenVV, int eigenVVStep,
                                              QelSize roiSize, int kernType, int apertureSize, int avgWindow,
                                              Qel8u* pBuffer);
QEL_API qelStatus qeliEigenValsVecs_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pEigenVV, int eigenVVStep,
                                            QelSize roiSize, int kernType, int apertureSize, int avgWindow,
                                            Qel8u* pBuffer);
/** @} */

/**
 * @name Scratch of the corner measures
 *
 * With w for the width rounded up to a multiple of 16, and b for the largest of the sizes that the filters tell for
 * that aperture and that window - with an aperture of 3, both pairs of derivatives - the size is
 * w * height * 16 + 224 + b bytes for 8u samples and w * height * 20 + 224 + b for 32f.
 *
 * @param roiSize       region of the call, at least 1 by 1
 * @param apertureSize  3 or 5
 * @param avgWindow     3 or 5
 * @param pBufferSize   receives the bytes
 *
 * @retval qelStatusOk           *pBufferSize is written
 * @retval qelStatusNullPointer  pBufferSize is null
 * @retval qelStatusBadSize      width or height below 1, or apertureSize or avgWindow neither 3 nor 5
 * @retval qelStatusOverflow     the size is beyond the range of int
 *
 * Tested in this order; on an error nothing is written.
 */
/** @{ */
QEL_API qelStatus qeliMinEigenValGetBufferSize_8u32f_C1R(QelSize roiSize, int apertureSize, int avgWindow,
                                                         int* pBufferSize);
QEL_API qelStatus qeliMinEigenValGetBufferSize_32f_C1R(QelSize roiSize, int apertureSize, int avgWindow,
                                                       int* pBufferSize);
QEL_API qelStatus qeliEigenValsVecsGetBufferSize_8u32f_C1R(QelSize roiSize, int apertureSize, int avgWindow,
                                                           int* pBufferSize);
QEL_API qelStatus qeliEigenValsVecsGetBufferSize_32f_C1R(QelSize roiSize, int apertureSize, int avgWindow,
                                                         int* pBufferSize);
/** @} */

/** A line: the points (x, y) with x * cos(theta) + y * sin(theta) = rho. */
typedef struct QelPointPolar {
    Qel32f rho;   /**< distance from the first pixel of the region, in pixels; negative to the other side of it */
    Qel32f theta; /**< angle of the normal to the x axis in radians, positive toward y */
} QelPointPolar;

/**
 * @name Edges by Canny's method, from two images of derivatives
 *
 * 1. The magnitude of a pixel is m = |dx| + |dy|. Below the lower threshold it counts as 0: 32f where m < lowThreshold,
 *    16s where m <= lowThreshold. Outside of the region it is 0.
 * 2. A pixel with m > 0 stays if it is a maximum across the edge. Of its eight neighbours the two count that lie along
 *    the gradient, and ties go to the first one, above or to the left:
 *    - |dx| * 2.414213657f < |dy|: m is above that of the pixel above, and at least that of the pixel below
 *    - else |dy| < |dx| * 0.414213568f: m is above that on the left, and at least that on the right
 *    - else m is above both: of (x - 1, y - 1) and (x + 1, y + 1) where the signs of dx and dy are the same, of
 *      (x + 1, y - 1) and (x - 1, y + 1) where they differ
 * 3. A pixel that stays is an edge if m > highThreshold, or if one of its eight neighbours is an edge.
 *
 * John Canny, A Computational Approach to Edge Detection, 1986.
 *
 * 16s truncates the thresholds to integers. |-32768| is 32768. In the columns up to the last multiple of 8 of the
 * width, m is at most 65535, in those behind 65536. In the columns behind the last multiple of 4 the products of step 2
 * are those of 2.414213562373095 and 0.41421356237309503 in double precision, rounded to single; else all products are
 * of single precision.
 *
 * @param pSrcDx, pSrcDy        first sample of the derivatives to the right and downward
 * @param srcDxStep, srcDyStep  bytes from one row to the next: at least a row's bytes and a multiple of the sample
 *                              size; bytes between rows are not read
 * @param pDst           first sample of the result: 255 for an edge, else 0. It overlaps no other argument.
 * @param dstStep        bytes from one row of it to the next, at least roiSize.width. Bytes between rows become 0, also
 *                       those behind the last row: roiSize.height * dstStep bytes are written.
 * @param roiSize        region in pixels, at least 1 by 1
 * @param lowThreshold   at least 0
 * @param highThreshold  at least lowThreshold
 * @param pBuffer        scratch of the size that the function below tells, at any address and with any contents
 *
 * @retval qelStatusOk                      the region is written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width or height below 1
 * @retval qelStatusBadStep                 a step is shorter than its row
 * @retval qelStatusStepNotElementMultiple  a step of the derivatives is not a multiple of the sample size
 * @retval qelStatusBadArg                  lowThreshold is below 0 or above highThreshold
 *
 * Tested in this order; on an error nothing is written. No alignment is needed. Runs on the caller's thread.
 */
/** @{ */
QEL_API qelStatus qeliCanny_16s8u_C1R(const Qel16s* pSrcDx, int srcDxStep, const Qel16s* pSrcDy, int srcDyStep,
                                      Qel8u* pDst, int dstStep, QelSize roiSize, Qel32f lowThreshold,
                                      Qel32f highThreshold, Qel8u* pBuffer);
QEL_API qelStatus qeliCanny_32f8u_C1R(const Qel32f* pSrcDx, int srcDxStep, const Qel32f* pSrcDy, int srcDyStep,
                                      Qel8u* pDst, int dstStep, QelSize roiSize, Qel32f lowThreshold,
                                      Qel32f highThreshold, Qel8u* pBuffer);
/** @} */

/**
 * @name Scratch of the edge detection
 *
 * The size is n * (width + 2) * (height + 2) + 16 * width + 160 bytes, where n is 5 if both sides are below 65533, else
 * 9.
 *
 * @param roiSize      region of the call, at least 1 by 1
 * @param pBufferSize  receives the bytes
 *
 * @retval qelStatusOk           *pBufferSize is written
 * @retval qelStatusNullPointer  pBufferSize is null
 * @retval qelStatusBadSize      width or height below 1
 * @retval qelStatusOverflow     the size is beyond the range of int
 *
 * Tested in this order; on an error nothing is written.
 */
/** @{ */
QEL_API qelStatus qeliCannyGetSize(QelSize roiSize, int* pBufferSize);
/** @} */

/**
 * @name Lines by the Hough transform
 *
 * Each pixel other than zero votes, at each angle, for the line through it. Angles are t * delta.theta for t from 0 to
 * trunc(3.14159 / delta.theta), so pi itself is never one. At an angle, votes are counted for distances delta.rho
 * apart, of which n = trunc((2 * (width + height) + 1) / delta.rho) exist; that of 0 is number half = (n - 1) / 2. A
 * count is a line where it is
 *
 * - above threshold,
 * - above those of the next smaller distance and of the next smaller angle,
 * - at least those of the next larger distance and of the next larger angle; outside of the plane counts are 0.
 *
 * The maxLineCount lines of the most votes are listed, the strongest first; of equal ones, the smaller angle and then
 * the smaller distance come first.
 *
 * The counter of a pixel is ((v + 512) >> 10) + half, where v = x * cosT + y * sinT, and cosT and sinT are the cosine
 * and the sine of the angle times 1024 / delta.rho, truncated. The angles of these are added up in single precision.
 * The function for the whole plane computes v in single precision, each step rounded, and then to an integer with ties
 * to even; that for a region in 32-bit integers. Coarse resolutions round to a counter beyond the ends, which counts as
 * well.
 *
 * For a region of the plane, only angles with dstRoi[0].theta <= t * delta.theta <= dstRoi[1].theta, in single
 * precision, and counters from trunc(half + dstRoi[0].rho / delta.rho) to trunc(half + dstRoi[1].rho / delta.rho)
 * count.
 *
 * Richard O. Duda and Peter E. Hart, Use of the Hough Transformation to Detect Lines and Curves in Pictures, 1972.
 *
 * @param pSrc          first sample of the source region
 * @param srcStep       bytes from one row to the next, above 0; it may be less than a row
 * @param roiSize       region in pixels, at least 1 by 1
 * @param delta         resolution: distance, above 0 and at most width + height, and angle, above 0 and at most
 *                      3.14159f
 * @param threshold     votes that a line exceeds, above 0
 * @param pLine         receives the lines; entries behind the last one are not written
 * @param dstRoi        two corners of the region, the lower one first. Angles are clamped to the range from 0 to
 *                      3.14159f and written back.
 * @param maxLineCount  entries that pLine has room for, above 0
 * @param pLineCount    receives the number of lines in the list
 * @param pBuffer       scratch of the size that the function below tells, at any address and with any contents
 *
 * @retval qelStatusOk           the list is written
 * @retval qelStatusNullPointer  a pointer is null
 * @retval qelStatusBadStep      srcStep is below 1
 * @retval qelStatusBadSize      width, height or maxLineCount below 1
 * @retval qelStatusBadArg       delta.rho, delta.theta or threshold is out of its range
 * @retval qelStatusBadRange     the first corner has the larger distance or angle; *pLineCount is 0
 *
 * Tested in this order; on an error nothing else is written. Runs on the caller's thread.
 */
/** @{ */
QEL_API qelStatus qeliHoughLine_8u32f_C1R(const Qel8u* pSrc, int srcStep, QelSize roiSize, QelPointPolar delta,
                                          int threshold, QelPointPolar* pLine, int maxLineCount, int* pLineCount,
                                          Qel8u* pBuffer);
QEL_API qelStatus qeliHoughLine_Region_8u32f_C1R(const Qel8u* pSrc, int srcStep, QelSize roiSize, QelPointPolar* pLine,
                                                 QelPointPolar* dstRoi, int maxLineCount, int* pLineCount,
                                                 QelPointPolar delta, int threshold, Qel8u* pBuffer);
/** @} */

/**
 * @name Scratch of the Hough transform
 *
 * The size is
 *
 *     (4 * width + 48) * height + 16 * maxLineCount + 16 * n + 8 * trunc(3.14159 / delta.theta) + 264
 *
 * bytes modulo 2^32, with n as above. The division of n is in single precision, that of the angles in double.
 *
 * @param roiSize       region of the call, at least 1 by 1
 * @param delta         resolution, both above 0
 * @param maxLineCount  entries of the list
 * @param pBufferSize   receives the bytes
 *
 * @retval qelStatusOk            *pBufferSize is written
 * @retval qelStatusNullPointer   pBufferSize is null
 * @retval qelStatusBadSize       width or height below 1
 * @retval qelStatusBadArg        delta.rho or delta.theta is not above 0
 * @retval qelStatusSizeOverflow  the size is beyond the range of int. *pBufferSize is written, but negative.
 *
 * Tested in this order; on an error nothing is written.
 */
/** @{ */
QEL_API qelStatus qeliHoughLineGetSize_8u_C1R(QelSize roiSize, QelPointPolar delta, int maxLineCount, int* pBufferSize);
/** @} */

/**
 * @name Peaks: positive local maxima and negative local minima
 *
 * Lists the pixels whose sample v has |v| > threshold and is the extreme of its neighbourhood: a positive v its largest
 * sample, any other v its smallest. Equal neighbours are all peaks. Rows are gone through from top to bottom, and each
 * from left to right; with maxPeakCount peaks the list is full, and the function ends.
 *
 * - 32s: |v| of the lowest number, 2147483648, is above every threshold. With a threshold below zero each pixel is
 *   above it, so zeros may be minima.
 * - 32f: v counts as the extreme M where |v - M| is at most 1.17549435e-38, in single precision. So an infinity is no
 *   peak, nor is a NaN. Beside a NaN a sample may be one or not, the same on every machine.
 *
 * @param pSrc          first sample of the source region
 * @param srcStep       bytes from one row to the next: at least a row's bytes and a multiple of 4; bytes between rows
 *                      are not read
 * @param roiSize       region in pixels, at least 1 by 1
 * @param threshold     magnitude that a peak exceeds
 * @param pPeak         receives columns and rows, counted from the first sample of the region; entries behind the last
 *                      peak are not written
 * @param maxPeakCount  entries that pPeak has room for, at least 1
 * @param pPeakCount    receives the number of peaks in the list
 * @param norm          neighbourhood: 0 for the block of 3 by 3 pixels, 1 for the pixel with those left, right, above
 *                      and below
 * @param border        pixels along each edge of the region that are not tested, at least 1 and at most half of each
 *                      side; they are neighbours of those that are. With half of a side nothing is tested.
 * @param pBuffer       scratch of the size that the function below tells, at any address and with any contents
 *
 * @retval qelStatusOk                      the list is written
 * @retval qelStatusNullPointer             a pointer is null
 * @retval qelStatusBadSize                 width, height, maxPeakCount or border below 1, or border above half of a
 *                                          side, compared in single precision
 * @retval qelStatusBadStep                 srcStep is shorter than a row
 * @retval qelStatusStepNotElementMultiple  srcStep is not a multiple of 4
 * @retval qelStatusBadArg                  norm is neither 0 nor 1
 *
 * Tested in this order; on an error nothing is written. No alignment is needed. Runs on the caller's thread.
 */
/** @{ */
QEL_API qelStatus qeliFindPeaks3x3_32s_C1R(const Qel32s* pSrc, int srcStep, QelSize roiSize, Qel32s threshold,
                                           QelPoint* pPeak, int maxPeakCount, int* pPeakCount, int norm, int border,
                                           Qel8u* pBuffer);
QEL_API qelStatus qeliFindPeaks3x3_32f_C1R(const Qel32f* pSrc, int srcStep, QelSize roiSize, Qel32f threshold,
                                           QelPoint* pPeak, int maxPeakCount, int* pPeakCount, int norm, int border,
                                           Qel8u* pBuffer);
/** @} */

/**
 * @name Scratch of the peak search
 *
 * The size is (width + 5) / 4 * 128 bytes, the quotient truncated, with bit 5 set. It serves every call of no larger
 * width.
 *
 * @param width        pixels of a row, at least 1
 * @param pBufferSize  receives the bytes
 *
 * @retval qelStatusOk           *pBufferSize is written
 * @retval qelStatusNullPointer  pBufferSize is null
 * @retval qelStatusBadSize      width below 1
 * @retval qelStatusOverflow     the size is beyond the range of int
 *
 * Tested in this order; on an error nothing is written.
 */
/** @{ */
QEL_API qelStatus qeliFindPeaks3x3GetBufferSize_32s_C1R(int width, int* pBufferSize);
QEL_API qelStatus qeliFindPeaks3x3GetBufferSize_32f_C1R(int width, int* pBufferSize);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
