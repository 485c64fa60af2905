// Sobel, Scharr, Laplacian and low-pass filters against two-dimensional models.
#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <vector>

#include "kit/checks.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/filter.h"

namespace {

// The region and what lies around it

constexpr int kRowsAbove = 0x10;
constexpr int kRowsBelow = 0x20;

struct Params {
    int mask;
    int mode;
    int divisor;

    int reach() const { return mask / 22; }
    int rowsAbove() const { return mode & kRowsAbove ? reach() : 0; }
    int rowsBelow() const { return mode & kRowsBelow ? reach() : 0; }
};

// A region with as many real rows above and below it as the mode allows to read. Behind these, the memory ends.
template <class T>
struct Scene {
    Scene(kit::Trial& trial, const Params& p)
        : above(p.rowsAbove()),
          image(trial, {trial.size.width, above + trial.size.height + p.rowsBelow()}),
          size(trial.size) {
        // Where two NaNs meet, either may survive; those that infinities make are all the same. Infinities stand
        // apart, so that not every result is a NaN.
        if constexpr (std::is_floating_point_v<T>) {
            for (int y = 0; y < image.size().height; ++y)
                for (int x = 0; x < image.size().width; ++x)
                    if (std::isnan(image.at(x, y)) || (std::isinf(image.at(x, y)) && (x % 7 != 0 || y % 3 != 0)))
                        image.at(x, y) = trial.anySample<T>();
        }
    }
    const T* region() const { return &image.at(0, above); }

    int above;
    kit::Image<T> image;
    QelSize size;
};

// The position that stands in for i, found by walking: -1 for the constant.
int extended(int mode, int i, int n) {
    if (mode == qelBorderConst) return i < 0 || i >= n ? -1 : i;
    if (mode == qelBorderRepl) return std::clamp(i, 0, n - 1);
    if (mode == qelBorderMirr && n == 1) return 0;
    while (i < 0 || i >= n) {
        if (mode == qelBorderWrap) i += i < 0 ? n : -n;
        if (mode == qelBorderMirr) i = i < 0 ? -i : 2 * (n - 1) - i;
        if (mode == qelBorderMirrR) i = i < 0 ? -1 - i : 2 * n - 1 - i;
    }
    return i;
}

template <class T>
struct Border {
    int mode;
    T value;

