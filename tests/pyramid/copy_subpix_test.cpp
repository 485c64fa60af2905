#include "kit/checks.h"
#include "kit/every_target.h"
#include "kit/trial.h"
#include "pyramid/subpix_model.h"
#include "qelcv/pyramid.h"

namespace {

using namespace subpix;

Qel32f fractionOf(Qel32f d) {
    const Qel32f f = d - std::trunc(d);
    return f < 0 ? f + 1 : f;
}

struct Rule {
    Qel32f leastX, leastY;
    bool paired;
};
constexpr Rule kPlain = {0, 0, false}, kBytes = {1e-6F, 1e-9F, false}, kFloats = {1e-6F, 1e-6F, true};

template <class T, class R>
void model(const kit::Image<T>& src, kit::Image<R>& want, Qel32f dx, Qel32f dy, int scaleFactor, Rule rule) {
    const QelSize size = want.size();
    const Qel32f fx = std::max(fractionOf(dx), rule.leastX), fy = std::max(fractionOf(dy), rule.leastY);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            want.at(x, y) = four<T, R>(src, x, y, fx, fy, scaleFactor);
            if (!rule.paired || size.width >= 65 || size.height >= 65 || y % 2 == 0) continue;
            const Qel32f w10 = (1 - fx) * fy, w11 = fx * fy;
            const Qel32f above = (src.at(x, y) * w10 + src.at(x + 1, y) * w11) * ((1 - fy) / fy);
            want.at(x, y) = R(above + (src.at(x, y + 1) * w10 + src.at(x + 1, y + 1) * w11));
        }
}

constexpr Qel32f kShifts[] = {0,     0.5F,   0.25F, 0.999F, 1e-7F,       -0.3F, 3.7F,
                              -2.5F, -1e-9F, 0.1F,  1e-4F,  0.99999994F, 7,     1.0F / 32768};

template <class T, class R, class Call>
void agreesWithModel(Rule rule, const Call& call) {
    const auto run = [&](kit::Trial& trial) {
        const QelSize read = {trial.size.width + 1, trial.size.height + 1};
        kit::Image<T> src(trial, read);
        kit::Image<R> got(trial), want(got);
        const Qel32f dx = kShifts[trial.between(0, std::size(kShifts) - 1)];
        const Qel32f dy = kShifts[trial.between(0, std::size(kShifts) - 1)];
        const int scaleFactor = kIsQ14<T, R> && sizeof(R) == 2 ? trial.between(-20, 12) : 0;
        model(src, want, dx, dy, scaleFactor, rule);
        ASSERT_EQ(qelStatusOk, call(src.data(), src.step(), got.data(), got.step(), trial.size, dx, dy, scaleFactor))
            << trial;
        ASSERT_TRUE(sameResults(want, got)) << trial << ", dx " << dx << ", dy " << dy << ", scale " << scaleFactor;
    };
    for (uint32_t seed = 0; seed < 300; ++seed) {
        kit::Trial trial(seed);
        ASSERT_NO_FATAL_FAILURE(run(trial));
    }
    for (const QelSize size : {QelSize{64, 64}, {65, 3}, {3, 65}, {64, 65}, {65, 64}, {128, 2}, {129, 2}, {300, 70}}) {
        kit::Trial trial(0, size);
        ASSERT_NO_FATAL_FAILURE(run(trial));
    }
}

// Drops the argument that only one member takes.
template <class T, class R>
auto withoutScale(qelStatus (*function)(const T*, int, R*, int, QelSize, Qel32f, Qel32f)) {
    return [=](const T* pSrc, int srcStep, R* pDst, int dstStep, QelSize size, Qel32f dx, Qel32f dy, int) {
        return function(pSrc, srcStep, pDst, dstStep, size, dx, dy);
    };
}

class CopySubpix : public kit::EveryTarget {};
ON_EVERY_TARGET(CopySubpix);

