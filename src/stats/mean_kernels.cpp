#include "stats/mean_kernels.h"

#include <cstring>
#include <type_traits>

#include "frame/image.h"

#define HWY_TARGET_INCLUDE "stats/mean_kernels.cpp"
#include "frame/channel-inl.h"
#include "frame/simd-inl.h"
#include "stats/mask-inl.h"
#include "stats/mean_count-inl.h"

// Sums of integers are exact, so their order is free. A sample x enters as x - kBias, which makes unsigned bytes of 8s
// and signed words of 16u; what the bias adds is known from the count and comes off at the end.
HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// 64-bit sums of unsigned 32-bit numbers. The two accumulators do not wait for each other.
template <class D64>
struct WideSum {
    hn::Vec<D64> low, high;

    HWY_INLINE WideSum() : low(hn::Zero(D64())), high(low) {}
    template <class V32>
    HWY_INLINE void add(V32 x) {
        const auto pairs = hn::BitCast(D64(), x);
        low = hn::Add(low, hn::And(pairs, hn::Set(D64(), 0xFFFFFFFF)));
        high = hn::Add(high, hn::ShiftRight<32>(pairs));
    }
    HWY_INLINE hn::Vec<D64> get() const { return hn::Add(low, high); }
};

template <class V>
HWY_INLINE int64_t addLanes(V v) {
    return static_cast<int64_t>(hn::GetLane(hn::SumOfLanes(hn::DFromV<V>(), v)));
}

// Vectors that are added between two calls of endChunk(), at most. The mask's bytes are still near when it ends.
constexpr size_t kChunkVectors = 128;

// 8u, and 8s with its sign bit flipped.
template <class D, bool kSquares, int kSampleBias>
class ByteSums {
    using D64 = hn::Repartition<uint64_t, D>;
    using D32 = hn::Repartition<int32_t, D>;
    using V = hn::Vec<D>;

public:
    static constexpr int64_t kBias = kSampleBias;

    HWY_INLINE ByteSums() : sum_(hn::Zero(D64())), even_(hn::Zero(D32())), odd_(even_), unused_(even_) {}

    static HWY_INLINE V biased(V x) { return kBias == 0 ? x : hn::Xor(x, hn::Set(D(), 0x80)); }

    HWY_INLINE void add(V x) {
        sum_ = hn::Add(sum_, hn::SumsOf8(x));
        if constexpr (kSquares) {
            const hn::Repartition<int16_t, D> d16;
            const hn::Repartition<uint16_t, D> du16;
            const auto even = hn::BitCast(d16, hn::And(x, hn::BitCast(D(), hn::Set(du16, 0x00FF))));
            const auto odd = hn::BitCast(d16, hn::ShiftRight<8>(hn::BitCast(du16, x)));
            even_ = hn::ReorderWidenMulAccumulate(D32(), even, even, even_, unused_);
            odd_ = hn::ReorderWidenMulAccumulate(D32(), odd, odd, odd_, unused_);
        }
    }

    HWY_INLINE void endChunk() {
        if constexpr (kSquares) {
            static_assert((kChunkVectors + 1) * 4 * 255 * 255 < 0x80000000u, "the lanes of a chunk cannot overflow");
            squares_.add(hn::Add(even_, odd_));
            even_ = odd_ = hn::Zero(D32());
        }
    }

    int64_t sum() const { return addLanes(sum_); }
    int64_t squares() const { return addLanes(squares_.get()); }

private:
    hn::Vec<D64> sum_;
    WideSum<D64> squares_;
    hn::Vec<D32> even_, odd_, unused_;  // sums of squares of the chunk
};

// 16u as signed words.
template <class D, bool kSquares>
class WordSums {
    using D64 = hn::Repartition<uint64_t, D>;
    using D32 = hn::Repartition<int32_t, D>;
    using V = hn::Vec<D>;
    using V32 = hn::Vec<D32>;

public:
    static constexpr int64_t kBias = 0x8000;

    HWY_INLINE WordSums() : sum_(hn::Zero(D64())), older_(hn::Zero(D32())), newer_(older_), unused_(older_) {}

    static HWY_INLINE V biased(V x) { return hn::Xor(x, hn::Set(D(), 0x8000)); }

    HWY_INLINE void add(V x) {
        const hn::Repartition<int16_t, D> d16;
        const auto y = hn::BitCast(d16, x);
        const V32 next = hn::ReorderWidenMulAccumulate(D32(), y, hn::Set(d16, 1), older_, unused_);
        older_ = newer_;
        newer_ = next;
        // Two squares of -32768 make 2 to the 31: right as an unsigned number.
        if constexpr (kSquares) squares_.add(hn::ReorderWidenMulAccumulate(D32(), y, y, hn::Zero(D32()), unused_));
    }

