#include <algorithm>
#include <climits>
#include <type_traits>

#include "feature/eigen_kernels.h"
#include "filter/border_mode.h"
#include "frame/check.h"
#include "frame/scratch.h"
#include "frame/threads.h"
#include "qelcv/feature.h"
#include "qelcv/filter.h"

namespace qel {
namespace {

enum KernType { kSobel, kScharr };

constexpr int maskOf(int side) { return side * 11; }
constexpr bool isSide(int side) { return side == 3 || side == 5; }

// What there is for a type of source: the filters, and the type of derivatives.
template <class Src>
struct Filters;

template <>
struct Filters<Qel8u> {
    using Derivative = Qel16s;
    static constexpr auto& sobelVert = qeliFilterSobelVertBorder_8u16s_C1R;
    static constexpr auto& sobelHoriz = qeliFilterSobelHorizBorder_8u16s_C1R;
    static constexpr auto& scharrVert = qeliFilterScharrVertBorder_8u16s_C1R;
    static constexpr auto& scharrHoriz = qeliFilterScharrHorizBorder_8u16s_C1R;
    static constexpr auto& sobelVertSize = qeliFilterSobelVertGetBufferSize_8u16s_C1R;
    static constexpr auto& sobelHorizSize = qeliFilterSobelHorizGetBufferSize_8u16s_C1R;
    static constexpr auto& scharrVertSize = qeliFilterScharrVertGetBufferSize_8u16s_C1R;
    static constexpr auto& scharrHorizSize = qeliFilterScharrHorizGetBufferSize_8u16s_C1R;
    static constexpr auto& products = ownMinEigenVal_16s32f_C1R_W7;
};

template <>
struct Filters<Qel32f> {
    using Derivative = Qel32f;
    static constexpr auto& sobelVert = qeliFilterSobelVertBorder_32f_C1R;
    static constexpr auto& sobelHoriz = qeliFilterSobelHorizBorder_32f_C1R;
    static constexpr auto& scharrVert = qeliFilterScharrVertBorder_32f_C1R;
    static constexpr auto& scharrHoriz = qeliFilterScharrHorizBorder_32f_C1R;
    static constexpr auto& sobelVertSize = qeliFilterSobelVertGetBufferSize_32f_C1R;
    static constexpr auto& sobelHorizSize = qeliFilterSobelHorizGetBufferSize_32f_C1R;
    static constexpr auto& scharrVertSize = qeliFilterScharrVertGetBufferSize_32f_C1R;
    static constexpr auto& scharrHorizSize = qeliFilterScharrHorizGetBufferSize_32f_C1R;
    static constexpr auto& products = ownMinEigenVal_32f_C1R_W7;
};

// The images between source and result, and the filters' scratch behind them. An average takes the place of the image
// ahead of its source; that of dxx takes that of the derivatives, as far as it needs.
template <class Src>
struct EigenScratch {
    using Derivative = typename Filters<Src>::Derivative;
    static constexpr int kAlignment = 32;

    EigenScratch(Qel8u* pBuffer, QelSize roiSize) : pitch(alignUp(int64_t{roiSize.width}, 16)) {
        Carver carver(pBuffer, kAlignment);
        const int64_t samples = pitch * roiSize.height;
        dx = image(carver.take<Derivative>(samples));
        dy = image(carver.take<Derivative>(samples));
        dxx = image(carver.take<Qel32f>(samples));
        dxy = image(carver.take<Qel32f>(samples));
        dyy = image(carver.take<Qel32f>(samples));
        work = carver.take<Qel8u>(0);
        averageDxx = image(reinterpret_cast<Qel32f*>(std::is_same_v<Src, Qel8u> ? static_cast<void*>(dx.p) : dy.p));
        averageDxy = dxx;
        averageDyy = dxy;
    }

    // The documented size, as far as it is not the filters'.
    static int64_t bytes(QelSize roiSize) {
        return alignUp(int64_t{roiSize.width}, 16) * roiSize.height * bytesPerPixel() + 224;
    }
    static constexpr int64_t bytesPerPixel() { return 2 * int64_t{sizeof(Derivative)} + 3 * int64_t{sizeof(Qel32f)}; }

    template <class T>
    Plane<T> image(T* p) const {
        return {p, static_cast<int>(pitch * int64_t{sizeof(T)})};
    }

    int64_t pitch;
    Plane<Derivative> dx, dy;
    Plane<Qel32f> dxx, dxy, dyy;
    Plane<Qel32f> averageDxx, averageDxy, averageDyy;
    Qel8u* work;
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
    return writeBufferSize(EigenScratch<Src>::bytes(roiSize) + largest, pBufferSize);
}

// What to compute of each matrix, and how many numbers that is.
struct Analysis {
    const Kernel<EigenKernel>& kernel;
    int numbers;
};

struct Parameters {
    int kernType;
    int apertureSize;
    int avgWindow;

    // 32f has the range of 8u.
    Qel32f scale() const {
        const Qel32f scale = 1.0F / (255.0F * static_cast<Qel32f>(1 << (2 * apertureSize - 2)));
        return kernType == kScharr ? scale * 0.612500012F : scale;
    }
    // Sobel's filter points against the x axis.
    Qel32f sign() const { return kernType == kSobel ? -1.0F : 1.0F; }
};

// A strip of results: `rows` of the region from row y on. Products exist for the rows beside it, too, as far as the
// average reaches.
struct Strip {
    int y;
    int rows;
    int above;
    int below;

