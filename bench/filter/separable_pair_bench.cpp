#include <algorithm>
#include <vector>

#include "kit/bench.h"
#include "peers/opencv.h"
#include "qelcv.h"

#ifdef QEL_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

// Rows that go through both halves at a time. Few, if their source, the ring and their result fit the nearest cache
// together; of large 32f images so many that the column pipeline's stores bypass the cache.
template <class T, class Out>
int rowsPerTurn(QelSize size, int channels, int taps) {
    constexpr int64_t kNearestCache = 48 << 10;
    constexpr int64_t kLargeImage = 1 << 20;
    constexpr int kBypassing = 0x20000;
    const int64_t samples = int64_t{size.width} * channels;
    for (const int turn : {8, 4, 1}) {
        if (turn == 1 && taps > 3) break;  // columns of more taps share what they load among four rows
        const int64_t bytes = turn * int64_t(sizeof(T) + sizeof(Out)) + (turn + taps - 1) * int64_t(sizeof(Out));
        if (samples * bytes <= kNearestCache) return turn;
    }
    return std::is_floating_point_v<Out> && samples * size.height > kLargeImage ? int(kBypassing / samples) + 1 : 16;
}

// A filter of both halves, as a program drives them: the row pipeline fills a ring of rows, a few at a time, and the
// column pipeline reads it. Rows above and below the image replicate the first and the last.
template <class T, class Out, class K>
class Pair {
public:
    template <class RowSize, class ColumnSize>
    Pair(QelSize size, int channels, std::vector<K> kernel, RowSize rowSize, ColumnSize columnSize)
        : size_(size),
          rowsPerTurn_(rowsPerTurn<T, Out>(size, channels, int(kernel.size()))),
          kernel_(std::move(kernel)),
          rowSamples_((size.width * channels + 31) / 32 * 32 + 32),
          ringRows_(rowsPerTurn_ + taps() - 1),
          ring_(size_t(rowSamples_) * size_t(ringRows_) + 32) {
        int bytes[2] = {};
        rowSize({size.width, rowsPerTurn_ + taps()}, taps(), &bytes[0]);
        columnSize({size.width, rowsPerTurn_}, taps(), &bytes[1]);
        buffer_.resize(size_t(std::max(bytes[0], bytes[1])));
    }

    // rows(pSrc, srcStep, pRowDst, size, buffer) and columns(pRowSrc, pDst, dstStep, size, buffer) call the pipelines.
    template <class Rows, class Columns>
    qelStatus run(const bench::Image<T>& in, const bench::Image<Out>& out, const Rows& rows, const Columns& columns) {
        const int half = taps() / 2;
        std::vector<Out*> into(size_t(rowsPerTurn_ + taps()));
        std::vector<const Out*> from(size_t(rowsPerTurn_ + taps()));
        int filtered = 0;  // rows of the image that are in the ring or were
        for (int y = 0; y < size_.height; y += rowsPerTurn_) {
            const int turn = std::min(rowsPerTurn_, size_.height - y);
            const int last = std::min(size_.height, y + turn + half);
            for (int i = filtered; i < last; ++i) into[size_t(i - filtered)] = ringRow(i);
            if (last > filtered) {
                const qelStatus status =
                    rows(in.row(filtered), in.step, into.data(), QelSize{size_.width, last - filtered}, buffer_.data());
                if (status != qelStatusOk) return status;
            }
            filtered = last;
            for (int i = 0; i < turn + taps() - 1; ++i)
                from[size_t(i)] = ringRow(std::clamp(y + i - half, 0, size_.height - 1));
            const qelStatus status =
                columns(from.data(), out.row(y), out.step, QelSize{size_.width, turn}, buffer_.data());
            if (status != qelStatusOk) return status;
        }
        return qelStatusOk;
    }

    const K* kernel() const { return kernel_.data(); }
    int taps() const { return int(kernel_.size()); }

private:
    // Rows begin where lines of the cache do.
    Out* ringRow(int y) {
        const size_t first = -reinterpret_cast<uintptr_t>(ring_.data()) % 64 / sizeof(Out);
        return ring_.data() + first + size_t(y % ringRows_) * size_t(rowSamples_);
    }

    QelSize size_;
    int rowsPerTurn_;
    std::vector<K> kernel_;
    int rowSamples_;
    int ringRows_;
    std::vector<Out> ring_;
    std::vector<Qel8u> buffer_;
};

// Triangles, whose sums of both passes over noise of bytes stay below 16 bits up to 9 taps and saturate beyond.
template <class K>
std::vector<K> triangle(int taps) {
    std::vector<K> kernel(static_cast<size_t>(taps));
    for (int i = 0; i < taps; ++i) kernel[size_t(i)] = K(1 + std::min(i, taps - 1 - i));
    return kernel;
}

template <class Out>
Out saturated(Qel32f v) {
    return std::is_floating_point_v<Out> ? Out(v) : Out(std::clamp(v, -32768.0F, 32767.0F));
}

