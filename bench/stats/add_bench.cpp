#include "kit/bench.h"
#include "peers/opencv.h"
#include "qelcv.h"

#ifdef QEL_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

// The formulas, by the name of the operation.
struct Add {
    static Qel32f next(Qel32f old, Qel32f s, Qel32f, Qel32f) { return old + s; }
};
struct AddSquare {
    static Qel32f next(Qel32f old, Qel32f s, Qel32f, Qel32f) { return old + s * s; }
};
struct AddProduct {
    static Qel32f next(Qel32f old, Qel32f s1, Qel32f s2, Qel32f) { return old + s1 * s2; }
};
struct AddWeighted {
    static Qel32f next(Qel32f old, Qel32f s, Qel32f, Qel32f alpha) { return (s - old) * alpha + old; }
};

constexpr Qel32f kAlpha = 0.05F;

template <class Operation, class T>
void plainRow(const T* a, const T* b, Qel32f* acc, int count) {
    for (int x = 0; x < count; ++x) acc[x] = Operation::next(acc[x], Qel32f(a[x]), Qel32f(b[x]), kAlpha);
}

template <class Operation, class T>
void plainMaskedRow(const T* a, const T* b, const Qel8u* mask, Qel32f* acc, int count) {
    for (int x = 0; x < count; ++x)
        if (mask[x] != 0) acc[x] = Operation::next(acc[x], Qel32f(a[x]), Qel32f(b[x]), kAlpha);
}

#ifdef QEL_BENCH_OPENCV
template <class Operation>
void peerRun(const cv::Mat& a, const cv::Mat& b, cv::Mat& acc, const cv::Mat& mask) {
    if constexpr (std::is_same_v<Operation, Add>) {
        cv::accumulate(a, acc, mask);
    } else if constexpr (std::is_same_v<Operation, AddSquare>) {
        cv::accumulateSquare(a, acc, mask);
    } else if constexpr (std::is_same_v<Operation, AddProduct>) {
        cv::accumulateProduct(a, b, acc, mask);
    } else {
        cv::accumulateWeighted(a, acc, kAlpha, mask);
    }
}
#endif

// OpenCV has no accumulators of signed bytes.
template <class T>
constexpr bool kHasPeer = !std::is_same_v<T, Qel8s>;

// A source without zeros: the running average of black ends in denormal numbers, after more calls than a sequence has
// frames.
template <class T>
bench::Image<T> source(bench::Case& c) {
    const auto image = c.input<T>();
    for (int y = 0; y < image.size.height; ++y)
        for (int x = 0; x < image.size.width; ++x)
            if (image.row(y)[x] == 0) image.row(y)[x] = 1;
    return image;
}

template <class Operation, class T, auto function>
void add(bench::Case& c) {
    constexpr bool kTwo = std::is_same_v<Operation, AddProduct>;
    const auto a = source<T>(c);
    const auto b = kTwo ? c.input<T>() : a;
    const auto acc = c.update<Qel32f>();
    const QelSize size = c.size();
    c.ours([=] {
        if constexpr (kTwo) {
            return function(a.data, a.step, b.data, b.step, acc.data, acc.step, size);
        } else if constexpr (std::is_same_v<Operation, AddWeighted>) {
            return function(a.data, a.step, acc.data, acc.step, size, kAlpha);
        } else {
            return function(a.data, a.step, acc.data, acc.step, size);
        }
    });
    c.plain([=] {
        for (int y = 0; y < size.height; ++y) plainRow<Operation>(a.row(y), b.row(y), acc.row(y), size.width);
    });
    OPENCV(if constexpr (kHasPeer<T>) c.peer(
        [a = mat(a), b = mat(b), acc = mat(acc)]() mutable { peerRun<Operation>(a, b, acc, cv::Mat()); });)
}

template <class Operation, class T, auto function>
void addMasked(bench::Case& c) {
    constexpr bool kTwo = std::is_same_v<Operation, AddProduct>;
    const auto a = source<T>(c);
    const auto b = kTwo ? c.input<T>() : a;
    const auto mask = c.mask();
    const auto acc = c.update<Qel32f>();
    const QelSize size = c.size();
    c.ours([=] {
        if constexpr (kTwo) {
            return function(a.data, a.step, b.data, b.step, mask.data, mask.step, acc.data, acc.step, size);
        } else if constexpr (std::is_same_v<Operation, AddWeighted>) {
            return function(a.data, a.step, mask.data, mask.step, acc.data, acc.step, size, kAlpha);
        } else {
            return function(a.data, a.step, mask.data, mask.step, acc.data, acc.step, size);
        }
    });
    c.plain([=] {
        for (int y = 0; y < size.height; ++y)
            plainMaskedRow<Operation>(a.row(y), b.row(y), mask.row(y), acc.row(y), size.width);
    });
    OPENCV(if constexpr (kHasPeer<T>) c.peer(
        [a = mat(a), b = mat(b), mask = mat(mask), acc = mat(acc)]() mutable { peerRun<Operation>(a, b, acc, mask); });)
}

void plainAddWeighted(const Qel32f* a, const Qel32f* b, Qel32f* out, int count) {
    for (int x = 0; x < count; ++x) out[x] = (a[x] - b[x]) * kAlpha + b[x];
}

