#include <cstdlib>

#include "kit/bench.h"
#include "morph/masks.h"
#include "peers/opencv.h"
#include "qelcv.h"

#ifdef QEL_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

template <class T, int channels, auto function, auto initAlloc, Shape shape, int n, bool dilates = true>
void morph(bench::Case& c) {
    const auto in = c.input<T>({.channels = channels});
    const auto out = c.output<T>({.channels = channels});
    const QelSize size = c.size();
    const Mask mask = makeMask(shape, n);
    QelMorphState* pState = nullptr;
    if (initAlloc(size.width, mask.elements.data(), mask.size, mask.anchor, &pState) != qelStatusOk) std::abort();
    c.keep(pState, qeliMorphologyFree);
    c.ours([=] { return function(in.data, in.step, out.data, out.step, size, qelBorderRepl, pState); });
    c.plain([=, plain = Plain<T>{dilates, mask}]() mutable { plain(in, out); });
    OPENCV(const Mask* const element = c.keep(new Mask(mask), [](Mask* m) { delete m; });
           c.peer([=, in = mat(in), out = mat(out)]() mutable {
               const cv::Mat kernel(n, n, CV_8U, const_cast<Qel8u*>(element->elements.data()));
               (dilates ? cv::dilate : cv::erode)(in, out, kernel, {-1, -1}, 1, cv::BORDER_REPLICATE, {});
           });)
}

constexpr Shape kStateShape = Shape::kEllipse;

template <auto getSize>
void stateSize(bench::Case& c) {
    const QelSize size = c.size();
    int* const pSize = c.values<int>(1);
    c.ours(
        [=, mask = makeMask(kStateShape, 7)] { return getSize(size.width, mask.elements.data(), mask.size, pSize); });
}

template <auto getSize, auto init>
void stateInit(bench::Case& c) {
    const QelSize size = c.size();
    const Mask mask = makeMask(kStateShape, 7);
    int bytes = 0;
    getSize(size.width, mask.elements.data(), mask.size, &bytes);
    QelMorphState* const pState = reinterpret_cast<QelMorphState*>(c.scratch(size_t(bytes)));
    c.ours([=] { return init(size.width, mask.elements.data(), mask.size, mask.anchor, pState); });
}

template <auto initAlloc>
void stateInitAlloc(bench::Case& c) {
    const QelSize size = c.size();
    c.ours([=, mask = makeMask(kStateShape, 7)] {
        QelMorphState* pState = nullptr;
        const qelStatus status = initAlloc(size.width, mask.elements.data(), mask.size, mask.anchor, &pState);
        qeliMorphologyFree(pState);
        return status;
    });
}

}  // namespace

#define MORPH(text, T, channels, function, initAlloc, shape, n) \
    { text, morph<T, channels, function, initAlloc, shape, n> }
#define ERODE(text, T, channels, function, initAlloc, shape, n) \
    { text, morph<T, channels, function, initAlloc, shape, n, false> }
#define STATE(getSize, init, initAlloc)                                                                        \
    {#getSize, stateSize<getSize>, bench::Sizes::One}, {#init, stateInit<getSize, init>, bench::Sizes::One}, { \
#initAlloc, stateInitAlloc < initAlloc>, bench::Sizes::One                                             \
    }

