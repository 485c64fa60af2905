#include "filter/by_taps.h"
#include "filter/column_pipeline_kernels.h"
#include "filter/pipeline_scratch.h"
#include "frame/check.h"
#include "frame/rows.h"
#include "qelcv/filter.h"

namespace qel {
namespace {

// The divisor and the scratch come after the step; the row pointers, which cost a look at each, last of all.
template <class Src, class T, class K>
qelStatus checkColumns(const Src* const* pRowSrc, const T* pDst, int dstStep, QelSize roiSize, int channels,
                       const K* pKernel, int kernelSize, int divisor, const Qel8u* pBuffer) {
    const qelStatus status = Check()
                                 .pointers(pRowSrc, pDst, pKernel)
                                 .size(roiSize)
                                 .length(kernelSize)
                                 .steps(rowOf<T>(roiSize.width, channels), dstStep)
                                 .pointers(pBuffer)
                                 .require(divisor != 0, qelStatusBadArg)
                                 .status();
    if (status != qelStatusOk) return status;
    const int64_t rows = int64_t{roiSize.height} + kernelSize - 1;
    for (int64_t i = 0; i < rows; ++i)
        if (pRowSrc[i] == nullptr) return qelStatusNullPointer;
    return qelStatusOk;
}

// Bytes of scratch of one thread beside its row pointers: two rows of 32-bit samples and a third as margin, in whole
// groups. The scaled taps take less.
int64_t columnScratchBytes(int64_t width, int channels, int group) {
    return alignUp(width, group) * channels * 12 + 32;
}
constexpr int kGroup = 4;
constexpr int kLowGroup = 8;

qelStatus columnBufferSize(QelSize roiSize, int kernelSize, int channels, int group, int* pBufferSize) {
    const qelStatus status = Check().pointers(pBufferSize).size(roiSize).length(kernelSize).status();
    if (status != qelStatusOk) return status;
    return writeBufferSize(
        PipelineScratch(roiSize, kernelSize, columnScratchBytes(roiSize.width, channels, group)).bytes(), pBufferSize);
}

template <class T>
qelStatus columnPipeline(const Qel16s* const* pRowSrc, T* pDst, int dstStep, QelSize roiSize, int channels,
                         const Qel16s* pKernel, int kernelSize, int divisor, Qel8u* pBuffer,
                         const ByTaps<ColumnKernel<T>>& kernels) {
    const qelStatus status =
        checkColumns(pRowSrc, pDst, dstStep, roiSize, channels, pKernel, kernelSize, divisor, pBuffer);
    if (status != qelStatusOk) return status;

    // All threads read one copy of the scaled taps.
    const Qel32f reciprocal = 1.0F / static_cast<Qel32f>(divisor);
    const PipelineScratch scratch(roiSize, kernelSize, columnScratchBytes(roiSize.width, channels, kGroup));
    Qel32f* const pScaled = reinterpret_cast<Qel32f*>(scratch.part(pBuffer, 0));
    for (int i = 0; i < kernelSize; ++i) pScaled[i] = static_cast<Qel32f>(pKernel[i]) * reciprocal;
    const DividedTaps taps = {pKernel, kernelSize, reciprocal, pScaled};

    ColumnKernel<T>* const kernel = pick(kernels.of(kernelSize), roiSize);
    forRows(samples(roiSize, channels), separableInParallel(roiSize, kernelSize),
            [&](const Share& s) { kernel(pRowSrc + s.y, row(pDst, dstStep, s.y), dstStep, s.size, taps, s.y == 0); });
    return qelStatusOk;
}

// From this many samples on, results that nobody is about to read bypass the cache.
constexpr int kLargeLow = 0x40001;
constexpr int kLargeFloat = 0x20000;

// The whole region decides, not a thread's share of it.
ColumnLowKernel* lowKernel(QelSize size, const Qel16s* pKernel, int kernelSize, int divisor) {
    const bool large = area(size) >= kLargeLow;
    if (kernelSize == 3)
        return large ? ownFilterColumnLowPipeline_16s_C1R_3x3_W7cn_B : ownFilterColumnLowPipeline_16s_C1R_3x3_W7cn;
    if (kernelSize != 5) return ownFilterColumnLowPipeline_16s_C1R_X_W7cn;
    const bool symmetric = pKernel[0] == pKernel[4] && pKernel[1] == pKernel[3];
    if (!symmetric || divisor != 16 || size.height < 3) return ownFilterColumnLowPipeline_16s_C1R_5x5_W7cn;
    return large ? ownFilterColumnLowPipeline_16s_C1R_5x5_16_AAB_W7cn
                 : ownFilterColumnLowPipeline_16s_C1R_5x5_16_AAS_W7cn;
}

qelStatus columnLowPipeline(const Qel16s* const* pRowSrc, Qel16s* pDst, int dstStep, QelSize roiSize, int channels,
                            const Qel16s* pKernel, int kernelSize, int divisor, const Qel8u* pBuffer) {
    const qelStatus status =
        checkColumns(pRowSrc, pDst, dstStep, roiSize, channels, pKernel, kernelSize, divisor, pBuffer);
    if (status != qelStatusOk) return status;

    const QelSize size = samples(roiSize, channels);
    const int reciprocal = static_cast<int>(16384.0F / static_cast<Qel32f>(divisor));
    ColumnLowKernel* const kernel = lowKernel(size, pKernel, kernelSize, divisor);
    forRows(size, separableInParallel(roiSize, kernelSize), [&](const Share& s) {
        kernel(pRowSrc + s.y, row(pDst, dstStep, s.y), dstStep, s.size, pKernel, kernelSize, reciprocal);
    });
    return qelStatusOk;
}

constexpr ByTaps<ColumnFloatKernel> kFloat = {ownFilterColumnPipeline_32f_C1R_3x3_W7cn,
                                              ownFilterColumnPipeline_32f_C1R_5x5_W7cn,
                                              ownFilterColumnPipeline_32f_C1R_X_W7cn};
constexpr ByTaps<ColumnFloatKernel> kLargeFloatKernels = {ownFilterColumnPipeline_32f_C1R_3x3_W7cn_B,
                                                          ownFilterColumnPipeline_32f_C1R_5x5_W7cn_B,
                                                          ownFilterColumnPipeline_32f_C1R_X_W7cn_B};

// Never parallel.
qelStatus columnFloatPipeline(const Qel32f* const* pRowSrc, Qel32f* pDst, int dstStep, QelSize roiSize, int channels,
                              const Qel32f* pKernel, int kernelSize, const Qel8u* pBuffer) {
    const qelStatus status = checkColumns(pRowSrc, pDst, dstStep, roiSize, channels, pKernel, kernelSize, 1, pBuffer);
    if (status != qelStatusOk) return status;

    const QelSize size = samples(roiSize, channels);
    const ByTaps<ColumnFloatKernel>& kernels = area(size) >= kLargeFloat ? kLargeFloatKernels : kFloat;
    kernels.of(kernelSize)(pRowSrc, pDst, dstStep, size, pKernel, kernelSize);
    return qelStatusOk;
}

// Nothing is kept there, whatever the region.
qelStatus columnFloatBufferSize(QelSize roiSize, int kernelSize, int* pBufferSize) {
    const qelStatus status = Check().pointers(pBufferSize).size(roiSize).length(kernelSize).status();
    return status != qelStatusOk ? status : writeBufferSize(32, pBufferSize);
}

constexpr ByTaps<ColumnKernel<Qel16s>> k16s = {ownFilterColumnPipeline_16s_C1R_3x3_W7cn,
                                               ownFilterColumnPipeline_16s_C1R_5x5_W7cn,
                                               ownFilterColumnPipeline_16s_C1R_X_W7cn};
constexpr ByTaps<ColumnKernel<Qel8u>> k16s8u = {ownFilterColumnPipeline_16s8u_C1R_3x3_W7cn,
                                                ownFilterColumnPipeline_16s8u_C1R_5x5_W7cn,
                                                ownFilterColumnPipeline_16s8u_C1R_X_W7cn};
constexpr ByTaps<ColumnKernel<Qel8s>> k16s8s = {ownFilterColumnPipeline_16s8s_C1R_3x3_W7cn,
                                                ownFilterColumnPipeline_16s8s_C1R_5x5_W7cn,
                                                ownFilterColumnPipeline_16s8s_C1R_X_W7cn};

}  // namespace
}  // namespace qel

