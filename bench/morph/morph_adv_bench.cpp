#include <cstdlib>

#include "kit/bench.h"
#include "morph/masks.h"
#include "peers/opencv.h"
#include "qelcv.h"

#ifdef QEL_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

enum Operation { kOpen, kClose, kTophat, kBlackhat, kGradient };

#ifdef QEL_BENCH_OPENCV
constexpr int kPeerOperation[] = {cv::MORPH_OPEN, cv::MORPH_CLOSE, cv::MORPH_TOPHAT, cv::MORPH_BLACKHAT,
                                  cv::MORPH_GRADIENT};
#endif

template <class T>
void plainSubtract(const T* a, const T* b, T* out, size_t samples) {
    for (size_t x = 0; x < samples; ++x) out[x] = a[x] > b[x] ? T(a[x] - b[x]) : T(0);
}

// Two passes over the image, as dilation and erosion are, and a third for the difference.
template <class T>
struct PlainAdv {
    Operation operation;
    Mask mask;
    std::vector<T> memory = {};

    void operator()(const bench::Image<T>& in, const bench::Image<T>& out) {
        const bool opens = operation == kOpen || operation == kTophat;
        const size_t samples = size_t(in.size.width) * size_t(in.channels);
        memory.resize(2 * samples * size_t(in.size.height));
        const int step = static_cast<int>(samples * sizeof(T));
        const bench::Image<T> work = {memory.data(), step, in.size, in.channels};
        const bench::Image<T> result = {memory.data() + samples * size_t(in.size.height), step, in.size, in.channels};
        Plain<T>{!opens, mask}(in, work);
        if (operation == kOpen || operation == kClose) {
            Plain<T>{opens, mask}(work, out);
            return;
        }
        if (operation == kGradient) {
            Plain<T>{false, mask}(in, result);
        } else {
            Plain<T>{opens, mask}(work, result);
        }
        for (int y = 0; y < in.size.height; ++y) {
            const T* const a = operation == kTophat ? in.row(y) : operation == kBlackhat ? result.row(y) : work.row(y);
            const T* const b = operation == kBlackhat ? in.row(y) : result.row(y);
            plainSubtract(a, b, out.row(y), samples);
        }
    }
};

// All masks but the general one are symmetric.
template <class T, int channels, auto function, auto initAlloc, Operation operation, Shape shape, int n>
void morphAdv(bench::Case& c) {
    const auto in = c.input<T>({.channels = channels});
    const auto out = c.output<T>({.channels = channels});
    const QelSize size = c.size();
    const Mask mask = makeMask(shape, n);
    QelMorphAdvState* pState = nullptr;
    if (initAlloc(&pState, size, mask.elements.data(), mask.size, mask.anchor) != qelStatusOk) std::abort();
    c.keep(pState, qeliMorphAdvFree);
    c.ours([=] { return function(in.data, in.step, out.data, out.step, size, qelBorderRepl, pState); });
    if (shape != Shape::kGeneral) c.plain([=, plain = PlainAdv<T>{operation, mask}]() mutable { plain(in, out); });
    OPENCV(const Mask* const element = c.keep(new Mask(mask), [](Mask* m) { delete m; });
           c.peer([=, in = mat(in), out = mat(out)]() mutable {
               const cv::Mat kernel(n, n, CV_8U, const_cast<Qel8u*>(element->elements.data()));
               cv::morphologyEx(in, out, kPeerOperation[operation], kernel, {-1, -1}, 1, cv::BORDER_REPLICATE);
           });)
}

template <auto getSize>
void stateSize(bench::Case& c) {
    const QelSize size = c.size();
    int* const pSize = c.values<int>(1);
    c.ours([=, mask = makeMask(Shape::kEllipse, 7)] { return getSize(size, mask.elements.data(), mask.size, pSize); });
}

template <auto getSize, auto init>
void stateInit(bench::Case& c) {
    const QelSize size = c.size();
    const Mask mask = makeMask(Shape::kEllipse, 7);
    int bytes = 0;
    getSize(size, mask.elements.data(), mask.size, &bytes);
    QelMorphAdvState* const pState = reinterpret_cast<QelMorphAdvState*>(c.scratch(size_t(bytes)));
    c.ours([=] { return init(pState, size, mask.elements.data(), mask.size, mask.anchor); });
}

template <auto initAlloc>
void stateInitAlloc(bench::Case& c) {
    const QelSize size = c.size();
    c.ours([=, mask = makeMask(Shape::kEllipse, 7)] {
        QelMorphAdvState* pState = nullptr;
        const qelStatus status = initAlloc(&pState, size, mask.elements.data(), mask.size, mask.anchor);
        qeliMorphAdvFree(pState);
        return status;
    });
}

}  // namespace

#define STATE(getSize, init, initAlloc)                                                                        \
    {#getSize, stateSize<getSize>, bench::Sizes::One}, {#init, stateInit<getSize, init>, bench::Sizes::One}, { \
#initAlloc, stateInitAlloc < initAlloc>, bench::Sizes::One                                             \
    }

