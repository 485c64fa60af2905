// How many pixels a mask selects. Included once per instruction set.
#include "frame/image.h"
#include "frame/simd-inl.h"

#if defined(QELCV_STATS_MEAN_COUNT_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QELCV_STATS_MEAN_COUNT_INL_H_
#undef QELCV_STATS_MEAN_COUNT_INL_H_
#else
#define QELCV_STATS_MEAN_COUNT_INL_H_
#endif

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {

class PixelCount {
public:
    HWY_INLINE PixelCount() : ones_(hn::Zero(D64())), onesOfEight_(hn::Zero(D64x1())) {}

    HWY_INLINE void addRows(Plane<const Qel8u> mask, QelSize size) {
        size = joinRows(size, isGapless(mask, size.width));
        for (int y = 0; y < size.height; ++y) addRow(mask.row(y), static_cast<size_t>(size.width));
    }

    HWY_INLINE void addRow(const Qel8u* mask, size_t width) {
        size_t x = 0;
        addVectors(hn::ScalableTag<uint8_t>(), mask, width, x, ones_);
        if (x < width) addVectors(hn::FixedTag<uint8_t, 8>(), mask, width, x, onesOfEight_);
        for (; x < width; ++x) single_ += mask[x] != 0;
    }

    HWY_INLINE int64_t get() const {
        const uint64_t whole = hn::GetLane(hn::SumOfLanes(D64(), ones_));
        return static_cast<int64_t>(whole + hn::GetLane(onesOfEight_)) + single_;
    }

private:
    using D64 = hn::ScalableTag<uint64_t>;
    using D64x1 = hn::FixedTag<uint64_t, 1>;

    template <class D>
    static HWY_INLINE void addVectors(D d, const Qel8u* mask, size_t width, size_t& x,
                                      hn::Vec<hn::Repartition<uint64_t, D>>& ones) {
        auto older = hn::Zero(hn::Repartition<uint64_t, D>());  // two sums that take turns
        auto newer = older;
        for (; x + hn::Lanes(d) <= width; x += hn::Lanes(d)) {
            const auto next = hn::Add(older, hn::SumsOf8(hn::Min(hn::LoadU(d, mask + x), hn::Set(d, 1))));
            older = newer;
            newer = next;
        }
        ones = hn::Add(ones, hn::Add(older, newer));
    }

    hn::Vec<D64> ones_;
    hn::Vec<D64x1> onesOfEight_;
    int64_t single_ = 0;
};

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#endif
