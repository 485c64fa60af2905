#include "filter/fixed_filters.h"
#include "qelcv/filter.h"

namespace qel {
namespace {

constexpr FixedFilter<Qel32f, Qel32f, Qel32f> kLowpass_32f[] = {
    {ownFilterRowBorderPipeline_32f_C1R_3x3_kerAvr_W7, ownFilterColumnPipeline_32f_C1R_3x3_kerAvr_W7cn},
    {ownFilterRowBorderPipeline_32f_C1R_5x5_kerAvr_W7, ownFilterColumnPipeline_32f_C1R_5x5_kerAvr_W7cn},
};

constexpr FixedFilter<Qel8u, Qel16s, Qel8u> kLowpass_8u[] = {
    {ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerAvr_W7, ownFilterColumnPipeline_16s8u_C1R_3x3_kerAvr_W7cn},
    {ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerAvr_W7, ownFilterColumnPipeline_16s8u_C1R_5x5_kerAvr_W7cn},
};

constexpr FixedScratch kLowpassScratch_32f = {64, 12, 184, 32, true};

}  // namespace
}  // namespace qel

#define LOWPASS(name, T, filters, scratch)                                                                      \
    qelStatus name(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize roiSize, int mask, int borderMode, \
                   T borderValue, Qel8u* pBuffer) {                                                             \
        return qel::fixedFilter(                                                                                \
            qel::FixedCall<T, T>{                                                                               \
                {pSrc, srcStep}, {pDst, dstStep}, roiSize, mask, borderMode, borderValue, 1, pBuffer},          \
            filters, scratch);                                                                                  \
    }
LOWPASS(qeliFilterLowpassBorder_32f_C1R, Qel32f, qel::kLowpass_32f, qel::kLowpassScratch_32f)
LOWPASS(qeliFilterLowpassBorder_8u_C1R, Qel8u, qel::kLowpass_8u, qel::kFixed_8u16s)
#undef LOWPASS

qelStatus qeliFilterLowpassGetBufferSize_32f_C1R(QelSize roiSize, int mask, int* pBufferSize) {
    return qel::fixedBufferSize(roiSize, mask, pBufferSize, qel::kLowpassScratch_32f);
}

qelStatus qeliFilterLowpassGetBufferSize_8u_C1R(QelSize roiSize, int mask, int* pBufferSize) {
    return qel::fixedBufferSize(roiSize, mask, pBufferSize, qel::kFixed_8u16s);
}
