#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "kit/checks.h"
#include "kit/every_target.h"
#include "kit/guarded_memory.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/stats.h"

namespace {

// max and min as the vectors have them: the second operand where one is a NaN.
Qel32f larger(Qel32f a, Qel32f b) { return a > b ? a : b; }
Qel32f smaller(Qel32f a, Qel32f b) { return a < b ? a : b; }

Qel32f model(Qel32f y, Qel32f x) {
    const Qel32f ax = std::fabs(x);
    const Qel32f ay = std::fabs(y);
    const Qel32f m = larger(larger(ax, ay), std::bit_cast<Qel32f>(0x322BCC77));
    const Qel32f n = smaller(ax, ay);
    // The reciprocal, rounded to 12 fraction bits.
    const uint32_t quotient = std::bit_cast<uint32_t>(1.0F / m);
    const Qel32f r = std::bit_cast<Qel32f>((quotient + 0x400) / 0x800 * 0x800);
    const Qel32f mr = m * r;
    const Qel32f mrr = mr * r;
    const Qel32f t = n * (r + r - mrr);
    Qel32f p = std::bit_cast<Qel32f>(0xC17D02D3) * t;
    p = p + std::bit_cast<Qel32f>(0x42746075);
    p = p * t;
    p = p + std::bit_cast<Qel32f>(0xBE0FDF57);
    if (ax < ay) p = 90 - p;
    if (x < 0) p = 180 - p;
    if (y < 0) p = 360 - p;
    return p;
}

class FastArctan : public kit::EveryTarget {};
ON_EVERY_TARGET(FastArctan);

TEST_P(FastArctan, qelibFastArctan_32f) {
    for (const uint32_t seed : kit::seeds(600)) {
        kit::Trial trial(seed);
        trial.size.height = 1;
        kit::Image<Qel32f> y(trial), x(trial), got(trial), want(got);
        for (int i = 0; i < trial.size.width; ++i) want.at(i, 0) = model(y.at(i, 0), x.at(i, 0));
        // Which NaN comes out is the compiler's choice where two meet, in the model as in the kernel.
        const auto agrees = [&](kit::Image<Qel32f>& result) {
            for (int i = 0; i < trial.size.width; ++i)
                if (std::isnan(want.at(i, 0)) && std::isnan(result.at(i, 0))) result.at(i, 0) = want.at(i, 0);
            return sameBits(want, result);
        };
        ASSERT_EQ(qelStatusOk, qelibFastArctan_32f(y.data(), x.data(), got.data(), trial.size.width)) << trial;
        ASSERT_TRUE(agrees(got)) << trial;
        kit::Image<Qel32f> overY(y), overX(x);
        ASSERT_EQ(qelStatusOk, qelibFastArctan_32f(overY.data(), x.data(), overY.data(), trial.size.width)) << trial;
        ASSERT_TRUE(agrees(overY)) << trial << ", over pSrcY";
        ASSERT_EQ(qelStatusOk, qelibFastArctan_32f(y.data(), overX.data(), overX.data(), trial.size.width)) << trial;
        ASSERT_TRUE(agrees(overX)) << trial << ", over pSrcX";
    }
}

// One pair gives the same bits at any position of a vector of any length.
TEST_P(FastArctan, PositionDoesNotCount) {
    const Qel32f pairY = -0.731F;
    const Qel32f pairX = 1.618F;
    Qel32f want;
    ASSERT_EQ(qelStatusOk, qelibFastArctan_32f(&pairY, &pairX, &want, 1));
    for (int len = 1; len <= 70; ++len) {
        kit::Image<Qel32f> y({len, 1}, pairY), x({len, 1}, pairX), got({len, 1}, 0), all({len, 1}, want);
        ASSERT_EQ(qelStatusOk, qelibFastArctan_32f(y.data(), x.data(), got.data(), len));
        ASSERT_TRUE(sameBits(all, got)) << "length " << len;
    }
}

// Against the parabola of the exact quotient, which the estimate and its Newton step reach to the last bits, and
// against the true angle. The circle, and radii from above the least divisor to where the reciprocal is denormal.
TEST_P(FastArctan, Accuracy) {
    constexpr int kSteps = 20000;
    std::vector<Qel32f> y(kSteps), x(kSteps), got(kSteps);
    for (const double radius : {1e-7, 1e-3, 1.0, 255.0, 1e20, 3e38}) {
        for (int i = 0; i < kSteps; ++i) {
            const double angle = (i + 0.25) * 2 * M_PI / kSteps;
            y[i] = static_cast<Qel32f>(radius * std::sin(angle));
            x[i] = static_cast<Qel32f>(radius * std::cos(angle));
        }
        ASSERT_EQ(qelStatusOk, qelibFastArctan_32f(y.data(), x.data(), got.data(), kSteps));
        for (int i = 0; i < kSteps; ++i) {
            const double ax = std::fabs(x[i]);
            const double ay = std::fabs(y[i]);
            const double t = std::min(ax, ay) / std::max(ax, ay);
            double p = (-15.8131895 * t + 61.0941963) * t - 0.140500411;
            if (ax < ay) p = 90 - p;
            if (x[i] < 0) p = 180 - p;
            if (y[i] < 0) p = 360 - p;
            ASSERT_NEAR(p, got[i], 4e-5) << "x " << x[i] << ", y " << y[i];
            ASSERT_NEAR((i + 0.25) * 360 / kSteps, got[i], 0.15) << "x " << x[i] << ", y " << y[i];
        }
    }
}

// What the axes give, both zeros, and no clamping to the range.
TEST_P(FastArctan, Axes) {
    const Qel32f least = std::bit_cast<Qel32f>(0xBE0FDF57);
    const struct {
        Qel32f y, x, want;
    } cases[] = {{0, 1, least},
                 {0, 0, least},
                 {-0.0F, -0.0F, least},
                 {1, 0, 90 - least},
                 {0, -1, 180 - least},
                 {-1, 0, 360 - (90 - least)},
                 {-1e-30F, 1, 360 - least}};
    for (const auto& c : cases) {
        Qel32f got;
        ASSERT_EQ(qelStatusOk, qelibFastArctan_32f(&c.y, &c.x, &got, 1));
        EXPECT_TRUE(kit::sameBits(c.want, got)) << "y " << c.y << ", x " << c.x << ": " << got;
    }
}

TEST(FastArctanChecks, EveryMember) {
    CHECKS_OF(qelibFastArctan_32f)
        .notAnImage<2>()
        .fault<3>("len 0", qelStatusBadSize, 0)
        .fault<3>("len -5", qelStatusBadSize, -5)
        .run();
}

}  // namespace
