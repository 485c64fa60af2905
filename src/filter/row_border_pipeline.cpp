#include <atomic>

#include "filter/border_mode.h"
#include "filter/by_taps.h"
#include "filter/pipeline_scratch.h"
#include "filter/row_border_pipeline_kernels.h"
#include "frame/check.h"
#include "frame/rows.h"
#include "qelcv/filter.h"

namespace qel {
namespace {

// The scratch that one thread may use beyond its row pointers.
struct OwnBytes {
    int perTap;
    int fixed;

    PipelineScratch layout(QelSize roiSize, int kernelSize) const {
        return PipelineScratch(roiSize, kernelSize, int64_t{perTap} * kernelSize + fixed);
    }
};

constexpr OwnBytes kOwnBytes_8u16s_C1R = {36, 112};
constexpr OwnBytes kOwnBytes_8u16s_C3R = {60, 112};
constexpr OwnBytes kOwnBytes_16s_C1R = {48, 80};
constexpr OwnBytes kOwnBytes_16s_C3R = {40, 64};
constexpr OwnBytes kOwnBytes_Low_16s_C1R = {24, 64};
constexpr OwnBytes kOwnBytes_Low_16s_C3R = {208, 64};
constexpr OwnBytes kOwnBytes_32f_C1R = {64, 64};
constexpr OwnBytes kOwnBytes_32f_C3R = {192, 32};

qelStatus getBufferSize(QelSize roiSize, int kernelSize, int* pBufferSize, OwnBytes ownBytes) {
    const qelStatus status = Check().pointers(pBufferSize).size(roiSize).length(kernelSize).status();
    if (status != qelStatusOk) return status;
    return writeBufferSize(ownBytes.layout(roiSize, kernelSize).bytes(), pBufferSize);
}

constexpr ByTaps ownFilterRowBorderPipeline_8u16s_C3R = {ownFilterRowBorderPipeline_8u16s_C3R_3x3_W7cn,
                                                         ownFilterRowBorderPipeline_8u16s_C3R_5x5_W7cn,
                                                         ownFilterRowBorderPipeline_8u16s_C3R_X_W7cn};
constexpr ByTaps ownFilterRowBorderPipeline_16s_C1R = {ownFilterRowBorderPipeline_16s_C1R_3x3_W7cn,
                                                       ownFilterRowBorderPipeline_16s_C1R_5x5_W7cn,
                                                       ownFilterRowBorderPipeline_16s_C1R_X_W7cn};
constexpr ByTaps ownFilterRowBorderPipeline_16s_C3R = {ownFilterRowBorderPipeline_16s_C3R_3x3_W7cn,
                                                       ownFilterRowBorderPipeline_16s_C3R_5x5_W7cn,
                                                       ownFilterRowBorderPipeline_16s_C3R_X_W7cn};
constexpr ByTaps ownFilterRowBorderLowPipeline_16s_C3R = {ownFilterRowBorderLowPipeline_16s_C3R_3x3_W7cn,
                                                          ownFilterRowBorderLowPipeline_16s_C3R_5x5_W7cn,
                                                          ownFilterRowBorderLowPipeline_16s_C3R_X_W7cn};

constexpr ByTaps ownFilterRowBorderPipeline_32f_C3R = {ownFilterRowBorderPipeline_32f_C3R_3x3_W7cn,
                                                       ownFilterRowBorderPipeline_32f_C3R_5x5_W7cn,
                                                       ownFilterRowBorderPipeline_32f_C3R_X_W7cn};

RowKernel_8u16s* ownFilterRowBorderPipeline_8u16s_C1R(const RowFilter<Qel8u, Qel16s>& filter, QelSize) {
    constexpr ByTaps kKernels = {ownFilterRowBorderPipeline_8u16s_C1R_3x3_W7cn,
                                 ownFilterRowBorderPipeline_8u16s_C1R_5x5_W7cn,
                                 ownFilterRowBorderPipeline_8u16s_C1R_X_W7cn};
    if (filter.kernelSize == 3 && filter.divisor == 1) return ownFilterRowBorderPipeline_8u16s_C1R_3x3_1_W7cn;
    return kKernels.of(filter.kernelSize);
}

RowKernel_16s* ownFilterRowBorderLowPipeline_16s_C1R(const RowFilter<Qel16s, Qel16s>& filter, QelSize rows) {
    constexpr ByTaps kKernels = {ownFilterRowBorderLowPipeline_16s_C1R_3x3_W7cn,
                                 ownFilterRowBorderLowPipeline_16s_C1R_5x5_W7cn,
                                 ownFilterRowBorderLowPipeline_16s_C1R_X_W7cn};
    const bool shifts = filter.kernelSize == 5 && filter.borderMode == qelBorderRepl && filter.anchor == 2 &&
                        isSymmetric(filter.pKernel, 5) && rows.width - filter.anchor > 8 && filter.divisor == 16;
    return shifts ? ownFilterRowBorderLowPipeline_16s_C1R_5x5_Repl_SHIFT_W7 : kKernels.of(filter.kernelSize);
}

RowKernel_32f* ownFilterRowBorderPipeline_32f_C1R(const RowFilter<Qel32f, Qel32f>& filter, QelSize rows) {
    constexpr ByTaps kKernels = {ownFilterRowBorderPipeline_32f_C1R_3x3_W7cn,
                                 ownFilterRowBorderPipeline_32f_C1R_5x5_W7cn,
                                 ownFilterRowBorderPipeline_32f_C1R_X_W7cn};
    if (filter.kernelSize == 3 && rows.width > 18 && filter.anchor == 1)
        return ownFilterRowBorderPipeline_32f_C1R_3x3_W7;
    if (filter.kernelSize == 5 && rows.width > 16 && filter.anchor == 2)
        return isSymmetric(filter.pKernel, 5) ? ownFilterRowBorderPipeline_32f_C1R_5x5_W7_sym
                                              : ownFilterRowBorderPipeline_32f_C1R_5x5_W7;
    return kKernels.of(filter.kernelSize);
}

// Rows ahead of the first without a pointer.
template <class Out>
int rowsAheadOfNull(Out* const* pRowDst, int height) {
    int rows = 0;
    while (rows < height && pRowDst[rows] != nullptr) ++rows;
    return rows;
}

// Filters each row of the region by the kernel that choose(filter, rows) gives for a thread's rows. A thread stops at a
// null row pointer.
template <class T, class Out, class K, class Choose>
qelStatus filterRows(const T* pSrc, int srcStep, Out* const* pRowDst, QelSize roiSize, int channels,
                     const RowFilter<T, K>& filter, Qel8u* pBuffer, OwnBytes ownBytes, bool worthThreads,
                     const Choose& choose) {
    const qelStatus status =
        Check()
            .pointers(pSrc, pRowDst, filter.pKernel, pBuffer)
            .size(roiSize)
            .require(filter.kernelSize >= 1, qelStatusBadMaskSize)
            .require(filter.anchor >= 0 && filter.anchor < filter.kernelSize, qelStatusBadAnchor)
            .steps(rowOf<T>(roiSize.width, channels), srcStep)
            .require(isBorderMode(filter.borderMode), qelStatusBadArg)
            .require(filter.borderMode != qelBorderConst || filter.pBorderValue != nullptr, qelStatusNullPointer)
            .require(filter.divisor != 0, qelStatusBadArg)
            .status();
    if (status != qelStatusOk) return status;

    const PipelineScratch scratch = ownBytes.layout(roiSize, filter.kernelSize);
    std::atomic<bool> complete = true;
    forRows(roiSize, worthThreads && kSeparable.reachedBy(roiSize), [&](const Share& s) {
        Out* const* const rows = pRowDst + s.y;
        const int height = rowsAheadOfNull(rows, s.size.height);
        if (height < s.size.height) complete = false;
        if (height == 0) return;
        RowFilter<T, K> own = filter;
        own.streaming = outgrowsCache(channels * int{sizeof(T) + sizeof(Out)}, s.size);
        RowKernel<T, Out, K>* const kernel = choose(filter, s.size);
        kernel(row(pSrc, srcStep, s.y), srcStep, rows, {s.size.width, height}, own, scratch.part(pBuffer, s.thread));
    });
    return complete ? qelStatusOk : qelStatusNullPointer;
}

}  // namespace
}  // namespace qel

