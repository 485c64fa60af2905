#include "frame/check.h"
#include "pyramid/gauss5x5.h"
#include "pyramid/gauss5x5_sums.h"
#include "pyramid/pyr_up_kernels.h"
#include "qelcv/pyramid.h"

namespace qel {
namespace {

// One row: becomes two that are equal.
template <class T>
void ownPyrUpG5x5_H1(const T* pSrc, Plane<T> dst, int width, int channels) {
    for (int x = 0; x < width; ++x)
        for (int c = 0; c < channels; ++c) {
            const T even = gaussSample<T, 6>(upRowEven(pSrc + c, channels, width, x) * 8);
            const T odd = gaussSample<T, 6>(upRowOdd(pSrc + c, channels, width, x) * 8);
            for (int y = 0; y < 2; ++y) {
                dst.row(y)[2 * x * channels + c] = even;
                dst.row(y)[(2 * x + 1) * channels + c] = odd;
            }
        }
}
constexpr auto& ownPyrUpG5x5_H1_8u = ownPyrUpG5x5_H1<Qel8u>;
constexpr auto& ownPyrUpG5x5_H1_8s = ownPyrUpG5x5_H1<Qel8s>;
constexpr auto& ownPyrUpG5x5_H1_32f = ownPyrUpG5x5_H1<Qel32f>;

// One column of at least two pixels: becomes two that are equal.
template <class T>
void ownPyrUpG5x5_W1(Plane<const T> src, Plane<T> dst, int height, int channels) {
    const int last = height - 1;
    for (int y = 0; y <= last; ++y)
        for (int c = 0; c < channels; ++c) {
            const auto at = [=](int row) { return gaussTerm(src.row(row)[c]); };
            const auto here = at(y), below = at(y < last ? y + 1 : y);
            const T even = gaussSample<T, 6>(upColumnEven(at(y > 0 ? y - 1 : 1), here, below) * 8);
            const T odd = gaussSample<T, 6>(upColumnOdd(here, below) * 8);
            for (int x = 0; x < 2; ++x) {
                dst.row(2 * y)[x * channels + c] = even;
                dst.row(2 * y + 1)[x * channels + c] = odd;
            }
        }
}
constexpr auto& ownPyrUpG5x5_W1_8u = ownPyrUpG5x5_W1<Qel8u>;
constexpr auto& ownPyrUpG5x5_W1_8s = ownPyrUpG5x5_W1<Qel8s>;
constexpr auto& ownPyrUpG5x5_W1_32f = ownPyrUpG5x5_W1<Qel32f>;

template <class T>
struct SmallKernels {
    decltype(ownPyrUpG5x5_H1<T>)& h1;
    decltype(ownPyrUpG5x5_W1<T>)& w1;
};
constexpr SmallKernels<Qel8u> kSmall_8u = {ownPyrUpG5x5_H1_8u, ownPyrUpG5x5_W1_8u};
constexpr SmallKernels<Qel8s> kSmall_8s = {ownPyrUpG5x5_H1_8s, ownPyrUpG5x5_W1_8s};
constexpr SmallKernels<Qel32f> kSmall_32f = {ownPyrUpG5x5_H1_32f, ownPyrUpG5x5_W1_32f};

template <class T>
qelStatus pyrUp(Plane<const T> src, Plane<T> dst, QelSize roiSize, Qel8u* pBuffer, int channels,
                const SmallKernels<T>& small, PyrUpKernel<T>* kernel) {
    const RowOf srcRow = rowOf<T>(roiSize.width, channels);
    const qelStatus status = Check()
                                 .pointers(src.p, dst.p, pBuffer)
                                 .size(roiSize)
                                 .stepSizes(srcRow, src.step)
                                 .stepSizes({2 * srcRow.bytes, srcRow.sample}, dst.step)
                                 .stepAlignments(srcRow, src.step, dst.step)
                                 .status();
    if (status != qelStatusOk) return status;

    if (roiSize.height == 1) {
        small.h1(src.p, dst, roiSize.width, channels);
    } else if (roiSize.width == 1) {
        small.w1(src, dst, roiSize.height, channels);
    } else {
        const GaussScratch scratch(pBuffer, upScratchBytes(roiSize.width, channels));
        kernel(src, dst, roiSize, scratch.p, scratch.bytes);
    }
    return qelStatusOk;
}

}  // namespace
}  // namespace qel

#define PYR_UP(name, T, channels, small, kernel)                                                                \
    qelStatus name(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize roiSize, Qel8u* pBuffer) {         \
        return qel::pyrUp<T>({pSrc, srcStep}, {pDst, dstStep}, roiSize, pBuffer, channels, qel::small, kernel); \
    }
PYR_UP(qeliPyrUp_Gauss5x5_8u_C1R, Qel8u, 1, kSmall_8u, qel::ownPyrUpG5x5_8u_C1)
PYR_UP(qeliPyrUp_Gauss5x5_8u_C3R, Qel8u, 3, kSmall_8u, qel::ownPyrUpG5x5_8u_C3)
PYR_UP(qeliPyrUp_Gauss5x5_8s_C1R, Qel8s, 1, kSmall_8s, qel::ownPyrUpG5x5_8s_C1)
PYR_UP(qeliPyrUp_Gauss5x5_8s_C3R, Qel8s, 3, kSmall_8s, qel::ownPyrUpG5x5_8s_C3)
PYR_UP(qeliPyrUp_Gauss5x5_32f_C1R, Qel32f, 1, kSmall_32f, qel::ownPyrUpG5x5_32f_C1)
PYR_UP(qeliPyrUp_Gauss5x5_32f_C3R, Qel32f, 3, kSmall_32f, qel::ownPyrUpG5x5_32f_C3)
#undef PYR_UP

qelStatus qeliPyrUpGetBufSize_Gauss5x5(int width, int dataType, int channels, int* pBufferSize) {
    return qel::writeGaussScratchBytes(qel::upScratchBytes, width, dataType, channels, pBufferSize);
}
