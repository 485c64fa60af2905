#include <algorithm>

#include "kit/bench.h"
#include "peers/opencv.h"
#include "qelcv.h"

#ifdef QEL_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

// What a user would write: whole numbers are summed as such along the row.
template <class T, bool squares>
void plainRow(const Qel8u* s, const T* above, T* out, int width, T offset) {
    using Sum = std::conditional_t<std::is_same_v<T, Qel64f>, Qel64f, unsigned>;
    Sum sum = 0;
    out[0] = offset;
    for (int x = 0; x < width; ++x) {
        sum += squares ? s[x] * s[x] : s[x];
        if constexpr (std::is_same_v<T, Qel32s>) {
            out[x + 1] = Qel32s(unsigned(above[x + 1]) + sum);
        } else {
            out[x + 1] = above[x + 1] + static_cast<T>(sum);
        }
    }
}

template <class T, bool squares = false>
void plainTable(const bench::Image<Qel8u>& src, const bench::Image<T>& out) {
    std::fill_n(out.row(0), src.size.width + 1, T(0));
    for (int y = 0; y < src.size.height; ++y)
        plainRow<T, squares>(src.row(y), out.row(y), out.row(y + 1), src.size.width, T(0));
}

template <class T, bool squares, bool readsPast>
void plainTiltedRow(const Qel8u* s, const T* prev2, const T* prev1, T* cur, int w) {
    using Wide = std::conditional_t<std::is_same_v<T, Qel32s>, Qel32s, Qel64f>;
    const auto power = [s](int x) { return squares ? s[x] * s[x] : s[x]; };
    cur[0] = prev1[1];
    for (int j = 1; j < w + readsPast; ++j) {
        if constexpr (std::is_same_v<T, Qel64f>) {
            cur[j] = power(j - 1) + power(j) + prev1[j - 1] - prev2[j] + prev1[j + 1];
        } else {
            cur[j] = T(Wide(prev1[j - 1]) - Wide(prev2[j]) + Wide(prev1[j + 1]) + Wide(power(j - 1)) + Wide(power(j)));
        }
    }
    if (!readsPast) cur[w] = T(Wide(power(w - 1)) + Wide(prev1[w - 1]) + Wide(prev1[w + 1]) - Wide(prev2[w]));
    cur[w + 1] = prev1[w];
}

template <class T, bool squares = false, bool readsPast = false>
void plainTilted(const bench::Image<Qel8u>& src, int width, const bench::Image<T>& out) {
    for (int y = 0; y < 2; ++y) std::fill_n(out.row(y), width + 2, T(0));
    for (int y = 0; y < src.size.height; ++y)
        plainTiltedRow<T, squares, readsPast>(src.row(y), out.row(y), out.row(y + 1), out.row(y + 2), width);
}

// 32f tables are added to in this column.
template <class T>
void clearColumn(const bench::Image<T>& table, int x) {
    if constexpr (std::is_same_v<T, Qel32f>)
        for (int y = 0; y < table.size.height; ++y) table.row(y)[x] = 0;
}

bench::Shape larger(QelSize size, int by) { return {.size = {size.width + by, size.height + by}}; }

template <class T, auto function>
void integral(bench::Case& c) {
    const auto src = c.input<Qel8u>();
    const auto out = c.output<T>(larger(c.size(), 1));
    const QelSize size = c.size();
    c.ours([=] { return function(src.data, src.step, out.data, out.step, size, 0); });
    c.plain([=] { plainTable<T>(src, out); });
    OPENCV(c.peer([src = mat(src), out = mat(out)]() mutable { cv::integral(src, out, cv::DataType<T>::depth); });)
}

template <class T, class Q, auto function>
void sqrIntegral(bench::Case& c) {
    const auto src = c.input<Qel8u>();
    const auto out = c.output<T>(larger(c.size(), 1));
    const auto sqr = c.output<Q>(larger(c.size(), 1));
    const QelSize size = c.size();
    c.ours([=] { return function(src.data, src.step, out.data, out.step, sqr.data, sqr.step, size, 0, 0); });
    c.plain([=] {
        plainTable<T>(src, out);
        plainTable<Q, true>(src, sqr);
    });
    OPENCV(c.peer([src = mat(src), out = mat(out), sqr = mat(sqr)]() mutable {
        cv::integral(src, out, sqr, cv::DataType<T>::depth, cv::DataType<Q>::depth);
    });)
}

