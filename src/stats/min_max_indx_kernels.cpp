#include "stats/min_max_indx_kernels.h"

#include "frame/image.h"

#define HWY_TARGET_INCLUDE "stats/min_max_indx_kernels.cpp"
#include "frame/simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// Bytes of the mask, one for each lane of D.
template <class D>
using MaskTag = hn::Rebind<Qel8u, D>;

// Reads the samples of a vector of pixels, and the mask's bytes in the same order.
template <class D>
class OneChannel {
    using T = hn::TFromD<D>;

public:
    static constexpr int kChannels = 1;

    explicit OneChannel(int) {}
    HWY_INLINE hn::Vec<D> samples(const T* pixels) const { return hn::LoadU(D(), pixels); }
    HWY_INLINE hn::Vec<MaskTag<D>> mask(const Qel8u* bytes) const { return hn::LoadU(MaskTag<D>(), bytes); }
    static T sample(const T* pixel) { return *pixel; }
};

// As OneChannel, for one of three. N interleaved pixels are three vectors of N samples. As 3 and N have no common
// factor, the channel's samples lie in different lanes of the three and come together without moving, though not in
// order: pixel i is found in lane (3 i + channel) mod N.
template <class D>
class OneOfThree {
    using T = hn::TFromD<D>;
    static constexpr size_t kLanes = hn::MaxLanes(D());

public:
    static constexpr int kChannels = 3;

    explicit OneOfThree(int coi) : channel_(coi - 1) {
        const hn::Vec<D> wanted = hn::Set(D(), static_cast<T>(channel_));
        first_ = hn::Eq(hn::LoadU(D(), kTables.channel), wanted);
        second_ = hn::Eq(hn::LoadU(D(), kTables.channel + kLanes % 3), wanted);
    }

    HWY_INLINE hn::Vec<D> samples(const T* pixels) const {
        const D d;
        const hn::Vec<D> third = hn::LoadU(d, pixels + 2 * kLanes);
        return hn::IfThenElse(first_, hn::LoadU(d, pixels),
                              hn::IfThenElse(second_, hn::LoadU(d, pixels + kLanes), third));
    }
    HWY_INLINE hn::Vec<MaskTag<D>> mask(const Qel8u* bytes) const {
        const MaskTag<D> d8;
        return hn::TableLookupBytes(hn::LoadU(d8, bytes), hn::LoadU(d8, kTables.pixel + 2 - channel_));
    }
    T sample(const T* pixel) const { return pixel[channel_]; }

private:
    struct Tables {
        T channel[kLanes + 2] = {};    // of sample i of a row
        Qel8u pixel[kLanes + 2] = {};  // in lane i - 2 for channel 0; a channel further, lanes move up by one

        constexpr Tables() {
            constexpr size_t kInverse = 171;  // 3 * 171 mod N is 1 for any N of vectors
            for (size_t i = 0; i < kLanes + 2; ++i) {
                channel[i] = static_cast<T>(i % 3);
                pixel[i] = static_cast<Qel8u>((i + 2 * kLanes - 2) * kInverse % kLanes);
            }
        }
    };
    static constexpr Tables kTables{};

    int channel_;
    hn::Mask<D> first_, second_;
};

// The lanes whose mask byte is zero.
template <class D>
HWY_INLINE hn::Mask<D> leftOut(D d, hn::Vec<MaskTag<D>> mask) {
    if constexpr (sizeof(hn::TFromD<D>) == 1) {
        return hn::RebindMask(d, hn::Eq(mask, hn::Zero(MaskTag<D>())));
    } else {
        const hn::RebindToUnsigned<D> du;
        return hn::RebindMask(d, hn::Eq(hn::PromoteTo(du, mask), hn::Zero(du)));
    }
}

// The smallest and the largest sample, lane by lane. Min and Max give their second operand where the first is a NaN, so
// no NaN gets in.
template <class D>
struct LaneExtremes {
    using T = hn::TFromD<D>;
    hn::Vec<D> low, high;

