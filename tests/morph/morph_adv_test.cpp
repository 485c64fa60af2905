#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
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

enum Operation { kOpen, kClose, kTophat, kBlackhat, kGradient, kOperations };

// One sample type with its channels.
template <class T>
struct Member {
    using Sample = T;
    const char* name;
    int channels;
    qelStatus (*getSize)(QelSize, const Qel8u*, QelSize, int*);
    qelStatus (*init)(QelMorphAdvState*, QelSize, const Qel8u*, QelSize, QelPoint);
    qelStatus (*initAlloc)(QelMorphAdvState**, QelSize, const Qel8u*, QelSize, QelPoint);
    qelStatus (*run[kOperations])(const T*, int, T*, int, QelSize, int, QelMorphAdvState*);
    qelStatus (*stateSize)(int, const Qel8u*, QelSize, int*);
};

const Member<Qel8u> k8uC1 = {"8u_C1R",
                             1,
                             qeliMorphAdvGetSize_8u_C1R,
                             qeliMorphAdvInit_8u_C1R,
                             qeliMorphAdvInitAlloc_8u_C1R,
                             {qeliMorphOpenBorder_8u_C1R, qeliMorphCloseBorder_8u_C1R, qeliMorphTophatBorder_8u_C1R,
                              qeliMorphBlackhatBorder_8u_C1R, qeliMorphGradientBorder_8u_C1R},
                             qeliMorphologyGetSize_8u_C1R};
const Member<Qel8u> k8uC3 = {"8u_C3R",
                             3,
                             qeliMorphAdvGetSize_8u_C3R,
                             qeliMorphAdvInit_8u_C3R,
                             qeliMorphAdvInitAlloc_8u_C3R,
                             {qeliMorphOpenBorder_8u_C3R, qeliMorphCloseBorder_8u_C3R, qeliMorphTophatBorder_8u_C3R,
                              qeliMorphBlackhatBorder_8u_C3R, qeliMorphGradientBorder_8u_C3R},
                             qeliMorphologyGetSize_8u_C3R};
const Member<Qel8u> k8uC4 = {"8u_C4R",
                             4,
                             qeliMorphAdvGetSize_8u_C4R,
                             qeliMorphAdvInit_8u_C4R,
                             qeliMorphAdvInitAlloc_8u_C4R,
                             {qeliMorphOpenBorder_8u_C4R, qeliMorphCloseBorder_8u_C4R, qeliMorphTophatBorder_8u_C4R,
                              qeliMorphBlackhatBorder_8u_C4R, qeliMorphGradientBorder_8u_C4R},
                             qeliMorphologyGetSize_8u_C4R};
const Member<Qel32f> k32fC1 = {
    "32f_C1R",
    1,
    qeliMorphAdvGetSize_32f_C1R,
    qeliMorphAdvInit_32f_C1R,
    qeliMorphAdvInitAlloc_32f_C1R,
    {qeliMorphOpenBorder_32f_C1R, qeliMorphCloseBorder_32f_C1R, qeliMorphTophatBorder_32f_C1R,
     qeliMorphBlackhatBorder_32f_C1R, qeliMorphGradientBorder_32f_C1R},
    qeliMorphologyGetSize_32f_C1R};
const Member<Qel32f> k32fC3 = {
    "32f_C3R",
    3,
    qeliMorphAdvGetSize_32f_C3R,
    qeliMorphAdvInit_32f_C3R,
    qeliMorphAdvInitAlloc_32f_C3R,
    {qeliMorphOpenBorder_32f_C3R, qeliMorphCloseBorder_32f_C3R, qeliMorphTophatBorder_32f_C3R,
     qeliMorphBlackhatBorder_32f_C3R, qeliMorphGradientBorder_32f_C3R},
    qeliMorphologyGetSize_32f_C3R};
