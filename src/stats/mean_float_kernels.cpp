#include <type_traits>

#include "frame/image.h"
#include "stats/mean_kernels.h"

#define HWY_TARGET_INCLUDE "stats/mean_float_kernels.cpp"
#include "frame/arithmetic-inl.h"
#include "frame/channel-inl.h"
#include "frame/simd-inl.h"
#include "stats/mask-inl.h"
#include "stats/mean_count-inl.h"

// The order of these sums is part of their results: four single-precision lanes on every machine, where lane i takes
// the pixels x + i and then x + 4 + i of each step of eight, and never a fused multiply-add. The pixels left over at a
// row's end go one by one into the first lane. A chain is one or two rows that go through the same four lanes; of two
// rows, each step takes the upper one's pixels first.
//
// Where each chain is folded by itself, several run side by side, one in each block of a wide vector, and are folded in
// the order of their rows. Pixels outside of the mask, and the other lanes where a single pixel enters, add +0. That
// changes no lane, since a lane starts at +0 and so never is -0.
HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

using D4 = hn::FixedTag<Qel32f, 4>;
using Wide = hn::ScalableTag<Qel32f>;

// What becomes of a sample before it is added, and whether the sum is wanted beside the squares.
struct Itself {
    static constexpr bool kWantsSum = true;
    template <class V>
    HWY_INLINE V operator()(V x) const {
        return x;
    }
};
struct DistanceFrom {
    static constexpr bool kWantsSum = false;
    Qel32f mean;
    HWY_INLINE Qel32f operator()(Qel32f x) const { return x - mean; }
    template <class V>
    HWY_INLINE V operator()(V x) const {
        return hn::Sub(x, hn::Set(hn::DFromV<V>(), mean));
    }
};

// In the place of a channel's picker, where there is but one channel.
struct AllPixels {
    explicit AllPixels(int) {}
};

// The blocks of v, one by one.
template <class V>
HWY_INLINE void splitBlocks(V v, hn::Vec<D4>* blocks) {
    if constexpr (hn::MaxLanes(hn::DFromV<V>()) == 4) {
        *blocks = v;
    } else {
        const hn::Half<hn::DFromV<V>> half;
        splitBlocks(hn::LowerHalf(half, v), blocks);
        splitBlocks(hn::UpperHalf(half, v), blocks + hn::MaxLanes(half) / 4);
    }
}

// Reads the rows of `samples` from row y on. Block r of a vector of D holds pixels of row `first` + r * `spacing` of
// them. D is as wide as a machine's vectors, or a single block.
template <class D, int kChannels, bool kMasked, class Op>
class Reader {
    template <class DV>
    using Picker = std::conditional_t<kChannels == 1, AllPixels, ChannelPicker<DV>>;
    static constexpr size_t kRowLanes = hn::MaxLanes(Wide());

public:
    using V = hn::Vec<D>;
    static constexpr size_t kColumns = HWY_MAX(kRowLanes, 8);

    // How to find the samples of the channel.
    struct Channel {
        Picker<Wide> wide;
        Picker<D4> four;
        explicit HWY_INLINE Channel(int coi) : wide(coi), four(coi) {}
    };

    HWY_INLINE Reader(const Samples<Qel32f>& samples, int y, const Op& op, const Channel& channel)
        : samples_(samples.rows(y, samples.roiSize.height - y)),
          op_(op),
          channel_(channel),
          prefetch_(samples.roiSize) {}

    // kColumns pixels of each row from x on, the next four of them in each vector.
    HWY_INLINE void columns(size_t x, int first, int spacing, V (&v)[kColumns / 4]) const {
        if constexpr (hn::MaxLanes(D()) == 4) {
            if (kMasked && kLoadsUnderMask) prefetch_(x, maskRow(first), srcRow(first));
#pragma GCC unroll 2
            for (size_t i = 0; i < kColumns; i += kRowLanes)
                splitBlocks(pixels(Wide(), channel_.wide, x + i, first), v + i / 4);
        } else {
#pragma GCC unroll 4
            for (int r = 0; r < static_cast<int>(kColumns / 4); ++r) {
                if (kMasked && kLoadsUnderMask) prefetch_(x, maskRow(first + r * spacing), srcRow(first + r * spacing));
                v[r] = pixels(Wide(), channel_.wide, x, first + r * spacing);
            }
            transposeBlocks(D(), v);
        }
    }

