#include "filter/fixed_kernels.h"

#define HWY_TARGET_INCLUDE "filter/fixed_column_kernels.cpp"
#include "filter/fixed_formulas-inl.h"
#include "filter/taps-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// The samples of n rows at x, and those of their second halves.
template <class D, int n>
struct Column {
    const hn::TFromD<D>* const* rows;
    const hn::TFromD<D>* const* secondHalves;
    size_t x;

    template <int i>
    HWY_INLINE hn::Vec<D> operator()(Tap<i>) const {
        static_assert(i >= 0 && i < n);
        return hn::LoadU(D(), rows[i] + x);
    }
    HWY_INLINE Column second() const { return {secondHalves, secondHalves, x}; }
};

// Both need rows that are two wide.
struct Laplacian3 {
    static constexpr int kTaps = 3;
    template <class R>
    HWY_INLINE auto operator()(const R& r) const {
        return hn::Sub(times<2>(FoldedTaps<kerLap_3>()(r)), r.second()(Tap<1>()));
    }
};
struct Laplacian5 {
    static constexpr int kTaps = 5;
    template <class R>
    HWY_INLINE auto operator()(const R& r) const {
        return hn::Add(FoldedTaps<kerD2x_5>()(r), FoldedTaps<kerSobel_5>()(r.second()));
    }
};

// The addresses of n source rows and of their second halves, kept at hand: in memory, a store could change them, as far
// as a compiler knows.
template <class T, int n>
struct SourceRows {
    const T* first[n];
    const T* second[n];

    HWY_INLINE SourceRows(const T* const* pRows, int width) {
#pragma GCC unroll 8
        for (int i = 0; i < n; ++i) {
            first[i] = pRows[i];
            second[i] = pRows[i] + intermediateStride(width);
            // Else it is formed anew for every vector.
            asm("" : "+r"(second[i]));
        }
    }
    template <class D>
    HWY_INLINE Column<D, n> at(D, size_t x) const {
        return {first, second, x};
    }
};

// Stores past the cache where that is asked for and a whole vector's place is aligned.
template <class D, class V = hn::Vec<D>>
HWY_INLINE void storeBy(bool bypassesCache, V v, D d, hn::TFromD<D>* p) {
    constexpr size_t kBytes = sizeof(hn::TFromD<D>) * hn::MaxLanes(D());
    if constexpr (kBytes >= 16) {
        if (bypassesCache && reinterpret_cast<uintptr_t>(p) % kBytes == 0) return hn::Stream(v, d, p);
    }
    hn::StoreU(v, d, p);
}

// Results by op(d, column), as far as rows have full groups of samples. Vectors are aligned in the source rows, and in
// the result if it is placed alike.
template <int kTaps, size_t kGroup = 1, class Mid, class Dst, class Op>
HWY_INLINE void forColumns(const Mid* const* pRows, Plane<Dst> dst, QelSize size, bool bypassesCache, const Op& op) {
    const size_t count = size_t(size.width) / kGroup * kGroup;
    for (int y = 0; y < size.height; ++y) {
        const SourceRows<Mid, kTaps> rows(pRows + y, size.width);
        Dst* const out = dst.row(y);
        forOverlappingVectors<kGroup>(
            hn::ScalableTag<Mid>(), rows.first[0], count, [&](auto d, size_t x) QEL_INLINE_LAMBDA {
                storeBy(bypassesCache, op(d, rows.at(d, x)), hn::Rebind<Dst, decltype(d)>(), out + x);
            });
    }
    if (bypassesCache) hwy::FlushStream();
}

template <class Formula, class T>
void filterColumns(const T* const* pRows, Plane<T> dst, QelSize size, int, bool bypassesCache) {
    forColumns<Formula::kTaps>(pRows, dst, size, bypassesCache,
                               [](auto, const auto& column) QEL_INLINE_LAMBDA { return Formula()(column); });
}

// The mean of 32f sums, by a factor of single precision.
template <class Formula>
constexpr Qel32f kMeanFactor = Formula::kTaps == 3 ? 0.11111111F : 0.04F;

template <class Formula>
void averageColumns(const Qel32f* const* pRows, Plane<Qel32f> dst, QelSize size, int, bool bypassesCache) {
    forColumns<Formula::kTaps>(pRows, dst, size, bypassesCache, [](auto d, const auto& column) QEL_INLINE_LAMBDA {
        return hn::Mul(Formula()(column), hn::Set(d, kMeanFactor<Formula>));
    });
}

