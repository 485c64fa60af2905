#include "filter/fixed_filters.h"
#include "qelcv/filter.h"

namespace qel {
namespace {

constexpr FixedFilters kLowpass_32f = {{kRowAvr3, kColumnAvr3}, {kRowAvr5, kColumnAvr5}};
constexpr FixedFilters kLowpass_8u = {{kRowAvr3, kColumn8uAvr3}, {kRowAvr5, kColumn8uAvr5}};

constexpr FixedScratch kLowpassScratch_32f = {64, 12, 184, 32, true};

}  // namespace
}  // namespace qel

#define LOWPASS(name, T, filters, scratch)                                                                         \
    qelStatus name(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize roiSize, int mask, int borderMode,    \
                   T borderValue, Qel8u* pBuffer) {                                                                \
        return qel::fixedFilter<T, T>(                                                                             \
            {pSrc, srcStep, pDst, dstStep, roiSize, mask, borderMode, borderValue, 1, pBuffer}, filters, scratch); \
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
