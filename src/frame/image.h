// Regions of images: rows, steps and areas.
#ifndef QELCV_FRAME_IMAGE_H_
#define QELCV_FRAME_IMAGE_H_

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "qelcv/types.h"

namespace qel {

// The first sample of row y. Steps count bytes, whatever the sample.
template <class T>
inline T* row(T* p, int step, int y) {
    using Byte = std::conditional_t<std::is_const_v<T>, const char, char>;
    return reinterpret_cast<T*>(reinterpret_cast<Byte*>(p) + static_cast<std::ptrdiff_t>(step) * y);
}

// The rows of an image: where the first begins, and the bytes from one to the next.
template <class T>
struct Plane {
    T* p;
    int step;

    T* row(int y) const { return qel::row(p, step, y); }
    Plane from(int y) const { return {row(y), step}; }
};
template <class T>
Plane(T*, int) -> Plane<T>;  // which some compilers do not find by themselves

// A sample at any address: a region need not be aligned to its samples.
template <class T>
inline T sampleAt(const T* p) {
    T sample;
    std::memcpy(&sample, p, sizeof(T));
    return sample;
}

// Pixels of a region as a signed 32-bit product that wraps: a region too large to count compares as negative and so
// stays on the plain path. Nothing but a path choice may depend on it.
inline int area(QelSize roi) {
    return static_cast<int>(static_cast<unsigned>(roi.width) * static_cast<unsigned>(roi.height));
}

// A region of n-channel pixels as one of samples. A width that is not positive stays so; one beyond the range of int
// becomes the largest, so steps are tested against the region of pixels.
inline QelSize samples(QelSize roi, int channels) {
    const int64_t width = int64_t{roi.width} * channels;
    return {static_cast<int>(std::clamp<int64_t>(width, INT_MIN, INT_MAX)), roi.height};
}

// What a step is tested against: the bytes of a row and of a sample.
struct RowOf {
    int64_t bytes;
    int sample;
};

template <class T>
constexpr RowOf rowOf(int width, int channels = 1) {
    return {int64_t{width} * channels * static_cast<int>(sizeof(T)), static_cast<int>(sizeof(T))};
}

// True where the rows of an image follow each other without gaps.
template <class T>
inline bool isGapless(Plane<T> image, int width, int channels = 1) {
    return image.step == rowOf<T>(width, channels).bytes;
}

// A region whose images are all gapless, as one row, where an int can count it. Saves kernels the ends of short rows.
inline QelSize joinRows(QelSize size, bool gapless) {
    const int64_t pixels = int64_t{size.width} * size.height;
    return gapless && pixels <= INT_MAX ? QelSize{static_cast<int>(pixels), 1} : size;
}

}  // namespace qel

#endif
