#include "pyramid/pyr_up_kernels.h"

#include "frame/scratch.h"

#define HWY_TARGET_INCLUDE "pyramid/pyr_up_kernels.cpp"
#include "frame/simd-inl.h"
#include "pyramid/gauss5x5-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// A filtered row: the sums at the source's pixels and those half a pixel on, apart from each other.
template <class Sum>
struct Phases {
    Sum *even, *odd;
};

// Where pixel i lies in either phase. 32f rows have no room for unused lanes.
template <class T, int kChannels>
constexpr size_t laneOf(int i) {
    if constexpr (kChannels == 1 || sizeof(T) == 4) return size_t(i) * kChannels;
    return size_t(i / 2) * 8 + size_t(i % 2) * 3;
}
template <class T, int kChannels>
constexpr int phaseLanes(int width) {
    if constexpr (kChannels == 1 || sizeof(T) == 4) return width * kChannels;
    return (width + 1) / 2 * 8;
}

// The sums of pixels from `first` up to `end`, one by one: the ends of a row.
template <class T, int kChannels>
HWY_INLINE void filterPixels(const T* s, int width, Phases<GaussSum<T>> slot, int first, int end) {
    for (int i = first; i < end; ++i)
        for (int c = 0; c < kChannels; ++c) {
            slot.even[laneOf<T, kChannels>(i) + c] = GaussSum<T>(upRowEven(s + c, kChannels, width, i));
            slot.odd[laneOf<T, kChannels>(i) + c] = GaussSum<T>(upRowOdd(s + c, kChannels, width, i));
        }
}

template <class D, class V = hn::Vec<D>>
HWY_INLINE void storeSums_8x(D d, V left, V here, V right, Phases<Qel16u> slot, size_t lane) {
    const V two = hn::Add(here, here);
    const V even = hn::Add(hn::Add(hn::Add(left, right), two), hn::ShiftLeft<1>(two));
    hn::StoreU(even, d, slot.even + lane);
    hn::StoreU(hn::ShiftLeft<2>(hn::Add(here, right)), d, slot.odd + lane);
}

template <class T>
HWY_INLINE void filterRow_8x_C1(const T* s, int width, Phases<Qel16u> slot) {
    filterPixels<T, 1>(s, width, slot, 0, 1);
    coverRow(hn::ScalableTag<Qel16u>(), size_t(width - 2), [=](auto d, size_t x) QEL_INLINE_LAMBDA {
        const hn::Rebind<uint8_t, decltype(d)> d8;
        const auto at = [=](const T* p) QEL_INLINE_LAMBDA { return hn::PromoteTo(d, loadBytes(d8, p + x)); };
        storeSums_8x(d, at(s), at(s + 1), at(s + 2), slot, 1 + x);
    });
    filterPixels<T, 1>(s, width, slot, width - 1, width);
}

template <class T>
HWY_INLINE void filterRow_8x_C3(const T* s, int width, Phases<Qel16u> slot) {
    constexpr int kFirst = 2;
    // A block reads two bytes more than its two pixels need.
    const int blocks = HWY_MAX((width - 4) / 2, 0);
    filterPixels<T, 3>(s, width, slot, 0, HWY_MIN(kFirst, width));
    forVectors<8>(BlocksTag<Qel16u>(), size_t(blocks) * 8, [=](auto d, size_t x) QEL_INLINE_LAMBDA {
        const auto pixels = [=](const T* p) QEL_INLINE_LAMBDA {
            return fromBlocks<8>(d, [=](int b) HWY_ATTR {
                return hn::PromoteTo(hn::Full128<Qel16u>(), loadBytes(hn::Full64<uint8_t>(), p + 6 * b));
            });
        };
        const T* here = s + 3 * kFirst + x / 8 * 6;
        storeSums_8x(d, pixels(here - 3), pixels(here), pixels(here + 3), slot, laneOf<T, 3>(kFirst) + x);
    });
    filterPixels<T, 3>(s, width, slot, HWY_MIN(kFirst, width) + 2 * blocks, width);
}

template <class D, class V = hn::Vec<D>>
HWY_INLINE V evenSum_32f(D d, V before, V here, V after) {
    return hn::Add(hn::Add(hn::Mul(here, hn::Set(d, 6.0F)), before), after);
}
template <class D, class V = hn::Vec<D>>
HWY_INLINE V oddSum_32f(D d, V here, V after) {
    return hn::Mul(hn::Add(here, after), hn::Set(d, 4.0F));
}

