#include <algorithm>
#include <cmath>

#include "filter/border_mode.h"
#include "filter/pipeline_scratch.h"
#include "frame/check.h"
#include "frame/kernel.h"
#include "frame/row_ring.h"
#include "frame/rows.h"
#include "frame/turns.h"
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
int rowsOfTurn(int width, int kernelSize) {
    constexpr int kTogether = 4;
    constexpr int kBypassing = 0x20000;
    const int64_t rowBytes = int64_t{width} * int64_t{sizeof(Qel32f)};
    const int rows = rowsPerTurn(3 * rowBytes, rowBytes * (kernelSize - 1), 2 * kTogether) & -kTogether;
    return rows > 0 ? rows : kBypassing / width + 1;
}

// The arguments of a call, checked.
struct GaussCall {
    Plane<const Qel32f> source;
    Plane<Qel32f> dst;
    QelSize roiSize;
    int kernelSize;
    int borderMode;
    Qel32f borderValue;

    int mode() const { return borderMode & ~(kRowsAboveInMemory | kRowsBelowInMemory); }
    int reach() const { return kernelSize / 2; }
    RowRange all() const { return {-reach(), roiSize.height + reach()}; }
    RowRange made() const {
        return {borderMode & kRowsAboveInMemory ? -reach() : 0,
                roiSize.height + (borderMode & kRowsBelowInMemory ? reach() : 0)};
    }
};

// All rows are filtered across before any is filtered down where borders repeat the far end of the image, where there
// are hardly more rows than taps, and where the row pipeline uses several threads.
int rowsOfTurn(const GaussCall& call) {
    const auto [width, height] = call.roiSize;
    const bool wraps = call.mode() == qelBorderWrap || height <= call.kernelSize;
    const bool parallel = ownGetNumThreads() > 1 && separableInParallel(call.roiSize, call.kernelSize);
    return wraps || parallel ? height : std::min(height, rowsOfTurn(width, call.kernelSize));
}

// The rows of an image, filtered across when they are needed.
class AcrossRows {
public:
    AcrossRows(const GaussCall& call, const GaussScratch& scratch, int kept)
        : call_(call),
          scratch_(scratch),
          ring_({scratch.image, int64_t{scratch.stride} * scratch.rowCount, scratch.stride, kept}, kept, scratch.rows,
                call.all(), call.made()) {
        if (call.mode() == qelBorderConst) std::fill_n(scratch.constantLine, call.roiSize.width, call.borderValue);
    }

    // Null where the row pipeline refuses the call.
    Qel32f* const* window(int y, int count) {
        bool refused = false;
        const auto outside = [&](int row, Qel32f*) {
            const int index = extendedIndex(modeAlong(call_.roiSize.height, call_.mode()), row, call_.roiSize.height);
            return index == kConstantSample ? scratch_.constantLine : ring_.place(index);
        };
        const auto stage = [&](int row, Qel32f* const* pRows, int rows) { refused |= !filter(row, pRows, rows); };
        ring_.fillUpTo(y + count + call_.reach(), stage, outside);
        return refused ? nullptr : ring_.window(y - call_.reach());
    }

private:
    // The row pipeline's scratch is for as many rows as the region has.
    bool filter(int y, Qel32f* const* pRows, int count) const {
        const auto [width, height] = call_.roiSize;
        for (int done = 0; done < count; done += height) {
            const QelSize size = {width, std::min(count - done, height)};
            if (qeliFilterRowBorderPipeline_32f_C1R(call_.source.row(y + done), call_.source.step, pRows + done, size,
                                                    scratch_.kernel, call_.kernelSize, call_.reach(),
                                                    modeAlong(width, call_.mode()), call_.borderValue,
                                                    scratch_.rowScratch) != qelStatusOk)
                return false;
        }
        return true;
    }

    const GaussCall& call_;
    const GaussScratch& scratch_;
    RowRing<Qel32f> ring_;
};

}  // namespace
}  // namespace qel

qelStatus qeliFilterGaussBorder_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep, QelSize roiSize,
                                        int kernelSize, Qel32f sigma, int borderMode, Qel32f borderValue,
                                        Qel8u* pBuffer) {
    using namespace qel;
    const GaussCall call = {{pSrc, srcStep}, {pDst, dstStep}, roiSize, kernelSize, borderMode, borderValue};
    // Steps are tested against the width in pixels. The pipelines test them in bytes: what they refuse is not filtered.
    const qelStatus status = Check()
                                 .pointers(pSrc, pDst, pBuffer)
                                 .size(roiSize)
                                 .stepSizes(rowOf<Qel8u>(roiSize.width), srcStep, dstStep)
                                 .require(isGaussSize(kernelSize), qelStatusBadArg)
                                 .require(isBorderMode(call.mode()), qelStatusBadArg)
                                 .status();
    if (status != qelStatusOk) return status;

    const GaussScratch scratch(pBuffer, roiSize, kernelSize);
    gaussKernel(scratch.kernel, kernelSize, sigma);
    const int turn = rowsOfTurn(call);
    AcrossRows across(call, scratch, turn + kernelSize - 1);
    for (int y = 0; y < roiSize.height; y += turn) {
        const int count = std::min(turn, roiSize.height - y);
        Qel32f* const* const rows = across.window(y, count);
        if (rows == nullptr) return qelStatusOk;
        qeliFilterColumnPipeline_32f_C1R(rows, call.dst.row(y), dstStep, {roiSize.width, count}, scratch.kernel,
                                         kernelSize, scratch.columnScratch);
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
