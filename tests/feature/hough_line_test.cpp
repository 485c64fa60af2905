#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "frame/faults.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/feature.h"

namespace {

constexpr Qel32f kInfinity = std::numeric_limits<Qel32f>::infinity();
constexpr Qel32f kNaN = std::numeric_limits<Qel32f>::quiet_NaN();
constexpr Qel32f kDegree = 0.0174532925F;

struct Line {
    int rho, theta, votes;
};

struct Region {
    QelPointPolar low, high;
};

// The whole accumulator at once: all counters of all angles, with a frame of zeroes.
class Model {
public:
    Model(const kit::Image<Qel8u>& image, QelPointPolar delta, const Region* region)
        : delta_(delta), nRho_(int(Qel32f(2 * (image.size().width + image.size().height) + 1) / delta.rho)) {
        half_ = (nRho_ - 1) / 2;
        nTheta_ = int(3.14159 / double{delta.theta}) + 1;
        votes_.assign(size_t(nTheta_ + 2) * size_t(nRho_ + 4), 0);
        Qel32f angle = 0;
        for (int t = 0; t < nTheta_; ++t, angle += delta.theta) {
            const Qel32f inverse = 1 / delta.rho;
            const int sine = int(std::sin(double{angle}) * 1024.0 * double{inverse});
            const int cosine = int(std::cos(double{angle}) * 1024.0 * double{inverse});
            if (region != nullptr && !isInside(t, *region)) continue;
            for (int y = 0; y < image.size().height; ++y)
                for (int x = 0; x < image.size().width; ++x)
                    if (image.at(x, y) != 0) vote(x, y, t, cosine, sine, region);
        }
    }

    std::vector<QelPointPolar> lines(int threshold, int maxLineCount) const {
        std::vector<Line> list;
        for (int t = 0; t < nTheta_; ++t)
            for (int r = -1; r <= nRho_; ++r)
                if (isPeak(r, t, threshold)) list.push_back({r, t, at(r, t)});
        std::stable_sort(list.begin(), list.end(), [](const Line& a, const Line& b) { return a.votes > b.votes; });
        if (int(list.size()) > maxLineCount) list.resize(size_t(maxLineCount));
        std::vector<QelPointPolar> result;
        result.reserve(list.size());
        for (const Line& line : list)
            result.push_back({Qel32f(line.rho - half_) * delta_.rho, Qel32f(line.theta) * delta_.theta});
        return result;
    }

private:
    bool isInside(int t, const Region& region) const {
        const Qel32f theta = Qel32f(t) * delta_.theta;
        return theta >= region.low.theta && theta <= region.high.theta;
    }
    void vote(int x, int y, int t, int cosine, int sine, const Region* region) {
        if (region == nullptr) {
            const Qel32f v = Qel32f(x) * Qel32f(cosine) + Qel32f(y) * Qel32f(sine);
            ++at(((int(std::nearbyint(v)) + 512) >> 10) + half_, t);
        } else {
            const int r = ((cosine * x + y * sine + 512) >> 10) + half_;
            if (r >= std::trunc(Qel32f(half_) + region->low.rho / delta_.rho) &&
                r <= std::trunc(Qel32f(half_) + region->high.rho / delta_.rho))
                ++at(r, t);
        }
    }
    bool isPeak(int r, int t, int threshold) const {
        const int c = at(r, t);
        return c > threshold && c > at(r - 1, t) && c >= at(r + 1, t) && c > at(r, t - 1) && c >= at(r, t + 1);
    }
    size_t index(int r, int t) const {
        EXPECT_TRUE(r >= -2 && r <= nRho_ + 1);
        return size_t(t + 1) * size_t(nRho_ + 4) + size_t(r + 2);
    }
    int& at(int r, int t) { return votes_[index(r, t)]; }
    int at(int r, int t) const { return votes_[index(r, t)]; }

