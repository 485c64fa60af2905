#include "frame/check.h"
#include "pyramid/gauss5x5.h"
#include "pyramid/gauss5x5_sums.h"
#include "pyramid/pyr_down_kernels.h"
#include "qelcv/pyramid.h"

namespace qel {
namespace {

// An image of one row or two: no room for the kernel's five. The rows' sums are added up in place of the columns.
template <class T>
void ownPyrDownG5x5_H2(Plane<const T> src, T* pDst, QelSize size, int channels) {
    const auto rowSum = [=](const T* s, int i) {
        if (size.width >= 3) return downRowSum(s, channels, size.width, i);
        return (gaussTerm(s[0]) + gaussTerm(s[(size.width - 1) * channels])) * 8;
    };
    for (int x = 0; x < (size.width + 1) / 2; ++x)
        for (int c = 0; c < channels; ++c) {
            const auto sum = rowSum(src.row(0) + c, x) + rowSum(src.row(size.height - 1) + c, x);
            pDst[x * channels + c] = gaussSample<T, 8>(sum * 8);
        }
}
constexpr auto& ownPyrDownG5x5_H2_8u = ownPyrDownG5x5_H2<Qel8u>;
constexpr auto& ownPyrDownG5x5_H2_8s = ownPyrDownG5x5_H2<Qel8s>;
constexpr auto& ownPyrDownG5x5_H2_32f = ownPyrDownG5x5_H2<Qel32f>;

// At least three rows of one pixel or two: the columns' sums are added up in place of the rows.
template <class T>
void ownPyrDownG5x5_W2(Plane<const T> src, Plane<T> dst, QelSize size, int channels) {
    const auto columnSum = [=](int sample, int y) {
        const auto at = [=](int k) { return gaussTerm(src.row(reflected(2 * y + k, size.height))[sample]); };
        return downColumnSum(at(-2), at(-1), at(0), at(1), at(2));
    };
    for (int y = 0; y < (size.height + 1) / 2; ++y)
        for (int c = 0; c < channels; ++c) {
            const auto sum = columnSum(c, y) + columnSum((size.width - 1) * channels + c, y);
            dst.row(y)[c] = gaussSample<T, 8>(sum * 8);
        }
}
constexpr auto& ownPyrDownG5x5_W2_8u = ownPyrDownG5x5_W2<Qel8u>;
constexpr auto& ownPyrDownG5x5_W2_8s = ownPyrDownG5x5_W2<Qel8s>;
constexpr auto& ownPyrDownG5x5_W2_32f = ownPyrDownG5x5_W2<Qel32f>;

template <class T>
struct SmallKernels {
    decltype(ownPyrDownG5x5_H2<T>)& h2;
    decltype(ownPyrDownG5x5_W2<T>)& w2;
};
constexpr SmallKernels<Qel8u> kSmall_8u = {ownPyrDownG5x5_H2_8u, ownPyrDownG5x5_W2_8u};
constexpr SmallKernels<Qel8s> kSmall_8s = {ownPyrDownG5x5_H2_8s, ownPyrDownG5x5_W2_8s};
constexpr SmallKernels<Qel32f> kSmall_32f = {ownPyrDownG5x5_H2_32f, ownPyrDownG5x5_W2_32f};

template <class T>
qelStatus pyrDown(Plane<const T> src, Plane<T> dst, QelSize roiSize, Qel8u* pBuffer, int channels,
                  const SmallKernels<T>& small, PyrDownKernel<T>* kernel) {
    const RowOf dstRow = rowOf<T>(static_cast<int>((int64_t{roiSize.width} + 1) / 2), channels);
    const qelStatus status = Check()
                                 .pointers(src.p, dst.p, pBuffer)
                                 .size(roiSize)
                                 .stepSizes(rowOf<T>(roiSize.width, channels), src.step)
                                 .stepSizes(dstRow, dst.step)
                                 .stepAlignments(dstRow, src.step, dst.step)
                                 .status();
    if (status != qelStatusOk) return status;

    if (roiSize.height < 3) {
        small.h2(src, dst.p, roiSize, channels);
    } else if (roiSize.width < 3) {
        small.w2(src, dst, roiSize, channels);
    } else {
        const GaussScratch scratch(pBuffer, downScratchBytes(roiSize.width, channels));
        kernel(src, dst, roiSize, scratch.p, scratch.bytes);
    }
    return qelStatusOk;
}

}  // namespace
}  // namespace qel

#define PYR_DOWN(name, T, channels, small, kernel)                                                                \
    qelStatus name(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize roiSize, Qel8u* pBuffer) {           \
        return qel::pyrDown<T>({pSrc, srcStep}, {pDst, dstStep}, roiSize, pBuffer, channels, qel::small, kernel); \
    }
PYR_DOWN(qeliPyrDown_Gauss5x5_8u_C1R, Qel8u, 1, kSmall_8u, qel::ownPyrDownG5x5_8u_C1)
PYR_DOWN(qeliPyrDown_Gauss5x5_8u_C3R, Qel8u, 3, kSmall_8u, qel::ownPyrDownG5x5_8u_C3)
PYR_DOWN(qeliPyrDown_Gauss5x5_8s_C1R, Qel8s, 1, kSmall_8s, qel::ownPyrDownG5x5_8s_C1)
PYR_DOWN(qeliPyrDown_Gauss5x5_8s_C3R, Qel8s, 3, kSmall_8s, qel::ownPyrDownG5x5_8s_C3)
PYR_DOWN(qeliPyrDown_Gauss5x5_32f_C1R, Qel32f, 1, kSmall_32f, qel::ownPyrDownG5x5_32f_C1)
PYR_DOWN(qeliPyrDown_Gauss5x5_32f_C3R, Qel32f, 3, kSmall_32f, qel::ownPyrDownG5x5_32f_C3)
#undef PYR_DOWN

qelStatus qeliPyrDownGetBufSize_Gauss5x5(int width, int dataType, int channels, int* pBufferSize) {
    return qel::writeGaussScratchBytes(qel::downScratchBytes, width, dataType, channels, pBufferSize);
}
