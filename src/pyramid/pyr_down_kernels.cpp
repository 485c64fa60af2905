#include "pyramid/pyr_down_kernels.h"

#include "frame/scratch.h"

#define HWY_TARGET_INCLUDE "pyramid/pyr_down_kernels.cpp"
#include "frame/simd-inl.h"
#include "pyramid/gauss5x5-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// Where pixel i lies in a row of sums.
template <class T, int kChannels>
constexpr size_t laneOf(int i) {
    if constexpr (kChannels == 1) return size_t(i);
    if constexpr (sizeof(T) == 4) return size_t(i) * 4;
    return size_t(i / 2) * 8 + size_t(i % 2) * 3;
}

// Bytes of three channels are stored four pixels at a time: the sums of two blocks.
template <class T>
constexpr int kStoredPixels = sizeof(T) == 4 ? 1 : 4;

template <class T, int kChannels>
constexpr int slotLanes(int pixels) {
    if constexpr (kChannels == 1) return pixels;
    constexpr int kStored = kStoredPixels<T>;
    return static_cast<int>(laneOf<T, kChannels>((pixels + kStored - 1) / kStored * kStored));
}

// The sums of pixels from `first` up to `end`, one by one: the ends of a row.
template <class T, int kChannels>
HWY_INLINE void filterPixels(const T* s, int width, GaussSum<T>* slot, int first, int end) {
    for (int i = first; i < end; ++i)
        for (int c = 0; c < kChannels; ++c)
            slot[laneOf<T, kChannels>(i) + c] = GaussSum<T>(downRowSum(s + c, kChannels, width, i));
}

template <class T>
HWY_INLINE void filterRow_8x_C1(const T* s, int width, Qel16u* slot) {
    const int last = (width + 1) / 2 - 1;
    filterPixels<T, 1>(s, width, slot, 0, 1);
    coverRow(hn::ScalableTag<Qel16u>(), size_t(last - 1), [=](auto d, size_t x) QEL_INLINE_LAMBDA {
        const hn::Repartition<uint8_t, decltype(d)> d8;
        const T* left = s + 2 * x;  // of pixel x + 1
        const auto left4 = weightedPairs<1, 4>(d, loadBytes(d8, left));
        const auto centre = weightedPairs<6, 4>(d, loadBytes(d8, left + 2));
        const auto right = hn::ShiftRight<8>(hn::BitCast(d, loadBytes(d8, left + 3)));
        hn::StoreU(hn::Add(hn::Add(left4, centre), right), d, slot + 1 + x);
    });
    filterPixels<T, 1>(s, width, slot, last, last + 1);
}

// Two pixels a block. Of the bytes around them, each pair of neighbours comes to one lane with its two weights.
alignas(16) constexpr uint8_t kLeftPairs[16] = {0, 3, 1, 4, 2, 5, 6, 9, 7, 10, 8, 11, 0x80, 0x80, 0x80, 0x80};
alignas(16) constexpr uint8_t kCentrePairs[16] = {1, 4, 2, 5, 3, 6, 7, 10, 8, 11, 9, 12, 0x80, 0x80, 0x80, 0x80};
alignas(16) constexpr uint8_t kRightBytes[16] = {7,  0x80, 8,  0x80, 9,    0x80, 13,   0x80,
                                                 14, 0x80, 15, 0x80, 0x80, 0x80, 0x80, 0x80};

