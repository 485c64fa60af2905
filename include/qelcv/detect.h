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

#ifdef __cplusplus
}
#endif

#endif
