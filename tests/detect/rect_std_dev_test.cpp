#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "kit/checks.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/detect.h"

namespace {

Qel32s wrap(int64_t value) { return static_cast<Qel32s>(static_cast<uint64_t>(value)); }

// The four elements of a table under a rectangle: upright A, B, C, D; tilted bottom, left, right, top.
template <class T>
struct Four {
    T a, b, c, d;
};

// Sums of a rectangle, by what its elements are taken as.
int64_t uprightSum(Four<Qel32s> f) { return wrap(int64_t{f.c} - f.d + f.a - f.b); }
Qel32f uprightSum(Four<Qel32f> f) {
    const Qel32f top = f.c - f.d, bottom = f.a - f.b;
    return top + bottom;
}
int64_t tiltedSum(Four<Qel32s> f) { return wrap(int64_t{f.a} - f.b - f.c + f.d); }
Qel64f tiltedSum(Four<Qel64f> f) {
    Qel64f sum = f.a - f.b;
    sum -= f.c;
    return sum + f.d;
}
Four<Qel32f> toSingle(Four<Qel64f> f) { return {Qel32f(f.a), Qel32f(f.b), Qel32f(f.c), Qel32f(f.d)}; }
Four<Qel64f> toDouble(Four<Qel32f> f) { return {f.a, f.b, f.c, f.d}; }

Qel32f scaleOf(int scaleFactor) {
    Qel32f power = 1;
    for (int64_t i = std::abs(int64_t{scaleFactor}) % 32; i > 0; --i) power *= 2;
    return scaleFactor < 0 ? power : 1 / power;
}

// The conversion of the processor.
Qel32s truncated(Qel64f value) {
    return value > -2147483649.0 && value < 2147483648.0 ? Qel32s(value) : std::numeric_limits<Qel32s>::min();
}

template <class V>
V notBelowZero(V v) {
    return v < 0 ? V(0) : v;
}

Qel32f singleVariance(Qel32f mean, Qel32f meanOfSquares) {
    const Qel32f square = mean * mean;
    return notBelowZero(meanOfSquares - square);
}
Qel32f singleRoot(Qel64f mean, Qel64f meanOfSquares) {
    const Qel64f square = mean * mean;
    return std::sqrt(Qel32f(notBelowZero(meanOfSquares - square)));
}

// The members' formulas. `area` is width times height.
struct Upright32f {
    using T = Qel32f;
    using Q = Qel64f;
    using R = Qel32f;
    static R value(Four<T> s, const Four<Q>& q, int area, int) {
        return std::sqrt(singleVariance(uprightSum(s) / Qel32f(area), uprightSum(toSingle(q)) / Qel32f(area)));
    }
};
struct Upright32s32f {
    using T = Qel32s;
    using Q = Qel64f;
    using R = Qel32f;
    static R value(Four<T> s, const Four<Q>& q, int area, int) {
        return std::sqrt(singleVariance(Qel32f(uprightSum(s)) / Qel32f(area), uprightSum(toSingle(q)) / Qel32f(area)));
    }
};
struct Upright32s {
    using T = Qel32s;
    using Q = Qel32s;
    using R = Qel32s;
    static R value(Four<T> s, const Four<Q>& q, int area, int scaleFactor) {
        const Qel32f mean = Qel32f(uprightSum(s)) / Qel32f(area), ofSquares = Qel32f(uprightSum(q)) / Qel32f(area);
        return truncated(std::sqrt(Qel64f(singleVariance(mean, ofSquares))) * Qel64f(scaleOf(scaleFactor)) + 0.5);
    }
};
struct Tilted32f {
    using T = Qel32f;
    using Q = Qel64f;
    using R = Qel32f;
    static R value(Four<T> s, const Four<Q>& q, int area, int) {
        return singleRoot(tiltedSum(toDouble(s)) / (2.0 * area), tiltedSum(q) / (2.0 * area));
    }
};
struct Tilted32s32f {
    using T = Qel32s;
    using Q = Qel64f;
    using R = Qel32f;
    static R value(Four<T> s, const Four<Q>& q, int area, int) {
        const Qel32f single = Qel32f(2.0 * area);
        const Qel32f mean = Qel32f(tiltedSum(s)) / single;
        return singleRoot(mean, tiltedSum(q) / Qel64f(single));
    }
};
struct Tilted32s {
    using T = Qel32s;
    using Q = Qel32s;
    using R = Qel32s;
    static R value(Four<T> s, const Four<Q>& q, int area, int scaleFactor) {
        const Qel32f single = Qel32f(2.0 * area);
        const Qel32f mean = Qel32f(tiltedSum(s)) / single, ofSquares = Qel32f(tiltedSum(q)) / single;
        return truncated(Qel64f(singleRoot(mean, ofSquares)) * Qel64f(scaleOf(scaleFactor)) + 0.5);
    }
};

// Where a form reads: columns may be negative.
template <class T>
Four<T> uprightFour(const kit::Image<T>& t, QelRect r, int c, int y) {
    const int left = r.x + c, right = left + r.width, top = r.y + y, bottom = top + r.height;
    return {t.at(right, bottom), t.at(left, bottom), t.at(left, top), t.at(right, top)};
}
template <class T>
Four<T> tiltedFour(const kit::Image<T>& t, int origin, QelRect r, int c, int y) {
    const int x = origin + r.x - r.y + c, top = r.x + r.y + y, w = r.width, h = r.height;
    return {t.at(x + w - h, top + w + h), t.at(x - h, top + h), t.at(x + w, top + w), t.at(x, top)};
}

// Tables as large as the reads go and the steps must be, read from column `origin` on.
struct Geometry {
    QelSize table;
    int origin;
};
Geometry uprightGeometry(QelSize roi, QelRect r) {
    return {{roi.width + r.x + r.width, roi.height + r.y + r.height}, 0};
}
Geometry tiltedGeometry(QelSize roi, QelRect r) {
    const int wide = r.width + r.height + roi.width;
    return {{std::max(wide, wide + r.x + r.y - 1), roi.height + r.x + r.y + r.width + r.height},
            -(r.x - r.y - r.height)};
}

// Tables of a real image half of the time, else of anything.
template <class T>
void sumUp(kit::Trial& trial, bool squares, kit::Image<Qel8u>& pixels, kit::Image<T>& table) {
    for (int y = 0; y < table.size().height; ++y) {
        double running = 0;
        for (int x = 0; x < table.size().width; ++x) {
            running += squares ? pixels.at(x, y) * pixels.at(x, y) : pixels.at(x, y);
            table.at(x, y) = T(running + (y > 0 ? double(table.at(x, y - 1)) : 0));
        }
    }
    trial.note("of pixels");
}

template <class Member, class Call>
void agrees(kit::Trial& trial, bool tilted, int scaleFactor, const Call& call) {
    using T = typename Member::T;
    using Q = typename Member::Q;
    using R = typename Member::R;
    const QelRect rect = {trial.between(0, 9), trial.between(0, 9), trial.between(1, 24), trial.between(1, 24)};
    const Geometry g = tilted ? tiltedGeometry(trial.size, rect) : uprightGeometry(trial.size, rect);
    kit::Image<T> src(trial, g.table);
    kit::Image<Q> sqr(trial, g.table);
    if (trial.coin() && int64_t{g.table.width} * g.table.height < 30000) {  // in 32 bits, squares must not wrap here
        kit::Image<Qel8u> pixels(trial, g.table);
        sumUp(trial, false, pixels, src);
        sumUp(trial, true, pixels, sqr);
    }
    kit::Image<R> got(trial), want(got);
    for (int y = 0; y < trial.size.height; ++y)
        for (int c = 0; c < trial.size.width; ++c)
            want.at(c, y) =
                tilted ? Member::value(tiltedFour(src, g.origin, rect, c, y), tiltedFour(sqr, g.origin, rect, c, y),
                                       rect.width * rect.height, scaleFactor)
                       : Member::value(uprightFour(src, rect, c, y), uprightFour(sqr, rect, c, y),
                                       rect.width * rect.height, scaleFactor);
    ASSERT_EQ(qelStatusOk, call(src.data() + g.origin, src.step(), sqr.data() + g.origin, sqr.step(), got.data(),
                                got.step(), trial.size, rect, scaleFactor))
        << trial;
    ASSERT_TRUE(sameBits(want, got)) << trial << ", rect " << rect.x << " " << rect.y << " " << rect.width << " "
                                     << rect.height << ", scale " << scaleFactor;
}

constexpr kit::Content kContents[] = {kit::Content::kRandom, kit::Content::kLowest, kit::Content::kHighest,
                                      kit::Content::kEnds};
constexpr int kScales[] = {0, 1, -1, 3, -3, 5, 31, -31, 32, -32, 33, -20, std::numeric_limits<int>::min()};

template <class Member, class Call>
void agrees(bool tilted, const Call& call) {
    uint32_t seed = 0;
    const auto run = [&](kit::Trial& trial) {
        trial.setContent(kContents[seed % 4]);
        agrees<Member>(trial, tilted, kScales[seed % std::size(kScales)], call);
    };
    for (; seed < 250; ++seed) {
        kit::Trial trial(seed);
        ASSERT_NO_FATAL_FAILURE(run(trial));
    }
    // From 2048 pixels on rows may go to threads.
    for (const QelSize size : {QelSize{2047, 1}, {64, 32}, {32, 96}, {2049, 1}, {1024, 40}})
        for (const int threads : {1, 2, 3, 33, 100}) {
            kit::Trial trial(++seed, size, threads);
            ASSERT_NO_FATAL_FAILURE(run(trial));
        }
}

// Members without scale beside those with one.
template <class Function>
auto unscaled(Function* function) {
    return [function](auto... a) {
        return [&]<size_t... I>(std::index_sequence<I...>, auto all) { return function(std::get<I>(all)...); }
        (std::make_index_sequence<sizeof...(a) - 1>(), std::make_tuple(a...));
    };
}

class RectStdDev : public kit::EveryTarget {};
ON_EVERY_TARGET(RectStdDev);

TEST_P(RectStdDev, qeliRectStdDev_32f_C1R) { agrees<Upright32f>(false, unscaled(qeliRectStdDev_32f_C1R)); }
TEST_P(RectStdDev, qeliRectStdDev_32s32f_C1R) { agrees<Upright32s32f>(false, unscaled(qeliRectStdDev_32s32f_C1R)); }
TEST_P(RectStdDev, qeliRectStdDev_32s_C1RSfs) { agrees<Upright32s>(false, qeliRectStdDev_32s_C1RSfs); }
TEST_P(RectStdDev, qeliTiltedRectStdDev_32f_C1R) { agrees<Tilted32f>(true, unscaled(qeliTiltedRectStdDev_32f_C1R)); }
TEST_P(RectStdDev, qeliTiltedRectStdDev_32s32f_C1R) {
    agrees<Tilted32s32f>(true, unscaled(qeliTiltedRectStdDev_32s32f_C1R));
}
TEST_P(RectStdDev, qeliTiltedRectStdDev_32s_C1RSfs) { agrees<Tilted32s>(true, qeliTiltedRectStdDev_32s_C1RSfs); }

// A constant image has no deviation anywhere, whatever the rectangle and however its means round.
TEST_P(RectStdDev, ConstantImageGivesZero) {
    constexpr QelSize kSize = {40, 30};
    for (const int value : {1, 77, 255}) {
        kit::Image<Qel8u> src(kSize, Qel8u(value));
        kit::Image<Qel32f> sums({41, 31}, 0);
        kit::Image<Qel64f> squares({41, 31}, 0);
        ASSERT_EQ(qelStatusOk, qeliSqrIntegral_8u32f64f_C1R(src.data(), src.step(), sums.data(), sums.step(),
                                                            squares.data(), squares.step(), kSize, 0, 0));
        for (int side = 1; side <= 20; ++side) {
            kit::Image<Qel32f> got({20, 10}, 5), want({20, 10}, 0);
            ASSERT_EQ(qelStatusOk, qeliRectStdDev_32f_C1R(sums.data(), sums.step(), squares.data(), squares.step(),
                                                          got.data(), got.step(), {20, 10}, {1, 1, side, side}));
            for (int y = 0; y < 10; ++y)
                for (int x = 0; x < 20; ++x) ASSERT_LE(got.at(x, y), 0.5F) << value << " " << side;
        }
    }
}

// A mean of squares that rounding put below the square of the mean gives zero.
TEST_P(RectStdDev, NegativeVarianceGivesZero) {
    const Qel32s sums[2][2] = {{0, 0}, {0, 100}}, squares[2][2] = {{0, 0}, {0, 9000}};
    const Qel64f exact[2][2] = {{0, 0}, {0, 9999.5}};
    const Qel32f singles[2][2] = {{0, 0}, {0, 100}};
    Qel32f f = 7;
    Qel32s s = 7;
    const QelRect rect = {0, 0, 1, 1};
    ASSERT_EQ(qelStatusOk, qeliRectStdDev_32f_C1R(singles[0], 8, exact[0], 16, &f, 4, {1, 1}, rect));
    EXPECT_TRUE(kit::sameBits(0.0F, f));
    ASSERT_EQ(qelStatusOk, qeliRectStdDev_32s32f_C1R(sums[0], 8, exact[0], 16, &f, 4, {1, 1}, rect));
    EXPECT_TRUE(kit::sameBits(0.0F, f));
    ASSERT_EQ(qelStatusOk, qeliRectStdDev_32s_C1RSfs(sums[0], 8, squares[0], 8, &s, 4, {1, 1}, rect, 0));
    EXPECT_EQ(0, s);
}

// A scale of 1 halves, and halves are rounded up.
TEST_P(RectStdDev, ScaleHalves) {
    const Qel32s sums[2][2] = {{0, 0}, {0, 0}}, squares[2][2] = {{0, 0}, {0, 25}};
    Qel32s s = 7;
    ASSERT_EQ(qelStatusOk, qeliRectStdDev_32s_C1RSfs(sums[0], 8, squares[0], 8, &s, 4, {1, 1}, {0, 0, 1, 1}, 1));
    EXPECT_EQ(3, s);
}

// The rectangle is tested last; the steps are tested against it as it is. The bad ones need as many columns.
template <class Checks>
void checkRect(Checks&& checks, bool tilted) {
    constexpr QelRect kRect = {6, 1, 3, 4};  // tilted, it reaches column 1
    const int columns = tilted ? 3 + 4 + 6 + 1 - 1 : 6 + 3;
    const int rows = tilted ? 3 + 4 + 6 + 1 : 1 + 4;
    checks.template value<7>(kRect)
        .template larger<0>(columns, rows)
        .template larger<2>(columns, rows)
        .template fault<7>("x -1", qelStatusBadSize, {-1, 1, 10, 4})
        .template fault<7>("y -1", qelStatusBadSize, {6, -1, 3, 6})
        .template fault<7>("width 0", qelStatusBadSize, {9, 1, 0, 4})
        .template fault<7>("height 0", qelStatusBadSize, {6, 5, 3, 0})
        .run();
}

TEST(RectStdDevChecks, EveryMember) {
    checkRect(CHECKS_OF(qeliRectStdDev_32f_C1R), false);
    checkRect(CHECKS_OF(qeliRectStdDev_32s32f_C1R), false);
    checkRect(CHECKS_OF(qeliRectStdDev_32s_C1RSfs), false);
    checkRect(CHECKS_OF(qeliTiltedRectStdDev_32f_C1R), true);
    checkRect(CHECKS_OF(qeliTiltedRectStdDev_32s32f_C1R), true);
    checkRect(CHECKS_OF(qeliTiltedRectStdDev_32s_C1RSfs), true);
}

// Rectangles whose columns no step can hold, also where their sum leaves the range of int, and short as they are.
TEST(RectStdDevChecks, RectanglesThatOverflow) {
    constexpr int kMax = std::numeric_limits<int>::max();
    const Qel32s s = 1;
    const Qel64f q = 1;
    Qel32f f = 1;
    for (const QelRect rect : {QelRect{kMax, 0, kMax, 1}, {kMax, 1, 1, 1}, {0, 0, kMax, 1}}) {
        EXPECT_EQ(qelStatusBadStep, qeliRectStdDev_32s32f_C1R(&s, kMax - 3, &q, kMax - 7, &f, 4, {1, 1}, rect));
        EXPECT_EQ(qelStatusBadStep, qeliTiltedRectStdDev_32s32f_C1R(&s, kMax - 3, &q, kMax - 7, &f, 4, {1, 1}, rect));
    }
    EXPECT_EQ(qelStatusBadSize, qeliRectStdDev_32s32f_C1R(&s, -4, &q, -8, &f, 4, {1, 1}, {-9, 0, 1, 1}));
}

}  // namespace