TEST_P(CopySubpix, qeliCopySubpix_8u_C1R) {
    agreesWithModel<Qel8u, Qel8u>(kPlain, withoutScale(qeliCopySubpix_8u_C1R));
}
TEST_P(CopySubpix, qeliCopySubpix_8u16u_C1R_Sfs) {
    agreesWithModel<Qel8u, Qel16u>(kPlain, qeliCopySubpix_8u16u_C1R_Sfs);
}
TEST_P(CopySubpix, qeliCopySubpix_8u32f_C1R) {
    agreesWithModel<Qel8u, Qel32f>(kBytes, withoutScale(qeliCopySubpix_8u32f_C1R));
}
TEST_P(CopySubpix, qeliCopySubpix_16u_C1R) {
    agreesWithModel<Qel16u, Qel16u>(kPlain, withoutScale(qeliCopySubpix_16u_C1R));
}
TEST_P(CopySubpix, qeliCopySubpix_16u32f_C1R) {
    agreesWithModel<Qel16u, Qel32f>(kBytes, withoutScale(qeliCopySubpix_16u32f_C1R));
}
TEST_P(CopySubpix, qeliCopySubpix_32f_C1R) {
    agreesWithModel<Qel32f, Qel32f>(kFloats, withoutScale(qeliCopySubpix_32f_C1R));
}

// A sample between 0 and 16 and its three neighbours at a fraction of a half: all weights meet their samples.
TEST_P(CopySubpix, WhichWeightIsWhose) {
    const Qel8u src[2][2] = {{100, 200}, {40, 0}};
    const Qel16u deep[2][2] = {{1000, 2000}, {400, 0}};
    Qel8u result = 0;
    Qel16u deepResult = 0;
    EXPECT_EQ(qelStatusOk, qeliCopySubpix_8u_C1R(src[0], 2, &result, 1, {1, 1}, 0.25F, 0));
    EXPECT_EQ(125, result);
    EXPECT_EQ(qelStatusOk, qeliCopySubpix_8u_C1R(src[0], 2, &result, 1, {1, 1}, 0, 0.25F));
    EXPECT_EQ(85, result);
    EXPECT_EQ(qelStatusOk, qeliCopySubpix_8u16u_C1R_Sfs(src[0], 2, &deepResult, 2, {1, 1}, 0.5F, 0.5F, -7));
    EXPECT_EQ(85 * 128, deepResult);
    EXPECT_EQ(qelStatusOk, qeliCopySubpix_16u_C1R(deep[0], 4, &deepResult, 2, {1, 1}, 0.25F, 0));
    EXPECT_EQ(1250, deepResult);
}

// Every scale factor, to the ends of the range.
TEST_P(CopySubpix, AnyScaleFactor) {
    const Qel8u src[2][3] = {{255, 255, 0}, {255, 255, 1}};
    for (const int scaleFactor :
         {-2147483647 - 1, -1000, -31, -30, -29, -15, -14, -13, -8, -7, 0, 8, 9, 10, 17, 18, 1000, 2147483647}) {
        Qel16u got[2] = {1, 1};
        ASSERT_EQ(qelStatusOk, qeliCopySubpix_8u16u_C1R_Sfs(src[0], 3, got, 4, {2, 1}, 0, 0, scaleFactor));
        EXPECT_EQ(scaled<Qel16u>(255 * 16384, std::clamp(scaleFactor, -100, 100)), got[0]) << scaleFactor;
        EXPECT_EQ(scaled<Qel16u>(255 * 16382 + 1, std::clamp(scaleFactor, -100, 100)), got[1]) << scaleFactor;
    }
}

// No shift, not even one that is no number, leads out of the image.
TEST_P(CopySubpix, ShiftsOfAnyKind) {
    const Qel32f infinity = std::numeric_limits<Qel32f>::infinity(), nan = std::numeric_limits<Qel32f>::quiet_NaN();
    kit::Image<Qel8u> src({20, 5}, 9), got({19, 4}, 0);
    for (const Qel32f d : {infinity, -infinity, nan, 1e30F, -1e30F})
        EXPECT_EQ(qelStatusOk, qeliCopySubpix_8u_C1R(src.data(), src.step(), got.data(), got.step(), got.size(), d, d));
}

TEST(CopySubpixChecks, EveryMember) {
    // One row and one column more than the sweep's region.
    const kit::Image<Qel32f> room({7, 7}, 0);
    const auto* const bytes = reinterpret_cast<const Qel8u*>(room.data());
    const auto* const words = reinterpret_cast<const Qel16u*>(room.data());
    CHECKS_OF(qeliCopySubpix_8u_C1R).value<0>(bytes).run();
    CHECKS_OF(qeliCopySubpix_8u16u_C1R_Sfs).value<0>(bytes).run();
    CHECKS_OF(qeliCopySubpix_8u32f_C1R).value<0>(bytes).run();
    CHECKS_OF(qeliCopySubpix_16u_C1R).value<0>(words).run();
    CHECKS_OF(qeliCopySubpix_16u32f_C1R).value<0>(words).run();
    CHECKS_OF(qeliCopySubpix_32f_C1R).value<0>(room.data()).run();
}

}  // namespace
