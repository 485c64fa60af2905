#include <cmath>
#include <cstdint>

#include "frame/check.h"
#include "frame/rows.h"
#include "qelcv/stats.h"
#include "stats/mean_kernels.h"

namespace qel {
namespace {

// When the rows go to threads.
constexpr ParallelFrom kSerial = {};
constexpr ParallelFrom kFrom16 = {.perThread = 1 << 16};
constexpr ParallelFrom kFrom17 = {.perThread = 1 << 17};
constexpr ParallelFrom kCoresFrom17 = {.perThreadOnCores = 1 << 17};

// The 32f kernels of whole regions, by area and alignment. Two kernels of one area differ in how they fold, so the
// choice shows in the last bits of the result.
struct ByArea {
    const Kernel<SumKernel<Qel32f>>& small;    // below `smallLimit` pixels
    const Kernel<SumKernel<Qel32f>>& aligned;  // below `alignedLimit`, at an aligned pSrc with rows of whole vectors
    const Kernel<SumKernel<Qel32f>>& general;
    int64_t smallLimit;
    int64_t alignedLimit;
    uintptr_t alignment;
};
constexpr int kVectorBytes = 16;
const ByArea kSumSq_32f_C1R = {
    ownSumSq_32f_C1R_smallsize_W7, ownSumSq_32f_C1R_W7_Al, ownSumSq_32f_C1R_W7, 5001, 100000, sizeof(Qel32f)};
const ByArea kSumSq_32f_C3CR = {
    ownSumSq_32f_C3CR_smallsize_W7, ownSumSq_32f_C3CR_W7_Al, ownSumSq_32f_C3CR_W7, 5000, INT64_MAX, kVectorBytes};

template <class T>
SumKernel<T>* pick(const Kernel<SumKernel<T>>& kernel, const Samples<T>&) {
    return kernel;
}

SumKernel<Qel32f>* pick(const ByArea& kernels, const Samples<Qel32f>& in) {
    const int64_t pixels = int64_t{in.roiSize.width} * in.roiSize.height;
    if (pixels < kernels.smallLimit) return kernels.small;
    const bool aligned =
        reinterpret_cast<uintptr_t>(in.src.p) % kernels.alignment == 0 && in.src.step % kVectorBytes == 0;
    return aligned && pixels < kernels.alignedLimit ? kernels.aligned : kernels.general;
}

struct Layout {
    int channels;
    bool masked;
};
constexpr Layout kC1R = {1, false};
constexpr Layout kC3CR = {3, false};
constexpr Layout kC1MR = {1, true};
constexpr Layout kC3CMR = {3, true};

template <class T>
qelStatus checked(Check check, const Samples<T>& in, Layout layout) {
    check.pointers(in.src.p).require(!layout.masked || in.mask.p != nullptr, qelStatusNullPointer);
    check.size(in.roiSize).steps(rowOf<T>(in.roiSize.width, layout.channels), in.src.step);
    if (layout.masked) check.stepSizes(rowOf<Qel8u>(in.roiSize.width), in.mask.step);
    return check.channel(in.coi).status();
}

template <class T>
qelStatus sumRegion(const Samples<T>& in, SumKernel<T>* kernel, const ParallelFrom& from, Sums* pSums) {
    if (!from.reachedBy(in.roiSize)) {
        // Not as a share: a copy of what has just been stored, field by field, waits for the stores, which tells in a
        // small region.
        kernel(in, pSums);
        return qelStatusOk;
    }
    const auto work = [&](const Share& s) {
        Sums sums;
        kernel(in.rows(s.y, s.size.height), &sums);
        return sums;
    };
    const auto merge = [](Sums& total, const Sums& partial) {
        total.sum += partial.sum;
        total.squares += partial.squares;
        total.count += partial.count;
    };
    return reduceRows(in.roiSize, true, pSums, work, merge);
}

// The mean of no pixels is zero.
Qel64f meanOf(const Sums& sums) { return sums.count == 0 ? 0.0 : sums.sum / static_cast<Qel64f>(sums.count); }

template <class T>
qelStatus mean(const Samples<T>& in, Layout layout, SumKernel<T>* kernel, const ParallelFrom& from, Qel64f* pMean) {
    qelStatus status = checked(Check().pointers(pMean), in, layout);
    if (status != qelStatusOk) return status;
    Sums sums;
    status = sumRegion(in, kernel, from, &sums);
    if (status == qelStatusOk) *pMean = meanOf(sums);
    return status;
}

// True where all samples that are taken are equal.
bool isConstant(const Samples<Qel32f>& in, Layout layout) {
    const Qel32f* first = nullptr;
    for (int y = 0; y < in.roiSize.height; ++y) {
        const Qel32f* p = in.src.row(y) + (in.coi - 1);
        const Qel8u* mask = layout.masked ? in.mask.row(y) : nullptr;
        for (int x = 0; x < in.roiSize.width; ++x, p += layout.channels) {
            if (layout.masked && mask[x] == 0) continue;
            if (first == nullptr) first = p;
            if (sampleAt(p) != sampleAt(first)) return false;
        }
    }
    return true;
}

// What becomes of a variance from the sums: integers are done.
struct Exact {
    template <class T>
    Qel64f operator()(const Samples<T>&, Layout, const Sums&, Qel64f, Qel64f variance) const {
        return variance;
    }
};

// Where the deviation is small against the mean, the difference of two large single-precision sums says nothing of it.
// A second pass adds up the squared distances from the mean instead. The rounding of a sum can put the mean of a
// constant beside the constant, whose deviation is zero all the same.
struct Corrected {
    const Kernel<SquaresKernel>& kernel;

