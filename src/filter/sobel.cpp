#include "filter/fixed_filters.h"
#include "qelcv/filter.h"

namespace qel {
namespace {

constexpr FixedFilters kSobelHoriz = {{kRowSobel3, kColumnDx3}, {kRowSobel5, kColumnDx5}};
constexpr FixedFilters kSobelVert = {{kRowDxNeg3, kColumnSobel3}, {kRowDxNeg5, kColumnSobel5}};
constexpr FixedFilters kSobelNegVert = {{kRowDxNeg3, kColumnSobelNeg3}, {kRowDxNeg5, kColumnSobelNeg5}};
constexpr FixedFilters kSobelHorizSecond = {{kRowSobel3, kColumnD2x3}, {kRowSobel5, kColumnD2x5}};
constexpr FixedFilters kSobelVertSecond = {{kRowD2x3, kColumnSobel3}, {kRowD2x5, kColumnSobel5}};
constexpr FixedFilters kSobelCross = {{kRowDxNeg3, kColumnDx3}, {kRowDxNeg5, kColumnDx5}};

// Two members have a size of their own.
constexpr FixedScratch kSobelHoriz_8u16s = {32, 12, 248, 64, false};
constexpr FixedScratch kSobelVert_8u16s = {32, 12, 216, 32, false};

}  // namespace
}  // namespace qel

#define SOBEL(name, Src, Dst, filters, scratch)                                                                     \
    qelStatus name(const Src* pSrc, int srcStep, Dst* pDst, int dstStep, QelSize roiSize, int mask, int borderMode, \
                   Src borderValue, Qel8u* pBuffer) {                                                               \
        return qel::fixedFilter<Src, Dst>(                                                                          \
            {pSrc, srcStep, pDst, dstStep, roiSize, mask, borderMode, borderValue, 1, pBuffer}, filters, scratch);  \
    }
#define SOBEL_DIVIDED(name, filters)                                                                           \
    qelStatus name(const Qel8u* pSrc, int srcStep, Qel8s* pDst, int dstStep, QelSize roiSize, int mask,        \
                   int borderMode, Qel8u borderValue, int divisor, Qel8u* pBuffer) {                           \
        return qel::fixedFilter<Qel8u, Qel8s>(                                                                 \
            {pSrc, srcStep, pDst, dstStep, roiSize, mask, borderMode, borderValue, divisor, pBuffer}, filters, \
            qel::kFixed_8u8s);                                                                                 \
    }
SOBEL(qeliFilterSobelHorizBorder_32f_C1R, Qel32f, Qel32f, qel::kSobelHoriz, qel::kFixed_32f)
SOBEL(qeliFilterSobelHorizBorder_8u16s_C1R, Qel8u, Qel16s, qel::kSobelHoriz, qel::kSobelHoriz_8u16s)
SOBEL_DIVIDED(qeliFilterSobelHorizBorder_8u8s_C1R, qel::kSobelHoriz)
SOBEL(qeliFilterSobelVertBorder_32f_C1R, Qel32f, Qel32f, qel::kSobelVert, qel::kFixed_32f)
SOBEL(qeliFilterSobelVertBorder_8u16s_C1R, Qel8u, Qel16s, qel::kSobelVert, qel::kSobelVert_8u16s)
SOBEL_DIVIDED(qeliFilterSobelVertBorder_8u8s_C1R, qel::kSobelVert)
SOBEL(qeliFilterSobelNegVertBorder_32f_C1R, Qel32f, Qel32f, qel::kSobelNegVert, qel::kFixed_32f)
SOBEL(qeliFilterSobelNegVertBorder_8u16s_C1R, Qel8u, Qel16s, qel::kSobelNegVert, qel::kFixed_8u16s)
SOBEL_DIVIDED(qeliFilterSobelNegVertBorder_8u8s_C1R, qel::kSobelNegVert)
SOBEL(qeliFilterSobelHorizSecondBorder_32f_C1R, Qel32f, Qel32f, qel::kSobelHorizSecond, qel::kFixed_32f)
SOBEL(qeliFilterSobelHorizSecondBorder_8u16s_C1R, Qel8u, Qel16s, qel::kSobelHorizSecond, qel::kFixed_8u16s)
SOBEL_DIVIDED(qeliFilterSobelHorizSecondBorder_8u8s_C1R, qel::kSobelHorizSecond)
SOBEL(qeliFilterSobelVertSecondBorder_32f_C1R, Qel32f, Qel32f, qel::kSobelVertSecond, qel::kFixed_32f)
SOBEL(qeliFilterSobelVertSecondBorder_8u16s_C1R, Qel8u, Qel16s, qel::kSobelVertSecond, qel::kFixed_8u16s)
SOBEL_DIVIDED(qeliFilterSobelVertSecondBorder_8u8s_C1R, qel::kSobelVertSecond)
SOBEL(qeliFilterSobelCrossBorder_32f_C1R, Qel32f, Qel32f, qel::kSobelCross, qel::kFixed_32f)
SOBEL(qeliFilterSobelCrossBorder_8u16s_C1R, Qel8u, Qel16s, qel::kSobelCross, qel::kFixed_8u16s)
SOBEL_DIVIDED(qeliFilterSobelCrossBorder_8u8s_C1R, qel::kSobelCross)
#undef SOBEL
#undef SOBEL_DIVIDED

#define BUFFER_SIZE(name, scratch)                                        \
    qelStatus name(QelSize roiSize, int mask, int* pBufferSize) {         \
        return qel::fixedBufferSize(roiSize, mask, pBufferSize, scratch); \
    }
BUFFER_SIZE(qeliFilterSobelHorizGetBufferSize_32f_C1R, qel::kFixed_32f)
BUFFER_SIZE(qeliFilterSobelHorizGetBufferSize_8u16s_C1R, qel::kSobelHoriz_8u16s)
BUFFER_SIZE(qeliFilterSobelHorizGetBufferSize_8u8s_C1R, qel::kFixed_8u8s)
BUFFER_SIZE(qeliFilterSobelVertGetBufferSize_32f_C1R, qel::kFixed_32f)
BUFFER_SIZE(qeliFilterSobelVertGetBufferSize_8u16s_C1R, qel::kSobelVert_8u16s)
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
