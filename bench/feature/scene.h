// A picture for what depends on contents: slow waves, discs and bars with sharp edges, and a little noise.
#ifndef QELCV_BENCH_FEATURE_SCENE_H_
#define QELCV_BENCH_FEATURE_SCENE_H_

#include <cmath>
#include <cstdint>

#include "qelcv/types.h"

namespace bench {

inline Qel8u sceneAt(int x, int y) {
    const double waves = 40 * std::sin(x * 0.031) * std::cos(y * 0.023);
    const int cellX = (x & 127) - 64, cellY = (y & 127) - 64;
    const double disc = cellX * cellX + cellY * cellY < 40 * 40 ? 50 : 0;
    const double bar = ((x + 2 * y) & 255) < 30 ? 35 : 0;
    uint32_t noise = uint32_t(x) * 0x9E3779B1u ^ uint32_t(y) * 0x85EBCA77u;
    noise = (noise ^ (noise >> 15)) * 0x2C1B3C6Du;
    return Qel8u(85 + waves + disc + bar + double(noise >> 20 & 7));
}

}  // namespace bench

#endif
