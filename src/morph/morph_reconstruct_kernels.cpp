#include "morph/morph_reconstruct_kernels.h"

#include <limits>

#include "frame/image.h"

#define HWY_TARGET_INCLUDE "morph/morph_reconstruct_kernels.cpp"
#include "frame/simd-inl.h"

// A sweep is serial by its rule: c = limit(grow(c, t), m) from sample to sample. But with lo = limit(t, m) and hi = m
// each step is c = grow(lo, limit(c, hi)), and two such steps in turn, (lo1, hi1) then (lo2, hi2), are one of the same
// form: lo = grow(lo2, limit(lo1, hi2)), hi = limit(hi1, hi2). So the steps of a vector are joined in log steps,
// exactly, and then done with the c that comes from the vector before.

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// kLeast changes nothing that it is grown by, kMost nothing that it limits.
struct Dilation {
    template <class L>
    static constexpr L kLeast = std::numeric_limits<L>::lowest();
    template <class L>
    static constexpr L kMost = std::numeric_limits<L>::max();
    template <class V>
    static HWY_INLINE V grow(V a, V b) {
        return hn::Max(a, b);
    }
    template <class V>
    static HWY_INLINE V limit(V a, V b) {
        return hn::Min(a, b);
    }
    static bool isBeyond(int32_t a, int32_t b) { return a > b; }
};
struct Erosion {
    template <class L>
    static constexpr L kLeast = std::numeric_limits<L>::max();
    template <class L>
    static constexpr L kMost = std::numeric_limits<L>::lowest();
    template <class V>
    static HWY_INLINE V grow(V a, V b) {
        return hn::Min(a, b);
    }
    template <class V>
    static HWY_INLINE V limit(V a, V b) {
        return hn::Max(a, b);
    }
    static bool isBeyond(int32_t a, int32_t b) { return a < b; }
};

// Floats are handled as integers of the same order, in which -0 comes before 0 and a NaN has a place, too: so nothing
// depends on the order of comparisons, and each change is one that cannot be undone. The marker is such integers from
// the first sweep to the last, a mask becomes them on its way.
template <class T>
using LaneOf = std::conditional_t<std::is_same_v<T, Qel32f>, int32_t, Qel8u>;
template <class D>
HWY_INLINE hn::Vec<D> reordered(D d, hn::Vec<D> v) {  // and back
    return hn::Xor(v, hn::And(hn::ShiftRight<31>(v), hn::Set(d, INT32_MAX)));
}
HWY_INLINE int32_t reordered(int32_t v) { return v ^ ((v >> 31) & INT32_MAX); }

template <class D, class L = hn::TFromD<D>>
HWY_INLINE hn::Vec<D> loadMask(D d, const L* p) {
    if constexpr (sizeof(L) == 1) {
        return hn::LoadU(d, p);
    } else {
        return reordered(d, hn::LoadU(d, p));
    }
}
HWY_INLINE int32_t maskSample(const Qel8u* p) { return *p; }
HWY_INLINE int32_t maskSample(const int32_t* p) { return reordered(sampleAt(p)); }

void reorderRow(Qel32f* pRow, int width) {
    int32_t* const row = reinterpret_cast<int32_t*>(pRow);
    forVectors(hn::ScalableTag<int32_t>(), static_cast<size_t>(width),
               [=](auto d, size_t x) HWY_ATTR { hn::StoreU(reordered(d, hn::LoadU(d, row + x)), d, row + x); });
}

template <class D>
constexpr bool kTwoBlocks = hn::MaxLanes(D()) * sizeof(hn::TFromD<D>) == 32;

// Each lane becomes lane kLane of its block of 16 bytes.
template <int kLane, class D>
HWY_INLINE hn::Vec<D> broadcastInBlocks(D d, hn::Vec<D> v) {
    if constexpr (sizeof(hn::TFromD<D>) == 1) {
        return hn::TableLookupBytes(v, hn::Set(d, Qel8u{kLane}));
    } else {
        return hn::Broadcast<kLane>(v);
    }
}

