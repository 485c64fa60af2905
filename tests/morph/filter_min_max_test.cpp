#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "kit/checks.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/morph.h"

namespace {

constexpr bool kMax = true;
constexpr bool kMin = false;

template <class T>
using Filter = qelStatus(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize roiSize, QelSize maskSize,
                         QelPoint anchor, Qel8u* pBuffer);
using BufferSize = qelStatus(int roiWidth, int maskWidth, int maskHeight, int* pBufferSize);

struct Window {
    QelSize size;
    QelPoint anchor;
};

// The extreme of the pixels of one line that a window meets, one pixel after the other.
template <bool max, class T, class Line>
T extremeAlong(const Line& line, int length, int64_t at, int windowSize, int anchor) {
    const auto clamped = [=](int64_t i) { return static_cast<int>(std::clamp<int64_t>(i, 0, length - 1)); };
    T extreme = line(clamped(at - anchor));
    for (int i = clamped(at - anchor); i <= clamped(at - anchor + windowSize - 1); ++i)
        if (max ? line(i) > extreme : line(i) < extreme) extreme = line(i);
    return extreme;
}

// Across, then down: an extreme of extremes.
template <bool max, class T>
void model(const kit::Image<T>& src, kit::Image<T>& want, const Window& window) {
    const auto [width, height] = src.size();
    const int n = src.channels();
    kit::Image<T> across({width, height}, T(), n);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width * n; ++x)
            across.at(x, y) = extremeAlong<max, T>([&](int i) { return src.at(i * n + x % n, y); }, width, x / n,
                                                   window.size.width, window.anchor.x);
    for (int x = 0; x < width * n; ++x)
        for (int y = 0; y < height; ++y)
            want.at(x, y) = extremeAlong<max, T>([&](int i) { return across.at(x, i); }, height, y, window.size.height,
                                                 window.anchor.y);
}

int bytesFor(BufferSize* bufferSize, int width, const Window& window) {
    int bytes = 0;
    EXPECT_EQ(qelStatusOk, bufferSize(width, window.size.width, window.size.height, &bytes));
    return bytes;
}

template <class T>
void run(Filter<T>* filter, BufferSize* bufferSize, const kit::Image<T>& src, kit::Image<T>& got, const Window& window,
         kit::Trial& trial) {
    kit::ScratchBlock scratch(bytesFor(bufferSize, src.size().width, window), size_t(trial.between(1, 64)));
    trial.note("window " + std::to_string(window.size.width) + "x" + std::to_string(window.size.height) + " anchor " +
               std::to_string(window.anchor.x) + "," + std::to_string(window.anchor.y));
    ASSERT_EQ(qelStatusOk, filter(src.data(), src.step(), got.data(), got.step(), src.size(), window.size,
                                  window.anchor, trial.coin() ? scratch.odd() : scratch.flush()))
        << trial;
    ASSERT_TRUE(scratch.intact()) << trial;
}

template <class T, bool max, int channels>
void agrees(Filter<T>* filter, BufferSize* bufferSize, kit::Trial& trial, const Window& window) {
    kit::Image<T> src(trial, channels), got(trial, channels), want(got);
    if constexpr (sizeof(T) == 4) {
        for (int y = 0; y < trial.size.height; ++y) {
            for (int x = 0; x < trial.size.width * channels; ++x) {
                T& sample = src.at(x, y);  // no NaN and one zero only: results are fixed to the bit
                sample = std::isnan(sample) ? T(7) : sample + T(0);
                if (trial.between(0, 15) == 0) sample = std::numeric_limits<T>::infinity() * (trial.coin() ? 1 : -1);
            }
        }
    }
    model<max>(src, want, window);
    ASSERT_NO_FATAL_FAILURE(run(filter, bufferSize, src, got, window, trial));
    ASSERT_TRUE(sameBits(want, got)) << trial;
}

