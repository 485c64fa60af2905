// Magnitudes of masked samples, as vectors: what the kernels of all norms share. Included once per instruction set.
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "frame/arithmetic-inl.h"
#include "frame/channel-inl.h"
#include "frame/simd-inl.h"
#include "stats/mask-inl.h"
#include "stats/norm_kernels.h"

#if defined(QELCV_STATS_NORM_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QELCV_STATS_NORM_INL_H_
#undef QELCV_STATS_NORM_INL_H_
#else
#define QELCV_STATS_NORM_INL_H_
#endif

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {

// The samples of an image of one channel.
template <class T>
class OnlyChannel {
public:
    static constexpr size_t kChannels = 1;

    explicit OnlyChannel(int) {}

    template <class D>
    HWY_INLINE hn::Vec<D> load(D d, const T* samples, size_t x) const {
        return hn::LoadU(d, samples + x);
    }
};

// The samples of one channel of an image of three.
template <class T>
class OneChannelOfThree {
public:
    static constexpr size_t kChannels = 3;

    explicit OneChannelOfThree(int coi) : coi_(coi) {}

    template <class D>
    HWY_INLINE hn::Vec<D> load(D d, const T* samples, size_t x) const {
        const T* const pixels = samples + 3 * x;
        if constexpr (hn::MaxLanes(D()) * sizeof(T) >= 16) {
            return ChannelPicker<D>(coi_).load(pixels);
        } else {
            T few[hn::MaxLanes(D())];
            for (size_t i = 0; i < hn::MaxLanes(D()); ++i) std::memcpy(few + i, pixels + 3 * i + coi_ - 1, sizeof(T));
            return hn::LoadU(d, few);
        }
    }

private:
    int coi_;
};

// Magnitudes are unsigned, since that of -128 is 128.
template <class D>
using MagnitudeTag =
    std::conditional_t<hwy::IsFloat<hn::TFromD<D>>(), D, hn::Rebind<hwy::MakeUnsigned<hn::TFromD<D>>, D>>;

template <class V, class D = hn::DFromV<V>>
HWY_INLINE hn::Vec<MagnitudeTag<D>> magnitude(V v) {
    if constexpr (hwy::IsSigned<hn::TFromD<D>>()) {
        return hn::BitCast(MagnitudeTag<D>(), hn::Abs(v));
    } else {
        return v;
    }
}

template <class V, class D = hn::DFromV<V>>
HWY_INLINE hn::Vec<MagnitudeTag<D>> magnitudeOfDifference(V a, V b) {
    if constexpr (hwy::IsSigned<hn::TFromD<D>>() && !hwy::IsFloat<hn::TFromD<D>>()) {
        const MagnitudeTag<D> du;
        const auto bias = hn::Set(du, 0x80);
        return magnitudeOfDifference(hn::Xor(hn::BitCast(du, a), bias), hn::Xor(hn::BitCast(du, b), bias));
    } else {
        return absDiff(a, b);
    }
}

// A row of each image of a region.
template <class T>
struct NormRow {
    const T* src1;
    const T* src2;
    const Qel8u* mask;

    NormRow(const NormRegion<T>& region, int y)
        : src1(region.src1.row(y)), src2(region.src2.row(y)), mask(region.mask.row(y)) {}
    NormRow(const T* a, const T* b, const Qel8u* m) : src1(a), src2(b), mask(m) {}
};

// The region as one row where nothing lies between its rows.
template <class T>
HWY_INLINE NormRegion<T> joinedRows(NormRegion<T> region, int channels) {
    const int width = region.size.width;
    region.size = joinRows(region.size, isGapless(region.src1, width, channels) &&
                                            isGapless(region.src2, width, channels) && isGapless(region.mask, width));
    return region;
}

// Prefetches a family's images and the mask.
template <class Family, class Channel, class T>
class NormPrefetcher {
    static constexpr size_t kPixelBytes = Channel::kChannels * sizeof(T);

public:
    explicit HWY_INLINE NormPrefetcher(QelSize size) : ask_(size) {}

    HWY_INLINE void operator()(const NormRow<T>& row, size_t x) const {
        if constexpr (Family::kImages == 1) {
            ask_(x, row.mask, row.src1);
        } else {
            ask_(x, row.mask, row.src1, row.src2);
        }
    }

private:
    std::conditional_t<Family::kImages == 1, Prefetcher<1, kPixelBytes>, Prefetcher<1, kPixelBytes, kPixelBytes>> ask_;
};

// The three families: the magnitudes that a pixel brings in, masked.
struct Norm {
    static constexpr size_t kImages = 1;
    static constexpr size_t kSums = 1;

    template <class D, class Channel, class T>
    static HWY_INLINE void load(D d, const Channel& channel, const NormRow<T>& row, size_t x, hn::Vec<MaskTag<D>> mask,
                                hn::Vec<MagnitudeTag<D>>* magnitudes) {
        magnitudes[0] = keep(MagnitudeTag<D>(), mask, magnitude(channel.load(d, row.src1, x)));
    }
};

struct NormDiff {
    static constexpr size_t kImages = 2;
    static constexpr size_t kSums = 1;

    template <class D, class Channel, class T>
    static HWY_INLINE void load(D d, const Channel& channel, const NormRow<T>& row, size_t x, hn::Vec<MaskTag<D>> mask,
                                hn::Vec<MagnitudeTag<D>>* magnitudes) {
        const auto a = channel.load(d, row.src1, x);
        const auto b = channel.load(d, row.src2, x);
        magnitudes[0] = keep(MagnitudeTag<D>(), mask, magnitudeOfDifference(a, b));
    }
};

struct NormRel {
    static constexpr size_t kImages = 2;
    static constexpr size_t kSums = 2;

    template <class D, class Channel, class T>
    static HWY_INLINE void load(D d, const Channel& channel, const NormRow<T>& row, size_t x, hn::Vec<MaskTag<D>> mask,
                                hn::Vec<MagnitudeTag<D>>* magnitudes) {
        const auto a = channel.load(d, row.src1, x);
        const auto b = channel.load(d, row.src2, x);
        magnitudes[0] = keep(MagnitudeTag<D>(), mask, magnitudeOfDifference(a, b));
        magnitudes[1] = keep(MagnitudeTag<D>(), mask, magnitude(b));
    }
};

// A family's totals, one for each of its sums.
template <class Family>
HWY_INLINE NormSums normSums(const Qel64f (&totals)[Family::kSums]) {
    return {totals[0], Family::kSums > 1 ? totals[Family::kSums - 1] : 0};
}

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#endif
