#include <limits>

#include "kit/bench.h"
#include "peers/opencv.h"
#include "qelcv.h"

namespace {

template <class T>
struct Extreme {
    T value;
    QelPoint index;
};

// `stride` samples lead from pixel to pixel.
template <class T>
void plainMinMax(const T* pixels, int stride, int y, int width, Extreme<T>* pLow, Extreme<T>* pHigh) {
    for (int x = 0; x < width; ++x) {
        const T v = pixels[x * stride];
        if (v < pLow->value) *pLow = {v, {x, y}};
        if (v > pHigh->value) *pHigh = {v, {x, y}};
    }
}

template <class T>
void plainMinMax(const T* pixels, int stride, const Qel8u* mask, int y, int width, Extreme<T>* pLow,
                 Extreme<T>* pHigh) {
    for (int x = 0; x < width; ++x) {
        if (mask[x] == 0) continue;
        const T v = pixels[x * stride];
        if (v < pLow->value) *pLow = {v, {x, y}};
        if (v > pHigh->value) *pHigh = {v, {x, y}};
    }
}

// Where all competitors put their results.
struct Output {
    Qel32f* values;  // minimum, maximum
    int* indices;    // x and y of each

    explicit Output(bench::Case& c) : values(c.values<Qel32f>(2)), indices(c.values<int>(4)) {}

    QelPoint* index(int i) const { return reinterpret_cast<QelPoint*>(indices) + i; }
    void set(int i, double value, int x, int y) const {
        values[i] = Qel32f(value);
        *index(i) = {x, y};
    }
};

template <class T, class RowOf>
void plainRegion(int height, const Output& out, const RowOf& rowOf) {
    Extreme<T> low = {std::numeric_limits<T>::max(), {0, 0}};
    Extreme<T> high = {std::numeric_limits<T>::lowest(), {0, 0}};
    for (int y = 0; y < height; ++y) rowOf(y, &low, &high);
    out.set(0, low.value, low.index.x, low.index.y);
    out.set(1, high.value, high.index.x, high.index.y);
}

#ifdef QEL_BENCH_OPENCV
void peerMinMax(const cv::Mat& image, const cv::Mat& mask, const Output& out) {
    double low, high;
    cv::Point lowAt, highAt;
    cv::minMaxLoc(image, &low, &high, &lowAt, &highAt, mask);
    out.set(0, low, lowAt.x, lowAt.y);
    out.set(1, high, highAt.x, highAt.y);
}
#endif

template <class T, auto function>
void oneChannel(bench::Case& c) {
    const auto a = c.input<T>();
    const Output out(c);
    const QelSize size = c.size();
    c.ours([=] { return function(a.data, a.step, size, out.values, out.values + 1, out.index(0), out.index(1)); });
    c.plain([=] {
        plainRegion<T>(size.height, out,
                       [=](int y, auto* low, auto* high) { plainMinMax(a.row(y), 1, y, size.width, low, high); });
    });
    OPENCV(c.peer([=, a = mat(a)] { peerMinMax(a, cv::Mat(), out); });)
}

template <class T, auto function>
void oneChannelMasked(bench::Case& c) {
    const auto a = c.input<T>();
    const auto mask = c.mask();
    const Output out(c);
    const QelSize size = c.size();
    c.ours([=] {
        return function(a.data, a.step, mask.data, mask.step, size, out.values, out.values + 1, out.index(0),
                        out.index(1));
    });
    c.plain([=] {
        plainRegion<T>(size.height, out, [=](int y, auto* low, auto* high) {
            plainMinMax(a.row(y), 1, mask.row(y), y, size.width, low, high);
        });
    });
    OPENCV(c.peer([=, a = mat(a), mask = mat(mask)] { peerMinMax(a, mask, out); });)
}

constexpr int kCoi = 2;

// The peer has no channel of interest: the channel becomes an image first.
template <class T, auto function>
void oneOfThree(bench::Case& c) {
    const auto a = c.input<T>({.channels = 3});
    const Output out(c);
    const QelSize size = c.size();
    c.ours(
        [=] { return function(a.data, a.step, size, kCoi, out.values, out.values + 1, out.index(0), out.index(1)); });
    c.plain([=] {
        plainRegion<T>(size.height, out, [=](int y, auto* low, auto* high) {
            plainMinMax(a.row(y) + kCoi - 1, 3, y, size.width, low, high);
        });
    });
    OPENCV(c.peer([=, a = mat(a), channel = cv::Mat()]() mutable {
        cv::extractChannel(a, channel, kCoi - 1);
        peerMinMax(channel, cv::Mat(), out);
    });)
}

template <class T, auto function>
void oneOfThreeMasked(bench::Case& c) {
    const auto a = c.input<T>({.channels = 3});
    const auto mask = c.mask();
    const Output out(c);
    const QelSize size = c.size();
    c.ours([=] {
        return function(a.data, a.step, mask.data, mask.step, size, kCoi, out.values, out.values + 1, out.index(0),
                        out.index(1));
    });
    c.plain([=] {
        plainRegion<T>(size.height, out, [=](int y, auto* low, auto* high) {
            plainMinMax(a.row(y) + kCoi - 1, 3, mask.row(y), y, size.width, low, high);
        });
    });
    OPENCV(c.peer([=, a = mat(a), mask = mat(mask), channel = cv::Mat()]() mutable {
        cv::extractChannel(a, channel, kCoi - 1);
        peerMinMax(channel, mask, out);
    });)
}

}  // namespace

