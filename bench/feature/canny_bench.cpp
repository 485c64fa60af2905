#include <algorithm>
#include <cmath>
#include <type_traits>
#include <utility>
#include <vector>

#include "feature/scene.h"
#include "kit/bench.h"
#include "peers/opencv.h"
#include "qelcv.h"

#ifdef QEL_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

constexpr int kLow = 60;
constexpr int kHigh = 150;

// The 3x3 Sobel derivatives of the scene.
template <class T>
void derive(const bench::Image<T>& dx, const bench::Image<T>& dy) {
    const auto [width, height] = dx.size;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto at = [=](int i, int j) { return int{bench::sceneAt(x + i, y + j)}; };
            dx.row(y)[x] = T(at(1, -1) + 2 * at(1, 0) + at(1, 1) - at(-1, -1) - 2 * at(-1, 0) - at(-1, 1));
            dy.row(y)[x] = T(at(-1, 1) + 2 * at(0, 1) + at(1, 1) - at(-1, -1) - 2 * at(0, -1) - at(1, -1));
        }
    }
}

// Canny's steps one after the other, over whole images.
template <class T>
class PlainCanny {
public:
    explicit PlainCanny(QelSize size)
        : size_(size),
          pitch_(size.width + 2),
          magnitudes_(size_t(pitch_) * size_t(size.height + 2)),
          candidates_(magnitudes_.size()) {}

    void run(const bench::Image<T>& dx, const bench::Image<T>& dy, const bench::Image<Qel8u>& dst) {
        for (int y = 0; y < size_.height; ++y) magnitudes(dx.row(y), dy.row(y), &magnitudes_[index(0, y)]);
        for (int y = 0; y < size_.height; ++y) suppress(dx.row(y), dy.row(y), y, dst.row(y));
        while (!stack_.empty()) {
            const auto [x, y] = stack_.back();
            stack_.pop_back();
            for (int j = y - 1; j <= y + 1; ++j)
                for (int i = x - 1; i <= x + 1; ++i)
                    if (std::exchange(candidates_[index(i, j)], Qel8u{0}) != 0) take({i, j}, dst.row(j));
        }
    }

private:
    size_t index(int x, int y) const { return size_t(pitch_) * size_t(y + 1) + size_t(x + 1); }

    void magnitudes(const T* dx, const T* dy, T* out) const {
        const int width = size_.width;
        for (int x = 0; x < width; ++x) {
            const T m = T(std::abs(dx[x]) + std::abs(dy[x]));
            out[x] = (std::is_integral_v<T> ? m > kLow : m >= kLow) ? m : T(0);
        }
    }

    bool isMaximum(T dx, T dy, const T* m) const {
        const auto ax = std::abs(float(dx)), ay = std::abs(float(dy));
        if (ax * 2.414213657f < ay) return *m > m[-pitch_] && *m >= m[pitch_];
        if (ay < ax * 0.414213568f) return *m > m[-1] && *m >= m[1];
        const int step = (dx < 0) == (dy < 0) ? pitch_ + 1 : pitch_ - 1;
        return *m > m[-step] && *m > m[step];
    }

    void suppress(const T* dx, const T* dy, int y, Qel8u* dst) {
        std::fill_n(dst, size_.width, Qel8u{0});
        for (int x = 0; x < size_.width; ++x) {
            const T* const m = &magnitudes_[index(x, y)];
            const bool stays = *m != 0 && isMaximum(dx[x], dy[x], m);
            candidates_[index(x, y)] = stays && *m <= kHigh;
            if (stays && *m > kHigh) take({x, y}, dst);
        }
    }

    void take(QelPoint p, Qel8u* dst) {
        dst[p.x] = 255;
        stack_.push_back(p);
    }

    QelSize size_;
    int pitch_;
    std::vector<T> magnitudes_;
    std::vector<Qel8u> candidates_;
    std::vector<QelPoint> stack_;
};

template <class T, auto function>
void canny(bench::Case& c) {
    const auto dx = c.input<T>(), dy = c.input<T>();
    const auto out = c.output<Qel8u>();
    const QelSize size = c.size();
    derive(dx, dy);
    int bytes = 0;
    qeliCannyGetSize(size, &bytes);
    auto* const buffer = reinterpret_cast<Qel8u*>(c.scratch(size_t(bytes)));
    c.ours([=] { return function(dx.data, dx.step, dy.data, dy.step, out.data, out.step, size, kLow, kHigh, buffer); });
    // Behind its rows ours writes zeroes, too.
    c.plain([=, plain = PlainCanny<T>(size)]() mutable {
        plain.run(dx, dy, out);
        for (int y = 0; y < size.height; ++y) std::fill(out.row(y) + size.width, out.row(y) + out.step, Qel8u{0});
    });
    if constexpr (std::is_same_v<T, Qel16s>) {
        OPENCV(
            c.peer([=, dx = mat(dx), dy = mat(dy), out = mat(out)]() mutable { cv::Canny(dx, dy, out, kLow, kHigh); });)
    }
}

void size(bench::Case& c) {
    int* const bytes = c.values<int>(1);
    c.ours([=] { return qeliCannyGetSize({640, 480}, bytes); });
}

}  // namespace

BENCH_ROWS({"qeliCanny_16s8u_C1R", canny<Qel16s, qeliCanny_16s8u_C1R>},
           {"qeliCanny_32f8u_C1R", canny<Qel32f, qeliCanny_32f8u_C1R>}, {"qeliCannyGetSize", size, bench::Sizes::One});
