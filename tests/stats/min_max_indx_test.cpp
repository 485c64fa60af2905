#include <array>
#include <cstring>
#include <limits>
#include <optional>
#include <ostream>
#include <type_traits>

#include "kit/checks.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/stats.h"

namespace {

struct Result {
    Qel32f minVal, maxVal;
    QelPoint minIndex, maxIndex;

    friend std::ostream& operator<<(std::ostream& out, const Result& r) {
        return out << "minimum " << r.minVal << " at (" << r.minIndex.x << ", " << r.minIndex.y << "), maximum "
                   << r.maxVal << " at (" << r.maxIndex.x << ", " << r.maxIndex.y << ")";
    }
};
static_assert(sizeof(Result) == 6 * 4, "results are compared by their bytes");

// What no call leaves behind.
constexpr Result kUntouched = {-77.5F, -78.5F, {-79, -80}, {-81, -82}};

// The region, and which of its samples take part.
template <class T>
struct Scene {
    kit::Image<T> image;
    std::optional<kit::Image<Qel8u>> mask;
    int coi = 1;

    T sample(int x, int y) const { return image.at(x * image.channels() + coi - 1, y); }
    T& sample(int x, int y) { return image.at(x * image.channels() + coi - 1, y); }
    bool takes(int x, int y) const { return !mask || mask->at(x, y) != 0; }
};

template <class T>
Result model(const Scene<T>& scene) {
    const QelSize size = scene.image.size();
    T low = std::numeric_limits<T>::max();
    T high = std::numeric_limits<T>::lowest();
    int lowRow = 0, highRow = 0;
    bool empty = true;
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            if (!scene.takes(x, y)) continue;
            empty = false;
            if (scene.sample(x, y) < low) low = scene.sample(x, y), lowRow = y;
            if (scene.sample(x, y) > high) high = scene.sample(x, y), highRow = y;
        }
    }
    if (empty) return {0, 0, {0, 0}, {0, 0}};

    const auto columnOf = [&](T value, int y) {
        for (int x = 0; x < size.width; ++x)
            if (scene.takes(x, y) && scene.sample(x, y) == value) return x;
        return 0;
    };
    return {Qel32f(low), Qel32f(high), {columnOf(low, lowRow), lowRow}, {columnOf(high, highRow), highRow}};
}

template <class T, class Function>
qelStatus call(Function* function, const Scene<T>& scene, Qel32f* pMinVal, Qel32f* pMaxVal, QelPoint* pMinIndex,
               QelPoint* pMaxIndex) {
    const kit::Image<T>& i = scene.image;
    const auto run = [&](auto... arguments) {
        return function(i.data(), i.step(), arguments..., pMinVal, pMaxVal, pMinIndex, pMaxIndex);
    };
    constexpr bool kOneChannel =
        std::is_invocable_v<Function, const T*, int, QelSize, Qel32f*, Qel32f*, QelPoint*, QelPoint*>;
    constexpr bool kOneOfThree =
        std::is_invocable_v<Function, const T*, int, QelSize, int, Qel32f*, Qel32f*, QelPoint*, QelPoint*>;
    constexpr bool kOneChannelMasked = std::is_invocable_v<Function, const T*, int, const Qel8u*, int, QelSize, Qel32f*,
                                                           Qel32f*, QelPoint*, QelPoint*>;
    if constexpr (kOneChannel) {
        return run(i.size());
    } else if constexpr (kOneOfThree) {
        return run(i.size(), scene.coi);
    } else if constexpr (kOneChannelMasked) {
        return run(scene.mask->data(), scene.mask->step(), i.size());
    } else {
        return run(scene.mask->data(), scene.mask->step(), i.size(), scene.coi);
    }
}

template <class T, class Function>
void agrees(Function* function, const Scene<T>& scene, const kit::Trial& trial) {
    const Result want = model(scene);
    Result got = kUntouched;
    ASSERT_EQ(qelStatusOk, call(function, scene, &got.minVal, &got.maxVal, &got.minIndex, &got.maxIndex)) << trial;
    ASSERT_TRUE(kit::sameBits(want, got))
        << trial << ", coi " << scene.coi << "\n  want " << want << "\n  got  " << got;
}

