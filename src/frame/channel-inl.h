// Vectors made of blocks that lie apart, and one channel picked out of three. Included once per instruction set.
#include <type_traits>

#include "frame/simd-inl.h"

#if defined(QELCV_FRAME_CHANNEL_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QELCV_FRAME_CHANNEL_INL_H_
#undef QELCV_FRAME_CHANNEL_INL_H_
#else
#define QELCV_FRAME_CHANNEL_INL_H_
#endif

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {

// A vector whose block r, of kLanes lanes, is block(first + r).
template <size_t kLanes, class D, class Block>
HWY_INLINE hn::Vec<D> fromBlocks(D d, const Block& block, int first = 0) {
    if constexpr (hn::MaxLanes(D()) == kLanes) {
        return block(first);
    } else {
        const hn::Half<D> half;
        constexpr int kBlocks = hn::MaxLanes(half) / kLanes;
        return hn::Combine(d, fromBlocks<kLanes>(half, block, first + kBlocks), fromBlocks<kLanes>(half, block, first));
    }
}

// The even blocks of `low`, then those of `high`; below, the odd ones. Of two blocks, the first or the second.
template <class D, class V = hn::Vec<D>>
HWY_INLINE V evenBlocks(D d, V high, V low) {
#if HWY_TARGET <= HWY_AVX3
    if constexpr (hn::MaxLanes(D()) == 16)
        return V{_mm512_mask_shuffle_f32x4(low.raw, 0xFFFF, low.raw, high.raw, _MM_SHUFFLE(2, 0, 2, 0))};
    else
#endif
        return hn::ConcatLowerLower(d, high, low);
}
template <class D, class V = hn::Vec<D>>
HWY_INLINE V oddBlocks(D d, V high, V low) {
#if HWY_TARGET <= HWY_AVX3
    if constexpr (hn::MaxLanes(D()) == 16)
        return V{_mm512_mask_shuffle_f32x4(low.raw, 0xFFFF, low.raw, high.raw, _MM_SHUFFLE(3, 1, 3, 1))};
    else
#endif
        return hn::ConcatUpperUpper(d, high, low);
}

// Turns as many vectors as they have blocks, each of another row, into vectors of one block of each row.
template <class D, size_t kBlocks, class V = hn::Vec<D>>
HWY_INLINE void transposeBlocks(D d, V (&v)[kBlocks]) {
    static_assert(hn::MaxLanes(D()) * sizeof(hn::TFromD<D>) == 16 * kBlocks && kBlocks <= 4);
    if constexpr (kBlocks == 2) {
        const V first = evenBlocks(d, v[1], v[0]);
        v[1] = oddBlocks(d, v[1], v[0]);
        v[0] = first;
    } else if constexpr (kBlocks == 4) {
        const V even01 = evenBlocks(d, v[1], v[0]);
        const V even23 = evenBlocks(d, v[3], v[2]);
        const V odd01 = oddBlocks(d, v[1], v[0]);
        const V odd23 = oddBlocks(d, v[3], v[2]);
        v[0] = evenBlocks(d, even23, even01);
        v[1] = evenBlocks(d, odd23, odd01);
        v[2] = oddBlocks(d, even23, even01);
        v[3] = oddBlocks(d, odd23, odd01);
    }
}

// Picks the samples of one channel out of interleaved triples: pixel i has number 3 i + channel in three vectors.
#if HWY_TARGET <= HWY_AVX3
template <class D>
constexpr bool kLanesGoAnywhere = hn::MaxLanes(D()) * sizeof(hn::TFromD<D>) > 16 && sizeof(hn::TFromD<D>) != 1;

// Lane i is lane from[i] of `low` or, from its lanes on, of `high`.
template <class V, class VU>
HWY_INLINE V lanesOfTwo(V low, V high, VU from) {
    constexpr bool k16Bits = sizeof(hn::TFromV<V>) == 2;
    if constexpr (hn::MaxLanes(hn::DFromV<V>()) * sizeof(hn::TFromV<V>) == 64) {
        if constexpr (k16Bits) return V{_mm512_permutex2var_epi16(low.raw, from.raw, high.raw)};
        if constexpr (!k16Bits) return V{_mm512_permutex2var_ps(low.raw, from.raw, high.raw)};
    } else {
        if constexpr (k16Bits) return V{_mm256_permutex2var_epi16(low.raw, from.raw, high.raw)};
        if constexpr (!k16Bits) return V{_mm256_permutex2var_ps(low.raw, from.raw, high.raw)};
    }
}

// Two shuffles rather than two blends and one shuffle: compilers make loads under a mask of the blends, and the machine
// does not read ahead of those.
template <class D, bool kAnywhere = kLanesGoAnywhere<D>>
class ChannelPicker {
public:
    using T = hn::TFromD<D>;
    using V = hn::Vec<D>;

    HWY_INLINE explicit ChannelPicker(int coi) {
        const DU du;
        const auto pixel = hn::Iota(du, 0);
        const auto lanes = hn::Set(du, static_cast<hn::TFromD<DU>>(kLanes));
        fromTwo_ = hn::Add(hn::Add(hn::Add(pixel, pixel), pixel), hn::Set(du, static_cast<hn::TFromD<DU>>(coi - 1)));
        const auto inTwo = hn::Lt(fromTwo_, hn::Add(lanes, lanes));
        fromAll_ = hn::IfThenElse(inTwo, pixel, hn::Sub(fromTwo_, lanes));
    }

    // As many samples as there are lanes; `p` points at the first triple.
    HWY_INLINE V load(const T* p) const {
        const D d;
        const V ofTwo = lanesOfTwo(hn::LoadU(d, p), hn::LoadU(d, p + kLanes), fromTwo_);
        return lanesOfTwo(ofTwo, hn::LoadU(d, p + 2 * kLanes), fromAll_);
    }

private:
    using DU = hn::RebindToUnsigned<D>;
    static constexpr size_t kLanes = hn::MaxLanes(D());

    hn::Vec<DU> fromTwo_, fromAll_;
};
#else
template <class D>
constexpr bool kLanesGoAnywhere = hn::MaxLanes(D()) * sizeof(hn::TFromD<D>) > 16 && sizeof(hn::TFromD<D>) == 4;

// As 3 and the lanes have no common factor, the samples lie in different lanes of the three vectors. So they come
// together without moving, and then are put in order.
template <class D, bool kAnywhere = kLanesGoAnywhere<D>>
class ChannelPicker {
public:
    using T = hn::TFromD<D>;
    using V = hn::Vec<D>;

    HWY_INLINE explicit ChannelPicker(int coi) {
        const hn::RebindToSigned<D> di;
        const auto lane = hn::Iota(di, 0);
        const auto channel = hn::Set(di, coi - 1);
        const auto number = hn::Add(hn::Add(hn::Add(lane, lane), lane), channel);
        order_ = hn::And(number, hn::Set(di, kLanes - 1));
        second_ = hn::RebindMask(D(), hn::Eq(hn::LoadU(di, kChannels.of + kLanes % 3), channel));
        third_ = hn::RebindMask(D(), hn::Eq(hn::LoadU(di, kChannels.of + 2 * kLanes % 3), channel));
    }

    // As many samples as there are lanes; `p` points at the first triple.
    HWY_INLINE V load(const T* p) const {
        const D d;
        const V ofTwo = hn::IfThenElse(second_, hn::LoadU(d, p + kLanes), hn::LoadU(d, p));
        const V ofAll = hn::IfThenElse(third_, hn::LoadU(d, p + 2 * kLanes), ofTwo);
        return hn::TableLookupLanes(ofAll, hn::IndicesFromVec(d, order_));
    }

private:
    static constexpr size_t kLanes = hn::MaxLanes(D());

    struct Channels {
        int32_t of[kLanes + 2] = {};  // sample i

        constexpr Channels() {
            for (size_t i = 0; i < kLanes + 2; ++i) of[i] = static_cast<int32_t>(i % 3);
        }
    };
    static constexpr Channels kChannels{};

    hn::Mask<D> second_, third_;
    hn::Vec<hn::RebindToSigned<D>> order_;
};
#endif

// For each channel of interest and each of three consecutive blocks of 16 bytes: which byte of it goes where in the
// block of that channel's samples; 0x80 where none does.
template <size_t kSampleBytes>
struct ChannelTable {
    alignas(16) uint8_t from[3][3][16] = {};

    constexpr ChannelTable() {
        for (size_t channel = 0; channel < 3; ++channel) {
            for (size_t to = 0; to < 16; ++to) {
                const size_t sample = to / kSampleBytes * 3 + channel;
                const size_t at = sample * kSampleBytes + to % kSampleBytes;
                for (size_t block = 0; block < 3; ++block)
                    from[channel][block][to] = static_cast<uint8_t>(at / 16 == block ? at % 16 : 0x80);
            }
        }
    }
};

// Where lanes stay in their blocks: three blocks, each shuffled by itself, make one.
template <class D>
class ChannelPicker<D, false> {
public:
    using T = hn::TFromD<D>;
    using V = hn::Vec<D>;

    HWY_INLINE explicit ChannelPicker(int coi) : first_(table(coi, 0)), second_(table(coi, 1)), third_(table(coi, 2)) {}

    HWY_INLINE V load(const T* p) const {
        const D d;
        const auto picked =
            hn::Or(hn::TableLookupBytesOr0(part(p, 0), first_), hn::TableLookupBytesOr0(part(p, 1), second_));
        return hn::BitCast(d, hn::Or(picked, hn::TableLookupBytesOr0(part(p, 2), third_)));
    }

private:
    using V8 = hn::Vec<hn::Repartition<uint8_t, D>>;
    static constexpr size_t kBlockLanes = 16 / sizeof(T);

    // Block n of each three.
    static HWY_INLINE V8 part(const T* p, size_t n) {
        const hn::Repartition<uint8_t, D> d8;
        const auto block = [=](int r) HWY_ATTR {
            return hn::LoadU(hn::FixedTag<T, kBlockLanes>(), p + (3 * static_cast<size_t>(r) + n) * kBlockLanes);
        };
        return hn::BitCast(d8, fromBlocks<kBlockLanes>(D(), block));
    }

    static HWY_INLINE V8 table(int coi, int block) {
        return hn::LoadDup128(hn::Repartition<uint8_t, D>(), kTable.from[coi - 1][block]);
    }

    static constexpr ChannelTable<sizeof(T)> kTable{};
    V8 first_, second_, third_;
};

// All three channels of interleaved triples.
template <class D>
class ChannelSplitter {
    static constexpr bool kPicks = kLanesGoAnywhere<D> && HWY_TARGET <= HWY_AVX3;

public:
    using T = hn::TFromD<D>;
    using V = hn::Vec<D>;

    HWY_INLINE ChannelSplitter() : a_(1), b_(2), c_(3) {}

    // As many samples of each as there are lanes; `p` points at the first triple.
    HWY_INLINE void load(const T* p, V& a, V& b, V& c) const {
        if constexpr (kPicks) {
            a = a_.load(p);
            b = b_.load(p);
            c = c_.load(p);
        } else {
            hn::LoadInterleaved3(D(), p, a, b, c);
        }
    }

private:
    struct None {
        explicit None(int) {}
    };
    std::conditional_t<kPicks, ChannelPicker<D>, None> a_, b_, c_;
};

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#endif