template <int kChannels>
HWY_INLINE void filterRow_32f(const Qel32f* s, int width, Phases<Qel32f> slot) {
    filterPixels<Qel32f, kChannels>(s, width, slot, 0, 1);
    coverRow(hn::ScalableTag<Qel32f>(), size_t(width - 2) * kChannels, [=](auto d, size_t x) QEL_INLINE_LAMBDA {
        const auto here = hn::LoadU(d, s + x + kChannels), after = hn::LoadU(d, s + x + 2 * kChannels);
        hn::StoreU(evenSum_32f(d, hn::LoadU(d, s + x), here, after), d, slot.even + kChannels + x);
        hn::StoreU(oddSum_32f(d, here, after), d, slot.odd + kChannels + x);
    });
    filterPixels<Qel32f, kChannels>(s, width, slot, width - 1, width);
}

template <class T, int kChannels>
HWY_INLINE void filterRow(const T* s, int width, Phases<GaussSum<T>> slot) {
    if constexpr (sizeof(T) == 4) {
        filterRow_32f<kChannels>(s, width, slot);
    } else {
        if constexpr (kChannels == 1) filterRow_8x_C1(s, width, slot);
        if constexpr (kChannels == 3) filterRow_8x_C3(s, width, slot);
    }
}

// Both phases of a pair of rows, at the same place: lane i is the even byte, then the odd one. A sum's byte is its bits
// from 6 on, or, without the factor 4 of the odd row, from 4 on.
template <class D>
HWY_INLINE hn::Vec<D> evenRowPairs(D d, const Phases<Qel16u> (&rows)[3], size_t x) {
    const auto sum = [=](const Qel16u* above, const Qel16u* here, const Qel16u* below) QEL_INLINE_LAMBDA {
        const auto centre = hn::LoadU(d, here + x);
        const auto two = hn::Add(centre, centre);
        const auto outer = hn::Add(hn::LoadU(d, above + x), hn::LoadU(d, below + x));
        return hn::Add(hn::Add(outer, hn::Set(d, 32)), hn::Add(two, hn::ShiftLeft<1>(two)));
    };
    const auto even = sum(rows[0].even, rows[1].even, rows[2].even);
    const auto odd = sum(rows[0].odd, rows[1].odd, rows[2].odd);
    return hn::Or(hn::ShiftRight<6>(even), hn::And(hn::ShiftLeft<2>(odd), hn::Set(d, 0xFF00)));
}
template <class D>
HWY_INLINE hn::Vec<D> oddRowPairs(D d, const Phases<Qel16u> (&rows)[3], size_t x) {
    const auto sum = [=](const Qel16u* here, const Qel16u* below) QEL_INLINE_LAMBDA {
        return hn::Add(hn::Add(hn::LoadU(d, here + x), hn::LoadU(d, below + x)), hn::Set(d, 8));
    };
    const auto even = sum(rows[1].even, rows[2].even);
    const auto odd = sum(rows[1].odd, rows[2].odd);
    return hn::Or(hn::ShiftRight<4>(even), hn::And(hn::ShiftLeft<4>(odd), hn::Set(d, 0xFF00)));
}

template <class T>
HWY_INLINE void formRows_8x_C1(const Phases<Qel16u> (&rows)[3], uint8_t* evenOut, uint8_t* oddOut, int width) {
    coverRow(hn::ScalableTag<Qel16u>(), size_t(width), [&](auto d, size_t x) QEL_INLINE_LAMBDA {
        const hn::Repartition<uint8_t, decltype(d)> d8;
        hn::StoreU(flipSigns<T>(d8, hn::BitCast(d8, evenRowPairs(d, rows, x))), d8, evenOut + 2 * x);
        hn::StoreU(flipSigns<T>(d8, hn::BitCast(d8, oddRowPairs(d, rows, x))), d8, oddOut + 2 * x);
    });
}

// Two pixels of each phase become four: the bytes of the first pixel's even phase, of its odd one, and so on.
alignas(16) constexpr uint8_t kByPhase[16] = {0, 2, 4, 1, 3, 5, 6, 8, 10, 7, 9, 11, 0x80, 0x80, 0x80, 0x80};

