#include "morph/shared_offsets.h"

namespace qel {

SharedPlaces::SharedPlaces(const QelMorphState& state) : width_(state.maskWidth) {
    if (int64_t{width_} * (int64_t{state.maskHeight} + SharedOffsets::kRows - 1) > SharedOffsets::kMost) return;
    forElements(state, [this](int x, int y) { add(x, y); });
}

// The first element is what the rows begin with, and none of those that are added to it.
void SharedPlaces::add(int x, int y) {
    const int place = y * width_ + x;
    if (elements_++ == 0) {
        first_ = place;
        return;
    }
    Qel8u* const pBy = by_.data() + place;
    for (int row = 0; row < SharedOffsets::kRows; ++row) pBy[row * width_] |= static_cast<Qel8u>(1 << row);
}

SharedOffsets SharedPlaces::offsets(int step, int pixelBytes) const {
    SharedOffsets offsets;
    const auto offsetOf = [&](int place) {
        return std::ptrdiff_t{step} * (place / width_) + std::ptrdiff_t{pixelBytes} * (place % width_);
    };
    for (int row = 0; row < SharedOffsets::kRows; ++row)
        offsets.first[static_cast<size_t>(row)] = offsetOf(first_ + row * width_);

    // Each group's end is its begin at first, then moves as places come in.
    std::array<int, size_t{SharedOffsets::kGroups} + 1> count = {};
    for (const Qel8u by : by_) count[size_t{by} + 1] += by != 0;
    for (size_t by = 1; by < SharedOffsets::kGroups; ++by) {
        count[by + 1] += count[by];
        offsets.end[by] = count[by];
    }
    offsets.end[0] = 0;
    for (int place = 0; place < SharedOffsets::kMost; ++place) {
        const size_t by = by_[static_cast<size_t>(place)];
        if (by != 0) offsets.p[static_cast<size_t>(offsets.end[by]++)] = offsetOf(place);
    }
    return offsets;
}

}  // namespace qel
