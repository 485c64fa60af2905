// Norms whose result does not depend on the order of the samples: all of 8u and 8s, Inf and L1 of 16u, Inf of 32f.
#include "stats/norm_kernels.h"

#include <algorithm>
#include <cstring>

#define HWY_TARGET_INCLUDE "stats/norm_kernels.cpp"
#include "stats/norm-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// Magnitudes that the narrow lanes of a sum can take before it has to be flushed into its wide ones.
constexpr size_t kAddsPerFlush = 8192;

// The largest magnitude. A NaN is passed over: Max gives its second operand where one is a NaN.
template <class D>
class Largest {
public:
    HWY_INLINE Largest() : max_(hn::Zero(D())) {}
    HWY_INLINE void add(hn::Vec<D> v) { max_ = hn::Max(v, max_); }
    HWY_INLINE void flush() {}
    HWY_INLINE Qel64f total() const { return ofLanes(D(), max_); }

private:
    // Bytes have no such operation for vectors of more than 128 bits.
    template <class DV>
    static HWY_INLINE Qel64f ofLanes(DV d, hn::Vec<DV> v) {
        if constexpr (hn::MaxLanes(DV()) * sizeof(hn::TFromD<DV>) == 16) {
            return hn::GetLane(hn::MaxOfLanes(d, v));
        } else {
            const hn::Half<DV> half;
            return ofLanes(half, hn::Max(hn::LowerHalf(half, v), hn::UpperHalf(half, v)));
        }
    }

    hn::Vec<D> max_;
};

// 32-bit lanes that are flushed into lanes of 64 bits: one sum for each half of what a step brings, since an addition
// waits for the one before. Constructors are spelled out here and below: those that the compiler writes belong to no
// instruction set.
template <class D32>
class FlushedSum {
public:
    HWY_INLINE FlushedSum() : even_(hn::Zero(D32())), odd_(even_), total_(hn::Zero(D64())) {}
    HWY_INLINE void addNarrow(hn::Vec<D32> even, hn::Vec<D32> odd) {
        even_ = hn::Add(even_, even);
        odd_ = hn::Add(odd_, odd);
    }
    HWY_INLINE void flush() {
        widen(even_);
        widen(odd_);
        even_ = odd_ = hn::Zero(D32());
    }
    HWY_INLINE Qel64f total() const { return static_cast<Qel64f>(hn::GetLane(hn::SumOfLanes(D64(), total_))); }

private:
    using D64 = hn::RepartitionToWide<D32>;

    HWY_INLINE void widen(hn::Vec<D32> sum) {
        const hn::Half<D32> half;
        total_ = hn::Add(total_, hn::PromoteTo(D64(), hn::LowerHalf(half, sum)));
        total_ = hn::Add(total_, hn::PromoteTo(D64(), hn::UpperHalf(half, sum)));
    }

    hn::Vec<D32> even_, odd_;
    hn::Vec<D64> total_;
};

template <class D>
class Sum;

template <size_t N>
class Sum<hn::Simd<uint8_t, N, 0>> {
    using D = hn::Simd<uint8_t, N, 0>;
    using D64 = hn::Repartition<uint64_t, D>;

public:
    HWY_INLINE Sum() : sum_(hn::Zero(D64())) {}
    HWY_INLINE void add(hn::Vec<D> v) { sum_ = hn::Add(sum_, hn::SumsOf8(v)); }
    HWY_INLINE void flush() {}
    HWY_INLINE Qel64f total() const { return static_cast<Qel64f>(hn::GetLane(hn::SumOfLanes(D64(), sum_))); }

private:
    hn::Vec<D64> sum_;
};

template <size_t N>
class Sum<hn::Simd<uint16_t, N, 0>> : public FlushedSum<hn::Simd<uint32_t, N / 2, 0>> {
    using D = hn::Simd<uint16_t, N, 0>;
    using D32 = hn::Simd<uint32_t, N / 2, 0>;
    static_assert(65535ull * kAddsPerFlush < 1ull << 32);

public:
    HWY_INLINE Sum() = default;
    HWY_INLINE void add(hn::Vec<D> v) {
        const auto pairs = hn::BitCast(D32(), v);
        this->addNarrow(hn::And(pairs, hn::Set(D32(), 0xFFFF)), hn::ShiftRight<16>(pairs));
    }
};