template <class T>
HWY_INLINE void formRows_8x_C3(const Phases<Qel16u> (&rows)[3], uint8_t* evenOut, uint8_t* oddOut, int width) {
    const auto pixels = [](auto pairs) QEL_INLINE_LAMBDA {
        const hn::Repartition<uint8_t, hn::DFromV<decltype(pairs)>> d8;
        return hn::TableLookupBytesOr0(flipSigns<T>(d8, hn::BitCast(d8, pairs)), hn::LoadDup128(d8, kByPhase));
    };
    const size_t lastBlock = size_t(width - 1) / 2;
    forVectors<8>(hn::ScalableTag<Qel16u>(), lastBlock * 8, [&](auto d, size_t x) QEL_INLINE_LAMBDA {
        const hn::Repartition<uint8_t, decltype(d)> d8;
        storeBlocks<12>(pixels(evenRowPairs(d, rows, x)), d8, evenOut + x / 8 * 12);
        storeBlocks<12>(pixels(oddRowPairs(d, rows, x)), d8, oddOut + x / 8 * 12);
    });
    const hn::Full128<Qel16u> d;
    const hn::Full128<uint8_t> d8;
    const size_t left = size_t(width) * 6 - lastBlock * 12;
    storeFirst(pixels(evenRowPairs(d, rows, lastBlock * 8)), d8, evenOut + lastBlock * 12, left);
    storeFirst(pixels(oddRowPairs(d, rows, lastBlock * 8)), d8, oddOut + lastBlock * 12, left);
}

template <class V>
struct Pair {
    V even, odd;
};

// The two phases of the even row and of the odd row; `load` reads a vector from a row.
template <class D, class Load, class V = hn::Vec<D>>
HWY_INLINE Pair<V> evenRow_32f(D d, const Phases<Qel32f> (&rows)[3], const Load& load) {
    const V part = hn::Set(d, 1.0F / 64);
    const V even = evenSum_32f(d, load(rows[0].even), load(rows[1].even), load(rows[2].even));
    const V odd = evenSum_32f(d, load(rows[0].odd), load(rows[1].odd), load(rows[2].odd));
    return {hn::Mul(even, part), hn::Mul(odd, part)};
}
template <class D, class Load, class V = hn::Vec<D>>
HWY_INLINE Pair<V> oddRow_32f(D d, const Phases<Qel32f> (&rows)[3], const Load& load) {
    const V part = hn::Set(d, 1.0F / 64);
    return {hn::Mul(oddSum_32f(d, load(rows[1].even), load(rows[2].even)), part),
            hn::Mul(oddSum_32f(d, load(rows[1].odd), load(rows[2].odd)), part)};
}

// As the vectors do, for the samples that are too few for one.
HWY_INLINE void formSamples_32f(const Phases<Qel32f> (&rows)[3], Qel32f* evenOut, Qel32f* oddOut, int channels,
                                int first, int width) {
    const auto form = [&](const Qel32f* above, const Qel32f* here, const Qel32f* below, int to) {
        evenOut[to] = gaussSample<Qel32f, 6>(upColumnEven(*above, *here, *below));
        oddOut[to] = gaussSample<Qel32f, 6>(upColumnOdd(*here, *below));
    };
    for (int i = first; i < width; ++i)
        for (int c = 0; c < channels; ++c) {
            const int x = i * channels + c;
            const int to = 2 * i * channels + c;
            form(rows[0].even + x, rows[1].even + x, rows[2].even + x, to);
            form(rows[0].odd + x, rows[1].odd + x, rows[2].odd + x, to + channels);
        }
}

HWY_INLINE void formRows_32f_C1(const Phases<Qel32f> (&rows)[3], Qel32f* evenOut, Qel32f* oddOut, int width) {
    const hn::ScalableTag<Qel32f> d;
    const size_t n = hn::Lanes(d);
    if (size_t(width) < n) return formSamples_32f(rows, evenOut, oddOut, 1, 0, width);
    forBlocks(n, n, size_t(width), [&](size_t x) QEL_INLINE_LAMBDA {
        const auto load = [=](const Qel32f* p) QEL_INLINE_LAMBDA { return hn::LoadU(d, p + x); };
        const auto even = evenRow_32f(d, rows, load);
        hn::StoreInterleaved2(even.even, even.odd, d, evenOut + 2 * x);
        const auto odd = oddRow_32f(d, rows, load);
        hn::StoreInterleaved2(odd.even, odd.odd, d, oddOut + 2 * x);
    });
}

