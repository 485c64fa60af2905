// The min and max filters as other families run them: nothing is checked.
#ifndef QELCV_MORPH_FILTER_MIN_MAX_H_
#define QELCV_MORPH_FILTER_MIN_MAX_H_

#include "frame/image.h"
#include "frame/row_ring.h"
#include "frame/scratch.h"
#include "morph/filter_min_max_kernels.h"
#include "qelcv/types.h"

namespace qel {

enum class Extreme { kMin, kMax };

// A rectangle of pixels and the one that stands over the result.
struct ExtremeWindow {
    QelSize size;
    QelPoint anchor;
};

// The window cut to what can meet a region: the results are the same. No sum of what it says and a size of the region
// leaves the range of int.
ExtremeWindow cutToRegion(const ExtremeWindow& window, QelSize roiSize);

// The bytes of scratch for a filter over rows of `rowBytes` bytes, at any address.
int64_t extremesBytes(int64_t rowBytes, int windowHeight);

// Writes the extremes of `channels` interleaved channels of type T, 1, 3 or 4, each by itself. Beyond the edge of the
// region its nearest pixel counts. The images do not overlap.
template <class T>
void filterExtremes(Extreme extreme, const Plane<const T>& src, const Plane<T>& dst, QelSize roiSize, int channels,
                    const ExtremeWindow& window, void* pBuffer);

// The same filter a few rows at a time, each row of the source read once and no earlier than needed: two of them work
// hand in hand while what is between them is in the cache.
//
//     ExtremesByRows<Qel8u> erosion(Extreme::kMin, src, work, size, 1, window, pBuffer1);
//     ExtremesByRows<Qel8u> dilation(Extreme::kMax, work, dst, size, 1, window, pBuffer2);
//     for (int y = 0; y < size.height; y = end) {
//         end = std::min(y + 16, size.height);
//         erosion.makeUpTo(dilation.sourceRowsFor(end));
//         dilation.makeUpTo(end);
//     }
//
// Rows of the result may be places in a ring: dst.row(y) is asked once per row, in order.
template <class T>
class ExtremesByRows {
public:
    ExtremesByRows(Extreme extreme, const Plane<const T>& src, const Plane<T>& dst, QelSize roiSize, int channels,
                   const ExtremeWindow& window, void* pBuffer);

    // How many rows of the source, from its first on, the rows of the result above `end` are made of.
    int sourceRowsFor(int end) const;

    // Makes the rows of the result above `end` that are not made yet.
    void makeUpTo(int end);

private:
    void makeRows(int count);
    void makeSquares(int count);

    Plane<const T> src_;
    Plane<T> dst_;
    QelSize size_;
    int channels_;
    ExtremeWindow window_;
    MinMaxRowKernel<T>* row_;
    MinMaxColumnKernel<T>* column_;
    MinMaxSquareKernel<T>* square_;  // if that is how to run the filter
    RowRing<T> lines_;
    int next_ = 0;
};

extern template class ExtremesByRows<Qel8u>;
extern template class ExtremesByRows<Qel32f>;

}  // namespace qel

#endif
