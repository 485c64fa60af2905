// A mask as bits, and what to do where it is set. Included once per instruction set, behind simd-inl.h.
#if defined(QELCV_FRAME_LANE_BITS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QELCV_FRAME_LANE_BITS_INL_H_
#undef QELCV_FRAME_LANE_BITS_INL_H_
#else
#define QELCV_FRAME_LANE_BITS_INL_H_
#endif

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {

// Lane i as bit i. No more is read than was stored, which keeps the bits in registers.
template <class D, class M = hn::Mask<D>>
HWY_INLINE uint64_t laneBits(D d, M mask) {
    constexpr size_t kBytes = (hn::MaxLanes(D()) + 7) / 8;
    uint8_t bytes[8];
    hn::StoreMaskBits(d, mask, bytes);
    hwy::UnsignedFromSize<kBytes> bits;
    hwy::CopyBytes<kBytes>(bytes, &bits);
    return bits;
}

// Calls op(i) for each bit that is set, in ascending order.
template <class Op>
HWY_INLINE void forSetBits(uint64_t bits, const Op& op) {
    for (; bits != 0; bits &= bits - 1) op(static_cast<int>(hwy::Num0BitsBelowLS1Bit_Nonzero64(bits)));
}

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#endif
