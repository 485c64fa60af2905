#ifndef QELCV_DISTANCE_TRUE_DISTANCE_TRANSFORM_KERNELS_H_
#define QELCV_DISTANCE_TRUE_DISTANCE_TRANSFORM_KERNELS_H_

#include "frame/image.h"
#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

// For each pixel the distance to the nearest zero of its column, 0 on a zero; any number from the height on where the
// column has none.
extern const Kernel<void(Plane<const Qel8u> src, Plane<Qel32s> distances, QelSize size)> ownTrueDistanceColumns_8u32s;

// pSquares[x] = the square of pDistances[x], `infinity` from `height` on.
extern const Kernel<void(const Qel32s* pDistances, Qel32f* pSquares, int width, int height, Qel32f infinity)>
    ownTrueDistanceSquares_32s32f;

}  // namespace qel

#endif
