// OpenCV as what users would pick instead, where the build found it.
#ifndef QELCV_BENCH_PEERS_OPENCV_H_
#define QELCV_BENCH_PEERS_OPENCV_H_

// OPENCV(...) stands for its arguments, or for nothing in a build without OpenCV. Only the -O3 build of a file
// measures the peer, so the other one spares itself the headers.
#ifdef QEL_BENCH_OPENCV

#include <opencv2/core.hpp>

#include "kit/bench.h"

#define OPENCV(...) __VA_ARGS__

namespace bench {

constexpr const char* kPeerName = "OpenCV " CV_VERSION;

inline void setPeerThreads(int threads) { cv::setNumThreads(threads); }

// An image in OpenCV's terms, over the same memory.
template <class T>
cv::Mat mat(const Image<T>& image) {
    return cv::Mat(image.size.height, image.size.width, CV_MAKETYPE(cv::DataType<T>::depth, image.channels), image.data,
                   size_t(image.step));
}

}  // namespace bench

#else

#define OPENCV(...)

namespace bench {

constexpr const char* kPeerName = "";

inline void setPeerThreads(int) {}

}  // namespace bench

#endif

#endif
