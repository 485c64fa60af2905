#include <initializer_list>
#include <type_traits>

#include "frame/check.h"
#include "frame/rows.h"
#include "qelcv/stats.h"
#include "stats/add_kernels.h"

namespace qel {
namespace {

// The steps of sources, mask and accumulator. 32f: every step against its row, then every step against the sample.
// Other sources: each step against its row and at once against its sample.
template <class T>
qelStatus checkSteps(Check check, int width, std::initializer_list<int> srcSteps, std::initializer_list<int> maskSteps,
                     int srcDstStep) {
    constexpr bool kSizesFirst = std::is_same_v<T, Qel32f>;
    const RowOf src = rowOf<T>(width);
    for (const int step : srcSteps) kSizesFirst ? check.stepSizes(src, step) : check.steps(src, step);
    for (const int step : maskSteps) check.stepSizes(rowOf<Qel8u>(width), step);
    check.stepSizes(rowOf<Qel32f>(width), srcDstStep);
    for (const int step : srcSteps) check.stepAlignments(src, step);
    return check.stepAlignments(rowOf<Qel32f>(width), srcDstStep).status();
}

// One source. What follows the kernel is passed to it behind the region's size.
template <class T, class Kernel>
qelStatus add(const T* pSrc, int srcStep, Qel32f* pSrcDst, int srcDstStep, QelSize roiSize, const Kernel& kernel,
              auto... value) {
    const qelStatus status =
        checkSteps<T>(Check().pointers(pSrc, pSrcDst).size(roiSize), roiSize.width, {srcStep}, {}, srcDstStep);
    if (status != qelStatusOk) return status;

    forRows(roiSize, kElementwise.reachedBy(roiSize), [&](const Share& s) {
        kernel(row(pSrc, srcStep, s.y), srcStep, row(pSrcDst, srcDstStep, s.y), srcDstStep, s.size, value...);
    });
    return qelStatusOk;
}

template <class T>
qelStatus addMasked(const T* pSrc, int srcStep, const Qel8u* pMask, int maskStep, Qel32f* pSrcDst, int srcDstStep,
                    QelSize roiSize, const Kernel<AddMaskedKernel<T>>& kernel) {
    const qelStatus status = checkSteps<T>(Check().pointers(pSrc, pMask, pSrcDst).size(roiSize), roiSize.width,
                                           {srcStep}, {maskStep}, srcDstStep);
    if (status != qelStatusOk) return status;

    forRows(roiSize, kElementwise.reachedBy(roiSize), [&](const Share& s) {
        kernel(row(pSrc, srcStep, s.y), srcStep, row(pMask, maskStep, s.y), maskStep, row(pSrcDst, srcDstStep, s.y),
               srcDstStep, s.size);
    });
    return qelStatusOk;
}

template <class T>
qelStatus addWeightedMasked(const T* pSrc, int srcStep, const Qel8u* pMask, int maskStep, Qel32f* pSrcDst,
                            int srcDstStep, QelSize roiSize, Qel32f alpha,
                            const Kernel<AddWeightedMaskedKernel<T>>& kernel, int bytesPerPixel) {
    const qelStatus status = checkSteps<T>(Check().pointers(pSrc, pMask, pSrcDst).size(roiSize), roiSize.width,
                                           {srcStep}, {maskStep}, srcDstStep);
    if (status != qelStatusOk) return status;

    forRows(roiSize, kElementwise.reachedBy(roiSize), [&](const Share& s) {
        kernel(row(pSrc, srcStep, s.y), srcStep, row(pMask, maskStep, s.y), maskStep, row(pSrcDst, srcDstStep, s.y),
               srcDstStep, s.size, alpha, outgrowsCache(bytesPerPixel, s.size));
    });
    return qelStatusOk;
}

template <class T>
qelStatus addProduct(const T* pSrc1, int src1Step, const T* pSrc2, int src2Step, Qel32f* pSrcDst, int srcDstStep,
                     QelSize roiSize, const Kernel<AddProductKernel<T>>& kernel) {
    const qelStatus status = checkSteps<T>(Check().pointers(pSrc1, pSrc2, pSrcDst).size(roiSize), roiSize.width,
                                           {src1Step, src2Step}, {}, srcDstStep);
    if (status != qelStatusOk) return status;

    forRows(roiSize, kElementwise.reachedBy(roiSize), [&](const Share& s) {
        kernel(row(pSrc1, src1Step, s.y), src1Step, row(pSrc2, src2Step, s.y), src2Step, row(pSrcDst, srcDstStep, s.y),
               srcDstStep, s.size);
    });
    return qelStatusOk;
}

template <class T>
qelStatus addProductMasked(const T* pSrc1, int src1Step, const T* pSrc2, int src2Step, const Qel8u* pMask, int maskStep,
                           Qel32f* pSrcDst, int srcDstStep, QelSize roiSize,
                           const Kernel<AddProductMaskedKernel<T>>& kernel, int bytesPerPixel) {
    const qelStatus status = checkSteps<T>(Check().pointers(pSrc1, pSrc2, pMask, pSrcDst).size(roiSize), roiSize.width,
                                           {src1Step, src2Step}, {maskStep}, srcDstStep);
    if (status != qelStatusOk) return status;

    forRows(roiSize, kElementwise.reachedBy(roiSize), [&](const Share& s) {
        kernel(row(pSrc1, src1Step, s.y), src1Step, row(pSrc2, src2Step, s.y), src2Step, row(pMask, maskStep, s.y),
               maskStep, row(pSrcDst, srcDstStep, s.y), srcDstStep, s.size, outgrowsCache(bytesPerPixel, s.size));
    });
    return qelStatusOk;
}

}  // namespace
}  // namespace qel

