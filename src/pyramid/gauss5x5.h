// The scratch of the Gaussian steps, and the answer to what it takes.
#ifndef QELCV_PYRAMID_GAUSS5X5_H_
#define QELCV_PYRAMID_GAUSS5X5_H_

#include <cstdint>

#include "frame/check.h"
#include "frame/scratch.h"

namespace qel {

// Rows of 32-bit sums, though the sums of bytes take half of it. In 32 bits, as callers know the numbers: a width whose
// bytes do not fit wraps around.
constexpr uint32_t gaussScratchBytes(int width, int channels, uint32_t pixelsPerPixel, uint32_t slots) {
    const uint32_t row = static_cast<uint32_t>(width) * pixelsPerPixel * static_cast<uint32_t>(channels) * 4;
    return ((row + 15) & ~15U) * slots + 32;
}
constexpr uint32_t downScratchBytes(int width, int channels) { return gaussScratchBytes(width, channels, 1, 6); }
constexpr uint32_t upScratchBytes(int width, int channels) { return gaussScratchBytes(width, channels, 2, 3); }

// The scratch from its first multiple of 32 bytes on.
struct GaussScratch {
    GaussScratch(void* pBuffer, uint32_t scratchBytes)
        : p(alignUp(pBuffer, 32)), bytes(int64_t{scratchBytes} - (p - static_cast<char*>(pBuffer))) {}

    char* p;
    int64_t bytes;
};

inline qelStatus writeGaussScratchBytes(uint32_t (*bytes)(int width, int channels), int width, int dataType,
                                        int channels, int* pBufferSize) {
    constexpr int k8u = 1, k8s = 3, k32f = 13;
    const qelStatus status = Check()
                                 .pointers(pBufferSize)
                                 .length(width)
                                 .require(channels == 1 || channels == 3, qelStatusBadChannelCount)
                                 .require(dataType == k8u || dataType == k8s || dataType == k32f, qelStatusBadDataType)
                                 .status();
    if (status == qelStatusOk) *pBufferSize = static_cast<int>(bytes(width, channels));
    return status;
}

}  // namespace qel

#endif
