#include <algorithm>
#include <climits>
#include <memory>

#include "frame/image_primitives_kernels.h"
#include "frame/scratch.h"
#include "frame/vector_primitives.h"
#include "morph/dilate.h"
#include "morph/morphology_state.h"

// May begin at any address, as the states within.
struct [[gnu::packed]] QelMorphAdvState {
    QelMorphState* pFirst;   // the mask as given
    QelMorphState* pSecond;  // the mask turned by half a circle
    Qel8u* pWork;            // the image between two steps
    Qel32s workSize;         // bytes
    Qel32s reserved;         // 0
};

namespace qel {
namespace {

static_assert(sizeof(QelMorphAdvState) == 20 + 3 * kPointerGrowth);

constexpr int kStateAlignment = 32;

struct FreeState {
    void operator()(QelMorphState* pState) const { qelsFree(pState); }
};
using OwnedState = std::unique_ptr<QelMorphState, FreeState>;

// A row of the work image.
int64_t workStep(const MorphType& type, int width) { return alignUp(type.rowBytes(width), 32); }

// The mask that undoes what `mask` shifts. Its elements are those of `first`, whose copy of the mask stands the other
// way round meanwhile.
template <class Build>
qelStatus withTurned(const MorphMask& mask, const QelMorphState& first, const Build& build) {
    Qel8u* const pElements = first.pMaskCopy;
    Qel8u* const pEnd = pElements + static_cast<std::ptrdiff_t>(mask.maskSize.width) * mask.maskSize.height;
    MorphMask turned = mask;
    turned.pMask = pElements;
    turned.anchor = {mask.maskSize.width - mask.anchor.x - 1, mask.maskSize.height - mask.anchor.y - 1};
    std::reverse(pElements, pEnd);
    const qelStatus status = build(turned);
    std::reverse(pElements, pEnd);
    return status;
}

// The size of one of the two states does not depend on the anchor, as there are no ellipses.
// The work image, or more than any block can be where a single row of it is.
int64_t workBytes(const MorphMask& mask, int height) {
    const int64_t step = workStep(mask.type, mask.roiWidth);
    return step > INT_MAX ? step : step * height;
}

qelStatus morphAdvGetSize(const MorphMask& mask, int height, int* pSize) {
    int stateBytes = 0;
    Check checks;
    checks.length(height).pointers(pSize);
    qelStatus status = checks.status();
    if (status == qelStatusOk) status = ownMorphologyGetSize(mask, &stateBytes);
    if (status != qelStatusOk) return status;
    constexpr int kRecordAndAlignment = sizeof(QelMorphAdvState) + 2 * kStateAlignment;
    return writeBufferSize(workBytes(mask, height) + 2 * int64_t{stateBytes} + kRecordAndAlignment, pSize);
}

qelStatus morphAdvInit(QelMorphAdvState* pState, const MorphMask& mask, int height) {
    Check checks;
    qelStatus status = checks.length(height).pointers(pState).status();
    int bytes = 0;
    if (status == qelStatusOk) status = morphAdvGetSize(mask, height, &bytes);
    if (status != qelStatusOk) return status;

    const auto alignedEnd = [](QelMorphState* p) {
        return alignUp(reinterpret_cast<char*>(p) + p->stateSize, size_t{kStateAlignment});
    };
    QelMorphState* const pFirst = reinterpret_cast<QelMorphState*>(pState + 1);
    status = ownMorphologyInit(mask, pFirst);
    if (status != qelStatusOk) return status;
    QelMorphState* const pSecond = reinterpret_cast<QelMorphState*>(alignedEnd(pFirst));
    status = withTurned(mask, *pFirst, [=](const MorphMask& turned) { return ownMorphologyInit(turned, pSecond); });
    if (status != qelStatusOk) return status;
    *pState = {pFirst, pSecond, reinterpret_cast<Qel8u*>(alignedEnd(pSecond)),
               static_cast<Qel32s>(workBytes(mask, height)), 0};
    return qelStatusOk;
}

qelStatus initAlloc(const MorphMask& mask, OwnedState& state) {
    QelMorphState* pState = nullptr;
    const qelStatus status = ownMorphologyInitAlloc(mask, &pState);
    state.reset(pState);
    return status;
}

qelStatus morphAdvInitAlloc(QelMorphAdvState** ppState, const MorphMask& mask, int height) {
    Check checks;
    qelStatus status = checks.pointers(ppState).length(height).status();
    OwnedState first;
    OwnedState second;
    if (status == qelStatusOk) status = initAlloc(mask, first);
    if (status == qelStatusOk) {
        status = withTurned(mask, *first, [&](const MorphMask& turned) { return initAlloc(turned, second); });
    }
    if (status != qelStatusOk) return status;
    const int64_t workSize = workBytes(mask, height);
    Scratch<Qel8u> work(workSize);
    Scratch<QelMorphAdvState> state(1);
    if (!work || !state) return qelStatusNoMemory;
    *ppState = state.release();
    **ppState = {first.release(), second.release(), work.release(), static_cast<Qel32s>(workSize), 0};
    return qelStatusOk;
}

// dst = minuend - subtrahend, 0 where that is negative.
void subtract(const Qel8u* subtrahend, const Qel8u* minuend, Qel8u* dst, int count) {
    ownps_Sub_8u(subtrahend, minuend, dst, count, 0);
}
void subtract(const Qel32f* subtrahend, const Qel32f* minuend, Qel32f* dst, int count) {
    ownps_Sub_32f(subtrahend, minuend, dst, count);
    owniThreshold_LT_32f_C1R(dst, 0, dst, 0, {count, 1}, 0);
}

template <class T>
void subtract(Plane<const T> subtrahend, Plane<const T> minuend, Plane<T> dst, int width, RowRange rows) {
    for (int y = rows.begin; y < rows.end; ++y) subtract(subtrahend.row(y), minuend.row(y), dst.row(y), width);
}

// So few rows at a time that what one step writes is still near when the next one reads it, and so many that what an
// engine does once for all of them does not count.
template <class Step>
void inTurns(int height, const QelMorphState& state, const Step& step) {
    constexpr int kRows = 16;
    const int turn = std::max(kRows, state.maskHeight);
    for (int y = 0; y < height;) {
        const int end = y + std::min(turn, height - y);
        step(RowRange{y, end});
        y = end;
    }
}

// What becomes of the second step's rows.
enum class Difference { kNone, kFromSource, kLessSource };

// The operation `op`, then the other one with the turned mask.
template <class T>
void twoSteps(MorphOp op, Difference difference, const MorphRegion<T>& region, const QelMorphAdvState& state) {
    const MorphType type = morphType<T>(state.pFirst->channels);
    const Plane<T> work = {reinterpret_cast<T*>(state.pWork), static_cast<int>(workStep(type, region.size.width))};
    const MorphOp other = op == MorphOp::kDilate ? MorphOp::kErode : MorphOp::kDilate;
    const Plane<const T> src = region.src;
    const Plane<T> dst = region.dst;
    const Plane<const T> result = {dst.p, dst.step};
    const int width = region.size.width * type.channels;

    MorphByRows<T> first(op, {src, work, region.size}, *state.pFirst);
    MorphByRows<T> second(other, {{work.p, work.step}, dst, region.size}, *state.pSecond);
    inTurns(region.size.height, *state.pFirst, [&](RowRange rows) {
        first.makeUpTo(second.sourceRowsFor(rows.end));
        second.makeUpTo(rows.end);
        if (difference == Difference::kFromSource) subtract(result, src, dst, width, rows);
        if (difference == Difference::kLessSource) subtract(src, result, dst, width, rows);
    });
}

// Dilation less erosion, both with the mask as given. The erosion works in the memory of the second state, whose mask
// is of the same class and size.
template <class T>
void gradient(const MorphRegion<T>& region, const QelMorphAdvState& state) {
    const MorphType type = morphType<T>(state.pFirst->channels);
    const Plane<T> work = {reinterpret_cast<T*>(state.pWork), static_cast<int>(workStep(type, region.size.width))};
    const Plane<const T> result = {region.dst.p, region.dst.step};
    QelMorphState eroding = *state.pFirst;
    eroding.pWork = state.pSecond->pWork;

    MorphByRows<T> dilation(MorphOp::kDilate, region, *state.pFirst);
    MorphByRows<T> erosion(MorphOp::kErode, {region.src, work, region.size}, eroding);
    inTurns(region.size.height, eroding, [&](RowRange rows) {
        dilation.makeUpTo(rows.end);
        erosion.makeUpTo(rows.end);
        subtract({work.p, work.step}, result, region.dst, region.size.width * type.channels, rows);
    });
}

enum class AdvOperation { kOpen, kClose, kTophat, kBlackhat, kGradient };

template <class T>
void run(AdvOperation operation, const MorphRegion<T>& region, const QelMorphAdvState& state) {
    switch (operation) {
        case AdvOperation::kOpen:
            return twoSteps(MorphOp::kErode, Difference::kNone, region, state);
        case AdvOperation::kClose:
            return twoSteps(MorphOp::kDilate, Difference::kNone, region, state);
        case AdvOperation::kTophat:
            return twoSteps(MorphOp::kErode, Difference::kFromSource, region, state);
        case AdvOperation::kBlackhat:
            return twoSteps(MorphOp::kDilate, Difference::kLessSource, region, state);
        case AdvOperation::kGradient:
            return gradient(region, state);
    }
}

template <class T>
qelStatus morphAdv(AdvOperation operation, int channels, const MorphRegion<T>& region, int borderMode,
                   const QelMorphAdvState* pState) {
    const auto [src, dst, size] = region;
    const qelStatus status = Check()
                                 .pointers(src.p, dst.p, pState)
                                 .size(size)
                                 .steps(rowOf<T>(size.width, channels), src.step, dst.step)
                                 .require(borderMode == qelBorderRepl, qelStatusBadArg)
                                 .status();
    if (status != qelStatusOk) return status;
    // A smaller region than the state was made for is refused.
    if (size.width > pState->pFirst->maxWidth) return qelStatusBadSize;
    if (workStep(morphType<T>(channels), size.width) * size.height < pState->workSize) return qelStatusBadSize;

    run(operation, region, *pState);
    return qelStatusOk;
}

}  // namespace
}  // namespace qel

