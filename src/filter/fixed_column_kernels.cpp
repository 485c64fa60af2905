#include <type_traits>

#include "filter/fixed_kernels.h"

#define HWY_TARGET_INCLUDE "filter/fixed_column_kernels.cpp"
#include "filter/fixed_formulas-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// Rows are two wide: r gives the sums of neighbours, r.second eight times the sample itself.
struct Laplacian3 {
    static constexpr int kTaps = 3;
    template <class R>
    HWY_INLINE auto operator()(const R& r) const {
        return hn::Sub(twice(hn::Add(r(0), r(2))), r.second(1));
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
};

// The samples of the taps' rows at x.
template <class D>
struct Column {
    using T = hn::TFromD<D>;
    const T* const* rows;
    const T* const* secondHalves;
    size_t x;

    HWY_INLINE hn::Vec<D> operator()(int tap) const { return hn::LoadU(D(), rows[tap] + x); }
    HWY_INLINE hn::Vec<D> second(int tap) const { return hn::LoadU(D(), secondHalves[tap] + x); }
};

// Asks for the lines that the next stores into kRows rows will fill.
template <int kRows, class Dst>
HWY_INLINE void prefetchForStores(Dst* out, int dstStep) {
    constexpr int kBytesAhead = 1024;
#pragma GCC unroll 4
    for (int i = 0; i < kRows; ++i) hwy::Prefetch(reinterpret_cast<const char*>(row(out, dstStep, i)) + kBytesAhead);
}

// Asks for bytes of the source that the next turn begins with, while this one has little to wait for. 32f images keep
// the memory busy throughout.
template <int kRows, class Mid>
HWY_INLINE void prefetchNextTurn(const NextRows& next, int y, size_t x) {
    if constexpr (sizeof(Mid) == sizeof(Qel16s)) {
#pragma GCC unroll 4
        for (int i = 0; i < kRows; ++i) hwy::Prefetch(row(next.first, next.step, y + i) + x);
    }
}

// A store past the cache where the vector's place is aligned, as in all of a row but its ends.
template <class D, class V = hn::Vec<D>>
HWY_INLINE void streamAligned(V v, D d, hn::TFromD<D>* p) {
    reinterpret_cast<uintptr_t>(p) % sizeof(v) == 0 ? hn::Stream(v, d, p) : hn::StoreU(v, d, p);
}

// Results by op(d, column, out), which gives those at out, of the rows from y on, kRows at once as long as there are as
// many; returns where they end. All kRows are formed before the first is stored. With kOnce, op reads what stands at
// out; else some results are formed twice. Not inlined, because compilers take long for a long function.
template <int kTaps, int kRows, size_t kGroup, Access kAccess, bool kOnce, class D, class Mid, class Dst, class Op>
HWY_NOINLINE int columnRows(D d, const Mid* const* pRows, Dst* pDst, int dstStep, QelSize size, int y, NextRows next,
                            Op op) {
    const size_t count = size_t(size.width) / kGroup * kGroup;
    Dst* out = row(pDst, dstStep, y);
    for (; y + kRows <= size.height; y += kRows, out = row(out, dstStep, kRows)) {
        const SourceRows<Mid, kRows + kTaps - 1> rows(pRows + y, size.width);
        const auto resultsAt = [&](auto dx, size_t x) QEL_INLINE_LAMBDA {
            const hn::Rebind<Dst, decltype(dx)> dOut;
            if constexpr (kAccess == Access::kAhead) prefetchForStores<kRows>(out + x, dstStep);
            if constexpr (kAccess == Access::kStreaming) prefetchNextTurn<kRows, Mid>(next, y, x);
            hn::Vec<decltype(dOut)> results[kRows];
#pragma GCC unroll 4
            for (int i = 0; i < kRows; ++i)
                results[i] = op(dx, Column<decltype(dx)>{rows.first + i, rows.second + i, x}, row(out, dstStep, i) + x);
#pragma GCC unroll 4
            for (int i = 0; i < kRows; ++i) {
                if constexpr (kAccess == Access::kStreaming) {
                    streamAligned(results[i], dOut, row(out, dstStep, i) + x);
                } else {
                    hn::StoreU(results[i], dOut, row(out, dstStep, i) + x);
                }
            }
        };
        if constexpr (kOnce) {
            forVectors(d, count, resultsAt);
        } else {
            const size_t head = kAccess == Access::kStreaming ? lanesBeyondAlignment(d, out) : 0;
            forBlocks(hn::Lanes(d), hn::Lanes(d) - head, count, [&](size_t x) QEL_INLINE_LAMBDA { resultsAt(d, x); });
        }
    }
    return y;
}

// Rows that are formed at once share what is loaded. Their addresses need registers, of which 32-bit programs have few:
// there, that pays on short rows only. Rows that are streamed together are aligned alike.
template <Access kAccess, size_t kVectorBytes>
HWY_INLINE bool rowsShareLoads(int width, int dstStep) {
    if (sizeof(void*) == 4) return width < 128;
    return kAccess != Access::kStreaming || size_t(dstStep) % kVectorBytes == 0;
}

// All rows of results, as far as rows have full groups of samples.
template <int kTaps, size_t kGroup, Access kAccess, bool kOnce, class D, class Mid, class Dst, class Op>
HWY_INLINE void allColumns(D d, const Mid* const* pRows, Dst* pDst, int dstStep, QelSize size, const NextRows& next,
                           const Op& op) {
    int y = 0;
    if (rowsShareLoads<kAccess, sizeof(Dst) * hn::MaxLanes(D())>(size.width, dstStep)) {
        y = columnRows<kTaps, 4, kGroup, kAccess, kOnce>(d, pRows, pDst, dstStep, size, y, next, op);
        if (y < size.height)
            y = columnRows<kTaps, 2, kGroup, kAccess, kOnce>(d, pRows, pDst, dstStep, size, y, next, op);
    }
    if (y < size.height) columnRows<kTaps, 1, kGroup, kAccess, kOnce>(d, pRows, pDst, dstStep, size, y, next, op);
    finishStores<kAccess == Access::kStreaming>();
}

// As allColumns for rows of any width: those that do not fill a vector are left to shorter ones, and at last to single
// samples, which groups never come down to.
template <int kTaps, size_t kGroup, class D, class Mid, class Dst, class Op>
HWY_INLINE void narrowColumns(D d, const Mid* const* pRows, Dst* pDst, int dstStep, QelSize size, const NextRows& next,
                              const Op& op) {
    if (size_t(size.width) >= hn::Lanes(d))
        return allColumns<kTaps, kGroup, Access::kCached, false>(d, pRows, pDst, dstStep, size, next, op);
    constexpr size_t kLanes = hn::MaxLanes(D());
    if constexpr (kLanes > kGroup) {
        using Narrower = std::conditional_t<(kLanes > 4), hn::Half<D>, hn::FixedTag<Mid, 1>>;
        narrowColumns<kTaps, kGroup>(Narrower(), pRows, pDst, dstStep, size, next, op);
    }
}

// As allColumns for rows of any width and either way through the caches.
template <int kTaps, size_t kGroup = 1, class Mid, class Dst, class Op>
HWY_INLINE void forColumns(const Mid* const* pRows, Dst* pDst, int dstStep, QelSize size, Access access,
                           const NextRows& next, const Op& op) {
    const hn::ScalableTag<Mid> d;
    // Shorter vectors cannot bypass the cache.
    constexpr Access kFar = hn::MaxLanes(d) * sizeof(Dst) >= 16 ? Access::kStreaming : Access::kAhead;
    if (access == Access::kCached || size_t(size.width) < hn::Lanes(d)) {
        narrowColumns<kTaps, kGroup>(d, pRows, pDst, dstStep, size, next, op);
    } else if (access == Access::kStreaming) {
        allColumns<kTaps, kGroup, kFar, false>(d, pRows, pDst, dstStep, size, next, op);
    } else {
        allColumns<kTaps, kGroup, Access::kAhead, false>(d, pRows, pDst, dstStep, size, next, op);
    }
}

// The result is the sum itself.
template <class Formula, class T>
void filterColumns(const T* const* pRows, T* pDst, int dstStep, QelSize size, int, Access access,
                   const NextRows& next) {
    forColumns<Formula::kTaps>(pRows, pDst, dstStep, size, access, next,
                               [](auto, const auto& column, const T*) QEL_INLINE_LAMBDA { return Formula()(column); });
}

// The result is added to what the destination holds: the second pass of the 5x5 Laplacian. That is read into the cache,
// so stores do not bypass it.
template <class Formula, class T>
void addColumns(const T* const* pRows, T* pDst, int dstStep, QelSize size, int, Access access, const NextRows& next) {
    const auto add = [](auto d, const auto& column, const T* out)
                         QEL_INLINE_LAMBDA { return hn::Add(hn::LoadU(d, out), Formula()(column)); };
    const hn::ScalableTag<T> d;
    access == Access::kCached
        ? allColumns<Formula::kTaps, 1, Access::kCached, true>(d, pRows, pDst, dstStep, size, next, add)
        : allColumns<Formula::kTaps, 1, Access::kAhead, true>(d, pRows, pDst, dstStep, size, next, add);
}

// The mean of 32f sums, by a factor of single precision.
template <class Formula>
constexpr Qel32f kMeanFactor = Formula::kTaps == 3 ? 0.11111111F : 0.04F;

template <class Formula>
void averageColumns(const Qel32f* const* pRows, Qel32f* pDst, int dstStep, QelSize size, int, Access access,
                    const NextRows& next) {
    forColumns<Formula::kTaps>(pRows, pDst, dstStep, size, access, next,
                               [](auto d, const auto& column, const Qel32f*) QEL_INLINE_LAMBDA {
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
void averageColumnsTo8u(const Qel16s* const* pRows, Qel8u* pDst, int dstStep, QelSize size, int, Access access,
                        const NextRows& next) {
    forColumns<Formula::kTaps>(
        pRows, pDst, dstStep, size, access, next, [](auto d, const auto& column, const Qel8u*) QEL_INLINE_LAMBDA {
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

// A sum times a factor: clamped, truncated.
HWY_INLINE Qel8s truncated(Qel16s sum, Qel32f factor) {
    return static_cast<Qel8s>(HWY_MIN(HWY_MAX(static_cast<Qel32f>(sum) * factor, -128.0F), 127.0F));
}

template <class Formula>
void divideColumns(const Qel16s* const* pRows, Qel8s* pDst, int dstStep, QelSize size, int divisor, Access access,
                   const NextRows& next) {
    const Qel32f factor = 1.0F / static_cast<Qel32f>(divisor);
    forColumns<Formula::kTaps, kGroup8s>(pRows, pDst, dstStep, size, access, next,
                                         [=](auto d, const auto& column, const Qel8s*)
                                             QEL_INLINE_LAMBDA { return rounded(d, Formula()(column), factor); });
    const hn::FixedTag<Qel16s, 1> one;
    for (int y = 0; y < size.height; ++y) {
        const SourceRows<Qel16s, Formula::kTaps> rows(pRows + y, size.width);
        Qel8s* const out = row(pDst, dstStep, y);
        for (size_t x = size_t(size.width) / kGroup8s * kGroup8s; x < size_t(size.width); ++x)
            out[x] = truncated(hn::GetLane(Formula()(Column<decltype(one)>{rows.first, rows.second, x})), factor);
    }
}

void divideRows(const Qel16s* pSrc, int srcStep, Qel8s* pDst, int dstStep, QelSize size, int divisor) {
    const Qel32f factor = 1.0F / static_cast<Qel32f>(divisor);
    for (int y = 0; y < size.height; ++y) {
        const Qel16s* sums = row(pSrc, srcStep, y);
        Qel8s* out = row(pDst, dstStep, y);
        forVectors(hn::ScalableTag<Qel32f>(), size_t(size.width), [=](auto df, size_t x) HWY_ATTR {
            const hn::RebindToSigned<decltype(df)> d32;
            const hn::Rebind<Qel16s, decltype(df)> d16;
            const hn::Rebind<Qel8s, decltype(df)> d8;
            const auto product =
                hn::Mul(hn::ConvertTo(df, hn::PromoteTo(d32, hn::LoadU(d16, sums + x))), hn::Set(df, factor));
            const auto clamped = hn::Min(hn::Max(product, hn::Set(df, -128.0F)), hn::Set(df, 127.0F));
            hn::StoreU(hn::DemoteTo(d8, hn::ConvertTo(d32, clamped)), d8, out + x);
        });
    }
}

}  // namespace

constexpr auto& ownFilterColumnPipeline_16s_C1R_3x3_kerScharr_W7cn = filterColumns<Scharr3, Qel16s>;
constexpr auto& ownFilterColumnPipeline_16s_C1R_3x3_kerDx_W7cn = filterColumns<Dx3, Qel16s>;
constexpr auto& ownFilterColumnPipeline_16s_C1R_3x3_kerSobel_W7cn = filterColumns<Sobel3, Qel16s>;
constexpr auto& ownFilterColumnPipeline_16s_C1R_5x5_kerSobel_W7cn = filterColumns<Sobel5, Qel16s>;
constexpr auto& ownFilterColumnPipeline_16s_C1R_5x5_kerDx_W7cn = filterColumns<Dx5, Qel16s>;
constexpr auto& ownFilterColumnPipeline_16s_C1R_3x3_kerDx2_W7cn = filterColumns<D2x3, Qel16s>;
constexpr auto& ownFilterColumnPipeline_16s_C1R_5x5_kerDx2_W7cn = filterColumns<D2x5, Qel16s>;
constexpr auto& ownFilterColumnPipeline_16s_C1R_3x3_kerLaplacian_W7cn = filterColumns<Laplacian3, Qel16s>;
constexpr auto& ownFilterColumnPipeline_16s_C1R_5x5_kerLaplacian_W7cn = addColumns<Sobel5, Qel16s>;
constexpr auto& ownFilterColumnPipeline_16s_C1R_3x3_kerSobelNeg_W7cn = filterColumns<SobelNeg3, Qel16s>;
constexpr auto& ownFilterColumnPipeline_16s_C1R_5x5_kerSobelNeg_W7cn = filterColumns<SobelNeg5, Qel16s>;

constexpr auto& ownFilterColumnPipeline_16s8s_C1R_3x3_kerScharr_W7cn = divideColumns<Scharr3>;
constexpr auto& ownFilterColumnPipeline_16s8s_C1R_3x3_kerDx_W7cn = divideColumns<Dx3>;
constexpr auto& ownFilterColumnPipeline_16s8s_C1R_3x3_kerSobel_W7cn = divideColumns<Sobel3>;
constexpr auto& ownFilterColumnPipeline_16s8s_C1R_5x5_kerSobel_W7cn = divideColumns<Sobel5>;
constexpr auto& ownFilterColumnPipeline_16s8s_C1R_5x5_kerDx_W7cn = divideColumns<Dx5>;
constexpr auto& ownFilterColumnPipeline_16s8s_C1R_3x3_kerDx2_W7cn = divideColumns<D2x3>;
constexpr auto& ownFilterColumnPipeline_16s8s_C1R_5x5_kerDx2_W7cn = divideColumns<D2x5>;
constexpr auto& ownFilterColumnPipeline_16s8s_C1R_3x3_kerLaplacian_W7cn = divideColumns<Laplacian3>;
constexpr auto& ownFilterColumnPipeline_16s8s_C1R_3x3_kerSobelNeg_W7cn = divideColumns<SobelNeg3>;
constexpr auto& ownFilterColumnPipeline_16s8s_C1R_5x5_kerSobelNeg_W7cn = divideColumns<SobelNeg5>;

constexpr auto& ownFilterColumnPipeline_16s8u_C1R_3x3_kerAvr_W7cn = averageColumnsTo8u<Avr3>;
constexpr auto& ownFilterColumnPipeline_16s8u_C1R_5x5_kerAvr_W7cn = averageColumnsTo8u<Avr5>;

constexpr auto& ownFilterColumnPipeline_32f_C1R_3x3_kerScharr_W7cn = filterColumns<Scharr3, Qel32f>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_3x3_kerDx_W7cn = filterColumns<Dx3, Qel32f>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_3x3_kerSobel_W7cn = filterColumns<Sobel3, Qel32f>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_5x5_kerSobel_W7cn = filterColumns<Sobel5, Qel32f>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_5x5_kerDx_W7cn = filterColumns<Dx5, Qel32f>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_3x3_kerDx2_W7cn = filterColumns<D2x3, Qel32f>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_5x5_kerDx2_W7cn = filterColumns<D2x5, Qel32f>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_3x3_kerLaplacian_W7cn = filterColumns<Laplacian3, Qel32f>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_5x5_kerLaplacian_W7cn = addColumns<Sobel5, Qel32f>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_3x3_kerAvr_W7cn = averageColumns<Avr3>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_5x5_kerAvr_W7cn = averageColumns<Avr5>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_3x3_kerSobelNeg_W7cn = filterColumns<SobelNeg3, Qel32f>;
constexpr auto& ownFilterColumnPipeline_32f_C1R_5x5_kerSobelNeg_W7cn = filterColumns<SobelNeg5, Qel32f>;

constexpr auto& ownDivide_16s8s_C1R_W7 = divideRows;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {

#define COLUMN(name) Kernel(HWY_DISPATCH_TABLE(name))

HWY_EXPORT(ownFilterColumnPipeline_16s_C1R_3x3_kerScharr_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_16s_C1R_3x3_kerDx_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_16s_C1R_3x3_kerSobel_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_16s_C1R_5x5_kerSobel_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_16s_C1R_5x5_kerDx_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_16s_C1R_3x3_kerDx2_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_16s_C1R_5x5_kerDx2_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_16s_C1R_3x3_kerLaplacian_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_16s_C1R_5x5_kerLaplacian_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_16s_C1R_3x3_kerSobelNeg_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_16s_C1R_5x5_kerSobelNeg_W7cn);
// No average ends in 16s or 8s; its entries hold the routine of the same size behind them.
constinit const Column16s owntabColumn_8u16s[] = {
    COLUMN(ownFilterColumnPipeline_16s_C1R_3x3_kerScharr_W7cn),
    COLUMN(ownFilterColumnPipeline_16s_C1R_3x3_kerDx_W7cn),
    COLUMN(ownFilterColumnPipeline_16s_C1R_3x3_kerSobel_W7cn),
    COLUMN(ownFilterColumnPipeline_16s_C1R_5x5_kerSobel_W7cn),
    COLUMN(ownFilterColumnPipeline_16s_C1R_5x5_kerDx_W7cn),
    COLUMN(ownFilterColumnPipeline_16s_C1R_3x3_kerDx2_W7cn),
    COLUMN(ownFilterColumnPipeline_16s_C1R_5x5_kerDx2_W7cn),
    COLUMN(ownFilterColumnPipeline_16s_C1R_3x3_kerLaplacian_W7cn),
    COLUMN(ownFilterColumnPipeline_16s_C1R_5x5_kerLaplacian_W7cn),
    COLUMN(ownFilterColumnPipeline_16s_C1R_3x3_kerSobelNeg_W7cn),
    COLUMN(ownFilterColumnPipeline_16s_C1R_5x5_kerSobelNeg_W7cn),
    COLUMN(ownFilterColumnPipeline_16s_C1R_3x3_kerSobelNeg_W7cn),
    COLUMN(ownFilterColumnPipeline_16s_C1R_5x5_kerSobelNeg_W7cn),
};

HWY_EXPORT(ownFilterColumnPipeline_16s8s_C1R_3x3_kerScharr_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_16s8s_C1R_3x3_kerDx_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_16s8s_C1R_3x3_kerSobel_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_16s8s_C1R_5x5_kerSobel_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_16s8s_C1R_5x5_kerDx_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_16s8s_C1R_3x3_kerDx2_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_16s8s_C1R_5x5_kerDx2_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_16s8s_C1R_3x3_kerLaplacian_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_16s8s_C1R_3x3_kerSobelNeg_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_16s8s_C1R_5x5_kerSobelNeg_W7cn);
// The second pass of the 5x5 Laplacian never ends in 8s; its entry holds the 3x3 form.
constinit const Column16s8s owntabColumn_8u8s[] = {
    COLUMN(ownFilterColumnPipeline_16s8s_C1R_3x3_kerScharr_W7cn),
    COLUMN(ownFilterColumnPipeline_16s8s_C1R_3x3_kerDx_W7cn),
    COLUMN(ownFilterColumnPipeline_16s8s_C1R_3x3_kerSobel_W7cn),
    COLUMN(ownFilterColumnPipeline_16s8s_C1R_5x5_kerSobel_W7cn),
    COLUMN(ownFilterColumnPipeline_16s8s_C1R_5x5_kerDx_W7cn),
    COLUMN(ownFilterColumnPipeline_16s8s_C1R_3x3_kerDx2_W7cn),
    COLUMN(ownFilterColumnPipeline_16s8s_C1R_5x5_kerDx2_W7cn),
    COLUMN(ownFilterColumnPipeline_16s8s_C1R_3x3_kerLaplacian_W7cn),
    COLUMN(ownFilterColumnPipeline_16s8s_C1R_3x3_kerLaplacian_W7cn),
    COLUMN(ownFilterColumnPipeline_16s8s_C1R_3x3_kerSobelNeg_W7cn),
    COLUMN(ownFilterColumnPipeline_16s8s_C1R_5x5_kerSobelNeg_W7cn),
    COLUMN(ownFilterColumnPipeline_16s8s_C1R_3x3_kerSobelNeg_W7cn),
    COLUMN(ownFilterColumnPipeline_16s8s_C1R_5x5_kerSobelNeg_W7cn),
};

HWY_EXPORT(ownFilterColumnPipeline_16s8u_C1R_3x3_kerAvr_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_16s8u_C1R_5x5_kerAvr_W7cn);
constinit const Column16s8u owntabColumn_8u[] = {
    COLUMN(ownFilterColumnPipeline_16s8u_C1R_3x3_kerAvr_W7cn),
    COLUMN(ownFilterColumnPipeline_16s8u_C1R_5x5_kerAvr_W7cn),
};

HWY_EXPORT(ownFilterColumnPipeline_32f_C1R_3x3_kerScharr_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_32f_C1R_3x3_kerDx_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_32f_C1R_3x3_kerSobel_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_32f_C1R_5x5_kerSobel_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_32f_C1R_5x5_kerDx_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_32f_C1R_3x3_kerDx2_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_32f_C1R_5x5_kerDx2_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_32f_C1R_3x3_kerLaplacian_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_32f_C1R_5x5_kerLaplacian_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_32f_C1R_3x3_kerAvr_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_32f_C1R_5x5_kerAvr_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_32f_C1R_3x3_kerSobelNeg_W7cn);
HWY_EXPORT(ownFilterColumnPipeline_32f_C1R_5x5_kerSobelNeg_W7cn);
constinit const Column32f owntabColumn_32f[] = {
    COLUMN(ownFilterColumnPipeline_32f_C1R_3x3_kerScharr_W7cn),
    COLUMN(ownFilterColumnPipeline_32f_C1R_3x3_kerDx_W7cn),
    COLUMN(ownFilterColumnPipeline_32f_C1R_3x3_kerSobel_W7cn),
    COLUMN(ownFilterColumnPipeline_32f_C1R_5x5_kerSobel_W7cn),
    COLUMN(ownFilterColumnPipeline_32f_C1R_5x5_kerDx_W7cn),
    COLUMN(ownFilterColumnPipeline_32f_C1R_3x3_kerDx2_W7cn),
    COLUMN(ownFilterColumnPipeline_32f_C1R_5x5_kerDx2_W7cn),
    COLUMN(ownFilterColumnPipeline_32f_C1R_3x3_kerLaplacian_W7cn),
    COLUMN(ownFilterColumnPipeline_32f_C1R_5x5_kerLaplacian_W7cn),
    COLUMN(ownFilterColumnPipeline_32f_C1R_3x3_kerAvr_W7cn),
    COLUMN(ownFilterColumnPipeline_32f_C1R_5x5_kerAvr_W7cn),
    COLUMN(ownFilterColumnPipeline_32f_C1R_3x3_kerSobelNeg_W7cn),
    COLUMN(ownFilterColumnPipeline_32f_C1R_5x5_kerSobelNeg_W7cn),
};

#undef COLUMN

QEL_KERNEL(ownDivide_16s8s_C1R_W7);

}  // namespace qel
#endif
