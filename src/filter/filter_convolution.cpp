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

// Rows of results that one turn gives: a strip or, where rows are long, a part of one. So few that what a turn reads
// and writes stays in the nearest cache: as many rows of the source and of the result, and the rows of the ring. Where
// that does not hold even one, as many as the column stage forms at once, for them to share what they load.
constexpr int kStripRows = 16;
constexpr int kRowsAtOnce = 4;
constexpr int64_t kNearestCache = 0xA000;
int rowsPerTurn(int64_t imageRowBytes, int64_t ringRowBytes, int taps) {
    for (int rows = kStripRows; rows > 0; rows /= 2)
        if (rows * imageRowBytes + (rows + taps - 1) * ringRowBytes <= kNearestCache) return rows;
    return kRowsAtOnce;
}

template <class Src, class Dst>
Access accessTo(QelSize size) {
    const int64_t pixels = int64_t{size.width} * size.height;
    const int64_t halfOfCache = owncvGetCacheSize() / 2;
    if (pixels >= halfOfCache) return Access::kStreaming;
    return pixels * int64_t{sizeof(Src) + sizeof(Dst)} >= halfOfCache ? Access::kAhead : Access::kCached;
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
void filterConvolution(const Src* pSrc, int srcStep, Dst* pDst, int dstStep, QelSize size,
                       const FixedPass<Src, Mid, Dst>& pass, int borderMode, Src borderValue, int divisor,
                       const SliceOf<Src>& image, void* pScratch) {
    const int taps = kRowKernels[pass.row].taps;
    const int reach = taps / 2;
    const int mode = borderMode & kBorderModeMask;
    const int rowSamples = intermediateStride(size.width) * (pass.row == kRowLaplacian3 ? 2 : 1);
    const int turnRows = rowsPerTurn(int64_t{size.width} * int64_t{sizeof(Src) + sizeof(Dst)},
                                     int64_t{rowSamples} * int64_t{sizeof(Mid)}, taps);
    const int rowsInUse = turnRows + taps - 1;

    // In the scratch: rows for the borders, then those of the ring, which has room for more than are in use; pointers.
    Carver carver(pScratch, 32);
    const int64_t room = int64_t{rowSamples} * (taps + ringRows(taps));
    const ScratchRows<Mid> rows(carver.take<Mid>(room), room, rowSamples, taps + rowsInUse);
    Mid** const pointers = carver.take<Mid*>(pointerCount(taps));

    const Access access = accessTo<Src, Dst>(size);
    FixedRowKernel<Src, Mid>* const rowStage = pass.rows;
    const auto filterRows = [&](const Src* p, Mid* const* pRows, int count) {
        rowStage(p, srcStep, pRows, {size.width, count}, mode, borderValue, access);
    };
    FixedColumnKernel<Mid, Dst>* const columnStage = pass.columns;
    const auto filterColumns = [&](Mid* const* pRows, int y, int count) {
        columnStage(pRows, row(pDst, dstStep, y), dstStep, {size.width, count}, divisor, access);
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
    int filled = 0;
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

template void filterConvolution(const Qel32f*, int, Qel32f*, int, QelSize, const FixedPass<Qel32f, Qel32f, Qel32f>&,
                                int, Qel32f, int, const SliceOf<Qel32f>&, void*);
template void filterConvolution(const Qel8u*, int, Qel16s*, int, QelSize, const FixedPass<Qel8u, Qel16s, Qel16s>&, int,
                                Qel8u, int, const SliceOf<Qel8u>&, void*);
template void filterConvolution(const Qel8u*, int, Qel8s*, int, QelSize, const FixedPass<Qel8u, Qel16s, Qel8s>&, int,
                                Qel8u, int, const SliceOf<Qel8u>&, void*);
template void filterConvolution(const Qel8u*, int, Qel8u*, int, QelSize, const FixedPass<Qel8u, Qel16s, Qel8u>&, int,
                                Qel8u, int, const SliceOf<Qel8u>&, void*);

}  // namespace qel
