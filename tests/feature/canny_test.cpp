#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>
#include <vector>

#include "kit/checks.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/feature.h"

namespace {

constexpr Qel32f kInfinity = std::numeric_limits<Qel32f>::infinity();

struct Thresholds {
    Qel32f low, high;
};

// The rule, pixel by pixel, on whole images.
template <class T>
class Model {
public:
    Model(const kit::Image<T>& dx, const kit::Image<T>& dy, Thresholds thresholds)
        : dx_(dx), dy_(dy), size_(dx.size()), edges_(pixels()), candidates_(pixels()) {
        magnitudes_.resize(pixels());
        for (int y = 0; y < size_.height; ++y)
            for (int x = 0; x < size_.width; ++x) magnitudes_[index(x, y)] = kept(x, y, thresholds.low);
        for (int y = 0; y < size_.height; ++y)
            for (int x = 0; x < size_.width; ++x) candidates_[index(x, y)] = isMaximum(x, y);
        for (int y = 0; y < size_.height; ++y)
            for (int x = 0; x < size_.width; ++x)
                edges_[index(x, y)] = candidates_[index(x, y)] && isStrong(x, y, thresholds.high);
        while (grow()) {
        }
    }
    bool edge(int x, int y) const { return edges_[index(x, y)]; }
    bool candidate(int x, int y) const { return candidates_[index(x, y)]; }

private:
    size_t pixels() const { return size_t(size_.width) * size_t(size_.height); }
    size_t index(int x, int y) const { return size_t(y) * size_t(size_.width) + size_t(x); }

    // Sums of 16s fit a double exactly, and so do those of 32f that are rounded before.
    double kept(int x, int y, Qel32f low) const {
        if constexpr (std::is_same_v<T, Qel16s>) {
            const int sum = std::abs(int{dx_.at(x, y)}) + std::abs(int{dy_.at(x, y)});
            const int m = x < size_.width / 8 * 8 ? std::min(sum, 65535) : sum;
            return m > std::trunc(low) ? m : 0;
        } else {
            const Qel32f m = std::fabs(dx_.at(x, y)) + std::fabs(dy_.at(x, y));
            return m < low ? 0 : m;
        }
    }
    bool isStrong(int x, int y, Qel32f high) const {
        const Qel32f limit = std::is_same_v<T, Qel16s> ? std::trunc(high) : high;
        return m(x, y) > limit;
    }
    double m(int x, int y) const {
        return x < 0 || y < 0 || x >= size_.width || y >= size_.height ? 0 : magnitudes_[index(x, y)];
    }

    enum Sector { kVertical, kHorizontal, kDiagonal };
    Sector sector(int x, int y) const {
        const Qel32f dx = std::fabs(Qel32f(dx_.at(x, y)));
        const Qel32f dy = std::fabs(Qel32f(dy_.at(x, y)));
        const bool tail = std::is_same_v<T, Qel16s> && x >= size_.width / 4 * 4;
        const Qel32f steep = tail ? Qel32f(double{dx} * 2.414213562373095) : dx * 2.414213657F;
        const Qel32f flat = tail ? Qel32f(double{dx} * 0.41421356237309503) : dx * 0.414213568F;
        return steep < dy ? kVertical : dy < flat ? kHorizontal : kDiagonal;
    }
    bool isMaximum(int x, int y) const {
        const double c = m(x, y);
        if (c == 0) return false;
        switch (sector(x, y)) {
            case kVertical:
                return c > m(x, y - 1) && c >= m(x, y + 1);
            case kHorizontal:
                return c > m(x - 1, y) && c >= m(x + 1, y);
            default:
                break;
        }
        const bool sameSign = std::signbit(Qel32f(dx_.at(x, y))) == std::signbit(Qel32f(dy_.at(x, y)));
        return sameSign ? c > m(x - 1, y - 1) && c > m(x + 1, y + 1) : c > m(x + 1, y - 1) && c > m(x - 1, y + 1);
    }

    // Makes edges of candidates beside edges, forward and backward; false where nothing changed.
    bool grow() {
        bool changed = false;
        for (size_t i = 0; i < 2 * pixels(); ++i) {
            const size_t at = i < pixels() ? i : 2 * pixels() - 1 - i;
            if (!candidates_[at] || edges_[at] || !touchesEdge(int(at) % size_.width, int(at) / size_.width)) continue;
            edges_[at] = changed = true;
        }
        return changed;
    }
    bool touchesEdge(int x, int y) const {
        for (int v = std::max(y - 1, 0); v <= std::min(y + 1, size_.height - 1); ++v)
            for (int u = std::max(x - 1, 0); u <= std::min(x + 1, size_.width - 1); ++u)
                if (edges_[index(u, v)]) return true;
        return false;
    }

