#include <cmath>

#include "kit/bench.h"
#include "peers/opencv.h"
#include "qelcv.h"

#ifdef QEL_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

constexpr float kDx = 0.3F, kDy = 0.6F;

template <class Out>
Out rounded(float sum) {
    if constexpr (std::is_integral_v<Out>) {
        return Out(std::lrintf(sum));
    } else {
        return sum;
    }
}

template <class T, class Out>
void plainRow(const T* s0, const T* s1, Out* out, int width, float scale) {
    const float w00 = (1 - kDx) * (1 - kDy) * scale, w01 = kDx * (1 - kDy) * scale, w10 = (1 - kDx) * kDy * scale,
                w11 = kDx * kDy * scale;
    for (int x = 0; x < width; ++x)
        out[x] = rounded<Out>((s0[x] * w00 + s0[x + 1] * w01) + (s1[x] * w10 + s1[x + 1] * w11));
}

// The integer weights, as the library documents them for this shift.
template <class Out>
void plainRowQ14(const Qel8u* s0, const Qel8u* s1, Out* out, int width, int shift) {
    const int a = int(kDx * 16384 + 0.5F), b = int(kDy * 16384 + 0.5F);
    int w00 = ((16384 - a) * (16384 - b) + 16384) >> 14, w01 = (a * (16384 - b) + 16384) >> 14,
        w10 = ((16384 - a) * b + 16384) >> 14, w11 = (a * b + 16384) >> 14;
    w10 += 16384 - (w00 + w01 + w10 + w11);
    for (int x = 0; x < width; ++x)
        out[x] = Out((s0[x] * w00 + s0[x + 1] * w01 + s1[x] * w10 + s1[x + 1] * w11 + (1 << (shift - 1))) >> shift);
}

template <class T, class Out>
void plainCopy(const bench::Image<T>& src, const bench::Image<Out>& out, QelSize size, int scaleFactor) {
    for (int y = 0; y < size.height; ++y) {
        if constexpr (sizeof(T) == 1 && std::is_integral_v<Out>) {
            plainRowQ14(src.row(y), src.row(y + 1), out.row(y), size.width, 14 + scaleFactor);
        } else {
            plainRow(src.row(y), src.row(y + 1), out.row(y), size.width, 1);
        }
    }
}

#ifdef QEL_BENCH_OPENCV
// The centre of a window that begins at this shift.
template <class Out>
void peerCopy(const cv::Mat& from, cv::Mat& to, QelSize size) {
    cv::getRectSubPix(from, {size.width, size.height},
                      {kDx + float(size.width - 1) * 0.5F, kDy + float(size.height - 1) * 0.5F}, to,
                      std::is_integral_v<Out> ? -1 : CV_32F);
}
#endif

template <class T, class Out, auto function>
void copySubpix(bench::Case& c) {
    const QelSize size = c.size();
    const auto src = c.input<T>({.size = {size.width + 1, size.height + 1}});
    const auto out = c.output<Out>();
    c.tolerance(1e-5);
    c.ours([=] {
        if constexpr (std::is_same_v<decltype(function), decltype(&qeliCopySubpix_8u16u_C1R_Sfs)>) {
            return function(src.data, src.step, out.data, out.step, size, kDx, kDy, -7);
        } else {
            return function(src.data, src.step, out.data, out.step, size, kDx, kDy);
        }
    });
    c.plain([=] { plainCopy(src, out, size, sizeof(Out) == 2 ? -7 : 0); });
    if constexpr (sizeof(T) != 2 && sizeof(Out) != 2) {
        OPENCV(c.peer([=, a = mat(src), b = mat(out)]() mutable { peerCopy<Out>(a, b, size); });)
    }
}

constexpr int kPatches = 500, kSide = 21;
constexpr QelSize kPatch = {kSide, kSide};

// Centres all over an image, none of its patches beyond the edge.
QelPoint cornerOf(int i, QelSize image) {
    const bench::Noise noise(uint32_t(i) + 1);
    bench::Noise mine = noise;
    return {int(mine.next() >> 8) % (image.width - kSide - 1), int(mine.next() >> 8) % (image.height - kSide - 1)};
}

