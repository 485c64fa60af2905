#include <omp.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "kit/checks.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/stats.h"

namespace {

enum Norm { kInf = 0, kL1 = 1, kL2 = 2 };

template <class T>
struct Pixel {
    T a, b, c;
};

Qel8u model(Pixel<Qel8u> p, int norm) {
    if (norm == kInf) return std::max({p.a, p.b, p.c});
    if (norm == kL1) return static_cast<Qel8u>(((p.a + p.b + p.c) * 1365 + 2048) >> 12);
    const Qel32f mean = static_cast<Qel32f>(p.a * p.a + p.b * p.b + p.c * p.c) / 3.0F;
    return static_cast<Qel8u>(std::sqrt(static_cast<Qel64f>(mean)) + 0.5);
}

Qel16u model(Pixel<Qel16u> p, int norm) {
    if (norm == kInf) return std::max({p.a, p.b, p.c});
    if (norm == kL1) return static_cast<Qel16u>(((p.a + p.b + p.c) * 5461 + 8192) >> 14);
    const Qel64f a = p.a, b = p.b, c = p.c;
    return static_cast<Qel16u>(std::sqrt((a * a + b * b + c * c) / 3.0) + 0.5);
}

Qel32f larger(Qel32f a, Qel32f b) { return a > b ? a : b; }

Qel32f model(Pixel<Qel32f> p, int norm) {
    const Qel32f a = std::fabs(p.a), b = std::fabs(p.b), c = std::fabs(p.c);
    if (norm == kInf) return larger(larger(a, b), c);
    if (norm == kL1) return (a + b) + c;
    const Qel32f aa = p.a * p.a, bb = p.b * p.b, cc = p.c * p.c;
    return std::sqrt((aa + bb) + cc);
}

template <class T>
Pixel<T> pixel(const kit::Image<T>& image, int x, int y) {
    return {image.at(3 * x, y), image.at(3 * x + 1, y), image.at(3 * x + 2, y)};
}

template <class T>
void fillModel(const kit::Image<T>& src, kit::Image<T>& dst, int rows, int norm) {
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < dst.size().width; ++x) dst.at(x, y) = model(pixel(src, x, y), norm);
}

template <class T>
using Function = qelStatus(const T*, int, T*, int, QelSize, int);

template <class T>
void agreesIn(kit::Trial& trial, Function<T>* function, int norm) {
    kit::Image<T> src(trial, 3), got(trial), want(got);
    fillModel(src, want, trial.size.height, norm);
    ASSERT_EQ(qelStatusOk, function(src.data(), src.step(), got.data(), got.step(), trial.size, norm)) << trial;
    if constexpr (std::is_floating_point_v<T>) {
        // Which of two NaNs a sum gives is the compiler's choice.
        for (int y = 0; y < trial.size.height; ++y)
            for (int x = 0; x < trial.size.width; ++x)
                if (std::isnan(want.at(x, y)) && std::isnan(got.at(x, y))) got.at(x, y) = want.at(x, y);
    }
    ASSERT_TRUE(sameBits(want, got)) << trial << ", norm " << norm;
}

template <class T>
void agreesWithModel(Function<T>* function) {
    for (const int norm : {kInf, kL1, kL2}) {
        for (const uint32_t seed : kit::seeds(250)) {
            kit::Trial trial(seed);
            ASSERT_NO_FATAL_FAILURE(agreesIn(trial, function, norm));
        }
        kit::Trial large(0, {641, 481}, 3);
        ASSERT_NO_FATAL_FAILURE(agreesIn(large, function, norm));
    }
}

class GradientColorToGray : public kit::EveryTarget {};
ON_EVERY_TARGET(GradientColorToGray);

TEST_P(GradientColorToGray, qeliGradientColorToGray_8u_C3C1R) {
    agreesWithModel<Qel8u>(qeliGradientColorToGray_8u_C3C1R);
}
TEST_P(GradientColorToGray, qeliGradientColorToGray_16u_C3C1R) {
    agreesWithModel<Qel16u>(qeliGradientColorToGray_16u_C3C1R);
}
TEST_P(GradientColorToGray, qeliGradientColorToGray_32f_C3C1R) {
    agreesWithModel<Qel32f>(qeliGradientColorToGray_32f_C3C1R);
}

// All sums and all sums of squares of three bytes, by all triples in ascending order.
TEST_P(GradientColorToGray, EveryTripleOfBytes) {
    for (const int norm : {kL1, kL2}) {
        for (int a = 0; a < 256; a += norm == kL1 ? 17 : 1) {
            kit::Image<Qel8u> src({256, 256 - a}, Qel8u(a), 3), got({256, 256 - a}, 0), want(got);
            for (int y = 0; y < 256 - a; ++y)
                for (int x = 0; x < 256; ++x) src.at(3 * x + 1, y) = Qel8u(a + y), src.at(3 * x + 2, y) = Qel8u(x);
            fillModel(src, want, 256 - a, norm);
            ASSERT_EQ(qelStatusOk, qeliGradientColorToGray_8u_C3C1R(src.data(), src.step(), got.data(), got.step(),
                                                                    {256, 256 - a}, norm));
            ASSERT_TRUE(sameBits(want, got)) << "first channel " << a << ", norm " << norm;
        }
    }
}

