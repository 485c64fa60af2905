#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "kit/checks.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "morph/masks.h"
#include "qelcv.h"

namespace {

using namespace masks;  // NOLINT(google-build-using-namespace)

// One sample type with its channels.
template <class T>
struct Member {
    using Sample = T;
    const char* name;
    int channels;
    qelStatus (*getSize)(int, const Qel8u*, QelSize, int*);
    qelStatus (*init)(int, const Qel8u*, QelSize, QelPoint, QelMorphState*);
    qelStatus (*initAlloc)(int, const Qel8u*, QelSize, QelPoint, QelMorphState**);
    qelStatus (*dilate)(const T*, int, T*, int, QelSize, int, QelMorphState*);
    qelStatus (*erode)(const T*, int, T*, int, QelSize, int, QelMorphState*);
};

const Member<Qel8u> k8uC1 = {"8u_C1R",
                             1,
                             qeliMorphologyGetSize_8u_C1R,
                             qeliMorphologyInit_8u_C1R,
                             qeliMorphologyInitAlloc_8u_C1R,
                             qeliDilateBorderReplicate_8u_C1R,
                             qeliErodeBorderReplicate_8u_C1R};
const Member<Qel8u> k8uC3 = {"8u_C3R",
                             3,
                             qeliMorphologyGetSize_8u_C3R,
                             qeliMorphologyInit_8u_C3R,
                             qeliMorphologyInitAlloc_8u_C3R,
                             qeliDilateBorderReplicate_8u_C3R,
                             qeliErodeBorderReplicate_8u_C3R};
const Member<Qel8u> k8uC4 = {"8u_C4R",
                             4,
                             qeliMorphologyGetSize_8u_C4R,
                             qeliMorphologyInit_8u_C4R,
                             qeliMorphologyInitAlloc_8u_C4R,
                             qeliDilateBorderReplicate_8u_C4R,
                             qeliErodeBorderReplicate_8u_C4R};
const Member<Qel32f> k32fC1 = {"32f_C1R",
                               1,
                               qeliMorphologyGetSize_32f_C1R,
                               qeliMorphologyInit_32f_C1R,
                               qeliMorphologyInitAlloc_32f_C1R,
                               qeliDilateBorderReplicate_32f_C1R,
                               qeliErodeBorderReplicate_32f_C1R};
const Member<Qel32f> k32fC3 = {"32f_C3R",
                               3,
                               qeliMorphologyGetSize_32f_C3R,
                               qeliMorphologyInit_32f_C3R,
                               qeliMorphologyInitAlloc_32f_C3R,
                               qeliDilateBorderReplicate_32f_C3R,
                               qeliErodeBorderReplicate_32f_C3R};
const Member<Qel32f> k32fC4 = {"32f_C4R",
                               4,
                               qeliMorphologyGetSize_32f_C4R,
                               qeliMorphologyInit_32f_C4R,
                               qeliMorphologyInitAlloc_32f_C4R,
                               qeliDilateBorderReplicate_32f_C4R,
                               qeliErodeBorderReplicate_32f_C4R};

void onEveryMember(const auto& work) {
    work(k8uC1);
    work(k8uC3);
    work(k8uC4);
    work(k32fC1);
    work(k32fC3);
    work(k32fC4);
}

struct Freed {
    void operator()(QelMorphState* pState) const { EXPECT_EQ(qelStatusOk, qeliMorphologyFree(pState)); }
};
using State = std::unique_ptr<QelMorphState, Freed>;

template <class T>
State allocated(const Member<T>& m, int roiWidth, const Mask& mask) {
    QelMorphState* pState = nullptr;
    EXPECT_EQ(qelStatusOk, m.initAlloc(roiWidth, mask.elements.data(), mask.size, mask.anchor, &pState));
    return State(pState);
}

template <class T>
void agreesWithModel(const Member<T>& m, kit::Trial& trial, const Mask& mask, QelMorphState* pState) {
    const kit::Image<T> src(trial, m.channels);
    for (const bool dilates : {true, false}) {
        kit::Image<T> got(trial, m.channels);
        kit::Image<T> want(got);
        model(src, want, mask, dilates);
        ASSERT_EQ(qelStatusOk, (dilates ? m.dilate : m.erode)(src.data(), src.step(), got.data(), got.step(),
                                                              trial.size, qelBorderRepl, pState));
        ASSERT_TRUE(sameBits(want, got)) << m.name << (dilates ? " dilate " : " erode ") << mask.text() << trial;
    }
}

class Dilate : public kit::EveryTarget {};
ON_EVERY_TARGET(Dilate);

TEST_P(Dilate, AllMasksOf3By3) {
    for (int bits = 0; bits < 512; ++bits) {
        const int anchor = bits * 5 % 9;
        Mask mask = clear({3, 3}, {anchor % 3, anchor / 3});
        for (int i = 0; i < 9; ++i) mask.elements[size_t(i)] = Qel8u(bits >> i & 1);
        kit::Trial trial(uint32_t(bits), {1 + bits * 7 % 71, 1 + bits % 6});
        setContent(trial, 0);
        agreesWithModel(k8uC1, trial, mask, allocated(k8uC1, trial.size.width, mask).get());
        agreesWithModel(k32fC1, trial, mask, allocated(k32fC1, trial.size.width, mask).get());
    }
}

template <class T>
void randomMasks(const Member<T>& m, Kind kind, uint32_t trials) {
    for (uint32_t seed = 0; seed < trials; ++seed) {
        kit::Trial trial(seed, {1, 1});
        trial.size = {trial.between(1, seed % 4 == 0 ? 600 / m.channels : 40), trial.between(1, 14)};
        setContent(trial, seed);
        const Mask mask = randomMask(trial, kind, seed % 8 == 7 ? 22 : 8);
        const State state = allocated(m, trial.size.width + trial.between(0, 9), mask);
        agreesWithModel(m, trial, mask, state.get());
        if (testing::Test::HasFailure()) return;
    }
}

TEST_P(Dilate, GeneralMasks) {
    onEveryMember([](const auto& m) { randomMasks(m, Kind::kAny, 60); });
    onEveryMember([](const auto& m) { randomMasks(m, Kind::kSparse, 60); });
    onEveryMember([](const auto& m) { randomMasks(m, Kind::kDense, 30); });
}
TEST_P(Dilate, Rectangles) {
    onEveryMember([](const auto& m) { randomMasks(m, Kind::kRect, 150); });
}
TEST_P(Dilate, Ellipses) {
    onEveryMember([](const auto& m) { randomMasks(m, Kind::kEllipse, 150); });
}

// Wide images of few and many lines, runs that lie within each other and runs that do not.
TEST_P(Dilate, EllipsesOfWideImages) {
    const Mask masks[] = {drawn({"...#...", ".#####.", "#######", "#######", "#######", ".#####.", "...#..."}, {3, 3}),
                          drawn({"###..", "..##.", "#####"}, {2, 1}), drawn({".#.", "###", ".#."}, {1, 1}),
                          drawn({"..#", "###", "...", "###", "..#"}, {2, 1})};
    for (const Mask& mask : masks) {
        for (const int width : {300, 2600}) {
            kit::Trial trial(uint32_t(width), {width, 11});
            setContent(trial, 0);
            agreesWithModel(k8uC1, trial, mask, allocated(k8uC1, width, mask).get());
            if (width == 300) agreesWithModel(k32fC3, trial, mask, allocated(k32fC3, 1000, mask).get());
        }
    }
}

TEST_P(Dilate, MoreElementsThanARunOfTheLoopTakes) {
    kit::Trial trial(5, {150, 12});
    setContent(trial, 0);
    Mask mask = clear({60, 40}, {17, 30});
    for (Qel8u& element : mask.elements) element = trial.coin();
    agreesWithModel(k8uC1, trial, mask, allocated(k8uC1, 150, mask).get());
    agreesWithModel(k32fC3, trial, mask, allocated(k32fC3, 150, mask).get());
}

TEST_P(Dilate, RunsAndRectanglesWiderThanTheRowRoutinesOfFixedSize) {
    for (const int width : {15, 16, 17, 31, 63, 64, 65, 100}) {
        kit::Trial trial(uint32_t(width), {210, 9});
        setContent(trial, 0);
        Mask rect = clear({width, 3}, {width / 3, 1});
        std::fill(rect.elements.begin(), rect.elements.end(), Qel8u(1));
        agreesWithModel(k8uC1, trial, rect, allocated(k8uC1, 210, rect).get());
        agreesWithModel(k32fC4, trial, rect, allocated(k32fC4, 210, rect).get());
        Mask ellipse = rect;
        ellipse.set(0, 0, 0);
        ellipse.set(width - 1, 2, 0);
        for (int x = 0; x < width; ++x) ellipse.set(x, 2, ellipse.at(x, 0) ? 1 : 0);
        agreesWithModel(k8uC1, trial, ellipse, allocated(k8uC1, 210, ellipse).get());
        agreesWithModel(k8uC3, trial, ellipse, allocated(k8uC3, 210, ellipse).get());
        agreesWithModel(k32fC1, trial, ellipse, allocated(k32fC1, 210, ellipse).get());
    }
}

TEST_P(Dilate, RectanglesBesideTheAnchorInTinyRegions) {
    uint32_t seed = 0;
    for (int width = 1; width <= 6; ++width) {
        for (int height = 1; height <= 6; ++height) {
            for (int corner = 0; corner < 9; ++corner) {
                Mask mask = clear({7, 7}, {corner % 3 * 3, corner / 3 * 3});
                kit::Trial trial(seed++, {width, height});
                setContent(trial, 0);
                const int x = trial.between(0, 5);
                const int y = trial.between(0, 5);
                mask.set(x, y), mask.set(x + 1, y), mask.set(x, y + 1), mask.set(x + 1, y + 1);
                agreesWithModel(k8uC1, trial, mask, allocated(k8uC1, width, mask).get());
                agreesWithModel(k8uC3, trial, mask, allocated(k8uC3, width, mask).get());
                agreesWithModel(k32fC4, trial, mask, allocated(k32fC4, width, mask).get());
            }
        }
    }
}

TEST_P(Dilate, WhatStandsUnderClearElementsHasNoEffect) {
    const Mask mask = drawn({"#.#.#", ".#.#.", "#...#"}, {2, 1});
    kit::Trial trial(1, {150, 20});
    for (const Qel32f hidden : {std::numeric_limits<Qel32f>::quiet_NaN(), std::numeric_limits<Qel32f>::infinity(),
                                -std::numeric_limits<Qel32f>::infinity()}) {
        kit::Image<Qel32f> src(trial.size, 3.0f);
        kit::Image<Qel32f> got(trial.size, 0.0f);
        src.at(75, 10) = hidden;
        for (const auto& call : {qeliDilateBorderReplicate_32f_C1R, qeliErodeBorderReplicate_32f_C1R}) {
            ASSERT_EQ(qelStatusOk, call(src.data(), src.step(), got.data(), got.step(), trial.size, qelBorderRepl,
                                        allocated(k32fC1, 150, mask).get()));
            for (int y = 0; y < 20; ++y) {
                for (int x = 0; x < 150; ++x) {
                    const int i = 75 - x + mask.anchor.x;
                    const int j = 10 - y + mask.anchor.y;
                    const bool under = i >= 0 && i < 5 && j >= 0 && j < 3 && mask.at(i, j);
                    if (!under) {
                        ASSERT_EQ(3.0f, got.at(x, y)) << x << ", " << y;
                    }
                }
            }
        }
    }
}

TEST_P(Dilate, InfinitiesAreExact) {
    constexpr Qel32f kInfinity = std::numeric_limits<Qel32f>::infinity();
    for (const Mask& mask :
         {drawn({"###", "###"}, {1, 1}), drawn({".#.", "###"}, {1, 1}), drawn({"#.#", "###"}, {1, 1})}) {
        for (const Qel32f value : {kInfinity, -kInfinity}) {
            const kit::Image<Qel32f> src({90, 7}, value);
            for (const auto& call : {qeliDilateBorderReplicate_32f_C1R, qeliErodeBorderReplicate_32f_C1R}) {
                kit::Image<Qel32f> got({90, 7}, 0.0f);
                ASSERT_EQ(qelStatusOk, call(src.data(), src.step(), got.data(), got.step(), {90, 7}, qelBorderRepl,
                                            allocated(k32fC1, 90, mask).get()));
                ASSERT_TRUE(sameBits(src, got));
            }
        }
    }
}

TEST_P(Dilate, SmallMasksCopyBits) {
    kit::Trial trial(11, {77, 9});
    trial.setContent(kit::Content::kSpecial);
    const kit::Image<Qel32f> src(trial, 3);
    for (const Mask& mask : {drawn({"..", ".."}, {1, 0}), drawn({"#"}, {0, 0})}) {
        for (const auto& call : {qeliDilateBorderReplicate_32f_C3R, qeliErodeBorderReplicate_32f_C3R}) {
            kit::Image<Qel32f> got({77, 9}, 1.0f, 3);
            ASSERT_EQ(qelStatusOk, call(src.data(), src.step(), got.data(), got.step(), {77, 9}, qelBorderRepl,
                                        allocated(k32fC3, 77, mask).get()));
            ASSERT_TRUE(sameBits(src, got));
        }
    }
}

// A block of exactly the documented size, at every address modulo 32, ended by an inaccessible page.
TEST_P(Dilate, StatesInTheCallersBlock) {
    const Mask masks[] = {drawn({"#.#", ".##", "##."}, {1, 1}), drawn({".#.", "###", ".#.", ".#."}, {1, 2}),
                          drawn({"..##", "..##"}, {2, 1}), drawn({"....", "...."}, {2, 1}),
                          drawn({"..##", "..##"}, {0, 0})};
    onEveryMember([&](const auto& m) {
        for (const Mask& mask : masks) {
            for (size_t distance = 0; distance < 32; ++distance) {
                kit::Trial trial(uint32_t(distance), {int(23 + distance), 6});
                setContent(trial, 0);
                int bytes = 0;
                ASSERT_EQ(qelStatusOk, m.getSize(trial.size.width, mask.elements.data(), mask.size, &bytes));
                kit::ScratchBlock block(bytes, distance);
                auto* const pStart = reinterpret_cast<QelMorphState*>(block.odd());
                auto* const pEnd = reinterpret_cast<QelMorphState*>(block.flush());
                for (QelMorphState* const pState : {pStart, pEnd}) {
                    if (pState == pEnd && distance % 8 != 0) continue;
                    std::vector<Qel8u> gone = mask.elements;
                    ASSERT_EQ(qelStatusOk, m.init(trial.size.width, gone.data(), mask.size, mask.anchor, pState));
                    std::fill(gone.begin(), gone.end(), Qel8u(0));
                    agreesWithModel(m, trial, mask, pState);
                }
                ASSERT_TRUE(block.intact());
            }
        }
    });
}

TEST_P(Dilate, StatesOfTheirOwnServeThreadsAtOnce) {
    constexpr int kThreads = 4;
    const Mask masks[] = {drawn({"#.#", ".##", "##."}, {1, 1}), drawn({".#.", "###", ".#."}, {1, 1}),
                          drawn({"##", "##"}, {1, 1})};
    kit::Trial trial(3, {200, 60});
    const kit::Image<Qel8u> src(trial);
    for (const Mask& mask : masks) {
        kit::Image<Qel8u> want(trial.size, Qel8u(0));
        model(src, want, mask, true);
        std::vector<std::thread> threads;
        std::vector<int> wrong(kThreads);
        for (size_t t = 0; t < kThreads; ++t) {
            threads.emplace_back([&, t] {
                const State state = allocated(k8uC1, 200, mask);
                kit::Image<Qel8u> got(trial.size, Qel8u(0));
                for (int i = 0; i < 20; ++i) {
                    k8uC1.dilate(src.data(), src.step(), got.data(), got.step(), trial.size, qelBorderRepl,
                                 state.get());
                    wrong[t] += !sameBits(want, got);
                }
            });
        }
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(std::vector<int>(kThreads), wrong) << mask.text();
    }
}

// Sizes count pointers of 4 bytes, and of 8 where they are as wide.
TEST(Morphology, SizesToTheByte) {
    constexpr int kWide = sizeof(void*) - 4;
    const auto size = [](const auto& m, int roiWidth, const Mask& mask) {
        int bytes = 0;
        EXPECT_EQ(qelStatusOk, m.getSize(roiWidth, mask.elements.data(), mask.size, &bytes));
        return bytes;
    };
    onEveryMember([&](const auto& m) {
        using T = typename std::decay_t<decltype(m)>::Sample;
        SCOPED_TRACE(m.name);
        const int pixel = m.channels * int(sizeof(T));
        for (const int width : {1, 7, 16, 100, 1001}) {
            EXPECT_EQ(32 + 80 + 5 * kWide, size(m, width, drawn({".......", ".......", "......."}, {})));

            // 3 by 2 elements.
            const int filter = 2 * 16 + 2 * 4 * kWide + 2 * 2 * (width * pixel + 32) + 32;
            EXPECT_EQ(16 + 112 + 9 * kWide + filter, size(m, width, drawn({"....", ".###", ".###"}, {})));

            // 3 runs of 2 lengths. Small masks of several single-precision channels are general.
            const auto ellipse = [&](int elements, int rows) {
                return elements + 128 + 9 * kWide + (3 + 2) * 8 + (rows * 2 + 1) * (width * pixel + 32) +
                       rows * 5 * (4 + kWide) + 36;
            };
            const auto general = [&](int elements, int maskWidth, int rows) {
                const int block = ((width + maskWidth) * pixel + 15) & ~15;
                return 33 * elements + 96 + 5 * kWide + rows * 2 * block;
            };
            const Mask cross = drawn({".#.", "###", ".#."}, {});
            const Mask wide = drawn({"..#...", ".##...", "..#..."}, {});
            const Mask high = drawn({".......", ".......", "...#...", "..###..", ".......", "...#...", "......."}, {});
            const bool narrows = sizeof(T) == 4 && m.channels > 1;
            EXPECT_EQ(narrows ? general(16, 3, 3) : ellipse(16, 3), size(m, width, cross));
            EXPECT_EQ(general(32, 6, 3), size(m, width, wide)) << "the anchor's column is the fourth";
            EXPECT_EQ(ellipse(64, 4), size(m, width, high)) << "49 elements";

            EXPECT_EQ(general(16, 3, 3), size(m, width, drawn({"#.#", ".#.", "#.#"}, {})));
            EXPECT_EQ(general(16, 3, 2), size(m, width, drawn({"##.", ".##"}, {})));
        }
        const Mask tall = drawn(std::vector<std::string>(17, "#.#"), {});
        EXPECT_EQ(33 * 64 + 96 + 5 * kWide + 17 * 2 * ((4 * pixel + 15) & ~15), size(m, 1, tall));
    });
}

// The size tells the class: only an ellipse's counts rows by the length of runs.
TEST(Morphology, FewElementsOfSinglePrecisionAreGeneral) {
    const auto isGeneral = [](const auto& m, int width, int height) {
        using T = typename std::decay_t<decltype(m)>::Sample;
        Mask mask = clear({width, height}, {});
        for (int x = 0; x < width; ++x) mask.set(x, height / 2);
        mask.set(width / 2, 0);
        int bytes = 0;
        EXPECT_EQ(qelStatusOk, m.getSize(40, mask.elements.data(), mask.size, &bytes));
        const int block = ((40 + width) * m.channels * int(sizeof(T)) + 15) & ~15;
        return bytes == 33 * ((width * height + 15) & ~15) + 96 + 5 * (int(sizeof(void*)) - 4) + height * 2 * block;
    };
    EXPECT_FALSE(isGeneral(k8uC3, 3, 3));
    EXPECT_FALSE(isGeneral(k8uC4, 3, 3));
    EXPECT_FALSE(isGeneral(k32fC1, 3, 3));
    EXPECT_TRUE(isGeneral(k32fC3, 4, 4));
    EXPECT_FALSE(isGeneral(k32fC3, 17, 1 + 2));
    EXPECT_FALSE(isGeneral(k32fC3, 3, 6));
    EXPECT_TRUE(isGeneral(k32fC4, 16, 3));
    EXPECT_FALSE(isGeneral(k32fC4, 7, 7));
}

TEST(Morphology, SizesBeyondIntAreAnError) {
    const Mask mask = drawn({"#.#", ".#.", "#.#"}, {1, 1});
    for (const int width : {std::numeric_limits<int>::max(), 400000000}) {
        int bytes = 17;
        QelMorphState* pState = nullptr;
        std::vector<char> block(64, 'x');
        EXPECT_EQ(qelStatusOverflow, k32fC4.getSize(width, mask.elements.data(), mask.size, &bytes));
        EXPECT_EQ(17, bytes);
        EXPECT_EQ(qelStatusOverflow, k32fC4.init(width, mask.elements.data(), mask.size, mask.anchor,
                                                 reinterpret_cast<QelMorphState*>(block.data())));
        EXPECT_EQ(std::vector<char>(64, 'x'), block);
        EXPECT_EQ(qelStatusNoMemory, k32fC4.initAlloc(width, mask.elements.data(), mask.size, mask.anchor, &pState));
        EXPECT_EQ(nullptr, pState);
    }
}

TEST(Morphology, FaultsInOrder) {
    struct Args {
        const Qel8u* pMask;
        int roiWidth;
        QelSize maskSize;
        QelPoint anchor;
        bool hasOutput;
    };
    const std::vector<Qel8u> elements(6, 1);
    struct Fault {
        qelStatus status;
        void (*apply)(Args&);
    };
    const Fault faults[] = {{qelStatusNullPointer, [](Args& a) { a.pMask = nullptr; }},
                            {qelStatusBadSize, [](Args& a) { a.roiWidth = 0; }},
                            {qelStatusBadSize, [](Args& a) { a.roiWidth = -5; }},
                            {qelStatusBadSize, [](Args& a) { a.maskSize.width = 0; }},
                            {qelStatusBadSize, [](Args& a) { a.maskSize.height = -1; }},
                            {qelStatusBadAnchor, [](Args& a) { a.anchor.x = -1; }},
                            {qelStatusBadAnchor, [](Args& a) { a.anchor.x = 3; }},
                            {qelStatusBadAnchor, [](Args& a) { a.anchor.y = -1; }},
                            {qelStatusBadAnchor, [](Args& a) { a.anchor.y = 2; }},
                            {qelStatusNullPointer, [](Args& a) { a.hasOutput = false; }}};
    onEveryMember([&](const auto& m) {
        SCOPED_TRACE(m.name);
        const int before = kit::core().allocated;
        const auto expect = [&](qelStatus status, const Args& a) {
            std::vector<char> block(4096, 'x');
            QelMorphState* const pBlock = reinterpret_cast<QelMorphState*>(block.data());
            QelMorphState* pState = pBlock;
            int size = 17;
            EXPECT_EQ(status, m.init(a.roiWidth, a.pMask, a.maskSize, a.anchor, a.hasOutput ? pBlock : nullptr));
            EXPECT_EQ(std::vector<char>(4096, 'x'), block);
            EXPECT_EQ(status, m.initAlloc(a.roiWidth, a.pMask, a.maskSize, a.anchor, a.hasOutput ? &pState : nullptr));
            EXPECT_EQ(pBlock, pState);
            if (status != qelStatusBadAnchor) {  // the query takes the middle
                EXPECT_EQ(status, m.getSize(a.roiWidth, a.pMask, a.maskSize, a.hasOutput ? &size : nullptr));
                EXPECT_EQ(17, size);
            }
        };
        const Args good = {elements.data(), 9, {3, 2}, {1, 1}, true};
        for (const Fault& first : faults) {
            Args args = good;
            first.apply(args);
            expect(first.status, args);
            for (const Fault* second = &first + 1; second != std::end(faults); ++second) {
                args = good;
                second->apply(args);
                first.apply(args);
                if (first.status != qelStatusBadAnchor) expect(first.status, args);
            }
        }
        EXPECT_EQ(before, kit::core().allocated);
    });
    EXPECT_EQ(qelStatusNullPointer, qeliMorphologyFree(nullptr));
}

TEST(Morphology, FailingAllocationsLeaveNothing) {
    const Mask masks[] = {drawn({"#.#", ".##", "##."}, {1, 1}), drawn({".#.", "###"}, {1, 1}),
                          drawn({"##", "##"}, {1, 1}), drawn({".."}, {1, 0})};
    onEveryMember([&](const auto& m) {
        SCOPED_TRACE(m.name);
        for (const Mask& mask : masks) {
            const int before = kit::core().allocated;
            QelMorphState* pState = nullptr;
            for (int left = 0; left < 3; ++left) {
                kit::core().allocationsLeft = left;
                EXPECT_EQ(qelStatusNoMemory, m.initAlloc(20, mask.elements.data(), mask.size, mask.anchor, &pState));
                EXPECT_EQ(nullptr, pState);
                EXPECT_EQ(before, kit::core().allocated);
            }
            for (int left = 0; left < 2; ++left) {
                int bytes = 17;
                std::vector<char> block(8192, 'x');
                kit::core().allocationsLeft = left;
                EXPECT_EQ(qelStatusNoMemory, m.getSize(20, mask.elements.data(), mask.size, &bytes));
                kit::core().allocationsLeft = left;
                EXPECT_EQ(qelStatusNoMemory, m.init(20, mask.elements.data(), mask.size, mask.anchor,
                                                    reinterpret_cast<QelMorphState*>(block.data())));
                EXPECT_EQ(17, bytes);
                EXPECT_EQ(std::vector<char>(8192, 'x'), block);
                EXPECT_EQ(before, kit::core().allocated);
            }
            kit::core().allocationsLeft = 3;
            EXPECT_EQ(qelStatusOk, m.initAlloc(20, mask.elements.data(), mask.size, mask.anchor, &pState));
            EXPECT_EQ(before + 1, kit::core().allocated);
            EXPECT_EQ(qelStatusOk, qeliMorphologyFree(pState));
            EXPECT_EQ(before, kit::core().allocated);
            kit::core().reset();
        }
    });
}

TEST(Morphology, ChecksOfCalls) {
    const Mask mask = drawn({"#.#", ".##"}, {1, 1});
    onEveryMember([&](const auto& m) {
        const State state = allocated(m, 7, mask);
        for (const auto& call : {m.dilate, m.erode}) {
            kit::Checks(m.name, call)
                .template channels<0>(m.channels)
                .template channels<2>(m.channels)
                .template value<6>(state.get())
                .template fault<5>("mode 0", qelStatusBadArg, 0)
                .template fault<5>("mode 2", qelStatusBadArg, 2)
                .run();
        }
    });
}

TEST(Morphology, RegionsWiderThanTheStateServes) {
    for (const Mask& mask :
         {drawn({"#.#", ".##"}, {1, 1}), drawn({".#.", "###"}, {1, 1}), drawn({"##"}, {0, 0}), drawn({"."}, {0, 0})}) {
        onEveryMember([&](const auto& m) {
            using T = typename std::decay_t<decltype(m)>::Sample;
            const State state = allocated(m, 7, mask);
            const kit::Image<T> src({8, 3}, T(1), m.channels);
            kit::Image<T> got({8, 3}, T(9), m.channels);
            const kit::Image<T> untouched(got);
            for (const auto& call : {m.dilate, m.erode}) {
                EXPECT_EQ(qelStatusBadSize,
                          call(src.data(), src.step(), got.data(), got.step(), {8, 3}, qelBorderRepl, state.get()));
                EXPECT_EQ(qelStatusBadArg,
                          call(src.data(), src.step(), got.data(), got.step(), {8, 3}, qelBorderConst, state.get()));
                EXPECT_TRUE(sameBits(untouched, got));
                EXPECT_EQ(qelStatusOk,
                          call(src.data(), src.step(), got.data(), got.step(), {7, 3}, qelBorderRepl, state.get()));
                std::memcpy(got.data(), untouched.data(), size_t(got.step()) * 3);
            }
        });
    }
}

}  // namespace
