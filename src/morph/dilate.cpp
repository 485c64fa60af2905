#include "morph/dilate.h"

#include "frame/border.h"
#include "frame/image_primitives.h"

namespace qel {
namespace {

qelStatus copyPixels(Plane<const Qel8u> src, Plane<Qel8u> dst, QelSize size) {
    return qeliCopy_8u_C1R(src.p, src.step, dst.p, dst.step, size);
}
qelStatus copyPixels(Plane<const Qel32f> src, Plane<Qel32f> dst, QelSize size) {
    return qeliCopy_32f_C1R(src.p, src.step, dst.p, dst.step, size);
}

template <class T>
qelStatus morph(MorphOp op, int channels, const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize roiSize,
                int borderMode, const QelMorphState* pState) {
    const qelStatus status = Check()
                                 .pointers(pSrc, pDst, pState)
                                 .size(roiSize)
                                 .steps(rowOf<T>(roiSize.width, channels), srcStep, dstStep)
                                 .require(borderMode == qelBorderRepl, qelStatusBadArg)
                                 .status();
    if (status != qelStatusOk) return status;
    if (roiSize.width > pState->maxWidth) return qelStatusBadSize;

    ownMorph<T>(op, {{pSrc, srcStep}, {pDst, dstStep}, roiSize}, *pState);
    return qelStatusOk;
}

}  // namespace

qelStatus copyReplicateBorder(Plane<const Qel8u> src, QelSize srcSize, Plane<Qel8u> dst, QelSize dstSize, QelPoint at,
                              int channels) {
    const auto& copy = channels == 1   ? qeliCopyReplicateBorder_8u_C1R
                       : channels == 3 ? qeliCopyReplicateBorder_8u_C3R
                                       : qeliCopyReplicateBorder_8u_C4R;
    return copy(src.p, src.step, srcSize, dst.p, dst.step, dstSize, at.y, at.x);
}

qelStatus copyReplicateBorder(Plane<const Qel32f> src, QelSize srcSize, Plane<Qel32f> dst, QelSize dstSize, QelPoint at,
                              int channels) {
    const auto& copy = channels == 1   ? qeliCopyReplicateBorder_32s_C1R
                       : channels == 3 ? qeliCopyReplicateBorder_32s_C3R
                                       : qeliCopyReplicateBorder_32s_C4R;
    return copy(reinterpret_cast<const Qel32s*>(src.p), src.step, srcSize, reinterpret_cast<Qel32s*>(dst.p), dst.step,
                dstSize, at.y, at.x);
}

template <class T>
EmptyMorph<T>::EmptyMorph(MorphOp, const MorphRegion<T>& region, const QelMorphState& state)
    : region_(region), channels_(state.channels) {}

template <class T>
void EmptyMorph<T>::makeUpTo(int end) {
    if (end <= next_) return;
    copyPixels(region_.src.from(next_), region_.dst.from(next_), samples({region_.size.width, end - next_}, channels_));
    next_ = end;
}

template class EmptyMorph<Qel8u>;
template class EmptyMorph<Qel32f>;

}  // namespace qel

#define MORPH(name, op, T, channels)                                                                  \
    qelStatus name(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize roiSize, int borderMode, \
                   QelMorphState* pState) {                                                           \
        return qel::morph(op, channels, pSrc, srcStep, pDst, dstStep, roiSize, borderMode, pState);   \
    }
MORPH(qeliDilateBorderReplicate_8u_C1R, qel::MorphOp::kDilate, Qel8u, 1)
MORPH(qeliDilateBorderReplicate_8u_C3R, qel::MorphOp::kDilate, Qel8u, 3)
MORPH(qeliDilateBorderReplicate_8u_C4R, qel::MorphOp::kDilate, Qel8u, 4)
MORPH(qeliDilateBorderReplicate_32f_C1R, qel::MorphOp::kDilate, Qel32f, 1)
MORPH(qeliDilateBorderReplicate_32f_C3R, qel::MorphOp::kDilate, Qel32f, 3)
MORPH(qeliDilateBorderReplicate_32f_C4R, qel::MorphOp::kDilate, Qel32f, 4)
MORPH(qeliErodeBorderReplicate_8u_C1R, qel::MorphOp::kErode, Qel8u, 1)
MORPH(qeliErodeBorderReplicate_8u_C3R, qel::MorphOp::kErode, Qel8u, 3)
MORPH(qeliErodeBorderReplicate_8u_C4R, qel::MorphOp::kErode, Qel8u, 4)
MORPH(qeliErodeBorderReplicate_32f_C1R, qel::MorphOp::kErode, Qel32f, 1)
MORPH(qeliErodeBorderReplicate_32f_C3R, qel::MorphOp::kErode, Qel32f, 3)
MORPH(qeliErodeBorderReplicate_32f_C4R, qel::MorphOp::kErode, Qel32f, 4)
#undef MORPH
