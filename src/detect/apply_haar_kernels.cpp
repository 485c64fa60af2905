// A stage at every pixel that the mask allows. Each pixel's result depends on nothing but that pixel, so pixels are
// taken in lanes wherever two of a block are set, and one by one where a single one is.
#include "detect/apply_haar_kernels.h"

#define HWY_TARGET_INCLUDE "detect/apply_haar_kernels.cpp"
#include "frame/simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// Lanes for any of the 32-bit types. Corners lie anywhere: wider vectors would straddle lines of the cache.
using Lanes = hn::CappedTag<Qel32s, 8>;
using OneLane = hn::CappedTag<Qel32s, 1>;

// Features and comparisons of a form. T is the table's type, N the normaliser's, W that of the stage's numbers.
template <class Table, class Norm, class Number, bool mixed = false, bool firstIsMinusOne = false,
          bool nanIsBelow = false>
struct Form {
    using T = Table;
    using N = Norm;
    using W = Number;
    static constexpr bool kMixed = mixed;
    static constexpr bool kFirstIsMinusOne = firstIsMinusOne;
    static constexpr bool kNaNIsBelow = nanIsBelow;
};
using SingleForm = Form<Qel32f, Qel32f, Qel32f, false, false, true>;
using MinusOneForm = Form<Qel32f, Qel32f, Qel32f, false, true, true>;
using IntegerTableForm = Form<Qel32s, Qel32f, Qel32f>;
using IntegerForm = Form<Qel32s, Qel32s, Qel32s>;
using MixedSingleForm = Form<Qel32f, Qel32f, Qel32f, true>;
using MixedIntegerTableForm = Form<Qel32s, Qel32f, Qel32f, true>;

// Where the pixels of some lanes lie.
template <class F>
struct Place {
    const typename F::T* upright;
    const typename F::T* tilted;
    const typename F::N* norm;
};

// The sum under a rectangle, ready to be weighted.
template <class F, class D>
HWY_INLINE auto rectangleAt(D di, const typename F::T* p, const std::ptrdiff_t* o) {
    const hn::Rebind<typename F::T, D> dt;
    const auto a = hn::LoadU(dt, p + o[0]), b = hn::LoadU(dt, p + o[1]);
    const auto c = hn::LoadU(dt, p + o[2]), d = hn::LoadU(dt, p + o[3]);
    if constexpr (std::is_same_v<typename F::T, Qel32f>) {
        return hn::Add(hn::Sub(hn::Sub(a, b), c), d);
    } else {
        const auto sum = hn::Add(hn::Sub(a, b), hn::Sub(d, c));
        if constexpr (std::is_same_v<typename F::W, Qel32f>) {
            return hn::ConvertTo(hn::Rebind<Qel32f, D>(), sum);
        } else {
            (void)di;
            return sum;
        }
    }
}

// The same with all signs swapped.
template <class D>
HWY_INLINE auto minusRectangleAt(D, const Qel32f* p, const std::ptrdiff_t* o) {
    const hn::Rebind<Qel32f, D> d;
    const auto swapped = hn::Sub(hn::LoadU(d, p + o[1]), hn::LoadU(d, p + o[0]));
    return hn::Sub(hn::Add(swapped, hn::LoadU(d, p + o[2])), hn::LoadU(d, p + o[3]));
}

template <class F, class V>
HWY_INLINE auto isBelow(V a, V b) {
    if constexpr (F::kNaNIsBelow) {
        return hn::Not(hn::Ge(a, b));
    } else {
        return hn::Lt(a, b);
    }
}

// Stage sums of the pixels in kVectors vectors.
template <class F, int kVectors, class D>
class StageSums {
    using W = typename F::W;
    using DW = hn::Rebind<W, D>;
    using V = hn::Vec<DW>;

public:
    HWY_INLINE StageSums(const HaarStage<W>& stage, const Place<F>& place) : stage_(stage), place_(place) {
        for (int i = 0; i < kVectors; ++i) {
            sums_[i] = hn::Zero(DW());
            norms_[i] = hn::LoadU(DW(), place.norm + size_t(i) * hn::Lanes(D()));
        }
        const std::ptrdiff_t* offsets = stage.offsets;
        const W* weights = stage.weights;
        Qel32s c = 0;
        for (; c < stage.numPairs; ++c, offsets += 8, weights += 2) add<2>(c, offsets, weights, 2);
        for (; c < stage.numPairsAndTriples; ++c, offsets += 12, weights += 3) add<3>(c, offsets, weights, 3);
        for (; c < stage.numClassifiers; ++c) {
            const std::ptrdiff_t features = stage.shapes[c] >> 1;
            add<0>(c, offsets, weights, features);
            offsets += 4 * features;
            weights += features;
        }
    }

