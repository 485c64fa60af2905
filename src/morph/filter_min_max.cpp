#include "morph/filter_min_max.h"

#include <algorithm>
#include <climits>

#include "frame/check.h"
#include "frame/image_primitives.h"
#include "morph/filter_min_max_tables.h"
#include "qelcv/morph.h"

namespace qel {
namespace {

// One direction of a window: as far as the region has pixels.
void cut(int length, int* pSize, int* pAnchor) {
    const int64_t after = std::min<int64_t>(int64_t{*pSize} - *pAnchor, length);
    *pAnchor = std::min(*pAnchor, length - 1);
    *pSize = static_cast<int>(*pAnchor + after);
}

template <class T>
struct RoutinesOf;
template <>
struct RoutinesOf<Qel8u> {
    static MinMaxRowTable<Qel8u>& rows(Extreme extreme, int channels, bool small) {
        const bool max = extreme == Extreme::kMax;
        if (channels == 1) return max ? owntablFilterMaxRow_8u_C1 : owntablFilterMinRow_8u_C1;
        if (channels == 3) return max ? owntablFilterMaxRow_8u_C3 : owntablFilterMinRow_8u_C3;
        if (small) return max ? owntablFilterMaxRow_8u_C4_Small : owntablFilterMinRow_8u_C4_Small;
        return max ? owntablFilterMaxRow_8u_C4 : owntablFilterMinRow_8u_C4;
    }
    static MinMaxColumnTable<Qel8u>& columns(Extreme extreme) {
        return extreme == Extreme::kMax ? owntablFilterMaxColumn_8u_C1 : owntablFilterMinColumn_8u_C1;
    }
};
template <>
struct RoutinesOf<Qel32f> {
    static MinMaxRowTable<Qel32f>& rows(Extreme extreme, int channels, bool small) {
        const bool max = extreme == Extreme::kMax;
        if (channels == 3) return max ? owntablFilterMaxRow_32f_C3 : owntablFilterMinRow_32f_C3;
        if (channels == 4) return max ? owntablFilterMaxRow_32f_C4 : owntablFilterMinRow_32f_C4;
        if (small) return max ? owntablFilterMaxRow_32f_C1_Small : owntablFilterMinRow_32f_C1_Small;
        return max ? owntablFilterMaxRow_32f_C1 : owntablFilterMinRow_32f_C1;
    }
    static MinMaxColumnTable<Qel32f>& columns(Extreme extreme) {
        return extreme == Extreme::kMax ? owntablFilterMaxColumn_32f_C1 : owntablFilterMinColumn_32f_C1;
    }
};

// Images that are small get routines that start quickly.
bool isSmall(QelSize size) { return int64_t{size.width} * size.height * 4 < 16385; }

template <class T>
MinMaxRowKernel<T>* chooseRow(Extreme extreme, QelSize size, int channels, int w) {
    const bool small = isSmall(size);
    const bool anyWidth = small && sizeof(T) == 4 && channels == 1;
    const bool roomy = size.width >= 2 * int64_t{w};
    const int index = !roomy ? 0 : anyWidth ? std::min(w, 15) : w < 16 ? w : 0;
    return *RoutinesOf<T>::rows(extreme, channels, small)[index];
}

template <class T>
MinMaxColumnKernel<T>* chooseColumn(Extreme extreme, int height, int h) {
    const int index = height >= 2 * int64_t{h} && h < 8 ? h : 0;
    return *RoutinesOf<T>::columns(extreme)[index];
}

template <class T>
using SquareTable = const MinMaxSquare<T>* const[2][5];  // by side and channels
constexpr SquareTable<Qel8u> kMaxSquares_8u = {
    {nullptr, &ownFilterMaxSquare03_8u_C1R, nullptr, &ownFilterMaxSquare03_8u_C3R, &ownFilterMaxSquare03_8u_C4R},
    {nullptr, &ownFilterMaxSquare05_8u_C1R, nullptr, &ownFilterMaxSquare05_8u_C3R, &ownFilterMaxSquare05_8u_C4R}};
constexpr SquareTable<Qel8u> kMinSquares_8u = {
    {nullptr, &ownFilterMinSquare03_8u_C1R, nullptr, &ownFilterMinSquare03_8u_C3R, &ownFilterMinSquare03_8u_C4R},
    {nullptr, &ownFilterMinSquare05_8u_C1R, nullptr, &ownFilterMinSquare05_8u_C3R, &ownFilterMinSquare05_8u_C4R}};
constexpr SquareTable<Qel32f> kMaxSquares_32f = {{nullptr, &ownFilterMaxSquare03_32f_C1R},
                                                 {nullptr, &ownFilterMaxSquare05_32f_C1R}};
constexpr SquareTable<Qel32f> kMinSquares_32f = {{nullptr, &ownFilterMinSquare03_32f_C1R},
                                                 {nullptr, &ownFilterMinSquare05_32f_C1R}};
const SquareTable<Qel8u>& squaresOf(Extreme extreme, Qel8u) {
    return extreme == Extreme::kMax ? kMaxSquares_8u : kMinSquares_8u;
}
const SquareTable<Qel32f>& squaresOf(Extreme extreme, Qel32f) {
    return extreme == Extreme::kMax ? kMaxSquares_32f : kMinSquares_32f;
}

// The width decides, not what vectors there are: floats that do not compare show in which order they were met.
template <class T>
MinMaxSquareKernel<T>* chooseSquare(Extreme extreme, int width, int channels, QelSize window) {
    const int side = window.width;
    if (window.height != side || (side != 3 && side != 5)) return nullptr;
    if (rowOf<T>(width, channels).bytes < kMinMaxSquareBytes) return nullptr;
    const MinMaxSquare<T>* const kernel = squaresOf(extreme, T())[side == 5][channels];
    return kernel == nullptr ? nullptr : static_cast<MinMaxSquareKernel<T>*>(*kernel);
}

// Lines that exist at a time: those of the windows that are made together.
int linesKept(int h) { return h + minMaxBlock(h) - 1; }

// Behind the pointers, which each line has two of.
template <class T>
RowRing<T> carveLines(void* pBuffer, int64_t samples, QelSize size, const ExtremeWindow& window) {
    const int h = window.size.height;
    const int64_t rowsInAll = int64_t{size.height} + h - 1;
    const int kept = static_cast<int>(std::min<int64_t>(linesKept(h), rowsInAll));
    const RowRange all = {-window.anchor.y, static_cast<int>(std::min<int64_t>(rowsInAll - window.anchor.y, INT_MAX))};
    T** const pointers = reinterpret_cast<T**>(alignUp(pBuffer, sizeof(T*)));
    char* const lines = alignUp(pointers + 4 * int64_t{h}, 32);
    const int64_t room = int64_t{2} * h * alignUp(samples * int64_t{sizeof(T)}, 32) / int64_t{sizeof(T)};
    const ScratchRows<T> rows(reinterpret_cast<T*>(lines), room, static_cast<int>(samples), kept);
    return RowRing<T>(rows, kept, pointers, all, {0, size.height});
}

}  // namespace

ExtremeWindow cutToRegion(const ExtremeWindow& window, QelSize roiSize) {
    ExtremeWindow w = window;
    cut(roiSize.width, &w.size.width, &w.anchor.x);
    cut(roiSize.height, &w.size.height, &w.anchor.y);
    return w;
}

int64_t extremesBytes(int64_t rowBytes, int windowHeight) {
    constexpr int kPointers = 4 * static_cast<int>(sizeof(void*));
    return int64_t{windowHeight} * (kPointers + 2 * (rowBytes + 32)) + 32;
}

template <class T>
ExtremesByRows<T>::ExtremesByRows(Extreme extreme, const Plane<const T>& src, const Plane<T>& dst, QelSize roiSize,
                                  int channels, const ExtremeWindow& window, void* pBuffer)
    : src_(src),
      dst_(dst),
      size_(roiSize),
      channels_(channels),
      window_(cutToRegion(window, roiSize)),
      row_(chooseRow<T>(extreme, roiSize, channels, window_.size.width)),
      column_(chooseColumn<T>(extreme, roiSize.height, window_.size.height)),
      square_(chooseSquare<T>(extreme, roiSize.width, channels, window_.size)),
      lines_(carveLines<T>(pBuffer, int64_t{roiSize.width} * channels, roiSize, window_)) {}

template <class T>
int ExtremesByRows<T>::sourceRowsFor(int end) const {
    const int below = window_.size.height - 1 - window_.anchor.y;
    return below >= size_.height - end ? size_.height : end + below;
}

template <class T>
void ExtremesByRows<T>::makeUpTo(int end) {
    if (square_ != nullptr) {
        while (next_ < end) makeSquares(std::min(kMinMaxSquareRows, end - next_));
    } else if (window_.size.height == 1) {
        for (; next_ < end; ++next_)
            row_(src_.row(next_), dst_.row(next_), size_.width, window_.size.width, window_.anchor.x);
    } else {
        while (next_ < end) makeRows(minMaxPart(window_.size.height, end - next_));
    }
}

template <class T>
void ExtremesByRows<T>::makeRows(int count) {
    const int h = window_.size.height;
    const auto fill = [this](int y, T* const* pLines, int rows) {
        for (int i = 0; i < rows; ++i)
            row_(src_.row(y + i), pLines[i], size_.width, window_.size.width, window_.anchor.x);
    };
    const auto nearest = [this](int64_t y, T*) { return lines_.place(y < 0 ? 0 : size_.height - 1); };
    const int first = next_ - window_.anchor.y;
    lines_.fillUpTo(int64_t{first} + h - 1 + count, fill, nearest);
    column_(lines_.window(first), dst_.from(next_), {size_.width * channels_, count}, h);
    next_ += count;
}

// Where fewer rows are left than are made at a time, the others go to a line of scratch, made of rows that are there.
template <class T>
void ExtremesByRows<T>::makeSquares(int count) {
    const T* rows[kMinMaxSquareLargest + kMinMaxSquareRows - 1];
    T* results[kMinMaxSquareRows];
    const int first = next_ - window_.anchor.y;
    const int last = sourceRowsFor(next_ + count) - 1;
    for (int i = 0; i < window_.size.height + kMinMaxSquareRows - 1; ++i)
        rows[i] = src_.row(std::clamp(first + i, 0, last));
    for (int i = 0; i < kMinMaxSquareRows; ++i) results[i] = i < count ? dst_.row(next_ + i) : lines_.place(0);
    square_(rows, results, size_.width, window_.anchor.x);
    next_ += count;
}

template class ExtremesByRows<Qel8u>;
template class ExtremesByRows<Qel32f>;

template <class T>
void filterExtremes(Extreme extreme, const Plane<const T>& src, const Plane<T>& dst, QelSize roiSize, int channels,
                    const ExtremeWindow& window, void* pBuffer) {
    ExtremesByRows<T>(extreme, src, dst, roiSize, channels, window, pBuffer).makeUpTo(roiSize.height);
}

template void filterExtremes<Qel8u>(Extreme, const Plane<const Qel8u>&, const Plane<Qel8u>&, QelSize, int,
                                    const ExtremeWindow&, void*);
template void filterExtremes<Qel32f>(Extreme, const Plane<const Qel32f>&, const Plane<Qel32f>&, QelSize, int,
                                     const ExtremeWindow&, void*);

namespace {

template <class T>
qelStatus filterMinMax(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize roiSize, QelSize maskSize,
                       QelPoint anchor, void* pBuffer, Extreme extreme, int channels) {
    const RowOf row = rowOf<T>(roiSize.width, channels);
    const qelStatus status =
        Check()
            .pointers(pSrc, pDst, static_cast<const Qel8u*>(pBuffer))
            .size(roiSize)
            .require(maskSize.width >= 1 && maskSize.height >= 1, qelStatusBadMaskSize)
            .require(anchor.x >= 0 && anchor.x < maskSize.width && anchor.y >= 0 && anchor.y < maskSize.height,
                     qelStatusBadAnchor)
            .steps(row, srcStep)
            .steps(row, dstStep)
            .status();
    if (status != qelStatusOk) return status;

    if (maskSize.width == 1 && maskSize.height == 1) {
        qeliCopy_8u_C1R(reinterpret_cast<const Qel8u*>(pSrc), srcStep, reinterpret_cast<Qel8u*>(pDst), dstStep,
                        {static_cast<int>(row.bytes), roiSize.height});
    } else {
        filterExtremes<T>(extreme, {pSrc, srcStep}, {pDst, dstStep}, roiSize, channels, {maskSize, anchor}, pBuffer);
    }
    return qelStatusOk;
}

template <class T>
qelStatus filterMinMaxBufferSize(int roiWidth, int maskWidth, int maskHeight, int* pBufferSize, int channels) {
    const qelStatus status = Check()
                                 .pointers(pBufferSize)
                                 .length(roiWidth)
                                 .require(maskHeight >= 1 && maskWidth >= 1, qelStatusBadMaskSize)
                                 .status();
    if (status != qelStatusOk) return status;
    const int64_t rowBytes = rowOf<T>(roiWidth, channels).bytes;
    if (rowBytes > INT_MAX || maskHeight > INT_MAX / 64) return qelStatusOverflow;  // and what is beyond 64 bits
    return writeBufferSize(extremesBytes(rowBytes, maskHeight), pBufferSize);
}

}  // namespace
}  // namespace qel