void addWeighted(bench::Case& c) {
    const auto a = c.input<Qel32f>();
    const auto b = c.input<Qel32f>();
    const auto out = c.output<Qel32f>();
    const QelSize size = c.size();
    c.ours([=] { return qeliAddWeighted_32f_C1R(a.data, a.step, b.data, b.step, out.data, out.step, size, kAlpha); });
    c.plain([=] {
        for (int y = 0; y < size.height; ++y) plainAddWeighted(a.row(y), b.row(y), out.row(y), size.width);
    });
    OPENCV(c.peer(
        [a = mat(a), b = mat(b), out = mat(out)]() mutable { cv::addWeighted(a, kAlpha, b, 1 - kAlpha, 0, out); });)
}

}  // namespace

BENCH_ROWS({"qeliAdd_8u32f_C1IR", add<Add, Qel8u, qeliAdd_8u32f_C1IR>},
           {"qeliAdd_8s32f_C1IR", add<Add, Qel8s, qeliAdd_8s32f_C1IR>},
           {"qeliAdd_16u32f_C1IR", add<Add, Qel16u, qeliAdd_16u32f_C1IR>},
           {"qeliAdd_8u32f_C1IMR", addMasked<Add, Qel8u, qeliAdd_8u32f_C1IMR>},
           {"qeliAdd_8s32f_C1IMR", addMasked<Add, Qel8s, qeliAdd_8s32f_C1IMR>},
           {"qeliAdd_16u32f_C1IMR", addMasked<Add, Qel16u, qeliAdd_16u32f_C1IMR>},
           {"qeliAdd_32f_C1IMR", addMasked<Add, Qel32f, qeliAdd_32f_C1IMR>},
           {"qeliAddSquare_8u32f_C1IR", add<AddSquare, Qel8u, qeliAddSquare_8u32f_C1IR>},
           {"qeliAddSquare_8s32f_C1IR", add<AddSquare, Qel8s, qeliAddSquare_8s32f_C1IR>},
           {"qeliAddSquare_16u32f_C1IR", add<AddSquare, Qel16u, qeliAddSquare_16u32f_C1IR>},
           {"qeliAddSquare_32f_C1IR", add<AddSquare, Qel32f, qeliAddSquare_32f_C1IR>},
           {"qeliAddSquare_8u32f_C1IMR", addMasked<AddSquare, Qel8u, qeliAddSquare_8u32f_C1IMR>},
           {"qeliAddSquare_8s32f_C1IMR", addMasked<AddSquare, Qel8s, qeliAddSquare_8s32f_C1IMR>},
           {"qeliAddSquare_16u32f_C1IMR", addMasked<AddSquare, Qel16u, qeliAddSquare_16u32f_C1IMR>},
           {"qeliAddSquare_32f_C1IMR", addMasked<AddSquare, Qel32f, qeliAddSquare_32f_C1IMR>},
           {"qeliAddProduct_8u32f_C1IR", add<AddProduct, Qel8u, qeliAddProduct_8u32f_C1IR>},
           {"qeliAddProduct_8s32f_C1IR", add<AddProduct, Qel8s, qeliAddProduct_8s32f_C1IR>},
           {"qeliAddProduct_16u32f_C1IR", add<AddProduct, Qel16u, qeliAddProduct_16u32f_C1IR>},
           {"qeliAddProduct_32f_C1IR", add<AddProduct, Qel32f, qeliAddProduct_32f_C1IR>},
           {"qeliAddProduct_8u32f_C1IMR", addMasked<AddProduct, Qel8u, qeliAddProduct_8u32f_C1IMR>},
           {"qeliAddProduct_8s32f_C1IMR", addMasked<AddProduct, Qel8s, qeliAddProduct_8s32f_C1IMR>},
           {"qeliAddProduct_16u32f_C1IMR", addMasked<AddProduct, Qel16u, qeliAddProduct_16u32f_C1IMR>},
           {"qeliAddProduct_32f_C1IMR", addMasked<AddProduct, Qel32f, qeliAddProduct_32f_C1IMR>},
           {"qeliAddWeighted_8u32f_C1IR", add<AddWeighted, Qel8u, qeliAddWeighted_8u32f_C1IR>},
           {"qeliAddWeighted_8s32f_C1IR", add<AddWeighted, Qel8s, qeliAddWeighted_8s32f_C1IR>},
           {"qeliAddWeighted_16u32f_C1IR", add<AddWeighted, Qel16u, qeliAddWeighted_16u32f_C1IR>},
           {"qeliAddWeighted_32f_C1IR", add<AddWeighted, Qel32f, qeliAddWeighted_32f_C1IR>},
           {"qeliAddWeighted_8u32f_C1IMR", addMasked<AddWeighted, Qel8u, qeliAddWeighted_8u32f_C1IMR>},
           {"qeliAddWeighted_8s32f_C1IMR", addMasked<AddWeighted, Qel8s, qeliAddWeighted_8s32f_C1IMR>},
           {"qeliAddWeighted_16u32f_C1IMR", addMasked<AddWeighted, Qel16u, qeliAddWeighted_16u32f_C1IMR>},
           {"qeliAddWeighted_32f_C1IMR", addMasked<AddWeighted, Qel32f, qeliAddWeighted_32f_C1IMR>},
           {"qeliAddWeighted_32f_C1R", addWeighted});
