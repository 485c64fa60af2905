// Copies, fills, thresholds and differences of images, for the families' own use.
//
// `roiSize` counts pixels, steps count bytes. Samples need no alignment. Unless a block says otherwise, steps are not
// tested, and a function returns, tested in this order and with nothing written on an error:
//
//     qelStatusNullPointer  a pointer is null
//     qelStatusBadSize      width or height below 1
//     qelStatusOk           the region is written
#ifndef QELCV_FRAME_IMAGE_PRIMITIVES_H_
#define QELCV_FRAME_IMAGE_PRIMITIVES_H_

#include "qelcv/types.h"

namespace qel {

// pDst[x, y] = pSrc[x, y]. The regions do not overlap. Images of more than 0x100000 samples bypass the cache.
qelStatus qeliCopy_8u_C1R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep, QelSize roiSize);
qelStatus qeliCopy_8u_C3R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep, QelSize roiSize);
qelStatus qeliCopy_8u_C4R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep, QelSize roiSize);
qelStatus qeliCopy_16s_C1R(const Qel16s* pSrc, int srcStep, Qel16s* pDst, int dstStep, QelSize roiSize);
qelStatus qeliCopy_16u_C1R(const Qel16u* pSrc, int srcStep, Qel16u* pDst, int dstStep, QelSize roiSize);
qelStatus qeliCopy_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep, QelSize roiSize);
qelStatus qeliCopy_32f_C3R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep, QelSize roiSize);
qelStatus qeliCopy_32f_C4R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep, QelSize roiSize);

// pDst[x, y] = value. Images of more than 0x100000 samples that are not smaller than the largest cache bypass it.
qelStatus qeliSet_8u_C1R(Qel8u value, Qel8u* pDst, int dstStep, QelSize roiSize);

// A sample above the threshold becomes `value`, the others are copied. pDst may be pSrc with an equal step.
//
// qelStatusBadStep: a step is below 1, tested last. Steps are not compared with the row.
qelStatus qeliThreshold_GTVal_8u_C1R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep, QelSize roiSize,
                                     Qel8u threshold, Qel8u value);
qelStatus qeliThreshold_GTVal_16u_C1R(const Qel16u* pSrc, int srcStep, Qel16u* pDst, int dstStep, QelSize roiSize,
                                      Qel16u threshold, Qel16u value);
qelStatus qeliThreshold_GTVal_8u_C1IR(Qel8u* pSrcDst, int srcDstStep, QelSize roiSize, Qel8u threshold, Qel8u value);
qelStatus qeliThreshold_GTVal_16u_C1IR(Qel16u* pSrcDst, int srcDstStep, QelSize roiSize, Qel16u threshold,
                                       Qel16u value);

// A sample below the threshold becomes the threshold, the others are copied: NaNs, a zero of either sign beside a
// threshold of the other, and with a NaN as the threshold all of them. pDst may be pSrc with an equal step.
//
// qelStatusBadStep: a step is below 1, tested last. Steps are not compared with the row.
qelStatus qeliThreshold_LT_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep, QelSize roiSize,
                                   Qel32f threshold);
qelStatus qeliThreshold_LT_32f_C1IR(Qel32f* pSrcDst, int srcDstStep, QelSize roiSize, Qel32f threshold);

// How a sample compares with the threshold where it is replaced.
constexpr int kCompareLess = 0;
constexpr int kCompareGreater = 4;

// A sample that compares with the threshold as `compare` says becomes `value`, the others are copied. pDst may be pSrc
// with an equal step.
//
// qelStatusBadCompareOp: `compare` is neither kCompareLess nor kCompareGreater, tested first of all.
// qelStatusBadStep: a step is below 1, tested last. Steps are not compared with the row.
qelStatus qeliThreshold_Val_8u_C1R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep, QelSize roiSize,
                                   Qel8u threshold, Qel8u value, int compare);
