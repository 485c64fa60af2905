#include "digests/digest.h"
#include "qelcv/morph.h"

namespace {

const std::vector<Qel8u> kMask = {0, 1, 0, 1, 1, 1, 0, 1, 1, 1, 1, 0, 0, 1, 0};
constexpr QelSize kMaskSize = {5, 3};
constexpr QelPoint kAnchor = {2, 1};

template <auto initAlloc>
struct ByMask {
    template <class T>
    qelStatus operator()(digest::Call& c,
                         qelStatus (*function)(const T*, int, T*, int, QelSize, int, QelMorphAdvState*)) const {
        const auto src = c.input<T>();
        const auto dst = c.output<T>();
        QelMorphAdvState* state = nullptr;
        initAlloc(&state, c.size(), c.array(kMask), kMaskSize, kAnchor);
        const qelStatus status = function(src.data, src.step, dst.data, dst.step, c.size(), qelBorderRepl, state);
        qeliMorphAdvFree(state);
        return status;
    }
};

template <auto getSize>
struct Init {
    qelStatus operator()(digest::Call& c,
                         qelStatus (*function)(QelMorphAdvState*, QelSize, const Qel8u*, QelSize, QelPoint)) const {
        int bytes = 0;
        getSize(c.size(), c.array(kMask), kMaskSize, &bytes);
        return function(reinterpret_cast<QelMorphAdvState*>(c.scratch(bytes)), c.size(), c.array(kMask), kMaskSize,
                        kAnchor);
    }
};

qelStatus initAlloc(digest::Call& c,
                    qelStatus (*function)(QelMorphAdvState**, QelSize, const Qel8u*, QelSize, QelPoint)) {
    QelMorphAdvState* state = nullptr;
    const qelStatus status = function(&state, c.size(), c.array(kMask), kMaskSize, kAnchor);
    qeliMorphAdvFree(state);
    return status;
}

qelStatus freeState(digest::Call& c, qelStatus (*function)(QelMorphAdvState*)) {
    QelMorphAdvState* state = nullptr;
    qeliMorphAdvInitAlloc_8u_C1R(&state, c.size(), c.array(kMask), kMaskSize, kAnchor);
    return function(state);
}

qelStatus query(digest::Call& c, qelStatus (*function)(QelSize, const Qel8u*, QelSize, int*)) {
    return function(c.size(), c.array(kMask), kMaskSize, c.results<int>(1));
}

}  // namespace

DIGESTS(ByMask<qeliMorphAdvInitAlloc_8u_C1R>(), qeliMorphOpenBorder_8u_C1R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_8u_C1R>(), qeliMorphCloseBorder_8u_C1R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_8u_C1R>(), qeliMorphTophatBorder_8u_C1R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_8u_C1R>(), qeliMorphBlackhatBorder_8u_C1R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_8u_C1R>(), qeliMorphGradientBorder_8u_C1R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_8u_C3R>(), qeliMorphOpenBorder_8u_C3R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_8u_C3R>(), qeliMorphCloseBorder_8u_C3R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_8u_C3R>(), qeliMorphTophatBorder_8u_C3R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_8u_C3R>(), qeliMorphBlackhatBorder_8u_C3R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_8u_C3R>(), qeliMorphGradientBorder_8u_C3R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_8u_C4R>(), qeliMorphOpenBorder_8u_C4R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_8u_C4R>(), qeliMorphCloseBorder_8u_C4R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_8u_C4R>(), qeliMorphTophatBorder_8u_C4R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_8u_C4R>(), qeliMorphBlackhatBorder_8u_C4R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_8u_C4R>(), qeliMorphGradientBorder_8u_C4R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_32f_C1R>(), qeliMorphOpenBorder_32f_C1R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_32f_C1R>(), qeliMorphCloseBorder_32f_C1R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_32f_C1R>(), qeliMorphTophatBorder_32f_C1R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_32f_C1R>(), qeliMorphBlackhatBorder_32f_C1R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_32f_C1R>(), qeliMorphGradientBorder_32f_C1R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_32f_C3R>(), qeliMorphOpenBorder_32f_C3R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_32f_C3R>(), qeliMorphCloseBorder_32f_C3R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_32f_C3R>(), qeliMorphTophatBorder_32f_C3R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_32f_C3R>(), qeliMorphBlackhatBorder_32f_C3R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_32f_C3R>(), qeliMorphGradientBorder_32f_C3R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_32f_C4R>(), qeliMorphOpenBorder_32f_C4R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_32f_C4R>(), qeliMorphCloseBorder_32f_C4R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_32f_C4R>(), qeliMorphTophatBorder_32f_C4R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_32f_C4R>(), qeliMorphBlackhatBorder_32f_C4R);
DIGESTS(ByMask<qeliMorphAdvInitAlloc_32f_C4R>(), qeliMorphGradientBorder_32f_C4R);

DIGESTS(Init<qeliMorphAdvGetSize_8u_C1R>(), qeliMorphAdvInit_8u_C1R);
DIGESTS(Init<qeliMorphAdvGetSize_8u_C3R>(), qeliMorphAdvInit_8u_C3R);
DIGESTS(Init<qeliMorphAdvGetSize_8u_C4R>(), qeliMorphAdvInit_8u_C4R);
DIGESTS(Init<qeliMorphAdvGetSize_32f_C1R>(), qeliMorphAdvInit_32f_C1R);
DIGESTS(Init<qeliMorphAdvGetSize_32f_C3R>(), qeliMorphAdvInit_32f_C3R);
DIGESTS(Init<qeliMorphAdvGetSize_32f_C4R>(), qeliMorphAdvInit_32f_C4R);

DIGESTS(initAlloc, qeliMorphAdvInitAlloc_8u_C1R, qeliMorphAdvInitAlloc_8u_C3R, qeliMorphAdvInitAlloc_8u_C4R,
        qeliMorphAdvInitAlloc_32f_C1R, qeliMorphAdvInitAlloc_32f_C3R, qeliMorphAdvInitAlloc_32f_C4R);
DIGESTS(freeState, qeliMorphAdvFree);
DIGESTS_UNDER(({.sizeQuery = true}), query, qeliMorphAdvGetSize_8u_C1R, qeliMorphAdvGetSize_8u_C3R,
              qeliMorphAdvGetSize_8u_C4R, qeliMorphAdvGetSize_32f_C1R, qeliMorphAdvGetSize_32f_C3R,
              qeliMorphAdvGetSize_32f_C4R);
