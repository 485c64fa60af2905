#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "kit/checks.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/detect.h"

namespace {

Qel32s wrap(int64_t value) { return static_cast<Qel32s>(static_cast<uint64_t>(value)); }

// One element of a table, from the elements around it and the samples (or squares) a and b, by the table's type.
Qel32s upright(Qel32s above, int64_t runningSum) { return wrap(int64_t{above} + runningSum); }
Qel32f upright(Qel32f above, int64_t runningSum) {
    const Qel32f rounded = static_cast<Qel32f>(wrap(runningSum));
    return rounded + above;
}
Qel64f upright(Qel64f above, int64_t runningSum) { return static_cast<Qel64f>(runningSum) + above; }

Qel32s tilted(Qel32s left, Qel32s right, Qel32s prev2, int a, int b) {
    return wrap(int64_t{left} + right - prev2 + a + b);
}
Qel32f tilted(Qel32f left, Qel32f right, Qel32f prev2, int a, int b) {
    double sum = double(left) - double(prev2);
    sum += double(right);
    sum += a;
    sum += b;
    return static_cast<Qel32f>(sum);
}
Qel64f tilted(Qel64f left, Qel64f right, Qel64f prev2, int a, int b) {
    double sum = a + b;
    sum += left;
    sum -= prev2;
    sum += right;
    return sum;
}

Qel32s tiltedLast(Qel32s left, Qel32s right, Qel32s prev2, int a, Qel32s) {
    return wrap(int64_t{a} + left + right - prev2);
}
Qel32f tiltedLast(Qel32f left, Qel32f right, Qel32f prev2, int a, Qel32f held) {
    double sum = double(a) + double(left);
    sum += double(right);
    sum -= double(prev2);
    const Qel32f rounded = static_cast<Qel32f>(sum);
    return rounded + held;
}
Qel64f tiltedLast(Qel64f left, Qel64f right, Qel64f prev2, int a, Qel64f) {
    double sum = a + left;
    sum += right;
    sum -= prev2;
    return sum;
}

int power(int sample, bool squares) { return squares ? sample * sample : sample; }

template <class T>
void modelUpright(const kit::Image<Qel8u>& src, QelSize size, bool squares, T offset, kit::Image<T>& want) {
    for (int x = 0; x <= size.width; ++x) want.at(x, 0) = offset;
    for (int y = 0; y < size.height; ++y) {
        want.at(0, y + 1) = offset;
        int64_t running = 0;
        for (int x = 0; x < size.width; ++x) {
            running += power(src.at(x, y), squares);
            want.at(x + 1, y + 1) = upright(want.at(x + 1, y), running);
        }
    }
}

// `want` holds what the buffer held before.
template <class T>
void modelTilted(const kit::Image<Qel8u>& src, QelSize size, bool squares, bool readsPast, T offset,
                 kit::Image<T>& want) {
    const int w = size.width;
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < w + 2; ++x) want.at(x, y) = offset;
    for (int y = 0; y < size.height; ++y) {
        const auto sample = [&](int x) { return power(src.at(x, y), squares); };
        for (int j = 0; j < w + 2; ++j) {
            T& cur = want.at(j, y + 2);
            if (j == 0) {
                cur = want.at(1, y + 1);
            } else if (j == w + 1) {
                cur = want.at(w, y + 1);
            } else if (j < w || readsPast) {
                cur = tilted(want.at(j - 1, y + 1), want.at(j + 1, y + 1), want.at(j, y), sample(j - 1), sample(j));
            } else {
                cur = tiltedLast(want.at(j - 1, y + 1), want.at(j + 1, y + 1), want.at(j, y), sample(j - 1), cur);
            }
        }
    }
}

// What sets a member apart for its model.
struct Rule {
    bool tilted = false;
    bool readsPast = false;

    int margin() const { return tilted ? 2 : 1; }
    QelSize table(QelSize size) const { return {size.width + margin(), size.height + margin()}; }
    QelSize source(QelSize size) const { return {size.width + (readsPast ? 1 : 0), size.height}; }

    template <class T>
    void model(const kit::Image<Qel8u>& src, QelSize size, bool squares, T offset, kit::Image<T>& want) const {
        if (tilted) {
            modelTilted(src, size, squares, readsPast, offset, want);
        } else {
            modelUpright(src, size, squares, offset, want);
        }
    }
};

constexpr Rule kUpright = {};
constexpr Rule kTilted = {.tilted = true};
constexpr Rule kReadsPast = {.tilted = true, .readsPast = true};

// Offsets that make tables wrap, lose low bits, and carry special values along.
template <class T>
T offset(kit::Trial& trial) {
    constexpr T kLarge = std::is_integral_v<T> ? std::numeric_limits<T>::max() : T(16777216);
    const T some[] = {T(0), T(5), T(-7), kLarge, trial.anySample<T>()};
    return some[trial.between(0, 4)];
}

