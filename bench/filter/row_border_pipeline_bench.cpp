#include <algorithm>
#include <vector>

#include "kit/bench.h"
#include "qelcv.h"

namespace {

// Smoothing kernels whose sums stay within 16 bits where samples are bytes.
template <class K>
std::vector<K> smoothing(int taps) {
    std::vector<K> kernel(static_cast<size_t>(taps));
    for (int i = 0; i < taps; ++i) kernel[size_t(i)] = K(1 + std::min(i, taps - 1 - i));
    return kernel;
}

template <class Out, class Sum>
Out converted(Sum sum, bool wraps) {
    if constexpr (std::is_floating_point_v<Out>) {
        return sum;
    } else {
        return wraps ? Out(sum) : Out(std::clamp<Sum>(sum, -32768, 32767));
    }
}

// A row with a replicated border and a kernel around its middle.
template <class Sum, bool kWraps, class T, class Out, class K>
void plainRow(const T* in, Out* out, int width, int channels, const K* k, int taps) {
    const int half = taps / 2;
    const auto at = [=](int x, int c) { return in[std::clamp(x, 0, width - 1) * channels + c]; };
    const auto edge = [&](int x) {
        for (int c = 0; c < channels; ++c) {
            Sum sum = 0;
            for (int i = 0; i < taps; ++i) sum += Sum(at(x - half + i, c)) * k[i];
            out[x * channels + c] = converted<Out>(sum, kWraps);
        }
    };
    for (int x = 0; x < std::min(half, width); ++x) edge(x);
    for (int x = half * channels; x < (width - half) * channels; ++x) {
        Sum sum = 0;
        for (int i = 0; i < taps; ++i) sum += Sum(in[x + (i - half) * channels]) * k[i];
        out[x] = converted<Out>(sum, kWraps);
    }
    for (int x = std::max(width - half, half); x < width; ++x) edge(x);
}

template <class T, class Out, class K, auto function, auto bufferSize, int channels, int taps, bool wraps = false>
void filterRows(bench::Case& c) {
    constexpr bool kFloat = std::is_floating_point_v<T>;
    using Sum = std::conditional_t<kFloat, float, int>;
    const auto in = c.input<T>({.channels = channels});
    const auto out = c.output<Out>({.channels = channels});
    const QelSize size = c.size();
    const std::vector<K> kernel = smoothing<K>(taps);
    int bytes = 0;
    bufferSize(size, taps, &bytes);
    Qel8u* const buffer = reinterpret_cast<Qel8u*>(c.scratch(size_t(bytes)));
    std::vector<Out*> list(static_cast<size_t>(size.height));
    for (int y = 0; y < size.height; ++y) list[size_t(y)] = out.row(y);
    if (kFloat) c.tolerance(1e-6);

    c.ours([=] {
        const auto run = [&](auto... tail) {
            return function(in.data, in.step, list.data(), size, kernel.data(), taps, taps / 2, qelBorderRepl, tail...,
                            buffer);
        };
        const T constant[3] = {};
        if constexpr (kFloat && channels == 1) {
            return run(T(0));
        } else if constexpr (kFloat) {
            return run(constant);
        } else if constexpr (channels == 1) {
            return run(T(0), 1);
        } else {
            return run(constant, 1);
        }
    });
    c.plain([=] {
        for (int y = 0; y < size.height; ++y)
            plainRow<Sum, wraps>(in.row(y), out.row(y), size.width, channels, kernel.data(), taps);
    });
}

template <int taps>
constexpr auto row_8u16s_C1R = filterRows<Qel8u, Qel16s, Qel16s, qeliFilterRowBorderPipeline_8u16s_C1R,
                                          qeliFilterRowBorderPipelineGetBufferSize_8u16s_C1R, 1, taps>;
template <int taps>
constexpr auto row_8u16s_C3R = filterRows<Qel8u, Qel16s, Qel16s, qeliFilterRowBorderPipeline_8u16s_C3R,
                                          qeliFilterRowBorderPipelineGetBufferSize_8u16s_C3R, 3, taps>;
template <int taps>
constexpr auto row_16s_C1R = filterRows<Qel16s, Qel16s, Qel16s, qeliFilterRowBorderPipeline_16s_C1R,
                                        qeliFilterRowBorderPipelineGetBufferSize_16s_C1R, 1, taps>;
template <int taps>
constexpr auto row_16s_C3R = filterRows<Qel16s, Qel16s, Qel16s, qeliFilterRowBorderPipeline_16s_C3R,
                                        qeliFilterRowBorderPipelineGetBufferSize_16s_C3R, 3, taps>;
template <int taps>
constexpr auto row_Low_16s_C1R = filterRows<Qel16s, Qel16s, Qel16s, qeliFilterRowBorderPipeline_Low_16s_C1R,
                                            qeliFilterRowBorderPipelineGetBufferSize_Low_16s_C1R, 1, taps, true>;
template <int taps>
constexpr auto row_Low_16s_C3R = filterRows<Qel16s, Qel16s, Qel16s, qeliFilterRowBorderPipeline_Low_16s_C3R,
                                            qeliFilterRowBorderPipelineGetBufferSize_Low_16s_C3R, 3, taps, true>;
template <int taps>
constexpr auto row_32f_C1R = filterRows<Qel32f, Qel32f, Qel32f, qeliFilterRowBorderPipeline_32f_C1R,
                                        qeliFilterRowBorderPipelineGetBufferSize_32f_C1R, 1, taps>;
template <int taps>
constexpr auto row_32f_C3R = filterRows<Qel32f, Qel32f, Qel32f, qeliFilterRowBorderPipeline_32f_C3R,
                                        qeliFilterRowBorderPipelineGetBufferSize_32f_C3R, 3, taps>;

template <auto bufferSize>
void getBufferSize(bench::Case& c) {
    int* const bytes = c.values<int>(1);
    const QelSize size = c.size();
    c.ours([=] { return bufferSize(size, 5, bytes); });
}

}  // namespace

