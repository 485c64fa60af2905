#include "morph/dilate_kernels.h"

#define HWY_TARGET_INCLUDE "morph/dilate_shared_kernels.cpp"
#include "morph/filter_min_max-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

template <class T>
HWY_INLINE const T* at(const T* p, std::ptrdiff_t offset) {
    return reinterpret_cast<const T*>(reinterpret_cast<const char*>(p) + offset);
}

// A vector of each row of results. They stay in registers while the samples pass.
template <class Extreme, class D>
struct Rows {
    using V = hn::Vec<D>;
    using T = hn::TFromD<D>;
    V a, b, c, e;

    HWY_INLINE Rows(D d, const T* p, const SharedOffsets& offsets)
        : a(hn::LoadU(d, at(p, offsets.first[0]))),
          b(hn::LoadU(d, at(p, offsets.first[1]))),
          c(hn::LoadU(d, at(p, offsets.first[2]))),
          e(hn::LoadU(d, at(p, offsets.first[3]))) {}

    template <size_t kBy>
    HWY_INLINE void take(V v) {
        const Extreme extreme;
        if constexpr ((kBy & 1) != 0) a = extreme(v, a);
        if constexpr ((kBy & 2) != 0) b = extreme(v, b);
        if constexpr ((kBy & 4) != 0) c = extreme(v, c);
        if constexpr ((kBy & 8) != 0) e = extreme(v, e);
    }

    HWY_INLINE void store(D d, Plane<T> dst, size_t x) const {
        hn::StoreU(a, d, dst.row(0) + x);
        hn::StoreU(b, d, dst.row(1) + x);
        hn::StoreU(c, d, dst.row(2) + x);
        hn::StoreU(e, d, dst.row(3) + x);
    }
};

// use.template operator()<kBy>(offset) for each of the samples, those of the same rows one after the other.
template <size_t kBy = 1, class Use>
HWY_INLINE void forGroups(const SharedOffsets& offsets, const std::ptrdiff_t* p, const Use& use) {
    for (const std::ptrdiff_t* const end = offsets.p.data() + offsets.end[kBy]; p != end; ++p)
        use.template operator()<kBy>(*p);
    if constexpr (kBy + 1 < SharedOffsets::kGroups) forGroups<kBy + 1>(offsets, p, use);
}

template <class Extreme, class D, class T = hn::TFromD<D>>
HWY_INLINE void oneVector(D d, const T* p, Plane<T> dst, size_t x, const SharedOffsets& offsets) {
    Rows<Extreme, D> rows(d, p, offsets);
    forGroups(offsets, offsets.p.data(), [&]<size_t kBy>(std::ptrdiff_t offset) HWY_ATTR {
        rows.template take<kBy>(hn::LoadU(d, at(p, offset)));
    });
    rows.store(d, dst, x);
}

#if HWY_ARCH_X86_64
template <class Extreme, class D, class T = hn::TFromD<D>>
HWY_INLINE void twoVectors(D d, const T* p, Plane<T> dst, size_t x, const SharedOffsets& offsets) {
    const size_t lanes = hn::Lanes(d);
    Rows<Extreme, D> left(d, p, offsets);
    Rows<Extreme, D> right(d, p + lanes, offsets);
    forGroups(offsets, offsets.p.data(), [&]<size_t kBy>(std::ptrdiff_t offset) HWY_ATTR {
        left.template take<kBy>(hn::LoadU(d, at(p, offset)));
        right.template take<kBy>(hn::LoadU(d, at(p, offset) + lanes));
    });
    left.store(d, dst, x);
    right.store(d, dst, x + lanes);
}
#endif

template <class Extreme, class T>
void extremesOfSharedRows(Plane<const T> src, Plane<T> dst, QelSize size, const SharedOffsets& offsets) {
    const size_t width = static_cast<size_t>(size.width);
    for (int y = 0; y < size.height; y += SharedOffsets::kRows) {
        const T* const p = src.row(y);
        const Plane<T> out = dst.from(y);
#if HWY_ARCH_X86_64
        const hn::ScalableTag<T> d;
        const size_t block = 2 * hn::Lanes(d);
        if (width >= block) {
            forBlocks(block, block, width, [&](size_t x) HWY_ATTR { twoVectors<Extreme>(d, p + x, out, x, offsets); });
            continue;
        }
#endif
        forCovering<T>(width, [&](auto dx, size_t x) HWY_ATTR { oneVector<Extreme>(dx, p + x, out, x, offsets); });
    }
}

}  // namespace

constexpr auto& ownDilate_8u_C1S_4 = extremesOfSharedRows<Larger, Qel8u>;
constexpr auto& ownErode_8u_C1S_4 = extremesOfSharedRows<Smaller, Qel8u>;
constexpr auto& ownDilate_32f_C1S_4 = extremesOfSharedRows<Larger, Qel32f>;
constexpr auto& ownErode_32f_C1S_4 = extremesOfSharedRows<Smaller, Qel32f>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownDilate_8u_C1S_4);
QEL_KERNEL(ownErode_8u_C1S_4);
QEL_KERNEL(ownDilate_32f_C1S_4);
QEL_KERNEL(ownErode_32f_C1S_4);
}  // namespace qel
#endif
