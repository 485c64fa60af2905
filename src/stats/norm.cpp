#include <cmath>

#include "frame/check.h"
#include "frame/constants.h"
#include "frame/rows.h"
#include "qelcv/stats.h"
#include "stats/norm_kernels.h"

namespace qel {
namespace {

enum class Norm { Inf, L1, L2 };

// When the rows go to threads.
constexpr ParallelFrom kSerial = {};
constexpr ParallelFrom kFrom15 = {.perThread = 1 << 15};
constexpr ParallelFrom kFrom17 = {.perThread = 1 << 17};
constexpr ParallelFrom kFrom19 = {.perThread = 1 << 19};
constexpr ParallelFrom kCoresFrom15 = {.perThreadOnCores = 1 << 15};
constexpr ParallelFrom kCoresFrom17 = {.perThreadOnCores = 1 << 17};
constexpr ParallelFrom kCoresFrom15ElseFrom17 = {.perThread = 1 << 17, .perThreadOnCores = 1 << 15};

// A kernel for runs of fewer pixels than kLargeRun, and one for those whose sum 32 bits may not hold.
struct ByRun {
    const Kernel<NormKernel<Qel8u>>& small;
    const Kernel<NormKernel<Qel8u>>& large;
};
constexpr int kLargeRun = 0x400000;
const ByRun kNorm_L1_8u_C1MR = {ownNorm_L1_8u_C1MR_W7, ownNorm_L1_8u_C1MR_W7_B};

NormKernel<Qel8u>* pick(const ByRun& kernels, QelSize rows) {
    return area(rows) >= kLargeRun ? kernels.large : kernels.small;
}

void mergeLargest(NormSums& total, const NormSums& share) {
    if (share.value > total.value) total.value = share.value;
    if (share.reference > total.reference) total.reference = share.reference;
}

void mergeSum(NormSums& total, const NormSums& share) {
    total.value += share.value;
    total.reference += share.reference;
}

// Checks the arguments, then runs the kernel over the region.
template <class T, class Kernels>
qelStatus sumsOf(const NormRegion<T>& region, int channels, const Qel64f* pValue, const Kernels& kernels, Norm norm,
                 const ParallelFrom& from, NormSums* pSums) {
    const qelStatus status = Check()
                                 .pointers(region.src1.p, region.src2.p, region.mask.p, pValue)
                                 .size(region.size)
                                 .steps(rowOf<T>(region.size.width, channels), region.src1.step, region.src2.step)
                                 .stepSizes(rowOf<Qel8u>(region.size.width), region.mask.step)
                                 .channel(region.coi)
                                 .status();
    if (status != qelStatusOk) return status;

    if (!from.reachedBy(region.size)) {
        // Not as a share: a copy of what has just been stored, field by field, waits for the stores, which tells in a
        // small region.
        *pSums = pick(kernels, region.size)(region);
        return qelStatusOk;
    }
    return reduceRows(
        region.size, true, pSums,
        [&](const Share& share) { return pick(kernels, share.size)(region.rows(share.y, share.size.height)); },
        norm == Norm::Inf ? mergeLargest : mergeSum);
}

template <class T, class Kernels>
qelStatus norm(const NormRegion<T>& region, int channels, Qel64f* pValue, const Kernels& kernels, Norm norm,
               const ParallelFrom& from) {
    NormSums sums;
    const qelStatus status = sumsOf(region, channels, pValue, kernels, norm, from, &sums);
    if (status != qelStatusOk) return status;

    *pValue = norm == Norm::L2 ? std::sqrt(sums.value) : sums.value;
    return qelStatusOk;
}

// Without anything to be relative to, 0 / 0 is a NaN and x / 0 infinite, both with a warning. A NaN is not above zero.
template <class T, class Kernels>
qelStatus relativeNorm(const NormRegion<T>& region, int channels, Qel64f* pValue, const Kernels& kernels, Norm norm,
                       const ParallelFrom& from) {
    NormSums sums;
    const qelStatus status = sumsOf(region, channels, pValue, kernels, norm, from, &sums);
    if (status != qelStatusOk) return status;

    if (sums.reference == 0) {
        *pValue = sums.value == 0  ? qelConstantOfNAN_64f
                  : sums.value > 0 ? qelConstantOfINF_64f
                                   : qelConstantOfINF_NEG_64f;
        return qelStatusDivideByZero;
    }
    const Qel64f ratio = sums.value / sums.reference;
    *pValue = norm == Norm::L2 ? std::sqrt(ratio) : ratio;
    return qelStatusOk;
}

}  // namespace
}  // namespace qel

