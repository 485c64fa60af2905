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

// The results at one end of a row, whose taps reach beyond it. Which samples they meet is the same in every row.
template <class Formula, class Src, class Mid>
class RowEnd {
    static constexpr int kReach = Formula::kTaps / 2;
    static constexpr int kSamples = kReach + Formula::kTaps - 1;

public:
    // The results first .. first + count - 1 of a row of `width`.
    RowEnd(int first, int count, int width, int borderMode, Src borderValue)
        : first_(first), count_(count), borderValue_(borderValue) {
        for (int i = 0; i < kSamples; ++i) index_[i] = extendedIndex(borderMode, first - kReach + i, width);
    }

    HWY_INLINE void filter(const Src* pRow, Mid* out, int second) const {
        const hn::FixedTag<Mid, 1> one;
        for (int i = 0; i < count_; ++i) {
            const auto s = [&](int tap) HWY_ATTR {
                const int index = index_[i + tap];
                return hn::Set(one, static_cast<Mid>(index == kConstantSample ? borderValue_ : pRow[index]));
            };
            out[first_ + i] = hn::GetLane(Formula()(s));
            if constexpr (std::is_same_v<Formula, Laplacian3>)
                out[first_ + i + second] = hn::GetLane(Formula().second(s));
        }
    }

private:
    int first_;
    int count_;
    Src borderValue_;
    int index_[kSamples];
};

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

// How far ahead the source is asked for: about a turn on long rows.
constexpr int kBytesAhead = 4096;

// Results whose samples are the `count` ones from p on and the taps' reach behind them.
template <class Formula, bool kAhead, class Src, class Mid>
HWY_INLINE void filterInterior(const Src* p, Mid* out, size_t count, int second) {
    constexpr size_t kVectors = sizeof(Src) == sizeof(Qel32f) ? 2 : 1;
    [[maybe_unused]] const size_t samples = count + Formula::kTaps - 1;
    const auto op = [=](auto d, size_t x, auto vectors) QEL_INLINE_LAMBDA {
        using D = decltype(d);
        if constexpr (kAhead) hwy::Prefetch(reinterpret_cast<const char*>(p + x) + kBytesAhead);
#if HWY_TARGET <= HWY_AVX3
        if constexpr (vectors == 2) {
            if (x + Joined<D>::samplesRead(Formula::kTaps, vectors) <= samples)
                return filterAt<Formula>(vectors, d, Joined<D>{p + x}, out + x, second);
        }
#endif
        filterAt<Formula>(vectors, d, Loaded<D, Src>{p + x}, out + x, second);
    };
    const hn::ScalableTag<Mid> d;
    forOverlapping(Vectors<kVectors>(), d, out, count, op,
                   [&]() HWY_ATTR { forFew(hn::Half<decltype(d)>(), out, count, op); });
}

template <class Formula, class Src, class Mid>
void filterRows(const Src* pSrc, int srcStep, Mid* const* pRows, QelSize size, int borderMode, Src borderValue,
                Access access) {
    constexpr int kReach = Formula::kTaps / 2;
    const int second = intermediateStride(size.width);
    const int left = HWY_MIN(kReach, size.width);
    const int right = HWY_MIN(kReach, size.width - left);
    const int interior = size.width - left - right;
    const RowEnd<Formula, Src, Mid> leftEnd(0, left, size.width, borderMode, borderValue);
    const RowEnd<Formula, Src, Mid> rightEnd(size.width - right, right, size.width, borderMode, borderValue);

    for (int y = 0; y < size.height; ++y) {
        const Src* p = row(pSrc, srcStep, y);
        Mid* out = pRows[y];
        leftEnd.filter(p, out, second);
        if (interior > 0 && access == Access::kCached)
            filterInterior<Formula, false>(p, out + kReach, size_t(interior), second);
        else if (interior > 0)
            filterInterior<Formula, true>(p, out + kReach, size_t(interior), second);
        rightEnd.filter(p, out, second);
    }
}

}  // namespace

constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx_W7 = filterRows<Dx3, Qel8u, Qel16s>;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerScharr_W7 = filterRows<Scharr3, Qel8u, Qel16s>;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDxNeg_W7 = filterRows<DxNeg3, Qel8u, Qel16s>;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDxNeg_W7 = filterRows<DxNeg5, Qel8u, Qel16s>;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx2_W7 = filterRows<D2x3, Qel8u, Qel16s>;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDx2_W7 = filterRows<D2x5, Qel8u, Qel16s>;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerSobel_W7 = filterRows<Sobel3, Qel8u, Qel16s>;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerSobel_W7 = filterRows<Sobel5, Qel8u, Qel16s>;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerAvr_W7 = filterRows<Avr3, Qel8u, Qel16s>;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerAvr_W7 = filterRows<Avr5, Qel8u, Qel16s>;
constexpr auto& ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerLaplacian_W7 = filterRows<Laplacian3, Qel8u, Qel16s>;

constexpr auto& ownFilterRowBorderPipeline_32f_C1R_3x3_kerDx_W7 = filterRows<Dx3, Qel32f, Qel32f>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_3x3_kerScharr_W7 = filterRows<Scharr3, Qel32f, Qel32f>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_3x3_kerDxNeg_W7 = filterRows<DxNeg3, Qel32f, Qel32f>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_5x5_kerDxNeg_W7 = filterRows<DxNeg5, Qel32f, Qel32f>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_3x3_kerDx2_W7 = filterRows<D2x3, Qel32f, Qel32f>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_5x5_kerDx2_W7 = filterRows<D2x5, Qel32f, Qel32f>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_3x3_kerSobel_W7 = filterRows<Sobel3, Qel32f, Qel32f>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_5x5_kerSobel_W7 = filterRows<Sobel5, Qel32f, Qel32f>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_3x3_kerAvr_W7 = filterRows<Avr3, Qel32f, Qel32f>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_5x5_kerAvr_W7 = filterRows<Avr5, Qel32f, Qel32f>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_3x3_kerLaplacian_W7 = filterRows<Laplacian3, Qel32f, Qel32f>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerScharr_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDxNeg_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDxNeg_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx2_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDx2_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerSobel_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerSobel_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerAvr_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerAvr_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerLaplacian_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_3x3_kerDx_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_3x3_kerScharr_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_3x3_kerDxNeg_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_5x5_kerDxNeg_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_3x3_kerDx2_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_5x5_kerDx2_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_3x3_kerSobel_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_5x5_kerSobel_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_3x3_kerAvr_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_5x5_kerAvr_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_3x3_kerLaplacian_W7);
}  // namespace qel
#endif
