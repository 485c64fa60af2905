#include "frame/row_ring.h"

#include <gtest/gtest.h>

#include <vector>

#include "frame/turns.h"
#include "kit/image.h"

namespace qel {
namespace {

constexpr int kWidth = 5;

// What stands in row y: its number, or that of the row that stands for it.
int numberOf(const int* p) {
    for (int x = 1; x < kWidth; ++x) EXPECT_EQ(p[0], p[x]);
    return p[0];
}
void fill(int* p, int number) { std::fill_n(p, kWidth, number); }

struct Case {
    int height;
    int reach;
    int turn;
    int realAbove;  // rows outside of the image that the stage makes, too
    int realBelow;
};

// Goes through an image in turns, with a replicated edge above and rows of their own below. The storage has no more
// rows and pointers than the ring asks for.
void goesThrough(const Case& c) {
    const RowRange all = {-c.reach, c.height + c.reach};
    const RowRange made = {-c.realAbove, c.height + c.realBelow};
    const int kept = std::min(c.turn + 2 * c.reach, all.count());
    kit::ScratchBlock rowBlock(kept * kWidth * int{sizeof(int)});
    kit::ScratchBlock pointerBlock(int(RowRing<int>::pointersNeeded(kept, all)) * int{sizeof(int*)});
    const ScratchRows<int> rows(reinterpret_cast<int*>(rowBlock.flush()), int64_t{kept} * kWidth, kWidth, kept);
    RowRing<int> ring(rows, kept, reinterpret_cast<int**>(pointerBlock.flush()), all, made);

    int nextMade = made.begin;
    const auto stage = [&](int y, int* const* pRows, int count) {
        EXPECT_EQ(nextMade, y) << "rows come once, in order";
        EXPECT_LE(1, count);
        nextMade = y + count;
        EXPECT_LE(nextMade, made.end);
        for (int i = 0; i < count; ++i) fill(pRows[i], y + i);
    };
    const auto outside = [&](int y, int* own) {
        EXPECT_TRUE(y < made.begin || y >= made.end);
        if (y < 0) return ring.place(made.begin);
        fill(own, 1000 + y);
        return own;
    };
    for (int y = 0; y < c.height; y += c.turn) {
        const int count = std::min(c.turn, c.height - y);
        ring.fillUpTo(y + count + c.reach, stage, outside);
        int* const* const window = ring.window(y - c.reach);
        for (int i = 0; i < count + 2 * c.reach; ++i) {
            const int at = y - c.reach + i;
            const int want = at < made.begin ? made.begin : at >= made.end ? 1000 + at : at;
            ASSERT_EQ(want, numberOf(window[i])) << "row " << at << " in the turn from row " << y;
        }
    }
    EXPECT_EQ(made.end, nextMade);
    EXPECT_TRUE(rowBlock.intact() && pointerBlock.intact());
}

TEST(RowRing, GivesEveryWindow) {
    for (int height = 1; height < 20; ++height)
        for (int reach = 0; reach < 4; ++reach)
            for (int turn = 1; turn < 22; ++turn)
                for (int real = 0; real < 4; ++real) {
                    const Case c = {height, reach, turn, real & 1 ? reach : 0, real & 2 ? reach : 0};
                    ASSERT_NO_FATAL_FAILURE(goesThrough(c))
                        << height << " rows, reach " << reach << ", turns of " << turn << ", real rows " << real;
                }
}

TEST(RowRing, LeavesWhatIsThereAlready) {
    int storage[3 * kWidth];
    int* pointers[3];
    RowRing<int> ring(ScratchRows<int>(storage, 3 * kWidth, kWidth, 3), 3, pointers, {0, 3}, {0, 3});
    int calls = 0;
    const auto stage = [&](int, int* const*, int) { ++calls; };
    const auto outside = [](int, int* own) { return own; };
    ring.fillUpTo(2, stage, outside);
    ring.fillUpTo(2, stage, outside);
    ring.fillUpTo(1, stage, outside);
    EXPECT_EQ(1, calls);
    ring.fillUpTo(3, stage, outside);
    EXPECT_EQ(2, calls);
}

TEST(Turns, TakeAsManyRowsAsStayNear) {
    const int64_t bytes = nearestBytes();
    EXPECT_GT(nearestCacheSize(), bytes);
    EXPECT_EQ(16, rowsPerTurn(1, 0, 16));
    EXPECT_EQ(5, rowsPerTurn(bytes / 5, 0, 16));
    EXPECT_EQ(4, rowsPerTurn(bytes / 5, bytes / 5, 16));
    EXPECT_EQ(1, rowsPerTurn(bytes, bytes, 16));
    EXPECT_EQ(1, rowsPerTurn(int64_t{1} << 40, int64_t{1} << 40, 16));
}

}  // namespace
}  // namespace qel
