#include "stats/add_kernels.h"

#include <type_traits>

#include "frame/image.h"

#define HWY_TARGET_INCLUDE "stats/add_kernels.cpp"
#include "frame/simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// The formulas: the new value of a pixel from its old value and the source samples. Each operation rounds to single
// precision.
struct Sum {
    template <class V>
    HWY_INLINE V operator()(V old, V s) const {
        return hn::Add(old, s);
    }
};
struct SumOfSquares {
    template <class V>
    HWY_INLINE V operator()(V old, V s) const {
        return hn::Add(old, hn::Mul(s, s));
    }
};
struct SumOfProducts {
    template <class V>
    HWY_INLINE V operator()(V old, V s1, V s2) const {
        return hn::Add(old, hn::Mul(s1, s2));
    }
};
struct RunningAverage {
    Qel32f alpha;
    template <class V>
    HWY_INLINE V operator()(V old, V s) const {
        return hn::Add(hn::Mul(hn::Sub(s, old), hn::Set(hn::DFromV<V>(), alpha)), old);
    }
};

// In the place of a mask: every pixel takes its new value.
struct NoMask {
    HWY_INLINE NoMask row(int) const { return {}; }
};
bool isGapless(NoMask, int) { return true; }

// Samples in single precision, which holds those of 8 and 16 bits exactly.
template <class D, class T>
HWY_INLINE hn::Vec<D> load32f(D d, const T* p) {
    if constexpr (std::is_same_v<T, Qel32f>) {
        return hn::LoadU(d, p);
    } else {
        return hn::ConvertTo(d, hn::PromoteTo(hn::RebindToSigned<D>(), hn::LoadU(hn::Rebind<T, D>(), p)));
    }
}

template <class D>
HWY_INLINE hn::Vec<D> select(D, NoMask, size_t, hn::Vec<D>, hn::Vec<D> now) {
    return now;
}

// A pixel whose mask byte is zero keeps the bits of its old value.
template <class D>
HWY_INLINE hn::Vec<D> select(D d, const Qel8u* mask, size_t x, hn::Vec<D> old, hn::Vec<D> now) {
#if HWY_COMPILER_CLANG
    // Clang would take zeros for the sources of these pixels and add them, which makes signalling NaNs quiet.
    asm("" : "+x"(now.raw));
#endif
    const hn::RebindToUnsigned<D> du;
    const auto bytes = hn::PromoteTo(du, hn::LoadU(hn::Rebind<Qel8u, D>(), mask + x));
    return hn::IfThenElse(hn::RebindMask(d, hn::Eq(bytes, hn::Zero(du))), old, now);
}

template <bool Streaming, class Formula, class Mask, class... Source>
HWY_INLINE void addRows(const Formula formula, Plane<Qel32f> dst, Plane<const Qel32f> old, QelSize size, Mask mask,
                        Source... source) {
    const auto gapless = [&size](auto... image) HWY_ATTR { return (... && isGapless(image, size.width)); };
    size = joinRows(size, gapless(dst, old, mask, source...));
    for (int y = 0; y < size.height; ++y) {
        const auto addRow = [=](Qel32f* outRow, const Qel32f* oldRow, auto maskRow, auto... sourceRow) HWY_ATTR {
            forVectorsInto<Streaming>(outRow, hn::ScalableTag<Qel32f>(), size_t(size.width),
                                      [=](auto d, size_t x, auto store) HWY_ATTR {
                                          const auto before = hn::LoadU(d, oldRow + x);
                                          const auto now = formula(before, load32f(d, sourceRow + x)...);
                                          store(select(d, maskRow, x, before, now), d, outRow + x);
                                      });
        };
        addRow(dst.row(y), old.row(y), mask.row(y), source.row(y)...);
    }
    finishStores<Streaming>();
}

template <class Formula, class T>
void addInPlace(const T* pSrc, int srcStep, Qel32f* pSrcDst, int srcDstStep, QelSize size) {
    addRows<false>(Formula(), {pSrcDst, srcDstStep}, {pSrcDst, srcDstStep}, size, NoMask(), Plane{pSrc, srcStep});
}

template <class Formula, class T>
void addMasked(const T* pSrc, int srcStep, const Qel8u* pMask, int maskStep, Qel32f* pSrcDst, int srcDstStep,
               QelSize size) {
    addRows<false>(Formula(), {pSrcDst, srcDstStep}, {pSrcDst, srcDstStep}, size, Plane{pMask, maskStep},
                   Plane{pSrc, srcStep});
}

