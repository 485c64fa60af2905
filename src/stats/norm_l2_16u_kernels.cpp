// L2 norms of 16u. Squares are rounded to single precision and so are their first sums, in an order that is part of the
// result and the same on every machine.
#include "stats/norm_kernels.h"

#define HWY_TARGET_INCLUDE "stats/norm_l2_16u_kernels.cpp"
#include "stats/norm-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

using F4 = hn::FixedTag<Qel32f, 4>;
using D4 = hn::CappedTag<Qel64f, 4>;

template <class VI>
HWY_INLINE auto square(VI v) {
    const hn::RebindToFloat<hn::DFromV<VI>> d;
    const auto f = hn::ConvertTo(d, hn::BitCast(hn::RebindToSigned<decltype(d)>(), v));
    return hn::Mul(f, f);
}

// The squares of samples, of each 8 the first 4 added to the last 4: a block of 4 lanes for each 8 samples.
template <class V>
HWY_INLINE auto pairsOfSquares(V v) {
    using D16 = hn::DFromV<V>;
    const hn::RepartitionToWide<D16> d32;
    const auto first = hn::BitCast(d32, hn::InterleaveLower(v, hn::Zero(D16())));
    const auto last = hn::BitCast(d32, hn::InterleaveUpper(D16(), v, hn::Zero(D16())));
    return hn::Add(square(first), square(last));
}

// Blocks of 4 lanes, added as halves of halves: (0 + 1) + (2 + 3) of four.
template <class V>
HWY_INLINE hn::Vec<F4> foldBlocks(V v) {
    using DV = hn::DFromV<V>;
    if constexpr (hn::MaxLanes(DV()) == 4) {
        return v;
    } else {
        const hn::Half<DV> half;
        if constexpr (hn::MaxLanes(DV()) == 16) v = hn::Add(v, hn::SwapAdjacentBlocks(v));
        const auto sums = hn::Add(hn::LowerHalf(half, v), hn::UpperHalf(half, v));
        if constexpr (hn::MaxLanes(DV()) == 16) {
            return hn::LowerHalf(sums);
        } else {
            return sums;
        }
    }
}

// As foldBlocks for four vectors of 4 blocks: a block for each.
template <class V>
HWY_INLINE V foldBlocksOfFour(V v0, V v1, V v2, V v3) {
    const hn::DFromV<V> d;
    const V pairs01 = hn::Add(evenBlocks(d, v1, v0), oddBlocks(d, v1, v0));
    const V pairs23 = hn::Add(evenBlocks(d, v3, v2), oddBlocks(d, v3, v2));
    return hn::Add(evenBlocks(d, pairs23, pairs01), oddBlocks(d, pairs23, pairs01));
}

// A family's sums over blocks of samples. Where a machine's vectors hold less than a block, its halves come one after
// the other.
template <class Family, class Channel>
class BlockSums {
    static constexpr size_t kSums = Family::kSums;
    static constexpr size_t kHalves = 4 / hn::MaxLanes(D4());

public:
    explicit HWY_INLINE BlockSums(const Channel& channel) : channel_(channel) {
        for (size_t i = 0; i < kSums; ++i)
            for (size_t half = 0; half < kHalves; ++half) totals_[i][half] = hn::Zero(D4());
    }

    template <size_t kSamples>
    HWY_INLINE void add(const NormRow<Qel16u>& row, size_t x) {
        hn::Vec<F4> sums[kSums];
        load<kSamples>(row, x, sums);
#pragma GCC unroll 2
        for (size_t i = 0; i < kSums; ++i) {
            if constexpr (kHalves == 1) {
                totals_[i][0] = hn::Add(totals_[i][0], hn::PromoteTo(D4(), sums[i]));
            } else {
                const hn::Half<F4> half;
                totals_[i][0] = hn::Add(totals_[i][0], hn::PromoteTo(D4(), hn::LowerHalf(half, sums[i])));
                totals_[i][1] = hn::Add(totals_[i][1], hn::PromoteTo(D4(), hn::UpperHalf(half, sums[i])));
            }
        }
    }

    // Four blocks of 32 samples, each a vector.
    HWY_INLINE void addFourVectors(const NormRow<Qel16u>& row, size_t x) {
        using D = hn::CappedTag<Qel16u, 32>;
        hn::Vec<D> samples[4][kSums];
#pragma GCC unroll 4
        for (size_t v = 0; v < 4; ++v) {
            const size_t at = x + 32 * v;
            Family::load(D(), channel_, row, at, hn::LoadU(MaskTag<D>(), row.mask + at), samples[v]);
        }
#pragma GCC unroll 2
        for (size_t i = 0; i < kSums; ++i) {
            const auto sums = foldBlocksOfFour(pairsOfSquares(samples[0][i]), pairsOfSquares(samples[1][i]),
                                               pairsOfSquares(samples[2][i]), pairsOfSquares(samples[3][i]));
            addBlocks(i, hn::LowerHalf(sums));
            addBlocks(i, hn::UpperHalf(hn::Half<hn::DFromV<decltype(sums)>>(), sums));
        }
    }

