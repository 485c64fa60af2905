#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <type_traits>

#include "kit/bench.h"
#include "peers/opencv.h"
#include "qelcv.h"

namespace {

enum class Of { Inf, L1, L2 };

// Sums as a user would declare them: wide enough for any image.
template <class T>
using Wide = std::conditional_t<std::is_integral_v<T>, int64_t, double>;

template <Of norm, class T>
Wide<T> term(Wide<T> sum, Wide<T> x) {
    if constexpr (norm == Of::Inf) return std::max(sum, x < 0 ? -x : x);
    if constexpr (norm == Of::L1) return sum + (x < 0 ? -x : x);
    if constexpr (norm == Of::L2) return sum + x * x;
}

template <Of norm, class T>
Wide<T> plainNorm(const T* a, const Qel8u* mask, int channels, int count, Wide<T> sum) {
    for (int x = 0; x < count; ++x)
        if (mask[x] != 0) sum = term<norm, T>(sum, a[x * channels]);
    return sum;
}

template <Of norm, class T>
Wide<T> plainNormDiff(const T* a, const T* b, const Qel8u* mask, int channels, int count, Wide<T> sum) {
    for (int x = 0; x < count; ++x)
        if (mask[x] != 0) sum = term<norm, T>(sum, a[x * channels] - b[x * channels]);
    return sum;
}

template <Of norm, class T>
double finished(Wide<T> sum) {
    return norm == Of::L2 ? std::sqrt(double(sum)) : double(sum);
}

// Single precision is part of the results of 32f and of L2 of 16u.
template <Of norm, class T>
void rounding(bench::Case& c) {
    if (std::is_floating_point_v<T> || (sizeof(T) == 2 && norm == Of::L2)) c.tolerance(1e-4);
}

#ifdef QEL_BENCH_OPENCV
constexpr int peersNorm(Of norm) { return norm == Of::Inf ? cv::NORM_INF : norm == Of::L1 ? cv::NORM_L1 : cv::NORM_L2; }
#endif

template <auto function, class T, int channels, class... Arguments>
qelStatus withChannel(double* pValue, Arguments... arguments) {
    if constexpr (channels == 3) {
        return function(arguments..., 2, pValue);
    } else {
        return function(arguments..., pValue);
    }
}

// The peer takes one channel only where the image has one.
template <class T, Of norm, auto function, int channels = 1>
void ofOne(bench::Case& c) {
    const auto a = c.input<T>({.channels = channels});
    const auto mask = c.mask();
    Qel64f* const pValue = c.values<Qel64f>(1);
    const QelSize size = c.size();
    const int first = channels / 2;
    rounding<norm, T>(c);
    c.ours([=] { return withChannel<function, T, channels>(pValue, a.data, a.step, mask.data, mask.step, size); });
    c.plain([=] {
        Wide<T> sum = 0;
        for (int y = 0; y < size.height; ++y)
            sum = plainNorm<norm, T>(a.row(y) + first, mask.row(y), channels, size.width, sum);
        *pValue = finished<norm, T>(sum);
    });
    OPENCV(if (channels == 1)
               c.peer([=, a = mat(a), mask = mat(mask)] { *pValue = cv::norm(a, peersNorm(norm), mask); });)
}

template <class T, Of norm, auto function, int channels = 1>
void ofTwo(bench::Case& c) {
    const auto a = c.input<T>({.channels = channels});
    const auto b = c.input<T>({.channels = channels});
    const auto mask = c.mask();
    Qel64f* const pValue = c.values<Qel64f>(1);
    const QelSize size = c.size();
    const int first = channels / 2;
    rounding<norm, T>(c);
    c.ours([=] {
        return withChannel<function, T, channels>(pValue, a.data, a.step, b.data, b.step, mask.data, mask.step, size);
    });
    c.plain([=] {
        Wide<T> sum = 0;
        for (int y = 0; y < size.height; ++y) {
            sum = plainNormDiff<norm, T>(a.row(y) + first, b.row(y) + first, mask.row(y), channels, size.width, sum);
        }
        *pValue = finished<norm, T>(sum);
    });
    OPENCV(if (channels == 1) c.peer(
        [=, a = mat(a), b = mat(b), mask = mat(mask)] { *pValue = cv::norm(a, b, peersNorm(norm), mask); });)
}

template <class T, Of norm, auto function, int channels = 1>
void relative(bench::Case& c) {
    const auto a = c.input<T>({.channels = channels});
    const auto b = c.input<T>({.channels = channels});
    const auto mask = c.mask();
    Qel64f* const pValue = c.values<Qel64f>(1);
    const QelSize size = c.size();
    const int first = channels / 2;
    c.tolerance(1e-4);
    c.ours([=] {
        return withChannel<function, T, channels>(pValue, a.data, a.step, b.data, b.step, mask.data, mask.step, size);
    });
    c.plain([=] {
        Wide<T> sum = 0;
        Wide<T> reference = 0;
        for (int y = 0; y < size.height; ++y) {
            sum = plainNormDiff<norm, T>(a.row(y) + first, b.row(y) + first, mask.row(y), channels, size.width, sum);
            reference = plainNorm<norm, T>(b.row(y) + first, mask.row(y), channels, size.width, reference);
        }
        *pValue = finished<norm, T>(sum) / finished<norm, T>(reference);
    });
    OPENCV(if (channels == 1) c.peer([=, a = mat(a), b = mat(b), mask = mat(mask)] {
        *pValue = cv::norm(a, b, peersNorm(norm) | cv::NORM_RELATIVE, mask);
    });)
}

}  // namespace