#define FILTER_ROWS_C1(name, T, Out, worthThreads, ownBytes, choose)                                                 \
    qelStatus name(const T* pSrc, int srcStep, Out* const* pRowDst, QelSize roiSize, const Qel16s* pKernel,          \
                   int kernelSize, int anchor, int borderMode, T borderValue, int divisor, Qel8u* pBuffer) {         \
        const qel::RowFilter<T, Qel16s> filter = {pKernel,      kernelSize, anchor, borderMode,                      \
                                                  &borderValue, divisor,    false};                                  \
        return qel::filterRows(pSrc, srcStep, pRowDst, roiSize, 1, filter, pBuffer, ownBytes, worthThreads, choose); \
    }
FILTER_ROWS_C1(qeliFilterRowBorderPipeline_8u16s_C1R, Qel8u, Qel16s, true, qel::kOwnBytes_8u16s_C1R,
               qel::ownFilterRowBorderPipeline_8u16s_C1R)
FILTER_ROWS_C1(qeliFilterRowBorderPipeline_16s_C1R, Qel16s, Qel16s, kernelSize > 3, qel::kOwnBytes_16s_C1R,
               qel::ownFilterRowBorderPipeline_16s_C1R)
FILTER_ROWS_C1(qeliFilterRowBorderPipeline_Low_16s_C1R, Qel16s, Qel16s, true, qel::kOwnBytes_Low_16s_C1R,
               qel::ownFilterRowBorderLowPipeline_16s_C1R)