// The lanes of a vector in the order in which a sweep meets them.
struct Forward {
    static constexpr bool kAscending = true;

    // Each lane becomes the one kBytes before it in its block; the first ones take `fill`.
    template <int kBytes, class D, class V = hn::Vec<D>>
    static HWY_INLINE V shiftBlocks(D d, V v, V fill) {
        return hn::CombineShiftRightBytes<16 - kBytes>(d, v, fill);
    }
    template <class D, class V = hn::Vec<D>>
    static HWY_INLINE V lastOfBlocks(D d, V v) {
        return broadcastInBlocks<16 / sizeof(hn::TFromD<D>) - 1>(d, v);
    }
    // The first block becomes `fill`, the second the first of v.
    template <class D, class V = hn::Vec<D>>
    static HWY_INLINE V nextBlock(D d, V v, V fill) {
        return hn::ConcatLowerLower(d, v, fill);
    }
    // The block that is met last, twice.
    template <class D, class V = hn::Vec<D>>
    static HWY_INLINE V lastBlock(D d, V v) {
        return hn::ConcatUpperUpper(d, v, v);
    }
    // The last block of `before`, then the first of v.
    template <class D, class V = hn::Vec<D>>
    static HWY_INLINE V blocksBefore(D d, V v, V before) {
        return hn::ConcatLowerUpper(d, v, before);
    }
};
struct Backward {
    static constexpr bool kAscending = false;

    template <int kBytes, class D, class V = hn::Vec<D>>
    static HWY_INLINE V shiftBlocks(D d, V v, V fill) {
        return hn::CombineShiftRightBytes<kBytes>(d, fill, v);
    }
    template <class D, class V = hn::Vec<D>>
    static HWY_INLINE V lastOfBlocks(D d, V v) {
        return broadcastInBlocks<0>(d, v);
    }
    template <class D, class V = hn::Vec<D>>
    static HWY_INLINE V nextBlock(D d, V v, V fill) {
        return hn::ConcatUpperUpper(d, fill, v);
    }
    template <class D, class V = hn::Vec<D>>
    static HWY_INLINE V lastBlock(D d, V v) {
        return hn::ConcatLowerLower(d, v, v);
    }
    template <class D, class V = hn::Vec<D>>
    static HWY_INLINE V blocksBefore(D d, V v, V before) {
        return hn::ConcatLowerUpper(d, before, v);
    }
};

// Each lane becomes the one before it, the first the last one of `before`.
template <class Direction, class D, class V = hn::Vec<D>>
HWY_INLINE V lanesBefore(D d, V v, V before) {
    constexpr int kLane = sizeof(hn::TFromD<D>);
    if constexpr (kTwoBlocks<D>) {
        return Direction::template shiftBlocks<kLane>(d, v, Direction::blocksBefore(d, v, before));
    } else {
        return Direction::template shiftBlocks<kLane>(d, v, before);
    }
}

// Every lane becomes the one that is met last.
template <class Direction, class D, class V = hn::Vec<D>>
HWY_INLINE V lastLane(D d, V v) {
    const V last = Direction::lastOfBlocks(d, v);
    if constexpr (kTwoBlocks<D>) {
        return Direction::lastBlock(d, last);
    } else {
        return last;
    }
}

// One step per lane: c becomes grow(lo, limit(c, hi)).
template <class V>
struct Steps {
    V lo, hi;

    // These, done after `first`.
    template <class Op>
    HWY_INLINE Steps after(Steps first) const {
        return {Op::grow(lo, Op::limit(first.lo, hi)), Op::limit(first.hi, hi)};
    }
};