// The peer forms tilted sums only along with the upright ones and those of squares: all three are formed by all.
template <class T, auto upright, auto tilted>
void allThree(bench::Case& c) {
    const auto src = c.input<Qel8u>();
    const auto out = c.output<T>(larger(c.size(), 1));
    const auto sqr = c.output<Qel64f>(larger(c.size(), 1));
    const auto tilt = c.output<T>(larger(c.size(), 2));
    const QelSize size = c.size();
    c.ours([=] {
        clearColumn(tilt, size.width);
        upright(src.data, src.step, out.data, out.step, sqr.data, sqr.step, size, 0, 0);
        return tilted(src.data, src.step, tilt.data, tilt.step, size, 0);
    });
    c.plain([=] {
        clearColumn(tilt, size.width);
        plainTable<T>(src, out);
        plainTable<Qel64f, true>(src, sqr);
        plainTilted<T>(src, size.width, tilt);
    });
    OPENCV(const auto peers = cv::Mat(size.height + 1, size.width + 1, cv::DataType<T>::depth);
           c.peer([src = mat(src), out = mat(out), sqr = mat(sqr), peers]() mutable {
               cv::integral(src, out, sqr, peers, cv::DataType<T>::depth, CV_64F);
           });)
}

template <class T, class Q, auto function, bool readsPast = false>
void tiltedSqr(bench::Case& c) {
    const QelSize size = c.size();
    const auto src = c.input<Qel8u>({.size = {size.width + readsPast, size.height}});
    const auto out = c.output<T>(larger(size, 2));
    const auto sqr = c.output<Q>(larger(size, 2));
    c.ours([=] {
        clearColumn(out, size.width);
        return function(src.data, src.step, out.data, out.step, sqr.data, sqr.step, size, 0, 0);
    });
    c.plain([=] {
        clearColumn(out, size.width);
        plainTilted<T, false, readsPast>(src, size.width, out);
        plainTilted<Q, true, readsPast>(src, size.width, sqr);
    });
}

}  // namespace

BENCH_ROWS({"qeliIntegral_8u32s_C1R", integral<Qel32s, qeliIntegral_8u32s_C1R>},
           {"qeliIntegral_8u32f_C1R", integral<Qel32f, qeliIntegral_8u32f_C1R>},
           {"qeliSqrIntegral_8u32s_C1R", sqrIntegral<Qel32s, Qel32s, qeliSqrIntegral_8u32s_C1R>},
           {"qeliSqrIntegral_8u32s64f_C1R", sqrIntegral<Qel32s, Qel64f, qeliSqrIntegral_8u32s64f_C1R>},
           {"qeliSqrIntegral_8u32f64f_C1R", sqrIntegral<Qel32f, Qel64f, qeliSqrIntegral_8u32f64f_C1R>},
           {"qeliTiltedIntegral_8u32s_C1R",
            allThree<Qel32s, qeliSqrIntegral_8u32s64f_C1R, qeliTiltedIntegral_8u32s_C1R>},
           {"qeliTiltedIntegral_8u32f_C1R",
            allThree<Qel32f, qeliSqrIntegral_8u32f64f_C1R, qeliTiltedIntegral_8u32f_C1R>},
           {"qeliTiltedSqrIntegral_8u32s_C1R", tiltedSqr<Qel32s, Qel32s, qeliTiltedSqrIntegral_8u32s_C1R, true>},
           {"qeliTiltedSqrIntegral_8u32s64f_C1R", tiltedSqr<Qel32s, Qel64f, qeliTiltedSqrIntegral_8u32s64f_C1R>},
           {"qeliTiltedSqrIntegral_8u32f64f_C1R", tiltedSqr<Qel32f, Qel64f, qeliTiltedSqrIntegral_8u32f64f_C1R>});
