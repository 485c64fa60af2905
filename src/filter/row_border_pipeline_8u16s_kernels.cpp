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
    explicit Unscaled(int) {}
    template <class D, class V = hn::Vec<D>>
    HWY_INLINE V operator()(D, V sum) const {
        return sum;
    }
};
struct RoundedQuotient {
    explicit RoundedQuotient(int divisor) : reciprocal(1.0F / static_cast<float>(divisor)) {}
    float reciprocal;
    template <class D, class V = hn::Vec<D>>
    HWY_INLINE V operator()(D, V sum) const {
        const hn::RebindToFloat<D> df;
        return hn::NearestInt(hn::Mul(hn::ConvertTo(df, sum), hn::Set(df, reciprocal)));
    }
};
struct TruncatedQuotient {
    explicit TruncatedQuotient(int divisor) : reciprocal(1.0F / static_cast<float>(divisor)) {}
    float reciprocal;
    template <class D, class V = hn::Vec<D>>
    HWY_INLINE V operator()(D d, V sum) const {
        const hn::RebindToFloat<D> df;
        return hn::ConvertTo(d, clamped16s(df, hn::Mul(hn::ConvertTo(df, sum), hn::Set(df, reciprocal))));
    }
};

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
// them folded; where the number of terms is odd, the last coefficient pairs with 0. Sums are exact, so that taps may be
// taken in any order.
template <int kSize, Fold kFold>
class PairedKernel {
public:
    static constexpr int kMaxPairs = kSize == 0 ? 1 : (kSize + 1) / 2;

    PairedKernel(const Filter& filter, Carver& carver) : pKernel_(filter.pKernel), size_(filter.kernelSize) {
        pairs_ = kSize == 0 ? carver.take<int32_t>((size_ + 1) / 2) : own_;
        for (int i = 0; i < terms(); i += 2) {
            const int second = i + 1 < terms() ? filter.pKernel[i + 1] : 0;
            pairs_[i / 2] = static_cast<int32_t>(static_cast<uint32_t>(second) << 16 | uint16_t(filter.pKernel[i]));
        }
    }
    PairedKernel(const PairedKernel&) = delete;

    // n vectors of sums in 32 bits: of the lower and of the upper half of each 16-byte block of a vector of samples.
    template <size_t n, class D, class V32>
    HWY_INLINE void sums(Vectors<n> vectors, D d, const Qel8u* s, int channels, V32* lower, V32* upper) const {
        const hn::RepartitionToWide<D> d32;
        forEachVector(vectors, [&](size_t v) HWY_ATTR { lower[v] = upper[v] = hn::Zero(d32); });
        const auto add = [&](size_t v, auto pair, auto first, auto second) HWY_ATTR {
            V32 other = hn::Zero(d32);  // stays so: on x86, neighbouring products end up in one lane
            const auto below = hn::InterleaveLower(d, first, second);
            const auto above = hn::InterleaveUpper(d, first, second);
            lower[v] = hn::ReorderWidenMulAccumulate(d32, below, pair, lower[v], other);
            upper[v] = hn::ReorderWidenMulAccumulate(d32, above, pair, upper[v], other);
        };
        const int pairable = whole() - 1;
        int i = 0;
#pragma GCC unroll 4
        for (; i < pairable; i += 2) {
            const auto pair = hn::BitCast(d, hn::Set(d32, pairs_[i / 2]));
            forEachVector(vectors, [&](size_t v) HWY_ATTR {
                const Qel8u* const sv = s + v * hn::Lanes(d);
                add(v, pair, wholeTerm(d, sv, channels, i), wholeTerm(d, sv, channels, i + 1));
            });
        }
        if (i >= terms()) return;
        const auto pair = hn::BitCast(d, hn::Set(d32, pairs_[i / 2]));
        forEachVector(vectors, [&](size_t v) HWY_ATTR {
            const Qel8u* const sv = s + v * hn::Lanes(d);
            const auto first = term(d, sv, channels, i);
            add(v, pair, first, i + 1 < terms() ? term(d, sv, channels, i + 1) : first);
        });
    }

    // A vector of sums for the few samples that are less than a block.
    template <class D>
    HWY_INLINE hn::Vec<D> fewSums(D d, const Qel8u* s, int channels) const {
        const hn::Rebind<Qel8u, D> d8;
        hn::Vec<D> sum = hn::Zero(d);
        for (int i = 0; i < size(); ++i) {
            const auto sample = hn::PromoteTo(d, hn::LoadU(d8, s + i * channels));
            sum = hn::Add(sum, hn::Mul(sample, hn::Set(d, int{pKernel_[i]})));
        }
        return sum;
    }

private:
    HWY_INLINE int size() const { return kSize == 0 ? size_ : kSize; }
    // In differences, the sample in the middle has the coefficient 0.
    HWY_INLINE int terms() const {
        return kFold == Fold::kNone ? size() : kFold == Fold::kSum ? (size() + 1) / 2 : size() / 2;
    }
    // Terms that are alike: all but a single sample in the middle.
    HWY_INLINE int whole() const { return kFold == Fold::kNone ? size() : size() / 2; }

