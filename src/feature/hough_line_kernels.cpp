#include "feature/hough_line_kernels.h"

#define HWY_TARGET_INCLUDE "feature/hough_line_kernels.cpp"
#include "frame/simd-inl.h"
// Behind what it stands on.
#include "frame/lane_bits-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

int points(const Qel8u* pSrc, int width, Qel32s* pColumns) {
    int count = 0;
    forVectors(hn::ScalableTag<Qel8u>(), size_t(width), [&](auto d, size_t x) HWY_ATTR {
        const auto set = hn::Ne(hn::LoadU(d, pSrc + x), hn::Zero(d));
        forSetBits(laneBits(d, set), [&](int i) HWY_ATTR { pColumns[count++] = int(x) + i; });
    });
    return count;
}

using D32 = hn::ScalableTag<Qel32s>;
using V32 = hn::Vec<D32>;

HWY_INLINE V32 roundedToCounter(V32 distance, int half) {
    return hn::Add(hn::ShiftRight<10>(hn::Add(distance, hn::Set(D32(), 512))), hn::Set(D32(), half));
}

// Distances in single precision. They stay within the counters; where rounding of the largest images might lead a
// little beyond, they are held there.
class FloatDistances {
    using DF = hn::ScalableTag<Qel32f>;

public:
    FloatDistances(const HoughAngle& angle, int y)
        : angle_(angle),
          cosine_(hn::Set(DF(), static_cast<Qel32f>(angle.cosine))),
          ySine_(hn::Set(DF(), static_cast<Qel32f>(y) * static_cast<Qel32f>(angle.sine))) {}

    HWY_INLINE V32 counters(V32 x) const {
        const V32 distance = hn::NearestInt(hn::Add(hn::Mul(hn::ConvertTo(DF(), x), cosine_), ySine_));
        const V32 counter = roundedToCounter(distance, angle_.half);
        return hn::Max(hn::Set(D32(), angle_.lo), hn::Min(counter, hn::Set(D32(), angle_.hi)));
    }

private:
    const HoughAngle& angle_;
    hn::Vec<DF> cosine_, ySine_;
};

// Distances in integers, modulo 2^32. Those out of range are counted where nobody looks.
class IntegerDistances {
public:
    IntegerDistances(const HoughAngle& angle, int y)
        : angle_(angle),
          cosine_(hn::Set(D32(), angle.cosine)),
          ySine_(hn::Set(D32(), static_cast<int>(static_cast<unsigned>(y) * static_cast<unsigned>(angle.sine)))) {}

    HWY_INLINE V32 counters(V32 x) const {
        const V32 counter = roundedToCounter(hn::Add(hn::Mul(x, cosine_), ySine_), angle_.half);
        const auto out = hn::Or(hn::Lt(counter, hn::Set(D32(), angle_.lo)), hn::Gt(counter, hn::Set(D32(), angle_.hi)));
        return hn::IfThenElse(out, hn::Set(D32(), angle_.outside), counter);
    }

private:
    const HoughAngle& angle_;
    V32 cosine_, ySine_;
};

// Whole vectors of counters are computed, also behind the end of a list; what comes of it is written over by the next
// row or never looked at. Many points are counted at once, in a loop that does nothing else.
template <class Distances>
void vote(const HoughPoints& points, const HoughAngle& angle, Qel32s* pCounters) {
    constexpr int kRoom = 1024;
    constexpr int kLanes = int(hn::MaxLanes(D32()));
    static_assert(kLanes * sizeof(Qel32s) <= 64, "what can be read behind a list");
    HWY_ALIGN Qel32s counters[kRoom + kLanes];
    int waiting = 0;
    const auto count = [&]() HWY_ATTR {
        for (int i = 0; i < waiting; ++i) ++pCounters[counters[i]];
        waiting = 0;
    };
    for (int y = 0; y < points.height; ++y) {
        const Qel32s* columns = points.list(y) + 1;
        const Qel32s* const end = columns + columns[-1];
        const Distances distances(angle, y);
        while (columns < end) {
            const int taken = int(HWY_MIN(end - columns, kRoom - waiting));
            for (int i = 0; i < taken; i += kLanes) {
                hn::StoreU(distances.counters(hn::LoadU(D32(), columns + i)), D32(), counters + waiting + i);
            }
            waiting += taken;
            columns += taken;
            if (waiting == kRoom) count();
        }
    }
    count();
}

// The peaks among the lanes from counter r on, as bits.
template <class D>
HWY_INLINE uint64_t peakBits(D d, const HoughRows& rows, int r, int least) {
    const Qel32s* const current = rows.current + r;
    const auto c = hn::LoadU(d, current);
    const auto above = hn::And(hn::Gt(c, hn::Set(d, least)), hn::Gt(c, hn::LoadU(d, current - 1)));
    const auto below = hn::Or(hn::Lt(c, hn::LoadU(d, current + 1)), hn::Lt(c, hn::LoadU(d, rows.next + r)));
    return laneBits(d, hn::AndNot(below, hn::And(above, hn::Gt(c, hn::LoadU(d, rows.previous + r)))));
}

int peak(const HoughRows& rows, int from, int end, int least) {
    const D32 whole;
    const hn::CappedTag<Qel32s, 1> one;
    const int lanes = int(hn::Lanes(whole));
    int r = from;
    for (; r <= end - lanes; r += lanes) {
        const uint64_t bits = peakBits(whole, rows, r, least);
        if (bits != 0) return r + int(hwy::Num0BitsBelowLS1Bit_Nonzero64(bits));
    }
    while (r < end && peakBits(one, rows, r, least) == 0) ++r;
    return r;
}

}  // namespace

constexpr auto& ownHoughPoints_8u32s_W7 = points;
constexpr auto& ownHoughVote_32f_W7 = vote<FloatDistances>;
constexpr auto& ownHoughVote_Region_32s_W7 = vote<IntegerDistances>;
constexpr auto& ownPeakBuf_w7 = peak;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownHoughPoints_8u32s_W7);
QEL_KERNEL(ownHoughVote_32f_W7);
QEL_KERNEL(ownHoughVote_Region_32s_W7);
QEL_KERNEL(ownPeakBuf_w7);
}  // namespace qel
#endif
