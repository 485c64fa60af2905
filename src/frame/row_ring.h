// Rows of intermediate values that take turns in a few rows of scratch: a row stage fills them, the stage behind it
// reads any run of them as a straight array of pointers.
#ifndef QELCV_FRAME_ROW_RING_H_
#define QELCV_FRAME_ROW_RING_H_

#include <algorithm>
#include <cstdint>

#include "frame/scratch.h"

namespace qel {

// The rows from `begin` up to `end`, without it.
struct RowRange {
    int begin;
    int end;

    int count() const { return end - begin; }
};

// The rows `all` of an image and its border, `kept` of which exist at a time. Those of `made` come out of the caller's
// row stage; each other one is whatever row the caller says that stands there.
//
//     RowRing<Qel16s> ring(rows, kept, pointers, {-reach, height + reach}, {0, height});
//     for (int y = 0; y < height; y += turn) {
//         const int count = std::min(turn, height - y);
//         ring.fillUpTo(y + count + reach, stage, outside);
//         columns(ring.window(y - reach), count);        // reads count + 2 * reach rows, kept at least
//     }
// Rows are counted in 64 bits: those below an image of INT_MAX rows have larger numbers.
template <class T>
class RowRing {
public:
    // Pointers that a ring needs: each stands twice, so that no run of rows has a seam, if not all rows are kept.
    static int64_t pointersNeeded(int kept, RowRange all) {
        return std::min(2 * int64_t{kept}, std::max(int64_t{all.count()}, int64_t{kept}));
    }

    RowRing(const ScratchRows<T>& rows, int kept, T** pointers, RowRange all, RowRange made)
        : rows_(rows),
          pointers_(pointers),
          pointerCount_(pointersNeeded(kept, all)),
          kept_(kept),
          first_(all.begin),
          made_(made),
          next_(all.begin) {}

    // Where row y stands, or will, until row y + kept takes its place. A row of `made` only: others may stand
    // elsewhere.
    T* place(int64_t y) const { return rows_[static_cast<int>(slot(y))]; }

    // Sees that all rows above row `end` have been made. stage(y, pRows, count) makes `count` rows from row y on, at
    // the places that pRows points to; outside(y, own) returns the row that stands for row y outside of `made`: `own`,
    // which it has filled, or any other.
    template <class Stage, class Outside>
    void fillUpTo(int64_t end, const Stage& stage, const Outside& outside) {
        while (next_ < end) {
            const int64_t y = next_;
            if (y < made_.begin || y >= made_.end) {
                point(y, outside(y, place(y)));
                next_ = y + 1;
            } else {
                next_ = std::min({end, int64_t{made_.end}, y + kept_});
                for (int64_t i = y; i < next_; ++i) point(i, place(i));
                stage(static_cast<int>(y), window(y), static_cast<int>(next_ - y));
            }
        }
    }

    // Pointers to row y and to those below it, `kept` in all.
    T* const* window(int64_t y) const { return pointers_ + slot(y); }

private:
    // All rows count less than 2 to the 32.
    uint32_t slot(int64_t y) const { return static_cast<uint32_t>(y - first_) % static_cast<uint32_t>(kept_); }

    void point(int64_t y, T* place) const {
        const uint32_t i = slot(y);
        pointers_[i] = place;
        if (i + int64_t{kept_} < pointerCount_) pointers_[i + kept_] = place;
    }

    ScratchRows<T> rows_;
    T** pointers_;
    int64_t pointerCount_;
    int kept_;
    int first_;
    RowRange made_;
    int64_t next_;
};

}  // namespace qel

#endif