    static HWY_INLINE LaneExtremes none() {
        return {hn::Set(D(), hwy::HighestValue<T>()), hn::Set(D(), hwy::LowestValue<T>())};
    }
    HWY_INLINE void take(hn::Vec<D> v) {
        low = hn::Min(v, low);
        high = hn::Max(v, high);
    }
    HWY_INLINE void takeBut(hn::Mask<D> out, hn::Vec<D> v) {
        low = hn::Min(hn::IfThenElse(out, hn::Set(D(), hwy::HighestValue<T>()), v), low);
        high = hn::Max(hn::IfThenElse(out, hn::Set(D(), hwy::LowestValue<T>()), v), high);
    }
    HWY_INLINE void merge(const LaneExtremes& other) {
        low = hn::Min(low, other.low);
        high = hn::Max(high, other.high);
    }
};

struct Least {
    template <class V>
    HWY_INLINE V operator()(V a, V b) const {
        return hn::Min(a, b);
    }
};
struct Greatest {
    template <class V>
    HWY_INLINE V operator()(V a, V b) const {
        return hn::Max(a, b);
    }
};

// Combines all lanes by op: halves down to 16 bytes, then by turning these.
template <size_t kTurn = 8, class D, class Op>
HWY_INLINE hn::TFromD<D> foldLanes(D d, hn::Vec<D> v, const Op& op) {
    constexpr size_t kBytes = hn::MaxLanes(D()) * sizeof(hn::TFromD<D>);
    if constexpr (kBytes > 16) {
        const hn::Half<D> half;
        return foldLanes(half, op(hn::LowerHalf(half, v), hn::UpperHalf(half, v)), op);
    } else if constexpr (kBytes == 16 && kTurn / sizeof(hn::TFromD<D>) > 0) {
        return foldLanes<kTurn / 2>(d, op(v, hn::CombineShiftRightBytes<kTurn>(d, v, v)), op);
    } else {
        return hn::GetLane(v);
    }
}

template <bool kMasked, class D, class Channel>
HWY_INLINE void takePixels(D d, const Channel& channel, const hn::TFromD<D>* pixels, const Qel8u* mask, size_t x,
                           LaneExtremes<D>& e) {
    const hn::Vec<D> v = channel.samples(pixels + x * Channel::kChannels);
    if constexpr (kMasked) {
        e.takeBut(leftOut(d, channel.mask(mask + x)), v);
    } else {
        e.take(v);
    }
}

template <class T>
struct Region {
    Plane<const T> src;
    Plane<const Qel8u> mask;
    QelSize size;

    // As many as there are of `rows` rows from row y on.
    Region strip(int y, int rows) const {
        return {src.from(y), mask.from(y), {size.width, HWY_MIN(rows, size.height - y)}};
    }
};

// Rows are at least as wide as a vector. Their last vector begins early enough to be whole: no harm in a sample met
// twice. Two chains, as the next minimum of floats has to wait for the last.
template <bool kMasked, class D, class Channel>
HWY_INLINE LaneExtremes<D> takeRows(D d, const Channel& channel, const Region<hn::TFromD<D>>& r,
                                    const LaneExtremes<D>& before) {
    const size_t n = hn::Lanes(d);
    const size_t last = static_cast<size_t>(r.size.width) - n;
    LaneExtremes<D> even = before;
    LaneExtremes<D> odd = before;
    for (int y = 0; y < r.size.height; ++y) {
        const auto* const pixels = r.src.row(y);
        const auto* const mask = r.mask.row(y);
        size_t x = 0;
        for (; x + n < last; x += 2 * n) {
            takePixels<kMasked>(d, channel, pixels, mask, x, even);
            takePixels<kMasked>(d, channel, pixels, mask, x + n, odd);
        }
        if (x < last) takePixels<kMasked>(d, channel, pixels, mask, x, even);
        takePixels<kMasked>(d, channel, pixels, mask, last, odd);
    }
    even.merge(odd);
    return even;
}