const Member<Qel32f> k32fC4 = {
    "32f_C4R",
    4,
    qeliMorphAdvGetSize_32f_C4R,
    qeliMorphAdvInit_32f_C4R,
    qeliMorphAdvInitAlloc_32f_C4R,
    {qeliMorphOpenBorder_32f_C4R, qeliMorphCloseBorder_32f_C4R, qeliMorphTophatBorder_32f_C4R,
     qeliMorphBlackhatBorder_32f_C4R, qeliMorphGradientBorder_32f_C4R},
    qeliMorphologyGetSize_32f_C4R};

void onEveryMember(const auto& work) {
    work(k8uC1);
    work(k8uC3);
    work(k8uC4);
    work(k32fC1);
    work(k32fC3);
    work(k32fC4);
}

struct Freed {
    void operator()(QelMorphAdvState* pState) const { EXPECT_EQ(qelStatusOk, qeliMorphAdvFree(pState)); }
};
using State = std::unique_ptr<QelMorphAdvState, Freed>;

template <class T>
State allocated(const Member<T>& m, QelSize roiSize, const Mask& mask) {
    QelMorphAdvState* pState = nullptr;
    EXPECT_EQ(qelStatusOk, m.initAlloc(&pState, roiSize, mask.elements.data(), mask.size, mask.anchor));
    return State(pState);
}

Mask turned(const Mask& mask) {
    Mask t = mask;
    std::reverse(t.elements.begin(), t.elements.end());
    t.anchor = {mask.size.width - 1 - mask.anchor.x, mask.size.height - 1 - mask.anchor.y};
    return t;
}

// a - b, and nothing below 0.
template <class T>
void subtract(const kit::Image<T>& a, const kit::Image<T>& b, kit::Image<T>& out) {
    for (int y = 0; y < a.size().height; ++y)
        for (int x = 0; x < a.size().width * a.channels(); ++x)
            out.at(x, y) = a.at(x, y) > b.at(x, y) ? T(a.at(x, y) - b.at(x, y)) : T(0);
}

template <class T>
void composed(const kit::Image<T>& src, kit::Image<T>& dst, const Mask& mask, Operation operation) {
    kit::Image<T> between(src);
    const bool opens = operation == kOpen || operation == kTophat;
    if (operation == kGradient) {
        kit::Image<T> dilated(src);
        model(src, dilated, mask, true);
        model(src, between, mask, false);
        return subtract(dilated, between, dst);
    }
    kit::Image<T> result(src);
    model(src, between, mask, !opens);
    model(between, result, turned(mask), opens);
    if (operation == kTophat) return subtract(src, result, dst);
    if (operation == kBlackhat) return subtract(result, src, dst);
    model(result, dst, drawn({"#"}, {0, 0}), true);
}

template <class T>
void agreesWithModel(const Member<T>& m, kit::Trial& trial, const Mask& mask, QelMorphAdvState* pState) {
    const kit::Image<T> src(trial, m.channels);
    for (int operation = 0; operation < kOperations; ++operation) {
        kit::Image<T> got(trial, m.channels);
        kit::Image<T> want(got);
        composed(src, want, mask, Operation(operation));
        ASSERT_EQ(qelStatusOk,
                  m.run[operation](src.data(), src.step(), got.data(), got.step(), trial.size, qelBorderRepl, pState));
        ASSERT_TRUE(sameBits(want, got)) << m.name << " operation " << operation << " " << mask.text() << trial;
    }
}

class MorphAdv : public kit::EveryTarget {};
ON_EVERY_TARGET(MorphAdv);

template <class T>
void randomMasks(const Member<T>& m, Kind kind, uint32_t trials) {
    for (uint32_t seed = 0; seed < trials; ++seed) {
        kit::Trial trial(seed, {1, 1});
        trial.size = {trial.between(1, 40), trial.between(1, 50)};
        setContent(trial, seed);
        const Mask mask = randomMask(trial, kind, seed % 8 == 7 ? 19 : 7);
        agreesWithModel(m, trial, mask, allocated(m, trial.size, mask).get());
        if (testing::Test::HasFailure()) return;
    }
}