    HWY_INLINE void endChunk() {
        static_assert((kChunkVectors + 1) * 2 * 0x8000 < 0x80000000u, "the lanes of a chunk cannot overflow");
        const hn::Repartition<int64_t, D> d64;
        const hn::Half<D32> half;
        const V32 chunkSum = hn::Add(older_, newer_);
        const auto low = hn::PromoteTo(d64, hn::LowerHalf(half, chunkSum));
        const auto high = hn::PromoteTo(d64, hn::UpperHalf(half, chunkSum));
        sum_ = hn::Add(sum_, hn::BitCast(D64(), hn::Add(low, high)));
        older_ = newer_ = hn::Zero(D32());
    }

    int64_t sum() const { return addLanes(sum_); }
    int64_t squares() const { return addLanes(squares_.get()); }

private:
    hn::Vec<D64> sum_;
    WideSum<D64> squares_;
    V32 older_, newer_;  // sums of the chunk, which take turns: one need not wait for the other
    V32 unused_;
};

// A vector of biased samples, zero where the mask is.
template <class D, class Total, int kChannels, bool kMasked>
class Loader {
public:
    using V = hn::Vec<D>;
    using Sample = hn::TFromD<D>;

    explicit Loader(int coi) : pick_(coi) {}

    HWY_INLINE V operator()(const Sample* p, const Qel8u* mask) const {
        const D d;
        V x;
        if constexpr (kChannels == 1) {
            x = Total::biased(hn::LoadU(d, p));
        } else {
            x = Total::biased(pick_.load(p));
        }
        if constexpr (!kMasked) return x;
        return keep(d, hn::LoadU(MaskTag<D>(), mask), x);
    }

private:
    ChannelPicker<D> pick_;
};

template <class D, class Total, int kChannels, bool kMasked>
class RowAdder {
    using Sample = hn::TFromD<D>;

public:
    RowAdder(QelSize size, int coi) : load_(coi), prefetch_(size) {}

    HWY_INLINE void addRow(const Sample* p, const Qel8u* mask, size_t width) {
        const D d;
        const size_t N = hn::Lanes(d);
        const auto loadAt = [&](size_t x) HWY_ATTR { return load_(p + x * kChannels, kMasked ? mask + x : nullptr); };

        size_t x = 0;
        while (width - x >= N) {
            const size_t start = x;
            const size_t end = x + HWY_MIN((width - x) / N, kChunkVectors) * N;
            for (; x < end; x += N) {
                if (kMasked && kLoadsUnderMask) prefetch_(x, mask, p);
                total.add(loadAt(x));
            }
            if (kMasked) pixels.addRow(mask + start, x - start);
            if (width - x >= N) total.endChunk();
        }
        const size_t left = width - x;
        if (left > 0 && width >= N) {
            // The row's last vector; what of it has been added counts no more.
            total.add(hn::IfThenZeroElse(hn::FirstN(d, N - left), loadAt(width - N)));
        } else if (left > 0) {
            alignas(64) Sample samples[hn::MaxLanes(d) * kChannels] = {};
            alignas(64) Qel8u counts[hn::MaxLanes(d)] = {};
            std::memcpy(samples, p, left * kChannels * sizeof(Sample));
            if (kMasked) std::memcpy(counts, mask, left);
            total.add(hn::IfThenElseZero(hn::FirstN(d, left), load_(samples, counts)));
        }
        if (kMasked) pixels.addRow(mask + x, left);
        total.endChunk();
    }

    Total total;
    PixelCount pixels;

private:
    const Loader<D, Total, kChannels, kMasked> load_;
    const Prefetcher<1, kChannels * sizeof(Sample)> prefetch_;
};

// Adds the sums of `rows` rows, in which no 64-bit integer can overflow.
template <class D, class Family, int kChannels, bool kMasked, class T>
HWY_INLINE void addRows(const Samples<T>& samples, size_t width, int rows, Sums* pSums) {
    using Total = typename Family::template Total<D>;
    RowAdder<D, Total, kChannels, kMasked> adder(samples.roiSize, samples.coi);
    for (int y = 0; y < rows; ++y) {
        const Qel8u* mask = kMasked ? samples.mask.row(y) : nullptr;
        adder.addRow(reinterpret_cast<const hn::TFromD<D>*>(samples.src.row(y)), mask, width);
    }
    constexpr int64_t b = Total::kBias;
    const int64_t count = kMasked ? adder.pixels.get() : static_cast<int64_t>(width) * rows;
    const int64_t sum = adder.total.sum();
    pSums->sum += static_cast<Qel64f>(sum + b * count);
    pSums->squares += static_cast<Qel64f>(adder.total.squares() + 2 * b * sum + b * b * count);
    pSums->count += count;
}

// As addRows for a band, by vectors that its rows fill.
template <class T, class Family, int kChannels, bool kMasked>
HWY_INLINE void addBand(const Samples<T>& samples, Sums* pSums) {
    using Sample = std::make_unsigned_t<T>;
    using Wide = hn::ScalableTag<Sample>;
    using Narrow = hn::CappedTag<Sample, 16 / sizeof(Sample)>;
    size_t width = static_cast<size_t>(samples.roiSize.width);
    int rows = samples.roiSize.height;
    const bool packed = isGapless(samples.src, samples.roiSize.width, kChannels) &&
                        (!kMasked || isGapless(samples.mask, samples.roiSize.width));
    if (packed) {  // one long row
        width *= static_cast<size_t>(rows);
        rows = 1;
    }
    if (width < hn::Lanes(Wide())) {
        addRows<Narrow, Family, kChannels, kMasked>(samples, width, rows, pSums);
    } else {
        addRows<Wide, Family, kChannels, kMasked>(samples, width, rows, pSums);
    }
}