template <class D>
class SumOfSquares;

template <size_t N>
class SumOfSquares<hn::Simd<uint8_t, N, 0>> : public FlushedSum<hn::Simd<uint32_t, N / 4, 0>> {
    using D = hn::Simd<uint8_t, N, 0>;
    using D16 = hn::Simd<int16_t, N / 2, 0>;
    using D32 = hn::Simd<int32_t, N / 4, 0>;
    static_assert(2 * 255ull * 255ull * kAddsPerFlush < 1ull << 32, "a lane takes two squares at a time");

public:
    HWY_INLINE SumOfSquares() = default;
    HWY_INLINE void add(hn::Vec<D> v) {
        const hn::RebindToUnsigned<D16> du16;
        const auto pairs = hn::BitCast(du16, v);
        const auto even = hn::BitCast(D16(), hn::And(pairs, hn::Set(du16, 0xFF)));
        const auto odd = hn::BitCast(D16(), hn::ShiftRight<8>(pairs));
        this->addNarrow(sumOfPairs(even), sumOfPairs(odd));
    }

private:
    static HWY_INLINE hn::Vec<hn::RebindToUnsigned<D32>> sumOfPairs(hn::Vec<D16> v) {
        auto unused = hn::Zero(D32());
        const auto squares = hn::ReorderWidenMulAccumulate(D32(), v, v, hn::Zero(D32()), unused);
        return hn::BitCast(hn::RebindToUnsigned<D32>(), squares);
    }
};

// Lanes that are off, then lanes that are on.
struct ManyLanes {
    static constexpr size_t kOff = 64;
    uint8_t lanes[2 * kOff];

    constexpr ManyLanes() : lanes() {
        for (size_t i = kOff; i < 2 * kOff; ++i) lanes[i] = 0xFF;
    }
};
constexpr ManyLanes kOffThenOn;

// Takes a region's magnitudes into a family's sums, a vector at a time.
template <class Family, template <class> class Reduction, class Channel, class D>
class Reducer {
    using M = MagnitudeTag<D>;
    using T = hn::TFromD<D>;

public:
    explicit HWY_INLINE Reducer(const Channel& channel) : channel_(channel) {}

    // Rows of at least a vector, in strips of as many columns, and as many rows, as can be added up between flushes.
    HWY_INLINE void addRows(const NormRegion<T>& region) {
        const NormPrefetcher<Family, Channel, T> prefetch(region.size);
        const size_t width = static_cast<size_t>(region.size.width);
        for (size_t left = 0; left < width; left += kAddsPerFlush * kLanes) {
            const size_t right = std::min(width, left + kAddsPerFlush * kLanes);
            const int rows = static_cast<int>(kAddsPerFlush / ((right - left + kLanes - 1) / kLanes));
            for (int y = 0; y < region.size.height;) {
                const int end = region.size.height - y > rows ? y + rows : region.size.height;
                for (; y < end; ++y) addRow(NormRow<T>(region, y), left, right, prefetch);
                flush();
            }
        }
    }

    // Rows of less than a vector: each is copied to where the rest of a vector can be read, under a mask of zeros.
    HWY_INLINE void addNarrowRows(const NormRegion<T>& region) {
        const size_t width = static_cast<size_t>(region.size.width);
        T src1[kLanes * Channel::kChannels] = {};
        T src2[kLanes * Channel::kChannels] = {};
        Qel8u mask[kLanes] = {};
        for (int y = 0; y < region.size.height; ++y) {
            const NormRow<T> row(region, y);
            std::memcpy(src1, row.src1, width * sizeof(T) * Channel::kChannels);
            if (Family::kImages > 1) std::memcpy(src2, row.src2, width * sizeof(T) * Channel::kChannels);
            std::memcpy(mask, row.mask, width);
            add(NormRow<T>(src1, src2, mask), 0, hn::LoadU(MaskTag<D>(), mask));
            if (y % kAddsPerFlush == 0) flush();
        }
        flush();
    }

