#include "frame/check.h"
#include "pyramid/copy_subpix_kernels.h"
#include "qelcv/pyramid.h"

namespace qel {
namespace {

template <class T, class Out>
qelStatus checkCopy(Plane<const T> src, Plane<Out> dst, QelSize roiSize) {
    const RowOf srcRow = rowOf<T>(roiSize.width), dstRow = rowOf<Out>(roiSize.width);
    return Check()
        .pointers(src.p, dst.p)
        .size(roiSize)
        .stepSizes(srcRow, src.step)
        .stepSizes(dstRow, dst.step)
        .stepAlignments(srcRow, src.step)
        .stepAlignments(dstRow, dst.step)
        .status();
}

// Fractions are raised to these, lest rows be formed from each other by dividing by zero.
struct LeastFractions {
    Qel32f x, y;
};
constexpr LeastFractions kUnchanged = {0, 0}, kFromBytes = {1e-6F, 1e-9F}, kFromFloats = {1e-6F, 1e-6F};

Qel32f raised(Qel32f fraction, Qel32f least) { return fraction < least ? least : fraction; }

template <class T, class Out>
qelStatus copySubpix(Plane<const T> src, Plane<Out> dst, QelSize roiSize, Qel32f dx, Qel32f dy, LeastFractions least,
                     const Kernel<SubpixKernel<T, Out>>& kernel) {
    const qelStatus status = checkCopy(src, dst, roiSize);
    if (status != qelStatusOk) return status;

    kernel(src, dst, roiSize, weightsFloat(raised(fractionOf(dx), least.x), raised(fractionOf(dy), least.y)));
    return qelStatusOk;
}

}  // namespace
}  // namespace qel

qelStatus qeliCopySubpix_8u_C1R(const Qel8u* pSrc, int srcStep, Qel8u* pDst, int dstStep, QelSize roiSize, Qel32f dx,
                                Qel32f dy) {
    using namespace qel;
    const Plane<const Qel8u> src = {pSrc, srcStep};
    const Plane<Qel8u> dst = {pDst, dstStep};
    const qelStatus status = checkCopy(src, dst, roiSize);
    if (status != qelStatusOk) return status;

    ownCopySubpix_8u_C1R_W7(src, dst, roiSize, weightsQ14(fractionOf(dx), fractionOf(dy)));
    return qelStatusOk;
}

qelStatus qeliCopySubpix_8u16u_C1R_Sfs(const Qel8u* pSrc, int srcStep, Qel16u* pDst, int dstStep, QelSize roiSize,
                                       Qel32f dx, Qel32f dy, int scaleFactor) {
    using namespace qel;
    const Plane<const Qel8u> src = {pSrc, srcStep};
    const Plane<Qel16u> dst = {pDst, dstStep};
    const qelStatus status = checkCopy(src, dst, roiSize);
    if (status != qelStatusOk) return status;

    ownCopySubpix_8u16u_C1R_Sfs_W7(src, dst, roiSize, weightsQ14(fractionOf(dx), fractionOf(dy)),
                                   scaleQ14(scaleFactor));
    return qelStatusOk;
}

qelStatus qeliCopySubpix_8u32f_C1R(const Qel8u* pSrc, int srcStep, Qel32f* pDst, int dstStep, QelSize roiSize,
                                   Qel32f dx, Qel32f dy) {
    return qel::copySubpix<Qel8u, Qel32f>({pSrc, srcStep}, {pDst, dstStep}, roiSize, dx, dy, qel::kFromBytes,
                                          qel::ownCopySubpix_8u32f_C1R_W7);
}

qelStatus qeliCopySubpix_16u_C1R(const Qel16u* pSrc, int srcStep, Qel16u* pDst, int dstStep, QelSize roiSize, Qel32f dx,
                                 Qel32f dy) {
    return qel::copySubpix<Qel16u, Qel16u>({pSrc, srcStep}, {pDst, dstStep}, roiSize, dx, dy, qel::kUnchanged,
                                           qel::ownCopySubpix_16u_C1R_W7);
}

qelStatus qeliCopySubpix_16u32f_C1R(const Qel16u* pSrc, int srcStep, Qel32f* pDst, int dstStep, QelSize roiSize,
                                    Qel32f dx, Qel32f dy) {
    return qel::copySubpix<Qel16u, Qel32f>({pSrc, srcStep}, {pDst, dstStep}, roiSize, dx, dy, qel::kFromBytes,
                                           qel::ownCopySubpix_16u32f_C1R_W7);
}

// Small images form every other row from the one above it, which may differ in the last bit.
qelStatus qeliCopySubpix_32f_C1R(const Qel32f* pSrc, int srcStep, Qel32f* pDst, int dstStep, QelSize roiSize, Qel32f dx,
                                 Qel32f dy) {
    using namespace qel;
    constexpr int kPairedBelow = 65;
    const Plane<const Qel32f> src = {pSrc, srcStep};
    const Plane<Qel32f> dst = {pDst, dstStep};
    if (roiSize.width >= kPairedBelow || roiSize.height >= kPairedBelow)
        return copySubpix<Qel32f, Qel32f>(src, dst, roiSize, dx, dy, kFromFloats, ownCopySubpix_32f_C1R_W7_1);

    const qelStatus status = checkCopy(src, dst, roiSize);
    if (status != qelStatusOk) return status;
    const Qel32f fx = raised(fractionOf(dx), kFromFloats.x), fy = raised(fractionOf(dy), kFromFloats.y);
    ownCopySubpix_32f_C1R_W7(src, dst, roiSize, weightsFloat(fx, fy), (1 - fy) / fy);
    return qelStatusOk;
}