    // Four pixels of each row from x on.
    HWY_INLINE V four(size_t x, int first, int spacing) const {
        return fromBlocks<4>(D(), [&](int r) HWY_ATTR { return pixels(D4(), channel_.four, x, first + r * spacing); });
    }

    // Pixel x of each row, in the first lane of its block.
    HWY_INLINE V one(size_t x, int first, int spacing) const {
        return fromBlocks<4>(D(), [&](int r) HWY_ATTR {
            const int y = first + r * spacing;
            const bool taken = !kMasked || maskRow(y)[x] != 0;
            const Qel32f value =
                taken ? op_(sampleAt(srcRow(y) + (kChannels == 1 ? x : 3 * x + size_t(samples_.coi) - 1))) : 0;
            return hn::IfThenElseZero(hn::FirstN(D4(), 1), hn::Set(D4(), value));
        });
    }

private:
    HWY_INLINE const Qel32f* srcRow(int y) const { return samples_.src.row(y); }
    HWY_INLINE const Qel8u* maskRow(int y) const { return samples_.mask.row(y); }

    // As many pixels of row y as there are lanes.
    template <class DV>
    HWY_INLINE hn::Vec<DV> pixels(DV d, const Picker<DV>& pick, size_t x, int y) const {
        hn::Vec<DV> v;
        if constexpr (kChannels == 1) {
            v = op_(hn::LoadU(d, srcRow(y) + x));
        } else {
            v = op_(pick.load(srcRow(y) + 3 * x));
        }
        if constexpr (!kMasked) return v;
        return keep(d, hn::LoadU(MaskTag<DV>(), maskRow(y) + x), v);
    }

    const Samples<Qel32f> samples_;
    const Op op_;
    const Channel channel_;
    const Prefetcher<1, kChannels * sizeof(Qel32f)> prefetch_;
};

// The sums of chains, four lanes for each.
template <class D, size_t kVectors>
struct Lanes {
    hn::Vec<D> sum[kVectors], squares[kVectors];

    HWY_INLINE Lanes() {
#pragma GCC unroll 2
        for (size_t v = 0; v < kVectors; ++v) sum[v] = squares[v] = hn::Zero(D());
    }
    HWY_INLINE void add(size_t v, hn::Vec<D> x) {
        sum[v] = hn::Add(sum[v], x);
        squares[v] = hn::Add(squares[v], hn::Mul(x, x));
    }
};

// Adds the first chains of kRows rows: as many as fit into kVectors vectors of lanes.
template <int kRows, class R, class D, size_t kVectors>
HWY_INLINE void addChains(const R& reader, size_t width, Lanes<D, kVectors>& lanes) {
    constexpr int kVectorRows = hn::MaxLanes(D()) / 4 * kRows;
    size_t x = 0;
    for (; x + R::kColumns <= width; x += R::kColumns) {
#pragma GCC unroll 2
        for (size_t v = 0; v < kVectors; ++v) {
            typename R::V pixels[kRows][R::kColumns / 4];
#pragma GCC unroll 2
            for (int y = 0; y < kRows; ++y) reader.columns(x, int(v) * kVectorRows + y, kRows, pixels[y]);
#pragma GCC unroll 2
            for (size_t i = 0; i < R::kColumns / 4; i += 2) {
#pragma GCC unroll 2
                for (int y = 0; y < kRows; ++y) {
                    lanes.add(v, pixels[y][i]);
                    lanes.add(v, pixels[y][i + 1]);
                }
            }
        }
    }
    for (; x + 8 <= width; x += 8) {
        for (int y = 0; y < kRows; ++y) {
            for (size_t v = 0; v < kVectors; ++v) {
                lanes.add(v, reader.four(x, int(v) * kVectorRows + y, kRows));
                lanes.add(v, reader.four(x + 4, int(v) * kVectorRows + y, kRows));
            }
        }
    }
    for (; x < width; ++x) {
        for (int y = 0; y < kRows; ++y)
            for (size_t v = 0; v < kVectors; ++v) lanes.add(v, reader.one(x, int(v) * kVectorRows + y, kRows));
    }
}

