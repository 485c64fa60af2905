#include "pyramid/copy_subpix_kernels.h"

#define HWY_TARGET_INCLUDE "pyramid/copy_subpix_kernels.cpp"
#include "frame/simd-inl.h"
#include "pyramid/cover_row-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// Samples of a row and those to their right.
template <class V>
struct Neighbours {
    V here, right;
};

// Rows in pairs, as two of them share the row between: halves(upper, lower) is called on the neighbours in three rows
// or, for the last of an odd number, in two.
template <size_t kGroup, class D, class Form>
HWY_INLINE void copyRows(D d, Plane<const typename Form::In> src, Plane<typename Form::Out> dst, QelSize size,
                         const Form& form) {
    const size_t width = size_t(size.width);
    int y = 0;
    for (; y + 1 < size.height; y += 2) {
        const auto *s0 = src.row(y), *s1 = src.row(y + 1), *s2 = src.row(y + 2);
        auto *out0 = dst.row(y), *out1 = dst.row(y + 1);
        coverRow<kGroup>(d, width, [&](auto dx, size_t x) QEL_INLINE_LAMBDA {
            const auto top = form.load(dx, s0 + x), middle = form.load(dx, s1 + x), bottom = form.load(dx, s2 + x);
            form.storeTwo(dx, top, middle, bottom, out0 + x, out1 + x);
        });
    }
    if (y == size.height) return;
    const auto *s0 = src.row(y), *s1 = src.row(y + 1);
    auto* out = dst.row(y);
    coverRow<kGroup>(d, width, [&](auto dx, size_t x) QEL_INLINE_LAMBDA {
        form.store(dx, form.upper(dx, form.load(dx, s0 + x)), form.lower(dx, form.load(dx, s1 + x)), out + x);
    });
}

// Pairs of 16-bit samples times their weights come to 32 bits where they lie: the pairs that begin at even columns in
// one vector, those at odd columns in another. Put together again, the results are in order.
struct FormQ14 {
    using In = Qel8u;

    const WeightsQ14& weights;

    template <class D>
    HWY_INLINE Neighbours<hn::Vec<D>> load(D d, const Qel8u* p) const {
        const hn::Rebind<uint8_t, D> d8;
        return {hn::PromoteTo(d, hn::LoadU(d8, p)), hn::PromoteTo(d, hn::LoadU(d8, p + 1))};
    }
    template <class D, class V>
    HWY_INLINE auto half(D d, Neighbours<V> samples, Qel16s here, Qel16s right) const {
        const hn::RepartitionToWide<D> d32;
        const auto pair = hn::BitCast(d, hn::Set(d32, (here & 0xFFFF) | right * 0x10000));
        auto none = hn::Zero(d32);
        return Neighbours<hn::Vec<decltype(d32)>>{
            hn::ReorderWidenMulAccumulate(d32, samples.here, pair, hn::Zero(d32), none),
            hn::ReorderWidenMulAccumulate(d32, samples.right, pair, hn::Zero(d32), none)};
    }
    template <class D, class V>
    HWY_INLINE auto upper(D d, Neighbours<V> samples) const {
        return half(d, samples, weights.w00, weights.w01);
    }
    template <class D, class V>
    HWY_INLINE auto lower(D d, Neighbours<V> samples) const {
        return half(d, samples, weights.w10, weights.w11);
    }
};

struct FormQ14_8u : FormQ14 {
    using Out = Qel8u;

    template <class D, class V32>
    HWY_INLINE void store(D d, Neighbours<V32> upper, Neighbours<V32> lower, Qel8u* out) const {
        const hn::RepartitionToWide<D> d32;
        const auto round = hn::Set(d32, kOneQ14 / 2);
        const auto even = hn::ShiftRight<kQ14>(hn::Add(hn::Add(upper.here, lower.here), round));
        const auto odd = hn::ShiftRight<kQ14>(hn::Add(hn::Add(upper.right, lower.right), round));
        const auto both = hn::BitCast(d, hn::Or(even, hn::ShiftLeft<16>(odd)));
        const hn::Rebind<uint8_t, D> d8;
        hn::StoreU(hn::DemoteTo(d8, both), d8, out);
    }
    template <class D, class V>
    HWY_INLINE void storeTwo(D d, Neighbours<V> top, Neighbours<V> middle, Neighbours<V> bottom, Qel8u* out0,
                             Qel8u* out1) const {
        store(d, upper(d, top), lower(d, middle), out0);
        store(d, upper(d, middle), lower(d, bottom), out1);
    }
};

