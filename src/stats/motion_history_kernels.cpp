#include "stats/motion_history_kernels.h"

#include <type_traits>

#include "frame/image.h"

#define HWY_TARGET_INCLUDE "stats/motion_history_kernels.cpp"
#include "frame/simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// Where the silhouette is zero, as a mask of d. 32f compares as numbers: -0 is zero, a NaN is not.
template <class D, class T>
HWY_INLINE hn::Mask<D> isStill(D d, const T* p) {
    if constexpr (std::is_same_v<T, Qel32f>) {
        return hn::Eq(hn::LoadU(d, p), hn::Zero(d));
    } else {
        const hn::RebindToUnsigned<D> du;
        const auto silhouette = hn::PromoteTo(du, hn::LoadU(hn::Rebind<T, D>(), p));
        return hn::RebindMask(d, hn::Eq(silhouette, hn::Zero(du)));
    }
}

template <class T>
void updateRows(const T* pSilhouette, int silhStep, Qel32f* pMHI, int mhiStep, QelSize size, Qel32f timeStamp,
                Qel32f limit) {
    size = joinRows(size,
                    isGapless(Plane{pSilhouette, silhStep}, size.width) && isGapless(Plane{pMHI, mhiStep}, size.width));
    for (int y = 0; y < size.height; ++y) {
        const T* silhouette = row(pSilhouette, silhStep, y);
        Qel32f* history = row(pMHI, mhiStep, y);
        forVectors(hn::ScalableTag<Qel32f>(), size_t(size.width), [=](auto d, size_t x) HWY_ATTR {
            const auto old = hn::LoadU(d, history + x);
            const auto aged = hn::IfThenZeroElse(hn::Lt(old, hn::Set(d, limit)), old);
            const auto now = hn::IfThenElse(isStill(d, silhouette + x), aged, hn::Set(d, timeStamp));
            hn::StoreU(now, d, history + x);
        });
    }
}

}  // namespace

constexpr auto& ownUpdateMotionHistory_8u32f_C1IR_W7 = updateRows<Qel8u>;
constexpr auto& ownUpdateMotionHistory_16u32f_C1IR_W7 = updateRows<Qel16u>;
constexpr auto& ownUpdateMotionHistory_32f_C1IR_W7 = updateRows<Qel32f>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownUpdateMotionHistory_8u32f_C1IR_W7);
QEL_KERNEL(ownUpdateMotionHistory_16u32f_C1IR_W7);
QEL_KERNEL(ownUpdateMotionHistory_32f_C1IR_W7);
}  // namespace qel
#endif
