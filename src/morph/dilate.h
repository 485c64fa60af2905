// Dilation and erosion a few rows at a time, without checks, for what is composed of them.
#ifndef QELCV_MORPH_DILATE_H_
#define QELCV_MORPH_DILATE_H_

#include <algorithm>
#include <array>
#include <variant>

#include "frame/image.h"
#include "frame/scratch.h"
#include "morph/dilate_kernels.h"
#include "morph/filter_min_max.h"
#include "morph/morphology_state.h"
#include "morph/shared_offsets.h"
#include "qelcv/types.h"

namespace qel {

enum class MorphOp { kDilate, kErode };

// A region and its result, which do not overlap.
template <class T>
struct MorphRegion {
    Plane<const T> src;
    Plane<T> dst;
    QelSize size;  // in pixels
};

template <class T>
inline MorphRowsKernel<T>* rowsKernel(MorphOp op) {
    if constexpr (sizeof(T) == 1) {
        return op == MorphOp::kDilate ? Dilate_8u_C1S : Erode_8u_C1S;
    } else {
        return op == MorphOp::kDilate ? Dilate_32f_C1S : Erode_32f_C1S;
    }
}

// The border of the nearest pixel around an image, by the bits of its samples.
qelStatus copyReplicateBorder(Plane<const Qel8u> src, QelSize srcSize, Plane<Qel8u> dst, QelSize dstSize, QelPoint at,
                              int channels);
qelStatus copyReplicateBorder(Plane<const Qel32f> src, QelSize srcSize, Plane<Qel32f> dst, QelSize dstSize, QelPoint at,
                              int channels);

// An engine makes the rows of the result in their order: makeUpTo(end) those above row `end` that are not made yet, out
// of the rows of the source above sourceRowsFor(end), all of them still in place. Row `end` of the result and those
// below may be overwritten before their time.

// Copies the pixels.
template <class T>
class EmptyMorph {
public:
    EmptyMorph(MorphOp op, const MorphRegion<T>& region, const QelMorphState& state);
    int sourceRowsFor(int end) const { return end; }
    void makeUpTo(int end);

private:
    MorphRegion<T> region_;
    int channels_;
    int next_ = 0;
};

// Combines the samples under all elements: of several rows at once, so that what they share is read once.
template <class T>
class GeneralMorph {
public:
    GeneralMorph(MorphOp op, const MorphRegion<T>& region, const QelMorphState& state);
    int sourceRowsFor(int end) const {
        return std::min(end + state_->maskHeight - 1 - state_->anchorY, region_.size.height);
    }
    void makeUpTo(int end);

    // Whether it is the engine for an ellipse, too: one of few elements, whose state has room for blocks.
    static bool suitsEllipse(const QelMorphState& state);

private:
    struct Zone;
    // The memory for rows with their border.
    struct Blocks {
        T* p;
        int step;
        int64_t rows;
    };
    static Blocks blocksOf(const QelMorphState& state);

    void inBlocks(Zone zone) const;
    void straight(const Zone& zone) const;
    Plane<const T> blockFor(const Zone& zone) const;
    void results(Plane<const T> src, Plane<T> dst, QelSize size) const;
    void resultsRowByRow(Plane<const T> src, Plane<T> dst, QelSize size) const;
    Plane<T> dst(const Zone& zone) const;
    template <class P>
    P* pixel(P* row, int x) const {
        return row + std::ptrdiff_t{x} * state_->channels;
    }

    MorphRegion<T> region_;
    const QelMorphState* state_;
    Blocks blocks_;
    MorphRowsKernel<T>* kernel_;
    MorphSharedRowsKernel<T>* sharedKernel_;
    bool shares_;
    SharedOffsets inSource_, inBlock_;
    int next_ = 0;
};

// Leaves it to the filter of minima or maxima. Where the anchor stands beside the rectangle, no result depends on the
// pixels at one edge of the region, and those at the other edge are equal: the filter runs on what is left, and its
// results are repeated.
template <class T>
class RectMorph {
public:
    RectMorph(MorphOp op, const MorphRegion<T>& region, const QelMorphState& state);
    int sourceRowsFor(int end) const { return isWhole() ? filter_.sourceRowsFor(end) : size_.height; }
    void makeUpTo(int end);

private:
    // How far the filter's region is moved within source and result. One of them is 0 in each direction.
    struct Narrowed {
        QelPoint src;
        QelPoint dst;
        QelSize size;
        QelPoint anchor;
    };
    RectMorph(MorphOp op, const MorphRegion<T>& region, const QelMorphState& state, const Narrowed& narrowed);
    static Narrowed narrow(QelSize size, const QelMorphState& state);
    bool isWhole() const { return narrowed_.size.width == size_.width && narrowed_.size.height == size_.height; }

