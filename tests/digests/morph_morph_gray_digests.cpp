#include "digests/digest.h"
#include "qelcv/morph.h"

namespace {

constexpr QelSize kMaskSize = {5, 3};
constexpr QelPoint kAnchor = {2, 1};

// The functions of a sample type and the type of its mask.
template <class Mask, auto getSize, auto initAlloc, auto free>
struct Gray {
    static const Mask* mask(digest::Call& c) { return c.array<Mask>({0, 3, 0, 5, 9, 7, 0, 2, 2, 2, 40, 0, 0, 1, 0}); }

    template <class T>
    qelStatus operator()(digest::Call& c,
                         qelStatus (*function)(const T*, int, T*, int, QelSize, int, const QelMorphGrayState*)) const {
        const auto src = c.input<T>();
        const auto dst = c.output<T>();
        QelMorphGrayState* state = nullptr;
        initAlloc(&state, c.size(), mask(c), kMaskSize, kAnchor);
        const qelStatus status = function(src.data, src.step, dst.data, dst.step, c.size(), qelBorderRepl, state);
        free(state);
        return status;
    }
    // Init, InitAlloc, Free and GetSize.
    qelStatus operator()(digest::Call& c,
                         qelStatus (*function)(QelMorphGrayState*, QelSize, const Mask*, QelSize, QelPoint)) const {
        int bytes = 0;
        getSize(c.size(), mask(c), kMaskSize, &bytes);
        return function(reinterpret_cast<QelMorphGrayState*>(c.scratch(bytes)), c.size(), mask(c), kMaskSize, kAnchor);
    }
    qelStatus operator()(digest::Call& c,
                         qelStatus (*function)(QelMorphGrayState**, QelSize, const Mask*, QelSize, QelPoint)) const {
        QelMorphGrayState* state = nullptr;
        const qelStatus status = function(&state, c.size(), mask(c), kMaskSize, kAnchor);
        free(state);
        return status;
    }
    qelStatus operator()(digest::Call& c, qelStatus (*function)(QelMorphGrayState*)) const {
        QelMorphGrayState* state = nullptr;
        initAlloc(&state, c.size(), mask(c), kMaskSize, kAnchor);
        return function(state);
    }
    qelStatus operator()(digest::Call& c, qelStatus (*function)(QelSize, const Mask*, QelSize, int*)) const {
        return function(c.size(), mask(c), kMaskSize, c.results<int>(1));
    }
};

using Gray8u = Gray<Qel32s, qeliMorphGrayGetSize_8u_C1R, qeliMorphGrayInitAlloc_8u_C1R, qeliMorphGrayFree_8u_C1R>;
using Gray32f = Gray<Qel32f, qeliMorphGrayGetSize_32f_C1R, qeliMorphGrayInitAlloc_32f_C1R, qeliMorphGrayFree_32f_C1R>;

}  // namespace

DIGESTS(Gray8u(), qeliMorphGrayInit_8u_C1R, qeliMorphGrayInitAlloc_8u_C1R, qeliMorphGrayFree_8u_C1R,
        qeliGrayDilateBorder_8u_C1R, qeliGrayErodeBorder_8u_C1R);
DIGESTS_UNDER(({.sizeQuery = true}), Gray8u(), qeliMorphGrayGetSize_8u_C1R);
DIGESTS(Gray32f(), qeliMorphGrayInit_32f_C1R, qeliMorphGrayInitAlloc_32f_C1R, qeliMorphGrayFree_32f_C1R,
        qeliGrayDilateBorder_32f_C1R, qeliGrayErodeBorder_32f_C1R);
DIGESTS_UNDER(({.sizeQuery = true}), Gray32f(), qeliMorphGrayGetSize_32f_C1R);