    const kit::Image<T>& dx_;
    const kit::Image<T>& dy_;
    QelSize size_;
    std::vector<double> magnitudes_;
    std::vector<bool> edges_, candidates_;
};

qelStatus canny(const kit::Image<Qel16s>& dx, const kit::Image<Qel16s>& dy, Qel8u* pDst, int dstStep, Thresholds t,
                Qel8u* pBuffer) {
    return qeliCanny_16s8u_C1R(dx.data(), dx.step(), dy.data(), dy.step(), pDst, dstStep, dx.size(), t.low, t.high,
                               pBuffer);
}
qelStatus canny(const kit::Image<Qel32f>& dx, const kit::Image<Qel32f>& dy, Qel8u* pDst, int dstStep, Thresholds t,
                Qel8u* pBuffer) {
    return qeliCanny_32f8u_C1R(dx.data(), dx.step(), dy.data(), dy.step(), pDst, dstStep, dx.size(), t.low, t.high,
                               pBuffer);
}

// The result, in which every byte behind the pixels of a row is 0, also behind the last row.
template <class T>
std::vector<Qel8u> edges(const kit::Image<T>& dx, const kit::Image<T>& dy, Thresholds t, int gap, bool flush) {
    const QelSize size = dx.size();
    const int step = size.width + gap;
    int bytes = 0;
    EXPECT_EQ(qelStatusOk, qeliCannyGetSize(size, &bytes));
    kit::ScratchBlock scratch(bytes, size_t(gap) + 1);
    kit::GuardedMemory dst(size_t(step) * size_t(size.height));
    std::memset(dst.data(), 0x37, dst.bytes());
    EXPECT_EQ(qelStatusOk, canny(dx, dy, dst.data(), step, t, flush ? scratch.flush() : scratch.odd()));
    EXPECT_TRUE(scratch.intact());
    EXPECT_TRUE(dst.surroundingsIntact());
    std::vector<Qel8u> result;
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < step; ++x) {
            const Qel8u value = dst.data()[ptrdiff_t{step} * y + x];
            if (x < size.width) {
                result.push_back(value);
            } else {
                EXPECT_EQ(0, value) << "gap of row " << y;
            }
        }
    return result;
}

template <class T>
void agrees(const kit::Image<T>& dx, const kit::Image<T>& dy, Thresholds t, int gap = 0, bool flush = true) {
    const Model<T> model(dx, dy, t);
    const std::vector<Qel8u> got = edges(dx, dy, t, gap, flush);
    const QelSize size = dx.size();
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            ASSERT_EQ(model.edge(x, y) ? 255 : 0, got[size_t(y) * size_t(size.width) + size_t(x)])
                << "at " << x << ", " << y << ", thresholds " << t.low << " and " << t.high;
}

// Small derivatives make plateaus and ties; smooth ones make long edges.
template <class T>
void draw(kit::Trial& trial, kit::Image<T>& dx, kit::Image<T>& dy, int kind) {
    for (int y = 0; y < dx.size().height; ++y) {
        for (int x = 0; x < dx.size().width; ++x) {
            if (kind == 1) {
                dx.at(x, y) = T(trial.between(-3, 3));
                dy.at(x, y) = T(trial.between(-3, 3));
            } else if (kind == 2) {
                const double angle = std::hypot(x - 20, y - 11) / 3;
                dx.at(x, y) = T(100 * std::sin(angle) + trial.between(-9, 9));
                dy.at(x, y) = T(100 * std::cos(angle * 0.7) + trial.between(-9, 9));
            }
        }
    }
}

template <class T>
void trialsAgree(std::initializer_list<Thresholds> anyContent) {
    for (uint32_t seed = 0; seed < 300; ++seed) {
        kit::Trial trial(seed);
        kit::Image<T> dx(trial), dy(trial);
        const int kind = static_cast<int>(seed % 3);
        draw(trial, dx, dy, kind);
        const Thresholds t = kind == 0 ? anyContent.begin()[seed / 3 % anyContent.size()]
                             : kind == 1
                                 ? Thresholds{Qel32f(trial.between(0, 3)), Qel32f(trial.between(3, 5))}
                                 : Thresholds{Qel32f(trial.between(10, 90)), Qel32f(trial.between(90, 150)) + 0.5F};
        ASSERT_NO_FATAL_FAILURE(agrees(dx, dy, t, trial.between(0, 3) * 7, trial.coin())) << trial;
    }
}