struct FormQ14_8u16u : FormQ14 {
    using Out = Qel16u;

    const ScaleQ14& scale;

    template <class D, class V32>
    HWY_INLINE auto scaled(D, V32 upper, V32 lower) const {
        const hn::Repartition<uint32_t, D> du;
        const auto largest = hn::Set(du, 0xFFFF);
        const auto sum = hn::BitCast(du, hn::Add(upper, lower));
        const auto shifted = hn::ShiftRightSame(hn::Add(sum, hn::Set(du, uint32_t(scale.round))), scale.right);
        return hn::Min(hn::ShiftLeftSame(hn::Min(shifted, largest), scale.left), largest);
    }
    template <class D, class V32>
    HWY_INLINE void store(D d, Neighbours<V32> upper, Neighbours<V32> lower, Qel16u* out) const {
        const hn::RebindToUnsigned<D> du;
        const auto even = scaled(d, upper.here, lower.here), odd = scaled(d, upper.right, lower.right);
        hn::StoreU(hn::BitCast(du, hn::Or(even, hn::ShiftLeft<16>(odd))), du, out);
    }
    template <class D, class V>
    HWY_INLINE void storeTwo(D d, Neighbours<V> top, Neighbours<V> middle, Neighbours<V> bottom, Qel16u* out0,
                             Qel16u* out1) const {
        store(d, upper(d, top), lower(d, middle), out0);
        store(d, upper(d, middle), lower(d, bottom), out1);
    }
};

template <class D, class T>
HWY_INLINE hn::Vec<D> loadFloats(D d, const T* p) {
    const hn::RebindToSigned<D> di;
    if constexpr (std::is_same_v<T, Qel32f>) {
        return hn::LoadU(d, p);
    } else {
        return hn::ConvertTo(d, hn::PromoteTo(di, hn::LoadU(hn::Rebind<T, D>(), p)));
    }
}

template <class D, class T>
HWY_INLINE void storeRounded(hn::Vec<D> v, D d, T* p) {
    if constexpr (std::is_same_v<T, Qel32f>) {
        hn::StoreU(v, d, p);
    } else {
        const hn::Rebind<T, D> dOut;
        hn::StoreU(hn::DemoteTo(dOut, hn::NearestInt(v)), dOut, p);
    }
}

template <class T, class R>
struct FormFloat {
    using In = T;
    using Out = R;

    const WeightsFloat& weights;

    template <class D>
    HWY_INLINE Neighbours<hn::Vec<D>> load(D d, const T* p) const {
        return {loadFloats(d, p), loadFloats(d, p + 1)};
    }
    template <class D, class V>
    HWY_INLINE V upper(D d, Neighbours<V> samples) const {
        return hn::Add(hn::Mul(samples.here, hn::Set(d, weights.w00)), hn::Mul(samples.right, hn::Set(d, weights.w01)));
    }
    template <class D, class V>
    HWY_INLINE V lower(D d, Neighbours<V> samples) const {
        return hn::Add(hn::Mul(samples.here, hn::Set(d, weights.w10)), hn::Mul(samples.right, hn::Set(d, weights.w11)));
    }
    template <class D, class V>
    HWY_INLINE void store(D d, V upper, V lower, R* out) const {
        storeRounded(hn::Add(upper, lower), d, out);
    }
    template <class D, class V>
    HWY_INLINE void storeTwo(D d, Neighbours<V> top, Neighbours<V> middle, Neighbours<V> bottom, R* out0,
                             R* out1) const {
        store(d, upper(d, top), lower(d, middle), out0);
        store(d, upper(d, middle), lower(d, bottom), out1);
    }
};

