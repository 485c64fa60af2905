// Random calls of a column pipeline: source rows, kernels, and the comparison with a model of one result.
#ifndef QELCV_TESTS_FILTER_COLUMN_PIPELINE_CASE_H_
#define QELCV_TESTS_FILTER_COLUMN_PIPELINE_CASE_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "kit/checks.h"
#include "kit/core_double.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/filter.h"

namespace columns {

// A list of row pointers that ends at a guard. The rows behind it are fewer: they repeat as those of a ring do, or in
// any order. They may begin at any byte; the last one in memory ends at a guard, or the first one begins at it.
template <class T>
class RowList {
public:
    RowList(kit::Trial& trial, int slots, int rowSamples)
        : list_(sizeof(T*) * size_t(slots)),
          slots_(slots),
          distinct_(std::min(slots, trial.coin() ? 12 : trial.between(1, 9))),
          distance_(rowSamples * int(sizeof(T)) + (trial.coin() ? 0 : trial.between(1, 70))),
          memory_(size_t(distance_) * size_t(distinct_ - 1) + size_t(rowSamples) * sizeof(T),
                  {trial.coin() ? kit::Placement::kEndsAtGuard : kit::Placement::kStartsBehindGuard, 0}) {
        for (int i = 0; i < distinct_; ++i) {
            for (int x = 0; x < rowSamples; ++x) {
                const T sample = trial.sample<T>();
                std::memcpy(memory_.data() + size_t(distance_) * size_t(i) + size_t(x) * sizeof(T), &sample, sizeof(T));
            }
        }
        const bool ring = trial.coin();
        for (int i = 0; i < slots; ++i) {
            const int row = ring ? i % distinct_ : trial.between(0, distinct_ - 1);
            list()[i] = reinterpret_cast<const T*>(memory_.data() + size_t(distance_) * size_t(row));
        }
    }

