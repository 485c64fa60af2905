#include <algorithm>

#include "filter/border_mode.h"
#include "filter/fixed_kernels.h"

#define HWY_TARGET_INCLUDE "filter/fixed_row_kernels.cpp"
#include "frame/simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

template <class V>
HWY_INLINE V twice(V v) {
    return hn::Add(v, v);
}

template <class V>
HWY_INLINE V times(V v, int factor) {
    const hn::DFromV<V> d;
    return hn::Mul(v, hn::Set(d, static_cast<hn::TFromV<V>>(factor)));
}

// A formula gets the samples of its taps from s(i), i from 0. Of 32f, sums are formed as they are written here.
struct Dx3 {
    static constexpr int kTaps = 3;
    template <class S>
    HWY_INLINE auto operator()(const S& s) const {
        return hn::Sub(s(2), s(0));
    }
};
struct DxNeg3 {
    static constexpr int kTaps = 3;
    template <class S>
    HWY_INLINE auto operator()(const S& s) const {
        return hn::Sub(s(0), s(2));
    }
};
struct DxNeg5 {
    static constexpr int kTaps = 5;
    template <class S>
    HWY_INLINE auto operator()(const S& s) const {
        return hn::Add(hn::Sub(s(0), s(4)), twice(hn::Sub(s(1), s(3))));
    }
};
struct D2x3 {
    static constexpr int kTaps = 3;
    template <class S>
    HWY_INLINE auto operator()(const S& s) const {
        return hn::Sub(hn::Add(s(0), s(2)), twice(s(1)));
    }
};
struct D2x5 {
    static constexpr int kTaps = 5;
    template <class S>
    HWY_INLINE auto operator()(const S& s) const {
        return hn::Sub(hn::Add(s(0), s(4)), twice(s(2)));
    }
};
struct Sobel3 {
    static constexpr int kTaps = 3;
    template <class S>
    HWY_INLINE auto operator()(const S& s) const {
        return hn::Add(hn::Add(s(0), s(2)), twice(s(1)));
    }
};
struct Sobel5 {
    static constexpr int kTaps = 5;
    template <class S>
    HWY_INLINE auto operator()(const S& s) const {
        return hn::Add(hn::Add(hn::Add(s(0), s(4)), times(hn::Add(s(1), s(3)), 4)), times(s(2), 6));
    }
};
struct Scharr3 {
    static constexpr int kTaps = 3;
    template <class S>
    HWY_INLINE auto operator()(const S& s) const {
        return hn::Add(times(hn::Add(s(0), s(2)), 3), times(s(1), 10));
    }
};
struct Avr3 {
    static constexpr int kTaps = 3;
    template <class S>
    HWY_INLINE auto operator()(const S& s) const {
        return hn::Add(hn::Add(s(0), s(1)), s(2));
    }
};
struct Avr5 {
    static constexpr int kTaps = 5;
    template <class S>
    HWY_INLINE auto operator()(const S& s) const {
        return hn::Add(hn::Add(hn::Add(hn::Add(s(0), s(1)), s(2)), s(3)), s(4));
    }
};
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

// Samples from p on as intermediate values.
template <class D, class Src>
HWY_INLINE hn::Vec<D> samples(D d, const Src* p) {
    if constexpr (sizeof(Src) == sizeof(hn::TFromD<D>)) {
        return hn::LoadU(d, p);
    } else {
        return hn::PromoteTo(d, hn::LoadU(hn::Rebind<Src, D>(), p));
    }
}

template <class Formula, class D, class Src>
HWY_INLINE void filterAt(D d, const Src* p, hn::TFromD<D>* out, int second) {
    const auto s = [=](int tap) HWY_ATTR { return samples(d, p + tap); };
    hn::StoreU(Formula()(s), d, out);
    if constexpr (std::is_same_v<Formula, Laplacian3>) hn::StoreU(Formula().second(s), d, out + second);
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

// As forVectors for op that reads one image and writes another: the last vector begins early enough to be whole.
template <class D, class Op>
HWY_INLINE void forOverlappingVectors(D d, size_t count, const Op& op) {
    const size_t lanes = hn::Lanes(d);
    if (count < lanes) return forVectors(d, count, op);
    if (forWholeVectors(d, count, op, 0) != count) op(d, count - lanes);
}

template <class Formula, class Src, class Mid>
void filterRows(const Src* pSrc, int srcStep, Mid* const* pRows, QelSize size, int borderMode, Src borderValue) {
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
        forOverlappingVectors(hn::ScalableTag<Mid>(), size_t(interior), [=](auto d, size_t x) HWY_ATTR {
            filterAt<Formula>(d, p + x, out + kReach + x, second);
        });
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
