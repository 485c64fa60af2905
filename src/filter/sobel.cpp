#include "filter/fixed_filters.h"
#include "qelcv/filter.h"

namespace qel {
namespace {

constexpr FixedFilter<Qel32f, Qel32f, Qel32f> kSobelHoriz_32f[] = {
    {ownFilterRowBorderPipeline_32f_C1R_3x3_kerSobel_W7, ownFilterColumnPipeline_32f_C1R_3x3_kerDx_W7cn},
    {ownFilterRowBorderPipeline_32f_C1R_5x5_kerSobel_W7, ownFilterColumnPipeline_32f_C1R_5x5_kerDx_W7cn},
};

constexpr FixedFilter<Qel8u, Qel16s, Qel16s> kSobelHoriz_8u16s[] = {
    {ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerSobel_W7, ownFilterColumnPipeline_16s_C1R_3x3_kerDx_W7cn},
    {ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerSobel_W7, ownFilterColumnPipeline_16s_C1R_5x5_kerDx_W7cn},
};

constexpr FixedFilter<Qel8u, Qel16s, Qel8s> kSobelHoriz_8u8s[] = {
    {ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerSobel_W7, ownFilterColumnPipeline_16s8s_C1R_3x3_kerDx_W7cn},
    {ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerSobel_W7, ownFilterColumnPipeline_16s8s_C1R_5x5_kerDx_W7cn},
};

constexpr FixedFilter<Qel32f, Qel32f, Qel32f> kSobelVert_32f[] = {
    {ownFilterRowBorderPipeline_32f_C1R_3x3_kerDxNeg_W7, ownFilterColumnPipeline_32f_C1R_3x3_kerSobel_W7cn},
    {ownFilterRowBorderPipeline_32f_C1R_5x5_kerDxNeg_W7, ownFilterColumnPipeline_32f_C1R_5x5_kerSobel_W7cn},
};

constexpr FixedFilter<Qel8u, Qel16s, Qel16s> kSobelVert_8u16s[] = {
    {ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDxNeg_W7, ownFilterColumnPipeline_16s_C1R_3x3_kerSobel_W7cn},
    {ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDxNeg_W7, ownFilterColumnPipeline_16s_C1R_5x5_kerSobel_W7cn},
};

constexpr FixedFilter<Qel8u, Qel16s, Qel8s> kSobelVert_8u8s[] = {
    {ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDxNeg_W7, ownFilterColumnPipeline_16s8s_C1R_3x3_kerSobel_W7cn},
    {ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDxNeg_W7, ownFilterColumnPipeline_16s8s_C1R_5x5_kerSobel_W7cn},
};

constexpr FixedFilter<Qel32f, Qel32f, Qel32f> kSobelNegVert_32f[] = {
    {ownFilterRowBorderPipeline_32f_C1R_3x3_kerDxNeg_W7, ownFilterColumnPipeline_32f_C1R_3x3_kerSobelNeg_W7cn},
    {ownFilterRowBorderPipeline_32f_C1R_5x5_kerDxNeg_W7, ownFilterColumnPipeline_32f_C1R_5x5_kerSobelNeg_W7cn},
};

constexpr FixedFilter<Qel8u, Qel16s, Qel16s> kSobelNegVert_8u16s[] = {
    {ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDxNeg_W7, ownFilterColumnPipeline_16s_C1R_3x3_kerSobelNeg_W7cn},
    {ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDxNeg_W7, ownFilterColumnPipeline_16s_C1R_5x5_kerSobelNeg_W7cn},
};

constexpr FixedFilter<Qel8u, Qel16s, Qel8s> kSobelNegVert_8u8s[] = {
    {ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDxNeg_W7, ownFilterColumnPipeline_16s8s_C1R_3x3_kerSobelNeg_W7cn},
    {ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDxNeg_W7, ownFilterColumnPipeline_16s8s_C1R_5x5_kerSobelNeg_W7cn},
};

constexpr FixedFilter<Qel32f, Qel32f, Qel32f> kSobelHorizSecond_32f[] = {
    {ownFilterRowBorderPipeline_32f_C1R_3x3_kerSobel_W7, ownFilterColumnPipeline_32f_C1R_3x3_kerDx2_W7cn},
    {ownFilterRowBorderPipeline_32f_C1R_5x5_kerSobel_W7, ownFilterColumnPipeline_32f_C1R_5x5_kerDx2_W7cn},
};

constexpr FixedFilter<Qel8u, Qel16s, Qel16s> kSobelHorizSecond_8u16s[] = {
    {ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerSobel_W7, ownFilterColumnPipeline_16s_C1R_3x3_kerDx2_W7cn},
    {ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerSobel_W7, ownFilterColumnPipeline_16s_C1R_5x5_kerDx2_W7cn},
};

constexpr FixedFilter<Qel8u, Qel16s, Qel8s> kSobelHorizSecond_8u8s[] = {
    {ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerSobel_W7, ownFilterColumnPipeline_16s8s_C1R_3x3_kerDx2_W7cn},
    {ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerSobel_W7, ownFilterColumnPipeline_16s8s_C1R_5x5_kerDx2_W7cn},
};

constexpr FixedFilter<Qel32f, Qel32f, Qel32f> kSobelVertSecond_32f[] = {
    {ownFilterRowBorderPipeline_32f_C1R_3x3_kerDx2_W7, ownFilterColumnPipeline_32f_C1R_3x3_kerSobel_W7cn},
    {ownFilterRowBorderPipeline_32f_C1R_5x5_kerDx2_W7, ownFilterColumnPipeline_32f_C1R_5x5_kerSobel_W7cn},
};

constexpr FixedFilter<Qel8u, Qel16s, Qel16s> kSobelVertSecond_8u16s[] = {
    {ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx2_W7, ownFilterColumnPipeline_16s_C1R_3x3_kerSobel_W7cn},
    {ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDx2_W7, ownFilterColumnPipeline_16s_C1R_5x5_kerSobel_W7cn},
};

constexpr FixedFilter<Qel8u, Qel16s, Qel8s> kSobelVertSecond_8u8s[] = {
    {ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx2_W7, ownFilterColumnPipeline_16s8s_C1R_3x3_kerSobel_W7cn},
    {ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDx2_W7, ownFilterColumnPipeline_16s8s_C1R_5x5_kerSobel_W7cn},
};

constexpr FixedFilter<Qel32f, Qel32f, Qel32f> kSobelCross_32f[] = {
    {ownFilterRowBorderPipeline_32f_C1R_3x3_kerDxNeg_W7, ownFilterColumnPipeline_32f_C1R_3x3_kerDx_W7cn},
    {ownFilterRowBorderPipeline_32f_C1R_5x5_kerDxNeg_W7, ownFilterColumnPipeline_32f_C1R_5x5_kerDx_W7cn},
};

constexpr FixedFilter<Qel8u, Qel16s, Qel16s> kSobelCross_8u16s[] = {
    {ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDxNeg_W7, ownFilterColumnPipeline_16s_C1R_3x3_kerDx_W7cn},
    {ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDxNeg_W7, ownFilterColumnPipeline_16s_C1R_5x5_kerDx_W7cn},
};

constexpr FixedFilter<Qel8u, Qel16s, Qel8s> kSobelCross_8u8s[] = {
    {ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDxNeg_W7, ownFilterColumnPipeline_16s8s_C1R_3x3_kerDx_W7cn},
    {ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDxNeg_W7, ownFilterColumnPipeline_16s8s_C1R_5x5_kerDx_W7cn},
};

// Two members have a size of their own.
constexpr FixedScratch kSobelHorizScratch_8u16s = {32, 12, 248, 64, false};
constexpr FixedScratch kSobelVertScratch_8u16s = {32, 12, 216, 32, false};

}  // namespace
}  // namespace qel