template <class T>
HWY_INLINE void filterRow_8x_C3(const T* s, int width, Qel16u* slot) {
    constexpr int kFirst = 2;
    const int last = (width + 1) / 2 - 1;
    const int blocks = last > kFirst ? (last - kFirst) / 2 : 0;
    filterPixels<T, 3>(s, width, slot, 0, HWY_MIN(kFirst, last));
    forVectors<8>(BlocksTag<Qel16u>(), size_t(blocks) * 8, [=](auto d, size_t x) QEL_INLINE_LAMBDA {
        const hn::Repartition<uint8_t, decltype(d)> d8;
        const T* centre = s + 6 * kFirst + x / 8 * 12;
        const auto blocksFrom = [=](const T* p) QEL_INLINE_LAMBDA {
            return fromBlocks<16>(d8, [=](int b) HWY_ATTR { return loadBytes(hn::Full128<uint8_t>(), p + 12 * b); });
        };
        const auto left = blocksFrom(centre - 6);
        const auto right = blocksFrom(centre - 1);
        const auto left4 = weightedPairs<1, 4>(d, hn::TableLookupBytesOr0(left, hn::LoadDup128(d8, kLeftPairs)));
        const auto centre6 = weightedPairs<6, 4>(d, hn::TableLookupBytesOr0(right, hn::LoadDup128(d8, kCentrePairs)));
        const auto right1 = hn::BitCast(d, hn::TableLookupBytesOr0(right, hn::LoadDup128(d8, kRightBytes)));
        hn::StoreU(hn::Add(hn::Add(left4, centre6), right1), d, slot + laneOf<T, 3>(kFirst) + x);
    });
    filterPixels<T, 3>(s, width, slot, HWY_MIN(kFirst, last) + 2 * blocks, last + 1);
}

template <class V, class D>
HWY_INLINE V sumOf_32f(D d, V left2, V left1, V centre, V right1, V right2) {
    const V inner = hn::Mul(hn::Add(left1, right1), hn::Set(d, 4.0F));
    return hn::Add(hn::Add(hn::Add(hn::Mul(centre, hn::Set(d, 6.0F)), inner), left2), right2);
}

HWY_INLINE void filterRow_32f_C1(const Qel32f* s, int width, Qel32f* slot) {
    const int last = (width + 1) / 2 - 1;
    const hn::ScalableTag<Qel32f> d;
    const size_t n = hn::Lanes(d);
    filterPixels<Qel32f, 1>(s, width, slot, 0, 1);
    int done = 1;
    if (size_t(last - 1) >= n) {
        forBlocks(n, n, size_t(last - 1), [=](size_t x) QEL_INLINE_LAMBDA {
            const Qel32f* left = s + 2 * x;
            const auto low = hn::LoadU(d, left), high = hn::LoadU(d, left + n);
            const auto centreLow = hn::LoadU(d, left + 2), centreHigh = hn::LoadU(d, left + n + 2);
            const auto rightLow = hn::LoadU(d, left + 3), rightHigh = hn::LoadU(d, left + n + 3);
            const auto sum = sumOf_32f(d, hn::ConcatEven(d, high, low), hn::ConcatOdd(d, high, low),
                                       hn::ConcatEven(d, centreHigh, centreLow),
                                       hn::ConcatOdd(d, centreHigh, centreLow), hn::ConcatOdd(d, rightHigh, rightLow));
            hn::StoreU(sum, d, slot + 1 + x);
        });
        done = last;
    }
    filterPixels<Qel32f, 1>(s, width, slot, done, last + 1);
}

HWY_INLINE void filterRow_32f_C3(const Qel32f* s, int width, Qel32f* slot) {
    const int last = (width + 1) / 2 - 1;
    // A block reads one sample more than its pixel needs.
    const int blocks = HWY_MAX((width - 4) / 2, 0);
    filterPixels<Qel32f, 3>(s, width, slot, 0, 1);
    const hn::Full128<Qel32f> d;
    for (int i = 1; i <= blocks; ++i) {
        const auto pixel = [=](int at) QEL_INLINE_LAMBDA { return hn::LoadU(d, s + 6 * ptrdiff_t{i} + 3 * at); };
        const auto sum = sumOf_32f(d, pixel(-2), pixel(-1), pixel(0), pixel(1), pixel(2));
        hn::StoreU(sum, d, slot + 4 * ptrdiff_t{i});
    }
    filterPixels<Qel32f, 3>(s, width, slot, 1 + blocks, last + 1);
}

template <class T, int kChannels>
HWY_INLINE void filterRow(const T* s, int width, GaussSum<T>* slot) {
    if constexpr (sizeof(T) == 4) {
        if constexpr (kChannels == 1) filterRow_32f_C1(s, width, slot);
        if constexpr (kChannels == 3) filterRow_32f_C3(s, width, slot);
    } else {
        if constexpr (kChannels == 1) filterRow_8x_C1(s, width, slot);
        if constexpr (kChannels == 3) filterRow_8x_C3(s, width, slot);
    }
}

