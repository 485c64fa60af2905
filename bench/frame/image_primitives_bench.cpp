#include "frame/image_primitives.h"

#include <algorithm>
#include <cstring>

#include "kit/bench.h"
#include "peers/opencv.h"

namespace {

using namespace qel;

template <class T, auto function, int channels = 1>
void copy(bench::Case& c) {
    const auto in = c.input<T>({.channels = channels});
    const auto out = c.output<T>({.channels = channels});
    const QelSize size = c.size();
    c.ours([=] { return function(in.data, in.step, out.data, out.step, size); });
    c.plain([=] {
        for (int y = 0; y < size.height; ++y)
            std::memcpy(out.row(y), in.row(y), size_t(size.width) * channels * sizeof(T));
    });
    OPENCV(c.peer([in = mat(in), out = mat(out)]() mutable { in.copyTo(out); });)
}

void set(bench::Case& c) {
    const auto out = c.output<Qel8u>();
    const QelSize size = c.size();
    c.ours([=] { return qeliSet_8u_C1R(77, out.data, out.step, size); });
    c.plain([=] {
        for (int y = 0; y < size.height; ++y) std::memset(out.row(y), 77, size_t(size.width));
    });
    OPENCV(c.peer([out = mat(out)]() mutable { out.setTo(cv::Scalar::all(77)); });)
}

// The middle of the noise's range.
template <class T>
constexpr T kThreshold = T(std::is_integral_v<T> ? T(-1) / 2 : 128);

template <class T>
void plainGTVal(const T* in, T* out, T threshold, T value, int count) {
    for (int x = 0; x < count; ++x) out[x] = in[x] > threshold ? value : in[x];
}
template <class T>
void plainLTVal(const T* in, T* out, T threshold, T value, int count) {
    for (int x = 0; x < count; ++x) out[x] = in[x] < threshold ? value : in[x];
}

template <class T, auto function>
void thresholdGTVal(bench::Case& c) {
    const auto in = c.input<T>();
    const auto out = c.output<T>();
    const QelSize size = c.size();
    c.ours([=] { return function(in.data, in.step, out.data, out.step, size, kThreshold<T>, 7); });
    c.plain([=] {
        for (int y = 0; y < size.height; ++y) plainGTVal<T>(in.row(y), out.row(y), kThreshold<T>, 7, size.width);
    });
}

template <class T, auto function>
void thresholdGTValInPlace(bench::Case& c) {
    const auto image = c.update<T>();
    const QelSize size = c.size();
    c.ours([=] { return function(image.data, image.step, size, kThreshold<T>, 7); });
    c.plain([=] {
        for (int y = 0; y < size.height; ++y) plainGTVal<T>(image.row(y), image.row(y), kThreshold<T>, 7, size.width);
    });
}

template <class T, auto function>
void thresholdVal(bench::Case& c) {
    const auto in = c.input<T>();
    const auto out = c.output<T>();
    const QelSize size = c.size();
    c.ours([=] { return function(in.data, in.step, out.data, out.step, size, kThreshold<T>, 7, kCompareLess); });
    c.plain([=] {
        for (int y = 0; y < size.height; ++y) plainLTVal<T>(in.row(y), out.row(y), kThreshold<T>, 7, size.width);
    });
}

void plainAtLeast(const Qel32f* in, Qel32f* out, Qel32f threshold, int count) {
    for (int x = 0; x < count; ++x) out[x] = in[x] < threshold ? threshold : in[x];
}
void plainAtMost(const Qel32f* in, Qel32f* out, Qel32f threshold, int count) {
    for (int x = 0; x < count; ++x) out[x] = in[x] > threshold ? threshold : in[x];
}

void thresholdLT(bench::Case& c) {
    const auto in = c.input<Qel32f>();
    const auto out = c.output<Qel32f>();
    const QelSize size = c.size();
    c.ours([=] { return qeliThreshold_LT_32f_C1R(in.data, in.step, out.data, out.step, size, 128); });
    c.plain([=] {
        for (int y = 0; y < size.height; ++y) plainAtLeast(in.row(y), out.row(y), 128, size.width);
    });
    OPENCV(c.peer([in = mat(in), out = mat(out)]() mutable { cv::max(in, 128, out); });)
}

void thresholdLTInPlace(bench::Case& c) {
    const auto image = c.update<Qel32f>();
    const QelSize size = c.size();
    c.ours([=] { return qeliThreshold_LT_32f_C1IR(image.data, image.step, size, 128); });
    c.plain([=] {
        for (int y = 0; y < size.height; ++y) plainAtLeast(image.row(y), image.row(y), 128, size.width);
    });
    OPENCV(c.peer([image = mat(image)]() mutable { cv::max(image, 128, image); });)
}

void threshold(bench::Case& c) {
    const auto in = c.input<Qel32f>();
    const auto out = c.output<Qel32f>();
    const QelSize size = c.size();
    c.ours([=] { return qeliThreshold_32f_C1R(in.data, in.step, out.data, out.step, size, 128, kCompareGreater); });
    c.plain([=] {
        for (int y = 0; y < size.height; ++y) plainAtMost(in.row(y), out.row(y), 128, size.width);
    });
    OPENCV(c.peer([in = mat(in), out = mat(out)]() mutable { cv::min(in, 128, out); });)
}

void plainSub(const Qel32f* a, const Qel32f* b, Qel32f* out, int count) {
    for (int x = 0; x < count; ++x) out[x] = b[x] - a[x];
}

template <auto function, int channels = 1>
void sub(bench::Case& c) {
    const auto a = c.input<Qel32f>({.channels = channels});
    const auto b = c.input<Qel32f>({.channels = channels});
    const auto out = c.output<Qel32f>({.channels = channels});
    const QelSize size = c.size();
    c.ours([=] { return function(a.data, a.step, b.data, b.step, out.data, out.step, size); });
    c.plain([=] {
        for (int y = 0; y < size.height; ++y) plainSub(a.row(y), b.row(y), out.row(y), size.width * channels);
    });
    OPENCV(c.peer([a = mat(a), b = mat(b), out = mat(out)]() mutable { cv::subtract(b, a, out); });)
}

template <auto function, int channels = 1>
void subInPlace(bench::Case& c) {
    const auto a = c.input<Qel32f>({.channels = channels});
    const auto b = c.update<Qel32f>({.channels = channels});
    const QelSize size = c.size();
    c.ours([=] { return function(a.data, a.step, b.data, b.step, size); });
    c.plain([=] {
        for (int y = 0; y < size.height; ++y) plainSub(a.row(y), b.row(y), b.row(y), size.width * channels);
    });
    OPENCV(c.peer([a = mat(a), b = mat(b)]() mutable { cv::subtract(b, a, b); });)
}

template <int scaleFactor>
void plainSubScaled(const Qel8u* a, const Qel8u* b, Qel8u* out, int count) {
    for (int x = 0; x < count; ++x) {
        const int d = std::max(b[x] - a[x], 0);
        if constexpr (scaleFactor > 0) {
            out[x] = Qel8u((d + (1 << (scaleFactor - 1)) - 1 + (d >> scaleFactor & 1)) >> scaleFactor);
        } else {
            out[x] = Qel8u(std::min(d << -scaleFactor, 255));
        }
    }
}

template <auto function, int channels, int scaleFactor>
void subScaled(bench::Case& c) {
    const auto a = c.input<Qel8u>({.channels = channels});
    const auto b = c.input<Qel8u>({.channels = channels});
    const auto out = c.output<Qel8u>({.channels = channels});
    const QelSize size = c.size();
    c.ours([=] { return function(a.data, a.step, b.data, b.step, out.data, out.step, size, scaleFactor); });
    c.plain([=] {
        for (int y = 0; y < size.height; ++y)
            plainSubScaled<scaleFactor>(a.row(y), b.row(y), out.row(y), size.width * channels);
    });
    OPENCV(if constexpr (scaleFactor == 0)
               c.peer([a = mat(a), b = mat(b), out = mat(out)]() mutable { cv::subtract(b, a, out); });)
}

template <auto function, int channels, int scaleFactor>
void subScaledInPlace(bench::Case& c) {
    const auto a = c.input<Qel8u>({.channels = channels});
    const auto b = c.update<Qel8u>({.channels = channels});
    const QelSize size = c.size();
    c.ours([=] { return function(a.data, a.step, b.data, b.step, size, scaleFactor); });
    c.plain([=] {
        for (int y = 0; y < size.height; ++y)
            plainSubScaled<scaleFactor>(a.row(y), b.row(y), b.row(y), size.width * channels);
    });
    OPENCV(if constexpr (scaleFactor == 0) c.peer([a = mat(a), b = mat(b)]() mutable { cv::subtract(b, a, b); });)
}

}  // namespace

