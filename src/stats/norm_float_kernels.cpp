// L1 and L2 norms of 32f. The order of summation is part of the result: four lanes in single precision along each row,
// folded into double precision at its end.
#include "stats/norm_kernels.h"

#define HWY_TARGET_INCLUDE "stats/norm_float_kernels.cpp"
#include "stats/norm-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

using F4 = hn::FixedTag<Qel32f, 4>;
using F1 = hn::FixedTag<Qel32f, 1>;

struct Magnitude {
    template <class V>
    HWY_INLINE V operator()(V magnitude) const {
        return magnitude;
    }
};

struct Square {
    template <class V>
    HWY_INLINE V operator()(V magnitude) const {
        return hn::Mul(magnitude, magnitude);
    }
};

// A family's sums over rows. A norm of one image adds alternate vectors of a row to two sums, the others to one. Rows
// are independent of each other up to their ends, which are folded in row order; so a wide vector holds several.
template <class Family, class Term, class Channel>
class RowSums {
    static constexpr size_t kSums = Family::kSums;
    static constexpr size_t kParts = Family::kImages == 1 ? 2 : 1;
    static constexpr size_t kRowLanes = 4 * kParts;
    using Wide = hn::CappedTag<Qel32f, 16>;

public:
    // Rows that lie side by side in a vector.
    static constexpr size_t kRows = HWY_MAX(hn::MaxLanes(Wide()) / kRowLanes, 1);

    explicit HWY_INLINE RowSums(const NormRegion<Qel32f>& region) : channel_(region.coi), prefetch_(region.size) {}

    HWY_INLINE void addRow(const NormRow<Qel32f>& row, size_t width) {
        hn::Vec<F4> sums[kParts][kSums];
        for (size_t part = 0; part < kParts; ++part)
            for (size_t i = 0; i < kSums; ++i) sums[part][i] = hn::Zero(F4());
        addRest(row, 0, width, sums);
        for (size_t i = 0; i < kSums; ++i) {
            if constexpr (kParts > 1) sums[0][i] = hn::Add(sums[0][i], sums[1][i]);
            totals_[i].fold(sums[0][i]);
        }
    }

    // kRows rows from row y on.
    HWY_INLINE void addRows(const NormRegion<Qel32f>& region, int y, size_t width) {
        constexpr size_t kLanes = hn::MaxLanes(Wide());
        const Wide d;
        hn::Vec<Wide> sums[kSums];
        for (size_t i = 0; i < kSums; ++i) sums[i] = hn::Zero(d);
        size_t x = 0;
        for (; x + kLanes <= width; x += kLanes) {
            hn::Vec<Wide> terms[kSums][kRows];
#pragma GCC unroll 4
            for (size_t r = 0; r < kRows; ++r) {
                const NormRow<Qel32f> row(region, y + static_cast<int>(r));
                prefetch_(row, x);
                hn::Vec<Wide> magnitudes[kSums];
                Family::load(d, channel_, row, x, hn::LoadU(MaskTag<Wide>(), row.mask + x), magnitudes);
#pragma GCC unroll 2
                for (size_t i = 0; i < kSums; ++i) terms[i][r] = Term()(magnitudes[i]);
            }
#pragma GCC unroll 2
            for (size_t i = 0; i < kSums; ++i) {
                if constexpr (kParts == 1) {
                    transposeBlocks(d, terms[i]);
                } else if constexpr (kRows == 2) {
                    const hn::Vec<Wide> first = hn::ConcatLowerLower(d, terms[i][1], terms[i][0]);
                    terms[i][1] = hn::ConcatUpperUpper(d, terms[i][1], terms[i][0]);
                    terms[i][0] = first;
                }
#pragma GCC unroll 4
                for (size_t r = 0; r < kRows; ++r) sums[i] = hn::Add(sums[i], terms[i][r]);
            }
        }

        Qel32f lanes[kSums][kLanes];
        if (x < width) {
            for (size_t i = 0; i < kSums; ++i) hn::StoreU(sums[i], d, lanes[i]);
            for (size_t r = 0; r < kRows; ++r) {
                hn::Vec<F4> rowSums[kParts][kSums];
                for (size_t part = 0; part < kParts; ++part)
                    for (size_t i = 0; i < kSums; ++i)
                        rowSums[part][i] = hn::LoadU(F4(), lanes[i] + r * kRowLanes + 4 * part);
                addRest(NormRow<Qel32f>(region, y + static_cast<int>(r)), x, width, rowSums);
                for (size_t part = 0; part < kParts; ++part)
                    for (size_t i = 0; i < kSums; ++i)
                        hn::StoreU(rowSums[part][i], F4(), lanes[i] + r * kRowLanes + 4 * part);
            }
            for (size_t i = 0; i < kSums; ++i) sums[i] = hn::LoadU(d, lanes[i]);
        }

        for (size_t i = 0; i < kSums; ++i) {
            if constexpr (kParts > 1) sums[i] = hn::Add(sums[i], hn::SwapAdjacentBlocks(sums[i]));
            hn::StoreU(hn::Add(sums[i], hn::Shuffle1032(sums[i])), d, lanes[i]);
#pragma GCC unroll 4
            for (size_t r = 0; r < kRows; ++r) totals_[i].foldPair(hn::LoadU(hn::Half<F4>(), lanes[i] + r * kRowLanes));
        }
    }

