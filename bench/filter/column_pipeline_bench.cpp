#include <algorithm>
#include <vector>

#include "kit/bench.h"
#include "qelcv.h"

namespace {

enum class Ends { Saturates, Wraps, Shifts, Float };

// The sum of a column as a result. All divisors are powers of two and all results below them exact.
template <Ends ends, class T, class Sum>
T converted(Sum sum) {
    using Limits = std::numeric_limits<T>;
    if constexpr (ends == Ends::Saturates) {
        return T(std::clamp<Sum>(sum, Limits::min(), Limits::max()));
    } else if constexpr (ends == Ends::Shifts) {
        return T(T(sum) >> 4);
    } else {
        return T(sum);
    }
}

template <Ends ends, class Src, class T, class K>
void plainColumns(const Src* const* pRowSrc, T* out, int width, const K* kernel, int taps) {
    using Sum = std::conditional_t<ends == Ends::Float, Qel32f, int>;
    for (int x = 0; x < width; ++x) {
        Sum sum = 0;
        for (int i = 0; i < taps; ++i) sum += Sum(pRowSrc[i][x]) * kernel[i];
        out[x] = converted<ends, T>(sum);
    }
}

// Rows of one image, those above and below it replicated.
template <class Src, class T, class K, auto pipeline, auto bufferSize, int channels, int taps, Ends ends>
void filterColumns(bench::Case& c) {
    const auto in = c.input<Src>({.channels = channels});
    const auto out = c.output<T>({.channels = channels});
    const QelSize size = c.size();
    const int slots = size.height + taps - 1;
    const Src** const rows = reinterpret_cast<const Src**>(c.scratch(sizeof(Src*) * size_t(slots)));
    for (int i = 0; i < slots; ++i) rows[i] = in.row(std::clamp(i - taps / 2, 0, size.height - 1));
    std::vector<K> kernel(static_cast<size_t>(taps));
    for (int i = 0; i < taps; ++i) kernel[size_t(i)] = K(1 + std::min(i, taps - 1 - i));
    int bytes = 0;
    bufferSize(size, taps, &bytes);
    Qel8u* const buffer = reinterpret_cast<Qel8u*>(c.scratch(size_t(bytes)));
    if (ends == Ends::Float) c.tolerance(1e-6);

    c.ours([=] {
        if constexpr (ends == Ends::Float) {
            return pipeline(rows, out.data, out.step, size, kernel.data(), taps, buffer);
        } else {
            const int divisor = ends == Ends::Shifts ? 16 : 1;
            return pipeline(rows, out.data, out.step, size, kernel.data(), taps, divisor, buffer);
        }
    });
    c.plain([=] {
        for (int y = 0; y < size.height; ++y)
            plainColumns<ends>(rows + y, out.row(y), size.width * channels, kernel.data(), taps);
    });
}

template <int taps>
constexpr auto column_16s_C1R = filterColumns<Qel16s, Qel16s, Qel16s, qeliFilterColumnPipeline_16s_C1R,
                                              qeliFilterColumnPipelineGetBufferSize_16s_C1R, 1, taps, Ends::Saturates>;
template <int taps>
constexpr auto column_16s_C3R = filterColumns<Qel16s, Qel16s, Qel16s, qeliFilterColumnPipeline_16s_C3R,
                                              qeliFilterColumnPipelineGetBufferSize_16s_C3R, 3, taps, Ends::Saturates>;
template <int taps>
constexpr auto column_16s8u_C1R =
    filterColumns<Qel16s, Qel8u, Qel16s, qeliFilterColumnPipeline_16s8u_C1R,
                  qeliFilterColumnPipelineGetBufferSize_16s8u_C1R, 1, taps, Ends::Saturates>;
template <int taps>
constexpr auto column_16s8u_C3R =
    filterColumns<Qel16s, Qel8u, Qel16s, qeliFilterColumnPipeline_16s8u_C3R,
                  qeliFilterColumnPipelineGetBufferSize_16s8u_C3R, 3, taps, Ends::Saturates>;
template <int taps>
constexpr auto column_16s8s_C1R =
    filterColumns<Qel16s, Qel8s, Qel16s, qeliFilterColumnPipeline_16s8s_C1R,
                  qeliFilterColumnPipelineGetBufferSize_16s8s_C1R, 1, taps, Ends::Saturates>;
template <int taps>
constexpr auto column_16s8s_C3R =
    filterColumns<Qel16s, Qel8s, Qel16s, qeliFilterColumnPipeline_16s8s_C3R,
                  qeliFilterColumnPipelineGetBufferSize_16s8s_C3R, 3, taps, Ends::Saturates>;
template <int taps, Ends ends = Ends::Wraps>
constexpr auto column_Low_16s_C1R = filterColumns<Qel16s, Qel16s, Qel16s, qeliFilterColumnPipeline_Low_16s_C1R,
                                                  qeliFilterColumnPipelineGetBufferSize_Low_16s_C1R, 1, taps, ends>;
template <int taps, Ends ends = Ends::Wraps>
constexpr auto column_Low_16s_C3R = filterColumns<Qel16s, Qel16s, Qel16s, qeliFilterColumnPipeline_Low_16s_C3R,
                                                  qeliFilterColumnPipelineGetBufferSize_Low_16s_C3R, 3, taps, ends>;
template <int taps>
constexpr auto column_32f_C1R = filterColumns<Qel32f, Qel32f, Qel32f, qeliFilterColumnPipeline_32f_C1R,
                                              qeliFilterColumnPipelineGetBufferSize_32f_C1R, 1, taps, Ends::Float>;
template <int taps>
constexpr auto column_32f_C3R = filterColumns<Qel32f, Qel32f, Qel32f, qeliFilterColumnPipeline_32f_C3R,
                                              qeliFilterColumnPipelineGetBufferSize_32f_C3R, 3, taps, Ends::Float>;

template <auto bufferSize>
void getBufferSize(bench::Case& c) {
    int* const bytes = c.values<int>(1);
    const QelSize size = c.size();
    c.ours([=] { return bufferSize(size, 5, bytes); });
}

}  // namespace

