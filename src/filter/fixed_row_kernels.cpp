#include "filter/fixed_kernels.h"

#define HWY_TARGET_INCLUDE "filter/fixed_row_kernels.cpp"
#include "filter/fixed_formulas-inl.h"
#include "filter/taps-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

template <class First, class...>
constexpr int kTapsOf = First::kTaps;

// Stores the sums at `out` and, of a row that is two wide, `stride` samples behind it.
template <class... Formulas, class D, class Samples>
HWY_INLINE void storeSums(D d, const Samples& s, hn::TFromD<D>* out, int stride) {
    int half = 0;
    (..., hn::StoreU(Formulas()(s), d, out + stride * half++));
}

// The results of a row whose samples all lie in it.
template <class Src, class Mid, class... Formulas>
HWY_NOINLINE void filterInterior(const Src* p, Mid* out, size_t count, int stride) {
    const hn::ScalableTag<Mid> d;
    const auto overlapping = [=]() QEL_INLINE_LAMBDA {
        forOverlappingVectors(d, out, count, [=](auto dx, size_t x) QEL_INLINE_LAMBDA {
            storeSums<Formulas...>(dx, Loaded<decltype(dx), Src>{p + x}, out + x, stride);
        });
    };
#if HWY_TARGET <= HWY_AVX3
    if constexpr (std::is_same_v<Src, Qel32f>) {
        const auto walking = [=](const auto& samples, size_t x, auto vectors) QEL_INLINE_LAMBDA {
            forEachVector(vectors, [&](size_t v) HWY_ATTR {
                storeSums<Formulas...>(d, samples.vector(v), out + x + v * hn::Lanes(d), stride);
            });
        };
        return forWalking<kTapsOf<Formulas...>>(d, p, out, count, walking, overlapping);
    }
#endif
    overlapping();
}

template <class Src, class Mid, class... Formulas>
void filterRows(Plane<const Src> source, Mid* const* pRows, QelSize size, const Border<Src>& border) {
    constexpr int kReach = kTapsOf<Formulas...> / 2;
    const hn::FixedTag<Mid, 1> one;
    const int stride = intermediateStride(size.width);
    const RowEnds<kReach, Src> ends(border, size.width);
    for (int y = 0; y < size.height; ++y) {
        const Src* const p = source.row(y);
        Mid* const out = pRows[y];
        ends.forEach(p, [=](int x, const auto& samples) HWY_ATTR {
            const auto sample = [=](auto tap) HWY_ATTR { return hn::Set(one, static_cast<Mid>(samples(tap))); };
            storeSums<Formulas...>(one, sample, out + x, stride);
        });
        if (size.width > 2 * kReach)
            filterInterior<Src, Mid, Formulas...>(p, out + kReach, size_t(size.width - 2 * kReach), stride);
    }
}

}  // namespace

constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx_W7 = filterRows<Qel8u, Qel16s, FoldedTaps<kerDx_3>>;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerScharr_W7 =
    filterRows<Qel8u, Qel16s, FoldedTaps<kerScharr_3>>;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDxNeg_W7 =
    filterRows<Qel8u, Qel16s, FoldedTaps<kerDxNeg_3>>;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDxNeg_W7 =
    filterRows<Qel8u, Qel16s, FoldedTaps<kerDxNeg_5>>;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx2_W7 = filterRows<Qel8u, Qel16s, FoldedTaps<kerD2x_3>>;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDx2_W7 = filterRows<Qel8u, Qel16s, FoldedTaps<kerD2x_5>>;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerSobel_W7 =
    filterRows<Qel8u, Qel16s, FoldedTaps<kerSobel_3>>;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerSobel_W7 =
    filterRows<Qel8u, Qel16s, FoldedTaps<kerSobel_5>>;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerAvr_W7 = filterRows<Qel8u, Qel16s, SummedTaps<kerAvr_3>>;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerAvr_W7 = filterRows<Qel8u, Qel16s, SummedTaps<kerAvr_5>>;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerLaplacian_W7 =
    filterRows<Qel8u, Qel16s, FoldedTaps<kerLap_3>, FoldedTaps<kerLapCentre_3>>;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerLaplacian_W7 =
    filterRows<Qel8u, Qel16s, FoldedTaps<kerSobel_5>, FoldedTaps<kerD2x_5>>;