#define MORPH_ADV_STATE(getSize, init, initAlloc, T, channels)                                                         \
    qelStatus getSize(QelSize roiSize, const Qel8u* pMask, QelSize maskSize, int* pSize) {                             \
        return qel::morphAdvGetSize(                                                                                   \
            {qel::morphType<T>(channels), roiSize.width, pMask, maskSize, qel::centreOf(maskSize), false},             \
            roiSize.height, pSize);                                                                                    \
    }                                                                                                                  \
    qelStatus init(QelMorphAdvState* pState, QelSize roiSize, const Qel8u* pMask, QelSize maskSize, QelPoint anchor) { \
        return qel::morphAdvInit(pState, {qel::morphType<T>(channels), roiSize.width, pMask, maskSize, anchor, false}, \
                                 roiSize.height);                                                                      \
    }                                                                                                                  \
    qelStatus initAlloc(QelMorphAdvState** ppState, QelSize roiSize, const Qel8u* pMask, QelSize maskSize,             \
                        QelPoint anchor) {                                                                             \
        return qel::morphAdvInitAlloc(ppState, {qel::morphType<T>(channels), roiSize.width, pMask, maskSize, anchor},  \
                                      roiSize.height);                                                                 \
    }
MORPH_ADV_STATE(qeliMorphAdvGetSize_8u_C1R, qeliMorphAdvInit_8u_C1R, qeliMorphAdvInitAlloc_8u_C1R, Qel8u, 1)
MORPH_ADV_STATE(qeliMorphAdvGetSize_8u_C3R, qeliMorphAdvInit_8u_C3R, qeliMorphAdvInitAlloc_8u_C3R, Qel8u, 3)
MORPH_ADV_STATE(qeliMorphAdvGetSize_8u_C4R, qeliMorphAdvInit_8u_C4R, qeliMorphAdvInitAlloc_8u_C4R, Qel8u, 4)
MORPH_ADV_STATE(qeliMorphAdvGetSize_32f_C1R, qeliMorphAdvInit_32f_C1R, qeliMorphAdvInitAlloc_32f_C1R, Qel32f, 1)
MORPH_ADV_STATE(qeliMorphAdvGetSize_32f_C3R, qeliMorphAdvInit_32f_C3R, qeliMorphAdvInitAlloc_32f_C3R, Qel32f, 3)
MORPH_ADV_STATE(qeliMorphAdvGetSize_32f_C4R, qeliMorphAdvInit_32f_C4R, qeliMorphAdvInitAlloc_32f_C4R, Qel32f, 4)
#undef MORPH_ADV_STATE

