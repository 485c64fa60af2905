#include <omp.h>

#include <algorithm>
#include <climits>
#include <compare>
#include <deque>
#include <vector>

#include "kit/checks.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/morph.h"

namespace {

// The order of samples; of floats the one that has a place for each bit pattern.
bool isBelow(Qel8u a, Qel8u b) { return a < b; }
bool isBelow(Qel32f a, Qel32f b) { return std::strong_order(a, b) == std::strong_ordering::less; }

template <class T>
using Function = qelStatus(const T*, int, T*, int, QelSize, Qel8u*, int);

// A member: what its model says of two samples.
template <class T>
struct Member {
    Function<T>* function;
    qelStatus (*bufferSize)(QelSize, int*);
    bool dilates;

    T further(T a, T b) const { return isBelow(a, b) == dilates ? b : a; }
    T nearer(T a, T b) const { return isBelow(a, b) == dilates ? a : b; }
};
constexpr Member<Qel8u> kDilate8u = {qeliMorphReconstructDilate_8u_C1IR, qeliMorphReconstructGetBufferSize_8u_C1, true};
constexpr Member<Qel8u> kErode8u = {qeliMorphReconstructErode_8u_C1IR, qeliMorphReconstructGetBufferSize_8u_C1, false};
constexpr Member<Qel32f> kDilate32f = {qeliMorphReconstructDilate_32f_C1IR, qeliMorphReconstructGetBufferSize_32f_C1,
                                       true};
constexpr Member<Qel32f> kErode32f = {qeliMorphReconstructErode_32f_C1IR, qeliMorphReconstructGetBufferSize_32f_C1,
                                      false};

// A pixel that has changed pushes its neighbours, and those that change wait in the queue for their turn.
template <class T>
void model(const Member<T>& member, const kit::Image<T>& mask, kit::Image<T>& marker, int norm) {
    const auto [width, height] = mask.size();
    std::deque<QelPoint> queue;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            marker.at(x, y) = member.nearer(marker.at(x, y), mask.at(x, y));
            queue.push_back({x, y});
        }
    }
    for (; !queue.empty(); queue.pop_front()) {
        const QelPoint p = queue.front();
        for (int y = std::max(p.y - 1, 0); y <= std::min(p.y + 1, height - 1); ++y) {
            for (int x = std::max(p.x - 1, 0); x <= std::min(p.x + 1, width - 1); ++x) {
                if (norm == qelMorphNormL1 && x != p.x && y != p.y) continue;
                const T pushed = member.further(marker.at(x, y), member.nearer(marker.at(p.x, p.y), mask.at(x, y)));
                if (kit::sameBits(pushed, marker.at(x, y))) continue;
                marker.at(x, y) = pushed;
                queue.push_back({x, y});
            }
        }
    }
}

template <class T>
void agrees(kit::Trial& trial, const Member<T>& member, const kit::Image<T>& mask, const kit::Image<T>& marker) {
    for (const int norm : {qelMorphNormInf, qelMorphNormL1}) {
        kit::Image<T> want(marker), got(marker);
        model(member, mask, want, norm);
        int bytes = 0;
        ASSERT_EQ(qelStatusOk, member.bufferSize(trial.size, &bytes));
        ASSERT_EQ(trial.size.height + 4 * int(sizeof(T)) * trial.size.width + (sizeof(T) == 1 ? 161 : 164), bytes);
        kit::ScratchBlock scratch(bytes, size_t(trial.between(0, 31)));
        ASSERT_EQ(qelStatusOk, member.function(mask.data(), mask.step(), got.data(), got.step(), trial.size,
                                               trial.coin() ? scratch.odd() : scratch.flush(), norm))
            << trial;
        ASSERT_TRUE(sameBits(want, got)) << trial << ", norm " << norm;
        ASSERT_TRUE(scratch.intact()) << trial;
    }
}

// Bytes as samples; of an erosion upside down, so that the same pictures suit it.
template <class T>
T sampleOf(const Member<T>& member, int value) {
    value = member.dilates ? value : 255 - value;
    return sizeof(T) == 1 ? static_cast<T>(value) : static_cast<T>(value * 0.37F - 40);
}

template <class T>
struct Pair {
    Pair(kit::Trial& trial, const Member<T>& m) : member(m), mask(trial), marker(trial) {}

    // Mask and marker of pixel (x, y) from values of 0 to 255.
    template <class MaskAt, class MarkerAt>
    void paint(const MaskAt& maskAt, const MarkerAt& markerAt) {
        for (int y = 0; y < mask.size().height; ++y) {
            for (int x = 0; x < mask.size().width; ++x) {
                const int m = maskAt(x, y);
                mask.at(x, y) = sampleOf(member, m);
                marker.at(x, y) = sampleOf(member, markerAt(x, y, m));
            }
        }
    }

    const Member<T>& member;
    kit::Image<T> mask, marker;
};