// The rows of sums around an output row.
template <class Sum>
struct Five {
    const Sum *above2, *above1, *here, *below1, *below2;
};

template <class D>
HWY_INLINE hn::Vec<D> columnSums(D d, const Five<Qel16u>& rows, size_t x) {
    const auto above2 = hn::LoadU(d, rows.above2 + x), above1 = hn::LoadU(d, rows.above1 + x);
    const auto below2 = hn::LoadU(d, rows.below2 + x), below1 = hn::LoadU(d, rows.below1 + x);
    const auto here = hn::LoadU(d, rows.here + x);
    const auto four = hn::ShiftLeft<2>(hn::Add(hn::Add(above1, below1), here));
    const auto rest = hn::Add(hn::Add(hn::Add(here, here), hn::Set(d, 128)), hn::Add(above2, below2));
    return hn::Add(four, rest);
}

// Two vectors of sums as bytes: their higher halves.
template <class T, class D8>
HWY_INLINE hn::Vec<D8> columnBytes(D8 d8, const Five<Qel16u>& rows, size_t x) {
    const hn::Repartition<uint16_t, D8> d;
    const auto low = hn::BitCast(d8, columnSums(d, rows, x));
    const auto high = hn::BitCast(d8, columnSums(d, rows, x + hn::Lanes(d)));
    return flipSigns<T>(d8, hn::ConcatOdd(d8, high, low));
}

template <class T>
HWY_INLINE void formRow_8x_C1(const Five<Qel16u>& rows, uint8_t* out, int pixels) {
    const hn::ScalableTag<uint8_t> d8;
    const size_t n = hn::Lanes(d8);
    if (size_t(pixels) >= n) {
        forBlocks(n, n, size_t(pixels),
                  [=](size_t x) QEL_INLINE_LAMBDA { hn::StoreU(columnBytes<T>(d8, rows, x), d8, out + x); });
        return;
    }
    forVectors(hn::ScalableTag<Qel16u>(), size_t(pixels), [=](auto d, size_t x) HWY_ATTR {
        const hn::Rebind<uint8_t, decltype(d)> dOut;
        const hn::RebindToSigned<decltype(d)> di;
        const auto bytes = hn::DemoteTo(dOut, hn::BitCast(di, hn::ShiftRight<8>(columnSums(d, rows, x))));
        hn::StoreU(flipSigns<T>(dOut, bytes), dOut, out + x);
    });
}

alignas(16) constexpr uint8_t kFourPixels[16] = {0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 12, 13, 0x80, 0x80, 0x80, 0x80};

template <class T>
HWY_INLINE void formRow_8x_C3(const Five<Qel16u>& rows, uint8_t* out, int pixels) {
    const auto fourPixels = [=](auto d8, size_t x) QEL_INLINE_LAMBDA {
        return hn::TableLookupBytesOr0(columnBytes<T>(d8, rows, x), hn::LoadDup128(d8, kFourPixels));
    };
    // A block is stored whole where its last four bytes, of no pixel, stay within the row.
    const size_t whole = size_t(pixels) * 3 < 16 ? 0 : (size_t(pixels) * 3 - 16) / 12 + 1;
    forVectors<16>(hn::ScalableTag<uint8_t>(), whole * 16, [=](auto d8, size_t x) QEL_INLINE_LAMBDA {
        storeBlocks<12>(fourPixels(d8, x), d8, out + x / 16 * 12);
    });
    const hn::Full128<uint8_t> d8;
    for (size_t block = whole; block * 4 < size_t(pixels); ++block)
        storeFirst(fourPixels(d8, block * 16), d8, out + block * 12, HWY_MIN(size_t(pixels) * 3 - block * 12, 12));
}

