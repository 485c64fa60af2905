#include "filter/row_border_pipeline_kernels.h"
#include "frame/image.h"

#define HWY_TARGET_INCLUDE "filter/row_border_pipeline_8u16s_kernels.cpp"
#include "filter/row_border_pipeline-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

using Filter = RowFilter<Qel8u, Qel16s>;

// How a sum becomes a result. Vectors of 32-bit sums keep their width; narrowing them saturates.
struct Unscaled {
    template <class D, class V = hn::Vec<D>>
    HWY_INLINE V operator()(D, V sum) const {
        return sum;
    }
};
struct RoundedQuotient {
    float reciprocal;
    template <class D, class V = hn::Vec<D>>
    HWY_INLINE V operator()(D, V sum) const {
        const hn::RebindToFloat<D> df;
        return hn::NearestInt(hn::Mul(hn::ConvertTo(df, sum), hn::Set(df, reciprocal)));
    }
};
struct TruncatedQuotient {
    float reciprocal;
    template <class D, class V = hn::Vec<D>>
    HWY_INLINE V operator()(D d, V sum) const {
        const hn::RebindToFloat<D> df;
        return hn::ConvertTo(d, clamped16s(df, hn::Mul(hn::ConvertTo(df, sum), hn::Set(df, reciprocal))));
    }
};

// Sums are exact, so that taps may be taken in any order. This one is for few results.
template <class D, class Quotient>
HWY_INLINE void storeSums(D d, const Qel8u* s, int channels, const Filter& filter, const Quotient& quotient,
                          Qel16s* out) {
    const hn::Rebind<Qel8u, D> d8;
    hn::Vec<D> sum = hn::Zero(d);
    for (int i = 0; i < filter.kernelSize; ++i) {
        const auto sample = hn::PromoteTo(d, hn::LoadU(d8, s + i * channels));
        sum = hn::Add(sum, hn::Mul(sample, hn::Set(d, int{filter.pKernel[i]})));
    }
    const hn::Rebind<Qel16s, D> d16;
    hn::StoreU(hn::DemoteTo(d16, quotient(d, sum)), d16, out);
}

template <class Quotient>
HWY_NOINLINE void fewSums(const Qel8u* s, int channels, const Filter& filter, const Quotient& quotient, Qel16s* out,
                          size_t count) {
    forVectors(hn::CappedTag<int32_t, RowStrips<Qel8u>::kGroup>(), count,
               [&](auto d, size_t x) HWY_ATTR { storeSums(d, s + x, channels, filter, quotient, out + x); });
}

// Two samples at equal distances from the middle of a kernel may share a coefficient, or have opposite ones.
enum class Fold { kNone, kSum, kDifference };

Fold foldOf(const Filter& filter) {
    bool sum = true;
    bool difference = true;
    for (int i = 0, j = filter.kernelSize - 1; i <= j; ++i, --j) {
        sum &= filter.pKernel[i] == filter.pKernel[j];
        difference &= filter.pKernel[i] == -filter.pKernel[j];
    }
    return sum ? Fold::kSum : difference ? Fold::kDifference : Fold::kNone;
}

// A kernel as pairs of coefficients, which one instruction applies to pairs of terms. A term is a sample, or two of
// them folded; where the number of terms is odd, the last coefficient pairs with 0.
template <int kSize, Fold kFold>
class PairedKernel {
public:
    static constexpr int kMaxPairs = kSize == 0 ? 1 : (kSize + 1) / 2;

    PairedKernel(const Filter& filter, Carver& carver) : size_(filter.kernelSize) {
        pairs_ = kSize == 0 ? carver.take<int32_t>((size_ + 1) / 2) : own_;
        for (int i = 0; i < terms(); i += 2) {
            const int second = i + 1 < terms() ? filter.pKernel[i + 1] : 0;
            pairs_[i / 2] = static_cast<int32_t>(static_cast<uint32_t>(second) << 16 | uint16_t(filter.pKernel[i]));
        }
    }
    PairedKernel(const PairedKernel&) = delete;

    // Two vectors of 32-bit sums for a vector of samples: of the lower and of the upper half of each 16-byte block.
    template <class D, class V32>
    HWY_INLINE void sums(D d, const Qel8u* s, int channels, V32& lower, V32& upper) const {
        const hn::RepartitionToWide<D> d32;
        lower = hn::Zero(d32);
        upper = hn::Zero(d32);
        const auto add = [&](int i, auto first, auto second) HWY_ATTR {
            const auto pair = hn::BitCast(d, hn::Set(d32, pairs_[i / 2]));
            V32 other = hn::Zero(d32);  // stays so: on x86, neighbouring products end up in one lane
            lower = hn::ReorderWidenMulAccumulate(d32, hn::InterleaveLower(d, first, second), pair, lower, other);
            upper = hn::ReorderWidenMulAccumulate(d32, hn::InterleaveUpper(d, first, second), pair, upper, other);
        };
        const int pairable = whole() - 1;
        int i = 0;
#pragma GCC unroll 4
        for (; i < pairable; i += 2) add(i, term(d, s, channels, i), term(d, s, channels, i + 1));
        if (i < terms()) {
            const auto first = term(d, s, channels, i);
            add(i, first, i + 1 < terms() ? term(d, s, channels, i + 1) : first);
        }
    }

private:
    HWY_INLINE int size() const { return kSize == 0 ? size_ : kSize; }
    HWY_INLINE int folded() const { return kFold == Fold::kNone ? 0 : size() / 2; }
    // In differences, the sample in the middle has the coefficient 0.
    HWY_INLINE int terms() const { return kFold == Fold::kDifference ? folded() : size() - folded(); }
    // Terms that are all alike.
    HWY_INLINE int whole() const { return kFold == Fold::kNone ? size() : folded(); }