// The mean of nine bytes, rounded, or of 25 bytes, not rounded: 25 times 255 gives 254.
struct MeanOf8u {
    Qel16u half;
    Qel16u factor;  // of 65536
};
template <class Formula>
constexpr MeanOf8u kMeanOf8u = Formula::kTaps == 3 ? MeanOf8u{5, 7280} : MeanOf8u{0, 2621};

template <class Formula>
void averageColumnsTo8u(const Qel16s* const* pRows, Plane<Qel8u> dst, QelSize size, int, bool bypassesCache) {
    forColumns<Formula::kTaps>(pRows, dst, size, bypassesCache, [](auto d, const auto& column) QEL_INLINE_LAMBDA {
        const hn::RebindToUnsigned<decltype(d)> du;
        const auto sum = hn::Add(hn::BitCast(du, Formula()(column)), hn::Set(du, kMeanOf8u<Formula>.half));
        const auto mean = hn::MulHigh(sum, hn::Set(du, kMeanOf8u<Formula>.factor));
        return hn::DemoteTo(hn::Rebind<Qel8u, decltype(d)>(), hn::BitCast(d, mean));
    });
}

// 8s results come in groups of so many. The samples of a row beyond its last full group truncate where the groups round
// to even: both are documented results, so the size of a group is the same on every machine.
constexpr size_t kGroup8s = 8;

// Sums times a factor of at most 1: rounded to even, saturated. A sum that stands in the upper half of 32 bits needs no
// sign extension, and a quotient has its integer in the lower half, as 32f numbers from 2^23 on do.
template <class D, class V = hn::Vec<D>>
HWY_INLINE hn::Vec<hn::Rebind<Qel8s, D>> rounded(D d, V sum, Qel32f factor) {
    const hn::Repartition<Qel32f, D> df;
    const hn::RebindToSigned<decltype(df)> d32;
    const auto quotient = [=](auto upperHalf) HWY_ATTR {
        const auto product = hn::Mul(hn::ConvertTo(df, upperHalf), hn::Set(df, 0x1p-16F * factor));
        return hn::BitCast(d32, hn::Add(product, hn::Set(df, 0x1.8p23F)));
    };
    const auto sums = hn::BitCast(d32, sum);
    const auto even = quotient(hn::ShiftLeft<16>(sums));
    const auto odd = quotient(hn::AndNot(hn::Set(d32, 0xFFFF), sums));
    const auto both = hn::OddEven(hn::BitCast(d, hn::ShiftLeft<16>(odd)), hn::BitCast(d, even));
    return hn::DemoteTo(hn::Rebind<Qel8s, D>(), both);
}

// Sums times a factor: clamped, truncated.
template <class D, class V = hn::Vec<D>>
HWY_INLINE hn::Vec<hn::Rebind<Qel8s, D>> truncated(D, V sum, Qel32f factor) {
    const hn::Rebind<Qel32f, D> df;
    const hn::RebindToSigned<decltype(df)> d32;
    const auto product = hn::Mul(hn::ConvertTo(df, hn::PromoteTo(d32, sum)), hn::Set(df, factor));
    const auto clamped = hn::Min(hn::Max(product, hn::Set(df, -128.0F)), hn::Set(df, 127.0F));
    return hn::DemoteTo(hn::Rebind<Qel8s, D>(), hn::ConvertTo(d32, clamped));
}

// Of each row, the samples from `first` on.
template <class Formula>
HWY_INLINE void truncateFrom(int first, const Qel16s* const* pRows, Plane<Qel8s> dst, QelSize size, int divisor) {
    const Qel32f factor = 1.0F / static_cast<Qel32f>(divisor);
    for (int y = 0; y < size.height; ++y) {
        const SourceRows<Qel16s, Formula::kTaps> rows(pRows + y, size.width);
        Qel8s* const out = dst.row(y);
        const hn::Half<hn::ScalableTag<Qel16s>> half;  // as many sums as a vector has floats
        forVectors(
            half, size_t(size.width),
            [&](auto d, size_t x) HWY_ATTR {
                hn::StoreU(truncated(d, Formula()(rows.at(d, x)), factor), hn::Rebind<Qel8s, decltype(d)>(), out + x);
            },
            size_t(first));
    }
}