    Qel64f operator()(const Samples<Qel32f>& in, Layout layout, const Sums& sums, Qel64f mean, Qel64f variance) const {
        if (!(0.05 * (mean * mean) > variance)) return variance;
        if (isConstant(in, layout)) return 0;
        Qel64f squares = 0;
        kernel(in, static_cast<Qel32f>(mean), &squares);
        return squares / static_cast<Qel64f>(sums.count);
    }
};

template <class T, class Kernels, class Correct>
qelStatus meanStdDev(const Samples<T>& in, Layout layout, const Kernels& kernels, const ParallelFrom& from,
                     const Correct& correct, Qel64f* pMean, Qel64f* pStdDev) {
    qelStatus status = checked(Check(), in, layout);
    if (status != qelStatusOk) return status;
    Sums sums;
    status = sumRegion(in, pick(kernels, in), from, &sums);
    if (status != qelStatusOk) return status;

    const Qel64f mean = meanOf(sums);
    if (pMean != nullptr) *pMean = mean;
    if (pStdDev != nullptr) {
        // Rounding may leave a negative difference; its magnitude has a root.
        const Qel64f variance =
            sums.count == 0 ? 0 : std::fabs(sums.squares / static_cast<Qel64f>(sums.count) - mean * mean);
        *pStdDev = std::sqrt(correct(in, layout, sums, mean, variance));
    }
    return qelStatusOk;
}

}  // namespace
}  // namespace qel

#define MEAN_C1MR(name, T, kernel, from)                                                                           \
    qelStatus name(const T* pSrc, int srcStep, const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pMean) { \
        return qel::mean<T>({{pSrc, srcStep}, {pMask, maskStep}, roiSize, 1}, qel::kC1MR, kernel, from, pMean);    \
    }
MEAN_C1MR(qeliMean_8u_C1MR, Qel8u, qel::ownSum_8u_C1MR_W7, qel::kSerial)
MEAN_C1MR(qeliMean_8s_C1MR, Qel8s, qel::ownSum_8s_C1MR_W7, qel::kFrom17)
MEAN_C1MR(qeliMean_16u_C1MR, Qel16u, qel::ownSum_16u_C1MR_W7, qel::kFrom17)
MEAN_C1MR(qeliMean_32f_C1MR, Qel32f, qel::ownSum_32f_C1MR_W7, qel::kFrom17)
#undef MEAN_C1MR

#define MEAN_C3CMR(name, T, kernel)                                                                                \
    qelStatus name(const T* pSrc, int srcStep, const Qel8u* pMask, int maskStep, QelSize roiSize, int coi,         \
                   Qel64f* pMean) {                                                                                \
        return qel::mean<T>({{pSrc, srcStep}, {pMask, maskStep}, roiSize, coi}, qel::kC3CMR, kernel, qel::kFrom17, \
                            pMean);                                                                                \
    }
MEAN_C3CMR(qeliMean_8u_C3CMR, Qel8u, qel::ownSum_8u_C3CMR_W7)
MEAN_C3CMR(qeliMean_8s_C3CMR, Qel8s, qel::ownSum_8s_C3CMR_W7)
MEAN_C3CMR(qeliMean_16u_C3CMR, Qel16u, qel::ownSum_16u_C3CMR_W7)
MEAN_C3CMR(qeliMean_32f_C3CMR, Qel32f, qel::ownSum_32f_C3CMR_W7)
#undef MEAN_C3CMR

#define MEAN_STD_DEV_C1R(name, T, kernel, from, correct)                                                         \
    qelStatus name(const T* pSrc, int srcStep, QelSize roiSize, Qel64f* pMean, Qel64f* pStdDev) {                \
        return qel::meanStdDev<T>({{pSrc, srcStep}, {nullptr, 0}, roiSize, 1}, qel::kC1R, kernel, from, correct, \
                                  pMean, pStdDev);                                                               \
    }