    template <class D>
    static HWY_INLINE hn::Vec<D> sample(D d, const Qel8u* s) {
        return hn::PromoteTo(d, hn::LoadU(hn::Rebind<Qel8u, D>(), s));
    }

    template <class D>
    HWY_INLINE hn::Vec<D> term(D d, const Qel8u* s, int channels, int i) const {
        const auto a = sample(d, s + i * channels);
        if (i >= folded()) return a;
        const auto b = sample(d, s + (size() - 1 - i) * channels);
        return kFold == Fold::kSum ? hn::Add(a, b) : hn::Sub(a, b);
    }

    int size_;
    int32_t own_[kMaxPairs];
    int32_t* pairs_;
};

template <int kSize, Fold kFold, class Quotient>
HWY_NOINLINE void filterRowsBy(const Qel8u* pSrc, int srcStep, Qel16s* const* pRowDst, QelSize size, int channels,
                               const Filter& filter, const Quotient& quotient, void* pScratch) {
    const TruncatedQuotient truncated{1.0F / static_cast<float>(filter.divisor)};
    Carver carver(pScratch);
    const PairedKernel<kSize, kFold> kernel(filter, carver);
    // Where rounding to nearest stops with the groups, what is left over truncates as the edges do.
    constexpr bool kTruncatedLeftovers = kSize == 0 && !std::is_same_v<Quotient, Unscaled>;

    forEachRow(
        pSrc, srcStep, pRowDst, size, channels, filter, carver,
        [&](const Qel8u* strip, Qel16s* out, size_t count)
            HWY_ATTR { fewSums(strip, channels, filter, truncated, out, count); },
        [&](const Qel8u* src, Qel16s* out, size_t count) HWY_ATTR {
            if (kTruncatedLeftovers) {
                const size_t left = count % kGroup;
                const size_t covered = left == 0 ? 0 : HWY_MIN(count, kGroup);
                fewSums(src + count - covered, channels, filter, truncated, out + count - covered, covered);
                count -= left;
            }
            forOverlappingVectors(
                hn::ScalableTag<Qel16s>(), count,
                [&](auto d, size_t x) HWY_ATTR {
                    const hn::RepartitionToWide<decltype(d)> d32;
                    hn::Vec<decltype(d32)> lower, upper;
                    kernel.sums(d, src + x, channels, lower, upper);
                    hn::StoreU(hn::ReorderDemote2To(d, quotient(d32, lower), quotient(d32, upper)), d, out + x);
                },
                [&]() HWY_ATTR { fewSums(src, channels, filter, quotient, out, count); });
        });
}

template <int kSize, class Quotient>
void filterRowsScaled(const Qel8u* pSrc, int srcStep, Qel16s* const* pRowDst, QelSize size, int channels,
                      const Filter& filter, const Quotient& quotient, void* pScratch) {
    switch (foldOf(filter)) {
        case Fold::kNone:
            return filterRowsBy<kSize, Fold::kNone>(pSrc, srcStep, pRowDst, size, channels, filter, quotient, pScratch);
        case Fold::kSum:
            return filterRowsBy<kSize, Fold::kSum>(pSrc, srcStep, pRowDst, size, channels, filter, quotient, pScratch);
        case Fold::kDifference:
            return filterRowsBy<kSize, Fold::kDifference>(pSrc, srcStep, pRowDst, size, channels, filter, quotient,
                                                          pScratch);
    }
}

template <int kChannels, int kSize>
void filterRows(const Qel8u* pSrc, int srcStep, Qel16s* const* pRowDst, QelSize size, const Filter& filter,
                void* pScratch) {
    if (filter.divisor == 1) {
        filterRowsScaled<kSize>(pSrc, srcStep, pRowDst, size, kChannels, filter, Unscaled(), pScratch);
    } else {
        const RoundedQuotient rounded{1.0F / static_cast<float>(filter.divisor)};
        filterRowsScaled<kSize>(pSrc, srcStep, pRowDst, size, kChannels, filter, rounded, pScratch);
    }
}

// The sums as they are, for the divisor 1.
void filterRowsUnscaled(const Qel8u* pSrc, int srcStep, Qel16s* const* pRowDst, QelSize size, const Filter& filter,
                        void* pScratch) {
    filterRowsScaled<3>(pSrc, srcStep, pRowDst, size, 1, filter, Unscaled(), pScratch);
}

}  // namespace

constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_3x3_W7cn = filterRows<1, 3>;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_3x3_1_W7cn = filterRowsUnscaled;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_5x5_W7cn = filterRows<1, 5>;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_X_W7cn = filterRows<1, 0>;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C3R_3x3_W7cn = filterRows<3, 3>;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C3R_5x5_W7cn = filterRows<3, 5>;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C3R_X_W7cn = filterRows<3, 0>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownFilterRowBorderPipeline_8u16s_C1R_3x3_W7cn);
QEL_KERNEL(ownFilterRowBorderPipeline_8u16s_C1R_3x3_1_W7cn);
QEL_KERNEL(ownFilterRowBorderPipeline_8u16s_C1R_5x5_W7cn);
QEL_KERNEL(ownFilterRowBorderPipeline_8u16s_C1R_X_W7cn);
QEL_KERNEL(ownFilterRowBorderPipeline_8u16s_C3R_3x3_W7cn);
QEL_KERNEL(ownFilterRowBorderPipeline_8u16s_C3R_5x5_W7cn);
QEL_KERNEL(ownFilterRowBorderPipeline_8u16s_C3R_X_W7cn);
}  // namespace qel
#endif
