// What the tests of both Gaussian steps share: kernels over an image that is reflected, and how cases are run.
#ifndef QELCV_TESTS_PYRAMID_GAUSS5X5_CASE_H_
#define QELCV_TESTS_PYRAMID_GAUSS5X5_CASE_H_

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/pyramid.h"

namespace gauss5x5 {

template <class T>
using Step = qelStatus(const T*, int, T*, int, QelSize, Qel8u*);
using SizeQuery = qelStatus(int, int, int, int*);

template <class T>
constexpr int kDataType = std::is_same_v<T, Qel8u>   ? 1
                          : std::is_same_v<T, Qel8s> ? 3
                                                     : 13;

// Reflection that does not repeat the edge sample, as often as it takes.
inline int reflect(int x, int size) {
    if (size == 1) return 0;
    while (x < 0 || x >= size) x = x < 0 ? -x : 2 * (size - 1) - x;
    return x;
}

// Bit for bit, but for which of two NaNs a sum is.
inline bool sameResult(Qel32f a, Qel32f b) { return (std::isnan(a) && std::isnan(b)) || kit::sameBits(a, b); }

template <class T>
testing::AssertionResult sameResults(kit::Image<T>& want, const kit::Image<T>& got) {
    if constexpr (std::is_same_v<T, Qel32f>) {
        for (int y = 0; y < want.size().height; ++y)
            for (int x = 0; x < want.size().width * want.channels(); ++x)
                if (sameResult(want.at(x, y), got.at(x, y))) want.at(x, y) = got.at(x, y);
    }
    return sameBits(want, got);
}

// One case: the model's image against the function's, with scratch at either end of its room.
template <class T, class Model>
void agrees(Step<T>* function, SizeQuery* query, kit::Trial& trial, QelSize dstSize, int channels, const Model& model) {
    kit::Image<T> src(trial, channels);
    kit::Image<T> got(trial, dstSize, channels), want(got);
    model(src, want);
    int bytes = 0;
    ASSERT_EQ(qelStatusOk, query(trial.size.width, kDataType<T>, channels, &bytes)) << trial;
    kit::ScratchBlock scratch(bytes, size_t(trial.between(0, 64)));
    for (Qel8u* const buffer : {scratch.odd(), scratch.flush()}) {
        const kit::Image<T> before(src);
        ASSERT_EQ(qelStatusOk, function(src.data(), src.step(), got.data(), got.step(), trial.size, buffer)) << trial;
        ASSERT_TRUE(sameResults(want, got)) << trial;
        ASSERT_TRUE(sameBits(before, src)) << trial << ", the source";
        ASSERT_TRUE(scratch.intact()) << trial;
    }
}

// Widths and heights of 1 to 40, then wider images.
template <class Run>
void forAllSizes(const Run& run) {
    uint32_t seed = 0;
    for (int width = 1; width <= 40; ++width)
        for (int height = 1; height <= 40; height += height < 6 ? 1 : 8) {
            kit::Trial trial(seed++, {width, height});
            ASSERT_NO_FATAL_FAILURE(run(trial));
        }
    for (int width = 41; width <= 290; width += width < 140 ? 1 : 7) {
        kit::Trial trial(seed++, {width, 3 + width % 5});
        ASSERT_NO_FATAL_FAILURE(run(trial));
    }
}

}  // namespace gauss5x5

#endif