#define NORM_C1MR(name, T, kernel, which, parallelFrom)                                                                \
    qelStatus name(const T* pSrc, int srcStep, const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pValue) {    \
        return qel::norm<T>({{pSrc, srcStep}, {pSrc, srcStep}, {pMask, maskStep}, roiSize, 1}, 1, pValue, qel::kernel, \
                            qel::Norm::which, qel::parallelFrom);                                                      \
    }
#define NORM_C3CMR(name, T, kernel, which, parallelFrom)                                                    \
    qelStatus name(const T* pSrc, int srcStep, const Qel8u* pMask, int maskStep, QelSize roiSize, int coi,  \
                   Qel64f* pValue) {                                                                        \
        return qel::norm<T>({{pSrc, srcStep}, {pSrc, srcStep}, {pMask, maskStep}, roiSize, coi}, 3, pValue, \
                            qel::kernel, qel::Norm::which, qel::parallelFrom);                              \
    }
NORM_C1MR(qeliNorm_Inf_8u_C1MR, Qel8u, ownNorm_Inf_8u_C1MR_W7, Inf, kFrom19)
NORM_C3CMR(qeliNorm_Inf_8u_C3CMR, Qel8u, ownNorm_Inf_8u_C3CMR_W7, Inf, kFrom17)
NORM_C1MR(qeliNorm_Inf_8s_C1MR, Qel8s, ownNorm_Inf_8s_C1MR_W7, Inf, kFrom19)
NORM_C3CMR(qeliNorm_Inf_8s_C3CMR, Qel8s, ownNorm_Inf_8s_C3CMR_W7, Inf, kFrom17)
NORM_C1MR(qeliNorm_Inf_16u_C1MR, Qel16u, ownNorm_Inf_16u_C1MR_W7, Inf, kFrom19)
NORM_C3CMR(qeliNorm_Inf_16u_C3CMR, Qel16u, ownNorm_Inf_16u_C3CMR_W7, Inf, kFrom17)
NORM_C1MR(qeliNorm_Inf_32f_C1MR, Qel32f, ownNorm_Inf_32f_C1MR_W7, Inf, kFrom17)
NORM_C3CMR(qeliNorm_Inf_32f_C3CMR, Qel32f, ownNorm_Inf_32f_C3CMR_W7, Inf, kFrom15)
NORM_C1MR(qeliNorm_L1_8u_C1MR, Qel8u, kNorm_L1_8u_C1MR, L1, kCoresFrom17)
NORM_C3CMR(qeliNorm_L1_8u_C3CMR, Qel8u, ownNorm_L1_8u_C3CMR_A6, L1, kFrom17)
NORM_C1MR(qeliNorm_L1_8s_C1MR, Qel8s, ownNorm_L1_8s_C1MR_W7, L1, kCoresFrom17)
NORM_C3CMR(qeliNorm_L1_8s_C3CMR, Qel8s, ownNorm_L1_8s_C3CMR_A6, L1, kFrom17)
NORM_C1MR(qeliNorm_L1_16u_C1MR, Qel16u, ownNorm_L1_16u_C1MR_W7, L1, kFrom17)
NORM_C3CMR(qeliNorm_L1_16u_C3CMR, Qel16u, ownNorm_L1_16u_C3CMR_W7, L1, kFrom17)
NORM_C1MR(qeliNorm_L1_32f_C1MR, Qel32f, ownNorm_L1_32f_C1MR_W7, L1, kFrom17)
NORM_C3CMR(qeliNorm_L1_32f_C3CMR, Qel32f, ownNorm_L1_32f_C3CMR_W7, L1, kFrom17)
NORM_C1MR(qeliNorm_L2_8u_C1MR, Qel8u, ownNorm_L2_8u_C1MR_W7, L2, kCoresFrom17)
NORM_C3CMR(qeliNorm_L2_8u_C3CMR, Qel8u, ownNorm_L2_8u_C3CMR_A6, L2, kCoresFrom15ElseFrom17)
NORM_C1MR(qeliNorm_L2_8s_C1MR, Qel8s, ownNorm_L2_8s_C1MR_W7, L2, kCoresFrom17)
NORM_C3CMR(qeliNorm_L2_8s_C3CMR, Qel8s, ownNorm_L2_8s_C3CMR_A6, L2, kCoresFrom15ElseFrom17)
NORM_C1MR(qeliNorm_L2_16u_C1MR, Qel16u, ownNorm_L2_16u_C1MR_W7, L2, kFrom17)
NORM_C3CMR(qeliNorm_L2_16u_C3CMR, Qel16u, ownNorm_L2_16u_C3CMR_W7, L2, kCoresFrom15ElseFrom17)
NORM_C1MR(qeliNorm_L2_32f_C1MR, Qel32f, ownNorm_L2_32f_C1MR_W7, L2, kFrom17)
NORM_C3CMR(qeliNorm_L2_32f_C3CMR, Qel32f, ownNorm_L2_32f_C3CMR_W7, L2, kCoresFrom15ElseFrom17)
#undef NORM_C1MR
#undef NORM_C3CMR