Window windowOf(int width, int height, kit::Trial& trial) {
    const auto anchor = [&](int size) {
        const int anchors[] = {0, size - 1, size / 2, trial.between(0, size - 1)};
        return anchors[trial.between(0, 3)];
    };
    return {{width, height}, {anchor(width), anchor(height)}};
}

// Heights and widths that go through all ways of both stages, and some around each of them.
constexpr int kSides[] = {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 21, 31, 33, 64, 65, 200};

template <class T, bool max, int channels>
void everyCase(Filter<T>* filter, BufferSize* bufferSize) {
    uint32_t seed = 0;
    const auto tryIn = [&](QelSize roi, int width, int height) {
        kit::Trial trial(++seed, roi);
        agrees<T, max, channels>(filter, bufferSize, trial, windowOf(width, height, trial));
    };
    for (int w = 1; w <= 70; ++w) {
        for (const int length : {1, 2, w / 2 + 1, w, w + 1, 2 * w - 1, 2 * w, 2 * w + 70}) {
            ASSERT_NO_FATAL_FAILURE(tryIn({length, 2}, w, 1));
            ASSERT_NO_FATAL_FAILURE(tryIn({3, length}, 1, w));
        }
    }
    for (const int w : kSides)
        for (const int h : kSides) ASSERT_NO_FATAL_FAILURE(tryIn({int(seed % 90) + 1, int(seed % 71) + 1}, w, h));
    for (const int width : {INT_MAX, INT_MAX - 1, 1 << 30}) ASSERT_NO_FATAL_FAILURE(tryIn({37, 5}, width, 3));
    // Beyond what is taken at a time, and images that are not small.
    for (const int w : {3, 9, 15, 63, 64, 300}) ASSERT_NO_FATAL_FAILURE(tryIn({5003, 4}, w, 2));
    for (const int h : {3, 5, 15, 31, 100}) ASSERT_NO_FATAL_FAILURE(tryIn({1000 / channels, 67}, 5, h));
    for (uint32_t i = 0; i < 150; ++i) {
        kit::Trial trial(i);
        const Window window = windowOf(trial.between(1, 40), trial.between(1, 40), trial);
        ASSERT_NO_FATAL_FAILURE((agrees<T, max, channels>(filter, bufferSize, trial, window)));
    }
}

class FilterMinMax : public kit::EveryTarget {};
ON_EVERY_TARGET(FilterMinMax);