enum class Form { kC1R, kC3CR, kC1MR, kC3CMR };
constexpr bool isMasked(Form form) { return form == Form::kC1MR || form == Form::kC3CMR; }
constexpr int channelsOf(Form form) { return form == Form::kC3CR || form == Form::kC3CMR ? 3 : 1; }

// The trial's contents, under a mask of one of several densities whose bytes are anything but zero.
template <class T>
Scene<T> sceneOf(kit::Trial& trial, Form form) {
    Scene<T> scene{kit::Image<T>(trial, channelsOf(form)), std::nullopt, trial.between(1, channelsOf(form))};
    if (isMasked(form)) {
        scene.mask.emplace(trial);
        const int oneOf = std::array{1, 2, 10, 200}[size_t(trial.between(0, 3))];
        for (int y = 0; y < trial.size.height; ++y)
            for (int x = 0; x < trial.size.width; ++x)
                scene.mask->at(x, y) = trial.between(1, oneOf) == 1 ? Qel8u(trial.between(1, 255)) : 0;
    }
    return scene;
}

// All samples alike, but for a few of the lowest and the highest: in the corners, and where it happens.
template <class T>
void plant(Scene<T>& scene, kit::Trial& trial) {
    const QelSize size = scene.image.size();
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) scene.sample(x, y) = T(50);
    for (int i = trial.between(0, 6); i > 0; --i) {
        const int x = trial.coin() ? trial.between(0, size.width - 1) : trial.coin() ? 0 : size.width - 1;
        const int y = trial.coin() ? trial.between(0, size.height - 1) : trial.coin() ? 0 : size.height - 1;
        const int value = trial.coin() ? 3 : 101;
        scene.sample(x, y) = T(value + trial.between(0, 1));
        if (scene.mask) scene.mask->at(x, y) = trial.between(0, 4) == 0 ? 0 : 0x80;
    }
}

// Areas of exactly the parallel limit and one less, of one row and of hardly any columns, and larger ones.
constexpr int kParallelLimit = 0x4000;
constexpr QelSize kLargeSizes[] = {
    {kParallelLimit, 1}, {kParallelLimit - 1, 1}, {128, 128}, {127, 129}, {2, 8192}, {1, 20000}, {3000, 31}, {203, 97}};

template <class T, class Function>
void agreesWithModel(Function* function, Form form) {
    for (const uint32_t seed : kit::seeds(400)) {
        kit::Trial trial(seed);
        Scene<T> scene = sceneOf<T>(trial, form);
        ASSERT_NO_FATAL_FAILURE(agrees(function, scene, trial));
        plant(scene, trial);
        ASSERT_NO_FATAL_FAILURE(agrees(function, scene, trial));
    }
    uint32_t seed = 0;
    for (const QelSize size : kLargeSizes) {
        kit::Trial trial(seed++, size);
        Scene<T> scene = sceneOf<T>(trial, form);
        for (const int threads : {1, 2, 3, 33}) {
            kit::core().threads = threads;
            trial.note(std::to_string(threads) + " threads");
            ASSERT_NO_FATAL_FAILURE(agrees(function, scene, trial));
            plant(scene, trial);
        }
    }
}

class MinMaxIndx : public kit::EveryTarget {};
ON_EVERY_TARGET(MinMaxIndx);

