// What the Gaussian steps' kernels share. Included once per instruction set.
//
// Rows of three channels are kept in blocks of 16 bytes that hold whole pixels, two of 16-bit sums or one of 32f, and
// unused lanes behind them. So shuffles never cross a block, and every vector works on blocks as a short one does.
#include "frame/channel-inl.h"
#include "frame/simd-inl.h"
#include "pyramid/cover_row-inl.h"
#include "pyramid/gauss5x5_sums.h"

#if defined(QELCV_PYRAMID_GAUSS5X5_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QELCV_PYRAMID_GAUSS5X5_INL_H_
#undef QELCV_PYRAMID_GAUSS5X5_INL_H_
#else
#define QELCV_PYRAMID_GAUSS5X5_INL_H_
#endif

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {

// Vectors put together from blocks that lie apart: to fill wider ones takes longer than they save.
template <class T>
using BlocksTag = hn::CappedTag<T, 32 / sizeof(T)>;

// Bytes of T at any address as bytes without a sign.
template <class T, class D8>
HWY_INLINE hn::Vec<D8> loadBytes(D8 d8, const T* p) {
    const auto bytes = hn::LoadU(d8, reinterpret_cast<const uint8_t*>(p));
    if constexpr (kSignFlip<T> != 0) return hn::Xor(bytes, hn::Set(d8, kSignFlip<T>));
    return bytes;
}
template <class T, class D8, class V>
HWY_INLINE V flipSigns(D8 d8, V bytes) {
    if constexpr (kSignFlip<T> != 0) return hn::Xor(bytes, hn::Set(d8, kSignFlip<T>));
    return bytes;
}

// Lane i is bytes[2 i] * even + bytes[2 i + 1] * odd. The sum must fit in 15 bits.
template <int kEven, int kOdd, class D16, class V8>
HWY_INLINE hn::Vec<D16> weightedPairs(D16 d16, V8 bytes) {
    using V = hn::Vec<D16>;
    const V weights = hn::Set(d16, kEven | kOdd << 8);
#if HWY_TARGET <= HWY_AVX3
    if constexpr (sizeof(V) == 64)
        return V{_mm512_maddubs_epi16(bytes.raw, weights.raw)};
    else
#endif
#if HWY_TARGET <= HWY_AVX2
        if constexpr (sizeof(V) == 32)
        return V{_mm256_maddubs_epi16(bytes.raw, weights.raw)};
    else
#endif
        return V{_mm_maddubs_epi16(bytes.raw, weights.raw)};
}

// Stores block k of v at p + k * stride. Blocks may reach over the next one's place, since they are stored in order.
template <size_t kStride, class D>
HWY_INLINE void storeBlocks(hn::Vec<D> v, D d, hn::TFromD<D>* p) {
    constexpr size_t kBlock = 16 / sizeof(hn::TFromD<D>);
    if constexpr (hn::MaxLanes(D()) == kBlock) {
        hn::StoreU(v, d, p);
    } else {
        const hn::Half<D> half;
        storeBlocks<kStride>(hn::LowerHalf(half, v), half, p);
        storeBlocks<kStride>(hn::UpperHalf(half, v), half, p + hn::MaxLanes(half) / kBlock * kStride);
    }
}

// The samples of the last block of a row, which has no room for the lanes behind them.
template <class D>
HWY_INLINE void storeFirst(hn::Vec<D> v, D d, hn::TFromD<D>* p, size_t count) {
    HWY_ALIGN hn::TFromD<D> lanes[hn::MaxLanes(D())];
    hn::Store(v, d, lanes);
    for (size_t i = 0; i < count; ++i) p[i] = lanes[i];
}

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#endif