// A corridor, one pixel wide, from the first pixel to the middle of the region; its walls are as thick.
std::vector<bool> spiral(QelSize size) {
    std::vector<bool> open(size_t(size.width) * size_t(size.height));
    const auto isFree = [&](int x, int y) {
        return x >= 0 && y >= 0 && x < size.width && y < size.height &&
               !open[size_t(y) * size_t(size.width) + size_t(x)];
    };
    const auto isWall = [&](int x, int y) {
        return x < 0 || y < 0 || x >= size.width || y >= size.height || isFree(x, y);
    };
    constexpr QelPoint kWays[] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
    QelPoint at = {0, 0};
    for (int way = 0, turns = 0; turns < 2;) {
        open[size_t(at.y) * size_t(size.width) + size_t(at.x)] = true;
        const QelPoint step = kWays[way];
        if (isFree(at.x + step.x, at.y + step.y) && isWall(at.x + 2 * step.x, at.y + 2 * step.y)) {
            at = {at.x + step.x, at.y + step.y};
            turns = 0;
        } else {
            way = (way + 1) % 4;
            ++turns;
        }
    }
    return open;
}

template <class T>
void paint(kit::Trial& trial, Pair<T>& pair, int kind) {
    const int width = trial.size.width, height = trial.size.height;
    const QelPoint seed = {trial.between(0, width - 1), trial.between(0, height - 1)};
    const auto atSeed = [=](int x, int y, int) { return x == seed.x && y == seed.y ? 180 : 0; };
    const auto noise = [&](int, int) { return trial.between(0, 255); };
    const auto maze = [&](int, int) { return trial.between(0, 9) < 6 ? 200 : trial.between(0, 90); };
    const auto waves = [&](int x, int y) { return 60 + (x * 7 + y * 5) % 90 + trial.between(0, 60); };
    switch (kind) {
        case 0:  // what the trial has filled in
            break;
        case 1:
            pair.paint(waves, [](int, int, int m) { return std::max(m - 40, 0); });
            break;
        case 2:
            pair.paint(maze, atSeed);
            break;
        case 3:
            pair.paint([&, open = spiral(trial.size)](
                           int x, int y) { return open[size_t(y) * size_t(width) + size_t(x)] ? 220 : 10; },
                       [](int x, int y, int) { return x + y == 0 ? 255 : 0; });
            break;
        case 4:
            pair.paint(noise, [&](int, int, int m) { return trial.between(0, 30) == 0 ? m : m / 4; });
            break;
        default:
            pair.paint(noise, [](int, int, int m) { return m; });
    }
}

template <class T>
void agreesWithModel(const Member<T>& member) {
    for (uint32_t seed = 0; seed < 240; ++seed) {
        kit::Trial trial(seed);
        if (seed < kit::Trial::kEveryWidth) trial.size.height = 1 + static_cast<int>(seed * 5 % 23);
        Pair<T> pair(trial, member);
        paint(trial, pair, static_cast<int>(seed % 6));
        ASSERT_NO_FATAL_FAILURE(agrees(trial, member, pair.mask, pair.marker));
    }
}

// Mazes and spirals over sizes on either side of the limit of two threads, which none, the halves and others share.
template <class T>
void threadsAgree(const Member<T>& member) {
    constexpr QelSize kSizes[] = {{10, 100}, {11, 11}, {11, 10}, {100, 10}, {12, 11}, {67, 61}, {40, 90}};
    uint32_t seed = 0;
    for (const QelSize size : kSizes) {
        for (const int threads : {1, 2, 3, 33}) {
            kit::Trial trial(seed, size, threads);
            Pair<T> pair(trial, member);
            paint(trial, pair, 1 + static_cast<int>(seed++ % 4));
            ASSERT_NO_FATAL_FAILURE(agrees(trial, member, pair.mask, pair.marker));
        }
    }
}

class MorphReconstruct : public kit::EveryTarget {};
ON_EVERY_TARGET(MorphReconstruct);

TEST_P(MorphReconstruct, qeliMorphReconstructDilate_8u_C1IR) { agreesWithModel(kDilate8u); }
TEST_P(MorphReconstruct, qeliMorphReconstructErode_8u_C1IR) { agreesWithModel(kErode8u); }
TEST_P(MorphReconstruct, qeliMorphReconstructDilate_32f_C1IR) { agreesWithModel(kDilate32f); }
TEST_P(MorphReconstruct, qeliMorphReconstructErode_32f_C1IR) { agreesWithModel(kErode32f); }

TEST_P(MorphReconstruct, ThreadsAgree) {
    threadsAgree(kDilate8u);
    threadsAgree(kErode8u);
    threadsAgree(kDilate32f);
    threadsAgree(kErode32f);
}