TEST_P(FilterMinMax, qeliFilterMaxBorderReplicate_8u_C1R) {
    everyCase<Qel8u, kMax, 1>(qeliFilterMaxBorderReplicate_8u_C1R, qeliFilterMaxGetBufferSize_8u_C1R);
}
TEST_P(FilterMinMax, qeliFilterMaxBorderReplicate_8u_C3R) {
    everyCase<Qel8u, kMax, 3>(qeliFilterMaxBorderReplicate_8u_C3R, qeliFilterMaxGetBufferSize_8u_C3R);
}
TEST_P(FilterMinMax, qeliFilterMaxBorderReplicate_8u_C4R) {
    everyCase<Qel8u, kMax, 4>(qeliFilterMaxBorderReplicate_8u_C4R, qeliFilterMaxGetBufferSize_8u_C4R);
}
TEST_P(FilterMinMax, qeliFilterMaxBorderReplicate_32f_C1R) {
    everyCase<Qel32f, kMax, 1>(qeliFilterMaxBorderReplicate_32f_C1R, qeliFilterMaxGetBufferSize_32f_C1R);
}
TEST_P(FilterMinMax, qeliFilterMaxBorderReplicate_32f_C3R) {
    everyCase<Qel32f, kMax, 3>(qeliFilterMaxBorderReplicate_32f_C3R, qeliFilterMaxGetBufferSize_32f_C3R);
}
TEST_P(FilterMinMax, qeliFilterMaxBorderReplicate_32f_C4R) {
    everyCase<Qel32f, kMax, 4>(qeliFilterMaxBorderReplicate_32f_C4R, qeliFilterMaxGetBufferSize_32f_C4R);
}
TEST_P(FilterMinMax, qeliFilterMinBorderReplicate_8u_C1R) {
    everyCase<Qel8u, kMin, 1>(qeliFilterMinBorderReplicate_8u_C1R, qeliFilterMinGetBufferSize_8u_C1R);
}
TEST_P(FilterMinMax, qeliFilterMinBorderReplicate_8u_C3R) {
    everyCase<Qel8u, kMin, 3>(qeliFilterMinBorderReplicate_8u_C3R, qeliFilterMinGetBufferSize_8u_C3R);
}
TEST_P(FilterMinMax, qeliFilterMinBorderReplicate_8u_C4R) {
    everyCase<Qel8u, kMin, 4>(qeliFilterMinBorderReplicate_8u_C4R, qeliFilterMinGetBufferSize_8u_C4R);
}
TEST_P(FilterMinMax, qeliFilterMinBorderReplicate_32f_C1R) {
    everyCase<Qel32f, kMin, 1>(qeliFilterMinBorderReplicate_32f_C1R, qeliFilterMinGetBufferSize_32f_C1R);
}
TEST_P(FilterMinMax, qeliFilterMinBorderReplicate_32f_C3R) {
    everyCase<Qel32f, kMin, 3>(qeliFilterMinBorderReplicate_32f_C3R, qeliFilterMinGetBufferSize_32f_C3R);
}
TEST_P(FilterMinMax, qeliFilterMinBorderReplicate_32f_C4R) {
    everyCase<Qel32f, kMin, 4>(qeliFilterMinBorderReplicate_32f_C4R, qeliFilterMinGetBufferSize_32f_C4R);
}

// A NaN payload, signalling or not, and the sign of a zero.
TEST(FilterMinMaxCopy, OneByOneCopiesBits) {
    kit::Trial trial(1, {37, 5});
    kit::Image<Qel32f> src(trial), got(trial), want(got);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 37; ++x) {
            const uint32_t kinds[] = {0x7F800001u, 0xFFC12345u, 0x80000000u, 0u, 0x7F812345u};
            const uint32_t bits = kinds[trial.between(0, 4)];
            std::memcpy(&src.at(x, y), &bits, 4);
            std::memcpy(&want.at(x, y), &bits, 4);
        }
    for (const auto filter : {qeliFilterMaxBorderReplicate_32f_C1R, qeliFilterMinBorderReplicate_32f_C1R}) {
        run<Qel32f>(filter, qeliFilterMaxGetBufferSize_32f_C1R, src, got, {{1, 1}, {0, 0}}, trial);
        EXPECT_TRUE(sameBits(want, got));
    }
}

// What NaNs and zeros of two signs give is one of the window's samples, and the same on every instruction set.
std::vector<std::vector<Qel32f>> resultsOf(Filter<Qel32f>* filter, bool check) {
    std::vector<std::vector<Qel32f>> results;
    for (uint32_t seed = 0; seed < 40; ++seed) {
        kit::Trial trial(seed, {int(seed * 7 % 150) + 1, int(seed * 5 % 60) + 1});
        kit::Image<Qel32f> src(trial), got(trial);
        for (int y = 0; y < trial.size.height; ++y) {
            for (int x = 0; x < trial.size.width; ++x) {
                const Qel32f kinds[] = {0.0F, -0.0F, std::nanf("1"), -std::nanf("2"), float(trial.between(-1, 1))};
                src.at(x, y) = kinds[trial.between(0, 4)];
            }
        }
        const Window window = windowOf(trial.between(1, 40), trial.between(1, 40), trial);
        run<Qel32f>(filter, qeliFilterMaxGetBufferSize_32f_C1R, src, got, window, trial);
        std::vector<Qel32f> result;
        for (int y = 0; y < trial.size.height; ++y) {
            for (int x = 0; x < trial.size.width; ++x) {
                result.push_back(got.at(x, y));
                if (!check) continue;
                bool found = false;
                for (int j = 0; j < window.size.height; ++j)
                    for (int i = 0; i < window.size.width; ++i)
                        found |= kit::sameBits(got.at(x, y),
                                               src.at(std::clamp(x - window.anchor.x + i, 0, trial.size.width - 1),
                                                      std::clamp(y - window.anchor.y + j, 0, trial.size.height - 1)));
                EXPECT_TRUE(found) << trial;
            }
        }
        results.push_back(result);
    }
    return results;
}

