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
                         qelStatus (*function)(const T*, int, T*, int, QelSize, int, QelMorphState*)) const {
        const auto src = c.input<T>();
        const auto dst = c.output<T>();
        QelMorphState* state = nullptr;
        initAlloc(c.size().width, c.array(kMask), kMaskSize, kAnchor, &state);
        const qelStatus status = function(src.data, src.step, dst.data, dst.step, c.size(), qelBorderRepl, state);
        qeliMorphologyFree(state);
        return status;
    }
};

template <auto getSize>
struct Init {
    qelStatus operator()(digest::Call& c,
                         qelStatus (*function)(int, const Qel8u*, QelSize, QelPoint, QelMorphState*)) const {
        int bytes = 0;
        getSize(c.size().width, c.array(kMask), kMaskSize, &bytes);
        return function(c.size().width, c.array(kMask), kMaskSize, kAnchor,
                        reinterpret_cast<QelMorphState*>(c.scratch(bytes)));
    }
};

qelStatus initAlloc(digest::Call& c, qelStatus (*function)(int, const Qel8u*, QelSize, QelPoint, QelMorphState**)) {
    QelMorphState* state = nullptr;
    const qelStatus status = function(c.size().width, c.array(kMask), kMaskSize, kAnchor, &state);
    qeliMorphologyFree(state);
    return status;
}

qelStatus freeState(digest::Call& c, qelStatus (*function)(QelMorphState*)) {
    QelMorphState* state = nullptr;
    qeliMorphologyInitAlloc_8u_C1R(c.size().width, c.array(kMask), kMaskSize, kAnchor, &state);
    return function(state);
}

qelStatus query(digest::Call& c, qelStatus (*function)(int, const Qel8u*, QelSize, int*)) {
    return function(c.size().width, c.array(kMask), kMaskSize, c.results<int>(1));
}

}  // namespace

DIGESTS(ByMask<qeliMorphologyInitAlloc_8u_C1R>(), qeliDilateBorderReplicate_8u_C1R);
DIGESTS(ByMask<qeliMorphologyInitAlloc_8u_C1R>(), qeliErodeBorderReplicate_8u_C1R);
DIGESTS(ByMask<qeliMorphologyInitAlloc_8u_C3R>(), qeliDilateBorderReplicate_8u_C3R);
DIGESTS(ByMask<qeliMorphologyInitAlloc_8u_C3R>(), qeliErodeBorderReplicate_8u_C3R);
DIGESTS(ByMask<qeliMorphologyInitAlloc_8u_C4R>(), qeliDilateBorderReplicate_8u_C4R);
DIGESTS(ByMask<qeliMorphologyInitAlloc_8u_C4R>(), qeliErodeBorderReplicate_8u_C4R);
DIGESTS(ByMask<qeliMorphologyInitAlloc_32f_C1R>(), qeliDilateBorderReplicate_32f_C1R);
DIGESTS(ByMask<qeliMorphologyInitAlloc_32f_C1R>(), qeliErodeBorderReplicate_32f_C1R);
DIGESTS(ByMask<qeliMorphologyInitAlloc_32f_C3R>(), qeliDilateBorderReplicate_32f_C3R);
DIGESTS(ByMask<qeliMorphologyInitAlloc_32f_C3R>(), qeliErodeBorderReplicate_32f_C3R);
DIGESTS(ByMask<qeliMorphologyInitAlloc_32f_C4R>(), qeliDilateBorderReplicate_32f_C4R);
DIGESTS(ByMask<qeliMorphologyInitAlloc_32f_C4R>(), qeliErodeBorderReplicate_32f_C4R);

DIGESTS(Init<qeliMorphologyGetSize_8u_C1R>(), qeliMorphologyInit_8u_C1R);
DIGESTS(Init<qeliMorphologyGetSize_8u_C3R>(), qeliMorphologyInit_8u_C3R);
DIGESTS(Init<qeliMorphologyGetSize_8u_C4R>(), qeliMorphologyInit_8u_C4R);
DIGESTS(Init<qeliMorphologyGetSize_32f_C1R>(), qeliMorphologyInit_32f_C1R);
DIGESTS(Init<qeliMorphologyGetSize_32f_C3R>(), qeliMorphologyInit_32f_C3R);
DIGESTS(Init<qeliMorphologyGetSize_32f_C4R>(), qeliMorphologyInit_32f_C4R);

DIGESTS(initAlloc, qeliMorphologyInitAlloc_8u_C1R, qeliMorphologyInitAlloc_8u_C3R, qeliMorphologyInitAlloc_8u_C4R,
        qeliMorphologyInitAlloc_32f_C1R, qeliMorphologyInitAlloc_32f_C3R, qeliMorphologyInitAlloc_32f_C4R);
DIGESTS(freeState, qeliMorphologyFree);
DIGESTS_UNDER(({.sizeQuery = true}), query, qeliMorphologyGetSize_8u_C1R, qeliMorphologyGetSize_8u_C3R,
              qeliMorphologyGetSize_8u_C4R, qeliMorphologyGetSize_32f_C1R, qeliMorphologyGetSize_32f_C3R,
              qeliMorphologyGetSize_32f_C4R);
