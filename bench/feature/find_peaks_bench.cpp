#include <cmath>

#include "kit/bench.h"
#include "qelcv.h"

namespace {

// A fifth of the noise lies above.
template <class T>
constexpr T kThreshold = T(205);
template <>
constexpr Qel32s kThreshold<Qel32s> = 205 << 16;

template <class T>
bool isPeak(const T* up, const T* row, const T* down, int x, T threshold) {
    const T v = row[x];
    if (!(std::abs(v) > threshold)) return false;
    for (int i = x - 1; i <= x + 1; ++i) {
        if (v > 0 ? up[i] > v || row[i] > v || down[i] > v : up[i] < v || row[i] < v || down[i] < v) return false;
    }
    return true;
}

template <class T>
int plainPeaks(const bench::Image<T>& a, T threshold, QelPoint* peaks) {
    int count = 0;
    for (int y = 1; y < a.size.height - 1; ++y) {
        for (int x = 1; x < a.size.width - 1; ++x) {
            if (isPeak(a.row(y - 1), a.row(y), a.row(y + 1), x, threshold)) peaks[count++] = {x, y};
        }
    }
    return count;
}

template <class T, auto function, auto bufferSize>
void findPeaks(bench::Case& c) {
    const auto a = c.input<T>();
    const QelSize size = c.size();
    const int most = size.width * size.height;
    int* const count = c.values<int>(1);
    auto* const peaks = reinterpret_cast<QelPoint*>(c.values<int>(2 * most));
    int bytes = 0;
    bufferSize(size.width, &bytes);
    auto* const buffer = reinterpret_cast<Qel8u*>(c.scratch(size_t(bytes)));
    c.ours([=] { return function(a.data, a.step, size, kThreshold<T>, peaks, most, count, 0, 1, buffer); });
    c.plain([=] { *count = plainPeaks(a, kThreshold<T>, peaks); });
}

template <auto function>
void bufferSize(bench::Case& c) {
    int* const bytes = c.values<int>(1);
    c.ours([=] { return function(640, bytes); });
}

}  // namespace

BENCH_ROWS(
    {"qeliFindPeaks3x3_32s_C1R", findPeaks<Qel32s, qeliFindPeaks3x3_32s_C1R, qeliFindPeaks3x3GetBufferSize_32s_C1R>},
    {"qeliFindPeaks3x3_32f_C1R", findPeaks<Qel32f, qeliFindPeaks3x3_32f_C1R, qeliFindPeaks3x3GetBufferSize_32f_C1R>},
    {"qeliFindPeaks3x3GetBufferSize_32s_C1R", bufferSize<qeliFindPeaks3x3GetBufferSize_32s_C1R>, bench::Sizes::One},
    {"qeliFindPeaks3x3GetBufferSize_32f_C1R", bufferSize<qeliFindPeaks3x3GetBufferSize_32f_C1R>, bench::Sizes::One});