class Canny : public kit::EveryTarget {};
ON_EVERY_TARGET(Canny);

TEST_P(Canny, qeliCanny_16s8u_C1R) {
    trialsAgree<Qel16s>({{0, 0}, {20000, 40000}, {65535, 65535}, {65534, 65535}, {100.9F, 60000.9F}, {5, kInfinity}});
}
TEST_P(Canny, qeliCanny_32f8u_C1R) {
    trialsAgree<Qel32f>({{0, 0}, {20, 1000}, {1e30F, 2e30F}, {2000, 2000}, {5, kInfinity}, {kInfinity, kInfinity}});
}

// Two rows of 11 columns: 8 are vectors, 3 are not. Each column by itself, a peak among smaller magnitudes, so that the
// sector decides.
bool sectorsDiffer(int dx, int dy) {
    const Qel32f x = Qel32f(dx), y = Qel32f(dy);
    return (x * 2.414213657F < y) != (Qel32f(dx * 2.414213562373095) < y) ||
           (y < x * 0.414213568F) != (y < Qel32f(dx * 0.41421356237309503));
}

TEST_P(Canny, WhereSingleAndDoubleTangentsDiffer) {
    std::vector<std::pair<int, int>> pairs;
    for (int dx = 1; dx <= 32768; ++dx) {
        for (const double tangent : {2.414213562373095, 0.41421356237309503}) {
            const int nearest = int(std::lround(dx * tangent));
            for (int dy = nearest - 1; dy <= nearest + 1; ++dy)
                if (dy >= 0 && dy <= 32768 && sectorsDiffer(dx, dy)) pairs.emplace_back(dx, dy);
        }
    }
    ASSERT_FALSE(pairs.empty());
    const size_t stride = std::max<size_t>(1, pairs.size() / 60);
    for (size_t i = 0; i < pairs.size(); i += stride) {
        for (int column = 1; column < 10; ++column) {
            for (const int sign : {-1, 1}) {
                kit::Image<Qel16s> dx({11, 3}, 0), dy({11, 3}, 0);
                dx.at(column, 1) = static_cast<Qel16s>(-pairs[i].first);
                dy.at(column, 1) = static_cast<Qel16s>(sign * std::min(pairs[i].second, 32767));
                // Larger on the diagonals, then above, then on the left: only one sector lets the pixel stay.
                for (int other = 0; other < 3; ++other) {
                    const int at[][2] = {{column - 1, 0}, {column, 0}, {column - 1, 1}};
                    kit::Image<Qel16s> bigger(dx);
                    bigger.at(at[other][0], at[other][1]) = -32768;
                    kit::Image<Qel16s> both(dy);
                    both.at(at[other][0], at[other][1]) = -32768;
                    ASSERT_NO_FATAL_FAILURE(agrees(bigger, both, {0, 0})) << pairs[i].first << ", " << pairs[i].second;
                }
            }
        }
    }
}

// Two of -32768: 65535 in whole groups of eight columns, 65536 behind them.
TEST_P(Canny, MagnitudesSaturateInGroupsOfEight) {
    for (int width = 1; width < 40; ++width) {
        const kit::Image<Qel16s> d({width, 1}, -32768);
        for (const Qel32f high : {65534.0F, 65535.0F, 65536.0F}) ASSERT_NO_FATAL_FAILURE(agrees(d, d, {0, high}));
    }
}