#define SOBEL(name, Src, Dst, filters, scratch)                                                                     \
    qelStatus name(const Src* pSrc, int srcStep, Dst* pDst, int dstStep, QelSize roiSize, int mask, int borderMode, \
                   Src borderValue, Qel8u* pBuffer) {                                                               \
        return qel::fixedFilter(                                                                                    \
            qel::FixedCall<Src, Dst>{                                                                               \
                {pSrc, srcStep}, {pDst, dstStep}, roiSize, mask, borderMode, borderValue, 1, pBuffer},              \
            filters, scratch);                                                                                      \
    }
#define SOBEL_DIVIDED(name, filters)                                                                         \
    qelStatus name(const Qel8u* pSrc, int srcStep, Qel8s* pDst, int dstStep, QelSize roiSize, int mask,      \
                   int borderMode, Qel8u borderValue, int divisor, Qel8u* pBuffer) {                         \
        return qel::fixedFilter(                                                                             \
            qel::FixedCall<Qel8u, Qel8s>{                                                                    \
                {pSrc, srcStep}, {pDst, dstStep}, roiSize, mask, borderMode, borderValue, divisor, pBuffer}, \
            filters, qel::kFixed_8u8s);                                                                      \
    }
SOBEL(qeliFilterSobelHorizBorder_32f_C1R, Qel32f, Qel32f, qel::kSobelHoriz_32f, qel::kFixed_32f)
SOBEL(qeliFilterSobelHorizBorder_8u16s_C1R, Qel8u, Qel16s, qel::kSobelHoriz_8u16s, qel::kSobelHorizScratch_8u16s)
SOBEL_DIVIDED(qeliFilterSobelHorizBorder_8u8s_C1R, qel::kSobelHoriz_8u8s)
SOBEL(qeliFilterSobelVertBorder_32f_C1R, Qel32f, Qel32f, qel::kSobelVert_32f, qel::kFixed_32f)
SOBEL(qeliFilterSobelVertBorder_8u16s_C1R, Qel8u, Qel16s, qel::kSobelVert_8u16s, qel::kSobelVertScratch_8u16s)
SOBEL_DIVIDED(qeliFilterSobelVertBorder_8u8s_C1R, qel::kSobelVert_8u8s)
SOBEL(qeliFilterSobelNegVertBorder_32f_C1R, Qel32f, Qel32f, qel::kSobelNegVert_32f, qel::kFixed_32f)
SOBEL(qeliFilterSobelNegVertBorder_8u16s_C1R, Qel8u, Qel16s, qel::kSobelNegVert_8u16s, qel::kFixed_8u16s)
SOBEL_DIVIDED(qeliFilterSobelNegVertBorder_8u8s_C1R, qel::kSobelNegVert_8u8s)
SOBEL(qeliFilterSobelHorizSecondBorder_32f_C1R, Qel32f, Qel32f, qel::kSobelHorizSecond_32f, qel::kFixed_32f)
SOBEL(qeliFilterSobelHorizSecondBorder_8u16s_C1R, Qel8u, Qel16s, qel::kSobelHorizSecond_8u16s, qel::kFixed_8u16s)
SOBEL_DIVIDED(qeliFilterSobelHorizSecondBorder_8u8s_C1R, qel::kSobelHorizSecond_8u8s)
SOBEL(qeliFilterSobelVertSecondBorder_32f_C1R, Qel32f, Qel32f, qel::kSobelVertSecond_32f, qel::kFixed_32f)
SOBEL(qeliFilterSobelVertSecondBorder_8u16s_C1R, Qel8u, Qel16s, qel::kSobelVertSecond_8u16s, qel::kFixed_8u16s)
SOBEL_DIVIDED(qeliFilterSobelVertSecondBorder_8u8s_C1R, qel::kSobelVertSecond_8u8s)
SOBEL(qeliFilterSobelCrossBorder_32f_C1R, Qel32f, Qel32f, qel::kSobelCross_32f, qel::kFixed_32f)
SOBEL(qeliFilterSobelCrossBorder_8u16s_C1R, Qel8u, Qel16s, qel::kSobelCross_8u16s, qel::kFixed_8u16s)
SOBEL_DIVIDED(qeliFilterSobelCrossBorder_8u8s_C1R, qel::kSobelCross_8u8s)
#undef SOBEL
#undef SOBEL_DIVIDED