#define COLUMN_PIPELINE(name, T, channels, kernels)                                                                  \
    qelStatus name(const Qel16s* const* pRowSrc, T* pDst, int dstStep, QelSize roiSize, const Qel16s* pKernel,       \
                   int kernelSize, int divisor, Qel8u* pBuffer) {                                                    \
        return qel::columnPipeline(pRowSrc, pDst, dstStep, roiSize, channels, pKernel, kernelSize, divisor, pBuffer, \
                                   kernels);                                                                         \
    }
COLUMN_PIPELINE(qeliFilterColumnPipeline_16s_C1R, Qel16s, 1, qel::k16s)
COLUMN_PIPELINE(qeliFilterColumnPipeline_16s_C3R, Qel16s, 3, qel::k16s)
COLUMN_PIPELINE(qeliFilterColumnPipeline_16s8u_C1R, Qel8u, 1, qel::k16s8u)
COLUMN_PIPELINE(qeliFilterColumnPipeline_16s8u_C3R, Qel8u, 3, qel::k16s8u)
COLUMN_PIPELINE(qeliFilterColumnPipeline_16s8s_C1R, Qel8s, 1, qel::k16s8s)
COLUMN_PIPELINE(qeliFilterColumnPipeline_16s8s_C3R, Qel8s, 3, qel::k16s8s)
#undef COLUMN_PIPELINE