    QelPointPolar delta_;
    int nRho_, half_ = 0, nTheta_ = 0;
    std::vector<int> votes_;
};

std::vector<QelPointPolar> found(const kit::Image<Qel8u>& image, QelPointPolar delta, int threshold, int maxLineCount,
                                 Region* region = nullptr, bool flush = true) {
    int bytes = 0, count = -1;
    EXPECT_EQ(qelStatusOk, qeliHoughLineGetSize_8u_C1R(image.size(), delta, maxLineCount, &bytes));
    kit::ScratchBlock scratch(bytes);
    Qel8u* const buffer = flush ? scratch.flush() : scratch.odd();
    std::vector<QelPointPolar> lines(static_cast<size_t>(maxLineCount), QelPointPolar{-7, -7});
    if (region == nullptr) {
        EXPECT_EQ(qelStatusOk, qeliHoughLine_8u32f_C1R(image.data(), image.step(), image.size(), delta, threshold,
                                                       lines.data(), maxLineCount, &count, buffer));
    } else {
        QelPointPolar corners[2] = {region->low, region->high};
        EXPECT_EQ(qelStatusOk, qeliHoughLine_Region_8u32f_C1R(image.data(), image.step(), image.size(), lines.data(),
                                                              corners, maxLineCount, &count, delta, threshold, buffer));
        *region = {corners[0], corners[1]};
    }
    EXPECT_TRUE(scratch.intact());
    for (int i = std::max(count, 0); i < maxLineCount; ++i) EXPECT_EQ(-7, lines[size_t(i)].theta);
    lines.resize(static_cast<size_t>(std::clamp(count, 0, maxLineCount)));
    return lines;
}

bool same(const std::vector<QelPointPolar>& a, const std::vector<QelPointPolar>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const QelPointPolar& p, const QelPointPolar& q) { return kit::sameBits(p, q); });
}

// Sparse points, or lines of them, in an image of zeroes.
void draw(kit::Trial& trial, kit::Image<Qel8u>& image) {
    const auto [width, height] = image.size();
    const int density = trial.between(0, 40);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.at(x, y) = trial.between(0, 100) < density ? Qel8u(trial.between(1, 255)) : Qel8u{0};
    if (trial.coin())
        for (int x = 0; x < width; ++x) image.at(x, x * (height - 1) / width) = 255;
    if (trial.coin())
        for (int y = 0; y < height; ++y) image.at(width / 3, y) = 1;
}

void agrees(kit::Trial& trial, bool withRegion) {
    kit::Image<Qel8u> image(trial);
    draw(trial, image);
    const Qel32f sides = Qel32f(trial.size.width + trial.size.height);
    const Qel32f rhos[] = {1, 0.5F, 2, 0.37F, sides, sides / 2, std::min(sides, 7.3F)};
    const Qel32f thetas[] = {kDegree, 0.1F, 3 * kDegree, 3.14159F, 1.7F, 0.5F};
    const QelPointPolar delta = {rhos[trial.between(0, 6)], thetas[trial.between(0, 5)]};
    Region region = {{Qel32f(trial.between(-40, 20)), Qel32f(trial.between(-10, 150)) / 100},
                     {Qel32f(trial.between(20, 90)), Qel32f(trial.between(150, 400)) / 100}};
    const Region given = region;
    const auto clamped = [](Qel32f theta) { return std::clamp(theta, 0.0F, 3.14159F); };
    const Region effective = {{given.low.rho, clamped(given.low.theta)}, {given.high.rho, clamped(given.high.theta)}};
    const Model model(image, delta, withRegion ? &effective : nullptr);
    for (const int maxLineCount : {1, trial.between(1, 9), 300}) {
        const int threshold = trial.between(1, 6);
        region = given;
        const auto got = found(image, delta, threshold, maxLineCount, withRegion ? &region : nullptr, trial.coin());
        const auto want = model.lines(threshold, maxLineCount);
        ASSERT_TRUE(same(want, got)) << trial << ", delta " << delta.rho << " " << delta.theta << ", threshold "
                                     << threshold << ": " << want.size() << " lines, got " << got.size();
        if (!withRegion) continue;
        ASSERT_TRUE(kit::sameBits(effective, region));
    }
}

class HoughLine : public kit::EveryTarget {};
ON_EVERY_TARGET(HoughLine);

TEST_P(HoughLine, qeliHoughLine_8u32f_C1R) {
    for (uint32_t seed = 0; seed < 150; ++seed) {
        kit::Trial trial(seed);
        ASSERT_NO_FATAL_FAILURE(agrees(trial, false));
    }
}
TEST_P(HoughLine, qeliHoughLine_Region_8u32f_C1R) {
    for (uint32_t seed = 0; seed < 150; ++seed) {
        kit::Trial trial(seed);
        ASSERT_NO_FATAL_FAILURE(agrees(trial, true));
    }
}

// More points in a row than are counted at a time, and rows that end where the count does.
TEST_P(HoughLine, ManyPoints) {
    for (const QelSize size : {QelSize{1023, 3}, {1024, 3}, {1025, 2}, {2500, 2}, {512, 5}}) {
        const kit::Image<Qel8u> image(size, 1);
        const QelPointPolar delta = {1, 10 * kDegree};
        EXPECT_TRUE(same(Model(image, delta, nullptr).lines(1, 50), found(image, delta, 1, 50)));
    }
}

