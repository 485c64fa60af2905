#include <algorithm>

#include "morph/dilate.h"
#include "morph/filter_min_max_tables.h"

namespace qel {
namespace {

template <class T>
const MinMaxRow<T>* const* rowTable(bool isDilation, int channels);

template <>
const MinMaxRow<Qel8u>* const* rowTable(bool isDilation, int channels) {
    if (channels == 1) return isDilation ? owntablFilterMaxRow_8u_C1 : owntablFilterMinRow_8u_C1;
    if (channels == 3) return isDilation ? owntablFilterMaxRow_8u_C3 : owntablFilterMinRow_8u_C3;
    return isDilation ? owntablFilterMaxRow_8u_C4 : owntablFilterMinRow_8u_C4;
}

template <>
const MinMaxRow<Qel32f>* const* rowTable(bool isDilation, int channels) {
    if (channels == 1) return isDilation ? owntablFilterMaxRow_32f_C1 : owntablFilterMinRow_32f_C1;
    if (channels == 3) return isDilation ? owntablFilterMaxRow_32f_C3 : owntablFilterMinRow_32f_C3;
    return isDilation ? owntablFilterMaxRow_32f_C4 : owntablFilterMinRow_32f_C4;
}

template <class T>
MinMaxRowKernel<T>* rowRoutine(bool isDilation, int channels, int length, int width) {
    const bool fixed = length < 16 && 2 * length <= width;
    return *rowTable<T>(isDilation, channels)[fixed ? length : 0];
}

// The rows of one length stand together, as many as the rectangle is high.
template <class T>
ScratchRows<T> carveLines(const QelMorphState& state, QelSize size) {
    const int count = state.maskHeight * state.pInfo->runCount;
    const int64_t room = (int64_t{count} + 1) * (rowOf<T>(state.maxWidth, state.channels).bytes + 32);
    T* const piece = reinterpret_cast<T*>(alignUp(state.pWork, sizeof(T)));
    return ScratchRows<T>(piece, room / int64_t{sizeof(T)}, size.width * state.channels, count);
}

}  // namespace

template <class T>
EllipseMorph<T>::EllipseMorph(MorphOp op, const MorphRegion<T>& region, const QelMorphState& state)
    : region_(region),
      state_(&state),
      info_(*state.pInfo),
      lines_(carveLines<T>(state, region.size)),
      isDilation_(op == MorphOp::kDilate),
      kernel_(rowsKernel<T>(op)) {}

template <class T>
void EllipseMorph<T>::makeUpTo(int end) {
    for (; next_ < end; ++next_) {
        for (const int needed = sourceRowsFor(next_ + 1); taken_ < needed; ++taken_) takeRuns(taken_);
        combine(next_);
    }
}

template <class T>
void EllipseMorph<T>::takeRuns(int y) {
    for (int run = 0; run < info_.runCount; ++run) {
        const int length = info_.pRunLength[run];
        rowRoutine<T>(isDilation_, state_->channels, length, region_.size.width)(
            region_.src.row(y), line(y, run), region_.size.width, length, info_.pRunOffset[run]);
    }
}

template <class T>
void EllipseMorph<T>::combine(int y) const {
    const T* const base = lines_[0];
    const QelSize size = {region_.size.width * state_->channels, 1};
    const auto use = [&](const SampleOffsets& offsets) { kernel_({base, 0}, region_.dst.from(y), size, offsets); };
    OffsetCollector offsets(use);
    for (int i = 0; i < info_.rowCount; ++i) {
        const int source = std::clamp(y - state_->anchorY + info_.pRowOffset[i], 0, region_.size.height - 1);
        offsets.add((line(source, info_.pRowRun[i]) - base) * std::ptrdiff_t{sizeof(T)});
    }
    offsets.finish();
}

template class EllipseMorph<Qel8u>;
template class EllipseMorph<Qel32f>;

}  // namespace qel
