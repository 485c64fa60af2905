#include "filter/border_mode.h"

#include <gtest/gtest.h>
#include <limits>

#include <string>

namespace qel {
namespace {

// The row "abcd" (or shorter) with 9 samples of border on either side; '.' is the constant.
std::string extended(int mode, const std::string& row) {
    std::string text;
    const int n = static_cast<int>(row.size());
    for (int i = -9; i < n + 9; ++i) {
        const int index = extendedIndex(mode, i, n);
        text += index == kConstantSample ? '.' : row[size_t(index)];
    }
    return text;
}

TEST(BorderMode, Constant) { EXPECT_EQ(".........abcd.........", extended(qelBorderConst, "abcd")); }
TEST(BorderMode, Replicate) {
    EXPECT_EQ(
        "aaaaaaaaaabcddddddddd"
        "d",
        extended(qelBorderRepl, "abcd"));
    EXPECT_EQ("aaaaaaaaaaaaaaaaaaa", extended(qelBorderRepl, "a"));
}
TEST(BorderMode, Wrap) {
    EXPECT_EQ("dabcdabcdabcdabcdabcda", extended(qelBorderWrap, "abcd"));
    EXPECT_EQ("aaaaaaaaaaaaaaaaaaa", extended(qelBorderWrap, "a"));
}
TEST(BorderMode, Mirror) {
    EXPECT_EQ("dcbabcdcbabcdcbabcdcba", extended(qelBorderMirr, "abcd"));
    EXPECT_EQ("babababababababababa", extended(qelBorderMirr, "ab"));
    EXPECT_EQ("aaaaaaaaaaaaaaaaaaa", extended(qelBorderMirr, "a"));
}
TEST(BorderMode, MirrorWithTheEdge) {
    EXPECT_EQ("aabcddcbaabcddcbaabcdd", extended(qelBorderMirrR, "abcd"));
    EXPECT_EQ("aaaaaaaaaaaaaaaaaaa", extended(qelBorderMirrR, "a"));
}
TEST(BorderMode, RowsAsLongAsAnIntCounts) {
    constexpr int kMax = std::numeric_limits<int>::max();
    for (const int n : {1 << 30, (1 << 30) + 76, kMax}) {
        EXPECT_EQ(1, extendedIndex(qelBorderMirr, -1, n));
        EXPECT_EQ(0, extendedIndex(qelBorderMirrR, -1, n));
        EXPECT_EQ(n - 1, extendedIndex(qelBorderWrap, -1, n));
        EXPECT_EQ(n - 1, extendedIndex(qelBorderRepl, kMax, n));
    }
    EXPECT_EQ(kMax - 4, extendedIndex(qelBorderMirr, kMax, kMax - 1));
    EXPECT_EQ(kMax - 2, extendedIndex(qelBorderMirrR, kMax - 1, kMax - 1));
}
TEST(BorderMode, FiveModes) {
    EXPECT_FALSE(isBorderMode(-1));
    EXPECT_TRUE(isBorderMode(qelBorderConst));
    EXPECT_TRUE(isBorderMode(qelBorderMirrR));
    EXPECT_FALSE(isBorderMode(5));
}

}  // namespace
}  // namespace qel
