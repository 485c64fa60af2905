#include <algorithm>

#include "filter/border_mode.h"
#include "filter/fixed_kernels.h"

#define HWY_TARGET_INCLUDE "filter/fixed_row_kernels.cpp"
#include "filter/fixed_formulas-inl.h"
#include "filter/taps-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// The row stage of the Laplacian gives two values: the neighbours' sum, and eight times the sample itself.
struct Laplacian3 {
    static constexpr int kTaps = 3;
    template <class S>
    HWY_INLINE auto operator()(const S& s) const {
        return hn::Add(s(0), s(2));
    }
    template <class S>
    HWY_INLINE auto second(const S& s) const {
        return times(s(1), 8);
    }
};

// n vectors of results from the samples s. All are formed before the first is stored.
template <class Formula, size_t n, class D, class Samples>
HWY_INLINE void filterAt(Vectors<n> vectors, D d, const Samples& s, hn::TFromD<D>* out, int second) {
    const auto storeAll = [&](const auto& sum, hn::TFromD<D>* p) QEL_INLINE_LAMBDA {
        hn::Vec<D> sums[n];
        forEachVector(vectors, [&](size_t v) HWY_ATTR { sums[v] = sum(s.vector(v)); });
        forEachVector(vectors, [&](size_t v) HWY_ATTR { hn::StoreU(sums[v], d, p + v * hn::Lanes(d)); });
    };
    storeAll(Formula(), out);
    if constexpr (std::is_same_v<Formula, Laplacian3>)
        storeAll([](const auto& one) QEL_INLINE_LAMBDA { return Formula().second(one); }, out + second);
}

// The result at `out` from the samples s(tap) of single taps.
template <class Formula, class Mid, class Samples>
HWY_INLINE void filterOne(const Samples& s, Mid* out, int second) {
    const hn::FixedTag<Mid, 1> one;
    const auto sample = [&](int tap) HWY_ATTR { return hn::Set(one, static_cast<Mid>(s(tap))); };
    *out = hn::GetLane(Formula()(sample));
    if constexpr (std::is_same_v<Formula, Laplacian3>) out[second] = hn::GetLane(Formula().second(sample));
}

// A row that is narrower than the kernel.
template <class Formula, class Src, class Mid>
HWY_NOINLINE void filterNarrow(const Src* p, Mid* out, int width, int borderMode, Src borderValue) {
    for (int x = 0; x < width; ++x) {
        const auto s = [&](int tap) HWY_ATTR {
            const int index = extendedIndex(borderMode, x - Formula::kTaps / 2 + tap, width);
            return index == kConstantSample ? borderValue : p[index];
        };
        filterOne<Formula>(s, out + x, intermediateStride(width));
    }
}

// As forOverlapping by single vectors, halved until the results fill one.
template <class D, class Op>
HWY_INLINE void forFew(D d, const hn::TFromD<D>* out, size_t count, const Op& op) {
    if constexpr (hn::MaxLanes(d) > 4) {
        forOverlapping(Vectors<1>(), d, out, count, op,
                       [&]() HWY_ATTR { forFew(hn::Half<decltype(d)>(), out, count, op); });
    } else {
        forVectors(d, count, [&](auto part, size_t x) HWY_ATTR { op(part, x, Vectors<1>()); });
    }
}

