#include "frame/scratch.h"

#include <gtest/gtest.h>

#include <vector>

#include "kit/core_double.h"
#include "kit/image.h"
#include "qelcv/types.h"

namespace qel {
namespace {

TEST(Scratch, IsReleasedOnEveryWayOut) {
    kit::core().reset();
    {
        const Scratch<Qel64f> scratch(10);
        ASSERT_TRUE(scratch);
        EXPECT_EQ(1, kit::core().allocated);
    }
    EXPECT_EQ(0, kit::core().allocated);
}

TEST(Scratch, IsNullWhereThereIsNoMemory) {
    kit::core().reset();
    EXPECT_FALSE(Scratch<Qel8u>(0));
    EXPECT_FALSE(Scratch<Qel8u>(-1));
    EXPECT_FALSE(Scratch<Qel64f>(int64_t{INT_MAX} / 8 + 1)) << "the byte count does not wrap";
    EXPECT_FALSE(Scratch<Qel64f>(int64_t{1} << 61));
    kit::core().allocationsLeft = 0;
    EXPECT_FALSE(Scratch<Qel8u>(1));
    kit::core().reset();
}

// A layout as families write it: once, for the size query and for the call.
struct Layout {
    explicit Layout(void* pBuffer, int width) {
        Carver carver(pBuffer);
        line = carver.take<Qel16s>(width);
        rows = carver.take<Qel8u*>(3);
        tail = carver.take<Qel8u>(1);
        bytes = carver.bytes();
    }
    Qel16s* line;
    Qel8u** rows;
    Qel8u* tail;
    int64_t bytes;
};

TEST(Carver, SizeQueryAndCallAgree) {
    for (int width = 1; width < 70; ++width) {
        const int bytes = static_cast<int>(Layout(nullptr, width).bytes);
        kit::ScratchBlock block(bytes, size_t(width % 16));
        for (unsigned char* const start : {block.odd(), block.flush()}) {
            const Layout layout(start, width);
            EXPECT_EQ(bytes, layout.bytes);
            EXPECT_EQ(0U, reinterpret_cast<uintptr_t>(layout.line) % 16);
            EXPECT_EQ(0U, reinterpret_cast<uintptr_t>(layout.rows) % 16);
            std::fill_n(layout.line, width, Qel16s{-1});
            std::fill_n(layout.rows, 3, start);
            *layout.tail = 7;
            EXPECT_EQ(-1, layout.line[width - 1]);
            EXPECT_EQ(start, layout.rows[0]);
        }
        EXPECT_TRUE(block.intact());
    }
}

TEST(Carver, AlignsUpwards) {
    EXPECT_EQ(0, alignUp(int64_t{0}, 16));
    EXPECT_EQ(16, alignUp(int64_t{1}, 16));
    EXPECT_EQ(int64_t{1} << 33, alignUp((int64_t{1} << 33) - 1, 32));
}

TEST(ScratchRows, BeginWithLinesWhereThereIsRoom) {
    alignas(64) Qel32f block[16 + 5 * 32];
    Qel32f* const piece = block + 4;  // 12 samples ahead of a line
    const ScratchRows<Qel32f> lines(piece, 12 + 5 * 32, 17, 5);
    const ScratchRows<Qel32f> packed(piece, 12 + 5 * 32 - 1, 17, 5);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(block + 16 + 32 * i, lines[i]) << i;
        EXPECT_EQ(piece + 17 * i, packed[i]) << i;
    }
}

TEST(ScratchRows, BeginWhereTheirPartnersDo) {
    alignas(64) Qel16s block[3 * 64];
    alignas(64) Qel8u partner[64] = {};
    // The fifth byte of 32 that fill a line of 16s, and of the next such line.
    EXPECT_EQ(5, phaseOf<Qel16s>(partner + 5, sizeof(Qel8u)));
    EXPECT_EQ(5, phaseOf<Qel16s>(partner + 37, sizeof(Qel8u)));
    const ScratchRows<Qel16s> rows(block, 3 * 64, 40, 2, 5);
    EXPECT_EQ(block + 5, rows[0]);
    EXPECT_EQ(block + 64 + 5, rows[1]);
    const ScratchRows<Qel16s> packed(block, 2 * 64 + 4, 40, 2, 5);
    EXPECT_EQ(block, packed[0]) << "no room to begin there";
    EXPECT_EQ(block + 40, packed[1]);
}

TEST(BufferSize, DoesNotWrap) {
    int size = -1;
    EXPECT_EQ(qelStatusOk, writeBufferSize(INT_MAX, &size));
    EXPECT_EQ(INT_MAX, size);
    EXPECT_EQ(qelStatusOverflow, writeBufferSize(int64_t{INT_MAX} + 1, &size));
    EXPECT_EQ(INT_MAX, size);
}

}  // namespace
}  // namespace qel
