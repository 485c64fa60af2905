#include <algorithm>
#include <cmath>

#include "filter/border_mode.h"
#include "filter/pipeline_scratch.h"
#include "frame/check.h"
#include "frame/kernel.h"
#include "frame/rows.h"
#include "qelcv/filter.h"

namespace qel {
namespace {

// The documented pieces of the scratch. The pipelines' parts are as large as their own queries say.
struct GaussScratch {
    GaussScratch(void* pBuffer, QelSize roiSize, int kernelSize)
        : stride((roiSize.width + kernelSize + 3) & ~3), rowCount(roiSize.height + kernelSize) {
        Carver carver(pBuffer);
        constantLine = carver.take<Qel32f>((roiSize.width + kernelSize + 7) & ~7);
        kernel = carver.take<Qel32f>((kernelSize + 3) & ~3);
        image = carver.take<Qel32f>(int64_t{stride} * rowCount);
        rowScratch = carver.take<Qel8u>(rowScratchBytes(roiSize, kernelSize));
        columnScratch = carver.take<Qel8u>(kColumnScratchBytes);
        rows = carver.take<Qel32f*>(rowCount);
    }

    static int64_t bytes(QelSize roiSize, int kernelSize) {
        const int64_t width = int64_t{roiSize.width} + kernelSize;
        const int64_t height = int64_t{roiSize.height} + kernelSize;
        return alignUp(width, 8) * 4 + alignUp(int64_t{kernelSize}, 4) * 4 + 32 + alignUp(width, 4) * height * 4 + 64 +
               rowScratchBytes(roiSize, kernelSize) + 32 + kColumnScratchBytes + 32 + height * int64_t{sizeof(void*)} +
               32;
    }

    static int64_t rowScratchBytes(QelSize roiSize, int kernelSize) {
        return PipelineScratch(roiSize, kernelSize, int64_t{kernelSize} * 64 + 64).bytes();
    }
    static constexpr int kColumnScratchBytes = 32;

    int stride;
    int rowCount;
    Qel32f* constantLine;
    Qel32f* kernel;
    Qel32f* image;
    Qel8u* rowScratch;
    Qel8u* columnScratch;
    Qel32f** rows;
};

bool isGaussSize(int kernelSize) { return kernelSize >= 3 && kernelSize % 2 == 1; }

// The exponent has the precision of the x87, whatever the rest of the program computes with.
void gaussKernel(Qel32f* pKernel, int kernelSize, Qel32f sigma) {
    const int reach = kernelSize / 2;
    Qel32f sum = 0;
    for (int i = 0; i < kernelSize; ++i) {
        const long double d = i - reach;
        const long double s = sigma;
        pKernel[i] = static_cast<Qel32f>(std::exp(static_cast<double>(-(d * d) / (s * (s + s)))));
    }
    for (int i = 0; i < kernelSize; ++i) sum += pKernel[i];
    for (int i = 0; i < kernelSize; ++i) pKernel[i] /= sum;
}

// A single row or column has nothing to mirror or to repeat but itself.
int modeAlong(int length, int mode) { return length == 1 && mode != qelBorderConst ? qelBorderRepl : mode; }

// Rows that are filtered across before as many are filtered down: so few that they, their source and their result stay
// in the nearest cache, if it holds four, which the column pipeline forms together; else so many that its stores bypass
// the cache, and the second cache holds the rows.
int rowsPerTurn(int width, int kernelSize) {
    constexpr int64_t kNearestCache = 0xC000;
    constexpr int kBypassing = 0x20000;
    for (const int rows : {8, 4})
        if (int64_t{width} * int64_t{sizeof(Qel32f)} * (3 * rows + kernelSize - 1) <= kNearestCache) return rows;
    return kBypassing / width + 1;
}

// Filtered rows that are kept at a time: those of a turn and all that meet them. Every row is kept where borders repeat
// the far end of the image, where there are hardly more rows than taps, and where the row pipeline uses several
// threads.
int rowsKept(QelSize roiSize, int kernelSize, int mode, int rows) {
    const bool wraps = mode == qelBorderWrap || roiSize.height <= kernelSize;
    const bool parallel = ownGetNumThreads() > 1 && kSeparable.reachedBy(roiSize) && runsepomp(kernelSize) != 0;
    return wraps || parallel ? rows : std::min(rows, rowsPerTurn(roiSize.width, kernelSize) + kernelSize - 1);
}

}  // namespace
}  // namespace qel