#define NORM_OF_TWO_C1MR(name, T, report, kernel, which, parallelFrom)                                           \
    qelStatus name(const T* pSrc1, int src1Step, const T* pSrc2, int src2Step, const Qel8u* pMask, int maskStep, \
                   QelSize roiSize, Qel64f* pValue) {                                                            \
        return qel::report<T>({{pSrc1, src1Step}, {pSrc2, src2Step}, {pMask, maskStep}, roiSize, 1}, 1, pValue,  \
                              qel::kernel, qel::Norm::which, qel::parallelFrom);                                 \
    }
#define NORM_OF_TWO_C3CMR(name, T, report, kernel, which, parallelFrom)                                           \
    qelStatus name(const T* pSrc1, int src1Step, const T* pSrc2, int src2Step, const Qel8u* pMask, int maskStep,  \
                   QelSize roiSize, int coi, Qel64f* pValue) {                                                    \
        return qel::report<T>({{pSrc1, src1Step}, {pSrc2, src2Step}, {pMask, maskStep}, roiSize, coi}, 3, pValue, \
                              qel::kernel, qel::Norm::which, qel::parallelFrom);                                  \
    }
NORM_OF_TWO_C1MR(qeliNormDiff_Inf_8u_C1MR, Qel8u, norm, ownNormDiff_Inf_8u_C1MR_W7, Inf, kSerial)
NORM_OF_TWO_C3CMR(qeliNormDiff_Inf_8u_C3CMR, Qel8u, norm, ownNormDiff_Inf_8u_C3CMR_W7, Inf, kSerial)
NORM_OF_TWO_C1MR(qeliNormDiff_Inf_8s_C1MR, Qel8s, norm, ownNormDiff_Inf_8s_C1MR_W7, Inf, kSerial)
NORM_OF_TWO_C3CMR(qeliNormDiff_Inf_8s_C3CMR, Qel8s, norm, ownNormDiff_Inf_8s_C3CMR_W7, Inf, kSerial)
NORM_OF_TWO_C1MR(qeliNormDiff_Inf_16u_C1MR, Qel16u, norm, ownNormDiff_Inf_16u_C1MR_W7, Inf, kSerial)
NORM_OF_TWO_C3CMR(qeliNormDiff_Inf_16u_C3CMR, Qel16u, norm, ownNormDiff_Inf_16u_C3CMR_W7, Inf, kSerial)
NORM_OF_TWO_C1MR(qeliNormDiff_Inf_32f_C1MR, Qel32f, norm, ownNormDiff_Inf_32f_C1MR_W7, Inf, kSerial)
NORM_OF_TWO_C3CMR(qeliNormDiff_Inf_32f_C3CMR, Qel32f, norm, ownNormDiff_Inf_32f_C3CMR_W7, Inf, kSerial)
NORM_OF_TWO_C1MR(qeliNormDiff_L1_8u_C1MR, Qel8u, norm, ownNormDiff_L1_8u_C1MR_W7, L1, kCoresFrom17)
NORM_OF_TWO_C3CMR(qeliNormDiff_L1_8u_C3CMR, Qel8u, norm, ownNormDiff_L1_8u_C3CMR_W7, L1, kFrom17)
NORM_OF_TWO_C1MR(qeliNormDiff_L1_8s_C1MR, Qel8s, norm, ownNormDiff_L1_8s_C1MR_W7, L1, kCoresFrom17)
NORM_OF_TWO_C3CMR(qeliNormDiff_L1_8s_C3CMR, Qel8s, norm, ownNormDiff_L1_8s_C3CMR_W7, L1, kCoresFrom15)
NORM_OF_TWO_C1MR(qeliNormDiff_L1_16u_C1MR, Qel16u, norm, ownNormDiff_L1_16u_C1MR_W7, L1, kFrom17)
NORM_OF_TWO_C3CMR(qeliNormDiff_L1_16u_C3CMR, Qel16u, norm, ownNormDiff_L1_16u_C3CMR_W7, L1, kCoresFrom15)
NORM_OF_TWO_C1MR(qeliNormDiff_L1_32f_C1MR, Qel32f, norm, ownNormDiff_L1_32f_C1MR_W7, L1, kSerial)
NORM_OF_TWO_C3CMR(qeliNormDiff_L1_32f_C3CMR, Qel32f, norm, ownNormDiff_L1_32f_C3CMR_W7, L1, kSerial)
NORM_OF_TWO_C1MR(qeliNormDiff_L2_8u_C1MR, Qel8u, norm, ownNormDiff_L2_8u_C1MR_W7, L2, kCoresFrom17)
NORM_OF_TWO_C3CMR(qeliNormDiff_L2_8u_C3CMR, Qel8u, norm, ownNormDiff_L2_8u_C3CMR_W7, L2, kFrom17)
NORM_OF_TWO_C1MR(qeliNormDiff_L2_8s_C1MR, Qel8s, norm, ownNormDiff_L2_8s_C1MR_W7, L2, kCoresFrom17)
NORM_OF_TWO_C3CMR(qeliNormDiff_L2_8s_C3CMR, Qel8s, norm, ownNormDiff_L2_8s_C3CMR_W7, L2, kFrom17)
NORM_OF_TWO_C1MR(qeliNormDiff_L2_16u_C1MR, Qel16u, norm, ownNormDiff_L2_16u_C1MR_W7, L2, kFrom17)
NORM_OF_TWO_C3CMR(qeliNormDiff_L2_16u_C3CMR, Qel16u, norm, ownNormDiff_L2_16u_C3CMR_W7, L2, kCoresFrom15ElseFrom17)
NORM_OF_TWO_C1MR(qeliNormDiff_L2_32f_C1MR, Qel32f, norm, ownNormDiff_L2_32f_C1MR_W7, L2, kSerial)
NORM_OF_TWO_C3CMR(qeliNormDiff_L2_32f_C3CMR, Qel32f, norm, ownNormDiff_L2_32f_C3CMR_W7, L2, kSerial)