BENCH_ROWS({"qeliCopy_8u_C1R", copy<Qel8u, qeliCopy_8u_C1R>}, {"qeliCopy_8u_C3R", copy<Qel8u, qeliCopy_8u_C3R, 3>},
           {"qeliCopy_8u_C4R", copy<Qel8u, qeliCopy_8u_C4R, 4>}, {"qeliCopy_16s_C1R", copy<Qel16s, qeliCopy_16s_C1R>},
           {"qeliCopy_16u_C1R", copy<Qel16u, qeliCopy_16u_C1R>}, {"qeliCopy_32f_C1R", copy<Qel32f, qeliCopy_32f_C1R>},
           {"qeliCopy_32f_C3R", copy<Qel32f, qeliCopy_32f_C3R, 3>},
           {"qeliCopy_32f_C4R", copy<Qel32f, qeliCopy_32f_C4R, 4>}, {"qeliSet_8u_C1R", set},
           {"qeliThreshold_GTVal_8u_C1R", thresholdGTVal<Qel8u, qeliThreshold_GTVal_8u_C1R>},
           {"qeliThreshold_GTVal_16u_C1R", thresholdGTVal<Qel16u, qeliThreshold_GTVal_16u_C1R>},
           {"qeliThreshold_GTVal_8u_C1IR", thresholdGTValInPlace<Qel8u, qeliThreshold_GTVal_8u_C1IR>},
           {"qeliThreshold_GTVal_16u_C1IR", thresholdGTValInPlace<Qel16u, qeliThreshold_GTVal_16u_C1IR>},
           {"qeliThreshold_Val_8u_C1R", thresholdVal<Qel8u, qeliThreshold_Val_8u_C1R>},
           {"qeliThreshold_Val_16u_C1R", thresholdVal<Qel16u, qeliThreshold_Val_16u_C1R>},
           {"qeliThreshold_LT_32f_C1R", thresholdLT}, {"qeliThreshold_LT_32f_C1IR", thresholdLTInPlace},
           {"qeliThreshold_32f_C1R", threshold}, {"qeliSub_32f_C1R", sub<qeliSub_32f_C1R>},
           {"qeliSub_32f_C3R", sub<qeliSub_32f_C3R, 3>}, {"qeliSub_32f_C4R", sub<qeliSub_32f_C4R, 4>},
           {"qeliSub_32f_C1IR", subInPlace<qeliSub_32f_C1IR>}, {"qeliSub_32f_C3IR", subInPlace<qeliSub_32f_C3IR, 3>},
           {"qeliSub_32f_C4IR", subInPlace<qeliSub_32f_C4IR, 4>},
           {"qeliSub_8u_C1RSfs", subScaled<qeliSub_8u_C1RSfs, 1, 0>},
           {"qeliSub_8u_C3RSfs", subScaled<qeliSub_8u_C3RSfs, 3, 3>},
           {"qeliSub_8u_C4RSfs", subScaled<qeliSub_8u_C4RSfs, 4, -2>},
           {"qeliSub_8u_C1IRSfs", subScaledInPlace<qeliSub_8u_C1IRSfs, 1, 0>},
           {"qeliSub_8u_C3IRSfs", subScaledInPlace<qeliSub_8u_C3IRSfs, 3, 3>},
           {"qeliSub_8u_C4IRSfs", subScaledInPlace<qeliSub_8u_C4IRSfs, 4, -2>});