TEST_P(MinMaxIndx, qeliMinMaxIndx_8u_C1R) { agreesWithModel<Qel8u>(qeliMinMaxIndx_8u_C1R, Form::kC1R); }
TEST_P(MinMaxIndx, qeliMinMaxIndx_8s_C1R) { agreesWithModel<Qel8s>(qeliMinMaxIndx_8s_C1R, Form::kC1R); }
TEST_P(MinMaxIndx, qeliMinMaxIndx_16u_C1R) { agreesWithModel<Qel16u>(qeliMinMaxIndx_16u_C1R, Form::kC1R); }
TEST_P(MinMaxIndx, qeliMinMaxIndx_32f_C1R) { agreesWithModel<Qel32f>(qeliMinMaxIndx_32f_C1R, Form::kC1R); }
TEST_P(MinMaxIndx, qeliMinMaxIndx_8u_C3CR) { agreesWithModel<Qel8u>(qeliMinMaxIndx_8u_C3CR, Form::kC3CR); }
TEST_P(MinMaxIndx, qeliMinMaxIndx_8s_C3CR) { agreesWithModel<Qel8s>(qeliMinMaxIndx_8s_C3CR, Form::kC3CR); }
TEST_P(MinMaxIndx, qeliMinMaxIndx_16u_C3CR) { agreesWithModel<Qel16u>(qeliMinMaxIndx_16u_C3CR, Form::kC3CR); }
TEST_P(MinMaxIndx, qeliMinMaxIndx_32f_C3CR) { agreesWithModel<Qel32f>(qeliMinMaxIndx_32f_C3CR, Form::kC3CR); }
TEST_P(MinMaxIndx, qeliMinMaxIndx_8u_C1MR) { agreesWithModel<Qel8u>(qeliMinMaxIndx_8u_C1MR, Form::kC1MR); }
TEST_P(MinMaxIndx, qeliMinMaxIndx_8s_C1MR) { agreesWithModel<Qel8s>(qeliMinMaxIndx_8s_C1MR, Form::kC1MR); }
TEST_P(MinMaxIndx, qeliMinMaxIndx_16u_C1MR) { agreesWithModel<Qel16u>(qeliMinMaxIndx_16u_C1MR, Form::kC1MR); }
TEST_P(MinMaxIndx, qeliMinMaxIndx_32f_C1MR) { agreesWithModel<Qel32f>(qeliMinMaxIndx_32f_C1MR, Form::kC1MR); }
TEST_P(MinMaxIndx, qeliMinMaxIndx_8u_C3CMR) { agreesWithModel<Qel8u>(qeliMinMaxIndx_8u_C3CMR, Form::kC3CMR); }
TEST_P(MinMaxIndx, qeliMinMaxIndx_8s_C3CMR) { agreesWithModel<Qel8s>(qeliMinMaxIndx_8s_C3CMR, Form::kC3CMR); }
TEST_P(MinMaxIndx, qeliMinMaxIndx_16u_C3CMR) { agreesWithModel<Qel16u>(qeliMinMaxIndx_16u_C3CMR, Form::kC3CMR); }
TEST_P(MinMaxIndx, qeliMinMaxIndx_32f_C3CMR) { agreesWithModel<Qel32f>(qeliMinMaxIndx_32f_C3CMR, Form::kC3CMR); }

// Calls visit(function, form, sample) for each member.
template <class Visit>
void forEveryMember(const Visit& visit) {
    visit(qeliMinMaxIndx_8u_C1R, Form::kC1R, Qel8u());
    visit(qeliMinMaxIndx_8s_C1R, Form::kC1R, Qel8s());
    visit(qeliMinMaxIndx_16u_C1R, Form::kC1R, Qel16u());
    visit(qeliMinMaxIndx_32f_C1R, Form::kC1R, Qel32f());
    visit(qeliMinMaxIndx_8u_C3CR, Form::kC3CR, Qel8u());
    visit(qeliMinMaxIndx_8s_C3CR, Form::kC3CR, Qel8s());
    visit(qeliMinMaxIndx_16u_C3CR, Form::kC3CR, Qel16u());
    visit(qeliMinMaxIndx_32f_C3CR, Form::kC3CR, Qel32f());
    visit(qeliMinMaxIndx_8u_C1MR, Form::kC1MR, Qel8u());
    visit(qeliMinMaxIndx_8s_C1MR, Form::kC1MR, Qel8s());
    visit(qeliMinMaxIndx_16u_C1MR, Form::kC1MR, Qel16u());
    visit(qeliMinMaxIndx_32f_C1MR, Form::kC1MR, Qel32f());
    visit(qeliMinMaxIndx_8u_C3CMR, Form::kC3CMR, Qel8u());
    visit(qeliMinMaxIndx_8s_C3CMR, Form::kC3CMR, Qel8s());
    visit(qeliMinMaxIndx_16u_C3CMR, Form::kC3CMR, Qel16u());
    visit(qeliMinMaxIndx_32f_C3CMR, Form::kC3CMR, Qel32f());
}

