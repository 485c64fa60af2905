#include <gtest/gtest.h>
#include <omp.h>
#include <sched.h>

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "qelcore.h"

namespace {

TEST(Memory, IsAlignedAndWritable) {
    for (const int bytes : {1, 2, 15, 16, 63, 64, 65, 4095, 4096, 1 << 20}) {
        void* const p = qelMalloc(bytes);
        ASSERT_NE(nullptr, p) << bytes;
        EXPECT_EQ(0u, reinterpret_cast<uintptr_t>(p) % 64) << bytes;
        std::memset(p, 0xA5, static_cast<size_t>(bytes));
        qelFree(p);
    }
}

TEST(Memory, BlocksAreDistinct) {
    auto* const first = static_cast<unsigned char*>(qelMalloc(100));
    auto* const second = static_cast<unsigned char*>(qelMalloc(100));
    std::memset(first, 1, 100);
    std::memset(second, 2, 100);
    EXPECT_EQ(1, first[0]);
    EXPECT_EQ(1, first[99]);
    qelFree(first);
    EXPECT_EQ(2, second[0]);
    EXPECT_EQ(2, second[99]);
    qelFree(second);
}

TEST(Memory, ImpossibleCountsGiveNull) {
    for (const int bytes : {0, -1, -64, INT_MIN, INT_MIN + 1, INT_MAX, INT_MAX - 1}) {
        EXPECT_EQ(nullptr, qelMalloc(bytes)) << bytes;
    }
}

TEST(Memory, FreeOfNullDoesNothing) { qelFree(nullptr); }

TEST(Threads, LimitIsWritten) {
    int limit = 0;
    EXPECT_EQ(qelStatusOk, qelGetNumThreads(&limit));
    EXPECT_EQ(ownGetNumThreads(), limit);
    EXPECT_GE(limit, 1);
    EXPECT_EQ(qelStatusNullPointer, qelGetNumThreads(nullptr));
}

TEST(Threads, SetLimitHoldsAboveTheProcessors) {
    const int byDefault = ownGetNumThreads();
    for (const int limit : {1, 2, 33, 1000}) {
        EXPECT_EQ(qelStatusOk, qelSetNumThreads(limit));
        EXPECT_EQ(limit, ownGetNumThreads());
    }
    for (const int restoring : {0, -1, INT_MIN}) {
        EXPECT_EQ(qelStatusOk, qelSetNumThreads(3));
        EXPECT_EQ(qelStatusOk, qelSetNumThreads(restoring));
        EXPECT_EQ(byDefault, ownGetNumThreads());
    }
}

TEST(Threads, OpenMpLimitOfTheCallerCounts) {
    const int runtimeLimit = omp_get_max_threads();
    const int byDefault = ownGetNumThreads();
    omp_set_num_threads(1);
    EXPECT_EQ(1, ownGetNumThreads());
    omp_set_num_threads(1 << 20);
    EXPECT_GE(ownGetNumThreads(), byDefault);
    EXPECT_LE(ownGetNumThreads(), omp_get_num_procs());
    omp_set_num_threads(runtimeLimit);
    EXPECT_EQ(byDefault, ownGetNumThreads());
}

TEST(Cache, SizeIsWrittenOnSuccessOnly) {
    int bytes = -7;
    const qelStatus status = qelGetMaxCacheSizeB(&bytes);
    if (status == qelStatusOk) {
        EXPECT_GE(bytes, 4096);
    } else {
        EXPECT_EQ(qelStatusBadArg, status);
        EXPECT_EQ(-7, bytes);
    }
    EXPECT_EQ(qelStatusNullPointer, qelGetMaxCacheSizeB(nullptr));
}

struct Limits {
    int threads = 0;
    int cores = 0;
};

// What a new process sees that is started with `settings` in front of its command.
Limits limitsWith(const std::string& settings, const std::string& argument = "") {
    const std::string command = "env -u OMP_NUM_THREADS -u OMP_PROC_BIND " + settings + " '" CORE_PROBE "' " + argument;
    Limits limits;
    FILE* const output = popen(command.c_str(), "r");
    const int read = output == nullptr ? 0 : std::fscanf(output, "%d %d", &limits.threads, &limits.cores);
    EXPECT_EQ(2, read) << command;
    EXPECT_EQ(0, output == nullptr ? -1 : pclose(output)) << command;
    return limits;
}

std::string onOneProcessor() { return "taskset -c " + std::to_string(sched_getcpu()); }

TEST(Limits, StayWithinTheProcessors) {
    const Limits limits = limitsWith("");
    EXPECT_GE(limits.threads, 1);
    EXPECT_LE(limits.threads, omp_get_num_procs());
    EXPECT_GE(limits.cores, 1);
    EXPECT_LE(limits.cores, limits.threads);
}

TEST(Limits, EnvironmentLowersThreads) {
    const Limits byDefault = limitsWith("");
    EXPECT_EQ(1, limitsWith("OMP_NUM_THREADS=1").threads);
    EXPECT_EQ(byDefault.threads, limitsWith("OMP_NUM_THREADS=1000").threads);
    EXPECT_EQ(byDefault.cores, limitsWith("OMP_NUM_THREADS=1").cores);
}

TEST(Limits, AffinityCounts) {
    const Limits limits = limitsWith(onOneProcessor());
    EXPECT_EQ(1, limits.threads);
    EXPECT_EQ(1, limits.cores);
    EXPECT_EQ(1, limitsWith("OMP_NUM_THREADS=8 " + onOneProcessor()).threads);
}

TEST(Limits, BoundThreadsLowerNothing) {
    const Limits byDefault = limitsWith("");
    const Limits bound = limitsWith("OMP_PROC_BIND=true");
    EXPECT_EQ(byDefault.threads, bound.threads);
    EXPECT_EQ(byDefault.cores, bound.cores);
    EXPECT_EQ(1, limitsWith("OMP_PROC_BIND=true " + onOneProcessor()).threads);

    const Limits askedByPinnedThread = limitsWith("", "pinned");
    EXPECT_EQ(byDefault.threads, askedByPinnedThread.threads);
    EXPECT_EQ(byDefault.cores, askedByPinnedThread.cores);
}

}  // namespace
