#include <algorithm>
#include <climits>

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

template <class T>
MorphRunsKernel<T>* runsKernel(MorphOp op) {
    if constexpr (sizeof(T) == 1) {
        return op == MorphOp::kDilate ? ownDilateRuns_8u : ownErodeRuns_8u;
    } else {
        return op == MorphOp::kDilate ? ownDilateRuns_32f : ownErodeRuns_32f;
    }
}

constexpr int kLine = 64;

}  // namespace

template <class T>
EllipseMorph<T>::EllipseMorph(MorphOp op, const MorphRegion<T>& region, const QelMorphState& state)
    : region_(region), state_(&state), info_(*state.pInfo), op_(op), kernel_(rowsKernel<T>(op)) {
    placeLines();
}

// As many lines as the mask's rectangle has rows, for each run, and behind them a row with its border if there is room.
// Lines begin where those of the cache do, unless there is less room than they would take.
template <class T>
void EllipseMorph<T>::placeLines() {
    const int64_t count = int64_t{state_->maskHeight} * info_.runCount;
    const int64_t room = (count + 1) * (rowOf<T>(state_->maxWidth, state_->channels).bytes + 32);
    const int64_t rowBytes = rowOf<T>(region_.size.width, state_->channels).bytes;
    const int64_t borderBytes = (info_.pRunLength[0] - int64_t{1}) * state_->channels * int{sizeof(T)};
    const bool listed = listNested();
    for (const int alignment : {kLine, 32}) {
        const int64_t pitch = alignUp(rowBytes, alignment);
        char* const first = alignUp(state_->pWork, static_cast<size_t>(alignment));
        const int64_t used = first - reinterpret_cast<char*>(state_->pWork) + pitch * count;
        const bool atOnce = listed && used + borderBytes + kLine + rowBytes <= room;
        if (!atOnce && used > room) continue;
        pLines_ = reinterpret_cast<T*>(first);
        pitch_ = static_cast<std::ptrdiff_t>(pitch / int64_t{sizeof(T)});
        char* const bordered = first + pitch * count + int64_t{info_.pRunOffset[0]} * state_->channels * int{sizeof(T)};
        pBordered_ = atOnce ? reinterpret_cast<T*>(alignUp(bordered, size_t{kLine})) : nullptr;
        return;
    }
}

// The pixels of the shortest run, then those that each longer one adds. Returns false where a run is not within the
// next longer one.
template <class T>
bool EllipseMorph<T>::listNested() {
    if (info_.pRunLength[0] > kLongestAtOnce) return false;
    size_t count = 0;
    int begin = 0;
    int end = 0;  // of the run before, from the anchor's column
    const auto add = [&](int x) { offsets_[count++] = std::ptrdiff_t{x} * state_->channels; };
    for (int run = info_.runCount - 1; run >= 0; --run) {
        const int runBegin = -info_.pRunOffset[run];
        const int runEnd = runBegin + info_.pRunLength[run];
        if (count == 0) begin = end = runBegin;
        if (runBegin > begin || runEnd < end) return false;
        for (int x = runBegin; x < begin; ++x) add(x);
        for (int x = end; x < runEnd; ++x) add(x);
        begin = runBegin;
        end = runEnd;
    }
    return true;
}

template <class T>
void EllipseMorph<T>::makeUpTo(int end) {
    for (; next_ < end; ++next_) {
        for (const int needed = sourceRowsFor(next_ + 1); taken_ < needed; ++taken_) takeRuns(taken_);
        combine(next_);
    }
}

template <class T>
void EllipseMorph<T>::takeRuns(int y) {
    const QelSize size = region_.size;
    T* pLine = lines(y % state_->maskHeight);
    if (pBordered_ != nullptr) return takeRunsAtOnce(region_.src.row(y), pLine);
    for (int run = 0; run < info_.runCount; ++run, pLine += pitch_) {
        const int length = info_.pRunLength[run];
        rowRoutine<T>(op_ == MorphOp::kDilate, state_->channels, length, size.width)(
            region_.src.row(y), pLine, size.width, length, info_.pRunOffset[run]);
    }
}

template <class T>
void EllipseMorph<T>::takeRunsAtOnce(const T* pSrcRow, T* pLines) {
    const int width = region_.size.width;
    const int left = info_.pRunOffset[0];
    copyReplicateBorder({pSrcRow, INT_MAX}, {width, 1}, {pBordered_ - std::ptrdiff_t{left} * state_->channels, INT_MAX},
                        {width + info_.pRunLength[0] - 1, 1}, {left, 0}, state_->channels);
    runsKernel<T>(op_)(pBordered_, width * state_->channels,
                       {offsets_.data(), info_.pRunLength, info_.runCount, pLines, pitch_});
}

template <class T>
void EllipseMorph<T>::combine(int y) {
    const QelSize size = {region_.size.width * state_->channels, 1};
    const int top = y - state_->anchorY;
    while (top - window_ >= state_->maskHeight) window_ += state_->maskHeight;
    const auto use = [&](const SampleOffsets& offsets) { kernel_({pLines_, 0}, region_.dst.from(y), size, offsets); };
    OffsetCollector offsets(use);
    for (int i = 0; i < info_.rowCount; ++i) {
        const int64_t row = std::clamp<int64_t>(int64_t{top} + info_.pRowOffset[i], 0, region_.size.height - 1);
        int slot = static_cast<int>(row) - window_;
        if (slot >= state_->maskHeight) slot -= state_->maskHeight;
        offsets.add((lines(slot) + pitch_ * info_.pRowRun[i] - pLines_) * std::ptrdiff_t{sizeof(T)});
    }
    offsets.finish();
}

template class EllipseMorph<Qel8u>;
template class EllipseMorph<Qel32f>;

}  // namespace qel