BENCH_ROWS(MORPH("qeliDilateBorderReplicate_8u_C1R cross 3x3", Qel8u, 1, qeliDilateBorderReplicate_8u_C1R,
                 qeliMorphologyInitAlloc_8u_C1R, Shape::kCross, 3),
           MORPH("qeliDilateBorderReplicate_8u_C1R rect 5x5", Qel8u, 1, qeliDilateBorderReplicate_8u_C1R,
                 qeliMorphologyInitAlloc_8u_C1R, Shape::kRect, 5),
           MORPH("qeliDilateBorderReplicate_8u_C1R ellipse 7x7", Qel8u, 1, qeliDilateBorderReplicate_8u_C1R,
                 qeliMorphologyInitAlloc_8u_C1R, Shape::kEllipse, 7),
           MORPH("qeliDilateBorderReplicate_8u_C1R ellipse 15x15", Qel8u, 1, qeliDilateBorderReplicate_8u_C1R,
                 qeliMorphologyInitAlloc_8u_C1R, Shape::kEllipse, 15),
           MORPH("qeliDilateBorderReplicate_8u_C1R general 7x7", Qel8u, 1, qeliDilateBorderReplicate_8u_C1R,
                 qeliMorphologyInitAlloc_8u_C1R, Shape::kGeneral, 7),
           MORPH("qeliDilateBorderReplicate_8u_C3R ellipse 7x7", Qel8u, 3, qeliDilateBorderReplicate_8u_C3R,
                 qeliMorphologyInitAlloc_8u_C3R, Shape::kEllipse, 7),
           MORPH("qeliDilateBorderReplicate_8u_C4R ellipse 7x7", Qel8u, 4, qeliDilateBorderReplicate_8u_C4R,
                 qeliMorphologyInitAlloc_8u_C4R, Shape::kEllipse, 7),
           MORPH("qeliDilateBorderReplicate_32f_C1R ellipse 7x7", Qel32f, 1, qeliDilateBorderReplicate_32f_C1R,
                 qeliMorphologyInitAlloc_32f_C1R, Shape::kEllipse, 7),
           MORPH("qeliDilateBorderReplicate_32f_C1R general 7x7", Qel32f, 1, qeliDilateBorderReplicate_32f_C1R,
                 qeliMorphologyInitAlloc_32f_C1R, Shape::kGeneral, 7),
           MORPH("qeliDilateBorderReplicate_32f_C3R ellipse 7x7", Qel32f, 3, qeliDilateBorderReplicate_32f_C3R,
                 qeliMorphologyInitAlloc_32f_C3R, Shape::kEllipse, 7),
           MORPH("qeliDilateBorderReplicate_32f_C4R ellipse 7x7", Qel32f, 4, qeliDilateBorderReplicate_32f_C4R,
                 qeliMorphologyInitAlloc_32f_C4R, Shape::kEllipse, 7),
           ERODE("qeliErodeBorderReplicate_8u_C1R ellipse 7x7", Qel8u, 1, qeliErodeBorderReplicate_8u_C1R,
                 qeliMorphologyInitAlloc_8u_C1R, Shape::kEllipse, 7),
           ERODE("qeliErodeBorderReplicate_8u_C1R general 7x7", Qel8u, 1, qeliErodeBorderReplicate_8u_C1R,
                 qeliMorphologyInitAlloc_8u_C1R, Shape::kGeneral, 7),
           ERODE("qeliErodeBorderReplicate_8u_C3R ellipse 7x7", Qel8u, 3, qeliErodeBorderReplicate_8u_C3R,
                 qeliMorphologyInitAlloc_8u_C3R, Shape::kEllipse, 7),
           ERODE("qeliErodeBorderReplicate_8u_C4R ellipse 7x7", Qel8u, 4, qeliErodeBorderReplicate_8u_C4R,
                 qeliMorphologyInitAlloc_8u_C4R, Shape::kEllipse, 7),
           ERODE("qeliErodeBorderReplicate_32f_C1R ellipse 7x7", Qel32f, 1, qeliErodeBorderReplicate_32f_C1R,
                 qeliMorphologyInitAlloc_32f_C1R, Shape::kEllipse, 7),
           ERODE("qeliErodeBorderReplicate_32f_C3R ellipse 7x7", Qel32f, 3, qeliErodeBorderReplicate_32f_C3R,
                 qeliMorphologyInitAlloc_32f_C3R, Shape::kEllipse, 7),
           ERODE("qeliErodeBorderReplicate_32f_C4R ellipse 7x7", Qel32f, 4, qeliErodeBorderReplicate_32f_C4R,
                 qeliMorphologyInitAlloc_32f_C4R, Shape::kEllipse, 7),
           STATE(qeliMorphologyGetSize_8u_C1R, qeliMorphologyInit_8u_C1R, qeliMorphologyInitAlloc_8u_C1R),
           STATE(qeliMorphologyGetSize_8u_C3R, qeliMorphologyInit_8u_C3R, qeliMorphologyInitAlloc_8u_C3R),
           STATE(qeliMorphologyGetSize_8u_C4R, qeliMorphologyInit_8u_C4R, qeliMorphologyInitAlloc_8u_C4R),
           STATE(qeliMorphologyGetSize_32f_C1R, qeliMorphologyInit_32f_C1R, qeliMorphologyInitAlloc_32f_C1R),
           STATE(qeliMorphologyGetSize_32f_C3R, qeliMorphologyInit_32f_C3R, qeliMorphologyInitAlloc_32f_C3R),
           STATE(qeliMorphologyGetSize_32f_C4R, qeliMorphologyInit_32f_C4R, qeliMorphologyInitAlloc_32f_C4R),
           {"qeliMorphologyFree", stateInitAlloc<qeliMorphologyInitAlloc_8u_C1R>, bench::Sizes::One});
