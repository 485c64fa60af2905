#include <algorithm>
#include <cmath>
#include <limits>

#include "kit/checks.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/stats.h"

namespace {

Qel8u model(Qel8u a, Qel8u b) { return a > b ? a - b : b - a; }
Qel16u model(Qel16u a, Qel16u b) { return a > b ? a - b : b - a; }
Qel32f model(Qel32f a, Qel32f b) { return std::fabs(a - b); }

// The constant as the sample that it acts as.
Qel8u clamped(Qel8u, int value) { return value < 0 ? 0 : value > 255 ? 255 : value; }
Qel16u clamped(Qel16u, int value) { return value < 0 ? 0 : value > 65535 ? 65535 : value; }
Qel32f clamped(Qel32f, Qel32f value) { return value; }

template <class T, class Function>
void twoImagesAgree(Function* function, kit::Trial& trial, int channels) {
    kit::Image<T> a(trial, channels), b(trial, channels), got(trial, channels), want(got);
    for (int y = 0; y < trial.size.height; ++y)
        for (int x = 0; x < trial.size.width * channels; ++x) want.at(x, y) = model(a.at(x, y), b.at(x, y));

    ASSERT_EQ(qelStatusOk, function(a.data(), a.step(), b.data(), b.step(), got.data(), got.step(), trial.size))
        << trial;
    ASSERT_TRUE(sameBits(want, got)) << trial;
    ASSERT_EQ(qelStatusOk, function(a.data(), a.step(), b.data(), b.step(), a.data(), a.step(), trial.size)) << trial;
    ASSERT_TRUE(sameBits(want, a)) << trial << ", in place of the first source";
}

template <class T, class Value, class Function>
void imageAndConstantAgree(Function* function, kit::Trial& trial, Value value) {
    kit::Image<T> a(trial), got(trial), want(got);
    for (int y = 0; y < trial.size.height; ++y)
        for (int x = 0; x < trial.size.width; ++x) want.at(x, y) = model(a.at(x, y), clamped(T(), value));

    ASSERT_EQ(qelStatusOk, function(a.data(), a.step(), got.data(), got.step(), trial.size, value)) << trial;
    ASSERT_TRUE(sameBits(want, got)) << trial << ", value " << value;
    ASSERT_EQ(qelStatusOk, function(a.data(), a.step(), a.data(), a.step(), trial.size, value)) << trial;
    ASSERT_TRUE(sameBits(want, a)) << trial << ", value " << value << ", in place";
}

// The area that takes the parallel path, one less, and a single row of it, under several teams; for 16u each also with
// a cache too small for a share, one exactly as large, and one that the system does not tell.
constexpr int kParallelLimit = 0x40000;
constexpr QelSize kLargeSizes[] = {
    {kParallelLimit, 1}, {kParallelLimit / 8, 8}, {kParallelLimit / 8 - 1, 8}, {37, 7100}};

template <class Run>
void forAllTrials(const Run& run) {
    for (const uint32_t seed : kit::seeds(300)) {
        kit::Trial trial(seed);
        kit::core().cacheSize = seed % 2 == 0 ? 1 << 22 : 0;
        ASSERT_NO_FATAL_FAILURE(run(trial));
    }
    uint32_t seed = 0;
    for (const QelSize size : kLargeSizes) {
        const int threads[] = {1, 2, 3, 33};
        kit::Trial trial(seed, size, threads[seed % 4]);
        const int cacheSizes[] = {0, 6 * size.width * (size.height / trial.threads), 1 << 30};
        kit::core().cacheSize = cacheSizes[seed++ % 3];
        ASSERT_NO_FATAL_FAILURE(run(trial));
    }
}

template <class T, class Function>
void twoImagesAgree(Function* function, int channels = 1) {
    forAllTrials([=](kit::Trial& trial) { twoImagesAgree<T>(function, trial, channels); });
}

template <class T, class Value, class Function>
void imageAndConstantAgree(Function* function, std::initializer_list<Value> values) {
    for (const Value value : values)
        forAllTrials([=](kit::Trial& trial) { imageAndConstantAgree<T>(function, trial, value); });
}

class AbsDiff : public kit::EveryTarget {};
ON_EVERY_TARGET(AbsDiff);

TEST_P(AbsDiff, qeliAbsDiff_8u_C1R) { twoImagesAgree<Qel8u>(qeliAbsDiff_8u_C1R); }
TEST_P(AbsDiff, qeliAbsDiff_8u_C3R) { twoImagesAgree<Qel8u>(qeliAbsDiff_8u_C3R, 3); }
TEST_P(AbsDiff, qeliAbsDiff_16u_C1R) { twoImagesAgree<Qel16u>(qeliAbsDiff_16u_C1R); }
TEST_P(AbsDiff, qeliAbsDiff_32f_C1R) { twoImagesAgree<Qel32f>(qeliAbsDiff_32f_C1R); }

constexpr int kIntMin = std::numeric_limits<int>::min();
constexpr int kIntMax = std::numeric_limits<int>::max();
constexpr Qel32f kNaN = std::numeric_limits<Qel32f>::quiet_NaN();
constexpr Qel32f kInfinity = std::numeric_limits<Qel32f>::infinity();

TEST_P(AbsDiff, qeliAbsDiffC_8u_C1R) {
    imageAndConstantAgree<Qel8u>(qeliAbsDiffC_8u_C1R, {0, 1, 100, 255, 256, 300, -1, kIntMin, kIntMax});
}
TEST_P(AbsDiff, qeliAbsDiffC_16u_C1R) {
    imageAndConstantAgree<Qel16u>(qeliAbsDiffC_16u_C1R, {0, 1, 255, 32768, 65535, 65536, 70000, -1, kIntMin, kIntMax});
}
TEST_P(AbsDiff, qeliAbsDiffC_32f_C1R) {
    imageAndConstantAgree<Qel32f>(qeliAbsDiffC_32f_C1R, {0.0F, -0.0F, 1.5F, -1e30F, kInfinity, kNaN});
}

// All pairs of bytes at once.
TEST_P(AbsDiff, EveryPairOfBytes) {
    kit::Trial trial(0, {256, 256});
    kit::Image<Qel8u> a(trial), b(trial), got(trial), want(got);
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 256; ++x) a.at(x, y) = x, b.at(x, y) = y, want.at(x, y) = std::abs(x - y);
    ASSERT_EQ(qelStatusOk,
              qeliAbsDiff_8u_C1R(a.data(), a.step(), b.data(), b.step(), got.data(), got.step(), trial.size));
    EXPECT_TRUE(sameBits(want, got));
}

