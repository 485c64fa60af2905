#include <cstdint>
#include <cstring>

#include "frame/image.h"
#include "stats/mean_kernels.h"

#define HWY_TARGET_INCLUDE "stats/mean_in_order_kernels.cpp"
#include "frame/channel-inl.h"
#include "frame/simd-inl.h"
#include "stats/mask-inl.h"
#include "stats/mean_count-inl.h"

// Each sample that is taken is widened and added to one sum, in the order of the pixels. Such additions wait for one
// another. But as long as none of them has to round, their order does not show, and they can be done side by side:
// where all samples, and the sum before them, are multiples of a unit and no sum can reach 2 to the 53 units. Samples
// of single precision have 24 bits, which leaves the sum of an image room. This is found out strip by strip; a strip
// that may round is added in order.
HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

using Wide = hn::ScalableTag<Qel32f>;
using Bits = hn::RebindToUnsigned<Wide>;
using D64 = hn::ScalableTag<Qel64f>;

constexpr int kSignificand = 53;

Qel64f powerOfTwo(int exponent) {
    const uint64_t bits = static_cast<uint64_t>(exponent + 1023) << 52;
    Qel64f power;
    std::memcpy(&power, &bits, sizeof(power));
    return power;
}

// The sum of all samples before some pixel. It is a multiple of 2 to the power `unit`, at most that of the largest
// numbers of single precision.
struct RunningSum {
    static constexpr int kAnyUnit = 104;
    Qel64f value = 0;
    int unit = kAnyUnit;

    // After additions that rounded: the last bit of the value.
    HWY_INLINE void findUnit() {
        uint64_t bits;
        std::memcpy(&bits, &value, sizeof(bits));
        unit = static_cast<int>(bits >> 52 & 0x7FF) - 1075;
    }
};

// The sum of some samples, and the least and the largest magnitude among those that are not zero.
class SideBySide {
public:
    HWY_INLINE SideBySide()
        : low_(hn::Zero(D64())), high_(low_), largest_(hn::Zero(Bits())), leastBelow_(hn::Set(Bits(), ~uint32_t{0})) {}

    HWY_INLINE void add(hn::Vec<Wide> v) {
        const hn::Half<Wide> half;
        low_ = hn::Add(low_, hn::PromoteTo(D64(), hn::LowerHalf(half, v)));
        high_ = hn::Add(high_, hn::PromoteTo(D64(), hn::UpperHalf(half, v)));
        const auto magnitude = hn::BitCast(Bits(), hn::Abs(v));
        largest_ = hn::Max(largest_, magnitude);
        leastBelow_ = hn::Min(leastBelow_, hn::Sub(magnitude, hn::Set(Bits(), 1)));  // that of zero is out of the way
    }

    // Adds up to `count` samples to *pSum, unless an addition to it could round.
    HWY_INLINE bool addTo(RunningSum* pSum, size_t count) const {
        const uint32_t largest = hn::GetLane(hn::MaxOfLanes(Bits(), largest_));
        if (largest == 0) return true;
        const uint32_t least = hn::GetLane(hn::MinOfLanes(Bits(), leastBelow_)) + 1;
        const int exponent = HWY_MAX(static_cast<int>(least >> 23), 1);  // one for denormal numbers, too
        const int unit = HWY_MIN(pSum->unit, exponent - 150);
        Qel32f most;
        std::memcpy(&most, &largest, sizeof(most));
        // Roundings do not carry this over a power of two. An infinity or a NaN is not below it.
        const Qel64f before = pSum->value < 0 ? -pSum->value : pSum->value;
        if (!(before + static_cast<Qel64f>(count) * static_cast<Qel64f>(most) < powerOfTwo(unit + kSignificand)))
            return false;
        pSum->value += hn::GetLane(hn::SumOfLanes(D64(), hn::Add(low_, high_)));
        pSum->unit = unit;
        return true;
    }

private:
    hn::Vec<D64> low_, high_;
    hn::Vec<Bits> largest_, leastBelow_;
};

class Strip {
public:
    using Prefetch = Prefetcher<1, 3 * sizeof(Qel32f)>;

