#include <algorithm>
#include <climits>
#include <cstring>
#include <limits>
#include <thread>
#include <vector>

#include "kit/checks.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/morph.h"

namespace {

using Limits32f = std::numeric_limits<Qel32f>;
enum class Op { kDilate, kErode };

// The types of a member, its functions, and the rule for one pixel: `start`, then sum after sum.
struct Bytes {
    using Sample = Qel8u;
    using Value = Qel32s;
    using Sum = long long;
    static constexpr auto getSize = qeliMorphGrayGetSize_8u_C1R;
    static constexpr auto init = qeliMorphGrayInit_8u_C1R;
    static constexpr auto initAlloc = qeliMorphGrayInitAlloc_8u_C1R;
    static constexpr auto free = qeliMorphGrayFree_8u_C1R;
    static constexpr auto dilate = qeliGrayDilateBorder_8u_C1R;
    static constexpr auto erode = qeliGrayErodeBorder_8u_C1R;

    static Sum start(Op op) { return op == Op::kDilate ? 0 : 255; }
    static Sample store(Sum sum) { return static_cast<Sample>(std::clamp<Sum>(sum, 0, 255)); }
    static Value value(kit::Trial& trial, int kind) {
        constexpr Value kEnds[] = {INT_MIN, INT_MIN + 1, -256, -255, -254, 0, 254, 255, 256, INT_MAX - 255, INT_MAX};
        if (kind == 0) return 0;
        if (kind == 1) return kEnds[trial.between(0, static_cast<int>(std::size(kEnds)) - 1)];
        return trial.between(-60, 60);
    }
};
struct Floats {
    using Sample = Qel32f;
    using Value = Qel32f;
    using Sum = long double;
    static constexpr auto getSize = qeliMorphGrayGetSize_32f_C1R;
    static constexpr auto init = qeliMorphGrayInit_32f_C1R;
    static constexpr auto initAlloc = qeliMorphGrayInitAlloc_32f_C1R;
    static constexpr auto free = qeliMorphGrayFree_32f_C1R;
    static constexpr auto dilate = qeliGrayDilateBorder_32f_C1R;
    static constexpr auto erode = qeliGrayErodeBorder_32f_C1R;

    static Sum start(Op op) { return op == Op::kDilate ? -3.4028235e38F : 3.4028235e38F; }
    static Sample store(Sum sum) { return static_cast<Sample>(sum); }
    static Value value(kit::Trial& trial, int kind) {
        constexpr Value kEnds[] = {
            Limits32f::max(), Limits32f::lowest(), Limits32f::infinity(), 0, -0.0F, -Limits32f::infinity(), 1e-40F, 1};
        if (kind == 0) return 0;
        if (kind == 1) return kEnds[trial.between(0, static_cast<int>(std::size(kEnds)) - 1)];
        return trial.anySample<Qel32f>() / 16;
    }
};

template <class M>
struct Mask {
    Mask(QelSize maskSize, QelPoint maskAnchor)
        : size(maskSize), anchor(maskAnchor), values(size_t(maskSize.width) * size_t(maskSize.height)) {}
    Mask(kit::Trial& trial, QelSize maskSize)
        : Mask(maskSize, {trial.between(0, maskSize.width - 1), trial.between(0, maskSize.height - 1)}) {
        const int kind = trial.between(0, 3);
        for (auto& value : values) value = M::value(trial, kind);
    }

    QelSize size;
    QelPoint anchor;
    std::vector<typename M::Value> values;
};

template <class M>
typename M::Sample model(Op op, const kit::Image<typename M::Sample>& src, const Mask<M>& mask, int x, int y) {
    typename M::Sum found = M::start(op);
    for (int j = 0; j < mask.size.height; ++j) {
        for (int i = 0; i < mask.size.width; ++i) {
            const int fromX = std::clamp(x + i - mask.anchor.x, 0, src.size().width - 1);
            const int fromY = std::clamp(y + j - mask.anchor.y, 0, src.size().height - 1);
            const typename M::Sum sum =
                static_cast<typename M::Sum>(mask.values[size_t(j) * size_t(mask.size.width) + size_t(i)]) +
                src.at(fromX, fromY);
            if (op == Op::kDilate ? sum > found : sum < found) found = sum;
        }
    }
    return M::store(found);
}

// A state in a block of exactly the bytes that it needs, which may begin at any address.
template <class M>
class State {
public:
    State(const Mask<M>& mask, QelSize largest, size_t distance)
        : bytes_(bytesFor(mask, largest)), block_(bytes_, distance), p_(distance == 0 ? block_.flush() : block_.odd()) {
        EXPECT_EQ(qelStatusOk, M::init(get(), largest, mask.values.data(), mask.size, mask.anchor));
        EXPECT_TRUE(block_.intact());
    }
    QelMorphGrayState* get() { return reinterpret_cast<QelMorphGrayState*>(p_); }

private:
    static int bytesFor(const Mask<M>& mask, QelSize largest) {
        int bytes = 0;
        EXPECT_EQ(qelStatusOk, M::getSize(largest, mask.values.data(), mask.size, &bytes));
        EXPECT_EQ(mask.size.width * mask.size.height * 4 + 24 + int(sizeof(void*)), bytes);
        return bytes;
    }

