#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>
#include <vector>

#include "kit/checks.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/feature.h"
#include "qelcv/filter.h"

namespace {

struct Form {
    int kernType, apertureSize, avgWindow;
};
constexpr Form kForms[] = {{0, 3, 3}, {0, 5, 3}, {1, 3, 3}, {0, 3, 5}, {0, 5, 5}, {1, 3, 5}};

std::ostream& operator<<(std::ostream& out, const Form& form) {
    return out << "kernel type " << form.kernType << ", aperture " << form.apertureSize << ", window "
               << form.avgWindow;
}

using Floats = kit::Image<Qel32f>;

// The matrices of all pixels.
struct Matrices {
    explicit Matrices(QelSize size) : dxx(size, 0), dxy(size, 0), dyy(size, 0) {}
    Floats dxx, dxy, dyy;
};

// The filters have tests of their own; here they are called one after the other, over whole images.
template <class Src, class D>
void derive(const kit::Image<Src>& image, const Form& form, kit::Image<D>& dx, kit::Image<D>& dy, Qel8u* scratch) {
    const auto run = [&](auto* filter, kit::Image<D>& out, auto... mask) {
        ASSERT_EQ(qelStatusOk, filter(image.data(), image.step(), out.data(), out.step(), image.size(), mask...,
                                      qelBorderRepl, 0, scratch));
    };
    const int mask = 11 * form.apertureSize;
    if constexpr (std::is_same_v<Src, Qel8u>) {
        if (form.kernType == 0) {
            run(qeliFilterSobelVertBorder_8u16s_C1R, dx, mask);
            run(qeliFilterSobelHorizBorder_8u16s_C1R, dy, mask);
        } else {
            run(qeliFilterScharrVertBorder_8u16s_C1R, dx);
            run(qeliFilterScharrHorizBorder_8u16s_C1R, dy);
        }
    } else {
        if (form.kernType == 0) {
            run(qeliFilterSobelVertBorder_32f_C1R, dx, mask);
            run(qeliFilterSobelHorizBorder_32f_C1R, dy, mask);
        } else {
            run(qeliFilterScharrVertBorder_32f_C1R, dx);
            run(qeliFilterScharrHorizBorder_32f_C1R, dy);
        }
    }
}

template <class Src>
Matrices matricesOf(const kit::Image<Src>& image, const Form& form, Qel8u* scratch) {
    using D = std::conditional_t<std::is_same_v<Src, Qel8u>, Qel16s, Qel32f>;
    const QelSize size = image.size();
    kit::Image<D> dx(size, 0), dy(size, 0);
    derive(image, form, dx, dy, scratch);
    Matrices products(size), averages(size);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const Qel32f a = dx.at(x, y), b = dy.at(x, y);
            products.dxx.at(x, y) = a * a;
            products.dxy.at(x, y) = a * b;
            products.dyy.at(x, y) = b * b;
        }
    }
    const auto average = [&](const Floats& in, Floats& out) {
        EXPECT_EQ(qelStatusOk, qeliFilterLowpassBorder_32f_C1R(in.data(), in.step(), out.data(), out.step(), size,
                                                               11 * form.avgWindow, qelBorderRepl, 0, scratch));
    };
    average(products.dxx, averages.dxx);
    average(products.dxy, averages.dxy);
    average(products.dyy, averages.dyy);
    return averages;
}

Qel32f scaleOf(const Form& form) {
    const Qel32f s = 1.0F / (255.0F * (form.apertureSize == 3 ? 16.0F : 256.0F));
    return form.kernType == 1 ? s * 0.612500012F : s;
}

Qel32f smallerEigenvalue(Qel32f a, Qel32f b, Qel32f c, Qel32f s) {
    return (a + b - std::sqrt((a - b) * (a - b) + 4 * (c * c))) * (s * 0.5F);
}