    HWY_INLINE NormSums sums() {
        Qel64f totals[Family::kSums];
        for (size_t i = 0; i < Family::kSums; ++i) totals[i] = reductions_[i].total();
        return normSums<Family>(totals);
    }

private:
    static constexpr size_t kLanes = hn::MaxLanes(D());

    // What is left after the last whole vector is taken by a vector that ends with the row's part, and whose first
    // lanes are masked off.
    HWY_INLINE void addRow(const NormRow<T>& row, size_t left, size_t right,
                           const NormPrefetcher<Family, Channel, T>& prefetch) {
        const size_t rest = (right - left) % kLanes;
        for (size_t x = left; x < right - rest; x += kLanes) {
            prefetch(row, x);
            add(row, x, hn::LoadU(MaskTag<D>(), row.mask + x));
        }
        if (rest != 0) {
            const size_t x = right - kLanes;
            const auto on = hn::LoadU(MaskTag<D>(), kOffThenOn.lanes + ManyLanes::kOff - kLanes + rest);
            add(row, x, hn::And(on, hn::LoadU(MaskTag<D>(), row.mask + x)));
        }
    }

    HWY_INLINE void add(const NormRow<T>& row, size_t x, hn::Vec<MaskTag<D>> mask) {
        hn::Vec<M> magnitudes[Family::kSums];
        Family::load(D(), channel_, row, x, mask, magnitudes);
        for (size_t i = 0; i < Family::kSums; ++i) reductions_[i].add(magnitudes[i]);
    }

    HWY_INLINE void flush() {
        for (auto& reduction : reductions_) reduction.flush();
    }

    Channel channel_;
    Reduction<M> reductions_[Family::kSums];
};

template <class Family, template <class> class Reduction, template <class> class Channel, class T>
NormSums reduceRegion(const NormRegion<T>& images) {
    const NormRegion<T> region = joinedRows(images, Channel<T>::kChannels);
    using Full = hn::ScalableTag<T>;
    using Full128 = hn::FixedTag<T, 16 / sizeof(T)>;
    const Channel<T> channel(region.coi);
    const size_t width = static_cast<size_t>(region.size.width);
    if (width >= hn::Lanes(Full())) {
        Reducer<Family, Reduction, Channel<T>, Full> reducer(channel);
        reducer.addRows(region);
        return reducer.sums();
    }
    Reducer<Family, Reduction, Channel<T>, Full128> reducer(channel);
    if (width >= hn::Lanes(Full128())) {
        reducer.addRows(region);
    } else {
        reducer.addNarrowRows(region);
    }
    return reducer.sums();
}

}  // namespace

