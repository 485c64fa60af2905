#include "feature/eigen_kernels.h"

#define HWY_TARGET_INCLUDE "feature/eigen_kernels.cpp"
#include "filter/taps-inl.h"
#include "frame/simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// The means of a window's matrices, from rows of sums along its rows: summed from the top down.
template <int kTaps>
class Means {
    static constexpr Qel32f kFactor = kTaps == 3 ? 0.11111111F : 0.04F;

    template <class D>
    struct Column {
        const Qel32f* const (&rows)[kTaps];
        size_t at;
        template <int j>
        HWY_INLINE hn::Vec<D> operator()(Tap<j>) const {
            return hn::LoadU(D(), rows[j] + at);
        }
    };

public:
    HWY_INLINE Means(const Qel32f* const* pSums, int width) : stride_(size_t(gradientStride(width))) {
#pragma GCC unroll 5
        for (int j = 0; j < kTaps; ++j) rows_[j] = pSums[j];
    }

    template <class D>
    HWY_INLINE hn::Vec<D> dxx(D d, size_t x) const {
        return mean(d, x);
    }
    template <class D>
    HWY_INLINE hn::Vec<D> dxy(D d, size_t x) const {
        return mean(d, x + stride_);
    }
    template <class D>
    HWY_INLINE hn::Vec<D> dyy(D d, size_t x) const {
        return mean(d, x + 2 * stride_);
    }

private:
    template <class D>
    HWY_INLINE hn::Vec<D> mean(D d, size_t at) const {
        return hn::Mul(InTapOrder<kTaps>::sum(Column<D>{rows_, at}), hn::Set(d, kFactor));
    }

    size_t stride_;
    const Qel32f* rows_[kTaps];
};

// sqrt((a - b)^2 + 4 c^2)
template <class V>
HWY_INLINE V distance(V a, V b, V c) {
    const V difference = hn::Sub(a, b);
    const V four = hn::Set(hn::DFromV<V>(), 4.0F);
    return hn::Sqrt(hn::Add(hn::Mul(difference, difference), hn::Mul(four, hn::Mul(c, c))));
}

template <int kTaps>
HWY_INLINE void smallerEigenvaluesOf(const Means<kTaps>& means, Qel32f* pDst, int width, Qel32f halfScale) {
    forVectors(hn::ScalableTag<Qel32f>(), size_t(width), [&](auto d, size_t x) QEL_INLINE_LAMBDA {
        const auto a = means.dxx(d, x);
        const auto b = means.dyy(d, x);
        const auto c = means.dxy(d, x);
        hn::StoreU(hn::Mul(hn::Sub(hn::Add(a, b), distance(a, b, c)), hn::Set(d, halfScale)), d, pDst + x);
    });
}

void smallerEigenvalues(const Qel32f* const* pSums, Qel32f* pDst, int width, const EigenForm& form, bool) {
    const Qel32f halfScale = form.scale() * 0.5F;
    form.avgWindow == 3 ? smallerEigenvaluesOf(Means<3>(pSums, width), pDst, width, halfScale)
                        : smallerEigenvaluesOf(Means<5>(pSums, width), pDst, width, halfScale);
}

// Numbers of a pixel: two eigenvalues, the vector of the larger, that of the smaller.
constexpr size_t kNumbers = 6;
constexpr size_t kBlock = 64;
using Planes = Qel32f[kNumbers][kBlock];

// sign * c and minus the other, divided by their length, if that is not tiny.
template <class D, class V = hn::Vec<D>>
HWY_INLINE void storeVector(D d, V c, V other, hn::Mask<D> isZero, hn::Mask<D> isUnit, V unitX, V unitY, Qel32f* pX,
                            Qel32f* pY) {
    const V length = hn::Sqrt(hn::Add(hn::Mul(other, other), hn::Mul(c, c)));
    const V n = hn::Div(hn::Set(d, 1.0F), hn::Max(hn::Set(d, 1.1920929e-7F), length));
    const V x = hn::IfThenElse(isUnit, unitX, hn::Mul(c, n));
    const V y = hn::IfThenElse(isUnit, unitY, hn::Mul(hn::Neg(other), n));
    hn::Store(hn::IfThenZeroElse(isZero, x), d, pX);
    hn::Store(hn::IfThenZeroElse(isZero, y), d, pY);
}