BENCH_ROWS(
    {"qeliMorphOpenBorder_8u_C1R rect 5x5",
     morphAdv<Qel8u, 1, qeliMorphOpenBorder_8u_C1R, qeliMorphAdvInitAlloc_8u_C1R, kOpen, Shape::kRect, 5>},
    {"qeliMorphCloseBorder_8u_C1R rect 5x5",
     morphAdv<Qel8u, 1, qeliMorphCloseBorder_8u_C1R, qeliMorphAdvInitAlloc_8u_C1R, kClose, Shape::kRect, 5>},
    {"qeliMorphTophatBorder_8u_C1R rect 15x15",
     morphAdv<Qel8u, 1, qeliMorphTophatBorder_8u_C1R, qeliMorphAdvInitAlloc_8u_C1R, kTophat, Shape::kRect, 15>},
    {"qeliMorphBlackhatBorder_8u_C1R rect 15x15",
     morphAdv<Qel8u, 1, qeliMorphBlackhatBorder_8u_C1R, qeliMorphAdvInitAlloc_8u_C1R, kBlackhat, Shape::kRect, 15>},
    {"qeliMorphGradientBorder_8u_C1R rect 3x3",
     morphAdv<Qel8u, 1, qeliMorphGradientBorder_8u_C1R, qeliMorphAdvInitAlloc_8u_C1R, kGradient, Shape::kRect, 3>},
    {"qeliMorphOpenBorder_8u_C3R rect 5x5",
     morphAdv<Qel8u, 3, qeliMorphOpenBorder_8u_C3R, qeliMorphAdvInitAlloc_8u_C3R, kOpen, Shape::kRect, 5>},
    {"qeliMorphCloseBorder_8u_C3R rect 5x5",
     morphAdv<Qel8u, 3, qeliMorphCloseBorder_8u_C3R, qeliMorphAdvInitAlloc_8u_C3R, kClose, Shape::kRect, 5>},
    {"qeliMorphTophatBorder_8u_C3R rect 15x15",
     morphAdv<Qel8u, 3, qeliMorphTophatBorder_8u_C3R, qeliMorphAdvInitAlloc_8u_C3R, kTophat, Shape::kRect, 15>},
    {"qeliMorphBlackhatBorder_8u_C3R rect 15x15",
     morphAdv<Qel8u, 3, qeliMorphBlackhatBorder_8u_C3R, qeliMorphAdvInitAlloc_8u_C3R, kBlackhat, Shape::kRect, 15>},
    {"qeliMorphGradientBorder_8u_C3R rect 3x3",
     morphAdv<Qel8u, 3, qeliMorphGradientBorder_8u_C3R, qeliMorphAdvInitAlloc_8u_C3R, kGradient, Shape::kRect, 3>},
    {"qeliMorphOpenBorder_8u_C4R rect 5x5",
     morphAdv<Qel8u, 4, qeliMorphOpenBorder_8u_C4R, qeliMorphAdvInitAlloc_8u_C4R, kOpen, Shape::kRect, 5>},
    {"qeliMorphCloseBorder_8u_C4R rect 5x5",
     morphAdv<Qel8u, 4, qeliMorphCloseBorder_8u_C4R, qeliMorphAdvInitAlloc_8u_C4R, kClose, Shape::kRect, 5>},
    {"qeliMorphTophatBorder_8u_C4R rect 15x15",
     morphAdv<Qel8u, 4, qeliMorphTophatBorder_8u_C4R, qeliMorphAdvInitAlloc_8u_C4R, kTophat, Shape::kRect, 15>},
    {"qeliMorphBlackhatBorder_8u_C4R rect 15x15",
     morphAdv<Qel8u, 4, qeliMorphBlackhatBorder_8u_C4R, qeliMorphAdvInitAlloc_8u_C4R, kBlackhat, Shape::kRect, 15>},
    {"qeliMorphGradientBorder_8u_C4R rect 3x3",
     morphAdv<Qel8u, 4, qeliMorphGradientBorder_8u_C4R, qeliMorphAdvInitAlloc_8u_C4R, kGradient, Shape::kRect, 3>},
    {"qeliMorphOpenBorder_32f_C1R rect 5x5",
     morphAdv<Qel32f, 1, qeliMorphOpenBorder_32f_C1R, qeliMorphAdvInitAlloc_32f_C1R, kOpen, Shape::kRect, 5>},
    {"qeliMorphCloseBorder_32f_C1R rect 5x5",
     morphAdv<Qel32f, 1, qeliMorphCloseBorder_32f_C1R, qeliMorphAdvInitAlloc_32f_C1R, kClose, Shape::kRect, 5>},
    {"qeliMorphTophatBorder_32f_C1R rect 15x15",
     morphAdv<Qel32f, 1, qeliMorphTophatBorder_32f_C1R, qeliMorphAdvInitAlloc_32f_C1R, kTophat, Shape::kRect, 15>},
    {"qeliMorphBlackhatBorder_32f_C1R rect 15x15",
     morphAdv<Qel32f, 1, qeliMorphBlackhatBorder_32f_C1R, qeliMorphAdvInitAlloc_32f_C1R, kBlackhat, Shape::kRect, 15>},
    {"qeliMorphGradientBorder_32f_C1R rect 3x3",
     morphAdv<Qel32f, 1, qeliMorphGradientBorder_32f_C1R, qeliMorphAdvInitAlloc_32f_C1R, kGradient, Shape::kRect, 3>},
    {"qeliMorphOpenBorder_32f_C3R rect 5x5",
     morphAdv<Qel32f, 3, qeliMorphOpenBorder_32f_C3R, qeliMorphAdvInitAlloc_32f_C3R, kOpen, Shape::kRect, 5>},
    {"qeliMorphCloseBorder_32f_C3R rect 5x5",
     morphAdv<Qel32f, 3, qeliMorphCloseBorder_32f_C3R, qeliMorphAdvInitAlloc_32f_C3R, kClose, Shape::kRect, 5>},
    {"qeliMorphTophatBorder_32f_C3R rect 15x15",
     morphAdv<Qel32f, 3, qeliMorphTophatBorder_32f_C3R, qeliMorphAdvInitAlloc_32f_C3R, kTophat, Shape::kRect, 15>},
    {"qeliMorphBlackhatBorder_32f_C3R rect 15x15",
     morphAdv<Qel32f, 3, qeliMorphBlackhatBorder_32f_C3R, qeliMorphAdvInitAlloc_32f_C3R, kBlackhat, Shape::kRect, 15>},
    {"qeliMorphGradientBorder_32f_C3R rect 3x3",
     morphAdv<Qel32f, 3, qeliMorphGradientBorder_32f_C3R, qeliMorphAdvInitAlloc_32f_C3R, kGradient, Shape::kRect, 3>},
    {"qeliMorphOpenBorder_32f_C4R rect 5x5",
     morphAdv<Qel32f, 4, qeliMorphOpenBorder_32f_C4R, qeliMorphAdvInitAlloc_32f_C4R, kOpen, Shape::kRect, 5>},
    {"qeliMorphCloseBorder_32f_C4R rect 5x5",
     morphAdv<Qel32f, 4, qeliMorphCloseBorder_32f_C4R, qeliMorphAdvInitAlloc_32f_C4R, kClose, Shape::kRect, 5>},
    {"qeliMorphTophatBorder_32f_C4R rect 15x15",
     morphAdv<Qel32f, 4, qeliMorphTophatBorder_32f_C4R, qeliMorphAdvInitAlloc_32f_C4R, kTophat, Shape::kRect, 15>},
    {"qeliMorphBlackhatBorder_32f_C4R rect 15x15",
     morphAdv<Qel32f, 4, qeliMorphBlackhatBorder_32f_C4R, qeliMorphAdvInitAlloc_32f_C4R, kBlackhat, Shape::kRect, 15>},
    {"qeliMorphGradientBorder_32f_C4R rect 3x3",
     morphAdv<Qel32f, 4, qeliMorphGradientBorder_32f_C4R, qeliMorphAdvInitAlloc_32f_C4R, kGradient, Shape::kRect, 3>},
    {"qeliMorphOpenBorder_8u_C1R ellipse 7x7",
     morphAdv<Qel8u, 1, qeliMorphOpenBorder_8u_C1R, qeliMorphAdvInitAlloc_8u_C1R, kOpen, Shape::kEllipse, 7>},
    {"qeliMorphOpenBorder_8u_C1R general 7x7",
     morphAdv<Qel8u, 1, qeliMorphOpenBorder_8u_C1R, qeliMorphAdvInitAlloc_8u_C1R, kOpen, Shape::kGeneral, 7>},
    STATE(qeliMorphAdvGetSize_8u_C1R, qeliMorphAdvInit_8u_C1R, qeliMorphAdvInitAlloc_8u_C1R),
    STATE(qeliMorphAdvGetSize_8u_C3R, qeliMorphAdvInit_8u_C3R, qeliMorphAdvInitAlloc_8u_C3R),
    STATE(qeliMorphAdvGetSize_8u_C4R, qeliMorphAdvInit_8u_C4R, qeliMorphAdvInitAlloc_8u_C4R),
    STATE(qeliMorphAdvGetSize_32f_C1R, qeliMorphAdvInit_32f_C1R, qeliMorphAdvInitAlloc_32f_C1R),
    STATE(qeliMorphAdvGetSize_32f_C3R, qeliMorphAdvInit_32f_C3R, qeliMorphAdvInitAlloc_32f_C3R),
    STATE(qeliMorphAdvGetSize_32f_C4R, qeliMorphAdvInit_32f_C4R, qeliMorphAdvInitAlloc_32f_C4R),
    {"qeliMorphAdvFree", stateInitAlloc<qeliMorphAdvInitAlloc_8u_C1R>, bench::Sizes::One});