void sixNumbers(Qel32f dxx, Qel32f dxy, Qel32f dyy, const Form& form, Qel32f* out) {
    const Qel32f s = scaleOf(form);
    const Qel32f a = dxx * s, b = dyy * s, c = dxy * s;
    const Qel32f t = 0.01F * std::max(a, b);
    const Qel32f r = std::sqrt(4 * c * c + (a - b) * (a - b));
    const Qel32f large = ((a + b) + r) * 0.5F, small = ((a + b) - r) * 0.5F;
    std::fill_n(out, 6, 0.0F);
    if (t > std::min(a, b) || t > a * b - c * c) return;
    out[0] = large;
    out[1] = small;
    if (t > std::fabs(c)) {
        out[2] = out[5] = 1;
        return;
    }
    const Qel32f c2 = form.kernType == 0 ? -c : c;
    const Qel32f p = a - large, q = a - small;
    const Qel32f n1 = 1.0F / std::max(1.1920929e-7F, std::sqrt(p * p + c2 * c2));
    const Qel32f n2 = 1.0F / std::max(1.1920929e-7F, std::sqrt(c2 * c2 + q * q));
    out[2] = c2 * n1;
    out[3] = -p * n1;
    out[4] = c2 * n2;
    out[5] = -q * n2;
}

template <class Src>
struct Functions {
    qelStatus (*minSize)(QelSize, int, int, int*);
    qelStatus (*vecsSize)(QelSize, int, int, int*);
    qelStatus (*min)(const Src*, int, Qel32f*, int, QelSize, int, int, int, Qel8u*);
    qelStatus (*vecs)(const Src*, int, Qel32f*, int, QelSize, int, int, int, Qel8u*);
};
constexpr Functions<Qel8u> k8u = {qeliMinEigenValGetBufferSize_8u32f_C1R, qeliEigenValsVecsGetBufferSize_8u32f_C1R,
                                  qeliMinEigenVal_8u32f_C1R, qeliEigenValsVecs_8u32f_C1R};
constexpr Functions<Qel32f> k32f = {qeliMinEigenValGetBufferSize_32f_C1R, qeliEigenValsVecsGetBufferSize_32f_C1R,
                                    qeliMinEigenVal_32f_C1R, qeliEigenValsVecs_32f_C1R};

template <class Src>
void agreesWith(const Functions<Src>& f, const kit::Image<Src>& image, const Form& form, kit::Trial& trial,
                const Matrices& m) {
    const QelSize size = image.size();
    Floats gotMin(trial, size), gotVecs(trial, size, 6), wantMin(gotMin), wantVecs(gotVecs);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const Qel32f a = m.dxx.at(x, y), b = m.dyy.at(x, y), c = m.dxy.at(x, y);
            wantMin.at(x, y) = smallerEigenvalue(a, b, c, scaleOf(form));
            sixNumbers(a, c, b, form, &wantVecs.at(6 * x, y));
        }
    }
    int bytes = 0, same = 0;
    ASSERT_EQ(qelStatusOk, f.minSize(size, form.apertureSize, form.avgWindow, &bytes));
    ASSERT_EQ(qelStatusOk, f.vecsSize(size, form.apertureSize, form.avgWindow, &same));
    ASSERT_EQ(bytes, same);
    kit::ScratchBlock scratch(bytes, size_t(trial.between(0, 31)));
    const auto call = [&](auto* function, Floats& out) {
        ASSERT_EQ(qelStatusOk,
                  function(image.data(), image.step(), out.data(), out.step(), size, form.kernType, form.apertureSize,
                           form.avgWindow, trial.coin() ? scratch.odd() : scratch.flush()))
            << trial << ", " << form;
    };
    call(f.min, gotMin);
    ASSERT_TRUE(sameBits(wantMin, gotMin)) << trial << ", " << form;
    call(f.vecs, gotVecs);
    ASSERT_TRUE(sameBits(wantVecs, gotVecs)) << trial << ", " << form;
    ASSERT_TRUE(scratch.intact()) << trial << ", " << form;
}

