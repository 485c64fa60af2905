#include <algorithm>

#include "frame/border.h"
#include "morph/dilate.h"

namespace qel {
namespace {

// One direction: the region loses as many pixels as the anchor stands beside the rectangle, but one stays.
void narrow(int anchor, int maskLength, int* pSize, int* pSrc, int* pDst, int* pAnchor) {
    const int length = *pSize;
    *pSrc = std::min(length - 1, std::max(0, -anchor));
    *pDst = std::min(length - 1, std::max(0, anchor - maskLength + 1));
    *pSize = length - *pSrc - *pDst;
    *pAnchor = std::clamp(anchor, 0, maskLength - 1);
}

qelStatus replicateBorder(Plane<Qel8u> image, QelSize size, QelSize dstSize, QelPoint at, int channels) {
    const auto& border = channels == 1   ? qeliCopyReplicateBorder_8u_C1IR
                         : channels == 3 ? qeliCopyReplicateBorder_8u_C3IR
                                         : qeliCopyReplicateBorder_8u_C4IR;
    return border(image.p, image.step, size, dstSize, at.y, at.x);
}

qelStatus replicateBorder(Plane<Qel32f> image, QelSize size, QelSize dstSize, QelPoint at, int channels) {
    const auto& border = channels == 1   ? qeliCopyReplicateBorder_32s_C1IR
                         : channels == 3 ? qeliCopyReplicateBorder_32s_C3IR
                                         : qeliCopyReplicateBorder_32s_C4IR;
    return border(reinterpret_cast<Qel32s*>(image.p), image.step, size, dstSize, at.y, at.x);
}

template <class T>
Plane<T> movedTo(const Plane<T>& plane, QelPoint at, int channels) {
    return {plane.row(at.y) + std::ptrdiff_t{at.x} * channels, plane.step};
}

}  // namespace

template <class T>
typename RectMorph<T>::Narrowed RectMorph<T>::narrow(QelSize size, const QelMorphState& state) {
    Narrowed n = {};
    n.size = size;
    qel::narrow(state.anchorX, state.maskWidth, &n.size.width, &n.src.x, &n.dst.x, &n.anchor.x);
    qel::narrow(state.anchorY, state.maskHeight, &n.size.height, &n.src.y, &n.dst.y, &n.anchor.y);
    return n;
}

template <class T>
RectMorph<T>::RectMorph(MorphOp op, const MorphRegion<T>& region, const QelMorphState& state)
    : RectMorph(op, region, state, narrow(region.size, state)) {}

template <class T>
RectMorph<T>::RectMorph(MorphOp op, const MorphRegion<T>& region, const QelMorphState& state, const Narrowed& narrowed)
    : size_(region.size),
      channels_(state.channels),
      narrowed_(narrowed),
      results_(movedTo(region.dst, narrowed.dst, channels_)),
      filter_(op == MorphOp::kDilate ? Extreme::kMax : Extreme::kMin, movedTo(region.src, narrowed.src, channels_),
              results_, narrowed.size, channels_, {{state.maskWidth, state.maskHeight}, narrowed.anchor}, state.pWork) {
}

template <class T>
void RectMorph<T>::makeUpTo(int end) {
    if (isWhole()) return filter_.makeUpTo(end);
    if (repeated_) return;
    filter_.makeUpTo(narrowed_.size.height);
    replicateBorder(results_, narrowed_.size, size_, narrowed_.dst, channels_);
    repeated_ = true;
}

template class RectMorph<Qel8u>;
template class RectMorph<Qel32f>;

}  // namespace qel
