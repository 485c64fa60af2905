#include <cstring>

#include "frame/check.h"
#include "frame/scratch.h"
#include "pyramid/srhn_kernels.h"
#include "qelcore.h"
#include "qelcv/pyramid.h"

namespace qel {
namespace {

// A copy of the table in which each row of taps begins `stride` floats behind the one before.
void spread(const Qel32f* pCoeffs, int64_t rows, int taps, int stride, Qel32f* pTable) {
    for (int64_t i = 0; i < rows; ++i) {
        std::memcpy(pTable + i * stride, pCoeffs + i * taps, sizeof(Qel32f) * size_t(taps));
        for (int k = taps; k < stride; ++k) pTable[i * stride + k] = 0;
    }
}

struct Psf {
    int rows, taps, stride;

    int64_t entry() const { return int64_t{rows} * stride; }
};
constexpr Psf kPsf2x2 = {1, 4, 4}, kPsf3x3 = {3, 3, 4};

qelStatus initAlloc(QelSRHNState** ppState, const Qel32f* pCoeffs, int tableSize, const Psf& psf) {
    const qelStatus status = Check().pointers(ppState, pCoeffs).length(tableSize).status();
    if (status != qelStatusOk) return status;

    auto* const state = static_cast<QelSRHNState*>(qelMalloc(int{sizeof(QelSRHNState)}));
    if (state == nullptr) return qelStatusNoMemory;
    const int64_t bytes = tableSize * psf.entry() * int64_t{sizeof(Qel32f)};
    auto* const table = static_cast<Qel32f*>(bytes <= INT_MAX ? qelMalloc(static_cast<int>(bytes)) : nullptr);
    if (table == nullptr) {
        qelFree(state);
        return qelStatusNoMemory;
    }
    spread(pCoeffs, int64_t{tableSize} * psf.rows, psf.taps, psf.stride, table);
    state->pCoeffs = table;
    *ppState = state;
    return qelStatusOk;
}

qelStatus release(QelSRHNState* pState) {
    const qelStatus status = Check().pointers(pState).status();
    if (status != qelStatusOk) return status;

    if (pState->pCoeffs != nullptr) qelFree(pState->pCoeffs);
    qelFree(pState);
    return qelStatusOk;
}

// A step that is no multiple of a float's size is a bad one like any other.
bool isStep(int step, int taps) { return step >= taps * int{sizeof(Qel32f)} && step % int{sizeof(Qel32f)} == 0; }

template <class T>
qelStatus calcResidual(const Qel32f* pHR, int hrStep, const T* pLR, const TapList& list, Qel32f* pResidual,
                       const QelSRHNState* pState, int taps, const Kernel<ResidualKernel<T>>& kernel) {
    const qelStatus status = Check()
                                 .pointers(pHR, pLR, list.pOffsets, list.pCoeffIdx, pResidual, pState)
                                 .length(list.len)
                                 .require(isStep(hrStep, taps), qelStatusBadStep)
                                 .status();
    if (status == qelStatusOk) kernel(pHR, hrStep, pLR, list, pResidual, pState->pCoeffs);
    return status;
}

qelStatus updateGradient(Qel32f* pGrad, int gradStep, const TapList& list, const Qel32f* pResidual,
                         const Qel8u* pWeightIdx, const Qel32f* pWeights, const QelSRHNState* pState, int taps,
                         const Kernel<GradientKernel>& kernel) {
    const qelStatus status =
        Check()
            .pointers(pGrad, list.pOffsets, list.pCoeffIdx, pResidual, pWeightIdx, pWeights, pState)
            .length(list.len)
            .require(isStep(gradStep, taps), qelStatusBadStep)
            .status();
    if (status == qelStatusOk) kernel(pGrad, gradStep, list, pResidual, pWeightIdx, pWeights, pState->pCoeffs);
    return status;
}

}  // namespace
}  // namespace qel

qelStatus qeliSRHNInitAlloc_PSF2x2(QelSRHNState** ppState, const Qel32f* pCoeffs, int tableSize) {
    return qel::initAlloc(ppState, pCoeffs, tableSize, qel::kPsf2x2);
}
qelStatus qeliSRHNInitAlloc_PSF3x3(QelSRHNState** ppState, const Qel32f* pCoeffs, int tableSize) {
    return qel::initAlloc(ppState, pCoeffs, tableSize, qel::kPsf3x3);
}
qelStatus qeliSRHNFree_PSF2x2(QelSRHNState* pState) { return qel::release(pState); }
qelStatus qeliSRHNFree_PSF3x3(QelSRHNState* pState) { return qel::release(pState); }

#define SRHN_CALC_RESIDUAL(name, T, taps, kernel)                                                                      \
    qelStatus name(const Qel32f* pHR, int hrStep, const T* pLR, const unsigned int* pOffsets, const Qel16u* pCoeffIdx, \
                   Qel32f* pResidual, int len, const QelSRHNState* pState) {                                           \
        return qel::calcResidual<T>(pHR, hrStep, pLR, {pOffsets, pCoeffIdx, len}, pResidual, pState, taps, kernel);    \
    }
SRHN_CALC_RESIDUAL(qeliSRHNCalcResidual_PSF2x2_8u32f_C1R, Qel8u, 2, qel::ownSRHNCalcResidual_PSF2x2_8u32f_C1R)
SRHN_CALC_RESIDUAL(qeliSRHNCalcResidual_PSF2x2_16u32f_C1R, Qel16u, 2, qel::ownSRHNCalcResidual_PSF2x2_16u32f_C1R)
SRHN_CALC_RESIDUAL(qeliSRHNCalcResidual_PSF3x3_8u32f_C1R, Qel8u, 3, qel::ownSRHNCalcResidual_PSF3x3_8u32f_C1R)
SRHN_CALC_RESIDUAL(qeliSRHNCalcResidual_PSF3x3_16u32f_C1R, Qel16u, 3, qel::ownSRHNCalcResidual_PSF3x3_16u32f_C1R)
#undef SRHN_CALC_RESIDUAL

#define SRHN_UPDATE_GRADIENT(name, taps, kernel)                                                                 \
    qelStatus name(Qel32f* pGrad, int gradStep, const unsigned int* pOffsets, const Qel16u* pCoeffIdx,           \
                   const Qel32f* pResidual, const Qel8u* pWeightIdx, int len, const Qel32f* pWeights,            \
                   const QelSRHNState* pState) {                                                                 \
        return qel::updateGradient(pGrad, gradStep, {pOffsets, pCoeffIdx, len}, pResidual, pWeightIdx, pWeights, \
                                   pState, taps, kernel);                                                        \
    }
SRHN_UPDATE_GRADIENT(qeliSRHNUpdateGradient_PSF2x2_32f_C1R, 2, qel::ownSRHNUpdateGradient_PSF2x2_32f_C1R)
SRHN_UPDATE_GRADIENT(qeliSRHNUpdateGradient_PSF3x3_32f_C1R, 3, qel::ownSRHNUpdateGradient_PSF3x3_32f_C1R)
#undef SRHN_UPDATE_GRADIENT