template <class T, class Out, auto function>
void intersect(bench::Case& c) {
    const QelSize image = {640, 480};
    const auto src = c.input<T>({.size = image});
    const auto out = c.output<Out>({.size = {kSide, kSide * kPatches}});
    c.elements(kPatches * kSide * kSide);
    c.tolerance(1e-4);
    std::vector<QelPoint> corners;
    corners.reserve(kPatches);
    for (int i = 0; i < kPatches; ++i) corners.push_back(cornerOf(i, image));
    constexpr float kHalf = (kSide - 1) * 0.5F;
    c.ours([=] {
        QelPoint min, max;
        qelStatus status = qelStatusOk;
        for (int i = 0; i < kPatches; ++i) {
            const float x = float(corners[size_t(i)].x) + kDx + kHalf, y = float(corners[size_t(i)].y) + kDy + kHalf;
            if constexpr (sizeof(T) == 1 && sizeof(Out) == 2) {
                status =
                    function(src.data, src.step, image, out.row(i * kSide), out.step, kPatch, x, y, &min, &max, -7);
            } else {
                status = function(src.data, src.step, image, out.row(i * kSide), out.step, kPatch, x, y, &min, &max);
            }
        }
        return status;
    });
    if constexpr (sizeof(T) != 2 && sizeof(Out) != 2) {
        OPENCV(c.peer([=, a = mat(src), b = mat(out)]() mutable {
            for (int i = 0; i < kPatches; ++i) {
                cv::Mat patch = b.rowRange(i * kSide, (i + 1) * kSide);
                const float x = float(corners[size_t(i)].x) + kDx, y = float(corners[size_t(i)].y) + kDy;
                cv::getRectSubPix(a, {kSide, kSide}, {x + kHalf, y + kHalf}, patch,
                                  std::is_integral_v<Out> ? -1 : CV_32F);
            }
        });)
    }
    // Where the fraction differs in its last bits from one patch to the next, there is nothing simple to compare with.
}

template <class T, auto function, int channels>
void line(bench::Case& c) {
    const QelSize size = c.size();
    const auto src = c.input<T>({.channels = channels});
    const int count = std::max(size.width, size.height);
    const auto out = c.output<T>({.size = {count, 1}, .channels = channels});
    c.elements(count);
    const QelPoint last = {size.width - 1, size.height / 2};
    c.ours([=] { return function(src.data, src.step, size, out.data, {0, 0}, last); });
    c.plain([=] {
        int error = last.x;
        for (int x = 0, y = 0; x <= last.x; ++x) {
            for (int k = 0; k < channels; ++k) out.data[x * channels + k] = src.row(y)[x * channels + k];
            error -= 2 * last.y;
            if (error < 0) error += 2 * last.x, ++y;
        }
    });
}

}  // namespace

BENCH_ROWS(
    {"qeliCopySubpix_8u_C1R", copySubpix<Qel8u, Qel8u, qeliCopySubpix_8u_C1R>},
    {"qeliCopySubpix_8u16u_C1R_Sfs", copySubpix<Qel8u, Qel16u, qeliCopySubpix_8u16u_C1R_Sfs>},
    {"qeliCopySubpix_8u32f_C1R", copySubpix<Qel8u, Qel32f, qeliCopySubpix_8u32f_C1R>},
    {"qeliCopySubpix_16u_C1R", copySubpix<Qel16u, Qel16u, qeliCopySubpix_16u_C1R>},
    {"qeliCopySubpix_16u32f_C1R", copySubpix<Qel16u, Qel32f, qeliCopySubpix_16u32f_C1R>},
    {"qeliCopySubpix_32f_C1R", copySubpix<Qel32f, Qel32f, qeliCopySubpix_32f_C1R>},
    {"qeliCopySubpixIntersect_8u_C1R", intersect<Qel8u, Qel8u, qeliCopySubpixIntersect_8u_C1R>, bench::Sizes::One},
    {"qeliCopySubpixIntersect_8u16u_C1R_Sfs", intersect<Qel8u, Qel16u, qeliCopySubpixIntersect_8u16u_C1R_Sfs>,
     bench::Sizes::One},
    {"qeliCopySubpixIntersect_8u32f_C1R", intersect<Qel8u, Qel32f, qeliCopySubpixIntersect_8u32f_C1R>,
     bench::Sizes::One},
    {"qeliCopySubpixIntersect_16u_C1R", intersect<Qel16u, Qel16u, qeliCopySubpixIntersect_16u_C1R>, bench::Sizes::One},
    {"qeliCopySubpixIntersect_16u32f_C1R", intersect<Qel16u, Qel32f, qeliCopySubpixIntersect_16u32f_C1R>,
     bench::Sizes::One},
    {"qeliCopySubpixIntersect_32f_C1R", intersect<Qel32f, Qel32f, qeliCopySubpixIntersect_32f_C1R>, bench::Sizes::One},
    {"qeliSampleLine_8u_C1R", line<Qel8u, qeliSampleLine_8u_C1R, 1>},
    {"qeliSampleLine_8u_C3R", line<Qel8u, qeliSampleLine_8u_C3R, 3>},
    {"qeliSampleLine_16u_C1R", line<Qel16u, qeliSampleLine_16u_C1R, 1>},
    {"qeliSampleLine_16u_C3R", line<Qel16u, qeliSampleLine_16u_C3R, 3>},
    {"qeliSampleLine_32f_C1R", line<Qel32f, qeliSampleLine_32f_C1R, 1>},
    {"qeliSampleLine_32f_C3R", line<Qel32f, qeliSampleLine_32f_C3R, 3>});