    // A sample by itself goes to the first lane.
    HWY_INLINE void addOne(const NormRow<Qel16u>& row, size_t x) {
        using D1 = hn::FixedTag<Qel16u, 1>;
        hn::Vec<D1> samples[kSums];
        Family::load(D1(), channel_, row, x, hn::LoadU(MaskTag<D1>(), row.mask + x), samples);
        for (size_t i = 0; i < kSums; ++i) {
            const Qel32f sample = static_cast<Qel32f>(hn::GetLane(samples[i]));
            const Qel64f firstLane[4] = {sample * sample};
            totals_[i][0] = hn::Add(totals_[i][0], hn::LoadU(D4(), firstLane));
        }
    }

    HWY_INLINE NormSums sums() const {
        Qel64f totals[kSums];
        for (size_t i = 0; i < kSums; ++i) {
            Qel64f lanes[4] = {};
            for (size_t half = 0; half < kHalves; ++half) hn::StoreU(totals_[i][half], D4(), lanes + 2 * half);
            totals[i] = (lanes[0] + lanes[2]) + (lanes[1] + lanes[3]);
        }
        return normSums<Family>(totals);
    }

private:
    template <size_t kSamples>
    HWY_INLINE void load(const NormRow<Qel16u>& row, size_t x, hn::Vec<F4>* sums) const {
        using D = hn::CappedTag<Qel16u, kSamples>;
        if constexpr (hn::MaxLanes(D()) == kSamples) {
            hn::Vec<D> samples[kSums];
            Family::load(D(), channel_, row, x, hn::LoadU(MaskTag<D>(), row.mask + x), samples);
#pragma GCC unroll 2
            for (size_t i = 0; i < kSums; ++i) {
                if constexpr (kSamples == 4) {
                    sums[i] = square(hn::PromoteTo(hn::Rebind<uint32_t, D>(), samples[i]));
                } else {
                    sums[i] = foldBlocks(pairsOfSquares(samples[i]));
                }
            }
        } else {
            hn::Vec<F4> second[kSums];
            load<kSamples / 2>(row, x, sums);
            load<kSamples / 2>(row, x + kSamples / 2, second);
            for (size_t i = 0; i < kSums; ++i) sums[i] = hn::Add(sums[i], second[i]);
        }
    }

    // Adds the sums of two blocks, one after the other.
    template <class V>
    HWY_INLINE void addBlocks(size_t i, V sums) {
        const auto wide = hn::PromoteTo(hn::Rebind<Qel64f, hn::DFromV<V>>(), sums);
        totals_[i][0] = hn::Add(totals_[i][0], hn::LowerHalf(wide));
        totals_[i][0] = hn::Add(totals_[i][0], hn::UpperHalf(D4(), wide));
    }

    Channel channel_;
    hn::Vec<D4> totals_[kSums][kHalves];  // one for each of the four lanes
};

// Blocks of 32 samples; the rest of a row goes by one block each of 16, 8 and 4, and by single samples.
template <class Family, template <class> class Channel>
NormSums sumSquares(const NormRegion<Qel16u>& images) {
    const NormRegion<Qel16u> region =
        images.size.width % 32 == 0 ? joinedRows(images, Channel<Qel16u>::kChannels) : images;
    BlockSums<Family, Channel<Qel16u>> sums((Channel<Qel16u>(region.coi)));
    const NormPrefetcher<Family, Channel<Qel16u>, Qel16u> prefetch(region.size);
    const size_t width = static_cast<size_t>(region.size.width);
    for (int y = 0; y < region.size.height; ++y) {
        const NormRow<Qel16u> row(region, y);
        size_t x = 0;
        if constexpr (hn::MaxLanes(hn::CappedTag<Qel16u, 32>()) == 32) {
            for (; x + 128 <= width; x += 128) {
                prefetch(row, x);
                prefetch(row, x + 64);
                sums.addFourVectors(row, x);
            }
        }
        for (; x + 32 <= width; x += 32) {
            prefetch(row, x);
            sums.template add<32>(row, x);
        }
        if (width & 16) sums.template add<16>(row, x), x += 16;
        if (width & 8) sums.template add<8>(row, x), x += 8;
        if (width & 4) sums.template add<4>(row, x), x += 4;
        for (; x < width; ++x) sums.addOne(row, x);
    }
    return sums.sums();
}

}  // namespace

constexpr auto& ownNorm_L2_16u_C1MR_W7 = sumSquares<Norm, OnlyChannel>;
constexpr auto& ownNorm_L2_16u_C3CMR_W7 = sumSquares<Norm, OneChannelOfThree>;
constexpr auto& ownNormDiff_L2_16u_C1MR_W7 = sumSquares<NormDiff, OnlyChannel>;
constexpr auto& ownNormDiff_L2_16u_C3CMR_W7 = sumSquares<NormDiff, OneChannelOfThree>;
constexpr auto& ownNormRel_L2_16u_C1MR_W7 = sumSquares<NormRel, OnlyChannel>;
constexpr auto& ownNormRel_L2_16u_C3CMR_W7 = sumSquares<NormRel, OneChannelOfThree>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownNorm_L2_16u_C1MR_W7);
QEL_KERNEL(ownNorm_L2_16u_C3CMR_W7);
QEL_KERNEL(ownNormDiff_L2_16u_C1MR_W7);
QEL_KERNEL(ownNormDiff_L2_16u_C3CMR_W7);
QEL_KERNEL(ownNormRel_L2_16u_C1MR_W7);
QEL_KERNEL(ownNormRel_L2_16u_C3CMR_W7);
}  // namespace qel
#endif