// The lanes of taken pixels whose sample is `wanted`.
template <bool kMasked, class D, class Channel>
HWY_INLINE hn::Mask<D> equalPixels(D d, const Channel& channel, const hn::TFromD<D>* pixels, const Qel8u* mask,
                                   size_t x, hn::Vec<D> wanted) {
    const hn::Mask<D> equal = hn::Eq(channel.samples(pixels + x * Channel::kChannels), wanted);
    if constexpr (kMasked) {
        return hn::AndNot(leftOut(d, channel.mask(mask + x)), equal);
    } else {
        return equal;
    }
}

// The first row in which a pixel is `value`: the last one where none above it has any.
template <bool kMasked, class D, class Channel, class T = hn::TFromD<D>>
HWY_INLINE int firstRowWith(T value, D d, const Channel& channel, const Region<T>& r) {
    const hn::Vec<D> wanted = hn::Set(d, value);
    const size_t last = static_cast<size_t>(r.size.width) - hn::Lanes(d);
    int y = 0;
    for (; y + 1 < r.size.height; ++y) {
        const auto* const pixels = r.src.row(y);
        const auto* const mask = r.mask.row(y);
        hn::Mask<D> found = equalPixels<kMasked>(d, channel, pixels, mask, last, wanted);
        for (size_t x = 0; x < last; x += hn::Lanes(d)) {
            found = hn::Or(found, equalPixels<kMasked>(d, channel, pixels, mask, x, wanted));
        }
        if (!hn::AllFalse(d, found)) break;
    }
    return y;
}

// Finds the strip of rows that holds each extreme, then the row in the strip. Few strips go beyond all strips before,
// and their rows are still in the nearest cache: a row costs next to nothing beyond its samples.
template <bool kMasked, class D, class Channel, class T = hn::TFromD<D>>
HWY_INLINE Extremes<T> extremesOf(D d, const Channel& channel, const Region<T>& r) {
    constexpr int kStripBytes = 2048;
    const int strip = HWY_MAX(kStripBytes / static_cast<int>(sizeof(T)) / r.size.width, 1);
    const Extremes<T> none;
    Extremes<T> found;
    LaneExtremes<D> before = LaneExtremes<D>::none();
    for (int64_t y = 0; y < r.size.height; y += strip) {
        const int top = static_cast<int>(y);
        const LaneExtremes<D> now = takeRows<kMasked>(d, channel, r.strip(top, strip), before);
        if (hn::AllTrue(d, hn::And(hn::Eq(now.low, before.low), hn::Eq(now.high, before.high)))) continue;
        const T low = foldLanes(d, now.low, Least());
        const T high = foldLanes(d, now.high, Greatest());
        if (low < found.low) found.low = low, found.lowRow = top;
        if (high > found.high) found.high = high, found.highRow = top;
        before = {hn::Set(d, low), hn::Set(d, high)};
    }
    if (HWY_MIN(strip, r.size.height) == 1) return found;
    const auto rowOf = [&](T value, int top)
                           HWY_ATTR { return top + firstRowWith<kMasked>(value, d, channel, r.strip(top, strip)); };
    if (found.low < none.low) found.lowRow = rowOf(found.low, found.lowRow);
    if (found.high > none.high) found.highRow = rowOf(found.high, found.highRow);
    return found;
}

template <class T>
using BlockTag = hn::FixedTag<T, 16 / sizeof(T)>;

// The row phase, in vectors no wider than a row.
template <template <class> class Channel, bool kMasked, class T>
void extremes(Plane<const T> src, Plane<const Qel8u> mask, QelSize size, int coi, Extremes<T>* pExtremes) {
    using Single = hn::FixedTag<T, 1>;
    // One of three channels comes faster from memory in vectors of 32 bytes than of 64, and puts no more than 16 bytes
    // of a mask in order.
    constexpr bool kOfThree = Channel<Single>::kChannels == 3;
    constexpr size_t kMostLanes = !kOfThree ? 64 : kMasked && sizeof(T) == 1 ? 16 : 32 / sizeof(T);
    using Wide = hn::CappedTag<T, kMostLanes>;
    const Region<T> r = {src, mask, size};
    const auto run = [&](auto d) HWY_ATTR { *pExtremes = extremesOf<kMasked>(d, Channel<decltype(d)>(coi), r); };
    // NOLINTNEXTLINE(bugprone-branch-clone): on some instruction sets two of the vectors are the same
    if (size.width >= static_cast<int>(hn::Lanes(Wide()))) {
        run(Wide());
    } else if (size.width >= static_cast<int>(hn::Lanes(BlockTag<T>()))) {
        run(BlockTag<T>());
    } else {
        run(Single());
    }
}

