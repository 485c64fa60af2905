#include "filter/filter_convolution.h"

#include <algorithm>
#include <limits>
#include <type_traits>

#include "filter/border_mode.h"
#include "frame/scratch.h"
#include "frame/threads.h"

namespace qel {
namespace {

// The kernels along the rows, in the order of RowIndex.
struct RowKernelFacts {
    int taps;
    int sum;
};
template <size_t kTaps>
constexpr RowKernelFacts facts(const Qel16s (&kernel)[kTaps]) {
    int sum = 0;
    for (const Qel16s k : kernel) sum += k;
    return {static_cast<int>(kTaps), sum};
}
constexpr RowKernelFacts kRowKernels[] = {facts(kerDx_3),  facts(kerScharr_3), facts(kerDxNeg_3), facts(kerDxNeg_5),
                                          facts(kerD2x_3), facts(kerD2x_5),    facts(kerSobel_3), facts(kerSobel_5),
                                          facts(kerAvr_3), facts(kerAvr_5),    facts(kerLap_3)};

// How the engine goes through an image, by the bytes that it moves for each column.
struct Turns {
    int imageBytes;     // a sample of the source and one of the result
    int filteredBytes;  // what the row stage makes of a sample
    int taps;

    // A turn of so many rows of results stays in the nearest cache: what it reads and writes, and the filtered rows
    // that meet in it.
    static constexpr int kNearestCache = 0xA000;
    int columnBytes(int rows) const { return rows * imageBytes + (rows + taps - 1) * filteredBytes; }
    bool stay(int rows, int width) const { return int64_t{width} * columnBytes(rows) <= kNearestCache; }