    HWY_INLINE auto isPassing(int i) const { return hn::Not(isBelow<F>(sums_[i], hn::Set(DW(), stage_.threshold))); }

private:
    // One classifier, of a known number of features or, with kFeatures 0, any.
    template <int kFeatures>
    HWY_INLINE void add(Qel32s c, const std::ptrdiff_t* offsets, const W* weights, std::ptrdiff_t features) {
        const typename F::T* p = place_.upright;
        if constexpr (F::kMixed) {
            if ((stage_.shapes[c] & 1) != 0) p = place_.tilted;
        }
        V f[kVectors];
        for (int i = 0; i < kVectors; ++i) f[i] = first<kFeatures>(p + size_t(i) * hn::Lanes(D()), offsets, weights);
        for (std::ptrdiff_t k = 1; k < (kFeatures == 0 ? features : kFeatures); ++k) {
            const V weight = hn::Set(DW(), weights[k]);
            for (int i = 0; i < kVectors; ++i) {
                const V sum = rectangleAt<F>(D(), p + size_t(i) * hn::Lanes(D()), offsets + 4 * k);
                f[i] = hn::Add(f[i], hn::Mul(sum, weight));
            }
        }
        const V threshold = hn::Set(DW(), stage_.thresholds[c]);
        const V below = hn::Set(DW(), stage_.valuesBelow[c]), above = hn::Set(DW(), stage_.valuesAbove[c]);
        for (int i = 0; i < kVectors; ++i) {
            const auto isLess = isBelow<F>(f[i], hn::Mul(threshold, norms_[i]));
            sums_[i] = hn::Add(sums_[i], hn::IfThenElse(isLess, below, above));
        }
    }

    template <int kFeatures>
    static HWY_INLINE V first(const typename F::T* p, const std::ptrdiff_t* offsets, const W* weights) {
        if constexpr (F::kFirstIsMinusOne && kFeatures != 0) {
            return minusRectangleAt(D(), p, offsets);
        } else {
            return hn::Mul(rectangleAt<F>(D(), p, offsets), hn::Set(DW(), weights[0]));
        }
    }

    const HaarStage<W>& stage_;
    const Place<F>& place_;
    V sums_[kVectors];
    V norms_[kVectors];
};

// How many of four bytes are not zero.
HWY_INLINE int setBytes(const Qel8u* p) {
    uint32_t word;
    hwy::CopyBytes<4>(p, &word);
    const uint32_t high = (word | ((word & 0x7F7F7F7FU) + 0x7F7F7F7FU)) & 0x80808080U;
    return int(((high >> 7) * 0x01010101U) >> 24);
}
template <size_t kCount>
HWY_INLINE int setBytes(const Qel8u* p) {
    int count = 0;
    for (size_t i = 0; i < kCount; i += 4) count += setBytes(p + i);
    return count;
}

// A pixel alone. One that passes keeps the bits of its byte that `kept` has.
template <class F>
HWY_INLINE int applyToPixel(const HaarStage<typename F::W>& stage, const Place<F>& place, Qel8u* mask, Qel8u kept) {
    if (*mask == 0) return 0;
    const StageSums<F, 1, OneLane> sums(stage, place);
    *mask = hn::AllTrue(hn::Rebind<typename F::W, OneLane>(), sums.isPassing(0)) ? Qel8u(*mask & kept) : Qel8u{0};
    return *mask != 0 ? 1 : 0;
}

template <class F>
HWY_INLINE Place<F> pixel(const Place<F>& row, size_t x) {
    return {row.upright + x, F::kMixed ? row.tilted + x : nullptr, row.norm + x};
}

