#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "feature/scene.h"
#include "kit/bench.h"
#include "peers/opencv.h"
#include "qelcv.h"

#ifdef QEL_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

constexpr QelPointPolar kDelta = {1, 3.14159265f / 180};
constexpr int kAngles = 180;
constexpr int kMost = 200;
constexpr QelPointPolar kLow = {-1e6f, 0}, kHigh = {1e6f, 3.14159f};

int thresholdOf(QelSize size) { return std::min(size.width, size.height) / 4 + 1; }

// The outlines of the scene: some percent of the pixels.
void drawEdges(const bench::Image<Qel8u>& image) {
    const auto [width, height] = image.size;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int here = bench::sceneAt(x, y);
            const int step =
                std::max(std::abs(here - bench::sceneAt(x + 1, y)), std::abs(here - bench::sceneAt(x, y + 1)));
            image.row(y)[x] = step > 20 ? 255 : 0;
        }
    }
}

// Every angle for every point, in a table of all counters.
class PlainHough {
public:
    explicit PlainHough(QelSize size)
        : size_(size),
          distances_(2 * (size.width + size.height) + 1),
          half_((distances_ - 1) / 2),
          counters_(size_t(distances_ + 2) * size_t(kAngles + 2)) {
        float angle = 0;
        for (int t = 0; t < kAngles; ++t, angle += kDelta.theta) {
            cosines_[t] = float(int(std::cos(double(angle)) * 1024));
            sines_[t] = float(int(std::sin(double(angle)) * 1024));
        }
    }

    int run(const bench::Image<Qel8u>& image, int threshold, QelPointPolar* lines) {
        std::fill(counters_.begin(), counters_.end(), 0);
        for (int y = 0; y < size_.height; ++y) vote(image.row(y), y);
        std::vector<Line> found;
        for (int t = 0; t < kAngles; ++t) {
            for (int r = 0; r < distances_; ++r) {
                const int* const c = counter(r, t);
                if (*c > threshold && *c > c[-1] && *c >= c[1] && *c > *counter(r, t - 1) && *c >= *counter(r, t + 1)) {
                    found.push_back({r, t, *c});
                }
            }
        }
        std::stable_sort(found.begin(), found.end(), [](const Line& a, const Line& b) { return a.votes > b.votes; });
        const int count = std::min(int(found.size()), kMost);
        for (int i = 0; i < count; ++i) lines[i] = {float(found[i].r - half_), float(found[i].t) * kDelta.theta};
        return count;
    }

private:
    struct Line {
        int r, t, votes;
    };
    int* counter(int r, int t) { return &counters_[size_t(distances_ + 2) * size_t(t + 1) + size_t(r + 1)]; }

    void vote(const Qel8u* row, int y) {
        for (int x = 0; x < size_.width; ++x) {
            if (row[x] == 0) continue;
            for (int t = 0; t < kAngles; ++t) {
                const float v = float(x) * cosines_[t] + float(y) * sines_[t];
                ++*counter(((int(std::lrintf(v)) + 512) >> 10) + half_, t);
            }
        }
    }

    QelSize size_;
    int distances_, half_;
    std::vector<int> counters_;
    float cosines_[kAngles], sines_[kAngles];
};

struct Output {
    QelPointPolar* lines;
    int* count;

    explicit Output(bench::Case& c)
        : lines(reinterpret_cast<QelPointPolar*>(c.values<Qel32f>(2 * kMost))), count(c.values<int>(1)) {}
    void clear() const { std::memset(static_cast<void*>(lines), 0, kMost * sizeof(*lines)); }
};

Qel8u* bufferOf(bench::Case& c) {
    int bytes = 0;
    qeliHoughLineGetSize_8u_C1R(c.size(), kDelta, kMost, &bytes);
    return reinterpret_cast<Qel8u*>(c.scratch(size_t(bytes)));
}

void plain(bench::Case& c, const bench::Image<Qel8u>& a, const Output& out) {
    const QelSize size = c.size();
    c.plain([=, hough = PlainHough(size)]() mutable {
        out.clear();
        *out.count = hough.run(a, thresholdOf(size), out.lines);
    });
}

void wholePlane(bench::Case& c) {
    const auto a = c.input<Qel8u>();
    const Output out(c);
    const QelSize size = c.size();
    drawEdges(a);
    Qel8u* const buffer = bufferOf(c);
    c.ours([=] {
        out.clear();
        return qeliHoughLine_8u32f_C1R(a.data, a.step, size, kDelta, thresholdOf(size), out.lines, kMost, out.count,
                                       buffer);
    });
    plain(c, a, out);
    OPENCV(c.peer([=, a = mat(a), lines = std::vector<cv::Vec2f>()]() mutable {
        cv::HoughLines(a, lines, kDelta.rho, kDelta.theta, thresholdOf(size));
    });)
}

void region(bench::Case& c) {
    const auto a = c.input<Qel8u>();
    const Output out(c);
    const QelSize size = c.size();
    drawEdges(a);
    Qel8u* const buffer = bufferOf(c);
    c.ours([=] {
        QelPointPolar corners[] = {kLow, kHigh};
        out.clear();
        return qeliHoughLine_Region_8u32f_C1R(a.data, a.step, size, out.lines, corners, kMost, out.count, kDelta,
                                              thresholdOf(size), buffer);
    });
    plain(c, a, out);
}

void size(bench::Case& c) {
    int* const bytes = c.values<int>(1);
    c.ours([=] { return qeliHoughLineGetSize_8u_C1R({640, 480}, kDelta, kMost, bytes); });
}

}  // namespace

BENCH_ROWS({"qeliHoughLine_8u32f_C1R", wholePlane}, {"qeliHoughLine_Region_8u32f_C1R", region},
           {"qeliHoughLineGetSize_8u_C1R", size, bench::Sizes::One});