// Joins each step with all those that the sweep meets before it.
template <class Op, class Direction, int kBytes, class D, class V = hn::Vec<D>>
HWY_INLINE Steps<V> joined(D d, Steps<V> steps) {
    using L = hn::TFromD<D>;
    const V least = hn::Set(d, Op::template kLeast<L>);
    const V most = hn::Set(d, Op::template kMost<L>);
    if constexpr (kBytes < 16) {
        const Steps<V> before = {Direction::template shiftBlocks<kBytes>(d, steps.lo, least),
                                 Direction::template shiftBlocks<kBytes>(d, steps.hi, most)};
        return joined<Op, Direction, 2 * kBytes>(d, steps.template after<Op>(before));
    } else if constexpr (kTwoBlocks<D>) {
        const Steps<V> before = {Direction::nextBlock(d, Direction::lastOfBlocks(d, steps.lo), least),
                                 Direction::nextBlock(d, Direction::lastOfBlocks(d, steps.hi), most)};
        return steps.template after<Op>(before);
    } else {
        return steps;
    }
}

// The samples of the other row that a sample of this one takes in: none, the one beside it, or that and the two beside
// that one. Beyond its ends the row has nothing.
enum class Near { kNone, kL1, kInf };

// In a plain pass hardly a vector stays as it is. In a check pass most do, and it is asked whether any does not.
enum class Pass { kPlain, kCheck };

template <class Op, Near kNear, class D>
HWY_INLINE hn::Vec<D> grownByNear(D d, hn::Vec<D> v, const hn::TFromD<D>* pNear, int x, int width) {
    constexpr int kLanes = hn::MaxLanes(D());
    if constexpr (kNear == Near::kNone) return v;
    const hn::Vec<D> beside = hn::LoadU(d, pNear + x);
    v = Op::grow(v, beside);
    if constexpr (kNear == Near::kInf) {
        v = Op::grow(
            v, x > 0 ? hn::LoadU(d, pNear + x - 1) : lanesBefore<Forward>(d, beside, lastLane<Backward>(d, beside)));
        v = Op::grow(v, x + kLanes < width ? hn::LoadU(d, pNear + x + 1)
                                           : lanesBefore<Backward>(d, beside, lastLane<Forward>(d, beside)));
    }
    return v;
}

// Whether each sample holds against the one before it. Then all hold against all.
template <class Op, class Direction, class D, class V = hn::Vec<D>>
HWY_INLINE bool isQuiet(D d, V now, V carry, V most) {
    const V pushed = Op::limit(Op::grow(now, lanesBefore<Direction>(d, now, carry)), most);
    return hn::AllTrue(d, hn::Eq(pushed, now));
}

// Sweeps over whole vectors. The last one may overlap the one before it: what is swept twice stays as it is.
template <class Op, class Direction, Near kNear, Pass kPass, class D, class L = hn::TFromD<D>>
HWY_INLINE bool sweepVectors(D d, const L* pNear, const L* pMask, L* pRow, int width) {
    using V = hn::Vec<D>;
    constexpr int kLanes = hn::MaxLanes(D());
    const V none = hn::Set(d, Op::template kLeast<L>);
    V carry = none;
    V changes = hn::Zero(d);
    for (int swept = 0; swept < width; swept += kLanes) {
        if (width - swept < kLanes) swept = width - kLanes, carry = none;
        const int x = Direction::kAscending ? swept : width - kLanes - swept;
        const V old = hn::LoadU(d, pRow + x);
        const V most = loadMask(d, pMask + x);
        V now = Op::limit(grownByNear<Op, kNear>(d, old, pNear, x, width), most);
        if (kPass == Pass::kPlain || !isQuiet<Op, Direction>(d, now, carry, most)) {
            const Steps<V> steps = joined<Op, Direction, sizeof(L)>(d, {now, most});
            now = Op::grow(steps.lo, Op::limit(carry, steps.hi));
        }
        hn::StoreU(now, d, pRow + x);
        changes = hn::Or(changes, hn::Xor(now, old));
        carry = lastLane<Direction>(d, now);
    }
    return kPass == Pass::kCheck && !hn::AllTrue(d, hn::Eq(changes, hn::Zero(d)));
}

