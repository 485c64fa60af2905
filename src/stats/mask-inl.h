// Samples under a mask of bytes: what norms and means share. Included once per instruction set.
#include <cstdint>

#include "frame/simd-inl.h"
#include "qelcv/types.h"

#if defined(QELCV_STATS_MASK_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QELCV_STATS_MASK_INL_H_
#undef QELCV_STATS_MASK_INL_H_
#else
#define QELCV_STATS_MASK_INL_H_
#endif

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {

// A mask byte per lane.
template <class D>
using MaskTag = hn::Rebind<uint8_t, D>;

// v where the mask byte is not zero, and zero elsewhere, whatever v is there.
template <class D, class V = hn::Vec<D>>
HWY_INLINE V keep(D d, hn::Vec<MaskTag<D>> mask, V v) {
#if HWY_TARGET <= HWY_AVX3
    // Here a mask is a bit per lane, whatever the width of the lanes.
    using Bits = hn::Mask<D>;
    const auto on = hn::Ne(mask, hn::Zero(MaskTag<D>()));
    return hn::IfThenElseZero(Bits{static_cast<decltype(Bits::raw)>(on.raw)}, v);
#else
    const hn::Rebind<hwy::MakeUnsigned<hn::TFromD<D>>, D> du;
    if constexpr (sizeof(hn::TFromD<D>) == 1) {
        return hn::IfThenZeroElse(hn::RebindMask(d, hn::Eq(mask, hn::Zero(du))), v);
    } else {
        return hn::IfThenZeroElse(hn::RebindMask(d, hn::Eq(hn::PromoteTo(du, mask), hn::Zero(du))), v);
    }
#endif
}

// True where compilers make loads under a mask. The machine does not read ahead of those by itself.
constexpr bool kLoadsUnderMask = HWY_TARGET <= HWY_AVX3;

// Asks for the memory that lies some way ahead, in regions that are larger than the inner caches, of images with so
// many bytes to a pixel: the machine by itself does not run far enough ahead of a loop with some work in it. What lies
// beyond the region is asked for, too, but not read.
template <size_t... kPixelBytes>
class Prefetcher {
    static constexpr int64_t kInnerCaches = 1 << 18;
    static constexpr size_t kBlock = 64;
    static constexpr size_t kLine = 64;
    static constexpr size_t kBytes = (... + kPixelBytes);
    static constexpr size_t kAhead = HWY_MAX(4096 / kBytes, 2 * kBlock);  // pixels

public:
    explicit HWY_INLINE Prefetcher(QelSize size)
        : on_(int64_t{size.width} * size.height * static_cast<int64_t>(kBytes) > kInnerCaches) {}

    // Called at every step through a row, acts at every 64th pixel.
    template <class... T>
    HWY_INLINE void operator()(size_t x, const T*... row) const {
        if (on_ && x % kBlock == 0) (..., askFor<kPixelBytes>(reinterpret_cast<const char*>(row), x));
    }

private:
    template <size_t kOfOne>
    static HWY_INLINE void askFor(const char* row, size_t x) {
        for (size_t line = 0; line < kBlock * kOfOne; line += kLine) hwy::Prefetch(row + (x + kAhead) * kOfOne + line);
    }

    bool on_;
};

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#endif