template <class T>
Scene<T> constantScene(QelSize size, T value, Form form) {
    Scene<T> scene{kit::Image<T>(size, value, channelsOf(form)), std::nullopt, channelsOf(form)};
    if (isMasked(form)) scene.mask.emplace(size, Qel8u(1));
    return scene;
}

TEST_P(MinMaxIndx, WantedOutputsOnly) {
    forEveryMember([](auto* function, Form form, auto sample) {
        using T = decltype(sample);
        kit::Trial trial(5, {33, 9});
        const Scene<T> scene = sceneOf<T>(trial, form);
        const Result all = model(scene);
        for (int wanted = 0; wanted < 16; ++wanted) {
            Result got = kUntouched, want = kUntouched;
            if (wanted & 1) want.minVal = all.minVal;
            if (wanted & 2) want.maxVal = all.maxVal;
            if (wanted & 4) want.minIndex = all.minIndex;
            if (wanted & 8) want.maxIndex = all.maxIndex;
            EXPECT_EQ(qelStatusOk,
                      call(function, scene, wanted & 1 ? &got.minVal : nullptr, wanted & 2 ? &got.maxVal : nullptr,
                           wanted & 4 ? &got.minIndex : nullptr, wanted & 8 ? &got.maxIndex : nullptr));
            EXPECT_TRUE(kit::sameBits(want, got)) << "outputs " << wanted << ": want " << want << ", got " << got;
        }
    });
}

// Every value of a byte, alone and at both ends of a row, in rows of every width.
TEST_P(MinMaxIndx, EverySampleAtBothEnds) {
    for (int value = 0; value < 256; ++value) {
        kit::Trial trial(uint32_t(value), {value + 1, 2});
        Scene<Qel8u> bytes = constantScene<Qel8u>(trial.size, 128, Form::kC1R);
        bytes.sample(value, 1) = bytes.sample(0, 1) = Qel8u(value);
        agrees(qeliMinMaxIndx_8u_C1R, bytes, trial);
        Scene<Qel8s> chars = constantScene<Qel8s>(trial.size, 0, Form::kC3CMR);
        chars.sample(value, 0) = Qel8s(value - 128);
        agrees(qeliMinMaxIndx_8s_C3CMR, chars, trial);
    }
}

// Equal extremes in the rows of different threads: the topmost counts, whichever thread is done first. Under a mask,
// whole threads have nothing to do.
TEST_P(MinMaxIndx, TiesAcrossThreads) {
    forEveryMember([](auto* function, Form form, auto sample) {
        using T = decltype(sample);
        kit::Trial trial(7, {128, 133});
        for (const int threads : {3, 33}) {
            kit::core().threads = threads;
            Scene<T> scene = constantScene(trial.size, T(50), form);
            for (int y = 132; y >= 0; y -= 66) {
                scene.sample(y % 7, y) = T(1);
                scene.sample(127 - y % 5, y) = T(99);
                agrees(function, scene, trial);
            }
            if (!isMasked(form)) continue;
            for (int y = 0; y < 133; ++y) {
                for (int x = 0; x < 128; ++x) scene.mask->at(x, y) = 0;
                if (y % 66 == 0) agrees(function, scene, trial);
            }
        }
    });
}

// A mask of zeros, of a single byte at any place, and of bytes of every value.
TEST_P(MinMaxIndx, Masks) {
    forEveryMember([](auto* function, Form form, auto sample) {
        using T = decltype(sample);
        if (!isMasked(form)) return;
        kit::Trial trial(0, {67, 3});
        Scene<T> scene = sceneOf<T>(trial, form);
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 67; ++x) scene.mask->at(x, y) = 0;
        agrees(function, scene, trial);
        Result got = kUntouched;
        call(function, scene, &got.minVal, &got.maxVal, &got.minIndex, &got.maxIndex);
        EXPECT_TRUE(kit::sameBits(Result{0, 0, {0, 0}, {0, 0}}, got)) << got;
        for (int i = 0; i < 255; ++i) {
            Qel8u& byte = scene.mask->at(i % 67, i % 3);
            byte = Qel8u(i + 1);
            agrees(function, scene, trial);
            byte = 0;
        }
    });
}