template <class Formula>
void truncateColumns(const Qel16s* const* pRows, Plane<Qel8s> dst, QelSize size, int divisor, bool) {
    truncateFrom<Formula>(0, pRows, dst, size, divisor);
}

template <class Formula>
void divideColumns(const Qel16s* const* pRows, Plane<Qel8s> dst, QelSize size, int divisor, bool bypassesCache) {
    const Qel32f factor = 1.0F / static_cast<Qel32f>(divisor);
    forColumns<Formula::kTaps, kGroup8s>(pRows, dst, size, bypassesCache,
                                         [=](auto d, const auto& column)
                                             QEL_INLINE_LAMBDA { return rounded(d, Formula()(column), factor); });
    truncateFrom<Formula>(size.width & -int{kGroup8s}, pRows, dst, size, divisor);
}

}  // namespace

constexpr auto& ownFilterColumnPipeline_16s_C1R_3x3_kerScharr_W7cn = filterColumns<FoldedTaps<kerScharr_3>, Qel16s>;
constexpr auto& ownFilterColumnPipeline_16s_C1R_3x3_kerDx_W7cn = filterColumns<FoldedTaps<kerDx_3>, Qel16s>;
constexpr auto& ownFilterColumnPipeline_16s_C1R_5x5_kerDx_W7cn = filterColumns<FoldedTaps<kerDx_5>, Qel16s>;
constexpr auto& ownFilterColumnPipeline_16s_C1R_3x3_kerDx2_W7cn = filterColumns<FoldedTaps<kerD2x_3>, Qel16s>;
constexpr auto& ownFilterColumnPipeline_16s_C1R_5x5_kerDx2_W7cn = filterColumns<FoldedTaps<kerD2x_5>, Qel16s>;
constexpr auto& ownFilterColumnPipeline_16s_C1R_3x3_kerSobel_W7cn = filterColumns<FoldedTaps<kerSobel_3>, Qel16s>;
constexpr auto& ownFilterColumnPipeline_16s_C1R_5x5_kerSobel_W7cn = filterColumns<FoldedTaps<kerSobel_5>, Qel16s>;
constexpr auto& ownFilterColumnPipeline_16s_C1R_3x3_kerSobelNeg_W7cn =
    filterColumns<Negated<FoldedTaps<kerSobel_3>>, Qel16s>;
constexpr auto& ownFilterColumnPipeline_16s_C1R_5x5_kerSobelNeg_W7cn =
    filterColumns<Negated<FoldedTaps<kerSobel_5>>, Qel16s>;
constexpr auto& ownFilterColumnPipeline_16s_C1R_3x3_kerLaplacian_W7cn = filterColumns<Laplacian3, Qel16s>;
constexpr auto& ownFilterColumnPipeline_16s_C1R_5x5_kerLaplacian_W7cn = filterColumns<Laplacian5, Qel16s>;

constexpr auto& ownFilterColumnPipeline_16s8s_C1R_3x3_kerScharr_W7cn = divideColumns<FoldedTaps<kerScharr_3>>;
constexpr auto& ownFilterColumnPipeline_16s8s_C1R_3x3_kerDx_W7cn = divideColumns<FoldedTaps<kerDx_3>>;
constexpr auto& ownFilterColumnPipeline_16s8s_C1R_5x5_kerDx_W7cn = divideColumns<FoldedTaps<kerDx_5>>;
constexpr auto& ownFilterColumnPipeline_16s8s_C1R_3x3_kerDx2_W7cn = divideColumns<FoldedTaps<kerD2x_3>>;
constexpr auto& ownFilterColumnPipeline_16s8s_C1R_5x5_kerDx2_W7cn = divideColumns<FoldedTaps<kerD2x_5>>;
constexpr auto& ownFilterColumnPipeline_16s8s_C1R_3x3_kerSobel_W7cn = divideColumns<FoldedTaps<kerSobel_3>>;
constexpr auto& ownFilterColumnPipeline_16s8s_C1R_5x5_kerSobel_W7cn = divideColumns<FoldedTaps<kerSobel_5>>;
constexpr auto& ownFilterColumnPipeline_16s8s_C1R_3x3_kerSobelNeg_W7cn = divideColumns<Negated<FoldedTaps<kerSobel_3>>>;
constexpr auto& ownFilterColumnPipeline_16s8s_C1R_5x5_kerSobelNeg_W7cn = divideColumns<Negated<FoldedTaps<kerSobel_5>>>;
constexpr auto& ownFilterColumnPipeline_16s8s_C1R_3x3_kerLaplacian_W7cn = divideColumns<Laplacian3>;
constexpr auto& ownFilterColumnPipeline_16s8s_C1R_5x5_kerLaplacian_W7cn = truncateColumns<Laplacian5>;