template <class Src>
void agrees(const Functions<Src>& f, const kit::Image<Src>& image, const Form& form, kit::Trial& trial) {
    int bytes = 0;
    ASSERT_EQ(qelStatusOk, f.minSize(image.size(), form.apertureSize, form.avgWindow, &bytes));
    std::vector<Qel8u> scratch(static_cast<size_t>(bytes));
    const Matrices m = matricesOf(image, form, scratch.data());
    ASSERT_NO_FATAL_FAILURE(agreesWith(f, image, form, trial, m));
}

// Flat areas, edges and corners among noise.
template <class Src>
void draw(kit::Trial& trial, kit::Image<Src>& image, int kind) {
    const auto [width, height] = image.size();
    const int left = trial.between(0, width), top = trial.between(0, height), noise = trial.between(0, 4);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.at(x, y) = Src((kind == 1 && (x < left) == (y < top) ? 200 : 20) + trial.between(0, noise));
}

template <class Src>
void trialsAgree(const Functions<Src>& f) {
    for (uint32_t seed = 0; seed < 180; ++seed) {
        kit::Trial trial(seed);
        kit::Image<Src> image(trial);
        if (seed % 3 != 0) draw(trial, image, static_cast<int>(seed % 3));
        // What NaNs become is not told.
        if (std::is_same_v<Src, Qel32f> && seed % 6 == 3) trial.setContent(kit::Content::kRandom);
        for (int y = 0; y < trial.size.height; ++y)
            for (int x = 0; x < trial.size.width; ++x)
                if (!(std::fabs(double(image.at(x, y))) < 1e6)) image.at(x, y) = Src(1);
        ASSERT_NO_FATAL_FAILURE(agrees(f, image, kForms[seed / 3 % std::size(kForms)], trial));
    }
}

class Eigen : public kit::EveryTarget {};
ON_EVERY_TARGET(Eigen);

TEST_P(Eigen, qeliMinEigenVal_8u32f_C1R_and_qeliEigenValsVecs_8u32f_C1R) { trialsAgree(k8u); }
TEST_P(Eigen, qeliMinEigenVal_32f_C1R_and_qeliEigenValsVecs_32f_C1R) { trialsAgree(k32f); }

// Sizes at which filters use threads, and more rows than any strip.
TEST_P(Eigen, LargeImages) {
    uint32_t seed = 0;
    for (const int threads : {1, 2, 3, 33}) {
        for (const QelSize size : {QelSize{257, 260}, {256, 170}, {1030, 40}}) {
            kit::Trial trial(++seed, size, threads);
            trial.setContent(kit::Content::kRandom);
            const Form& form = kForms[seed % std::size(kForms)];
            kit::Image<Qel8u> image(trial);
            ASSERT_NO_FATAL_FAILURE(agrees(k8u, image, form, trial));
            kit::Image<Qel32f> floats(trial);
            draw(trial, floats, 1);
            ASSERT_NO_FATAL_FAILURE(agrees(k32f, floats, form, trial));
        }
    }
}

// Heights around a few turns of the rows that are kept.
TEST_P(Eigen, EndsOfStrips) {
    uint32_t seed = 100;
    for (const Form& form : kForms) {
        for (const int height : {18, 19, 20, 22, 23, 24, 25, 38, 41, 43}) {
            kit::Trial trial(++seed, {1030, height});
            trial.setContent(kit::Content::kRandom);
            const kit::Image<Qel8u> image(trial);
            ASSERT_NO_FATAL_FAILURE(agrees(k8u, image, form, trial));
        }
    }
}

// Regions lower and narrower than masks and windows, where the scratch is as small as it gets.
TEST_P(Eigen, LowAndNarrow) {
    uint32_t seed = 200;
    for (const Form& form : kForms) {
        for (const int height : {1, 2, 3, 4, 6}) {
            for (const int width : {1, 2, 3, 4, 5, 6, 15, 17, 33}) {
                ++seed;
                kit::Trial trial(seed, {width, height}, seed % 4 == 0 ? 33 : 1);
                trial.setContent(kit::Content::kRandom);
                const kit::Image<Qel8u> image(trial);
                ASSERT_NO_FATAL_FAILURE(agrees(k8u, image, form, trial));
                kit::Image<Qel32f> floats(trial);
                draw(trial, floats, 1);
                ASSERT_NO_FATAL_FAILURE(agrees(k32f, floats, form, trial));
            }
        }
    }
}

