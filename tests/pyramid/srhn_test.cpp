#include <functional>
#include <vector>

#include "kit/checks.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/pyramid.h"

namespace {

template <class T>
using Residual = qelStatus(const Qel32f*, int, const T*, const unsigned int*, const Qel16u*, Qel32f*, int,
                           const QelSRHNState*);
using Gradient = qelStatus(Qel32f*, int, const unsigned int*, const Qel16u*, const Qel32f*, const Qel8u*, int,
                           const Qel32f*, const QelSRHNState*);
using InitAlloc = qelStatus(QelSRHNState**, const Qel32f*, int);
using Free = qelStatus(QelSRHNState*);

struct Size {
    int side;
    InitAlloc* initAlloc;
    Free* release;
};
constexpr Size kTwo = {2, qeliSRHNInitAlloc_PSF2x2, qeliSRHNFree_PSF2x2};
constexpr Size kThree = {3, qeliSRHNInitAlloc_PSF3x3, qeliSRHNFree_PSF3x3};

constexpr int kTable = 9;

// A list of samples somewhere in an image that ends at an inaccessible page with the last tap.
struct List {
    kit::Image<Qel32f> image;
    kit::Image<Qel32f> coeffs;
    kit::Image<unsigned int> offsets;
    kit::Image<Qel16u> coeffIdx;

    List(kit::Trial& trial, const Size& size, int len)
        : image(trial, {size.side + trial.between(0, 9), size.side + trial.between(0, 5)}),
          coeffs(trial, {kTable * size.side * size.side, 1}),
          offsets({len, 1}, 0),
          coeffIdx({len, 1}, 0) {
        for (int i = 0; i < len; ++i) {
            const int x = trial.between(0, image.size().width - size.side);
            const int y = trial.between(0, image.size().height - size.side);
            offsets.at(i, 0) = unsigned(y * (image.step() / 4) + x);
            coeffIdx.at(i, 0) = Qel16u(trial.between(0, kTable - 1));
        }
    }

