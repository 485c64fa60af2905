#include "frame/rows.h"

#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "kit/core_double.h"

namespace qel {
namespace {

class Rows : public testing::Test {
protected:
    void TearDown() override {
        EXPECT_EQ(0, kit::core().allocated);
        kit::core().reset();
    }
};

// Which thread each row of a region went to; -1 where none did.
std::vector<int> threadsOfRows(QelSize roi, bool parallel) {
    std::vector<int> thread(size_t(roi.height), -1);
    forRows(roi, parallel, [&](const Share& share) {
        EXPECT_EQ(roi.width, share.size.width);
        EXPECT_EQ(owncvGetIdThreads(), share.thread);
        for (int y = share.y; y < share.y + share.size.height; ++y) {
            EXPECT_EQ(-1, thread[size_t(y)]);
            thread[size_t(y)] = share.thread;
        }
    });
    return thread;
}

TEST_F(Rows, PlainPathIsOneCall) {
    kit::core().threads = 3;
    EXPECT_EQ(std::vector<int>(7, 0), threadsOfRows({2, 7}, false));
}

TEST_F(Rows, LastThreadTakesTheRemainder) {
    kit::core().threads = 3;
    EXPECT_EQ((std::vector<int>{0, 0, 1, 1, 2, 2, 2, 2}), threadsOfRows({2, 8}, true));
    EXPECT_EQ((std::vector<int>{0, 1, 2}), threadsOfRows({2, 3}, true));
}

TEST_F(Rows, LastThreadDoesFewRowsAlone) {
    kit::core().threads = 33;
    EXPECT_EQ(std::vector<int>(32, 32), threadsOfRows({1, 32}, true));
    EXPECT_EQ(std::vector<int>(1, 32), threadsOfRows({1, 1}, true));
}

TEST_F(Rows, ATeamOfOneDoesAll) {
    EXPECT_EQ(std::vector<int>(9, 0), threadsOfRows({2, 9}, true));
    kit::core().threads = 0;
    EXPECT_EQ(std::vector<int>(9, 0), threadsOfRows({2, 9}, true)) << "a core library that knows no number";
}

// Which thread each row went to, row by row.
std::vector<int> threadOfEachRow(int height, bool parallel) {
    std::vector<int> thread(size_t(height), -1);
    forEachRow(height, parallel, [&](int y) {
        EXPECT_EQ(-1, thread[size_t(y)]);
        thread[size_t(y)] = owncvGetIdThreads();
    });
    return thread;
}

TEST_F(Rows, EachRowIsVisitedOnceInEvenRuns) {
    kit::core().threads = 3;
    EXPECT_EQ(std::vector<int>(7, 0), threadOfEachRow(7, false));
    EXPECT_EQ((std::vector<int>{0, 0, 0, 1, 1, 1, 2, 2}), threadOfEachRow(8, true));
    EXPECT_EQ((std::vector<int>{0, 1}), threadOfEachRow(2, true));
    EXPECT_EQ((std::vector<int>{0}), threadOfEachRow(1, true));
    kit::core().threads = 0;
    EXPECT_EQ(std::vector<int>(5, 0), threadOfEachRow(5, true)) << "a core library that knows no number";
}

TEST_F(Rows, NoThreadPassesABarrierAheadOfTheOthers) {
    for (int turn = 0; turn < 20; ++turn) {
        std::array<int, 3> written{}, sums{};
        onThreads(3, [&](int thread, int team) {
            EXPECT_EQ(3, team);
            written[size_t(thread)] = thread + 1;
            barrier();
            sums[size_t(thread)] = written[0] + written[1] + written[2];
        });
        EXPECT_EQ((std::array<int, 3>{6, 6, 6}), sums);
    }
}

// Joins the first rows of the shares, so that the order of the merge shows; the neutral value is empty.
struct Order {
    std::array<int, 64> firstRows{};
    int count = 0;
};

Order firstRow(const Share& share) { return {{share.y}, 1}; }

void append(Order& total, const Order& partial) {
    for (int i = 0; i < partial.count; ++i) total.firstRows[size_t(total.count++)] = partial.firstRows[size_t(i)];
}

std::vector<int> mergeOrder(QelSize roi, bool parallel) {
    Order total;
    EXPECT_EQ(qelStatusOk, reduceRows(roi, parallel, &total, firstRow, append));
    return {total.firstRows.begin(), total.firstRows.begin() + total.count};
}

TEST_F(Rows, PartialsMergeInThreadOrder) {
    kit::core().threads = 4;
    EXPECT_EQ((std::vector<int>{0}), mergeOrder({1, 8}, false));
    EXPECT_EQ((std::vector<int>{0, 2, 4, 6}), mergeOrder({1, 9}, true));
    EXPECT_EQ(0, kit::core().allocations) << "32 slots fit on the stack";
}

TEST_F(Rows, ThreadsWithoutRowsAreNeutral) {
    kit::core().threads = 4;
    EXPECT_EQ((std::vector<int>{0}), mergeOrder({1, 3}, true));
}

TEST_F(Rows, TheTableIsAllocatedAbove32Threads) {
    const int before = kit::core().allocations;
    kit::core().threads = 32;
    mergeOrder({1, 64}, true);
    EXPECT_EQ(before, kit::core().allocations);
    kit::core().threads = 33;
    const std::vector<int> order = mergeOrder({1, 66}, true);
    EXPECT_EQ(before + 1, kit::core().allocations);
    ASSERT_EQ(33U, order.size());
    for (int t = 0; t < 33; ++t) EXPECT_EQ(2 * t, order[size_t(t)]);
}

TEST_F(Rows, AFailedTableIsReportedAndNothingRuns) {
    kit::core().threads = 33;
    kit::core().allocationsLeft = 0;
    Order total;
    bool ran = false;
    const auto work = [&](const Share& share) {
        ran = true;
        return firstRow(share);
    };
    EXPECT_EQ(qelStatusNoMemory, reduceRows(QelSize{1, 66}, true, &total, work, append));
    EXPECT_FALSE(ran);
    EXPECT_EQ(0, total.count);
}

TEST_F(Rows, ShapesThatGoToThreads) {
    constexpr ParallelFromRows kLimits = {.width = 20, .height = 10, .heightPerThread = 5};
    kit::core().threads = 3;
    kit::core().cores = 2;
    EXPECT_TRUE(kLimits.reachedBy({20, 15}));
    EXPECT_FALSE(kLimits.reachedBy({19, 15}));
    EXPECT_FALSE(kLimits.reachedBy({20, 14})) << "less than five rows for each thread";
    kit::core().threads = 1;
    EXPECT_FALSE(kLimits.reachedBy({20, 15}));
    kit::core().threads = 2;
    EXPECT_TRUE(kLimits.reachedBy({20, 10}));
    kit::core().cores = 1;
    EXPECT_FALSE(kLimits.reachedBy({20, 10}));
}

TEST_F(Rows, LimitsGrowWithTheThreadLimit) {
    kit::core().threads = 3;
    EXPECT_TRUE(ParallelFrom{.perThread = 1 << 17}.reachedBy({3 << 15, 4}));
    EXPECT_FALSE(ParallelFrom{.perThread = 1 << 17}.reachedBy({(3 << 17) - 1, 1}));
    EXPECT_FALSE(ParallelFrom{.perThread = 1 << 15}.reachedBy({0x10000, 0x8000}))
        << "an area that wraps to negative is small";
}

TEST_F(Rows, WrappersTellWhatTheCoreLibraryTells) {
    EXPECT_EQ(1, owncvGetNumThreads());
    EXPECT_EQ(0, owncvGetIdThreads());
    kit::core().threads = 5;
    EXPECT_EQ(5, owncvGetMaxNumThreads());
    kit::core().cacheSize = 12345;
    EXPECT_EQ(12345, owncvGetCacheSize());
    kit::core().cacheSize = 0;
    EXPECT_EQ(0, owncvGetCacheSize()) << "a failed query leaves 0";
}

TEST_F(Rows, ThreadsAreWorthStartingOnSeveralCores) {
    kit::core().cores = 1;
    EXPECT_EQ(0, runomp());
    EXPECT_EQ(0, runsepomp(3));
    EXPECT_EQ(0, runsepomp(5));
    EXPECT_EQ(1, runsepomp(7));
    kit::core().cores = 4;
    EXPECT_EQ(4, runomp());
    EXPECT_EQ(4, runsepomp(5));
    EXPECT_EQ(5, runsepomp(9));
}

}  // namespace
}  // namespace qel
