#include <type_traits>

#include "feature/eigen_kernels.h"

#define HWY_TARGET_INCLUDE "feature/eigen_row_kernels.cpp"
#include "filter/fixed_formulas-inl.h"
#include "filter/taps-inl.h"
#include "frame/simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// The two filters of a pair of derivatives: dx is Slope along rows, then Smooth down the columns; dy is Smooth along
// rows, then SlopeDown.
struct Sobel3 {
    using Slope = FoldedTaps<kerDxNeg_3>;
    using Smooth = FoldedTaps<kerSobel_3>;
    using SlopeDown = FoldedTaps<kerDx_3>;
};
struct Sobel5 {
    using Slope = FoldedTaps<kerDxNeg_5>;
    using Smooth = FoldedTaps<kerSobel_5>;
    using SlopeDown = FoldedTaps<kerDx_5>;
};
struct Scharr3 {
    using Slope = FoldedTaps<kerDx_3>;
    using Smooth = FoldedTaps<kerScharr_3>;
    using SlopeDown = FoldedTaps<kerDx_3>;
};

// The samples of kTaps rows, from that of the first tap on.
template <class D, class Src, int kTaps>
struct RowsOfSamples {
    const Src* const (&rows)[kTaps];
    size_t x;

    template <int j>
    HWY_INLINE Loaded<D, Src> operator()(Tap<j>) const {
        return {rows[j] + x};
    }
};

// Those around a pixel x near an end of the rows.
template <class D, class Src, int kTaps>
struct RowsAtEnds {
    const Src* const (&rows)[kTaps];
    int x;
    int width;

    struct Samples {
        const Src* row;
        int x;
        int width;

        HWY_INLINE hn::Vec<D> operator()(int tap) const {
            const int at = HWY_MAX(0, HWY_MIN(x + tap - kTaps / 2, width - 1));
            return hn::Set(D(), static_cast<hn::TFromD<D>>(row[at]));
        }
    };
    template <int j>
    HWY_INLINE Samples operator()(Tap<j>) const {
        return {rows[j], x, width};
    }
};

// What a formula along rows makes of each of them, for a formula down the columns.
template <class Formula, class Rows>
struct Along {
    const Rows& rows;
    template <int j>
    HWY_INLINE auto operator()(Tap<j> row) const {
        return Formula()(rows(row));
    }
};

template <class D>
HWY_INLINE void storeFloats(D d, hn::Vec<D> v, Qel32f* out) {
    if constexpr (std::is_same_v<hn::TFromD<D>, Qel32f>) {
        hn::StoreU(v, d, out);
    } else if constexpr (hn::MaxLanes(d) == 1) {
        const hn::Rebind<int32_t, D> d32;
        const hn::Rebind<Qel32f, D> df;
        hn::StoreU(hn::ConvertTo(df, hn::PromoteTo(d32, v)), df, out);
    } else {
        const hn::Half<D> half;
        const hn::Rebind<int32_t, decltype(half)> d32;
        const hn::Rebind<Qel32f, decltype(half)> df;
        hn::StoreU(hn::ConvertTo(df, hn::PromoteTo(d32, hn::LowerHalf(half, v))), df, out);
        hn::StoreU(hn::ConvertTo(df, hn::PromoteTo(d32, hn::UpperHalf(half, v))), df, out + hn::Lanes(half));
    }
}

template <class Masks, class D, class Rows>
HWY_INLINE void storeDerivatives(D d, const Rows& rows, const DerivativeRows& out, size_t x) {
    using Smooth = typename Masks::Smooth;
    storeFloats(d, Smooth()(Along<typename Masks::Slope, Rows>{rows}), out.dx + x);
    storeFloats(d, typename Masks::SlopeDown()(Along<Smooth, Rows>{rows}), out.dy + x);
}