    template <class D>
    static HWY_INLINE hn::Vec<D> sample(D d, const Qel8u* s) {
        return hn::PromoteTo(d, hn::LoadU(hn::Rebind<Qel8u, D>(), s));
    }

    template <class D>
    HWY_INLINE hn::Vec<D> wholeTerm(D d, const Qel8u* s, int channels, int i) const {
        const auto a = sample(d, s + i * channels);
        if (kFold == Fold::kNone) return a;
        const auto b = sample(d, s + (size() - 1 - i) * channels);
        return kFold == Fold::kSum ? hn::Add(a, b) : hn::Sub(a, b);
    }

    template <class D>
    HWY_INLINE hn::Vec<D> term(D d, const Qel8u* s, int channels, int i) const {
        return i < whole() ? wholeTerm(d, s, channels, i) : sample(d, s + i * channels);
    }

    const Qel16s* pKernel_;
    int size_;
    int32_t own_[kMaxPairs] = {};
    int32_t* pairs_;
};

template <class Kernel, class Quotient, size_t n, class D>
HWY_INLINE void storeResults(Vectors<n> vectors, D d, const Qel8u* s, int channels, const Kernel& kernel,
                             const Quotient& quotient, Qel16s* out) {
    const hn::RepartitionToWide<D> d32;
    hn::Vec<decltype(d32)> lower[n], upper[n];
    kernel.sums(vectors, d, s, channels, lower, upper);
    forEachVector(vectors, [&](size_t v) HWY_ATTR {
        const auto result = hn::ReorderDemote2To(d, quotient(d32, lower[v]), quotient(d32, upper[v]));
        hn::StoreU(result, d, out + v * hn::Lanes(d));
    });
}

// The ends of a row, and rows that are less than a vector.
template <class Kernel, class Quotient>
HWY_NOINLINE void fewResults(const Qel8u* s, int channels, const Kernel& kernel, const Quotient& quotient, Qel16s* out,
                             size_t count) {
    const auto group = [&](auto d, size_t x, auto vectors)
                           HWY_ATTR { storeResults(vectors, d, s + x, channels, kernel, quotient, out + x); };
    const auto part = [&](auto d, size_t x) HWY_ATTR {
        const hn::Rebind<Qel16s, decltype(d)> d16;
        hn::StoreU(hn::DemoteTo(d16, quotient(d, kernel.fewSums(d, s + x, channels))), d16, out + x);
    };
    forOverlapping(Vectors<1>(), hn::CappedTag<Qel16s, kGroup>(), out, count, group,
                   [&]() HWY_ATTR { forVectors(hn::CappedTag<int32_t, 4>(), count, part); });
}

template <int kSize, Fold kFold, class Quotient>
HWY_NOINLINE void filterRowsBy(const Qel8u* pSrc, int srcStep, Qel16s* const* pRowDst, QelSize size, int channels,
                               const Filter& filter, const Quotient& quotient, void* pScratch) {
    constexpr bool kExact = std::is_same_v<Quotient, Unscaled>;
    using EdgeQuotient = std::conditional_t<kExact, Unscaled, TruncatedQuotient>;
    const EdgeQuotient edgeQuotient(filter.divisor);
    Carver carver(pScratch);
    const PairedKernel<kSize, kFold> kernel(filter, carver);

    forEachRow(
        pSrc, srcStep, pRowDst, size, channels, filter, carver,
        [&](const Qel8u* strip, Qel16s* out, size_t count)
            HWY_ATTR { fewResults(strip, channels, kernel, edgeQuotient, out, count); },
        [&](const Qel8u* src, Qel16s* out, size_t count) HWY_ATTR {
            // Kernels of any size round to nearest in whole groups only. What is left over truncates as the ends do.
            if (kSize == 0 && !kExact) {
                const Leftover left(count);
                fewResults(src + left.begin, channels, kernel, edgeQuotient, out + left.begin, left.count);
                count = left.groups;
            }
            constexpr size_t kVectors = kSize == 0 ? 2 : 1;
            const auto op = [&](auto d, size_t x, auto vectors)
                                HWY_ATTR { storeResults(vectors, d, src + x, channels, kernel, quotient, out + x); };
            forOverlapping(Vectors<kVectors>(), hn::ScalableTag<Qel16s>(), out, count, op,
                           [&]() HWY_ATTR { fewResults(src, channels, kernel, quotient, out, count); });
        });
}

template <int kSize, class Quotient>
void filterRowsScaled(const Qel8u* pSrc, int srcStep, Qel16s* const* pRowDst, QelSize size, int channels,
                      const Filter& filter, void* pScratch) {
    const Quotient quotient(filter.divisor);
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
    const auto run = filter.divisor == 1 ? filterRowsScaled<kSize, Unscaled> : filterRowsScaled<kSize, RoundedQuotient>;
    run(pSrc, srcStep, pRowDst, size, kChannels, filter, pScratch);
}

// For the divisor 1.
void filterRowsUnscaled(const Qel8u* pSrc, int srcStep, Qel16s* const* pRowDst, QelSize size, const Filter& filter,
                        void* pScratch) {
    filterRowsScaled<3, Unscaled>(pSrc, srcStep, pRowDst, size, 1, filter, pScratch);
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
