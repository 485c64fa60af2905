#include "filter/row_border_pipeline_kernels.h"
#include "frame/image.h"

#define HWY_TARGET_INCLUDE "filter/row_border_pipeline_16s_kernels.cpp"
#include "filter/row_border_pipeline-inl.h"

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

// The orders of summation. Each is a documented result.
template <int kSize>
struct InTapOrder {
    template <class D>
    static HWY_INLINE hn::Vec<D> sum(D d, const Qel16s* s, int channels, const float* k, int kernelSize) {
        hn::Vec<D> sum = times(d, samples(d, s), k[0]);
        const int taps = kSize == 0 ? kernelSize : kSize;
#pragma GCC unroll 4
        for (int i = 1; i < taps; ++i)
            sum = hn::Add(sum, times(d, samples(d, s + i * channels), k[i]));
        return sum;
    }
};

// From the outside in.
template <int kSize>
struct Inwards {
    template <class D>
    static HWY_INLINE hn::Vec<D> sum(D d, const Qel16s* s, int channels, const float* k, int) {
        const auto term = [=](int i) HWY_ATTR { return times(d, samples(d, s + i * channels), k[i]); };
        const auto outer = hn::Add(term(0), term(kSize - 1));
        if constexpr (kSize == 3) return hn::Add(outer, term(1));
        return hn::Add(hn::Add(outer, hn::Add(term(1), term(3))), term(2));
    }
};

// As Inwards for symmetric kernels: what has the same coefficient is added first.
template <int kSize>
struct Folded {
    template <class D>
    static HWY_INLINE hn::Vec<D> sum(D d, const Qel16s* s, int channels, const float* k, int) {
        const auto sample = [=](int i) HWY_ATTR { return samples(d, s + i * channels); };
        const auto outer = times(d, hn::Add(sample(0), sample(kSize - 1)), k[0]);
        if constexpr (kSize == 3) return hn::Add(outer, times(d, sample(1), k[1]));
        const auto inner = times(d, hn::Add(sample(1), sample(3)), k[1]);
        return hn::Add(hn::Add(outer, inner), times(d, sample(2), k[2]));
    }
};

template <class D, class V = hn::Vec<D>, class VI>
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

template <class Order, class Rounding, class D>
HWY_INLINE void storeResults(D d, const Qel16s* s, int channels, const float* k, int kernelSize, Qel16s* out) {
    store16s(d, Rounding::round(d, Order::sum(d, s, channels, k, kernelSize)), out);
}

template <class Order, class Rounding>
HWY_NOINLINE void fewResults(const Qel16s* s, int channels, const float* k, int kernelSize, Qel16s* out, size_t count) {
    forVectors(hn::CappedTag<float, kGroup>(), count, [&](auto d, size_t x) HWY_ATTR {
        storeResults<Order, Rounding>(d, s + x, channels, k, kernelSize, out + x);
    });
}

// Results near the ends of a row: unscaled products, one multiplication by the reciprocal, truncation.
HWY_NOINLINE void edgeResults(const Qel16s* s, int channels, const float* k, int kernelSize, float reciprocal,
                              Qel16s* out, size_t count) {
    forVectors(hn::CappedTag<float, RowStrips<Qel16s>::kGroup>(), count, [&](auto d, size_t x) HWY_ATTR {
        const auto sum = InTapOrder<0>::sum(d, s + x, channels, k, kernelSize);
        const auto quotient = hn::Mul(sum, hn::Set(d, reciprocal));
        store16s(d, hn::ConvertTo(hn::RebindToSigned<decltype(d)>(), clamped16s(d, quotient)), out + x);
    });
}

template <int kSize, class Order, class Leftovers, class Rounding>
HWY_NOINLINE void filterRowsBy(const Qel16s* pSrc, int srcStep, Qel16s* const* pRowDst, QelSize size, int channels,
                               const Filter& filter, void* pScratch) {
    const float reciprocal = 1.0F / static_cast<float>(filter.divisor);
    Carver carver(pScratch);
    float* const unscaled = carver.take<float>(filter.kernelSize);
    float own[kSize + 1];
    float* const k = kSize == 0 ? carver.take<float>(filter.kernelSize) : own;
    for (int i = 0; i < filter.kernelSize; ++i) {
        unscaled[i] = filter.pKernel[i];
        k[i] = unscaled[i] * reciprocal;
    }
    forEachRow(
        pSrc, srcStep, pRowDst, size, channels, filter, carver,
        [&](const Qel16s* strip, Qel16s* out, size_t count)
            HWY_ATTR { edgeResults(strip, channels, unscaled, filter.kernelSize, reciprocal, out, count); },
        [&](const Qel16s* src, Qel16s* out, size_t count) HWY_ATTR {
            if constexpr (!std::is_same_v<Order, Leftovers>) {
                const size_t left = count % kGroup;
                const size_t covered = left == 0 ? 0 : HWY_MIN(count, kGroup);
                fewResults<Leftovers, Rounding>(src + count - covered, channels, k, filter.kernelSize,
                                                out + count - covered, covered);
                count -= left;
            }
            forOverlappingVectors(
                hn::ScalableTag<float>(), count,
                [&](auto d, size_t x)
                    HWY_ATTR { storeResults<Order, Rounding>(d, src + x, channels, k, filter.kernelSize, out + x); },
                [&]() HWY_ATTR { fewResults<Order, Rounding>(src, channels, k, filter.kernelSize, out, count); });
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
