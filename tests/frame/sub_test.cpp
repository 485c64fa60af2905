#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <vector>

#include "frame/faults.h"
#include "frame/image_primitives.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"

namespace qel {
namespace {

class Sub : public kit::EveryTarget {};
ON_EVERY_TARGET(Sub);

// The difference of bytes divided by 2^scaleFactor, rounded to nearest with ties to even; or multiplied.
Qel8u model(Qel8u a, Qel8u b, int scaleFactor) {
    const int d = b > a ? b - a : 0;
    if (scaleFactor <= 0)
        return Qel8u(std::min<int64_t>(int64_t{d} << std::min(-int64_t{scaleFactor}, int64_t{32}), 255));
    if (scaleFactor > 16) return 0;
    const int unit = 1 << scaleFactor;
    const int floor = d / unit;
    const int rest = d % unit;
    return Qel8u(2 * rest > unit || (2 * rest == unit && floor % 2 != 0) ? floor + 1 : floor);
}

// Into a third image, over the first operand and over the second, which is also what the form in place does.
// `separate` and `inPlace` call the function on images.
template <class T, class Separate, class InPlace, class Model>
void agrees(kit::Trial& trial, int channels, const Separate& separate, const InPlace& inPlace,
            const Model& difference) {
    kit::Image<T> a(trial, channels), b(trial, channels), got(trial, channels), want(got);
    for (int y = 0; y < trial.size.height; ++y)
        for (int x = 0; x < trial.size.width * channels; ++x) want.at(x, y) = difference(a.at(x, y), b.at(x, y));
    ASSERT_EQ(qelStatusOk, separate(a, b, got)) << trial;
    ASSERT_TRUE(sameBits(want, got)) << trial;
    kit::Image<T> first(a), second(b);
    ASSERT_EQ(qelStatusOk, separate(first, b, first)) << trial;
    ASSERT_TRUE(sameBits(want, first)) << trial << ", over the first operand";
    ASSERT_EQ(qelStatusOk, separate(a, second, second)) << trial;
    ASSERT_TRUE(sameBits(want, second)) << trial << ", over the second operand";
    ASSERT_EQ(qelStatusOk, inPlace(a, b)) << trial;
    ASSERT_TRUE(sameBits(want, b)) << trial << ", in place";
}

// Small regions, mostly on a team of two, and larger ones of every team: width and height that add up to 255 and to
// 256, fewer rows than threads, and one. Teams are changed rarely, since threads come and go with them.
template <class Run>
void forAllTrials(const Run& run) {
    for (const uint32_t seed : kit::seeds(300)) {
        kit::Trial trial(seed);
        kit::core().threads = seed < 40 ? 1 : seed < 280 ? 2 : 3;
        ASSERT_NO_FATAL_FAILURE(run(trial));
    }
    for (const int threads : {3, 33, 1}) {
        for (const QelSize size : {QelSize{200, 55}, {200, 56}, {255, 1}, {1, 255}, {1, 254}, {3, 500}, {500, 34}}) {
            kit::Trial trial(uint32_t(size.width), size, threads);
            ASSERT_NO_FATAL_FAILURE(run(trial));
        }
    }
}

using Sub32f = qelStatus(const Qel32f*, int, const Qel32f*, int, Qel32f*, int, QelSize);
using SubInPlace32f = qelStatus(const Qel32f*, int, Qel32f*, int, QelSize);

void floatsAgree(Sub32f* separate, SubInPlace32f* inPlace, int channels) {
    forAllTrials([=](kit::Trial& trial) {
        agrees<Qel32f>(
            trial, channels,
            [=](auto& a, auto& b, auto& out) {
                return separate(a.data(), a.step(), b.data(), b.step(), out.data(), out.step(), a.size());
            },
            [=](auto& a, auto& b) { return inPlace(a.data(), a.step(), b.data(), b.step(), a.size()); },
            [](Qel32f a, Qel32f b) { return b - a; });
    });
}
TEST_P(Sub, qeliSub_32f_C1R_and_qeliSub_32f_C1IR) { floatsAgree(qeliSub_32f_C1R, qeliSub_32f_C1IR, 1); }
TEST_P(Sub, qeliSub_32f_C3R_and_qeliSub_32f_C3IR) { floatsAgree(qeliSub_32f_C3R, qeliSub_32f_C3IR, 3); }
TEST_P(Sub, qeliSub_32f_C4R_and_qeliSub_32f_C4IR) { floatsAgree(qeliSub_32f_C4R, qeliSub_32f_C4IR, 4); }

using Sub8u = qelStatus(const Qel8u*, int, const Qel8u*, int, Qel8u*, int, QelSize, int);
using SubInPlace8u = qelStatus(const Qel8u*, int, Qel8u*, int, QelSize, int);

void bytesAgree(Sub8u* separate, SubInPlace8u* inPlace, int channels) {
    forAllTrials([=](kit::Trial& trial) {
        const int scaleFactor = trial.between(-9, 10);
        agrees<Qel8u>(
            trial, channels,
            [=](auto& a, auto& b, auto& out) {
                return separate(a.data(), a.step(), b.data(), b.step(), out.data(), out.step(), a.size(), scaleFactor);
            },
            [=](auto& a, auto& b) { return inPlace(a.data(), a.step(), b.data(), b.step(), a.size(), scaleFactor); },
            [=](Qel8u a, Qel8u b) { return model(a, b, scaleFactor); });
    });
}
TEST_P(Sub, qeliSub_8u_C1RSfs_and_qeliSub_8u_C1IRSfs) { bytesAgree(qeliSub_8u_C1RSfs, qeliSub_8u_C1IRSfs, 1); }
TEST_P(Sub, qeliSub_8u_C3RSfs_and_qeliSub_8u_C3IRSfs) { bytesAgree(qeliSub_8u_C3RSfs, qeliSub_8u_C3IRSfs, 3); }
TEST_P(Sub, qeliSub_8u_C4RSfs_and_qeliSub_8u_C4IRSfs) { bytesAgree(qeliSub_8u_C4RSfs, qeliSub_8u_C4IRSfs, 4); }

TEST_P(Sub, EveryPairOfBytesAtEveryScale) {
    std::vector<Qel8u> a(0x10000), b(0x10000), want(0x10000), got(0x10000);
    for (size_t i = 0; i < 0x10000; ++i) a[i] = Qel8u(i >> 8), b[i] = Qel8u(i);
    std::vector<int> scales = {INT_MIN, INT_MIN + 1, INT_MAX};
    for (int scale = -40; scale <= 40; ++scale) scales.push_back(scale);
    for (const int scale : scales) {
        Qel8u ofDifference[256];
        for (int d = 0; d < 256; ++d) ofDifference[d] = model(0, Qel8u(d), scale);
        for (size_t i = 0; i < 0x10000; ++i) want[i] = ofDifference[b[i] > a[i] ? b[i] - a[i] : 0];
        const QelSize size = {0x10000, 1};
        ASSERT_EQ(qelStatusOk, qeliSub_8u_C1RSfs(a.data(), 1, b.data(), 1, got.data(), 1, size, scale));
        ASSERT_EQ(want, got) << "scale " << scale;
        got = b;
        ASSERT_EQ(qelStatusOk, qeliSub_8u_C1IRSfs(a.data(), 1, got.data(), 1, size, scale));
        ASSERT_EQ(want, got) << "in place, scale " << scale;
    }
}

TEST(SubChecks, EveryMember) {
    Qel8u* const a8 = watched<Qel8u>(0);
    Qel8u* const b8 = watched<Qel8u>(1);
    Qel8u* const c8 = watched<Qel8u>(2);
    Qel32f* const a = watched<Qel32f>(0);
    Qel32f* const b = watched<Qel32f>(1);
    Qel32f* const c = watched<Qel32f>(2);
    const QelSize size = {7, 5};
    QEL_FAULTS(qeliSub_32f_C1R, a, 28, b, 28, c, 28, size).null<0>().null<2>().null<4>().size<6>().run();
    QEL_FAULTS(qeliSub_32f_C3R, a, 84, b, 84, c, 84, size).null<0>().null<2>().null<4>().size<6>().run();
    QEL_FAULTS(qeliSub_32f_C4R, a, 112, b, 112, c, 112, size).null<0>().null<2>().null<4>().size<6>().run();
    QEL_FAULTS(qeliSub_32f_C1IR, a, 28, b, 28, size).null<0>().null<2>().size<4>().run();
    QEL_FAULTS(qeliSub_32f_C3IR, a, 84, b, 84, size).null<0>().null<2>().size<4>().run();
    QEL_FAULTS(qeliSub_32f_C4IR, a, 112, b, 112, size).null<0>().null<2>().size<4>().run();
    for (const int scale : {-9, 0, 3, 9}) {
        QEL_FAULTS(qeliSub_8u_C1RSfs, a8, 7, b8, 7, c8, 7, size, scale).null<0>().null<2>().null<4>().size<6>().run();
        QEL_FAULTS(qeliSub_8u_C3RSfs, a8, 21, b8, 21, c8, 21, size, scale)
            .null<0>()
            .null<2>()
            .null<4>()
            .size<6>()
            .run();
        QEL_FAULTS(qeliSub_8u_C4RSfs, a8, 28, b8, 28, c8, 28, size, scale)
            .null<0>()
            .null<2>()
            .null<4>()
            .size<6>()
            .run();
        QEL_FAULTS(qeliSub_8u_C1IRSfs, a8, 7, b8, 7, size, scale).null<0>().null<2>().size<4>().run();
        QEL_FAULTS(qeliSub_8u_C3IRSfs, a8, 21, b8, 21, size, scale).null<0>().null<2>().size<4>().run();
        QEL_FAULTS(qeliSub_8u_C4IRSfs, a8, 28, b8, 28, size, scale).null<0>().null<2>().size<4>().run();
    }
}

}  // namespace
}  // namespace qel
