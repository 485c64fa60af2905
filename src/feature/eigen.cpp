#include <algorithm>

#include "feature/eigen_kernels.h"
#include "filter/fixed_filters.h"
#include "frame/check.h"
#include "frame/row_ring.h"
#include "frame/rows.h"
#include "frame/scratch.h"
#include "qelcv/feature.h"
#include "qelcv/filter.h"

namespace qel {
namespace {

constexpr int maskOf(int side) { return side * 11; }
constexpr int kMostTaps = 5;
constexpr bool isSide(int side) { return side == 3 || side == 5; }

// What there is for a type of source: its kernel, the type of derivatives, and the filters whose scratch a call counts.
template <class Src>
struct Filters;

template <>
struct Filters<Qel8u> {
    using Derivative = Qel16s;
    static constexpr auto& sobelVertSize = qeliFilterSobelVertGetBufferSize_8u16s_C1R;
    static constexpr auto& sobelHorizSize = qeliFilterSobelHorizGetBufferSize_8u16s_C1R;
    static constexpr auto& scharrVertSize = qeliFilterScharrVertGetBufferSize_8u16s_C1R;
    static constexpr auto& scharrHorizSize = qeliFilterScharrHorizGetBufferSize_8u16s_C1R;
    static constexpr auto& sums = ownMinEigenVal_16s32f_C1R_W7;
};

template <>
struct Filters<Qel32f> {
    using Derivative = Qel32f;
    static constexpr auto& sobelVertSize = qeliFilterSobelVertGetBufferSize_32f_C1R;
    static constexpr auto& sobelHorizSize = qeliFilterSobelHorizGetBufferSize_32f_C1R;
    static constexpr auto& scharrVertSize = qeliFilterScharrVertGetBufferSize_32f_C1R;
    static constexpr auto& scharrHorizSize = qeliFilterScharrHorizGetBufferSize_32f_C1R;
    static constexpr auto& sums = ownMinEigenVal_32f_C1R_W7;
};

// Bytes of the documented scratch, as far as it is not the filters': five images, where rows are enough.
template <class Src>
int64_t imageBytes(QelSize roiSize) {
    constexpr int64_t kPixel = 2 * int64_t{sizeof(typename Filters<Src>::Derivative)} + 3 * int64_t{sizeof(Qel32f)};
    return alignUp(int64_t{roiSize.width}, 16) * roiSize.height * kPixel + 224;
}

// What a thread takes of the scratch: less than a filter's share of it, however low and narrow the region is.
struct EigenScratch {
    static constexpr int kLine = 64;

    EigenScratch(void* pBuffer, int width, int avgWindow) {
        constexpr int kMargin = DerivativeRows::kMargin;
        const int64_t stride = gradientStride(width);
        Carver carver(pBuffer, kLine);
        Qel32f* const dx = carver.take<Qel32f>(stride + 2 * kMargin);
        Qel32f* const dy = carver.take<Qel32f>(stride + 2 * kMargin);
        if (dx != nullptr) derivatives = {dx + kMargin, dy + kMargin};
        sums = carver.take<Qel32f>(3 * stride * avgWindow);
        pointers = carver.take<Qel32f*>(2 * avgWindow);
        bytes = carver.bytes();
    }

    DerivativeRows derivatives = {};
    Qel32f* sums;
    Qel32f** pointers;
    int64_t bytes;
};

// Keeps the status of the first step that failed, and takes no further one.
class Chain {
public:
    template <class Step>
    Chain& then(const Step& step) {
        if (status_ == qelStatusOk) status_ = step();
        return *this;
    }
    qelStatus status() const { return status_; }

private:
    qelStatus status_ = qelStatusOk;
};

template <class Src>
qelStatus eigenBufferSize(QelSize roiSize, int apertureSize, int avgWindow, int* pBufferSize) {
    using F = Filters<Src>;
    const qelStatus status = Check()
                                 .pointers(pBufferSize)
                                 .size(roiSize)
                                 .require(isSide(apertureSize) && isSide(avgWindow), qelStatusBadSize)
                                 .status();
    if (status != qelStatusOk) return status;

    int largest = 0;
    const auto atLeast = [&](auto& bufferSize, auto... mask) {
        return [&largest, &bufferSize, roiSize, mask...] {
            int bytes = 0;
            const qelStatus result = bufferSize(roiSize, mask..., &bytes);
            largest = std::max(largest, bytes);
            return result;
        };
    };
    Chain chain;
    chain.then(atLeast(F::sobelVertSize, maskOf(apertureSize))).then(atLeast(F::sobelHorizSize, maskOf(apertureSize)));
    if (apertureSize == 3) chain.then(atLeast(F::scharrVertSize)).then(atLeast(F::scharrHorizSize));
    chain.then(atLeast(qeliFilterLowpassGetBufferSize_32f_C1R, maskOf(avgWindow)));
    if (chain.status() != qelStatusOk) return chain.status();
    return writeBufferSize(imageBytes<Src>(roiSize) + largest, pBufferSize);
}

// What to compute of each matrix, and how many numbers that is.
struct Analysis {
    const Kernel<EigenKernel>& kernel;
    int numbers;

