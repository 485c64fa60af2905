// The ends of a row together with the border beyond them.
#ifndef QELCV_FILTER_ROW_BORDER_PIPELINE_STRIPS_H_
#define QELCV_FILTER_ROW_BORDER_PIPELINE_STRIPS_H_

#include <cstring>

#include "filter/border_mode.h"
#include "filter/row_border_pipeline_kernels.h"
#include "frame/scratch.h"

namespace qel {

// A row of a call, in samples: pixels of `channels` interleaved ones. A border is `before` wide on the left and `after`
// on the right.
struct RowGeometry {
    RowGeometry(int width, int numChannels, int kernelSize, int anchor)
        : channels(numChannels),
          samples(width * numChannels),
          before(anchor * numChannels),
          after((kernelSize - 1 - anchor) * numChannels) {}

    int reach() const { return before + after; }

    int channels;
    int samples;
    int before;
    int after;
};

// Two short copies, of the left end of a row with the border ahead of it and of the right end with the border behind
// it. Results near the ends are computed from these as the others are from the row itself: result x of a strip
// needs its samples x to x + reach.
//
// Where the row is wide enough, a strip gives whole groups of results. The surplus ones lie in the interior of the row,
// so strips come first and the interior last. A row that is narrower than the kernel stands in the left strip whole,
// with both borders.
template <class T>
class RowStrips {
public:
    // The results of a strip come in multiples of this many.
    static constexpr int kGroup = 8;

    template <class K>
    RowStrips(const RowGeometry& row, const RowFilter<T, K>& filter, Carver& carver) : row_(row) {
        const int width = row.samples / row.channels;
        whole_ = row.samples < row.reach();
        const bool groups = row.samples >= row.reach() + 2 * (kGroup - 1);
        leftResults_ = whole_ ? row.samples : groups ? grouped(row.before) : row.before;
        rightResults_ = whole_ ? 0 : groups ? grouped(row.after) : row.after;

        pixelsBefore_ = row.before / row.channels;
        pixelsAfter_ = row.after / row.channels;
        indices_ = carver.take<int>(pixelsBefore_ + pixelsAfter_);
        left_ = carver.take<T>(leftResults_ == 0 ? 0 : leftResults_ + row.reach());
        right_ = carver.take<T>(rightResults_ == 0 ? 0 : rightResults_ + row.reach());

        for (int i = 0; i < pixelsBefore_; ++i)
            indices_[i] = row.channels * extendedIndex(filter.borderMode, i - pixelsBefore_, width);
        for (int i = 0; i < pixelsAfter_; ++i)
            indices_[pixelsBefore_ + i] = row.channels * extendedIndex(filter.borderMode, width + i, width);

        constant_ = filter.borderMode == qelBorderConst;
        if (constant_) {
            setBorder(borderBefore(), pixelsBefore_, filter.pBorderValue);
            setBorder(borderAfter(), pixelsAfter_, filter.pBorderValue);
        }
    }

    // Takes the ends of this row.
    void fill(const T* row) {
        if (whole_) {
            copy(left_ + row_.before, row, row_.samples);
        } else {
            if (leftResults_ > 0) copy(left_ + row_.before, row, leftResults_ + row_.after);
            if (rightResults_ > 0) {
                const int count = rightResults_ + row_.before;
                copy(right_, row + row_.samples - count, count);
            }
        }
        if (constant_) return;
        if (row_.channels == 1) {
            gather<1>(row);
        } else {
            gather<3>(row);
        }
    }

    // Calls op(strip, x, count) for each strip: `count` results from sample x of the row on.
    template <class Op>
    void forEach(const Op& op) const {
        if (leftResults_ > 0) op(left_, 0, leftResults_);
        if (rightResults_ > 0) op(right_, row_.samples - rightResults_, rightResults_);
    }

private:
    static int grouped(int count) { return (count + kGroup - 1) & -kGroup; }

    // These are a few dozen samples, too few for a call of memcpy: groups, the last of which may overlap another.
    static void copy(T* to, const T* from, int count) {
        if (count < kGroup) {
            for (int i = 0; i < count; ++i) std::memcpy(to + i, from + i, sizeof(T));
            return;
        }
        for (int i = 0; i < count - kGroup; i += kGroup) std::memcpy(to + i, from + i, kGroup * sizeof(T));
        std::memcpy(to + count - kGroup, from + count - kGroup, kGroup * sizeof(T));
    }

    T* borderBefore() const { return left_; }
    T* borderAfter() const {
        return whole_ ? left_ + row_.before + row_.samples : right_ + rightResults_ + row_.before;
    }

    void setBorder(T* border, int pixels, const T* value) const {
        for (int i = 0; i < pixels; ++i)
            for (int c = 0; c < row_.channels; ++c) border[i * row_.channels + c] = value[c];
    }

    template <int kChannels>
    void gather(const T* row) const {
        const auto border = [=, this](T* to, const int* indices, int pixels) {
            for (int i = 0; i < pixels; ++i) std::memcpy(to + i * kChannels, row + indices[i], kChannels * sizeof(T));
        };
        border(borderBefore(), indices_, pixelsBefore_);
        border(borderAfter(), indices_ + pixelsBefore_, pixelsAfter_);
    }

    RowGeometry row_;
    bool whole_;
    bool constant_;
    int leftResults_;
    int rightResults_;
    int pixelsBefore_;
    int pixelsAfter_;
    int* indices_;
    T* left_;
    T* right_;
};

}  // namespace qel

#endif
