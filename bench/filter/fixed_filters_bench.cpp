// Sobel, Scharr, Laplacian and low-pass filters beside two passes of plain loops.
#include <algorithm>
#include <cmath>
#include <type_traits>
#include <vector>

#include "kit/bench.h"
#include "peers/opencv.h"
#include "qelcv.h"

#ifdef QEL_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

// Kernels as formulas over five samples, or three in the middle of them.
struct Dx3 {
    template <class T>
    static T of([[maybe_unused]] T s, [[maybe_unused]] T a, [[maybe_unused]] T b, [[maybe_unused]] T c,
                [[maybe_unused]] T t) {
        return c - a;
    }
};
struct DxNeg3 {
    template <class T>
    static T of([[maybe_unused]] T s, [[maybe_unused]] T a, [[maybe_unused]] T b, [[maybe_unused]] T c,
                [[maybe_unused]] T t) {
        return a - c;
    }
};
struct Dx5 {
    template <class T>
    static T of([[maybe_unused]] T s, [[maybe_unused]] T a, [[maybe_unused]] T b, [[maybe_unused]] T c,
                [[maybe_unused]] T t) {
        return (t - s) + 2 * (c - a);
    }
};
struct DxNeg5 {
    template <class T>
    static T of([[maybe_unused]] T s, [[maybe_unused]] T a, [[maybe_unused]] T b, [[maybe_unused]] T c,
                [[maybe_unused]] T t) {
        return (s - t) + 2 * (a - c);
    }
};
struct D2x3 {
    template <class T>
    static T of([[maybe_unused]] T s, [[maybe_unused]] T a, [[maybe_unused]] T b, [[maybe_unused]] T c,
                [[maybe_unused]] T t) {
        return (a + c) - 2 * b;
    }
};
struct D2x5 {
    template <class T>
    static T of([[maybe_unused]] T s, [[maybe_unused]] T a, [[maybe_unused]] T b, [[maybe_unused]] T c,
                [[maybe_unused]] T t) {
        return (s + t) - 2 * b;
    }
};
struct Sobel3 {
    template <class T>
    static T of([[maybe_unused]] T s, [[maybe_unused]] T a, [[maybe_unused]] T b, [[maybe_unused]] T c,
                [[maybe_unused]] T t) {
        return (a + c) + 2 * b;
    }
};
struct SobelNeg3 {
    template <class T>
    static T of([[maybe_unused]] T s, [[maybe_unused]] T a, [[maybe_unused]] T b, [[maybe_unused]] T c,
                [[maybe_unused]] T t) {
        return -((a + c) + 2 * b);
    }
};
struct Sobel5 {
    template <class T>
    static T of([[maybe_unused]] T s, [[maybe_unused]] T a, [[maybe_unused]] T b, [[maybe_unused]] T c,
                [[maybe_unused]] T t) {
        return ((s + t) + 4 * (a + c)) + 6 * b;
    }
};
struct SobelNeg5 {
    template <class T>
    static T of([[maybe_unused]] T s, [[maybe_unused]] T a, [[maybe_unused]] T b, [[maybe_unused]] T c,
                [[maybe_unused]] T t) {
        return -(((s + t) + 4 * (a + c)) + 6 * b);
    }
};
struct Scharr3 {
    template <class T>
    static T of([[maybe_unused]] T s, [[maybe_unused]] T a, [[maybe_unused]] T b, [[maybe_unused]] T c,
                [[maybe_unused]] T t) {
        return 3 * (a + c) + 10 * b;
    }
};
struct Avr3 {
    template <class T>
    static T of([[maybe_unused]] T s, [[maybe_unused]] T a, [[maybe_unused]] T b, [[maybe_unused]] T c,
                [[maybe_unused]] T t) {
        return (a + b) + c;
    }
};
struct Avr5 {
    template <class T>
    static T of([[maybe_unused]] T s, [[maybe_unused]] T a, [[maybe_unused]] T b, [[maybe_unused]] T c,
                [[maybe_unused]] T t) {
        return (((s + a) + b) + c) + t;
    }
};

// Sums are formed in int for bytes, in float for floats.
template <class Src>
using Sum = std::conditional_t<std::is_integral_v<Src>, int, Qel32f>;

// One row across, whose border repeats its ends.
template <class Across, class Src>
void plainAcross(const Src* p, Sum<Src>* out, int width) {
    using S = Sum<Src>;
    const auto edge = [=](int x) {
        const auto at = [=](int i) { return S(p[std::clamp(i, 0, width - 1)]); };
        return Across::template of<S>(at(x - 2), at(x - 1), at(x), at(x + 1), at(x + 2));
    };
    for (int x = 0; x < 2; ++x) out[x] = edge(x);
    for (int x = 2; x < width - 2; ++x) out[x] = Across::template of<S>(p[x - 2], p[x - 1], p[x], p[x + 1], p[x + 2]);
    for (int x = width - 2; x < width; ++x) out[x] = edge(x);
}

