#include <type_traits>

#include "frame/check.h"
#include "frame/rows.h"
#include "qelcv/stats.h"
#include "stats/min_max_indx_kernels.h"

namespace qel {
namespace {

// When rows go to threads, for every type and form.
constexpr ParallelFrom kMinMax = {.inAll = 0x4000};

// The samples that take part: those of one channel, where a mask is given under its bytes other than zero.
template <class T>
struct Source {
    Plane<const T> src;
    Plane<const Qel8u> mask;
    QelSize roiSize;
    int coi;
};

template <class T>
struct Kernels {
    const Kernel<ExtremesKernel<T>>& extremes;
    const Kernel<ColumnKernel<T>>& column;
};

struct Outputs {
    Qel32f* pMinVal;
    Qel32f* pMaxVal;
    QelPoint* pMinIndex;
    QelPoint* pMaxIndex;
};

void write(Qel32f value, QelPoint index, Qel32f* pValue, QelPoint* pIndex) {
    if (pValue != nullptr) *pValue = value;
    if (pIndex != nullptr) *pIndex = index;
}

template <class T>
void merge(Extremes<T>& total, const Extremes<T>& later) {
    if (later.low < total.low) total.low = later.low, total.lowRow = later.lowRow;
    if (later.high > total.high) total.high = later.high, total.highRow = later.highRow;
}

// True where no pixel takes part. Any sample that does brings the extremes in order, unless it is a NaN.
template <class T>
bool isEmpty(const Source<T>& s, const Extremes<T>& e) {
    if (s.mask.p == nullptr || e.low <= e.high) return false;
    if constexpr (std::is_integral_v<T>) return true;
    Extremes<Qel8u> mask;
    ownMinMaxIndx_8u_C1R_1(s.mask, {}, s.roiSize, 1, &mask);
    return mask.high == 0;
}

// Finds the column of a value whose row is known.
template <class T>
void report(const Source<T>& s, ColumnKernel<T>* column, T value, int y, Qel32f* pValue, QelPoint* pIndex) {
    const int x = column(s.src.row(y), s.mask.row(y), s.roiSize.width, s.coi, &value);
    write(static_cast<Qel32f>(value), {x, y}, pValue, pIndex);
}

template <class T>
qelStatus findExtremes(const Source<T>& s, const Kernels<T>& kernels, const Outputs& out) {
    ExtremesKernel<T>* const ofRows = kernels.extremes;
    const auto ofShare = [&](const Share& share) {
        Extremes<T> e;
        ofRows(s.src.from(share.y), s.mask.from(share.y), share.size, s.coi, &e);
        e.lowRow += share.y;
        e.highRow += share.y;
        return e;
    };
    Extremes<T> extremes;
    if (!kMinMax.reachedBy(s.roiSize)) {
        // Not by way of ofShare: the fields have just been stored one by one, and copying them as one would wait for
        // the stores, which tells in a small region.
        ofRows(s.src, s.mask, s.roiSize, s.coi, &extremes);
    } else {
        const qelStatus status = reduceRows(s.roiSize, true, &extremes, ofShare, merge<T>);
        if (status != qelStatusOk) return status;
    }

    if (isEmpty(s, extremes)) {
        write(0, {0, 0}, out.pMinVal, out.pMinIndex);
        write(0, {0, 0}, out.pMaxVal, out.pMaxIndex);
    } else {
        ColumnKernel<T>* const column = kernels.column;
        report(s, column, extremes.low, extremes.lowRow, out.pMinVal, out.pMinIndex);
        report(s, column, extremes.high, extremes.highRow, out.pMaxVal, out.pMaxIndex);
    }
    return qelStatusOk;
}

template <class T>
qelStatus minMaxIndx(const T* pSrc, int srcStep, QelSize roiSize, int channels, int coi, const Kernels<T>& kernels,
                     const Outputs& out) {
    const qelStatus status =
        Check().pointers(pSrc).size(roiSize).steps(rowOf<T>(roiSize.width, channels), srcStep).channel(coi).status();
    if (status != qelStatusOk) return status;
    return findExtremes<T>({{pSrc, srcStep}, {}, roiSize, coi}, kernels, out);
}

template <class T>
qelStatus minMaxIndx(const T* pSrc, int srcStep, const Qel8u* pMask, int maskStep, QelSize roiSize, int channels,
                     int coi, const Kernels<T>& kernels, const Outputs& out) {
    const RowOf pixels = rowOf<T>(roiSize.width, channels);
    const qelStatus status = Check()
                                 .pointers(pSrc, pMask)
                                 .size(roiSize)
                                 .stepSizes(pixels, srcStep)
                                 .stepSizes(rowOf<Qel8u>(roiSize.width), maskStep)
                                 .stepAlignments(pixels, srcStep)
                                 .channel(coi)
                                 .status();
    if (status != qelStatusOk) return status;
    return findExtremes<T>({{pSrc, srcStep}, {pMask, maskStep}, roiSize, coi}, kernels, out);
}

}  // namespace
}  // namespace qel

#define MIN_MAX_C1R(name, T, extremes, column)                                                                         \
    qelStatus name(const T* pSrc, int srcStep, QelSize roiSize, Qel32f* pMinVal, Qel32f* pMaxVal, QelPoint* pMinIndex, \
                   QelPoint* pMaxIndex) {                                                                              \
        return qel::minMaxIndx<T>(pSrc, srcStep, roiSize, 1, 1, {qel::extremes, qel::column},                          \
                                  {pMinVal, pMaxVal, pMinIndex, pMaxIndex});                                           \
    }
