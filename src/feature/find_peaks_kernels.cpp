#include "feature/find_peaks_kernels.h"

#include <limits>

#define HWY_TARGET_INCLUDE "feature/find_peaks_kernels.cpp"
#include "frame/simd-inl.h"
// Behind what it stands on.
#include "frame/lane_bits-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// The operands are never swapped: where one is a NaN, the second is the result.
struct Largest {
    template <class V>
    HWY_INLINE V operator()(V a, V b, V c) const {
        return hn::Max(hn::Max(a, b), c);
    }
};
struct Smallest {
    template <class V>
    HWY_INLINE V operator()(V a, V b, V c) const {
        return hn::Min(hn::Min(a, b), c);
    }
};

template <class Extreme, class T>
void filterRow03(const T* s, T* out, int count) {
    forVectors(hn::ScalableTag<T>(), size_t(count - 2), [=](auto d, size_t x) HWY_ATTR {
        hn::StoreU(Extreme()(hn::LoadU(d, s + x), hn::LoadU(d, s + x + 1), hn::LoadU(d, s + x + 2)), d, out + x);
    });
}

// |v| > threshold. The lowest number has no magnitude of its type, but one above any threshold; a threshold below zero
// lets all numbers pass, as -1 does.
template <class D, class V = hn::Vec<D>>
HWY_INLINE hn::Mask<D> exceeds(D d, V v, hn::TFromD<D> threshold) {
    if constexpr (hwy::IsFloat<hn::TFromD<D>>()) {
        return hn::Gt(hn::Abs(v), hn::Set(d, threshold));
    } else {
        const hn::TFromD<D> t = HWY_MAX(threshold, -1);
        return hn::Or(hn::Gt(v, hn::Set(d, t)), hn::Lt(v, hn::Set(d, -t)));
    }
}

// Integers are equal; floats differ by no more than the smallest normal number, which an infinity does from itself.
template <class D, class V = hn::Vec<D>>
HWY_INLINE hn::Mask<D> isExtreme(D d, V v, V extreme) {
    using T = hn::TFromD<D>;
    if constexpr (hwy::IsFloat<T>()) {
        return hn::Le(hn::Abs(hn::Sub(v, extreme)), hn::Set(d, std::numeric_limits<T>::min()));
    } else {
        return hn::Eq(v, extreme);
    }
}

// The peaks among the samples from x on, at most 64, as bits.
template <class T>
HWY_INLINE uint64_t peakBits(const T* pSrc, const Neighbours<T>& around, size_t x, size_t count, T threshold) {
    uint64_t bits = 0;
    forVectors(hn::ScalableTag<T>(), count, [&](auto d, size_t i) HWY_ATTR {
        const auto rows = [=](const auto& p, auto extreme) HWY_ATTR {
            return extreme(hn::LoadU(d, p[0] + x + i), hn::LoadU(d, p[1] + x + i), hn::LoadU(d, p[2] + x + i));
        };
        const auto v = hn::LoadU(d, pSrc + x + i);
        const auto highest = rows(around.high, Largest());
        const auto lowest = rows(around.low, Smallest());
        const auto extreme = hn::IfThenElse(hn::Gt(v, hn::Zero(d)), highest, lowest);
        bits |= laneBits(d, hn::And(exceeds(d, v, threshold), isExtreme(d, v, extreme))) << i;
    });
    return bits;
}

// Peaks are taken out of 64 samples at a time: how many there are is a guess that the processor gets wrong, and pays
// for, once for all of them.
template <class T>
int findPeaksRow(const T* pSrc, const Neighbours<T>& around, int width, T threshold, QelPoint first, PeakList list) {
    constexpr int kBlock = 64;
    int found = 0;
    for (int x = 0; x < width; x += kBlock) {
        const uint64_t bits = peakBits(pSrc, around, size_t(x), size_t(HWY_MIN(kBlock, width - x)), threshold);
        forSetBits(bits, [&](int i) HWY_ATTR {
            if (found < list.room) list.pPeak[found++] = {first.x + x + i, first.y};
        });
    }
    return found;
}

}  // namespace

constexpr auto& ownSiftFilterMaxRow03_32s_C1R = filterRow03<Largest, Qel32s>;
constexpr auto& ownSiftFilterMinRow03_32s_C1R = filterRow03<Smallest, Qel32s>;
constexpr auto& ownSiftFilterMaxRow03_32f_C1R = filterRow03<Largest, Qel32f>;
constexpr auto& ownSiftFilterMinRow03_32f_C1R = filterRow03<Smallest, Qel32f>;
constexpr auto& ownFindPeaksRow_32s_C1R_W7 = findPeaksRow<Qel32s>;
constexpr auto& ownFindPeaksRow_32f_C1R_W7 = findPeaksRow<Qel32f>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownSiftFilterMaxRow03_32s_C1R);
QEL_KERNEL(ownSiftFilterMinRow03_32s_C1R);
QEL_KERNEL(ownSiftFilterMaxRow03_32f_C1R);
QEL_KERNEL(ownSiftFilterMinRow03_32f_C1R);
QEL_KERNEL(ownFindPeaksRow_32s_C1R_W7);
QEL_KERNEL(ownFindPeaksRow_32f_C1R_W7);
}  // namespace qel
#endif
