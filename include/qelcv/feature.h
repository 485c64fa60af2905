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

#ifdef __cplusplus
}
#endif

#endif
