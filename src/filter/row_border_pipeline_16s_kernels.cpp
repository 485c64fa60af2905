#include "filter/row_border_pipeline_kernels.h"
#include "frame/image.h"

#define HWY_TARGET_INCLUDE "filter/row_border_pipeline_16s_kernels.cpp"
#include "filter/row_border_pipeline-inl.h"
#include "filter/taps-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

using Filter = RowFilter<Qel16s, Qel16s>;

template <class D>
using Samples = hn::Vec<hn::RebindToSigned<D>>;

// Samples i, i + 1, ... as 32-bit integers: two of them add up without loss, also after conversion.
template <class D>
HWY_INLINE Samples<D> samples(D, const Qel16s* s) {
    return hn::PromoteTo(hn::RebindToSigned<D>(), hn::LoadU(hn::Rebind<Qel16s, D>(), s));
}

template <class D>
HWY_INLINE hn::Vec<D> times(D d, Samples<D> sample, float k) {
    return hn::Mul(hn::ConvertTo(d, sample), hn::Set(d, k));
}

template <int kTaps>
using FloatKernel = Coefficients<kTaps, float>;

// What an order of summation adds up. Two samples add up without loss.
template <class D, int kSize>
struct Terms {
    const Qel16s* s;
    int channels;
    const FloatKernel<kSize>& k;

    HWY_INLINE int size() const { return k.size(); }
    HWY_INLINE hn::Vec<D> operator()(int tap) const { return times(D(), sample(tap), k[tap]); }
    HWY_INLINE hn::Vec<D> pair(int a, int b) const { return times(D(), hn::Add(sample(a), sample(b)), k[a]); }

private:
    HWY_INLINE Samples<D> sample(int tap) const { return samples(D(), s + tap * channels); }
};

// Vectors of sums that are formed at once. Those of long kernels share the coefficients.
template <class Order>
constexpr size_t kVectors = Order::kTaps == 0 ? 4 : 1;

template <class Order, size_t n, class D>
HWY_INLINE void sumsOf(Vectors<n> vectors, D d, const Qel16s* s, int channels, const FloatKernel<Order::kTaps>& k,
                       hn::Vec<D>* sum) {
    if constexpr (n == 1) {
        *sum = Order::sum(Terms<D, Order::kTaps>{s, channels, k});
    } else {
        static_assert(std::is_same_v<Order, InTapOrder<0>>);
        const auto product = [&](int i, size_t v, auto coefficient) HWY_ATTR {
            return hn::Mul(hn::ConvertTo(d, samples(d, s + i * channels + v * hn::Lanes(d))), coefficient);
        };
        const auto first = hn::Set(d, k[0]);
        forEachVector(vectors, [&](size_t v) HWY_ATTR { sum[v] = product(0, v, first); });
        const int taps = k.size();
#pragma GCC unroll 4
        for (int i = 1; i < taps; ++i) {
            const auto a = hn::Set(d, k[i]);
            forEachVector(vectors, [&](size_t v) HWY_ATTR { sum[v] = hn::Add(sum[v], product(i, v, a)); });
        }
    }
}

template <class D, class VI>
HWY_INLINE void store16s(D, VI v, Qel16s* out) {
    const hn::Rebind<Qel16s, D> d16;
    hn::StoreU(hn::DemoteTo(d16, v), d16, out);
}

// How a sum of scaled products becomes an integer, ahead of its narrowing to 16 bits, which saturates.
struct Nearest {
    template <class D, class V = hn::Vec<D>>
    static HWY_INLINE Samples<D> round(D, V sum) {
        return hn::NearestInt(sum);
    }
};
// As Nearest, but what is beyond the range of 32 bits turns into the lowest integer, whatever its sign.
struct NearestOrLowest {
    template <class D, class V = hn::Vec<D>>
    static HWY_INLINE Samples<D> round(D d, V sum) {
        const auto beyond = hn::Ge(sum, hn::Set(d, 2147483648.0F));
        return hn::NearestInt(hn::IfThenElse(beyond, hn::Set(d, -2147483648.0F), sum));
    }
};

template <class Order, class Rounding, size_t n, class D, int kSize>
HWY_INLINE void storeResults(Vectors<n> vectors, D d, const Qel16s* s, int channels, const FloatKernel<kSize>& k,
                             Qel16s* out) {
    hn::Vec<D> sums[n];
    sumsOf<Order>(vectors, d, s, channels, k, sums);
    forEachVector(vectors,
                  [&](size_t v) HWY_ATTR { store16s(d, Rounding::round(d, sums[v]), out + v * hn::Lanes(d)); });
}

template <class Order, class Rounding, int kSize>
HWY_NOINLINE void fewResults(const Qel16s* s, int channels, const FloatKernel<kSize>& k, Qel16s* out, size_t count) {
    forVectors(hn::CappedTag<float, kGroup>(), count, [&](auto d, size_t x) HWY_ATTR {
        storeResults<Order, Rounding>(Vectors<1>(), d, s + x, channels, k, out + x);
    });
}

// Results near the ends of a row: unscaled products, one multiplication by the reciprocal, truncation.
template <int kSize>
HWY_NOINLINE void edgeResults(const Qel16s* s, int channels, const FloatKernel<kSize>& k, float reciprocal, Qel16s* out,
                              size_t count) {
    forVectors(hn::CappedTag<float, RowStrips<Qel16s>::kGroup>(), count, [&](auto d, size_t x) HWY_ATTR {
        hn::Vec<decltype(d)> sum;
        sumsOf<InTapOrder<kSize>>(Vectors<1>(), d, s + x, channels, k, &sum);
        const auto quotient = clamped16s(d, hn::Mul(sum, hn::Set(d, reciprocal)));
        store16s(d, hn::ConvertTo(hn::RebindToSigned<decltype(d)>(), quotient), out + x);
    });
}

