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

constexpr Qel32f kSigma = 2;

std::vector<Qel32f> gaussKernel(int taps) {
    std::vector<Qel32f> k(static_cast<size_t>(taps));
    Qel32f sum = 0;
    const int reach = taps / 2;
    for (int i = 0; i < taps; ++i) {
        const Qel32f d = static_cast<Qel32f>(i - reach);
        sum += k[size_t(i)] = std::exp(-d * d / (2 * kSigma * kSigma));
    }
    for (Qel32f& tap : k) tap /= sum;
    return k;
}

void plainAcross(const Qel32f* p, Qel32f* out, int width, const Qel32f* k, int taps) {
    const int reach = taps / 2;
    for (int x = 0; x < width; ++x) {
        Qel32f sum = 0;
        if (x >= reach && x < width - reach) {
            for (int i = 0; i < taps; ++i) sum += p[x - reach + i] * k[i];
        } else {
            for (int i = 0; i < taps; ++i) sum += p[std::clamp(x - reach + i, 0, width - 1)] * k[i];
        }
        out[x] = sum;
    }
}

void plainDown(const std::vector<const Qel32f*>& rows, Qel32f* out, int width, const Qel32f* k, int taps) {
    for (int x = 0; x < width; ++x) out[x] = rows[0][x] * k[0];
    for (int i = 1; i < taps; ++i) {
        const Qel32f* p = rows[size_t(i)];
        for (int x = 0; x < width; ++x) out[x] += p[x] * k[i];
    }
}

template <auto function, int taps>
void gauss(bench::Case& c) {
    const auto in = c.input<Qel32f>();
    const auto out = c.output<Qel32f>();
    const QelSize size = c.size();
    int bytes = 0;
    qeliFilterGaussGetBufferSize_32f_C1R(size, taps, &bytes);
    Qel8u* const pBuffer = reinterpret_cast<Qel8u*>(c.scratch(size_t(bytes)));
    c.tolerance(1e-5);
    c.ours(
        [=] { return function(in.data, in.step, out.data, out.step, size, taps, kSigma, qelBorderRepl, 0, pBuffer); });
    c.plain([=, k = gaussKernel(taps), across = std::vector<Qel32f>(), rows = std::vector<const Qel32f*>()]() mutable {
        across.resize(size_t(size.width) * size.height);
        const auto row = [&](int y) { return across.data() + size_t(size.width) * std::clamp(y, 0, size.height - 1); };
        for (int y = 0; y < size.height; ++y) plainAcross(in.row(y), row(y), size.width, k.data(), taps);
        rows.resize(taps);
        for (int y = 0; y < size.height; ++y) {
            for (int i = 0; i < taps; ++i) rows[size_t(i)] = row(y + i - taps / 2);
            plainDown(rows, out.row(y), size.width, k.data(), taps);
        }
    });
    OPENCV(c.peer([in = mat(in), out = mat(out)]() mutable {
        cv::GaussianBlur(in, out, {taps, taps}, kSigma, kSigma, cv::BORDER_REPLICATE);
    });)
}

void gaussBufferSize(bench::Case& c) {
    const QelSize size = c.size();
    int* const pBufferSize = c.values<int>(1);
    c.ours([=] { return qeliFilterGaussGetBufferSize_32f_C1R(size, 5, pBufferSize); });
}

}  // namespace

BENCH_ROWS({"qeliFilterGaussBorder_32f_C1R 5 taps", gauss<qeliFilterGaussBorder_32f_C1R, 5>},
           {"qeliFilterGaussBorder_32f_C1R 9 taps", gauss<qeliFilterGaussBorder_32f_C1R, 9>},
           {"qeliFilterGaussBorder_32f_C1R 15 taps", gauss<qeliFilterGaussBorder_32f_C1R, 15>},
           {"qeliFilterGaussGetBufferSize_32f_C1R", gaussBufferSize, bench::Sizes::One});