constexpr int kDivisor = 16;

template <class Across, class Down>
struct Separable {
    // Two passes over the image by way of all the sums across.
    template <class Src, class Dst, int taps>
    static void run(const bench::Image<Src>& in, const bench::Image<Dst>& out, std::vector<Sum<Src>>& across) {
        using S = Sum<Src>;
        const int width = in.size.width;
        const int height = in.size.height;
        across.resize(size_t(width) * height);
        const auto row = [&](int y) { return across.data() + size_t(width) * std::clamp(y, 0, height - 1); };
        for (int y = 0; y < height; ++y) plainAcross<Across>(in.row(y), row(y), width);
        for (int y = 0; y < height; ++y)
            down<S, Dst, taps>(row(y - 2), row(y - 1), row(y), row(y + 1), row(y + 2), out.row(y), width);
    }

    template <class S, class Dst, int taps>
    static void down(const S* s, const S* a, const S* b, const S* c, const S* t, Dst* out, int width) {
        for (int x = 0; x < width; ++x) {
            const S sum = Down::template of<S>(s[x], a[x], b[x], c[x], t[x]);
            if constexpr (std::is_same_v<Dst, Qel8s>) {
                const Qel32f quotient = Qel32f(sum) * (1.0F / kDivisor);
                const Qel32f whole = x < width / 8 * 8 ? std::nearbyint(quotient) : quotient;
                out[x] = Qel8s(std::clamp(whole, -128.0F, 127.0F));
            } else if constexpr (std::is_same_v<Down, Avr3> && std::is_same_v<Dst, Qel32f>) {
                out[x] = sum * 0.11111111F;
            } else if constexpr (std::is_same_v<Down, Avr5> && std::is_same_v<Dst, Qel32f>) {
                out[x] = sum * 0.04F;
            } else if constexpr (std::is_same_v<Dst, Qel8u>) {
                out[x] = Dst(taps == 3 ? (sum + 5) * 7280 >> 16 : sum * 2621 >> 16);
            } else {
                out[x] = Dst(sum);
            }
        }
    }
};

// 2 0 2 / 0 -8 0 / 2 0 2, row by row.
struct PlainLaplacian3 {
    template <class Src, class Dst, int taps>
    static void run(const bench::Image<Src>& in, const bench::Image<Dst>& out, std::vector<Sum<Src>>&) {
        for (int y = 0; y < in.size.height; ++y)
            across(in.row(std::max(y - 1, 0)), in.row(y), in.row(std::min(y + 1, in.size.height - 1)), out.row(y),
                   in.size.width);
    }

    template <class Src, class Dst>
    static void across(const Src* above, const Src* p, const Src* below, Dst* out, int width) {
        using S = Sum<Src>;
        const auto at = [=](int left, int x, int right) {
            const S sum = 2 * ((S(above[left]) + above[right]) + (S(below[left]) + below[right])) - 8 * S(p[x]);
            if constexpr (!std::is_same_v<Dst, Qel8s>) return Dst(sum);
            const Qel32f quotient = Qel32f(sum) * (1.0F / kDivisor);
            const Qel32f whole = x < width / 8 * 8 ? std::nearbyint(quotient) : quotient;
            return Dst(std::clamp(whole, -128.0F, 127.0F));
        };
        out[0] = at(0, 0, 1);
        for (int x = 1; x < width - 1; ++x) out[x] = at(x - 1, x, x + 1);
        out[width - 1] = at(width - 2, width - 1, width - 1);
    }
};

// The sum of two second derivatives.
struct PlainLaplacian5 {
    template <class Src, class Dst, int taps>
    static void run(const bench::Image<Src>& in, const bench::Image<Dst>& out, std::vector<Sum<Src>>& across) {
        using S = Sum<Src>;
        const int width = in.size.width;
        const int height = in.size.height;
        across.resize(2 * size_t(width) * height);
        const auto row = [&](int half, int y) {
            return across.data() + size_t(width) * (half * height + std::clamp(y, 0, height - 1));
        };
        for (int y = 0; y < height; ++y) plainAcross<Sobel5>(in.row(y), row(0, y), width);
        for (int y = 0; y < height; ++y) plainAcross<D2x5>(in.row(y), row(1, y), width);
        for (int y = 0; y < height; ++y) {
            const S* const r[] = {row(0, y - 2), row(0, y), row(0, y + 2)};
            const S* const q[] = {row(1, y - 2), row(1, y - 1), row(1, y), row(1, y + 1), row(1, y + 2)};
            down<S>(r, q, out.row(y), width);
        }
    }

