#include "frame/kernel.h"

#include <gtest/gtest.h>
#include <hwy/highway.h>

#include <vector>

#include "kit/core_double.h"
#include "kit/every_target.h"
#include "stats/abs_diff_kernels.h"

namespace qel {
namespace {

using AbsDiff8u = AbsDiffKernel<Qel8u>;

// Both builds have four versions of every kernel, those for sanitizers the least and the best of them; this machine
// decides which it can run.
TEST(Kernel, EveryInstructionSetWasBuilt) {
    constexpr auto kAll = HWY_SSSE3 | HWY_SSE4 | HWY_AVX2 | HWY_AVX3;
    EXPECT_EQ(kAll & ~(HWY_DISABLED_TARGETS), HWY_TARGETS);
}

TEST(Kernel, EachInstructionSetHasItsOwnVersion) {
    std::vector<AbsDiff8u*> versions;
    for (const int64_t target : kit::targets()) {
        hwy::SetSupportedTargetsForTest(target);
        hwy::GetChosenTarget().DeInit();
        versions.push_back(ownAbsDiff_8u_C1R_W7);
        EXPECT_EQ(1, std::count(versions.begin(), versions.end(), versions.back())) << hwy::TargetName(target);
    }
    hwy::SetSupportedTargetsForTest(0);
    hwy::GetChosenTarget().DeInit();
}

TEST(Kernel, StreamingFollowsTheVolume) {
    const ByVolume byVolume{ownAbsDiff_16u_C1R_W7, ownAbsDiff_16u_C1R_W7_B, 6};
    AbsDiffKernel<Qel16u>* const plain = ownAbsDiff_16u_C1R_W7;
    AbsDiffKernel<Qel16u>* const streaming = ownAbsDiff_16u_C1R_W7_B;
    ASSERT_NE(plain, streaming);
    kit::core().cacheSize = 6 * 10 * 20;
    EXPECT_EQ(plain, pick(byVolume, {10, 19}));
    EXPECT_EQ(streaming, pick(byVolume, {10, 20}));
    kit::core().cacheSize = 0;
    EXPECT_EQ(streaming, pick(byVolume, {1, 1})) << "a cache that is not known";
    kit::core().cacheSize = INT_MAX;
    EXPECT_EQ(streaming, pick(byVolume, {0x10000, 0x10000})) << "a volume beyond 32 bits";
    kit::core().reset();
}

}  // namespace
}  // namespace qel