// Where products of columns and cosines are beyond the integers of single precision, the two functions differ.
TEST_P(HoughLine, SinglePrecisionRounds) {
    kit::Image<Qel8u> image({30000, 2}, 0);
    for (int x = 0; x < 30000; x += 7) image.at(x, x % 2) = 1;
    const QelPointPolar delta = {0.25F, 0.4F};
    EXPECT_TRUE(same(Model(image, delta, nullptr).lines(2, 200), found(image, delta, 2, 200)));
    Region all = {{-1e6F, 0}, {1e6F, 4}};
    const Region clamped = {{-1e6F, 0}, {1e6F, 3.14159F}};
    EXPECT_TRUE(same(Model(image, delta, &clamped).lines(2, 200), found(image, delta, 2, 200, &all)));
}

TEST_P(HoughLine, FindsDrawnLines) {
    kit::Image<Qel8u> image({100, 80}, 0);
    EXPECT_TRUE(found(image, {1, kDegree}, 1, 9).empty());
    for (int y = 0; y < 80; ++y) image.at(37, y) = 255;
    EXPECT_TRUE(same({{37, 0}}, found(image, {1, kDegree}, 79, 9)));
    EXPECT_TRUE(found(image, {1, kDegree}, 80, 9).empty());
    for (int x = 0; x < 100; ++x) image.at(x, 20) = 255;
    const auto lines = found(image, {1, kDegree}, 79, 9);
    ASSERT_EQ(2u, lines.size());
    EXPECT_EQ(20, lines[0].rho);
    EXPECT_NEAR(1.5707963, lines[0].theta, 1e-5);
    EXPECT_EQ(37, lines[1].rho);
    EXPECT_EQ(1u, found(image, {1, kDegree}, 79, 1).size());
    EXPECT_EQ(20, found(image, {1, kDegree}, 79, 1)[0].rho);
}

TEST_P(HoughLine, OfEqualLinesTheSmallerAngleAndDistanceFirst) {
    kit::Image<Qel8u> image({60, 60}, 0);
    for (int i = 0; i < 60; ++i) image.at(10, i) = image.at(50, i) = image.at(i, 30) = 1;
    const auto lines = found(image, {1, 90 * kDegree}, 40, 9);
    ASSERT_EQ(3u, lines.size());
    EXPECT_EQ(10, lines[0].rho);
    EXPECT_EQ(50, lines[1].rho);
    EXPECT_EQ(30, lines[2].rho);
    EXPECT_GT(lines[2].theta, 1);
}

TEST_P(HoughLine, RegionsBeyondThePlane) {
    kit::Image<Qel8u> image({50, 40}, 0);
    for (int y = 0; y < 40; ++y) image.at(12, y) = 255;
    Region wide = {{-kInfinity, -5}, {kInfinity, 9}};
    EXPECT_TRUE(same({{12, 0}}, found(image, {1, kDegree}, 39, 9, &wide)));
    EXPECT_EQ(0.0F, wide.low.theta);
    EXPECT_EQ(3.14159F, wide.high.theta);
    for (const Qel32f rho : {13.0F, 1e9F, kInfinity}) {
        Region away = {{rho, 0}, {kInfinity, 1}};
        EXPECT_TRUE(found(image, {1, kDegree}, 30, 9, &away).empty());
    }
    Region exact = {{12, 0}, {12, 0}};
    EXPECT_TRUE(same({{12, 0}}, found(image, {1, kDegree}, 39, 9, &exact)));
    Region later = {{0, 3.14159F}, {50, 4}};
    EXPECT_TRUE(found(image, {1, kDegree}, 39, 9, &later).empty());
}

// Rows may overlap: only a step below 1 is an error.
TEST_P(HoughLine, RowsThatOverlap) {
    std::vector<Qel8u> samples(40, 1);
    std::vector<Qel8u> scratch(1 << 16);
    QelPointPolar line;
    int count = -1;
    EXPECT_EQ(qelStatusOk,
              qeliHoughLine_8u32f_C1R(samples.data(), 1, {20, 20}, {1, 1.6F}, 19, &line, 1, &count, scratch.data()));
    EXPECT_EQ(1, count);
}

Qel8u* scratchOfChecks() {
    static std::vector<Qel8u> scratch(1 << 16);
    return scratch.data();
}