#define FILTER(name, T, extreme, channels)                                                                             \
    qelStatus name(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize roiSize, QelSize maskSize,                \
                   QelPoint anchor, Qel8u* pBuffer) {                                                                  \
        return qel::filterMinMax(pSrc, srcStep, pDst, dstStep, roiSize, maskSize, anchor, pBuffer, extreme, channels); \
    }
FILTER(qeliFilterMaxBorderReplicate_8u_C1R, Qel8u, qel::Extreme::kMax, 1)
FILTER(qeliFilterMaxBorderReplicate_8u_C3R, Qel8u, qel::Extreme::kMax, 3)
FILTER(qeliFilterMaxBorderReplicate_8u_C4R, Qel8u, qel::Extreme::kMax, 4)
FILTER(qeliFilterMaxBorderReplicate_32f_C1R, Qel32f, qel::Extreme::kMax, 1)
FILTER(qeliFilterMaxBorderReplicate_32f_C3R, Qel32f, qel::Extreme::kMax, 3)
FILTER(qeliFilterMaxBorderReplicate_32f_C4R, Qel32f, qel::Extreme::kMax, 4)
FILTER(qeliFilterMinBorderReplicate_8u_C1R, Qel8u, qel::Extreme::kMin, 1)
FILTER(qeliFilterMinBorderReplicate_8u_C3R, Qel8u, qel::Extreme::kMin, 3)
FILTER(qeliFilterMinBorderReplicate_8u_C4R, Qel8u, qel::Extreme::kMin, 4)
FILTER(qeliFilterMinBorderReplicate_32f_C1R, Qel32f, qel::Extreme::kMin, 1)
FILTER(qeliFilterMinBorderReplicate_32f_C3R, Qel32f, qel::Extreme::kMin, 3)
FILTER(qeliFilterMinBorderReplicate_32f_C4R, Qel32f, qel::Extreme::kMin, 4)
#undef FILTER