    // The totals, rounded to single precision.
    HWY_INLINE NormSums sums() const {
        Qel64f totals[kSums];
        for (size_t i = 0; i < kSums; ++i) totals[i] = static_cast<Qel32f>(totals_[i].get());
        return normSums<Family>(totals);
    }

private:
    // Adds a row from x on to what its sums hold. A last vector that has no partner goes to the first sum, single
    // samples to its first lane.
    HWY_INLINE void addRest(const NormRow<Qel32f>& row, size_t x, size_t width, hn::Vec<F4> (&sums)[kParts][kSums]) {
        for (; x + kRowLanes <= width; x += kRowLanes) {
            prefetch_(row, x);
            for (size_t part = 0; part < kParts; ++part) add(F4(), row, x + 4 * part, sums[part]);
        }
        if (kParts > 1 && x + 4 <= width) add(F4(), row, x, sums[0]), x += 4;
        for (; x < width; ++x) add(F1(), row, x, sums[0]);
    }

    template <class D>
    HWY_INLINE void add(D d, const NormRow<Qel32f>& row, size_t x, hn::Vec<F4>* sums) const {
        hn::Vec<D> magnitudes[kSums];
        Family::load(d, channel_, row, x, hn::LoadU(MaskTag<D>(), row.mask + x), magnitudes);
        for (size_t i = 0; i < kSums; ++i) sums[i] = hn::Add(sums[i], zeroExtended(Term()(magnitudes[i])));
    }

    static HWY_INLINE hn::Vec<F4> zeroExtended(hn::Vec<F4> v) { return v; }
    static HWY_INLINE hn::Vec<F4> zeroExtended(hn::Vec<F1> v) {
        return hn::ZeroExtendVector(F4(), hn::ZeroExtendVector(hn::Half<F4>(), v));
    }

    Channel channel_;
    NormPrefetcher<Family, Channel, Qel32f> prefetch_;
    FourLaneSum totals_[kSums];
};

template <class Family, class Term, template <class> class Channel>
NormSums sumRows(const NormRegion<Qel32f>& region) {
    using Sums = RowSums<Family, Term, Channel<Qel32f>>;
    Sums sums(region);
    constexpr int kRows = static_cast<int>(Sums::kRows);
    const size_t width = static_cast<size_t>(region.size.width);
    int y = 0;
    if constexpr (kRows > 1) {
        for (; y + kRows <= region.size.height; y += kRows) sums.addRows(region, y, width);
    }
    for (; y < region.size.height; ++y) sums.addRow(NormRow<Qel32f>(region, y), width);
    return sums.sums();
}

}  // namespace

constexpr auto& ownNorm_L1_32f_C1MR_W7 = sumRows<Norm, Magnitude, OnlyChannel>;
constexpr auto& ownNorm_L1_32f_C3CMR_W7 = sumRows<Norm, Magnitude, OneChannelOfThree>;
constexpr auto& ownNorm_L2_32f_C1MR_W7 = sumRows<Norm, Square, OnlyChannel>;
constexpr auto& ownNorm_L2_32f_C3CMR_W7 = sumRows<Norm, Square, OneChannelOfThree>;
constexpr auto& ownNormDiff_L1_32f_C1MR_W7 = sumRows<NormDiff, Magnitude, OnlyChannel>;
constexpr auto& ownNormDiff_L1_32f_C3CMR_W7 = sumRows<NormDiff, Magnitude, OneChannelOfThree>;
constexpr auto& ownNormDiff_L2_32f_C1MR_W7 = sumRows<NormDiff, Square, OnlyChannel>;
constexpr auto& ownNormDiff_L2_32f_C3CMR_W7 = sumRows<NormDiff, Square, OneChannelOfThree>;
constexpr auto& ownNormRel_L1_32f_C1MR_W7 = sumRows<NormRel, Magnitude, OnlyChannel>;
constexpr auto& ownNormRel_L1_32f_C3CMR_W7 = sumRows<NormRel, Magnitude, OneChannelOfThree>;
constexpr auto& ownNormRel_L2_32f_C1MR_W7 = sumRows<NormRel, Square, OnlyChannel>;
constexpr auto& ownNormRel_L2_32f_C3CMR_W7 = sumRows<NormRel, Square, OneChannelOfThree>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownNorm_L1_32f_C1MR_W7);
QEL_KERNEL(ownNorm_L1_32f_C3CMR_W7);
QEL_KERNEL(ownNorm_L2_32f_C1MR_W7);
QEL_KERNEL(ownNorm_L2_32f_C3CMR_W7);
QEL_KERNEL(ownNormDiff_L1_32f_C1MR_W7);
QEL_KERNEL(ownNormDiff_L1_32f_C3CMR_W7);
QEL_KERNEL(ownNormDiff_L2_32f_C1MR_W7);
QEL_KERNEL(ownNormDiff_L2_32f_C3CMR_W7);
QEL_KERNEL(ownNormRel_L1_32f_C1MR_W7);
QEL_KERNEL(ownNormRel_L1_32f_C3CMR_W7);
QEL_KERNEL(ownNormRel_L2_32f_C1MR_W7);
QEL_KERNEL(ownNormRel_L2_32f_C3CMR_W7);
}  // namespace qel
#endif
