#include <vector>

#include "kit/bench.h"
#include "peers/opencv.h"
#include "qelcv.h"

#ifdef QEL_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

// As a user would write it: each row filtered once, then three of them added up.
template <class T, class Sum>
void plainRow(const T* s, Sum* out, int width, int channels) {
    for (int i = 0; i < width; ++i) {
        const T* here = s + i * channels;
        const T* before = i > 0 ? here - channels : s + channels;
        const T* after = i < width - 1 ? here + channels : here;
        for (int c = 0; c < channels; ++c) {
            out[2 * i * channels + c] = Sum(here[c]) * 6 + Sum(before[c]) + Sum(after[c]);
            out[(2 * i + 1) * channels + c] = (Sum(here[c]) + Sum(after[c])) * 4;
        }
    }
}
template <class T, class Sum>
T plainSample(Sum sum) {
    if constexpr (std::is_integral_v<T>) {
        return T((sum + 32) >> 6);
    } else {
        return sum * (1.0F / 64);
    }
}
template <class T, class Sum>
void plainColumn(const Sum* above, const Sum* here, const Sum* below, T* evenOut, T* oddOut, int count) {
    for (int x = 0; x < count; ++x) {
        evenOut[x] = plainSample<T>(here[x] * 6 + above[x] + below[x]);
        oddOut[x] = plainSample<T>((here[x] + below[x]) * 4);
    }
}

template <class T, auto function, int channels = 1>
void pyrUp(bench::Case& c) {
    using Sum = std::conditional_t<std::is_integral_v<T>, int, float>;
    const QelSize twice = c.size(), size = {twice.width / 2, twice.height / 2};
    const auto src = c.input<T>({.size = size, .channels = channels});
    const auto out = c.output<T>({.channels = channels});
    int bytes = 0;
    qeliPyrUpGetBufSize_Gauss5x5(size.width, 1, channels, &bytes);
    Qel8u* const scratch = reinterpret_cast<Qel8u*>(c.scratch(size_t(bytes)));
    c.tolerance(1e-6);  // the ends of rows in another order
    c.ours([=] { return function(src.data, src.step, out.data, out.step, size, scratch); });
    c.plain([=] {
        const int count = 2 * size.width * channels, last = size.height - 1;
        std::vector<Sum> ring(size_t(count) * 3);
        const auto slot = [&](int y) { return ring.data() + size_t(y % 3) * size_t(count); };
        plainRow(src.row(0), slot(0), size.width, channels);
        for (int y = 0; y <= last; ++y) {
            if (y < last) plainRow(src.row(y + 1), slot(y + 1), size.width, channels);
            plainColumn(slot(y > 0 ? y - 1 : 1), slot(y), slot(y < last ? y + 1 : y), out.row(2 * y),
                        out.row(2 * y + 1), count);
        }
    });
    if constexpr (!std::is_same_v<T, Qel8s>) {
        OPENCV(c.peer([a = mat(src), b = mat(out)]() mutable { cv::pyrUp(a, b, b.size()); });)
    }
}

void pyrUpBytes(bench::Case& c) {
    int* const bytes = c.values<int>(1);
    c.ours([=] { return qeliPyrUpGetBufSize_Gauss5x5(640, 1, 3, bytes); });
}

}  // namespace

// Sizes are those of the result.
BENCH_ROWS({"qeliPyrUp_Gauss5x5_8u_C1R", pyrUp<Qel8u, qeliPyrUp_Gauss5x5_8u_C1R>},
           {"qeliPyrUp_Gauss5x5_8u_C3R", pyrUp<Qel8u, qeliPyrUp_Gauss5x5_8u_C3R, 3>},
           {"qeliPyrUp_Gauss5x5_8s_C1R", pyrUp<Qel8s, qeliPyrUp_Gauss5x5_8s_C1R>},
           {"qeliPyrUp_Gauss5x5_8s_C3R", pyrUp<Qel8s, qeliPyrUp_Gauss5x5_8s_C3R, 3>},
           {"qeliPyrUp_Gauss5x5_32f_C1R", pyrUp<Qel32f, qeliPyrUp_Gauss5x5_32f_C1R>},
           {"qeliPyrUp_Gauss5x5_32f_C3R", pyrUp<Qel32f, qeliPyrUp_Gauss5x5_32f_C3R, 3>},
           {"qeliPyrUpGetBufSize_Gauss5x5", pyrUpBytes, bench::Sizes::One});