#undef FILTER_ROWS_C1

#define FILTER_ROWS_C3(name, T, Out, ownBytes, choose)                                                               \
    qelStatus name(const T* pSrc, int srcStep, Out* const* pRowDst, QelSize roiSize, const Qel16s* pKernel,          \
                   int kernelSize, int anchor, int borderMode, const T* pBorderValue, int divisor, Qel8u* pBuffer) { \
        const qel::RowFilter<T, Qel16s> filter = {pKernel,      kernelSize, anchor, borderMode,                      \
                                                  pBorderValue, divisor,    false};                                  \
        return qel::filterRows(pSrc, srcStep, pRowDst, roiSize, 3, filter, pBuffer, ownBytes, true, choose);         \
    }
FILTER_ROWS_C3(qeliFilterRowBorderPipeline_8u16s_C3R, Qel8u, Qel16s, qel::kOwnBytes_8u16s_C3R,
               qel::ownFilterRowBorderPipeline_8u16s_C3R)
FILTER_ROWS_C3(qeliFilterRowBorderPipeline_16s_C3R, Qel16s, Qel16s, qel::kOwnBytes_16s_C3R,
               qel::ownFilterRowBorderPipeline_16s_C3R)
FILTER_ROWS_C3(qeliFilterRowBorderPipeline_Low_16s_C3R, Qel16s, Qel16s, qel::kOwnBytes_Low_16s_C3R,
               qel::ownFilterRowBorderLowPipeline_16s_C3R)
#undef FILTER_ROWS_C3

qelStatus qeliFilterRowBorderPipeline_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* const* pRowDst, QelSize roiSize,
                                              const Qel32f* pKernel, int kernelSize, int anchor, int borderMode,
                                              Qel32f borderValue, Qel8u* pBuffer) {
    const qel::RowFilter<Qel32f, Qel32f> filter = {pKernel, kernelSize, anchor, borderMode, &borderValue, 1, false};
    return qel::filterRows(pSrc, srcStep, pRowDst, roiSize, 1, filter, pBuffer, qel::kOwnBytes_32f_C1R,
                           qel::runsepomp(kernelSize) != 0, qel::ownFilterRowBorderPipeline_32f_C1R);
}

qelStatus qeliFilterRowBorderPipeline_32f_C3R(const Qel32f* pSrc, int srcStep, Qel32f* const* pRowDst, QelSize roiSize,
                                              const Qel32f* pKernel, int kernelSize, int anchor, int borderMode,
                                              const Qel32f* pBorderValue, Qel8u* pBuffer) {
    const qel::RowFilter<Qel32f, Qel32f> filter = {pKernel, kernelSize, anchor, borderMode, pBorderValue, 1, false};
    return qel::filterRows(pSrc, srcStep, pRowDst, roiSize, 3, filter, pBuffer, qel::kOwnBytes_32f_C3R, true,
                           qel::ownFilterRowBorderPipeline_32f_C3R);
}

#define BUFFER_SIZE(name, ownBytes)                                            \
    qelStatus name(QelSize roiSize, int kernelSize, int* pBufferSize) {        \
        return qel::getBufferSize(roiSize, kernelSize, pBufferSize, ownBytes); \
    }
BUFFER_SIZE(qeliFilterRowBorderPipelineGetBufferSize_8u16s_C1R, qel::kOwnBytes_8u16s_C1R)
BUFFER_SIZE(qeliFilterRowBorderPipelineGetBufferSize_8u16s_C3R, qel::kOwnBytes_8u16s_C3R)
BUFFER_SIZE(qeliFilterRowBorderPipelineGetBufferSize_16s_C1R, qel::kOwnBytes_16s_C1R)
BUFFER_SIZE(qeliFilterRowBorderPipelineGetBufferSize_16s_C3R, qel::kOwnBytes_16s_C3R)
BUFFER_SIZE(qeliFilterRowBorderPipelineGetBufferSize_Low_16s_C1R, qel::kOwnBytes_Low_16s_C1R)
BUFFER_SIZE(qeliFilterRowBorderPipelineGetBufferSize_Low_16s_C3R, qel::kOwnBytes_Low_16s_C3R)
BUFFER_SIZE(qeliFilterRowBorderPipelineGetBufferSize_32f_C1R, qel::kOwnBytes_32f_C1R)
BUFFER_SIZE(qeliFilterRowBorderPipelineGetBufferSize_32f_C3R, qel::kOwnBytes_32f_C3R)
#undef BUFFER_SIZE
