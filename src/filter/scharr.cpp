#include "filter/fixed_filters.h"
#include "qelcv/filter.h"

namespace qel {
namespace {

constexpr FixedFilter<Qel32f, Qel32f, Qel32f> kScharrHoriz_32f[] = {
    {ownFilterRowBorderPipeline_32f_C1R_3x3_kerScharr_W7, ownFilterColumnPipeline_32f_C1R_3x3_kerDx_W7cn},
};

constexpr FixedFilter<Qel8u, Qel16s, Qel16s> kScharrHoriz_8u16s[] = {
    {ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerScharr_W7, ownFilterColumnPipeline_16s_C1R_3x3_kerDx_W7cn},
};

constexpr FixedFilter<Qel8u, Qel16s, Qel8s> kScharrHoriz_8u8s[] = {
    {ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerScharr_W7, ownFilterColumnPipeline_16s8s_C1R_3x3_kerDx_W7cn},
};

constexpr FixedFilter<Qel32f, Qel32f, Qel32f> kScharrVert_32f[] = {
    {ownFilterRowBorderPipeline_32f_C1R_3x3_kerDx_W7, ownFilterColumnPipeline_32f_C1R_3x3_kerScharr_W7cn},
};

constexpr FixedFilter<Qel8u, Qel16s, Qel16s> kScharrVert_8u16s[] = {
    {ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx_W7, ownFilterColumnPipeline_16s_C1R_3x3_kerScharr_W7cn},
};

constexpr FixedFilter<Qel8u, Qel16s, Qel8s> kScharrVert_8u8s[] = {
    {ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx_W7, ownFilterColumnPipeline_16s8s_C1R_3x3_kerScharr_W7cn},
};

// Less scratch than across the other direction.
constexpr FixedScratch kScharrHorizScratch_8u16s = {32, 12, 184, 32, false};

}  // namespace
}  // namespace qel

#define SCHARR(name, Src, Dst, filters, scratch)                                                                \
    qelStatus name(const Src* pSrc, int srcStep, Dst* pDst, int dstStep, QelSize roiSize, int borderMode,       \
                   Src borderValue, Qel8u* pBuffer) {                                                           \
        return qel::fixedFilter(                                                                                \
            qel::FixedCall<Src, Dst>{                                                                           \
                {pSrc, srcStep}, {pDst, dstStep}, roiSize, qel::kMask3x3, borderMode, borderValue, 1, pBuffer}, \
            filters, scratch);                                                                                  \
    }
#define SCHARR_DIVIDED(name, filters)                                                                                 \
    qelStatus name(const Qel8u* pSrc, int srcStep, Qel8s* pDst, int dstStep, QelSize roiSize, int borderMode,         \
                   Qel8u borderValue, int divisor, Qel8u* pBuffer) {                                                  \
        return qel::fixedFilter(                                                                                      \
            qel::FixedCall<Qel8u, Qel8s>{                                                                             \
                {pSrc, srcStep}, {pDst, dstStep}, roiSize, qel::kMask3x3, borderMode, borderValue, divisor, pBuffer}, \
            filters, qel::kFixed_8u8s);                                                                               \
    }
SCHARR(qeliFilterScharrHorizBorder_32f_C1R, Qel32f, Qel32f, qel::kScharrHoriz_32f, qel::kFixed_32f)
SCHARR(qeliFilterScharrHorizBorder_8u16s_C1R, Qel8u, Qel16s, qel::kScharrHoriz_8u16s, qel::kScharrHorizScratch_8u16s)
SCHARR_DIVIDED(qeliFilterScharrHorizBorder_8u8s_C1R, qel::kScharrHoriz_8u8s)
SCHARR(qeliFilterScharrVertBorder_32f_C1R, Qel32f, Qel32f, qel::kScharrVert_32f, qel::kFixed_32f)
SCHARR(qeliFilterScharrVertBorder_8u16s_C1R, Qel8u, Qel16s, qel::kScharrVert_8u16s, qel::kFixed_8u16s)
SCHARR_DIVIDED(qeliFilterScharrVertBorder_8u8s_C1R, qel::kScharrVert_8u8s)
#undef SCHARR
#undef SCHARR_DIVIDED

#define BUFFER_SIZE(name, scratch)                                                 \
    qelStatus name(QelSize roiSize, int* pBufferSize) {                            \
        return qel::fixedBufferSize(roiSize, qel::kMask3x3, pBufferSize, scratch); \
    }
BUFFER_SIZE(qeliFilterScharrHorizGetBufferSize_32f_C1R, qel::kFixed_32f)
BUFFER_SIZE(qeliFilterScharrHorizGetBufferSize_8u16s_C1R, qel::kScharrHorizScratch_8u16s)
BUFFER_SIZE(qeliFilterScharrHorizGetBufferSize_8u8s_C1R, qel::kFixed_8u8s)
BUFFER_SIZE(qeliFilterScharrVertGetBufferSize_32f_C1R, qel::kFixed_32f)
BUFFER_SIZE(qeliFilterScharrVertGetBufferSize_8u16s_C1R, qel::kFixed_8u16s)
BUFFER_SIZE(qeliFilterScharrVertGetBufferSize_8u8s_C1R, qel::kFixed_8u8s)
#undef BUFFER_SIZE
