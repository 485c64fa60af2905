/**
 * @file
 * Types, status codes and constants that every function of the library shares.
 */
#ifndef QELCV_TYPES_H_
#define QELCV_TYPES_H_

#include <stdint.h>

/** Marks what the libraries export. */
#define QEL_API __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

/** @name Sample types, by the descriptor that stands for them in function names */
/** @{ */
typedef uint8_t Qel8u;   /**< unsigned 8-bit */
typedef int8_t Qel8s;    /**< signed 8-bit */
typedef uint16_t Qel16u; /**< unsigned 16-bit */
typedef int16_t Qel16s;  /**< signed 16-bit */
typedef int32_t Qel32s;  /**< signed 32-bit */
typedef float Qel32f;    /**< IEEE 754 single precision */
typedef double Qel64f;   /**< IEEE 754 double precision */
/** @} */

/** An integer as wide as a pointer. */
typedef intptr_t QEL_INT_PTR;

/** Width and height of a region, in pixels and rows. */
typedef struct QelSize {
    int width;  /**< in pixels */
    int height; /**< in rows */
} QelSize;

/** Column and row of a pixel. */
typedef struct QelPoint {
    int x; /**< column, from 0 */
    int y; /**< row, from 0 */
} QelPoint;

/** A rectangle of pixels: column and row of its first pixel, then its size. */
typedef struct QelRect {
    int x;      /**< column, from 0 */
    int y;      /**< row, from 0 */
    int width;  /**< in pixels */
    int height; /**< in rows */
} QelRect;

/**
 * Result of a call: zero is success, a negative value an error, a positive value a warning. On an error nothing was
 * written; after a warning the output is valid, subject to what the warning says.
 */
typedef enum QelStatus {
    qelStatusBadCompareOp = -9999,          /**< comparison selector not in the allowed set */
    qelStatusStepNotElementMultiple = -108, /**< step not a multiple of the element size */
    qelStatusBadMetric = -56,               /**< a distance metric not positive */
    qelStatusBadChannelCount = -53,         /**< channel count not in the allowed set */
    qelStatusBadChannel = -52,              /**< channel of interest not 1, 2 or 3 */
    qelStatusBadAnchor = -34,               /**< anchor outside the mask */
    qelStatusBadMaskSize = -33,             /**< mask size not in the allowed set */
    qelStatusBadStep = -14,                 /**< a row step smaller than the row or not positive */
    qelStatusBadDataType = -12,             /**< data-type selector not in the allowed set */
    qelStatusOutOfRange = -11,              /**< a coordinate lies outside the image */
    qelStatusNoMemory = -9,                 /**< allocation failed */
    qelStatusNullPointer = -8,              /**< a required pointer is null */
    qelStatusBadRange = -7,                 /**< the two ends of a value range are in the wrong order */
    qelStatusBadSize = -6,                  /**< a width, height or length not positive or too small */
    qelStatusBadArg = -5,                   /**< an argument out of its allowed range or mode */
    qelStatusOverflow = -2,                 /**< a computed count overflowed the signed 32-bit range */
    qelStatusOk = 0,                        /**< success */
    qelStatusSqrtNegative = 3,              /**< warning: a negative input of a square root yielded zero */
    qelStatusDivideByZero = 6,              /**< warning: a relative measure had a zero denominator */
    qelStatusSizeOverflow = 12,             /**< warning: the size returned exceeds the signed 32-bit range */
    qelStatusKernelNotSymmetric = 38        /**< warning: the kernel of a pyramid layer is not symmetric */
} qelStatus;

/**
 * How a filter extends a row src[0..w-1] beyond its ends. Functions take the value as an int.
 */
typedef enum QelBorderMode {
    qelBorderConst = 0, /**< a constant that the caller gives */
    qelBorderRepl = 1,  /**< src[0] to the left, src[w-1] to the right */
    qelBorderWrap = 2,  /**< src[x modulo w]: the row repeats */
    qelBorderMirr = 3,  /**< reflection that does not repeat the edge sample: src[1], src[2], ...; period 2(w-1) */
    qelBorderMirrR = 4  /**< reflection that repeats the edge sample: src[0], src[1], ...; period 2w */
} QelBorderMode;

#ifdef __cplusplus
}
#endif

#endif