    template <class S, class Dst>
    static void down(const S* const (&r)[3], const S* const (&q)[5], Dst* out, int width) {
        for (int x = 0; x < width; ++x) {
            const S sum = D2x5::of<S>(r[0][x], 0, r[1][x], 0, r[2][x]) +
                          Sobel5::of<S>(q[0][x], q[1][x], q[2][x], q[3][x], q[4][x]);
            if constexpr (std::is_same_v<Dst, Qel8s>) {
                out[x] = Qel8s(std::clamp(Qel32f(sum) * (1.0F / kDivisor), -128.0F, 127.0F));
            } else {
                out[x] = Dst(sum);
            }
        }
    }
};

struct NoPeer {};

#ifdef QEL_BENCH_OPENCV
template <int dx, int dy>
struct Sobel {
    static void run(const cv::Mat& in, cv::Mat& out, int taps) {
        cv::Sobel(in, out, out.depth(), dx, dy, taps, 1, 0, cv::BORDER_REPLICATE);
    }
};
template <int dx, int dy>
struct Scharr {
    static void run(const cv::Mat& in, cv::Mat& out, int) {
        cv::Scharr(in, out, out.depth(), dx, dy, 1, 0, cv::BORDER_REPLICATE);
    }
};
struct Laplacian {
    static void run(const cv::Mat& in, cv::Mat& out, int taps) {
        cv::Laplacian(in, out, out.depth(), taps, 1, 0, cv::BORDER_REPLICATE);
    }
};
struct Blur {
    static void run(const cv::Mat& in, cv::Mat& out, int taps) {
        cv::blur(in, out, {taps, taps}, {-1, -1}, cv::BORDER_REPLICATE);
    }
};
#else
template <int, int>
struct Sobel {};
template <int, int>
struct Scharr {};
struct Laplacian {};
struct Blur {};
#endif

// The mask where the function takes one, the divisor where the result is 8s.
template <auto function, class Src, class Dst>
qelStatus call(const bench::Image<Src>& in, const bench::Image<Dst>& out, int taps, Qel8u* pBuffer) {
    const auto with = [&](auto... args) {
        return function(in.data, in.step, out.data, out.step, in.size, args..., pBuffer);
    };
    constexpr bool divided = std::is_same_v<Dst, Qel8s>;
    constexpr bool masked =
        std::is_invocable_v<decltype(function), const Src*, int, Dst*, int, QelSize, int, int, Src,
                            std::conditional_t<divided, int, Qel8u*>, Qel8u*> ||
        (!divided &&
         std::is_invocable_v<decltype(function), const Src*, int, Dst*, int, QelSize, int, int, Src, Qel8u*>);
    if constexpr (divided && masked) return with(taps * 11, qelBorderRepl, Src(0), kDivisor);
    if constexpr (divided && !masked) return with(qelBorderRepl, Src(0), kDivisor);
    if constexpr (!divided && masked) return with(taps * 11, qelBorderRepl, Src(0));
    if constexpr (!divided && !masked) return with(qelBorderRepl, Src(0));
}

template <auto query>
int bufferSize(QelSize size, int taps) {
    int bytes = 0;
    if constexpr (std::is_invocable_v<decltype(query), QelSize, int, int*>) {
        query(size, taps * 11, &bytes);
    } else {
        query(size, &bytes);
    }
    return bytes;
}

template <class Src, class Dst, auto function, auto query, int taps, class Plain, class Peer>
void fixed(bench::Case& c) {
    const auto in = c.input<Src>();
    const auto out = c.output<Dst>();
    Qel8u* const pBuffer = reinterpret_cast<Qel8u*>(c.scratch(size_t(bufferSize<query>(c.size(), taps))));
    c.ours([=] { return call<function>(in, out, taps, pBuffer); });
    c.plain([=, across = std::vector<Sum<Src>>()]() mutable { Plain::template run<Src, Dst, taps>(in, out, across); });
#ifdef QEL_BENCH_OPENCV
    if constexpr (!std::is_same_v<Peer, NoPeer>)
        c.peer([in = mat(in), out = mat(out)]() mutable { Peer::run(in, out, taps); });
#endif
}

template <auto function>
void query(bench::Case& c) {
    const QelSize size = c.size();
    int* const pBufferSize = c.values<int>(1);
    c.ours([=] {
        if constexpr (std::is_invocable_v<decltype(function), QelSize, int, int*>) {
            return function(size, 33, pBufferSize);
        } else {
            return function(size, pBufferSize);
        }
    });
}

