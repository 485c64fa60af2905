#include <algorithm>

#include "morph/dilate.h"

namespace qel {
namespace {

template <class T>
MorphSharedRowsKernel<T>* sharedRowsKernel(MorphOp op) {
    if constexpr (sizeof(T) == 1) {
        return op == MorphOp::kDilate ? ownDilate_8u_C1S_4 : ownErode_8u_C1S_4;
    } else {
        return op == MorphOp::kDilate ? ownDilate_32f_C1S_4 : ownErode_32f_C1S_4;
    }
}

template <class T>
int pixelBytes(const QelMorphState& state) {
    return state.channels * static_cast<int>(sizeof(T));
}

}  // namespace

// Columns and rows of the region, the ends not included.
template <class T>
struct GeneralMorph<T>::Zone {
    int left, right, top, bottom;

    QelSize size() const { return {right - left, bottom - top}; }
};

template <class T>
typename GeneralMorph<T>::Blocks GeneralMorph<T>::blocksOf(const QelMorphState& state) {
    if (state.maskClass == qelMorphGeneral)
        return {reinterpret_cast<T*>(state.pWork), state.blockStep, 2 * int64_t{state.maskHeight}};
    const int64_t rowBytes = rowOf<T>(state.maxWidth, state.channels).bytes;
    const int64_t step = alignUp(rowBytes + int64_t{state.maskWidth} * pixelBytes<T>(state), 16);
    const int64_t bytes = (int64_t{state.maskHeight} * state.pInfo->runCount + 1) * (rowBytes + 32);
    return {reinterpret_cast<T*>(alignUp(state.pWork, size_t{16})), static_cast<int>(step), bytes / step};
}

// Runs along the rows are fewer steps from a few elements on, but keep lines of extremes, and those of wide images do
// not stay in the nearest cache.
template <class T>
bool GeneralMorph<T>::suitsEllipse(const QelMorphState& state) {
    constexpr int kFewElements = 16;
    constexpr int kMostElements = 64;
    constexpr int64_t kNearBytes = 48 * 1024;
    const QelMorphKernelInfo& info = *state.pInfo;
    const int64_t linesBytes =
        rowOf<T>(state.maxWidth, state.channels).bytes * state.maskHeight * int64_t{info.runCount};
    int64_t elements = 0;
    for (int i = 0; i < info.rowCount; ++i) elements += info.pRunLength[info.pRowRun[i]];
    return elements <= (linesBytes > kNearBytes ? kMostElements : kFewElements) && SharedPlaces(state).exist() &&
           blocksOf(state).rows >= state.maskHeight + SharedOffsets::kRows - 1;
}

template <class T>
GeneralMorph<T>::GeneralMorph(MorphOp op, const MorphRegion<T>& region, const QelMorphState& state)
    : region_(region),
      state_(&state),
      blocks_(blocksOf(state)),
      kernel_(rowsKernel<T>(op)),
      sharedKernel_(sharedRowsKernel<T>(op)) {
    const SharedPlaces places(state);
    shares_ = places.exist();
    if (!shares_) return;
    inSource_ = places.offsets(region.src.step, pixelBytes<T>(state));
    inBlock_ = places.offsets(blocks_.step, pixelBytes<T>(state));
}

// Where the mask stays within the region, results come straight out of the source. At the region's edges a block of
// rows is given its border first.
template <class T>
void GeneralMorph<T>::makeUpTo(int end) {
    constexpr int kVector = 64 / sizeof(T);
    const auto [width, height] = region_.size;
    const int top = std::clamp(state_->anchorY, next_, end);
    const int bottom = std::clamp(height - (state_->maskHeight - 1 - state_->anchorY), top, end);
    const int left = state_->anchorX;
    const int right = width - (state_->maskWidth - 1 - state_->anchorX);
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

template <class T>
void GeneralMorph<T>::inBlocks(Zone zone) const {
    const int64_t rows = blocks_.rows - state_->maskHeight + 1;
    for (const int bottom = zone.bottom; zone.top < bottom; zone.top = zone.bottom) {
        zone.bottom = static_cast<int>(std::min(int64_t{bottom}, zone.top + rows));
        results(blockFor(zone), dst(zone), zone.size());
    }
}

// All pixels that the mask meets on its way over the zone.
template <class T>
Plane<const T> GeneralMorph<T>::blockFor(const Zone& zone) const {
    const auto [width, height] = region_.size;
    const QelPoint wanted = {zone.left - state_->anchorX, zone.top - state_->anchorY};
    const QelPoint first = {std::max(wanted.x, 0), std::max(wanted.y, 0)};
    const Plane<T> block = {blocks_.p, blocks_.step};
    const QelSize size = {zone.size().width + state_->maskWidth - 1, zone.size().height + state_->maskHeight - 1};
    const int right = static_cast<int>(std::min(int64_t{width}, int64_t{wanted.x} + size.width));
    const int bottom = static_cast<int>(std::min(int64_t{height}, int64_t{wanted.y} + size.height));
    copyReplicateBorder({pixel(region_.src.row(first.y), first.x), region_.src.step},
                        {right - first.x, bottom - first.y}, block, size, {first.x - wanted.x, first.y - wanted.y},
                        state_->channels);
    return {block.p, block.step};
}

// The last rows that are together may have been made before.
template <class T>
void GeneralMorph<T>::results(Plane<const T> src, Plane<T> dst, QelSize size) const {
    constexpr int kRows = SharedOffsets::kRows;
    if (!shares_ || size.height < kRows) return resultsRowByRow(src, dst, size);
    const SharedOffsets& offsets = src.p == blocks_.p ? inBlock_ : inSource_;
    const QelSize shared = samples({size.width, size.height / kRows * kRows}, state_->channels);
    sharedKernel_(src, dst, shared, offsets);
    if (size.height % kRows == 0) return;
    const int last = size.height - kRows;
    sharedKernel_(src.from(last), dst.from(last), {shared.width, kRows}, offsets);
}

template <class T>
void GeneralMorph<T>::resultsRowByRow(Plane<const T> src, Plane<T> dst, QelSize size) const {
    const auto use = [&](const SampleOffsets& offsets) { kernel_(src, dst, samples(size, state_->channels), offsets); };
    OffsetCollector collector(use);
    const auto add = [&](int x, int y) {
        collector.add(std::ptrdiff_t{src.step} * y + std::ptrdiff_t{x} * pixelBytes<T>(*state_));
    };
    forElements(*state_, add);
    collector.finish();
}

template class GeneralMorph<Qel8u>;
template class GeneralMorph<Qel32f>;

}  // namespace qel