// Results that the cache has no room for.
TEST_P(Eigen, BypassesCache) {
    uint32_t seed = 700;
    for (const Form& form : kForms) {
        for (const int width : {3, 4, 63, 64, 130, 203}) {
            kit::Trial trial(++seed, {width, 9});
            trial.setContent(kit::Content::kRandom);
            kit::core().cacheSize = 24 * 9 * width;
            const kit::Image<Qel8u> image(trial);
            ASSERT_NO_FATAL_FAILURE(agrees(k8u, image, form, trial));
        }
    }
    kit::core().reset();
}

// Where each thread makes a few rows from many of its neighbours', and the last thread more of them.
TEST_P(Eigen, SeamsOfThreads) {
    uint32_t seed = 500;
    for (const Form& form : kForms) {
        for (const int threads : {3, 51}) {
            kit::Trial trial(++seed, {256, 257}, threads);
            trial.setContent(kit::Content::kRandom);
            const kit::Image<Qel8u> image(trial);
            ASSERT_NO_FATAL_FAILURE(agrees(k8u, image, form, trial));
            kit::Image<Qel32f> floats(trial);
            draw(trial, floats, 1);
            ASSERT_NO_FATAL_FAILURE(agrees(k32f, floats, form, trial));
        }
    }
}

// The definition itself, where all sums are exact: masks over pixels held at the edges.
Matrices defined(const kit::Image<Qel8u>& image, const Form& form) {
    const int width = image.size().width;
    const int height = image.size().height;
    const std::vector<int> smooth = form.kernType == 1       ? std::vector<int>{3, 10, 3}
                                    : form.apertureSize == 3 ? std::vector<int>{1, 2, 1}
                                                             : std::vector<int>{1, 4, 6, 4, 1};
    const std::vector<int> slope =
        form.apertureSize == 3 ? std::vector<int>{-1, 0, 1} : std::vector<int>{-1, -2, 0, 2, 1};
    const int reach = form.apertureSize / 2, window = form.avgWindow / 2;
    const auto derivative = [&](int x, int y, const std::vector<int>& across, const std::vector<int>& down) {
        int sum = 0;
        for (int j = -reach; j <= reach; ++j)
            for (int i = -reach; i <= reach; ++i)
                sum += across[size_t(i) + size_t(reach)] * down[size_t(j) + size_t(reach)] *
                       image.at(std::clamp(x + i, 0, width - 1), std::clamp(y + j, 0, height - 1));
        return sum;
    };
    Matrices m(image.size());
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            int sums[3] = {};
            for (int j = -window; j <= window; ++j) {
                for (int i = -window; i <= window; ++i) {
                    const int u = std::clamp(x + i, 0, width - 1), v = std::clamp(y + j, 0, height - 1);
                    const int dx = derivative(u, v, slope, smooth) * (form.kernType == 0 ? -1 : 1);
                    const int dy = derivative(u, v, smooth, slope);
                    sums[0] += dx * dx, sums[1] += dx * dy, sums[2] += dy * dy;
                }
            }
            const Qel32f share = form.avgWindow == 3 ? 0.11111111F : 0.04F;
            m.dxx.at(x, y) = Qel32f(sums[0]) * share;
            m.dxy.at(x, y) = Qel32f(sums[1]) * share;
            m.dyy.at(x, y) = Qel32f(sums[2]) * share;
        }
    }
    return m;
}

