#include <cmath>
#include <cstdint>
#include <type_traits>

#include "kit/bench.h"
#include "peers/opencv.h"
#include "qelcv.h"

namespace {

template <class T>
using Total = std::conditional_t<std::is_integral_v<T>, int64_t, double>;

template <class T>
struct Sums {
    Total<T> sum = 0, squares = 0;
    int64_t count = 0;
};

template <int channels, class T>
void plainSum(const T* p, int count, Sums<T>& sums) {
    for (int x = 0; x < count; ++x, p += channels) {
        sums.sum += *p;
        sums.squares += Total<T>(*p) * *p;
    }
    sums.count += count;
}

template <int channels, bool squares, class T>
void plainMaskedSum(const T* p, const Qel8u* mask, int count, Sums<T>& sums) {
    for (int x = 0; x < count; ++x, p += channels) {
        if (mask[x] == 0) continue;
        sums.sum += *p;
        if (squares) sums.squares += Total<T>(*p) * *p;
        ++sums.count;
    }
}

template <class T>
void writeMean(const Sums<T>& sums, double* mean) {
    *mean = double(sums.sum) / double(sums.count);
}

template <class T>
void writeMeanStdDev(const Sums<T>& sums, double* mean, double* stdDev) {
    writeMean(sums, mean);
    *stdDev = std::sqrt(std::fabs(double(sums.squares) / double(sums.count) - *mean * *mean));
}

// Of three channels, the middle one is processed.
template <class T>
void tolerate(bench::Case& c) {
    if (std::is_floating_point_v<T>) c.tolerance(1e-4);
}

template <class T, int channels, auto function>
void mean(bench::Case& c) {
    const auto a = c.input<T>({.channels = channels});
    const auto mask = c.mask();
    const auto m = c.values<Qel64f>(1);
    const QelSize size = c.size();
    tolerate<T>(c);
    c.ours([=] {
        if constexpr (channels == 1) {
            return function(a.data, a.step, mask.data, mask.step, size, m);
        } else {
            return function(a.data, a.step, mask.data, mask.step, size, 2, m);
        }
    });
    c.plain([=] {
        Sums<T> sums;
        for (int y = 0; y < size.height; ++y)
            plainMaskedSum<channels, false>(a.row(y) + channels / 2, mask.row(y), size.width, sums);
        writeMean(sums, m);
    });
    OPENCV(c.peer([a = mat(a), mask = mat(mask), m]() mutable { *m = cv::mean(a, mask)[channels / 2]; });)
}

template <class T, int channels, auto function>
void meanStdDev(bench::Case& c) {
    const auto a = c.input<T>({.channels = channels});
    const auto m = c.values<Qel64f>(2);
    const QelSize size = c.size();
    tolerate<T>(c);
    c.ours([=] {
        if constexpr (channels == 1) {
            return function(a.data, a.step, size, m, m + 1);
        } else {
            return function(a.data, a.step, size, 2, m, m + 1);
        }
    });
    c.plain([=] {
        Sums<T> sums;
        for (int y = 0; y < size.height; ++y) plainSum<channels>(a.row(y) + channels / 2, size.width, sums);
        writeMeanStdDev(sums, m, m + 1);
    });
    OPENCV(c.peer([a = mat(a), m]() mutable {
        cv::Scalar means, stdDevs;
        cv::meanStdDev(a, means, stdDevs);
        m[0] = means[channels / 2];
        m[1] = stdDevs[channels / 2];
    });)
}

template <class T, int channels, auto function>
void maskedMeanStdDev(bench::Case& c) {
    const auto a = c.input<T>({.channels = channels});
    const auto mask = c.mask();
    const auto m = c.values<Qel64f>(2);
    const QelSize size = c.size();
    tolerate<T>(c);
    c.ours([=] {
        if constexpr (channels == 1) {
            return function(a.data, a.step, mask.data, mask.step, size, m, m + 1);
        } else {
            return function(a.data, a.step, mask.data, mask.step, size, 2, m, m + 1);
        }
    });
    c.plain([=] {
        Sums<T> sums;
        for (int y = 0; y < size.height; ++y)
            plainMaskedSum<channels, true>(a.row(y) + channels / 2, mask.row(y), size.width, sums);
        writeMeanStdDev(sums, m, m + 1);
    });
    OPENCV(c.peer([a = mat(a), mask = mat(mask), m]() mutable {
        cv::Scalar means, stdDevs;
        cv::meanStdDev(a, means, stdDevs, mask);
        m[0] = means[channels / 2];
        m[1] = stdDevs[channels / 2];
    });)
}

}  // namespace