#define BUFFER_SIZE(name, T, channels)                                                                 \
    qelStatus name(int roiWidth, int maskWidth, int maskHeight, int* pBufferSize) {                    \
        return qel::filterMinMaxBufferSize<T>(roiWidth, maskWidth, maskHeight, pBufferSize, channels); \
    }
BUFFER_SIZE(qeliFilterMaxGetBufferSize_8u_C1R, Qel8u, 1)
BUFFER_SIZE(qeliFilterMaxGetBufferSize_8u_C3R, Qel8u, 3)
BUFFER_SIZE(qeliFilterMaxGetBufferSize_8u_C4R, Qel8u, 4)
BUFFER_SIZE(qeliFilterMaxGetBufferSize_32f_C1R, Qel32f, 1)
BUFFER_SIZE(qeliFilterMaxGetBufferSize_32f_C3R, Qel32f, 3)
BUFFER_SIZE(qeliFilterMaxGetBufferSize_32f_C4R, Qel32f, 4)
BUFFER_SIZE(qeliFilterMinGetBufferSize_8u_C1R, Qel8u, 1)
BUFFER_SIZE(qeliFilterMinGetBufferSize_8u_C3R, Qel8u, 3)
BUFFER_SIZE(qeliFilterMinGetBufferSize_8u_C4R, Qel8u, 4)
BUFFER_SIZE(qeliFilterMinGetBufferSize_32f_C1R, Qel32f, 1)
BUFFER_SIZE(qeliFilterMinGetBufferSize_32f_C3R, Qel32f, 3)
BUFFER_SIZE(qeliFilterMinGetBufferSize_32f_C4R, Qel32f, 4)
#undef BUFFER_SIZE
