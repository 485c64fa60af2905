#include "digests/digest.h"
#include "qelcv/detect.h"

namespace {

// A stage of classifiers with 2, 3 and 2 rectangles, of which the second may be tilted.
template <class T>
struct Stage {
    static constexpr QelRect kRects[] = {{8, 2, 3, 4}, {9, 3, 2, 2}, {7, 1, 4, 3}, {8, 1, 2, 3},
                                         {9, 2, 2, 2}, {7, 0, 5, 2}, {8, 4, 1, 3}};

    // An initialiser called with the arrays.
    template <class Init>
    static qelStatus init(digest::Call& c, Init function, QelHaarClassifierState** pState) {
        return function(pState, c.array(std::vector<QelRect>(std::begin(kRects), std::end(kRects))),
                        c.array<T>({-1, 3, -1, 2, 2, -1, 2}), c.array<T>({1, -2, 3}), c.array<T>({5, -3, 2}),
                        c.array<T>({-4, 6, 1}), c.array<int>({2, 3, 2}), 3);
    }
    static QelHaarClassifierState* make(digest::Call& c) {
        QelHaarClassifierState* state = nullptr;
        if constexpr (std::is_same_v<T, Qel32f>) {
            init(c, qeliHaarClassifierInitAlloc_32f, &state);
        } else {
            init(c, qeliHaarClassifierInitAlloc_32s, &state);
        }
        return state;
    }
    static qelStatus tilt(digest::Call& c, QelHaarClassifierState* state) {
        const Qel8u* const pMask = c.array<Qel8u>({0, 1, 0});
        if constexpr (std::is_same_v<T, Qel32f>) return qeliTiltHaarFeatures_32f(pMask, 1, state);
        return qeliTiltHaarFeatures_32s(pMask, 1, state);
    }
    static void release(QelHaarClassifierState* state) {
        if constexpr (std::is_same_v<T, Qel32f>) {
            qeliHaarClassifierFree_32f(state);
        } else {
            qeliHaarClassifierFree_32s(state);
        }
    }
};

// Tables that hold what the stage reads at every pixel.
template <class S>
digest::Image<const S> table(digest::Call& c) {
    return c.input<S>({c.size().width + 32, c.size().height + 32}, 1);
}

// A quarter of the mask is 0; half of the pixels are expected to be set.
template <class T, class Run>
qelStatus onMask(digest::Call& c, QelHaarClassifierState* state, const Run& run) {
    const auto mask = c.output<Qel8u>(c.size(), 1);
    for (int y = 0; y < c.size().height; ++y)
        for (int x = 0; x < c.size().width; ++x) mask.row(y)[x] = mask.row(y)[x] != 0;
    int* const pPositive = c.results<int>(1);
    *pPositive = (c.size().width * c.size().height + 1) / 2;
    const qelStatus status = run(mask, pPositive);
    Stage<T>::release(state);
    return status;
}

template <class T>
struct Haar {
    template <class S, class N, class Threshold, class... Scale>
    qelStatus operator()(digest::Call& c,
                         qelStatus (*function)(const S*, int, const N*, int, Qel8u*, int, QelSize, int*, Threshold,
                                               const QelHaarClassifierState*, Scale...)) const {
        QelHaarClassifierState* const state = Stage<T>::make(c);
        const auto src = table<S>(c);
        const auto norm = c.input<N>(c.size(), 1);
        return onMask<T>(c, state, [&](auto mask, int* pPositive) {
            return function(src.data, src.step, norm.data, norm.step, mask.data, mask.step, c.size(), pPositive,
                            Threshold(1), state, Scale(0)...);
        });
    }
    template <class S, class N, class Threshold, class... Scale>
    qelStatus operator()(digest::Call& c,
                         qelStatus (*function)(const S*, int, const S*, int, const N*, int, Qel8u*, int, QelSize, int*,
                                               Threshold, const QelHaarClassifierState*, Scale...)) const {
        QelHaarClassifierState* const state = Stage<T>::make(c);
        Stage<T>::tilt(c, state);
        const auto src = table<S>(c);
        const auto tilted = table<S>(c);
        const auto norm = c.input<N>(c.size(), 1);
        return onMask<T>(c, state, [&](auto mask, int* pPositive) {
            return function(src.data, src.step, tilted.data, tilted.step, norm.data, norm.step, mask.data, mask.step,
                            c.size(), pPositive, Threshold(1), state, Scale(0)...);
        });
    }
    // InitAlloc, GetHaarClassifierSize, TiltHaarFeatures, Free.
    qelStatus operator()(digest::Call& c, qelStatus (*function)(QelHaarClassifierState**, const QelRect*, const T*,
                                                                const T*, const T*, const T*, const int*, int)) const {
        QelHaarClassifierState* state = nullptr;
        const qelStatus status = Stage<T>::init(c, function, &state);
        Stage<T>::release(state);
        return status;
    }
    qelStatus operator()(digest::Call& c, qelStatus (*function)(const QelHaarClassifierState*, QelSize*)) const {
        QelHaarClassifierState* const state = Stage<T>::make(c);
        const qelStatus status = function(state, reinterpret_cast<QelSize*>(c.results<int>(2)));
        Stage<T>::release(state);
        return status;
    }
    qelStatus operator()(digest::Call& c, qelStatus (*function)(const Qel8u*, int, QelHaarClassifierState*)) const {
        QelHaarClassifierState* const state = Stage<T>::make(c);
        const qelStatus status = function(c.array<Qel8u>({1, 0, 1}), 1, state);
        Stage<T>::release(state);
        return status;
    }
    qelStatus operator()(digest::Call& c, qelStatus (*function)(QelHaarClassifierState*)) const {
        return function(Stage<T>::make(c));
    }
};

}  // namespace

DIGESTS(Haar<Qel32f>(), qeliHaarClassifierInitAlloc_32f, qeliTiltedHaarClassifierInitAlloc_32f,
        qeliHaarClassifierFree_32f, qeliGetHaarClassifierSize_32f, qeliTiltHaarFeatures_32f,
        qeliApplyHaarClassifier_32f_C1R, qeliApplyHaarClassifier_32s32f_C1R, qeliApplyMixedHaarClassifier_32f_C1R,
        qeliApplyMixedHaarClassifier_32s32f_C1R);
DIGESTS(Haar<Qel32s>(), qeliHaarClassifierInitAlloc_32s, qeliTiltedHaarClassifierInitAlloc_32s,
        qeliHaarClassifierFree_32s, qeliGetHaarClassifierSize_32s, qeliTiltHaarFeatures_32s,
        qeliApplyHaarClassifier_32s_C1RSfs, qeliApplyMixedHaarClassifier_32s_C1RSfs);