TEST_P(FilterMinMax, UnorderedSamples) {
    for (const auto filter : {qeliFilterMaxBorderReplicate_32f_C1R, qeliFilterMinBorderReplicate_32f_C1R}) {
        const auto here = resultsOf(filter, true);
        hwy::SetSupportedTargetsForTest(kit::targets().back());
        hwy::GetChosenTarget().DeInit();
        const auto there = resultsOf(filter, false);
        for (size_t i = 0; i < here.size(); ++i)
            EXPECT_EQ(0, std::memcmp(here[i].data(), there[i].data(), here[i].size() * sizeof(Qel32f))) << "seed " << i;
        hwy::SetSupportedTargetsForTest(GetParam());
        hwy::GetChosenTarget().DeInit();
        resultsOf(filter, false);
    }
}

// Windows that reach nothing but the image, however large.
TEST_P(FilterMinMax, HighWindowsOfFewRows) {
    for (const int h : {100, 1000, 20000}) {
        for (const int anchor : {0, 3, h / 2, h - 1}) {
            kit::Trial trial(uint32_t(h + anchor), {21, 9});
            ASSERT_NO_FATAL_FAILURE((agrees<Qel8u, kMax, 1>(
                qeliFilterMaxBorderReplicate_8u_C1R, qeliFilterMaxGetBufferSize_8u_C1R, trial, {{3, h}, {1, anchor}})));
        }
    }
}

template <int channels, class Checks>
void argumentsAreChecked(Checks checks) {
    static Qel8u scratch[2000];
    checks.template channels<0>(channels)
        .template channels<2>(channels)
        .template notARegion<5>()
        .template value<5>({4, 3})
        .template value<6>({1, 2})
        .template value<7>(scratch)
        .template faultAheadOfSteps<5>("mask width 0", qelStatusBadMaskSize, {0, 3})
        .template faultAheadOfSteps<5>("mask height 0", qelStatusBadMaskSize, {4, 0})
        .template faultAheadOfSteps<5>("mask width negative", qelStatusBadMaskSize, {-1, 3})
        .template faultAheadOfSteps<6>("anchor x negative", qelStatusBadAnchor, {-1, 2})
        .template faultAheadOfSteps<6>("anchor x behind", qelStatusBadAnchor, {4, 2})
        .template faultAheadOfSteps<6>("anchor y negative", qelStatusBadAnchor, {1, -1})
        .template faultAheadOfSteps<6>("anchor y behind", qelStatusBadAnchor, {1, 3})
        .stepByStep()
        .run();
}

