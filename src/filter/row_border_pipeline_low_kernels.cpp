#include "filter/row_border_pipeline_kernels.h"
#include "frame/image.h"

#define HWY_TARGET_INCLUDE "filter/row_border_pipeline_low_kernels.cpp"
#include "filter/row_border_pipeline-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

using Filter = RowFilter<Qel16s, Qel16s>;

// How a sum that wrapped at 16 bits becomes a result.
struct Unscaled {
    template <class D, class V = hn::Vec<D>>
    HWY_INLINE V operator()(D, V sum) const {
        return sum;
    }
};
struct ShiftedBy4 {
    template <class D, class V = hn::Vec<D>>
    HWY_INLINE V operator()(D, V sum) const {
        return hn::ShiftRight<4>(sum);
    }
};
struct Scaled {
    Qel16s reciprocal;  // in units of 2 to the power -14
    template <class D, class V = hn::Vec<D>>
    HWY_INLINE V operator()(D d, V sum) const {
        const auto scaled = [this](auto half, auto v) HWY_ATTR {
            const hn::Rebind<int32_t, decltype(half)> d32;
            const auto product = hn::Mul(hn::PromoteTo(d32, v), hn::Set(d32, int{reciprocal}));
            return hn::DemoteTo(half, hn::ShiftRight<14>(product));
        };
        if constexpr (hn::MaxLanes(D()) < 8) {
            return scaled(d, sum);
        } else {
            const auto low = hn::Mul(sum, hn::Set(d, reciprocal));
            const auto high = hn::MulHigh(sum, hn::Set(d, reciprocal));
            const hn::RepartitionToWide<D> d32;
            const auto lower = hn::BitCast(d32, hn::InterleaveLower(d, low, high));
            const auto upper = hn::BitCast(d32, hn::InterleaveUpper(d, low, high));
            return hn::ReorderDemote2To(d, hn::ShiftRight<14>(lower), hn::ShiftRight<14>(upper));
        }
    }
};

template <int kTaps>
using Kernel16s = Coefficients<kTaps, Qel16s>;

// n vectors of results whose sums wrap at 16 bits.
template <size_t n, class D, int kTaps, class Quotient, class Store>
HWY_INLINE void wrappedResults(Vectors<n> vectors, D d, const Qel16s* s, int channels, const Kernel16s<kTaps>& k,
                               const Quotient& quotient, Qel16s* out, const Store& store) {
    const auto product = [&](int i, size_t v, auto coefficient) HWY_ATTR {
        return hn::Mul(hn::LoadU(d, s + i * channels + v * hn::Lanes(d)), coefficient);
    };
    hn::Vec<D> sum[n];
    const auto first = hn::Set(d, k[0]);
    forEachVector(vectors, [&](size_t v) HWY_ATTR { sum[v] = product(0, v, first); });
    const int taps = k.size();
#pragma GCC unroll 4
    for (int i = 1; i < taps; ++i) {
        const auto a = hn::Set(d, k[i]);
        forEachVector(vectors, [&](size_t v) HWY_ATTR { sum[v] = hn::Add(sum[v], product(i, v, a)); });
    }
    forEachVector(vectors, [&](size_t v) HWY_ATTR { store(quotient(d, sum[v]), d, out + v * hn::Lanes(d)); });
}

// Such results within a row.
template <int kTaps, class Quotient>
HWY_INLINE void interiorResults(const Qel16s* src, int channels, const Kernel16s<kTaps>& k, const Quotient& quotient,
                                Qel16s* out, size_t count) {
    const auto op = [&](auto d, size_t x, auto vectors) HWY_ATTR {
        wrappedResults(vectors, d, src + x, channels, k, quotient, out + x, CachedStore());
    };
    constexpr size_t kVectors = kTaps == 0 ? 4 : 1;
    forOverlapping(Vectors<kVectors>(), hn::ScalableTag<Qel16s>(), out, count, op, [&]() HWY_ATTR {
        forVectors(hn::CappedTag<Qel16s, kGroup>(), count, [&](auto d, size_t x) HWY_ATTR { op(d, x, Vectors<1>()); });
    });
}

// Results near the ends of a row: the sums do not wrap at 16 bits, only what is stored of them.
template <int kTaps>
HWY_NOINLINE void edgeResults(const Qel16s* s, int channels, const Kernel16s<kTaps>& k, int reciprocal, Qel16s* out,
                              size_t count) {
    const int taps = k.size();
    const auto op = [&](auto d, size_t x) HWY_ATTR {
        const hn::Rebind<Qel16s, decltype(d)> d16;
        auto sum = hn::Zero(d);
#pragma GCC unroll 8
        for (int i = 0; i < taps; ++i) {
            const auto sample = hn::PromoteTo(d, hn::LoadU(d16, s + x + i * channels));
            sum = hn::Add(sum, hn::Mul(sample, hn::Set(d, int{k[i]})));
        }
        const hn::RebindToUnsigned<decltype(d)> du;
        const hn::RebindToUnsigned<decltype(d16)> du16;
        const auto scaled = hn::ShiftRight<14>(hn::BitCast(du, hn::Mul(sum, hn::Set(d, reciprocal))));
        hn::StoreU(hn::BitCast(d16, hn::TruncateTo(du16, scaled)), d16, out + x);
    };
    forVectors(hn::CappedTag<int32_t, RowStrips<Qel16s>::kGroup>(), count, op);
}

