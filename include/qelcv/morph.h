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

#ifdef __cplusplus
}
#endif

#endif
