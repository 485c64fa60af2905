#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "kit/checks.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/feature.h"

namespace {

constexpr Qel32f kInfinity = std::numeric_limits<Qel32f>::infinity();
constexpr Qel32f kNaN = std::numeric_limits<Qel32f>::quiet_NaN();
constexpr Qel32s kLowest = std::numeric_limits<Qel32s>::min();

// Of a NaN and another, the second operand.
template <class T>
T larger(T a, T b) {
    return a > b ? a : b;
}
template <class T>
T smaller(T a, T b) {
    return a < b ? a : b;
}

bool isExtreme(Qel32s v, Qel32s extreme) { return v == extreme; }
bool isExtreme(Qel32f v, Qel32f extreme) { return std::fabs(v - extreme) <= 1.1754943508222875e-38F; }
bool exceeds(Qel32s v, Qel32s threshold) { return std::abs(int64_t{v}) > threshold; }
bool exceeds(Qel32f v, Qel32f threshold) { return std::fabs(v) > threshold; }

// The neighbourhood in the order in which it is gone through: three rows of three, or the row's three, up and down.
template <class T>
T extremeAround(const kit::Image<T>& image, int x, int y, int norm, T (*extreme)(T, T)) {
    const auto ofRow = [&](int row) {
        return extreme(extreme(image.at(x - 1, row), image.at(x, row)), image.at(x + 1, row));
    };
    return norm == 0 ? extreme(extreme(ofRow(y - 1), ofRow(y)), ofRow(y + 1))
                     : extreme(extreme(ofRow(y), image.at(x, y - 1)), image.at(x, y + 1));
}

template <class T>
bool isPeak(const kit::Image<T>& image, int x, int y, T threshold, int norm) {
    const T v = image.at(x, y);
    return exceeds(v, threshold) && isExtreme(v, extremeAround(image, x, y, norm, v > 0 ? larger<T> : smaller<T>));
}

template <class T>
std::vector<QelPoint> model(const kit::Image<T>& image, T threshold, int maxPeakCount, int norm, int border) {
    std::vector<QelPoint> peaks;
    for (int y = border; y < image.size().height - border; ++y)
        for (int x = border; x < image.size().width - border; ++x)
            if (int(peaks.size()) < maxPeakCount && isPeak(image, x, y, threshold, norm)) peaks.push_back({x, y});
    return peaks;
}

template <class T>
struct Functions {
    qelStatus (*size)(int, int*);
    qelStatus (*find)(const T*, int, QelSize, T, QelPoint*, int, int*, int, int, Qel8u*);
};
constexpr Functions<Qel32s> k32s = {qeliFindPeaks3x3GetBufferSize_32s_C1R, qeliFindPeaks3x3_32s_C1R};
constexpr Functions<Qel32f> k32f = {qeliFindPeaks3x3GetBufferSize_32f_C1R, qeliFindPeaks3x3_32f_C1R};

// What a call lists. Nothing is written behind the last peak, nor outside of the scratch.
template <class T>
std::vector<QelPoint> found(const Functions<T>& functions, const kit::Image<T>& image, T threshold, int maxPeakCount,
                            int norm, int border, bool flush = true) {
    int bytes = 0, count = -1;
    EXPECT_EQ(qelStatusOk, functions.size(image.size().width, &bytes));
    kit::ScratchBlock scratch(bytes);
    std::vector<QelPoint> peaks(static_cast<size_t>(maxPeakCount), QelPoint{-7, -7});
    EXPECT_EQ(qelStatusOk, functions.find(image.data(), image.step(), image.size(), threshold, peaks.data(),
                                          maxPeakCount, &count, norm, border, flush ? scratch.flush() : scratch.odd()));
    EXPECT_TRUE(scratch.intact());
    EXPECT_LE(count, maxPeakCount);
    for (int i = std::max(count, 0); i < maxPeakCount; ++i) EXPECT_EQ(-7, peaks[size_t(i)].x);
    peaks.resize(static_cast<size_t>(std::clamp(count, 0, maxPeakCount)));
    return peaks;
}

bool same(const std::vector<QelPoint>& a, const std::vector<QelPoint>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](QelPoint p, QelPoint q) { return p.x == q.x && p.y == q.y; });
}

