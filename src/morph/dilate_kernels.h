#ifndef QELCV_MORPH_DILATE_KERNELS_H_
#define QELCV_MORPH_DILATE_KERNELS_H_

#include <array>
#include <cstddef>

#include "frame/image.h"
#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

// Where the samples are that are combined: in bytes from the first of the source. At least one. `ahead` says that the
// results hold the extremes of other samples already.
struct SampleOffsets {
    const std::ptrdiff_t* p;
    int count;
    bool ahead;
};

// dst[x, y] = the extreme of src[x, y] over all offsets. `size` counts samples, whatever the channels: those of a
// mask's elements are multiples of a pixel apart, so that each channel meets its own. Of floats that do not compare or
// are equal, the earlier offset's is taken.
template <class T>
using MorphRowsKernel = void(Plane<const T> src, Plane<T> dst, QelSize size, SampleOffsets offsets);

extern const Kernel<MorphRowsKernel<Qel8u>> Dilate_8u_C1S;
extern const Kernel<MorphRowsKernel<Qel8u>> Erode_8u_C1S;
extern const Kernel<MorphRowsKernel<Qel32f>> Dilate_32f_C1S;
extern const Kernel<MorphRowsKernel<Qel32f>> Erode_32f_C1S;

// Where the samples are that kRows rows of results take, in bytes from the first sample of the source: each row begins
// with first[row]; samples taken by the rows whose bits make the number `by` stand from p[end[by - 1]] to p[end[by]].
struct SharedOffsets {
    static constexpr int kRows = 4;
    static constexpr int kGroups = 1 << kRows;
    static constexpr int kMost = 512;

    std::array<std::ptrdiff_t, kRows> first;
    std::array<int, kGroups> end;
    std::array<std::ptrdiff_t, kMost> p;
};

// As above for the kRows rows from each multiple of kRows on; size.height is a multiple of kRows.
template <class T>
using MorphSharedRowsKernel = void(Plane<const T> src, Plane<T> dst, QelSize size, const SharedOffsets& offsets);

extern const Kernel<MorphSharedRowsKernel<Qel8u>> ownDilate_8u_C1S_4;
extern const Kernel<MorphSharedRowsKernel<Qel8u>> ownErode_8u_C1S_4;
extern const Kernel<MorphSharedRowsKernel<Qel32f>> ownDilate_32f_C1S_4;
extern const Kernel<MorphSharedRowsKernel<Qel32f>> ownErode_32f_C1S_4;

// Runs along a row, each of which lies within the one before, and a line of extremes for each.
template <class T>
struct NestedRuns {
    const std::ptrdiff_t* pOffsets;  // in samples from that of the result; the first pLength[run] are those of a run
    const Qel32s* pLength;           // [count], descending
    int count;
    T* pLines;
    std::ptrdiff_t pitch;  // samples from one line to the next
};

// All lines in one step. pSrc can be read as far to both sides as the runs reach.
template <class T>
using MorphRunsKernel = void(const T* pSrc, int samples, const NestedRuns<T>& runs);

extern const Kernel<MorphRunsKernel<Qel8u>> ownDilateRuns_8u;
extern const Kernel<MorphRunsKernel<Qel8u>> ownErodeRuns_8u;
extern const Kernel<MorphRunsKernel<Qel32f>> ownDilateRuns_32f;
extern const Kernel<MorphRunsKernel<Qel32f>> ownErodeRuns_32f;

// Collects offsets and calls use(SampleOffsets) for as many at a time as fit the stack.
template <class Use>
class OffsetCollector {
public:
    explicit OffsetCollector(const Use& use) : use_(use) {}

    void add(std::ptrdiff_t offset) {
        offsets_[static_cast<size_t>(count_++)] = offset;
        if (count_ == kMost) finish();
    }

    void finish() {
        if (count_ > 0) use_(SampleOffsets{offsets_.data(), count_, ahead_});
        ahead_ = true;
        count_ = 0;
    }

private:
    static constexpr int kMost = 512;

    const Use& use_;
    std::array<std::ptrdiff_t, kMost> offsets_;
    int count_ = 0;
    bool ahead_ = false;
};

}  // namespace qel

#endif