TEST_P(MorphAdv, GeneralMasks) {
    onEveryMember([](const auto& m) { randomMasks(m, Kind::kAny, 20); });
    onEveryMember([](const auto& m) { randomMasks(m, Kind::kSparse, 20); });
}
TEST_P(MorphAdv, Rectangles) {
    onEveryMember([](const auto& m) { randomMasks(m, Kind::kRect, 40); });
}
TEST_P(MorphAdv, Ellipses) {
    onEveryMember([](const auto& m) { randomMasks(m, Kind::kEllipse, 40); });
}

TEST_P(MorphAdv, AllMasksOf3By3) {
    for (int bits = 0; bits < 512; ++bits) {
        const int anchor = bits * 5 % 9;
        Mask mask = clear({3, 3}, {anchor % 3, anchor / 3});
        for (int i = 0; i < 9; ++i) mask.elements[size_t(i)] = Qel8u(bits >> i & 1);
        kit::Trial trial(uint32_t(bits), {1 + bits * 7 % 37, 1 + bits % 6});
        setContent(trial, 0);
        agreesWithModel(k8uC1, trial, mask, allocated(k8uC1, trial.size, mask).get());
    }
}

// High enough for several turns of rows, with masks higher than a turn.
TEST_P(MorphAdv, ManyRows) {
    const Mask masks[] = {drawn({"#.#", ".##", "##."}, {1, 1}), drawn({".#.", "###", ".#."}, {1, 1}),
                          drawn(std::vector<std::string>(25, "##"), {1, 12}), drawn({"...", "..#"}, {0, 0}),
                          drawn({"..", ".."}, {1, 1})};
    for (const Mask& mask : masks) {
        kit::Trial trial(1, {19, 131});
        agreesWithModel(k8uC3, trial, mask, allocated(k8uC3, trial.size, mask).get());
        setContent(trial, 0);
        agreesWithModel(k32fC1, trial, mask, allocated(k32fC1, trial.size, mask).get());
    }
}

// A mask that would be an ellipse is general here, and any anchor fits the size.
TEST_P(MorphAdv, StatesInTheCallersBlock) {
    const Mask masks[] = {drawn({"#.#", ".##", "##."}, {0, 2}), drawn({".#.", "###", ".#.", ".#."}, {1, 2}),
                          drawn({"..##", "..##"}, {0, 0}), drawn({"....", "...."}, {2, 1})};
    onEveryMember([&](const auto& m) {
        for (const Mask& mask : masks) {
            for (size_t distance = 0; distance < 32; ++distance) {
                kit::Trial trial(uint32_t(distance), {int(3 + distance), 6});
                setContent(trial, 0);
                int bytes = 0;
                ASSERT_EQ(qelStatusOk, m.getSize(trial.size, mask.elements.data(), mask.size, &bytes));
                kit::ScratchBlock block(bytes, distance);
                auto* const pStart = reinterpret_cast<QelMorphAdvState*>(block.odd());
                auto* const pEnd = reinterpret_cast<QelMorphAdvState*>(block.flush());
                for (QelMorphAdvState* const pState : {pStart, pEnd}) {
                    if (pState == pEnd && distance % 8 != 0) continue;
                    std::vector<Qel8u> gone = mask.elements;
                    ASSERT_EQ(qelStatusOk, m.init(pState, trial.size, gone.data(), mask.size, mask.anchor));
                    std::fill(gone.begin(), gone.end(), Qel8u(0));
                    agreesWithModel(m, trial, mask, pState);
                }
                ASSERT_TRUE(block.intact());
            }
        }
    });
}

TEST_P(MorphAdv, ConstantImagesHaveNoHats) {
    const Mask mask = drawn({"##.", ".##"}, {1, 1});
    onEveryMember([&](const auto& m) {
        using T = typename std::decay_t<decltype(m)>::Sample;
        const kit::Image<T> src({40, 9}, T(77), m.channels);
        const kit::Image<T> zero({40, 9}, T(0), m.channels);
        for (const Operation operation : {kTophat, kBlackhat, kGradient}) {
            kit::Image<T> got({40, 9}, T(1), m.channels);
            ASSERT_EQ(qelStatusOk, m.run[operation](src.data(), src.step(), got.data(), got.step(), {40, 9},
                                                    qelBorderRepl, allocated(m, {40, 9}, mask).get()));
            ASSERT_TRUE(sameBits(zero, got));
        }
    });
}

