#include <algorithm>
#include <cmath>

#include "kit/bench.h"
#include "qelcv.h"

namespace {

enum Norm { kInf = 0, kL1 = 1, kL2 = 2 };

template <int norm>
Qel8u gray(Qel8u a, Qel8u b, Qel8u c) {
    if constexpr (norm == kInf) return std::max({a, b, c});
    if constexpr (norm == kL1) return Qel8u(((a + b + c) * 1365 + 2048) >> 12);
    return Qel8u(std::sqrt(double(float(a * a + b * b + c * c) / 3.0F)) + 0.5);
}

template <int norm>
Qel16u gray(Qel16u a, Qel16u b, Qel16u c) {
    if constexpr (norm == kInf) return std::max({a, b, c});
    if constexpr (norm == kL1) return Qel16u(((a + b + c) * 5461 + 8192) >> 14);
    return Qel16u(std::sqrt((double(a) * a + double(b) * b + double(c) * c) / 3.0) + 0.5);
}

template <int norm>
Qel32f gray(Qel32f a, Qel32f b, Qel32f c) {
    if constexpr (norm == kInf) return std::max({std::fabs(a), std::fabs(b), std::fabs(c)});
    if constexpr (norm == kL1) return std::fabs(a) + std::fabs(b) + std::fabs(c);
    return std::sqrt(a * a + b * b + c * c);
}

template <int norm, class T>
void plainGray(const T* in, T* out, int count) {
    for (int x = 0; x < count; ++x) out[x] = gray<norm>(in[3 * x], in[3 * x + 1], in[3 * x + 2]);
}

template <class T, auto function, int norm>
void gradientColorToGray(bench::Case& c) {
    const auto in = c.input<T>({.channels = 3});
    const auto out = c.output<T>();
    const QelSize size = c.size();
    c.ours([=] { return function(in.data, in.step, out.data, out.step, size, norm); });
    c.plain([=] {
        for (int y = 0; y < size.height; ++y) plainGray<norm>(in.row(y), out.row(y), size.width);
    });
}

}  // namespace

BENCH_ROWS(
    {"qeliGradientColorToGray_8u_C3C1R, Inf", gradientColorToGray<Qel8u, qeliGradientColorToGray_8u_C3C1R, kInf>},
    {"qeliGradientColorToGray_8u_C3C1R, L1", gradientColorToGray<Qel8u, qeliGradientColorToGray_8u_C3C1R, kL1>},
    {"qeliGradientColorToGray_8u_C3C1R, L2", gradientColorToGray<Qel8u, qeliGradientColorToGray_8u_C3C1R, kL2>},
    {"qeliGradientColorToGray_16u_C3C1R, Inf", gradientColorToGray<Qel16u, qeliGradientColorToGray_16u_C3C1R, kInf>},
    {"qeliGradientColorToGray_16u_C3C1R, L1", gradientColorToGray<Qel16u, qeliGradientColorToGray_16u_C3C1R, kL1>},
    {"qeliGradientColorToGray_16u_C3C1R, L2", gradientColorToGray<Qel16u, qeliGradientColorToGray_16u_C3C1R, kL2>},
    {"qeliGradientColorToGray_32f_C3C1R, Inf", gradientColorToGray<Qel32f, qeliGradientColorToGray_32f_C3C1R, kInf>},
    {"qeliGradientColorToGray_32f_C3C1R, L1", gradientColorToGray<Qel32f, qeliGradientColorToGray_32f_C3C1R, kL1>},
    {"qeliGradientColorToGray_32f_C3C1R, L2", gradientColorToGray<Qel32f, qeliGradientColorToGray_32f_C3C1R, kL2>});
