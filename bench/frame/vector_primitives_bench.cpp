#include "frame/vector_primitives.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <cwchar>

#include "kit/bench.h"
#include "peers/opencv.h"

namespace {

using namespace qel;

int lengthOf(const bench::Case& c) { return c.size().width * c.size().height; }

template <class T>
bench::Image<T> inputVector(bench::Case& c) {
    return c.input<T>({.size = {lengthOf(c), 1}});
}
template <class T>
bench::Image<T> outputVector(bench::Case& c) {
    return c.output<T>({.size = {lengthOf(c), 1}});
}
template <class T>
bench::Image<T> updateVector(bench::Case& c) {
    return c.update<T>({.size = {lengthOf(c), 1}});
}

// Copies and fills are held against those of the C library.
template <class T, auto function>
void copy(bench::Case& c) {
    const int len = lengthOf(c);
    const auto in = inputVector<T>(c);
    const auto out = outputVector<T>(c);
    c.ours([=] { return function(in.data, out.data, len); });
    c.plain([=] { std::memcpy(out.data, in.data, size_t(len) * sizeof(T)); });
    OPENCV(c.peer([in = mat(in), out = mat(out)]() mutable { in.copyTo(out); });)
}

void librarySet(Qel8u value, Qel8u* p, size_t count) { std::memset(p, value, count); }
template <class Word>
void librarySet(Word value, Word* p, size_t count) {
    std::wmemset(reinterpret_cast<wchar_t*>(p), std::bit_cast<wchar_t>(value), count);
}

template <class T, auto function>
void set(bench::Case& c) {
    const int len = lengthOf(c);
    const auto out = outputVector<T>(c);
    const T value = T(77 + len % 2);  // not for the compiler to know
    c.ours([=] { return function(value, out.data, len); });
    c.plain([=] { librarySet(value, out.data, size_t(len)); });
    OPENCV(c.peer([value, out = mat(out)]() mutable { out.setTo(cv::Scalar::all(value)); });)
}

template <class T, auto function>
void zero(bench::Case& c) {
    const int len = lengthOf(c);
    const auto out = outputVector<T>(c);
    c.ours([=] { return function(out.data, len); });
    c.plain([=] { std::memset(out.data, 0, size_t(len) * sizeof(T)); });
    OPENCV(c.peer([out = mat(out)]() mutable { out.setTo(cv::Scalar::all(0)); });)
}

void plainConvert(const Qel16u* in, Qel32f* out, int len) {
    for (int i = 0; i < len; ++i) out[i] = in[i];
}

void convert(bench::Case& c) {
    const int len = lengthOf(c);
    const auto in = inputVector<Qel16u>(c);
    const auto out = outputVector<Qel32f>(c);
    c.ours([=] { return qelsConvert_16u32f(in.data, out.data, len); });
    c.plain([=] { plainConvert(in.data, out.data, len); });
    OPENCV(c.peer([in = mat(in), out = mat(out)]() mutable { in.convertTo(out, CV_32F); });)
}

struct Smaller {
    template <class T>
    static void plain(const T* a, const T* b, T* out, int len) {
        for (int i = 0; i < len; ++i) out[i] = a[i] < b[i] ? a[i] : b[i];
    }
    OPENCV(static void peer(const cv::Mat& a, const cv::Mat& b, cv::Mat& out) { cv::min(a, b, out); })
};
struct Larger {
    template <class T>
    static void plain(const T* a, const T* b, T* out, int len) {
        for (int i = 0; i < len; ++i) out[i] = a[i] > b[i] ? a[i] : b[i];
    }
    OPENCV(static void peer(const cv::Mat& a, const cv::Mat& b, cv::Mat& out) { cv::max(a, b, out); })
};

template <class T, auto function, class Choice>
void every(bench::Case& c) {
    const int len = lengthOf(c);
    const auto a = inputVector<T>(c);
    const auto b = inputVector<T>(c);
    const auto out = outputVector<T>(c);
    c.ours([=] { return function(a.data, b.data, out.data, len); });
    c.plain([=] { Choice::plain(a.data, b.data, out.data, len); });
    OPENCV(c.peer([a = mat(a), b = mat(b), out = mat(out)]() mutable { Choice::peer(a, b, out); });)
}

template <class T, auto function, class Choice>
void everyInPlace(bench::Case& c) {
    const int len = lengthOf(c);
    const auto a = inputVector<T>(c);
    const auto b = updateVector<T>(c);
    c.ours([=] { return function(a.data, b.data, len); });
    c.plain([=] { Choice::plain(a.data, b.data, b.data, len); });
    OPENCV(c.peer([a = mat(a), b = mat(b)]() mutable { Choice::peer(a, b, b); });)
}

void plainMulC(Qel32f* v, int len, Qel32f value) {
    for (int i = 0; i < len; ++i) v[i] *= value;
}

// Factors that keep the vector's values from call to call.
void mulC(bench::Case& c) {
    const int len = lengthOf(c);
    const auto v = updateVector<Qel32f>(c);
    c.ours([=] { return qelsMulC_32f_I(-1, v.data, len); });
    c.plain([=] { plainMulC(v.data, len, -1); });
    OPENCV(c.peer([v = mat(v)]() mutable { v.convertTo(v, -1, -1); });)
}

void plainMulCScaled(Qel16s* v, int len, int value, int scale) {
    for (int i = 0; i < len; ++i) {
        const int product = v[i] * value;
        const int rounded = (product + (1 << (scale - 1)) - 1 + (product >> scale & 1)) >> scale;
        v[i] = Qel16s(std::clamp(rounded, -32768, 32767));
    }
}

void mulCScaled(bench::Case& c) {
    const int len = lengthOf(c);
    const auto v = updateVector<Qel16s>(c);
    c.ours([=] { return qelsMulC_16s_ISfs(32, v.data, len, 5); });
    c.plain([=] { plainMulCScaled(v.data, len, 32, 5); });
}

void plainSqrt(Qel32f* v, int len) {
    for (int i = 0; i < len; ++i) v[i] = std::sqrt(v[i]);
}

void squareRoot(bench::Case& c) {
    const int len = lengthOf(c);
    const auto v = updateVector<Qel32f>(c);
    c.ours([=] { return qelsSqrt_32f_I(v.data, len); });
    c.plain([=] { plainSqrt(v.data, len); });
    OPENCV(c.peer([v = mat(v)]() mutable { cv::sqrt(v, v); });)
}

void plainSqrtScaled(const Qel32s* in, Qel16s* out, int len) {
    for (int i = 0; i < len; ++i)
        out[i] = Qel16s(std::min(std::nearbyint(std::sqrt(double(std::max(in[i], 0)))), 32767.0));
}

void squareRootScaled(bench::Case& c) {
    const int len = lengthOf(c);
    const auto in = inputVector<Qel32s>(c);
    const auto out = outputVector<Qel16s>(c);
    c.ours([=] { return qelsSqrt_32s16s_Sfs(in.data, out.data, len, 0); });
    c.plain([=] { plainSqrtScaled(in.data, out.data, len); });
}

// Other noise for each call: one that comes again and again is learnt by the branch predictor. The copy counts for all.
class Shuffled {
public:
    static constexpr int kMore = 1 << 16;
    Shuffled(const Qel64f* in, Qel64f* out, int len) : in_(in), out_(out), len_(len) {}
    Qel64f* next() {
        std::memcpy(out_, in_ + start_, size_t(len_) * sizeof(Qel64f));
        start_ = (start_ + 10007) % kMore;
        return out_;
    }

private:
    const Qel64f* in_;
    Qel64f* out_;
    int len_;
    int start_ = 0;
};

void sort(bench::Case& c) {
    const int len = lengthOf(c);
    const auto in = c.input<Qel64f>({.size = {len + Shuffled::kMore, 1}});
    const auto out = outputVector<Qel64f>(c);
    Shuffled noise(in.data, out.data, len);
    c.ours([noise, len]() mutable { return qelsSortAscend_64f_I(noise.next(), len); });
    c.plain([noise, len]() mutable {
        Qel64f* const v = noise.next();
        std::sort(v, v + len);
    });
    OPENCV(c.peer([noise, out = mat(out)]() mutable {
        noise.next();
        cv::sort(out, out, cv::SORT_EVERY_ROW);
    });)
}

}  // namespace

