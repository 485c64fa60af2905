// What the filters with fixed kernels share: how a call runs, and how large its scratch is.
#ifndef QELCV_FILTER_FIXED_FILTERS_H_
#define QELCV_FILTER_FIXED_FILTERS_H_

#include "filter/filter_convolution.h"
#include "filter/pipeline_scratch.h"
#include "frame/check.h"

namespace qel {

// Codes of the square masks: eleven times the number of taps.
constexpr int kMask3x3 = 33;
constexpr int kMask5x5 = 55;
constexpr bool isMask(int mask) { return mask == kMask3x3 || mask == kMask5x5; }
constexpr int tapsOf(int mask) { return mask / 11; }

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

template <class Src, class Dst>
qelStatus checkFixed(const FixedCall<Src, Dst>& call) {
    const RowOf srcRow = rowOf<Src>(call.roiSize.width);
    const RowOf dstRow = rowOf<Dst>(call.roiSize.width);
    const int flags = call.borderMode & 0xFFF0;
    return Check()
        .pointers(call.source.p, call.dst.p, call.pBuffer)
        .size(call.roiSize)
        .stepSizes(srcRow, call.source.step)
        .stepSizes(dstRow, call.dst.step)
        .stepAlignments(srcRow, call.source.step)
        .stepAlignments(dstRow, call.dst.step)
        .require(isBorderMode(call.borderMode & kBorderModeMask), qelStatusBadArg)
        .require(flags == 0 || (flags & (kRowsAboveInMemory | kRowsBelowInMemory)) != 0, qelStatusBadArg)
        .require(call.divisor != 0, qelStatusBadArg)
        .require(isMask(call.mask), qelStatusBadMaskSize)
        .status();
}

constexpr ParallelFromRows kFixed = {.width = 256, .height = 256, .heightPerThread = 5};

// A filter's routines for 3x3, then those for 5x5 if there are such.
template <class Src, class Mid, class Dst, size_t n>
qelStatus fixedFilter(const FixedCall<Src, Dst>& call, const FixedFilter<Src, Mid, Dst> (&filters)[n],
                      const FixedScratch& scratch, ParallelFromRows parallelFrom = kFixed) {
    const qelStatus status = checkFixed(call);
    if (status != qelStatusOk) return status;

    const auto& filter = filters[call.mask == kMask3x3 ? 0 : n - 1];
    const int64_t scratchBytes = fixedScratchBytes(call.roiSize, tapsOf(call.mask), scratch);
    forRows(call.roiSize, parallelFrom.reachedBy(call.roiSize), [&](const Share& share) {
        filterConvolution(call, filter, share, call.pBuffer + scratchBytes * share.thread);
    });
    return qelStatusOk;
}

}  // namespace qel

#endif