// A long way to go: hundreds of passes, one thread and two.
TEST_P(MorphReconstruct, Spirals) {
    for (const int threads : {1, 2}) {
        for (const QelSize size : {QelSize{75, 75}, {130, 41}}) {
            kit::Trial trial(1, size, threads);
            Pair<Qel8u> pair(trial, kDilate8u);
            paint(trial, pair, 3);
            ASSERT_NO_FATAL_FAILURE(agrees(trial, kDilate8u, pair.mask, pair.marker));
        }
    }
}

// Where the caller's own threads leave none, one does the work of two.
TEST_P(MorphReconstruct, ATeamOfOne) {
    kit::Trial trial(2, {50, 30}, 2);
    Pair<Qel8u> pair(trial, kDilate8u);
    paint(trial, pair, 1);
    kit::Image<Qel8u> want(pair.marker), first(pair.marker), second(pair.marker);
    model(kDilate8u, pair.mask, want, qelMorphNormL1);
    kit::Image<Qel8u>* const images[] = {&first, &second};
#pragma omp parallel for num_threads(2)
    for (int i = 0; i < 2; ++i) {
        std::vector<Qel8u> scratch(30 + 4 * 50 + 161);
        qeliMorphReconstructDilate_8u_C1IR(pair.mask.data(), pair.mask.step(), images[i]->data(), images[i]->step(),
                                           trial.size, scratch.data(), qelMorphNormL1);
    }
    EXPECT_TRUE(sameBits(want, first));
    EXPECT_TRUE(sameBits(want, second));
}

Qel8u reconstructed(const kit::Image<Qel8u>& mask, kit::Image<Qel8u>& marker, int norm, QelPoint at) {
    std::vector<Qel8u> scratch(size_t(mask.size().height + 4 * mask.size().width + 161));
    EXPECT_EQ(qelStatusOk, qeliMorphReconstructDilate_8u_C1IR(mask.data(), mask.step(), marker.data(), marker.step(),
                                                              mask.size(), scratch.data(), norm));
    return marker.at(at.x, at.y);
}

TEST_P(MorphReconstruct, CornersJoinEightNeighboursOnly) {
    for (const int size : {3, 9, 40}) {
        kit::Image<Qel8u> mask({size, size}, Qel8u{0}), marker(mask);
        for (int i = 0; i < size; ++i) mask.at(i, i) = 100;
        marker.at(0, 0) = 70;
        kit::Image<Qel8u> again(marker);
        EXPECT_EQ(0, reconstructed(mask, marker, qelMorphNormL1, {1, 1}));
        EXPECT_EQ(70, reconstructed(mask, again, qelMorphNormInf, {size - 1, size - 1}));
    }
}

TEST_P(MorphReconstruct, ASeedFillsTheRegion) {
    kit::Image<Qel8u> mask({50, 20}, Qel8u{255}), marker({50, 20}, Qel8u{0});
    const kit::Image<Qel8u> want({50, 20}, Qel8u{9});
    marker.at(31, 7) = 9;
    reconstructed(mask, marker, qelMorphNormL1, {0, 0});
    EXPECT_TRUE(sameBits(want, marker));
}

TEST(MorphReconstructChecks, EveryMember) {
    std::vector<Qel8u> scratch(5 + 16 * 7 + 164);
    const auto run = [&](auto&& checks) {
        checks.template notAnImage<5>()
            .template value<5>(scratch.data())
            .template fault<6>("norm -1", qelStatusBadArg, -1)
            .template fault<6>("norm 2", qelStatusBadArg, 2)
            .run();
    };
    run(CHECKS_OF(qeliMorphReconstructDilate_8u_C1IR));
    run(CHECKS_OF(qeliMorphReconstructErode_8u_C1IR));
    run(CHECKS_OF(qeliMorphReconstructDilate_32f_C1IR));
    run(CHECKS_OF(qeliMorphReconstructErode_32f_C1IR));
}

TEST(MorphReconstructChecks, BufferSizes) {
    int bytes = -1;
    for (const auto function : {qeliMorphReconstructGetBufferSize_8u_C1, qeliMorphReconstructGetBufferSize_32f_C1}) {
        EXPECT_EQ(qelStatusNullPointer, function({0, 0}, nullptr));
        EXPECT_EQ(qelStatusBadSize, function({0, 1}, &bytes));
        EXPECT_EQ(qelStatusBadSize, function({1, -1}, &bytes));
        EXPECT_EQ(qelStatusOverflow, function({INT_MAX, INT_MAX}, &bytes));
        EXPECT_EQ(qelStatusOverflow, function({1 << 29, 1}, &bytes));
        EXPECT_EQ(-1, bytes);
    }
    EXPECT_EQ(qelStatusOk, qeliMorphReconstructGetBufferSize_8u_C1({7, 5}, &bytes));
    EXPECT_EQ(5 + 28 + 161, bytes);
    EXPECT_EQ(qelStatusOk, qeliMorphReconstructGetBufferSize_32f_C1({7, 5}, &bytes));
    EXPECT_EQ(5 + 112 + 164, bytes);
}

}  // namespace