// Samples that never are strictly beyond the initial values: row 0 stays recorded, and its first sample of that value
// that takes part is the column, or 0.
TEST_P(MinMaxIndx, NothingBeyondTheInitialValues) {
    forEveryMember([](auto* function, Form form, auto sample) {
        using T = decltype(sample);
        using Limits = std::numeric_limits<T>;
        for (const T value : {Limits::max(), Limits::lowest()}) {
            for (const QelSize size : {QelSize{1, 1}, {67, 4}, {128, 128}}) {
                kit::Trial trial(0, size, 2);
                Scene<T> scene = constantScene(size, value, form);
                agrees(function, scene, trial);
                if (!isMasked(form)) continue;
                for (int x = 0; x < size.width; ++x) scene.mask->at(x, 0) = x > size.width / 2;
                agrees(function, scene, trial);
                for (int x = 0; x < size.width; ++x) scene.mask->at(x, 0) = 0;
                agrees(function, scene, trial);
            }
        }
    });
}

TEST_P(MinMaxIndx, NaNsInfinitiesAndZeros) {
    constexpr Qel32f kNaN = std::numeric_limits<Qel32f>::quiet_NaN();
    constexpr Qel32f kInfinity = std::numeric_limits<Qel32f>::infinity();
    constexpr Qel32f kMax = std::numeric_limits<Qel32f>::max();
    forEveryMember([](auto* function, Form form, auto sample) {
        if constexpr (std::is_same_v<decltype(sample), Qel32f>) {
            for (const QelSize size : {QelSize{1, 1}, {3, 2}, {45, 3}, {129, 130}}) {
                kit::Trial trial(0, size, 2);
                for (const Qel32f value : {kNaN, -kNaN, kInfinity, -kInfinity, kMax, 0.0F, -0.0F}) {
                    Scene<Qel32f> scene = constantScene(size, value, form);
                    agrees(function, scene, trial);
                    // Among them one other sample, which comes to lie in every lane.
                    for (const Qel32f other : {0.0F, -0.0F, kNaN, -kInfinity, kMax, -1.5F}) {
                        for (int i = 0; i<40; i += size.width> 100 ? 20 : 1) {
                            Qel32f& s = scene.sample(i % size.width, i % size.height);
                            s = other;
                            agrees(function, scene, trial);
                            s = value;
                        }
                    }
                }
            }
        }
    });
}

// The two zeros are equal: the first of them in raster order is reported, by its bits.
TEST_P(MinMaxIndx, FirstOfTheZeros) {
    forEveryMember([](auto* function, Form form, auto sample) {
        if constexpr (std::is_same_v<decltype(sample), Qel32f>) {
            for (const uint32_t seed : kit::seeds(60)) {
                kit::Trial trial(seed);
                Scene<Qel32f> scene = constantScene(trial.size, 0.0F, form);
                const Qel32f others = trial.coin() ? 1.0F : -1.0F;
                for (int y = 0; y < trial.size.height; ++y)
                    for (int x = 0; x < trial.size.width; ++x)
                        scene.sample(x, y) = trial.between(0, 3) == 0 ? (trial.coin() ? 0.0F : -0.0F) : others;
                agrees(function, scene, trial);
            }
        }
    });
}

// From 0x4000 pixels on, whatever the number of cores, a team above 32 asks for a table; one pixel less never does.
TEST_P(MinMaxIndx, ParallelFromTheLimitOn) {
    forEveryMember([](auto* function, Form form, auto sample) {
        using T = decltype(sample);
        kit::core().cores = 1;
        for (const auto& [size, threads, tables] : {std::tuple{QelSize{128, 128}, 33, 1},
                                                    {QelSize{2, 8192}, 33, 1},
                                                    {QelSize{kParallelLimit, 1}, 33, 1},
                                                    {QelSize{127, 129}, 33, 0},
                                                    {QelSize{kParallelLimit - 1, 1}, 33, 0},
                                                    {QelSize{128, 128}, 32, 0}}) {
            kit::Trial trial(0, size, threads);
            const Scene<T> scene = sceneOf<T>(trial, form);
            const int before = kit::core().allocations;
            agrees(function, scene, trial);
            EXPECT_EQ(tables, kit::core().allocations - before) << trial;
        }
    });
}