// kVectors vectors of pixels from x on.
template <class F, int kVectors>
HWY_INLINE int applyToBlock(const HaarStage<typename F::W>& stage, const Place<F>& row, Qel8u* mask, size_t x,
                            Qel8u kept) {
    const Lanes di;
    constexpr size_t kLanes = hn::MaxLanes(Lanes()), kPixels = kVectors * kLanes;
    const int set = setBytes<kPixels>(mask + x);
    if (set == 0) return 0;
    if (set == 1) {
        size_t only = x;
        while (mask[only] == 0) ++only;
        return applyToPixel<F>(stage, pixel(row, only), mask + only, kept);
    }
    const Place<F> place = pixel(row, x);
    const StageSums<F, kVectors, Lanes> sums(stage, place);
    const hn::Rebind<Qel8s, Lanes> d8;
    const hn::Rebind<Qel8u, Lanes> du8;
    for (int i = 0; i < kVectors; ++i) {
        Qel8u* const bytes = mask + x + size_t(i) * kLanes;
        const auto passing = hn::VecFromMask(di, hn::RebindMask(di, sums.isPassing(i)));
        const auto keep = hn::And(hn::BitCast(du8, hn::DemoteTo(d8, passing)), hn::Set(du8, kept));
        hn::StoreU(hn::And(hn::LoadU(du8, bytes), keep), du8, bytes);
    }
    return setBytes<kPixels>(mask + x);
}

// Passing pixels of a row's whole groups keep bit 0 of their bytes, all others the byte. A group of 0 pixels is none.
template <class F, size_t kGroup = 0>
int applyRows(const HaarStage<typename F::W>& stage, const HaarTables<typename F::T>& tables,
              Plane<const typename F::N> norm, Plane<Qel8u> mask, QelSize size) {
    constexpr size_t kLanes = hn::MaxLanes(Lanes());
    const size_t width = size_t(size.width);
    const size_t grouped = kGroup == 0 ? 0 : width - width % HWY_MAX(kGroup, 1);
    int count = 0;
    for (int y = 0; y < size.height; ++y) {
        const Place<F> row = {tables.upright.row(y), F::kMixed ? tables.tilted.row(y) : nullptr, norm.row(y)};
        Qel8u* const m = mask.row(y);
        const auto apply = [&](size_t x, size_t last, Qel8u kept) HWY_ATTR {
            for (; x + 2 * kLanes <= last; x += 2 * kLanes) count += applyToBlock<F, 2>(stage, row, m, x, kept);
            for (; x < last; ++x) count += applyToPixel<F>(stage, pixel(row, x), m + x, kept);
        };
        // Features of pixels behind the last one that is set may lie outside of the tables.
        size_t end = width;
        while (end > 0 && m[end - 1] == 0) --end;
        if constexpr (kGroup != 0) apply(0, HWY_MIN(grouped, end), 1);
        apply(grouped, end, 255);
    }
    return count;
}

}  // namespace

constexpr auto& ownApplyHaarClassifierAllImg8Pix_W7 = applyRows<MinusOneForm, 8>;
constexpr auto& ownApplyHaarClassifierAllImg4Pix_W7 = applyRows<MinusOneForm, 4>;
constexpr auto& ownApplyHaarClassifierAllImg8PixSparceMask_W7 = applyRows<MinusOneForm>;
constexpr auto& ownApplyHaarClassifierAllImg8Pix_dw_W7 = applyRows<SingleForm, 8>;
constexpr auto& ownApplyHaarClassifierAllImg8PixSparceMask_dw_W7 = applyRows<SingleForm>;

constexpr auto& ownApplyHaarClassifier_32s32f_C1R_W7 = applyRows<IntegerTableForm>;
constexpr auto& ownApplyHaarClassifier_32s_C1RSfs_W7 = applyRows<IntegerForm>;
constexpr auto& ownApplyMixedHaarClassifier_32f_C1R_W7 = applyRows<MixedSingleForm>;
constexpr auto& ownApplyMixedHaarClassifier_32s32f_C1R_W7 = applyRows<MixedIntegerTableForm>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownApplyHaarClassifierAllImg8Pix_W7);
QEL_KERNEL(ownApplyHaarClassifierAllImg4Pix_W7);
QEL_KERNEL(ownApplyHaarClassifierAllImg8PixSparceMask_W7);
QEL_KERNEL(ownApplyHaarClassifierAllImg8Pix_dw_W7);
QEL_KERNEL(ownApplyHaarClassifierAllImg8PixSparceMask_dw_W7);
QEL_KERNEL(ownApplyHaarClassifier_32s32f_C1R_W7);
QEL_KERNEL(ownApplyHaarClassifier_32s_C1RSfs_W7);
QEL_KERNEL(ownApplyMixedHaarClassifier_32f_C1R_W7);
QEL_KERNEL(ownApplyMixedHaarClassifier_32s32f_C1R_W7);
}  // namespace qel
#endif