template <class T>
void agrees(const Functions<T>& functions, kit::Trial& trial, const kit::Image<T>& image, T threshold) {
    const int half = std::min(trial.size.width, trial.size.height) / 2;
    for (const int norm : {0, 1}) {
        const int border = trial.coin() ? 1 : trial.between(1, half);
        for (const int maxPeakCount : {1, trial.between(1, 20), trial.size.width * trial.size.height}) {
            const auto want = model(image, threshold, maxPeakCount, norm, border);
            const auto got = found(functions, image, threshold, maxPeakCount, norm, border, trial.coin());
            ASSERT_TRUE(same(want, got)) << trial << ", norm " << norm << ", border " << border << ", threshold "
                                         << threshold << ": " << want.size() << " peaks, got " << got.size();
        }
    }
}

template <class T>
void trialsAgree(const Functions<T>& functions, std::initializer_list<T> thresholds) {
    for (uint32_t seed = 0; seed < 200; ++seed) {
        kit::Trial trial(seed);
        trial.size.width += 1;
        trial.size.height += 1;
        kit::Image<T> image(trial);
        const T threshold = thresholds.begin()[seed % thresholds.size()];
        ASSERT_NO_FATAL_FAILURE(agrees(functions, trial, image, threshold));
        // Few values: plateaus, zeros and ties everywhere.
        for (int y = 0; y < trial.size.height; ++y)
            for (int x = 0; x < trial.size.width; ++x) image.at(x, y) = T(trial.between(-2, 2));
        ASSERT_NO_FATAL_FAILURE(agrees(functions, trial, image, T(seed % 3) - 1));
    }
}

class FindPeaks : public kit::EveryTarget {};
ON_EVERY_TARGET(FindPeaks);

TEST_P(FindPeaks, qeliFindPeaks3x3_32s_C1R) {
    trialsAgree(k32s, {0, 1 << 20, kLowest, -1, 1, std::numeric_limits<Qel32s>::max(), 1 << 30});
}
TEST_P(FindPeaks, qeliFindPeaks3x3_32f_C1R) { trialsAgree(k32f, {0.0F, 10.0F, -1.0F, 999.0F, kNaN, 1e29F, kInfinity}); }

TEST_P(FindPeaks, PlateausAreListedWhole) {
    kit::Image<Qel32s> image({8, 5}, 0);
    for (const int x : {2, 3, 4}) image.at(x, 2) = 9;
    image.at(6, 3) = -5;
    EXPECT_TRUE(same({{2, 2}, {3, 2}, {4, 2}, {6, 3}}, found(k32s, image, 4, 40, 0, 1)));
    EXPECT_TRUE(same({{2, 2}, {3, 2}}, found(k32s, image, 4, 2, 0, 1)));
    EXPECT_EQ(4u, found(k32s, image, 4, 40, 1, 1).size());
}

TEST_P(FindPeaks, ZerosArePeaksBelowZeroOnly) {
    const kit::Image<Qel32s> image({4, 3}, 0);
    EXPECT_TRUE(same({}, found(k32s, image, 0, 9, 0, 1)));
    EXPECT_TRUE(same({{1, 1}, {2, 1}}, found(k32s, image, -1, 9, 0, 1)));
    const kit::Image<Qel32s> lowest({3, 3}, kLowest);
    EXPECT_TRUE(same({{1, 1}}, found(k32s, lowest, 0x7FFFFFFF, 9, 0, 1)));
}