struct Total {
    FourLaneSum sum, squares;
    PixelCount pixels;

    // NOLINTNEXTLINE(modernize-use-equals-default): what the compiler writes belongs to no instruction set
    HWY_INLINE Total() {}
};

// For each chain, in order: lanes 2 and 3 are added to lanes 0 and 1 in single precision, then both sums are widened
// and added to the two of the total.
template <class D, size_t kVectors>
HWY_INLINE void foldInto(FourLaneSum& total, const hn::Vec<D> (&lanes)[kVectors], D d) {
    constexpr size_t kLanes = hn::MaxLanes(d);
    alignas(64) Qel32f sums[kVectors * kLanes];
#pragma GCC unroll 2
    for (size_t v = 0; v < kVectors; ++v) hn::Store(hn::Add(lanes[v], hn::Shuffle1032(lanes[v])), d, sums + v * kLanes);
    for (size_t i = 0; i < kVectors * kLanes; i += 4) total.foldPair(hn::Load(hn::Half<D4>(), sums + i));
}

template <bool kMasked>
HWY_INLINE void countRows(const Samples<Qel32f>& samples, int y, int rows, PixelCount* pPixels) {
    if (kMasked) pPixels->addRows(samples.mask.from(y), {samples.roiSize.width, rows});
}

template <bool kMasked>
HWY_INLINE int64_t countOf(const Samples<Qel32f>& samples, const PixelCount& pixels) {
    return kMasked ? pixels.get() : int64_t{samples.roiSize.width} * samples.roiSize.height;
}

// Folds each chain, from row y on; returns the first row of those too few for kVectors vectors of D.
template <int kRows, size_t kVectors, class D, int kChannels, bool kMasked, class Op>
HWY_INLINE int foldChains(const Samples<Qel32f>& samples, int y, const Op& op, Total* pTotal) {
    constexpr int kStep = static_cast<int>(kVectors * hn::MaxLanes(D()) / 4 * kRows);
    using R = Reader<D, kChannels, kMasked, Op>;
    const typename R::Channel channel(samples.coi);
    for (; samples.roiSize.height - y >= kStep; y += kStep) {
        const R reader(samples, y, op, channel);
        Lanes<D, kVectors> lanes;
        addChains<kRows>(reader, static_cast<size_t>(samples.roiSize.width), lanes);
        if (Op::kWantsSum) foldInto(pTotal->sum, lanes.sum, D());
        foldInto(pTotal->squares, lanes.squares, D());
        countRows<kMasked>(samples, y, kStep, &pTotal->pixels);
    }
    return y;
}

// Chains of kRows rows; a last odd row is a chain by itself.
template <int kRows, int kChannels, bool kMasked, class Op>
HWY_INLINE Total sumChains(const Samples<Qel32f>& samples, const Op& op) {
    Total total;
    // Chains in two vectors need not wait for one another. Four rows and their masks are streams enough; from memory,
    // which is slower than a single chain, one row and its mask come faster.
    constexpr size_t kVectors = kMasked && hn::MaxLanes(Wide()) == 16 ? 1 : 2;
    constexpr int64_t kCachedPixels = 1 << 22;
    const bool fromMemory = kMasked && int64_t{samples.roiSize.width} * samples.roiSize.height > kCachedPixels;
    int y = fromMemory ? 0 : foldChains<kRows, kVectors, Wide, kChannels, kMasked>(samples, 0, op, &total);
    y = foldChains<kRows, 1, D4, kChannels, kMasked>(samples, y, op, &total);
    if (kRows > 1) foldChains<1, 1, D4, kChannels, kMasked>(samples, y, op, &total);
    return total;
}

// The whole region as one chain, whose lanes are left to the caller to fold.
template <int kRows, int kChannels, bool kMasked>
HWY_INLINE void sumSerially(const Samples<Qel32f>& samples, Lanes<D4, 1>& lanes, PixelCount* pPixels) {
    using R = Reader<D4, kChannels, kMasked, Itself>;
    const typename R::Channel channel(samples.coi);
    const QelSize roi = samples.roiSize;
    int y = 0;
    for (; roi.height - y >= kRows; y += kRows) {
        addChains<kRows>(R(samples, y, Itself(), channel), static_cast<size_t>(roi.width), lanes);
        countRows<kMasked>(samples, y, kRows, pPixels);
    }
    if (kRows == 1 || y == roi.height) return;
    addChains<1>(R(samples, y, Itself(), channel), static_cast<size_t>(roi.width), lanes);
    countRows<kMasked>(samples, y, 1, pPixels);
}