BENCH_ROWS({"qeliFilterColumnPipeline_16s_C1R, 3 taps", column_16s_C1R<3>},
           {"qeliFilterColumnPipeline_16s_C1R, 5 taps", column_16s_C1R<5>},
           {"qeliFilterColumnPipeline_16s_C1R, 9 taps", column_16s_C1R<9>},
           {"qeliFilterColumnPipeline_16s_C1R, 15 taps", column_16s_C1R<15>},
           {"qeliFilterColumnPipeline_16s_C3R, 3 taps", column_16s_C3R<3>},
           {"qeliFilterColumnPipeline_16s_C3R, 5 taps", column_16s_C3R<5>},
           {"qeliFilterColumnPipeline_16s_C3R, 15 taps", column_16s_C3R<15>},
           {"qeliFilterColumnPipeline_16s8u_C1R, 3 taps", column_16s8u_C1R<3>},
           {"qeliFilterColumnPipeline_16s8u_C1R, 5 taps", column_16s8u_C1R<5>},
           {"qeliFilterColumnPipeline_16s8u_C1R, 15 taps", column_16s8u_C1R<15>},
           {"qeliFilterColumnPipeline_16s8u_C3R, 5 taps", column_16s8u_C3R<5>},
           {"qeliFilterColumnPipeline_16s8s_C1R, 5 taps", column_16s8s_C1R<5>},
           {"qeliFilterColumnPipeline_16s8s_C3R, 5 taps", column_16s8s_C3R<5>},
           {"qeliFilterColumnPipeline_Low_16s_C1R, 3 taps", column_Low_16s_C1R<3>},
           {"qeliFilterColumnPipeline_Low_16s_C1R, 5 taps", column_Low_16s_C1R<5>},
           {"qeliFilterColumnPipeline_Low_16s_C1R, 5 taps over 16", column_Low_16s_C1R<5, Ends::Shifts>},
           {"qeliFilterColumnPipeline_Low_16s_C1R, 15 taps", column_Low_16s_C1R<15>},
           {"qeliFilterColumnPipeline_Low_16s_C3R, 3 taps", column_Low_16s_C3R<3>},
           {"qeliFilterColumnPipeline_Low_16s_C3R, 5 taps over 16", column_Low_16s_C3R<5, Ends::Shifts>},
           {"qeliFilterColumnPipeline_32f_C1R, 3 taps", column_32f_C1R<3>},
           {"qeliFilterColumnPipeline_32f_C1R, 5 taps", column_32f_C1R<5>},
           {"qeliFilterColumnPipeline_32f_C1R, 9 taps", column_32f_C1R<9>},
           {"qeliFilterColumnPipeline_32f_C1R, 15 taps", column_32f_C1R<15>},
           {"qeliFilterColumnPipeline_32f_C3R, 3 taps", column_32f_C3R<3>},
           {"qeliFilterColumnPipeline_32f_C3R, 5 taps", column_32f_C3R<5>},
           {"qeliFilterColumnPipelineGetBufferSize_16s_C1R",
            getBufferSize<qeliFilterColumnPipelineGetBufferSize_16s_C1R>, bench::Sizes::One},
           {"qeliFilterColumnPipelineGetBufferSize_16s_C3R",
            getBufferSize<qeliFilterColumnPipelineGetBufferSize_16s_C3R>, bench::Sizes::One},
           {"qeliFilterColumnPipelineGetBufferSize_16s8u_C1R",
            getBufferSize<qeliFilterColumnPipelineGetBufferSize_16s8u_C1R>, bench::Sizes::One},
           {"qeliFilterColumnPipelineGetBufferSize_16s8u_C3R",
            getBufferSize<qeliFilterColumnPipelineGetBufferSize_16s8u_C3R>, bench::Sizes::One},
           {"qeliFilterColumnPipelineGetBufferSize_16s8s_C1R",
            getBufferSize<qeliFilterColumnPipelineGetBufferSize_16s8s_C1R>, bench::Sizes::One},
           {"qeliFilterColumnPipelineGetBufferSize_16s8s_C3R",
            getBufferSize<qeliFilterColumnPipelineGetBufferSize_16s8s_C3R>, bench::Sizes::One},
           {"qeliFilterColumnPipelineGetBufferSize_Low_16s_C1R",
            getBufferSize<qeliFilterColumnPipelineGetBufferSize_Low_16s_C1R>, bench::Sizes::One},
           {"qeliFilterColumnPipelineGetBufferSize_Low_16s_C3R",
            getBufferSize<qeliFilterColumnPipelineGetBufferSize_Low_16s_C3R>, bench::Sizes::One},
           {"qeliFilterColumnPipelineGetBufferSize_32f_C1R",
            getBufferSize<qeliFilterColumnPipelineGetBufferSize_32f_C1R>, bench::Sizes::One},
           {"qeliFilterColumnPipelineGetBufferSize_32f_C3R",
            getBufferSize<qeliFilterColumnPipelineGetBufferSize_32f_C3R>, bench::Sizes::One});