// Derivatives of 8u are 16s numbers until they are stored.
template <class Masks, class Src>
HWY_NOINLINE void derive(const Src* const* pRows, int width, const DerivativeRows& out) {
    constexpr int kTaps = Masks::Smooth::kTaps;
    constexpr int kReach = kTaps / 2;
    using Mid = std::conditional_t<sizeof(Src) == 1, Qel16s, Qel32f>;
    const Src* rows[kTaps];
#pragma GCC unroll 5
    for (int j = 0; j < kTaps; ++j) rows[j] = pRows[j];
    const DerivativeRows to = out;

    if (width > 2 * kReach) {
        forOverlappingVectors(hn::ScalableTag<Mid>(), to.dx + kReach, size_t(width - 2 * kReach),
                              [&](auto d, size_t x) QEL_INLINE_LAMBDA {
                                  const RowsOfSamples<decltype(d), Src, kTaps> samples = {rows, x};
                                  storeDerivatives<Masks>(d, samples, to, x + kReach);
                              });
    }
    const hn::FixedTag<Mid, 1> one;
    for (int x = 0; x < width; ++x) {
        if (x == kReach && width > 2 * kReach) x = width - kReach;
        const RowsAtEnds<decltype(one), Src, kTaps> samples = {rows, x, width};
        storeDerivatives<Masks>(one, samples, to, size_t(x));
    }
}

// Both derivatives beyond the ends are those at the ends.
HWY_INLINE void extend(Qel32f* p, int width, int reach) {
    for (int i = 0; i < reach; ++i) {
        p[-1 - i] = p[0];
        p[width + i] = p[width - 1];
    }
}

// The products of the samples from p and q on.
template <class D>
struct Products {
    const Qel32f* p;
    const Qel32f* q;
    template <int i>
    HWY_INLINE hn::Vec<D> operator()(Tap<i>) const {
        return hn::Mul(hn::LoadU(D(), p + i), hn::LoadU(D(), q + i));
    }
};

template <int kTaps>
HWY_NOINLINE void sumProducts(const DerivativeRows& derivatives, Qel32f* pSums, int width) {
    const int stride = gradientStride(width);
    const Qel32f* const pDx = derivatives.dx - kTaps / 2;
    const Qel32f* const pDy = derivatives.dy - kTaps / 2;
    forVectors(hn::ScalableTag<Qel32f>(), size_t(width), [=](auto d, size_t x) QEL_INLINE_LAMBDA {
        using Terms = Products<decltype(d)>;
        const auto dxx = InTapOrder<kTaps>::sum(Terms{pDx + x, pDx + x});
        const auto dxy = InTapOrder<kTaps>::sum(Terms{pDx + x, pDy + x});
        const auto dyy = InTapOrder<kTaps>::sum(Terms{pDy + x, pDy + x});
        hn::StoreU(dxx, d, pSums + x);
        hn::StoreU(dxy, d, pSums + stride + x);
        hn::StoreU(dyy, d, pSums + 2 * std::ptrdiff_t{stride} + x);
    });
}

template <class Src>
void gradientSums(const Src* const* pRows, Qel32f* pSums, int width, const EigenForm& form,
                  const DerivativeRows& derivatives) {
    if (form.kernType == kScharr) {
        derive<Scharr3>(pRows, width, derivatives);
    } else if (form.apertureSize == 3) {
        derive<Sobel3>(pRows, width, derivatives);
    } else {
        derive<Sobel5>(pRows, width, derivatives);
    }
    extend(derivatives.dx, width, form.avgWindow / 2);
    extend(derivatives.dy, width, form.avgWindow / 2);
    form.avgWindow == 3 ? sumProducts<3>(derivatives, pSums, width) : sumProducts<5>(derivatives, pSums, width);
}

}  // namespace

constexpr auto& ownMinEigenVal_16s32f_C1R_W7 = gradientSums<Qel8u>;
constexpr auto& ownMinEigenVal_32f_C1R_W7 = gradientSums<Qel32f>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownMinEigenVal_16s32f_C1R_W7);
QEL_KERNEL(ownMinEigenVal_32f_C1R_W7);
}  // namespace qel
#endif
