#include <algorithm>
#include <limits>

#include "distance/true_distance_transform_kernels.h"
#include "frame/check.h"
#include "frame/rows.h"
#include "frame/scratch.h"
#include "frame/vector_primitives.h"
#include "qelcv/distance.h"

namespace qel {
namespace {

constexpr Qel32f kLargest = std::numeric_limits<Qel32f>::max();

// Squared distances in single precision, in the destination itself.
struct InDestination {
    static constexpr Qel32f kInfinity = kLargest;
    static constexpr int kMultiple = 4;

    static int64_t workBytes(QelSize) { return 0; }
    static int64_t threadBytes(int64_t tableLength) { return 24 * tableLength + 56; }
    static constexpr int64_t kBesides = 0;
};

// Squared distances as integers, in a work image.
struct InWorkImage {
    static constexpr Qel32f kInfinity = 2147483648.0F;  // what the largest integer is in single precision
    static constexpr int kMultiple = 8;

    static int64_t workStep(QelSize roiSize) { return alignUp(int64_t{roiSize.width}, kMultiple) * 4; }
    static int64_t workBytes(QelSize roiSize) { return workStep(roiSize) * roiSize.height; }
    static int64_t threadBytes(int64_t tableLength) { return 24 * tableLength + 24; }
    static constexpr int64_t kBesides = 32;
};

// The parabolas over a row: their heights above zero at each pixel, those of the lower envelope, and from where on each
// of these is the lowest. Heights are squared distances within columns.
struct Parabolas {
    Qel32f* heights;
    Qel32f* from;  // one more than there are pixels
    Qel32s* lowest;
};

template <class Form>
int64_t tableLength(QelSize roiSize) {
    return alignUp(int64_t{std::max(roiSize.width, roiSize.height)}, Form::kMultiple);
}

// The caller's scratch: the work image, 0.5 / k for distances k, and the parabolas of each thread.
template <class Form>
class TrueDistanceScratch {
public:
    TrueDistanceScratch(QelSize roiSize, void* pBuffer) : length_(tableLength<Form>(roiSize)) {
        Carver carver(pBuffer);
        work = carver.take<Qel32s>(Form::workBytes(roiSize) / 4);
        halves = carver.take<Qel32f>(length_);
        threads_ = carver.take<Qel32f>(0);
    }

    Parabolas parabolas(int thread) const {
        Qel32f* const first = threads_ + (3 * length_ + 4) * thread;
        return {first, first + length_, reinterpret_cast<Qel32s*>(first + 2 * length_ + 4)};
    }

    // The documented size is that of four tables more.
    static int64_t bytes(QelSize roiSize) {
        return Form::threadBytes(tableLength<Form>(roiSize)) * owncvGetMaxNumThreads() + Form::workBytes(roiSize) +
               Form::kBesides;
    }