constexpr auto& ownNorm_Inf_8u_C1MR_W7 = reduceRegion<Norm, Largest, OnlyChannel, Qel8u>;
constexpr auto& ownNorm_Inf_8u_C3CMR_W7 = reduceRegion<Norm, Largest, OneChannelOfThree, Qel8u>;
constexpr auto& ownNorm_Inf_8s_C1MR_W7 = reduceRegion<Norm, Largest, OnlyChannel, Qel8s>;
constexpr auto& ownNorm_Inf_8s_C3CMR_W7 = reduceRegion<Norm, Largest, OneChannelOfThree, Qel8s>;
constexpr auto& ownNorm_Inf_16u_C1MR_W7 = reduceRegion<Norm, Largest, OnlyChannel, Qel16u>;
constexpr auto& ownNorm_Inf_16u_C3CMR_W7 = reduceRegion<Norm, Largest, OneChannelOfThree, Qel16u>;
constexpr auto& ownNorm_Inf_32f_C1MR_W7 = reduceRegion<Norm, Largest, OnlyChannel, Qel32f>;
constexpr auto& ownNorm_Inf_32f_C3CMR_W7 = reduceRegion<Norm, Largest, OneChannelOfThree, Qel32f>;
constexpr auto& ownNorm_L1_8u_C1MR_W7 = reduceRegion<Norm, Sum, OnlyChannel, Qel8u>;
constexpr auto& ownNorm_L1_8u_C1MR_W7_B = ownNorm_L1_8u_C1MR_W7;  // whose sums are wide enough for any region
constexpr auto& ownNorm_L1_8u_C3CMR_A6 = reduceRegion<Norm, Sum, OneChannelOfThree, Qel8u>;
constexpr auto& ownNorm_L1_8s_C1MR_W7 = reduceRegion<Norm, Sum, OnlyChannel, Qel8s>;
constexpr auto& ownNorm_L1_8s_C3CMR_A6 = reduceRegion<Norm, Sum, OneChannelOfThree, Qel8s>;
constexpr auto& ownNorm_L1_16u_C1MR_W7 = reduceRegion<Norm, Sum, OnlyChannel, Qel16u>;
constexpr auto& ownNorm_L1_16u_C3CMR_W7 = reduceRegion<Norm, Sum, OneChannelOfThree, Qel16u>;
constexpr auto& ownNorm_L2_8u_C1MR_W7 = reduceRegion<Norm, SumOfSquares, OnlyChannel, Qel8u>;
constexpr auto& ownNorm_L2_8u_C3CMR_A6 = reduceRegion<Norm, SumOfSquares, OneChannelOfThree, Qel8u>;
constexpr auto& ownNorm_L2_8s_C1MR_W7 = reduceRegion<Norm, SumOfSquares, OnlyChannel, Qel8s>;
constexpr auto& ownNorm_L2_8s_C3CMR_A6 = reduceRegion<Norm, SumOfSquares, OneChannelOfThree, Qel8s>;

constexpr auto& ownNormDiff_Inf_8u_C1MR_W7 = reduceRegion<NormDiff, Largest, OnlyChannel, Qel8u>;
constexpr auto& ownNormDiff_Inf_8u_C3CMR_W7 = reduceRegion<NormDiff, Largest, OneChannelOfThree, Qel8u>;
constexpr auto& ownNormDiff_Inf_8s_C1MR_W7 = reduceRegion<NormDiff, Largest, OnlyChannel, Qel8s>;
constexpr auto& ownNormDiff_Inf_8s_C3CMR_W7 = reduceRegion<NormDiff, Largest, OneChannelOfThree, Qel8s>;
constexpr auto& ownNormDiff_Inf_16u_C1MR_W7 = reduceRegion<NormDiff, Largest, OnlyChannel, Qel16u>;
constexpr auto& ownNormDiff_Inf_16u_C3CMR_W7 = reduceRegion<NormDiff, Largest, OneChannelOfThree, Qel16u>;
constexpr auto& ownNormDiff_Inf_32f_C1MR_W7 = reduceRegion<NormDiff, Largest, OnlyChannel, Qel32f>;
constexpr auto& ownNormDiff_Inf_32f_C3CMR_W7 = reduceRegion<NormDiff, Largest, OneChannelOfThree, Qel32f>;
constexpr auto& ownNormDiff_L1_8u_C1MR_W7 = reduceRegion<NormDiff, Sum, OnlyChannel, Qel8u>;
constexpr auto& ownNormDiff_L1_8u_C3CMR_W7 = reduceRegion<NormDiff, Sum, OneChannelOfThree, Qel8u>;
constexpr auto& ownNormDiff_L1_8s_C1MR_W7 = reduceRegion<NormDiff, Sum, OnlyChannel, Qel8s>;
constexpr auto& ownNormDiff_L1_8s_C3CMR_W7 = reduceRegion<NormDiff, Sum, OneChannelOfThree, Qel8s>;
constexpr auto& ownNormDiff_L1_16u_C1MR_W7 = reduceRegion<NormDiff, Sum, OnlyChannel, Qel16u>;
constexpr auto& ownNormDiff_L1_16u_C3CMR_W7 = reduceRegion<NormDiff, Sum, OneChannelOfThree, Qel16u>;
constexpr auto& ownNormDiff_L2_8u_C1MR_W7 = reduceRegion<NormDiff, SumOfSquares, OnlyChannel, Qel8u>;
constexpr auto& ownNormDiff_L2_8u_C3CMR_W7 = reduceRegion<NormDiff, SumOfSquares, OneChannelOfThree, Qel8u>;
constexpr auto& ownNormDiff_L2_8s_C1MR_W7 = reduceRegion<NormDiff, SumOfSquares, OnlyChannel, Qel8s>;
constexpr auto& ownNormDiff_L2_8s_C3CMR_W7 = reduceRegion<NormDiff, SumOfSquares, OneChannelOfThree, Qel8s>;

