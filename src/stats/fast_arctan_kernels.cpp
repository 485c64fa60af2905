#include "stats/fast_arctan_kernels.h"

#include <bit>

#define HWY_TARGET_INCLUDE "stats/fast_arctan_kernels.cpp"
#include "frame/simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// The parabola through an octant, in degrees, and the least divisor.
constexpr Qel32f kQuadratic = std::bit_cast<Qel32f>(0xC17D02D3u);  // -15.8131895
constexpr Qel32f kLinear = std::bit_cast<Qel32f>(0x42746075u);     // 61.0941963
constexpr Qel32f kConstant = std::bit_cast<Qel32f>(0xBE0FDF57u);   // -0.140500411
constexpr Qel32f kLeast = std::bit_cast<Qel32f>(0x322BCC77u);      // 1e-8

// 1/m by an estimate of 12 fraction bits and one Newton step. The estimate is the quotient, rounded: the processor's
// own estimates differ from maker to maker and between vector widths, this one has the same bits on all.
template <class D>
HWY_INLINE hn::Vec<D> reciprocal(D d, hn::Vec<D> m) {
    const hn::RebindToUnsigned<D> du;
    const auto quotient = hn::BitCast(du, hn::Div(hn::Set(d, 1), m));
    const auto r = hn::BitCast(d, hn::And(hn::Add(quotient, hn::Set(du, 0x400)), hn::Set(du, 0xFFFFF800)));
    return hn::Sub(hn::Add(r, r), hn::Mul(hn::Mul(m, r), r));
}

template <class D>
HWY_INLINE hn::Vec<D> arctan(D d, hn::Vec<D> y, hn::Vec<D> x) {
    const auto ax = hn::Abs(x);
    const auto ay = hn::Abs(y);
    const auto m = hn::Max(hn::Max(ax, ay), hn::Set(d, kLeast));
    const auto n = hn::Min(ax, ay);
    const auto t = hn::Mul(n, reciprocal(d, m));
    auto p = hn::Add(hn::Mul(hn::Set(d, kQuadratic), t), hn::Set(d, kLinear));
    p = hn::Add(hn::Mul(p, t), hn::Set(d, kConstant));
    p = hn::IfThenElse(hn::Lt(ax, ay), hn::Sub(hn::Set(d, 90), p), p);
    p = hn::IfThenElse(hn::Lt(x, hn::Zero(d)), hn::Sub(hn::Set(d, 180), p), p);
    return hn::IfThenElse(hn::Lt(y, hn::Zero(d)), hn::Sub(hn::Set(d, 360), p), p);
}

void arctanRow(const Qel32f* pSrcY, const Qel32f* pSrcX, Qel32f* pDst, int len) {
    forVectors(hn::ScalableTag<Qel32f>(), size_t(len), [=](auto d, size_t i) HWY_ATTR {
        hn::StoreU(arctan(d, hn::LoadU(d, pSrcY + i), hn::LoadU(d, pSrcX + i)), d, pDst + i);
    });
}

}  // namespace

constexpr auto& ownFastArctan_32f_A6 = arctanRow;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownFastArctan_32f_A6);
}  // namespace qel
#endif
