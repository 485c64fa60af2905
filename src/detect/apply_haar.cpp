#include "detect/apply_haar_kernels.h"
#include "detect/haar_state.h"
#include "frame/check.h"
#include "frame/scratch.h"
#include "qelcv/detect.h"

namespace qel {
namespace {

// The tables of a stage for one call: what a step makes of its coordinates is worked out once.
template <class W>
class FlatStage {
public:
    FlatStage(const QelHaarClassifierState& state, int srcStep, int tiltStep, W threshold)
        : state_(state),
          threshold_(threshold),
          offsets_(4 * int64_t{state.numFeatures}),
          weights_(state.numFeatures),
          shapes_(state.numClassifiers),
          thresholds_(state.numClassifiers),
          valuesBelow_(state.numClassifiers),
          valuesAbove_(state.numClassifiers) {
        if (!hasMemory()) return;
        const QelHaarClassifier<W>* const classifiers = state.classifiers<W>();
        std::ptrdiff_t* offsets = offsets_.get();
        W* weights = weights_.get();
        for (int i = 0; i < state.numClassifiers; ++i) {
            const QelHaarClassifier<W>& c = classifiers[i];
            const int step = c.isTilted() ? tiltStep : srcStep;
            for (int k = 0; k < c.featureCount; ++k, offsets += 4) {
                flatten(c.pFeatures[k], step, offsets);
                *weights++ = c.pFeatures[k].weight;
            }
            shapes_.get()[i] = 2 * c.featureCount + (c.isTilted() ? 1 : 0);
            thresholds_.get()[i] = c.threshold;
            valuesBelow_.get()[i] = c.valueBelow;
            valuesAbove_.get()[i] = c.valueAbove;
        }
    }

    bool hasMemory() const {
        return state_.numClassifiers == 0 ||
               (offsets_ && weights_ && shapes_ && thresholds_ && valuesBelow_ && valuesAbove_);
    }

    HaarStage<W> stage() const {
        return {state_.numPairs, state_.numPairsAndTriples, state_.numClassifiers, offsets_.get(),     weights_.get(),
                shapes_.get(),   thresholds_.get(),         valuesBelow_.get(),    valuesAbove_.get(), threshold_};
    }

private:
    static void flatten(const QelHaarFeature<W>& f, int step, std::ptrdiff_t* offsets) {
        const auto offset = [elements = std::ptrdiff_t{step} / 4](Qel32s x, Qel32s y) { return y * elements + x; };
        offsets[0] = offset(f.x0, f.y0);
        offsets[1] = offset(f.x1, f.y1);
        offsets[2] = offset(f.x2, f.y2);
        offsets[3] = offset(f.x3, f.y3);
    }