qelStatus qeliMorphAdvFree(QelMorphAdvState* pState) {
    if (pState == nullptr) return qelStatusNullPointer;
    qel::qelsFree(pState->pFirst);
    qel::qelsFree(pState->pSecond);
    qel::qelsFree(pState->pWork);
    qel::qelsFree(pState);
    return qelStatusOk;
}

#define MORPH_ADV(name, operation, T, channels)                                                                        \
    qelStatus name(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize roiSize, int borderMode,                  \
                   QelMorphAdvState* pState) {                                                                         \
        return qel::morphAdv<T>(operation, channels, {{pSrc, srcStep}, {pDst, dstStep}, roiSize}, borderMode, pState); \
    }
MORPH_ADV(qeliMorphOpenBorder_8u_C1R, qel::AdvOperation::kOpen, Qel8u, 1)
MORPH_ADV(qeliMorphOpenBorder_8u_C3R, qel::AdvOperation::kOpen, Qel8u, 3)
MORPH_ADV(qeliMorphOpenBorder_8u_C4R, qel::AdvOperation::kOpen, Qel8u, 4)
MORPH_ADV(qeliMorphOpenBorder_32f_C1R, qel::AdvOperation::kOpen, Qel32f, 1)
MORPH_ADV(qeliMorphOpenBorder_32f_C3R, qel::AdvOperation::kOpen, Qel32f, 3)
MORPH_ADV(qeliMorphOpenBorder_32f_C4R, qel::AdvOperation::kOpen, Qel32f, 4)
MORPH_ADV(qeliMorphCloseBorder_8u_C1R, qel::AdvOperation::kClose, Qel8u, 1)
MORPH_ADV(qeliMorphCloseBorder_8u_C3R, qel::AdvOperation::kClose, Qel8u, 3)
MORPH_ADV(qeliMorphCloseBorder_8u_C4R, qel::AdvOperation::kClose, Qel8u, 4)
MORPH_ADV(qeliMorphCloseBorder_32f_C1R, qel::AdvOperation::kClose, Qel32f, 1)
MORPH_ADV(qeliMorphCloseBorder_32f_C3R, qel::AdvOperation::kClose, Qel32f, 3)
MORPH_ADV(qeliMorphCloseBorder_32f_C4R, qel::AdvOperation::kClose, Qel32f, 4)
MORPH_ADV(qeliMorphTophatBorder_8u_C1R, qel::AdvOperation::kTophat, Qel8u, 1)
MORPH_ADV(qeliMorphTophatBorder_8u_C3R, qel::AdvOperation::kTophat, Qel8u, 3)
MORPH_ADV(qeliMorphTophatBorder_8u_C4R, qel::AdvOperation::kTophat, Qel8u, 4)
MORPH_ADV(qeliMorphTophatBorder_32f_C1R, qel::AdvOperation::kTophat, Qel32f, 1)
MORPH_ADV(qeliMorphTophatBorder_32f_C3R, qel::AdvOperation::kTophat, Qel32f, 3)
MORPH_ADV(qeliMorphTophatBorder_32f_C4R, qel::AdvOperation::kTophat, Qel32f, 4)
MORPH_ADV(qeliMorphBlackhatBorder_8u_C1R, qel::AdvOperation::kBlackhat, Qel8u, 1)
MORPH_ADV(qeliMorphBlackhatBorder_8u_C3R, qel::AdvOperation::kBlackhat, Qel8u, 3)
MORPH_ADV(qeliMorphBlackhatBorder_8u_C4R, qel::AdvOperation::kBlackhat, Qel8u, 4)
MORPH_ADV(qeliMorphBlackhatBorder_32f_C1R, qel::AdvOperation::kBlackhat, Qel32f, 1)
MORPH_ADV(qeliMorphBlackhatBorder_32f_C3R, qel::AdvOperation::kBlackhat, Qel32f, 3)
MORPH_ADV(qeliMorphBlackhatBorder_32f_C4R, qel::AdvOperation::kBlackhat, Qel32f, 4)
MORPH_ADV(qeliMorphGradientBorder_8u_C1R, qel::AdvOperation::kGradient, Qel8u, 1)
MORPH_ADV(qeliMorphGradientBorder_8u_C3R, qel::AdvOperation::kGradient, Qel8u, 3)
MORPH_ADV(qeliMorphGradientBorder_8u_C4R, qel::AdvOperation::kGradient, Qel8u, 4)
MORPH_ADV(qeliMorphGradientBorder_32f_C1R, qel::AdvOperation::kGradient, Qel32f, 1)
MORPH_ADV(qeliMorphGradientBorder_32f_C3R, qel::AdvOperation::kGradient, Qel32f, 3)
MORPH_ADV(qeliMorphGradientBorder_32f_C4R, qel::AdvOperation::kGradient, Qel32f, 4)
#undef MORPH_ADV