// The column phase: by blocks, then by pixels within the block that holds one and in what is left of the row.
template <template <class> class Channel, bool kMasked, class T>
int columnOf(const T* pSrc, const Qel8u* pMask, int width, int coi, T* pValue) {
    using D = BlockTag<T>;
    const D d;
    const Channel<D> channel(coi);
    const hn::Vec<D> wanted = hn::Set(d, *pValue);
    constexpr int kLanes = hn::MaxLanes(D());
    int x = 0;
    for (; width - x >= kLanes; x += kLanes) {
        const hn::Mask<D> equal = equalPixels<kMasked>(d, channel, pSrc, pMask, static_cast<size_t>(x), wanted);
        if (hn::AllFalse(d, equal)) continue;
        if constexpr (Channel<D>::kChannels == 1) x += static_cast<int>(hn::FindKnownFirstTrue(d, equal));
        break;
    }
    for (; x < width; ++x) {
        if (kMasked && pMask[x] == 0) continue;
        const T sample = channel.sample(pSrc + ptrdiff_t{x} * Channel<D>::kChannels);
        if (sample == *pValue) {
            *pValue = sample;
            return x;
        }
    }
    return 0;
}

}  // namespace

constexpr auto& ownMinMaxIndx_8u_C1R_1 = extremes<OneChannel, false, Qel8u>;
constexpr auto& ownMinMaxIndx_8s_C1R_1 = extremes<OneChannel, false, Qel8s>;
constexpr auto& ownMinMaxIndx_16u_C1R_1 = extremes<OneChannel, false, Qel16u>;
constexpr auto& ownMinMaxIndx_32f_C1R_1 = extremes<OneChannel, false, Qel32f>;
constexpr auto& ownMinMaxIndx_8u_C3CR_1 = extremes<OneOfThree, false, Qel8u>;
constexpr auto& ownMinMaxIndx_8s_C3CR_1 = extremes<OneOfThree, false, Qel8s>;
constexpr auto& ownMinMaxIndx_16u_C3CR_1 = extremes<OneOfThree, false, Qel16u>;
constexpr auto& ownMinMaxIndx_32f_C3CR_1 = extremes<OneOfThree, false, Qel32f>;
constexpr auto& ownMinMaxIndx_8u_C1MR_1 = extremes<OneChannel, true, Qel8u>;
constexpr auto& ownMinMaxIndx_8s_C1MR_1 = extremes<OneChannel, true, Qel8s>;
constexpr auto& ownMinMaxIndx_16u_C1MR_1 = extremes<OneChannel, true, Qel16u>;
constexpr auto& ownMinMaxIndx_32f_C1MR_1 = extremes<OneChannel, true, Qel32f>;
constexpr auto& ownMinMaxIndx_8u_C3CMR_1 = extremes<OneOfThree, true, Qel8u>;
constexpr auto& ownMinMaxIndx_8s_C3CMR_1 = extremes<OneOfThree, true, Qel8s>;
constexpr auto& ownMinMaxIndx_16u_C3CMR_1 = extremes<OneOfThree, true, Qel16u>;
constexpr auto& ownMinMaxIndx_32f_C3CMR_1 = extremes<OneOfThree, true, Qel32f>;

