#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "kit/checks.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/stats.h"

namespace {

enum class Family { Norm, NormDiff, NormRel };
enum class Of { Inf, L1, L2 };

// From how many powers of two of pixels per thread on rows go to threads: on machines with more than one core, and on
// any; 0 for never.
struct Limits {
    int log2WithCores;
    int log2;
};

#define ALL_NORMS                                                 \
    NORM(qeliNorm_Inf_8u_C1MR, Qel8u, Norm, Inf, 0, 19)           \
    NORM(qeliNorm_Inf_8u_C3CMR, Qel8u, Norm, Inf, 0, 17)          \
    NORM(qeliNorm_Inf_8s_C1MR, Qel8s, Norm, Inf, 0, 19)           \
    NORM(qeliNorm_Inf_8s_C3CMR, Qel8s, Norm, Inf, 0, 17)          \
    NORM(qeliNorm_Inf_16u_C1MR, Qel16u, Norm, Inf, 0, 19)         \
    NORM(qeliNorm_Inf_16u_C3CMR, Qel16u, Norm, Inf, 0, 17)        \
    NORM(qeliNorm_Inf_32f_C1MR, Qel32f, Norm, Inf, 0, 17)         \
    NORM(qeliNorm_Inf_32f_C3CMR, Qel32f, Norm, Inf, 0, 15)        \
    NORM(qeliNorm_L1_8u_C1MR, Qel8u, Norm, L1, 17, 0)             \
    NORM(qeliNorm_L1_8u_C3CMR, Qel8u, Norm, L1, 0, 17)            \
    NORM(qeliNorm_L1_8s_C1MR, Qel8s, Norm, L1, 17, 0)             \
    NORM(qeliNorm_L1_8s_C3CMR, Qel8s, Norm, L1, 0, 17)            \
    NORM(qeliNorm_L1_16u_C1MR, Qel16u, Norm, L1, 0, 17)           \
    NORM(qeliNorm_L1_16u_C3CMR, Qel16u, Norm, L1, 0, 17)          \
    NORM(qeliNorm_L1_32f_C1MR, Qel32f, Norm, L1, 0, 17)           \
    NORM(qeliNorm_L1_32f_C3CMR, Qel32f, Norm, L1, 0, 17)          \
    NORM(qeliNorm_L2_8u_C1MR, Qel8u, Norm, L2, 17, 0)             \
    NORM(qeliNorm_L2_8u_C3CMR, Qel8u, Norm, L2, 15, 17)           \
    NORM(qeliNorm_L2_8s_C1MR, Qel8s, Norm, L2, 17, 0)             \
    NORM(qeliNorm_L2_8s_C3CMR, Qel8s, Norm, L2, 15, 17)           \
    NORM(qeliNorm_L2_16u_C1MR, Qel16u, Norm, L2, 0, 17)           \
    NORM(qeliNorm_L2_16u_C3CMR, Qel16u, Norm, L2, 15, 17)         \
    NORM(qeliNorm_L2_32f_C1MR, Qel32f, Norm, L2, 0, 17)           \
    NORM(qeliNorm_L2_32f_C3CMR, Qel32f, Norm, L2, 15, 17)         \
    NORM(qeliNormDiff_Inf_8u_C1MR, Qel8u, NormDiff, Inf, 0, 0)    \
    NORM(qeliNormDiff_Inf_8u_C3CMR, Qel8u, NormDiff, Inf, 0, 0)   \
    NORM(qeliNormDiff_Inf_8s_C1MR, Qel8s, NormDiff, Inf, 0, 0)    \
    NORM(qeliNormDiff_Inf_8s_C3CMR, Qel8s, NormDiff, Inf, 0, 0)   \
    NORM(qeliNormDiff_Inf_16u_C1MR, Qel16u, NormDiff, Inf, 0, 0)  \
    NORM(qeliNormDiff_Inf_16u_C3CMR, Qel16u, NormDiff, Inf, 0, 0) \
    NORM(qeliNormDiff_Inf_32f_C1MR, Qel32f, NormDiff, Inf, 0, 0)  \
    NORM(qeliNormDiff_Inf_32f_C3CMR, Qel32f, NormDiff, Inf, 0, 0) \
    NORM(qeliNormDiff_L1_8u_C1MR, Qel8u, NormDiff, L1, 17, 0)     \
    NORM(qeliNormDiff_L1_8u_C3CMR, Qel8u, NormDiff, L1, 0, 17)    \
    NORM(qeliNormDiff_L1_8s_C1MR, Qel8s, NormDiff, L1, 17, 0)     \
    NORM(qeliNormDiff_L1_8s_C3CMR, Qel8s, NormDiff, L1, 15, 0)    \
    NORM(qeliNormDiff_L1_16u_C1MR, Qel16u, NormDiff, L1, 0, 17)   \
    NORM(qeliNormDiff_L1_16u_C3CMR, Qel16u, NormDiff, L1, 15, 0)  \
    NORM(qeliNormDiff_L1_32f_C1MR, Qel32f, NormDiff, L1, 0, 0)    \
    NORM(qeliNormDiff_L1_32f_C3CMR, Qel32f, NormDiff, L1, 0, 0)   \
    NORM(qeliNormDiff_L2_8u_C1MR, Qel8u, NormDiff, L2, 17, 0)     \
    NORM(qeliNormDiff_L2_8u_C3CMR, Qel8u, NormDiff, L2, 0, 17)    \
    NORM(qeliNormDiff_L2_8s_C1MR, Qel8s, NormDiff, L2, 17, 0)     \
    NORM(qeliNormDiff_L2_8s_C3CMR, Qel8s, NormDiff, L2, 0, 17)    \
    NORM(qeliNormDiff_L2_16u_C1MR, Qel16u, NormDiff, L2, 0, 17)   \
    NORM(qeliNormDiff_L2_16u_C3CMR, Qel16u, NormDiff, L2, 15, 17) \
    NORM(qeliNormDiff_L2_32f_C1MR, Qel32f, NormDiff, L2, 0, 0)    \
    NORM(qeliNormDiff_L2_32f_C3CMR, Qel32f, NormDiff, L2, 0, 0)   \
    NORM(qeliNormRel_Inf_8u_C1MR, Qel8u, NormRel, Inf, 17, 0)     \
    NORM(qeliNormRel_Inf_8u_C3CMR, Qel8u, NormRel, Inf, 15, 17)   \
    NORM(qeliNormRel_Inf_8s_C1MR, Qel8s, NormRel, Inf, 17, 0)     \
    NORM(qeliNormRel_Inf_8s_C3CMR, Qel8s, NormRel, Inf, 15, 17)   \
    NORM(qeliNormRel_Inf_16u_C1MR, Qel16u, NormRel, Inf, 17, 0)   \
    NORM(qeliNormRel_Inf_16u_C3CMR, Qel16u, NormRel, Inf, 0, 15)  \
    NORM(qeliNormRel_Inf_32f_C1MR, Qel32f, NormRel, Inf, 0, 15)   \
    NORM(qeliNormRel_Inf_32f_C3CMR, Qel32f, NormRel, Inf, 0, 15)  \
    NORM(qeliNormRel_L1_8u_C1MR, Qel8u, NormRel, L1, 0, 0)        \
    NORM(qeliNormRel_L1_8u_C3CMR, Qel8u, NormRel, L1, 15, 17)     \
    NORM(qeliNormRel_L1_8s_C1MR, Qel8s, NormRel, L1, 17, 0)       \
    NORM(qeliNormRel_L1_8s_C3CMR, Qel8s, NormRel, L1, 15, 17)     \
    NORM(qeliNormRel_L1_16u_C1MR, Qel16u, NormRel, L1, 15, 17)    \
    NORM(qeliNormRel_L1_16u_C3CMR, Qel16u, NormRel, L1, 0, 15)    \
    NORM(qeliNormRel_L1_32f_C1MR, Qel32f, NormRel, L1, 0, 0)      \
    NORM(qeliNormRel_L1_32f_C3CMR, Qel32f, NormRel, L1, 0, 0)     \
    NORM(qeliNormRel_L2_8u_C1MR, Qel8u, NormRel, L2, 0, 17)       \
    NORM(qeliNormRel_L2_8u_C3CMR, Qel8u, NormRel, L2, 15, 17)     \
    NORM(qeliNormRel_L2_8s_C1MR, Qel8s, NormRel, L2, 0, 17)       \
    NORM(qeliNormRel_L2_8s_C3CMR, Qel8s, NormRel, L2, 15, 17)     \
    NORM(qeliNormRel_L2_16u_C1MR, Qel16u, NormRel, L2, 15, 17)    \
    NORM(qeliNormRel_L2_16u_C3CMR, Qel16u, NormRel, L2, 0, 15)    \
    NORM(qeliNormRel_L2_32f_C1MR, Qel32f, NormRel, L2, 0, 0)      \
    NORM(qeliNormRel_L2_32f_C3CMR, Qel32f, NormRel, L2, 0, 0)

struct Sums {
    double value;
    double reference;
};

double root(Of norm, double value) { return norm == Of::L2 ? std::sqrt(value) : value; }

// Magnitudes of one row's samples, zero where the mask leaves one out.
template <class T>
using Magnitude = std::conditional_t<std::is_floating_point_v<T>, float, uint32_t>;
template <class T>
using Rows = std::vector<std::vector<Magnitude<T>>>;

Qel32f magnitude(Qel32f a) { return std::fabs(a); }
uint32_t magnitude(int a) { return uint32_t(std::abs(a)); }
Qel32f difference(Qel32f a, Qel32f b) { return std::fabs(a - b); }
uint32_t difference(int a, int b) { return uint32_t(std::abs(a - b)); }

// Largest value, exact sum, exact sum of squares.
double exact(Of norm, const std::vector<std::vector<uint32_t>>& rows) {
    uint64_t result = 0;
    for (const auto& row : rows) {
        for (const uint64_t m : row) {
            if (norm == Of::Inf) result = std::max(result, m);
            if (norm == Of::L1) result += m;
            if (norm == Of::L2) result += m * m;
        }
    }
    return double(result);
}

// A NaN is not larger than anything.
double largest(const std::vector<std::vector<float>>& rows) {
    float result = 0;
    for (const auto& row : rows)
        for (const float m : row)
            if (m > result) result = m;
    return result;
}

// Squares in single precision; per lane of four, those of a block are added in single precision as halves of halves.
double squaresOf16u(const std::vector<std::vector<uint32_t>>& rows) {
    double low[2] = {0, 0};
    double high[2] = {0, 0};
    for (const auto& row : rows) {
        size_t x = 0;
        for (const size_t block : {32, 16, 8, 4}) {
            while (row.size() - x >= block) {
                float lanes[4];
                for (size_t lane = 0; lane < 4; ++lane) {
                    float v[8];
                    for (size_t i = 0; i < block / 4; ++i) {
                        const float f = float(row[x + 4 * i + lane]);
                        v[i] = f * f;
                    }
                    if (block == 32) lanes[lane] = ((v[0] + v[1]) + (v[2] + v[3])) + ((v[4] + v[5]) + (v[6] + v[7]));
                    if (block == 16) lanes[lane] = (v[0] + v[1]) + (v[2] + v[3]);
                    if (block == 8) lanes[lane] = v[0] + v[1];
                    if (block == 4) lanes[lane] = v[0];
                }
                low[0] += double(lanes[0]);
                low[1] += double(lanes[1]);
                high[0] += double(lanes[2]);
                high[1] += double(lanes[3]);
                x += block;
            }
        }
        for (; x < row.size(); ++x) {
            const float f = float(row[x]);
            low[0] += double(f * f);
        }
    }
    return (low[0] + high[0]) + (low[1] + high[1]);
}

// Two fours of lanes for one image, one for two; folded at each row's end, rounded to single precision at the end.
double sumOf32f(Of norm, const std::vector<std::vector<float>>& rows, bool oneImage) {
    double total[2] = {0, 0};
    for (const auto& row : rows) {
        const auto term = [&](size_t x) { return norm == Of::L2 ? row[x] * row[x] : row[x]; };
        float first[4] = {0, 0, 0, 0};
        float second[4] = {0, 0, 0, 0};
        size_t x = 0;
        if (oneImage) {
            for (; row.size() - x >= 8; x += 8) {
                for (size_t lane = 0; lane < 4; ++lane) {
                    first[lane] += term(x + lane);
                    second[lane] += term(x + 4 + lane);
                }
            }
        }
        for (; row.size() - x >= 4; x += 4)
            for (size_t lane = 0; lane < 4; ++lane) first[lane] += term(x + lane);
        for (; x < row.size(); ++x) first[0] += term(x);
        for (size_t lane = 0; lane < 4; ++lane) first[lane] += second[lane];
        total[0] += double(first[0] + first[2]);
        total[1] += double(first[1] + first[3]);
    }
    return double(float(total[0] + total[1]));
}

double reduce(Family, Of norm, const Rows<Qel8u>& rows, Qel8u) { return exact(norm, rows); }
double reduce(Family, Of norm, const Rows<Qel8s>& rows, Qel8s) { return exact(norm, rows); }
double reduce(Family, Of norm, const Rows<Qel16u>& rows, Qel16u) {
    return norm == Of::L2 ? squaresOf16u(rows) : exact(norm, rows);
}
double reduce(Family family, Of norm, const Rows<Qel32f>& rows, Qel32f) {
    return norm == Of::Inf ? largest(rows) : sumOf32f(norm, rows, family == Family::Norm);
}

// What a call works on.
template <class T>
struct Input {
    const T* a;
    int aStep;
    const T* b;
    int bStep;
    const Qel8u* mask;
    int maskStep;
    QelSize size;
    int channels;
    int coi;

