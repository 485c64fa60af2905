#include "filter/fixed_filters.h"
#include "qelcv/filter.h"

namespace qel {
namespace {

// The 5x5 form is the sum of two second derivatives. Its 8s results truncate throughout.
constexpr FixedFilter<Qel32f, Qel32f, Qel32f> kLaplacian_32f[] = {
    {ownFilterRowBorderPipeline_32f_C1R_3x3_kerLaplacian_W7, ownFilterColumnPipeline_32f_C1R_3x3_kerLaplacian_W7cn},
    {ownFilterRowBorderPipeline_32f_C1R_5x5_kerLaplacian_W7, ownFilterColumnPipeline_32f_C1R_5x5_kerLaplacian_W7cn},
};

constexpr FixedFilter<Qel8u, Qel16s, Qel16s> kLaplacian_8u16s[] = {
    {ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerLaplacian_W7, ownFilterColumnPipeline_16s_C1R_3x3_kerLaplacian_W7cn},
    {ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerLaplacian_W7, ownFilterColumnPipeline_16s_C1R_5x5_kerLaplacian_W7cn},
};

constexpr FixedFilter<Qel8u, Qel16s, Qel8s> kLaplacian_8u8s[] = {
    {ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerLaplacian_W7, ownFilterColumnPipeline_16s8s_C1R_3x3_kerLaplacian_W7cn},
    {ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerLaplacian_W7, ownFilterColumnPipeline_16s8s_C1R_5x5_kerLaplacian_W7cn},
};

constexpr FixedScratch kLaplacianScratch_32f = {128, 24, 336, 32, true};
constexpr FixedScratch kLaplacianScratch_8u = {64, 24, 336, 32, false};

// The documented scratch of 5x5 8u8s has room for an image of 16-bit sums, too.
int64_t sumBytes(QelSize roiSize, int mask) {
    const int64_t step = alignUp(int64_t{roiSize.width}, 16) * int64_t{sizeof(Qel16s)};
    return mask == kMask5x5 ? step * roiSize.height + 32 : 0;
}
constexpr ParallelFromRows kDivided5x5 = {.width = 256, .height = 64, .heightPerThread = 5};

}  // namespace
}  // namespace qel

qelStatus qeliFilterLaplacianBorder_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep, QelSize roiSize,
                                            int mask, int borderMode, Qel32f borderValue, Qel8u* pBuffer) {
    return qel::fixedFilter<Qel32f, Qel32f, Qel32f>(
        {{pSrc, srcStep}, {pDst, dstStep}, roiSize, mask, borderMode, borderValue, 1, pBuffer}, qel::kLaplacian_32f,
        qel::kLaplacianScratch_32f);
}

qelStatus qeliFilterLaplacianBorder_8u16s_C1R(const Qel8u* pSrc, int srcStep, Qel16s* pDst, int dstStep,
                                              QelSize roiSize, int mask, int borderMode, Qel8u borderValue,
                                              Qel8u* pBuffer) {
    return qel::fixedFilter<Qel8u, Qel16s, Qel16s>(
        {{pSrc, srcStep}, {pDst, dstStep}, roiSize, mask, borderMode, borderValue, 1, pBuffer}, qel::kLaplacian_8u16s,
        qel::kLaplacianScratch_8u);
}

qelStatus qeliFilterLaplacianBorder_8u8s_C1R(const Qel8u* pSrc, int srcStep, Qel8s* pDst, int dstStep, QelSize roiSize,
                                             int mask, int borderMode, Qel8u borderValue, int divisor, Qel8u* pBuffer) {
    return qel::fixedFilter<Qel8u, Qel16s, Qel8s>(
        {{pSrc, srcStep}, {pDst, dstStep}, roiSize, mask, borderMode, borderValue, divisor, pBuffer},
        qel::kLaplacian_8u8s, qel::kLaplacianScratch_8u, mask == qel::kMask5x5 ? qel::kDivided5x5 : qel::kFixed);
}

qelStatus qeliFilterLaplacianGetBufferSize_32f_C1R(QelSize roiSize, int mask, int* pBufferSize) {
    return qel::fixedBufferSize(roiSize, mask, pBufferSize, qel::kLaplacianScratch_32f);
}

qelStatus qeliFilterLaplacianGetBufferSize_8u16s_C1R(QelSize roiSize, int mask, int* pBufferSize) {
    return qel::fixedBufferSize(roiSize, mask, pBufferSize, qel::kLaplacianScratch_8u);
}

qelStatus qeliFilterLaplacianGetBufferSize_8u8s_C1R(QelSize roiSize, int mask, int* pBufferSize) {
    return qel::fixedBufferSize(roiSize, mask, pBufferSize, qel::kLaplacianScratch_8u, qel::sumBytes(roiSize, mask));
}