qelStatus qeliFilterGaussBorder_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep, QelSize roiSize,
                                        int kernelSize, Qel32f sigma, int borderMode, Qel32f borderValue,
                                        Qel8u* pBuffer) {
    using namespace qel;
    const int mode = borderMode & ~(kRowsAboveInMemory | kRowsBelowInMemory);
    // Steps are tested against the width in pixels. The pipelines test them in bytes: what they refuse is not filtered.
    const qelStatus status = Check()
                                 .pointers(pSrc, pDst, pBuffer)
                                 .size(roiSize)
                                 .stepSizes(rowOf<Qel8u>(roiSize.width), srcStep, dstStep)
                                 .require(isGaussSize(kernelSize), qelStatusBadArg)
                                 .require(isBorderMode(mode), qelStatusBadArg)
                                 .status();
    if (status != qelStatusOk) return status;

    const GaussScratch scratch(pBuffer, roiSize, kernelSize);
    gaussKernel(scratch.kernel, kernelSize, sigma);

    // Row y of the list, from `reach` rows above the region to as many below, is a row of its own or stands for one.
    // The rows take turns in a ring.
    const int reach = kernelSize / 2;
    const int first = borderMode & kRowsAboveInMemory ? -reach : 0;
    const int last = roiSize.height + (borderMode & kRowsBelowInMemory ? reach : 0);
    const int kept = rowsKept(roiSize, kernelSize, mode, last - first);
    Qel32f** const list = scratch.rows + reach;
    const ScratchRows<Qel32f> filtered(scratch.image, int64_t{scratch.stride} * scratch.rowCount, scratch.stride, kept);
    for (int y = first; y < last; ++y) list[y] = filtered[(y - first) % kept];
    const auto standIn = [&](int y) {
        const int index = extendedIndex(modeAlong(roiSize.height, mode), y, roiSize.height);
        return index == kConstantSample ? scratch.constantLine : list[index];
    };
    if (mode == qelBorderConst) std::fill_n(scratch.constantLine, roiSize.width, borderValue);
    for (int y = -reach; y < first; ++y) list[y] = standIn(y);
    for (int y = last; y < roiSize.height + reach; ++y) list[y] = standIn(y);

    // The row pipeline's scratch is for as many rows as the region has.
    const auto filterAcross = [&](int y, int rows) {
        return qeliFilterRowBorderPipeline_32f_C1R(row(pSrc, srcStep, y), srcStep, list + y, {roiSize.width, rows},
                                                   scratch.kernel, kernelSize, reach, modeAlong(roiSize.width, mode),
                                                   borderValue, scratch.rowScratch);
    };
    const int turn = kept == last - first ? roiSize.height : kept - (kernelSize - 1);
    int across = first;
    for (int y = 0; y < roiSize.height; y += turn) {
        const int rows = std::min(turn, roiSize.height - y);
        for (const int needed = std::min(y + rows + reach, last); across < needed;) {
            const int batch = std::min(needed - across, roiSize.height);
            if (filterAcross(across, batch) != qelStatusOk) return qelStatusOk;
            across += batch;
        }
        qeliFilterColumnPipeline_32f_C1R(list + y - reach, row(pDst, dstStep, y), dstStep, {roiSize.width, rows},
                                         scratch.kernel, kernelSize, scratch.columnScratch);
    }
    return qelStatusOk;
}

qelStatus qeliFilterGaussGetBufferSize_32f_C1R(QelSize roiSize, int kernelSize, int* pBufferSize) {
    const qelStatus status = qel::Check()
                                 .pointers(pBufferSize)
                                 .size(roiSize)
                                 .require(qel::isGaussSize(kernelSize), qelStatusBadArg)
                                 .status();
    if (status != qelStatusOk) return status;
    return qel::writeBufferSize(qel::GaussScratch::bytes(roiSize, kernelSize), pBufferSize);
}