// Stores blocks of three samples by turns, in order: each one's fourth lane gives way to the next.
template <class D, class V = hn::Vec<D>>
HWY_INLINE void storeByTurns(D d, Pair<V> pair, Qel32f* p) {
    if constexpr (hn::MaxLanes(D()) == 4) {
        hn::StoreU(pair.even, d, p);
        hn::StoreU(pair.odd, d, p + 3);
    } else {
        const hn::Half<D> half;
        using H = hn::Vec<hn::Half<D>>;
        storeByTurns(half, Pair<H>{hn::LowerHalf(half, pair.even), hn::LowerHalf(half, pair.odd)}, p);
        storeByTurns(half, Pair<H>{hn::UpperHalf(half, pair.even), hn::UpperHalf(half, pair.odd)},
                     p + hn::MaxLanes(half) / 4 * 6);
    }
}

HWY_INLINE void formRows_32f_C3(const Phases<Qel32f> (&rows)[3], Qel32f* evenOut, Qel32f* oddOut, int width) {
    forVectors<4>(BlocksTag<Qel32f>(), size_t(width - 1) * 4, [&](auto d, size_t x) QEL_INLINE_LAMBDA {
        const size_t pixel = x / 4;
        const auto load = [=](const Qel32f* p) QEL_INLINE_LAMBDA {
            return fromBlocks<4>(
                d, [=](int b) HWY_ATTR { return hn::LoadU(hn::Full128<Qel32f>(), p + 3 * (pixel + size_t(b))); });
        };
        storeByTurns(d, evenRow_32f(d, rows, load), evenOut + 6 * pixel);
        storeByTurns(d, oddRow_32f(d, rows, load), oddOut + 6 * pixel);
    });
    formSamples_32f(rows, evenOut, oddOut, 3, width - 1, width);
}

template <class T, int kChannels>
HWY_INLINE void formRows(const Phases<GaussSum<T>> (&rows)[3], T* evenDst, T* oddDst, int width) {
    if constexpr (sizeof(T) == 4) {
        if constexpr (kChannels == 1) formRows_32f_C1(rows, evenDst, oddDst, width);
        if constexpr (kChannels == 3) formRows_32f_C3(rows, evenDst, oddDst, width);
    } else {
        uint8_t* const even = reinterpret_cast<uint8_t*>(evenDst);
        uint8_t* const odd = reinterpret_cast<uint8_t*>(oddDst);
        if constexpr (kChannels == 1) formRows_8x_C1<T>(rows, even, odd, width);
        if constexpr (kChannels == 3) formRows_8x_C3<T>(rows, even, odd, width);
    }
}

template <class T, int kChannels>
void pyrUp(Plane<const T> src, Plane<T> dst, QelSize size, void* pScratch, int64_t scratchBytes) {
    using Sum = GaussSum<T>;
    constexpr int kSlots = 3;
    const int lanes = phaseLanes<T, kChannels>(size.width);
    const ScratchRows<Sum> phases(static_cast<Sum*>(pScratch), scratchBytes / int64_t{sizeof(Sum)}, lanes, 2 * kSlots);
    const auto slot = [&](int y) { return Phases<Sum>{phases[y % kSlots * 2], phases[y % kSlots * 2 + 1]}; };
    const int last = size.height - 1;
    filterRow<T, kChannels>(src.row(0), size.width, slot(0));
    for (int y = 0; y <= last; ++y) {
        if (y < last) filterRow<T, kChannels>(src.row(y + 1), size.width, slot(y + 1));
        const Phases<Sum> rows[3] = {slot(y == 0 ? 1 : y - 1), slot(y), slot(y < last ? y + 1 : y)};
        formRows<T, kChannels>(rows, dst.row(2 * y), dst.row(2 * y + 1), size.width);
    }
}

}  // namespace

constexpr auto& ownPyrUpG5x5_8u_C1 = pyrUp<Qel8u, 1>;
constexpr auto& ownPyrUpG5x5_8u_C3 = pyrUp<Qel8u, 3>;
constexpr auto& ownPyrUpG5x5_8s_C1 = pyrUp<Qel8s, 1>;
constexpr auto& ownPyrUpG5x5_8s_C3 = pyrUp<Qel8s, 3>;
constexpr auto& ownPyrUpG5x5_32f_C1 = pyrUp<Qel32f, 1>;
constexpr auto& ownPyrUpG5x5_32f_C3 = pyrUp<Qel32f, 3>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownPyrUpG5x5_8u_C1);
QEL_KERNEL(ownPyrUpG5x5_8u_C3);
QEL_KERNEL(ownPyrUpG5x5_8s_C1);
QEL_KERNEL(ownPyrUpG5x5_8s_C3);
QEL_KERNEL(ownPyrUpG5x5_32f_C1);
QEL_KERNEL(ownPyrUpG5x5_32f_C3);
}  // namespace qel
#endif
