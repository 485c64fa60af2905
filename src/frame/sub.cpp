#include <algorithm>

#include "frame/check.h"
#include "frame/image_primitives.h"
#include "frame/image_primitives_kernels.h"
#include "frame/rows.h"

namespace qel {
namespace {

template <class T, class Run>
qelStatus subRows(const T* pSrc1, int src1Step, const T* pSrc2, int src2Step, T* pDst, int dstStep, int height,
                  bool parallel, const Run& run) {
    forEachRow(height, parallel,
               [&](int y) { run(row(pSrc1, src1Step, y), row(pSrc2, src2Step, y), row(pDst, dstStep, y)); });
    return qelStatusOk;
}

qelStatus sub(const Qel32f* pSrc1, int src1Step, const Qel32f* pSrc2, int src2Step, Qel32f* pDst, int dstStep,
              QelSize roiSize, bool parallel) {
    const qelStatus status = Check().pointers(pSrc1, pSrc2, pDst).size(roiSize).status();
    if (status != qelStatusOk) return status;
    SubKernel* const kernel = ownps_Sub_32f;
    return subRows(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep, roiSize.height, parallel,
                   [=](const Qel32f* a, const Qel32f* b, Qel32f* out) { kernel(a, b, out, roiSize.width); });
}

struct ScaledSub {
    SubShiftKernel* kernel;
    int shift;
};

// From -8 on every difference but 0 saturates.
ScaledSub chooseScaled(int scaleFactor) {
    if (scaleFactor == 0) return {ownps_Sub_8u, 0};
    if (scaleFactor > 0) return {ownps_SubRight_8u, scaleFactor};
    return {ownps_SubLeft_8u, -std::max(scaleFactor, -8)};
}

}  // namespace

qelStatus qeliSub_32f_C1R(const Qel32f* pSrc1, int src1Step, const Qel32f* pSrc2, int src2Step, Qel32f* pDst,
                          int dstStep, QelSize roiSize) {
    return sub(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep, roiSize,
               int64_t{roiSize.width} + roiSize.height >= 256);
}

qelStatus qeliSub_32f_C1IR(const Qel32f* pSrc, int srcStep, Qel32f* pSrcDst, int srcDstStep, QelSize roiSize) {
    return sub(pSrc, srcStep, pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, true);
}

qelStatus qeliSub_8u_C1RSfs(const Qel8u* pSrc1, int src1Step, const Qel8u* pSrc2, int src2Step, Qel8u* pDst,
                            int dstStep, QelSize roiSize, int scaleFactor) {
    const qelStatus status = Check().pointers(pSrc1, pSrc2, pDst).size(roiSize).status();
    if (status != qelStatusOk) return status;
    if (scaleFactor > 8) return qeliSet_8u_C1R(0, pDst, dstStep, roiSize);
    const ScaledSub scaled = chooseScaled(scaleFactor);
    return subRows(
        pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep, roiSize.height, true,
        [=](const Qel8u* a, const Qel8u* b, Qel8u* out) { scaled.kernel(a, b, out, roiSize.width, scaled.shift); });
}

qelStatus qeliSub_8u_C1IRSfs(const Qel8u* pSrc, int srcStep, Qel8u* pSrcDst, int srcDstStep, QelSize roiSize,
                             int scaleFactor) {
    return qeliSub_8u_C1RSfs(pSrc, srcStep, pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, scaleFactor);
}

#define SUB_CHANNELS(name, nameInPlace, oneChannel, oneChannelInPlace, channels)                                    \
    qelStatus name(const Qel32f* pSrc1, int src1Step, const Qel32f* pSrc2, int src2Step, Qel32f* pDst, int dstStep, \
                   QelSize roiSize) {                                                                               \
        return oneChannel(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep, samples(roiSize, channels));             \
    }                                                                                                               \
    qelStatus nameInPlace(const Qel32f* pSrc, int srcStep, Qel32f* pSrcDst, int srcDstStep, QelSize roiSize) {      \
        return oneChannelInPlace(pSrc, srcStep, pSrcDst, srcDstStep, samples(roiSize, channels));                   \
    }
SUB_CHANNELS(qeliSub_32f_C3R, qeliSub_32f_C3IR, qeliSub_32f_C1R, qeliSub_32f_C1IR, 3)
SUB_CHANNELS(qeliSub_32f_C4R, qeliSub_32f_C4IR, qeliSub_32f_C1R, qeliSub_32f_C1IR, 4)
#undef SUB_CHANNELS

#define SUB_CHANNELS_SFS(name, nameInPlace, channels)                                                            \
    qelStatus name(const Qel8u* pSrc1, int src1Step, const Qel8u* pSrc2, int src2Step, Qel8u* pDst, int dstStep, \
                   QelSize roiSize, int scaleFactor) {                                                           \
        return qeliSub_8u_C1RSfs(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep, samples(roiSize, channels),    \
                                 scaleFactor);                                                                   \
    }                                                                                                            \
    qelStatus nameInPlace(const Qel8u* pSrc, int srcStep, Qel8u* pSrcDst, int srcDstStep, QelSize roiSize,       \
                          int scaleFactor) {                                                                     \
        return qeliSub_8u_C1IRSfs(pSrc, srcStep, pSrcDst, srcDstStep, samples(roiSize, channels), scaleFactor);  \
    }
SUB_CHANNELS_SFS(qeliSub_8u_C3RSfs, qeliSub_8u_C3IRSfs, 3)
SUB_CHANNELS_SFS(qeliSub_8u_C4RSfs, qeliSub_8u_C4IRSfs, 4)
#undef SUB_CHANNELS_SFS

}  // namespace qel