    template <class S>
    static S sample(const S* p, int step, int x, int y) {
        S s;
        std::memcpy(&s, reinterpret_cast<const char*>(p) + ptrdiff_t{step} * y + ptrdiff_t(sizeof(S)) * x, sizeof(S));
        return s;
    }
    bool counts(int x, int y) const { return sample(mask, maskStep, x, y) != 0; }
    T first(int x, int y) const { return sample(a, aStep, x * channels + coi - 1, y); }
    T second(int x, int y) const { return sample(b, bStep, x * channels + coi - 1, y); }
};

// The sums over some rows, as one run of a kernel gives them.
template <class T>
Sums modelShare(Family family, Of norm, const Input<T>& in, int firstRow, int rows) {
    Rows<T> values(size_t(rows), std::vector<Magnitude<T>>(size_t(in.size.width)));
    Rows<T> references = values;
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < in.size.width; ++x) {
            if (!in.counts(x, firstRow + y)) continue;
            const T a = in.first(x, firstRow + y);
            const T b = in.second(x, firstRow + y);
            values[size_t(y)][size_t(x)] = family == Family::Norm ? magnitude(a) : difference(a, b);
            references[size_t(y)][size_t(x)] = magnitude(b);
        }
    }
    const double value = reduce(family, norm, values, T());
    return {value, family == Family::NormRel ? reduce(family, norm, references, T()) : 0};
}

