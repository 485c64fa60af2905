#include "morph/dilate_kernels.h"

#define HWY_TARGET_INCLUDE "morph/dilate_runs_kernels.cpp"
#include "morph/filter_min_max-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// kVectors vectors of each line. The extremes stay in registers while the runs grow.
template <size_t kVectors, class Extreme, class D, class T = hn::TFromD<D>>
HWY_INLINE void extremesOfRuns(D d, const T* p, size_t x, const NestedRuns<T>& runs) {
    const Extreme extreme;
    const size_t lanes = hn::Lanes(d);
    const std::ptrdiff_t* offset = runs.pOffsets;
    const T* const first = p + *offset++;
    hn::Vec<D> a, b, c, e;
    a = hn::LoadU(d, first);
    if constexpr (kVectors == 4) {
        b = hn::LoadU(d, first + lanes);
        c = hn::LoadU(d, first + 2 * lanes);
        e = hn::LoadU(d, first + 3 * lanes);
    }
    for (int run = runs.count - 1; run >= 0; --run) {
        for (const std::ptrdiff_t* const end = runs.pOffsets + runs.pLength[run]; offset != end; ++offset) {
            const T* const q = p + *offset;
            a = extreme(hn::LoadU(d, q), a);
            if constexpr (kVectors == 4) {
                b = extreme(hn::LoadU(d, q + lanes), b);
                c = extreme(hn::LoadU(d, q + 2 * lanes), c);
                e = extreme(hn::LoadU(d, q + 3 * lanes), e);
            }
        }
        T* const out = runs.pLines + runs.pitch * run + x;
        hn::StoreU(a, d, out);
        if constexpr (kVectors == 4) {
            hn::StoreU(b, d, out + lanes);
            hn::StoreU(c, d, out + 2 * lanes);
            hn::StoreU(e, d, out + 3 * lanes);
        }
    }
}

template <class Extreme, class T>
void nestedRuns(const T* pSrc, int samples, const NestedRuns<T>& runs) {
    const hn::ScalableTag<T> d;
    const size_t block = 4 * hn::Lanes(d);
    const size_t count = static_cast<size_t>(samples);
    if (count >= block) {
        forBlocks(block, block, count, [&](size_t x) HWY_ATTR { extremesOfRuns<4, Extreme>(d, pSrc + x, x, runs); });
    } else {
        forCovering<T>(count, [&](auto dx, size_t x) HWY_ATTR { extremesOfRuns<1, Extreme>(dx, pSrc + x, x, runs); });
    }
}

}  // namespace

constexpr auto& ownDilateRuns_8u = nestedRuns<Larger, Qel8u>;
constexpr auto& ownErodeRuns_8u = nestedRuns<Smaller, Qel8u>;
constexpr auto& ownDilateRuns_32f = nestedRuns<Larger, Qel32f>;
constexpr auto& ownErodeRuns_32f = nestedRuns<Smaller, Qel32f>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownDilateRuns_8u);
QEL_KERNEL(ownErodeRuns_8u);
QEL_KERNEL(ownDilateRuns_32f);
QEL_KERNEL(ownErodeRuns_32f);
}  // namespace qel
#endif