template <class D>
HWY_INLINE hn::Vec<D> columnResults(D d, const Five<Qel32f>& rows, size_t x) {
    const auto at = [=](const Qel32f* p) QEL_INLINE_LAMBDA { return hn::LoadU(d, p + x); };
    const auto sum = sumOf_32f(d, at(rows.above2), at(rows.above1), at(rows.here), at(rows.below1), at(rows.below2));
    return hn::Mul(sum, hn::Set(d, 1.0F / 256));
}

HWY_INLINE void formRow_32f_C1(const Five<Qel32f>& rows, Qel32f* out, int pixels) {
    coverRow(hn::ScalableTag<Qel32f>(), size_t(pixels),
             [=](auto d, size_t x) QEL_INLINE_LAMBDA { hn::StoreU(columnResults(d, rows, x), d, out + x); });
}

HWY_INLINE void formRow_32f_C3(const Five<Qel32f>& rows, Qel32f* out, int pixels) {
    const size_t last = size_t(pixels - 1);
    forVectors<4>(hn::ScalableTag<Qel32f>(), last * 4, [=](auto d, size_t x) QEL_INLINE_LAMBDA {
        storeBlocks<3>(columnResults(d, rows, x), d, out + x / 4 * 3);
    });
    const hn::Full128<Qel32f> d;
    storeFirst(columnResults(d, rows, last * 4), d, out + last * 3, 3);
}

template <class T, int kChannels>
HWY_INLINE void formRow(const Five<GaussSum<T>>& rows, T* dst, int pixels) {
    if constexpr (sizeof(T) == 4) {
        if constexpr (kChannels == 1) formRow_32f_C1(rows, dst, pixels);
        if constexpr (kChannels == 3) formRow_32f_C3(rows, dst, pixels);
    } else {
        if constexpr (kChannels == 1) formRow_8x_C1<T>(rows, reinterpret_cast<uint8_t*>(dst), pixels);
        if constexpr (kChannels == 3) formRow_8x_C3<T>(rows, reinterpret_cast<uint8_t*>(dst), pixels);
    }
}

template <class T, int kChannels>
void pyrDown(Plane<const T> src, Plane<T> dst, QelSize size, void* pScratch, int64_t scratchBytes) {
    using Sum = GaussSum<T>;
    constexpr int kSlots = 5;
    const int pixels = (size.width + 1) / 2;
    const ScratchRows<Sum> slots(static_cast<Sum*>(pScratch), scratchBytes / int64_t{sizeof(Sum)},
                                 slotLanes<T, kChannels>(pixels), kSlots);
    const auto slot = [&](int y) { return slots[reflected(y, size.height) % kSlots]; };
    int filtered = 0;
    for (int y = 0; y < (size.height + 1) / 2; ++y) {
        for (; filtered < HWY_MIN(2 * y + 3, size.height); ++filtered)
            filterRow<T, kChannels>(src.row(filtered), size.width, slots[filtered % kSlots]);
        const Five<Sum> rows = {slot(2 * y - 2), slot(2 * y - 1), slot(2 * y), slot(2 * y + 1), slot(2 * y + 2)};
        formRow<T, kChannels>(rows, dst.row(y), pixels);
    }
}

}  // namespace

constexpr auto& ownPyrDownG5x5_8u_C1 = pyrDown<Qel8u, 1>;
constexpr auto& ownPyrDownG5x5_8u_C3 = pyrDown<Qel8u, 3>;
constexpr auto& ownPyrDownG5x5_8s_C1 = pyrDown<Qel8s, 1>;
constexpr auto& ownPyrDownG5x5_8s_C3 = pyrDown<Qel8s, 3>;
constexpr auto& ownPyrDownG5x5_32f_C1 = pyrDown<Qel32f, 1>;
constexpr auto& ownPyrDownG5x5_32f_C3 = pyrDown<Qel32f, 3>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownPyrDownG5x5_8u_C1);
QEL_KERNEL(ownPyrDownG5x5_8u_C3);
QEL_KERNEL(ownPyrDownG5x5_8s_C1);
QEL_KERNEL(ownPyrDownG5x5_8s_C3);
QEL_KERNEL(ownPyrDownG5x5_32f_C1);
QEL_KERNEL(ownPyrDownG5x5_32f_C3);
}  // namespace qel
#endif