struct FormPaired : FormFloat<Qel32f, Qel32f> {
    Qel32f ratio;

    template <class D, class V>
    HWY_INLINE void storeTwo(D d, Neighbours<V> top, Neighbours<V> middle, Neighbours<V> bottom, Qel32f* out0,
                             Qel32f* out1) const {
        const V shared = lower(d, middle);
        store(d, upper(d, top), shared, out0);
        store(d, hn::Mul(shared, hn::Set(d, ratio)), lower(d, bottom), out1);
    }
};

// A vector has at least one pair. Of a single column, the sums are formed one by one.
template <class Form, class Sample>
HWY_INLINE void copyQ14(Plane<const Qel8u> src, Plane<typename Form::Out> dst, QelSize size, const Form& form,
                        const Sample& sample) {
    if (size.width > 1) return copyRows<2>(hn::ScalableTag<Qel16s>(), src, dst, size, form);
    const WeightsQ14& w = form.weights;
    for (int y = 0; y < size.height; ++y) {
        const Qel8u *s0 = src.row(y), *s1 = src.row(y + 1);
        *dst.row(y) = sample(s0[0] * w.w00 + s0[1] * w.w01 + s1[0] * w.w10 + s1[1] * w.w11);
    }
}

void copySubpix_8u(Plane<const Qel8u> src, Plane<Qel8u> dst, QelSize size, const WeightsQ14& weights) {
    copyQ14(src, dst, size, FormQ14_8u{{weights}},
            [](int sum) { return static_cast<Qel8u>((sum + kOneQ14 / 2) >> kQ14); });
}

void copySubpix_8u16u(Plane<const Qel8u> src, Plane<Qel16u> dst, QelSize size, const WeightsQ14& weights,
                      const ScaleQ14& scale) {
    copyQ14(src, dst, size, FormQ14_8u16u{{weights}, scale}, [&](int sum) { return sampleQ14<Qel16u>(sum, scale); });
}

template <class T, class Out>
void copySubpix(Plane<const T> src, Plane<Out> dst, QelSize size, const WeightsFloat& weights) {
    copyRows<1>(hn::ScalableTag<Qel32f>(), src, dst, size, FormFloat<T, Out>{weights});
}

void copySubpixPaired(Plane<const Qel32f> src, Plane<Qel32f> dst, QelSize size, const WeightsFloat& weights,
                      Qel32f ratio) {
    copyRows<1>(hn::ScalableTag<Qel32f>(), src, dst, size, FormPaired{{weights}, ratio});
}

}  // namespace

constexpr auto& ownCopySubpix_8u_C1R_W7 = copySubpix_8u;
constexpr auto& ownCopySubpix_8u16u_C1R_Sfs_W7 = copySubpix_8u16u;
constexpr auto& ownCopySubpix_8u32f_C1R_W7 = copySubpix<Qel8u, Qel32f>;
constexpr auto& ownCopySubpix_16u_C1R_W7 = copySubpix<Qel16u, Qel16u>;
constexpr auto& ownCopySubpix_16u32f_C1R_W7 = copySubpix<Qel16u, Qel32f>;
constexpr auto& ownCopySubpix_32f_C1R_W7 = copySubpixPaired;
constexpr auto& ownCopySubpix_32f_C1R_W7_1 = copySubpix<Qel32f, Qel32f>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownCopySubpix_8u_C1R_W7);
QEL_KERNEL(ownCopySubpix_8u16u_C1R_Sfs_W7);
QEL_KERNEL(ownCopySubpix_8u32f_C1R_W7);
QEL_KERNEL(ownCopySubpix_16u_C1R_W7);
QEL_KERNEL(ownCopySubpix_16u32f_C1R_W7);
QEL_KERNEL(ownCopySubpix_32f_C1R_W7);
QEL_KERNEL(ownCopySubpix_32f_C1R_W7_1);
}  // namespace qel
#endif