TEST(FilterMinMaxChecks, EveryMember) {
    argumentsAreChecked<1>(CHECKS_OF(qeliFilterMaxBorderReplicate_8u_C1R));
    argumentsAreChecked<3>(CHECKS_OF(qeliFilterMaxBorderReplicate_8u_C3R));
    argumentsAreChecked<4>(CHECKS_OF(qeliFilterMaxBorderReplicate_8u_C4R));
    argumentsAreChecked<1>(CHECKS_OF(qeliFilterMaxBorderReplicate_32f_C1R));
    argumentsAreChecked<3>(CHECKS_OF(qeliFilterMaxBorderReplicate_32f_C3R));
    argumentsAreChecked<4>(CHECKS_OF(qeliFilterMaxBorderReplicate_32f_C4R));
    argumentsAreChecked<1>(CHECKS_OF(qeliFilterMinBorderReplicate_8u_C1R));
    argumentsAreChecked<3>(CHECKS_OF(qeliFilterMinBorderReplicate_8u_C3R));
    argumentsAreChecked<4>(CHECKS_OF(qeliFilterMinBorderReplicate_8u_C4R));
    argumentsAreChecked<1>(CHECKS_OF(qeliFilterMinBorderReplicate_32f_C1R));
    argumentsAreChecked<3>(CHECKS_OF(qeliFilterMinBorderReplicate_32f_C3R));
    argumentsAreChecked<4>(CHECKS_OF(qeliFilterMinBorderReplicate_32f_C4R));
}

void bufferSizes(BufferSize* bufferSize, size_t bytesOfPixel) {
    int bytes = -7;
    for (const int width : {1, 2, 31, 640, 100000}) {
        for (const int h : {1, 2, 3, 31, 100}) {
            for (const int w : {1, 5, INT_MAX}) {
                ASSERT_EQ(qelStatusOk, bufferSize(width, w, h, &bytes));
                const int pointers = 4 * int(sizeof(void*)) * h;
                EXPECT_EQ(pointers + h * 2 * (width * int(bytesOfPixel) + 32) + 32, bytes);
            }
        }
    }
    EXPECT_EQ(qelStatusNullPointer, bufferSize(0, 0, 0, nullptr));
    bytes = -7;
    EXPECT_EQ(qelStatusBadSize, bufferSize(0, 0, 0, &bytes));
    EXPECT_EQ(qelStatusBadSize, bufferSize(INT_MIN, 1, 1, &bytes));
    EXPECT_EQ(qelStatusBadMaskSize, bufferSize(1, 0, 1, &bytes));
    EXPECT_EQ(qelStatusBadMaskSize, bufferSize(1, 1, 0, &bytes));
    EXPECT_EQ(qelStatusOverflow, bufferSize(INT_MAX, 1, 1, &bytes));
    EXPECT_EQ(qelStatusOverflow, bufferSize(1, 1, INT_MAX, &bytes));
    EXPECT_EQ(qelStatusOverflow, bufferSize(INT_MAX, INT_MAX, INT_MAX, &bytes));
    EXPECT_EQ(-7, bytes);
}

TEST(FilterMinMaxChecks, BufferSizes) {
    bufferSizes(qeliFilterMaxGetBufferSize_8u_C1R, 1 * sizeof(Qel8u));
    bufferSizes(qeliFilterMaxGetBufferSize_8u_C3R, 3 * sizeof(Qel8u));
    bufferSizes(qeliFilterMaxGetBufferSize_8u_C4R, 4 * sizeof(Qel8u));
    bufferSizes(qeliFilterMaxGetBufferSize_32f_C1R, 1 * sizeof(Qel32f));
    bufferSizes(qeliFilterMaxGetBufferSize_32f_C3R, 3 * sizeof(Qel32f));
    bufferSizes(qeliFilterMaxGetBufferSize_32f_C4R, 4 * sizeof(Qel32f));
    bufferSizes(qeliFilterMinGetBufferSize_8u_C1R, 1 * sizeof(Qel8u));
    bufferSizes(qeliFilterMinGetBufferSize_8u_C3R, 3 * sizeof(Qel8u));
    bufferSizes(qeliFilterMinGetBufferSize_8u_C4R, 4 * sizeof(Qel8u));
    bufferSizes(qeliFilterMinGetBufferSize_32f_C1R, 1 * sizeof(Qel32f));
    bufferSizes(qeliFilterMinGetBufferSize_32f_C3R, 3 * sizeof(Qel32f));
    bufferSizes(qeliFilterMinGetBufferSize_32f_C4R, 4 * sizeof(Qel32f));
}

}  // namespace
