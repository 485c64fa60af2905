#include <algorithm>
#include <cmath>
#include <vector>

#include "feature/scene.h"
#include "kit/bench.h"
#include "peers/opencv.h"
#include "qelcv.h"

#ifdef QEL_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

constexpr int kSide = 3;  // of the derivatives and of the window
constexpr float kScale = 1.0f / (255 * 16);

template <class T>
void drawScene(const bench::Image<T>& image) {
    for (int y = 0; y < image.size.height; ++y)
        for (int x = 0; x < image.size.width; ++x) image.row(y)[x] = T(bench::sceneAt(x, y));
}

// The steps one after the other, over whole images with a frame of one pixel.
class PlainEigen {
public:
    explicit PlainEigen(QelSize size)
        : size_(size), pitch_(size.width + 2), source_(pixels()), xx_(pixels()), xy_(pixels()), yy_(pixels()) {}

    template <class T, class Analyse>
    void run(const bench::Image<T>& image, const bench::Image<Qel32f>& out, const Analyse& analyse) {
        for (int y = 0; y < size_.height; ++y) std::copy_n(image.row(y), size_.width, at(source_, y));
        extend(source_);
        for (int y = 0; y < size_.height; ++y) products(y);
        for (std::vector<float>* plane : {&xx_, &xy_, &yy_}) extend(*plane);
        for (int y = 0; y < size_.height; ++y) {
            const float *xx = at(xx_, y), *xy = at(xy_, y), *yy = at(yy_, y);
            for (int x = 0; x < size_.width; ++x)
                analyse(average(xx + x), average(xy + x), average(yy + x), out.row(y), x);
        }
    }

private:
    size_t pixels() const { return size_t(pitch_) * size_t(size_.height + 2); }
    float* at(std::vector<float>& plane, int y) const { return &plane[size_t(pitch_) * size_t(y + 1) + 1]; }

    void extend(std::vector<float>& plane) const {
        for (int y = 0; y < size_.height; ++y) {
            float* const row = at(plane, y);
            row[-1] = row[0];
            row[size_.width] = row[size_.width - 1];
        }
        std::copy_n(at(plane, 0) - 1, pitch_, at(plane, -1) - 1);
        std::copy_n(at(plane, size_.height - 1) - 1, pitch_, at(plane, size_.height) - 1);
    }

    void products(int y) {
        const float *a = at(source_, y - 1), *b = at(source_, y), *c = at(source_, y + 1);
        float *xx = at(xx_, y), *xy = at(xy_, y), *yy = at(yy_, y);
        for (int x = 0; x < size_.width; ++x) {
            const float dx = a[x - 1] + 2 * b[x - 1] + c[x - 1] - a[x + 1] - 2 * b[x + 1] - c[x + 1];
            const float dy = c[x - 1] + 2 * c[x] + c[x + 1] - a[x - 1] - 2 * a[x] - a[x + 1];
            xx[x] = dx * dx;
            xy[x] = dx * dy;
            yy[x] = dy * dy;
        }
    }
    float average(const float* p) const {
        const float *a = p - pitch_, *c = p + pitch_;
        return (a[-1] + a[0] + a[1] + p[-1] + p[0] + p[1] + c[-1] + c[0] + c[1]) * 0.11111111f;
    }

    QelSize size_;
    int pitch_;
    std::vector<float> source_, xx_, xy_, yy_;
};

void smallerEigenvalue(float a, float c, float b, float* out, int x) {
    out[x] = (a + b - std::sqrt((a - b) * (a - b) + 4 * (c * c))) * (kScale * 0.5f);
}

void sixNumbers(float a, float c, float b, float* row, int x) {
    float* const out = row + std::ptrdiff_t{6} * x;
    a *= kScale, b *= kScale, c *= kScale;
    const float t = 0.01f * std::max(a, b);
    const float r = std::sqrt((a - b) * (a - b) + 4 * (c * c));
    const float large = ((a + b) + r) * 0.5f, small = ((a + b) - r) * 0.5f;
    if (t > std::min(a, b) || t > a * b - c * c) {
        std::fill_n(out, 6, 0.0f);
        return;
    }
    out[0] = large, out[1] = small;
    if (t > std::fabs(c)) {
        out[2] = out[5] = 1;
        out[3] = out[4] = 0;
        return;
    }
    const float p = a - large, q = a - small;
    const float n1 = 1 / std::max(1.1920929e-7f, std::sqrt(p * p + c * c));
    const float n2 = 1 / std::max(1.1920929e-7f, std::sqrt(c * c + q * q));
    out[2] = -c * n1, out[3] = -p * n1, out[4] = -c * n2, out[5] = -q * n2;
}