    bool bypassesCache(QelSize roiSize) const { return outgrowsCache(numbers * int{sizeof(Qel32f)}, roiSize); }
};

// The rows of a share, one by one: the sums along a window's rows stay in a ring as long as windows need them. Beside
// the share they are made of the image, beyond the image they are those of its last row.
template <class Src>
void eigenRows(Plane<const Src> src, Plane<Qel32f> dst, QelSize roiSize, const EigenForm& form, const Share& share,
               const EigenScratch& scratch, const Analysis& analysis) {
    const int width = roiSize.width;
    const int height = roiSize.height;
    const int end = share.y + share.size.height;
    const int window = form.avgWindow;
    const int reach = window / 2;
    const int rowSamples = 3 * gradientStride(width);
    const RowRange all = {share.y - reach, end + reach};
    RowRing<Qel32f> ring({scratch.sums, int64_t{rowSamples} * window, rowSamples, window}, window, scratch.pointers,
                         all, {std::max(all.begin, 0), std::min(all.end, height)});

    EigenKernel* const analyse = analysis.kernel;
    const bool bypassesCache = analysis.bypassesCache(roiSize);
    GradientSumsKernel<Src>* const sumGradients = Filters<Src>::sums;
    const auto rowStage = [&](int first, Qel32f* const* pRows, int count) {
        for (int i = 0; i < count; ++i) {
            const Src* rows[kMostTaps];
            for (int j = 0; j < form.apertureSize; ++j)
                rows[j] = src.row(std::clamp(first + i + j - form.apertureSize / 2, 0, height - 1));
            sumGradients(rows, pRows[i], width, form, scratch.derivatives);
        }
    };
    const auto outside = [&](int y, Qel32f*) { return ring.place(std::clamp(y, 0, height - 1)); };
    for (int y = share.y; y < end; ++y) {
        ring.fillUpTo(y + 1 + reach, rowStage, outside);
        analyse(ring.window(y - reach), dst.row(y), width, form, bypassesCache);
    }
}

template <class Src>
qelStatus eigen(Plane<const Src> src, Plane<Qel32f> dst, QelSize roiSize, const EigenForm& form, Qel8u* pBuffer,
                const Analysis& analysis) {
    const RowOf srcRow = rowOf<Src>(roiSize.width);
    const RowOf dstRow = rowOf<Qel32f>(roiSize.width, analysis.numbers);
    const auto [kernType, apertureSize, avgWindow] = form;
    const qelStatus status = Check()
                                 .pointers(src.p, dst.p, pBuffer)
                                 .size(roiSize)
                                 .stepSizes(srcRow, src.step)
                                 .stepSizes(dstRow, dst.step)
                                 .stepAlignments(srcRow, src.step)
                                 .stepAlignments(dstRow, dst.step)
                                 .require(kernType != kSobel || isSide(apertureSize), qelStatusBadSize)
                                 .require(kernType == kSobel || kernType == kScharr, qelStatusBadArg)
                                 .require(kernType != kScharr || apertureSize == 3, qelStatusBadSize)
                                 .require(isSide(avgWindow), qelStatusBadSize)
                                 .status();
    if (status != qelStatusOk) return status;

    const int64_t threadBytes = EigenScratch(nullptr, roiSize.width, form.avgWindow).bytes;
    forRows(roiSize, kFixed.reachedBy(roiSize), [&](const Share& share) {
        const EigenScratch scratch(pBuffer + threadBytes * share.thread, roiSize.width, form.avgWindow);
        eigenRows(src, dst, roiSize, form, share, scratch, analysis);
    });
    return qelStatusOk;
}

}  // namespace
}  // namespace qel

#define EIGEN(name, Src, kernel, numbers)                                                                      \
    qelStatus name(const Src* pSrc, int srcStep, Qel32f* pDst, int dstStep, QelSize roiSize, int kernType,     \
                   int apertureSize, int avgWindow, Qel8u* pBuffer) {                                          \
        return qel::eigen<Src>({pSrc, srcStep}, {pDst, dstStep}, roiSize, {kernType, apertureSize, avgWindow}, \
                               pBuffer, {qel::kernel, numbers});                                               \
    }
EIGEN(qeliMinEigenVal_8u32f_C1R, Qel8u, owncalcMinValues_W7, 1)
EIGEN(qeliMinEigenVal_32f_C1R, Qel32f, owncalcMinValues_W7, 1)
EIGEN(qeliEigenValsVecs_8u32f_C1R, Qel8u, calcValues, 6)
EIGEN(qeliEigenValsVecs_32f_C1R, Qel32f, calcValues, 6)
#undef EIGEN

#define BUFFER_SIZE(name, Src)                                                           \
    qelStatus name(QelSize roiSize, int apertureSize, int avgWindow, int* pBufferSize) { \
        return qel::eigenBufferSize<Src>(roiSize, apertureSize, avgWindow, pBufferSize); \
    }
BUFFER_SIZE(qeliMinEigenValGetBufferSize_8u32f_C1R, Qel8u)
BUFFER_SIZE(qeliMinEigenValGetBufferSize_32f_C1R, Qel32f)
BUFFER_SIZE(qeliEigenValsVecsGetBufferSize_8u32f_C1R, Qel8u)
BUFFER_SIZE(qeliEigenValsVecsGetBufferSize_32f_C1R, Qel32f)
#undef BUFFER_SIZE