MEAN_STD_DEV_C1R(qeliMean_StdDev_8u_C1R, Qel8u, qel::ownSumSq_8u_C1R_W7, qel::kCoresFrom17, qel::Exact())
MEAN_STD_DEV_C1R(qeliMean_StdDev_8s_C1R, Qel8s, qel::ownSumSq_8s_C1R_W7, qel::kFrom17, qel::Exact())
MEAN_STD_DEV_C1R(qeliMean_StdDev_16u_C1R, Qel16u, qel::ownSumSq_16u_C1R_W7, qel::kFrom17, qel::Exact())
MEAN_STD_DEV_C1R(qeliMean_StdDev_32f_C1R, Qel32f, qel::kSumSq_32f_C1R, qel::kFrom16,
                 qel::Corrected{qel::ownSq_32f_C1R_W7})
#undef MEAN_STD_DEV_C1R

#define MEAN_STD_DEV_C3CR(name, T, kernel, from, correct)                                                           \
    qelStatus name(const T* pSrc, int srcStep, QelSize roiSize, int coi, Qel64f* pMean, Qel64f* pStdDev) {          \
        return qel::meanStdDev<T>({{pSrc, srcStep}, {nullptr, 0}, roiSize, coi}, qel::kC3CR, kernel, from, correct, \
                                  pMean, pStdDev);                                                                  \
    }
MEAN_STD_DEV_C3CR(qeliMean_StdDev_8u_C3CR, Qel8u, qel::ownSumSq_8u_C3CR_W7, qel::kFrom17, qel::Exact())
MEAN_STD_DEV_C3CR(qeliMean_StdDev_8s_C3CR, Qel8s, qel::ownSumSq_8s_C3CR_W7, qel::kFrom17, qel::Exact())
MEAN_STD_DEV_C3CR(qeliMean_StdDev_16u_C3CR, Qel16u, qel::ownSumSq_16u_C3CR_W7, qel::kFrom17, qel::Exact())
MEAN_STD_DEV_C3CR(qeliMean_StdDev_32f_C3CR, Qel32f, qel::kSumSq_32f_C3CR, qel::kSerial,
                  qel::Corrected{qel::ownSq_32f_C3CR_W7})
#undef MEAN_STD_DEV_C3CR

#define MEAN_STD_DEV_C1MR(name, T, kernel, from, correct)                                                              \
    qelStatus name(const T* pSrc, int srcStep, const Qel8u* pMask, int maskStep, QelSize roiSize, Qel64f* pMean,       \
                   Qel64f* pStdDev) {                                                                                  \
        return qel::meanStdDev<T>({{pSrc, srcStep}, {pMask, maskStep}, roiSize, 1}, qel::kC1MR, kernel, from, correct, \
                                  pMean, pStdDev);                                                                     \
    }
MEAN_STD_DEV_C1MR(qeliMean_StdDev_8u_C1MR, Qel8u, qel::ownSumSq_8u_C1MR_W7, qel::kFrom17, qel::Exact())
MEAN_STD_DEV_C1MR(qeliMean_StdDev_8s_C1MR, Qel8s, qel::ownSumSq_8s_C1MR_W7, qel::kFrom17, qel::Exact())
MEAN_STD_DEV_C1MR(qeliMean_StdDev_16u_C1MR, Qel16u, qel::ownSumSq_16u_C1MR_W7, qel::kFrom17, qel::Exact())
MEAN_STD_DEV_C1MR(qeliMean_StdDev_32f_C1MR, Qel32f, qel::ownSumSq_32f_C1MR_W7, qel::kFrom17,
                  qel::Corrected{qel::ownSq_32f_C1MR_W7})
#undef MEAN_STD_DEV_C1MR

#define MEAN_STD_DEV_C3CMR(name, T, kernel, from, correct)                                                       \
    qelStatus name(const T* pSrc, int srcStep, const Qel8u* pMask, int maskStep, QelSize roiSize, int coi,       \
                   Qel64f* pMean, Qel64f* pStdDev) {                                                             \
        return qel::meanStdDev<T>({{pSrc, srcStep}, {pMask, maskStep}, roiSize, coi}, qel::kC3CMR, kernel, from, \
                                  correct, pMean, pStdDev);                                                      \
    }
MEAN_STD_DEV_C3CMR(qeliMean_StdDev_8u_C3CMR, Qel8u, qel::ownSumSq_8u_C3CMR_W7, qel::kFrom17, qel::Exact())
MEAN_STD_DEV_C3CMR(qeliMean_StdDev_8s_C3CMR, Qel8s, qel::ownSumSq_8s_C3CMR_W7, qel::kFrom17, qel::Exact())
MEAN_STD_DEV_C3CMR(qeliMean_StdDev_16u_C3CMR, Qel16u, qel::ownSumSq_16u_C3CMR_W7, qel::kFrom17, qel::Exact())
MEAN_STD_DEV_C3CMR(qeliMean_StdDev_32f_C3CMR, Qel32f, qel::ownSumSq_32f_C3CMR_W7, qel::kFrom17,
                   qel::Corrected{qel::ownSq_32f_C3CMR_W7})
#undef MEAN_STD_DEV_C3CMR
