#include <algorithm>
#include <vector>

#include "kit/bench.h"
#include "peers/opencv.h"
#include "qelcv.h"

#ifdef QEL_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

constexpr bool kMax = true;
constexpr bool kMin = false;

template <bool max, class T>
T extremeOf(T a, T b) {
    return (max ? a > b : a < b) ? a : b;
}

template <bool max, class T>
void plainAcross(const T* p, T* out, int width, int channels, int w) {
    const int reach = w / 2;
    for (int x = 0; x < width; ++x) {
        for (int c = 0; c < channels; ++c) {
            T extreme = p[std::max(x - reach, 0) * channels + c];
            for (int i = 1; i < w; ++i)
                extreme = extremeOf<max>(extreme, p[std::clamp(x - reach + i, 0, width - 1) * channels + c]);
            out[x * channels + c] = extreme;
        }
    }
}

template <bool max, class T>
void plainDown(const T* p, T* out, int samples) {
    for (int x = 0; x < samples; ++x) out[x] = extremeOf<max>(out[x], p[x]);
}

template <class T, bool max, auto function, auto bufferSizeOf, int channels, int w>
void extremes(bench::Case& c) {
    const auto in = c.input<T>({.channels = channels});
    const auto out = c.output<T>({.channels = channels});
    const QelSize size = c.size();
    int bytes = 0;
    bufferSizeOf(size.width, w, w, &bytes);
    Qel8u* const pBuffer = reinterpret_cast<Qel8u*>(c.scratch(size_t(bytes)));
    c.ours([=] { return function(in.data, in.step, out.data, out.step, size, {w, w}, {w / 2, w / 2}, pBuffer); });
    c.plain([=, across = std::vector<T>()]() mutable {
        const int samples = size.width * channels;
        across.resize(size_t(samples) * size_t(size.height));
        const auto row = [&](int y) { return &across[size_t(samples) * size_t(std::clamp(y, 0, size.height - 1))]; };
        for (int y = 0; y < size.height; ++y) plainAcross<max>(in.row(y), row(y), size.width, channels, w);
        for (int y = 0; y < size.height; ++y) {
            std::copy_n(row(y - w / 2), samples, out.row(y));
            for (int i = 1; i < w; ++i) plainDown<max>(row(y - w / 2 + i), out.row(y), samples);
        }
    });
    OPENCV(c.peer([in = mat(in), out = mat(out), mask = cv::getStructuringElement(cv::MORPH_RECT, {w, w})]() mutable {
        if (max) {
            cv::dilate(in, out, mask, {-1, -1}, 1, cv::BORDER_REPLICATE);
        } else {
            cv::erode(in, out, mask, {-1, -1}, 1, cv::BORDER_REPLICATE);
        }
    });)
}

template <auto function>
void bufferSize(bench::Case& c) {
    const int width = c.size().width;
    int* const pBufferSize = c.values<int>(1);
    c.ours([=] { return function(width, 5, 5, pBufferSize); });
}

}  // namespace

