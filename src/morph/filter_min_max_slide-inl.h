// Windows that slide along a line in registers: the samples ahead of a vector's come out of the vector before it, so
// that each is loaded once. Included once per instruction set.
#include "morph/filter_min_max-inl.h"

#if defined(QELCV_MORPH_FILTER_MIN_MAX_SLIDE_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QELCV_MORPH_FILTER_MIN_MAX_SLIDE_INL_H_
#undef QELCV_MORPH_FILTER_MIN_MAX_SLIDE_INL_H_
#else
#define QELCV_MORPH_FILTER_MIN_MAX_SLIDE_INL_H_
#endif

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {

using Bytes = hn::ScalableTag<uint8_t>;
using BytesV = hn::Vec<Bytes>;
constexpr int kBlock = 16;  // bytes that shuffles reach
constexpr int kVector = hn::MaxLanes(Bytes());

// As many bytes as `cur` has, ending kBlocks blocks before it does. They reach into `prev`, which stands before it.
template <int kBlocks>
HWY_INLINE BytesV blocksBefore(BytesV cur, BytesV prev) {
    static_assert(kBlocks * kBlock <= kVector);
    if constexpr (kBlocks == 0) return cur;
    if constexpr (kBlocks * kBlock == kVector) return prev;
#if HWY_TARGET <= HWY_AVX3
    if constexpr (kBlocks > 0 && kBlocks < 4)
        return BytesV{_mm512_maskz_alignr_epi64(0xFF, cur.raw, prev.raw, 8 - 2 * kBlocks)};
#elif HWY_TARGET == HWY_AVX2
    if constexpr (kBlocks == 1) return hn::ConcatLowerUpper(Bytes(), cur, prev);
#endif
}

// The same for kBytes bytes.
template <int kBytes>
HWY_INLINE BytesV bytesBefore(BytesV cur, BytesV prev) {
    constexpr int kBlocks = kBytes / kBlock;
    if constexpr (kBytes % kBlock == 0) {
        return blocksBefore<kBlocks>(cur, prev);
    } else {
#if HWY_TARGET <= HWY_AVX3
        if constexpr (kBytes % 4 == 0)
            return BytesV{_mm512_maskz_alignr_epi32(0xFFFF, cur.raw, prev.raw, (kVector - kBytes) / 4)};
#endif
        return hn::CombineShiftRightBytes<kBlock - kBytes % kBlock>(Bytes(), blocksBefore<kBlocks>(cur, prev),
                                                                    blocksBefore<kBlocks + 1>(cur, prev));
    }
}
template <int kBytes, class V, class D = hn::DFromV<V>>
HWY_INLINE V before(V cur, V prev) {
    return hn::BitCast(D(), bytesBefore<kBytes>(hn::BitCast(Bytes(), cur), hn::BitCast(Bytes(), prev)));
}

// The same for a number of bytes that is known at run time only, below a vector's.
class Distance {
public:
    explicit Distance(size_t bytes)
        : blocks_(bytes / kBlock),
          fromNear_(hn::LoadDup128(Bytes(), kIndices + kBlock - bytes % kBlock)),
          fromFar_(hn::LoadDup128(Bytes(), kIndices + 2 * kBlock - bytes % kBlock))
#if HWY_TARGET <= HWY_AVX3
          ,
          fromBoth_(hn::Iota(hn::ScalableTag<int32_t>(), int32_t(kVector - bytes) / 4))
#endif
    {
    }

    template <class V, class D = hn::DFromV<V>>
    HWY_INLINE V before(V cur, V prev) const {
#if HWY_TARGET <= HWY_AVX3
        if constexpr (sizeof(hn::TFromV<V>) == 4) {
            const hn::RebindToSigned<D> di;
            const auto both =
                _mm512_permutex2var_epi32(hn::BitCast(di, prev).raw, fromBoth_.raw, hn::BitCast(di, cur).raw);
            return hn::BitCast(D(), hn::Vec<decltype(di)>{both});
        }
#endif
        return hn::BitCast(D(), bytesBefore(hn::BitCast(Bytes(), cur), hn::BitCast(Bytes(), prev)));
    }

private:
    HWY_INLINE BytesV bytesBefore(BytesV cur, BytesV prev) const {
        // The same way for all vectors of a line, which the processor soon knows.
        if constexpr (kVector >= 64) {
            if (blocks_ == 3) return between<3>(cur, prev);
            if (blocks_ == 2) return between<2>(cur, prev);
        }
        if constexpr (kVector >= 32) {
            if (blocks_ == 1) return between<1>(cur, prev);
        }
        return between<0>(cur, prev);
    }

    template <int kBlocks>
    HWY_INLINE BytesV between(BytesV cur, BytesV prev) const {
        return hn::Or(hn::TableLookupBytesOr0(blocksBefore<kBlocks>(cur, prev), fromNear_),
                      hn::TableLookupBytesOr0(blocksBefore<kBlocks + 1>(cur, prev), fromFar_));
    }

    static constexpr uint8_t kIndices[3 * kBlock] = {
        0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80,
        0,    1,    2,    3,    4,    5,    6,    7,    8,    9,    10,   11,   12,   13,   14,   15,
        0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80};

    size_t blocks_;
    BytesV fromNear_;
    BytesV fromFar_;
#if HWY_TARGET <= HWY_AVX3
    hn::Vec<hn::ScalableTag<int32_t>> fromBoth_;  // of samples of four bytes
#endif
};

// Windows over the pixel itself and those before it. Each call of next takes the vector behind the one before and
// returns the extremes of the windows that end in it. Operands stand in the order of the samples.
template <class Choose, int kPixel, class V>
class Slide3 {
public:
    explicit Slide3(V before, size_t) : line_(before) {}

    HWY_INLINE V next(V cur) {
        const Choose choose;
        const V extreme = choose(choose(before<2 * kPixel>(cur, line_), before<kPixel>(cur, line_)), cur);
        line_ = cur;
        return extreme;
    }

private:
    V line_;
};

template <class Choose, int kPixel, class V>
class Slide5 {
public:
    explicit Slide5(V before, size_t) : three_(before, 0), last_(before) {}

    HWY_INLINE V next(V cur) {
        const V extreme = three_.next(cur);
        const V result = Choose()(before<2 * kPixel>(extreme, last_), extreme);
        last_ = extreme;
        return result;
    }

private:
    Slide3<Choose, kPixel, V> three_;
    V last_;
};

// Of 2^kDoublings pixels. An array of vectors would not stay in registers.
template <class Choose, int kPixel, int kDoublings, class V>
class Doublings {
public:
    explicit Doublings(V before) : half_(before), last_(before) {}

    HWY_INLINE V next(V cur) {
        const V half = half_.next(cur);
        const V extreme = Choose()(before<(kPixel << (kDoublings - 1))>(half, last_), half);
        last_ = half;
        return extreme;
    }

private:
    Doublings<Choose, kPixel, kDoublings - 1, V> half_;
    V last_;
};
template <class Choose, int kPixel, class V>
class Doublings<Choose, kPixel, 0, V> {
public:
    explicit Doublings(V) {}
    HWY_INLINE V next(V cur) { return cur; }
};

// Of up to twice as many pixels, less one.
template <class Choose, int kPixel, int kDoublings, class V>
class SlideDoubled {
public:
    SlideDoubled(V before, size_t w)
        : doublings_(before), rest_((w - (size_t{1} << kDoublings)) * kPixel), last_(before) {}

    HWY_INLINE V next(V cur) {
        const V doubled = doublings_.next(cur);
        const V extreme = Choose()(rest_.before(doubled, last_), doubled);
        last_ = doubled;
        return extreme;
    }

private:
    Doublings<Choose, kPixel, kDoublings, V> doublings_;
    Distance rest_;
    V last_;
};

// i modulo kPixel, from 0 on.
template <int kPixel>
struct Period {
    uint8_t at[kVector + kBlock];
    constexpr Period() : at() {
        for (int i = 0; i < kVector + kBlock; ++i) at[i] = uint8_t(i % kPixel);
    }
};

// A vector of the pixel at pBlock + offset, a whole one at `position` modulo kPixel.
template <int kPixel>
HWY_INLINE BytesV repeated(const uint8_t* pBlock, int offset, size_t position) {
    static constexpr Period<kPixel> kPeriod;
    const Bytes d;
    return hn::TableLookupBytes(hn::LoadDup128(d, pBlock),
                                hn::Add(hn::LoadU(d, kPeriod.at + position % kPixel), hn::Set(d, uint8_t(offset))));
}

// A line of at least a vector, with the pixels at its ends repeated beyond them.
template <int kPixel>
struct ExtendedLine {
    const uint8_t* p;
    ptrdiff_t bytes;

    HWY_INLINE BytesV at(ptrdiff_t x) const {
        const Bytes d;
        if (x >= 0 && x + kVector <= bytes) return hn::LoadU(d, p + x);
        if (x < 0) {
            if (x <= -kVector) return repeated<kPixel>(p, 0, size_t(kPixel + x % kPixel));
            return Distance(size_t(-x)).before(hn::LoadU(d, p), repeated<kPixel>(p, 0, kPixel - kVector % kPixel));
        }
        const uint8_t* const block = p + bytes - kBlock;
        if (x >= bytes) return repeated<kPixel>(block, kBlock - kPixel, size_t(x - bytes));
        return Distance(size_t(bytes - x))
            .before(repeated<kPixel>(block, kBlock - kPixel, 0), hn::LoadU(d, p + bytes - kVector));
    }
};

// Slides a window of w pixels along the line, `behind` bytes of it behind the result.
template <class Slide, class T, int kPixel>
void slideAlong(const uint8_t* p, uint8_t* out, size_t lineBytes, size_t w, size_t lineBehind) {
    const Bytes d;
    const hn::ScalableTag<T> dt;
    const ExtendedLine<kPixel> line = {p, ptrdiff_t(lineBytes)};
    const ptrdiff_t bytes = line.bytes;
    const ptrdiff_t behind = ptrdiff_t(lineBehind);
    const ptrdiff_t reach = ptrdiff_t(w - 1) * kPixel;

    Slide slide(hn::Zero(dt), w);
    const auto next = [&slide, dt, d](BytesV v)
                          QEL_INLINE_LAMBDA { return hn::BitCast(d, slide.next(hn::BitCast(dt, v))); };
    for (ptrdiff_t x = -((reach + kVector - 1) / kVector) * kVector; x < 0; x += kVector) next(line.at(x + behind));
    ptrdiff_t x = 0;
    BytesV last = hn::Zero(d);
    for (; x + behind + kVector <= bytes; x += kVector) {
        last = next(hn::LoadU(d, p + x + behind));
        hn::StoreU(last, d, out + x);
    }
    for (; x + kVector <= bytes; x += kVector) {
        last = next(line.at(x + behind));
        hn::StoreU(last, d, out + x);
    }
    if (x == bytes) return;
    // The last vector overlaps the one before.
    hn::StoreU(Distance(size_t(x + kVector - bytes)).before(next(line.at(x + behind)), last), d, out + bytes - kVector);
}

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#endif
