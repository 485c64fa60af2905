#include "distance/true_distance_transform_kernels.h"

#include "frame/image.h"

#define HWY_TARGET_INCLUDE "distance/true_distance_transform_kernels.cpp"
#include "frame/simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

using D32 = hn::ScalableTag<Qel32s>;

// From the last row up: the distance to the nearest zero at or below a pixel. Below the image there is none.
void lookDown(Plane<const Qel8u> src, Plane<Qel32s> distances, QelSize size) {
    const size_t width = size_t(size.width);
    Qel32s* below = distances.row(size.height - 1);
    forVectors(D32(), width, [=](auto d, size_t x) HWY_ATTR { hn::StoreU(hn::Set(d, size.height - 1), d, below + x); });
    for (int y = size.height - 1; y >= 0; --y) {
        const Qel8u* const pixels = src.row(y);
        Qel32s* const out = distances.row(y);
        forVectors(D32(), width, [=](auto d, size_t x) HWY_ATTR {
            const auto pixel = hn::PromoteTo(d, hn::LoadU(hn::Rebind<Qel8u, decltype(d)>(), pixels + x));
            const auto next = hn::Add(hn::LoadU(d, below + x), hn::Set(d, 1));
            hn::StoreU(hn::IfThenZeroElse(hn::Eq(pixel, hn::Zero(d)), next), d, out + x);
        });
        below = out;
    }
}

// From the first row down: the nearest zero above may be nearer.
void lookUp(Plane<Qel32s> distances, QelSize size) {
    for (int y = 1; y < size.height; ++y) {
        const Qel32s* const above = distances.row(y - 1);
        Qel32s* const out = distances.row(y);
        forVectors(D32(), size_t(size.width), [=](auto d, size_t x) HWY_ATTR {
            hn::StoreU(hn::Min(hn::Add(hn::LoadU(d, above + x), hn::Set(d, 1)), hn::LoadU(d, out + x)), d, out + x);
        });
    }
}

// By stripes of columns that stay in a cache from one way to the other.
void columns(Plane<const Qel8u> src, Plane<Qel32s> distances, QelSize size) {
    constexpr int kStripeSamples = 0x10000;
    const int stripe = HWY_MAX(kStripeSamples / size.height & -64, 64);
    for (int x = 0; x < size.width; x += stripe) {
        const QelSize part = {HWY_MIN(stripe, size.width - x), size.height};
        lookDown({src.p + x, src.step}, {distances.p + x, distances.step}, part);
        lookUp({distances.p + x, distances.step}, part);
    }
}

void squares(const Qel32s* pDistances, Qel32f* pSquares, int width, int height, Qel32f infinity) {
    forVectors(D32(), size_t(width), [=](auto d, size_t x) HWY_ATTR {
        const hn::Rebind<Qel32f, decltype(d)> df;
        const auto distance = hn::LoadU(d, pDistances + x);
        const auto root = hn::ConvertTo(df, distance);
        const auto found = hn::RebindMask(df, hn::Lt(distance, hn::Set(d, height)));
        hn::StoreU(hn::IfThenElse(found, hn::Mul(root, root), hn::Set(df, infinity)), df, pSquares + x);
    });
}

}  // namespace

constexpr auto& ownTrueDistanceColumns_8u32s = columns;
constexpr auto& ownTrueDistanceSquares_32s32f = squares;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownTrueDistanceColumns_8u32s);
QEL_KERNEL(ownTrueDistanceSquares_32s32f);
}  // namespace qel
#endif