// Sums of squares as near as they come to where the rounded root changes from k - 1 to k, for all k.
TEST_P(GradientColorToGray, RootsOfWordsNearTheirLimits) {
    kit::Trial trial(1, {65535, 1});
    kit::Image<Qel16u> src({65535, 3}, 0, 3), got({65535, 3}, 0), want(got);
    for (int k = 1; k <= 65535; ++k) {
        const double limit = 3.0 * k * (k - 1) + 1;
        // Each channel leaves to the later ones what they can make up.
        const auto channelOf = [&](double rest, int later) {
            const double low = std::ceil(std::sqrt(std::max(rest - later * 65535.0 * 65535.0, 0.0)));
            const double high = std::floor(std::min(std::sqrt(rest), 65535.0));
            return trial.between(int(std::min(low, high)), int(high));
        };
        const double a = channelOf(limit, 2);
        const double b = channelOf(limit - a * a, 1);
        const double c = std::round(std::sqrt(std::max(limit - a * a - b * b, 0.0)));
        for (int y = 0; y < 3; ++y) {
            src.at(3 * k - 3, y) = Qel16u(a);
            src.at(3 * k - 2, y) = Qel16u(b);
            src.at(3 * k - 1, y) = Qel16u(std::clamp(c + y - 1, 0.0, 65535.0));
        }
    }
    fillModel(src, want, 3, kL2);
    ASSERT_EQ(qelStatusOk,
              qeliGradientColorToGray_16u_C3C1R(src.data(), src.step(), got.data(), got.step(), src.size(), kL2));
    EXPECT_TRUE(sameBits(want, got));
}

TEST_P(GradientColorToGray, WhiteStaysWhite) {
    kit::Image<Qel8u> bytes({3, 1}, 255, 3), byteResult({3, 1}, 0);
    kit::Image<Qel16u> words({3, 1}, 65535, 3), wordResult({3, 1}, 0);
    constexpr Qel16u kWhite[] = {65535, 65531, 65535};
    for (const int norm : {kInf, kL1, kL2}) {
        ASSERT_EQ(qelStatusOk, qeliGradientColorToGray_8u_C3C1R(bytes.data(), bytes.step(), byteResult.data(),
                                                                byteResult.step(), {3, 1}, norm));
        EXPECT_EQ(255, byteResult.at(2, 0)) << norm;
        ASSERT_EQ(qelStatusOk, qeliGradientColorToGray_16u_C3C1R(words.data(), words.step(), wordResult.data(),
                                                                 wordResult.step(), {3, 1}, norm));
        EXPECT_EQ(kWhite[norm], wordResult.at(2, 0)) << norm;
    }
}

// Every thread of a team of the caller works on images of its own.
TEST_P(GradientColorToGray, InsideACallersTeam) {
    for (const int team : {2, 3, 8}) {
        kit::Trial trial(11, {100, 101}, 3);
        std::vector<std::unique_ptr<kit::Image<Qel8u>>> src, got;
        for (int i = 0; i < team; ++i) {
            src.push_back(std::make_unique<kit::Image<Qel8u>>(trial, 3));
            got.push_back(std::make_unique<kit::Image<Qel8u>>(trial.size, Qel8u(77)));
        }
        std::vector<qelStatus> status(size_t(team), qelStatusBadArg);
#pragma omp parallel num_threads(team)
        {
            const size_t i = size_t(omp_get_thread_num());
            status[i] = qeliGradientColorToGray_8u_C3C1R(src[i]->data(), src[i]->step(), got[i]->data(), got[i]->step(),
                                                         trial.size, kL1);
        }
        for (size_t i = 0; i < size_t(team); ++i) {
            ASSERT_EQ(qelStatusOk, status[i]);
            kit::Image<Qel8u> want(trial.size, 77);
            fillModel(*src[i], want, trial.size.height, kL1);
            ASSERT_TRUE(sameBits(want, *got[i])) << trial << ", team " << team;
        }
    }
}

TEST(GradientColorToGrayChecks, EveryMember) {
    CHECKS_OF(qeliGradientColorToGray_8u_C3C1R)
        .channels<0>(3)
        .fault<5>("norm 3", qelStatusBadArg, 3)
        .fault<5>("norm -1", qelStatusBadArg, -1)
        .run();
    CHECKS_OF(qeliGradientColorToGray_16u_C3C1R)
        .channels<0>(3)
        .fault<5>("norm 3", qelStatusBadArg, 3)
        .fault<5>("norm -1", qelStatusBadArg, -1)
        .run();
    CHECKS_OF(qeliGradientColorToGray_32f_C3C1R)
        .channels<0>(3)
        .fault<5>("norm 3", qelStatusBadArg, 3)
        .fault<5>("norm -1", qelStatusBadArg, -1)
        .run();
}

// A width whose row would need more bytes than a step can say is short, whatever the product wraps to.
TEST(GradientColorToGrayChecks, WidthsThatOverflow) {
    Qel32f f = 1;
    EXPECT_EQ(qelStatusBadStep, qeliGradientColorToGray_32f_C3C1R(&f, 12, &f, 4, {0x55555556, 1}, kInf));
}

}  // namespace
