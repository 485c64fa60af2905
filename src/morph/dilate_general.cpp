#include <algorithm>

#include "frame/border.h"
#include "morph/dilate.h"

namespace qel {
namespace {

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

}  // namespace

// Columns and rows of the region, the ends not included.
template <class T>
struct GeneralMorph<T>::Zone {
    int left, right, top, bottom;

    QelSize size() const { return {right - left, bottom - top}; }
};

template <class T>
GeneralMorph<T>::GeneralMorph(MorphOp op, const MorphRegion<T>& region, const QelMorphState& state)
    : region_(region), state_(&state), kernel_(rowsKernel<T>(op)) {}

// Where the mask stays within the region, results come straight out of the source. At the region's edges a block of
// rows is given its border first.
template <class T>
void GeneralMorph<T>::makeUpTo(int end) {
    constexpr int kVector = 64 / sizeof(T);
    const auto [width, height] = region_.size;
    const int top = std::clamp(state_->anchorY, next_, end);
    const int bottom = std::clamp(height - state_->bottomExtent, top, end);
    const int left = state_->anchorX;
    const int right = width - state_->rightExtent;
    const bool narrow = right - left < 2 * kVector;

    inBlocks({0, width, next_, narrow ? end : top});
    if (!narrow) {
        straight({left, right, top, bottom});
        // A few columns take as long as a vector.
        if (left > 0) inBlocks({0, std::max(left, kVector), top, bottom});
        if (right < width) inBlocks({std::min(right, width - kVector), width, top, bottom});
        inBlocks({0, width, bottom, end});
    }
    next_ = end;
}

template <class T>
Plane<T> GeneralMorph<T>::dst(const Zone& zone) const {
    return {pixel(region_.dst.row(zone.top), zone.left), region_.dst.step};
}

template <class T>
void GeneralMorph<T>::straight(const Zone& zone) const {
    if (zone.top >= zone.bottom) return;
    const T* const first = pixel(region_.src.row(zone.top - state_->anchorY), zone.left - state_->anchorX);
    results({first, region_.src.step}, dst(zone), zone.size());
}

// A block has room for twice the mask's rows.
template <class T>
void GeneralMorph<T>::inBlocks(Zone zone) const {
    for (const int bottom = zone.bottom; zone.top < bottom; zone.top = zone.bottom) {
        zone.bottom = static_cast<int>(std::min<int64_t>(bottom, int64_t{zone.top} + state_->maskHeight + 1));
        results(blockFor(zone), dst(zone), zone.size());
    }
}

// All pixels that the mask meets on its way over the zone.
template <class T>
Plane<const T> GeneralMorph<T>::blockFor(const Zone& zone) const {
    const auto [width, height] = region_.size;
    const QelPoint wanted = {zone.left - state_->anchorX, zone.top - state_->anchorY};
    const QelPoint first = {std::max(wanted.x, 0), std::max(wanted.y, 0)};
    const int right = static_cast<int>(std::min<int64_t>(width, int64_t{zone.right} + state_->rightExtent));
    const int bottom = static_cast<int>(std::min<int64_t>(height, int64_t{zone.bottom} + state_->bottomExtent));
    const Plane<T> block = {reinterpret_cast<T*>(state_->pWork), state_->blockStep};
    const QelSize size = {zone.size().width + state_->maskWidth - 1, zone.size().height + state_->maskHeight - 1};
    copyReplicateBorder({pixel(region_.src.row(first.y), first.x), region_.src.step},
                        {right - first.x, bottom - first.y}, block, size, {first.x - wanted.x, first.y - wanted.y},
                        state_->channels);
    return {block.p, block.step};
}

template <class T>
void GeneralMorph<T>::results(Plane<const T> src, Plane<T> dst, QelSize size) const {
    const auto use = [&](const SampleOffsets& offsets) { kernel_(src, dst, samples(size, state_->channels), offsets); };
    OffsetCollector offsets(use);
    const Qel8u* pMask = state_->pMaskCopy;
    for (int y = 0; y < state_->maskHeight; ++y, pMask += state_->maskWidth) {
        const std::ptrdiff_t rowOffset = std::ptrdiff_t{src.step} * y;
        for (int x = 0; x < state_->maskWidth; ++x)
            if (pMask[x] != 0) offsets.add(rowOffset + std::ptrdiff_t{x} * state_->channels * int(sizeof(T)));
    }
    offsets.finish();
}

template class GeneralMorph<Qel8u>;
template class GeneralMorph<Qel32f>;

}  // namespace qel
