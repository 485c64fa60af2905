#include "frame/vector_primitives.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

#include "frame/faults.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"

namespace qel {
namespace {

class VectorPrimitives : public kit::EveryTarget {};
ON_EVERY_TARGET(VectorPrimitives);

constexpr Qel32f kNaN = std::numeric_limits<Qel32f>::quiet_NaN();
constexpr Qel32f kInfinity = std::numeric_limits<Qel32f>::infinity();

// Every length up to twice the widest vector, those around the runs that are left to the C library, and longer ones.
template <class Run>
void forAllLengths(const Run& run) {
    const int longer[] = {255, 256, 257, 300, 511, 512, 513, 1023, 1024, 1025, 1535, 1536, 1537, 5000};
    for (int i = 0; i < kit::Trial::kEveryWidth + int(std::size(longer)); ++i) {
        const int len = i < kit::Trial::kEveryWidth ? i + 1 : longer[i - kit::Trial::kEveryWidth];
        for (uint32_t content = 0; content < 3; ++content) {
            kit::Trial trial(uint32_t(i) + 1000 * content, {len, 1});
            ASSERT_NO_FATAL_FAILURE(run(trial, len));
        }
    }
}

// `function` writes got; `model` gives each of its samples from the index.
template <class T, class Function, class Model>
void writesModel(kit::Trial& trial, const Function& function, const Model& model) {
    kit::Image<T> got(trial);
    kit::Image<T> want(got);
    for (int x = 0; x < trial.size.width; ++x) want.at(x, 0) = model(x);
    ASSERT_EQ(qelStatusOk, function(got.data())) << trial;
    ASSERT_TRUE(sameBits(want, got)) << trial;
}

template <class T>
void copies(qelStatus (*function)(const T*, T*, int)) {
    forAllLengths([=](kit::Trial& trial, int len) {
        const kit::Image<T> source(trial);
        const auto model = [&](int x) { return source.at(x, 0); };
        writesModel<T>(
            trial, [&](T* p) { return function(source.data(), p, len); }, model);
        writesModel<T>(
            trial,
            [&](T* p) {
                ownsCopy_8u(reinterpret_cast<const Qel8u*>(source.data()), reinterpret_cast<Qel8u*>(p),
                            sizeof(T) * size_t(len));
                return qelStatusOk;
            },
            model);
    });
}
TEST_P(VectorPrimitives, qelsCopy_8u) { copies<Qel8u>(qelsCopy_8u); }
TEST_P(VectorPrimitives, qelsCopy_16s) { copies<Qel16s>(qelsCopy_16s); }
TEST_P(VectorPrimitives, qelsCopy_32f) { copies<Qel32f>(qelsCopy_32f); }

TEST_P(VectorPrimitives, qelsSet_8u) {
    forAllLengths([](kit::Trial& trial, int len) {
        const Qel8u value = trial.anySample<Qel8u>();
        const auto model = [=](int) { return value; };
        writesModel<Qel8u>(
            trial, [=](Qel8u* p) { return qelsSet_8u(value, p, len); }, model);
        writesModel<Qel8u>(
            trial, [=](Qel8u* p) { return ownsSet_8u(value, p, size_t(len)), qelStatusOk; }, model);
    });
}
TEST_P(VectorPrimitives, qelsSet_32s) {
    forAllLengths([](kit::Trial& trial, int len) {
        const Qel32s value = trial.anySample<Qel32s>();
        const auto model = [=](int) { return value; };
        writesModel<Qel32s>(
            trial, [=](Qel32s* p) { return qelsSet_32s(value, p, len); }, model);
        writesModel<Qel32s>(
            trial, [=](Qel32s* p) { return ownsSet_32s(value, p, size_t(len)), qelStatusOk; }, model);
    });
}
TEST_P(VectorPrimitives, qelsSet_32f) {
    ownsSet_32s(0, watched<Qel32s>(0), 1);
    forAllLengths([](kit::Trial& trial, int len) {
        for (const Qel32f value : {trial.sample<Qel32f>(), -0.0F, -kInfinity, kNaN})
            writesModel<Qel32f>(
                trial, [=](Qel32f* p) { return qelsSet_32f(value, p, len); }, [=](int) { return value; });
    });
}

template <class T>
void zeroes(qelStatus (*function)(T*, int)) {
    forAllLengths([=](kit::Trial& trial, int len) {
        const auto model = [](int) { return T(0); };
        writesModel<T>(
            trial, [=](T* p) { return function(p, len); }, model);
        writesModel<T>(
            trial, [=](T* p) { return ownsZero_8u(reinterpret_cast<Qel8u*>(p), sizeof(T) * size_t(len)), qelStatusOk; },
            model);
    });
}
TEST_P(VectorPrimitives, qelsZero_8u) { zeroes<Qel8u>(qelsZero_8u); }
TEST_P(VectorPrimitives, qelsZero_16s) { zeroes<Qel16s>(qelsZero_16s); }
TEST_P(VectorPrimitives, qelsZero_32s) { zeroes<Qel32s>(qelsZero_32s); }
TEST_P(VectorPrimitives, qelsZero_32f) { zeroes<Qel32f>(qelsZero_32f); }

TEST_P(VectorPrimitives, qelsConvert_16u32f) {
    forAllLengths([](kit::Trial& trial, int len) {
        const kit::Image<Qel16u> source(trial);
        writesModel<Qel32f>(
            trial, [&](Qel32f* p) { return qelsConvert_16u32f(source.data(), p, len); },
            [&](int x) { return Qel32f(source.at(x, 0)); });
    });
    std::vector<Qel16u> all(0x10000);
    for (int x = 0; x < 0x10000; ++x) all[size_t(x)] = Qel16u(x);
    std::vector<Qel32f> got(all.size());
    ASSERT_EQ(qelStatusOk, qelsConvert_16u32f(all.data(), got.data(), int(all.size())));
    for (int x = 0; x < 0x10000; ++x) ASSERT_EQ(double(x), double(got[size_t(x)]));
}

template <class T>
T smaller(T a, T b) {
    return a < b ? a : b;
}
template <class T>
T larger(T a, T b) {
    return a > b ? a : b;
}

// Into a third vector, over the first operand and over the second.
template <class T>
void everyAgrees(qelStatus (*function)(const T*, const T*, T*, int), T (*model)(T, T)) {
    forAllLengths([=](kit::Trial& trial, int len) {
        kit::Image<T> a(trial), b(trial), first(a), second(b);
        const auto want = [&](int x) { return model(a.at(x, 0), b.at(x, 0)); };
        writesModel<T>(
            trial, [&](T* p) { return function(a.data(), b.data(), p, len); }, want);
        kit::Image<T> wanted(a);
        for (int x = 0; x < len; ++x) wanted.at(x, 0) = want(x);
        function(first.data(), b.data(), first.data(), len);
        ASSERT_TRUE(sameBits(wanted, first)) << trial << ", over the first operand";
        function(a.data(), second.data(), second.data(), len);
        ASSERT_TRUE(sameBits(wanted, second)) << trial << ", over the second operand";
    });
    T sample = 1;
    for (const int len : {0, -1, INT_MIN}) EXPECT_EQ(qelStatusOk, function(&sample, &sample, &sample, len));
    EXPECT_EQ(qelStatusOk, function(nullptr, nullptr, nullptr, 0));
}
TEST_P(VectorPrimitives, qelsMinEvery_8u) { everyAgrees<Qel8u>(qelsMinEvery_8u, smaller); }
TEST_P(VectorPrimitives, qelsMaxEvery_8u) { everyAgrees<Qel8u>(qelsMaxEvery_8u, larger); }
TEST_P(VectorPrimitives, qelsMinEvery_32f) { everyAgrees<Qel32f>(qelsMinEvery_32f, smaller); }
TEST_P(VectorPrimitives, qelsMaxEvery_32f) { everyAgrees<Qel32f>(qelsMaxEvery_32f, larger); }

template <class T>
void everyInPlaceAgrees(qelStatus (*function)(const T*, T*, int), T (*model)(T, T)) {
    forAllLengths([=](kit::Trial& trial, int len) {
        kit::Image<T> a(trial), got(trial), want(got);
        for (int x = 0; x < len; ++x) want.at(x, 0) = model(a.at(x, 0), got.at(x, 0));
        ASSERT_EQ(qelStatusOk, function(a.data(), got.data(), len)) << trial;
        ASSERT_TRUE(sameBits(want, got)) << trial;
    });
}
TEST_P(VectorPrimitives, qelsMinEvery_8u_I) { everyInPlaceAgrees<Qel8u>(qelsMinEvery_8u_I, smaller); }
TEST_P(VectorPrimitives, qelsMaxEvery_8u_I) { everyInPlaceAgrees<Qel8u>(qelsMaxEvery_8u_I, larger); }
TEST_P(VectorPrimitives, qelsMinEvery_32f_I) { everyInPlaceAgrees<Qel32f>(qelsMinEvery_32f_I, smaller); }
TEST_P(VectorPrimitives, qelsMaxEvery_32f_I) { everyInPlaceAgrees<Qel32f>(qelsMaxEvery_32f_I, larger); }

// All pairs of numbers that compare in no simple way, on every lane.
TEST_P(VectorPrimitives, EveryTakesTheSecondOfFloatsThatDoNotCompare) {
    const Qel32f values[] = {0.0F, -0.0F, 1.0F, -1.0F, kInfinity, -kInfinity, kNaN, -kNaN, 1e-45F, -1e-45F};
    for (const Qel32f a : values) {
        for (const Qel32f b : values) {
            const std::vector<Qel32f> as(35, a), bs(35, b);
            std::vector<Qel32f> min(35), max(35);
            qelsMinEvery_32f(as.data(), bs.data(), min.data(), 35);
            qelsMaxEvery_32f(as.data(), bs.data(), max.data(), 35);
            for (size_t x = 0; x < 35; ++x) {
                ASSERT_TRUE(kit::sameBits(a < b ? a : b, min[x])) << a << " and " << b;
                ASSERT_TRUE(kit::sameBits(a > b ? a : b, max[x])) << a << " and " << b;
            }
        }
    }
}

TEST_P(VectorPrimitives, EveryPairOfBytes) {
    std::vector<Qel8u> a(0x10000), b(0x10000), min(0x10000), max(0x10000);
    for (size_t i = 0; i < 0x10000; ++i) a[i] = Qel8u(i), b[i] = Qel8u(i >> 8);
    qelsMinEvery_8u(a.data(), b.data(), min.data(), 0x10000);
    qelsMaxEvery_8u(a.data(), b.data(), max.data(), 0x10000);
    for (size_t i = 0; i < 0x10000; ++i) {
        ASSERT_EQ(int(i & 255) < int(i >> 8) ? i & 255 : i >> 8, min[i]);
        ASSERT_EQ(int(i & 255) > int(i >> 8) ? i & 255 : i >> 8, max[i]);
    }
}

// Which NaN a product of NaNs is, is left open.
bool sameNumber(Qel32f want, Qel32f got) { return std::isnan(want) ? std::isnan(got) : kit::sameBits(want, got); }

TEST_P(VectorPrimitives, qelsMulC_32f_I) {
    forAllLengths([](kit::Trial& trial, int len) {
        for (const Qel32f value :
             {0.03125F, -3.7F, 1e30F, 1e-30F, kInfinity, kNaN, -1.0F, std::nextafter(1.0F, 2.0F)}) {
            kit::Image<Qel32f> got(trial);
            const kit::Image<Qel32f> before(got);
            ASSERT_EQ(qelStatusOk, qelsMulC_32f_I(value, got.data(), len));
            for (int x = 0; x < len; ++x)
                ASSERT_TRUE(sameNumber(before.at(x, 0) * value, got.at(x, 0)))
                    << trial << ", " << before.at(x, 0) << " * " << value << " = " << got.at(x, 0);
            ASSERT_TRUE(got.gapsIntact()) << trial;
        }
        kit::Image<Qel32f> got(trial);
        const kit::Image<Qel32f> before(got), zero(trial.size, 0.0F);
        ASSERT_EQ(qelStatusOk, qelsMulC_32f_I(1.0F, got.data(), len));
        ASSERT_TRUE(sameBits(before, got)) << trial << ", value 1";
        ASSERT_EQ(qelStatusOk, qelsMulC_32f_I(trial.coin() ? 0.0F : -0.0F, got.data(), len));
        ASSERT_TRUE(sameBits(zero, got)) << trial << ", value 0";
    });
}

// A signalling NaN would be made quiet by a product with 1, and -0 keeps its sign.
TEST(VectorPrimitivesValues, ProductWithOneIsNoProduct) {
    Qel32s bits[2] = {0x7F800001, INT_MIN};
    EXPECT_EQ(qelStatusOk, qelsMulC_32f_I(1.0F, reinterpret_cast<Qel32f*>(bits), 2));
    EXPECT_EQ(0x7F800001, bits[0]);
    EXPECT_EQ(INT_MIN, bits[1]);
}

int saturated16s(int64_t v) { return int(std::clamp<int64_t>(v, -32768, 32767)); }

// value / 2^scale to the nearest integer, ties to the even one.
int64_t divided(int64_t value, int scale) {
    if (scale > 40) return 0;
    const int64_t unit = int64_t{1} << scale;
    const int64_t floor = (value - (value % unit + unit) % unit) / unit;
    const int64_t rest2 = 2 * (value - floor * unit);
    return rest2 > unit || (rest2 == unit && floor % 2 != 0) ? floor + 1 : floor;
}

Qel16s mulCModel(int sample, int value, int scaleFactor) {
    const int64_t product = int64_t{sample} * value;
    if (scaleFactor >= 0) return Qel16s(saturated16s(divided(product, scaleFactor)));
    return Qel16s(saturated16s(product * (int64_t{1} << std::min(-int64_t{scaleFactor}, int64_t{32}))));
}

std::vector<int> allScaleFactors() {
    std::vector<int> scales = {INT_MIN, INT_MIN + 1, -1000, 1000, INT_MAX};
    for (int scale = -40; scale <= 40; ++scale) scales.push_back(scale);
    return scales;
}

void mulCAgrees(const std::vector<Qel16s>& samples, int value, int scale) {
    std::vector<Qel16s> got = samples;
    ASSERT_EQ(qelStatusOk, qelsMulC_16s_ISfs(Qel16s(value), got.data(), int(got.size()), scale));
    for (size_t i = 0; i < got.size(); ++i)
        ASSERT_EQ(mulCModel(samples[i], value, scale), got[i]) << samples[i] << " * " << value << " / 2^" << scale;
}

TEST_P(VectorPrimitives, qelsMulC_16s_ISfs) {
    forAllLengths([](kit::Trial& trial, int len) {
        kit::Image<Qel16s> got(trial), want(got);
        const Qel16s value = trial.anySample<Qel16s>();
        const int scale = trial.between(-17, 33);
        for (int x = 0; x < len; ++x) want.at(x, 0) = mulCModel(got.at(x, 0), value, scale);
        ASSERT_EQ(qelStatusOk, qelsMulC_16s_ISfs(value, got.data(), len, scale)) << trial;
        ASSERT_TRUE(sameBits(want, got)) << trial << ", value " << value << ", scale " << scale;
    });
}

TEST_P(VectorPrimitives, MulC16sAtEveryScale) {
    std::vector<Qel16s> samples;
    for (int power = 1; power <= 32768; power *= 2)
        for (int near = -2; near <= 2; ++near)
            for (int sign : {-1, 1}) samples.push_back(Qel16s(saturated16s(sign * (power + near))));
    std::mt19937 random(1);
    for (int i = 0; i < 500; ++i) samples.push_back(Qel16s(random()));
    for (const int value : {0, 1, -1, 2, 3, -3, 4, 5, 127, 255, 256, -256, 1000, 16384, 32767, -32767, -32768})
        for (const int scale : allScaleFactors()) ASSERT_NO_FATAL_FAILURE(mulCAgrees(samples, value, scale));
}

TEST_P(VectorPrimitives, MulC16sOnEverySample) {
    std::vector<Qel16s> samples(0x10000);
    for (int i = 0; i < 0x10000; ++i) samples[size_t(i)] = Qel16s(i);
    for (const int value : {1, -1, 4, -32768})
        for (const int scale : {-15, -1, 0, 1, 2, 8, 15, 16, 30})
            ASSERT_NO_FATAL_FAILURE(mulCAgrees(samples, value, scale));
}

TEST_P(VectorPrimitives, qelsSqrt_32f_I) {
    forAllLengths([](kit::Trial& trial, int len) {
        kit::Image<Qel32f> got(trial);
        const kit::Image<Qel32f> before(got);
        bool negative = false;
        for (int x = 0; x < len; ++x) negative |= before.at(x, 0) < 0;
        ASSERT_EQ(negative ? qelStatusSqrtNegative : qelStatusOk, qelsSqrt_32f_I(got.data(), len)) << trial;
        for (int x = 0; x < len; ++x)
            ASSERT_TRUE(sameNumber(before.at(x, 0) < 0 ? kNaN : std::sqrt(before.at(x, 0)), got.at(x, 0)))
                << trial << ", root of " << before.at(x, 0) << " = " << got.at(x, 0);
        ASSERT_TRUE(got.gapsIntact()) << trial;
    });
}

// One negative element in any place is told; a NaN, a negative zero and infinity are none.
TEST_P(VectorPrimitives, NegativesUnderARootAreTold) {
    for (int len = 1; len <= 40; ++len) {
        for (int x = 0; x < len; ++x) {
            std::vector<Qel32f> v(size_t(len), 2.0F);
            v[size_t(x)] = -1e-45F;
            ASSERT_EQ(qelStatusSqrtNegative, qelsSqrt_32f_I(v.data(), len));
            ASSERT_TRUE(std::isnan(v[size_t(x)]));
            std::vector<Qel32s> w(size_t(len), 4);
            std::vector<Qel16s> roots(size_t(len), -7);
            w[size_t(x)] = -1;
            for (const int scale : {INT_MIN, -20, -3, 0, 1, 20, INT_MAX}) {
                ASSERT_EQ(qelStatusSqrtNegative, qelsSqrt_32s16s_Sfs(w.data(), roots.data(), len, scale));
                ASSERT_EQ(0, roots[size_t(x)]);
            }
        }
        for (const Qel32f fine : {kNaN, -kNaN, -0.0F, kInfinity}) {
            std::vector<Qel32f> v(size_t(len), fine);
            ASSERT_EQ(qelStatusOk, qelsSqrt_32f_I(v.data(), len)) << fine;
            ASSERT_TRUE(sameNumber(fine, v[0]));
        }
    }
}

// The sign of sqrt(x) / 2^s - (t + 1/2), from the squares of both times a power of 4 that makes them integers.
int compareWithHalf(int64_t x, int s, int64_t t) {
    const int64_t odd = 2 * t + 1;
    const int64_t left = s <= 1 ? x << (2 - 2 * s) : x;
    const int64_t right = s <= 1 ? odd * odd : (odd * odd) << (2 * s - 2);
    return left < right ? -1 : left > right ? 1 : 0;
}

// The smallest t that is not to be raised, by halving: nearest, ties to even, at most 32767.
Qel16s scaledRoot(Qel32s x, int s) {
    if (x <= 0 || s > 16) return 0;
    if (s < -14) return 32767;
    int low = 0;
    int high = 32767;
    while (low < high) {
        const int t = (low + high) / 2;
        const int compared = compareWithHalf(x, s, t);
        if (compared > 0 || (compared == 0 && t % 2 != 0)) {
            low = t + 1;
        } else {
            high = t;
        }
    }
    return Qel16s(low);
}

struct Roots {
    int scale;
    std::vector<Qel32s> x;
    std::vector<Qel16s> want;
};

// For each scale the numbers around which the result steps from t to t + 1, and random ones. The results are made once.
const std::vector<Roots>& rootsAtEveryScale() {
    static const std::vector<Roots> roots = [] {
        std::vector<Roots> all;
        std::mt19937 random(2);
        for (const int scale : allScaleFactors()) {
            const bool between = scale >= -14 && scale <= 16;
            Roots r = {scale, {0, 1, 2, 3, 4, -1, INT_MIN, INT_MAX, INT_MAX - 1, 1 << 30, (1 << 30) - 1}, {}};
            for (int t = 0; between && t < 32768; t += scale == 0 ? 1 : 7) {
                const double step = std::ldexp((t + 0.5) * (t + 0.5), 2 * scale);
                for (int near = -2; near <= 2; ++near)
                    if (step + near < INT_MAX) r.x.push_back(Qel32s(step + near));
            }
            for (int i = between ? 20000 : 100; i > 0; --i) r.x.push_back(Qel32s(random() >> (random() % 32)));
            for (const Qel32s x : r.x) r.want.push_back(scaledRoot(x, scale));
            all.push_back(std::move(r));
        }
        return all;
    }();
    return roots;
}

TEST_P(VectorPrimitives, qelsSqrt_32s16s_Sfs) {
    for (const Roots& roots : rootsAtEveryScale()) {
        std::vector<Qel16s> got(roots.x.size(), -7);
        ASSERT_EQ(qelStatusSqrtNegative, qelsSqrt_32s16s_Sfs(roots.x.data(), got.data(), int(got.size()), roots.scale));
        for (size_t i = 0; i < got.size(); ++i)
            ASSERT_EQ(roots.want[i], got[i]) << "root of " << roots.x[i] << " at scale " << roots.scale;
    }
    forAllLengths([](kit::Trial& trial, int len) {
        const kit::Image<Qel32s> source(trial);
        const int scale = trial.between(-16, 18);
        bool negative = false;
        for (int x = 0; x < len; ++x) negative |= source.at(x, 0) < 0;
        const auto function = [&](Qel16s* p) {
            const qelStatus status = qelsSqrt_32s16s_Sfs(source.data(), p, len, scale);
            return status == (negative ? qelStatusSqrtNegative : qelStatusOk) ? qelStatusOk : qelStatusBadArg;
        };
        writesModel<Qel16s>(trial, function, [&](int x) { return scaledRoot(source.at(x, 0), scale); });
    });
}

// A million numbers in a row, from several places.
TEST_P(VectorPrimitives, RootsOfConsecutiveNumbers) {
    const int kCount = 250000;
    for (const Qel32s first : {0, (1 << 24) - 1000, (1 << 30) - kCount / 2, INT_MAX - kCount}) {
        std::vector<Qel32s> x(kCount);
        for (int i = 0; i < kCount; ++i) x[size_t(i)] = first + i;
        std::vector<Qel16s> got(kCount);
        ASSERT_EQ(qelStatusOk, qelsSqrt_32s16s_Sfs(x.data(), got.data(), kCount, 0));
        Qel16s t = scaledRoot(first, 0);
        for (size_t i = 0; i < size_t(kCount); ++i) {
            if (t < 32767 && compareWithHalf(x[i], 0, t) > 0) ++t;
            ASSERT_EQ(t, got[i]) << "root of " << x[i];
        }
    }
}

// Vectors at addresses that are a multiple of nothing give what aligned ones give.
template <class T>
class Unaligned {
public:
    explicit Unaligned(const std::vector<T>& v)
        : memory_(v.size() * sizeof(T), {kit::Placement::kStartsBehindGuard, 1}), count_(v.size()) {
        std::memcpy(memory_.data(), v.data(), v.size() * sizeof(T));
    }
    T* data() { return reinterpret_cast<T*>(memory_.data()); }
    bool operator==(const std::vector<T>& v) const {
        return memory_.surroundingsIntact() && std::memcmp(memory_.data(), v.data(), count_ * sizeof(T)) == 0;
    }

private:
    kit::GuardedMemory memory_;
    size_t count_;
};

TEST_P(VectorPrimitives, NeedNoAlignment) {
    constexpr int kLen = 300;
    std::vector<Qel32f> floats(kLen), floats2(kLen);
    std::vector<Qel16u> words(kLen);
    std::vector<Qel16s> shorts(kLen);
    std::vector<Qel32s> ints(kLen);
    std::mt19937 random(3);
    for (size_t i = 0; i < kLen; ++i) {
        floats[i] = Qel32f(random() % 1000), floats2[i] = Qel32f(random() % 1000);
        words[i] = Qel16u(random()), shorts[i] = Qel16s(random()), ints[i] = Qel32s(random() >> 1);
    }
    Unaligned oddFloats(floats), oddFloats2(floats2);
    Unaligned oddWords(words);
    Unaligned oddShorts(shorts);
    Unaligned oddInts(ints);

    qelsMinEvery_32f_I(floats.data(), floats2.data(), kLen);
    qelsMinEvery_32f_I(oddFloats.data(), oddFloats2.data(), kLen);
    EXPECT_TRUE(oddFloats2 == floats2);
    qelsMulC_32f_I(0.3F, floats.data(), kLen);
    qelsMulC_32f_I(0.3F, oddFloats.data(), kLen);
    EXPECT_TRUE(oddFloats == floats);
    qelsSqrt_32f_I(floats.data(), kLen);
    qelsSqrt_32f_I(oddFloats.data(), kLen);
    EXPECT_TRUE(oddFloats == floats);
    qelsConvert_16u32f(words.data(), floats.data(), kLen);
    qelsConvert_16u32f(oddWords.data(), oddFloats.data(), kLen);
    EXPECT_TRUE(oddFloats == floats);
    for (const int scale : {-3, 5}) {
        qelsMulC_16s_ISfs(77, shorts.data(), kLen, scale);
        qelsMulC_16s_ISfs(77, oddShorts.data(), kLen, scale);
        EXPECT_TRUE(oddShorts == shorts);
    }
    qelsSqrt_32s16s_Sfs(ints.data(), shorts.data(), kLen, 0);
    qelsSqrt_32s16s_Sfs(oddInts.data(), oddShorts.data(), kLen, 0);
    EXPECT_TRUE(oddShorts == shorts);
    qelsSet_32s(0x01020304, ints.data(), kLen);
    qelsSet_32s(0x01020304, oddInts.data(), kLen);
    EXPECT_TRUE(oddInts == ints);
    qelsCopy_32f(oddFloats.data(), floats2.data(), kLen);
    EXPECT_TRUE(oddFloats == floats2);
}

TEST(VectorPrimitiveChecks, EveryMember) {
    Qel8u* const a8 = watched<Qel8u>(0);
    Qel8u* const b8 = watched<Qel8u>(1);
    Qel16s* const a16 = watched<Qel16s>(0);
    Qel16s* const b16 = watched<Qel16s>(1);
    Qel32s* const a32 = watched<Qel32s>(0);
    Qel32f* const a = watched<Qel32f>(0);
    Qel32f* const b = watched<Qel32f>(1);
    QEL_FAULTS(qelsCopy_8u, a8, b8, 7).null<0>().null<1>().length<2>().run();
    QEL_FAULTS(qelsCopy_16s, a16, b16, 7).null<0>().null<1>().length<2>().run();
    QEL_FAULTS(qelsCopy_32f, a, b, 7).null<0>().null<1>().length<2>().run();
    QEL_FAULTS(qelsSet_8u, 1, a8, 7).null<1>().length<2>().run();
    QEL_FAULTS(qelsSet_32s, 1, a32, 7).null<1>().length<2>().run();
    QEL_FAULTS(qelsSet_32f, 1, a, 7).null<1>().length<2>().run();
    QEL_FAULTS(qelsZero_8u, a8, 7).null<0>().length<1>().run();
    QEL_FAULTS(qelsZero_16s, a16, 7).null<0>().length<1>().run();
    QEL_FAULTS(qelsZero_32s, a32, 7).null<0>().length<1>().run();
    QEL_FAULTS(qelsZero_32f, a, 7).null<0>().length<1>().run();
    QEL_FAULTS(qelsConvert_16u32f, watched<Qel16u>(0), b, 7).null<0>().null<1>().length<2>().run();
    QEL_FAULTS(qelsMinEvery_8u_I, a8, b8, 7).null<0>().null<1>().length<2>().run();
    QEL_FAULTS(qelsMaxEvery_8u_I, a8, b8, 7).null<0>().null<1>().length<2>().run();
    QEL_FAULTS(qelsMinEvery_32f_I, a, b, 7).null<0>().null<1>().length<2>().run();
    QEL_FAULTS(qelsMaxEvery_32f_I, a, b, 7).null<0>().null<1>().length<2>().run();
    for (const Qel32f value : {0.0F, 1.0F, 2.0F}) QEL_FAULTS(qelsMulC_32f_I, value, a, 7).null<1>().length<2>().run();
    for (const Qel16s value : {0, 1, 2})
        for (const int scale : {-20, 0, 31})
            QEL_FAULTS(qelsMulC_16s_ISfs, value, a16, 7, scale).null<1>().length<2>().run();
    QEL_FAULTS(qelsSqrt_32f_I, a, 7).null<0>().length<1>().run();
    for (const int scale : {-20, 0, 20})
        QEL_FAULTS(qelsSqrt_32s16s_Sfs, a32, b16, 7, scale).null<0>().null<1>().length<2>().run();
    QEL_FAULTS(qelsSortAscend_64f_I, watched<Qel64f>(0), 7).null<0>().length<1>().run();
}

template <class T>
void allocates(T* (*function)(int)) {
    kit::core().reset();
    const int before = kit::core().allocated;
    for (const int bad : {0, -1, INT_MIN}) EXPECT_EQ(nullptr, function(bad));
    if (sizeof(T) > 1) {
        EXPECT_EQ(nullptr, function(INT_MAX)) << "more bytes than the allocator counts";
        EXPECT_EQ(nullptr, function(INT_MAX / int(sizeof(T)) + 1));
    }
    T* const p = function(1001);
    ASSERT_NE(nullptr, p);
    EXPECT_EQ(0U, reinterpret_cast<uintptr_t>(p) % 16);
    std::fill_n(p, 1001, T(1));
    EXPECT_EQ(before + 1, kit::core().allocated);
    qelsFree(p);
    EXPECT_EQ(before, kit::core().allocated);
    qelsFree(nullptr);
    kit::core().allocationsLeft = 0;
    EXPECT_EQ(nullptr, function(1));
    kit::core().reset();
}
TEST(VectorPrimitiveMemory, qelsMalloc_8u) { allocates<Qel8u>(qelsMalloc_8u); }
TEST(VectorPrimitiveMemory, qelsMalloc_16u) { allocates<Qel16u>(qelsMalloc_16u); }
TEST(VectorPrimitiveMemory, qelsMalloc_32s) { allocates<Qel32s>(qelsMalloc_32s); }
TEST(VectorPrimitiveMemory, qelsMalloc_32f) { allocates<Qel32f>(qelsMalloc_32f); }
TEST(VectorPrimitiveMemory, qelsMalloc_64f) { allocates<Qel64f>(qelsMalloc_64f); }

}  // namespace
}  // namespace qel
