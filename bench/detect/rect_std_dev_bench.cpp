#include <algorithm>
#include <cmath>

#include "kit/bench.h"
#include "qelcv.h"

namespace {

constexpr QelRect kRect = {2, 2, 20, 20};  // of a window of 24 by 24
constexpr QelRect kTiltedRect = {14, 0, 8, 10};
constexpr int kScaleFactor = -3;

// The deviation by the types of the tables, of the four elements of each.
template <class T, class Q>
Qel32f plainUpright(T a, T b, T c, T d, Q qa, Q qb, Q qc, Q qd, Qel32f area) {
    const Qel32f mean = Qel32f((c - d) + (a - b)) / area;
    const Qel32f ofSquares = ((Qel32f(qc) - Qel32f(qd)) + (Qel32f(qa) - Qel32f(qb))) / area;
    const Qel32f variance = ofSquares - mean * mean;
    return variance < 0 ? 0 : std::sqrt(variance);
}
Qel32s plainUpright(Qel32s a, Qel32s b, Qel32s c, Qel32s d, Qel32s qa, Qel32s qb, Qel32s qc, Qel32s qd, Qel32f area) {
    const auto sum = [](Qel32s i, Qel32s j, Qel32s k, Qel32s l) {
        return Qel32f(Qel32s(unsigned(k) - unsigned(l) + unsigned(i) - unsigned(j)));
    };
    const Qel32f mean = sum(a, b, c, d) / area, ofSquares = sum(qa, qb, qc, qd) / area;
    const Qel32f variance = ofSquares - mean * mean;
    const double value = (variance < 0 ? 0 : std::sqrt(double(variance))) * (1 << -kScaleFactor) + 0.5;
    return value < 2147483648.0 ? Qel32s(value) : INT32_MIN;
}

Qel32f plainTilted(Qel32f a, Qel32f b, Qel32f c, Qel32f d, Qel64f qa, Qel64f qb, Qel64f qc, Qel64f qd, Qel32f area) {
    const double mean = (double(a) - double(b) - double(c) + double(d)) / area;
    const double variance = (qa - qb - qc + qd) / area - mean * mean;
    return std::sqrt(Qel32f(variance < 0 ? 0 : variance));
}
Qel32f plainTilted(Qel32s a, Qel32s b, Qel32s c, Qel32s d, Qel64f qa, Qel64f qb, Qel64f qc, Qel64f qd, Qel32f area) {
    const double mean = Qel32f(Qel32s(unsigned(a) - unsigned(b) - unsigned(c) + unsigned(d))) / area;
    const double variance = (qa - qb - qc + qd) / area - mean * mean;
    return std::sqrt(Qel32f(variance < 0 ? 0 : variance));
}
Qel32s plainTilted(Qel32s a, Qel32s b, Qel32s c, Qel32s d, Qel32s qa, Qel32s qb, Qel32s qc, Qel32s qd, Qel32f area) {
    const auto sum = [](Qel32s i, Qel32s j, Qel32s k, Qel32s l) {
        return Qel32f(Qel32s(unsigned(i) - unsigned(j) - unsigned(k) + unsigned(l)));
    };
    const double mean = sum(a, b, c, d) / area;
    const double variance = double(sum(qa, qb, qc, qd) / area) - mean * mean;
    const double value = double(std::sqrt(Qel32f(variance < 0 ? 0 : variance))) * (1 << -kScaleFactor) + 0.5;
    return value < 2147483648.0 ? Qel32s(value) : INT32_MIN;
}

// Reads of a row: the first element and its distance to the others, in the order of the sum's terms.
template <class T>
struct Reads {
    const T *a, *b, *c, *d;
};

template <bool tilted, class T, class Q, class R>
void plainRow(Reads<T> s, Reads<Q> q, R* out, int width, Qel32f area) {
    for (int x = 0; x < width; ++x) {
        if constexpr (tilted) {
            out[x] = plainTilted(s.a[x], s.b[x], s.c[x], s.d[x], q.a[x], q.b[x], q.c[x], q.d[x], area);
        } else {
            out[x] = plainUpright(s.a[x], s.b[x], s.c[x], s.d[x], q.a[x], q.b[x], q.c[x], q.d[x], area);
        }
    }
}

template <bool tilted, class T>
Reads<T> readsOf(const bench::Image<T>& t, int row) {
    if constexpr (tilted) {
        const QelRect r = kTiltedRect;
        const int x = r.x - r.y, y = r.x + r.y + row, w = r.width, h = r.height;
        return {t.row(y + w + h) + x + w - h, t.row(y + h) + x - h, t.row(y + w) + x + w, t.row(y) + x};
    } else {
        const QelRect r = kRect;
        const int x = r.x, y = r.y + row, w = r.width, h = r.height;
        return {t.row(y + h) + x + w, t.row(y + h) + x, t.row(y) + x, t.row(y) + x + w};
    }
}

// Tables of a noisy picture.
template <class T>
void sumUp(const bench::Image<T>& table, bool squares) {
    bench::Noise noise(3);
    for (int y = 0; y < table.size.height; ++y) {
        double running = 0;
        for (int x = 0; x < table.size.width; ++x) {
            const double sample = noise.next() >> 24;
            running += squares ? sample * sample : sample;
            table.row(y)[x] = T(running + (y > 0 ? double(table.row(y - 1)[x]) : 0));
        }
    }
}

template <bool tilted, class T, class Q, class R, auto function>
void deviation(bench::Case& c) {
    const QelSize size = c.size();
    const QelRect rect = tilted ? kTiltedRect : kRect;
    const QelSize more =
        tilted ? QelSize{rect.width + rect.height + rect.x + rect.y, rect.width + rect.height + rect.x + rect.y}
               : QelSize{rect.x + rect.width, rect.y + rect.height};
    const bench::Shape shape = {.size = {size.width + more.width, size.height + more.height}};
    const auto src = c.input<T>(shape);
    const auto sqr = c.input<Q>(shape);
    const auto out = c.output<R>();
    sumUp(src, false);
    sumUp(sqr, true);
    c.ours([=] {
        if constexpr (std::is_same_v<R, Qel32s>) {
            return function(src.data, src.step, sqr.data, sqr.step, out.data, out.step, size, rect, kScaleFactor);
        } else {
            return function(src.data, src.step, sqr.data, sqr.step, out.data, out.step, size, rect);
        }
    });
    const Qel32f area = Qel32f(rect.width * rect.height * (tilted ? 2 : 1));
    c.plain([=] {
        for (int y = 0; y < size.height; ++y)
            plainRow<tilted>(readsOf<tilted>(src, y), readsOf<tilted>(sqr, y), out.row(y), size.width, area);
    });
}

}  // namespace

BENCH_ROWS({"qeliRectStdDev_32f_C1R", deviation<false, Qel32f, Qel64f, Qel32f, qeliRectStdDev_32f_C1R>},
           {"qeliRectStdDev_32s32f_C1R", deviation<false, Qel32s, Qel64f, Qel32f, qeliRectStdDev_32s32f_C1R>},
           {"qeliRectStdDev_32s_C1RSfs", deviation<false, Qel32s, Qel32s, Qel32s, qeliRectStdDev_32s_C1RSfs>},
           {"qeliTiltedRectStdDev_32f_C1R", deviation<true, Qel32f, Qel64f, Qel32f, qeliTiltedRectStdDev_32f_C1R>},
           {"qeliTiltedRectStdDev_32s32f_C1R",
            deviation<true, Qel32s, Qel64f, Qel32f, qeliTiltedRectStdDev_32s32f_C1R>},
           {"qeliTiltedRectStdDev_32s_C1RSfs",
            deviation<true, Qel32s, Qel32s, Qel32s, qeliTiltedRectStdDev_32s_C1RSfs>});