// Within the tolerance of the extreme is as good as the extreme; an infinity is at no distance from itself.
TEST_P(FindPeaks, FloatsNearTheExtreme) {
    constexpr Qel32f kTolerance = std::numeric_limits<Qel32f>::min();
    kit::Image<Qel32f> image({5, 3}, 0);
    image.at(1, 1) = 2 * kTolerance;
    image.at(2, 1) = kTolerance;
    image.at(3, 1) = std::nextafter(kTolerance, 0.0F);
    EXPECT_TRUE(same({{1, 1}, {2, 1}, {3, 1}}, found(k32f, image, 0.0F, 9, 0, 1)));
    image.at(1, 1) = std::nextafter(2 * kTolerance, 1.0F);
    EXPECT_TRUE(same({{1, 1}, {3, 1}}, found(k32f, image, 0.0F, 9, 0, 1)));

    kit::Image<Qel32f> infinite({5, 3}, 1);
    infinite.at(2, 1) = kInfinity;
    EXPECT_TRUE(same({}, found(k32f, infinite, 0.0F, 9, 0, 1)));
    infinite.at(2, 1) = -kInfinity;
    EXPECT_TRUE(same({{1, 1}, {3, 1}}, found(k32f, infinite, 0.0F, 9, 0, 1)));
    infinite.at(2, 1) = kNaN;
    EXPECT_TRUE(same(model(infinite, 0.0F, 9, 0, 1), found(k32f, infinite, 0.0F, 9, 0, 1)));
}

TEST_P(FindPeaks, ABorderOfHalfASideLeavesNothing) {
    const kit::Image<Qel32s> image({4, 9}, 1);
    EXPECT_TRUE(same({}, found(k32s, image, 0, 9, 0, 2)));
    const kit::Image<Qel32f> floats({9, 2}, 1);
    EXPECT_TRUE(same({}, found(k32f, floats, 0.0F, 9, 1, 1)));
    EXPECT_TRUE(same({{1, 1}}, found(k32s, kit::Image<Qel32s>({3, 3}, 1), 0, 9, 1, 1)));
}

template <class T>
void checks(const Functions<T>& functions, const std::string& name) {
    std::vector<Qel8u> scratch(1024);
    kit::Checks(name, functions.find)
        .template notAnImage<4>()
        .template notAnImage<6>()
        .template value<9>(scratch.data())
        .template faultAheadOfSteps<5>("no room", qelStatusBadSize, 0)
        .template faultAheadOfSteps<8>("border 0", qelStatusBadSize, 0)
        .template faultAheadOfSteps<8>("border beyond half the height", qelStatusBadSize, 3)
        .template faultAheadOfSteps<8>("border beyond half the width", qelStatusBadSize, 4)
        .template fault<7>("norm 2", qelStatusBadArg, 2)
        .template fault<7>("norm -1", qelStatusBadArg, -1)
        .run();
}

TEST(FindPeaksChecks, EveryMember) {
    checks(k32s, "qeliFindPeaks3x3_32s_C1R");
    checks(k32f, "qeliFindPeaks3x3_32f_C1R");
}

TEST(FindPeaksBufferSize, AsDocumented) {
    for (const auto size : {qeliFindPeaks3x3GetBufferSize_32s_C1R, qeliFindPeaks3x3GetBufferSize_32f_C1R}) {
        const int widths[][2] = {{1, 160}, {2, 160}, {3, 288}, {6, 288}, {7, 416}, {640, 161 * 128 + 32}};
        for (const auto& [width, want] : widths) {
            int bytes = 0;
            EXPECT_EQ(qelStatusOk, size(width, &bytes));
            EXPECT_EQ(want, bytes) << width;
        }
        int bytes = 7;
        EXPECT_EQ(qelStatusNullPointer, size(0, nullptr));
        EXPECT_EQ(qelStatusBadSize, size(0, &bytes));
        EXPECT_EQ(qelStatusBadSize, size(-5, &bytes));
        EXPECT_EQ(qelStatusOverflow, size(std::numeric_limits<int>::max(), &bytes));
        EXPECT_EQ(7, bytes);
    }
}

}  // namespace