    // Tap (x, y) of sample i: its weight, and its pixel.
    Qel32f weight(const Size& size, int i, int x, int y) const {
        return coeffs.at((coeffIdx.at(i, 0) * size.side + y) * size.side + x, 0);
    }
    Qel32f& pixel(int i, int x, int y) {
        return (&image.at(0, 0))[offsets.at(i, 0) + unsigned(y * (image.step() / 4) + x)];
    }
};

bool same(Qel32f a, Qel32f b) { return (a != a && b != b) || kit::sameBits(a, b); }

template <class T>
void residualsAgree(Residual<T>* function, const Size& size) {
    for (uint32_t seed = 0; seed < 300; ++seed) {
        kit::Trial trial(seed, {int(seed % 21) + 1, 1});
        const int len = trial.size.width;
        List list(trial, size, len);
        kit::Image<T> observed({len, 1}, T(0));
        for (int i = 0; i < len; ++i) observed.at(i, 0) = trial.anySample<T>();
        QelSRHNState* state = nullptr;
        ASSERT_EQ(qelStatusOk, size.initAlloc(&state, list.coeffs.data(), kTable));
        kit::Image<Qel32f> got({len, 1}, 0);
        ASSERT_EQ(qelStatusOk, function(list.image.data(), list.image.step(), observed.data(), list.offsets.data(),
                                        list.coeffIdx.data(), got.data(), len, state));
        for (int i = 0; i < len; ++i) {
            Qel32f want = list.pixel(i, 0, 0) * list.weight(size, i, 0, 0) - Qel32f(observed.at(i, 0));
            for (int k = 1; k < size.side * size.side; ++k)
                want = want +
                       list.pixel(i, k % size.side, k / size.side) * list.weight(size, i, k % size.side, k / size.side);
            ASSERT_TRUE(same(want, got.at(i, 0))) << trial << ", sample " << i << ": " << want << ", " << got.at(i, 0);
        }
        ASSERT_TRUE(got.gapsIntact());
        ASSERT_EQ(qelStatusOk, size.release(state));
    }
}

void gradientsAgree(Gradient* function, const Size& size) {
    for (uint32_t seed = 0; seed < 300; ++seed) {
        kit::Trial trial(seed, {int(seed % 21) + 1, 1});
        const int len = trial.size.width;
        List list(trial, size, len);
        kit::Image<Qel32f> residuals(trial), weights(trial, {256, 1});
        kit::Image<Qel8u> weightIdx({len, 1}, 0);
        for (int i = 0; i < len; ++i) weightIdx.at(i, 0) = trial.anySample<Qel8u>();
        QelSRHNState* state = nullptr;
        ASSERT_EQ(qelStatusOk, size.initAlloc(&state, list.coeffs.data(), kTable));
        kit::Image<Qel32f> got(list.image);
        ASSERT_EQ(qelStatusOk, function(got.data(), got.step(), list.offsets.data(), list.coeffIdx.data(),
                                        residuals.data(), weightIdx.data(), len, weights.data(), state));
        for (int i = 0; i < len; ++i) {
            const Qel32f w = weights.at(weightIdx.at(i, 0), 0) * residuals.at(i, 0);
            for (int k = 0; k < size.side * size.side; ++k) {
                Qel32f& g = list.pixel(i, k % size.side, k / size.side);
                g = list.weight(size, i, k % size.side, k / size.side) * w + g;
            }
        }
        for (int y = 0; y < got.size().height; ++y)
            for (int x = 0; x < got.size().width; ++x)
                ASSERT_TRUE(same(list.image.at(x, y), got.at(x, y))) << trial << ", at " << x << ", " << y;
        ASSERT_TRUE(got.gapsIntact()) << trial;
        ASSERT_EQ(qelStatusOk, size.release(state));
    }
}

class Srhn : public kit::EveryTarget {};
ON_EVERY_TARGET(Srhn);

TEST_P(Srhn, qeliSRHNCalcResidual_PSF2x2_8u32f_C1R) {
    residualsAgree<Qel8u>(qeliSRHNCalcResidual_PSF2x2_8u32f_C1R, kTwo);
}
TEST_P(Srhn, qeliSRHNCalcResidual_PSF2x2_16u32f_C1R) {
    residualsAgree<Qel16u>(qeliSRHNCalcResidual_PSF2x2_16u32f_C1R, kTwo);
}
TEST_P(Srhn, qeliSRHNCalcResidual_PSF3x3_8u32f_C1R) {
    residualsAgree<Qel8u>(qeliSRHNCalcResidual_PSF3x3_8u32f_C1R, kThree);
}
TEST_P(Srhn, qeliSRHNCalcResidual_PSF3x3_16u32f_C1R) {
    residualsAgree<Qel16u>(qeliSRHNCalcResidual_PSF3x3_16u32f_C1R, kThree);
}
TEST_P(Srhn, qeliSRHNUpdateGradient_PSF2x2_32f_C1R) { gradientsAgree(qeliSRHNUpdateGradient_PSF2x2_32f_C1R, kTwo); }
TEST_P(Srhn, qeliSRHNUpdateGradient_PSF3x3_32f_C1R) { gradientsAgree(qeliSRHNUpdateGradient_PSF3x3_32f_C1R, kThree); }

// Rows of taps without anything between them: the least steps.
TEST_P(Srhn, LeastSteps) {
    const Qel32f one[9] = {1, 0, 0, 0, 0, 0, 0, 0, 1};
    const Qel32f image[9] = {10, 20, 30, 40, 50, 60, 70, 80, 90};
    const unsigned int offset = 0;
    const Qel16u entry = 0;
    const Qel8u observed = 3;
    Qel32f residual = 0;
    QelSRHNState* state = nullptr;
    ASSERT_EQ(qelStatusOk, qeliSRHNInitAlloc_PSF2x2(&state, one, 1));
    EXPECT_EQ(qelStatusOk,
              qeliSRHNCalcResidual_PSF2x2_8u32f_C1R(image, 8, &observed, &offset, &entry, &residual, 1, state));
    EXPECT_EQ(7, residual);
    EXPECT_EQ(qelStatusOk, qeliSRHNFree_PSF2x2(state));
    ASSERT_EQ(qelStatusOk, qeliSRHNInitAlloc_PSF3x3(&state, one, 1));
    EXPECT_EQ(qelStatusOk,
              qeliSRHNCalcResidual_PSF3x3_8u32f_C1R(image, 12, &observed, &offset, &entry, &residual, 1, state));
    EXPECT_EQ(10 - 3 + 90, residual);
    EXPECT_EQ(qelStatusOk, qeliSRHNFree_PSF3x3(state));
}

TEST(SrhnState, AllocationsThatFail) {
    kit::core().reset();
    const Qel32f coeffs[36] = {};
    for (const Size& size : {kTwo, kThree}) {
        const int before = kit::core().allocated;
        for (int left = 0; left < 2; ++left) {
            kit::core().allocationsLeft = left;
            QelSRHNState* state = nullptr;
            EXPECT_EQ(qelStatusNoMemory, size.initAlloc(&state, coeffs, 4));
            EXPECT_EQ(nullptr, state);
            EXPECT_EQ(before, kit::core().allocated);
        }
        kit::core().allocationsLeft = -1;
        QelSRHNState* state = nullptr;
        EXPECT_EQ(qelStatusNoMemory, size.initAlloc(&state, coeffs, 2147483647)) << "a table beyond any memory";
        EXPECT_EQ(qelStatusOk, size.initAlloc(&state, coeffs, 4));
        EXPECT_EQ(qelStatusOk, size.release(state));
        EXPECT_EQ(before, kit::core().allocated);

        EXPECT_EQ(qelStatusNullPointer, size.initAlloc(nullptr, coeffs, 0));
        EXPECT_EQ(qelStatusNullPointer, size.initAlloc(&state, nullptr, 0));
        EXPECT_EQ(qelStatusBadSize, size.initAlloc(&state, coeffs, 0));
        EXPECT_EQ(qelStatusBadSize, size.initAlloc(&state, coeffs, -1));
        EXPECT_EQ(qelStatusNullPointer, size.release(nullptr));
        EXPECT_EQ(before, kit::core().allocated);
    }
}

// The table as callers may read it: rows of three taps are followed by a zero.
TEST(SrhnState, Layout) {
    const Qel32f coeffs[18] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18};
    const Qel32f spread[24] = {1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 10, 11, 12, 0, 13, 14, 15, 0, 16, 17, 18, 0};
    QelSRHNState* state = nullptr;
    ASSERT_EQ(qelStatusOk, qeliSRHNInitAlloc_PSF3x3(&state, coeffs, 2));
    EXPECT_EQ(0, std::memcmp(spread, state->pCoeffs, sizeof spread));
    EXPECT_EQ(qelStatusOk, qeliSRHNFree_PSF3x3(state));
    ASSERT_EQ(qelStatusOk, qeliSRHNInitAlloc_PSF2x2(&state, coeffs, 4));
    EXPECT_EQ(0, std::memcmp(coeffs, state->pCoeffs, 64));
    EXPECT_EQ(qelStatusOk, qeliSRHNFree_PSF2x2(state));
}