// The results of a row whose samples all lie in it.
template <class Formula, bool kAhead, class Src, class Mid>
HWY_INLINE void filterInterior(const Src* p, Mid* out, size_t count, int second,
                               [[maybe_unused]] std::ptrdiff_t bytesAhead) {
    constexpr size_t kVectors = sizeof(Src) == sizeof(Qel32f) ? 2 : 1;
    const hn::ScalableTag<Mid> d;
    const auto at = [=](auto dx, const auto& samples, size_t x, auto vectors) QEL_INLINE_LAMBDA {
        if constexpr (kAhead) hwy::Prefetch(reinterpret_cast<const char*>(p + x) + bytesAhead);
        filterAt<Formula>(vectors, dx, samples, out + x, second);
    };
    const auto loaded = [=](auto dx, size_t x, auto vectors)
                            QEL_INLINE_LAMBDA { at(dx, Loaded<decltype(dx), Src>{p + x}, x, vectors); };
    const auto overlapping = [=]() QEL_INLINE_LAMBDA {
        forOverlapping(Vectors<kVectors>(), d, out, count, loaded,
                       [=]() HWY_ATTR { forFew(hn::Half<decltype(d)>(), out, count, loaded); });
    };
#if HWY_TARGET <= HWY_AVX3
    if constexpr (std::is_same_v<Src, Qel32f>) {
        const auto walking = [=](const auto& samples, size_t x, auto vectors)
                                 QEL_INLINE_LAMBDA { at(d, samples, x, vectors); };
        return forWalking<Formula::kTaps>(d, p, out, count, walking, overlapping);
    }
#endif
    overlapping();
}

template <class Formula, bool kAhead, class Src, class Mid>
HWY_NOINLINE void filterInteriors(const Src* pSrc, int srcStep, Mid* const* pRows, int first, QelSize size, int second,
                                  std::ptrdiff_t bytesAhead) {
    for (int y = 0; y < size.height; ++y)
        filterInterior<Formula, kAhead>(row(pSrc, srcStep, y), pRows[y] + first, size_t(size.width), second,
                                        bytesAhead);
}

template <class Formula, int kBorderMode, class Src, class Mid>
void filterRows(const Src* pSrc, int srcStep, Mid* const* pRows, QelSize size, Beside beside, Src borderValue,
                std::ptrdiff_t bytesAhead) {
    constexpr int kReach = Formula::kTaps / 2;
    const int second = intermediateStride(size.width);
    const int rowWidth = beside.before + size.width + beside.behind;
    for (int y = 0; y < size.height; ++y) {
        const Src* const p = row(pSrc, srcStep, y) - beside.before;
        Mid* const out = pRows[y];
        const auto endResult = [=](int i, const auto& samples) HWY_ATTR {
            const int x = i - beside.before;
            if (x >= 0 && x < size.width) filterOne<Formula>(samples, out + x, second);
        };
        if (rowWidth < Formula::kTaps) {
            filterNarrow<Formula>(p, out, rowWidth, kBorderMode, borderValue);
        } else {
            forEnds<Formula::kTaps, kBorderMode>(p, rowWidth, borderValue, endResult);
        }
    }
    const int first = HWY_MAX(kReach - beside.before, 0);
    const int count = size.width - HWY_MAX(kReach - beside.behind, 0) - first;
    if (count <= 0) return;
    const Src* const samples = pSrc + (first - kReach);
    const auto filter =
        bytesAhead == 0 ? filterInteriors<Formula, false, Src, Mid> : filterInteriors<Formula, true, Src, Mid>;
    filter(samples, srcStep, pRows, first, {count, size.height}, second, bytesAhead);
}

}  // namespace

// The routines of a kernel, one for each border mode. A border of one sample is the same whether the edge sample is
// replicated or mirrored.
#define ROWS_3x3(name, Formula, Src, Mid)                                            \
    constexpr auto& name##_Const_W7 = filterRows<Formula, qelBorderConst, Src, Mid>; \
    constexpr auto& name##_Repl_W7 = filterRows<Formula, qelBorderRepl, Src, Mid>;   \
    constexpr auto& name##_Wrap_W7 = filterRows<Formula, qelBorderWrap, Src, Mid>;   \
    constexpr auto& name##_Mirr_W7 = filterRows<Formula, qelBorderMirr, Src, Mid>
#define ROWS_5x5(name, Formula, Src, Mid) \
    ROWS_3x3(name, Formula, Src, Mid);    \
    constexpr auto& name##_MirrR_W7 = filterRows<Formula, qelBorderMirrR, Src, Mid>