    int bytes_;
    kit::ScratchBlock block_;
    unsigned char* p_;
};

template <class M>
void agrees(kit::Trial& trial, Op op, const Mask<M>& mask) {
    kit::Image<typename M::Sample> src(trial), got(trial), want(got);
    for (int y = 0; y < trial.size.height; ++y)
        for (int x = 0; x < trial.size.width; ++x) want.at(x, y) = model(op, src, mask, x, y);

    const QelSize largest = {trial.size.width + trial.between(0, 2), trial.size.height + trial.between(0, 2)};
    State<M> state(mask, largest, size_t(trial.between(0, 17)));
    const auto function = op == Op::kDilate ? M::dilate : M::erode;
    ASSERT_EQ(qelStatusOk, function(src.data(), src.step(), got.data(), got.step(), trial.size, 1, state.get()))
        << trial;
    ASSERT_TRUE(sameBits(want, got)) << trial << ", mask " << mask.size.width << "x" << mask.size.height << ", anchor "
                                     << mask.anchor.x << ", " << mask.anchor.y;
}

// Every width with a small mask, then regions and masks of many shapes, masks wider and higher than the region too.
template <class M>
void agreesWithModel(Op op) {
    constexpr QelSize kMasks[] = {{1, 1}, {5, 5}, {3, 3}, {7, 2}, {1, 9}, {40, 2}, {2, 40}, {90, 1}, {33, 17}};
    for (uint32_t seed = 0; seed < 260; ++seed) {
        kit::Trial trial(seed);
        if (seed >= kit::Trial::kEveryWidth) trial.size.height = std::min(trial.size.height, 20);
        const QelSize size = seed < kit::Trial::kEveryWidth ? QelSize{trial.between(1, 6), trial.between(1, 4)}
                                                            : kMasks[seed % std::size(kMasks)];
        ASSERT_NO_FATAL_FAILURE(agrees(trial, op, Mask<M>(trial, size)));
    }
}

// Anchors at every place of a mask, over a tiny region and one of several vectors.
template <class M>
void anchorsAgree(Op op) {
    for (const QelSize region : {QelSize{3, 2}, {77, 4}}) {
        for (int at = 0; at < 20; ++at) {
            kit::Trial trial(6, region);
            Mask<M> mask(trial, {5, 4});
            mask.anchor = {at % 5, at / 5};
            ASSERT_NO_FATAL_FAILURE(agrees(trial, op, mask));
        }
    }
}

class MorphGray : public kit::EveryTarget {};
ON_EVERY_TARGET(MorphGray);

TEST_P(MorphGray, qeliGrayDilateBorder_8u_C1R) { agreesWithModel<Bytes>(Op::kDilate); }
TEST_P(MorphGray, qeliGrayErodeBorder_8u_C1R) { agreesWithModel<Bytes>(Op::kErode); }
TEST_P(MorphGray, qeliGrayDilateBorder_32f_C1R) { agreesWithModel<Floats>(Op::kDilate); }
TEST_P(MorphGray, qeliGrayErodeBorder_32f_C1R) { agreesWithModel<Floats>(Op::kErode); }

TEST_P(MorphGray, AnchorsAtEveryPlace) {
    anchorsAgree<Bytes>(Op::kDilate);
    anchorsAgree<Bytes>(Op::kErode);
    anchorsAgree<Floats>(Op::kDilate);
    anchorsAgree<Floats>(Op::kErode);
}

// Every value under every sample.
TEST_P(MorphGray, EverySumOfBytes) {
    kit::Trial trial(0, {256, 1});
    kit::Image<Qel8u> src(trial), got(trial), want(got);
    for (int x = 0; x < 256; ++x) src.at(x, 0) = static_cast<Qel8u>(x);
    for (int value = -300; value <= 300; ++value) {
        Mask<Bytes> mask({1, 1}, {0, 0});
        mask.values = {value};
        State<Bytes> state(mask, trial.size, 3);
        for (int x = 0; x < 256; ++x) want.at(x, 0) = static_cast<Qel8u>(std::clamp(x + value, 0, 255));
        for (const auto function : {qeliGrayDilateBorder_8u_C1R, qeliGrayErodeBorder_8u_C1R}) {
            ASSERT_EQ(qelStatusOk,
                      function(src.data(), src.step(), got.data(), got.step(), trial.size, 1, state.get()));
            ASSERT_TRUE(sameBits(want, got)) << "value " << value;
        }
    }
}

// Two threads use one state at once.
TEST_P(MorphGray, AStateIsShared) {
    kit::Trial trial(3, {150, 60});
    Mask<Bytes> mask(trial, {5, 5});
    QelMorphGrayState* state = nullptr;
    ASSERT_EQ(qelStatusOk,
              qeliMorphGrayInitAlloc_8u_C1R(&state, trial.size, mask.values.data(), mask.size, mask.anchor));
    kit::Image<Qel8u> src(trial), first(trial), second(first), want(first);
    const auto run = [&](kit::Image<Qel8u>* out) {
        for (int i = 0; i < 20; ++i)
            qeliGrayDilateBorder_8u_C1R(src.data(), src.step(), out->data(), out->step(), trial.size, 1, state);
    };
    run(&want);
    std::thread other(run, &second);
    run(&first);
    other.join();
    EXPECT_TRUE(sameBits(want, first));
    EXPECT_TRUE(sameBits(want, second));
    EXPECT_EQ(qelStatusOk, qeliMorphGrayFree_8u_C1R(state));
}

// The record, its fields in their order, and the values behind it.
template <class M>
void stateIsLaidOut() {
    kit::Trial trial(0, {9, 9});
    const Mask<M> mask(trial, {4, 3});
    State<M> state(mask, {640, 480}, 0);
    const auto* bytes = reinterpret_cast<const char*>(state.get());
    const char* values = nullptr;
    std::memcpy(&values, bytes, sizeof(values));
    EXPECT_EQ(bytes + 24 + sizeof(void*), values);
    Qel32s words[6];
    std::memcpy(words, bytes + sizeof(void*), sizeof(words));
    const Qel32s want[] = {4, 3, mask.anchor.x, mask.anchor.y, 640, 480};
    EXPECT_TRUE(std::equal(words, words + 6, want));
    EXPECT_EQ(0, std::memcmp(mask.values.data(), values, mask.values.size() * 4));
}

TEST(MorphGrayState, IsLaidOut) {
    stateIsLaidOut<Bytes>();
    stateIsLaidOut<Floats>();
}

template <class M>
void memoryIsReleased() {
    kit::core().reset();
    const int before = kit::core().allocated;
    const typename M::Value mask[] = {1, 2};
    QelMorphGrayState* state = nullptr;
    kit::core().allocationsLeft = 0;
    EXPECT_EQ(qelStatusNoMemory, M::initAlloc(&state, {4, 4}, mask, {2, 1}, {0, 0}));
    EXPECT_EQ(nullptr, state);
    kit::core().reset();
    EXPECT_EQ(qelStatusNoMemory, M::initAlloc(&state, {4, 4}, mask, {INT_MAX, INT_MAX}, {0, 0}));
    EXPECT_EQ(nullptr, state);
    EXPECT_EQ(qelStatusOk, M::initAlloc(&state, {4, 4}, mask, {2, 1}, {0, 0}));
    EXPECT_EQ(before + 1, kit::core().allocated);
    EXPECT_EQ(qelStatusOk, M::free(state));
    EXPECT_EQ(before, kit::core().allocated);
    EXPECT_EQ(qelStatusNullPointer, M::free(nullptr));
}

TEST(MorphGrayState, IsReleased) {
    memoryIsReleased<Bytes>();
    memoryIsReleased<Floats>();
}

// qeliMorphGrayFree_8u_C1R, qeliMorphGrayFree_32f_C1R: see above.
template <class M>
void checksOfStates() {
    CHECKS_OF(M::getSize).run();
    const Mask<M> mask({7, 5}, {0, 0});
    State<M> state(mask, {1, 1}, 0);
    CHECKS_OF(M::init)
        .template value<0>(state.get())
        .template value<2>(mask.values.data())
        .template fault<4>("anchor left", qelStatusBadAnchor, QelPoint{-1, 0})
        .template fault<4>("anchor right", qelStatusBadAnchor, QelPoint{7, 0})
        .template fault<4>("anchor above", qelStatusBadAnchor, QelPoint{0, -1})
        .template fault<4>("anchor below", qelStatusBadAnchor, QelPoint{0, 5})
        .run();
}

template <class M>
void checksOfFilters(const typename M::Value* mask) {
    QelMorphGrayState* state = nullptr;
    ASSERT_EQ(qelStatusOk, M::initAlloc(&state, {7, 5}, mask, {1, 1}, {0, 0}));
    QelMorphGrayState* narrow = nullptr;
    ASSERT_EQ(qelStatusOk, M::initAlloc(&narrow, {6, 5}, mask, {1, 1}, {0, 0}));
    QelMorphGrayState* low = nullptr;
    ASSERT_EQ(qelStatusOk, M::initAlloc(&low, {7, 4}, mask, {1, 1}, {0, 0}));
    for (const auto function : {M::dilate, M::erode}) {
        CHECKS_OF(function)
            .template value<6>(state)
            .template fault<5>("border mode 0", qelStatusBadArg, 0)
            .template fault<5>("border mode 2", qelStatusBadArg, 2)
            .template fault<6>("state for less width", qelStatusBadSize, narrow)
            .template fault<6>("state for less height", qelStatusBadSize, low)
            .run();
    }
    for (QelMorphGrayState* s : {state, narrow, low}) EXPECT_EQ(qelStatusOk, M::free(s));
}

TEST(MorphGrayChecks, EveryMember) {
    checksOfStates<Bytes>();
    checksOfStates<Floats>();
    const Qel32s integer = 1;
    checksOfFilters<Bytes>(&integer);
    const Qel32f real = 1;
    checksOfFilters<Floats>(&real);
}

template <class M>
void checksOfInitAlloc() {
    const typename M::Value mask = 1;
    QelMorphGrayState* state = nullptr;
    const auto expect = [&](qelStatus status, QelMorphGrayState** ppState, QelSize roi, const typename M::Value* pMask,
                            QelSize size, QelPoint anchor) {
        EXPECT_EQ(status, M::initAlloc(ppState, roi, pMask, size, anchor));
        EXPECT_EQ(nullptr, state);
    };
    expect(qelStatusNullPointer, nullptr, {0, 1}, &mask, {1, 1}, {1, 0});
    expect(qelStatusNullPointer, &state, {0, 1}, nullptr, {1, 1}, {1, 0});
    expect(qelStatusBadSize, &state, {0, 1}, &mask, {1, 1}, {1, 0});
    expect(qelStatusBadSize, &state, {1, -1}, &mask, {1, 1}, {1, 0});
    expect(qelStatusBadSize, &state, {1, 1}, &mask, {0, 1}, {1, 0});
    expect(qelStatusBadSize, &state, {1, 1}, &mask, {1, 0}, {1, 0});
    expect(qelStatusBadAnchor, &state, {1, 1}, &mask, {1, 1}, {1, 0});
    expect(qelStatusBadAnchor, &state, {1, 1}, &mask, {1, 1}, {0, 1});
    expect(qelStatusBadAnchor, &state, {1, 1}, &mask, {1, 1}, {0, -1});
}

TEST(MorphGrayChecks, InitAlloc) {
    checksOfInitAlloc<Bytes>();
    checksOfInitAlloc<Floats>();
}

TEST(MorphGrayChecks, SizesThatOverflow) {
    const Qel32s mask = 1;
    int bytes = -1;
    EXPECT_EQ(qelStatusOverflow, qeliMorphGrayGetSize_8u_C1R({1, 1}, &mask, {1 << 16, 1 << 14}, &bytes));
    EXPECT_EQ(qelStatusOverflow, qeliMorphGrayGetSize_8u_C1R({1, 1}, &mask, {INT_MAX, INT_MAX}, &bytes));
    EXPECT_EQ(-1, bytes);
    const int most = (INT_MAX - 24 - static_cast<int>(sizeof(void*))) / 4;
    EXPECT_EQ(qelStatusOk, qeliMorphGrayGetSize_8u_C1R({1, 1}, &mask, {most, 1}, &bytes));
    EXPECT_EQ(qelStatusOverflow, qeliMorphGrayGetSize_8u_C1R({1, 1}, &mask, {most + 1, 1}, &bytes));
}

}  // namespace