constexpr auto& ownFilterColumnPipeline_16s8u_C1R_3x3_kerAvr_W7cn = averageColumnsTo8u<SummedTaps<kerAvr_3>>;
constexpr auto& ownFilterColumnPipeline_16s8u_C1R_5x5_kerAvr_W7cn = averageColumnsTo8u<SummedTaps<kerAvr_5>>;

constexpr auto& ownFilterColumnPipeline_32f_C1R_3x3_kerScharr_W7cn = filterColumns<FoldedTaps<kerScharr_3>, Qel32f>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_3x3_kerDx_W7cn = filterColumns<FoldedTaps<kerDx_3>, Qel32f>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_5x5_kerDx_W7cn = filterColumns<FoldedTaps<kerDx_5>, Qel32f>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_3x3_kerDx2_W7cn = filterColumns<FoldedTaps<kerD2x_3>, Qel32f>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_5x5_kerDx2_W7cn = filterColumns<FoldedTaps<kerD2x_5>, Qel32f>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_3x3_kerSobel_W7cn = filterColumns<FoldedTaps<kerSobel_3>, Qel32f>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_5x5_kerSobel_W7cn = filterColumns<FoldedTaps<kerSobel_5>, Qel32f>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_3x3_kerSobelNeg_W7cn =
    filterColumns<Negated<FoldedTaps<kerSobel_3>>, Qel32f>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_5x5_kerSobelNeg_W7cn =
    filterColumns<Negated<FoldedTaps<kerSobel_5>>, Qel32f>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_3x3_kerLaplacian_W7cn = filterColumns<Laplacian3, Qel32f>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_5x5_kerLaplacian_W7cn = filterColumns<Laplacian5, Qel32f>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_3x3_kerAvr_W7cn = averageColumns<SummedTaps<kerAvr_3>>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_5x5_kerAvr_W7cn = averageColumns<SummedTaps<kerAvr_5>>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownFilterColumnPipeline_16s_C1R_3x3_kerScharr_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s_C1R_3x3_kerDx_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s_C1R_5x5_kerDx_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s_C1R_3x3_kerDx2_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s_C1R_5x5_kerDx2_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s_C1R_3x3_kerSobel_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s_C1R_5x5_kerSobel_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s_C1R_3x3_kerSobelNeg_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s_C1R_5x5_kerSobelNeg_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s_C1R_3x3_kerLaplacian_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s_C1R_5x5_kerLaplacian_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s8s_C1R_3x3_kerScharr_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s8s_C1R_3x3_kerDx_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s8s_C1R_5x5_kerDx_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s8s_C1R_3x3_kerDx2_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s8s_C1R_5x5_kerDx2_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s8s_C1R_3x3_kerSobel_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s8s_C1R_5x5_kerSobel_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s8s_C1R_3x3_kerSobelNeg_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s8s_C1R_5x5_kerSobelNeg_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s8s_C1R_3x3_kerLaplacian_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s8s_C1R_5x5_kerLaplacian_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s8u_C1R_3x3_kerAvr_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_16s8u_C1R_5x5_kerAvr_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_32f_C1R_3x3_kerScharr_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_32f_C1R_3x3_kerDx_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_32f_C1R_5x5_kerDx_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_32f_C1R_3x3_kerDx2_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_32f_C1R_5x5_kerDx2_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_32f_C1R_3x3_kerSobel_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_32f_C1R_5x5_kerSobel_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_32f_C1R_3x3_kerSobelNeg_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_32f_C1R_5x5_kerSobelNeg_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_32f_C1R_3x3_kerLaplacian_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_32f_C1R_5x5_kerLaplacian_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_32f_C1R_3x3_kerAvr_W7cn);
QEL_KERNEL(ownFilterColumnPipeline_32f_C1R_5x5_kerAvr_W7cn);
}  // namespace qel
#endif
