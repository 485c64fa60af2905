// Runs a test under each instruction set that the machine and the library have.
#ifndef QELCV_TESTS_KIT_EVERY_TARGET_H_
#define QELCV_TESTS_KIT_EVERY_TARGET_H_

#include <gtest/gtest.h>
#include <hwy/highway.h>
#include <hwy/targets.h>

#include <string>
#include <vector>

#include "kit/core_double.h"

namespace kit {

// The best one first. Sanitizers, under which all takes ten times as long, see the best and the least: kernels are one
// source, and these two have the longest and the shortest vectors.
inline std::vector<int64_t> targets() {
    std::vector<int64_t> all = hwy::SupportedAndGeneratedTargets();
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    if (all.size() > 2) all = {all.front(), all.back()};
#endif
    return all;
}

// Forces one instruction set and fails a test that ran no kernel or left memory behind.
class EveryTarget : public testing::TestWithParam<int64_t> {
protected:
    void SetUp() override {
        core().reset();
        allocatedBefore_ = core().allocated;
        hwy::SetSupportedTargetsForTest(GetParam());
        hwy::GetChosenTarget().DeInit();
    }

    void TearDown() override {
        EXPECT_TRUE(hwy::GetChosenTarget().IsInitialized()) << "no kernel ran";
        EXPECT_EQ(allocatedBefore_, core().allocated) << "memory was not freed";
        hwy::SetSupportedTargetsForTest(0);
        hwy::GetChosenTarget().DeInit();
        core().reset();
    }

private:
    int allocatedBefore_ = 0;
};

inline std::string targetName(const testing::TestParamInfo<int64_t>& info) { return hwy::TargetName(info.param); }

}  // namespace kit

#define ON_EVERY_TARGET(Suite) INSTANTIATE_TEST_SUITE_P(On, Suite, testing::ValuesIn(kit::targets()), kit::targetName)

#endif