// Both passes over the whole image, with the rows between in one piece.
template <class T, class Out, class K>
void plainPair(const bench::Image<T>& in, Out* between, const bench::Image<Out>& out, const K* k, int taps,
               int divisor) {
    const int half = taps / 2;
    const int channels = in.channels;
    const int width = in.size.width;
    const int height = in.size.height;
    for (int y = 0; y < height; ++y) {
        const T* const a = in.row(y);
        Out* const b = between + size_t(y) * size_t(width * channels);
        const auto sumAt = [&](int x, int c) {
            std::conditional_t<std::is_floating_point_v<T>, Qel32f, int> sum = 0;
            for (int i = 0; i < taps; ++i) sum += a[std::clamp(x + i - half, 0, width - 1) * channels + c] * k[i];
            return sum;
        };
        for (int x = 0; x < std::min(half, width); ++x)
            for (int c = 0; c < channels; ++c) b[x * channels + c] = Out(sumAt(x, c));
        for (int x = half * channels; x < (width - half) * channels; ++x) {
            std::conditional_t<std::is_floating_point_v<T>, Qel32f, int> sum = 0;
            for (int i = 0; i < taps; ++i) sum += a[x + (i - half) * channels] * k[i];
            b[x] = Out(sum);
        }
        for (int x = std::max(width - half, std::min(half, width)); x < width; ++x)
            for (int c = 0; c < channels; ++c) b[x * channels + c] = Out(sumAt(x, c));
    }
    const Qel32f reciprocal = 1.0F / Qel32f(divisor);
    for (int y = 0; y < height; ++y) {
        std::vector<const Out*> rows(static_cast<size_t>(taps));
        for (int i = 0; i < taps; ++i)
            rows[size_t(i)] = between + size_t(std::clamp(y + i - half, 0, height - 1)) * size_t(width * channels);
        Out* const to = out.row(y);
        for (int x = 0; x < width * channels; ++x) {
            Qel32f sum = 0;
            for (int i = 0; i < taps; ++i) sum += Qel32f(rows[size_t(i)][x]) * Qel32f(k[i]);
            to[x] = saturated<Out>(sum * reciprocal);
        }
    }
}

enum class Peer { Integers, Floats };

// The peer has no divisor. Its kernel of integers gives the image that ours gives with the divisor 1. Its floats are
// divided by their sum, since whole numbers would take a slow path there; ours divides once, by both sums, and either
// rounds in its own way.
template <class T, class Out, class K, auto rowPipeline, auto rowSize, auto columnPipeline, auto columnSize,
          int channels, int taps, Peer peer>
void separablePair(bench::Case& c) {
    constexpr bool kFloat = std::is_floating_point_v<T>;
    const auto in = c.input<T>({.channels = channels});
    const auto out = c.output<Out>({.channels = channels});
    const QelSize size = c.size();
    const int sum = (taps + 1) / 2 * ((taps + 1) / 2);  // of the triangle
    const int divisor = !kFloat && peer == Peer::Floats ? sum * sum : 1;
    if (kFloat) c.tolerance(1e-5);
    if (divisor > 1) c.tolerance(0.5);  // of small numbers, rounded up or down
    const Pair<T, Out, K> pair(size, channels, triangle<K>(taps), rowSize, columnSize);

    c.ours([=, filter = pair]() mutable {
        const K* const k = filter.kernel();
        return filter.run(
            in, out,
            [=](const T* pSrc, int srcStep, Out* const* pRowDst, QelSize roi, Qel8u* buffer) {
                const T black[3] = {};
                const auto call = [&](auto... tail) {
                    return rowPipeline(pSrc, srcStep, pRowDst, roi, k, taps, taps / 2, qelBorderRepl, tail..., buffer);
                };
                if constexpr (kFloat && channels == 1) {
                    return call(black[0]);
                } else if constexpr (kFloat) {
                    return call(black);
                } else if constexpr (channels == 1) {
                    return call(black[0], 1);
                } else {
                    return call(black, 1);
                }
            },
            [=](const Out* const* pRowSrc, Out* pDst, int dstStep, QelSize roi, Qel8u* buffer) {
                if constexpr (kFloat) {
                    return columnPipeline(pRowSrc, pDst, dstStep, roi, k, taps, buffer);
                } else {
                    return columnPipeline(pRowSrc, pDst, dstStep, roi, k, taps, divisor, buffer);
                }
            });
    });
    Out* const between =
        reinterpret_cast<Out*>(c.scratch(size_t(size.width) * size_t(size.height) * channels * sizeof(Out)));
    c.plain([=, k = triangle<K>(taps)] { plainPair(in, between, out, k.data(), taps, divisor); });
    OPENCV(c.peer([a = mat(in), b = mat(out)]() mutable {
        cv::Mat kernel(1, taps, peer == Peer::Integers && !kFloat ? CV_32S : CV_32F);
        const auto k = triangle<K>(taps);
        for (int i = 0; i < taps; ++i) {
            if (kernel.type() == CV_32S) {
                kernel.at<int>(0, i) = int(k[size_t(i)]);
            } else {
                kernel.at<float>(0, i) = float(k[size_t(i)]) / (divisor > 1 ? float(sum) : 1);
            }
        }
        cv::sepFilter2D(a, b, b.depth(), kernel, kernel, cv::Point(-1, -1), 0, cv::BORDER_REPLICATE);
    });)
}