// The same for rows shorter than any vector, sample by sample.
template <class Op, class Direction, Near kNear, class L>
bool sweepSamples(const L* pNear, const L* pMask, L* pRow, int width) {
    const auto grow = [](int32_t a, int32_t b) { return Op::isBeyond(a, b) ? a : b; };
    const auto limit = [](int32_t a, int32_t b) { return Op::isBeyond(a, b) ? b : a; };
    int32_t carry = Op::template kLeast<int32_t>;
    bool changed = false;
    for (int i = 0; i < width; ++i) {
        const int x = Direction::kAscending ? i : width - 1 - i;
        const int32_t old = sampleAt(pRow + x);
        carry = grow(carry, old);
        if constexpr (kNear != Near::kNone) carry = grow(carry, sampleAt(pNear + x));
        if constexpr (kNear == Near::kInf) {
            carry = grow(carry, sampleAt(pNear + HWY_MAX(x - 1, 0)));
            carry = grow(carry, sampleAt(pNear + HWY_MIN(x + 1, width - 1)));
        }
        carry = limit(carry, maskSample(pMask + x));
        changed |= carry != old;
        const L now = static_cast<L>(carry);
        std::memcpy(pRow + x, &now, sizeof(L));
    }
    return changed;
}

template <class Op, class Direction, Near kNear, Pass kPass, class T>
bool sweep(const T* pNear, const T* pMask, T* pRow, int width) {
    using L = LaneOf<T>;
    const hn::CappedTag<L, 32 / sizeof(L)> wide;
    const hn::FixedTag<L, 16 / sizeof(L)> block;
    const L* const near = reinterpret_cast<const L*>(pNear);
    const L* const mask = reinterpret_cast<const L*>(pMask);
    L* const row = reinterpret_cast<L*>(pRow);
    if (width >= static_cast<int>(hn::Lanes(wide)))
        return sweepVectors<Op, Direction, kNear, kPass>(wide, near, mask, row, width);
    if (width >= static_cast<int>(hn::Lanes(block)))
        return sweepVectors<Op, Direction, kNear, kPass>(block, near, mask, row, width);
    return sweepSamples<Op, Direction, kNear>(near, mask, row, width);
}

}  // namespace