qelStatus qeliThreshold_Val_16u_C1R(const Qel16u* pSrc, int srcStep, Qel16u* pDst, int dstStep, QelSize roiSize,
                                    Qel16u threshold, Qel16u value, int compare);

// A sample that compares with the threshold as `compare` says becomes the threshold: kCompareLess gives the maximum of
// the two, kCompareGreater the minimum. Samples that do not compare so are copied, as above.
//
// qelStatusBadStep: a step is below 1. Steps are not compared with the row.
// qelStatusBadCompareOp: `compare` is neither kCompareLess nor kCompareGreater, tested last.
qelStatus qeliThreshold_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep, QelSize roiSize,
                                Qel32f threshold, int compare);

// pDst[x, y] = pSrc2[x, y] - pSrc1[x, y], rounded once, to single precision. pDst may be one of the sources with an
// equal step. In place, pSrcDst is the second operand and the destination. Rows go to OpenMP threads, except where
// width and height add up to less than 256 (C3, C4: the width in samples) and pDst is not the second operand.
qelStatus qeliSub_32f_C1R(const Qel32f* pSrc1, int src1Step, const Qel32f* pSrc2, int src2Step, Qel32f* pDst,
                          int dstStep, QelSize roiSize);
qelStatus qeliSub_32f_C3R(const Qel32f* pSrc1, int src1Step, const Qel32f* pSrc2, int src2Step, Qel32f* pDst,
                          int dstStep, QelSize roiSize);
qelStatus qeliSub_32f_C4R(const Qel32f* pSrc1, int src1Step, const Qel32f* pSrc2, int src2Step, Qel32f* pDst,
                          int dstStep, QelSize roiSize);
qelStatus qeliSub_32f_C1IR(const Qel32f* pSrc, int srcStep, Qel32f* pSrcDst, int srcDstStep, QelSize roiSize);
qelStatus qeliSub_32f_C3IR(const Qel32f* pSrc, int srcStep, Qel32f* pSrcDst, int srcDstStep, QelSize roiSize);
qelStatus qeliSub_32f_C4IR(const Qel32f* pSrc, int srcStep, Qel32f* pSrcDst, int srcDstStep, QelSize roiSize);

// pDst[x, y] = max(0, pSrc2[x, y] - pSrc1[x, y]) / 2^scaleFactor, rounded to nearest with ties to even and saturated at
// 255. Any scale factor is accepted: above 8 all samples become 0, from -8 down all differences but 0 become 255. pDst
// may be one of the sources with an equal step. In place, pSrcDst is the second operand and the destination. Rows go to
// OpenMP threads.
qelStatus qeliSub_8u_C1RSfs(const Qel8u* pSrc1, int src1Step, const Qel8u* pSrc2, int src2Step, Qel8u* pDst,
                            int dstStep, QelSize roiSize, int scaleFactor);
qelStatus qeliSub_8u_C3RSfs(const Qel8u* pSrc1, int src1Step, const Qel8u* pSrc2, int src2Step, Qel8u* pDst,
                            int dstStep, QelSize roiSize, int scaleFactor);
qelStatus qeliSub_8u_C4RSfs(const Qel8u* pSrc1, int src1Step, const Qel8u* pSrc2, int src2Step, Qel8u* pDst,
                            int dstStep, QelSize roiSize, int scaleFactor);
qelStatus qeliSub_8u_C1IRSfs(const Qel8u* pSrc, int srcStep, Qel8u* pSrcDst, int srcDstStep, QelSize roiSize,
                             int scaleFactor);
qelStatus qeliSub_8u_C3IRSfs(const Qel8u* pSrc, int srcStep, Qel8u* pSrcDst, int srcDstStep, QelSize roiSize,
                             int scaleFactor);
qelStatus qeliSub_8u_C4IRSfs(const Qel8u* pSrc, int srcStep, Qel8u* pSrcDst, int srcDstStep, QelSize roiSize,
                             int scaleFactor);

}  // namespace qel

#endif