BENCH_ROWS({"qeliMinMaxIndx_8u_C1R", oneChannel<Qel8u, qeliMinMaxIndx_8u_C1R>},
           {"qeliMinMaxIndx_8s_C1R", oneChannel<Qel8s, qeliMinMaxIndx_8s_C1R>},
           {"qeliMinMaxIndx_16u_C1R", oneChannel<Qel16u, qeliMinMaxIndx_16u_C1R>},
           {"qeliMinMaxIndx_32f_C1R", oneChannel<Qel32f, qeliMinMaxIndx_32f_C1R>},
           {"qeliMinMaxIndx_8u_C3CR", oneOfThree<Qel8u, qeliMinMaxIndx_8u_C3CR>},
           {"qeliMinMaxIndx_8s_C3CR", oneOfThree<Qel8s, qeliMinMaxIndx_8s_C3CR>},
           {"qeliMinMaxIndx_16u_C3CR", oneOfThree<Qel16u, qeliMinMaxIndx_16u_C3CR>},
           {"qeliMinMaxIndx_32f_C3CR", oneOfThree<Qel32f, qeliMinMaxIndx_32f_C3CR>},
           {"qeliMinMaxIndx_8u_C1MR", oneChannelMasked<Qel8u, qeliMinMaxIndx_8u_C1MR>},
           {"qeliMinMaxIndx_8s_C1MR", oneChannelMasked<Qel8s, qeliMinMaxIndx_8s_C1MR>},
           {"qeliMinMaxIndx_16u_C1MR", oneChannelMasked<Qel16u, qeliMinMaxIndx_16u_C1MR>},
           {"qeliMinMaxIndx_32f_C1MR", oneChannelMasked<Qel32f, qeliMinMaxIndx_32f_C1MR>},
           {"qeliMinMaxIndx_8u_C3CMR", oneOfThreeMasked<Qel8u, qeliMinMaxIndx_8u_C3CMR>},
           {"qeliMinMaxIndx_8s_C3CMR", oneOfThreeMasked<Qel8s, qeliMinMaxIndx_8s_C3CMR>},
           {"qeliMinMaxIndx_16u_C3CMR", oneOfThreeMasked<Qel16u, qeliMinMaxIndx_16u_C3CMR>},
           {"qeliMinMaxIndx_32f_C3CMR", oneOfThreeMasked<Qel32f, qeliMinMaxIndx_32f_C3CMR>});
