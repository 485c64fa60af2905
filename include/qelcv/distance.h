/**
 * @file
 * Distance transforms, fast marching, inpainting.
 */
#ifndef QELCV_DISTANCE_H_
#define QELCV_DISTANCE_H_

#include "qelcv/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