bool parallel(Limits limits, QelSize size) {
    const int64_t area = int64_t{size.width} * size.height;
    const int64_t threads = kit::core().threads;
    return (limits.log2 != 0 && area >= threads << limits.log2) ||
           (limits.log2WithCores != 0 && area >= threads << limits.log2WithCores && kit::core().cores > 1);
}

struct Result {
    qelStatus status;
    double value;
};

std::ostream& operator<<(std::ostream& out, const Result& r) {
    return out << std::hexfloat << r.value << std::defaultfloat << " (" << r.value << "), status " << r.status;
}

// All NaN are equal but the one that stands for a zero denominator.
bool operator==(const Result& a, const Result& b) {
    const bool bothNaN = std::isnan(a.value) && std::isnan(b.value) && a.status == qelStatusOk;
    return a.status == b.status && (bothNaN || kit::sameBits(a.value, b.value));
}

template <class T>
Result model(Family family, Of norm, Limits limits, const Input<T>& in) {
    const int team = parallel(limits, in.size) ? kit::core().threads : 1;
    const int share = in.size.height / team;
    Sums total = {0, 0};
    for (int thread = 0; thread < team; ++thread) {
        const int rows = thread + 1 < team ? share : in.size.height - share * thread;
        const Sums s = modelShare(family, norm, in, share * thread, rows);
        if (norm == Of::Inf) {
            total = {std::max(total.value, s.value), std::max(total.reference, s.reference)};
        } else {
            total = {total.value + s.value, total.reference + s.reference};
        }
    }
    if (family != Family::NormRel) return {qelStatusOk, root(norm, total.value)};
    if (total.reference != 0) return {qelStatusOk, root(norm, total.value / total.reference)};
    const double infinity = std::numeric_limits<double>::infinity();
    if (total.value == 0) return {qelStatusDivideByZero, -std::numeric_limits<double>::quiet_NaN()};
    return {qelStatusDivideByZero, total.value > 0 ? infinity : -infinity};
}