// Differences of equal infinities are NaNs, and stay.
TEST_P(MorphAdv, DifferencesOfInfinitiesAreNaNs) {
    constexpr Qel32f kInfinity = std::numeric_limits<Qel32f>::infinity();
    const Mask mask = drawn({"###"}, {1, 0});
    const kit::Image<Qel32f> src({30, 3}, kInfinity);
    for (const Operation operation : {kTophat, kBlackhat, kGradient}) {
        kit::Image<Qel32f> got({30, 3}, 1.0f);
        ASSERT_EQ(qelStatusOk, k32fC1.run[operation](src.data(), src.step(), got.data(), got.step(), {30, 3},
                                                     qelBorderRepl, allocated(k32fC1, {30, 3}, mask).get()));
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 30; ++x) ASSERT_NE(got.at(x, y), got.at(x, y));
    }
}

TEST_P(MorphAdv, NarrowerAndHigherRegionsThatFillTheWorkImage) {
    const Mask masks[] = {drawn({"#.#", ".##"}, {1, 1}), drawn({".#.", "###"}, {1, 1}), drawn({"##", "##"}, {1, 1})};
    for (const Mask& mask : masks) {
        kit::Trial trial(1, {60, 9});  // 64 bytes by 9
        const State state = allocated(k8uC1, trial.size, mask);
        for (const QelSize size : {QelSize{31, 18}, {32, 18}, {33, 9}, {60, 9}}) {
            trial.size = size;
            agreesWithModel(k8uC1, trial, mask, state.get());
        }
    }
}