TEST(AbsDiffChecks, EveryMember) {
    CHECKS_OF(qeliAbsDiff_8u_C1R).run();
    CHECKS_OF(qeliAbsDiff_8u_C3R).channels<0>(3).channels<2>(3).channels<4>(3).run();
    CHECKS_OF(qeliAbsDiff_16u_C1R).run();
    CHECKS_OF(qeliAbsDiff_32f_C1R).run();
    CHECKS_OF(qeliAbsDiffC_8u_C1R).run();
    CHECKS_OF(qeliAbsDiffC_16u_C1R).run();
    CHECKS_OF(qeliAbsDiffC_32f_C1R).run();
}

// A width whose row would need more bytes than a step can say is short, whatever the product wraps to.
TEST(AbsDiffChecks, WidthsThatOverflow) {
    Qel32f f = 1;
    EXPECT_EQ(qelStatusBadStep, qeliAbsDiff_32f_C1R(&f, 4, &f, 4, &f, 4, {0x40000001, 1}));
    Qel8u u = 1;
    EXPECT_EQ(qelStatusBadStep, qeliAbsDiff_8u_C3R(&u, 4, &u, 4, &u, 4, {0x55555556, 1}));
    for (const int width : {715827883, std::numeric_limits<int>::max()}) {
        const int step = std::numeric_limits<int>::max();
        EXPECT_EQ(qelStatusBadStep, qeliAbsDiff_8u_C3R(&u, step, &u, step, &u, step, {width, 1}));
    }
    // Three times these widths, cut to 32 bits, are small and positive.
    for (const int width : {-1431655765, -1431655764, -1431655000})
        EXPECT_EQ(qelStatusBadSize, qeliAbsDiff_8u_C3R(&u, 16, &u, 16, &u, 16, {width, 1}));
}

}  // namespace