// The four signatures.
template <class T>
using C1MR = qelStatus (*)(const T*, int, const Qel8u*, int, QelSize, Qel64f*);
template <class T>
using C3CMR = qelStatus (*)(const T*, int, const Qel8u*, int, QelSize, int, Qel64f*);
template <class T>
using PairC1MR = qelStatus (*)(const T*, int, const T*, int, const Qel8u*, int, QelSize, Qel64f*);
template <class T>
using PairC3CMR = qelStatus (*)(const T*, int, const T*, int, const Qel8u*, int, QelSize, int, Qel64f*);

template <class T>
qelStatus call(C1MR<T> f, const Input<T>& in, Qel64f* pValue) {
    return f(in.a, in.aStep, in.mask, in.maskStep, in.size, pValue);
}
template <class T>
qelStatus call(C3CMR<T> f, const Input<T>& in, Qel64f* pValue) {
    return f(in.a, in.aStep, in.mask, in.maskStep, in.size, in.coi, pValue);
}
template <class T>
qelStatus call(PairC1MR<T> f, const Input<T>& in, Qel64f* pValue) {
    return f(in.a, in.aStep, in.b, in.bStep, in.mask, in.maskStep, in.size, pValue);
}
template <class T>
qelStatus call(PairC3CMR<T> f, const Input<T>& in, Qel64f* pValue) {
    return f(in.a, in.aStep, in.b, in.bStep, in.mask, in.maskStep, in.size, in.coi, pValue);
}

template <class F>
constexpr int channelsOf(F) {
    return 3;
}
template <class T>
constexpr int channelsOf(C1MR<T>) {
    return 1;
}
template <class T>
constexpr int channelsOf(PairC1MR<T>) {
    return 1;
}

constexpr double kUnwritten = -12345.5;

template <class T, class F>
Result run(F function, const Input<T>& in) {
    Result r = {qelStatusOk, kUnwritten};
    r.status = call(function, in, &r.value);
    return r;
}

// Bytes that are zero for every pixel, for none, for half of them or for most.
void fillMask(kit::Trial& trial, int kind, kit::Image<Qel8u>* mask) {
    for (int y = 0; y < trial.size.height; ++y) {
        for (int x = 0; x < trial.size.width; ++x) {
            const bool on = kind == 0 || (kind != 1 && trial.between(0, kind == 2 ? 1 : 9) == 0);
            mask->at(x, y) = on ? Qel8u(trial.between(1, 255)) : Qel8u(0);
        }
    }
}

// Samples that take no part: those of other channels, and those that the mask leaves out.
template <class T>
void spoil(const kit::Image<Qel8u>& mask, int coi, T value, kit::Image<T>* image) {
    for (int y = 0; y < mask.size().height; ++y)
        for (int x = 0; x < mask.size().width * image->channels(); ++x)
            if (x % image->channels() != coi - 1 || mask.at(x / image->channels(), y) == 0) image->at(x, y) = value;
}

template <class T, class F>
void agreesWithModel(F function, Family family, Of norm, Limits limits) {
    for (const uint32_t seed : kit::seeds(220)) {
        kit::Trial trial(seed);
        const int channels = channelsOf(function);
        const int coi = 1 + int(seed % unsigned(channels));
        kit::Image<T> a(trial, channels), b(trial, channels);
        kit::Image<Qel8u> mask(trial);
        fillMask(trial, int(seed / 6 % 4), &mask);
        if (seed % 2 != 0) {
            const T worst = std::is_floating_point_v<T> ? std::numeric_limits<T>::quiet_NaN() : T(-1);
            spoil(mask, coi, worst, &a);
            spoil(mask, coi, worst, &b);
        }
        const Input<T> in = {a.data(),    a.step(),   b.data(), b.step(), mask.data(),
                             mask.step(), trial.size, channels, coi};
        ASSERT_EQ(model(family, norm, limits, in), run(function, in)) << trial << ", coi " << coi;
        ASSERT_TRUE(a.gapsIntact() && b.gapsIntact() && mask.gapsIntact()) << trial;
    }
}

class Norm : public kit::EveryTarget {};
ON_EVERY_TARGET(Norm);

#define NORM(name, T, family, norm, ...) \
    TEST_P(Norm, name) { agreesWithModel<T>(name, Family::family, Of::norm, Limits{__VA_ARGS__}); }
ALL_NORMS
#undef NORM