    int productRows() const { return above + rows + below; }
};

// qelBorderRepl, but for rows that lie in memory.
int modeOf(bool rowsAbove, bool rowsBelow) {
    return qelBorderRepl | (rowsAbove ? kRowsAboveInMemory : 0) | (rowsBelow ? kRowsBelowInMemory : 0);
}

template <class Src>
qelStatus derive(Plane<const Src> src, QelSize roiSize, const Strip& strip, const Parameters& parameters,
                 const EigenScratch<Src>& s) {
    using F = Filters<Src>;
    const int first = strip.y - strip.above;
    const QelSize size = {roiSize.width, strip.productRows()};
    const int mode = modeOf(first > 0, first + size.height < roiSize.height);
    const auto run = [&](auto& filter, const auto& out, auto... mask) {
        return
            [=, &filter] { return filter(src.row(first), src.step, out.p, out.step, size, mask..., mode, 0, s.work); };
    };
    const int mask = maskOf(parameters.apertureSize);
    return parameters.kernType == kSobel
               ? Chain().then(run(F::sobelVert, s.dx, mask)).then(run(F::sobelHoriz, s.dy, mask)).status()
               : Chain().then(run(F::scharrVert, s.dx)).then(run(F::scharrHoriz, s.dy)).status();
}

template <class Src>
qelStatus average(int width, const Strip& strip, int avgWindow, const EigenScratch<Src>& s) {
    const auto run = [&](const Plane<Qel32f>& in, const Plane<Qel32f>& out) {
        return [=, work = s.work] {
            return qeliFilterLowpassBorder_32f_C1R(in.row(strip.above), in.step, out.p, out.step, {width, strip.rows},
                                                   maskOf(avgWindow), modeOf(strip.above > 0, strip.below > 0), 0,
                                                   work);
        };
    };
    return Chain()
        .then(run(s.dxx, s.averageDxx))
        .then(run(s.dxy, s.averageDxy))
        .then(run(s.dyy, s.averageDyy))
        .status();
}

template <class Src>
qelStatus eigenStrip(Plane<const Src> src, Plane<Qel32f> dst, QelSize roiSize, const Strip& strip,
                     const Parameters& parameters, const EigenScratch<Src>& s, EigenKernel* analyse) {
    const qelStatus derived = derive(src, roiSize, strip, parameters, s);
    if (derived != qelStatusOk) return derived;
    GradientProductsKernel<typename Filters<Src>::Derivative>* const products = Filters<Src>::products;
    for (int y = 0; y < strip.productRows(); ++y) {
        products(s.dx.row(y), s.dy.row(y), {s.dxx.row(y), s.dxy.row(y), s.dyy.row(y)}, roiSize.width);
    }
    const qelStatus averaged = average(roiSize.width, strip, parameters.avgWindow, s);
    if (averaged != qelStatusOk) return averaged;
    for (int y = 0; y < strip.rows; ++y) {
        analyse({s.averageDxx.row(y), s.averageDxy.row(y), s.averageDyy.row(y)}, dst.row(strip.y + y), roiSize.width,
                parameters.scale(), parameters.sign());
    }
    return qelStatusOk;
}

// Rows of a strip whose scratch stays in the second cache; all of them where the filters may use threads.
int rowsPerStrip(QelSize roiSize, int64_t bytesPerRow) {
    constexpr int64_t kSecondCache = 0x50000;
    constexpr int64_t kLeast = 8;
    if (owncvGetMaxNumThreads() > 1 && runomp() != 0) return roiSize.height;
    return static_cast<int>(std::clamp<int64_t>(kSecondCache / bytesPerRow, kLeast, INT_MAX));
}

// A strip ends where the region does, or so far ahead of its end that masks and average have real rows below.
template <class Src>
qelStatus eigenStrips(Plane<const Src> src, Plane<Qel32f> dst, QelSize roiSize, const Parameters& parameters,
                      const EigenScratch<Src>& s, EigenKernel* analyse) {
    constexpr int kReach = 4;
    const int most = rowsPerStrip(roiSize, EigenScratch<Src>::bytesPerPixel() * s.pitch);
    const int reach = parameters.avgWindow / 2;
    for (int y = 0; y < roiSize.height;) {
        const int left = roiSize.height - y;
        const int rows = left - kReach <= most ? left : most;
        const Strip strip = {y, rows, std::min(y, reach), std::min(left - rows, reach)};
        const qelStatus status = eigenStrip(src, dst, roiSize, strip, parameters, s, analyse);
        if (status != qelStatusOk) return status;
        y += rows;
    }
    return qelStatusOk;
}

template <class Src>
qelStatus eigen(Plane<const Src> src, Plane<Qel32f> dst, QelSize roiSize, const Parameters& parameters, Qel8u* pBuffer,
                const Analysis& analysis) {
    const RowOf srcRow = rowOf<Src>(roiSize.width);
    const RowOf dstRow = rowOf<Qel32f>(roiSize.width, analysis.numbers);
    const auto [kernType, apertureSize, avgWindow] = parameters;
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

    return eigenStrips(src, dst, roiSize, parameters, EigenScratch<Src>(pBuffer, roiSize), analysis.kernel);
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