// Each pointer, then the length, then the step; of two faults the earlier one counts.
TEST(SrhnChecks, EveryMember) {
    Qel32f image[9] = {}, residual[1] = {5}, weights[256] = {};
    const unsigned int offset[1] = {0};
    const Qel16u entry[1] = {0}, deep[1] = {9};
    const Qel8u bytes[1] = {9};
    Qel32f table[12] = {};
    const QelSRHNState state = {table};
    const auto sweep = [&](int leastStep, const auto& call) {
        for (int null = 0; null < 7; ++null) EXPECT_EQ(qelStatusNullPointer, call(null, 0, 0)) << null;
        for (const int len : {0, -1}) EXPECT_EQ(qelStatusBadSize, call(-1, len, 0)) << len;
        for (const int step : {0, -leastStep, leastStep - 4, leastStep - 1, leastStep + 1, leastStep + 2})
            EXPECT_EQ(qelStatusBadStep, call(-1, 1, step)) << step;
        EXPECT_EQ(5, residual[0]) << "written";
        EXPECT_EQ(qelStatusOk, call(-1, 1, leastStep));
        residual[0] = 5;
    };
    const auto residuals = [&](auto function, auto* lr) {
        return [&, function, lr](int null, int len, int step) {
            if (null == 6) null = 0;
            return function(null == 0 ? nullptr : image, step, null == 1 ? nullptr : lr, null == 2 ? nullptr : offset,
                            null == 3 ? nullptr : entry, null == 4 ? nullptr : residual, len,
                            null == 5 ? nullptr : &state);
        };
    };
    const auto gradients = [&](Gradient* function) {
        return [&, function](int null, int len, int step) {
            return function(null == 0 ? nullptr : image, step, null == 1 ? nullptr : offset,
                            null == 2 ? nullptr : entry, null == 3 ? nullptr : residual, null == 4 ? nullptr : bytes,
                            len, null == 5 ? nullptr : weights, null == 6 ? nullptr : &state);
        };
    };
    sweep(8, residuals(qeliSRHNCalcResidual_PSF2x2_8u32f_C1R, bytes));
    sweep(8, residuals(qeliSRHNCalcResidual_PSF2x2_16u32f_C1R, deep));
    sweep(12, residuals(qeliSRHNCalcResidual_PSF3x3_8u32f_C1R, bytes));
    sweep(12, residuals(qeliSRHNCalcResidual_PSF3x3_16u32f_C1R, deep));
    sweep(8, gradients(qeliSRHNUpdateGradient_PSF2x2_32f_C1R));
    sweep(12, gradients(qeliSRHNUpdateGradient_PSF3x3_32f_C1R));
}

}  // namespace