TEST_P(Canny, ThresholdsThatAreMetExactly) {
    kit::Image<Qel16s> dx({5, 1}, 0);
    kit::Image<Qel16s> dy({5, 1}, 0);
    kit::Image<Qel32f> fx({5, 1}, 0);
    kit::Image<Qel32f> fy({5, 1}, 0);
    dx.at(2, 0) = 7;
    fx.at(2, 0) = 7;
    const std::vector<Qel8u> none(5, 0), edge = {0, 0, 255, 0, 0};
    EXPECT_EQ(none, edges(dx, dy, {7, 7}, 0, true));
    EXPECT_EQ(none, edges(fx, fy, {7, 7}, 0, true));  // stays, but nothing above the higher threshold is near
    EXPECT_EQ(edge, edges(dx, dy, {6.9F, 6.9F}, 0, true));
    EXPECT_EQ(edge, edges(fx, fy, {6.9F, 6.9F}, 0, true));
    fx.at(1, 0) = 6;
    fy.at(1, 0) = 20;  // vertical sector, no row beside it
    EXPECT_EQ((std::vector<Qel8u>{0, 255, 0, 0, 0}), edges(fx, fy, {7, 20}, 0, true));
    fx.at(2, 0) = 0;
    fy.at(2, 0) = 7;
    EXPECT_EQ((std::vector<Qel8u>{0, 255, 255, 0, 0}), edges(fx, fy, {7, 20}, 0, true));
}

TEST_P(Canny, OfTwoEqualColumnsTheLeftOne) {
    kit::Image<Qel16s> dx({12, 6}, 0);
    const kit::Image<Qel16s> dy({12, 6}, 0);
    for (int y = 0; y < 6; ++y) dx.at(5, y) = dx.at(6, y) = 80;
    const std::vector<Qel8u> got = edges(dx, dy, {10, 20}, 0, true);
    for (int i = 0; i < 72; ++i) EXPECT_EQ(i % 12 == 5 ? 255 : 0, got[size_t(i)]);
}

// Edges that wind through the whole image from one strong pixel, with coordinates of 16 bits and of 32.
TEST_P(Canny, OneStrongPixelAtTheEndOfALongEdge) {
    for (const QelSize size : {QelSize{61, 47}, QelSize{65532, 3}, QelSize{65533, 3}, QelSize{3, 65540}}) {
        kit::Image<Qel16s> dx(size, 0), dy(size, 0);
        const bool wide = size.width > size.height;
        for (int i = 0; i < std::max(size.width, size.height); ++i) {
            if (size.width > 3 && size.height > 3 && i >= 47) break;
            (wide ? dy : dx).at(wide ? i : 1, wide ? 1 : i) = 50;
        }
        (wide ? dy : dx).at(wide ? 0 : 1, wide ? 1 : 0) = 90;
        const std::vector<Qel8u> got = edges(dx, dy, {10, 80}, 0, true);
        const int length = size.width > 3 && size.height > 3 ? 47 : std::max(size.width, size.height);
        EXPECT_EQ(length, std::count(got.begin(), got.end(), 255)) << size.width << "x" << size.height;
    }
}

TEST(CannyChecks, EveryMember) {
    std::vector<Qel8u> scratch(1024);
    CHECKS_OF(qeliCanny_16s8u_C1R)
        .value<9>(scratch.data())
        .fault<7>("low below 0", qelStatusBadArg, -1)
        .fault<7>("low above high", qelStatusBadArg, 2)
        .run();
    CHECKS_OF(qeliCanny_32f8u_C1R)
        .value<9>(scratch.data())
        .fault<7>("low below 0", qelStatusBadArg, -0.5F)
        .fault<8>("high below low", qelStatusBadArg, 0.5F)
        .run();
    CHECKS_OF(qeliCannyGetSize).run();
}

TEST(CannySize, AsDocumented) {
    int bytes = 0;
    EXPECT_EQ(qelStatusOk, qeliCannyGetSize({640, 480}, &bytes));
    EXPECT_EQ(5 * 642 * 482 + 16 * 640 + 160, bytes);
    EXPECT_EQ(qelStatusOk, qeliCannyGetSize({65532, 2}, &bytes));
    EXPECT_EQ(5 * 65534 * 4 + 16 * 65532 + 160, bytes);
    EXPECT_EQ(qelStatusOk, qeliCannyGetSize({65533, 2}, &bytes));
    EXPECT_EQ(9 * 65535 * 4 + 16 * 65533 + 160, bytes);
    EXPECT_EQ(qelStatusOk, qeliCannyGetSize({2, 65533}, &bytes));
    EXPECT_EQ(9 * 4 * 65535 + 32 + 160, bytes);
    bytes = 7;
    for (const QelSize size : {QelSize{30000, 30000}, {0x7FFFFFFF, 0x7FFFFFFF}})
        EXPECT_EQ(qelStatusOverflow, qeliCannyGetSize(size, &bytes));
    EXPECT_EQ(7, bytes);
}

}  // namespace