// A buffer as callers hand it over: ordinary numbers, whose column W a table may be added to.
template <class T>
void setOrdinary(kit::Trial& trial, kit::Image<T>& table) {
    for (int y = 0; y < table.size().height; ++y)
        for (int x = 0; x < table.size().width; ++x) table.at(x, y) = T(trial.between(-999, 999)) / 4;
}

template <class T, class Function>
void agrees(Function* function, Rule rule, kit::Trial& trial) {
    kit::Image<Qel8u> src(trial, rule.source(trial.size));
    kit::Image<T> got(trial, rule.table(trial.size));
    setOrdinary(trial, got);
    kit::Image<T> want(got);
    const T val = offset<T>(trial);
    rule.model(src, trial.size, false, val, want);
    ASSERT_EQ(qelStatusOk, function(src.data(), src.step(), got.data(), got.step(), trial.size, val)) << trial;
    ASSERT_TRUE(sameBits(want, got)) << trial << ", val " << val;
}

template <class T, class Q, class Function>
void squaresAgree(Function* function, Rule rule, kit::Trial& trial) {
    kit::Image<Qel8u> src(trial, rule.source(trial.size));
    kit::Image<T> got(trial, rule.table(trial.size));
    kit::Image<Q> gotSqr(trial, rule.table(trial.size));
    setOrdinary(trial, got);
    setOrdinary(trial, gotSqr);
    kit::Image<T> want(got);
    kit::Image<Q> wantSqr(gotSqr);
    const T val = offset<T>(trial);
    const Q valSqr = offset<Q>(trial);
    rule.model(src, trial.size, false, val, want);
    rule.model(src, trial.size, true, valSqr, wantSqr);
    ASSERT_EQ(qelStatusOk, function(src.data(), src.step(), got.data(), got.step(), gotSqr.data(), gotSqr.step(),
                                    trial.size, val, valSqr))
        << trial;
    ASSERT_TRUE(sameBits(want, got)) << trial << ", val " << val;
    ASSERT_TRUE(sameBits(wantSqr, gotSqr)) << trial << ", valSqr " << valSqr;
}

// Every small width, then rows whose sums leave the range of exact single precision and of 32-bit integers.
template <class Run>
void forAllTrials(const Run& run) {
    for (uint32_t seed = 0; seed < 260; ++seed) {
        kit::Trial trial(seed);
        ASSERT_NO_FATAL_FAILURE(run(trial));
    }
    uint32_t seed = 0;
    for (const QelSize size : {QelSize{1, 1}, {1, 40}, {2, 3}, {70001, 3}, {35000, 2}, {1237, 180}}) {
        for (const kit::Content content : {kit::Content::kRandom, kit::Content::kHighest}) {
            kit::Trial trial(++seed, size);
            trial.setContent(content);
            ASSERT_NO_FATAL_FAILURE(run(trial));
        }
    }
}

template <class T, class Function>
void agrees(Function* function, Rule rule) {
    forAllTrials([=](kit::Trial& trial) { agrees<T>(function, rule, trial); });
}

template <class T, class Q, class Function>
void squaresAgree(Function* function, Rule rule) {
    forAllTrials([=](kit::Trial& trial) { squaresAgree<T, Q>(function, rule, trial); });
}

class Integral : public kit::EveryTarget {};
ON_EVERY_TARGET(Integral);

TEST_P(Integral, qeliIntegral_8u32s_C1R) { agrees<Qel32s>(qeliIntegral_8u32s_C1R, kUpright); }
TEST_P(Integral, qeliIntegral_8u32f_C1R) { agrees<Qel32f>(qeliIntegral_8u32f_C1R, kUpright); }
TEST_P(Integral, qeliSqrIntegral_8u32s_C1R) { squaresAgree<Qel32s, Qel32s>(qeliSqrIntegral_8u32s_C1R, kUpright); }
TEST_P(Integral, qeliSqrIntegral_8u32s64f_C1R) { squaresAgree<Qel32s, Qel64f>(qeliSqrIntegral_8u32s64f_C1R, kUpright); }
TEST_P(Integral, qeliSqrIntegral_8u32f64f_C1R) { squaresAgree<Qel32f, Qel64f>(qeliSqrIntegral_8u32f64f_C1R, kUpright); }
TEST_P(Integral, qeliTiltedIntegral_8u32s_C1R) { agrees<Qel32s>(qeliTiltedIntegral_8u32s_C1R, kTilted); }
TEST_P(Integral, qeliTiltedIntegral_8u32f_C1R) { agrees<Qel32f>(qeliTiltedIntegral_8u32f_C1R, kTilted); }
TEST_P(Integral, qeliTiltedSqrIntegral_8u32s_C1R) {
    squaresAgree<Qel32s, Qel32s>(qeliTiltedSqrIntegral_8u32s_C1R, kReadsPast);
}
TEST_P(Integral, qeliTiltedSqrIntegral_8u32s64f_C1R) {
    squaresAgree<Qel32s, Qel64f>(qeliTiltedSqrIntegral_8u32s64f_C1R, kTilted);
}
TEST_P(Integral, qeliTiltedSqrIntegral_8u32f64f_C1R) {
    squaresAgree<Qel32f, Qel64f>(qeliTiltedSqrIntegral_8u32f64f_C1R, kTilted);
}