BENCH_ROWS({"qelsCopy_8u", copy<Qel8u, qelsCopy_8u>}, {"qelsCopy_16s", copy<Qel16s, qelsCopy_16s>},
           {"qelsCopy_32f", copy<Qel32f, qelsCopy_32f>}, {"qelsSet_8u", set<Qel8u, qelsSet_8u>},
           {"qelsSet_32s", set<Qel32s, qelsSet_32s>}, {"qelsSet_32f", set<Qel32f, qelsSet_32f>},
           {"qelsZero_8u", zero<Qel8u, qelsZero_8u>}, {"qelsZero_16s", zero<Qel16s, qelsZero_16s>},
           {"qelsZero_32s", zero<Qel32s, qelsZero_32s>}, {"qelsZero_32f", zero<Qel32f, qelsZero_32f>},
           {"qelsConvert_16u32f", convert}, {"qelsMinEvery_8u", every<Qel8u, qelsMinEvery_8u, Smaller>},
           {"qelsMaxEvery_8u", every<Qel8u, qelsMaxEvery_8u, Larger>},
           {"qelsMinEvery_32f", every<Qel32f, qelsMinEvery_32f, Smaller>},
           {"qelsMaxEvery_32f", every<Qel32f, qelsMaxEvery_32f, Larger>},
           {"qelsMinEvery_8u_I", everyInPlace<Qel8u, qelsMinEvery_8u_I, Smaller>},
           {"qelsMaxEvery_8u_I", everyInPlace<Qel8u, qelsMaxEvery_8u_I, Larger>},
           {"qelsMinEvery_32f_I", everyInPlace<Qel32f, qelsMinEvery_32f_I, Smaller>},
           {"qelsMaxEvery_32f_I", everyInPlace<Qel32f, qelsMaxEvery_32f_I, Larger>}, {"qelsMulC_32f_I", mulC},
           {"qelsMulC_16s_ISfs", mulCScaled}, {"qelsSqrt_32f_I", squareRoot}, {"qelsSqrt_32s16s_Sfs", squareRootScaled},
           {"qelsSortAscend_64f_I", sort});