    const QelHaarClassifierState& state_;
    W threshold_;
    Scratch<std::ptrdiff_t> offsets_;
    Scratch<W> weights_;
    Scratch<Qel32s> shapes_;
    Scratch<W> thresholds_, valuesBelow_, valuesAbove_;
};

// A mixed form reads tilted features one column and one row further on.
template <class T>
Plane<const T> shifted(Plane<const T> tilted) {
    return {tilted.row(1) + 1, tilted.step};
}

// What an Apply form works on. A plain form has no tilted table: tilted features read the upright one as they are.
template <class T, class N>
struct Images {
    Plane<const T> src;
    Plane<const T> tilt;
    Plane<const N> norm;
    Plane<Qel8u> mask;
    QelSize roiSize;
    int* pPositive;
};

template <class T, class N>
Check checkPlain(const Images<T, N>& in, const QelHaarClassifierState* pState) {
    const RowOf row = rowOf<T>(in.roiSize.width);
    return Check()
        .pointers(in.src.p, in.norm.p, in.mask.p, in.pPositive, pState)
        .size(in.roiSize)
        .stepSizes(row, in.src.step, in.norm.step)
        .stepSizes(rowOf<Qel8u>(in.roiSize.width), in.mask.step)
        .stepAlignments(row, in.src.step, in.norm.step);
}
template <class T, class N>
Check checkMixed(const Images<T, N>& in, const QelHaarClassifierState* pState) {
    const RowOf row = rowOf<T>(in.roiSize.width);
    return Check()
        .pointers(in.src.p, in.tilt.p, in.norm.p, in.mask.p, in.pPositive, pState)
        .size(in.roiSize)
        .stepSizes(row, in.src.step, in.tilt.step, in.norm.step)
        .stepSizes(rowOf<Qel8u>(in.roiSize.width), in.mask.step)
        .stepAlignments(row, in.src.step, in.tilt.step, in.norm.step);
}

// Runs kernel(stage, tables, norm, mask, size), which returns the number of pixels that stay.
template <class T, class N, class W, class Run>
qelStatus apply(const Images<T, N>& in, W threshold, const QelHaarClassifierState& state, const Run& kernel) {
    const bool mixed = in.tilt.p != nullptr;
    const FlatStage<W> flat(state, in.src.step, mixed ? in.tilt.step : in.src.step, threshold);
    if (!flat.hasMemory()) return qelStatusNoMemory;
    const HaarTables<T> tables = {in.src, mixed ? shifted(in.tilt) : in.src};
    *in.pPositive = kernel(flat.stage(), tables, in.norm, in.mask, in.roiSize);
    return qelStatusOk;
}

// By how sparse the mask is to be expected: pixels for each that was positive before this stage.
ApplyHaarKernel<Qel32f, Qel32f, Qel32f>* kernelFor(bool firstWeightIsMinusOne, int64_t pixelsPerPositive) {
    constexpr int kFrom4Pix = 4, kFromSparse = 8;
    if (!firstWeightIsMinusOne) {
        if (pixelsPerPositive < kFrom4Pix) return ownApplyHaarClassifierAllImg8Pix_dw_W7;
        return ownApplyHaarClassifierAllImg8PixSparceMask_dw_W7;
    }
    if (pixelsPerPositive < kFrom4Pix) return ownApplyHaarClassifierAllImg8Pix_W7;
    if (pixelsPerPositive < kFromSparse) return ownApplyHaarClassifierAllImg4Pix_W7;
    return ownApplyHaarClassifierAllImg8PixSparceMask_W7;
}

Qel32s wrappingProduct(Qel32s a, Qel32s b) { return static_cast<Qel32s>(int64_t{a} * b); }

// Features of a window summed in 64 bits, for the one form that compares full products.
int64_t wideSum(const Qel32s* p, const std::ptrdiff_t* o, const Qel32s* weights, int features) {
    int64_t sum = 0;
    for (int k = 0; k < features; ++k, o += 4) {
        const auto rectangle = static_cast<Qel32s>(int64_t{p[o[0]]} - p[o[1]] - p[o[2]] + p[o[3]]);
        sum += wrappingProduct(rectangle, weights[k]);
    }
    return sum;
}

// Bits that a shift moves out are lost; 64 places leave none.
int64_t shiftedLeft(int64_t value, int64_t places) {
    return places < 64 ? static_cast<int64_t>(static_cast<uint64_t>(value) << places) : 0;
}

Qel32s wideStageSum(const HaarStage<Qel32s>& stage, const Qel32s* upright, const Qel32s* tilted, Qel32s norm,
                    int64_t places) {
    uint32_t sum = 0;
    const std::ptrdiff_t* offsets = stage.offsets;
    const Qel32s* weights = stage.weights;
    for (int c = 0; c < stage.numClassifiers; ++c) {
        const int features = stage.shapes[c] >> 1;
        const int64_t f = wideSum((stage.shapes[c] & 1) != 0 ? tilted : upright, offsets, weights, features);
        // Which of the two it is follows no pattern that a branch could be predicted by.
        const Qel32s values[] = {stage.valuesAbove[c], stage.valuesBelow[c]};
        const bool below = shiftedLeft(f, places) < int64_t{stage.thresholds[c]} * norm;
        sum += static_cast<uint32_t>(values[below ? 1 : 0]);
        offsets += std::ptrdiff_t{4} * features;
        weights += features;
    }
    return static_cast<Qel32s>(sum);
}

int applyWideRows(const HaarStage<Qel32s>& stage, const HaarTables<Qel32s>& tables, Plane<const Qel32s> norm,
                  Plane<Qel8u> mask, QelSize size, int64_t places) {
    int count = 0;
    for (int y = 0; y < size.height; ++y) {
        const Qel32s *upright = tables.upright.row(y), *tilted = tables.tilted.row(y), *norms = norm.row(y);
        Qel8u* const m = mask.row(y);
        for (int x = 0; x < size.width; ++x) {
            if (m[x] == 0) continue;
            if (wideStageSum(stage, upright + x, tilted + x, norms[x], places) < stage.threshold) {
                m[x] = 0;
            } else {
                ++count;
            }
        }
    }
    return count;
}

}  // namespace
}  // namespace qel

