#include <cmath>
#include <cstring>
#include <functional>
#include <limits>

#include "kit/checks.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/stats.h"

namespace {

// The new value of a pixel from its old value, its source samples and alpha.
template <class T>
Qel32f sum(Qel32f old, T s, T, Qel32f) {
    return old + static_cast<Qel32f>(s);
}
template <class T>
Qel32f sumOfSquares(Qel32f old, T s, T, Qel32f) {
    const Qel32f square = static_cast<Qel32f>(s) * static_cast<Qel32f>(s);
    return old + square;
}
template <class T>
Qel32f sumOfProducts(Qel32f old, T s1, T s2, Qel32f) {
    const Qel32f product = static_cast<Qel32f>(s1) * static_cast<Qel32f>(s2);
    return old + product;
}
template <class T>
Qel32f runningAverage(Qel32f old, T s, T, Qel32f alpha) {
    const Qel32f difference = static_cast<Qel32f>(s) - old;
    const Qel32f change = difference * alpha;
    return change + old;
}

// All that a member may read and write.
template <class T>
struct Images {
    explicit Images(kit::Trial& trial) : a(trial), b(trial), mask(trial), acc(trial) {}
    kit::Image<T> a, b;
    kit::Image<Qel8u> mask;
    kit::Image<Qel32f> acc;
    Qel32f alpha = 0;
};

template <class T>
using Member = std::function<qelStatus(Images<T>&, QelSize)>;

template <class T>
Member<T> oneSource(qelStatus (*function)(const T*, int, Qel32f*, int, QelSize)) {
    return [=](Images<T>& i, QelSize roi) { return function(i.a.data(), i.a.step(), i.acc.data(), i.acc.step(), roi); };
}
template <class T>
Member<T> oneSource(qelStatus (*function)(const T*, int, Qel32f*, int, QelSize, Qel32f)) {
    return [=](Images<T>& i, QelSize roi) {
        return function(i.a.data(), i.a.step(), i.acc.data(), i.acc.step(), roi, i.alpha);
    };
}
template <class T>
Member<T> oneSourceMasked(qelStatus (*function)(const T*, int, const Qel8u*, int, Qel32f*, int, QelSize)) {
    return [=](Images<T>& i, QelSize roi) {
        return function(i.a.data(), i.a.step(), i.mask.data(), i.mask.step(), i.acc.data(), i.acc.step(), roi);
    };
}
template <class T>
Member<T> oneSourceMasked(qelStatus (*function)(const T*, int, const Qel8u*, int, Qel32f*, int, QelSize, Qel32f)) {
    return [=](Images<T>& i, QelSize roi) {
        return function(i.a.data(), i.a.step(), i.mask.data(), i.mask.step(), i.acc.data(), i.acc.step(), roi, i.alpha);
    };
}
template <class T>
Member<T> twoSources(qelStatus (*function)(const T*, int, const T*, int, Qel32f*, int, QelSize)) {
    return [=](Images<T>& i, QelSize roi) {
        return function(i.a.data(), i.a.step(), i.b.data(), i.b.step(), i.acc.data(), i.acc.step(), roi);
    };
}
template <class T>
Member<T> twoSourcesMasked(qelStatus (*function)(const T*, int, const T*, int, const Qel8u*, int, Qel32f*, int,
                                                 QelSize)) {
    return [=](Images<T>& i, QelSize roi) {
        return function(i.a.data(), i.a.step(), i.b.data(), i.b.step(), i.mask.data(), i.mask.step(), i.acc.data(),
                        i.acc.step(), roi);
    };
}

// Where the rule gives a NaN any NaN will do: which of two comes out of a sum is the compiler's choice.
void acceptAnyNaN(const kit::Image<Qel32f>& want, kit::Image<Qel32f>& got) {
    for (int y = 0; y < want.size().height; ++y)
        for (int x = 0; x < want.size().width; ++x)
            if (std::isnan(want.at(x, y)) && std::isnan(got.at(x, y))) got.at(x, y) = want.at(x, y);
}

constexpr Qel32f kNaN = std::numeric_limits<Qel32f>::quiet_NaN();
constexpr Qel32f kInfinity = std::numeric_limits<Qel32f>::infinity();
constexpr Qel32f kAlphas[] = {0.05F, 0, 1, -0.0F, 0.3F, -3, 1e30F, kInfinity, kNaN};

template <class T, class Model>
void agreesIn(kit::Trial& trial, const Member<T>& member, Model* model, bool masked) {
    Images<T> images(trial);
    images.alpha = kAlphas[trial.between(0, std::size(kAlphas) - 1)];
    // Half of the mask is zero, other than where the trial is of all lowest or all highest samples.
    if (images.mask.at(0, 0) != 0 && images.mask.at(0, 0) != 255)
        for (int y = 0; y < trial.size.height; ++y)
            for (int x = 0; x < trial.size.width; ++x)
                if (trial.coin()) images.mask.at(x, y) = 0;

    kit::Image<Qel32f> want(images.acc);
    for (int y = 0; y < trial.size.height; ++y)
        for (int x = 0; x < trial.size.width; ++x)
            if (!masked || images.mask.at(x, y) != 0)
                want.at(x, y) = model(want.at(x, y), images.a.at(x, y), images.b.at(x, y), images.alpha);

    ASSERT_EQ(qelStatusOk, member(images, trial.size)) << trial;
    acceptAnyNaN(want, images.acc);
    ASSERT_TRUE(sameBits(want, images.acc)) << trial << ", alpha " << images.alpha;
}

// The area that takes the parallel path, one less, and a single row of it.
constexpr int kParallelLimit = 0x40000;
constexpr QelSize kLargeSizes[] = {
    {kParallelLimit, 1}, {kParallelLimit / 8, 8}, {kParallelLimit / 8 - 1, 8}, {37, 7100}};
constexpr int kThreads[] = {1, 2, 3, 33};

// Small trials with the cache of a usual size and one that the system does not tell, which makes masked members store
// past it; large ones, a different one for each test, with a cache that a share fills exactly, too.
template <class T, class Model>
void agrees(const Member<T>& member, Model* model, bool masked, int bytesPerPixel = 1) {
    for (const uint32_t seed : kit::seeds(160)) {
        kit::Trial trial(seed);
        kit::core().cacheSize = seed % 2 == 0 ? 1 << 22 : 0;
        kit::core().allocationsLeft = 0;
        ASSERT_NO_FATAL_FAILURE(agreesIn<T>(trial, member, model, masked));
    }
    static uint32_t turn = 0;  // instruction sets take turns within each test, so tests shift the sizes
    const uint32_t seed = turn++;
    kit::Trial trial(seed, kLargeSizes[(seed + seed / 4) % 4], kThreads[(seed + seed / 16) % 4]);
    const int cacheSizes[] = {0, bytesPerPixel * trial.size.width * (trial.size.height / trial.threads), 1 << 30};
    kit::core().cacheSize = cacheSizes[seed % 3];
    ASSERT_NO_FATAL_FAILURE(agreesIn<T>(trial, member, model, masked));
}

// A pixel that is masked out keeps its bits, those of a signalling NaN, too; a set bit of any place takes it in.
template <class T>
void maskDecides(const Member<T>& member) {
    for (const int cacheSize : {1 << 22, 0}) {
        kit::core().cacheSize = cacheSize;
        kit::Trial trial(0, {301, 1});
        Images<T> images(trial);
        images.alpha = 0.5F;
        constexpr Qel8u kBytes[] = {0, 1, 0, 128, 0, 255, 64};
        const auto maskAt = [&](int x) { return kBytes[x % std::size(kBytes)]; };
        const uint32_t signalling = 0x7F800001;
        for (int x = 0; x < trial.size.width; ++x) {
            images.a.at(x, 0) = images.b.at(x, 0) = 3;
            images.mask.at(x, 0) = maskAt(x);
            images.acc.at(x, 0) = 1;
            if (maskAt(x) == 0) std::memcpy(&images.acc.at(x, 0), &signalling, sizeof signalling);
        }
        ASSERT_EQ(qelStatusOk, member(images, trial.size));
        for (int x = 0; x < trial.size.width; ++x) {
            uint32_t bits;
            std::memcpy(&bits, &images.acc.at(x, 0), sizeof bits);
            if (maskAt(x) == 0) {
                ASSERT_EQ(signalling, bits) << "at " << x;
            } else {
                ASSERT_GT(images.acc.at(x, 0), 1) << "at " << x;
            }
        }
    }
}

template <class T, class Model>
void agreesMasked(const Member<T>& member, Model* model, int bytesPerPixel = 1) {
    ASSERT_NO_FATAL_FAILURE(agrees<T>(member, model, true, bytesPerPixel));
    ASSERT_NO_FATAL_FAILURE(maskDecides<T>(member));
}

class Add : public kit::EveryTarget {};
ON_EVERY_TARGET(Add);

TEST_P(Add, qeliAdd_8u32f_C1IR) { agrees(oneSource(qeliAdd_8u32f_C1IR), sum<Qel8u>, false); }
TEST_P(Add, qeliAdd_8s32f_C1IR) { agrees(oneSource(qeliAdd_8s32f_C1IR), sum<Qel8s>, false); }
TEST_P(Add, qeliAdd_16u32f_C1IR) { agrees(oneSource(qeliAdd_16u32f_C1IR), sum<Qel16u>, false); }
TEST_P(Add, qeliAdd_8u32f_C1IMR) { agreesMasked(oneSourceMasked(qeliAdd_8u32f_C1IMR), sum<Qel8u>); }
TEST_P(Add, qeliAdd_8s32f_C1IMR) { agreesMasked(oneSourceMasked(qeliAdd_8s32f_C1IMR), sum<Qel8s>); }
TEST_P(Add, qeliAdd_16u32f_C1IMR) { agreesMasked(oneSourceMasked(qeliAdd_16u32f_C1IMR), sum<Qel16u>); }
TEST_P(Add, qeliAdd_32f_C1IMR) { agreesMasked(oneSourceMasked(qeliAdd_32f_C1IMR), sum<Qel32f>); }

TEST_P(Add, qeliAddSquare_8u32f_C1IR) { agrees(oneSource(qeliAddSquare_8u32f_C1IR), sumOfSquares<Qel8u>, false); }
TEST_P(Add, qeliAddSquare_8s32f_C1IR) { agrees(oneSource(qeliAddSquare_8s32f_C1IR), sumOfSquares<Qel8s>, false); }
TEST_P(Add, qeliAddSquare_16u32f_C1IR) { agrees(oneSource(qeliAddSquare_16u32f_C1IR), sumOfSquares<Qel16u>, false); }
TEST_P(Add, qeliAddSquare_32f_C1IR) { agrees(oneSource(qeliAddSquare_32f_C1IR), sumOfSquares<Qel32f>, false); }
TEST_P(Add, qeliAddSquare_8u32f_C1IMR) {
    agreesMasked(oneSourceMasked(qeliAddSquare_8u32f_C1IMR), sumOfSquares<Qel8u>);
}
TEST_P(Add, qeliAddSquare_8s32f_C1IMR) {
    agreesMasked(oneSourceMasked(qeliAddSquare_8s32f_C1IMR), sumOfSquares<Qel8s>);
}
TEST_P(Add, qeliAddSquare_16u32f_C1IMR) {
    agreesMasked(oneSourceMasked(qeliAddSquare_16u32f_C1IMR), sumOfSquares<Qel16u>);
}
TEST_P(Add, qeliAddSquare_32f_C1IMR) { agreesMasked(oneSourceMasked(qeliAddSquare_32f_C1IMR), sumOfSquares<Qel32f>); }

TEST_P(Add, qeliAddProduct_8u32f_C1IR) { agrees(twoSources(qeliAddProduct_8u32f_C1IR), sumOfProducts<Qel8u>, false); }
TEST_P(Add, qeliAddProduct_8s32f_C1IR) { agrees(twoSources(qeliAddProduct_8s32f_C1IR), sumOfProducts<Qel8s>, false); }
TEST_P(Add, qeliAddProduct_16u32f_C1IR) {
    agrees(twoSources(qeliAddProduct_16u32f_C1IR), sumOfProducts<Qel16u>, false);
}
TEST_P(Add, qeliAddProduct_32f_C1IR) { agrees(twoSources(qeliAddProduct_32f_C1IR), sumOfProducts<Qel32f>, false); }
TEST_P(Add, qeliAddProduct_8u32f_C1IMR) {
    agreesMasked(twoSourcesMasked(qeliAddProduct_8u32f_C1IMR), sumOfProducts<Qel8u>, 7);
}
TEST_P(Add, qeliAddProduct_8s32f_C1IMR) {
    agreesMasked(twoSourcesMasked(qeliAddProduct_8s32f_C1IMR), sumOfProducts<Qel8s>, 7);
}
TEST_P(Add, qeliAddProduct_16u32f_C1IMR) {
    agreesMasked(twoSourcesMasked(qeliAddProduct_16u32f_C1IMR), sumOfProducts<Qel16u>, 9);
}
TEST_P(Add, qeliAddProduct_32f_C1IMR) {
    agreesMasked(twoSourcesMasked(qeliAddProduct_32f_C1IMR), sumOfProducts<Qel32f>, 13);
}

TEST_P(Add, qeliAddWeighted_8u32f_C1IR) { agrees(oneSource(qeliAddWeighted_8u32f_C1IR), runningAverage<Qel8u>, false); }
TEST_P(Add, qeliAddWeighted_8s32f_C1IR) { agrees(oneSource(qeliAddWeighted_8s32f_C1IR), runningAverage<Qel8s>, false); }
TEST_P(Add, qeliAddWeighted_16u32f_C1IR) {
    agrees(oneSource(qeliAddWeighted_16u32f_C1IR), runningAverage<Qel16u>, false);
}
TEST_P(Add, qeliAddWeighted_32f_C1IR) { agrees(oneSource(qeliAddWeighted_32f_C1IR), runningAverage<Qel32f>, false); }
TEST_P(Add, qeliAddWeighted_8u32f_C1IMR) {
    agreesMasked(oneSourceMasked(qeliAddWeighted_8u32f_C1IMR), runningAverage<Qel8u>, 5);
}
TEST_P(Add, qeliAddWeighted_8s32f_C1IMR) {
    agreesMasked(oneSourceMasked(qeliAddWeighted_8s32f_C1IMR), runningAverage<Qel8s>, 5);
}
TEST_P(Add, qeliAddWeighted_16u32f_C1IMR) {
    agreesMasked(oneSourceMasked(qeliAddWeighted_16u32f_C1IMR), runningAverage<Qel16u>, 7);
}
TEST_P(Add, qeliAddWeighted_32f_C1IMR) {
    agreesMasked(oneSourceMasked(qeliAddWeighted_32f_C1IMR), runningAverage<Qel32f>, 9);
}

// The second source in the part of the old value: into an image of its own, over the first and over the second source.
TEST_P(Add, qeliAddWeighted_32f_C1R) {
    const auto into = [](kit::Image<Qel32f> Images<Qel32f>::*dst) -> Member<Qel32f> {
        return [=](Images<Qel32f>& i, QelSize roi) {
            kit::Image<Qel32f>& out = i.*dst;
            const qelStatus status = qeliAddWeighted_32f_C1R(i.a.data(), i.a.step(), i.acc.data(), i.acc.step(),
                                                             out.data(), out.step(), roi, i.alpha);
            for (int y = 0; y < roi.height; ++y)
                for (int x = 0; x < roi.width; ++x) i.acc.at(x, y) = out.at(x, y);
            EXPECT_TRUE(out.gapsIntact());
            return status;
        };
    };
    agrees(into(&Images<Qel32f>::a), runningAverage<Qel32f>, false);
    agrees(into(&Images<Qel32f>::b), runningAverage<Qel32f>, false);
    agrees(into(&Images<Qel32f>::acc), runningAverage<Qel32f>, false);
}

// A NaN that meets numbers passes with its bits: that is not left to the compiler.
TEST_P(Add, OneNaNPasses) {
    const uint32_t nan = 0xFFC12345;
    kit::Image<Qel32f> source({21, 1}, 0), got({21, 1}, 2), want({21, 1}, 2);
    for (int x = 0; x < 21; ++x) std::memcpy(&source.at(x, 0), &nan, sizeof nan);
    for (int x = 0; x < 21; ++x) std::memcpy(&want.at(x, 0), &nan, sizeof nan);
    ASSERT_EQ(qelStatusOk, qeliAddWeighted_32f_C1IR(source.data(), source.step(), got.data(), got.step(), {21, 1}, 1));
    EXPECT_TRUE(sameBits(want, got));
}

// The square of the largest sample has 32 bits and is rounded ahead of the sum; the weighted form does not meet its
// source at alpha 1, and not the accumulator at alpha 0 where the difference overflows.
TEST_P(Add, RoundingIsThatOfEachStep) {
    const Qel16u s = 65535;
    Qel32f acc = 1 - 4294836224.0F;
    ASSERT_EQ(qelStatusOk, qeliAddSquare_16u32f_C1IR(&s, 2, &acc, 4, {1, 1}));
    EXPECT_EQ(4294836225.0F + (1 - 4294836224.0F), acc);

    const Qel32f source = 1;
    Qel32f average = 1e9F;
    ASSERT_EQ(qelStatusOk, qeliAddWeighted_32f_C1IR(&source, 4, &average, 4, {1, 1}, 1));
    EXPECT_EQ(0.0F, average);

    const Qel32f least = -std::numeric_limits<Qel32f>::max();
    Qel32f most = std::numeric_limits<Qel32f>::max();
    ASSERT_EQ(qelStatusOk, qeliAddWeighted_32f_C1IR(&least, 4, &most, 4, {1, 1}, 0));
    EXPECT_TRUE(std::isnan(most));
}

TEST(AddChecks, EveryMember) {
    CHECKS_OF(qeliAdd_8u32f_C1IR).run();
    CHECKS_OF(qeliAdd_8s32f_C1IR).run();
    CHECKS_OF(qeliAdd_16u32f_C1IR).stepByStep().run();
    CHECKS_OF(qeliAdd_8u32f_C1IMR).run();
    CHECKS_OF(qeliAdd_8s32f_C1IMR).run();
    CHECKS_OF(qeliAdd_16u32f_C1IMR).stepByStep().run();
    CHECKS_OF(qeliAdd_32f_C1IMR).run();

    CHECKS_OF(qeliAddSquare_8u32f_C1IR).run();
    CHECKS_OF(qeliAddSquare_8s32f_C1IR).run();
    CHECKS_OF(qeliAddSquare_16u32f_C1IR).stepByStep().run();
    CHECKS_OF(qeliAddSquare_32f_C1IR).run();
    CHECKS_OF(qeliAddSquare_8u32f_C1IMR).run();
    CHECKS_OF(qeliAddSquare_8s32f_C1IMR).run();
    CHECKS_OF(qeliAddSquare_16u32f_C1IMR).stepByStep().run();
    CHECKS_OF(qeliAddSquare_32f_C1IMR).run();

    CHECKS_OF(qeliAddProduct_8u32f_C1IR).run();
    CHECKS_OF(qeliAddProduct_8s32f_C1IR).run();
    CHECKS_OF(qeliAddProduct_16u32f_C1IR).stepByStep().run();
    CHECKS_OF(qeliAddProduct_32f_C1IR).run();
    CHECKS_OF(qeliAddProduct_8u32f_C1IMR).run();
    CHECKS_OF(qeliAddProduct_8s32f_C1IMR).run();
    CHECKS_OF(qeliAddProduct_16u32f_C1IMR).stepByStep().run();
    CHECKS_OF(qeliAddProduct_32f_C1IMR).run();

    CHECKS_OF(qeliAddWeighted_8u32f_C1IR).run();
    CHECKS_OF(qeliAddWeighted_8s32f_C1IR).run();
    CHECKS_OF(qeliAddWeighted_16u32f_C1IR).stepByStep().run();
    CHECKS_OF(qeliAddWeighted_32f_C1IR).run();
    CHECKS_OF(qeliAddWeighted_8u32f_C1IMR).run();
    CHECKS_OF(qeliAddWeighted_8s32f_C1IMR).run();
    CHECKS_OF(qeliAddWeighted_16u32f_C1IMR).stepByStep().run();
    CHECKS_OF(qeliAddWeighted_32f_C1IMR).run();
    CHECKS_OF(qeliAddWeighted_32f_C1R).run();
}

}  // namespace
