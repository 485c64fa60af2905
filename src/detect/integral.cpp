#include <algorithm>

#include "detect/integral_kernels.h"
#include "frame/check.h"
#include "qelcv/detect.h"

namespace qel {
namespace {

// A table has so many columns, and rows, more than its source, and as many rows ahead of the first sums.
enum Margin { kUpright = 1, kTilted = 2 };

// Rows ahead of the first that has samples to sum hold the offset alone.
template <class T>
void fillFirstRows(const SumTable<T>& table, int width, Margin margin) {
    for (int y = 0; y < margin; ++y) std::fill_n(table.row(y), size_t(width) + margin, table.offset);
}

// Columns of a table beside a source of this width, in 64 bits: a step can be too short for any int.
template <class T>
RowOf rowOfTable(int width, Margin margin) {
    return {(int64_t{width} + margin) * int64_t{sizeof(T)}, int{sizeof(T)}};
}

template <class T>
qelStatus integral(Plane<const Qel8u> src, const SumTable<T>& sums, QelSize roiSize, Margin margin,
                   const Kernel<IntegralKernel<T>>& kernel) {
    const RowOf row = rowOfTable<T>(roiSize.width, margin);
    const qelStatus status = Check()
                                 .pointers(src.p, sums.p)
                                 .size(roiSize)
                                 .stepSizes(rowOf<Qel8u>(roiSize.width), src.step)
                                 .steps(row, sums.step)
                                 .status();
    if (status != qelStatusOk) return status;

    fillFirstRows(sums, roiSize.width, margin);
    kernel(src, sums, roiSize);
    return qelStatusOk;
}

template <class T, class Q>
qelStatus sqrIntegral(Plane<const Qel8u> src, const SumTable<T>& sums, const SumTable<Q>& squares, QelSize roiSize,
                      Margin margin, const Kernel<SqrIntegralKernel<T, Q>>& kernel) {
    const RowOf row = rowOfTable<T>(roiSize.width, margin);
    const RowOf rowOfSquares = rowOfTable<Q>(roiSize.width, margin);
    const qelStatus status = Check()
                                 .pointers(src.p, sums.p, squares.p)
                                 .size(roiSize)
                                 .stepSizes(rowOf<Qel8u>(roiSize.width), src.step)
                                 .stepSizes(row, sums.step)
                                 .stepSizes(rowOfSquares, squares.step)
                                 .stepAlignments(row, sums.step)
                                 .stepAlignments(rowOfSquares, squares.step)
                                 .status();
    if (status != qelStatusOk) return status;

    fillFirstRows(sums, roiSize.width, margin);
    fillFirstRows(squares, roiSize.width, margin);
    kernel(src, sums, squares, roiSize);
    return qelStatusOk;
}

}  // namespace
}  // namespace qel

#define INTEGRAL(name, T, margin, kernel)                                                                  \
    qelStatus name(const Qel8u* pSrc, int srcStep, T* pDst, int dstStep, QelSize roiSize, T val) {         \
        return qel::integral<T>({pSrc, srcStep}, {pDst, dstStep, val}, roiSize, qel::margin, qel::kernel); \
    }
INTEGRAL(qeliIntegral_8u32s_C1R, Qel32s, kUpright, ownIntegral_8u32s_C1R_W7)
INTEGRAL(qeliIntegral_8u32f_C1R, Qel32f, kUpright, ownIntegral_8u32f_C1R_W7)
INTEGRAL(qeliTiltedIntegral_8u32s_C1R, Qel32s, kTilted, ownTiltedIntegral_8u32s_C1R_W7)
INTEGRAL(qeliTiltedIntegral_8u32f_C1R, Qel32f, kTilted, ownTiltedIntegral_8u32f_C1R_W7)
#undef INTEGRAL

#define SQR_INTEGRAL(name, T, Q, margin, kernel)                                                                       \
    qelStatus name(const Qel8u* pSrc, int srcStep, T* pDst, int dstStep, Q* pSqr, int sqrStep, QelSize roiSize, T val, \
                   Q valSqr) {                                                                                         \
        return qel::sqrIntegral<T, Q>({pSrc, srcStep}, {pDst, dstStep, val}, {pSqr, sqrStep, valSqr}, roiSize,         \
                                      qel::margin, qel::kernel);                                                       \
    }
SQR_INTEGRAL(qeliSqrIntegral_8u32s_C1R, Qel32s, Qel32s, kUpright, ownSqrIntegral_8u32s_C1R_W7)
SQR_INTEGRAL(qeliSqrIntegral_8u32s64f_C1R, Qel32s, Qel64f, kUpright, ownSqrIntegral_8u32s64f_C1R_W7)
SQR_INTEGRAL(qeliSqrIntegral_8u32f64f_C1R, Qel32f, Qel64f, kUpright, ownSqrIntegral_8u32f64f_C1R_W7)
SQR_INTEGRAL(qeliTiltedSqrIntegral_8u32s_C1R, Qel32s, Qel32s, kTilted, ownTiltedSqrIntegral_8u32s_C1R_W7)
SQR_INTEGRAL(qeliTiltedSqrIntegral_8u32s64f_C1R, Qel32s, Qel64f, kTilted, ownTiltedSqrIntegral_8u32s64f_C1R_W7)
SQR_INTEGRAL(qeliTiltedSqrIntegral_8u32f64f_C1R, Qel32f, Qel64f, kTilted, ownTiltedSqrIntegral_8u32f64f_C1R_W7)
#undef SQR_INTEGRAL