template <class T>
void addProduct(const T* pSrc1, int src1Step, const T* pSrc2, int src2Step, Qel32f* pSrcDst, int srcDstStep,
                QelSize size) {
    addRows<false>(SumOfProducts(), {pSrcDst, srcDstStep}, {pSrcDst, srcDstStep}, size, NoMask(),
                   Plane{pSrc1, src1Step}, Plane{pSrc2, src2Step});
}

template <class T>
void addProductMasked(const T* pSrc1, int src1Step, const T* pSrc2, int src2Step, const Qel8u* pMask, int maskStep,
                      Qel32f* pSrcDst, int srcDstStep, QelSize size, int nonTemporal) {
    const auto run = [=](auto streaming) HWY_ATTR {
        addRows<streaming>(SumOfProducts(), {pSrcDst, srcDstStep}, {pSrcDst, srcDstStep}, size, Plane{pMask, maskStep},
                           Plane{pSrc1, src1Step}, Plane{pSrc2, src2Step});
    };
    nonTemporal ? run(std::true_type()) : run(std::false_type());
}

template <class T>
void addWeighted(const T* pSrc, int srcStep, Qel32f* pSrcDst, int srcDstStep, QelSize size, Qel32f alpha) {
    addRows<false>(RunningAverage{alpha}, {pSrcDst, srcDstStep}, {pSrcDst, srcDstStep}, size, NoMask(),
                   Plane{pSrc, srcStep});
}

template <class T>
void addWeightedMasked(const T* pSrc, int srcStep, const Qel8u* pMask, int maskStep, Qel32f* pSrcDst, int srcDstStep,
                       QelSize size, Qel32f alpha, int nonTemporal) {
    const auto run = [=](auto streaming) HWY_ATTR {
        addRows<streaming>(RunningAverage{alpha}, {pSrcDst, srcDstStep}, {pSrcDst, srcDstStep}, size,
                           Plane{pMask, maskStep}, Plane{pSrc, srcStep});
    };
    nonTemporal ? run(std::true_type()) : run(std::false_type());
}

// The second source is the old value.
void addWeightedTwo(const Qel32f* pSrc1, int src1Step, const Qel32f* pSrc2, int src2Step, Qel32f* pDst, int dstStep,
                    QelSize size, Qel32f alpha) {
    addRows<false>(RunningAverage{alpha}, {pDst, dstStep}, {pSrc2, src2Step}, size, NoMask(), Plane{pSrc1, src1Step});
}

}  // namespace

constexpr auto& ownAdd_8u32f_C1IR_W7 = addInPlace<Sum, Qel8u>;
constexpr auto& ownAdd_8s32f_C1IR_W7 = addInPlace<Sum, Qel8s>;
constexpr auto& ownAdd_16u32f_C1IR_W7 = addInPlace<Sum, Qel16u>;
constexpr auto& ownAdd_8u32f_C1IMR_W7 = addMasked<Sum, Qel8u>;
constexpr auto& ownAdd_8s32f_C1IMR_W7 = addMasked<Sum, Qel8s>;
constexpr auto& ownAdd_16u32f_C1IMR_W7 = addMasked<Sum, Qel16u>;
constexpr auto& ownAdd_32f_C1IMR_W7 = addMasked<Sum, Qel32f>;

constexpr auto& ownAddSquare_8u32f_C1IR_W7 = addInPlace<SumOfSquares, Qel8u>;
constexpr auto& ownAddSquare_8s32f_C1IR_W7 = addInPlace<SumOfSquares, Qel8s>;
constexpr auto& ownAddSquare_16u32f_C1IR_W7 = addInPlace<SumOfSquares, Qel16u>;
constexpr auto& ownAddSquare_32f_C1IR_W7 = addInPlace<SumOfSquares, Qel32f>;
constexpr auto& ownAddSquare_8u32f_C1IMR_W7 = addMasked<SumOfSquares, Qel8u>;
constexpr auto& ownAddSquare_8s32f_C1IMR_W7 = addMasked<SumOfSquares, Qel8s>;
constexpr auto& ownAddSquare_16u32f_C1IMR_W7 = addMasked<SumOfSquares, Qel16u>;
constexpr auto& ownAddSquare_32f_C1IMR_W7 = addMasked<SumOfSquares, Qel32f>;

