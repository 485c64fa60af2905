#include "morph/dilate_kernels.h"

#define HWY_TARGET_INCLUDE "morph/dilate_kernels.cpp"
#include "morph/filter_min_max-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// kVectors vectors of results from src and out on. They stay in registers while the elements pass.
template <size_t kVectors, class Extreme, class D, class T = hn::TFromD<D>>
HWY_INLINE void extremesOf(D d, const T* src, T* out, const SampleOffsets& offsets) {
    const size_t lanes = hn::Lanes(d);
    const auto element = [src](std::ptrdiff_t offset) HWY_ATTR {
        return reinterpret_cast<const T*>(reinterpret_cast<const char*>(src) + offset);
    };
    const Extreme extreme;
    const std::ptrdiff_t* offset = offsets.p;
    const std::ptrdiff_t* const end = offset + offsets.count;
    const T* const first = offsets.ahead ? out : element(*offset++);
    hn::Vec<D> a, b, c, e;
    a = hn::LoadU(d, first);
    if constexpr (kVectors == 4) {
        b = hn::LoadU(d, first + lanes);
        c = hn::LoadU(d, first + 2 * lanes);
        e = hn::LoadU(d, first + 3 * lanes);
    }
    for (; offset != end; ++offset) {
        const T* const p = element(*offset);
        a = extreme(hn::LoadU(d, p), a);
        if constexpr (kVectors == 4) {
            b = extreme(hn::LoadU(d, p + lanes), b);
            c = extreme(hn::LoadU(d, p + 2 * lanes), c);
            e = extreme(hn::LoadU(d, p + 3 * lanes), e);
        }
    }
    hn::StoreU(a, d, out);
    if constexpr (kVectors == 4) {
        hn::StoreU(b, d, out + lanes);
        hn::StoreU(c, d, out + 2 * lanes);
        hn::StoreU(e, d, out + 3 * lanes);
    }
}

// Four vectors at a time, then one, the last of which begins early enough to end with the row.
template <class Extreme, class T>
void extremesOfElements(Plane<const T> src, Plane<T> dst, QelSize size, SampleOffsets offsets) {
    const hn::ScalableTag<T> d;
    const size_t lanes = hn::Lanes(d);
    const size_t width = static_cast<size_t>(size.width);
    for (int y = 0; y < size.height; ++y) {
        const T* const p = src.row(y);
        T* const out = dst.row(y);
        const auto one = [&](auto dx, size_t x) HWY_ATTR { extremesOf<1, Extreme>(dx, p + x, out + x, offsets); };
        if (width < lanes) {
            forVectors(hn::Half<hn::ScalableTag<T>>(), width, one);
            continue;
        }
        size_t x = 0;
        for (; x + 4 * lanes <= width; x += 4 * lanes) extremesOf<4, Extreme>(d, p + x, out + x, offsets);
        for (; x < width; x += lanes) one(d, HWY_MIN(x, width - lanes));
    }
}

}  // namespace

constexpr auto& Dilate_8u_C1S = extremesOfElements<Larger, Qel8u>;
constexpr auto& Erode_8u_C1S = extremesOfElements<Smaller, Qel8u>;
constexpr auto& Dilate_32f_C1S = extremesOfElements<Larger, Qel32f>;
constexpr auto& Erode_32f_C1S = extremesOfElements<Smaller, Qel32f>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(Dilate_8u_C1S);
QEL_KERNEL(Erode_8u_C1S);
QEL_KERNEL(Dilate_32f_C1S);
QEL_KERNEL(Erode_32f_C1S);
}  // namespace qel
#endif
