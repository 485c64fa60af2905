// Magnitudes of masked samples, as vectors: what the kernels of all norms share. Included once per instruction set.
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "frame/simd-inl.h"
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

// For each channel of three, the places of its samples in 48 bytes of pixels: a shuffle of each 16 bytes, whose results
// together are 16 bytes of samples.
template <size_t kSampleBytes>
struct ChannelPlaces {
    alignas(16) uint8_t of[3][3][16];

    constexpr ChannelPlaces() : of() {
        for (size_t channel = 0; channel < 3; ++channel) {
            for (size_t i = 0; i < 16; ++i) {
                const size_t byte = (i / kSampleBytes * 3 + channel) * kSampleBytes + i % kSampleBytes;
                for (size_t part = 0; part < 3; ++part)
                    of[channel][part][i] = byte / 16 == part ? static_cast<uint8_t>(byte % 16) : 0x80;
            }
        }
    }
};

template <size_t kSampleBytes>
inline constexpr ChannelPlaces<kSampleBytes> kChannelPlaces;

// The samples of one channel of an image of three.
template <class T>
class OneChannelOfThree {
public:
    static constexpr size_t kChannels = 3;

    explicit OneChannelOfThree(int coi) : channel_(coi - 1), places_(kChannelPlaces<sizeof(T)>.of[coi - 1]) {}

    template <class D>
    HWY_INLINE hn::Vec<D> load(D d, const T* samples, size_t x) const {
        const T* const pixels = samples + 3 * x;
        constexpr size_t kBytes = hn::MaxLanes(D()) * sizeof(T);
        if constexpr (kBytes >= 16) {
            const hn::Repartition<uint8_t, D> d8;
            const uint8_t* const bytes = reinterpret_cast<const uint8_t*>(pixels);
            const auto part = [&](size_t i) HWY_ATTR {
                return hn::TableLookupBytesOr0(everyThirdBlock(d8, bytes + 16 * i), hn::LoadDup128(d8, places_[i]));
            };
            return hn::BitCast(d, hn::Or(hn::Or(part(0), part(1)), part(2)));
        } else {
            T few[hn::MaxLanes(D())];
            for (size_t i = 0; i < hn::MaxLanes(D()); ++i) std::memcpy(few + i, pixels + 3 * i + channel_, sizeof(T));
            return hn::LoadU(d, few);
        }
    }

private:
    // Blocks of 16 bytes, 48 bytes apart.
    template <class D8>
    static HWY_INLINE hn::Vec<D8> everyThirdBlock(D8 d8, const uint8_t* bytes) {
        if constexpr (hn::MaxLanes(D8()) == 16) {
            return hn::LoadU(d8, bytes);
        } else {
            const hn::Half<D8> half;
            return hn::Combine(d8, everyThirdBlock(half, bytes + 3 * hn::MaxLanes(half)), everyThirdBlock(half, bytes));
        }
    }

    int channel_;
    const uint8_t (*places_)[16];
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
    if constexpr (hwy::IsFloat<hn::TFromD<D>>()) {
        return hn::Abs(hn::Sub(a, b));
    } else if constexpr (hwy::IsSigned<hn::TFromD<D>>()) {
        const MagnitudeTag<D> du;
        const auto bias = hn::Set(du, 0x80);
        return magnitudeOfDifference(hn::Xor(hn::BitCast(du, a), bias), hn::Xor(hn::BitCast(du, b), bias));
    } else {
        return hn::Or(hn::SaturatedSub(a, b), hn::SaturatedSub(b, a));  // one of the two is zero
    }
}

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

// A row of each image of a region.
template <class T>
struct NormRow {
    const T* src1;
    const T* src2;
    const Qel8u* mask;

    NormRow(const NormRegion<T>& region, int y)
        : src1(row(region.pSrc1, region.src1Step, y)),
          src2(row(region.pSrc2, region.src2Step, y)),
          mask(row(region.pMask, region.maskStep, y)) {}
    NormRow(const T* a, const T* b, const Qel8u* m) : src1(a), src2(b), mask(m) {}
};

// Asks for the memory that lies some way ahead, in regions that are larger than the inner caches: the machine by itself
// does not run far enough ahead of a loop with some work in it. What lies beyond the region is asked for, too, but not
// read.
template <class Family, class Channel, class T>
class Prefetcher {
    static constexpr size_t kPixelBytes = Channel::kChannels * sizeof(T);
    static constexpr int64_t kInnerCaches = 1 << 18;
    static constexpr size_t kBlock = 64;

public:
    explicit HWY_INLINE Prefetcher(QelSize size)
        : on_(int64_t{size.width} * size.height * static_cast<int64_t>(Family::kImages * kPixelBytes) > kInnerCaches) {}

    // Called at every step through a row, acts at every 64th pixel.
    HWY_INLINE void operator()(const NormRow<T>& row, size_t x) const {
        if (!on_ || x % kBlock != 0) return;
        constexpr size_t kLine = 64;
        constexpr size_t kAhead = 1024;
        const size_t ahead = x * kPixelBytes + kAhead;
        for (size_t line = 0; line < kBlock * kPixelBytes; line += kLine) {
            hwy::Prefetch(reinterpret_cast<const char*>(row.src1) + ahead + line);
            if constexpr (Family::kImages > 1) hwy::Prefetch(reinterpret_cast<const char*>(row.src2) + ahead + line);
        }
        hwy::Prefetch(row.mask + x + kAhead);
    }

private:
    bool on_;
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