constexpr auto& ownNormRel_Inf_8u_C1MR_W7 = reduceRegion<NormRel, Largest, OnlyChannel, Qel8u>;
constexpr auto& ownNormRel_Inf_8u_C3CMR_W7 = reduceRegion<NormRel, Largest, OneChannelOfThree, Qel8u>;
constexpr auto& ownNormRel_Inf_8s_C1MR_W7 = reduceRegion<NormRel, Largest, OnlyChannel, Qel8s>;
constexpr auto& ownNormRel_Inf_8s_C3CMR_W7 = reduceRegion<NormRel, Largest, OneChannelOfThree, Qel8s>;
constexpr auto& ownNormRel_Inf_16u_C1MR_W7 = reduceRegion<NormRel, Largest, OnlyChannel, Qel16u>;
constexpr auto& ownNormRel_Inf_16u_C3CMR_W7 = reduceRegion<NormRel, Largest, OneChannelOfThree, Qel16u>;
constexpr auto& ownNormRel_Inf_32f_C1MR_W7 = reduceRegion<NormRel, Largest, OnlyChannel, Qel32f>;
constexpr auto& ownNormRel_Inf_32f_C3CMR_W7 = reduceRegion<NormRel, Largest, OneChannelOfThree, Qel32f>;
constexpr auto& ownNormRel_L1_8u_C1MR_W7 = reduceRegion<NormRel, Sum, OnlyChannel, Qel8u>;
constexpr auto& ownNormRel_L1_8u_C3CMR_A6 = reduceRegion<NormRel, Sum, OneChannelOfThree, Qel8u>;
constexpr auto& ownNormRel_L1_8s_C1MR_W7 = reduceRegion<NormRel, Sum, OnlyChannel, Qel8s>;
constexpr auto& ownNormRel_L1_8s_C3CMR_A6 = reduceRegion<NormRel, Sum, OneChannelOfThree, Qel8s>;
constexpr auto& ownNormRel_L1_16u_C1MR_W7 = reduceRegion<NormRel, Sum, OnlyChannel, Qel16u>;
constexpr auto& ownNormRel_L1_16u_C3CMR_W7 = reduceRegion<NormRel, Sum, OneChannelOfThree, Qel16u>;
constexpr auto& ownNormRel_L2_8u_C1MR_W7 = reduceRegion<NormRel, SumOfSquares, OnlyChannel, Qel8u>;
constexpr auto& ownNormRel_L2_8u_C3CMR_W7 = reduceRegion<NormRel, SumOfSquares, OneChannelOfThree, Qel8u>;
constexpr auto& ownNormRel_L2_8s_C1MR_W7 = reduceRegion<NormRel, SumOfSquares, OnlyChannel, Qel8s>;
constexpr auto& ownNormRel_L2_8s_C3CMR_W7 = reduceRegion<NormRel, SumOfSquares, OneChannelOfThree, Qel8s>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownNorm_Inf_8u_C1MR_W7);
QEL_KERNEL(ownNorm_Inf_8u_C3CMR_W7);
QEL_KERNEL(ownNorm_Inf_8s_C1MR_W7);
QEL_KERNEL(ownNorm_Inf_8s_C3CMR_W7);
QEL_KERNEL(ownNorm_Inf_16u_C1MR_W7);
QEL_KERNEL(ownNorm_Inf_16u_C3CMR_W7);
QEL_KERNEL(ownNorm_Inf_32f_C1MR_W7);
QEL_KERNEL(ownNorm_Inf_32f_C3CMR_W7);
QEL_KERNEL(ownNorm_L1_8u_C1MR_W7);
QEL_KERNEL(ownNorm_L1_8u_C1MR_W7_B);
QEL_KERNEL(ownNorm_L1_8u_C3CMR_A6);
QEL_KERNEL(ownNorm_L1_8s_C1MR_W7);
QEL_KERNEL(ownNorm_L1_8s_C3CMR_A6);
QEL_KERNEL(ownNorm_L1_16u_C1MR_W7);
QEL_KERNEL(ownNorm_L1_16u_C3CMR_W7);
QEL_KERNEL(ownNorm_L2_8u_C1MR_W7);
QEL_KERNEL(ownNorm_L2_8u_C3CMR_A6);
QEL_KERNEL(ownNorm_L2_8s_C1MR_W7);
QEL_KERNEL(ownNorm_L2_8s_C3CMR_A6);
QEL_KERNEL(ownNormDiff_Inf_8u_C1MR_W7);
QEL_KERNEL(ownNormDiff_Inf_8u_C3CMR_W7);
QEL_KERNEL(ownNormDiff_Inf_8s_C1MR_W7);
QEL_KERNEL(ownNormDiff_Inf_8s_C3CMR_W7);
QEL_KERNEL(ownNormDiff_Inf_16u_C1MR_W7);
QEL_KERNEL(ownNormDiff_Inf_16u_C3CMR_W7);
QEL_KERNEL(ownNormDiff_Inf_32f_C1MR_W7);
QEL_KERNEL(ownNormDiff_Inf_32f_C3CMR_W7);
QEL_KERNEL(ownNormDiff_L1_8u_C1MR_W7);
QEL_KERNEL(ownNormDiff_L1_8u_C3CMR_W7);
QEL_KERNEL(ownNormDiff_L1_8s_C1MR_W7);
QEL_KERNEL(ownNormDiff_L1_8s_C3CMR_W7);
QEL_KERNEL(ownNormDiff_L1_16u_C1MR_W7);
QEL_KERNEL(ownNormDiff_L1_16u_C3CMR_W7);
QEL_KERNEL(ownNormDiff_L2_8u_C1MR_W7);
QEL_KERNEL(ownNormDiff_L2_8u_C3CMR_W7);
QEL_KERNEL(ownNormDiff_L2_8s_C1MR_W7);
QEL_KERNEL(ownNormDiff_L2_8s_C3CMR_W7);
QEL_KERNEL(ownNormRel_Inf_8u_C1MR_W7);
QEL_KERNEL(ownNormRel_Inf_8u_C3CMR_W7);
QEL_KERNEL(ownNormRel_Inf_8s_C1MR_W7);
QEL_KERNEL(ownNormRel_Inf_8s_C3CMR_W7);
QEL_KERNEL(ownNormRel_Inf_16u_C1MR_W7);
QEL_KERNEL(ownNormRel_Inf_16u_C3CMR_W7);
QEL_KERNEL(ownNormRel_Inf_32f_C1MR_W7);
QEL_KERNEL(ownNormRel_Inf_32f_C3CMR_W7);
QEL_KERNEL(ownNormRel_L1_8u_C1MR_W7);
QEL_KERNEL(ownNormRel_L1_8u_C3CMR_A6);
QEL_KERNEL(ownNormRel_L1_8s_C1MR_W7);
QEL_KERNEL(ownNormRel_L1_8s_C3CMR_A6);
QEL_KERNEL(ownNormRel_L1_16u_C1MR_W7);
QEL_KERNEL(ownNormRel_L1_16u_C3CMR_W7);
QEL_KERNEL(ownNormRel_L2_8u_C1MR_W7);
QEL_KERNEL(ownNormRel_L2_8u_C3CMR_W7);
QEL_KERNEL(ownNormRel_L2_8s_C1MR_W7);
QEL_KERNEL(ownNormRel_L2_8s_C3CMR_W7);
}  // namespace qel
#endif