constexpr auto& ownReorder_32f_C1R = reorderRow;
constexpr auto& ownDilateForwardRev02_8u_C1R = sweep<Dilation, Forward, Near::kNone, Pass::kPlain, Qel8u>;
constexpr auto& ownDilateForwardCheckRev02_8u_C1R = sweep<Dilation, Forward, Near::kNone, Pass::kCheck, Qel8u>;
constexpr auto& ownDilateBackwardRev02_8u_C1R = sweep<Dilation, Backward, Near::kNone, Pass::kPlain, Qel8u>;
constexpr auto& ownDilateBackwardCheckRev02_8u_C1R = sweep<Dilation, Backward, Near::kNone, Pass::kCheck, Qel8u>;
constexpr auto& ownDilateForward02_8u_C1R = sweep<Dilation, Forward, Near::kL1, Pass::kPlain, Qel8u>;
constexpr auto& ownDilateForwardCheck02_8u_C1R = sweep<Dilation, Forward, Near::kL1, Pass::kCheck, Qel8u>;
constexpr auto& ownDilateBackwardCheck02_8u_C1R = sweep<Dilation, Backward, Near::kL1, Pass::kCheck, Qel8u>;
constexpr auto& ownDilateForward02_8u_C1RInf = sweep<Dilation, Forward, Near::kInf, Pass::kPlain, Qel8u>;
constexpr auto& ownDilateForwardCheck02_8u_C1RInf = sweep<Dilation, Forward, Near::kInf, Pass::kCheck, Qel8u>;
constexpr auto& ownDilateBackwardCheck02_8u_C1RInf = sweep<Dilation, Backward, Near::kInf, Pass::kCheck, Qel8u>;
constexpr auto& ownDilateForwardRev02_32f_C1R = sweep<Dilation, Forward, Near::kNone, Pass::kPlain, Qel32f>;
constexpr auto& ownDilateForwardCheckRev02_32f_C1R = sweep<Dilation, Forward, Near::kNone, Pass::kCheck, Qel32f>;
constexpr auto& ownDilateBackwardRev02_32f_C1R = sweep<Dilation, Backward, Near::kNone, Pass::kPlain, Qel32f>;
constexpr auto& ownDilateBackwardCheckRev02_32f_C1R = sweep<Dilation, Backward, Near::kNone, Pass::kCheck, Qel32f>;
constexpr auto& ownDilateForward02_32f_C1R = sweep<Dilation, Forward, Near::kL1, Pass::kPlain, Qel32f>;
constexpr auto& ownDilateForwardCheck02_32f_C1R = sweep<Dilation, Forward, Near::kL1, Pass::kCheck, Qel32f>;
constexpr auto& ownDilateBackwardCheck02_32f_C1R = sweep<Dilation, Backward, Near::kL1, Pass::kCheck, Qel32f>;
constexpr auto& ownDilateForward02_32f_C1RInf = sweep<Dilation, Forward, Near::kInf, Pass::kPlain, Qel32f>;
constexpr auto& ownDilateForwardCheck02_32f_C1RInf = sweep<Dilation, Forward, Near::kInf, Pass::kCheck, Qel32f>;
constexpr auto& ownDilateBackwardCheck02_32f_C1RInf = sweep<Dilation, Backward, Near::kInf, Pass::kCheck, Qel32f>;
constexpr auto& ownErodeForwardRev02_8u_C1R = sweep<Erosion, Forward, Near::kNone, Pass::kPlain, Qel8u>;
constexpr auto& ownErodeForwardCheckRev02_8u_C1R = sweep<Erosion, Forward, Near::kNone, Pass::kCheck, Qel8u>;
constexpr auto& ownErodeBackwardRev02_8u_C1R = sweep<Erosion, Backward, Near::kNone, Pass::kPlain, Qel8u>;
constexpr auto& ownErodeBackwardCheckRev02_8u_C1R = sweep<Erosion, Backward, Near::kNone, Pass::kCheck, Qel8u>;
constexpr auto& ownErodeForward02_8u_C1R = sweep<Erosion, Forward, Near::kL1, Pass::kPlain, Qel8u>;
constexpr auto& ownErodeForwardCheck02_8u_C1R = sweep<Erosion, Forward, Near::kL1, Pass::kCheck, Qel8u>;
constexpr auto& ownErodeBackwardCheck02_8u_C1R = sweep<Erosion, Backward, Near::kL1, Pass::kCheck, Qel8u>;
constexpr auto& ownErodeForward02_8u_C1RInf = sweep<Erosion, Forward, Near::kInf, Pass::kPlain, Qel8u>;
constexpr auto& ownErodeForwardCheck02_8u_C1RInf = sweep<Erosion, Forward, Near::kInf, Pass::kCheck, Qel8u>;
constexpr auto& ownErodeBackwardCheck02_8u_C1RInf = sweep<Erosion, Backward, Near::kInf, Pass::kCheck, Qel8u>;
constexpr auto& ownErodeForwardRev02_32f_C1R = sweep<Erosion, Forward, Near::kNone, Pass::kPlain, Qel32f>;
constexpr auto& ownErodeForwardCheckRev02_32f_C1R = sweep<Erosion, Forward, Near::kNone, Pass::kCheck, Qel32f>;
constexpr auto& ownErodeBackwardRev02_32f_C1R = sweep<Erosion, Backward, Near::kNone, Pass::kPlain, Qel32f>;
constexpr auto& ownErodeBackwardCheckRev02_32f_C1R = sweep<Erosion, Backward, Near::kNone, Pass::kCheck, Qel32f>;
constexpr auto& ownErodeForward02_32f_C1R = sweep<Erosion, Forward, Near::kL1, Pass::kPlain, Qel32f>;
constexpr auto& ownErodeForwardCheck02_32f_C1R = sweep<Erosion, Forward, Near::kL1, Pass::kCheck, Qel32f>;
constexpr auto& ownErodeBackwardCheck02_32f_C1R = sweep<Erosion, Backward, Near::kL1, Pass::kCheck, Qel32f>;
constexpr auto& ownErodeForward02_32f_C1RInf = sweep<Erosion, Forward, Near::kInf, Pass::kPlain, Qel32f>;
constexpr auto& ownErodeForwardCheck02_32f_C1RInf = sweep<Erosion, Forward, Near::kInf, Pass::kCheck, Qel32f>;
constexpr auto& ownErodeBackwardCheck02_32f_C1RInf = sweep<Erosion, Backward, Near::kInf, Pass::kCheck, Qel32f>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownReorder_32f_C1R);
QEL_KERNEL(ownDilateForwardRev02_8u_C1R);
QEL_KERNEL(ownDilateForwardCheckRev02_8u_C1R);
QEL_KERNEL(ownDilateBackwardRev02_8u_C1R);
QEL_KERNEL(ownDilateBackwardCheckRev02_8u_C1R);
QEL_KERNEL(ownDilateForward02_8u_C1R);
QEL_KERNEL(ownDilateForwardCheck02_8u_C1R);
QEL_KERNEL(ownDilateBackwardCheck02_8u_C1R);
QEL_KERNEL(ownDilateForward02_8u_C1RInf);
QEL_KERNEL(ownDilateForwardCheck02_8u_C1RInf);
QEL_KERNEL(ownDilateBackwardCheck02_8u_C1RInf);
QEL_KERNEL(ownDilateForwardRev02_32f_C1R);
QEL_KERNEL(ownDilateForwardCheckRev02_32f_C1R);
QEL_KERNEL(ownDilateBackwardRev02_32f_C1R);
QEL_KERNEL(ownDilateBackwardCheckRev02_32f_C1R);
QEL_KERNEL(ownDilateForward02_32f_C1R);
QEL_KERNEL(ownDilateForwardCheck02_32f_C1R);
QEL_KERNEL(ownDilateBackwardCheck02_32f_C1R);
QEL_KERNEL(ownDilateForward02_32f_C1RInf);
QEL_KERNEL(ownDilateForwardCheck02_32f_C1RInf);
QEL_KERNEL(ownDilateBackwardCheck02_32f_C1RInf);
QEL_KERNEL(ownErodeForwardRev02_8u_C1R);
QEL_KERNEL(ownErodeForwardCheckRev02_8u_C1R);
QEL_KERNEL(ownErodeBackwardRev02_8u_C1R);
QEL_KERNEL(ownErodeBackwardCheckRev02_8u_C1R);
QEL_KERNEL(ownErodeForward02_8u_C1R);
QEL_KERNEL(ownErodeForwardCheck02_8u_C1R);
QEL_KERNEL(ownErodeBackwardCheck02_8u_C1R);
QEL_KERNEL(ownErodeForward02_8u_C1RInf);
QEL_KERNEL(ownErodeForwardCheck02_8u_C1RInf);
QEL_KERNEL(ownErodeBackwardCheck02_8u_C1RInf);
QEL_KERNEL(ownErodeForwardRev02_32f_C1R);
QEL_KERNEL(ownErodeForwardCheckRev02_32f_C1R);
QEL_KERNEL(ownErodeBackwardRev02_32f_C1R);
QEL_KERNEL(ownErodeBackwardCheckRev02_32f_C1R);
QEL_KERNEL(ownErodeForward02_32f_C1R);
QEL_KERNEL(ownErodeForwardCheck02_32f_C1R);
QEL_KERNEL(ownErodeBackwardCheck02_32f_C1R);
QEL_KERNEL(ownErodeForward02_32f_C1RInf);
QEL_KERNEL(ownErodeForwardCheck02_32f_C1RInf);
QEL_KERNEL(ownErodeBackwardCheck02_32f_C1RInf);
}  // namespace qel
#endif
