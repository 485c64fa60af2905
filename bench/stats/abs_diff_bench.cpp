#include <cmath>
#include <cstdlib>

#include "kit/bench.h"
#include "peers/opencv.h"
#include "qelcv.h"

namespace {

template <class T>
void plainAbsDiff(const T* a, const T* b, T* out, int count) {
    for (int x = 0; x < count; ++x) {
        if constexpr (std::is_integral_v<T>) {
            out[x] = T(std::abs(a[x] - b[x]));
        } else {
            out[x] = std::fabs(a[x] - b[x]);
        }
    }
}

template <class T>
void plainAbsDiffC(const T* a, T value, T* out, int count) {
    for (int x = 0; x < count; ++x) {
        if constexpr (std::is_integral_v<T>) {
            out[x] = T(std::abs(a[x] - value));
        } else {
            out[x] = std::fabs(a[x] - value);
        }
    }
}

template <class T, auto function, int channels = 1>
void absDiff(bench::Case& c) {
    const auto a = c.input<T>({.channels = channels});
    const auto b = c.input<T>({.channels = channels});
    const auto out = c.output<T>({.channels = channels});
    const QelSize size = c.size();
    c.ours([=] { return function(a.data, a.step, b.data, b.step, out.data, out.step, size); });
    c.plain([=] {
        for (int y = 0; y < size.height; ++y) plainAbsDiff(a.row(y), b.row(y), out.row(y), size.width * channels);
    });
    OPENCV(c.peer([a = mat(a), b = mat(b), out = mat(out)]() mutable { cv::absdiff(a, b, out); });)
}

template <class T, auto function>
void absDiffC(bench::Case& c) {
    const auto a = c.input<T>();
    const auto out = c.output<T>();
    const QelSize size = c.size();
    c.ours([=] { return function(a.data, a.step, out.data, out.step, size, 100); });
    c.plain([=] {
        for (int y = 0; y < size.height; ++y) plainAbsDiffC<T>(a.row(y), 100, out.row(y), size.width);
    });
    OPENCV(c.peer([a = mat(a), out = mat(out)]() mutable { cv::absdiff(a, cv::Scalar::all(100), out); });)
}

}  // namespace

BENCH_ROWS({"qeliAbsDiff_8u_C1R", absDiff<Qel8u, qeliAbsDiff_8u_C1R>},
           {"qeliAbsDiff_8u_C3R", absDiff<Qel8u, qeliAbsDiff_8u_C3R, 3>},
           {"qeliAbsDiff_16u_C1R", absDiff<Qel16u, qeliAbsDiff_16u_C1R>},
           {"qeliAbsDiff_32f_C1R", absDiff<Qel32f, qeliAbsDiff_32f_C1R>},
           {"qeliAbsDiffC_8u_C1R", absDiffC<Qel8u, qeliAbsDiffC_8u_C1R>},
           {"qeliAbsDiffC_16u_C1R", absDiffC<Qel16u, qeliAbsDiffC_16u_C1R>},
           {"qeliAbsDiffC_32f_C1R", absDiffC<Qel32f, qeliAbsDiffC_32f_C1R>});
