#include "frame/border.h"

#include <algorithm>
#include <cstring>

#include "kit/bench.h"
#include "peers/opencv.h"

namespace {

using namespace qel;

// Pixels of border on each side.
constexpr int kBorder = 4;

QelSize framed(QelSize size) { return {size.width + 2 * kBorder, size.height + 2 * kBorder}; }

// The sides of a row of `width` pixels that starts at `image`, as copies of its ends.
template <class T, int channels>
void plainSides(T* image, int width) {
    for (int x = 0; x < kBorder; ++x) {
        for (int i = 0; i < channels; ++i) {
            image[(x - kBorder) * channels + i] = image[i];
            image[(width + x) * channels + i] = image[(width - 1) * channels + i];
        }
    }
}

template <class T, int channels>
void plainTopAndBottom(const bench::Image<T>& out, QelSize size) {
    const size_t bytes = size_t(framed(size).width) * channels * sizeof(T);
    for (int y = 0; y < kBorder; ++y) {
        std::memcpy(out.row(y), out.row(kBorder), bytes);
        std::memcpy(out.row(kBorder + size.height + y), out.row(kBorder + size.height - 1), bytes);
    }
}

template <class T, auto function, int channels>
void replicate(bench::Case& c) {
    const QelSize size = c.size();
    const auto in = c.input<T>({.channels = channels});
    const auto out = c.output<T>({.size = framed(size), .channels = channels});
    c.ours([=] { return function(in.data, in.step, size, out.data, out.step, framed(size), kBorder, kBorder); });
    c.plain([=] {
        for (int y = 0; y < size.height; ++y) {
            T* const image = out.row(kBorder + y) + kBorder * channels;
            std::memcpy(image, in.row(y), size_t(size.width) * channels * sizeof(T));
            plainSides<T, channels>(image, size.width);
        }
        plainTopAndBottom<T, channels>(out, size);
    });
    OPENCV(c.peer([in = mat(in), out = mat(out)]() mutable {
        cv::copyMakeBorder(in, out, kBorder, kBorder, kBorder, kBorder, cv::BORDER_REPLICATE);
    });)
}

template <class T, auto function, int channels>
void replicateInPlace(bench::Case& c) {
    const QelSize size = c.size();
    const auto image = c.update<T>({.size = framed(size), .channels = channels});
    T* const first = image.row(kBorder) + kBorder * channels;
    c.ours([=] { return function(first, image.step, size, framed(size), kBorder, kBorder); });
    c.plain([=] {
        for (int y = 0; y < size.height; ++y)
            plainSides<T, channels>(image.row(kBorder + y) + kBorder * channels, size.width);
        plainTopAndBottom<T, channels>(image, size);
    });
}

template <class T, auto function>
void surround(bench::Case& c) {
    const QelSize size = c.size();
    const auto in = c.input<T>();
    const auto out = c.output<T>({.size = framed(size)});
    constexpr T value = 77;
    c.ours([=] { return function(in.data, in.step, size, out.data, out.step, framed(size), kBorder, kBorder, value); });
    c.plain([=] {
        for (int y = 0; y < framed(size).height; ++y) {
            T* const to = out.row(y);
            if (y < kBorder || y >= kBorder + size.height) {
                std::fill_n(to, framed(size).width, value);
            } else {
                std::fill_n(to, kBorder, value);
                std::copy_n(in.row(y - kBorder), size.width, to + kBorder);
                std::fill_n(to + kBorder + size.width, kBorder, value);
            }
        }
    });
    OPENCV(c.peer([in = mat(in), out = mat(out)]() mutable {
        cv::copyMakeBorder(in, out, kBorder, kBorder, kBorder, kBorder, cv::BORDER_CONSTANT, cv::Scalar::all(value));
    });)
}

}  // namespace

BENCH_ROWS({"qeliCopyReplicateBorder_8u_C1R", replicate<Qel8u, qeliCopyReplicateBorder_8u_C1R, 1>},
           {"qeliCopyReplicateBorder_8u_C3R", replicate<Qel8u, qeliCopyReplicateBorder_8u_C3R, 3>},
           {"qeliCopyReplicateBorder_8u_C4R", replicate<Qel8u, qeliCopyReplicateBorder_8u_C4R, 4>},
           {"qeliCopyReplicateBorder_32s_C1R", replicate<Qel32s, qeliCopyReplicateBorder_32s_C1R, 1>},
           {"qeliCopyReplicateBorder_32s_C3R", replicate<Qel32s, qeliCopyReplicateBorder_32s_C3R, 3>},
           {"qeliCopyReplicateBorder_32s_C4R", replicate<Qel32s, qeliCopyReplicateBorder_32s_C4R, 4>},
           {"qeliCopyReplicateBorder_8u_C1IR", replicateInPlace<Qel8u, qeliCopyReplicateBorder_8u_C1IR, 1>},
           {"qeliCopyReplicateBorder_8u_C3IR", replicateInPlace<Qel8u, qeliCopyReplicateBorder_8u_C3IR, 3>},
           {"qeliCopyReplicateBorder_8u_C4IR", replicateInPlace<Qel8u, qeliCopyReplicateBorder_8u_C4IR, 4>},
           {"qeliCopyReplicateBorder_32s_C1IR", replicateInPlace<Qel32s, qeliCopyReplicateBorder_32s_C1IR, 1>},
           {"qeliCopyReplicateBorder_32s_C3IR", replicateInPlace<Qel32s, qeliCopyReplicateBorder_32s_C3IR, 3>},
           {"qeliCopyReplicateBorder_32s_C4IR", replicateInPlace<Qel32s, qeliCopyReplicateBorder_32s_C4IR, 4>},
           {"qeliCopyConstBorder_8u_C1R", surround<Qel8u, qeliCopyConstBorder_8u_C1R>},
           {"qeliCopyConstBorder_16s_C1R", surround<Qel16s, qeliCopyConstBorder_16s_C1R>},
           {"qeliCopyConstBorder_16u_C1R", surround<Qel16u, qeliCopyConstBorder_16u_C1R>});
