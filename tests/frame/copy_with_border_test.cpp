#include "filter/copy_with_border.h"

#include <cstring>

#include "kit/core_double.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcore.h"

namespace qel {
namespace {

// The position in 0..n-1 that i stands for, walked to from outside one step at a time; -1 for the constant.
int placeOf(int mode, int i, int n) {
    while (i < 0 || i >= n) {
        switch (mode) {
            case qelBorderConst:
                return -1;
            case qelBorderRepl:
                return i < 0 ? 0 : n - 1;
            case qelBorderWrap:
                i += i < 0 ? n : -n;
                break;
            case qelBorderMirr:
                if (n == 1) return 0;
                i = i < 0 ? -i : 2 * (n - 1) - i;
                break;
            default:
                i = i < 0 ? -i - 1 : 2 * n - 1 - i;
        }
    }
    return i;
}

template <class T, class Function>
void copies(Function* function, int channels) {
    for (const uint32_t seed : kit::seeds(200)) {
        kit::Trial trial(seed);
        trial.size = {trial.between(1, 12), trial.between(1, 9)};
        const QelSize size = trial.size;
        const kit::Image<T> source(trial, channels);
        const BorderWidths border = {trial.between(0, 9), trial.between(0, 30), trial.between(0, 20),
                                     trial.between(0, 5)};
        const int mode = trial.between(0, 5);
        const T value[] = {T(1), T(2), T(3)};
        T* const block = function(source.data(), source.step(), size, mode, value, border);
        ASSERT_NE(nullptr, block) << trial;

        const int width = size.width + border.left + border.right;
        for (int y = -border.top; y < size.height + border.bottom; ++y) {
            for (int x = -border.left; x < size.width + border.right; ++x) {
                const int fromX = placeOf(mode == 5 ? 4 : mode, x, size.width);
                const int fromY = placeOf(mode == 5 ? 3 : mode, y, size.height);
                for (int c = 0; c < channels; ++c) {
                    const T want = fromX < 0 || fromY < 0 ? value[c] : source.at(fromX * channels + c, fromY);
                    const T got = block[((y + border.top) * width + x + border.left) * channels + c];
                    ASSERT_TRUE(kit::sameBits(want, got)) << trial << ", mode " << mode << ", at " << x << " " << y;
                }
            }
        }
        qelFree(block);
    }
}

class CopyWithBorder : public testing::Test {
protected:
    void SetUp() override { kit::core().reset(); }
    void TearDown() override {
        EXPECT_EQ(0, kit::core().allocated);
        kit::core().reset();
    }
};

TEST_F(CopyWithBorder, ownCopyWithBorder_8u_C1R) { copies<Qel8u>(ownCopyWithBorder_8u_C1R, 1); }
TEST_F(CopyWithBorder, ownCopyWithBorder_8u_C3R) { copies<Qel8u>(ownCopyWithBorder_8u_C3R, 3); }
TEST_F(CopyWithBorder, ownCopyWithBorder_16u_C1R) { copies<Qel16u>(ownCopyWithBorder_16u_C1R, 1); }
TEST_F(CopyWithBorder, ownCopyWithBorder_16u_C3R) { copies<Qel16u>(ownCopyWithBorder_16u_C3R, 3); }
TEST_F(CopyWithBorder, ownCopyWithBorder_32f_C1R) { copies<Qel32f>(ownCopyWithBorder_32f_C1R, 1); }
TEST_F(CopyWithBorder, ownCopyWithBorder_32f_C3R) { copies<Qel32f>(ownCopyWithBorder_32f_C3R, 3); }

TEST_F(CopyWithBorder, IsNullWithoutMemory) {
    const Qel8u source[3] = {};
    kit::core().allocationsLeft = 0;
    EXPECT_EQ(nullptr, ownCopyWithBorder_8u_C1R(source, 1, {1, 1}, qelBorderMirr, source, {1, 1, 1, 1}));
    kit::core().reset();
    EXPECT_EQ(nullptr, ownCopyWithBorder_8u_C1R(source, 1, {1, 1}, 1, source, {0x10000, 0, 0x10000, 0}))
        << "the byte count does not wrap";
}

}  // namespace
}  // namespace qel