constexpr auto& ownFilterRowBorderPipeline_32f_C1R_3x3_kerDx_W7 = filterRows<Qel32f, Qel32f, FoldedTaps<kerDx_3>>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_3x3_kerScharr_W7 =
    filterRows<Qel32f, Qel32f, FoldedTaps<kerScharr_3>>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_3x3_kerDxNeg_W7 = filterRows<Qel32f, Qel32f, FoldedTaps<kerDxNeg_3>>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_5x5_kerDxNeg_W7 = filterRows<Qel32f, Qel32f, FoldedTaps<kerDxNeg_5>>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_3x3_kerDx2_W7 = filterRows<Qel32f, Qel32f, FoldedTaps<kerD2x_3>>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_5x5_kerDx2_W7 = filterRows<Qel32f, Qel32f, FoldedTaps<kerD2x_5>>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_3x3_kerSobel_W7 = filterRows<Qel32f, Qel32f, FoldedTaps<kerSobel_3>>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_5x5_kerSobel_W7 = filterRows<Qel32f, Qel32f, FoldedTaps<kerSobel_5>>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_3x3_kerAvr_W7 = filterRows<Qel32f, Qel32f, SummedTaps<kerAvr_3>>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_5x5_kerAvr_W7 = filterRows<Qel32f, Qel32f, SummedTaps<kerAvr_5>>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_3x3_kerLaplacian_W7 =
    filterRows<Qel32f, Qel32f, FoldedTaps<kerLap_3>, FoldedTaps<kerLapCentre_3>>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_5x5_kerLaplacian_W7 =
    filterRows<Qel32f, Qel32f, FoldedTaps<kerSobel_5>, FoldedTaps<kerD2x_5>>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
namespace {

// What the kernels of a routine tell. All are equally long.
template <class Src, class Mid, int n, class... More>
constexpr FixedRows<Src, Mid> factsOf(Kernel<FixedRowKernel<Src, Mid>> kernel, const FixedTaps<n>& taps,
                                      const More&... more) {
    return {kernel, n, 1 + sizeof...(more), {taps.sum(), more.sum()...}};
}

}  // namespace

#define ROWS(name, ...) \
    HWY_EXPORT(name);   \
    constinit decltype(name) name = factsOf(Kernel(HWY_DISPATCH_TABLE(name)), __VA_ARGS__)
ROWS(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx_W7, kerDx_3);
ROWS(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerScharr_W7, kerScharr_3);
ROWS(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDxNeg_W7, kerDxNeg_3);
ROWS(ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDxNeg_W7, kerDxNeg_5);
ROWS(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx2_W7, kerD2x_3);
ROWS(ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDx2_W7, kerD2x_5);
ROWS(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerSobel_W7, kerSobel_3);
ROWS(ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerSobel_W7, kerSobel_5);
ROWS(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerAvr_W7, kerAvr_3);
ROWS(ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerAvr_W7, kerAvr_5);
ROWS(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerLaplacian_W7, kerLap_3, kerLapCentre_3);
ROWS(ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerLaplacian_W7, kerSobel_5, kerD2x_5);
ROWS(ownFilterRowBorderPipeline_32f_C1R_3x3_kerDx_W7, kerDx_3);
ROWS(ownFilterRowBorderPipeline_32f_C1R_3x3_kerScharr_W7, kerScharr_3);
ROWS(ownFilterRowBorderPipeline_32f_C1R_3x3_kerDxNeg_W7, kerDxNeg_3);
ROWS(ownFilterRowBorderPipeline_32f_C1R_5x5_kerDxNeg_W7, kerDxNeg_5);
ROWS(ownFilterRowBorderPipeline_32f_C1R_3x3_kerDx2_W7, kerD2x_3);
ROWS(ownFilterRowBorderPipeline_32f_C1R_5x5_kerDx2_W7, kerD2x_5);
ROWS(ownFilterRowBorderPipeline_32f_C1R_3x3_kerSobel_W7, kerSobel_3);
ROWS(ownFilterRowBorderPipeline_32f_C1R_5x5_kerSobel_W7, kerSobel_5);
ROWS(ownFilterRowBorderPipeline_32f_C1R_3x3_kerAvr_W7, kerAvr_3);
ROWS(ownFilterRowBorderPipeline_32f_C1R_5x5_kerAvr_W7, kerAvr_5);
ROWS(ownFilterRowBorderPipeline_32f_C1R_3x3_kerLaplacian_W7, kerLap_3, kerLapCentre_3);
ROWS(ownFilterRowBorderPipeline_32f_C1R_5x5_kerLaplacian_W7, kerSobel_5, kerD2x_5);
#undef ROWS

}  // namespace qel
#endif
