#include "digests/digest.h"
#include "qelcv/pyramid.h"

namespace {

constexpr int kTable = 5, kLen = 77;
constexpr QelSize kImage = {40, 30};

// Samples all over an image of high resolution.
struct List {
    const unsigned int* pOffsets;
    const Qel16u* pCoeffIdx;

    List(digest::Call& c, int step) {
        std::vector<unsigned int> offsets;
        std::vector<Qel16u> entries;
        for (unsigned int i = 0; i < kLen; ++i) {
            offsets.push_back(i * 7 % 27 * unsigned(step / 4) + i * 11 % 37);
            entries.push_back(Qel16u(i % kTable));
        }
        pOffsets = c.array(offsets);
        pCoeffIdx = c.array(entries);
    }
};

using InitAlloc = qelStatus(QelSRHNState**, const Qel32f*, int);
using Free = qelStatus(QelSRHNState*);

struct State {
    State(digest::Call& c, InitAlloc* initAlloc, Free* release) : release_(release) {
        initAlloc(&p, c.numbers<Qel32f>(kTable * 9), kTable);
    }
    ~State() { release_(p); }

    QelSRHNState* p = nullptr;

private:
    Free* release_;
};

template <class T, InitAlloc* initAlloc, Free* release>
qelStatus residuals(digest::Call& c, qelStatus (*function)(const Qel32f*, int, const T*, const unsigned int*,
                                                           const Qel16u*, Qel32f*, int, const QelSRHNState*)) {
    const auto image = c.input<Qel32f>(kImage, 1);
    const List list(c, image.step);
    const State state(c, initAlloc, release);
    return function(image.data, image.step, c.numbers<T>(kLen), list.pOffsets, list.pCoeffIdx, c.results<Qel32f>(kLen),
                    kLen, state.p);
}

template <InitAlloc* initAlloc, Free* release>
qelStatus gradient(digest::Call& c, decltype(&qeliSRHNUpdateGradient_PSF2x2_32f_C1R) function) {
    const auto image = c.output<Qel32f>(kImage, 1);
    const List list(c, image.step);
    const State state(c, initAlloc, release);
    return function(image.data, image.step, list.pOffsets, list.pCoeffIdx, c.numbers<Qel32f>(kLen),
                    c.numbers<Qel8u>(kLen), kLen, c.numbers<Qel32f>(256), state.p);
}

template <Free* release, int kFloats>
qelStatus table(digest::Call& c, InitAlloc* function) {
    QelSRHNState* state = nullptr;
    const qelStatus status = function(&state, c.numbers<Qel32f>(kTable * 9), kTable);
    if (status == qelStatusOk) std::memcpy(c.results<Qel32f>(kFloats), state->pCoeffs, kFloats * sizeof(Qel32f));
    release(state);
    return status;
}

template <InitAlloc* initAlloc>
qelStatus released(digest::Call& c, Free* function) {
    QelSRHNState* state = nullptr;
    initAlloc(&state, c.numbers<Qel32f>(kTable * 9), kTable);
    return function(state);
}

}  // namespace

DIGESTS((residuals<Qel8u, qeliSRHNInitAlloc_PSF2x2, qeliSRHNFree_PSF2x2>), qeliSRHNCalcResidual_PSF2x2_8u32f_C1R);
DIGESTS((residuals<Qel16u, qeliSRHNInitAlloc_PSF2x2, qeliSRHNFree_PSF2x2>), qeliSRHNCalcResidual_PSF2x2_16u32f_C1R);
DIGESTS((residuals<Qel8u, qeliSRHNInitAlloc_PSF3x3, qeliSRHNFree_PSF3x3>), qeliSRHNCalcResidual_PSF3x3_8u32f_C1R);
DIGESTS((residuals<Qel16u, qeliSRHNInitAlloc_PSF3x3, qeliSRHNFree_PSF3x3>), qeliSRHNCalcResidual_PSF3x3_16u32f_C1R);
DIGESTS((gradient<qeliSRHNInitAlloc_PSF2x2, qeliSRHNFree_PSF2x2>), qeliSRHNUpdateGradient_PSF2x2_32f_C1R);
DIGESTS((gradient<qeliSRHNInitAlloc_PSF3x3, qeliSRHNFree_PSF3x3>), qeliSRHNUpdateGradient_PSF3x3_32f_C1R);
DIGESTS((table<qeliSRHNFree_PSF2x2, kTable * 4>), qeliSRHNInitAlloc_PSF2x2);
DIGESTS((table<qeliSRHNFree_PSF3x3, kTable * 12>), qeliSRHNInitAlloc_PSF3x3);
DIGESTS(released<qeliSRHNInitAlloc_PSF2x2>, qeliSRHNFree_PSF2x2);
DIGESTS(released<qeliSRHNInitAlloc_PSF3x3>, qeliSRHNFree_PSF3x3);
