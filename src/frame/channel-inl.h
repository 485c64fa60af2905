// Vectors made of blocks that lie apart, and one channel picked out of three. Included once per instruction set.
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

// Picks the samples of one channel out of interleaved triples.
template <class D>
class ChannelPicker {
public:
    using T = hn::TFromD<D>;
    using V = hn::Vec<D>;

    HWY_INLINE explicit ChannelPicker(int coi) : first_(table(coi, 0)), second_(table(coi, 1)), third_(table(coi, 2)) {}

    // As many samples as there are lanes; `p` points at the first triple.
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

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#endif
