#include "morph/filter_min_max_kernels.h"

#define HWY_TARGET_INCLUDE "morph/filter_min_max_column_kernels.cpp"
#include "morph/filter_min_max-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// Rows kRows - 1 to windowHeight - 1 of the lines are in all windows. Upwards from there the windows of the first rows
// grow, downwards those of the last.
template <size_t kRows, class Choose, class T, class D>
HWY_INLINE void togetherAt(D d, size_t x, T* const* pLines, const Plane<T>& dst, size_t h) {
    const Choose choose;
    const auto line = [=](size_t i) HWY_ATTR { return hn::LoadU(d, pLines[i] + x); };
    hn::Vec<D> upper[kRows];
    upper[kRows - 1] = line(kRows - 1);
    for (size_t i = kRows; i < h; ++i) upper[kRows - 1] = choose(upper[kRows - 1], line(i));
#pragma GCC unroll 16
    for (size_t i = 1; i < kRows; ++i) upper[kRows - 1 - i] = choose(line(kRows - 1 - i), upper[kRows - i]);
    hn::StoreU(upper[0], d, dst.row(0) + x);
    if constexpr (kRows > 1) {
        auto lower = line(h);
        hn::StoreU(choose(upper[1], lower), d, dst.row(1) + x);
#pragma GCC unroll 16
        for (size_t i = 2; i < kRows; ++i) {
            lower = choose(lower, line(h + i - 1));
            hn::StoreU(choose(upper[i], lower), d, dst.row(int(i)) + x);
        }
    }
}

template <size_t kRows, class Choose, class T>
void together(T* const* pLines, const Plane<T>& dst, QelSize size, int windowHeight) {
    const Plane<T> out = dst;
    forCovering<T>(size_t(size.width), [=](auto d, size_t x) HWY_ATTR {
        togetherAt<kRows, Choose>(d, x, pLines, out, size_t(windowHeight));
    });
}

// Scans the first windowHeight lines upwards, over themselves, and those below downwards: each window ends one scan and
// begins the other.
template <class Choose, class T>
void vanHerk(T* const* pLines, const Plane<T>& dst, QelSize size, int windowHeight) {
    const Plane<T> out = dst;
    forVectors(hn::ScalableTag<T>(), size_t(size.width), [=](auto d, size_t x) HWY_ATTR {
        const Choose choose;
        const auto line = [=](int i) HWY_ATTR { return hn::LoadU(d, pLines[i] + x); };
        auto upper = line(windowHeight - 1);
        for (int i = windowHeight - 1; i-- > 1;) {
            upper = choose(line(i), upper);
            hn::StoreU(upper, d, pLines[i] + x);
        }
        hn::StoreU(choose(line(0), upper), d, out.row(0) + x);
        if (size.height == 1) return;
        auto lower = line(windowHeight);
        hn::StoreU(choose(line(1), lower), d, out.row(1) + x);
        for (int i = 2; i < size.height; ++i) {
            lower = choose(lower, line(windowHeight + i - 1));
            hn::StoreU(choose(line(i), lower), d, out.row(i) + x);
        }
    });
}

template <class Choose, class T>
void columns(T* const* pLines, const Plane<T>& dst, QelSize size, int windowHeight) {
    if (windowHeight > kMinMaxTallest) return vanHerk<Choose>(pLines, dst, size, windowHeight);
    switch (size.height) {
        case 16:
            return together<16, Choose>(pLines, dst, size, windowHeight);
        case 8:
            return together<8, Choose>(pLines, dst, size, windowHeight);
        case 4:
            return together<4, Choose>(pLines, dst, size, windowHeight);
        case 2:
            return together<2, Choose>(pLines, dst, size, windowHeight);
        default:
            return together<1, Choose>(pLines, dst, size, windowHeight);
    }
}

}  // namespace

constexpr auto& ownFilterMaxColumn01_8u_C1R = columns<Larger, Qel8u>;
constexpr auto& ownFilterMaxColumn03_8u_C1R = columns<Larger, Qel8u>;
constexpr auto& ownFilterMaxColumn05_8u_C1R = columns<Larger, Qel8u>;
constexpr auto& ownFilterMaxColumnVH_8u_C1R = columns<Larger, Qel8u>;
constexpr auto& ownFilterMaxColumn01_32f_C1R = columns<Larger, Qel32f>;
constexpr auto& ownFilterMaxColumn03_32f_C1R = columns<Larger, Qel32f>;
constexpr auto& ownFilterMaxColumn05_32f_C1R = columns<Larger, Qel32f>;
constexpr auto& ownFilterMaxColumnVH_32f_C1R = columns<Larger, Qel32f>;
constexpr auto& ownFilterMinColumn01_8u_C1R = columns<Smaller, Qel8u>;
constexpr auto& ownFilterMinColumn03_8u_C1R = columns<Smaller, Qel8u>;
constexpr auto& ownFilterMinColumn05_8u_C1R = columns<Smaller, Qel8u>;
constexpr auto& ownFilterMinColumnVH_8u_C1R = columns<Smaller, Qel8u>;
constexpr auto& ownFilterMinColumn01_32f_C1R = columns<Smaller, Qel32f>;
constexpr auto& ownFilterMinColumn03_32f_C1R = columns<Smaller, Qel32f>;
constexpr auto& ownFilterMinColumn05_32f_C1R = columns<Smaller, Qel32f>;
constexpr auto& ownFilterMinColumnVH_32f_C1R = columns<Smaller, Qel32f>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownFilterMaxColumn01_8u_C1R);
QEL_KERNEL(ownFilterMaxColumn03_8u_C1R);
QEL_KERNEL(ownFilterMaxColumn05_8u_C1R);
QEL_KERNEL(ownFilterMaxColumnVH_8u_C1R);
QEL_KERNEL(ownFilterMaxColumn01_32f_C1R);
QEL_KERNEL(ownFilterMaxColumn03_32f_C1R);
QEL_KERNEL(ownFilterMaxColumn05_32f_C1R);
QEL_KERNEL(ownFilterMaxColumnVH_32f_C1R);
QEL_KERNEL(ownFilterMinColumn01_8u_C1R);
QEL_KERNEL(ownFilterMinColumn03_8u_C1R);
QEL_KERNEL(ownFilterMinColumn05_8u_C1R);
QEL_KERNEL(ownFilterMinColumnVH_8u_C1R);
QEL_KERNEL(ownFilterMinColumn01_32f_C1R);
QEL_KERNEL(ownFilterMinColumn03_32f_C1R);
QEL_KERNEL(ownFilterMinColumn05_32f_C1R);
QEL_KERNEL(ownFilterMinColumnVH_32f_C1R);
}  // namespace qel
#endif
