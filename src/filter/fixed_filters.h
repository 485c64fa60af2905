// What the filters with fixed kernels share: how a call runs, and how large its scratch is.
#ifndef QELCV_FILTER_FIXED_FILTERS_H_
#define QELCV_FILTER_FIXED_FILTERS_H_

#include "filter/border_mode.h"
#include "filter/filter_convolution.h"
#include "filter/pipeline_scratch.h"
#include "frame/check.h"
#include "frame/rows.h"

namespace qel {

// Codes of the square masks: eleven times the number of taps.
constexpr int kMask3x3 = 33;
constexpr int kMask5x5 = 55;
constexpr bool isMask(int mask) { return mask == kMask3x3 || mask == kMask5x5; }
constexpr int tapsOf(int mask) { return mask / 11; }

// A filter for one mask, as entries of the tables of its type.
struct FixedFilter {
    int row;
    int column;
};

// For 3x3 and 5x5.
using FixedFilters = FixedFilter[2];
inline const FixedFilter& ofMask(const FixedFilters& filters, int mask) { return filters[mask == kMask5x5]; }

// The documented scratch of a family, for one thread. Sizes of 32-bit builds: a pointer there is 4 bytes.
struct FixedScratch {
    int blockBytes;  // of the intermediate values of 16 samples
    int tapBytes;
    int constant;  // room for the engine's pointers and for aligning its pieces is in it
    int tail;
    bool rows32f;
};
constexpr FixedScratch kFixed_32f = {64, 12, 248, 32, true};
constexpr FixedScratch kFixed_8u16s = {32, 12, 248, 32, false};
constexpr FixedScratch kFixed_8u8s = {32, 12, 184, 32, false};

inline int64_t fixedScratchBytes(QelSize roiSize, int taps, const FixedScratch& scratch) {
    const int64_t blocks = (int64_t{roiSize.width} + 15) >> 4;
    const int rowCount = taps + ringRows(taps);
    const int64_t engine = blocks * scratch.blockBytes * rowCount + scratch.tapBytes * taps + scratch.constant +
                           pointerCount(taps) * (int64_t{sizeof(void*)} - 4);
    const int64_t rows = PipelineScratch(roiSize, taps, scratch.rows32f ? taps * 64 + 64 : taps * 36 + 112).bytes();
    const int64_t columns =
        scratch.rows32f ? 32 : PipelineScratch(roiSize, taps, alignUp(int64_t{roiSize.width}, 4) * 12 + 32).bytes();
    return engine + rows + columns + scratch.tail;
}

inline qelStatus fixedBufferSize(QelSize roiSize, int mask, int* pBufferSize, const FixedScratch& scratch,
                                 int64_t extraBytes = 0) {
    const qelStatus status =
        Check().pointers(pBufferSize).size(roiSize).require(isMask(mask), qelStatusBadMaskSize).status();
    if (status != qelStatusOk) return status;
    const int64_t bytes = fixedScratchBytes(roiSize, tapsOf(mask), scratch);
    // Terms that fit an int each have a sum and a product that fit 64 bits.
    if (bytes > INT_MAX || extraBytes > INT_MAX) return qelStatusOverflow;
    return writeBufferSize((bytes + extraBytes) * owncvGetMaxNumThreads(), pBufferSize);
}

// The arguments of a call.
template <class Src, class Dst>
struct FixedCall {
    const Src* pSrc;
    int srcStep;
    Dst* pDst;
    int dstStep;
    QelSize roiSize;
    int mask;
    int borderMode;
    Src borderValue;
    int divisor;
    Qel8u* pBuffer;
};

template <class Src, class Dst>
qelStatus checkFixed(const FixedCall<Src, Dst>& call) {
    const RowOf srcRow = rowOf<Src>(call.roiSize.width);
    const RowOf dstRow = rowOf<Dst>(call.roiSize.width);
    const int flags = call.borderMode & 0xFFF0;
    return Check()
        .pointers(call.pSrc, call.pDst, call.pBuffer)
        .size(call.roiSize)
        .stepSizes(srcRow, call.srcStep)
        .stepSizes(dstRow, call.dstStep)
        .stepAlignments(srcRow, call.srcStep)
        .stepAlignments(dstRow, call.dstStep)
        .require(isBorderMode(call.borderMode & kBorderModeMask), qelStatusBadArg)
        .require(flags == 0 || (flags & (kRowsAboveInMemory | kRowsBelowInMemory)) != 0, qelStatusBadArg)
        .require(call.divisor != 0, qelStatusBadArg)
        .require(isMask(call.mask), qelStatusBadMaskSize)
        .status();
}

// Threads pay for regions of at least this height, a width of 256, and five rows for each thread.
constexpr int kFixedMinHeight = 256;

inline bool fixedInParallel(QelSize roiSize, int minHeight) {
    const int threads = owncvGetMaxNumThreads();
    return threads > 1 && roiSize.height >= 5 * int64_t{threads} && roiSize.width >= 256 &&
           roiSize.height >= minHeight && runomp() != 0;
}

// The call for one thread's rows. At a seam the rows of the neighbour are read from the image.
template <class Src, class Dst>
FixedCall<Src, Dst> slice(const FixedCall<Src, Dst>& call, const Share& share, int64_t scratchBytes) {
    FixedCall<Src, Dst> part = call;
    part.pSrc = row(call.pSrc, call.srcStep, share.y);
    part.pDst = row(call.pDst, call.dstStep, share.y);
    part.roiSize = share.size;
    if (share.y > 0) part.borderMode |= kRowsAboveInMemory;
    if (share.y + share.size.height < call.roiSize.height) part.borderMode |= kRowsBelowInMemory;
    part.pBuffer = call.pBuffer + scratchBytes * share.thread;
    return part;
}

template <class Src, class Dst>
int modeOf(const FixedCall<Src, Dst>& call) {
    return call.borderMode & kBorderModeMask;
}

inline FixedPass<Qel32f, Qel32f, Qel32f> passOf(const FixedFilter& filter, const FixedCall<Qel32f, Qel32f>& call) {
    return {filter.row, owntabRow_32f[filter.row][modeOf(call)], owntabColumn_32f[filter.column]};
}
inline FixedPass<Qel8u, Qel16s, Qel16s> passOf(const FixedFilter& filter, const FixedCall<Qel8u, Qel16s>& call) {
    return {filter.row, owntabRow_8u16s[filter.row][modeOf(call)], owntabColumn_8u16s[filter.column]};
}
inline FixedPass<Qel8u, Qel16s, Qel8s> passOf(const FixedFilter& filter, const FixedCall<Qel8u, Qel8s>& call) {
    return {filter.row, owntabRow_8u16s[filter.row][modeOf(call)], owntabColumn_8u8s[filter.column]};
}
inline FixedPass<Qel8u, Qel16s, Qel8u> passOf(const FixedFilter& filter, const FixedCall<Qel8u, Qel8u>& call) {
    return {filter.row, owntabRow_8u16s[filter.row][modeOf(call)], owntabColumn_8u[filter.column]};
}

// A pass over one thread's rows, by stripes of columns.
template <class Src, class Dst>
void runPass(const FixedCall<Src, Dst>& part, const FixedFilter& filter, const SliceOf<Src>& image) {
    const auto pass = passOf(filter, part);
    const auto [width, height] = part.roiSize;
    const int stripe = stripeWidth(pass, part.roiSize);
    for (int x = 0; x < width; x += stripe) {
        const int columns = std::min(stripe, width - x);
        filterConvolution(part.pSrc + x, part.srcStep, part.pDst + x, part.dstStep, {columns, height},
                          {x, width - x - columns}, pass, part.borderMode, part.borderValue, part.divisor,
                          {image.pSrc + x, image.height, image.y}, part.pBuffer);
    }
}

// A filter of one pass.
template <class Src, class Dst>
qelStatus fixedFilter(const FixedCall<Src, Dst>& call, const FixedFilters& filters, const FixedScratch& scratch) {
    const qelStatus status = checkFixed(call);
    if (status != qelStatusOk) return status;

    const int64_t scratchBytes = fixedScratchBytes(call.roiSize, tapsOf(call.mask), scratch);
    forRows(call.roiSize, fixedInParallel(call.roiSize, kFixedMinHeight), [&](const Share& s) {
        runPass(slice(call, s, scratchBytes), ofMask(filters, call.mask), {call.pSrc, call.roiSize.height, s.y});
    });
    return qelStatusOk;
}

}  // namespace qel

#endif
