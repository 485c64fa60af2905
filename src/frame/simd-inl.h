// What kernel files share: the loop over a row with its tail. Included once per instruction set.
#include <hwy/cache_control.h>
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include "frame/kernel.h"

// Stands where a lambda has HWY_ATTR, if it must become part of its caller though it is called more than once.
#undef QEL_INLINE_LAMBDA
#define QEL_INLINE_LAMBDA HWY_ATTR __attribute__((always_inline))

#if defined(QELCV_FRAME_SIMD_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QELCV_FRAME_SIMD_INL_H_
#undef QELCV_FRAME_SIMD_INL_H_
#else
#define QELCV_FRAME_SIMD_INL_H_
#endif

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Calls op(d, x) on whole vectors and returns where they end. Compared with `last`, x is all that the loop counts; in
// terms of x + lanes, compilers count both.
template <class D, class Op>
HWY_INLINE size_t forWholeVectors(D d, size_t count, const Op& op, size_t x) {
    const size_t lanes = hn::Lanes(d);
    if (count - x >= lanes) {
        const size_t last = count - lanes;
        do {
            op(d, x);
            x += lanes;
        } while (x <= last);
    }
    return x;
}

// Calls op(d, x) on one vector, a half, a quarter and so on, as far as samples from x to count are left for it.
template <size_t kGroup, class D, class Op>
HWY_INLINE void forParts(D d, size_t count, const Op& op, size_t x) {
    if (count - x >= hn::Lanes(d)) {
        op(d, x);
        x += hn::Lanes(d);
    }
    if constexpr (hn::MaxLanes(D()) > kGroup) {
        if (x < count) forParts<kGroup>(hn::Half<D>(), count, op, x);
    }
}

// Calls op(d, x) on whole vectors, then on parts of one down to a group, of which `count` is a multiple. Each sample is
// visited once and nothing beyond count is touched, so op may read and write the same image.
template <size_t kGroup = 1, class D, class Op>
HWY_INLINE void forVectors(D d, size_t count, const Op& op, size_t x = 0) {
    x = forWholeVectors(d, count, op, x);
    if constexpr (hn::MaxLanes(D()) > kGroup) {
        if (x < count) forParts<kGroup>(hn::Half<D>(), count, op, x);
    }
}

// How far `out` stands behind where stores of whole vectors are aligned.
template <class D, class Out>
HWY_INLINE size_t lanesBeyondAlignment(D d, const Out* out) {
    return reinterpret_cast<uintptr_t>(out) / sizeof(Out) % hn::Lanes(d);
}

// Calls op(x) on blocks that cover `count` results, at least one block. The first advances by `step`, which may be less
// than a block, and the last one begins early enough to end with the results: some are computed twice.
template <class Op>
HWY_INLINE void forBlocks(size_t block, size_t step, size_t count, const Op& op) {
    const size_t last = count - block;
    size_t x = 0;
    // The loop comes twice around for the last block, rather than after it, to have op inlined once.
    for (size_t end = last;; end = count, x = last) {
        do {
            op(x);
            x += step;
            step = block;
        } while (x < end);
        if (x == count) return;
    }
}

// Calls op(d, x) on vectors that cover `count` results, a multiple of kGroup: behind the first, they begin where
// vectors from `aligned` on are aligned, and the last begins early enough to end with the results. Some are formed
// twice, and by the same vectors as the others; only results that do not fill one come in shorter ones.
template <size_t kGroup = 1, class D, class Out, class Op>
HWY_INLINE void forOverlappingVectors(D d, const Out* aligned, size_t count, const Op& op) {
    const size_t lanes = hn::Lanes(d);
    if (count >= lanes) {
        forBlocks(lanes, lanes - lanesBeyondAlignment(d, aligned), count, [&](size_t x) HWY_ATTR { op(d, x); });
    } else if constexpr (hn::MaxLanes(D()) > kGroup) {
        if (count > 0) forOverlappingVectors<kGroup>(hn::Half<D>(), aligned, count, op);
    }
}

// How a kernel stores: through the cache, or past it where the address is a vector's.
struct CachedStore {
    template <class D, class V = hn::Vec<D>>
    HWY_INLINE void operator()(V v, D d, hn::TFromD<D>* p) const {
        hn::StoreU(v, d, p);
    }
};
struct StreamingStore {
    template <class D, class V = hn::Vec<D>>
    HWY_INLINE void operator()(V v, D d, hn::TFromD<D>* p) const {
        hn::Stream(v, d, p);
    }
};

// As forVectors for op(d, x, store), where op stores its result at out + x by calling store(result, d, out + x). With
// Streaming, whole vectors bypass the cache; the samples ahead of the first aligned address and the row's tail do not.
template <bool Streaming, class D, class T, class Op>
HWY_INLINE void forVectorsInto(T* out, D d, size_t count, const Op& op) {
    const auto cached = [&op](auto dx, size_t x) HWY_ATTR { op(dx, x, CachedStore()); };
    size_t x = 0;
    if constexpr (Streaming) {
        const size_t vectorBytes = hn::Lanes(d) * sizeof(T);
        const size_t headBytes = -reinterpret_cast<uintptr_t>(out) & (vectorBytes - 1);
        // An image that is not aligned to its own samples never meets a vector's address.
        if (headBytes % sizeof(T) == 0) {
            x = HWY_MIN(headBytes / sizeof(T), count);
            forVectors(d, x, cached);
            x = forWholeVectors(
                d, count, [&op](auto dx, size_t i) HWY_ATTR { op(dx, i, StreamingStore()); }, x);
        }
    }
    forVectors(d, count, cached, x);
}

// Ends a kernel: streamed stores become visible before it returns.
template <bool Streaming>
HWY_INLINE void finishStores() {
    if constexpr (Streaming) hwy::FlushStream();
}

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#endif