NORM_OF_TWO_C1MR(qeliNormRel_Inf_8u_C1MR, Qel8u, relativeNorm, ownNormRel_Inf_8u_C1MR_W7, Inf, kCoresFrom17)
NORM_OF_TWO_C3CMR(qeliNormRel_Inf_8u_C3CMR, Qel8u, relativeNorm, ownNormRel_Inf_8u_C3CMR_W7, Inf,
                  kCoresFrom15ElseFrom17)
NORM_OF_TWO_C1MR(qeliNormRel_Inf_8s_C1MR, Qel8s, relativeNorm, ownNormRel_Inf_8s_C1MR_W7, Inf, kCoresFrom17)
NORM_OF_TWO_C3CMR(qeliNormRel_Inf_8s_C3CMR, Qel8s, relativeNorm, ownNormRel_Inf_8s_C3CMR_W7, Inf,
                  kCoresFrom15ElseFrom17)
NORM_OF_TWO_C1MR(qeliNormRel_Inf_16u_C1MR, Qel16u, relativeNorm, ownNormRel_Inf_16u_C1MR_W7, Inf, kCoresFrom17)
NORM_OF_TWO_C3CMR(qeliNormRel_Inf_16u_C3CMR, Qel16u, relativeNorm, ownNormRel_Inf_16u_C3CMR_W7, Inf, kFrom15)
NORM_OF_TWO_C1MR(qeliNormRel_Inf_32f_C1MR, Qel32f, relativeNorm, ownNormRel_Inf_32f_C1MR_W7, Inf, kFrom15)
NORM_OF_TWO_C3CMR(qeliNormRel_Inf_32f_C3CMR, Qel32f, relativeNorm, ownNormRel_Inf_32f_C3CMR_W7, Inf, kFrom15)
NORM_OF_TWO_C1MR(qeliNormRel_L1_8u_C1MR, Qel8u, relativeNorm, ownNormRel_L1_8u_C1MR_W7, L1, kSerial)
NORM_OF_TWO_C3CMR(qeliNormRel_L1_8u_C3CMR, Qel8u, relativeNorm, ownNormRel_L1_8u_C3CMR_A6, L1, kCoresFrom15ElseFrom17)
NORM_OF_TWO_C1MR(qeliNormRel_L1_8s_C1MR, Qel8s, relativeNorm, ownNormRel_L1_8s_C1MR_W7, L1, kCoresFrom17)
NORM_OF_TWO_C3CMR(qeliNormRel_L1_8s_C3CMR, Qel8s, relativeNorm, ownNormRel_L1_8s_C3CMR_A6, L1, kCoresFrom15ElseFrom17)
NORM_OF_TWO_C1MR(qeliNormRel_L1_16u_C1MR, Qel16u, relativeNorm, ownNormRel_L1_16u_C1MR_W7, L1, kCoresFrom15ElseFrom17)
NORM_OF_TWO_C3CMR(qeliNormRel_L1_16u_C3CMR, Qel16u, relativeNorm, ownNormRel_L1_16u_C3CMR_W7, L1, kFrom15)
NORM_OF_TWO_C1MR(qeliNormRel_L1_32f_C1MR, Qel32f, relativeNorm, ownNormRel_L1_32f_C1MR_W7, L1, kSerial)
NORM_OF_TWO_C3CMR(qeliNormRel_L1_32f_C3CMR, Qel32f, relativeNorm, ownNormRel_L1_32f_C3CMR_W7, L1, kSerial)
NORM_OF_TWO_C1MR(qeliNormRel_L2_8u_C1MR, Qel8u, relativeNorm, ownNormRel_L2_8u_C1MR_W7, L2, kFrom17)
NORM_OF_TWO_C3CMR(qeliNormRel_L2_8u_C3CMR, Qel8u, relativeNorm, ownNormRel_L2_8u_C3CMR_W7, L2, kCoresFrom15ElseFrom17)
NORM_OF_TWO_C1MR(qeliNormRel_L2_8s_C1MR, Qel8s, relativeNorm, ownNormRel_L2_8s_C1MR_W7, L2, kFrom17)
NORM_OF_TWO_C3CMR(qeliNormRel_L2_8s_C3CMR, Qel8s, relativeNorm, ownNormRel_L2_8s_C3CMR_W7, L2, kCoresFrom15ElseFrom17)
NORM_OF_TWO_C1MR(qeliNormRel_L2_16u_C1MR, Qel16u, relativeNorm, ownNormRel_L2_16u_C1MR_W7, L2, kCoresFrom15ElseFrom17)
NORM_OF_TWO_C3CMR(qeliNormRel_L2_16u_C3CMR, Qel16u, relativeNorm, ownNormRel_L2_16u_C3CMR_W7, L2, kFrom15)
NORM_OF_TWO_C1MR(qeliNormRel_L2_32f_C1MR, Qel32f, relativeNorm, ownNormRel_L2_32f_C1MR_W7, L2, kSerial)
NORM_OF_TWO_C3CMR(qeliNormRel_L2_32f_C3CMR, Qel32f, relativeNorm, ownNormRel_L2_32f_C3CMR_W7, L2, kSerial)
#undef NORM_OF_TWO_C1MR
#undef NORM_OF_TWO_C3CMR