MIN_MAX_C1R(qeliMinMaxIndx_8u_C1R, Qel8u, ownMinMaxIndx_8u_C1R_1, ownMinMaxIndx_8u_C1R_2)
MIN_MAX_C1R(qeliMinMaxIndx_8s_C1R, Qel8s, ownMinMaxIndx_8s_C1R_1, ownMinMaxIndx_8s_C1R_2)
MIN_MAX_C1R(qeliMinMaxIndx_16u_C1R, Qel16u, ownMinMaxIndx_16u_C1R_1, ownMinMaxIndx_16u_C1R_2)
MIN_MAX_C1R(qeliMinMaxIndx_32f_C1R, Qel32f, ownMinMaxIndx_32f_C1R_1, ownMinMaxIndx_32f_C1R_2)
#undef MIN_MAX_C1R

#define MIN_MAX_C3CR(name, T, extremes, column)                                                            \
    qelStatus name(const T* pSrc, int srcStep, QelSize roiSize, int coi, Qel32f* pMinVal, Qel32f* pMaxVal, \
                   QelPoint* pMinIndex, QelPoint* pMaxIndex) {                                             \
        return qel::minMaxIndx<T>(pSrc, srcStep, roiSize, 3, coi, {qel::extremes, qel::column},            \
                                  {pMinVal, pMaxVal, pMinIndex, pMaxIndex});                               \
    }
MIN_MAX_C3CR(qeliMinMaxIndx_8u_C3CR, Qel8u, ownMinMaxIndx_8u_C3CR_1, ownMinMaxIndx_8u_C3CR_2)
MIN_MAX_C3CR(qeliMinMaxIndx_8s_C3CR, Qel8s, ownMinMaxIndx_8s_C3CR_1, ownMinMaxIndx_8s_C3CR_2)
MIN_MAX_C3CR(qeliMinMaxIndx_16u_C3CR, Qel16u, ownMinMaxIndx_16u_C3CR_1, ownMinMaxIndx_16u_C3CR_2)
MIN_MAX_C3CR(qeliMinMaxIndx_32f_C3CR, Qel32f, ownMinMaxIndx_32f_C3CR_1, ownMinMaxIndx_32f_C3CR_2)
#undef MIN_MAX_C3CR

#define MIN_MAX_C1MR(name, T, extremes, column)                                                                    \
    qelStatus name(const T* pSrc, int srcStep, const Qel8u* pMask, int maskStep, QelSize roiSize, Qel32f* pMinVal, \
                   Qel32f* pMaxVal, QelPoint* pMinIndex, QelPoint* pMaxIndex) {                                    \
        return qel::minMaxIndx<T>(pSrc, srcStep, pMask, maskStep, roiSize, 1, 1, {qel::extremes, qel::column},     \
                                  {pMinVal, pMaxVal, pMinIndex, pMaxIndex});                                       \
    }
MIN_MAX_C1MR(qeliMinMaxIndx_8u_C1MR, Qel8u, ownMinMaxIndx_8u_C1MR_1, ownMinMaxIndx_8u_C1MR_2)
MIN_MAX_C1MR(qeliMinMaxIndx_8s_C1MR, Qel8s, ownMinMaxIndx_8s_C1MR_1, ownMinMaxIndx_8s_C1MR_2)
MIN_MAX_C1MR(qeliMinMaxIndx_16u_C1MR, Qel16u, ownMinMaxIndx_16u_C1MR_1, ownMinMaxIndx_16u_C1MR_2)
MIN_MAX_C1MR(qeliMinMaxIndx_32f_C1MR, Qel32f, ownMinMaxIndx_32f_C1MR_1, ownMinMaxIndx_32f_C1MR_2)
#undef MIN_MAX_C1MR

#define MIN_MAX_C3CMR(name, T, extremes, column)                                                                 \
    qelStatus name(const T* pSrc, int srcStep, const Qel8u* pMask, int maskStep, QelSize roiSize, int coi,       \
                   Qel32f* pMinVal, Qel32f* pMaxVal, QelPoint* pMinIndex, QelPoint* pMaxIndex) {                 \
        return qel::minMaxIndx<T>(pSrc, srcStep, pMask, maskStep, roiSize, 3, coi, {qel::extremes, qel::column}, \
                                  {pMinVal, pMaxVal, pMinIndex, pMaxIndex});                                     \
    }
MIN_MAX_C3CMR(qeliMinMaxIndx_8u_C3CMR, Qel8u, ownMinMaxIndx_8u_C3CMR_1, ownMinMaxIndx_8u_C3CMR_2)
MIN_MAX_C3CMR(qeliMinMaxIndx_8s_C3CMR, Qel8s, ownMinMaxIndx_8s_C3CMR_1, ownMinMaxIndx_8s_C3CMR_2)
MIN_MAX_C3CMR(qeliMinMaxIndx_16u_C3CMR, Qel16u, ownMinMaxIndx_16u_C3CMR_1, ownMinMaxIndx_16u_C3CMR_2)
MIN_MAX_C3CMR(qeliMinMaxIndx_32f_C3CMR, Qel32f, ownMinMaxIndx_32f_C3CMR_1, ownMinMaxIndx_32f_C3CMR_2)
#undef MIN_MAX_C3CMR