template <class T, auto function>
void genSobel(bench::Case& c) {
    T* const pKernel = c.values<T>(7);
    c.elements(7);
    c.ours([=] { return function(pKernel, 7, 2, 1); });
}

}  // namespace

BENCH_ROWS(
    {"qeliFilterSobelHorizBorder_8u16s_C1R",
     fixed<Qel8u, Qel16s, qeliFilterSobelHorizBorder_8u16s_C1R, qeliFilterSobelHorizGetBufferSize_8u16s_C1R, 3,
           Separable<Sobel3, Dx3>, Sobel<0, 1>>},
    {"qeliFilterSobelHorizBorder_8u16s_C1R 5x5",
     fixed<Qel8u, Qel16s, qeliFilterSobelHorizBorder_8u16s_C1R, qeliFilterSobelHorizGetBufferSize_8u16s_C1R, 5,
           Separable<Sobel5, Dx5>, Sobel<0, 1>>},
    {"qeliFilterSobelHorizBorder_8u8s_C1R",
     fixed<Qel8u, Qel8s, qeliFilterSobelHorizBorder_8u8s_C1R, qeliFilterSobelHorizGetBufferSize_8u8s_C1R, 3,
           Separable<Sobel3, Dx3>, NoPeer>},
    {"qeliFilterSobelHorizBorder_8u8s_C1R 5x5",
     fixed<Qel8u, Qel8s, qeliFilterSobelHorizBorder_8u8s_C1R, qeliFilterSobelHorizGetBufferSize_8u8s_C1R, 5,
           Separable<Sobel5, Dx5>, NoPeer>},
    {"qeliFilterSobelHorizBorder_32f_C1R",
     fixed<Qel32f, Qel32f, qeliFilterSobelHorizBorder_32f_C1R, qeliFilterSobelHorizGetBufferSize_32f_C1R, 3,
           Separable<Sobel3, Dx3>, Sobel<0, 1>>},
    {"qeliFilterSobelHorizBorder_32f_C1R 5x5",
     fixed<Qel32f, Qel32f, qeliFilterSobelHorizBorder_32f_C1R, qeliFilterSobelHorizGetBufferSize_32f_C1R, 5,
           Separable<Sobel5, Dx5>, Sobel<0, 1>>},
    {"qeliFilterSobelVertBorder_8u16s_C1R",
     fixed<Qel8u, Qel16s, qeliFilterSobelVertBorder_8u16s_C1R, qeliFilterSobelVertGetBufferSize_8u16s_C1R, 3,
           Separable<DxNeg3, Sobel3>, NoPeer>},
    {"qeliFilterSobelVertBorder_8u16s_C1R 5x5",
     fixed<Qel8u, Qel16s, qeliFilterSobelVertBorder_8u16s_C1R, qeliFilterSobelVertGetBufferSize_8u16s_C1R, 5,
           Separable<DxNeg5, Sobel5>, NoPeer>},
    {"qeliFilterSobelVertBorder_8u8s_C1R",
     fixed<Qel8u, Qel8s, qeliFilterSobelVertBorder_8u8s_C1R, qeliFilterSobelVertGetBufferSize_8u8s_C1R, 3,
           Separable<DxNeg3, Sobel3>, NoPeer>},
    {"qeliFilterSobelVertBorder_8u8s_C1R 5x5",
     fixed<Qel8u, Qel8s, qeliFilterSobelVertBorder_8u8s_C1R, qeliFilterSobelVertGetBufferSize_8u8s_C1R, 5,
           Separable<DxNeg5, Sobel5>, NoPeer>},
    {"qeliFilterSobelVertBorder_32f_C1R",
     fixed<Qel32f, Qel32f, qeliFilterSobelVertBorder_32f_C1R, qeliFilterSobelVertGetBufferSize_32f_C1R, 3,
           Separable<DxNeg3, Sobel3>, NoPeer>},
    {"qeliFilterSobelVertBorder_32f_C1R 5x5",
     fixed<Qel32f, Qel32f, qeliFilterSobelVertBorder_32f_C1R, qeliFilterSobelVertGetBufferSize_32f_C1R, 5,
           Separable<DxNeg5, Sobel5>, NoPeer>},
    {"qeliFilterSobelNegVertBorder_8u16s_C1R",
     fixed<Qel8u, Qel16s, qeliFilterSobelNegVertBorder_8u16s_C1R, qeliFilterSobelNegVertGetBufferSize_8u16s_C1R, 3,
           Separable<DxNeg3, SobelNeg3>, Sobel<1, 0>>},
    {"qeliFilterSobelNegVertBorder_8u16s_C1R 5x5",
     fixed<Qel8u, Qel16s, qeliFilterSobelNegVertBorder_8u16s_C1R, qeliFilterSobelNegVertGetBufferSize_8u16s_C1R, 5,
           Separable<DxNeg5, SobelNeg5>, Sobel<1, 0>>},
    {"qeliFilterSobelNegVertBorder_8u8s_C1R",
     fixed<Qel8u, Qel8s, qeliFilterSobelNegVertBorder_8u8s_C1R, qeliFilterSobelNegVertGetBufferSize_8u8s_C1R, 3,
           Separable<DxNeg3, SobelNeg3>, NoPeer>},
    {"qeliFilterSobelNegVertBorder_8u8s_C1R 5x5",
     fixed<Qel8u, Qel8s, qeliFilterSobelNegVertBorder_8u8s_C1R, qeliFilterSobelNegVertGetBufferSize_8u8s_C1R, 5,
           Separable<DxNeg5, SobelNeg5>, NoPeer>},
    {"qeliFilterSobelNegVertBorder_32f_C1R",
     fixed<Qel32f, Qel32f, qeliFilterSobelNegVertBorder_32f_C1R, qeliFilterSobelNegVertGetBufferSize_32f_C1R, 3,
           Separable<DxNeg3, SobelNeg3>, Sobel<1, 0>>},
    {"qeliFilterSobelNegVertBorder_32f_C1R 5x5",
     fixed<Qel32f, Qel32f, qeliFilterSobelNegVertBorder_32f_C1R, qeliFilterSobelNegVertGetBufferSize_32f_C1R, 5,
           Separable<DxNeg5, SobelNeg5>, Sobel<1, 0>>},
    {"qeliFilterSobelHorizSecondBorder_8u16s_C1R",
     fixed<Qel8u, Qel16s, qeliFilterSobelHorizSecondBorder_8u16s_C1R, qeliFilterSobelHorizSecondGetBufferSize_8u16s_C1R,
           3, Separable<Sobel3, D2x3>, Sobel<0, 2>>},
    {"qeliFilterSobelHorizSecondBorder_8u16s_C1R 5x5",
     fixed<Qel8u, Qel16s, qeliFilterSobelHorizSecondBorder_8u16s_C1R, qeliFilterSobelHorizSecondGetBufferSize_8u16s_C1R,
           5, Separable<Sobel5, D2x5>, Sobel<0, 2>>},
    {"qeliFilterSobelHorizSecondBorder_8u8s_C1R",
     fixed<Qel8u, Qel8s, qeliFilterSobelHorizSecondBorder_8u8s_C1R, qeliFilterSobelHorizSecondGetBufferSize_8u8s_C1R, 3,
           Separable<Sobel3, D2x3>, NoPeer>},
    {"qeliFilterSobelHorizSecondBorder_8u8s_C1R 5x5",
     fixed<Qel8u, Qel8s, qeliFilterSobelHorizSecondBorder_8u8s_C1R, qeliFilterSobelHorizSecondGetBufferSize_8u8s_C1R, 5,
           Separable<Sobel5, D2x5>, NoPeer>},
    {"qeliFilterSobelHorizSecondBorder_32f_C1R",
     fixed<Qel32f, Qel32f, qeliFilterSobelHorizSecondBorder_32f_C1R, qeliFilterSobelHorizSecondGetBufferSize_32f_C1R, 3,
           Separable<Sobel3, D2x3>, Sobel<0, 2>>},
    {"qeliFilterSobelHorizSecondBorder_32f_C1R 5x5",
     fixed<Qel32f, Qel32f, qeliFilterSobelHorizSecondBorder_32f_C1R, qeliFilterSobelHorizSecondGetBufferSize_32f_C1R, 5,
           Separable<Sobel5, D2x5>, Sobel<0, 2>>},
    {"qeliFilterSobelVertSecondBorder_8u16s_C1R",
     fixed<Qel8u, Qel16s, qeliFilterSobelVertSecondBorder_8u16s_C1R, qeliFilterSobelVertSecondGetBufferSize_8u16s_C1R,
           3, Separable<D2x3, Sobel3>, Sobel<2, 0>>},
    {"qeliFilterSobelVertSecondBorder_8u16s_C1R 5x5",
     fixed<Qel8u, Qel16s, qeliFilterSobelVertSecondBorder_8u16s_C1R, qeliFilterSobelVertSecondGetBufferSize_8u16s_C1R,
           5, Separable<D2x5, Sobel5>, Sobel<2, 0>>},
    {"qeliFilterSobelVertSecondBorder_8u8s_C1R",
     fixed<Qel8u, Qel8s, qeliFilterSobelVertSecondBorder_8u8s_C1R, qeliFilterSobelVertSecondGetBufferSize_8u8s_C1R, 3,
           Separable<D2x3, Sobel3>, NoPeer>},
    {"qeliFilterSobelVertSecondBorder_8u8s_C1R 5x5",
     fixed<Qel8u, Qel8s, qeliFilterSobelVertSecondBorder_8u8s_C1R, qeliFilterSobelVertSecondGetBufferSize_8u8s_C1R, 5,
           Separable<D2x5, Sobel5>, NoPeer>},
    {"qeliFilterSobelVertSecondBorder_32f_C1R",
     fixed<Qel32f, Qel32f, qeliFilterSobelVertSecondBorder_32f_C1R, qeliFilterSobelVertSecondGetBufferSize_32f_C1R, 3,
           Separable<D2x3, Sobel3>, Sobel<2, 0>>},
    {"qeliFilterSobelVertSecondBorder_32f_C1R 5x5",
     fixed<Qel32f, Qel32f, qeliFilterSobelVertSecondBorder_32f_C1R, qeliFilterSobelVertSecondGetBufferSize_32f_C1R, 5,
           Separable<D2x5, Sobel5>, Sobel<2, 0>>},
    {"qeliFilterSobelCrossBorder_8u16s_C1R",
     fixed<Qel8u, Qel16s, qeliFilterSobelCrossBorder_8u16s_C1R, qeliFilterSobelCrossGetBufferSize_8u16s_C1R, 3,
           Separable<DxNeg3, Dx3>, NoPeer>},
    {"qeliFilterSobelCrossBorder_8u16s_C1R 5x5",
     fixed<Qel8u, Qel16s, qeliFilterSobelCrossBorder_8u16s_C1R, qeliFilterSobelCrossGetBufferSize_8u16s_C1R, 5,
           Separable<DxNeg5, Dx5>, NoPeer>},
    {"qeliFilterSobelCrossBorder_8u8s_C1R",
     fixed<Qel8u, Qel8s, qeliFilterSobelCrossBorder_8u8s_C1R, qeliFilterSobelCrossGetBufferSize_8u8s_C1R, 3,
           Separable<DxNeg3, Dx3>, NoPeer>},
    {"qeliFilterSobelCrossBorder_8u8s_C1R 5x5",
     fixed<Qel8u, Qel8s, qeliFilterSobelCrossBorder_8u8s_C1R, qeliFilterSobelCrossGetBufferSize_8u8s_C1R, 5,
           Separable<DxNeg5, Dx5>, NoPeer>},
    {"qeliFilterSobelCrossBorder_32f_C1R",
     fixed<Qel32f, Qel32f, qeliFilterSobelCrossBorder_32f_C1R, qeliFilterSobelCrossGetBufferSize_32f_C1R, 3,
           Separable<DxNeg3, Dx3>, NoPeer>},
    {"qeliFilterSobelCrossBorder_32f_C1R 5x5",
     fixed<Qel32f, Qel32f, qeliFilterSobelCrossBorder_32f_C1R, qeliFilterSobelCrossGetBufferSize_32f_C1R, 5,
           Separable<DxNeg5, Dx5>, NoPeer>},
    {"qeliFilterScharrHorizBorder_8u16s_C1R",
     fixed<Qel8u, Qel16s, qeliFilterScharrHorizBorder_8u16s_C1R, qeliFilterScharrHorizGetBufferSize_8u16s_C1R, 3,
           Separable<Scharr3, Dx3>, Scharr<0, 1>>},
    {"qeliFilterScharrHorizBorder_8u8s_C1R",
     fixed<Qel8u, Qel8s, qeliFilterScharrHorizBorder_8u8s_C1R, qeliFilterScharrHorizGetBufferSize_8u8s_C1R, 3,
           Separable<Scharr3, Dx3>, NoPeer>},
    {"qeliFilterScharrHorizBorder_32f_C1R",
     fixed<Qel32f, Qel32f, qeliFilterScharrHorizBorder_32f_C1R, qeliFilterScharrHorizGetBufferSize_32f_C1R, 3,
           Separable<Scharr3, Dx3>, Scharr<0, 1>>},
    {"qeliFilterScharrVertBorder_8u16s_C1R",
     fixed<Qel8u, Qel16s, qeliFilterScharrVertBorder_8u16s_C1R, qeliFilterScharrVertGetBufferSize_8u16s_C1R, 3,
           Separable<Dx3, Scharr3>, Scharr<1, 0>>},
    {"qeliFilterScharrVertBorder_8u8s_C1R",
     fixed<Qel8u, Qel8s, qeliFilterScharrVertBorder_8u8s_C1R, qeliFilterScharrVertGetBufferSize_8u8s_C1R, 3,
           Separable<Dx3, Scharr3>, NoPeer>},
    {"qeliFilterScharrVertBorder_32f_C1R",
     fixed<Qel32f, Qel32f, qeliFilterScharrVertBorder_32f_C1R, qeliFilterScharrVertGetBufferSize_32f_C1R, 3,
           Separable<Dx3, Scharr3>, Scharr<1, 0>>},
    {"qeliFilterLaplacianBorder_8u16s_C1R",
     fixed<Qel8u, Qel16s, qeliFilterLaplacianBorder_8u16s_C1R, qeliFilterLaplacianGetBufferSize_8u16s_C1R, 3,
           PlainLaplacian3, Laplacian>},
    {"qeliFilterLaplacianBorder_8u16s_C1R 5x5",
     fixed<Qel8u, Qel16s, qeliFilterLaplacianBorder_8u16s_C1R, qeliFilterLaplacianGetBufferSize_8u16s_C1R, 5,
           PlainLaplacian5, Laplacian>},
    {"qeliFilterLaplacianBorder_8u8s_C1R",
     fixed<Qel8u, Qel8s, qeliFilterLaplacianBorder_8u8s_C1R, qeliFilterLaplacianGetBufferSize_8u8s_C1R, 3,
           PlainLaplacian3, NoPeer>},
    {"qeliFilterLaplacianBorder_8u8s_C1R 5x5",
     fixed<Qel8u, Qel8s, qeliFilterLaplacianBorder_8u8s_C1R, qeliFilterLaplacianGetBufferSize_8u8s_C1R, 5,
           PlainLaplacian5, NoPeer>},
    {"qeliFilterLaplacianBorder_32f_C1R",
     fixed<Qel32f, Qel32f, qeliFilterLaplacianBorder_32f_C1R, qeliFilterLaplacianGetBufferSize_32f_C1R, 3,
           PlainLaplacian3, Laplacian>},
    {"qeliFilterLaplacianBorder_32f_C1R 5x5",
     fixed<Qel32f, Qel32f, qeliFilterLaplacianBorder_32f_C1R, qeliFilterLaplacianGetBufferSize_32f_C1R, 5,
           PlainLaplacian5, Laplacian>},
    {"qeliFilterLowpassBorder_8u_C1R", fixed<Qel8u, Qel8u, qeliFilterLowpassBorder_8u_C1R,
                                             qeliFilterLowpassGetBufferSize_8u_C1R, 3, Separable<Avr3, Avr3>, Blur>},
    {"qeliFilterLowpassBorder_8u_C1R 5x5",
     fixed<Qel8u, Qel8u, qeliFilterLowpassBorder_8u_C1R, qeliFilterLowpassGetBufferSize_8u_C1R, 5,
           Separable<Avr5, Avr5>, Blur>},
    {"qeliFilterLowpassBorder_32f_C1R", fixed<Qel32f, Qel32f, qeliFilterLowpassBorder_32f_C1R,
                                              qeliFilterLowpassGetBufferSize_32f_C1R, 3, Separable<Avr3, Avr3>, Blur>},
    {"qeliFilterLowpassBorder_32f_C1R 5x5",
     fixed<Qel32f, Qel32f, qeliFilterLowpassBorder_32f_C1R, qeliFilterLowpassGetBufferSize_32f_C1R, 5,
           Separable<Avr5, Avr5>, Blur>},
    {"qeliFilterSobelHorizGetBufferSize_32f_C1R", query<qeliFilterSobelHorizGetBufferSize_32f_C1R>, bench::Sizes::One},
    {"qeliFilterSobelHorizGetBufferSize_8u16s_C1R", query<qeliFilterSobelHorizGetBufferSize_8u16s_C1R>,
     bench::Sizes::One},
    {"qeliFilterSobelHorizGetBufferSize_8u8s_C1R", query<qeliFilterSobelHorizGetBufferSize_8u8s_C1R>,
     bench::Sizes::One},
    {"qeliFilterSobelVertGetBufferSize_32f_C1R", query<qeliFilterSobelVertGetBufferSize_32f_C1R>, bench::Sizes::One},
    {"qeliFilterSobelVertGetBufferSize_8u16s_C1R", query<qeliFilterSobelVertGetBufferSize_8u16s_C1R>,
     bench::Sizes::One},
    {"qeliFilterSobelVertGetBufferSize_8u8s_C1R", query<qeliFilterSobelVertGetBufferSize_8u8s_C1R>, bench::Sizes::One},
    {"qeliFilterSobelNegVertGetBufferSize_32f_C1R", query<qeliFilterSobelNegVertGetBufferSize_32f_C1R>,
     bench::Sizes::One},
    {"qeliFilterSobelNegVertGetBufferSize_8u16s_C1R", query<qeliFilterSobelNegVertGetBufferSize_8u16s_C1R>,
     bench::Sizes::One},
    {"qeliFilterSobelNegVertGetBufferSize_8u8s_C1R", query<qeliFilterSobelNegVertGetBufferSize_8u8s_C1R>,
     bench::Sizes::One},
    {"qeliFilterSobelHorizSecondGetBufferSize_32f_C1R", query<qeliFilterSobelHorizSecondGetBufferSize_32f_C1R>,
     bench::Sizes::One},
    {"qeliFilterSobelHorizSecondGetBufferSize_8u16s_C1R", query<qeliFilterSobelHorizSecondGetBufferSize_8u16s_C1R>,
     bench::Sizes::One},
    {"qeliFilterSobelHorizSecondGetBufferSize_8u8s_C1R", query<qeliFilterSobelHorizSecondGetBufferSize_8u8s_C1R>,
     bench::Sizes::One},
    {"qeliFilterSobelVertSecondGetBufferSize_32f_C1R", query<qeliFilterSobelVertSecondGetBufferSize_32f_C1R>,
     bench::Sizes::One},
    {"qeliFilterSobelVertSecondGetBufferSize_8u16s_C1R", query<qeliFilterSobelVertSecondGetBufferSize_8u16s_C1R>,
     bench::Sizes::One},
    {"qeliFilterSobelVertSecondGetBufferSize_8u8s_C1R", query<qeliFilterSobelVertSecondGetBufferSize_8u8s_C1R>,
     bench::Sizes::One},
    {"qeliFilterSobelCrossGetBufferSize_32f_C1R", query<qeliFilterSobelCrossGetBufferSize_32f_C1R>, bench::Sizes::One},
    {"qeliFilterSobelCrossGetBufferSize_8u16s_C1R", query<qeliFilterSobelCrossGetBufferSize_8u16s_C1R>,
     bench::Sizes::One},
    {"qeliFilterSobelCrossGetBufferSize_8u8s_C1R", query<qeliFilterSobelCrossGetBufferSize_8u8s_C1R>,
     bench::Sizes::One},
    {"qeliFilterScharrHorizGetBufferSize_32f_C1R", query<qeliFilterScharrHorizGetBufferSize_32f_C1R>,
     bench::Sizes::One},
    {"qeliFilterScharrHorizGetBufferSize_8u16s_C1R", query<qeliFilterScharrHorizGetBufferSize_8u16s_C1R>,
     bench::Sizes::One},
    {"qeliFilterScharrHorizGetBufferSize_8u8s_C1R", query<qeliFilterScharrHorizGetBufferSize_8u8s_C1R>,
     bench::Sizes::One},
    {"qeliFilterScharrVertGetBufferSize_32f_C1R", query<qeliFilterScharrVertGetBufferSize_32f_C1R>, bench::Sizes::One},
    {"qeliFilterScharrVertGetBufferSize_8u16s_C1R", query<qeliFilterScharrVertGetBufferSize_8u16s_C1R>,
     bench::Sizes::One},
    {"qeliFilterScharrVertGetBufferSize_8u8s_C1R", query<qeliFilterScharrVertGetBufferSize_8u8s_C1R>,
     bench::Sizes::One},
    {"qeliFilterLaplacianGetBufferSize_32f_C1R", query<qeliFilterLaplacianGetBufferSize_32f_C1R>, bench::Sizes::One},
    {"qeliFilterLaplacianGetBufferSize_8u16s_C1R", query<qeliFilterLaplacianGetBufferSize_8u16s_C1R>,
     bench::Sizes::One},
    {"qeliFilterLaplacianGetBufferSize_8u8s_C1R", query<qeliFilterLaplacianGetBufferSize_8u8s_C1R>, bench::Sizes::One},
    {"qeliFilterLowpassGetBufferSize_32f_C1R", query<qeliFilterLowpassGetBufferSize_32f_C1R>, bench::Sizes::One},
    {"qeliFilterLowpassGetBufferSize_8u_C1R", query<qeliFilterLowpassGetBufferSize_8u_C1R>, bench::Sizes::One},
    {"qeliGenSobelKernel_16s", genSobel<Qel16s, qeliGenSobelKernel_16s>, bench::Sizes::One},
    {"qeliGenSobelKernel_32f", genSobel<Qel32f, qeliGenSobelKernel_32f>, bench::Sizes::One});