    QelSize size_;
    int channels_;
    Narrowed narrowed_;
    Plane<T> results_;  // the filter's
    ExtremesByRows<T> filter_;
    bool repeated_ = false;
};

// Takes the extremes of each distinct run length along the rows, once for each, and combines those of the mask's rows.
template <class T>
class EllipseMorph {
public:
    EllipseMorph(MorphOp op, const MorphRegion<T>& region, const QelMorphState& state);
    int sourceRowsFor(int end) const {
        const int below = state_->maskHeight - state_->anchorY - 1;
        return below >= region_.size.height - end ? region_.size.height : end + below;
    }
    void makeUpTo(int end);

private:
    static constexpr int kLongestAtOnce = 31;

    void placeLines();
    bool listNested();
    void takeRuns(int y);
    void takeRunsAtOnce(const T* pSrcRow, T* pLines);
    void combine(int y);
    T* lines(int slot) const { return pLines_ + pitch_ * slot * info_.runCount; }

    MorphRegion<T> region_;
    const QelMorphState* state_;
    QelMorphKernelInfo info_;
    MorphOp op_;
    MorphRowsKernel<T>* kernel_;
    T* pLines_;             // of each row of the source that is kept, one for each run
    std::ptrdiff_t pitch_;  // samples from one line to the next
    T* pBordered_;          // a row of the source with its border, where all runs are taken at once; or null
    std::array<std::ptrdiff_t, kLongestAtOnce> offsets_;
    int taken_ = 0;   // rows of the source
    int window_ = 0;  // row of the source in the first lines, for the rows that are combined now
    int next_ = 0;
};

// The engine of the state's class.
template <class T>
class MorphByRows {
public:
    MorphByRows(MorphOp op, const MorphRegion<T>& region, const QelMorphState& state)
        : engine_(choose(op, region, state)) {}

    int sourceRowsFor(int end) const {
        return std::visit([=](const auto& engine) { return engine.sourceRowsFor(end); }, engine_);
    }
    void makeUpTo(int end) {
        std::visit([=](auto& engine) { engine.makeUpTo(end); }, engine_);
    }

private:
    using Engine = std::variant<EmptyMorph<T>, GeneralMorph<T>, RectMorph<T>, EllipseMorph<T>>;

    static Engine choose(MorphOp op, const MorphRegion<T>& region, const QelMorphState& state) {
        switch (state.maskClass) {
            case qelMorphGeneral:
                return GeneralMorph<T>(op, region, state);
            case qelMorphRect:
                return RectMorph<T>(op, region, state);
            case qelMorphEllipse:
                if (GeneralMorph<T>::suitsEllipse(state)) return GeneralMorph<T>(op, region, state);
                return EllipseMorph<T>(op, region, state);
            case qelMorphEmpty:
                break;
        }
        return EmptyMorph<T>(op, region, state);
    }

    Engine engine_;
};

extern template class EmptyMorph<Qel8u>;
extern template class EmptyMorph<Qel32f>;
extern template class GeneralMorph<Qel8u>;
extern template class GeneralMorph<Qel32f>;
extern template class RectMorph<Qel8u>;
extern template class RectMorph<Qel32f>;
extern template class EllipseMorph<Qel8u>;
extern template class EllipseMorph<Qel32f>;

// All rows at once.
template <class T>
void ownMorph(MorphOp op, const MorphRegion<T>& region, const QelMorphState& state) {
    MorphByRows<T>(op, region, state).makeUpTo(region.size.height);
}

}  // namespace qel

#endif