    // True where row y of the region is the constant throughout.
    bool isConstantRow(int y, int height) const {
        if (y < 0 && (mode & kRowsAbove)) return false;
        if (y >= height && (mode & kRowsBelow)) return false;
        return extended(mode & 15, y, height) < 0;
    }
    T at(const Scene<T>& scene, int x, int y) const {
        const bool real = (y < 0 && (mode & kRowsAbove)) || (y >= scene.size.height && (mode & kRowsBelow));
        const int row = real ? y : extended(mode & 15, y, scene.size.height);
        const int column = extended(mode & 15, x, scene.size.width);
        return (row < 0 && !real) || column < 0 ? value : scene.image.at(column, row + scene.above);
    }
};

// Kernels. Integers need their coefficients only; of 32f the order of additions is told by the kernel's name.

using K = std::vector<int>;
const K kDx3 = {-1, 0, 1}, kDxNeg3 = {1, 0, -1}, kDx5 = {-1, -2, 0, 2, 1}, kDxNeg5 = {1, 2, 0, -2, -1};
const K kD2x3 = {1, -2, 1}, kD2x5 = {1, 0, -2, 0, 1}, kSobel3 = {1, 2, 1}, kSobel5 = {1, 4, 6, 4, 1};
const K kSobelNeg3 = {-1, -2, -1}, kSobelNeg5 = {-1, -4, -6, -4, -1}, kScharr3 = {3, 10, 3};
const K kAvr3 = {1, 1, 1}, kAvr5 = {1, 1, 1, 1, 1};

Qel32f applied(const K& k, const std::array<Qel32f, 5>& s) {
    if (k == kDx3) return s[2] - s[0];
    if (k == kDxNeg3) return s[0] - s[2];
    if (k == kDx5) return (s[4] - s[0]) + ((s[3] - s[1]) + (s[3] - s[1]));
    if (k == kDxNeg5) return (s[0] - s[4]) + ((s[1] - s[3]) + (s[1] - s[3]));
    if (k == kD2x3) return (s[0] + s[2]) - (s[1] + s[1]);
    if (k == kD2x5) return (s[0] + s[4]) - (s[2] + s[2]);
    if (k == kSobel3) return (s[0] + s[2]) + (s[1] + s[1]);
    if (k == kSobelNeg3) return -applied(kSobel3, s);
    if (k == kSobel5) return ((s[0] + s[4]) + (s[1] + s[3]) * 4.0F) + s[2] * 6.0F;
    if (k == kSobelNeg5) return -applied(kSobel5, s);
    if (k == kScharr3) return (s[0] + s[2]) * 3.0F + s[1] * 10.0F;
    if (k == kAvr3) return (s[0] + s[1]) + s[2];
    return (((s[0] + s[1]) + s[2]) + s[3]) + s[4];
}

int sumOf(const K& k) {
    int sum = 0;
    for (const int c : k) sum += c;
    return sum;
}

struct Kernels {
    K across, down;
};

// Models

int model8u(const Scene<Qel8u>& scene, const Border<Qel8u>& border, const Kernels& k, int x, int y) {
    const int reach = static_cast<int>(k.down.size()) / 2;
    int sum = 0;
    for (int i = -reach; i <= reach; ++i)
        for (int j = -reach; j <= reach; ++j)
            sum += k.down[size_t(i) + size_t(reach)] * k.across[size_t(j) + size_t(reach)] *
                   border.at(scene, x + j, y + i);
    return sum;
}

Qel32f across32f(const Scene<Qel32f>& scene, const Border<Qel32f>& border, const K& k, int x, int y) {
    if (border.isConstantRow(y, scene.size.height)) return static_cast<Qel32f>(sumOf(k)) * border.value;
    const int reach = static_cast<int>(k.size()) / 2;
    std::array<Qel32f, 5> s{};
    for (int j = -reach; j <= reach; ++j) s[size_t(j) + size_t(reach)] = border.at(scene, x + j, y);
    return applied(k, s);
}

Qel32f model32f(const Scene<Qel32f>& scene, const Border<Qel32f>& border, const Kernels& k, int x, int y) {
    const int reach = static_cast<int>(k.down.size()) / 2;
    std::array<Qel32f, 5> r{};
    for (int i = -reach; i <= reach; ++i) r[size_t(i) + size_t(reach)] = across32f(scene, border, k.across, x, y + i);
    return applied(k.down, r);
}

// A filter of 3x3 and 5x5 as its model sees it: the result at x, y.
template <class T>
using SumAt = std::function<decltype(T() + 0)(const Scene<T>&, const Border<T>&, int mask, int x, int y)>;

template <class T>
SumAt<T> separable(const Kernels& of3, const Kernels& of5) {
    return [=](const Scene<T>& scene, const Border<T>& border, int mask, int x, int y) {
        const Kernels& k = mask == 33 ? of3 : of5;
        if constexpr (std::is_same_v<T, Qel8u>) {
            return model8u(scene, border, k, x, y);
        } else {
            return model32f(scene, border, k, x, y);
        }
    };
}

int laplacian8u(const Scene<Qel8u>& scene, const Border<Qel8u>& border, int mask, int x, int y) {
    if (mask == 55)
        return model8u(scene, border, {kSobel5, kD2x5}, x, y) + model8u(scene, border, {kD2x5, kSobel5}, x, y);
    int sum = -8 * border.at(scene, x, y);
    for (const int dy : {-1, 1})
        for (const int dx : {-1, 1}) sum += 2 * border.at(scene, x + dx, y + dy);
    return sum;
}

Qel32f laplacian32f(const Scene<Qel32f>& scene, const Border<Qel32f>& border, int mask, int x, int y) {
    if (mask == 55) {
        const Qel32f first = model32f(scene, border, {kSobel5, kD2x5}, x, y);
        return first + model32f(scene, border, {kD2x5, kSobel5}, x, y);
    }
    const auto diagonals = [&](int dy) {
        if (border.isConstantRow(y + dy, scene.size.height)) return 2.0F * border.value;
        return border.at(scene, x - 1, y + dy) + border.at(scene, x + 1, y + dy);
    };
    const Qel32f both = diagonals(-1) + diagonals(1);
    return (both + both) - border.at(scene, x, y) * 8.0F;
}

template <class T>
struct Filter {
    SumAt<T> sumAt;
    bool truncates = false;  // all 8s results of 5x5
};
const Filter<Qel8u> horiz{separable<Qel8u>({kSobel3, kDx3}, {kSobel5, kDx5})};
const Filter<Qel8u> vert{separable<Qel8u>({kDxNeg3, kSobel3}, {kDxNeg5, kSobel5})};
const Filter<Qel8u> negVert{separable<Qel8u>({kDxNeg3, kSobelNeg3}, {kDxNeg5, kSobelNeg5})};
const Filter<Qel8u> horizSecond{separable<Qel8u>({kSobel3, kD2x3}, {kSobel5, kD2x5})};
const Filter<Qel8u> vertSecond{separable<Qel8u>({kD2x3, kSobel3}, {kD2x5, kSobel5})};
const Filter<Qel8u> cross{separable<Qel8u>({kDxNeg3, kDx3}, {kDxNeg5, kDx5})};
const Filter<Qel8u> scharrHoriz{separable<Qel8u>({kScharr3, kDx3}, {})};
const Filter<Qel8u> scharrVert{separable<Qel8u>({kDx3, kScharr3}, {})};
const Filter<Qel8u> laplacian{laplacian8u, true};
const Filter<Qel8u> box{separable<Qel8u>({kAvr3, kAvr3}, {kAvr5, kAvr5})};

const Filter<Qel32f> horizF{separable<Qel32f>({kSobel3, kDx3}, {kSobel5, kDx5})};
const Filter<Qel32f> vertF{separable<Qel32f>({kDxNeg3, kSobel3}, {kDxNeg5, kSobel5})};
const Filter<Qel32f> negVertF{separable<Qel32f>({kDxNeg3, kSobelNeg3}, {kDxNeg5, kSobelNeg5})};
const Filter<Qel32f> horizSecondF{separable<Qel32f>({kSobel3, kD2x3}, {kSobel5, kD2x5})};
const Filter<Qel32f> vertSecondF{separable<Qel32f>({kD2x3, kSobel3}, {kD2x5, kSobel5})};
const Filter<Qel32f> crossF{separable<Qel32f>({kDxNeg3, kDx3}, {kDxNeg5, kDx5})};
const Filter<Qel32f> scharrHorizF{separable<Qel32f>({kScharr3, kDx3}, {})};
const Filter<Qel32f> scharrVertF{separable<Qel32f>({kDx3, kScharr3}, {})};
const Filter<Qel32f> laplacianF{laplacian32f};
const Filter<Qel32f> boxF{[](const Scene<Qel32f>& scene, const Border<Qel32f>& border, int mask, int x, int y) {
    const Kernels k = mask == 33 ? Kernels{kAvr3, kAvr3} : Kernels{kAvr5, kAvr5};
    return model32f(scene, border, k, x, y) * (mask == 33 ? 0.11111111F : 0.04F);
}};

// Calls, as the types of the results ask for them

// The result of type Dst for a sum, at x of a row of `width`.
Qel32f resultOf(Qel32f, Qel32f sum, const Params&, bool, int, int) { return sum; }
Qel16s resultOf(Qel16s, int sum, const Params&, bool, int, int) { return static_cast<Qel16s>(sum); }
Qel8u resultOf(Qel8u, int sum, const Params& p, bool, int, int) {
    return static_cast<Qel8u>(p.mask == 33 ? (sum + 5) * 7280 >> 16 : sum * 2621 >> 16);
}
Qel8s resultOf(Qel8s, int sum, const Params& p, bool truncates, int x, int width) {
    const Qel32f quotient = static_cast<Qel32f>(sum) * (1.0F / static_cast<Qel32f>(p.divisor));
    const bool inGroup = x < width / 8 * 8 && !(truncates && p.mask == 55);
    return static_cast<Qel8s>(std::clamp(inGroup ? std::nearbyint(quotient) : quotient, -128.0F, 127.0F));
}

// Functions with a mask, functions without, and those with a divisor, behind one signature.
template <class S, class D>
using Call = std::function<qelStatus(const S*, int, D*, int, QelSize, const Params&, S, Qel8u*)>;
using SizeQuery = std::function<qelStatus(QelSize, int, int*)>;

template <class S, class D>
Call<S, D> callOf(qelStatus (*f)(const S*, int, D*, int, QelSize, int, int, S, Qel8u*)) {
    return [=](const S* s, int ss, D* d, int ds, QelSize size, const Params& p, S v, Qel8u* b) {
        return f(s, ss, d, ds, size, p.mask, p.mode, v, b);
    };
}
template <class S, class D>
Call<S, D> callOf(qelStatus (*f)(const S*, int, D*, int, QelSize, int, S, Qel8u*)) {
    return [=](const S* s, int ss, D* d, int ds, QelSize size, const Params& p, S v, Qel8u* b) {
        return f(s, ss, d, ds, size, p.mode, v, b);
    };
}
Call<Qel8u, Qel8s> callOf(qelStatus (*f)(const Qel8u*, int, Qel8s*, int, QelSize, int, int, Qel8u, int, Qel8u*)) {
    return [=](const Qel8u* s, int ss, Qel8s* d, int ds, QelSize size, const Params& p, Qel8u v, Qel8u* b) {
        return f(s, ss, d, ds, size, p.mask, p.mode, v, p.divisor, b);
    };
}
Call<Qel8u, Qel8s> callOf(qelStatus (*f)(const Qel8u*, int, Qel8s*, int, QelSize, int, Qel8u, int, Qel8u*)) {
    return [=](const Qel8u* s, int ss, Qel8s* d, int ds, QelSize size, const Params& p, Qel8u v, Qel8u* b) {
        return f(s, ss, d, ds, size, p.mode, v, p.divisor, b);
    };
}
SizeQuery queryOf(qelStatus (*f)(QelSize, int, int*)) { return f; }
SizeQuery queryOf(qelStatus (*f)(QelSize, int*)) {
    return [=](QelSize size, int, int* pSize) { return f(size, pSize); };
}

// Runs one case in scratch of exactly the size asked for, at an odd address.
template <class S, class D>
void agrees(const Call<S, D>& call, const SizeQuery& query, const Filter<S>& filter, kit::Trial& trial,
            const Params& p) {
    const Scene<S> scene(trial, p);
    const Border<S> border = {p.mode, trial.anySample<S>()};
    kit::Image<D> got(trial), want(got);
    for (int y = 0; y < trial.size.height; ++y)
        for (int x = 0; x < trial.size.width; ++x)
            want.at(x, y) =
                resultOf(D(), filter.sumAt(scene, border, p.mask, x, y), p, filter.truncates, x, trial.size.width);

    int bytes = 0;
    ASSERT_EQ(qelStatusOk, query(trial.size, p.mask, &bytes));
    kit::ScratchBlock scratch(bytes, size_t(trial.between(0, 31)));
    ASSERT_EQ(qelStatusOk, call(scene.region(), scene.image.step(), got.data(), got.step(), trial.size, p, border.value,
                                trial.coin() ? scratch.odd() : scratch.flush()));
    ASSERT_TRUE(sameBits(want, got)) << trial << ", mask " << p.mask << ", mode " << p.mode << ", divisor "
                                     << p.divisor;
    ASSERT_TRUE(scratch.intact()) << trial;
}

constexpr int kModes[] = {0, 1, 2, 3, 4, 0x10, 0x21, 0x32, 0x13, 0x24, 0x30, 0x31, 0x11 | 0xF00, 0x33, 0x12};
constexpr int kDivisors[] = {1, 3, 16, -7, 1024, 2, 20000};

template <class S, class D>
void allAgree(const Call<S, D>& call, const SizeQuery& query, const Filter<S>& filter, const std::vector<int>& masks) {
    int turn = 0;
    const auto params = [&](int mask) {
        ++turn;
        return Params{mask, kModes[size_t(turn) % std::size(kModes)], kDivisors[size_t(turn) % std::size(kDivisors)]};
    };
    for (const int mask : masks) {
        for (uint32_t seed = 0; seed < 200; ++seed) {
            kit::Trial trial(seed);
            trial.setContent(seed % 3 == 0 ? kit::Content::kEnds : kit::Content::kRandom);
            if (std::is_same_v<S, Qel32f> && seed % 3 == 0) trial.setContent(kit::Content::kSpecial);
            ASSERT_NO_FATAL_FAILURE(agrees(call, query, filter, trial, params(mask)));
        }
        // Rows that are so long that few go through the ring at a time, in a cache, ahead of it, and past it.
        for (const QelSize size :
             {QelSize{700, 21}, QelSize{1300, 13}, QelSize{2400, 11}, QelSize{3700, 9}, QelSize{7000, 9}}) {
            kit::Trial trial(uint32_t(size.width), size);
            trial.setContent(kit::Content::kRandom);
            const int cacheSizes[] = {1 << 22, 2 * size.width * size.height + 2, 0};
            kit::core().cacheSize = cacheSizes[turn % 3];
            ASSERT_NO_FATAL_FAILURE(agrees(call, query, filter, trial, params(mask)));
            kit::core().cacheSize = 1 << 22;
        }
        // Regions that go to threads, and one that is streamed.
        uint32_t seed = 1000;
        for (const int threads : {1, 2, 3, 5}) {
            kit::Trial trial(seed++, {256 + 13 * threads, 256 + 7 * threads}, threads);
            trial.setContent(kit::Content::kRandom);
            if (threads == 1) kit::core().cacheSize = 0;
            ASSERT_NO_FATAL_FAILURE(agrees(call, query, filter, trial, params(mask)));
            kit::core().cacheSize = 1 << 22;
        }
    }
}

class FixedFilters : public kit::EveryTarget {};
ON_EVERY_TARGET(FixedFilters);

const std::vector<int> kBoth = {33, 55};
const std::vector<int> kOnly3x3 = {33};

#define AGREES(function, query, filter, masks)                                              \
    TEST_P(FixedFilters, function) {                                                        \
        ASSERT_NO_FATAL_FAILURE(allAgree(callOf(function), queryOf(query), filter, masks)); \
    }
AGREES(qeliFilterSobelHorizBorder_32f_C1R, qeliFilterSobelHorizGetBufferSize_32f_C1R, horizF, kBoth)
AGREES(qeliFilterSobelHorizBorder_8u16s_C1R, qeliFilterSobelHorizGetBufferSize_8u16s_C1R, horiz, kBoth)
AGREES(qeliFilterSobelHorizBorder_8u8s_C1R, qeliFilterSobelHorizGetBufferSize_8u8s_C1R, horiz, kBoth)
AGREES(qeliFilterSobelVertBorder_32f_C1R, qeliFilterSobelVertGetBufferSize_32f_C1R, vertF, kBoth)
AGREES(qeliFilterSobelVertBorder_8u16s_C1R, qeliFilterSobelVertGetBufferSize_8u16s_C1R, vert, kBoth)
AGREES(qeliFilterSobelVertBorder_8u8s_C1R, qeliFilterSobelVertGetBufferSize_8u8s_C1R, vert, kBoth)
AGREES(qeliFilterSobelNegVertBorder_32f_C1R, qeliFilterSobelNegVertGetBufferSize_32f_C1R, negVertF, kBoth)
AGREES(qeliFilterSobelNegVertBorder_8u16s_C1R, qeliFilterSobelNegVertGetBufferSize_8u16s_C1R, negVert, kBoth)
AGREES(qeliFilterSobelNegVertBorder_8u8s_C1R, qeliFilterSobelNegVertGetBufferSize_8u8s_C1R, negVert, kBoth)
AGREES(qeliFilterSobelHorizSecondBorder_32f_C1R, qeliFilterSobelHorizSecondGetBufferSize_32f_C1R, horizSecondF, kBoth)
AGREES(qeliFilterSobelHorizSecondBorder_8u16s_C1R, qeliFilterSobelHorizSecondGetBufferSize_8u16s_C1R, horizSecond,
       kBoth)
AGREES(qeliFilterSobelHorizSecondBorder_8u8s_C1R, qeliFilterSobelHorizSecondGetBufferSize_8u8s_C1R, horizSecond, kBoth)
AGREES(qeliFilterSobelVertSecondBorder_32f_C1R, qeliFilterSobelVertSecondGetBufferSize_32f_C1R, vertSecondF, kBoth)
AGREES(qeliFilterSobelVertSecondBorder_8u16s_C1R, qeliFilterSobelVertSecondGetBufferSize_8u16s_C1R, vertSecond, kBoth)
AGREES(qeliFilterSobelVertSecondBorder_8u8s_C1R, qeliFilterSobelVertSecondGetBufferSize_8u8s_C1R, vertSecond, kBoth)
AGREES(qeliFilterSobelCrossBorder_32f_C1R, qeliFilterSobelCrossGetBufferSize_32f_C1R, crossF, kBoth)
AGREES(qeliFilterSobelCrossBorder_8u16s_C1R, qeliFilterSobelCrossGetBufferSize_8u16s_C1R, cross, kBoth)
AGREES(qeliFilterSobelCrossBorder_8u8s_C1R, qeliFilterSobelCrossGetBufferSize_8u8s_C1R, cross, kBoth)
AGREES(qeliFilterScharrHorizBorder_32f_C1R, qeliFilterScharrHorizGetBufferSize_32f_C1R, scharrHorizF, kOnly3x3)
AGREES(qeliFilterScharrHorizBorder_8u16s_C1R, qeliFilterScharrHorizGetBufferSize_8u16s_C1R, scharrHoriz, kOnly3x3)
AGREES(qeliFilterScharrHorizBorder_8u8s_C1R, qeliFilterScharrHorizGetBufferSize_8u8s_C1R, scharrHoriz, kOnly3x3)
AGREES(qeliFilterScharrVertBorder_32f_C1R, qeliFilterScharrVertGetBufferSize_32f_C1R, scharrVertF, kOnly3x3)
AGREES(qeliFilterScharrVertBorder_8u16s_C1R, qeliFilterScharrVertGetBufferSize_8u16s_C1R, scharrVert, kOnly3x3)
AGREES(qeliFilterScharrVertBorder_8u8s_C1R, qeliFilterScharrVertGetBufferSize_8u8s_C1R, scharrVert, kOnly3x3)
AGREES(qeliFilterLaplacianBorder_32f_C1R, qeliFilterLaplacianGetBufferSize_32f_C1R, laplacianF, kBoth)
AGREES(qeliFilterLaplacianBorder_8u16s_C1R, qeliFilterLaplacianGetBufferSize_8u16s_C1R, laplacian, kBoth)
AGREES(qeliFilterLaplacianBorder_8u8s_C1R, qeliFilterLaplacianGetBufferSize_8u8s_C1R, laplacian, kBoth)
AGREES(qeliFilterLowpassBorder_32f_C1R, qeliFilterLowpassGetBufferSize_32f_C1R, boxF, kBoth)
AGREES(qeliFilterLowpassBorder_8u_C1R, qeliFilterLowpassGetBufferSize_8u_C1R, box, kBoth)
#undef AGREES

// Every width and height up to 80, one mode after the other.
TEST_P(FixedFilters, EverySmallSize) {
    const Call<Qel8u, Qel16s> call = callOf(qeliFilterSobelVertBorder_8u16s_C1R);
    const SizeQuery query = queryOf(qeliFilterSobelVertGetBufferSize_8u16s_C1R);
    int turn = 0;
    for (int width = 1; width <= 80; ++width) {
        for (int height = 1; height <= 80; ++height) {
            kit::Trial trial(static_cast<uint32_t>(width * 100 + height), {width, height});
            const Params p = {turn % 2 == 0 ? 33 : 55, turn % 5, 1};
            ++turn;
            ASSERT_NO_FATAL_FAILURE(agrees(call, query, vert, trial, p));
        }
    }
}

// Turns of 1, 2 and 4 rows, so many of them that the pointers to the ring wrap, at every place in the array.
TEST_P(FixedFilters, ManyTurns) {
    const auto call8u = callOf(qeliFilterSobelVertBorder_8u16s_C1R);
    const auto call32f = callOf(qeliFilterSobelVertBorder_32f_C1R);
    for (const int mask : {33, 55}) {
        for (int height = 34; height <= 46; ++height) {
            const Params p = {mask, height % 5, 1};
            for (const int width : {700, 1300}) {
                kit::Trial trial(uint32_t(height), {width, height});
                ASSERT_NO_FATAL_FAILURE(
                    agrees(call32f, queryOf(qeliFilterSobelVertGetBufferSize_32f_C1R), vertF, trial, p));
            }
            kit::Trial trial(uint32_t(height), {2340, height});
            ASSERT_NO_FATAL_FAILURE(
                agrees(call8u, queryOf(qeliFilterSobelVertGetBufferSize_8u16s_C1R), vert, trial, p));
        }
    }
}

// Stripes of columns, the last of which is narrower than the reach of the taps.
TEST_P(FixedFilters, NarrowLastStripe) {
    const auto call = callOf(qeliFilterSobelVertBorder_32f_C1R);
    for (const int width : {6401, 6402, 6403}) {
        for (const int mode : {qelBorderConst, qelBorderRepl, qelBorderWrap, qelBorderMirr, qelBorderMirrR}) {
            kit::Trial trial(uint32_t(width), {width, 7});
            const Params p = {55, mode, 1};
            ASSERT_NO_FATAL_FAILURE(agrees(call, queryOf(qeliFilterSobelVertGetBufferSize_32f_C1R), vertF, trial, p));
        }
    }
}

TEST_P(FixedFilters, AveragesOfConstants) {
    for (const int mask : {33, 55}) {
        for (const int value : {0, 1, 128, 255}) {
            const QelSize size = {50, 40};
            kit::Image<Qel8u> source(size, static_cast<Qel8u>(value)), got(size, 7);
            int bytes = 0;
            ASSERT_EQ(qelStatusOk, qeliFilterLowpassGetBufferSize_8u_C1R(size, mask, &bytes));
            kit::ScratchBlock scratch(bytes);
            ASSERT_EQ(qelStatusOk, qeliFilterLowpassBorder_8u_C1R(source.data(), source.step(), got.data(), got.step(),
                                                                  size, mask, qelBorderRepl, 0, scratch.odd()));
            const int want = mask == 33 ? value : value * 25 * 2621 >> 16;
            EXPECT_TRUE(sameBits(kit::Image<Qel8u>(size, static_cast<Qel8u>(want)), got)) << value << " " << mask;
        }
    }
    EXPECT_EQ(254, 255 * 25 * 2621 >> 16);
}

// Argument checks

std::vector<Qel8u> bigScratch(1 << 20);

#define COMMON_FAULTS(mode)                                       \
    .template fault<mode>("mode 5", qelStatusBadArg, 5)           \
        .template fault<mode>("mode 15", qelStatusBadArg, 15)     \
        .template fault<mode>("mode -1", qelStatusBadArg, -1)     \
        .template fault<mode>("flag 0x40", qelStatusBadArg, 0x41) \
        .template fault<mode>("flag 0x8000", qelStatusBadArg, 0x8001)

template <class S, class D>
void check(const char* name, qelStatus (*f)(const S*, int, D*, int, QelSize, int, int, S, Qel8u*)) {
    kit::Checks(name, f)
        .template value<5>(33)
        .template value<8>(bigScratch.data()) COMMON_FAULTS(6)
        .template fault<5>("mask 3", qelStatusBadMaskSize, 3)
        .template fault<5>("mask 44", qelStatusBadMaskSize, 44)
        .run();
}
template <class S, class D>
void check(const char* name, qelStatus (*f)(const S*, int, D*, int, QelSize, int, S, Qel8u*)) {
    kit::Checks(name, f).template value<7>(bigScratch.data()) COMMON_FAULTS(5).run();
}
void check(const char* name, qelStatus (*f)(const Qel8u*, int, Qel8s*, int, QelSize, int, int, Qel8u, int, Qel8u*)) {
    kit::Checks(name, f)
        .value<5>(33)
        .value<9>(bigScratch.data()) COMMON_FAULTS(6)
        .fault<8>("divisor 0", qelStatusBadArg, 0)
        .fault<5>("mask 3", qelStatusBadMaskSize, 3)
        .run();
}
void check(const char* name, qelStatus (*f)(const Qel8u*, int, Qel8s*, int, QelSize, int, Qel8u, int, Qel8u*)) {
    kit::Checks(name, f).value<8>(bigScratch.data()) COMMON_FAULTS(5).fault<7>("divisor 0", qelStatusBadArg, 0).run();
}
void check(const char* name, qelStatus (*f)(QelSize, int, int*)) {
    kit::Checks(name, f).value<1>(33).fault<1>("mask 34", qelStatusBadMaskSize, 34).run();
}
void check(const char* name, qelStatus (*f)(QelSize, int*)) { kit::Checks(name, f).run(); }

TEST(FixedFilterChecks, EveryMember) {
#define CHECK(function) check(#function, function)
    CHECK(qeliFilterSobelHorizBorder_32f_C1R);
    CHECK(qeliFilterSobelHorizBorder_8u16s_C1R);
    CHECK(qeliFilterSobelHorizBorder_8u8s_C1R);
    CHECK(qeliFilterSobelVertBorder_32f_C1R);
    CHECK(qeliFilterSobelVertBorder_8u16s_C1R);
    CHECK(qeliFilterSobelVertBorder_8u8s_C1R);
    CHECK(qeliFilterSobelNegVertBorder_32f_C1R);
    CHECK(qeliFilterSobelNegVertBorder_8u16s_C1R);
    CHECK(qeliFilterSobelNegVertBorder_8u8s_C1R);
    CHECK(qeliFilterSobelHorizSecondBorder_32f_C1R);
    CHECK(qeliFilterSobelHorizSecondBorder_8u16s_C1R);
    CHECK(qeliFilterSobelHorizSecondBorder_8u8s_C1R);
    CHECK(qeliFilterSobelVertSecondBorder_32f_C1R);
    CHECK(qeliFilterSobelVertSecondBorder_8u16s_C1R);
    CHECK(qeliFilterSobelVertSecondBorder_8u8s_C1R);
    CHECK(qeliFilterSobelCrossBorder_32f_C1R);
    CHECK(qeliFilterSobelCrossBorder_8u16s_C1R);
    CHECK(qeliFilterSobelCrossBorder_8u8s_C1R);
    CHECK(qeliFilterScharrHorizBorder_32f_C1R);
    CHECK(qeliFilterScharrHorizBorder_8u16s_C1R);
    CHECK(qeliFilterScharrHorizBorder_8u8s_C1R);
    CHECK(qeliFilterScharrVertBorder_32f_C1R);
    CHECK(qeliFilterScharrVertBorder_8u16s_C1R);
    CHECK(qeliFilterScharrVertBorder_8u8s_C1R);
    CHECK(qeliFilterLaplacianBorder_32f_C1R);
    CHECK(qeliFilterLaplacianBorder_8u16s_C1R);
    CHECK(qeliFilterLaplacianBorder_8u8s_C1R);
    CHECK(qeliFilterLowpassBorder_32f_C1R);
    CHECK(qeliFilterLowpassBorder_8u_C1R);
    CHECK(qeliFilterSobelHorizGetBufferSize_32f_C1R);
    CHECK(qeliFilterSobelHorizGetBufferSize_8u16s_C1R);
    CHECK(qeliFilterSobelHorizGetBufferSize_8u8s_C1R);
    CHECK(qeliFilterSobelVertGetBufferSize_32f_C1R);
    CHECK(qeliFilterSobelVertGetBufferSize_8u16s_C1R);
    CHECK(qeliFilterSobelVertGetBufferSize_8u8s_C1R);
    CHECK(qeliFilterSobelNegVertGetBufferSize_32f_C1R);
    CHECK(qeliFilterSobelNegVertGetBufferSize_8u16s_C1R);
    CHECK(qeliFilterSobelNegVertGetBufferSize_8u8s_C1R);
    CHECK(qeliFilterSobelHorizSecondGetBufferSize_32f_C1R);
    CHECK(qeliFilterSobelHorizSecondGetBufferSize_8u16s_C1R);
    CHECK(qeliFilterSobelHorizSecondGetBufferSize_8u8s_C1R);
    CHECK(qeliFilterSobelVertSecondGetBufferSize_32f_C1R);
    CHECK(qeliFilterSobelVertSecondGetBufferSize_8u16s_C1R);
    CHECK(qeliFilterSobelVertSecondGetBufferSize_8u8s_C1R);
    CHECK(qeliFilterSobelCrossGetBufferSize_32f_C1R);
    CHECK(qeliFilterSobelCrossGetBufferSize_8u16s_C1R);
    CHECK(qeliFilterSobelCrossGetBufferSize_8u8s_C1R);
    CHECK(qeliFilterScharrHorizGetBufferSize_32f_C1R);
    CHECK(qeliFilterScharrHorizGetBufferSize_8u16s_C1R);
    CHECK(qeliFilterScharrHorizGetBufferSize_8u8s_C1R);
    CHECK(qeliFilterScharrVertGetBufferSize_32f_C1R);
    CHECK(qeliFilterScharrVertGetBufferSize_8u16s_C1R);
    CHECK(qeliFilterScharrVertGetBufferSize_8u8s_C1R);
    CHECK(qeliFilterLaplacianGetBufferSize_32f_C1R);
    CHECK(qeliFilterLaplacianGetBufferSize_8u16s_C1R);
    CHECK(qeliFilterLaplacianGetBufferSize_8u8s_C1R);
    CHECK(qeliFilterLowpassGetBufferSize_32f_C1R);
    CHECK(qeliFilterLowpassGetBufferSize_8u_C1R);
#undef CHECK
}

}  // namespace