BENCH_ROWS({"qeliFilterRowBorderPipeline_8u16s_C1R, 3 taps", row_8u16s_C1R<3>},
           {"qeliFilterRowBorderPipeline_8u16s_C1R, 5 taps", row_8u16s_C1R<5>},
           {"qeliFilterRowBorderPipeline_8u16s_C1R, 9 taps", row_8u16s_C1R<9>},
           {"qeliFilterRowBorderPipeline_8u16s_C1R, 15 taps", row_8u16s_C1R<15>},
           {"qeliFilterRowBorderPipeline_8u16s_C3R, 3 taps", row_8u16s_C3R<3>},
           {"qeliFilterRowBorderPipeline_8u16s_C3R, 5 taps", row_8u16s_C3R<5>},
           {"qeliFilterRowBorderPipeline_8u16s_C3R, 9 taps", row_8u16s_C3R<9>},
           {"qeliFilterRowBorderPipeline_8u16s_C3R, 15 taps", row_8u16s_C3R<15>},
           {"qeliFilterRowBorderPipeline_16s_C1R, 3 taps", row_16s_C1R<3>},
           {"qeliFilterRowBorderPipeline_16s_C1R, 5 taps", row_16s_C1R<5>},
           {"qeliFilterRowBorderPipeline_16s_C1R, 15 taps", row_16s_C1R<15>},
           {"qeliFilterRowBorderPipeline_16s_C3R, 3 taps", row_16s_C3R<3>},
           {"qeliFilterRowBorderPipeline_16s_C3R, 5 taps", row_16s_C3R<5>},
           {"qeliFilterRowBorderPipeline_16s_C3R, 15 taps", row_16s_C3R<15>},
           {"qeliFilterRowBorderPipeline_Low_16s_C1R, 3 taps", row_Low_16s_C1R<3>},
           {"qeliFilterRowBorderPipeline_Low_16s_C1R, 5 taps", row_Low_16s_C1R<5>},
           {"qeliFilterRowBorderPipeline_Low_16s_C1R, 15 taps", row_Low_16s_C1R<15>},
           {"qeliFilterRowBorderPipeline_Low_16s_C3R, 3 taps", row_Low_16s_C3R<3>},
           {"qeliFilterRowBorderPipeline_Low_16s_C3R, 5 taps", row_Low_16s_C3R<5>},
           {"qeliFilterRowBorderPipeline_Low_16s_C3R, 15 taps", row_Low_16s_C3R<15>},
           {"qeliFilterRowBorderPipeline_32f_C1R, 3 taps", row_32f_C1R<3>},
           {"qeliFilterRowBorderPipeline_32f_C1R, 5 taps", row_32f_C1R<5>},
           {"qeliFilterRowBorderPipeline_32f_C1R, 9 taps", row_32f_C1R<9>},
           {"qeliFilterRowBorderPipeline_32f_C1R, 15 taps", row_32f_C1R<15>},
           {"qeliFilterRowBorderPipeline_32f_C3R, 3 taps", row_32f_C3R<3>},
           {"qeliFilterRowBorderPipeline_32f_C3R, 5 taps", row_32f_C3R<5>},
           {"qeliFilterRowBorderPipeline_32f_C3R, 9 taps", row_32f_C3R<9>},
           {"qeliFilterRowBorderPipeline_32f_C3R, 15 taps", row_32f_C3R<15>},
           {"qeliFilterRowBorderPipelineGetBufferSize_8u16s_C1R",
            getBufferSize<qeliFilterRowBorderPipelineGetBufferSize_8u16s_C1R>, bench::Sizes::One},
           {"qeliFilterRowBorderPipelineGetBufferSize_8u16s_C3R",
            getBufferSize<qeliFilterRowBorderPipelineGetBufferSize_8u16s_C3R>, bench::Sizes::One},
           {"qeliFilterRowBorderPipelineGetBufferSize_16s_C1R",
            getBufferSize<qeliFilterRowBorderPipelineGetBufferSize_16s_C1R>, bench::Sizes::One},
           {"qeliFilterRowBorderPipelineGetBufferSize_16s_C3R",
            getBufferSize<qeliFilterRowBorderPipelineGetBufferSize_16s_C3R>, bench::Sizes::One},
           {"qeliFilterRowBorderPipelineGetBufferSize_Low_16s_C1R",
            getBufferSize<qeliFilterRowBorderPipelineGetBufferSize_Low_16s_C1R>, bench::Sizes::One},
           {"qeliFilterRowBorderPipelineGetBufferSize_Low_16s_C3R",
            getBufferSize<qeliFilterRowBorderPipelineGetBufferSize_Low_16s_C3R>, bench::Sizes::One},
           {"qeliFilterRowBorderPipelineGetBufferSize_32f_C1R",
            getBufferSize<qeliFilterRowBorderPipelineGetBufferSize_32f_C1R>, bench::Sizes::One},
           {"qeliFilterRowBorderPipelineGetBufferSize_32f_C3R",
            getBufferSize<qeliFilterRowBorderPipelineGetBufferSize_32f_C3R>, bench::Sizes::One});