// Memory that looks like many equal rows: one row of pages, mapped again and again.
class RepeatedRow {
public:
    RepeatedRow(int rowBytes, int rows, unsigned char value) : rowBytes_(size_t(rowBytes)), rows_(size_t(rows)) {
        void* const all = mmap(nullptr, rowBytes_ * rows_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        first_ = static_cast<unsigned char*>(all);
        const int file = memfd_create("row", 0);
        bool mapped = all != MAP_FAILED && ftruncate(file, rowBytes) == 0;
        for (size_t y = 0; mapped && y < rows_; ++y)
            mapped = mmap(first_ + rowBytes_ * y, rowBytes_, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED, file, 0) !=
                     MAP_FAILED;
        close(file);
        if (!mapped) {
            ADD_FAILURE() << "no memory for repeated rows";
            std::abort();
        }
        std::memset(first_, value, rowBytes_);
    }
    ~RepeatedRow() { munmap(first_, rowBytes_ * rows_); }
    RepeatedRow(const RepeatedRow&) = delete;
    RepeatedRow& operator=(const RepeatedRow&) = delete;

    template <class T>
    const T* as() const {
        return reinterpret_cast<const T*>(first_);
    }

private:
    size_t rowBytes_;
    size_t rows_;
    unsigned char* first_;
};

// Sums of magnitudes and of squares beyond the range of any 32-bit sum: 0x1020000 pixels of 255 and 65535.
constexpr QelSize kHuge = {0x10000, 0x102};

template <class T>
Input<T> hugeInput(const RepeatedRow& a, const RepeatedRow& b, const RepeatedRow& mask, int channels) {
    const int step = kHuge.width * channels * int(sizeof(T));
    return {a.as<T>(), step, b.as<T>(), step, mask.as<Qel8u>(), kHuge.width, kHuge, channels, channels};
}

template <class T, class F>
void sumsWithoutOverflow(F function, Family family, Of norm) {
    const int channels = channelsOf(function);
    const int rowBytes = kHuge.width * channels * int(sizeof(T));
    // 8s: -128, and -128 less 127.
    const bool isSigned = std::is_signed_v<T>;
    const RepeatedRow a(rowBytes, kHuge.height, isSigned ? 0x80 : 0xFF);
    const RepeatedRow b(rowBytes, kHuge.height, isSigned ? 0x7F : 0);
    const RepeatedRow mask(kHuge.width, kHuge.height, 1);
    const Input<T> in = hugeInput<T>(a, b, mask, channels);

    const double pixels = double(kHuge.width) * kHuge.height;
    const double difference = std::numeric_limits<std::make_unsigned_t<T>>::max();
    const double value = isSigned && family == Family::Norm ? 128 : difference;
    const double reference = isSigned ? 127 : 0;
    const auto total = [&](double m) { return norm == Of::Inf ? m : norm == Of::L1 ? m * pixels : m * m * pixels; };
    for (const int threads : {1, 3, 1 << 20}) {  // the last team is too large for any region
        kit::core().threads = threads;
        Result want = {qelStatusOk, root(norm, total(value))};
        if (family == Family::NormRel) {
            want = reference == 0 ? Result{qelStatusDivideByZero, std::numeric_limits<double>::infinity()}
                                  : Result{qelStatusOk, root(norm, total(value) / total(reference))};
        }
        ASSERT_EQ(want, run(function, in)) << threads << " threads";
    }
}

#define NORM(name, T, family, norm, ...) sumsWithoutOverflow<T>(name, Family::family, Of::norm);
TEST_P(Norm, HugeSumsOf8u){
    NORM(qeliNorm_L1_8u_C1MR, Qel8u, Norm, L1) NORM(qeliNorm_L1_8u_C3CMR, Qel8u, Norm, L1)
        NORM(qeliNorm_L2_8u_C1MR, Qel8u, Norm, L2) NORM(qeliNorm_L2_8u_C3CMR, Qel8u, Norm, L2)
            NORM(qeliNormDiff_L1_8u_C1MR, Qel8u, NormDiff, L1) NORM(qeliNormDiff_L1_8u_C3CMR, Qel8u, NormDiff, L1)
                NORM(qeliNormDiff_L2_8u_C1MR, Qel8u, NormDiff, L2) NORM(qeliNormDiff_L2_8u_C3CMR, Qel8u, NormDiff, L2)
                    NORM(qeliNormRel_L1_8u_C1MR, Qel8u, NormRel, L1)
                        NORM(qeliNormRel_L1_8u_C3CMR, Qel8u, NormRel, L1)} TEST_P(Norm, HugeSumsOf8s){
    NORM(qeliNorm_L1_8s_C1MR, Qel8s, Norm, L1) NORM(qeliNorm_L1_8s_C3CMR, Qel8s, Norm, L1)
        NORM(qeliNorm_L2_8s_C1MR, Qel8s, Norm, L2) NORM(qeliNorm_L2_8s_C3CMR, Qel8s, Norm, L2)
            NORM(qeliNormDiff_L1_8s_C1MR, Qel8s, NormDiff, L1) NORM(qeliNormDiff_L1_8s_C3CMR, Qel8s, NormDiff, L1)
                NORM(qeliNormDiff_L2_8s_C1MR, Qel8s, NormDiff, L2) NORM(qeliNormDiff_L2_8s_C3CMR, Qel8s, NormDiff, L2)
                    NORM(qeliNormRel_L1_8s_C1MR, Qel8s, NormRel, L1) NORM(qeliNormRel_L1_8s_C3CMR, Qel8s, NormRel, L1)
                        NORM(qeliNormRel_L2_8s_C1MR, Qel8s, NormRel, L2)
                            NORM(qeliNormRel_L2_8s_C3CMR, Qel8s, NormRel, L2)} TEST_P(Norm, HugeSumsOf16u) {
    NORM(qeliNorm_L1_16u_C1MR, Qel16u, Norm, L1)
    NORM(qeliNorm_L1_16u_C3CMR, Qel16u, Norm, L1)
    NORM(qeliNormDiff_L1_16u_C1MR, Qel16u, NormDiff, L1)
    NORM(qeliNormDiff_L1_16u_C3CMR, Qel16u, NormDiff, L1)
}
#undef NORM

// Rows of more samples than the 32-bit lanes of a sum can take, with a rest.
template <class T, class F>
void wideRowsAgreeWithModel(F function, Family family, Of norm) {
    kit::core().threads = 1 << 20;
    const int channels = channelsOf(function);
    const int width = 2 * 8192 * 64 + 37;
    const int rowSamples = width * channels;
    std::vector<T> samples(size_t(rowSamples) * 2);
    uint32_t state = 7;
    for (T& sample : samples) {
        state = state * 1664525 + 1013904223;
        sample = T(state >> 28 == 0 ? state >> 8 : ~0U);  // mostly the largest values
    }
    const Qel8u* const mask = reinterpret_cast<const Qel8u*>(samples.data());
    const int step = rowSamples * int(sizeof(T));
    const Input<T> in = {samples.data(), step, samples.data() + 100, step, mask, width, {width, 1}, channels, 1};
    ASSERT_EQ(model(family, norm, {0, 0}, in), run(function, in));
}

TEST_P(Norm, WideRows) {
    wideRowsAgreeWithModel<Qel8u>(qeliNorm_L1_8u_C1MR, Family::Norm, Of::L1);
    wideRowsAgreeWithModel<Qel8u>(qeliNorm_L2_8u_C1MR, Family::Norm, Of::L2);
    wideRowsAgreeWithModel<Qel8s>(qeliNormRel_L2_8s_C3CMR, Family::NormRel, Of::L2);
    wideRowsAgreeWithModel<Qel16u>(qeliNorm_L1_16u_C1MR, Family::Norm, Of::L1);
    wideRowsAgreeWithModel<Qel16u>(qeliNormDiff_Inf_16u_C3CMR, Family::NormDiff, Of::Inf);
}

// All regions of these tests lie in memory that is allocated and filled once.
class NormOverThreads : public testing::Test {
protected:
    static constexpr size_t kBytes = size_t{1} << 26;