constexpr auto& ownAddProduct_8u32f_C1IR_W7 = addProduct<Qel8u>;
constexpr auto& ownAddProduct_8s32f_C1IR_W7 = addProduct<Qel8s>;
constexpr auto& ownAddProduct_16u32f_C1IR_W7 = addProduct<Qel16u>;
constexpr auto& ownAddProduct_32f_C1IR_W7 = addProduct<Qel32f>;
constexpr auto& ownAddProduct_8u32f_C1IMR_W7 = addProductMasked<Qel8u>;
constexpr auto& ownAddProduct_8s32f_C1IMR_W7 = addProductMasked<Qel8s>;
constexpr auto& ownAddProduct_16u32f_C1IMR_W7 = addProductMasked<Qel16u>;
constexpr auto& ownAddProduct_32f_C1IMR_W7 = addProductMasked<Qel32f>;

constexpr auto& ownAddWeighted_8u32f_C1IR_W7 = addWeighted<Qel8u>;
constexpr auto& ownAddWeighted_8s32f_C1IR_W7 = addWeighted<Qel8s>;
constexpr auto& ownAddWeighted_16u32f_C1IR_W7 = addWeighted<Qel16u>;
constexpr auto& ownAddWeighted_32f_C1IR_W7 = addWeighted<Qel32f>;
constexpr auto& ownAddWeighted_8u32f_C1IMR_W7 = addWeightedMasked<Qel8u>;
constexpr auto& ownAddWeighted_8s32f_C1IMR_W7 = addWeightedMasked<Qel8s>;
constexpr auto& ownAddWeighted_16u32f_C1IMR_W7 = addWeightedMasked<Qel16u>;
constexpr auto& ownAddWeighted_32f_C1IMR_W7 = addWeightedMasked<Qel32f>;
constexpr auto& ownvcAddWeighted_32f_C1R = addWeightedTwo;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownAdd_8u32f_C1IR_W7);
QEL_KERNEL(ownAdd_8s32f_C1IR_W7);
QEL_KERNEL(ownAdd_16u32f_C1IR_W7);
QEL_KERNEL(ownAdd_8u32f_C1IMR_W7);
QEL_KERNEL(ownAdd_8s32f_C1IMR_W7);
QEL_KERNEL(ownAdd_16u32f_C1IMR_W7);
QEL_KERNEL(ownAdd_32f_C1IMR_W7);

QEL_KERNEL(ownAddSquare_8u32f_C1IR_W7);
QEL_KERNEL(ownAddSquare_8s32f_C1IR_W7);
QEL_KERNEL(ownAddSquare_16u32f_C1IR_W7);
QEL_KERNEL(ownAddSquare_32f_C1IR_W7);
QEL_KERNEL(ownAddSquare_8u32f_C1IMR_W7);
QEL_KERNEL(ownAddSquare_8s32f_C1IMR_W7);
QEL_KERNEL(ownAddSquare_16u32f_C1IMR_W7);
QEL_KERNEL(ownAddSquare_32f_C1IMR_W7);

QEL_KERNEL(ownAddProduct_8u32f_C1IR_W7);
QEL_KERNEL(ownAddProduct_8s32f_C1IR_W7);
QEL_KERNEL(ownAddProduct_16u32f_C1IR_W7);
QEL_KERNEL(ownAddProduct_32f_C1IR_W7);
QEL_KERNEL(ownAddProduct_8u32f_C1IMR_W7);
QEL_KERNEL(ownAddProduct_8s32f_C1IMR_W7);
QEL_KERNEL(ownAddProduct_16u32f_C1IMR_W7);
QEL_KERNEL(ownAddProduct_32f_C1IMR_W7);

QEL_KERNEL(ownAddWeighted_8u32f_C1IR_W7);
QEL_KERNEL(ownAddWeighted_8s32f_C1IR_W7);
QEL_KERNEL(ownAddWeighted_16u32f_C1IR_W7);
QEL_KERNEL(ownAddWeighted_32f_C1IR_W7);
QEL_KERNEL(ownAddWeighted_8u32f_C1IMR_W7);
QEL_KERNEL(ownAddWeighted_8s32f_C1IMR_W7);
QEL_KERNEL(ownAddWeighted_16u32f_C1IMR_W7);
QEL_KERNEL(ownAddWeighted_32f_C1IMR_W7);
QEL_KERNEL(ownvcAddWeighted_32f_C1R);
}  // namespace qel
#endif
