#include <algorithm>
#include <cmath>
#include <vector>

#include "kit/checks.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/filter.h"

namespace {

constexpr int kRowsAbove = 0x10;
constexpr int kRowsBelow = 0x20;

std::vector<Qel32f> gaussKernel(int kernelSize, Qel32f sigma) {
    std::vector<Qel32f> k(static_cast<size_t>(kernelSize));
    const long double s = sigma;
    const int reach = kernelSize / 2;
    for (int i = 0; i < kernelSize; ++i) {
        const long double d = i - reach;
        k[size_t(i)] = static_cast<Qel32f>(std::exp(static_cast<double>(-(d * d) / (s * (s + s)))));
    }
    Qel32f sum = 0;
    for (const Qel32f tap : k) sum += tap;
    for (Qel32f& tap : k) tap /= sum;
    return k;
}

// The position that stands in for i, found by walking; -1 for the constant.
int extended(int mode, int i, int n) {
    if (n == 1 && mode != qelBorderConst) return 0;
    if (mode == qelBorderConst) return i < 0 || i >= n ? -1 : i;
    if (mode == qelBorderRepl) return std::clamp(i, 0, n - 1);
    while (i < 0 || i >= n) {
        if (mode == qelBorderWrap) i += i < 0 ? n : -n;
        if (mode == qelBorderMirr) i = i < 0 ? -i : 2 * (n - 1) - i;
        if (mode == qelBorderMirrR) i = i < 0 ? -1 - i : 2 * n - 1 - i;
    }
    return i;
}

// Filters all rows of `image`, those above and below the region too, by the row pipeline itself: what it computes has
// tests of its own.
std::vector<std::vector<Qel32f>> filteredRows(const kit::Image<Qel32f>& image, const std::vector<Qel32f>& k, int mode,
                                              Qel32f borderValue) {
    const QelSize size = image.size();
    std::vector<std::vector<Qel32f>> rows(size_t(size.height), std::vector<Qel32f>(size_t(size.width)));
    std::vector<Qel32f*> pointers;
    pointers.reserve(rows.size());
    for (std::vector<Qel32f>& row : rows) pointers.push_back(row.data());
    const int taps = static_cast<int>(k.size());
    int bytes = 0;
    EXPECT_EQ(qelStatusOk, qeliFilterRowBorderPipelineGetBufferSize_32f_C1R(size, taps, &bytes));
    std::vector<Qel8u> scratch(static_cast<size_t>(bytes));
    EXPECT_EQ(qelStatusOk, qeliFilterRowBorderPipeline_32f_C1R(
                               image.data(), image.step(), pointers.data(), size, k.data(), taps, taps / 2,
                               size.width == 1 && mode != 0 ? int{qelBorderRepl} : mode, borderValue, scratch.data()));
    return rows;
}

// The definition, row by row and then column by column, in twice the precision. `magnitude` is the same sum of absolute
// values: what rounding is in proportion to.
struct Sum {
    double value = 0;
    double magnitude = 0;

    void add(double k, const Sum& of) {
        value += k * of.value;
        magnitude += std::fabs(k) * of.magnitude;
    }
};
// Columns of a row that are compared: all of a narrow one, of a wide one the ends and some between.
std::vector<int> comparedColumns(int width) {
    std::vector<int> columns;
    for (int x = 0; x < width; ++x)
        if (x < 40 || x >= width - 40 || x % 61 == 0) columns.push_back(x);
    return columns;
}
class Model {
public:
    // `above` rows of the image stand above the region.
    Model(const kit::Image<Qel32f>& image, int above, QelSize size, std::vector<Qel32f> k, int borderMode,
          Qel32f borderValue)
        : above_(above),
          size_(size),
          k_(std::move(k)),
          borderMode_(borderMode),
          constant_{borderValue, std::fabs(borderValue)} {
        const int reach = static_cast<int>(k_.size()) / 2;
        for (int y = 0; y < image.size().height; ++y) {
            rows_.emplace_back(size_t(size.width));
            for (const int x : comparedColumns(size.width)) {
                for (int i = -reach; i <= reach; ++i) {
                    const int column = extended(borderMode & 15, x + i, size.width);
                    const double sample = column < 0 ? borderValue : image.at(column, y);
                    rows_.back()[size_t(x)].add(k_[size_t(i) + size_t(reach)], {sample, std::fabs(sample)});
                }
            }
        }
    }

