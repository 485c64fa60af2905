#ifndef QELCV_FILTER_COLUMN_PIPELINE_KERNELS_H_
#define QELCV_FILTER_COLUMN_PIPELINE_KERNELS_H_

#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

// Every kernel reads size.height + kernelSize - 1 rows of size.width samples and writes size.height rows.

// The taps of a filter with a divisor.
struct DividedTaps {
    const Qel16s* pKernel;
    int kernelSize;
    Qel32f reciprocal;      // of the divisor
    const Qel32f* pScaled;  // each tap times the reciprocal
};

// `firstOfImage` tells that the first row is the image's, not that of a later thread.
template <class T>
using ColumnKernel = void(const Qel16s* const* pRowSrc, T* pDst, int dstStep, QelSize size, const DividedTaps& taps,
                          bool firstOfImage);

// `reciprocal` is that of the divisor in units of 1 / 16384.
using ColumnLowKernel = void(const Qel16s* const* pRowSrc, Qel16s* pDst, int dstStep, QelSize size,
                             const Qel16s* pKernel, int kernelSize, int reciprocal);

using ColumnFloatKernel = void(const Qel32f* const* pRowSrc, Qel32f* pDst, int dstStep, QelSize size,
                               const Qel32f* pKernel, int kernelSize);

extern const Kernel<ColumnKernel<Qel16s>> ownFilterColumnPipeline_16s_C1R_3x3_W7cn;
extern const Kernel<ColumnKernel<Qel16s>> ownFilterColumnPipeline_16s_C1R_5x5_W7cn;
extern const Kernel<ColumnKernel<Qel16s>> ownFilterColumnPipeline_16s_C1R_X_W7cn;
extern const Kernel<ColumnKernel<Qel8u>> ownFilterColumnPipeline_16s8u_C1R_3x3_W7cn;
extern const Kernel<ColumnKernel<Qel8u>> ownFilterColumnPipeline_16s8u_C1R_5x5_W7cn;
extern const Kernel<ColumnKernel<Qel8u>> ownFilterColumnPipeline_16s8u_C1R_X_W7cn;
extern const Kernel<ColumnKernel<Qel8s>> ownFilterColumnPipeline_16s8s_C1R_3x3_W7cn;
extern const Kernel<ColumnKernel<Qel8s>> ownFilterColumnPipeline_16s8s_C1R_5x5_W7cn;
extern const Kernel<ColumnKernel<Qel8s>> ownFilterColumnPipeline_16s8s_C1R_X_W7cn;

extern const Kernel<ColumnLowKernel> ownFilterColumnLowPipeline_16s_C1R_3x3_W7cn;
extern const Kernel<ColumnLowKernel> ownFilterColumnLowPipeline_16s_C1R_3x3_W7cn_B;
extern const Kernel<ColumnLowKernel> ownFilterColumnLowPipeline_16s_C1R_5x5_W7cn;
extern const Kernel<ColumnLowKernel> ownFilterColumnLowPipeline_16s_C1R_X_W7cn;

// A symmetric kernel over 16. One pair serves every alignment; the second is for large images.
extern const Kernel<ColumnLowKernel> ownFilterColumnLowPipeline_16s_C1R_5x5_16_AAS_W7cn;
extern const Kernel<ColumnLowKernel> ownFilterColumnLowPipeline_16s_C1R_5x5_16_AAB_W7cn;

extern const Kernel<ColumnFloatKernel> ownFilterColumnPipeline_32f_C1R_3x3_W7cn;
extern const Kernel<ColumnFloatKernel> ownFilterColumnPipeline_32f_C1R_3x3_W7cn_B;
extern const Kernel<ColumnFloatKernel> ownFilterColumnPipeline_32f_C1R_5x5_W7cn;
extern const Kernel<ColumnFloatKernel> ownFilterColumnPipeline_32f_C1R_5x5_W7cn_B;
extern const Kernel<ColumnFloatKernel> ownFilterColumnPipeline_32f_C1R_X_W7cn;
extern const Kernel<ColumnFloatKernel> ownFilterColumnPipeline_32f_C1R_X_W7cn_B;

}  // namespace qel

#endif