TEST(HoughLineChecks, qeliHoughLine_8u32f_C1R) {
    using qel::Faults, qel::watched;
    QEL_FAULTS(qeliHoughLine_8u32f_C1R, watched<Qel8u>(0), 7, {7, 5}, {1, 0.5F}, 3, watched<QelPointPolar>(1), 4,
               watched<int>(2), scratchOfChecks())
        .null<0>()
        .null<5>()
        .null<7>()
        .null<8>()
        .step<1>()
        .size<2>()
        .length<6>()
        .fault<3>(qelStatusBadArg, {0, 0.5F})
        .fault<3>(qelStatusBadArg, {-1, 0.5F})
        .fault<3>(qelStatusBadArg, {kNaN, 0.5F})
        .fault<3>(qelStatusBadArg, {12.5F, 0.5F})
        .fault<3>(qelStatusBadArg, {1, 0})
        .fault<3>(qelStatusBadArg, {1, 3.1416F})
        .fault<3>(qelStatusBadArg, {1, kNaN})
        .fault<4>(qelStatusBadArg, 0)
        .run();
}

TEST(HoughLineChecks, qeliHoughLine_Region_8u32f_C1R) {
    using qel::Faults, qel::watched;
    auto* const corners = watched<QelPointPolar>(3);
    corners[0] = {-5, 0};
    corners[1] = {5, 4};
    QEL_FAULTS(qeliHoughLine_Region_8u32f_C1R, watched<Qel8u>(0), 7, {7, 5}, watched<QelPointPolar>(1), corners, 4,
               watched<int>(2), {1, 0.5F}, 3, scratchOfChecks())
        .null<0>()
        .null<3>()
        .null<4>()
        .null<6>()
        .null<9>()
        .step<1>()
        .size<2>()
        .length<5>()
        .fault<7>(qelStatusBadArg, {0, 0.5F})
        .fault<7>(qelStatusBadArg, {12.5F, 0.5F})
        .fault<7>(qelStatusBadArg, {1, 0})
        .fault<7>(qelStatusBadArg, {1, 3.1416F})
        .fault<8>(qelStatusBadArg, 0)
        .run();
}

// Seen before the corners are clamped, and the only error that writes: no lines.
TEST(HoughLineChecks, CornersInTheWrongOrder) {
    const Qel8u pixel = 1;
    for (const Region& region : {Region{{0, 2}, {5, 1.9F}}, Region{{0, 9}, {5, 8}}, Region{{6, 0}, {5, 1}}}) {
        QelPointPolar corners[2] = {region.low, region.high}, line = {-7, -7};
        int count = 5;
        EXPECT_EQ(qelStatusBadRange, qeliHoughLine_Region_8u32f_C1R(&pixel, 1, {1, 1}, &line, corners, 1, &count,
                                                                    {1, 1}, 1, scratchOfChecks()));
        EXPECT_EQ(0, count);
        EXPECT_EQ(-7, line.rho);
        EXPECT_TRUE(kit::sameBits(corners[0], region.low) && kit::sameBits(corners[1], region.high));
    }
}

TEST(HoughLineSize, qeliHoughLineGetSize_8u_C1R) {
    int bytes = 0;
    EXPECT_EQ(qelStatusOk, qeliHoughLineGetSize_8u_C1R({640, 480}, {1, kDegree}, 100, &bytes));
    EXPECT_EQ((4 * 640 + 48) * 480 + 1600 + 16 * 2241 + 8 * 179 + 264, bytes);
    EXPECT_EQ(qelStatusOk, qeliHoughLineGetSize_8u_C1R({3, 2}, {0.3F, 2}, 1, &bytes));
    EXPECT_EQ((12 + 48) * 2 + 16 + 16 * 36 + 8 + 264, bytes);
    EXPECT_EQ(qelStatusSizeOverflow, qeliHoughLineGetSize_8u_C1R({20000, 30000}, {1, 1}, 0, &bytes));
    EXPECT_EQ(static_cast<int>(80048u * 30000u + 16 * 100001u + 24 + 264), bytes);
    bytes = 7;
    EXPECT_EQ(qelStatusNullPointer, qeliHoughLineGetSize_8u_C1R({0, 1}, {0, 0}, 1, nullptr));
    EXPECT_EQ(qelStatusBadSize, qeliHoughLineGetSize_8u_C1R({0, 1}, {0, 0}, 1, &bytes));
    EXPECT_EQ(qelStatusBadArg, qeliHoughLineGetSize_8u_C1R({1, 1}, {0, 1}, 1, &bytes));
    EXPECT_EQ(qelStatusBadArg, qeliHoughLineGetSize_8u_C1R({1, 1}, {1, -1}, 1, &bytes));
    EXPECT_EQ(7, bytes);
}

}  // namespace
