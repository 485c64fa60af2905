#include "frame/image_primitives.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "frame/faults.h"
#include "frame/image_primitives_kernels.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"

namespace qel {
namespace {

// Small regions, every width among them.
template <class Run>
void forAllTrials(const Run& run) {
    for (const uint32_t seed : kit::seeds(300)) {
        kit::Trial trial(seed);
        ASSERT_NO_FATAL_FAILURE(run(trial));
    }
}

// Images of more samples than this bypass the cache.
constexpr int kCachedSamples = 0x100000;

class ImagePrimitives : public kit::EveryTarget {};
ON_EVERY_TARGET(ImagePrimitives);

// Noise enough for any test.
const unsigned char* noise() {
    static const std::vector<unsigned char> bytes = [] {
        std::vector<unsigned char> v(5 * kCachedSamples);
        for (size_t i = 0; i < v.size(); ++i) v[i] = static_cast<unsigned char>(uint32_t(i) * 2654435761U >> 23);
        return v;
    }();
    return bytes.data();
}

// The most samples that are copied through the cache and a row more, packed, which is one long row, and with a gap.
template <class T>
void copiesLargeImages(qelStatus (*function)(const T*, int, T*, int, QelSize), int channels) {
    const QelSize cached = {512, kCachedSamples / (512 * channels)};
    for (const int moreRows : {0, 1}) {
        for (const int gap : {0, 24}) {
            const QelSize size = {cached.width, cached.height + moreRows};
            const int row = size.width * channels * int(sizeof(T));
            const int step = row + gap;
            const T* const source = reinterpret_cast<const T*>(noise() + 4 * moreRows);
            kit::GuardedMemory got(size_t(step) * size_t(size.height - 1) + size_t(row),
                                   {kit::Placement::kStartsBehindGuard, size_t(gap)});
            T* const destination = reinterpret_cast<T*>(got.data());
            ASSERT_EQ(qelStatusOk, function(source, row, destination, step, size));
            for (int y = 0; y < size.height; ++y) {
                const unsigned char* const end = got.data() + ptrdiff_t{step} * y + row;
                ASSERT_EQ(0, std::memcmp(noise() + 4 * moreRows + ptrdiff_t{row} * y, end - row, size_t(row)));
                const int behind = y + 1 < size.height ? gap : 0;
                ASSERT_EQ(behind, std::count(end, end + behind, kit::kCanary));
            }
            ASSERT_TRUE(got.surroundingsIntact());
        }
    }
}

template <class T>
void copies(qelStatus (*function)(const T*, int, T*, int, QelSize), int channels) {
    forAllTrials([=](kit::Trial& trial) {
        const kit::Image<T> source(trial, channels);
        kit::Image<T> got(trial, channels), want(got);
        for (int y = 0; y < trial.size.height; ++y)
            for (int x = 0; x < trial.size.width * channels; ++x) want.at(x, y) = source.at(x, y);
        ASSERT_EQ(qelStatusOk, function(source.data(), source.step(), got.data(), got.step(), trial.size)) << trial;
        ASSERT_TRUE(sameBits(want, got)) << trial;
    });
    ASSERT_NO_FATAL_FAILURE(copiesLargeImages<T>(function, channels));
}
TEST_P(ImagePrimitives, qeliCopy_8u_C1R) { copies<Qel8u>(qeliCopy_8u_C1R, 1); }
TEST_P(ImagePrimitives, qeliCopy_8u_C3R) { copies<Qel8u>(qeliCopy_8u_C3R, 3); }
TEST_P(ImagePrimitives, qeliCopy_8u_C4R) { copies<Qel8u>(qeliCopy_8u_C4R, 4); }
TEST_P(ImagePrimitives, qeliCopy_16s_C1R) { copies<Qel16s>(qeliCopy_16s_C1R, 1); }
TEST_P(ImagePrimitives, qeliCopy_16u_C1R) { copies<Qel16u>(qeliCopy_16u_C1R, 1); }
TEST_P(ImagePrimitives, qeliCopy_32f_C1R) { copies<Qel32f>(qeliCopy_32f_C1R, 1); }
TEST_P(ImagePrimitives, qeliCopy_32f_C3R) { copies<Qel32f>(qeliCopy_32f_C3R, 3); }
TEST_P(ImagePrimitives, qeliCopy_32f_C4R) { copies<Qel32f>(qeliCopy_32f_C4R, 4); }

TEST_P(ImagePrimitives, qeliSet_8u_C1R) {
    forAllTrials([](kit::Trial& trial) {
        const Qel8u value = trial.anySample<Qel8u>();
        kit::Image<Qel8u> got(trial), want(got);
        for (int y = 0; y < trial.size.height; ++y)
            for (int x = 0; x < trial.size.width; ++x) want.at(x, y) = value;
        ASSERT_EQ(qelStatusOk, qeliSet_8u_C1R(value, got.data(), got.step(), trial.size)) << trial;
        ASSERT_TRUE(sameBits(want, got)) << trial;
    });
    const int cacheSizes[] = {kCachedSamples / 2, kCachedSamples + 1024, 0, 1 << 30};
    for (const int cacheSize : cacheSizes) {
        for (const QelSize size : {QelSize{1024, 1024}, {1024, 1025}}) {
            for (const int gap : {0, 24}) {
                kit::core().cacheSize = cacheSize;
                const int step = size.width + gap;
                kit::GuardedMemory got(size_t(step) * size_t(size.height) - size_t(gap));
                ASSERT_EQ(qelStatusOk, qeliSet_8u_C1R(77, got.data(), step, size));
                ASSERT_EQ(size.width * size.height, std::count(got.data(), got.data() + got.bytes(), 77));
                ASSERT_EQ(gap * (size.height - 1), std::count(got.data(), got.data() + got.bytes(), kit::kCanary));
                ASSERT_TRUE(got.surroundingsIntact());
            }
        }
    }
}

// Packed images are one long row, of any alignment, copied and set past the cache.
TEST_P(ImagePrimitives, LongRowsAtAnyAddress) {
    const QelSize size = {1023, 1030};
    const size_t bytes = size_t(size.width) * size_t(size.height);
    kit::core().cacheSize = 1 << 20;
    for (size_t offset = 0; offset < 70; offset += 23) {
        kit::GuardedMemory got(bytes, {kit::Placement::kStartsBehindGuard, offset});
        ASSERT_EQ(qelStatusOk, qeliCopy_8u_C1R(noise(), size.width, got.data(), size.width, size));
        ASSERT_EQ(0, std::memcmp(noise(), got.data(), bytes));
        ASSERT_TRUE(got.surroundingsIntact());
        ASSERT_EQ(qelStatusOk, qeliSet_8u_C1R(9, got.data(), size.width, size));
        ASSERT_EQ(ptrdiff_t(bytes), std::count(got.data(), got.data() + bytes, 9));
        ASSERT_TRUE(got.surroundingsIntact());
    }
}

// `function(source, destination)` thresholds one image into another; `model` is what becomes of a sample.
template <class T, class Function, class Model>
void thresholdAgrees(kit::Trial& trial, const Function& function, const Model& model) {
    kit::Image<T> source(trial), got(trial), want(got), inPlace(source);
    for (int y = 0; y < trial.size.height; ++y)
        for (int x = 0; x < trial.size.width; ++x) want.at(x, y) = model(source.at(x, y));
    ASSERT_EQ(qelStatusOk, function(source, got)) << trial;
    ASSERT_TRUE(sameBits(want, got)) << trial;
    ASSERT_EQ(qelStatusOk, function(inPlace, inPlace)) << trial;
    ASSERT_TRUE(sameBits(want, inPlace)) << trial << ", in place";
}

// The samples of an image, one above and one below, and the ends of the range.
template <class T>
T thresholdNear(kit::Trial& trial) {
    const T ends[] = {0, 1, T(-1), T(-2), T(T(-1) / 2), T(T(-1) / 2 + 1)};
    return trial.coin() ? ends[trial.between(0, 5)] : T(trial.sample<T>() + trial.between(-1, 1));
}

template <class T>
using ThresholdGTVal = qelStatus(const T*, int, T*, int, QelSize, T, T);
template <class T>
using ThresholdVal = qelStatus(const T*, int, T*, int, QelSize, T, T, int);

template <class T>
void greaterThanAgrees(ThresholdGTVal<T>* function) {
    forAllTrials([=](kit::Trial& trial) {
        const T threshold = thresholdNear<T>(trial);
        const T value = trial.anySample<T>();
        thresholdAgrees<T>(
            trial,
            [=](auto& in, auto& out) {
                return function(in.data(), in.step(), out.data(), out.step(), in.size(), threshold, value);
            },
            [=](T v) { return v > threshold ? value : v; });
    });
}
TEST_P(ImagePrimitives, qeliThreshold_GTVal_8u_C1R) { greaterThanAgrees<Qel8u>(qeliThreshold_GTVal_8u_C1R); }
TEST_P(ImagePrimitives, qeliThreshold_GTVal_16u_C1R) { greaterThanAgrees<Qel16u>(qeliThreshold_GTVal_16u_C1R); }

template <class T>
void greaterThanInPlaceAgrees(qelStatus (*function)(T*, int, QelSize, T, T)) {
    forAllTrials([=](kit::Trial& trial) {
        const T threshold = thresholdNear<T>(trial);
        const T value = trial.anySample<T>();
        kit::Image<T> got(trial), want(got);
        for (int y = 0; y < trial.size.height; ++y)
            for (int x = 0; x < trial.size.width; ++x)
                if (want.at(x, y) > threshold) want.at(x, y) = value;
        ASSERT_EQ(qelStatusOk, function(got.data(), got.step(), trial.size, threshold, value)) << trial;
        ASSERT_TRUE(sameBits(want, got)) << trial;
    });
}
TEST_P(ImagePrimitives, qeliThreshold_GTVal_8u_C1IR) { greaterThanInPlaceAgrees<Qel8u>(qeliThreshold_GTVal_8u_C1IR); }
TEST_P(ImagePrimitives, qeliThreshold_GTVal_16u_C1IR) {
    greaterThanInPlaceAgrees<Qel16u>(qeliThreshold_GTVal_16u_C1IR);
}

template <class T>
void valueAgrees(ThresholdVal<T>* function) {
    for (const int compare : {0, 4}) {
        forAllTrials([=](kit::Trial& trial) {
            const T threshold = thresholdNear<T>(trial);
            const T value = trial.anySample<T>();
            thresholdAgrees<T>(
                trial,
                [=](auto& in, auto& out) {
                    return function(in.data(), in.step(), out.data(), out.step(), in.size(), threshold, value, compare);
                },
                [=](T v) { return (compare == 0 ? v < threshold : v > threshold) ? value : v; });
        });
    }
}
TEST_P(ImagePrimitives, qeliThreshold_Val_8u_C1R) { valueAgrees<Qel8u>(qeliThreshold_Val_8u_C1R); }
TEST_P(ImagePrimitives, qeliThreshold_Val_16u_C1R) { valueAgrees<Qel16u>(qeliThreshold_Val_16u_C1R); }

// From 0x20000 samples on, if they fill more than half the cache, 16u bypasses it in an image of its own.
TEST_P(ImagePrimitives, LargeThresholds) {
    const Qel16u* const source = reinterpret_cast<const Qel16u*>(noise());
    for (const int cacheSize : {0, 0x7F000, 0x80000, 1 << 30}) {
        for (const QelSize size : {QelSize{512, 256}, {512, 257}, {511, 258}}) {
            for (const int gap : {0, 6}) {
                kit::core().cacheSize = cacheSize;
                const int step = 2 * size.width + gap;
                kit::GuardedMemory below(size_t(step) * size_t(size.height) - size_t(gap)), above(below.bytes());
                Qel16u* const less = reinterpret_cast<Qel16u*>(below.data());
                Qel16u* const greater = reinterpret_cast<Qel16u*>(above.data());
                qeliThreshold_Val_16u_C1R(source, 1024, less, step, size, 40000, 9, kCompareLess);
                qeliThreshold_GTVal_16u_C1R(source, 1024, greater, step, size, 40000, 9);
                for (int y = 0; y < size.height; ++y) {
                    for (int x = 0; x < size.width; ++x) {
                        const Qel16u v = source[512 * y + x];
                        ASSERT_EQ(v < 40000 ? 9 : v, less[step / 2 * y + x]);
                        ASSERT_EQ(v > 40000 ? 9 : v, greater[step / 2 * y + x]);
                    }
                }
                const auto canaries = [&](const kit::GuardedMemory& memory) {
                    for (int y = 0; y + 1 < size.height; ++y)
                        for (int i = step - gap; i < step; ++i)
                            if (memory.data()[step * y + i] != kit::kCanary) return false;
                    return memory.surroundingsIntact();
                };
                ASSERT_TRUE(canaries(below));
                ASSERT_TRUE(canaries(above));
            }
        }
    }
}

// All samples against all thresholds.
TEST_P(ImagePrimitives, ThresholdOfEveryPairOfBytes) {
    Qel8u samples[256];
    for (int i = 0; i < 256; ++i) samples[i] = Qel8u(i);
    for (int threshold = 0; threshold < 256; ++threshold) {
        Qel8u below[256];
        Qel8u above[256];
        qeliThreshold_Val_8u_C1R(samples, 256, below, 256, {256, 1}, Qel8u(threshold), 77, kCompareLess);
        qeliThreshold_Val_8u_C1R(samples, 256, above, 256, {256, 1}, Qel8u(threshold), 77, kCompareGreater);
        for (int i = 0; i < 256; ++i) {
            ASSERT_EQ(i < threshold ? 77 : i, below[i]);
            ASSERT_EQ(i > threshold ? 77 : i, above[i]);
        }
    }
}

constexpr Qel32f kNaN = std::numeric_limits<Qel32f>::quiet_NaN();
constexpr Qel32f kInfinity = std::numeric_limits<Qel32f>::infinity();
constexpr Qel32f kFloatThresholds[] = {0.0F, -0.0F, 1.5F, -300.0F, 1e30F, kInfinity, -kInfinity, kNaN, -kNaN};

Qel32f atLeast(Qel32f v, Qel32f threshold) { return v < threshold ? threshold : v; }
Qel32f atMost(Qel32f v, Qel32f threshold) { return v > threshold ? threshold : v; }

TEST_P(ImagePrimitives, qeliThreshold_LT_32f_C1R) {
    forAllTrials([](kit::Trial& trial) {
        const Qel32f threshold = kFloatThresholds[trial.between(0, 8)];
        thresholdAgrees<Qel32f>(
            trial,
            [=](auto& in, auto& out) {
                return qeliThreshold_LT_32f_C1R(in.data(), in.step(), out.data(), out.step(), in.size(), threshold);
            },
            [=](Qel32f v) { return atLeast(v, threshold); });
    });
}
TEST_P(ImagePrimitives, qeliThreshold_LT_32f_C1IR) {
    forAllTrials([](kit::Trial& trial) {
        const Qel32f threshold = kFloatThresholds[trial.between(0, 8)];
        thresholdAgrees<Qel32f>(
            trial,
            [=](auto& in, auto& out) {
                for (int y = 0; y < in.size().height; ++y)
                    for (int x = 0; x < in.size().width; ++x) out.at(x, y) = in.at(x, y);
                return qeliThreshold_LT_32f_C1IR(out.data(), out.step(), out.size(), threshold);
            },
            [=](Qel32f v) { return atLeast(v, threshold); });
    });
}
TEST_P(ImagePrimitives, qeliThreshold_32f_C1R) {
    for (const int compare : {0, 4}) {
        forAllTrials([=](kit::Trial& trial) {
            const Qel32f threshold = kFloatThresholds[trial.between(0, 8)];
            thresholdAgrees<Qel32f>(
                trial,
                [=](auto& in, auto& out) {
                    return qeliThreshold_32f_C1R(in.data(), in.step(), out.data(), out.step(), in.size(), threshold,
                                                 compare);
                },
                [=](Qel32f v) { return compare == 0 ? atLeast(v, threshold) : atMost(v, threshold); });
        });
    }
}

// Samples and thresholds that compare in no simple way, on every lane.
TEST_P(ImagePrimitives, ThresholdCopiesFloatsThatDoNotCompare) {
    for (const Qel32f threshold : kFloatThresholds) {
        for (const Qel32f sample : kFloatThresholds) {
            std::vector<Qel32f> least(35, sample), most(35, sample);
            const QelSize size = {35, 1};
            qeliThreshold_32f_C1R(least.data(), 140, least.data(), 140, size, threshold, kCompareLess);
            qeliThreshold_32f_C1R(most.data(), 140, most.data(), 140, size, threshold, kCompareGreater);
            for (size_t x = 0; x < 35; ++x) {
                ASSERT_TRUE(kit::sameBits(atLeast(sample, threshold), least[x])) << sample << " and " << threshold;
                ASSERT_TRUE(kit::sameBits(atMost(sample, threshold), most[x])) << sample << " and " << threshold;
            }
        }
    }
}

TEST(ImagePrimitiveChecks, EveryMember) {
    Qel8u* const a8 = watched<Qel8u>(0);
    Qel8u* const b8 = watched<Qel8u>(1);
    Qel16s* const a16s = watched<Qel16s>(0);
    Qel16s* const b16s = watched<Qel16s>(1);
    Qel16u* const a16 = watched<Qel16u>(0);
    Qel16u* const b16 = watched<Qel16u>(1);
    Qel32f* const a = watched<Qel32f>(0);
    Qel32f* const b = watched<Qel32f>(1);
    const QelSize size = {7, 5};
    QEL_FAULTS(qeliCopy_8u_C1R, a8, 7, b8, 7, size).null<0>().null<2>().size<4>().run();
    QEL_FAULTS(qeliCopy_8u_C3R, a8, 21, b8, 21, size).null<0>().null<2>().size<4>().run();
    QEL_FAULTS(qeliCopy_8u_C4R, a8, 28, b8, 28, size).null<0>().null<2>().size<4>().run();
    QEL_FAULTS(qeliCopy_16s_C1R, a16s, 14, b16s, 14, size).null<0>().null<2>().size<4>().run();
    QEL_FAULTS(qeliCopy_16u_C1R, a16, 14, b16, 14, size).null<0>().null<2>().size<4>().run();
    QEL_FAULTS(qeliCopy_32f_C1R, a, 28, b, 28, size).null<0>().null<2>().size<4>().run();
    QEL_FAULTS(qeliCopy_32f_C3R, a, 84, b, 84, size).null<0>().null<2>().size<4>().run();
    QEL_FAULTS(qeliCopy_32f_C4R, a, 112, b, 112, size).null<0>().null<2>().size<4>().run();
    QEL_FAULTS(qeliSet_8u_C1R, 1, a8, 7, size).null<1>().size<3>().run();

    QEL_FAULTS(qeliThreshold_GTVal_8u_C1R, a8, 7, b8, 7, size, 1, 2)
        .null<0>()
        .null<2>()
        .size<4>()
        .step<1>()
        .step<3>()
        .run();
    QEL_FAULTS(qeliThreshold_GTVal_16u_C1R, a16, 14, b16, 14, size, 1, 2)
        .null<0>()
        .null<2>()
        .size<4>()
        .step<1>()
        .step<3>()
        .run();
    QEL_FAULTS(qeliThreshold_GTVal_8u_C1IR, a8, 7, size, 1, 2).null<0>().size<2>().step<1>().run();
    QEL_FAULTS(qeliThreshold_GTVal_16u_C1IR, a16, 14, size, 1, 2).null<0>().size<2>().step<1>().run();
    QEL_FAULTS(qeliThreshold_LT_32f_C1R, a, 28, b, 28, size, 1).null<0>().null<2>().size<4>().step<1>().step<3>().run();
    QEL_FAULTS(qeliThreshold_LT_32f_C1IR, a, 28, size, 1).null<0>().size<2>().step<1>().run();

    // The selector comes first here, and last with 32f.
    Faults val8("qeliThreshold_Val_8u_C1R", qeliThreshold_Val_8u_C1R, a8, 7, b8, 7, size, 1, 2, 4);
    Faults val16("qeliThreshold_Val_16u_C1R", qeliThreshold_Val_16u_C1R, a16, 14, b16, 14, size, 1, 2, 0);
    Faults limit("qeliThreshold_32f_C1R", qeliThreshold_32f_C1R, a, 28, b, 28, size, 1, 4);
    for (const int bad : {-1, 1, 2, 3, 5, INT_MAX, INT_MIN}) {
        val8.fault<7>(qelStatusBadCompareOp, bad);
        val16.fault<7>(qelStatusBadCompareOp, bad);
    }
    val8.null<0>().null<2>().size<4>().step<1>().step<3>().run();
    val16.null<0>().null<2>().size<4>().step<1>().step<3>().run();
    limit.null<0>().null<2>().size<4>().step<1>().step<3>();
    for (const int bad : {-1, 1, 2, 3, 5, INT_MAX, INT_MIN}) limit.fault<6>(qelStatusBadCompareOp, bad);
    limit.run();
}

// A step that the row does not fit into is the caller's affair: rows overlap, and each is written in its turn.
TEST(ImagePrimitiveChecks, StepsAreNotComparedWithTheRow) {
    const Qel8u source[12] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    Qel8u got[6] = {};
    EXPECT_EQ(qelStatusOk, qeliCopy_8u_C1R(source, 4, got, 1, {4, 3}));
    EXPECT_EQ((std::vector<Qel8u>{1, 5, 9, 10, 11, 12}), std::vector<Qel8u>(got, got + 6));
    EXPECT_EQ(qelStatusOk, qeliThreshold_GTVal_8u_C1R(source, 4, got, 1, {4, 3}, 10, 0));
    EXPECT_EQ((std::vector<Qel8u>{1, 5, 9, 10, 0, 0}), std::vector<Qel8u>(got, got + 6));
}

}  // namespace
}  // namespace qel