ROWS_3x3(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx, Dx3, Qel8u, Qel16s);
ROWS_3x3(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerScharr, Scharr3, Qel8u, Qel16s);
ROWS_3x3(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDxNeg, DxNeg3, Qel8u, Qel16s);
ROWS_5x5(ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDxNeg, DxNeg5, Qel8u, Qel16s);
ROWS_3x3(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx2, D2x3, Qel8u, Qel16s);
ROWS_5x5(ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDx2, D2x5, Qel8u, Qel16s);
ROWS_3x3(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerSobel, Sobel3, Qel8u, Qel16s);
ROWS_5x5(ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerSobel, Sobel5, Qel8u, Qel16s);
ROWS_3x3(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerAvr, Avr3, Qel8u, Qel16s);
ROWS_5x5(ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerAvr, Avr5, Qel8u, Qel16s);
ROWS_3x3(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerLaplacian, Laplacian3, Qel8u, Qel16s);

ROWS_3x3(ownFilterRowBorderPipeline_32f_C1R_3x3_kerDx, Dx3, Qel32f, Qel32f);
ROWS_3x3(ownFilterRowBorderPipeline_32f_C1R_3x3_kerScharr, Scharr3, Qel32f, Qel32f);
ROWS_3x3(ownFilterRowBorderPipeline_32f_C1R_3x3_kerDxNeg, DxNeg3, Qel32f, Qel32f);
ROWS_5x5(ownFilterRowBorderPipeline_32f_C1R_5x5_kerDxNeg, DxNeg5, Qel32f, Qel32f);
ROWS_3x3(ownFilterRowBorderPipeline_32f_C1R_3x3_kerDx2, D2x3, Qel32f, Qel32f);
ROWS_5x5(ownFilterRowBorderPipeline_32f_C1R_5x5_kerDx2, D2x5, Qel32f, Qel32f);
ROWS_3x3(ownFilterRowBorderPipeline_32f_C1R_3x3_kerSobel, Sobel3, Qel32f, Qel32f);
ROWS_5x5(ownFilterRowBorderPipeline_32f_C1R_5x5_kerSobel, Sobel5, Qel32f, Qel32f);
ROWS_3x3(ownFilterRowBorderPipeline_32f_C1R_3x3_kerAvr, Avr3, Qel32f, Qel32f);
ROWS_5x5(ownFilterRowBorderPipeline_32f_C1R_5x5_kerAvr, Avr5, Qel32f, Qel32f);
ROWS_3x3(ownFilterRowBorderPipeline_32f_C1R_3x3_kerLaplacian, Laplacian3, Qel32f, Qel32f);

