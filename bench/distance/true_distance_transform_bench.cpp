#include <algorithm>
#include <cmath>
#include <vector>

#include "kit/bench.h"
#include "peers/opencv.h"
#include "qelcv.h"

#ifdef QEL_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

// Discs on a ground: what distances are taken of.
void drawDiscs(const bench::Image<Qel8u>& image) {
    constexpr int kPitch = 48, kRadius = 21;
    for (int y = 0; y < image.size.height; ++y) {
        for (int x = 0; x < image.size.width; ++x) {
            const int dx = x % kPitch - kPitch / 2, dy = y % kPitch - kPitch / 2;
            image.row(y)[x] = dx * dx + dy * dy < kRadius * kRadius ? 255 : 0;
        }
    }
}

struct Tables {
    std::vector<int> distances;
    std::vector<float> heights, from;
    std::vector<int> lowest;
    explicit Tables(QelSize size)
        : distances(size_t(size.width) * size.height), heights(size.width), from(size.width + 1), lowest(size.width) {}
};

void plainColumns(const bench::Image<Qel8u>& src, Tables& t) {
    const auto [width, height] = src.size;
    for (int x = 0; x < width; ++x) {
        int c = height - 1;
        for (int y = height - 1; y >= 0; --y) t.distances[size_t(y) * width + x] = c = src.row(y)[x] != 0 ? c + 1 : 0;
        int p = height - 1;
        for (int y = 0; y < height; ++y) {
            int& d = t.distances[size_t(y) * width + x];
            d = p = std::min(p + 1, d);
        }
    }
}

template <class Finish>
void plainRows(QelSize size, Tables& t, const Finish& finish) {
    constexpr float kLargest = 3.4028235e38F;
    for (int y = 0; y < size.height; ++y) {
        const int* d = t.distances.data() + size_t(y) * size.width;
        for (int x = 0; x < size.width; ++x) t.heights[x] = d[x] < size.height ? float(d[x]) * float(d[x]) : kLargest;
        int k = 0;
        t.lowest[0] = 0;
        t.from[0] = -kLargest;
        t.from[1] = kLargest;
        for (int q = 1; q < size.width; ++q) {
            float s;
            for (;; --k) {
                const int p = t.lowest[k];
                s = (t.heights[q] + float(q) * q - t.heights[p] - float(p) * p) * (0.5F / float(q - p));
                if (s > t.from[k]) break;
            }
            t.lowest[++k] = q;
            t.from[k] = s;
            t.from[k + 1] = kLargest;
        }
        k = 0;
        for (int q = 0; q < size.width; ++q) {
            while (float(q) > t.from[k + 1]) ++k;
            const float distance = float(q - t.lowest[k]);
            finish(y, q, std::sqrt(distance * distance + t.heights[t.lowest[k]]));
        }
    }
}

void to32f(bench::Case& c) {
    const auto src = c.input<Qel8u>();
    const auto out = c.output<Qel32f>();
    drawDiscs(src);
    int bytes = 0;
    qeliTrueDistanceTransformGetBufferSize_8u32f_C1R(c.size(), &bytes);
    auto* const scratch = reinterpret_cast<Qel8u*>(c.scratch(size_t(bytes)));
    c.ours(
        [=] { return qeliTrueDistanceTransform_8u32f_C1R(src.data, src.step, out.data, out.step, src.size, scratch); });
    c.plain([=, t = Tables(c.size())]() mutable {
        plainColumns(src, t);
        plainRows(src.size, t, [=](int y, int x, float d) { out.row(y)[x] = d; });
    });
    c.tolerance(1e-6);
    OPENCV(c.peer(
        [a = mat(src), b = mat(out)]() mutable { cv::distanceTransform(a, b, cv::DIST_L2, cv::DIST_MASK_PRECISE); });)
}

void to16u(bench::Case& c) {
    const auto src = c.input<Qel8u>();
    const auto out = c.output<Qel16u>();
    drawDiscs(src);
    int bytes = 0;
    qeliTrueDistanceTransformGetBufferSize_8u16u_C1RSfs(c.size(), &bytes);
    auto* const scratch = reinterpret_cast<Qel8u*>(c.scratch(size_t(bytes)));
    c.ours([=] {
        return qeliTrueDistanceTransform_8u16u_C1RSfs(src.data, src.step, out.data, out.step, src.size, 0, scratch);
    });
    c.plain([=, t = Tables(c.size())]() mutable {
        plainColumns(src, t);
        plainRows(src.size, t, [=](int y, int x, float d) { out.row(y)[x] = Qel16u(std::nearbyint(d)); });
    });
}

void size32f(bench::Case& c) {
    int* const bytes = c.values<int>(1);
    const QelSize size = c.size();
    c.ours([=] { return qeliTrueDistanceTransformGetBufferSize_8u32f_C1R(size, bytes); });
}

void size16u(bench::Case& c) {
    int* const bytes = c.values<int>(1);
    const QelSize size = c.size();
    c.ours([=] { return qeliTrueDistanceTransformGetBufferSize_8u16u_C1RSfs(size, bytes); });
}

}  // namespace

BENCH_ROWS({"qeliTrueDistanceTransform_8u32f_C1R", to32f}, {"qeliTrueDistanceTransform_8u16u_C1RSfs", to16u},
           {"qeliTrueDistanceTransformGetBufferSize_8u32f_C1R", size32f, bench::Sizes::One},
           {"qeliTrueDistanceTransformGetBufferSize_8u16u_C1RSfs", size16u, bench::Sizes::One});
