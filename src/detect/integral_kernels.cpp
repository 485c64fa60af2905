#include "detect/integral_kernels.h"

#define HWY_TARGET_INCLUDE "detect/integral_kernels.cpp"
#include "frame/simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// A row comes in blocks of as many samples as the widest of these tags has lanes. Vectors of 64 bytes gain nothing:
// tables begin one element into their rows, and so every second store would straddle lines of the cache.
using D16 = hn::CappedTag<Qel16u, 16>;
using D32 = hn::RepartitionToWide<D16>;
using DInt = hn::RebindToSigned<D32>;
using DFloat = hn::RebindToFloat<DInt>;
using DDouble = hn::RepartitionToWide<DFloat>;
using V16 = hn::Vec<D16>;
using VInt = hn::Vec<DInt>;

constexpr bool kOneBlock = hn::MaxLanes(DInt()) == 4;  // vectors of 16 bytes

HWY_INLINE VInt lastLane(VInt v) {
    if constexpr (kOneBlock) {
        return hn::Broadcast<3>(v);
    } else {
        const DInt d;
        return hn::TableLookupLanes(v, hn::IndicesFromVec(d, hn::Set(d, 7)));
    }
}

// Sums from the first lane on, of up to 8 lanes; u16 restart with every 8.
HWY_INLINE V16 prefixOfBytes(V16 v) {
    const D16 d;
    v = hn::Add(v, hn::ShiftLeftLanes<1>(d, v));
    v = hn::Add(v, hn::ShiftLeftLanes<2>(d, v));
    return hn::Add(v, hn::ShiftLeftLanes<4>(d, v));
}
HWY_INLINE VInt prefix(VInt v) {
    const DInt d;
    v = hn::Add(v, hn::ShiftLeftLanes<1>(d, v));
    v = hn::Add(v, hn::ShiftLeftLanes<2>(d, v));
    if constexpr (kOneBlock) return v;
    return hn::Add(v, hn::ConcatLowerLower(d, hn::Broadcast<3>(v), hn::Zero(d)));
}

// A row of a table below the row `above`: add() takes sums from the start of some samples on, and next() the sum of
// all of them, in every lane.
template <class T>
class RowOfSums {
public:
    RowOfSums(const T* above, T* out) : above_(above), out_(out), running_(hn::Zero(DInt())) {}

    HWY_INLINE void add(VInt sums, size_t x) const {
        const VInt running = hn::Add(running_, sums);
        if constexpr (std::is_same_v<T, Qel32f>) {
            const DFloat d;
            hn::StoreU(hn::Add(hn::LoadU(d, above_ + x), hn::ConvertTo(d, running)), d, out_ + x);
        } else {
            const DInt d;
            hn::StoreU(hn::Add(hn::LoadU(d, above_ + x), running), d, out_ + x);
        }
    }
    HWY_INLINE void next(VInt total) { running_ = hn::Add(running_, total); }

    // The samples that fill no block.
    class Tail {
    public:
        explicit Tail(const RowOfSums& row)
            : above_(row.above_), out_(row.out_), running_(uint32_t(hn::GetLane(row.running_))) {}
        HWY_INLINE void add(unsigned sample, size_t x) {
            running_ += sample;
            if constexpr (std::is_same_v<T, Qel32f>) {
                out_[x] = above_[x] + static_cast<Qel32f>(static_cast<Qel32s>(running_));
            } else {
                out_[x] = static_cast<Qel32s>(static_cast<uint32_t>(above_[x]) + running_);
            }
        }

    private:
        const T* above_;
        T* out_;
        uint32_t running_;
    };

private:
    const T* above_;
    T* out_;
    VInt running_;
};

// Sums of squares in double precision are exact along a row, in whatever order they are formed.
template <>
class RowOfSums<Qel64f> {
public:
    RowOfSums(const Qel64f* above, Qel64f* out) : above_(above), out_(out), running_(hn::Zero(DDouble())) {}

    HWY_INLINE void add(VInt sums, size_t x) const {
        const hn::Half<DInt> half;
        addHalf(hn::LowerHalf(half, sums), x);
        addHalf(hn::UpperHalf(half, sums), x + hn::Lanes(half));
    }
    HWY_INLINE void next(VInt total) {
        running_ = hn::Add(running_, hn::PromoteTo(DDouble(), hn::LowerHalf(hn::Half<DInt>(), total)));
    }

    class Tail {
    public:
        explicit Tail(const RowOfSums& row) : above_(row.above_), out_(row.out_), running_(hn::GetLane(row.running_)) {}
        HWY_INLINE void add(unsigned sample, size_t x) {
            running_ += sample;
            out_[x] = above_[x] + running_;
        }

    private:
        const Qel64f* above_;
        Qel64f* out_;
        Qel64f running_;
    };

private:
    HWY_INLINE void addHalf(hn::Vec<hn::Half<DInt>> sums, size_t x) const {
        const DDouble d;
        const auto running = hn::Add(running_, hn::PromoteTo(d, sums));
        hn::StoreU(hn::Add(running, hn::LoadU(d, above_ + x)), d, out_ + x);
    }

    const Qel64f* above_;
    Qel64f* out_;
    hn::Vec<DDouble> running_;
};

HWY_INLINE V16 loadSamples(const Qel8u* p) { return hn::PromoteTo(D16(), hn::LoadU(hn::Rebind<Qel8u, D16>(), p)); }

HWY_INLINE VInt lowerAsInt(V16 v) { return hn::PromoteTo(DInt(), hn::LowerHalf(hn::Half<D16>(), v)); }
HWY_INLINE VInt upperAsInt(V16 v) { return hn::PromoteTo(DInt(), hn::UpperHalf(hn::Half<D16>(), v)); }