    static void SetUpTestSuite() {
        noise_.resize(kBytes / 4);
        uint32_t state = 1;
        // Small whole numbers of either sign as floats, and any number as integers.
        for (uint32_t& word : noise_) {
            state = state * 1664525 + 1013904223;
            word = 0x3F000000 | state >> 9 | (state & 0x80000000);
        }
    }
    static void TearDownTestSuite() { std::vector<uint32_t>().swap(noise_); }
    void TearDown() override { kit::core().reset(); }

    // A region of noise. Its mask, and its second image, lie elsewhere in the same memory.
    template <class T>
    static Input<T> noise(QelSize size, int channels) {
        const int step = size.width * channels * int(sizeof(T));
        const char* const bytes = reinterpret_cast<const char*>(noise_.data());
        const Qel8u* const mask = reinterpret_cast<const Qel8u*>(bytes + 3);  // some bytes are zero
        return {reinterpret_cast<const T*>(bytes),
                step,
                reinterpret_cast<const T*>(bytes + 4096),
                step,
                mask,
                size.width,
                size,
                channels,
                channels};
    }

    static std::vector<uint32_t> noise_;
};
std::vector<uint32_t> NormOverThreads::noise_;

// The smallest regions that go to threads; with one core, not all do.
template <class T, class F, class Noise>
void sharesAgreeWithModel(F function, Family family, Of norm, Limits limits, const Noise& noise) {
    const int channels = channelsOf(function);
    for (const int log2 : {limits.log2WithCores, limits.log2}) {
        if (log2 == 0) continue;
        for (const int threads : {1, 2, 3, 33}) {
            if (threads == 33 && log2 > 15) continue;  // the path itself is tested below
            for (const int cores : {1, 4}) {
                kit::core().threads = threads;
                kit::core().cores = cores;
                const QelSize size = {threads << 9, 1 << (log2 - 9)};
                const Input<T> in = noise(size, channels);
                ASSERT_EQ(model(family, norm, limits, in), run(function, in)) << threads << " threads, " << cores;
            }
        }
    }
}

#define NORM(name, T, family, norm, ...)                                                        \
    TEST_F(NormOverThreads, name) {                                                             \
        sharesAgreeWithModel<T>(name, Family::family, Of::norm, Limits{__VA_ARGS__}, noise<T>); \
    }
ALL_NORMS
#undef NORM

// A team of 33 has a table of partial results allocated, which tells the parallel path from the plain one.
template <class T, class F>
void takesThreadsFromItsLimitOn(F function, Limits limits) {
    const int channels = channelsOf(function);
    const int64_t largest = int64_t{33} << (limits.log2 != 0 ? limits.log2 : 19);
    const size_t bytes = size_t(largest) * sizeof(T) * size_t(channels);
    void* const zeros = mmap(nullptr, bytes, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(MAP_FAILED, zeros);
    kit::core().threads = 33;

    const auto tablesFor = [&](int64_t area, int cores) {
        kit::core().cores = cores;
        const QelSize size = {int(area), 1};
        const int step = int(area) * channels * int(sizeof(T));
        const T* const samples = static_cast<const T*>(zeros);
        const Qel8u* const mask = static_cast<const Qel8u*>(zeros);
        const int before = kit::core().allocations;
        const Result r = run(function, Input<T>{samples, step, samples, step, mask, int(area), size, channels, 1});
        EXPECT_NE(kUnwritten, r.value);
        return kit::core().allocations - before;
    };
    const int64_t withCores = int64_t{33} << limits.log2WithCores;
    const int64_t always = int64_t{33} << limits.log2;
    if (limits.log2WithCores != 0) {
        EXPECT_EQ(0, tablesFor(withCores - 1, 2));
        EXPECT_EQ(1, tablesFor(withCores, 2));
        EXPECT_EQ(0, tablesFor(withCores, 1));
        if (limits.log2 == 0) {
            EXPECT_EQ(0, tablesFor(largest, 1));
        }
    }
    if (limits.log2 != 0) {
        EXPECT_EQ(0, tablesFor(always - 1, 1));
        EXPECT_EQ(1, tablesFor(always, 1));
        if (limits.log2WithCores == 0) {
            EXPECT_EQ(0, tablesFor(always - 1, 2));
        }
    }
    if (limits.log2 == 0 && limits.log2WithCores == 0) {
        EXPECT_EQ(0, tablesFor(largest, 2));
    }

    // No table to be had: nothing is written.
    const int log2 = limits.log2WithCores != 0 ? limits.log2WithCores : limits.log2;
    if (log2 != 0) {
        kit::core().cores = 2;
        kit::core().allocationsLeft = 0;
        const QelSize size = {33, 1 << log2};
        const int step = 33 * channels * int(sizeof(T));
        const T* const samples = static_cast<const T*>(zeros);
        const Qel8u* const mask = static_cast<const Qel8u*>(zeros);
        const Result want = {qelStatusNoMemory, kUnwritten};
        EXPECT_EQ(want, run(function, Input<T>{samples, step, samples, step, mask, 33, size, channels, 1}));
    }
    EXPECT_EQ(0, kit::core().allocated);
    munmap(zeros, bytes);
    kit::core().reset();
}

#define NORM(name, T, family, norm, ...) \
    TEST(NormPath, name) { takesThreadsFromItsLimitOn<T>(name, Limits{__VA_ARGS__}); }
ALL_NORMS
#undef NORM

// The order of the tests: each image step against its row, then against its samples, then the mask's, then the channel.
template <class T>
void checks(const char* name, C1MR<T> function) {
    kit::Checks(name, function).stepOrder({{1, false}, {1, true}, {3, false}}).run();
}
template <class T>
void checks(const char* name, C3CMR<T> function) {
    kit::Checks(name, function)
        .template channels<0>(3)
        .stepOrder({{1, false}, {1, true}, {3, false}})
        .template fault<5>("coi 0", qelStatusBadChannel, 0)
        .template fault<5>("coi 4", qelStatusBadChannel, 4)
        .template fault<5>("coi -1", qelStatusBadChannel, -1)
        .run();
}
template <class T>
void checks(const char* name, PairC1MR<T> function) {
    kit::Checks(name, function).stepOrder({{1, false}, {3, false}, {1, true}, {3, true}, {5, false}}).run();
}
template <class T>
void checks(const char* name, PairC3CMR<T> function) {
    kit::Checks(name, function)
        .template channels<0>(3)
        .template channels<2>(3)
        .stepOrder({{1, false}, {3, false}, {1, true}, {3, true}, {5, false}})
        .template fault<7>("coi 0", qelStatusBadChannel, 0)
        .template fault<7>("coi 4", qelStatusBadChannel, 4)
        .template fault<7>("coi -1", qelStatusBadChannel, -1)
        .run();
}

#define NORM(name, T, ...) \
    TEST(NormChecks, name) { checks<T>(#name, name); }
ALL_NORMS
#undef NORM

// One row of samples by hand.
template <class T, size_t N>
Input<T> row(const T (&a)[N], const T (&b)[N], const Qel8u (&mask)[N]) {
    return {a, int(sizeof a), b, int(sizeof b), mask, int(N), {int(N), 1}, 1, 1};
}

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr Qel32f kNaN = std::numeric_limits<Qel32f>::quiet_NaN();
constexpr Qel32f kInfinity32f = std::numeric_limits<Qel32f>::infinity();
constexpr qelStatus kWarning = qelStatusDivideByZero;
constexpr Result kZeroByZero = {kWarning, -std::numeric_limits<double>::quiet_NaN()};

TEST_P(Norm, EmptyMask) {
    const Qel8u a[] = {1, 2, 3}, b[] = {4, 6, 9}, mask[] = {0, 0, 0};
    const Result zero = {qelStatusOk, 0.0};
    EXPECT_EQ(zero, run(qeliNorm_L2_8u_C1MR, row(a, b, mask)));
    EXPECT_EQ(zero, run(qeliNormDiff_L1_8u_C1MR, row(a, b, mask)));
    EXPECT_EQ(kZeroByZero, run(qeliNormRel_Inf_8u_C1MR, row(a, b, mask)));
    const Qel32f f[] = {kNaN, kNaN, kNaN};
    EXPECT_EQ(zero, run(qeliNorm_L1_32f_C1MR, row(f, f, mask)));
    EXPECT_EQ(kZeroByZero, run(qeliNormRel_L2_32f_C1MR, row(f, f, mask)));
}

TEST_P(Norm, NothingToBeRelativeTo) {
    const Qel8u a[] = {0, 0, 7}, b[] = {0, 0, 5}, zeros[] = {0, 0, 0};
    EXPECT_EQ(kZeroByZero, run(qeliNormRel_L1_8u_C1MR, row(a, b, {1, 255, 0})));
    EXPECT_EQ((Result{kWarning, kInfinity}), run(qeliNormRel_L1_8u_C1MR, row(a, zeros, {1, 1, 1})));
    EXPECT_EQ((Result{kWarning, kInfinity}), run(qeliNormRel_L2_8u_C1MR, row(a, zeros, {1, 1, 1})));
    EXPECT_EQ((Result{kWarning, kInfinity}), run(qeliNormRel_Inf_8u_C1MR, row(a, zeros, {1, 1, 1})));

    const Qel32f f[] = {1, kNaN, 3}, minusZeros[] = {-0.0F, 0.0F, -0.0F};
    EXPECT_EQ((Result{kWarning, -kInfinity}), run(qeliNormRel_L1_32f_C1MR, row(f, minusZeros, {1, 1, 1})));
    EXPECT_EQ((Result{kWarning, -kInfinity}), run(qeliNormRel_L2_32f_C1MR, row(f, minusZeros, {1, 1, 1})));
    EXPECT_EQ((Result{kWarning, kInfinity}), run(qeliNormRel_Inf_32f_C1MR, row(f, minusZeros, {1, 1, 1})));
    EXPECT_EQ((Result{kWarning, kInfinity}), run(qeliNormRel_L2_32f_C1MR, row(f, minusZeros, {1, 0, 1})));
    EXPECT_EQ(kZeroByZero, run(qeliNormRel_L2_32f_C1MR, row(minusZeros, minusZeros, {1, 1, 1})));
}

TEST_P(Norm, SpecialFloats) {
    const Qel32f f[] = {-kInfinity32f, 2, kNaN}, ones[] = {1, 1, 1};
    EXPECT_EQ((Result{qelStatusOk, kInfinity}), run(qeliNorm_L1_32f_C1MR, row(f, ones, {1, 1, 0})));
    EXPECT_EQ((Result{qelStatusOk, kInfinity}), run(qeliNormDiff_L2_32f_C1MR, row(f, ones, {1, 1, 0})));
    EXPECT_EQ((Result{qelStatusOk, 1.0}), run(qeliNormRel_Inf_32f_C1MR, row(f, ones, {0, 1, 1})));
    // Infinity less infinity.
    EXPECT_TRUE(std::isnan(run(qeliNormDiff_L1_32f_C1MR, row(f, f, {1, 0, 0})).value));
}

TEST_P(Norm, MostNegativeByte) {
    const Qel8s a[] = {-128, 127, 0}, b[] = {127, -128, 1};
    EXPECT_EQ((Result{qelStatusOk, 128.0}), run(qeliNorm_Inf_8s_C1MR, row(a, b, {1, 1, 1})));
    EXPECT_EQ((Result{qelStatusOk, 255.0}), run(qeliNormDiff_Inf_8s_C1MR, row(a, b, {1, 1, 1})));
    EXPECT_EQ((Result{qelStatusOk, 511.0}), run(qeliNormDiff_L1_8s_C1MR, row(a, b, {1, 1, 1})));
    EXPECT_EQ((Result{qelStatusOk, 511.0 / 256.0}), run(qeliNormRel_L1_8s_C1MR, row(a, b, {1, 1, 1})));
}

// 2^24 + 1 is not a single-precision number: not as a row's sum, and not as the sum of rows.
TEST_P(Norm, SumsOf32fAreRounded) {
    const Qel32f a[] = {16777216, 0, 0, 0, 1, 0, 0, 0}, zeros[8] = {};
    EXPECT_EQ((Result{qelStatusOk, 16777216.0}), run(qeliNorm_L1_32f_C1MR, row(a, zeros, {1, 1, 1, 1, 1, 1, 1, 1})));
    const Qel8u mask[2] = {1, 1};
    const Qel32f column[2] = {16777216, 1};
    const Input<Qel32f> rows = {column, 4, zeros, 4, mask, 1, {1, 2}, 1, 1};
    EXPECT_EQ((Result{qelStatusOk, 16777216.0}), run(qeliNorm_L1_32f_C1MR, rows));
    EXPECT_EQ((Result{qelStatusOk, 16777216.0}), run(qeliNormDiff_L1_32f_C1MR, rows));
    const Qel32f column2[2] = {16777216, 3};
    const Input<Qel32f> rows2 = {column2, 4, zeros, 4, mask, 1, {1, 2}, 1, 1};
    EXPECT_EQ((Result{qelStatusOk, 16777220.0}), run(qeliNorm_L1_32f_C1MR, rows2));
}

// Both images may be the same memory.
TEST_P(Norm, ImageLessItself) {
    const Qel16u a[] = {3, 4, 65535};
    EXPECT_EQ((Result{qelStatusOk, 0.0}), run(qeliNormDiff_L1_16u_C1MR, row(a, a, {1, 1, 1})));
    EXPECT_EQ((Result{qelStatusOk, 0.0}), run(qeliNormRel_L2_16u_C1MR, row(a, a, {1, 1, 1})));
}

// A width whose row would need more bytes than a step can say is short, whatever the product wraps to.
TEST(NormChecks, WidthsThatOverflow) {
    const Qel8u bytes[16] = {};
    const Qel32f floats[4] = {};
    Qel64f value = kUnwritten;
    EXPECT_EQ(qelStatusBadStep, qeliNorm_L1_8u_C3CMR(bytes, 4, bytes, 0x7FFFFFFF, {0x55555556, 1}, 1, &value));
    EXPECT_EQ(qelStatusBadStep, qeliNorm_L1_32f_C1MR(floats, 4, bytes, 0x7FFFFFFF, {0x40000001, 1}, &value));
    EXPECT_EQ(kUnwritten, value);
}

}  // namespace