TEST_P(MorphAdv, StatesOfTheirOwnServeThreadsAtOnce) {
    constexpr int kThreads = 4;
    const Mask mask = drawn({".#.", "###", ".#."}, {1, 1});
    kit::Trial trial(3, {200, 60});
    const kit::Image<Qel8u> src(trial);
    kit::Image<Qel8u> want(trial.size, Qel8u(0));
    composed(src, want, mask, kTophat);
    std::vector<std::thread> threads;
    std::vector<int> wrong(kThreads);
    for (size_t t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            const State state = allocated(k8uC1, trial.size, mask);
            kit::Image<Qel8u> got(trial.size, Qel8u(0));
            for (int i = 0; i < 20; ++i) {
                k8uC1.run[kTophat](src.data(), src.step(), got.data(), got.step(), trial.size, qelBorderRepl,
                                   state.get());
                wrong[t] += !sameBits(want, got);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(std::vector<int>(kThreads), wrong);
}

TEST(MorphAdvState, SizesToTheByte) {
    constexpr int kWide = sizeof(void*) - 4;
    const Mask general = drawn({"#.#", ".##"}, {});
    const Mask rect = drawn({".##", ".##"}, {});
    const Mask empty = drawn({"..."}, {});
    const Mask ellipse = drawn({".#.", "###"}, {});
    onEveryMember([&](const auto& m) {
        using T = typename std::decay_t<decltype(m)>::Sample;
        for (const QelSize roi : {QelSize{1, 1}, {7, 3}, {32, 20}, {101, 77}}) {
            const int row = (roi.width * m.channels * int(sizeof(T)) + 31) & ~31;
            for (const Mask* mask : {&general, &rect, &empty, &ellipse}) {
                int ofOne = 0;
                int bytes = 0;
                // The ellipse is as large as a general mask.
                const Mask& like = mask == &ellipse ? general : *mask;
                ASSERT_EQ(qelStatusOk, m.stateSize(roi.width, like.elements.data(), like.size, &ofOne));
                ASSERT_EQ(qelStatusOk, m.getSize(roi, mask->elements.data(), mask->size, &bytes));
                EXPECT_EQ(row * roi.height + 2 * ofOne + 84 + 3 * kWide, bytes) << m.name;
            }
        }
    });
}

TEST(MorphAdvState, SizesBeyondIntAreAnError) {
    const Mask mask = drawn({"##"}, {0, 0});
    int bytes = 17;
    QelMorphAdvState* pState = nullptr;
    std::vector<char> block(64, 'x');
    EXPECT_EQ(qelStatusOverflow, k8uC1.getSize({100000, 100000}, mask.elements.data(), mask.size, &bytes));
    const Qel8u empty = 0;  // its state does not grow with the region
    EXPECT_EQ(qelStatusOverflow, qeliMorphAdvGetSize_32f_C4R({INT_MAX, INT_MAX}, &empty, {1, 1}, &bytes));
    EXPECT_EQ(qelStatusOverflow, qeliMorphAdvGetSize_8u_C3R({INT_MAX, INT_MAX}, &empty, {1, 1}, &bytes));
    EXPECT_EQ(17, bytes);
    EXPECT_EQ(qelStatusOverflow, k8uC1.init(reinterpret_cast<QelMorphAdvState*>(block.data()), {100000, 100000},
                                            mask.elements.data(), mask.size, mask.anchor));
    EXPECT_EQ(std::vector<char>(64, 'x'), block);
    const int before = kit::core().allocated;
    EXPECT_EQ(qelStatusNoMemory,
              k8uC1.initAlloc(&pState, {100000, 100000}, mask.elements.data(), mask.size, mask.anchor));
    EXPECT_EQ(nullptr, pState);
    EXPECT_EQ(before, kit::core().allocated);
}

struct Args {
    bool hasOutput;
    QelSize roiSize;
    const Qel8u* pMask;
    QelSize maskSize;
    QelPoint anchor;
};
struct Fault {
    qelStatus status;
    void (*apply)(Args&);
};

// Each fault alone, and each pair of them, where the earlier one is reported.
void inOrder(const std::vector<Fault>& faults, const auto& expect) {
    const std::vector<Qel8u> elements(6, 1);
    const Args good = {true, {9, 4}, elements.data(), {3, 2}, {1, 1}};
    for (size_t i = 0; i < faults.size(); ++i) {
        Args args = good;
        faults[i].apply(args);
        expect(faults[i].status, args);
        for (size_t j = i + 1; j < faults.size(); ++j) {
            args = good;
            faults[j].apply(args);
            faults[i].apply(args);
            if (args.maskSize.width > 0 && args.maskSize.height > 0) expect(faults[i].status, args);
        }
    }
}

TEST(MorphAdvState, FaultsInOrder) {
    const Fault output = {qelStatusNullPointer, [](Args& a) { a.hasOutput = false; }};
    const Fault height = {qelStatusBadSize, [](Args& a) { a.roiSize.height = 0; }};
    const std::vector<Fault> others = {{qelStatusNullPointer, [](Args& a) { a.pMask = nullptr; }},
                                       {qelStatusBadSize, [](Args& a) { a.roiSize.width = 0; }},
                                       {qelStatusBadSize, [](Args& a) { a.maskSize.width = 0; }},
                                       {qelStatusBadSize, [](Args& a) { a.maskSize.height = -1; }},
                                       {qelStatusBadAnchor, [](Args& a) { a.anchor.x = -1; }},
                                       {qelStatusBadAnchor, [](Args& a) { a.anchor.x = 3; }},
                                       {qelStatusBadAnchor, [](Args& a) { a.anchor.y = -1; }},
                                       {qelStatusBadAnchor, [](Args& a) { a.anchor.y = 2; }}};
    std::vector<Fault> ofInit = {height, output};
    std::vector<Fault> ofInitAlloc = {output, height};
    ofInit.insert(ofInit.end(), others.begin(), others.end());
    ofInitAlloc.insert(ofInitAlloc.end(), others.begin(), others.end());
    onEveryMember([&](const auto& m) {
        SCOPED_TRACE(m.name);
        const int before = kit::core().allocated;
        inOrder(ofInit, [&](qelStatus status, const Args& a) {
            std::vector<char> block(8192, 'x');
            QelMorphAdvState* const pBlock = reinterpret_cast<QelMorphAdvState*>(block.data());
            EXPECT_EQ(status, m.init(a.hasOutput ? pBlock : nullptr, a.roiSize, a.pMask, a.maskSize, a.anchor));
            EXPECT_EQ(std::vector<char>(8192, 'x'), block);
            if (a.anchor.x == 1 && a.anchor.y == 1) {  // the query takes the middle
                int size = 17;
                EXPECT_EQ(status, m.getSize(a.roiSize, a.pMask, a.maskSize, a.hasOutput ? &size : nullptr));
                EXPECT_EQ(17, size);
            }
        });
        inOrder(ofInitAlloc, [&](qelStatus status, const Args& a) {
            QelMorphAdvState* pState = nullptr;
            EXPECT_EQ(status, m.initAlloc(a.hasOutput ? &pState : nullptr, a.roiSize, a.pMask, a.maskSize, a.anchor));
            EXPECT_EQ(nullptr, pState);
        });
        EXPECT_EQ(before, kit::core().allocated);
    });
    EXPECT_EQ(qelStatusNullPointer, qeliMorphAdvFree(nullptr));
}

TEST(MorphAdvState, FailingAllocationsLeaveNothing) {
    const Mask masks[] = {drawn({"#.#", ".##"}, {1, 1}), drawn({".#.", "###"}, {1, 1}), drawn({"##"}, {1, 0})};
    onEveryMember([&](const auto& m) {
        SCOPED_TRACE(m.name);
        for (const Mask& mask : masks) {
            const int before = kit::core().allocated;
            QelMorphAdvState* pState = nullptr;
            int left = 0;
            const auto build = [&] {
                kit::core().allocationsLeft = left;
                return m.initAlloc(&pState, {20, 5}, mask.elements.data(), mask.size, mask.anchor);
            };
            for (; build() != qelStatusOk; ++left) {
                EXPECT_EQ(nullptr, pState);
                EXPECT_EQ(before, kit::core().allocated);
                ASSERT_LT(left, 20);
            }
            EXPECT_EQ(8, left) << "the analysis and the state, twice, the work image and the record";
            EXPECT_EQ(before + 4, kit::core().allocated);
            EXPECT_EQ(qelStatusOk, qeliMorphAdvFree(pState));
            EXPECT_EQ(before, kit::core().allocated);

            std::vector<Qel8u> block(65536);
            for (int allowed = 0; allowed < 6; ++allowed) {
                kit::core().allocationsLeft = allowed;
                EXPECT_EQ(qelStatusNoMemory, m.init(reinterpret_cast<QelMorphAdvState*>(block.data()), {20, 5},
                                                    mask.elements.data(), mask.size, mask.anchor));
                EXPECT_EQ(before, kit::core().allocated);
            }
            kit::core().reset();
        }
    });
}

TEST(MorphAdvState, ChecksOfCalls) {
    const Mask mask = drawn({"#.#", ".##"}, {1, 1});
    onEveryMember([&](const auto& m) {
        const State state = allocated(m, {7, 5}, mask);
        for (const auto& call : m.run) {
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

TEST(MorphAdvState, RegionsOfOtherSizes) {
    const Mask mask = drawn({"#.#", ".##"}, {1, 1});
    onEveryMember([&](const auto& m) {
        using T = typename std::decay_t<decltype(m)>::Sample;
        const State state = allocated(m, {40, 5}, mask);
        const kit::Image<T> src({41, 9}, T(1), m.channels);
        kit::Image<T> got({41, 9}, T(9), m.channels);
        const kit::Image<T> untouched(got);
        for (const auto& call : m.run) {
            for (const QelSize bad : {QelSize{41, 5}, {40, 4}, {1, 9}}) {
                EXPECT_EQ(qelStatusBadSize,
                          call(src.data(), src.step(), got.data(), got.step(), bad, qelBorderRepl, state.get()));
                EXPECT_TRUE(sameBits(untouched, got));
            }
            EXPECT_EQ(qelStatusOk,
                      call(src.data(), src.step(), got.data(), got.step(), {40, 5}, qelBorderRepl, state.get()));
            std::memcpy(got.data(), untouched.data(), size_t(got.step()) * 9);
        }
    });
}

}  // namespace