    Sum at(int x, int y) const {
        const int reach = static_cast<int>(k_.size()) / 2;
        Sum sum;
        for (int i = -reach; i <= reach; ++i) {
            const int at = y + i;
            const bool real =
                (at < 0 && (borderMode_ & kRowsAbove)) || (at >= size_.height && (borderMode_ & kRowsBelow));
            const int row = real ? at : extended(borderMode_ & 15, at, size_.height);
            sum.add(k_[size_t(i) + size_t(reach)],
                    !real && row < 0 ? constant_ : rows_[size_t(row) + size_t(above_)][size_t(x)]);
        }
        return sum;
    }

private:
    int above_;
    QelSize size_;
    std::vector<Qel32f> k_;
    int borderMode_;
    Sum constant_;
    std::vector<std::vector<Sum>> rows_;
};

// Each of two sums of products rounds twice per tap, and the kernel's sum is 1 but for a rounding per tap.
void isNear(const Model& model, const kit::Image<Qel32f>& got, int kernelSize, const kit::Trial& trial) {
    for (int y = 0; y < got.size().height; ++y) {
        for (const int x : comparedColumns(got.size().width)) {
            const Sum want = model.at(x, y);
            const double allowed = want.magnitude * 4 * kernelSize * 0x1p-24;
            ASSERT_LE(std::fabs(want.value - double{got.at(x, y)}), allowed)
                << trial << ", x " << x << ", y " << y << ", want " << want.value << ", got " << got.at(x, y);
        }
    }
}

void agrees(kit::Trial& trial, int kernelSize, Qel32f sigma, int borderMode) {
    const int reach = kernelSize / 2;
    const int mode = borderMode & 15;
    const QelSize size = trial.size;
    // As many rows above and below the region as the mode allows to read. Behind these, the memory ends.
    const int above = borderMode & kRowsAbove ? reach : 0;
    const int below = borderMode & kRowsBelow ? reach : 0;
    const kit::Image<Qel32f> image(trial, {size.width, above + size.height + below});
    const Qel32f borderValue = trial.anySample<Qel32f>();
    const std::vector<Qel32f> k = gaussKernel(kernelSize, sigma);
    std::vector<std::vector<Qel32f>> rows = filteredRows(image, k, mode, borderValue);

    // Bit for bit what the pipelines give: the column pipeline reads the rows in their order, border and all.
    std::vector<Qel32f> constant(static_cast<size_t>(size.width), borderValue);
    std::vector<const Qel32f*> list;
    for (int y = -reach; y < size.height + reach; ++y) {
        const bool real = (y < 0 && (borderMode & kRowsAbove)) || (y >= size.height && (borderMode & kRowsBelow));
        const int index = real ? y : extended(mode, y, size.height);
        list.push_back(!real && index < 0 ? constant.data() : rows[size_t(index) + size_t(above)].data());
    }
    kit::Image<Qel32f> got(trial, size), want(got);
    Qel8u columnScratch[32];
    ASSERT_EQ(qelStatusOk, qeliFilterColumnPipeline_32f_C1R(list.data(), want.data(), want.step(), size, k.data(),
                                                            kernelSize, columnScratch));

    int bytes = 0;
    ASSERT_EQ(qelStatusOk, qeliFilterGaussGetBufferSize_32f_C1R(size, kernelSize, &bytes));
    kit::ScratchBlock scratch(bytes, size_t(trial.between(0, 31)));
    ASSERT_EQ(qelStatusOk, qeliFilterGaussBorder_32f_C1R(&image.at(0, above), image.step(), got.data(), got.step(),
                                                         size, kernelSize, sigma, borderMode, borderValue,
                                                         trial.coin() ? scratch.odd() : scratch.flush()));
    ASSERT_TRUE(sameBits(want, got)) << trial << ", " << kernelSize << " taps, sigma " << sigma << ", mode "
                                     << borderMode;
    ASSERT_TRUE(scratch.intact()) << trial;
    ASSERT_NO_FATAL_FAILURE(isNear({image, above, size, k, borderMode, borderValue}, got, kernelSize, trial));
}

class FilterGauss : public kit::EveryTarget {};
ON_EVERY_TARGET(FilterGauss);

TEST_P(FilterGauss, qeliFilterGaussBorder_32f_C1R) {
    constexpr int kSizes[] = {3, 5, 7, 9, 15, 31};
    constexpr int kFlags[] = {0, kRowsAbove, kRowsBelow, kRowsAbove | kRowsBelow};
    for (uint32_t seed = 0; seed < 300; ++seed) {
        kit::Trial trial(seed);
        trial.setContent(kit::Content::kRandom);
        const Qel32f sigma = static_cast<Qel32f>(trial.between(1, 40)) / 8;
        const int mode = static_cast<int>(seed % 5) | kFlags[seed / 5 % 4];
        ASSERT_NO_FATAL_FAILURE(agrees(trial, kSizes[seed % std::size(kSizes)], sigma, mode));
    }
}

TEST_P(FilterGauss, ThreadsAgree) {
    for (const int threads : {1, 2, 3, 5}) {
        for (const int kernelSize : {3, 9}) {
            kit::Trial trial(static_cast<uint32_t>(threads), {400, 70 * threads * 6 / 4}, threads);
            trial.setContent(kit::Content::kRandom);
            ASSERT_NO_FATAL_FAILURE(agrees(trial, kernelSize, 1.5F, qelBorderMirr | kRowsBelow));
        }
    }
}

// More rows than are kept at a time, by few and by many, also where the last turn is short: turns of 33 rows, of 8 and
// of 4.
TEST_P(FilterGauss, ImagesOfManyTurns) {
    uint32_t seed = 0;
    for (const QelSize size : {QelSize{4000, 34}, QelSize{4000, 47}, QelSize{4000, 48}, QelSize{4000, 49},
                               QelSize{4000, 100}, QelSize{4000, 131}, QelSize{300, 61}, QelSize{800, 45}}) {
        for (const int kernelSize : {3, 15}) {
            for (int mode = 0; mode < 5; ++mode) {
                kit::Trial trial(++seed, size, 1);
                trial.setContent(kit::Content::kRandom);
                const int flags = static_cast<int>(seed % 4) << 4;
                ASSERT_NO_FATAL_FAILURE(agrees(trial, kernelSize, 2, mode | flags));
            }
        }
    }
}

TEST(FilterGaussKernel, OfThreeTaps) {
    const std::vector<Qel32f> k = gaussKernel(3, 1);
    EXPECT_NEAR(0.27406862, k[0], 1e-7);
    EXPECT_NEAR(0.45186275, k[1], 1e-7);
    EXPECT_EQ(k[0], k[2]);
}

// With sigma 0 the arithmetic gives NaNs, and no error.
TEST(FilterGaussKernel, SigmaIsNotTested) {
    const QelSize size = {20, 3};
    const kit::Image<Qel32f> image(size, 1);
    kit::Image<Qel32f> got(size, 5);
    int bytes = 0;
    ASSERT_EQ(qelStatusOk, qeliFilterGaussGetBufferSize_32f_C1R(size, 3, &bytes));
    std::vector<Qel8u> scratch(static_cast<size_t>(bytes));
    ASSERT_EQ(qelStatusOk, qeliFilterGaussBorder_32f_C1R(image.data(), image.step(), got.data(), got.step(), size, 3, 0,
                                                         qelBorderRepl, 0, scratch.data()));
    EXPECT_TRUE(std::isnan(got.at(10, 1)));
}

// A step that is long enough in pixels but not in bytes, or not a multiple of a sample: success, and nothing written.
TEST(FilterGaussSteps, OthersThanBytes) {
    const QelSize size = {8, 4};
    const kit::Image<Qel32f> image(size, 1), untouched(size, 5);
    kit::Image<Qel32f> got(size, 5);
    int bytes = 0;
    ASSERT_EQ(qelStatusOk, qeliFilterGaussGetBufferSize_32f_C1R(size, 3, &bytes));
    std::vector<Qel8u> scratch(static_cast<size_t>(bytes));
    for (const int step : {8, 28, 33}) {
        EXPECT_EQ(qelStatusOk, qeliFilterGaussBorder_32f_C1R(image.data(), image.step(), got.data(), step, size, 3, 1,
                                                             qelBorderRepl, 0, scratch.data()));
        EXPECT_EQ(qelStatusOk, qeliFilterGaussBorder_32f_C1R(image.data(), step, got.data(), got.step(), size, 3, 1,
                                                             qelBorderRepl, 0, scratch.data()));
        EXPECT_TRUE(sameBits(untouched, got)) << step;
    }
}

TEST(FilterGaussChecks, qeliFilterGaussBorder_32f_C1R) {
    std::vector<Qel8u> scratch(1 << 16);
    // Steps are tested against the width in pixels only, which the sweep over steps does not know.
    kit::Checks("qeliFilterGaussBorder_32f_C1R", qeliFilterGaussBorder_32f_C1R)
        .value<5>(3)
        .value<9>(scratch.data())
        .stepOrder({{1, true}, {3, true}})
        .anyAlignment<1>()
        .anyAlignment<3>()
        .fault<1>("srcStep 6", qelStatusBadStep, 6)
        .fault<3>("dstStep 6", qelStatusBadStep, 6)
        .fault<5>("1 tap", qelStatusBadArg, 1)
        .fault<5>("4 taps", qelStatusBadArg, 4)
        .fault<5>("-3 taps", qelStatusBadArg, -3)
        .fault<7>("mode 5", qelStatusBadArg, 5)
        .fault<7>("mode -1", qelStatusBadArg, -1)
        .fault<7>("flag 0x40", qelStatusBadArg, 0x41)
        .run();
}

TEST(FilterGaussChecks, qeliFilterGaussGetBufferSize_32f_C1R) {
    kit::Checks("qeliFilterGaussGetBufferSize_32f_C1R", qeliFilterGaussGetBufferSize_32f_C1R)
        .value<1>(3)
        .fault<1>("4 taps", qelStatusBadArg, 4)
        .fault<1>("1 tap", qelStatusBadArg, 1)
        .run();
}

TEST(FilterGaussBufferSize, CountsThePieces) {
    constexpr int kPointer = sizeof(void*);
    kit::core().reset();
    for (const int threads : {1, 3}) {
        kit::core().threads = threads;
        int bytes = 0;
        ASSERT_EQ(qelStatusOk, qeliFilterGaussGetBufferSize_32f_C1R({100, 40}, 5, &bytes));
        // 105 by 45: a line of 112, a kernel of 8, an image of 108 by 45, both pipelines, 45 pointers.
        const int rows = threads * (32 + 45 * kPointer + 5 * 64 + 64);
        EXPECT_EQ(14 * 32 + 2 * 16 + 32 + 108 * 45 * 4 + 64 + rows + 32 + 32 + 32 + 45 * kPointer + 32, bytes);
    }
    int bytes = 7;
    EXPECT_EQ(qelStatusOverflow, qeliFilterGaussGetBufferSize_32f_C1R({100000, 100000}, 5, &bytes));
    EXPECT_EQ(7, bytes);
    kit::core().reset();
}

}  // namespace