#undef ROWS_5x5
#undef ROWS_3x3

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
namespace {

// A kernel's routines by border mode.
#define TABLE(table, Row, name, MirrR)                                                                                \
    HWY_EXPORT(name##_Const_W7);                                                                                      \
    HWY_EXPORT(name##_Repl_W7);                                                                                       \
    HWY_EXPORT(name##_Wrap_W7);                                                                                       \
    HWY_EXPORT(name##_Mirr_W7);                                                                                       \
    constinit const Row table[] = {Row(HWY_DISPATCH_TABLE(name##_Const_W7)), Row(HWY_DISPATCH_TABLE(name##_Repl_W7)), \
                                   Row(HWY_DISPATCH_TABLE(name##_Wrap_W7)), Row(HWY_DISPATCH_TABLE(name##_Mirr_W7)),  \
                                   Row(HWY_DISPATCH_TABLE(name##_##MirrR##_W7))}
#define TABLE_3x3(table, Row, name) TABLE(table, Row, name, Repl)
#define TABLE_5x5(table, Row, name) \
    HWY_EXPORT(name##_MirrR_W7);    \
    TABLE(table, Row, name, MirrR)

TABLE_3x3(owntabRowDx_3x3_8u16s, Row8u16s, ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx);
TABLE_3x3(owntabRowScharr_3x3_8u16s, Row8u16s, ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerScharr);
TABLE_3x3(owntabRowDxNeg_3x3_8u16s, Row8u16s, ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDxNeg);
TABLE_5x5(owntabRowDxNeg_5x5_8u16s, Row8u16s, ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDxNeg);
TABLE_3x3(owntabRowDx2_3x3_8u16s, Row8u16s, ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx2);
TABLE_5x5(owntabRowDx2_5x5_8u16s, Row8u16s, ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDx2);
TABLE_3x3(owntabRowSobel_3x3_8u16s, Row8u16s, ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerSobel);
TABLE_5x5(owntabRowSobel_5x5_8u16s, Row8u16s, ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerSobel);
TABLE_3x3(owntabRowAvr_3x3_8u16s, Row8u16s, ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerAvr);
TABLE_5x5(owntabRowAvr_5x5_8u16s, Row8u16s, ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerAvr);
TABLE_3x3(owntabRowLaplacian_3x3_8u16s, Row8u16s, ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerLaplacian);

TABLE_3x3(owntabRowDx_3x3_32f, Row32f, ownFilterRowBorderPipeline_32f_C1R_3x3_kerDx);
TABLE_3x3(owntabRowScharr_3x3_32f, Row32f, ownFilterRowBorderPipeline_32f_C1R_3x3_kerScharr);
TABLE_3x3(owntabRowDxNeg_3x3_32f, Row32f, ownFilterRowBorderPipeline_32f_C1R_3x3_kerDxNeg);
TABLE_5x5(owntabRowDxNeg_5x5_32f, Row32f, ownFilterRowBorderPipeline_32f_C1R_5x5_kerDxNeg);
TABLE_3x3(owntabRowDx2_3x3_32f, Row32f, ownFilterRowBorderPipeline_32f_C1R_3x3_kerDx2);
TABLE_5x5(owntabRowDx2_5x5_32f, Row32f, ownFilterRowBorderPipeline_32f_C1R_5x5_kerDx2);
TABLE_3x3(owntabRowSobel_3x3_32f, Row32f, ownFilterRowBorderPipeline_32f_C1R_3x3_kerSobel);
TABLE_5x5(owntabRowSobel_5x5_32f, Row32f, ownFilterRowBorderPipeline_32f_C1R_5x5_kerSobel);
TABLE_3x3(owntabRowAvr_3x3_32f, Row32f, ownFilterRowBorderPipeline_32f_C1R_3x3_kerAvr);
TABLE_5x5(owntabRowAvr_5x5_32f, Row32f, ownFilterRowBorderPipeline_32f_C1R_5x5_kerAvr);
TABLE_3x3(owntabRowLaplacian_3x3_32f, Row32f, ownFilterRowBorderPipeline_32f_C1R_3x3_kerLaplacian);

#undef TABLE_5x5
#undef TABLE_3x3
#undef TABLE

}  // namespace

const Row8u16s* const owntabRow_8u16s[] = {
    owntabRowDx_3x3_8u16s,  owntabRowScharr_3x3_8u16s, owntabRowDxNeg_3x3_8u16s,    owntabRowDxNeg_5x5_8u16s,
    owntabRowDx2_3x3_8u16s, owntabRowDx2_5x5_8u16s,    owntabRowSobel_3x3_8u16s,    owntabRowSobel_5x5_8u16s,
    owntabRowAvr_3x3_8u16s, owntabRowAvr_5x5_8u16s,    owntabRowLaplacian_3x3_8u16s};
const Row32f* const owntabRow_32f[] = {owntabRowDx_3x3_32f,    owntabRowScharr_3x3_32f,   owntabRowDxNeg_3x3_32f,
                                       owntabRowDxNeg_5x5_32f, owntabRowDx2_3x3_32f,      owntabRowDx2_5x5_32f,
                                       owntabRowSobel_3x3_32f, owntabRowSobel_5x5_32f,    owntabRowAvr_3x3_32f,
                                       owntabRowAvr_5x5_32f,   owntabRowLaplacian_3x3_32f};

}  // namespace qel
#endif