BENCH_ROWS({"qeliNorm_Inf_8u_C1MR", ofOne<Qel8u, Of::Inf, qeliNorm_Inf_8u_C1MR>},
           {"qeliNorm_Inf_8u_C3CMR", ofOne<Qel8u, Of::Inf, qeliNorm_Inf_8u_C3CMR, 3>},
           {"qeliNorm_Inf_8s_C1MR", ofOne<Qel8s, Of::Inf, qeliNorm_Inf_8s_C1MR>},
           {"qeliNorm_Inf_8s_C3CMR", ofOne<Qel8s, Of::Inf, qeliNorm_Inf_8s_C3CMR, 3>},
           {"qeliNorm_Inf_16u_C1MR", ofOne<Qel16u, Of::Inf, qeliNorm_Inf_16u_C1MR>},
           {"qeliNorm_Inf_16u_C3CMR", ofOne<Qel16u, Of::Inf, qeliNorm_Inf_16u_C3CMR, 3>},
           {"qeliNorm_Inf_32f_C1MR", ofOne<Qel32f, Of::Inf, qeliNorm_Inf_32f_C1MR>},
           {"qeliNorm_Inf_32f_C3CMR", ofOne<Qel32f, Of::Inf, qeliNorm_Inf_32f_C3CMR, 3>},
           {"qeliNorm_L1_8u_C1MR", ofOne<Qel8u, Of::L1, qeliNorm_L1_8u_C1MR>},
           {"qeliNorm_L1_8u_C3CMR", ofOne<Qel8u, Of::L1, qeliNorm_L1_8u_C3CMR, 3>},
           {"qeliNorm_L1_8s_C1MR", ofOne<Qel8s, Of::L1, qeliNorm_L1_8s_C1MR>},
           {"qeliNorm_L1_8s_C3CMR", ofOne<Qel8s, Of::L1, qeliNorm_L1_8s_C3CMR, 3>},
           {"qeliNorm_L1_16u_C1MR", ofOne<Qel16u, Of::L1, qeliNorm_L1_16u_C1MR>},
           {"qeliNorm_L1_16u_C3CMR", ofOne<Qel16u, Of::L1, qeliNorm_L1_16u_C3CMR, 3>},
           {"qeliNorm_L1_32f_C1MR", ofOne<Qel32f, Of::L1, qeliNorm_L1_32f_C1MR>},
           {"qeliNorm_L1_32f_C3CMR", ofOne<Qel32f, Of::L1, qeliNorm_L1_32f_C3CMR, 3>},
           {"qeliNorm_L2_8u_C1MR", ofOne<Qel8u, Of::L2, qeliNorm_L2_8u_C1MR>},
           {"qeliNorm_L2_8u_C3CMR", ofOne<Qel8u, Of::L2, qeliNorm_L2_8u_C3CMR, 3>},
           {"qeliNorm_L2_8s_C1MR", ofOne<Qel8s, Of::L2, qeliNorm_L2_8s_C1MR>},
           {"qeliNorm_L2_8s_C3CMR", ofOne<Qel8s, Of::L2, qeliNorm_L2_8s_C3CMR, 3>},
           {"qeliNorm_L2_16u_C1MR", ofOne<Qel16u, Of::L2, qeliNorm_L2_16u_C1MR>},
           {"qeliNorm_L2_16u_C3CMR", ofOne<Qel16u, Of::L2, qeliNorm_L2_16u_C3CMR, 3>},
           {"qeliNorm_L2_32f_C1MR", ofOne<Qel32f, Of::L2, qeliNorm_L2_32f_C1MR>},
           {"qeliNorm_L2_32f_C3CMR", ofOne<Qel32f, Of::L2, qeliNorm_L2_32f_C3CMR, 3>},
           {"qeliNormDiff_Inf_8u_C1MR", ofTwo<Qel8u, Of::Inf, qeliNormDiff_Inf_8u_C1MR>},
           {"qeliNormDiff_Inf_8u_C3CMR", ofTwo<Qel8u, Of::Inf, qeliNormDiff_Inf_8u_C3CMR, 3>},
           {"qeliNormDiff_Inf_8s_C1MR", ofTwo<Qel8s, Of::Inf, qeliNormDiff_Inf_8s_C1MR>},
           {"qeliNormDiff_Inf_8s_C3CMR", ofTwo<Qel8s, Of::Inf, qeliNormDiff_Inf_8s_C3CMR, 3>},
           {"qeliNormDiff_Inf_16u_C1MR", ofTwo<Qel16u, Of::Inf, qeliNormDiff_Inf_16u_C1MR>},
           {"qeliNormDiff_Inf_16u_C3CMR", ofTwo<Qel16u, Of::Inf, qeliNormDiff_Inf_16u_C3CMR, 3>},
           {"qeliNormDiff_Inf_32f_C1MR", ofTwo<Qel32f, Of::Inf, qeliNormDiff_Inf_32f_C1MR>},
           {"qeliNormDiff_Inf_32f_C3CMR", ofTwo<Qel32f, Of::Inf, qeliNormDiff_Inf_32f_C3CMR, 3>},
           {"qeliNormDiff_L1_8u_C1MR", ofTwo<Qel8u, Of::L1, qeliNormDiff_L1_8u_C1MR>},
           {"qeliNormDiff_L1_8u_C3CMR", ofTwo<Qel8u, Of::L1, qeliNormDiff_L1_8u_C3CMR, 3>},
           {"qeliNormDiff_L1_8s_C1MR", ofTwo<Qel8s, Of::L1, qeliNormDiff_L1_8s_C1MR>},
           {"qeliNormDiff_L1_8s_C3CMR", ofTwo<Qel8s, Of::L1, qeliNormDiff_L1_8s_C3CMR, 3>},
           {"qeliNormDiff_L1_16u_C1MR", ofTwo<Qel16u, Of::L1, qeliNormDiff_L1_16u_C1MR>},
           {"qeliNormDiff_L1_16u_C3CMR", ofTwo<Qel16u, Of::L1, qeliNormDiff_L1_16u_C3CMR, 3>},
           {"qeliNormDiff_L1_32f_C1MR", ofTwo<Qel32f, Of::L1, qeliNormDiff_L1_32f_C1MR>},
           {"qeliNormDiff_L1_32f_C3CMR", ofTwo<Qel32f, Of::L1, qeliNormDiff_L1_32f_C3CMR, 3>},
           {"qeliNormDiff_L2_8u_C1MR", ofTwo<Qel8u, Of::L2, qeliNormDiff_L2_8u_C1MR>},
           {"qeliNormDiff_L2_8u_C3CMR", ofTwo<Qel8u, Of::L2, qeliNormDiff_L2_8u_C3CMR, 3>},
           {"qeliNormDiff_L2_8s_C1MR", ofTwo<Qel8s, Of::L2, qeliNormDiff_L2_8s_C1MR>},
           {"qeliNormDiff_L2_8s_C3CMR", ofTwo<Qel8s, Of::L2, qeliNormDiff_L2_8s_C3CMR, 3>},
           {"qeliNormDiff_L2_16u_C1MR", ofTwo<Qel16u, Of::L2, qeliNormDiff_L2_16u_C1MR>},
           {"qeliNormDiff_L2_16u_C3CMR", ofTwo<Qel16u, Of::L2, qeliNormDiff_L2_16u_C3CMR, 3>},
           {"qeliNormDiff_L2_32f_C1MR", ofTwo<Qel32f, Of::L2, qeliNormDiff_L2_32f_C1MR>},
           {"qeliNormDiff_L2_32f_C3CMR", ofTwo<Qel32f, Of::L2, qeliNormDiff_L2_32f_C3CMR, 3>},
           {"qeliNormRel_Inf_8u_C1MR", relative<Qel8u, Of::Inf, qeliNormRel_Inf_8u_C1MR>},
           {"qeliNormRel_Inf_8u_C3CMR", relative<Qel8u, Of::Inf, qeliNormRel_Inf_8u_C3CMR, 3>},
           {"qeliNormRel_Inf_8s_C1MR", relative<Qel8s, Of::Inf, qeliNormRel_Inf_8s_C1MR>},
           {"qeliNormRel_Inf_8s_C3CMR", relative<Qel8s, Of::Inf, qeliNormRel_Inf_8s_C3CMR, 3>},
           {"qeliNormRel_Inf_16u_C1MR", relative<Qel16u, Of::Inf, qeliNormRel_Inf_16u_C1MR>},
           {"qeliNormRel_Inf_16u_C3CMR", relative<Qel16u, Of::Inf, qeliNormRel_Inf_16u_C3CMR, 3>},
           {"qeliNormRel_Inf_32f_C1MR", relative<Qel32f, Of::Inf, qeliNormRel_Inf_32f_C1MR>},
           {"qeliNormRel_Inf_32f_C3CMR", relative<Qel32f, Of::Inf, qeliNormRel_Inf_32f_C3CMR, 3>},
           {"qeliNormRel_L1_8u_C1MR", relative<Qel8u, Of::L1, qeliNormRel_L1_8u_C1MR>},
           {"qeliNormRel_L1_8u_C3CMR", relative<Qel8u, Of::L1, qeliNormRel_L1_8u_C3CMR, 3>},
           {"qeliNormRel_L1_8s_C1MR", relative<Qel8s, Of::L1, qeliNormRel_L1_8s_C1MR>},
           {"qeliNormRel_L1_8s_C3CMR", relative<Qel8s, Of::L1, qeliNormRel_L1_8s_C3CMR, 3>},
           {"qeliNormRel_L1_16u_C1MR", relative<Qel16u, Of::L1, qeliNormRel_L1_16u_C1MR>},
           {"qeliNormRel_L1_16u_C3CMR", relative<Qel16u, Of::L1, qeliNormRel_L1_16u_C3CMR, 3>},
           {"qeliNormRel_L1_32f_C1MR", relative<Qel32f, Of::L1, qeliNormRel_L1_32f_C1MR>},
           {"qeliNormRel_L1_32f_C3CMR", relative<Qel32f, Of::L1, qeliNormRel_L1_32f_C3CMR, 3>},
           {"qeliNormRel_L2_8u_C1MR", relative<Qel8u, Of::L2, qeliNormRel_L2_8u_C1MR>},
           {"qeliNormRel_L2_8u_C3CMR", relative<Qel8u, Of::L2, qeliNormRel_L2_8u_C3CMR, 3>},
           {"qeliNormRel_L2_8s_C1MR", relative<Qel8s, Of::L2, qeliNormRel_L2_8s_C1MR>},
           {"qeliNormRel_L2_8s_C3CMR", relative<Qel8s, Of::L2, qeliNormRel_L2_8s_C3CMR, 3>},
           {"qeliNormRel_L2_16u_C1MR", relative<Qel16u, Of::L2, qeliNormRel_L2_16u_C1MR>},
           {"qeliNormRel_L2_16u_C3CMR", relative<Qel16u, Of::L2, qeliNormRel_L2_16u_C3CMR, 3>},
           {"qeliNormRel_L2_32f_C1MR", relative<Qel32f, Of::L2, qeliNormRel_L2_32f_C1MR>},
           {"qeliNormRel_L2_32f_C3CMR", relative<Qel32f, Of::L2, qeliNormRel_L2_32f_C3CMR, 3>});