    HWY_INLINE Strip(const Samples<Qel32f>& samples, const ChannelPicker<Wide>& pick, const Prefetch& prefetch)
        : samples_(samples), pick_(pick), prefetch_(prefetch), width_(static_cast<size_t>(samples.roiSize.width)) {}

    HWY_INLINE bool addSideBySide(RunningSum* pSum) const {
        SideBySide sum;
        for (int y = 0; y < samples_.roiSize.height; ++y) {
            const Qel32f* p = samples_.src.row(y);
            const Qel8u* mask = samples_.mask.row(y);
            size_t x = 0;
            for (; width_ - x >= kLanes; x += kLanes) {
                if (kLoadsUnderMask) prefetch_(x, mask, p);
                sum.add(keep(Wide(), hn::LoadU(MaskTag<Wide>(), mask + x), pick_.load(p + 3 * x)));
            }
            for (; x < width_; ++x)
                if (mask[x] != 0) sum.add(hn::IfThenElseZero(hn::FirstN(Wide(), 1), hn::Set(Wide(), sample(p, x))));
        }
        return sum.addTo(pSum, width_ * static_cast<size_t>(samples_.roiSize.height));
    }

    // The samples that are taken are gathered first: the fewer additions, the better.
    HWY_INLINE void addInOrder(RunningSum* pSum) const {
        constexpr size_t kTogether = 64;
        const Wide d;
        const hn::RebindToUnsigned<Wide> d32;
        Qel32f gathered[kTogether + 2 * kLanes];
        size_t waiting = 0;
        Qel64f sum = pSum->value;
        for (int y = 0; y < samples_.roiSize.height; ++y) {
            const Qel32f* p = samples_.src.row(y);
            const Qel8u* mask = samples_.mask.row(y);
            for (size_t x = 0; x < width_;) {
                if (width_ - x >= kLanes) {
                    const auto m = hn::PromoteTo(d32, hn::LoadU(MaskTag<Wide>(), mask + x));
                    const auto taken = hn::RebindMask(d, hn::Ne(m, hn::Zero(d32)));
                    hn::StoreU(hn::Compress(pick_.load(p + 3 * x), taken), d, gathered + waiting);
                    waiting += hn::CountTrue(d, taken);
                    x += kLanes;
                } else {
                    gathered[waiting] = sample(p, x);
                    waiting += mask[x++] != 0;
                }
                if (waiting >= kTogether) {
                    for (size_t i = 0; i < kTogether; ++i) sum += static_cast<Qel64f>(gathered[i]);
                    waiting -= kTogether;
                    hn::StoreU(hn::LoadU(d, gathered + kTogether), d, gathered);
                }
            }
        }
        for (size_t i = 0; i < waiting; ++i) sum += static_cast<Qel64f>(gathered[i]);
        pSum->value = sum;
        pSum->findUnit();
    }

private:
    static constexpr size_t kLanes = hn::MaxLanes(Wide());

    HWY_INLINE Qel32f sample(const Qel32f* p, size_t x) const { return sampleAt(p + 3 * x + (samples_.coi - 1)); }

    const Samples<Qel32f> samples_;
    const ChannelPicker<Wide> pick_;
    const Prefetch prefetch_;
    const size_t width_;
};

void sumInOrder(const Samples<Qel32f>& samples, Sums* pSums) {
    constexpr int kStripPixels = 1024;
    const ChannelPicker<Wide> pick(samples.coi);
    const QelSize roi = samples.roiSize;
    const Strip::Prefetch prefetch(roi);
    const int stripRows = HWY_MAX(kStripPixels / roi.width, 1);
    RunningSum sum;
    PixelCount pixels;
    for (int y = 0, rows; y < roi.height; y += rows) {
        rows = HWY_MIN(stripRows, roi.height - y);
        const Samples<Qel32f> band = samples.rows(y, rows);
        const Strip strip(band, pick, prefetch);
        if (!strip.addSideBySide(&sum)) strip.addInOrder(&sum);
        pixels.addRows(band.mask, band.roiSize);
    }
    pSums->sum = sum.value;
    pSums->count = pixels.get();
}

}  // namespace

constexpr auto& ownSum_32f_C3CMR_W7 = sumInOrder;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownSum_32f_C3CMR_W7);
}  // namespace qel
#endif
