#include "stats/abs_diff_kernels.h"

#include "frame/image.h"

#define HWY_TARGET_INCLUDE "stats/abs_diff_kernels.cpp"
#include "frame/arithmetic-inl.h"
#include "frame/simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

template <class T, bool Streaming = false>
void absDiffRows(const T* pSrc1, int src1Step, const T* pSrc2, int src2Step, T* pDst, int dstStep, QelSize size) {
    for (int y = 0; y < size.height; ++y) {
        const T* a = row(pSrc1, src1Step, y);
        const T* b = row(pSrc2, src2Step, y);
        T* out = row(pDst, dstStep, y);  // may be row a or row b
        forVectorsInto<Streaming>(out, hn::ScalableTag<T>(), size_t(size.width),
                                  [=](auto d, size_t x, auto store) HWY_ATTR {
                                      store(absDiff(hn::LoadU(d, a + x), hn::LoadU(d, b + x)), d, out + x);
                                  });
    }
    finishStores<Streaming>();
}

template <class T, bool Streaming = false>
void absDiffCRows(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize size, T value) {
    for (int y = 0; y < size.height; ++y) {
        const T* a = row(pSrc, srcStep, y);
        T* out = row(pDst, dstStep, y);  // may be row a
        forVectorsInto<Streaming>(out, hn::ScalableTag<T>(), size_t(size.width),
                                  [=](auto d, size_t x, auto store)
                                      HWY_ATTR { store(absDiff(hn::LoadU(d, a + x), hn::Set(d, value)), d, out + x); });
    }
    finishStores<Streaming>();
}

}  // namespace

constexpr auto& ownAbsDiff_8u_C1R_W7 = absDiffRows<Qel8u>;
constexpr auto& ownAbsDiff_8u_C1R_W7_B = absDiffRows<Qel8u, true>;
constexpr auto& ownAbsDiff_16u_C1R_W7 = absDiffRows<Qel16u>;
constexpr auto& ownAbsDiff_16u_C1R_W7_B = absDiffRows<Qel16u, true>;
constexpr auto& ownAbsDiff_32f_C1R_A6 = absDiffRows<Qel32f>;
constexpr auto& ownAbsDiff_32f_C1R_A6_B = absDiffRows<Qel32f, true>;

constexpr auto& ownAbsDiffC_8u_C1R_W7 = absDiffCRows<Qel8u>;
constexpr auto& ownAbsDiffC_8u_C1R_W7_B = absDiffCRows<Qel8u, true>;
constexpr auto& ownAbsDiffC_16u_C1R_W7 = absDiffCRows<Qel16u>;
constexpr auto& ownAbsDiffC_16u_C1R_W7_B = absDiffCRows<Qel16u, true>;
constexpr auto& ownAbsDiffC_32f_C1R_A6 = absDiffCRows<Qel32f>;
constexpr auto& ownAbsDiffC_32f_C1R_A6_B = absDiffCRows<Qel32f, true>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownAbsDiff_8u_C1R_W7);
QEL_KERNEL(ownAbsDiff_8u_C1R_W7_B);
QEL_KERNEL(ownAbsDiff_16u_C1R_W7);
QEL_KERNEL(ownAbsDiff_16u_C1R_W7_B);
QEL_KERNEL(ownAbsDiff_32f_C1R_A6);
QEL_KERNEL(ownAbsDiff_32f_C1R_A6_B);
QEL_KERNEL(ownAbsDiffC_8u_C1R_W7);
QEL_KERNEL(ownAbsDiffC_8u_C1R_W7_B);
QEL_KERNEL(ownAbsDiffC_16u_C1R_W7);
QEL_KERNEL(ownAbsDiffC_16u_C1R_W7_B);
QEL_KERNEL(ownAbsDiffC_32f_C1R_A6);
QEL_KERNEL(ownAbsDiffC_32f_C1R_A6_B);
}  // namespace qel
#endif