// Bytes that sum up to the even and to the odd ones of 8 running sums, one row of bytes for each.
alignas(32) constexpr Qel8u kUpToEven[] = {255, 0,   0,   0,   0,   0, 0, 0, 255, 255, 255, 0,   0,   0,   0,   0,
                                           255, 255, 255, 255, 255, 0, 0, 0, 255, 255, 255, 255, 255, 255, 255, 0};
alignas(32) constexpr Qel8u kUpToOdd[] = {255, 255, 0,   0,   0,   0,   0, 0, 255, 255, 255, 255, 0,   0,   0,   0,
                                          255, 255, 255, 255, 255, 255, 0, 0, 255, 255, 255, 255, 255, 255, 255, 255};

// Sums of 8 samples. Vectors of 32 bytes take sums of absolute differences over masked copies of them: that moves
// nothing between lanes. Those of 16 bytes would need twice as many, and shift instead, by 16 bits.
template <class T>
HWY_INLINE void addSamples(const Qel8u* p, RowOfSums<T>& row, size_t x) {
    const DInt d;
    if constexpr (kOneBlock) {
        const V16 sums = prefixOfBytes(loadSamples(p));
        const VInt upper = upperAsInt(sums);
        row.add(lowerAsInt(sums), x);
        row.add(upper, x + hn::Lanes(d));
        row.next(lastLane(upper));
    } else {
        const hn::RepartitionToWide<D32> d64;
        const hn::Repartition<Qel8u, DInt> d8;
        uint64_t samples;
        hwy::CopyBytes<8>(p, &samples);
        const auto copies = hn::BitCast(d8, hn::Set(d64, samples));
        const auto even = hn::SumsOf8(hn::And(copies, hn::Load(d8, kUpToEven)));
        const auto odd = hn::SumsOf8(hn::And(copies, hn::Load(d8, kUpToOdd)));
        row.add(hn::BitCast(d, hn::Or(even, hn::ShiftLeft<32>(odd))), x);
        row.next(hn::DupEven(hn::BitCast(d, hn::SumsOf8(copies))));
    }
}

template <class Q>
HWY_INLINE void addSquares(V16 samples, RowOfSums<Q>& row, size_t x) {
    const V16 squares = hn::Mul(samples, samples);
    const VInt lower = prefix(lowerAsInt(squares));
    row.add(lower, x);
    row.next(lastLane(lower));
    const VInt upper = prefix(upperAsInt(squares));
    row.add(upper, x + hn::Lanes(DInt()));
    row.next(lastLane(upper));
}

template <class T>
void integralRows(Plane<const Qel8u> src, const SumTable<T>& sums, QelSize size) {
    const size_t width = size_t(size.width);
    for (int y = 0; y < size.height; ++y) {
        const Qel8u* s = src.row(y);
        T* out = sums.row(y + 1);
        out[0] = sums.offset;
        RowOfSums<T> row(sums.row(y) + 1, out + 1);
        size_t x = 0;
        for (; x + 8 <= width; x += 8) addSamples(s + x, row, x);
        typename RowOfSums<T>::Tail tail(row);
        for (; x < width; ++x) tail.add(s[x], x);
    }
}

template <class T, class Q>
void sqrIntegralRows(Plane<const Qel8u> src, const SumTable<T>& sums, const SumTable<Q>& squares, QelSize size) {
    const size_t width = size_t(size.width), block = hn::Lanes(D16());
    for (int y = 0; y < size.height; ++y) {
        const Qel8u* s = src.row(y);
        T* out = sums.row(y + 1);
        Q* outOfSquares = squares.row(y + 1);
        out[0] = sums.offset;
        outOfSquares[0] = squares.offset;
        RowOfSums<T> row(sums.row(y) + 1, out + 1);
        RowOfSums<Q> rowOfSquares(squares.row(y) + 1, outOfSquares + 1);
        size_t x = 0;
        for (; x + block <= width; x += block) {
            for (size_t i = 0; i < block; i += 8) addSamples(s + x + i, row, x + i);
            addSquares(loadSamples(s + x), rowOfSquares, x);
        }
        typename RowOfSums<T>::Tail tail(row);
        typename RowOfSums<Q>::Tail tailOfSquares(rowOfSquares);
        for (; x < width; ++x) {
            tail.add(s[x], x);
            tailOfSquares.add(unsigned{s[x]} * s[x], x);
        }
    }
}

}  // namespace

constexpr auto& ownIntegral_8u32s_C1R_W7 = integralRows<Qel32s>;
constexpr auto& ownIntegral_8u32f_C1R_W7 = integralRows<Qel32f>;
constexpr auto& ownSqrIntegral_8u32s_C1R_W7 = sqrIntegralRows<Qel32s, Qel32s>;
constexpr auto& ownSqrIntegral_8u32s64f_C1R_W7 = sqrIntegralRows<Qel32s, Qel64f>;
constexpr auto& ownSqrIntegral_8u32f64f_C1R_W7 = sqrIntegralRows<Qel32f, Qel64f>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownIntegral_8u32s_C1R_W7);
QEL_KERNEL(ownIntegral_8u32f_C1R_W7);
QEL_KERNEL(ownSqrIntegral_8u32s_C1R_W7);
QEL_KERNEL(ownSqrIntegral_8u32s64f_C1R_W7);
QEL_KERNEL(ownSqrIntegral_8u32f64f_C1R_W7);
}  // namespace qel
#endif