template <int kSize, class Order, class Leftovers, class Rounding>
HWY_NOINLINE void filterRowsBy(const Qel16s* pSrc, int srcStep, Qel16s* const* pRowDst, QelSize size, int channels,
                               const Filter& filter, void* pScratch) {
    const float reciprocal = 1.0F / static_cast<float>(filter.divisor);
    Carver carver(pScratch);
    float* const plain = carver.take<float>(filter.kernelSize);
    float* const scaled = carver.take<float>(filter.kernelSize);
    for (int i = 0; i < filter.kernelSize; ++i) {
        plain[i] = filter.pKernel[i];
        scaled[i] = plain[i] * reciprocal;
    }
    const FloatKernel<kSize> kEdge(plain, filter.kernelSize);
    const FloatKernel<kSize> k(scaled, filter.kernelSize);
    forEachRow(
        pSrc, srcStep, pRowDst, size, channels, filter, carver,
        [&](const Qel16s* strip, Qel16s* out, size_t count)
            HWY_ATTR { edgeResults(strip, channels, kEdge, reciprocal, out, count); },
        [&](const Qel16s* src, Qel16s* out, size_t count) HWY_ATTR {
            if constexpr (!std::is_same_v<Order, Leftovers>) {
                const Leftover left(count);
                fewResults<Leftovers, Rounding>(src + left.begin, channels, k, out + left.begin, left.count);
                count = left.groups;
            }
            forOverlapping(
                Vectors<kVectors<Order>>(), hn::ScalableTag<float>(), out, count,
                [&](auto d, size_t x, auto vectors)
                    HWY_ATTR { storeResults<Order, Rounding>(vectors, d, src + x, channels, k, out + x); },
                [&]() HWY_ATTR { fewResults<Order, Rounding>(src, channels, k, out, count); });
        });
}

template <int kSize, class Rounding, bool kTapOrderLeftovers>
void filterRowsRounded(const Qel16s* pSrc, int srcStep, Qel16s* const* pRowDst, QelSize size, int channels,
                       const Filter& filter, void* pScratch) {
    if constexpr (kSize == 0) {
        using Order = InTapOrder<0>;
        filterRowsBy<0, Order, Order, Rounding>(pSrc, srcStep, pRowDst, size, channels, filter, pScratch);
    } else {
        const auto run = [=, &filter](auto order) {
            using Order = decltype(order);
            using Leftovers = std::conditional_t<kTapOrderLeftovers, InTapOrder<kSize>, Order>;
            filterRowsBy<kSize, Order, Leftovers, Rounding>(pSrc, srcStep, pRowDst, size, channels, filter, pScratch);
        };
        isSymmetric(filter.pKernel, kSize) ? run(Folded<kSize>()) : run(Inwards<kSize>());
    }
}

// Of one channel: results beyond the range of 32 bits saturate by their sign. The leftovers sum in the order of the
// taps.
template <int kSize>
void filterRowsC1(const Qel16s* pSrc, int srcStep, Qel16s* const* pRowDst, QelSize size, const Filter& filter,
                  void* pScratch) {
    filterRowsRounded<kSize, Nearest, true>(pSrc, srcStep, pRowDst, size, 1, filter, pScratch);
}

// A kernel whose sums stay within 32 bits.
bool staysInRange(const Filter& filter) {
    float sum = 0;
    for (int i = 0; i < filter.kernelSize; ++i) sum += static_cast<float>(std::abs(int{filter.pKernel[i]}));
    return sum < 65535.0F;
}

template <int kSize>
void filterRowsC3(const Qel16s* pSrc, int srcStep, Qel16s* const* pRowDst, QelSize size, const Filter& filter,
                  void* pScratch) {
    if (staysInRange(filter)) {
        filterRowsRounded<kSize, Nearest, false>(pSrc, srcStep, pRowDst, size, 3, filter, pScratch);
    } else {
        filterRowsRounded<kSize, NearestOrLowest, false>(pSrc, srcStep, pRowDst, size, 3, filter, pScratch);
    }
}

}  // namespace

constexpr auto& ownFilterRowBorderPipeline_16s_C1R_3x3_W7cn = filterRowsC1<3>;
constexpr auto& ownFilterRowBorderPipeline_16s_C1R_5x5_W7cn = filterRowsC1<5>;
constexpr auto& ownFilterRowBorderPipeline_16s_C1R_X_W7cn = filterRowsC1<0>;
constexpr auto& ownFilterRowBorderPipeline_16s_C3R_3x3_W7cn = filterRowsC3<3>;
constexpr auto& ownFilterRowBorderPipeline_16s_C3R_5x5_W7cn = filterRowsC3<5>;
constexpr auto& ownFilterRowBorderPipeline_16s_C3R_X_W7cn = filterRowsC3<0>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownFilterRowBorderPipeline_16s_C1R_3x3_W7cn);
QEL_KERNEL(ownFilterRowBorderPipeline_16s_C1R_5x5_W7cn);
QEL_KERNEL(ownFilterRowBorderPipeline_16s_C1R_X_W7cn);
QEL_KERNEL(ownFilterRowBorderPipeline_16s_C3R_3x3_W7cn);
QEL_KERNEL(ownFilterRowBorderPipeline_16s_C3R_5x5_W7cn);
QEL_KERNEL(ownFilterRowBorderPipeline_16s_C3R_X_W7cn);
}  // namespace qel
#endif
