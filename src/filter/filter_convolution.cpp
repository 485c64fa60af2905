#include "filter/filter_convolution.h"

#include <algorithm>
#include <limits>
#include <type_traits>

#include "frame/row_ring.h"
#include "frame/scratch.h"
#include "frame/turns.h"

namespace qel {
namespace {

// What the row stage makes of a row that is borderValue throughout. 32f sums stay as they are.
template <class Mid, class Src>
Mid filteredConstant(int sum, Src borderValue) {
    if constexpr (std::is_floating_point_v<Mid>) {
        return static_cast<Mid>(sum) * borderValue;
    } else {
        return static_cast<Mid>(
            std::clamp<int>(sum * borderValue, std::numeric_limits<Mid>::min(), std::numeric_limits<Mid>::max()));
    }
}

template <class Src, class Mid>
void fillConstant(const FixedRows<Src, Mid>& rows, Mid* out, int stride, Src borderValue) {
    for (int half = 0; half < rows.halves; ++half)
        std::fill_n(out + half * stride, stride, filteredConstant<Mid>(rows.sums[half], borderValue));
}

// Where rows of the ring begin in a line of the cache: as those of the result. Not where rows are so short that a
// vector ahead of the aligned ones costs more than stores that straddle lines.
template <class Mid, class Dst>
int phaseOfRing(const Dst* pDst, int width) {
    constexpr int kShortBytes = 512;
    return width * int64_t{sizeof(Mid)} < kShortBytes ? 0 : phaseOf<Mid>(pDst, sizeof(Dst));
}

// A turn moves rows of the source, of the ring and of the result.
template <class Src, class Mid, class Dst>
int rowsOfTurn(const FixedFilter<Src, Mid, Dst>& filter, int width, int rowSamples) {
    const int64_t rowBytes = int64_t{rowSamples} * int64_t{sizeof(Mid)};
    return rowsPerTurn(rowBytes + width * int64_t{sizeof(Src) + sizeof(Dst)}, rowBytes * (filter.rows.taps - 1),
                       kStripRows);
}

}  // namespace

template <class Src, class Mid, class Dst>
void filterConvolution(const FixedCall<Src, Dst>& call, const FixedFilter<Src, Mid, Dst>& filter, const Share& share,
                       void* pScratch) {
    const int width = share.size.width;
    const int end = share.y + share.size.height;
    const int taps = filter.rows.taps;
    const int reach = taps / 2;
    const int stride = intermediateStride(width);
    const int rowSamples = stride * filter.rows.halves;

    const int turn = rowsOfTurn(filter, width, rowSamples);
    const int kept = turn + taps - 1;

    Carver carver(pScratch, 32);
    const int64_t room = int64_t{rowSamples} * (taps + ringRows(taps));
    const ScratchRows<Mid> rows(carver.take<Mid>(room), room, rowSamples, kept, phaseOfRing<Mid>(call.dst.p, width));
    const Border<Src> border = {call.borderMode & kBorderModeMask, call.borderValue};
    const bool above = share.y > 0 || (call.borderMode & kRowsAboveInMemory) != 0;
    const bool below = end < call.roiSize.height || (call.borderMode & kRowsBelowInMemory) != 0;
    RowRing<Mid> ring(rows, kept, carver.take<Mid*>(pointerCount(taps)), {share.y - reach, end + reach},
                      {above ? share.y - reach : share.y, below ? end + reach : end});

    FixedRowKernel<Src, Mid>* const filterRows = filter.rows.kernel;
    const auto rowStage = [&](int y, Mid* const* pRows, int count) {
        filterRows(call.source.from(y), pRows, {width, count}, border);
    };
    const auto outside = [&](int y, Mid* own) {
        const int index = extendedIndex(border.mode, y, call.roiSize.height);
        if (border.mode == qelBorderRepl) return ring.place(index);
        index == kConstantSample ? fillConstant(filter.rows, own, stride, border.value) : rowStage(index, &own, 1);
        return own;
    };
    FixedColumnKernel<Mid, Dst>* const filterColumns = filter.columns;
    const bool bypassesCache = outgrowsCache(2, share.size);
    for (int y = share.y; y < end; y += turn) {
        const int count = std::min(turn, end - y);
        ring.fillUpTo(y + count + reach, rowStage, outside);
        filterColumns(ring.window(y - reach), call.dst.from(y), {width, count}, call.divisor, bypassesCache);
    }
}

#define INSTANTIATE(Src, Mid, Dst) \
    template void filterConvolution(const FixedCall<Src, Dst>&, const FixedFilter<Src, Mid, Dst>&, const Share&, void*);
INSTANTIATE(Qel32f, Qel32f, Qel32f)
INSTANTIATE(Qel8u, Qel16s, Qel16s)
INSTANTIATE(Qel8u, Qel16s, Qel8s)
INSTANTIATE(Qel8u, Qel16s, Qel8u)
#undef INSTANTIATE

}  // namespace qel