    Qel32s* work;
    Qel32f* halves;

private:
    int64_t length_;
    Qel32f* threads_;
};

// The lower envelope of parabolas: Felzenszwalb and Huttenlocher, Distance Transforms of Sampled Functions, 2004.
// Single precision in this order is part of the result where squares are too large to be exact.
void findEnvelope(const Parabolas& row, int width, const Qel32f* halves) {
    const auto squareOf = [](int x) { return static_cast<Qel32f>(x) * static_cast<Qel32f>(x); };
    // The last parabola of the envelope stays at hand: most of the others meet just that one.
    int k = 0;
    int p = row.lowest[0] = 0;
    Qel32f height = row.heights[0];
    Qel32f from = row.from[0] = -kLargest;
    for (int q = 1; q < width; ++q) {
        const Qel32f t = row.heights[q] + squareOf(q);
        Qel32f crossing = (t - height - squareOf(p)) * halves[q - p];
        while (!(crossing > from)) {
            p = row.lowest[--k];
            from = row.from[k];
            crossing = (t - row.heights[p] - squareOf(p)) * halves[q - p];
        }
        row.lowest[++k] = p = q;
        row.from[k] = from = crossing;
        height = row.heights[q];
    }
    row.from[k + 1] = kLargest;
}

// Beyond the range of the integers is their end.
void store(Qel32f square, Qel32s* out) {
    *out = square >= 2147483648.0F ? std::numeric_limits<Qel32s>::max() : static_cast<Qel32s>(square);
}
void store(Qel32f square, Qel32f* out) { *out = square; }

template <class Out>
void sampleEnvelope(const Parabolas& row, Out* out, int width) {
    int k = 0;
    for (int q = 0; q < width; ++q) {
        while (static_cast<Qel32f>(q) > row.from[k + 1]) ++k;
        const int p = row.lowest[k];
        const Qel32f distance = static_cast<Qel32f>(q - p);
        store(distance * distance + row.heights[p], out + q);
    }
}

// Threads are worth starting where there are cores for them, or rows enough for each.
bool goParallel(QelSize roiSize) {
    const int threads = owncvGetMaxNumThreads();
    return threads >= 2 && (runomp() != 0 || (int64_t{threads} * roiSize.height >= 256 && roiSize.width >= 256));
}

// finish(row, y) makes the results of row y of its squared distances.
template <class Form, class Out, class Finish>
void transform(Plane<const Qel8u> src, Plane<Out> squares, QelSize roiSize, const TrueDistanceScratch<Form>& scratch,
               const Finish& finish) {
    const Plane<Qel32s> distances = {reinterpret_cast<Qel32s*>(squares.p), squares.step};
    ownTrueDistanceColumns_8u32s(src, distances, roiSize);
    for (int k = 1; k < roiSize.width; ++k) scratch.halves[k] = 0.5F / static_cast<Qel32f>(k);

    const auto toSquares =
        static_cast<void (*)(const Qel32s*, Qel32f*, int, int, Qel32f)>(ownTrueDistanceSquares_32s32f);
    forRows(roiSize, goParallel(roiSize), [&](const Share& share) {
        const Parabolas parabolas = scratch.parabolas(share.thread);
        for (int y = share.y; y < share.y + share.size.height; ++y) {
            toSquares(distances.row(y), parabolas.heights, roiSize.width, roiSize.height, Form::kInfinity);
            findEnvelope(parabolas, roiSize.width, scratch.halves);
            sampleEnvelope(parabolas, squares.row(y), roiSize.width);
            finish(squares.row(y), y);
        }
    });
}

template <class Form>
qelStatus trueDistanceBufferSize(QelSize roiSize, int* pBufferSize) {
    const qelStatus status = Check().pointers(pBufferSize).size(roiSize).status();
    if (status != qelStatusOk) return status;
    return writeBufferSize(TrueDistanceScratch<Form>::bytes(roiSize), pBufferSize);
}

template <class T>
qelStatus checked(const Qel8u* pSrc, int srcStep, const T* pDst, int dstStep, QelSize roiSize, const Qel8u* pBuffer) {
    return Check()
        .pointers(pSrc, pDst, pBuffer)
        .size(roiSize)
        .stepSizes(rowOf<Qel8u>(roiSize.width), srcStep)
        .steps(rowOf<T>(roiSize.width), dstStep)
        .status();
}

}  // namespace
}  // namespace qel

qelStatus qeliTrueDistanceTransformGetBufferSize_8u32f_C1R(QelSize roiSize, int* pBufferSize) {
    return qel::trueDistanceBufferSize<qel::InDestination>(roiSize, pBufferSize);
}

qelStatus qeliTrueDistanceTransformGetBufferSize_8u16u_C1RSfs(QelSize roiSize, int* pBufferSize) {
    return qel::trueDistanceBufferSize<qel::InWorkImage>(roiSize, pBufferSize);
}

qelStatus qeliTrueDistanceTransform_8u32f_C1R(const Qel8u* pSrc, int srcStep, Qel32f* pDst, int dstStep,
                                              QelSize roiSize, Qel8u* pBuffer) {
    const qelStatus status = qel::checked(pSrc, srcStep, pDst, dstStep, roiSize, pBuffer);
    if (status != qelStatusOk) return status;

    const qel::TrueDistanceScratch<qel::InDestination> scratch(roiSize, pBuffer);
    qel::transform<qel::InDestination>({pSrc, srcStep}, qel::Plane{pDst, dstStep}, roiSize, scratch,
                                       [=](Qel32f* row, int) { qel::qelsSqrt_32f_I(row, roiSize.width); });
    return qelStatusOk;
}

qelStatus qeliTrueDistanceTransform_8u16u_C1RSfs(const Qel8u* pSrc, int srcStep, Qel16u* pDst, int dstStep,
                                                 QelSize roiSize, int scaleFactor, Qel8u* pBuffer) {
    const qelStatus status = qel::checked(pSrc, srcStep, pDst, dstStep, roiSize, pBuffer);
    if (status != qelStatusOk) return status;

    const qel::TrueDistanceScratch<qel::InWorkImage> scratch(roiSize, pBuffer);
    const int workStep = static_cast<int>(qel::InWorkImage::workStep(roiSize));
    qel::transform<qel::InWorkImage>(
        {pSrc, srcStep}, qel::Plane{scratch.work, workStep}, roiSize, scratch, [=](const Qel32s* row, int y) {
            Qel16u* const out = qel::row(pDst, dstStep, y);
            qel::qelsSqrt_32s16s_Sfs(row, reinterpret_cast<Qel16s*>(out), roiSize.width, scaleFactor);
        });
    return qelStatusOk;
}
