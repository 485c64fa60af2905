#include "qelcv/version.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstring>

#include "frame/constants.h"

namespace {

TEST(Version, qelcvGetLibVersion) {
    const QelVersionRecord* const version = qelcvGetLibVersion();
    ASSERT_NE(nullptr, version);
    EXPECT_EQ(version, qelcvGetLibVersion());
    EXPECT_EQ(6, version->majorVersion);
    EXPECT_EQ(1, version->minorVersion);
    EXPECT_EQ(137, version->buildMajor);
    EXPECT_EQ(831, version->buildNumber);
    EXPECT_EQ(0, std::memcmp("t7\0\0", version->targetTag, 4));
    EXPECT_STREQ("libqelcvt7.so.6.1", version->libraryName);
    EXPECT_STREQ("6.1 build 137.56", version->versionText);
    EXPECT_STREQ("Mar 17 2010", version->buildDate);
}

TEST(Constants, HaveTheirBits) {
    EXPECT_EQ(0xFFC00000U, std::bit_cast<uint32_t>(qel::qelConstantOfNAN_32f));
    EXPECT_EQ(0x7F800000U, std::bit_cast<uint32_t>(qel::qelConstantOfINF_32f));
    EXPECT_EQ(0xFF800000U, std::bit_cast<uint32_t>(qel::qelConstantOfINF_NEG_32f));
    EXPECT_EQ(0xFFF8000000000000U, std::bit_cast<uint64_t>(qel::qelConstantOfNAN_64f));
    EXPECT_EQ(0x7FF0000000000000U, std::bit_cast<uint64_t>(qel::qelConstantOfINF_64f));
    EXPECT_EQ(0xFFF0000000000000U, std::bit_cast<uint64_t>(qel::qelConstantOfINF_NEG_64f));
}

}  // namespace