template <int kSize, class Quotient>
HWY_NOINLINE void filterRowsBy(const Qel16s* pSrc, int srcStep, Qel16s* const* pRowDst, QelSize size, int channels,
                               const Filter& filter, const Quotient& quotient, int reciprocal, void* pScratch) {
    const Kernel16s<kSize> k(filter.pKernel, filter.kernelSize);
    Carver carver(pScratch);
    forEachRow(
        pSrc, srcStep, pRowDst, size, channels, filter, carver,
        [&](const Qel16s* strip, Qel16s* out, size_t count)
            HWY_ATTR { edgeResults(strip, channels, k, reciprocal, out, count); },
        [&](const Qel16s* src, Qel16s* out, size_t count)
            HWY_ATTR { interiorResults(src, channels, k, quotient, out, count); });
}

template <int kChannels, int kSize>
void filterRows(const Qel16s* pSrc, int srcStep, Qel16s* const* pRowDst, QelSize size, const Filter& filter,
                void* pScratch) {
    const Qel16s reciprocal = static_cast<Qel16s>(16384.0F / static_cast<float>(filter.divisor));
    if (filter.divisor == 1) {
        filterRowsBy<kSize>(pSrc, srcStep, pRowDst, size, kChannels, filter, Unscaled(), reciprocal, pScratch);
    } else {
        filterRowsBy<kSize>(pSrc, srcStep, pRowDst, size, kChannels, filter, Scaled{reciprocal}, reciprocal, pScratch);
    }
}

// The whole image by a symmetric kernel of 5 taps around its middle, a replicated border and the divisor 16. Sums wrap
// at the left end of a row as they do within it; the last two do not.
template <bool kStreaming>
void filterRowsShifted(const Qel16s* pSrc, int srcStep, Qel16s* const* pRowDst, QelSize size, const Filter& filter) {
    const Kernel16s<5> k(filter.pKernel, 5);
    const int width = size.width;
    for (int y = 0; y < size.height; ++y) {
        const Qel16s* const s = row(pSrc, srcStep, y);
        Qel16s* const out = pRowDst[y];

        Qel16s left[6], right[6];
        std::memcpy(left + 2, s, 4 * sizeof(Qel16s));
        left[0] = left[1] = left[2];
        std::memcpy(right, s + width - 4, 4 * sizeof(Qel16s));
        right[4] = right[5] = right[3];

        const hn::CappedTag<Qel16s, 2> two;
        wrappedResults(Vectors<1>(), two, left, 1, k, ShiftedBy4(), out, CachedStore());
        const size_t count = size_t(width - 4);
        if (kStreaming && reinterpret_cast<uintptr_t>(out) % 16 == 0) {
            forVectorsInto<true>(out + 2, hn::ScalableTag<Qel16s>(), count, [&](auto d, size_t x, auto store) HWY_ATTR {
                wrappedResults(Vectors<1>(), d, s + x, 1, k, ShiftedBy4(), out + 2 + x, store);
            });
        } else {
            interiorResults(s, 1, k, ShiftedBy4(), out + 2, count);
        }
        Qel16s last[2];
        for (int i = 0; i < 2; ++i) {
            uint32_t sum = 0;
            for (int j = 0; j < 5; ++j) sum += static_cast<uint32_t>(k[j] * right[i + j]);
            last[i] = static_cast<Qel16s>(static_cast<int32_t>(sum) >> 4);
        }
        std::memcpy(out + width - 2, last, sizeof(last));
    }
    finishStores<kStreaming>();
}

void filterRowsShifted(const Qel16s* pSrc, int srcStep, Qel16s* const* pRowDst, QelSize size, const Filter& filter,
                       void*) {
    if (area(size) > 0x80000) {
        filterRowsShifted<true>(pSrc, srcStep, pRowDst, size, filter);
    } else {
        filterRowsShifted<false>(pSrc, srcStep, pRowDst, size, filter);
    }
}

}  // namespace

constexpr auto& ownFilterRowBorderLowPipeline_16s_C1R_3x3_W7cn = filterRows<1, 3>;
constexpr auto& ownFilterRowBorderLowPipeline_16s_C1R_5x5_W7cn = filterRows<1, 5>;
constexpr RowKernel_16s& ownFilterRowBorderLowPipeline_16s_C1R_5x5_Repl_SHIFT_W7 = filterRowsShifted;
constexpr auto& ownFilterRowBorderLowPipeline_16s_C1R_X_W7cn = filterRows<1, 0>;
constexpr auto& ownFilterRowBorderLowPipeline_16s_C3R_3x3_W7cn = filterRows<3, 3>;
constexpr auto& ownFilterRowBorderLowPipeline_16s_C3R_5x5_W7cn = filterRows<3, 5>;
constexpr auto& ownFilterRowBorderLowPipeline_16s_C3R_X_W7cn = filterRows<3, 0>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownFilterRowBorderLowPipeline_16s_C1R_3x3_W7cn);
QEL_KERNEL(ownFilterRowBorderLowPipeline_16s_C1R_5x5_W7cn);
QEL_KERNEL(ownFilterRowBorderLowPipeline_16s_C1R_5x5_Repl_SHIFT_W7);
QEL_KERNEL(ownFilterRowBorderLowPipeline_16s_C1R_X_W7cn);
QEL_KERNEL(ownFilterRowBorderLowPipeline_16s_C3R_3x3_W7cn);
QEL_KERNEL(ownFilterRowBorderLowPipeline_16s_C3R_5x5_W7cn);
QEL_KERNEL(ownFilterRowBorderLowPipeline_16s_C3R_X_W7cn);
}  // namespace qel
#endif
