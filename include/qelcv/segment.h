/**
 * @file
 * Segmentation: flood fills, labels, watersheds, gradient segmentation, boundaries, foreground models.
 */
#ifndef QELCV_SEGMENT_H_
#define QELCV_SEGMENT_H_

#include "qelcv/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifdef __cplusplus
}
#endif

#endif
