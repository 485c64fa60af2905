#include "feature/find_peaks_kernels.h"
#include "frame/check.h"
#include "frame/scratch.h"
#include "qelcv/feature.h"

namespace qel {
namespace {

enum Norm { kBlock, kPlus };

template <class T>
struct Kernels {
    FilterRow03Kernel<T>* maxRow;
    FilterRow03Kernel<T>* minRow;
    FindPeaksRowKernel<T>* peaks;
};

// The largest and the smallest of each three neighbours in a row, of the last three rows.
template <class T>
class Summaries {
public:
    Summaries(Qel8u* pBuffer, int width, const Kernels<T>& kernels)
        : kernels_(kernels),
          pitch_(alignUp(int64_t{width}, 4)),
          high_(reinterpret_cast<T*>(alignUp(pBuffer, size_t{32}))),
          low_(high_ + 4 * pitch_) {}

    // Takes up row y, whose samples begin one ahead of the first summary.
    void take(int y, const T* pSrc, int count) {
        kernels_.maxRow(pSrc, high(y), count);
        kernels_.minRow(pSrc, low(y), count);
    }
    T* high(int y) const { return high_ + y % 3 * pitch_; }
    T* low(int y) const { return low_ + y % 3 * pitch_; }

private:
    Kernels<T> kernels_;
    std::ptrdiff_t pitch_;
    T* high_;
    T* low_;
};

// Lists the peaks of the candidate rows one after the other, and stops when the list is full.
template <class T>
int findPeaks(Plane<const T> src, QelRect candidates, T threshold, PeakList list, Norm norm, Summaries<T> summaries,
              FindPeaksRowKernel<T>* peaks) {
    const auto [left, top, width, height] = candidates;
    const auto take = [&](int y) { summaries.take(y, src.row(y) + candidates.x - 1, candidates.width + 2); };
    const int room = list.room;
    if (norm == kBlock) {
        take(top - 1);
        take(top);
    }
    for (int y = top; y < top + height && list.room > 0; ++y) {
        take(norm == kBlock ? y + 1 : y);
        const T* const up = src.row(y - 1) + left;
        const T* const down = src.row(y + 1) + left;
        const Neighbours<T> around =
            norm == kBlock ? Neighbours<T>{{summaries.high(y - 1), summaries.high(y), summaries.high(y + 1)},
                                           {summaries.low(y - 1), summaries.low(y), summaries.low(y + 1)}}
                           : Neighbours<T>{{summaries.high(y), up, down}, {summaries.low(y), up, down}};
        const int found = peaks(src.row(y) + left, around, width, threshold, {left, y}, list);
        list.pPeak += found;
        list.room -= found;
    }
    return room - list.room;
}

template <class T>
qelStatus findPeaks(Plane<const T> src, QelSize roiSize, T threshold, QelPoint* pPeak, int maxPeakCount,
                    int* pPeakCount, int norm, int border, Qel8u* pBuffer, const Kernels<T>& kernels) {
    const auto isBeyondHalf = [](int side, int of) {
        return static_cast<Qel32f>(side) > static_cast<Qel32f>(of) * 0.5F;
    };
    const qelStatus status =
        Check()
            .pointers(src.p, pPeak, pPeakCount, pBuffer)
            .size(roiSize)
            .require(maxPeakCount >= 1 && border >= 1, qelStatusBadSize)
            .require(!isBeyondHalf(border, roiSize.width) && !isBeyondHalf(border, roiSize.height), qelStatusBadSize)
            .steps(rowOf<T>(roiSize.width), src.step)
            .require(norm == kBlock || norm == kPlus, qelStatusBadArg)
            .status();
    if (status != qelStatusOk) return status;

    *pPeakCount = 0;
    // Floats let sides beyond 2^24 be short of twice the border by a little.
    const QelRect candidates = {border, border, roiSize.width - 2 * border, roiSize.height - 2 * border};
    if (candidates.width < 1 || candidates.height < 1) return qelStatusOk;
    *pPeakCount = findPeaks<T>(src, candidates, threshold, {pPeak, maxPeakCount}, static_cast<Norm>(norm),
                               Summaries<T>(pBuffer, roiSize.width, kernels), kernels.peaks);
    return qelStatusOk;
}

// Eight rows of summaries, with room for three more samples than the four that a row is rounded up to.
qelStatus peaksBufferSize(int width, int* pBufferSize) {
    const qelStatus status = Check().pointers(pBufferSize).length(width).status();
    if (status != qelStatusOk) return status;
    return writeBufferSize(((int64_t{width} + 5) >> 2) * 128 | 32, pBufferSize);
}

}  // namespace
}  // namespace qel

#define FIND_PEAKS(name, T, maxRow, minRow, peaks)                                                                   \
    qelStatus name(const T* pSrc, int srcStep, QelSize roiSize, T threshold, QelPoint* pPeak, int maxPeakCount,      \
                   int* pPeakCount, int norm, int border, Qel8u* pBuffer) {                                          \
        return qel::findPeaks<T>({pSrc, srcStep}, roiSize, threshold, pPeak, maxPeakCount, pPeakCount, norm, border, \
                                 pBuffer, {qel::maxRow, qel::minRow, qel::peaks});                                   \
    }
FIND_PEAKS(qeliFindPeaks3x3_32s_C1R, Qel32s, ownSiftFilterMaxRow03_32s_C1R, ownSiftFilterMinRow03_32s_C1R,
           ownFindPeaksRow_32s_C1R_W7)
FIND_PEAKS(qeliFindPeaks3x3_32f_C1R, Qel32f, ownSiftFilterMaxRow03_32f_C1R, ownSiftFilterMinRow03_32f_C1R,
           ownFindPeaksRow_32f_C1R_W7)
#undef FIND_PEAKS

qelStatus qeliFindPeaks3x3GetBufferSize_32s_C1R(int width, int* pBufferSize) {
    return qel::peaksBufferSize(width, pBufferSize);
}

qelStatus qeliFindPeaks3x3GetBufferSize_32f_C1R(int width, int* pBufferSize) {
    return qel::peaksBufferSize(width, pBufferSize);
}