TEST_P(MinMaxIndx, NoMemoryForTheTable) {
    forEveryMember([](auto* function, Form form, auto sample) {
        using T = decltype(sample);
        kit::Trial trial(0, {128, 128}, 33);
        const Scene<T> scene = constantScene(trial.size, T(5), form);
        kit::core().allocationsLeft = 0;
        Result got = kUntouched;
        EXPECT_EQ(qelStatusNoMemory, call(function, scene, &got.minVal, &got.maxVal, &got.minIndex, &got.maxIndex));
        EXPECT_TRUE(kit::sameBits(kUntouched, got)) << got;
        kit::core().threads = 32;
        EXPECT_EQ(qelStatusOk, call(function, scene, &got.minVal, &got.maxVal, &got.minIndex, &got.maxIndex));
        kit::core().allocationsLeft = -1;
    });
}

template <size_t kFirstOutput, class Checks>
Checks& allOptional(Checks& checks) {
    return checks.template optional<kFirstOutput>()
        .template optional<kFirstOutput + 1>()
        .template optional<kFirstOutput + 2>()
        .template optional<kFirstOutput + 3>();
}

template <size_t kCoi, class Checks>
Checks& badChannels(Checks& checks) {
    return checks.template channels<0>(3)
        .template fault<kCoi>("coi 0", qelStatusBadChannel, 0)
        .template fault<kCoi>("coi 4", qelStatusBadChannel, 4)
        .template fault<kCoi>("coi -1", qelStatusBadChannel, -1);
}

template <class Checks>
void checksC1R(Checks checks) {
    allOptional<3>(checks).run();
}
template <class Checks>
void checksC3CR(Checks checks) {
    allOptional<4>(badChannels<3>(checks)).run();
}
template <class Checks>
void checksC1MR(Checks checks) {
    allOptional<5>(checks).run();
}
template <class Checks>
void checksC3CMR(Checks checks) {
    allOptional<6>(badChannels<5>(checks)).run();
}

TEST(MinMaxIndxChecks, EveryMember) {
    checksC1R(CHECKS_OF(qeliMinMaxIndx_8u_C1R));
    checksC1R(CHECKS_OF(qeliMinMaxIndx_8s_C1R));
    checksC1R(CHECKS_OF(qeliMinMaxIndx_16u_C1R));
    checksC1R(CHECKS_OF(qeliMinMaxIndx_32f_C1R));
    checksC3CR(CHECKS_OF(qeliMinMaxIndx_8u_C3CR));
    checksC3CR(CHECKS_OF(qeliMinMaxIndx_8s_C3CR));
    checksC3CR(CHECKS_OF(qeliMinMaxIndx_16u_C3CR));
    checksC3CR(CHECKS_OF(qeliMinMaxIndx_32f_C3CR));
    checksC1MR(CHECKS_OF(qeliMinMaxIndx_8u_C1MR));
    checksC1MR(CHECKS_OF(qeliMinMaxIndx_8s_C1MR));
    checksC1MR(CHECKS_OF(qeliMinMaxIndx_16u_C1MR));
    checksC1MR(CHECKS_OF(qeliMinMaxIndx_32f_C1MR));
    checksC3CMR(CHECKS_OF(qeliMinMaxIndx_8u_C3CMR));
    checksC3CMR(CHECKS_OF(qeliMinMaxIndx_8s_C3CMR));
    checksC3CMR(CHECKS_OF(qeliMinMaxIndx_16u_C3CMR));
    checksC3CMR(CHECKS_OF(qeliMinMaxIndx_32f_C3CMR));
}

// A width whose row would need more bytes than a step can say is short, whatever the product wraps to.
TEST(MinMaxIndxChecks, WidthsThatOverflow) {
    const Qel32f f = 1;
    EXPECT_EQ(qelStatusBadStep, qeliMinMaxIndx_32f_C1R(&f, 4, {0x40000001, 1}, nullptr, nullptr, nullptr, nullptr));
    const Qel8u u = 1;
    EXPECT_EQ(qelStatusBadStep, qeliMinMaxIndx_8u_C3CR(&u, 4, {0x55555556, 1}, 1, nullptr, nullptr, nullptr, nullptr));
}

}  // namespace