#define ADD(name, T, kernel)                                                                       \
    qelStatus name(const T* pSrc, int srcStep, Qel32f* pSrcDst, int srcDstStep, QelSize roiSize) { \
        return qel::add(pSrc, srcStep, pSrcDst, srcDstStep, roiSize, kernel);                      \
    }
ADD(qeliAdd_8u32f_C1IR, Qel8u, qel::ownAdd_8u32f_C1IR_W7)
ADD(qeliAdd_8s32f_C1IR, Qel8s, qel::ownAdd_8s32f_C1IR_W7)
ADD(qeliAdd_16u32f_C1IR, Qel16u, qel::ownAdd_16u32f_C1IR_W7)
ADD(qeliAddSquare_8u32f_C1IR, Qel8u, qel::ownAddSquare_8u32f_C1IR_W7)
ADD(qeliAddSquare_8s32f_C1IR, Qel8s, qel::ownAddSquare_8s32f_C1IR_W7)
ADD(qeliAddSquare_16u32f_C1IR, Qel16u, qel::ownAddSquare_16u32f_C1IR_W7)
ADD(qeliAddSquare_32f_C1IR, Qel32f, qel::ownAddSquare_32f_C1IR_W7)
#undef ADD

#define ADD_MASKED(name, T, kernel)                                                                               \
    qelStatus name(const T* pSrc, int srcStep, const Qel8u* pMask, int maskStep, Qel32f* pSrcDst, int srcDstStep, \
                   QelSize roiSize) {                                                                             \
        return qel::addMasked(pSrc, srcStep, pMask, maskStep, pSrcDst, srcDstStep, roiSize, kernel);              \
    }
ADD_MASKED(qeliAdd_8u32f_C1IMR, Qel8u, qel::ownAdd_8u32f_C1IMR_W7)
ADD_MASKED(qeliAdd_8s32f_C1IMR, Qel8s, qel::ownAdd_8s32f_C1IMR_W7)
ADD_MASKED(qeliAdd_16u32f_C1IMR, Qel16u, qel::ownAdd_16u32f_C1IMR_W7)
ADD_MASKED(qeliAdd_32f_C1IMR, Qel32f, qel::ownAdd_32f_C1IMR_W7)
ADD_MASKED(qeliAddSquare_8u32f_C1IMR, Qel8u, qel::ownAddSquare_8u32f_C1IMR_W7)
ADD_MASKED(qeliAddSquare_8s32f_C1IMR, Qel8s, qel::ownAddSquare_8s32f_C1IMR_W7)
ADD_MASKED(qeliAddSquare_16u32f_C1IMR, Qel16u, qel::ownAddSquare_16u32f_C1IMR_W7)
ADD_MASKED(qeliAddSquare_32f_C1IMR, Qel32f, qel::ownAddSquare_32f_C1IMR_W7)
#undef ADD_MASKED

#define ADD_PRODUCT(name, T, kernel)                                                                            \
    qelStatus name(const T* pSrc1, int src1Step, const T* pSrc2, int src2Step, Qel32f* pSrcDst, int srcDstStep, \
                   QelSize roiSize) {                                                                           \
        return qel::addProduct(pSrc1, src1Step, pSrc2, src2Step, pSrcDst, srcDstStep, roiSize, kernel);         \
    }
ADD_PRODUCT(qeliAddProduct_8u32f_C1IR, Qel8u, qel::ownAddProduct_8u32f_C1IR_W7)
ADD_PRODUCT(qeliAddProduct_8s32f_C1IR, Qel8s, qel::ownAddProduct_8s32f_C1IR_W7)
ADD_PRODUCT(qeliAddProduct_16u32f_C1IR, Qel16u, qel::ownAddProduct_16u32f_C1IR_W7)
ADD_PRODUCT(qeliAddProduct_32f_C1IR, Qel32f, qel::ownAddProduct_32f_C1IR_W7)
#undef ADD_PRODUCT

