#include <vector>

#include "kit/bench.h"
#include "peers/opencv.h"
#include "qelcv.h"

#ifdef QEL_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

// Index x, reflected about 0 and last.
int reflect(int x, int last) {
    x = x < 0 ? -x : x;
    return x > last ? 2 * last - x : x;
}

// As a user would write it: each row filtered once, then five of them added up.
template <class T, class Sum>
void plainRow(const T* s, Sum* out, int width, int channels) {
    for (int i = 0; i < (width + 1) / 2; ++i) {
        const T* p[5];
        for (int k = 0; k < 5; ++k) p[k] = s + reflect(2 * i + k - 2, width - 1) * channels;
        for (int c = 0; c < channels; ++c)
            out[i * channels + c] = Sum(p[2][c]) * 6 + (Sum(p[1][c]) + Sum(p[3][c])) * 4 + Sum(p[0][c]) + Sum(p[4][c]);
    }
}
template <class T, class Sum>
void plainColumn(const Sum* const* r, T* out, int count) {
    for (int x = 0; x < count; ++x) {
        const Sum sum = r[2][x] * 6 + (r[1][x] + r[3][x]) * 4 + r[0][x] + r[4][x];
        if constexpr (std::is_integral_v<T>) {
            out[x] = T((sum + 128) >> 8);
        } else {
            out[x] = sum * (1.0F / 256);
        }
    }
}

template <class T, auto function, int channels = 1>
void pyrDown(bench::Case& c) {
    using Sum = std::conditional_t<std::is_integral_v<T>, int, float>;
    const auto src = c.input<T>({.channels = channels});
    const QelSize size = c.size(), half = {(size.width + 1) / 2, (size.height + 1) / 2};
    const auto out = c.output<T>({.size = half, .channels = channels});
    int bytes = 0;
    qeliPyrDownGetBufSize_Gauss5x5(size.width, 1, channels, &bytes);
    Qel8u* const scratch = reinterpret_cast<Qel8u*>(c.scratch(size_t(bytes)));
    c.tolerance(1e-6);  // the ends of rows in another order
    c.ours([=] { return function(src.data, src.step, out.data, out.step, size, scratch); });
    c.plain([=] {
        const int count = half.width * channels;
        std::vector<Sum> ring(size_t(count) * 6);
        const auto slot = [&](int y) { return ring.data() + size_t(y % 6) * size_t(count); };
        int filtered = 0;
        for (int y = 0; y < half.height; ++y) {
            for (; filtered < std::min(2 * y + 3, size.height); ++filtered)
                plainRow(src.row(filtered), slot(filtered), size.width, channels);
            const Sum* rows[5];
            for (int k = 0; k < 5; ++k) rows[k] = slot(reflect(2 * y + k - 2, size.height - 1));
            plainColumn(rows, out.row(y), count);
        }
    });
    if constexpr (!std::is_same_v<T, Qel8s>) {
        OPENCV(c.peer([a = mat(src), b = mat(out)]() mutable { cv::pyrDown(a, b, b.size()); });)
    }
}

void pyrDownBytes(bench::Case& c) {
    int* const bytes = c.values<int>(1);
    c.ours([=] { return qeliPyrDownGetBufSize_Gauss5x5(640, 1, 3, bytes); });
}

}  // namespace

BENCH_ROWS({"qeliPyrDown_Gauss5x5_8u_C1R", pyrDown<Qel8u, qeliPyrDown_Gauss5x5_8u_C1R>},
           {"qeliPyrDown_Gauss5x5_8u_C3R", pyrDown<Qel8u, qeliPyrDown_Gauss5x5_8u_C3R, 3>},
           {"qeliPyrDown_Gauss5x5_8s_C1R", pyrDown<Qel8s, qeliPyrDown_Gauss5x5_8s_C1R>},
           {"qeliPyrDown_Gauss5x5_8s_C3R", pyrDown<Qel8s, qeliPyrDown_Gauss5x5_8s_C3R, 3>},
           {"qeliPyrDown_Gauss5x5_32f_C1R", pyrDown<Qel32f, qeliPyrDown_Gauss5x5_32f_C1R>},
           {"qeliPyrDown_Gauss5x5_32f_C3R", pyrDown<Qel32f, qeliPyrDown_Gauss5x5_32f_C3R, 3>},
           {"qeliPyrDownGetBufSize_Gauss5x5", pyrDownBytes, bench::Sizes::One});