// Folded after each chain of kRows rows.
template <int kRows, int kChannels, bool kMasked>
void sumSquares(const Samples<Qel32f>& samples, Sums* pSums) {
    const Total total = sumChains<kRows, kChannels, kMasked>(samples, Itself());
    pSums->sum = total.sum.get();
    pSums->squares = total.squares.get();
    pSums->count = countOf<kMasked>(samples, total.pixels);
}

// Two rows at once, folded at the end.
template <int kChannels>
void sumSquaresSmall(const Samples<Qel32f>& samples, Sums* pSums) {
    Lanes<D4, 1> lanes;
    Total total;
    sumSerially<2, kChannels, false>(samples, lanes, &total.pixels);
    foldInto(total.sum, lanes.sum, D4());
    foldInto(total.squares, lanes.squares, D4());
    pSums->sum = total.sum.get();
    pSums->squares = total.squares.get();
    pSums->count = countOf<false>(samples, total.pixels);
}

// The four lanes are widened first and then added.
void sumMasked(const Samples<Qel32f>& samples, Sums* pSums) {
    Lanes<D4, 1> lanes;
    PixelCount pixels;
    sumSerially<1, 1, true>(samples, lanes, &pixels);
    FourLaneSum total;
    total.foldWidened(lanes.sum[0]);
    pSums->sum = total.get();
    pSums->count = pixels.get();
}

template <int kChannels, bool kMasked>
void sumDistances(const Samples<Qel32f>& samples, Qel32f mean, Qel64f* pSum) {
    *pSum = sumChains<1, kChannels, kMasked>(samples, DistanceFrom{mean}).squares.get();
}

}  // namespace

constexpr auto& ownSum_32f_C1MR_W7 = sumMasked;
constexpr auto& ownSumSq_32f_C1R_W7 = sumSquares<2, 1, false>;
constexpr auto& ownSumSq_32f_C1R_W7_Al = sumSquares<1, 1, false>;
constexpr auto& ownSumSq_32f_C1R_smallsize_W7 = sumSquaresSmall<1>;
constexpr auto& ownSumSq_32f_C3CR_W7 = sumSquares<2, 3, false>;
constexpr auto& ownSumSq_32f_C3CR_W7_Al = sumSquares<1, 3, false>;
constexpr auto& ownSumSq_32f_C3CR_smallsize_W7 = sumSquaresSmall<3>;
constexpr auto& ownSumSq_32f_C1MR_W7 = sumSquares<1, 1, true>;
constexpr auto& ownSumSq_32f_C3CMR_W7 = sumSquares<1, 3, true>;

constexpr auto& ownSq_32f_C1R_W7 = sumDistances<1, false>;
constexpr auto& ownSq_32f_C3CR_W7 = sumDistances<3, false>;
constexpr auto& ownSq_32f_C1MR_W7 = sumDistances<1, true>;
constexpr auto& ownSq_32f_C3CMR_W7 = sumDistances<3, true>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownSum_32f_C1MR_W7);
QEL_KERNEL(ownSumSq_32f_C1R_W7);
QEL_KERNEL(ownSumSq_32f_C1R_W7_Al);
QEL_KERNEL(ownSumSq_32f_C1R_smallsize_W7);
QEL_KERNEL(ownSumSq_32f_C3CR_W7);
QEL_KERNEL(ownSumSq_32f_C3CR_W7_Al);
QEL_KERNEL(ownSumSq_32f_C3CR_smallsize_W7);
QEL_KERNEL(ownSumSq_32f_C1MR_W7);
QEL_KERNEL(ownSumSq_32f_C3CMR_W7);
QEL_KERNEL(ownSq_32f_C1R_W7);
QEL_KERNEL(ownSq_32f_C3CR_W7);
QEL_KERNEL(ownSq_32f_C1MR_W7);
QEL_KERNEL(ownSq_32f_C3CMR_W7);
}  // namespace qel
#endif
