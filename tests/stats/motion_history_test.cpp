#include <cstring>
#include <limits>

#include "kit/checks.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/stats.h"

namespace {

template <class T>
using Function = qelStatus(const T*, int, Qel32f*, int, QelSize, Qel32f, Qel32f);

template <class T>
void updateModel(const kit::Image<T>& silhouette, kit::Image<Qel32f>& history, Qel32f timeStamp, Qel32f mhiDuration) {
    const Qel32f limit = timeStamp - mhiDuration;
    for (int y = 0; y < history.size().height; ++y)
        for (int x = 0; x < history.size().width; ++x) {
            if (silhouette.at(x, y) != 0) {
                history.at(x, y) = timeStamp;
            } else if (history.at(x, y) < limit) {
                history.at(x, y) = 0;
            }
        }
}

constexpr Qel32f kNaN = std::numeric_limits<Qel32f>::quiet_NaN();
constexpr Qel32f kInfinity = std::numeric_limits<Qel32f>::infinity();

struct Times {
    Qel32f timeStamp;
    Qel32f mhiDuration;
};
constexpr Times kTimes[] = {{500, 200},     {500, 0},         {-3, 0.1F}, {1e30F, 1e30F},
                            {-0.0F, -0.0F}, {kInfinity, 20},  {kNaN, 3},  {kInfinity, kInfinity},
                            {4, kNaN},      {-100, kInfinity}};

template <class T>
void agreesWithModel(Function<T>* function) {
    const auto run = [=](kit::Trial& trial) {
        kit::Image<T> silhouette(trial);
        kit::Image<Qel32f> got(trial);
        const Times times = kTimes[trial.between(0, std::size(kTimes) - 1)];
        for (int y = 0; y < trial.size.height; ++y)
            for (int x = 0; x < trial.size.width; ++x) {
                if (trial.coin()) silhouette.at(x, y) = 0;
                if (trial.between(0, 7) == 0) got.at(x, y) = times.timeStamp - times.mhiDuration;
            }
        kit::Image<Qel32f> want(got);
        updateModel(silhouette, want, times.timeStamp, times.mhiDuration);
        ASSERT_EQ(qelStatusOk, function(silhouette.data(), silhouette.step(), got.data(), got.step(), trial.size,
                                        times.timeStamp, times.mhiDuration))
            << trial;
        ASSERT_TRUE(sameBits(want, got)) << trial << ", time " << times.timeStamp << ", " << times.mhiDuration;
    };
    for (const uint32_t seed : kit::seeds(400)) {
        kit::Trial trial(seed);
        ASSERT_NO_FATAL_FAILURE(run(trial));
    }
    kit::Trial large(0, {641, 481}, 3);
    ASSERT_NO_FATAL_FAILURE(run(large));
}

class MotionHistory : public kit::EveryTarget {};
ON_EVERY_TARGET(MotionHistory);

TEST_P(MotionHistory, qeliUpdateMotionHistory_8u32f_C1IR) {
    agreesWithModel<Qel8u>(qeliUpdateMotionHistory_8u32f_C1IR);
}
TEST_P(MotionHistory, qeliUpdateMotionHistory_16u32f_C1IR) {
    agreesWithModel<Qel16u>(qeliUpdateMotionHistory_16u32f_C1IR);
}
TEST_P(MotionHistory, qeliUpdateMotionHistory_32f_C1IR) { agreesWithModel<Qel32f>(qeliUpdateMotionHistory_32f_C1IR); }

// Zero means zero in value: -0 is still, a NaN, the least number and a high byte alone move.
TEST_P(MotionHistory, WhatCountsAsMotion) {
    for (int width = 1; width < 40; ++width) {
        kit::Image<Qel32f> still({width, 1}, -0.0F), history({width, 1}, 7), stays({width, 1}, 7);
        const QelSize roi = {width, 1};
        ASSERT_EQ(qelStatusOk, qeliUpdateMotionHistory_32f_C1IR(still.data(), still.step(), history.data(),
                                                                history.step(), roi, 9, 2));
        EXPECT_TRUE(sameBits(stays, history));

        kit::Image<Qel32f> now({width, 1}, 9);
        for (const Qel32f value : {kNaN, -kNaN, std::numeric_limits<Qel32f>::denorm_min()}) {
            kit::Image<Qel32f> moving({width, 1}, value), updated({width, 1}, 7);
            ASSERT_EQ(qelStatusOk, qeliUpdateMotionHistory_32f_C1IR(moving.data(), moving.step(), updated.data(),
                                                                    updated.step(), roi, 9, 2));
            EXPECT_TRUE(sameBits(now, updated));
        }
        kit::Image<Qel16u> highByte({width, 1}, 0x100);
        kit::Image<Qel32f> updated({width, 1}, 7);
        ASSERT_EQ(qelStatusOk, qeliUpdateMotionHistory_16u32f_C1IR(highByte.data(), highByte.step(), updated.data(),
                                                                   updated.step(), roi, 9, 2));
        EXPECT_TRUE(sameBits(now, updated));
    }
}

// A value that stays keeps its bits, those of a signalling NaN, too.
TEST_P(MotionHistory, StayingValuesKeepTheirBits) {
    kit::Image<Qel8u> still({37, 1}, 0);
    kit::Image<Qel32f> history({37, 1}, 0);
    for (int x = 0; x < 37; ++x) {
        const uint32_t bits = 0x7F800001 + uint32_t(x);
        std::memcpy(&history.at(x, 0), &bits, sizeof bits);
    }
    const kit::Image<Qel32f> before(history);
    ASSERT_EQ(qelStatusOk, qeliUpdateMotionHistory_8u32f_C1IR(still.data(), still.step(), history.data(),
                                                              history.step(), {37, 1}, 100, 1));
    EXPECT_TRUE(sameBits(before, history));
}

TEST(MotionHistoryChecks, EveryMember) {
    constexpr Qel32f kLeast = -std::numeric_limits<Qel32f>::denorm_min();
    CHECKS_OF(qeliUpdateMotionHistory_8u32f_C1IR)
        .fault<6>("mhiDuration -1", qelStatusOutOfRange, -1)
        .fault<6>("mhiDuration just below 0", qelStatusOutOfRange, kLeast)
        .run();
    CHECKS_OF(qeliUpdateMotionHistory_16u32f_C1IR)
        .fault<6>("mhiDuration -1", qelStatusOutOfRange, -1)
        .fault<6>("mhiDuration just below 0", qelStatusOutOfRange, kLeast)
        .run();
    CHECKS_OF(qeliUpdateMotionHistory_32f_C1IR)
        .fault<6>("mhiDuration -1", qelStatusOutOfRange, -1)
        .fault<6>("mhiDuration just below 0", qelStatusOutOfRange, kLeast)
        .run();
}

}  // namespace