template <int taps, Peer peer>
constexpr auto pair_8u16s_C1 =
    separablePair<Qel8u, Qel16s, Qel16s, qeliFilterRowBorderPipeline_8u16s_C1R,
                  qeliFilterRowBorderPipelineGetBufferSize_8u16s_C1R, qeliFilterColumnPipeline_16s_C1R,
                  qeliFilterColumnPipelineGetBufferSize_16s_C1R, 1, taps, peer>;
template <int taps, Peer peer>
constexpr auto pair_8u16s_C3 =
    separablePair<Qel8u, Qel16s, Qel16s, qeliFilterRowBorderPipeline_8u16s_C3R,
                  qeliFilterRowBorderPipelineGetBufferSize_8u16s_C3R, qeliFilterColumnPipeline_16s_C3R,
                  qeliFilterColumnPipelineGetBufferSize_16s_C3R, 3, taps, peer>;
template <int taps>
constexpr auto pair_32f_C1 =
    separablePair<Qel32f, Qel32f, Qel32f, qeliFilterRowBorderPipeline_32f_C1R,
                  qeliFilterRowBorderPipelineGetBufferSize_32f_C1R, qeliFilterColumnPipeline_32f_C1R,
                  qeliFilterColumnPipelineGetBufferSize_32f_C1R, 1, taps, Peer::Floats>;
template <int taps>
constexpr auto pair_32f_C3 =
    separablePair<Qel32f, Qel32f, Qel32f, qeliFilterRowBorderPipeline_32f_C3R,
                  qeliFilterRowBorderPipelineGetBufferSize_32f_C3R, qeliFilterColumnPipeline_32f_C3R,
                  qeliFilterColumnPipelineGetBufferSize_32f_C3R, 3, taps, Peer::Floats>;

}  // namespace

BENCH_ROWS({"pipelines 8u16s_C1, 3 taps, peer's integers", pair_8u16s_C1<3, Peer::Integers>},
           {"pipelines 8u16s_C1, 3 taps, peer's floats", pair_8u16s_C1<3, Peer::Floats>},
           {"pipelines 8u16s_C1, 5 taps, peer's integers", pair_8u16s_C1<5, Peer::Integers>},
           {"pipelines 8u16s_C1, 5 taps, peer's floats", pair_8u16s_C1<5, Peer::Floats>},
           {"pipelines 8u16s_C1, 9 taps, peer's integers", pair_8u16s_C1<9, Peer::Integers>},
           {"pipelines 8u16s_C1, 9 taps, peer's floats", pair_8u16s_C1<9, Peer::Floats>},
           {"pipelines 8u16s_C1, 15 taps, peer's integers", pair_8u16s_C1<15, Peer::Integers>},
           {"pipelines 8u16s_C1, 15 taps, peer's floats", pair_8u16s_C1<15, Peer::Floats>},
           {"pipelines 8u16s_C3, 3 taps, peer's integers", pair_8u16s_C3<3, Peer::Integers>},
           {"pipelines 8u16s_C3, 3 taps, peer's floats", pair_8u16s_C3<3, Peer::Floats>},
           {"pipelines 8u16s_C3, 5 taps, peer's integers", pair_8u16s_C3<5, Peer::Integers>},
           {"pipelines 8u16s_C3, 5 taps, peer's floats", pair_8u16s_C3<5, Peer::Floats>},
           {"pipelines 8u16s_C3, 9 taps, peer's integers", pair_8u16s_C3<9, Peer::Integers>},
           {"pipelines 8u16s_C3, 9 taps, peer's floats", pair_8u16s_C3<9, Peer::Floats>},
           {"pipelines 8u16s_C3, 15 taps, peer's integers", pair_8u16s_C3<15, Peer::Integers>},
           {"pipelines 8u16s_C3, 15 taps, peer's floats", pair_8u16s_C3<15, Peer::Floats>},
           {"pipelines 32f_C1, 3 taps", pair_32f_C1<3>}, {"pipelines 32f_C1, 5 taps", pair_32f_C1<5>},
           {"pipelines 32f_C1, 9 taps", pair_32f_C1<9>}, {"pipelines 32f_C1, 15 taps", pair_32f_C1<15>},
           {"pipelines 32f_C3, 3 taps", pair_32f_C3<3>}, {"pipelines 32f_C3, 5 taps", pair_32f_C3<5>},
           {"pipelines 32f_C3, 9 taps", pair_32f_C3<9>}, {"pipelines 32f_C3, 15 taps", pair_32f_C3<15>});
