#ifndef QELCV_FILTER_ROW_BORDER_PIPELINE_KERNELS_H_
#define QELCV_FILTER_ROW_BORDER_PIPELINE_KERNELS_H_

#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

// What a call wants done to each of its rows.
template <class T, class K>
struct RowFilter {
    const K* pKernel;
    int kernelSize;
    int anchor;
    int borderMode;
    const T* pBorderValue;  // one for each channel
    int divisor;            // not for 32f
    bool streaming;         // stores bypass the cache
};

// Coefficients at equal distances from the middle are equal; a NaN is equal to nothing.
template <class K>
bool isSymmetric(const K* pKernel, int kernelSize) {
    for (int i = 0, j = kernelSize - 1; i < j; ++i, --j)
        if (pKernel[i] != pKernel[j]) return false;
    return true;
}

// Filters size.height rows of the source, each into a row of its own. The strips and a table of coefficients go to
// the scratch.
template <class T, class Out, class K>
using RowKernel = void(const T* pSrc, int srcStep, Out* const* pRowDst, QelSize size, const RowFilter<T, K>& filter,
                       void* pScratch);

using RowKernel_8u16s = RowKernel<Qel8u, Qel16s, Qel16s>;
using RowKernel_16s = RowKernel<Qel16s, Qel16s, Qel16s>;
using RowKernel_32f = RowKernel<Qel32f, Qel32f, Qel32f>;

extern const Kernel<RowKernel_8u16s> ownFilterRowBorderPipeline_8u16s_C1R_3x3_W7cn;
extern const Kernel<RowKernel_8u16s> ownFilterRowBorderPipeline_8u16s_C1R_3x3_1_W7cn;
extern const Kernel<RowKernel_8u16s> ownFilterRowBorderPipeline_8u16s_C1R_5x5_W7cn;
extern const Kernel<RowKernel_8u16s> ownFilterRowBorderPipeline_8u16s_C1R_X_W7cn;
extern const Kernel<RowKernel_8u16s> ownFilterRowBorderPipeline_8u16s_C3R_3x3_W7cn;
extern const Kernel<RowKernel_8u16s> ownFilterRowBorderPipeline_8u16s_C3R_5x5_W7cn;
extern const Kernel<RowKernel_8u16s> ownFilterRowBorderPipeline_8u16s_C3R_X_W7cn;

extern const Kernel<RowKernel_16s> ownFilterRowBorderPipeline_16s_C1R_3x3_W7cn;
extern const Kernel<RowKernel_16s> ownFilterRowBorderPipeline_16s_C1R_5x5_W7cn;
extern const Kernel<RowKernel_16s> ownFilterRowBorderPipeline_16s_C1R_X_W7cn;
extern const Kernel<RowKernel_16s> ownFilterRowBorderPipeline_16s_C3R_3x3_W7cn;
extern const Kernel<RowKernel_16s> ownFilterRowBorderPipeline_16s_C3R_5x5_W7cn;
extern const Kernel<RowKernel_16s> ownFilterRowBorderPipeline_16s_C3R_X_W7cn;

extern const Kernel<RowKernel_16s> ownFilterRowBorderLowPipeline_16s_C1R_3x3_W7cn;
extern const Kernel<RowKernel_16s> ownFilterRowBorderLowPipeline_16s_C1R_5x5_W7cn;
extern const Kernel<RowKernel_16s> ownFilterRowBorderLowPipeline_16s_C1R_5x5_Repl_SHIFT_W7;
extern const Kernel<RowKernel_16s> ownFilterRowBorderLowPipeline_16s_C1R_X_W7cn;
extern const Kernel<RowKernel_16s> ownFilterRowBorderLowPipeline_16s_C3R_3x3_W7cn;
extern const Kernel<RowKernel_16s> ownFilterRowBorderLowPipeline_16s_C3R_5x5_W7cn;
extern const Kernel<RowKernel_16s> ownFilterRowBorderLowPipeline_16s_C3R_X_W7cn;

extern const Kernel<RowKernel_32f> ownFilterRowBorderPipeline_32f_C1R_3x3_W7cn;
extern const Kernel<RowKernel_32f> ownFilterRowBorderPipeline_32f_C1R_5x5_W7cn;
extern const Kernel<RowKernel_32f> ownFilterRowBorderPipeline_32f_C1R_X_W7cn;
extern const Kernel<RowKernel_32f> ownFilterRowBorderPipeline_32f_C3R_3x3_W7cn;
extern const Kernel<RowKernel_32f> ownFilterRowBorderPipeline_32f_C3R_5x5_W7cn;
extern const Kernel<RowKernel_32f> ownFilterRowBorderPipeline_32f_C3R_X_W7cn;

// Whole images by a centred kernel: _sym is for symmetric ones.
extern const Kernel<RowKernel_32f> ownFilterRowBorderPipeline_32f_C1R_3x3_W7;
extern const Kernel<RowKernel_32f> ownFilterRowBorderPipeline_32f_C1R_5x5_W7;
extern const Kernel<RowKernel_32f> ownFilterRowBorderPipeline_32f_C1R_5x5_W7_sym;

}  // namespace qel

#endif