#define COLUMN_LOW_PIPELINE(name, channels)                                                                         \
    qelStatus name(const Qel16s* const* pRowSrc, Qel16s* pDst, int dstStep, QelSize roiSize, const Qel16s* pKernel, \
                   int kernelSize, int divisor, Qel8u* pBuffer) {                                                   \
        return qel::columnLowPipeline(pRowSrc, pDst, dstStep, roiSize, channels, pKernel, kernelSize, divisor,      \
                                      pBuffer);                                                                     \
    }
COLUMN_LOW_PIPELINE(qeliFilterColumnPipeline_Low_16s_C1R, 1)
COLUMN_LOW_PIPELINE(qeliFilterColumnPipeline_Low_16s_C3R, 3)
#undef COLUMN_LOW_PIPELINE

#define COLUMN_FLOAT_PIPELINE(name, channels)                                                                       \
    qelStatus name(const Qel32f* const* pRowSrc, Qel32f* pDst, int dstStep, QelSize roiSize, const Qel32f* pKernel, \
                   int kernelSize, Qel8u* pBuffer) {                                                                \
        return qel::columnFloatPipeline(pRowSrc, pDst, dstStep, roiSize, channels, pKernel, kernelSize, pBuffer);   \
    }
COLUMN_FLOAT_PIPELINE(qeliFilterColumnPipeline_32f_C1R, 1)
COLUMN_FLOAT_PIPELINE(qeliFilterColumnPipeline_32f_C3R, 3)
#undef COLUMN_FLOAT_PIPELINE

#define COLUMN_BUFFER_SIZE(name, channels, group)                                             \
    qelStatus name(QelSize roiSize, int kernelSize, int* pBufferSize) {                       \
        return qel::columnBufferSize(roiSize, kernelSize, channels, qel::group, pBufferSize); \
    }
COLUMN_BUFFER_SIZE(qeliFilterColumnPipelineGetBufferSize_16s_C1R, 1, kGroup)
COLUMN_BUFFER_SIZE(qeliFilterColumnPipelineGetBufferSize_16s_C3R, 3, kGroup)
COLUMN_BUFFER_SIZE(qeliFilterColumnPipelineGetBufferSize_16s8u_C1R, 1, kGroup)
COLUMN_BUFFER_SIZE(qeliFilterColumnPipelineGetBufferSize_16s8u_C3R, 3, kGroup)
COLUMN_BUFFER_SIZE(qeliFilterColumnPipelineGetBufferSize_16s8s_C1R, 1, kGroup)
COLUMN_BUFFER_SIZE(qeliFilterColumnPipelineGetBufferSize_16s8s_C3R, 3, kGroup)
COLUMN_BUFFER_SIZE(qeliFilterColumnPipelineGetBufferSize_Low_16s_C1R, 1, kLowGroup)
COLUMN_BUFFER_SIZE(qeliFilterColumnPipelineGetBufferSize_Low_16s_C3R, 3, kLowGroup)
#undef COLUMN_BUFFER_SIZE

#define COLUMN_FLOAT_BUFFER_SIZE(name)                                       \
    qelStatus name(QelSize roiSize, int kernelSize, int* pBufferSize) {      \
        return qel::columnFloatBufferSize(roiSize, kernelSize, pBufferSize); \
    }
COLUMN_FLOAT_BUFFER_SIZE(qeliFilterColumnPipelineGetBufferSize_32f_C1R)
COLUMN_FLOAT_BUFFER_SIZE(qeliFilterColumnPipelineGetBufferSize_32f_C3R)
#undef COLUMN_FLOAT_BUFFER_SIZE