// Where the matrix is nearly singular, all six are 0; where it is nearly diagonal, the vectors are the axes.
template <class D>
HWY_INLINE void analyse(D d, hn::Vec<D> a, hn::Vec<D> b, hn::Vec<D> c, Qel32f sign, size_t i, Planes& out) {
    const auto half = hn::Set(d, 0.5F);
    const auto zero = hn::Zero(d);
    const auto one = hn::Set(d, 1.0F);
    const auto t = hn::Mul(hn::Set(d, 0.01F), hn::Max(a, b));
    const auto r = distance(a, b, c);
    const auto larger = hn::Mul(hn::Add(hn::Add(a, b), r), half);
    const auto smaller = hn::Mul(hn::Sub(hn::Add(a, b), r), half);
    const auto determinant = hn::Sub(hn::Mul(a, b), hn::Mul(c, c));
    const auto isZero = hn::Or(hn::Gt(t, hn::Min(a, b)), hn::Gt(t, determinant));
    const auto isUnit = hn::Gt(t, hn::Abs(c));
    const auto turned = hn::Mul(c, hn::Set(d, sign));
    hn::Store(hn::IfThenZeroElse(isZero, larger), d, out[0] + i);
    hn::Store(hn::IfThenZeroElse(isZero, smaller), d, out[1] + i);
    storeVector(d, turned, hn::Sub(a, larger), isZero, isUnit, one, zero, out[2] + i, out[3] + i);
    storeVector(d, turned, hn::Sub(a, smaller), isZero, isUnit, zero, one, out[4] + i, out[5] + i);
}

// Two pixels out of pairs of their numbers.
template <class D, class Store, class V = hn::Vec<D>>
HWY_INLINE void storeTwoPixels(D d, V values, V first, V second, Qel32f* pDst, const Store& store) {
    store(hn::ConcatLowerLower(d, first, values), d, pDst);
    store(hn::ConcatUpperLower(d, values, second), d, pDst + 4);
    store(hn::ConcatUpperUpper(d, second, first), d, pDst + 8);
}

template <class Store>
HWY_INLINE void interleave(const Planes& in, size_t count, Qel32f* pDst, const Store& store) {
    const hn::FixedTag<Qel32f, 4> d;
    size_t i = 0;
    for (; i + 4 <= count; i += 4) {
        const auto plane = [&](size_t n) HWY_ATTR { return hn::Load(d, in[n] + i); };
        const auto lower = [&](size_t n) HWY_ATTR { return hn::InterleaveLower(d, plane(n), plane(n + 1)); };
        const auto upper = [&](size_t n) HWY_ATTR { return hn::InterleaveUpper(d, plane(n), plane(n + 1)); };
        storeTwoPixels(d, lower(0), lower(2), lower(4), pDst + kNumbers * i, store);
        storeTwoPixels(d, upper(0), upper(2), upper(4), pDst + kNumbers * (i + 2), store);
    }
    for (; i < count; ++i) {
        for (size_t n = 0; n < kNumbers; ++n) {
            hwy::CopyBytes<sizeof(Qel32f)>(in[n] + i, pDst + kNumbers * i + n);
        }
    }
}

template <int kTaps>
HWY_INLINE void eigenvaluesAndVectorsOf(const Means<kTaps>& means, Qel32f* pDst, int width, const EigenForm& form,
                                        bool bypassesCache) {
    const Qel32f scale = form.scale();
    const Qel32f sign = form.sign();
    alignas(64) Planes planes;
    for (size_t x = 0; x < size_t(width); x += kBlock) {
        const size_t count = HWY_MIN(kBlock, size_t(width) - x);
        forVectors(hn::ScalableTag<Qel32f>(), count, [&](auto d, size_t i) HWY_ATTR {
            const auto s = hn::Set(d, scale);
            analyse(d, hn::Mul(means.dxx(d, x + i), s), hn::Mul(means.dyy(d, x + i), s),
                    hn::Mul(means.dxy(d, x + i), s), sign, i, planes);
        });
        // A block is a multiple of 16 bytes, so all of its vectors are aligned if those of the first are.
        bypassesCache ? interleave(planes, count, pDst + kNumbers * x, StreamingStore())
                      : interleave(planes, count, pDst + kNumbers * x, CachedStore());
    }
}

void eigenvaluesAndVectors(const Qel32f* const* pSums, Qel32f* pDst, int width, const EigenForm& form,
                           bool bypassesCache) {
    const bool bypasses = bypassesCache && reinterpret_cast<uintptr_t>(pDst) % 16 == 0;
    form.avgWindow == 3 ? eigenvaluesAndVectorsOf(Means<3>(pSums, width), pDst, width, form, bypasses)
                        : eigenvaluesAndVectorsOf(Means<5>(pSums, width), pDst, width, form, bypasses);
    if (bypasses) hwy::FlushStream();
}

}  // namespace

constexpr auto& owncalcMinValues_W7 = smallerEigenvalues;
constexpr auto& calcValues = eigenvaluesAndVectors;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(owncalcMinValues_W7);
QEL_KERNEL(calcValues);
}  // namespace qel
#endif