// The number is the bytes of a pixel in all images, which decide whether a run outgrows the cache.
#define ADD_PRODUCT_MASKED(name, T, kernel, bytesPerPixel)                                                            \
    qelStatus name(const T* pSrc1, int src1Step, const T* pSrc2, int src2Step, const Qel8u* pMask, int maskStep,      \
                   Qel32f* pSrcDst, int srcDstStep, QelSize roiSize) {                                                \
        return qel::addProductMasked(pSrc1, src1Step, pSrc2, src2Step, pMask, maskStep, pSrcDst, srcDstStep, roiSize, \
                                     kernel, bytesPerPixel);                                                          \
    }
ADD_PRODUCT_MASKED(qeliAddProduct_8u32f_C1IMR, Qel8u, qel::ownAddProduct_8u32f_C1IMR_W7, 7)
ADD_PRODUCT_MASKED(qeliAddProduct_8s32f_C1IMR, Qel8s, qel::ownAddProduct_8s32f_C1IMR_W7, 7)
ADD_PRODUCT_MASKED(qeliAddProduct_16u32f_C1IMR, Qel16u, qel::ownAddProduct_16u32f_C1IMR_W7, 9)
ADD_PRODUCT_MASKED(qeliAddProduct_32f_C1IMR, Qel32f, qel::ownAddProduct_32f_C1IMR_W7, 13)
#undef ADD_PRODUCT_MASKED

#define ADD_WEIGHTED(name, T, kernel)                                                                            \
    qelStatus name(const T* pSrc, int srcStep, Qel32f* pSrcDst, int srcDstStep, QelSize roiSize, Qel32f alpha) { \
        return qel::add(pSrc, srcStep, pSrcDst, srcDstStep, roiSize, kernel, alpha);                             \
    }
ADD_WEIGHTED(qeliAddWeighted_8u32f_C1IR, Qel8u, qel::ownAddWeighted_8u32f_C1IR_W7)
ADD_WEIGHTED(qeliAddWeighted_8s32f_C1IR, Qel8s, qel::ownAddWeighted_8s32f_C1IR_W7)
ADD_WEIGHTED(qeliAddWeighted_16u32f_C1IR, Qel16u, qel::ownAddWeighted_16u32f_C1IR_W7)
ADD_WEIGHTED(qeliAddWeighted_32f_C1IR, Qel32f, qel::ownAddWeighted_32f_C1IR_W7)
#undef ADD_WEIGHTED

// 8-bit sources count 5 bytes per pixel, although source, mask and accumulator have 6: the choice is part of the
// contract.
#define ADD_WEIGHTED_MASKED(name, T, kernel, bytesPerPixel)                                                        \
    qelStatus name(const T* pSrc, int srcStep, const Qel8u* pMask, int maskStep, Qel32f* pSrcDst, int srcDstStep,  \
                   QelSize roiSize, Qel32f alpha) {                                                                \
        return qel::addWeightedMasked(pSrc, srcStep, pMask, maskStep, pSrcDst, srcDstStep, roiSize, alpha, kernel, \
                                      bytesPerPixel);                                                              \
    }
ADD_WEIGHTED_MASKED(qeliAddWeighted_8u32f_C1IMR, Qel8u, qel::ownAddWeighted_8u32f_C1IMR_W7, 5)
ADD_WEIGHTED_MASKED(qeliAddWeighted_8s32f_C1IMR, Qel8s, qel::ownAddWeighted_8s32f_C1IMR_W7, 5)
ADD_WEIGHTED_MASKED(qeliAddWeighted_16u32f_C1IMR, Qel16u, qel::ownAddWeighted_16u32f_C1IMR_W7, 7)
ADD_WEIGHTED_MASKED(qeliAddWeighted_32f_C1IMR, Qel32f, qel::ownAddWeighted_32f_C1IMR_W7, 9)
#undef ADD_WEIGHTED_MASKED

// Runs on the caller's thread at any size, unlike the forms in place.
qelStatus qeliAddWeighted_32f_C1R(const Qel32f* pSrc1, int src1Step, const Qel32f* pSrc2, int src2Step, Qel32f* pDst,
                                  int dstStep, QelSize roiSize, Qel32f alpha) {
    const qelStatus status = qel::Check()
                                 .pointers(pSrc1, pSrc2, pDst)
                                 .size(roiSize)
                                 .steps(qel::rowOf<Qel32f>(roiSize.width), src1Step, src2Step, dstStep)
                                 .status();
    if (status != qelStatusOk) return status;

    qel::ownvcAddWeighted_32f_C1R(pSrc1, src1Step, pSrc2, src2Step, pDst, dstStep, roiSize, alpha);
    return qelStatusOk;
}
