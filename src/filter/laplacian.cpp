#include "filter/fixed_filters.h"
#include "qelcv/filter.h"

namespace qel {
namespace {

constexpr FixedFilter kLaplacian3x3 = {kRowLaplacian3, kColumnLaplacian3};

// The 5x5 form is the sum of two second derivatives. The second pass adds to what the first has written.
constexpr FixedFilter kLaplacian5x5[] = {{kRowSobel5, kColumnD2x5}, {kRowD2x5, kColumnLaplacian5}};

constexpr FixedScratch kLaplacian_32f = {128, 24, 336, 32, true};
constexpr FixedScratch kLaplacian_8u = {64, 24, 336, 32, false};

// An image of 16-bit sums behind the rest of the scratch: what the two passes of 8u8s write.
int64_t sumStep(QelSize roiSize) { return alignUp(int64_t{roiSize.width}, 16) * int64_t{sizeof(Qel16s)}; }
int64_t sumBytes(QelSize roiSize, int mask) { return mask == kMask5x5 ? sumStep(roiSize) * roiSize.height + 32 : 0; }

template <class Src, class Dst>
void run(const FixedCall<Src, Dst>& part, const SliceOf<Src>& image) {
    if (part.mask == kMask3x3) return runPass(part, kLaplacian3x3, image);
    for (const FixedFilter& pass : kLaplacian5x5) runPass(part, pass, image);
}

template <class Src, class Dst>
qelStatus laplacian(const FixedCall<Src, Dst>& call, const FixedScratch& scratch) {
    const qelStatus status = checkFixed(call);
    if (status != qelStatusOk) return status;

    const int64_t scratchBytes = fixedScratchBytes(call.roiSize, tapsOf(call.mask), scratch);
    forRows(call.roiSize, fixedInParallel(call.roiSize, kFixedMinHeight), [&](const Share& s) {
        run(slice(call, s, scratchBytes), {call.pSrc, call.roiSize.height, s.y});
    });
    return qelStatusOk;
}

// 8s results of a slice: of 5x5 by way of 16-bit sums, which truncate throughout when they are divided.
void runDivided(const FixedCall<Qel8u, Qel8s>& part, const SliceOf<Qel8u>& image, Qel8u* pSums) {
    if (part.mask == kMask3x3) return runPass(part, kLaplacian3x3, image);
    Qel16s* const sums = reinterpret_cast<Qel16s*>(alignUp(pSums, 32));
    const int step = static_cast<int>(sumStep(part.roiSize));
    run<Qel8u, Qel16s>({part.pSrc, part.srcStep, sums, step, part.roiSize, part.mask, part.borderMode, part.borderValue,
                        1, part.pBuffer},
                       image);
    ownDivide_16s8s_C1R_W7(sums, step, part.pDst, part.dstStep, part.roiSize, part.divisor);
}

qelStatus laplacianDivided(const FixedCall<Qel8u, Qel8s>& call) {
    const qelStatus status = checkFixed(call);
    if (status != qelStatusOk) return status;

    constexpr int kMinHeight5x5 = 64;
    const int64_t engineBytes = fixedScratchBytes(call.roiSize, tapsOf(call.mask), kLaplacian_8u);
    const int64_t scratchBytes = engineBytes + sumBytes(call.roiSize, call.mask);
    const int minHeight = call.mask == kMask5x5 ? kMinHeight5x5 : kFixedMinHeight;
    forRows(call.roiSize, fixedInParallel(call.roiSize, minHeight), [&](const Share& s) {
        const FixedCall<Qel8u, Qel8s> part = slice(call, s, scratchBytes);
        runDivided(part, {call.pSrc, call.roiSize.height, s.y}, part.pBuffer + engineBytes);
    });
    return qelStatusOk;
}

}  // namespace
}  // namespace qel

qelStatus qeliFilterLaplacianBorder_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep, QelSize roiSize,
                                            int mask, int borderMode, Qel32f borderValue, Qel8u* pBuffer) {
    return qel::laplacian<Qel32f, Qel32f>(
        {pSrc, srcStep, pDst, dstStep, roiSize, mask, borderMode, borderValue, 1, pBuffer}, qel::kLaplacian_32f);
}

qelStatus qeliFilterLaplacianBorder_8u16s_C1R(const Qel8u* pSrc, int srcStep, Qel16s* pDst, int dstStep,
                                              QelSize roiSize, int mask, int borderMode, Qel8u borderValue,
                                              Qel8u* pBuffer) {
    return qel::laplacian<Qel8u, Qel16s>(
        {pSrc, srcStep, pDst, dstStep, roiSize, mask, borderMode, borderValue, 1, pBuffer}, qel::kLaplacian_8u);
}

qelStatus qeliFilterLaplacianBorder_8u8s_C1R(const Qel8u* pSrc, int srcStep, Qel8s* pDst, int dstStep, QelSize roiSize,
                                             int mask, int borderMode, Qel8u borderValue, int divisor, Qel8u* pBuffer) {
    return qel::laplacianDivided(
        {pSrc, srcStep, pDst, dstStep, roiSize, mask, borderMode, borderValue, divisor, pBuffer});
}

qelStatus qeliFilterLaplacianGetBufferSize_32f_C1R(QelSize roiSize, int mask, int* pBufferSize) {
    return qel::fixedBufferSize(roiSize, mask, pBufferSize, qel::kLaplacian_32f);
}

qelStatus qeliFilterLaplacianGetBufferSize_8u16s_C1R(QelSize roiSize, int mask, int* pBufferSize) {
    return qel::fixedBufferSize(roiSize, mask, pBufferSize, qel::kLaplacian_8u);
}

qelStatus qeliFilterLaplacianGetBufferSize_8u8s_C1R(QelSize roiSize, int mask, int* pBufferSize) {
    return qel::fixedBufferSize(roiSize, mask, pBufferSize, qel::kLaplacian_8u, qel::sumBytes(roiSize, mask));
}