qelStatus qeliApplyHaarClassifier_32f_C1R(const Qel32f* pSrc, int srcStep, const Qel32f* pNorm, int normStep,
                                          Qel8u* pMask, int maskStep, QelSize roiSize, int* pPositive, Qel32f threshold,
                                          const QelHaarClassifierState* pState) {
    const qel::Images<Qel32f, Qel32f> in = {{pSrc, srcStep},   {nullptr, 0}, {pNorm, normStep},
                                            {pMask, maskStep}, roiSize,      pPositive};
    const qelStatus status = checkPlain(in, pState).status();
    // Where nothing is expected, nothing is looked at, whatever the mask holds.
    if (status != qelStatusOk || *pPositive == 0) return status;
    const int64_t pixels = int64_t{roiSize.width} * roiSize.height;
    return qel::apply(in, threshold, *pState, qel::kernelFor(pState->firstWeightIsMinusOne != 0, pixels / *pPositive));
}

qelStatus qeliApplyHaarClassifier_32s32f_C1R(const Qel32s* pSrc, int srcStep, const Qel32f* pNorm, int normStep,
                                             Qel8u* pMask, int maskStep, QelSize roiSize, int* pPositive,
                                             Qel32f threshold, const QelHaarClassifierState* pState) {
    const qel::Images<Qel32s, Qel32f> in = {{pSrc, srcStep},   {nullptr, 0}, {pNorm, normStep},
                                            {pMask, maskStep}, roiSize,      pPositive};
    const qelStatus status = checkPlain(in, pState).status();
    return status != qelStatusOk ? status
                                 : qel::apply(in, threshold, *pState, *qel::ownApplyHaarClassifier_32s32f_C1R_W7);
}

// The scale is accepted and has no effect here.
qelStatus qeliApplyHaarClassifier_32s_C1RSfs(const Qel32s* pSrc, int srcStep, const Qel32s* pNorm, int normStep,
                                             Qel8u* pMask, int maskStep, QelSize roiSize, int* pPositive,
                                             Qel32s threshold, const QelHaarClassifierState* pState, int) {
    const qel::Images<Qel32s, Qel32s> in = {{pSrc, srcStep},   {nullptr, 0}, {pNorm, normStep},
                                            {pMask, maskStep}, roiSize,      pPositive};
    const qelStatus status = checkPlain(in, pState).status();
    return status != qelStatusOk ? status
                                 : qel::apply(in, threshold, *pState, *qel::ownApplyHaarClassifier_32s_C1RSfs_W7);
}

#define APPLY_MIXED_HAAR(name, T, kernel)                                                                       \
    qelStatus name(const T* pSrc, int srcStep, const T* pTilt, int tiltStep, const Qel32f* pNorm, int normStep, \
                   Qel8u* pMask, int maskStep, QelSize roiSize, int* pPositive, Qel32f threshold,               \
                   const QelHaarClassifierState* pState) {                                                      \
        const qel::Images<T, Qel32f> in = {{pSrc, srcStep},   {pTilt, tiltStep}, {pNorm, normStep},             \
                                           {pMask, maskStep}, roiSize,           pPositive};                    \
        const qelStatus status = checkMixed(in, pState).status();                                               \
        return status != qelStatusOk ? status : qel::apply(in, threshold, *pState, *qel::kernel);               \
    }
APPLY_MIXED_HAAR(qeliApplyMixedHaarClassifier_32f_C1R, Qel32f, ownApplyMixedHaarClassifier_32f_C1R_W7)
APPLY_MIXED_HAAR(qeliApplyMixedHaarClassifier_32s32f_C1R, Qel32s, ownApplyMixedHaarClassifier_32s32f_C1R_W7)
#undef APPLY_MIXED_HAAR

qelStatus qeliApplyMixedHaarClassifier_32s_C1RSfs(const Qel32s* pSrc, int srcStep, const Qel32s* pTilt, int tiltStep,
                                                  const Qel32s* pNorm, int normStep, Qel8u* pMask, int maskStep,
                                                  QelSize roiSize, int* pPositive, Qel32s threshold,
                                                  const QelHaarClassifierState* pState, int scaleFactor) {
    const qel::Images<Qel32s, Qel32s> in = {{pSrc, srcStep},   {pTilt, tiltStep}, {pNorm, normStep},
                                            {pMask, maskStep}, roiSize,           pPositive};
    const qelStatus status = checkMixed(in, pState).require(scaleFactor <= 0, qelStatusBadArg).status();
    if (status != qelStatusOk) return status;
    return qel::apply(in, threshold, *pState,
                      [=](const auto&... of) { return qel::applyWideRows(of..., -int64_t{scaleFactor}); });
}