    const T** list() { return reinterpret_cast<const T**>(list_.data()); }
    int slots() const { return slots_; }
    T at(int slot, int x) {
        T sample;
        std::memcpy(&sample, reinterpret_cast<const char*>(list()[slot]) + size_t(x) * sizeof(T), sizeof(T));
        return sample;
    }

private:
    kit::GuardedMemory list_;
    int slots_;
    int distinct_;
    int distance_;
    kit::GuardedMemory memory_;
};

// Where a result stands.
struct Place {
    int x, y;           // sample and row
    int width, height;  // samples and rows of the region
};

constexpr int kTaps[] = {3, 5, 1, 3, 5, 2, 3, 5, 4, 6, 3, 5, 7, 8, 3, 9, 15, 5, 12, 31};
inline int tapsOf(uint32_t seed) { return kTaps[seed % std::size(kTaps)]; }

constexpr int kDivisors[] = {1, 3, 16, -7, 1024, 20000, 2, -1, 256};
inline int divisorOf(uint32_t seed) { return kDivisors[seed % std::size(kDivisors)]; }

// The first and the last tap alike, the second and the last but one, and so on.
template <class K>
void makeSymmetric(std::vector<K>& taps) {
    for (size_t i = 0; i < taps.size() / 2; ++i) taps[taps.size() - 1 - i] = taps[i];
}

// Taps of all kinds: small ones, any, ones whose magnitudes add up to about 65535.
inline std::vector<Qel16s> someTaps(kit::Trial& trial, int count) {
    std::vector<Qel16s> taps(size_t(count), 0);
    const int kind = trial.between(0, 5);
    const int largest = kind < 3 ? 12 : kind == 3 ? 300 : 32767;
    for (Qel16s& tap : taps) tap = Qel16s(trial.between(-largest - (largest == 32767), largest));
    if (kind == 5) {
        std::fill(taps.begin(), taps.end(), Qel16s(0));
        taps.front() = -32768;
        taps[taps.size() / 2] = Qel16s(trial.between(32764, 32767));
        taps.back() = Qel16s(trial.between(-2, 2));
        if (trial.coin()) taps.front() = taps.back() = 16384, taps[taps.size() / 2] = 32767;
        if (trial.coin()) taps.front() = taps.back() = -16384, taps[taps.size() / 2] = -32766;
    }
    if (trial.coin()) makeSymmetric(taps);
    return taps;
}

// Single steps of the arithmetic, each rounded to single precision.
inline float clamped(float v, float low, float high) { return v < low ? low : v > high ? high : v; }
template <class T>
T saturated(int v) {
    using Limits = std::numeric_limits<T>;
    return T(std::clamp<int>(v, Limits::min(), Limits::max()));
}

// Calls run(trial, seed): small regions first, then those at the limit of the parallel path and one pixel below. With 3
// and 33 threads the shares end in the middle of a block of rows, and the last thread has more than the others.
template <class Run>
void forAllTrials(const Run& run) {
    for (uint32_t seed = 0; seed < 240; ++seed) {
        kit::Trial trial(seed);
        ASSERT_NO_FATAL_FAILURE(run(trial, seed));
    }
    struct Large {
        int threads;
        QelSize size;
    };
    const Large cases[] = {{2, {1 << 16, 1}}, {2, {(1 << 16) - 1, 1}}, {2, {1 << 14, 4}},
                           {3, {1927, 52}},   {3, {149, 660}},         {33, {15447, 71}}};
    uint32_t seed = 0;
    for (const Large& large : cases) {
        kit::Trial trial(seed, large.size, large.threads);
        kit::core().cores = seed % 4 == 2 ? 1 : 2;
        trial.setContent(kit::Content::kRandom);
        ASSERT_NO_FATAL_FAILURE(run(trial, seed++));
    }
}

// The query's scratch, all of it and no more, at either end of its page.
template <class GetSize>
kit::ScratchBlock scratchOf(GetSize* getSize, QelSize size, int kernelSize) {
    int bytes = -1;
    EXPECT_EQ(qelStatusOk, getSize(size, kernelSize, &bytes));
    return kit::ScratchBlock(bytes);
}

// Null stands in each slot in turn: the call reports it and writes nothing.
template <class T, class Call>
void reportsEveryNullRow(RowList<T>& rows, const Call& call) {
    for (int i = 0; i < rows.slots(); ++i) {
        const T* const row = rows.list()[i];
        rows.list()[i] = nullptr;
        ASSERT_EQ(qelStatusNullPointer, call()) << "row " << i;
        rows.list()[i] = row;
    }
}

// What the size query must tell with `threads` threads.
inline int64_t documentedBytes(int threads, QelSize size, int kernelSize, int channels, int group) {
    const int64_t groups = (int64_t{size.width} + group - 1) / group;
    return threads * 32 + (int64_t{size.height} + kernelSize) * threads * int64_t{sizeof(void*)} +
           threads * (groups * group * channels * 12 + 32);
}

using GetBufferSize = qelStatus(QelSize roiSize, int kernelSize, int* pBufferSize);

inline void checkBufferSize(const char* name, GetBufferSize* function) {
    SCOPED_TRACE(name);
    int bytes = -1;
    EXPECT_EQ(qelStatusNullPointer, function({0, 0}, 0, nullptr));
    EXPECT_EQ(qelStatusBadSize, function({0, 1}, 1, &bytes));
    EXPECT_EQ(qelStatusBadSize, function({1, 0}, 1, &bytes));
    EXPECT_EQ(qelStatusBadSize, function({1, 1}, 0, &bytes));
    EXPECT_EQ(-1, bytes);
}

inline void tellsDocumentedBytes(const char* name, GetBufferSize* function, int channels, int group) {
    checkBufferSize(name, function);
    SCOPED_TRACE(name);
    for (const int threads : {1, 2, 33}) {
        kit::core().reset();
        kit::core().threads = threads;
        for (const QelSize size : {QelSize{1, 1}, {3, 7}, {4, 1}, {5, 2}, {8, 3}, {9, 480}, {1920, 1080}}) {
            for (const int kernelSize : {1, 3, 5, 31}) {
                int bytes = -1;
                EXPECT_EQ(qelStatusOk, function(size, kernelSize, &bytes));
                EXPECT_EQ(documentedBytes(threads, size, kernelSize, channels, group), bytes);
            }
        }
        int bytes = -1;
        EXPECT_EQ(qelStatusOverflow, function({0x7FFFFFFF, 1}, 3, &bytes));
        EXPECT_EQ(qelStatusOverflow, function({1, 0x7FFFFFFF}, 3, &bytes));
        EXPECT_EQ(qelStatusOverflow, function({1, 1}, 0x7FFFFFFF, &bytes));
        EXPECT_EQ(-1, bytes);
    }
    kit::core().reset();
}

// A member with a divisor: good arguments, then each fault in its place.
template <int kChannels, class Checks>
void reportsFaultsOfDivided(Checks checks) {
    std::vector<Qel16s> row(64, 1);
    const std::vector<const Qel16s*> list(16, row.data());
    checks.template value<0>(list.data())
        .template channels<1>(kChannels)
        .template channels<2>(kChannels)
        .template notAnImage<4>()
        .template value<5>(3)
        .template faultAheadOfSteps<5>("no taps", qelStatusBadSize, 0)
        .template optional<7>()
        .template fault<7>("no buffer", qelStatusNullPointer, nullptr)
        .template fault<6>("divisor 0", qelStatusBadArg, 0)
        .run();
}

}  // namespace columns

#endif
