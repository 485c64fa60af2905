// The kernels that the fixed filters have built in, as sums of the samples of their taps. Included once per instruction
// set.
#include "frame/simd-inl.h"

#if defined(QELCV_FILTER_FIXED_FORMULAS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QELCV_FILTER_FIXED_FORMULAS_INL_H_
#undef QELCV_FILTER_FIXED_FORMULAS_INL_H_
#else
#define QELCV_FILTER_FIXED_FORMULAS_INL_H_
#endif

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {

template <class V>
HWY_INLINE V twice(V v) {
    return hn::Add(v, v);
}

template <class V>
HWY_INLINE V times(V v, int factor) {
    const hn::DFromV<V> d;
    return hn::Mul(v, hn::Set(d, static_cast<hn::TFromV<V>>(factor)));
}

// A formula gets the samples of its taps from r(i), along a row or down a column, i from 0. 16s sums wrap. Of 32f, sums
// are formed as they are written here.
struct Dx3 {
    static constexpr int kTaps = 3;
    template <class R>
    HWY_INLINE auto operator()(const R& r) const {
        return hn::Sub(r(2), r(0));
    }
};
struct DxNeg3 {
    static constexpr int kTaps = 3;
    template <class R>
    HWY_INLINE auto operator()(const R& r) const {
        return hn::Sub(r(0), r(2));
    }
};
struct Dx5 {
    static constexpr int kTaps = 5;
    template <class R>
    HWY_INLINE auto operator()(const R& r) const {
        return hn::Add(hn::Sub(r(4), r(0)), twice(hn::Sub(r(3), r(1))));
    }
};
struct DxNeg5 {
    static constexpr int kTaps = 5;
    template <class R>
    HWY_INLINE auto operator()(const R& r) const {
        return hn::Add(hn::Sub(r(0), r(4)), twice(hn::Sub(r(1), r(3))));
    }
};
struct D2x3 {
    static constexpr int kTaps = 3;
    template <class R>
    HWY_INLINE auto operator()(const R& r) const {
        return hn::Sub(hn::Add(r(0), r(2)), twice(r(1)));
    }
};
struct D2x5 {
    static constexpr int kTaps = 5;
    template <class R>
    HWY_INLINE auto operator()(const R& r) const {
        return hn::Sub(hn::Add(r(0), r(4)), twice(r(2)));
    }
};
struct Sobel3 {
    static constexpr int kTaps = 3;
    template <class R>
    HWY_INLINE auto operator()(const R& r) const {
        return hn::Add(hn::Add(r(0), r(2)), twice(r(1)));
    }
};
struct SobelNeg3 {
    static constexpr int kTaps = 3;
    template <class R>
    HWY_INLINE auto operator()(const R& r) const {
        return hn::Neg(Sobel3()(r));
    }
};
struct Sobel5 {
    static constexpr int kTaps = 5;
    template <class R>
    HWY_INLINE auto operator()(const R& r) const {
        return hn::Add(hn::Add(hn::Add(r(0), r(4)), times(hn::Add(r(1), r(3)), 4)), times(r(2), 6));
    }
};
struct SobelNeg5 {
    static constexpr int kTaps = 5;
    template <class R>
    HWY_INLINE auto operator()(const R& r) const {
        return hn::Neg(Sobel5()(r));
    }
};
struct Scharr3 {
    static constexpr int kTaps = 3;
    template <class R>
    HWY_INLINE auto operator()(const R& r) const {
        return hn::Add(times(hn::Add(r(0), r(2)), 3), times(r(1), 10));
    }
};
struct Avr3 {
    static constexpr int kTaps = 3;
    template <class R>
    HWY_INLINE auto operator()(const R& r) const {
        return hn::Add(hn::Add(r(0), r(1)), r(2));
    }
};
struct Avr5 {
    static constexpr int kTaps = 5;
    template <class R>
    HWY_INLINE auto operator()(const R& r) const {
        return hn::Add(hn::Add(hn::Add(hn::Add(r(0), r(1)), r(2)), r(3)), r(4));
    }
};

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#endif