BENCH_ROWS({"qeliMean_8u_C1MR", mean<Qel8u, 1, qeliMean_8u_C1MR>},
           {"qeliMean_8u_C3CMR", mean<Qel8u, 3, qeliMean_8u_C3CMR>},
           {"qeliMean_8s_C1MR", mean<Qel8s, 1, qeliMean_8s_C1MR>},
           {"qeliMean_8s_C3CMR", mean<Qel8s, 3, qeliMean_8s_C3CMR>},
           {"qeliMean_16u_C1MR", mean<Qel16u, 1, qeliMean_16u_C1MR>},
           {"qeliMean_16u_C3CMR", mean<Qel16u, 3, qeliMean_16u_C3CMR>},
           {"qeliMean_32f_C1MR", mean<Qel32f, 1, qeliMean_32f_C1MR>},
           {"qeliMean_32f_C3CMR", mean<Qel32f, 3, qeliMean_32f_C3CMR>},
           {"qeliMean_StdDev_8u_C1R", meanStdDev<Qel8u, 1, qeliMean_StdDev_8u_C1R>},
           {"qeliMean_StdDev_8u_C3CR", meanStdDev<Qel8u, 3, qeliMean_StdDev_8u_C3CR>},
           {"qeliMean_StdDev_8u_C1MR", maskedMeanStdDev<Qel8u, 1, qeliMean_StdDev_8u_C1MR>},
           {"qeliMean_StdDev_8u_C3CMR", maskedMeanStdDev<Qel8u, 3, qeliMean_StdDev_8u_C3CMR>},
           {"qeliMean_StdDev_8s_C1R", meanStdDev<Qel8s, 1, qeliMean_StdDev_8s_C1R>},
           {"qeliMean_StdDev_8s_C3CR", meanStdDev<Qel8s, 3, qeliMean_StdDev_8s_C3CR>},
           {"qeliMean_StdDev_8s_C1MR", maskedMeanStdDev<Qel8s, 1, qeliMean_StdDev_8s_C1MR>},
           {"qeliMean_StdDev_8s_C3CMR", maskedMeanStdDev<Qel8s, 3, qeliMean_StdDev_8s_C3CMR>},
           {"qeliMean_StdDev_16u_C1R", meanStdDev<Qel16u, 1, qeliMean_StdDev_16u_C1R>},
           {"qeliMean_StdDev_16u_C3CR", meanStdDev<Qel16u, 3, qeliMean_StdDev_16u_C3CR>},
           {"qeliMean_StdDev_16u_C1MR", maskedMeanStdDev<Qel16u, 1, qeliMean_StdDev_16u_C1MR>},
           {"qeliMean_StdDev_16u_C3CMR", maskedMeanStdDev<Qel16u, 3, qeliMean_StdDev_16u_C3CMR>},
           {"qeliMean_StdDev_32f_C1R", meanStdDev<Qel32f, 1, qeliMean_StdDev_32f_C1R>},
           {"qeliMean_StdDev_32f_C3CR", meanStdDev<Qel32f, 3, qeliMean_StdDev_32f_C3CR>},
           {"qeliMean_StdDev_32f_C1MR", maskedMeanStdDev<Qel32f, 1, qeliMean_StdDev_32f_C1MR>},
           {"qeliMean_StdDev_32f_C3CMR", maskedMeanStdDev<Qel32f, 3, qeliMean_StdDev_32f_C3CMR>});