TEST_P(Eigen, AreAsDefined) {
    for (const Form& form : kForms) {
        for (const QelSize size : {QelSize{1, 1}, {2, 7}, {9, 2}, {33, 18}}) {
            kit::Trial trial(1, size);
            kit::Image<Qel8u> image(size, 0);
            kit::Image<Qel32f> floats(size, 0);
            for (int y = 0; y < size.height; ++y)
                for (int x = 0; x < size.width; ++x)
                    floats.at(x, y) = image.at(x, y) = static_cast<Qel8u>(trial.between(0, 7));
            const Matrices m = defined(image, form);
            ASSERT_NO_FATAL_FAILURE(agreesWith(k8u, image, form, trial, m));
            ASSERT_NO_FATAL_FAILURE(agreesWith(k32f, floats, form, trial, m));
        }
    }
}

// The numbers at a pixel of an image that f describes.
template <class Value>
std::vector<Qel32f> numbersAt(int x, int y, const Value& value) {
    const QelSize size = {24, 20};
    kit::Image<Qel8u> image(size, 0);
    for (int v = 0; v < size.height; ++v)
        for (int u = 0; u < size.width; ++u) image.at(u, v) = static_cast<Qel8u>(value(u, v));
    kit::Image<Qel32f> out(size, 9, 6), smallest(size, 9);
    int bytes = 0;
    EXPECT_EQ(qelStatusOk, qeliEigenValsVecsGetBufferSize_8u32f_C1R(size, 3, 3, &bytes));
    kit::ScratchBlock scratch(bytes);
    EXPECT_EQ(qelStatusOk, qeliEigenValsVecs_8u32f_C1R(image.data(), image.step(), out.data(), out.step(), size, 0, 3,
                                                       3, scratch.odd()));
    EXPECT_EQ(qelStatusOk, qeliMinEigenVal_8u32f_C1R(image.data(), image.step(), smallest.data(), smallest.step(), size,
                                                     0, 3, 3, scratch.odd()));
    std::vector<Qel32f> numbers = {smallest.at(x, y)};
    for (int i = 0; i < 6; ++i) numbers.push_back(out.at(6 * x + i, y));
    return numbers;
}

TEST_P(Eigen, FlatAreasEdgesAndCorners) {
    const std::vector<Qel32f> zeroes(7, 0.0F);
    EXPECT_EQ(zeroes, numbersAt(10, 10, [](int, int) { return 77; }));
    EXPECT_EQ(zeroes, numbersAt(12, 10, [](int x, int) { return x < 12 ? 10 : 200; }));
    EXPECT_EQ(zeroes, numbersAt(12, 10, [](int, int y) { return y < 10 ? 10 : 200; }));
    const auto point = numbersAt(12, 10, [](int x, int y) { return x == 12 && y == 10 ? 200 : 0; });
    EXPECT_GT(point[0], 0);
    EXPECT_EQ((std::vector<Qel32f>{1, 0, 0, 1}), std::vector<Qel32f>(point.begin() + 3, point.end()));
    // A corner that points along the diagonal: its eigenvectors lie along both diagonals.
    const auto corner = numbersAt(12, 10, [](int x, int y) { return x >= 12 && y >= 10 ? 200 : 0; });
    EXPECT_GT(corner[0], 0);
    EXPECT_NEAR(corner[1], corner[2] + 2 * std::fabs((corner[1] - corner[2]) / 2), 1e-3);
    for (size_t i = 3; i < 7; ++i) EXPECT_NEAR(std::fabs(corner[i]), 0.70710678, 1e-5);
}

template <class Src>
void checks(const Functions<Src>& f, const std::string& name, bool vectors) {
    std::vector<Qel8u> scratch(1 << 20);
    kit::Checks check(name, vectors ? f.vecs : f.min);
    if (vectors) check.template channels<2>(6);
    check.template value<5>(0)
        .template value<6>(3)
        .template value<7>(3)
        .template value<8>(scratch.data())
        .template fault<6>("aperture 4", qelStatusBadSize, 4)
        .template fault<6>("aperture 7", qelStatusBadSize, 7)
        .template fault<7>("window 4", qelStatusBadSize, 4)
        .template fault<7>("window 1", qelStatusBadSize, 1)
        .run();
    // A bad kernel type is seen ahead of a bad aperture.
    for (const auto& [kernType, aperture, want] : {std::tuple{2, 3, qelStatusBadArg},
                                                   {2, 4, qelStatusBadArg},
                                                   {-1, 3, qelStatusBadArg},
                                                   {1, 5, qelStatusBadSize},
                                                   {0, 4, qelStatusBadSize},
                                                   {1, 3, qelStatusOk}}) {
        const Src src[4] = {};
        Qel32f dst[24] = {};
        const auto status = (vectors ? f.vecs : f.min)(src, 4 * sizeof(Src), dst, 96, {4, 1}, kernType, aperture,
                                                       want == qelStatusOk ? 5 : 3, scratch.data());
        EXPECT_EQ(want, status) << name << " " << kernType << " " << aperture;
    }
}