constexpr auto& ownMinMaxIndx_8u_C1R_2 = columnOf<OneChannel, false, Qel8u>;
constexpr auto& ownMinMaxIndx_8s_C1R_2 = columnOf<OneChannel, false, Qel8s>;
constexpr auto& ownMinMaxIndx_16u_C1R_2 = columnOf<OneChannel, false, Qel16u>;
constexpr auto& ownMinMaxIndx_32f_C1R_2 = columnOf<OneChannel, false, Qel32f>;
constexpr auto& ownMinMaxIndx_8u_C3CR_2 = columnOf<OneOfThree, false, Qel8u>;
constexpr auto& ownMinMaxIndx_8s_C3CR_2 = columnOf<OneOfThree, false, Qel8s>;
constexpr auto& ownMinMaxIndx_16u_C3CR_2 = columnOf<OneOfThree, false, Qel16u>;
constexpr auto& ownMinMaxIndx_32f_C3CR_2 = columnOf<OneOfThree, false, Qel32f>;
constexpr auto& ownMinMaxIndx_8u_C1MR_2 = columnOf<OneChannel, true, Qel8u>;
constexpr auto& ownMinMaxIndx_8s_C1MR_2 = columnOf<OneChannel, true, Qel8s>;
constexpr auto& ownMinMaxIndx_16u_C1MR_2 = columnOf<OneChannel, true, Qel16u>;
constexpr auto& ownMinMaxIndx_32f_C1MR_2 = columnOf<OneChannel, true, Qel32f>;
constexpr auto& ownMinMaxIndx_8u_C3CMR_2 = columnOf<OneOfThree, true, Qel8u>;
constexpr auto& ownMinMaxIndx_8s_C3CMR_2 = columnOf<OneOfThree, true, Qel8s>;
constexpr auto& ownMinMaxIndx_16u_C3CMR_2 = columnOf<OneOfThree, true, Qel16u>;
constexpr auto& ownMinMaxIndx_32f_C3CMR_2 = columnOf<OneOfThree, true, Qel32f>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownMinMaxIndx_8u_C1R_1);
QEL_KERNEL(ownMinMaxIndx_8s_C1R_1);
QEL_KERNEL(ownMinMaxIndx_16u_C1R_1);
QEL_KERNEL(ownMinMaxIndx_32f_C1R_1);
QEL_KERNEL(ownMinMaxIndx_8u_C3CR_1);
QEL_KERNEL(ownMinMaxIndx_8s_C3CR_1);
QEL_KERNEL(ownMinMaxIndx_16u_C3CR_1);
QEL_KERNEL(ownMinMaxIndx_32f_C3CR_1);
QEL_KERNEL(ownMinMaxIndx_8u_C1MR_1);
QEL_KERNEL(ownMinMaxIndx_8s_C1MR_1);
QEL_KERNEL(ownMinMaxIndx_16u_C1MR_1);
QEL_KERNEL(ownMinMaxIndx_32f_C1MR_1);
QEL_KERNEL(ownMinMaxIndx_8u_C3CMR_1);
QEL_KERNEL(ownMinMaxIndx_8s_C3CMR_1);
QEL_KERNEL(ownMinMaxIndx_16u_C3CMR_1);
QEL_KERNEL(ownMinMaxIndx_32f_C3CMR_1);
QEL_KERNEL(ownMinMaxIndx_8u_C1R_2);
QEL_KERNEL(ownMinMaxIndx_8s_C1R_2);
QEL_KERNEL(ownMinMaxIndx_16u_C1R_2);
QEL_KERNEL(ownMinMaxIndx_32f_C1R_2);
QEL_KERNEL(ownMinMaxIndx_8u_C3CR_2);
QEL_KERNEL(ownMinMaxIndx_8s_C3CR_2);
QEL_KERNEL(ownMinMaxIndx_16u_C3CR_2);
QEL_KERNEL(ownMinMaxIndx_32f_C3CR_2);
QEL_KERNEL(ownMinMaxIndx_8u_C1MR_2);
QEL_KERNEL(ownMinMaxIndx_8s_C1MR_2);
QEL_KERNEL(ownMinMaxIndx_16u_C1MR_2);
QEL_KERNEL(ownMinMaxIndx_32f_C1MR_2);
QEL_KERNEL(ownMinMaxIndx_8u_C3CMR_2);
QEL_KERNEL(ownMinMaxIndx_8s_C3CMR_2);
QEL_KERNEL(ownMinMaxIndx_16u_C3CMR_2);
QEL_KERNEL(ownMinMaxIndx_32f_C3CMR_2);
}  // namespace qel
#endif