template <class T, class Family, int kChannels, bool kMasked>
void sumRows(const Samples<T>& samples, Sums* pSums) {
    constexpr int64_t kBandPixels = int64_t{1} << 31;  // times the largest square, 2 to the 32: fits an int64_t
    const QelSize roi = samples.roiSize;
    const int bandRows = static_cast<int>(HWY_MIN(kBandPixels / roi.width, int64_t{roi.height}));
    *pSums = Sums();
    for (int y = 0, rows; y < roi.height; y += rows) {
        rows = HWY_MIN(bandRows, roi.height - y);
        addBand<T, Family, kChannels, kMasked>(samples.rows(y, rows), pSums);
    }
}

template <bool kSquares>
struct Sums8u {
    template <class D>
    using Total = ByteSums<D, kSquares, 0>;
};
template <bool kSquares>
struct Sums8s {
    template <class D>
    using Total = ByteSums<D, kSquares, -128>;
};
template <bool kSquares>
struct Sums16u {
    template <class D>
    using Total = WordSums<D, kSquares>;
};

}  // namespace

constexpr auto& ownSum_8u_C1MR_W7 = sumRows<Qel8u, Sums8u<false>, 1, true>;
constexpr auto& ownSum_8u_C3CMR_W7 = sumRows<Qel8u, Sums8u<false>, 3, true>;
constexpr auto& ownSumSq_8u_C1R_W7 = sumRows<Qel8u, Sums8u<true>, 1, false>;
constexpr auto& ownSumSq_8u_C3CR_W7 = sumRows<Qel8u, Sums8u<true>, 3, false>;
constexpr auto& ownSumSq_8u_C1MR_W7 = sumRows<Qel8u, Sums8u<true>, 1, true>;
constexpr auto& ownSumSq_8u_C3CMR_W7 = sumRows<Qel8u, Sums8u<true>, 3, true>;

constexpr auto& ownSum_8s_C1MR_W7 = sumRows<Qel8s, Sums8s<false>, 1, true>;
constexpr auto& ownSum_8s_C3CMR_W7 = sumRows<Qel8s, Sums8s<false>, 3, true>;
constexpr auto& ownSumSq_8s_C1R_W7 = sumRows<Qel8s, Sums8s<true>, 1, false>;
constexpr auto& ownSumSq_8s_C3CR_W7 = sumRows<Qel8s, Sums8s<true>, 3, false>;
constexpr auto& ownSumSq_8s_C1MR_W7 = sumRows<Qel8s, Sums8s<true>, 1, true>;
constexpr auto& ownSumSq_8s_C3CMR_W7 = sumRows<Qel8s, Sums8s<true>, 3, true>;

constexpr auto& ownSum_16u_C1MR_W7 = sumRows<Qel16u, Sums16u<false>, 1, true>;
constexpr auto& ownSum_16u_C3CMR_W7 = sumRows<Qel16u, Sums16u<false>, 3, true>;
constexpr auto& ownSumSq_16u_C1R_W7 = sumRows<Qel16u, Sums16u<true>, 1, false>;
constexpr auto& ownSumSq_16u_C3CR_W7 = sumRows<Qel16u, Sums16u<true>, 3, false>;
constexpr auto& ownSumSq_16u_C1MR_W7 = sumRows<Qel16u, Sums16u<true>, 1, true>;
constexpr auto& ownSumSq_16u_C3CMR_W7 = sumRows<Qel16u, Sums16u<true>, 3, true>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownSum_8u_C1MR_W7);
QEL_KERNEL(ownSum_8u_C3CMR_W7);
QEL_KERNEL(ownSumSq_8u_C1R_W7);
QEL_KERNEL(ownSumSq_8u_C3CR_W7);
QEL_KERNEL(ownSumSq_8u_C1MR_W7);
QEL_KERNEL(ownSumSq_8u_C3CMR_W7);
QEL_KERNEL(ownSum_8s_C1MR_W7);
QEL_KERNEL(ownSum_8s_C3CMR_W7);
QEL_KERNEL(ownSumSq_8s_C1R_W7);
QEL_KERNEL(ownSumSq_8s_C3CR_W7);
QEL_KERNEL(ownSumSq_8s_C1MR_W7);
QEL_KERNEL(ownSumSq_8s_C3CMR_W7);
QEL_KERNEL(ownSum_16u_C1MR_W7);
QEL_KERNEL(ownSum_16u_C3CMR_W7);
QEL_KERNEL(ownSumSq_16u_C1R_W7);
QEL_KERNEL(ownSumSq_16u_C3CR_W7);
QEL_KERNEL(ownSumSq_16u_C1MR_W7);
QEL_KERNEL(ownSumSq_16u_C3CMR_W7);
}  // namespace qel
#endif
