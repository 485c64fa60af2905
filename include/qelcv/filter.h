/**
 * @file
 * Linear filtering: separable pipelines and the filters with fixed kernels.
 */
#ifndef QELCV_FILTER_H_
#define QELCV_FILTER_H_

#include "qelcv/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Row pipelines */

/* Column pipelines */

/* Filters with fixed kernels */

/* Gaussian filter */

#ifdef __cplusplus
}
#endif

#endif
