#include <cmath>

#include "kit/bench.h"
#include "peers/opencv.h"
#include "qelcv.h"

#ifdef QEL_BENCH_OPENCV
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace {

// A lens like many: a barrel whose corners stay within the picture.
struct Lens {
    float fx, fy, cx, cy, k1, k2, p1, p2;

    explicit Lens(QelSize size, float tangential = 0)
        : fx(float(size.width) * 0.8F),
          fy(float(size.width) * 0.8F),
          cx(float(size.width) / 2),
          cy(float(size.height) / 2),
          k1(-0.15F),
          k2(0.02F),
          p1(tangential),
          p2(-tangential) {}
};

template <class T>
void plainRow(const bench::Image<T>& src, T* out, int y, QelSize size, int channels, const Lens& l) {
    const float Y = float(y) - l.cy, ry = (1 / (l.fy * l.fy)) * Y * Y;
    const float a = (l.k2 * ry + l.k1) * ry, b = 2 * l.k2 * ry;
    for (int x = 0; x < size.width; ++x) {
        const float X = float(x) - l.cx, rx = (1 / (l.fx * l.fx)) * X * X;
        const float t = (l.k2 * rx + l.k1) * rx + (b * rx + a);
        const float xs = X * t + float(x), ys = Y * t + float(y);
        if (!(xs >= 0 && ys >= 0 && xs < float(size.width - 1) && ys < float(size.height - 1))) continue;
        const int i = int(xs), j = int(ys);
        const float u = xs - float(i), v = ys - float(j);
        const T *s0 = src.row(j) + i * channels, *s1 = src.row(j + 1) + i * channels;
        for (int c = 0; c < channels; ++c) {
            const float left = float(s0[c]) * ((1 - v) * (1 - u)) + float(s1[c]) * (v * (1 - u));
            const float right = float(s0[c + channels]) * ((1 - v) * u) + float(s1[c + channels]) * (v * u);
            out[x * channels + c] = T(right + left + (std::is_integral_v<T> ? 0.5F : 0.0F));
        }
    }
}

template <class T, auto function, int channels>
void undistort(bench::Case& c) {
    const QelSize size = c.size();
    const auto src = c.input<T>({.channels = channels});
    const auto out = c.output<T>({.channels = channels});
    const Lens l(size);
    c.ours([=] {
        return function(src.data, src.step, out.data, out.step, size, l.fx, l.fy, l.cx, l.cy, l.k1, l.k2, nullptr);
    });
    c.plain([=] {
        for (int y = 0; y < size.height; ++y) plainRow(src, out.row(y), y, size, channels, l);
    });
    OPENCV(c.peer([=, a = mat(src), b = mat(out)]() mutable {
        const cv::Matx33f camera(l.fx, 0, l.cx, 0, l.fy, l.cy, 0, 0, 1);
        cv::undistort(a, b, camera, cv::Vec4f(l.k1, l.k2, 0, 0));
    });)
}

void plainMapRow(float* xOut, float* yOut, int y, int width, const Lens& l) {
    const float Y = float(y) - l.cy, v = Y * (1 / l.fy);
    for (int x = 0; x < width; ++x) {
        const float X = float(x) - l.cx, u = X * (1 / l.fx), r2 = u * u + v * v;
        const float t = (l.k2 * r2 + l.k1) * r2 + 2 * l.p2 * u + 2 * l.p1 * v;
        xOut[x] = t * X + (l.fx * l.p2 * r2 + float(x));
        yOut[x] = t * Y + (l.fy * l.p1 * r2 + float(y));
    }
}

void maps(bench::Case& c) {
    const QelSize size = c.size();
    const auto xMap = c.output<Qel32f>(), yMap = c.output<Qel32f>();
    const Lens l(size, 0.001F);
    c.tolerance(1e-5);
    c.ours([=] {
        return qeliCreateMapCameraUndistort_32f_C1R(xMap.data, xMap.step, yMap.data, yMap.step, size, l.fx, l.fy, l.cx,
                                                    l.cy, l.k1, l.k2, l.p1, l.p2, nullptr);
    });
    c.plain([=] {
        for (int y = 0; y < size.height; ++y) plainMapRow(xMap.row(y), yMap.row(y), y, size.width, l);
    });
    OPENCV(c.peer([=, a = mat(xMap), b = mat(yMap)]() mutable {
        const cv::Matx33f camera(l.fx, 0, l.cx, 0, l.fy, l.cy, 0, 0, 1);
        cv::initUndistortRectifyMap(camera, cv::Vec4f(l.k1, l.k2, l.p1, l.p2), cv::noArray(), camera,
                                    {size.width, size.height}, CV_32FC1, a, b);
    });)
}

void undistortBytes(bench::Case& c) {
    int* const bytes = c.values<int>(1);
    c.ours([=] { return qeliUndistortGetSize({640, 480}, bytes); });
}

}  // namespace

BENCH_ROWS({"qeliUndistortRadial_8u_C1R", undistort<Qel8u, qeliUndistortRadial_8u_C1R, 1>},
           {"qeliUndistortRadial_8u_C3R", undistort<Qel8u, qeliUndistortRadial_8u_C3R, 3>},
           {"qeliUndistortRadial_16u_C1R", undistort<Qel16u, qeliUndistortRadial_16u_C1R, 1>},
           {"qeliUndistortRadial_16u_C3R", undistort<Qel16u, qeliUndistortRadial_16u_C3R, 3>},
           {"qeliUndistortRadial_32f_C1R", undistort<Qel32f, qeliUndistortRadial_32f_C1R, 1>},
           {"qeliUndistortRadial_32f_C3R", undistort<Qel32f, qeliUndistortRadial_32f_C3R, 3>},
           {"qeliCreateMapCameraUndistort_32f_C1R", maps}, {"qeliUndistortGetSize", undistortBytes, bench::Sizes::One});