TEST_P(Integral, OneSample) {
    const Qel8u sample = 9;
    Qel32s table[2][2] = {};
    ASSERT_EQ(qelStatusOk, qeliIntegral_8u32s_C1R(&sample, 1, table[0], 8, {1, 1}, 5));
    EXPECT_EQ(5, table[0][0]);
    EXPECT_EQ(5, table[0][1]);
    EXPECT_EQ(5, table[1][0]);
    EXPECT_EQ(14, table[1][1]);
    Qel32s tiltedTable[3][3] = {};
    ASSERT_EQ(qelStatusOk, qeliTiltedIntegral_8u32s_C1R(&sample, 1, tiltedTable[0], 12, {1, 1}, 5));
    EXPECT_EQ(5, tiltedTable[2][0]);
    EXPECT_EQ(14, tiltedTable[2][1]);
    EXPECT_EQ(5, tiltedTable[2][2]);
}

// Four reads give the sum of any rectangle, also in a table that has wrapped.
TEST_P(Integral, RectanglesByFourReads) {
    constexpr QelSize kSize = {9, 7};
    kit::Trial trial(3, kSize);
    kit::Image<Qel8u> src(trial);
    kit::Image<Qel32s> table({kSize.width + 1, kSize.height + 1}, 0);
    ASSERT_EQ(qelStatusOk, qeliIntegral_8u32s_C1R(src.data(), src.step(), table.data(), table.step(), kSize,
                                                  std::numeric_limits<Qel32s>::max() - 100));
    for (int y = 0; y < kSize.height; ++y)
        for (int x = 0; x < kSize.width; ++x)
            for (int bottom = y + 1; bottom <= kSize.height; ++bottom)
                for (int right = x + 1; right <= kSize.width; ++right) {
                    int want = 0;
                    for (int v = y; v < bottom; ++v)
                        for (int u = x; u < right; ++u) want += src.at(u, v);
                    ASSERT_EQ(want, wrap(int64_t{table.at(right, bottom)} - table.at(x, bottom) - table.at(right, y) +
                                         table.at(x, y)));
                }
}

TEST(IntegralChecks, EveryMember) {
    CHECKS_OF(qeliIntegral_8u32s_C1R).larger<2>(1, 1).run();
    CHECKS_OF(qeliIntegral_8u32f_C1R).larger<2>(1, 1).run();
    CHECKS_OF(qeliSqrIntegral_8u32s_C1R).larger<2>(1, 1).larger<4>(1, 1).run();
    CHECKS_OF(qeliSqrIntegral_8u32s64f_C1R).larger<2>(1, 1).larger<4>(1, 1).run();
    CHECKS_OF(qeliSqrIntegral_8u32f64f_C1R).larger<2>(1, 1).larger<4>(1, 1).run();
    CHECKS_OF(qeliTiltedIntegral_8u32s_C1R).larger<2>(2, 2).run();
    CHECKS_OF(qeliTiltedIntegral_8u32f_C1R).larger<2>(2, 2).run();
    CHECKS_OF(qeliTiltedSqrIntegral_8u32s_C1R).larger<0>(0, 1).larger<2>(2, 2).larger<4>(2, 2).run();
    CHECKS_OF(qeliTiltedSqrIntegral_8u32s64f_C1R).larger<2>(2, 2).larger<4>(2, 2).run();
    CHECKS_OF(qeliTiltedSqrIntegral_8u32f64f_C1R).larger<2>(2, 2).larger<4>(2, 2).run();
}

// A width whose table row is longer than any step can say, also where width + 1 leaves the range of int.
TEST(IntegralChecks, WidthsThatOverflow) {
    constexpr int kMax = std::numeric_limits<int>::max();
    const Qel8u u = 1;
    Qel32s s = 1;
    Qel64f f = 1;
    for (const int width : {kMax, kMax - 1, 0x20000000}) {
        EXPECT_EQ(qelStatusBadStep, qeliIntegral_8u32s_C1R(&u, kMax, &s, kMax - 3, {width, 1}, 0));
        EXPECT_EQ(qelStatusBadStep, qeliTiltedIntegral_8u32s_C1R(&u, kMax, &s, kMax - 3, {width, 1}, 0));
        EXPECT_EQ(qelStatusBadStep,
                  qeliSqrIntegral_8u32s64f_C1R(&u, kMax, &s, kMax - 3, &f, kMax - 7, {width, 1}, 0, 0));
    }
}

}  // namespace