TEST(EigenChecks, EveryMember) {
    checks(k8u, "qeliMinEigenVal_8u32f_C1R", false);
    checks(k32f, "qeliMinEigenVal_32f_C1R", false);
    checks(k8u, "qeliEigenValsVecs_8u32f_C1R", true);
    checks(k32f, "qeliEigenValsVecs_32f_C1R", true);
}

template <class Src>
void sizeIsAsDocumented(const Functions<Src>& f) {
    using Size = qelStatus(QelSize, int, int*);
    constexpr bool is8u = std::is_same_v<Src, Qel8u>;
    Size* const vert = is8u ? qeliFilterSobelVertGetBufferSize_8u16s_C1R : qeliFilterSobelVertGetBufferSize_32f_C1R;
    Size* const horiz = is8u ? qeliFilterSobelHorizGetBufferSize_8u16s_C1R : qeliFilterSobelHorizGetBufferSize_32f_C1R;
    auto* const scharr = is8u ? qeliFilterScharrVertGetBufferSize_8u16s_C1R : qeliFilterScharrVertGetBufferSize_32f_C1R;
    auto* const other =
        is8u ? qeliFilterScharrHorizGetBufferSize_8u16s_C1R : qeliFilterScharrHorizGetBufferSize_32f_C1R;
    for (const int threads : {1, 3}) {
        kit::core().threads = threads;
        for (const Form& form : kForms) {
            const QelSize size = {100, 41};
            int b[5] = {}, got = 0;
            EXPECT_EQ(qelStatusOk, vert(size, 11 * form.apertureSize, b));
            EXPECT_EQ(qelStatusOk, horiz(size, 11 * form.apertureSize, b + 1));
            EXPECT_EQ(qelStatusOk, qeliFilterLowpassGetBufferSize_32f_C1R(size, 11 * form.avgWindow, b + 2));
            if (form.apertureSize == 3) {
                EXPECT_EQ(qelStatusOk, scharr(size, b + 3));
                EXPECT_EQ(qelStatusOk, other(size, b + 4));
            }
            EXPECT_EQ(qelStatusOk, f.minSize(size, form.apertureSize, form.avgWindow, &got));
            EXPECT_EQ(112 * 41 * (is8u ? 16 : 20) + 224 + *std::max_element(b, b + 5), got);
        }
    }
    kit::core().reset();
    int bytes = 7;
    EXPECT_EQ(qelStatusOverflow, f.minSize({30000, 30000}, 3, 3, &bytes));
    EXPECT_EQ(7, bytes);
}

TEST(EigenBufferSize, AsDocumented) {
    sizeIsAsDocumented(k8u);
    sizeIsAsDocumented(k32f);
    for (auto* size : {qeliMinEigenValGetBufferSize_8u32f_C1R, qeliMinEigenValGetBufferSize_32f_C1R,
                       qeliEigenValsVecsGetBufferSize_8u32f_C1R, qeliEigenValsVecsGetBufferSize_32f_C1R}) {
        kit::Checks("GetBufferSize", size)
            .value<1>(3)
            .value<2>(5)
            .fault<1>("aperture 4", qelStatusBadSize, 4)
            .fault<2>("window 7", qelStatusBadSize, 7)
            .run();
    }
}

}  // namespace