template <auto bufferSize>
Qel8u* bufferOf(bench::Case& c) {
    int bytes = 0;
    bufferSize(c.size(), kSide, kSide, &bytes);
    return reinterpret_cast<Qel8u*>(c.scratch(size_t(bytes)));
}

template <class T, auto function, auto bufferSize>
void minEigenVal(bench::Case& c) {
    const auto a = c.input<T>();
    const auto out = c.output<Qel32f>();
    const QelSize size = c.size();
    drawScene(a);
    Qel8u* const buffer = bufferOf<bufferSize>(c);
    c.ours([=] { return function(a.data, a.step, out.data, out.step, size, 0, kSide, kSide, buffer); });
    c.plain([=, plain = PlainEigen(size)]() mutable { plain.run(a, out, smallerEigenvalue); });
    OPENCV(c.peer(
        [a = mat(a), out = mat(out)]() mutable { cv::cornerMinEigenVal(a, out, kSide, kSide, cv::BORDER_REPLICATE); });)
}

template <class T, auto function, auto bufferSize>
void eigenValsVecs(bench::Case& c) {
    const auto a = c.input<T>();
    const auto out = c.output<Qel32f>({.channels = 6});
    const QelSize size = c.size();
    drawScene(a);
    Qel8u* const buffer = bufferOf<bufferSize>(c);
    c.ours([=] { return function(a.data, a.step, out.data, out.step, size, 0, kSide, kSide, buffer); });
    c.plain([=, plain = PlainEigen(size)]() mutable { plain.run(a, out, sixNumbers); });
    OPENCV(c.peer([a = mat(a), out = mat(out)]() mutable {
        cv::cornerEigenValsAndVecs(a, out, kSide, kSide, cv::BORDER_REPLICATE);
    });)
}

template <auto function>
void bufferSize(bench::Case& c) {
    int* const bytes = c.values<int>(1);
    c.ours([=] { return function({640, 480}, kSide, kSide, bytes); });
}

}  // namespace

BENCH_ROWS(
    {"qeliMinEigenVal_8u32f_C1R",
     minEigenVal<Qel8u, qeliMinEigenVal_8u32f_C1R, qeliMinEigenValGetBufferSize_8u32f_C1R>},
    {"qeliMinEigenVal_32f_C1R", minEigenVal<Qel32f, qeliMinEigenVal_32f_C1R, qeliMinEigenValGetBufferSize_32f_C1R>},
    {"qeliEigenValsVecs_8u32f_C1R",
     eigenValsVecs<Qel8u, qeliEigenValsVecs_8u32f_C1R, qeliEigenValsVecsGetBufferSize_8u32f_C1R>},
    {"qeliEigenValsVecs_32f_C1R",
     eigenValsVecs<Qel32f, qeliEigenValsVecs_32f_C1R, qeliEigenValsVecsGetBufferSize_32f_C1R>},
    {"qeliMinEigenValGetBufferSize_8u32f_C1R", bufferSize<qeliMinEigenValGetBufferSize_8u32f_C1R>, bench::Sizes::One},
    {"qeliMinEigenValGetBufferSize_32f_C1R", bufferSize<qeliMinEigenValGetBufferSize_32f_C1R>, bench::Sizes::One},
    {"qeliEigenValsVecsGetBufferSize_8u32f_C1R", bufferSize<qeliEigenValsVecsGetBufferSize_8u32f_C1R>,
     bench::Sizes::One},
    {"qeliEigenValsVecsGetBufferSize_32f_C1R", bufferSize<qeliEigenValsVecsGetBufferSize_32f_C1R>, bench::Sizes::One});
