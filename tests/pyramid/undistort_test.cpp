#include <cmath>
#include <limits>
#include <vector>

#include "kit/checks.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/pyramid.h"

namespace {

struct Lens {
    Qel32f fx, fy, cx, cy, k1, k2, p1, p2;
};

// Pixel by pixel, in the documented order. Pixels outside of the source stay.
template <class T>
void radialModel(const kit::Image<T>& src, kit::Image<T>& want, int channels, const Lens& l) {
    const QelSize size = {src.size().width, src.size().height};
    for (int y = 0; y < size.height; ++y) {
        const Qel32f Y = Qel32f(y) - l.cy;
        const Qel32f ry = (1 / (l.fy * l.fy)) * Y * Y;
        const Qel32f A = (l.k2 * ry + l.k1) * ry, B = (2 * l.k2) * ry;
        for (int x = 0; x < size.width; ++x) {
            const Qel32f X = Qel32f(x) - l.cx;
            const Qel32f rx = (1 / (l.fx * l.fx)) * X * X;
            const Qel32f t = (l.k2 * rx + l.k1) * rx + (B * rx + A);
            const Qel32f xs = X * t + Qel32f(x), ys = Y * t + Qel32f(y);
            if (!(xs >= 0 && ys >= 0 && xs < Qel32f(size.width - 1) && ys < Qel32f(size.height - 1))) continue;
            const int i = int(xs), j = int(ys);
            const Qel32f a = xs - Qel32f(i), b = ys - Qel32f(j);
            const Qel32f w00 = (1 - b) * (1 - a), w01 = (1 - b) * a, w10 = b * (1 - a), w11 = b * a;
            for (int c = 0; c < channels; ++c) {
                const auto s = [&](int column, int row) { return Qel32f(src.at(column * channels + c, row)); };
                const Qel32f left = s(i, j) * w00 + s(i, j + 1) * w10;
                const Qel32f right = s(i + 1, j) * w01 + s(i + 1, j + 1) * w11;
                const Qel32f sum = right + left;
                constexpr Qel32f kRound = std::is_integral_v<T> ? 0.5F : -0.0F;
                want.at(x * channels + c, y) = T(sum + kRound);
            }
        }
    }
}

void mapModel(kit::Image<Qel32f>& xMap, kit::Image<Qel32f>& yMap, const Lens& l) {
    for (int y = 0; y < xMap.size().height; ++y)
        for (int x = 0; x < xMap.size().width; ++x) {
            const Qel32f X = Qel32f(x) - l.cx, Y = Qel32f(y) - l.cy;
            if (l.p1 == 0 && l.p2 == 0) {
                const Qel32f ry = (Y * Y) * (1 / (l.fy * l.fy)), rx = (X * X) * (1 / (l.fx * l.fx));
                const Qel32f A = (l.k2 * ry + l.k1) * ry;
                const Qel32f t = ((2 * l.k2) * ry) * rx + ((l.k2 * rx + l.k1) * rx + A);
                xMap.at(x, y) = X * t + Qel32f(x);
                yMap.at(x, y) = Y * t + Qel32f(y);
            } else {
                const Qel32f u = X * (1 / l.fx), v = Y * (1 / l.fy);
                const Qel32f r2 = u * u + v * v;
                const Qel32f t = (l.k2 * r2 + l.k1) * r2 + (2 * l.p2) * u + (2 * l.p1) * v;
                xMap.at(x, y) = t * X + ((l.fx * l.p2) * r2 + Qel32f(x));
                yMap.at(x, y) = t * Y + ((l.fy * l.p1) * r2 + Qel32f(y));
            }
        }
}

// Bit for bit, but for which of two NaNs a sum is.
template <class T>
testing::AssertionResult sameResults(kit::Image<T>& want, const kit::Image<T>& got) {
    if constexpr (std::is_same_v<T, Qel32f>) {
        for (int y = 0; y < want.size().height; ++y)
            for (int x = 0; x < want.size().width * want.channels(); ++x)
                if (std::isnan(want.at(x, y)) && std::isnan(got.at(x, y))) want.at(x, y) = got.at(x, y);
    }
    return sameBits(want, got);
}

// Lenses that leave all in place, pull corners in and out, and such as none has.
Lens lensOf(kit::Trial& trial, QelSize size) {
    const Qel32f nan = std::numeric_limits<Qel32f>::quiet_NaN();
    const auto around = [&](Qel32f value) { return value * Qel32f(trial.between(50, 150)) / 100; };
    const auto coefficient = [&] { return trial.coin() ? 0 : Qel32f(trial.between(-400, 400)) / 500; };
    Lens lens = {around(Qel32f(size.width)),
                 around(Qel32f(size.height)),
                 around(Qel32f(size.width) / 2),
                 around(Qel32f(size.height) / 2),
                 coefficient(),
                 coefficient(),
                 coefficient() / 4,
                 coefficient() / 4};
    switch (trial.between(0, 20)) {
        case 0:
            lens.k1 = nan;
            break;
        case 1:
            lens.k1 = 1e30F;
            break;
        case 2:
            lens.fx = -3;
            break;
        case 3:
            lens.cx = lens.cy = -1e6F;
            break;
        case 4:
            lens.p1 = -0.0F, lens.p2 = 0;
            break;
        default:
            break;
    }
    return lens;
}

template <class T>
using Radial = qelStatus(const T*, int, T*, int, QelSize, Qel32f, Qel32f, Qel32f, Qel32f, Qel32f, Qel32f, Qel8u*);

template <class T>
void agreesWithModel(Radial<T>* function, int channels) {
    for (uint32_t seed = 0; seed < 500; ++seed) {
        kit::Trial trial(seed, {int(seed % 67) + 1, int(seed % 11) + 1});
        const Lens l = lensOf(trial, trial.size);
        kit::Image<T> src(trial, channels), got(trial, channels), want(got);
        radialModel(src, want, channels, l);
        int bytes = 0;
        ASSERT_EQ(qelStatusOk, qeliUndistortGetSize(trial.size, &bytes));
        kit::ScratchBlock scratch(bytes);
        for (Qel8u* const buffer : {static_cast<Qel8u*>(nullptr), scratch.odd()}) {
            ASSERT_EQ(qelStatusOk, function(src.data(), src.step(), got.data(), got.step(), trial.size, l.fx, l.fy,
                                            l.cx, l.cy, l.k1, l.k2, buffer))
                << trial;
            ASSERT_TRUE(sameResults(want, got)) << trial << ", k1 " << l.k1 << ", k2 " << l.k2;
        }
        ASSERT_TRUE(scratch.intact());
    }
}

class Undistort : public kit::EveryTarget {};
ON_EVERY_TARGET(Undistort);

TEST_P(Undistort, qeliUndistortRadial_8u_C1R) { agreesWithModel<Qel8u>(qeliUndistortRadial_8u_C1R, 1); }
TEST_P(Undistort, qeliUndistortRadial_8u_C3R) { agreesWithModel<Qel8u>(qeliUndistortRadial_8u_C3R, 3); }
TEST_P(Undistort, qeliUndistortRadial_16u_C1R) { agreesWithModel<Qel16u>(qeliUndistortRadial_16u_C1R, 1); }
TEST_P(Undistort, qeliUndistortRadial_16u_C3R) { agreesWithModel<Qel16u>(qeliUndistortRadial_16u_C3R, 3); }
TEST_P(Undistort, qeliUndistortRadial_32f_C1R) { agreesWithModel<Qel32f>(qeliUndistortRadial_32f_C1R, 1); }
TEST_P(Undistort, qeliUndistortRadial_32f_C3R) { agreesWithModel<Qel32f>(qeliUndistortRadial_32f_C3R, 3); }

// A lens without distortion copies all but the last row and column, which stay as they were.
TEST_P(Undistort, WithoutDistortion) {
    for (const QelSize size : {QelSize{1, 1}, {1, 9}, {9, 1}, {2, 2}, {50, 7}}) {
        kit::Trial trial(1, size);
        kit::Image<Qel8u> src(trial), got(size, 77), want(got);
        for (int y = 0; y + 1 < size.height; ++y)
            for (int x = 0; x + 1 < size.width; ++x) want.at(x, y) = src.at(x, y);
        ASSERT_EQ(qelStatusOk, qeliUndistortRadial_8u_C1R(src.data(), src.step(), got.data(), got.step(), size, 30, 40,
                                                          4, 5, 0, 0, nullptr));
        EXPECT_TRUE(sameBits(want, got)) << trial;
    }
    // Of one row or column, no kernel may be needed.
    Qel32f pixel[4] = {1, 2, 3, 4}, result[4] = {};
    EXPECT_EQ(qelStatusOk, qeliUndistortRadial_32f_C1R(pixel, 8, result, 8, {2, 2}, 1, 1, 0, 0, 0, 0, nullptr));
    EXPECT_EQ(1, result[0]);
    EXPECT_EQ(0, result[1]);
}

TEST_P(Undistort, qeliCreateMapCameraUndistort_32f_C1R) {
    for (uint32_t seed = 0; seed < 500; ++seed) {
        kit::Trial trial(seed, seed < 490 ? QelSize{int(seed % 67) + 1, int(seed % 11) + 1} : QelSize{517, 260});
        Lens l = lensOf(trial, trial.size);
        if (seed % 3 == 0) l.p1 = l.p2 = 0;
        kit::Image<Qel32f> xGot(trial), yGot(trial), xWant(xGot), yWant(yGot);
        mapModel(xWant, yWant, l);
        ASSERT_EQ(qelStatusOk,
                  qeliCreateMapCameraUndistort_32f_C1R(xGot.data(), xGot.step(), yGot.data(), yGot.step(), trial.size,
                                                       l.fx, l.fy, l.cx, l.cy, l.k1, l.k2, l.p1, l.p2, nullptr))
            << trial;
        ASSERT_TRUE(sameResults(xWant, xGot)) << trial;
        ASSERT_TRUE(sameResults(yWant, yGot)) << trial;
    }
}

// Large maps that are aligned to 16 bytes, but not alike to anything wider, and such as are not.
TEST_P(Undistort, LargeMapsAtAnyPlace) {
    constexpr int kWidth = 515, kHeight = 256, kStep = 2080;
    const Lens lens = {500, 510, 250, 130, -0.2F, 0.05F, 0.001F, 0};
    for (const bool isShort : {false, true}) {
        Lens l = lens;
        if (isShort) l.p1 = 0;
        kit::Image<Qel32f> xWant({kWidth, kHeight}, 0), yWant({kWidth, kHeight}, 0);
        mapModel(xWant, yWant, l);
        for (const int offset : {0, 4, 1}) {
            alignas(64) static Qel32f xRoom[kStep / 4 * kHeight + 16], yRoom[kStep / 4 * kHeight + 16];
            Qel32f *xMap = xRoom + offset, *yMap = yRoom;
            ASSERT_EQ(qelStatusOk,
                      qeliCreateMapCameraUndistort_32f_C1R(xMap, kStep, yMap, kStep, {kWidth, kHeight}, l.fx, l.fy,
                                                           l.cx, l.cy, l.k1, l.k2, l.p1, l.p2, nullptr));
            for (int y = 0; y < kHeight; ++y)
                for (int x = 0; x < kWidth; ++x) {
                    ASSERT_TRUE(kit::sameBits(xWant.at(x, y), xMap[y * (kStep / 4) + x])) << x << ", " << y;
                    ASSERT_TRUE(kit::sameBits(yWant.at(x, y), yMap[y * (kStep / 4) + x])) << x << ", " << y;
                }
        }
    }
}

TEST(UndistortSize, qeliUndistortGetSize) {
    const struct {
        QelSize size;
        int bytes;
    } cases[] = {{{1, 1}, 128}, {{4, 1000}, 128}, {{5, 1}, 224}, {{640, 480}, 15392}};
    for (const auto& c : cases) {
        int bytes = 0;
        EXPECT_EQ(qelStatusOk, qeliUndistortGetSize(c.size, &bytes));
        EXPECT_EQ(c.bytes, bytes);
    }
    CHECKS_OF(qeliUndistortGetSize).run();
}

TEST(UndistortChecks, EveryMember) {
    const auto sweep = [](auto checks, int channels) {
        checks.template channels<0>(channels)
            .template channels<2>(channels)
            .template optional<11>()
            .template fault<5>("fx 0", qelStatusBadArg, 0)
            .template fault<5>("fx -0", qelStatusBadArg, -0.0F)
            .template fault<6>("fy 0", qelStatusBadArg, 0)
            .run();
    };
    sweep(CHECKS_OF(qeliUndistortRadial_8u_C1R), 1);
    sweep(CHECKS_OF(qeliUndistortRadial_8u_C3R), 3);
    sweep(CHECKS_OF(qeliUndistortRadial_16u_C1R), 1);
    sweep(CHECKS_OF(qeliUndistortRadial_16u_C3R), 3);
    sweep(CHECKS_OF(qeliUndistortRadial_32f_C1R), 1);
    sweep(CHECKS_OF(qeliUndistortRadial_32f_C3R), 3);
    CHECKS_OF(qeliCreateMapCameraUndistort_32f_C1R)
        .optional<13>()
        .fault<5>("fx 0", qelStatusBadArg, 0)
        .fault<6>("fy -0", qelStatusBadArg, -0.0F)
        .run();
}

}  // namespace
