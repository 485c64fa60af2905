/**
 * @file
 * Pyramids, motion and geometry: Gaussian steps, pyramids of any rate, optical flow, subpixel samples, undistortion,
 * super-resolution.
 */
#ifndef QELCV_PYRAMID_H_
#define QELCV_PYRAMID_H_

#include "qelcv/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