BENCH_ROWS({"qeliFilterMaxBorderReplicate_8u_C1R 3x3",
            extremes<Qel8u, kMax, qeliFilterMaxBorderReplicate_8u_C1R, qeliFilterMaxGetBufferSize_8u_C1R, 1, 3>},
           {"qeliFilterMaxBorderReplicate_8u_C1R 5x5",
            extremes<Qel8u, kMax, qeliFilterMaxBorderReplicate_8u_C1R, qeliFilterMaxGetBufferSize_8u_C1R, 1, 5>},
           {"qeliFilterMaxBorderReplicate_8u_C1R 15x15",
            extremes<Qel8u, kMax, qeliFilterMaxBorderReplicate_8u_C1R, qeliFilterMaxGetBufferSize_8u_C1R, 1, 15>},
           {"qeliFilterMaxBorderReplicate_8u_C1R 31x31",
            extremes<Qel8u, kMax, qeliFilterMaxBorderReplicate_8u_C1R, qeliFilterMaxGetBufferSize_8u_C1R, 1, 31>},
           {"qeliFilterMaxBorderReplicate_8u_C3R 3x3",
            extremes<Qel8u, kMax, qeliFilterMaxBorderReplicate_8u_C3R, qeliFilterMaxGetBufferSize_8u_C3R, 3, 3>},
           {"qeliFilterMaxBorderReplicate_8u_C3R 5x5",
            extremes<Qel8u, kMax, qeliFilterMaxBorderReplicate_8u_C3R, qeliFilterMaxGetBufferSize_8u_C3R, 3, 5>},
           {"qeliFilterMaxBorderReplicate_8u_C3R 15x15",
            extremes<Qel8u, kMax, qeliFilterMaxBorderReplicate_8u_C3R, qeliFilterMaxGetBufferSize_8u_C3R, 3, 15>},
           {"qeliFilterMaxBorderReplicate_8u_C3R 31x31",
            extremes<Qel8u, kMax, qeliFilterMaxBorderReplicate_8u_C3R, qeliFilterMaxGetBufferSize_8u_C3R, 3, 31>},
           {"qeliFilterMaxBorderReplicate_8u_C4R 3x3",
            extremes<Qel8u, kMax, qeliFilterMaxBorderReplicate_8u_C4R, qeliFilterMaxGetBufferSize_8u_C4R, 4, 3>},
           {"qeliFilterMaxBorderReplicate_8u_C4R 5x5",
            extremes<Qel8u, kMax, qeliFilterMaxBorderReplicate_8u_C4R, qeliFilterMaxGetBufferSize_8u_C4R, 4, 5>},
           {"qeliFilterMaxBorderReplicate_8u_C4R 15x15",
            extremes<Qel8u, kMax, qeliFilterMaxBorderReplicate_8u_C4R, qeliFilterMaxGetBufferSize_8u_C4R, 4, 15>},
           {"qeliFilterMaxBorderReplicate_8u_C4R 31x31",
            extremes<Qel8u, kMax, qeliFilterMaxBorderReplicate_8u_C4R, qeliFilterMaxGetBufferSize_8u_C4R, 4, 31>},
           {"qeliFilterMaxBorderReplicate_32f_C1R 3x3",
            extremes<Qel32f, kMax, qeliFilterMaxBorderReplicate_32f_C1R, qeliFilterMaxGetBufferSize_32f_C1R, 1, 3>},
           {"qeliFilterMaxBorderReplicate_32f_C1R 5x5",
            extremes<Qel32f, kMax, qeliFilterMaxBorderReplicate_32f_C1R, qeliFilterMaxGetBufferSize_32f_C1R, 1, 5>},
           {"qeliFilterMaxBorderReplicate_32f_C1R 15x15",
            extremes<Qel32f, kMax, qeliFilterMaxBorderReplicate_32f_C1R, qeliFilterMaxGetBufferSize_32f_C1R, 1, 15>},
           {"qeliFilterMaxBorderReplicate_32f_C1R 31x31",
            extremes<Qel32f, kMax, qeliFilterMaxBorderReplicate_32f_C1R, qeliFilterMaxGetBufferSize_32f_C1R, 1, 31>},
           {"qeliFilterMaxBorderReplicate_32f_C3R 3x3",
            extremes<Qel32f, kMax, qeliFilterMaxBorderReplicate_32f_C3R, qeliFilterMaxGetBufferSize_32f_C3R, 3, 3>},
           {"qeliFilterMaxBorderReplicate_32f_C3R 5x5",
            extremes<Qel32f, kMax, qeliFilterMaxBorderReplicate_32f_C3R, qeliFilterMaxGetBufferSize_32f_C3R, 3, 5>},
           {"qeliFilterMaxBorderReplicate_32f_C3R 15x15",
            extremes<Qel32f, kMax, qeliFilterMaxBorderReplicate_32f_C3R, qeliFilterMaxGetBufferSize_32f_C3R, 3, 15>},
           {"qeliFilterMaxBorderReplicate_32f_C3R 31x31",
            extremes<Qel32f, kMax, qeliFilterMaxBorderReplicate_32f_C3R, qeliFilterMaxGetBufferSize_32f_C3R, 3, 31>},
           {"qeliFilterMaxBorderReplicate_32f_C4R 3x3",
            extremes<Qel32f, kMax, qeliFilterMaxBorderReplicate_32f_C4R, qeliFilterMaxGetBufferSize_32f_C4R, 4, 3>},
           {"qeliFilterMaxBorderReplicate_32f_C4R 5x5",
            extremes<Qel32f, kMax, qeliFilterMaxBorderReplicate_32f_C4R, qeliFilterMaxGetBufferSize_32f_C4R, 4, 5>},
           {"qeliFilterMaxBorderReplicate_32f_C4R 15x15",
            extremes<Qel32f, kMax, qeliFilterMaxBorderReplicate_32f_C4R, qeliFilterMaxGetBufferSize_32f_C4R, 4, 15>},
           {"qeliFilterMaxBorderReplicate_32f_C4R 31x31",
            extremes<Qel32f, kMax, qeliFilterMaxBorderReplicate_32f_C4R, qeliFilterMaxGetBufferSize_32f_C4R, 4, 31>},
           {"qeliFilterMinBorderReplicate_8u_C1R 3x3",
            extremes<Qel8u, kMin, qeliFilterMinBorderReplicate_8u_C1R, qeliFilterMinGetBufferSize_8u_C1R, 1, 3>},
           {"qeliFilterMinBorderReplicate_8u_C1R 5x5",
            extremes<Qel8u, kMin, qeliFilterMinBorderReplicate_8u_C1R, qeliFilterMinGetBufferSize_8u_C1R, 1, 5>},
           {"qeliFilterMinBorderReplicate_8u_C1R 15x15",
            extremes<Qel8u, kMin, qeliFilterMinBorderReplicate_8u_C1R, qeliFilterMinGetBufferSize_8u_C1R, 1, 15>},
           {"qeliFilterMinBorderReplicate_8u_C1R 31x31",
            extremes<Qel8u, kMin, qeliFilterMinBorderReplicate_8u_C1R, qeliFilterMinGetBufferSize_8u_C1R, 1, 31>},
           {"qeliFilterMinBorderReplicate_8u_C3R 3x3",
            extremes<Qel8u, kMin, qeliFilterMinBorderReplicate_8u_C3R, qeliFilterMinGetBufferSize_8u_C3R, 3, 3>},
           {"qeliFilterMinBorderReplicate_8u_C3R 5x5",
            extremes<Qel8u, kMin, qeliFilterMinBorderReplicate_8u_C3R, qeliFilterMinGetBufferSize_8u_C3R, 3, 5>},
           {"qeliFilterMinBorderReplicate_8u_C3R 15x15",
            extremes<Qel8u, kMin, qeliFilterMinBorderReplicate_8u_C3R, qeliFilterMinGetBufferSize_8u_C3R, 3, 15>},
           {"qeliFilterMinBorderReplicate_8u_C3R 31x31",
            extremes<Qel8u, kMin, qeliFilterMinBorderReplicate_8u_C3R, qeliFilterMinGetBufferSize_8u_C3R, 3, 31>},
           {"qeliFilterMinBorderReplicate_8u_C4R 3x3",
            extremes<Qel8u, kMin, qeliFilterMinBorderReplicate_8u_C4R, qeliFilterMinGetBufferSize_8u_C4R, 4, 3>},
           {"qeliFilterMinBorderReplicate_8u_C4R 5x5",
            extremes<Qel8u, kMin, qeliFilterMinBorderReplicate_8u_C4R, qeliFilterMinGetBufferSize_8u_C4R, 4, 5>},
           {"qeliFilterMinBorderReplicate_8u_C4R 15x15",
            extremes<Qel8u, kMin, qeliFilterMinBorderReplicate_8u_C4R, qeliFilterMinGetBufferSize_8u_C4R, 4, 15>},
           {"qeliFilterMinBorderReplicate_8u_C4R 31x31",
            extremes<Qel8u, kMin, qeliFilterMinBorderReplicate_8u_C4R, qeliFilterMinGetBufferSize_8u_C4R, 4, 31>},
           {"qeliFilterMinBorderReplicate_32f_C1R 3x3",
            extremes<Qel32f, kMin, qeliFilterMinBorderReplicate_32f_C1R, qeliFilterMinGetBufferSize_32f_C1R, 1, 3>},
           {"qeliFilterMinBorderReplicate_32f_C1R 5x5",
            extremes<Qel32f, kMin, qeliFilterMinBorderReplicate_32f_C1R, qeliFilterMinGetBufferSize_32f_C1R, 1, 5>},
           {"qeliFilterMinBorderReplicate_32f_C1R 15x15",
            extremes<Qel32f, kMin, qeliFilterMinBorderReplicate_32f_C1R, qeliFilterMinGetBufferSize_32f_C1R, 1, 15>},
           {"qeliFilterMinBorderReplicate_32f_C1R 31x31",
            extremes<Qel32f, kMin, qeliFilterMinBorderReplicate_32f_C1R, qeliFilterMinGetBufferSize_32f_C1R, 1, 31>},
           {"qeliFilterMinBorderReplicate_32f_C3R 3x3",
            extremes<Qel32f, kMin, qeliFilterMinBorderReplicate_32f_C3R, qeliFilterMinGetBufferSize_32f_C3R, 3, 3>},
           {"qeliFilterMinBorderReplicate_32f_C3R 5x5",
            extremes<Qel32f, kMin, qeliFilterMinBorderReplicate_32f_C3R, qeliFilterMinGetBufferSize_32f_C3R, 3, 5>},
           {"qeliFilterMinBorderReplicate_32f_C3R 15x15",
            extremes<Qel32f, kMin, qeliFilterMinBorderReplicate_32f_C3R, qeliFilterMinGetBufferSize_32f_C3R, 3, 15>},
           {"qeliFilterMinBorderReplicate_32f_C3R 31x31",
            extremes<Qel32f, kMin, qeliFilterMinBorderReplicate_32f_C3R, qeliFilterMinGetBufferSize_32f_C3R, 3, 31>},
           {"qeliFilterMinBorderReplicate_32f_C4R 3x3",
            extremes<Qel32f, kMin, qeliFilterMinBorderReplicate_32f_C4R, qeliFilterMinGetBufferSize_32f_C4R, 4, 3>},
           {"qeliFilterMinBorderReplicate_32f_C4R 5x5",
            extremes<Qel32f, kMin, qeliFilterMinBorderReplicate_32f_C4R, qeliFilterMinGetBufferSize_32f_C4R, 4, 5>},
           {"qeliFilterMinBorderReplicate_32f_C4R 15x15",
            extremes<Qel32f, kMin, qeliFilterMinBorderReplicate_32f_C4R, qeliFilterMinGetBufferSize_32f_C4R, 4, 15>},
           {"qeliFilterMinBorderReplicate_32f_C4R 31x31",
            extremes<Qel32f, kMin, qeliFilterMinBorderReplicate_32f_C4R, qeliFilterMinGetBufferSize_32f_C4R, 4, 31>},
           {"qeliFilterMaxGetBufferSize_8u_C1R", bufferSize<qeliFilterMaxGetBufferSize_8u_C1R>, bench::Sizes::One},
           {"qeliFilterMaxGetBufferSize_8u_C3R", bufferSize<qeliFilterMaxGetBufferSize_8u_C3R>, bench::Sizes::One},
           {"qeliFilterMaxGetBufferSize_8u_C4R", bufferSize<qeliFilterMaxGetBufferSize_8u_C4R>, bench::Sizes::One},
           {"qeliFilterMaxGetBufferSize_32f_C1R", bufferSize<qeliFilterMaxGetBufferSize_32f_C1R>, bench::Sizes::One},
           {"qeliFilterMaxGetBufferSize_32f_C3R", bufferSize<qeliFilterMaxGetBufferSize_32f_C3R>, bench::Sizes::One},
           {"qeliFilterMaxGetBufferSize_32f_C4R", bufferSize<qeliFilterMaxGetBufferSize_32f_C4R>, bench::Sizes::One},
           {"qeliFilterMinGetBufferSize_8u_C1R", bufferSize<qeliFilterMinGetBufferSize_8u_C1R>, bench::Sizes::One},
           {"qeliFilterMinGetBufferSize_8u_C3R", bufferSize<qeliFilterMinGetBufferSize_8u_C3R>, bench::Sizes::One},
           {"qeliFilterMinGetBufferSize_8u_C4R", bufferSize<qeliFilterMinGetBufferSize_8u_C4R>, bench::Sizes::One},
           {"qeliFilterMinGetBufferSize_32f_C1R", bufferSize<qeliFilterMinGetBufferSize_32f_C1R>, bench::Sizes::One},
           {"qeliFilterMinGetBufferSize_32f_C3R", bufferSize<qeliFilterMinGetBufferSize_32f_C3R>, bench::Sizes::One},
           {"qeliFilterMinGetBufferSize_32f_C4R", bufferSize<qeliFilterMinGetBufferSize_32f_C4R>, bench::Sizes::One});