    // A single row still pays if at least the filtered rows that it is made of stay there.
    bool singleRowPays(int width) const { return int64_t{width} * (taps * filteredBytes) <= 0x9000; }
};

template <class Src, class Mid, class Dst>
Turns turnsOf(const FixedPass<Src, Mid, Dst>& pass) {
    const int filteredRows = pass.row == kRowLaplacian3 ? 2 : 1;
    return {int{sizeof(Src) + sizeof(Dst)}, filteredRows * int{sizeof(Mid)}, kRowKernels[pass.row].taps};
}

template <class Src, class Dst>
Access accessTo(QelSize size) {
    const int64_t pixels = int64_t{size.width} * size.height;
    const int64_t halfOfCache = owncvGetCacheSize() / 2;
    if (pixels >= halfOfCache) return Access::kStreaming;
    return pixels * int64_t{sizeof(Src) + sizeof(Dst)} >= halfOfCache ? Access::kAhead : Access::kCached;
}

// Rows of results that a turn gives: a strip or, where rows are long, the part of one that stays in the nearest cache.
// Where not even one row does, as many as the column stage forms at once, for them to share what they load. So it is
// for results that bypass the caches, too: single rows take up to 1.7 times as long there.
constexpr int kStripRows = 16;
constexpr int kRowsAtOnce = 4;
int rowsPerTurn(const Turns& turns, int width, Access access) {
    const int fewest = access == Access::kStreaming ? kRowsAtOnce : 2;
    for (int rows = kStripRows; rows >= fewest; rows /= 2)
        if (turns.stay(rows, width)) return rows;
    return turns.singleRowPays(width) && access != Access::kStreaming ? 1 : kRowsAtOnce;
}

// How far ahead of its turn the source is asked for. Along the rows of a cached image, the machine sees to that by
// itself. It does not down a stripe, where the same columns come next.
std::ptrdiff_t bytesAhead(Access access, Beside beside, int turnRows, int srcStep) {
    constexpr std::ptrdiff_t kAlongRow = 4096;
    if (access != Access::kCached) return kAlongRow;
    const bool isStripe = beside.before > 0 || beside.behind > 0;
    return isStripe ? std::ptrdiff_t{turnRows} * srcStep : 0;
}

// What the row stage makes of a row that is borderValue throughout. 32f sums stay as they are.
template <class Mid, class Src>
Mid filteredConstant(int rowSum, Src borderValue) {
    if constexpr (std::is_floating_point_v<Mid>) {
        return static_cast<Mid>(rowSum) * borderValue;
    } else {
        return static_cast<Mid>(
            std::clamp<int>(rowSum * borderValue, std::numeric_limits<Mid>::min(), std::numeric_limits<Mid>::max()));
    }
}

}  // namespace

template <class Src, class Mid, class Dst>
int stripeWidth(const FixedPass<Src, Mid, Dst>& pass, QelSize size) {
    const Turns turns = turnsOf(pass);
    const bool near = turns.stay(2, size.width) || turns.singleRowPays(size.width);
    if (near || accessTo<Src, Dst>(size) != Access::kCached) return size.width;
    constexpr int kAlignment = 64;
    const int widest = Turns::kNearestCache / turns.columnBytes(kRowsAtOnce) & -kAlignment;
    const int stripes = (size.width + widest - 1) / widest;
    return static_cast<int>(alignUp(int64_t{(size.width + stripes - 1) / stripes}, kAlignment));
}

template <class Src, class Mid, class Dst>
void filterConvolution(const Src* pSrc, int srcStep, Dst* pDst, int dstStep, QelSize size, Beside beside,
                       const FixedPass<Src, Mid, Dst>& pass, int borderMode, Src borderValue, int divisor,
                       const SliceOf<Src>& image, void* pScratch) {
    const int taps = kRowKernels[pass.row].taps;
    const int reach = taps / 2;
    const int mode = borderMode & kBorderModeMask;
    const int rowSamples = intermediateStride(size.width) * (pass.row == kRowLaplacian3 ? 2 : 1);
    const Access access = accessTo<Src, Dst>(size);
    const int turnRows = rowsPerTurn(turnsOf(pass), size.width, access);
    const int rowsInUse = turnRows + taps - 1;

    // In the scratch: rows for the borders, then those of the ring, which has room for more than are in use; pointers.
    Carver carver(pScratch, 32);
    const int64_t room = int64_t{rowSamples} * (taps + ringRows(taps));
    const ScratchRows<Mid> rows(carver.take<Mid>(room), room, rowSamples, taps + rowsInUse);
    Mid** const pointers = carver.take<Mid*>(pointerCount(taps));

    const std::ptrdiff_t ahead = bytesAhead(access, beside, turnRows, srcStep);
    FixedRowKernel<Src, Mid>* const rowStage = pass.rows;
    const auto filterRows = [&](const Src* p, Mid* const* pRows, int count) {
        rowStage(p, srcStep, pRows, {size.width, count}, beside, borderValue, ahead);
    };
    int filled = 0;
    FixedColumnKernel<Mid, Dst>* const columnStage = pass.columns;
    const auto filterColumns = [&](Mid* const* pRows, int y, int count) {
        columnStage(pRows, row(pDst, dstStep, y), dstStep, {size.width, count}, divisor, access,
                    {reinterpret_cast<const Qel8u*>(row(pSrc, srcStep, filled)), srcStep});
    };

    // The filtered row y of the slice, which lies above or below it; edgeRow is the filtered row at that edge.
    int borderRows = 0;
    const auto borderRow = [&](int y, int inMemory, Mid* edgeRow) {
        if (!inMemory && mode == qelBorderRepl) return edgeRow;
        Mid* const filtered = rows[borderRows++];
        if (inMemory) {
            filterRows(row(pSrc, srcStep, y), &filtered, 1);
        } else if (mode == qelBorderConst) {
            std::fill_n(filtered, rowSamples, filteredConstant<Mid>(kRowKernels[pass.row].sum, borderValue));
        } else {
            filterRows(row(image.pSrc, srcStep, extendedIndex(mode, image.y + y, image.height)), &filtered, 1);
        }
        return filtered;
    };

    // The upper border stands ahead of the ring, and the ring twice in the array: any run of rows is a run of pointers.
    const int pointersInUse = std::min(pointerCount(taps), taps + size.height);
    for (int i = taps, next = 0; i < pointersInUse; ++i) {
        pointers[i] = rows[taps + next];
        if (++next == rowsInUse) next = 0;
    }
    for (int i = 1; i <= reach; ++i)
        pointers[taps - i] = borderRow(-i, borderMode & kRowsAboveInMemory, pointers[taps]);

    int read = taps - reach;
    int write = taps;
    int done = 0;
    while (filled < size.height) {
        const int turn = std::min(size.height - filled, filled == 0 ? turnRows + taps - 1 - reach : turnRows);
        filterRows(row(pSrc, srcStep, filled), pointers + write, turn);
        filled += turn;
        write += turn;
        const int ready = write - read - (taps - 1);
        if (ready > 0) {
            filterColumns(pointers + read, done, ready);
            done += ready;
            read += ready;
        }
        if (write + std::max(turnRows, reach) > pointerCount(taps)) {
            write -= rowsInUse;
            read -= rowsInUse;
        }
    }
    Mid* const lastRow = pointers[write - 1];
    for (int i = 0; i < reach; ++i)
        pointers[write + i] = borderRow(size.height + i, borderMode & kRowsBelowInMemory, lastRow);
    filterColumns(pointers + read, done, size.height - done);
}

#define INSTANTIATE(Src, Mid, Dst)                                                                                     \
    template int stripeWidth(const FixedPass<Src, Mid, Dst>&, QelSize);                                                \
    template void filterConvolution(const Src*, int, Dst*, int, QelSize, Beside, const FixedPass<Src, Mid, Dst>&, int, \
                                    Src, int, const SliceOf<Src>&, void*);
INSTANTIATE(Qel32f, Qel32f, Qel32f)
INSTANTIATE(Qel8u, Qel16s, Qel16s)
INSTANTIATE(Qel8u, Qel16s, Qel8s)
INSTANTIATE(Qel8u, Qel16s, Qel8u)
#undef INSTANTIATE

}  // namespace qel