#define BUFFER_SIZE(name, scratch)                                        \
    qelStatus name(QelSize roiSize, int mask, int* pBufferSize) {         \
        return qel::fixedBufferSize(roiSize, mask, pBufferSize, scratch); \
    }
BUFFER_SIZE(qeliFilterSobelHorizGetBufferSize_32f_C1R, qel::kFixed_32f)
BUFFER_SIZE(qeliFilterSobelHorizGetBufferSize_8u16s_C1R, qel::kSobelHorizScratch_8u16s)
BUFFER_SIZE(qeliFilterSobelHorizGetBufferSize_8u8s_C1R, qel::kFixed_8u8s)
BUFFER_SIZE(qeliFilterSobelVertGetBufferSize_32f_C1R, qel::kFixed_32f)
BUFFER_SIZE(qeliFilterSobelVertGetBufferSize_8u16s_C1R, qel::kSobelVertScratch_8u16s)
BUFFER_SIZE(qeliFilterSobelVertGetBufferSize_8u8s_C1R, qel::kFixed_8u8s)
BUFFER_SIZE(qeliFilterSobelNegVertGetBufferSize_32f_C1R, qel::kFixed_32f)
BUFFER_SIZE(qeliFilterSobelNegVertGetBufferSize_8u16s_C1R, qel::kFixed_8u16s)
BUFFER_SIZE(qeliFilterSobelNegVertGetBufferSize_8u8s_C1R, qel::kFixed_8u8s)
BUFFER_SIZE(qeliFilterSobelHorizSecondGetBufferSize_32f_C1R, qel::kFixed_32f)
BUFFER_SIZE(qeliFilterSobelHorizSecondGetBufferSize_8u16s_C1R, qel::kFixed_8u16s)
BUFFER_SIZE(qeliFilterSobelHorizSecondGetBufferSize_8u8s_C1R, qel::kFixed_8u8s)
BUFFER_SIZE(qeliFilterSobelVertSecondGetBufferSize_32f_C1R, qel::kFixed_32f)
BUFFER_SIZE(qeliFilterSobelVertSecondGetBufferSize_8u16s_C1R, qel::kFixed_8u16s)
BUFFER_SIZE(qeliFilterSobelVertSecondGetBufferSize_8u8s_C1R, qel::kFixed_8u8s)
BUFFER_SIZE(qeliFilterSobelCrossGetBufferSize_32f_C1R, qel::kFixed_32f)
BUFFER_SIZE(qeliFilterSobelCrossGetBufferSize_8u16s_C1R, qel::kFixed_8u16s)
BUFFER_SIZE(qeliFilterSobelCrossGetBufferSize_8u8s_C1R, qel::kFixed_8u8s)
#undef BUFFER_SIZE
