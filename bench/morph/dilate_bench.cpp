#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "kit/bench.h"
#include "peers/opencv.h"
#include "qelcv.h"

#ifdef QEL_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

// Masks of n by n elements with the anchor in the middle.
enum class Shape { kRect, kCross, kEllipse, kGeneral };

struct Mask {
    std::vector<Qel8u> elements;
    QelSize size;
    QelPoint anchor;
};

Mask makeMask(Shape shape, int n) {
    Mask mask = {std::vector<Qel8u>(size_t(n) * size_t(n)), {n, n}, {n / 2, n / 2}};
    bench::Noise noise(7);
    const int r = n / 2;
    for (int y = -r; y < n - r; ++y) {
        const int reach = static_cast<int>(std::lround(std::sqrt(double(r * r - std::min(y * y, r * r)))));
        for (int x = -r; x < n - r; ++x) {
            const bool set = shape == Shape::kRect      ? true
                             : shape == Shape::kCross   ? x == 0 || y == 0
                             : shape == Shape::kEllipse ? std::abs(x) <= reach
                                                        : (noise.next() & 0x100) != 0;
            mask.elements[size_t(y + r) * size_t(n) + size_t(x + r)] = set;
        }
    }
    return mask;
}

template <class T>
T extreme(bool dilates, T a, T b) {
    return dilates ? std::max(a, b) : std::min(a, b);
}

// The image within a border as wide as the mask, then a pass for each set element.
template <class T>
struct Plain {
    bool dilates;
    Mask mask;
    std::vector<T> bordered = {};

    void operator()(const bench::Image<T>& in, const bench::Image<T>& out) {
        const auto [width, height] = in.size;
        const int c = in.channels;
        const size_t pitch = size_t(width + mask.size.width - 1) * size_t(c);
        bordered.resize(pitch * size_t(height + mask.size.height - 1));
        for (int y = 0; y < height + mask.size.height - 1; ++y) {
            const T* p = in.row(std::clamp(y - mask.anchor.y, 0, height - 1));
            T* q = bordered.data() + pitch * size_t(y);
            for (int x = 0; x < width + mask.size.width - 1; ++x)
                std::memcpy(q + x * c, p + std::clamp(x - mask.anchor.x, 0, width - 1) * c, sizeof(T) * size_t(c));
        }
        for (int y = 0; y < height; ++y) results(y, pitch, out.row(y), size_t(width) * size_t(c), size_t(c));
    }

    void results(int y, size_t pitch, T* q, size_t samples, size_t c) const {
        bool first = true;
        for (int j = 0; j < mask.size.height; ++j) {
            for (int i = 0; i < mask.size.width; ++i) {
                if (mask.elements[size_t(j) * size_t(mask.size.width) + size_t(i)] == 0) continue;
                const T* p = bordered.data() + pitch * size_t(y + j) + size_t(i) * c;
                if (first) {
                    std::memcpy(q, p, samples * sizeof(T));
                } else {
                    for (size_t x = 0; x < samples; ++x) q[x] = extreme(dilates, q[x], p[x]);
                }
                first = false;
            }
        }
    }
};

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
    OPENCV(c.peer([in = mat(in), out = mat(out), element = cv::Mat(n, n, CV_8U, c.keep(new Mask(mask), [](Mask* m) {
                                                                                     delete m;
                                                                                 })->elements.data())]() mutable {
        const auto& call = dilates ? cv::dilate : cv::erode;
        call(in, out, element, {-1, -1}, 1, cv::BORDER_REPLICATE, {});
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
