#include <algorithm>
#include <climits>
#include <cstring>

#include "frame/check.h"
#include "frame/scratch.h"
#include "frame/vector_primitives.h"
#include "morph/morph_gray_kernels.h"
#include "qelcv/morph.h"

namespace qel {
namespace {

// What a state begins with. It stands at any address, so it is copied in and out.
struct MorphGrayRecord {
    const void* pMaskValues;  // behind the record
    Qel32s maskWidth;
    Qel32s maskHeight;
    Qel32s anchorX;
    Qel32s anchorY;
    Qel32s maxWidth;
    Qel32s maxHeight;
};
static_assert(sizeof(MorphGrayRecord) == 24 + sizeof(void*));

// Of masks beyond all bounds only that they are.
int64_t stateBytes(QelSize maskSize) {
    const int64_t values = int64_t{maskSize.width} * maskSize.height;
    return std::min<int64_t>(values, INT_MAX) * 4 + int64_t{sizeof(MorphGrayRecord)};
}

template <class Value>
qelStatus morphGrayGetSize(QelSize roiSize, const Value* pMask, QelSize maskSize, int* pSize) {
    const qelStatus status = Check().pointers(pMask, pSize).size(roiSize).size(maskSize).status();
    if (status != qelStatusOk) return status;

    return writeBufferSize(stateBytes(maskSize), pSize);
}

// What Init and InitAlloc test; `pWhere` takes the state or leads to it.
qelStatus checkState(const void* pMask, const void* pWhere, QelSize roiSize, QelSize maskSize, QelPoint anchor) {
    const auto within = [](int at, int count) { return at >= 0 && at < count; };
    return Check()
        .pointers(pMask, pWhere)
        .size(roiSize)
        .size(maskSize)
        .require(within(anchor.x, maskSize.width) && within(anchor.y, maskSize.height), qelStatusBadAnchor)
        .status();
}

template <class Value>
qelStatus morphGrayInit(QelMorphGrayState* pState, QelSize roiSize, const Value* pMask, QelSize maskSize,
                        QelPoint anchor) {
    const qelStatus status = checkState(pMask, pState, roiSize, maskSize, anchor);
    if (status != qelStatusOk) return status;

    char* const values = reinterpret_cast<char*>(pState) + sizeof(MorphGrayRecord);
    const MorphGrayRecord record = {values,   maskSize.width, maskSize.height, anchor.x,
                                    anchor.y, roiSize.width,  roiSize.height};
    std::memcpy(pState, &record, sizeof(record));
    copyBytes(pMask, values, size_t(maskSize.width) * size_t(maskSize.height) * sizeof(Value));
    return qelStatusOk;
}

template <class Value>
qelStatus morphGrayInitAlloc(QelMorphGrayState** ppState, QelSize roiSize, const Value* pMask, QelSize maskSize,
                             QelPoint anchor) {
    const qelStatus status = checkState(pMask, ppState, roiSize, maskSize, anchor);
    if (status != qelStatusOk) return status;

    const int64_t bytes = stateBytes(maskSize);
    Qel8u* const block = bytes <= INT_MAX ? qelsMalloc_8u(static_cast<int>(bytes)) : nullptr;
    if (block == nullptr) return qelStatusNoMemory;
    *ppState = reinterpret_cast<QelMorphGrayState*>(block);
    return morphGrayInit(*ppState, roiSize, pMask, maskSize, anchor);
}

qelStatus morphGrayFree(QelMorphGrayState* pState) {
    const qelStatus status = Check().pointers(pState).status();
    if (status == qelStatusOk) qelsFree(pState);
    return status;
}

template <class T, class Value>
qelStatus grayMorph(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize roiSize, int borderMode,
                    const QelMorphGrayState* pState, const Kernel<GrayMorphKernel<T, Value>>& kernel) {
    Check check;
    check.pointers(pSrc, pDst, pState)
        .size(roiSize)
        .steps(rowOf<T>(roiSize.width), srcStep, dstStep)
        .require(borderMode == qelBorderRepl, qelStatusBadArg);
    if (check.status() != qelStatusOk) return check.status();

    MorphGrayRecord state;
    std::memcpy(&state, pState, sizeof(state));
    if (roiSize.width > state.maxWidth || roiSize.height > state.maxHeight) return qelStatusBadSize;

    kernel(pSrc, srcStep, pDst, dstStep, roiSize,
           {static_cast<const Value*>(state.pMaskValues), state.maskWidth, state.maskHeight, state.anchorX,
            state.anchorY});
    return qelStatusOk;
}

}  // namespace
}  // namespace qel

#define MORPH_GRAY_GET_SIZE(name, Value)                                                \
    qelStatus name(QelSize roiSize, const Value* pMask, QelSize maskSize, int* pSize) { \
        return qel::morphGrayGetSize(roiSize, pMask, maskSize, pSize);                  \
    }
MORPH_GRAY_GET_SIZE(qeliMorphGrayGetSize_8u_C1R, Qel32s)
MORPH_GRAY_GET_SIZE(qeliMorphGrayGetSize_32f_C1R, Qel32f)
#undef MORPH_GRAY_GET_SIZE

#define MORPH_GRAY_INIT(name, Value)                                                                 \
    qelStatus name(QelMorphGrayState* pState, QelSize roiSize, const Value* pMask, QelSize maskSize, \
                   QelPoint anchor) {                                                                \
        return qel::morphGrayInit(pState, roiSize, pMask, maskSize, anchor);                         \
    }
MORPH_GRAY_INIT(qeliMorphGrayInit_8u_C1R, Qel32s)
MORPH_GRAY_INIT(qeliMorphGrayInit_32f_C1R, Qel32f)
#undef MORPH_GRAY_INIT

#define MORPH_GRAY_INIT_ALLOC(name, Value)                                                             \
    qelStatus name(QelMorphGrayState** ppState, QelSize roiSize, const Value* pMask, QelSize maskSize, \
                   QelPoint anchor) {                                                                  \
        return qel::morphGrayInitAlloc(ppState, roiSize, pMask, maskSize, anchor);                     \
    }
MORPH_GRAY_INIT_ALLOC(qeliMorphGrayInitAlloc_8u_C1R, Qel32s)
MORPH_GRAY_INIT_ALLOC(qeliMorphGrayInitAlloc_32f_C1R, Qel32f)
#undef MORPH_GRAY_INIT_ALLOC

qelStatus qeliMorphGrayFree_8u_C1R(QelMorphGrayState* pState) { return qel::morphGrayFree(pState); }
qelStatus qeliMorphGrayFree_32f_C1R(QelMorphGrayState* pState) { return qel::morphGrayFree(pState); }

#define GRAY_MORPH(name, T, kernel)                                                                   \
    qelStatus name(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize roiSize, int borderMode, \
                   const QelMorphGrayState* pState) {                                                 \
        return qel::grayMorph(pSrc, srcStep, pDst, dstStep, roiSize, borderMode, pState, kernel);     \
    }
GRAY_MORPH(qeliGrayDilateBorder_8u_C1R, Qel8u, qel::ownGrayDilateBorder_8u_C1R)
GRAY_MORPH(qeliGrayDilateBorder_32f_C1R, Qel32f, qel::ownGrayDilateBorder_32f_C1R)
GRAY_MORPH(qeliGrayErodeBorder_8u_C1R, Qel8u, qel::ownGrayErodeBorder_8u_C1R)
GRAY_MORPH(qeliGrayErodeBorder_32f_C1R, Qel32f, qel::ownGrayErodeBorder_32f_C1R)
#undef GRAY_MORPH
