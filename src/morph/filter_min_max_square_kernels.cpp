#include "morph/filter_min_max_kernels.h"

#define HWY_TARGET_INCLUDE "morph/filter_min_max_square_kernels.cpp"
#include "morph/filter_min_max_slide-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

template <class V>
struct Columns {
    V at[kMinMaxSquareRows];
};
static_assert(kMinMaxSquareRows == 4);

// The extremes down 3 or 5 rows, of which row(i) is the i-th, for four results in a row. What their windows share is
// formed once.
template <class Choose, int kHeight, class V, class Row>
HWY_INLINE Columns<V> columnsOf(const Row& row) {
    const Choose choose;
    if constexpr (kHeight == 3) {
        const V r2 = row(2), r3 = row(3);
        const V upper = choose(row(1), r2);
        const V lower = choose(r3, row(4));
        return {{choose(row(0), upper), choose(upper, r3), choose(r2, lower), choose(lower, row(5))}};
    } else {
        const V middle = choose(row(3), row(4));
        const V from2 = choose(row(2), middle);
        const V from1 = choose(row(1), from2);
        const V r5 = row(5);
        const V to6 = choose(r5, row(6));
        return {{choose(row(0), from1), choose(from1, r5), choose(from2, to6), choose(middle, choose(to6, row(7)))}};
    }
}

// Down first, then across in registers, without lines in between.
template <class Choose, class T, int kChannels, int kSide, template <class, int, class> class SlideOf>
void slideSquares(const T* const* pRows, T* const* pDstRows, int width, int anchor) {
    constexpr int kPixel = kChannels * int(sizeof(T));
    const hn::ScalableTag<T> dt;
    using V = hn::Vec<hn::ScalableTag<T>>;
    using Slide = SlideOf<Choose, kPixel, V>;
    constexpr int kSourceRows = kSide + kMinMaxSquareRows - 1;
    const Bytes d;
    const ptrdiff_t bytes = ptrdiff_t{width} * kPixel;
    const ptrdiff_t behind = (kSide - 1 - anchor) * kPixel;
    const uint8_t* rows[kSourceRows];
    for (int i = 0; i < kSourceRows; ++i) rows[i] = reinterpret_cast<const uint8_t*>(pRows[i]);
    uint8_t* out[kMinMaxSquareRows];
    for (int i = 0; i < kMinMaxSquareRows; ++i) out[i] = reinterpret_cast<uint8_t*>(pDstRows[i]);

    const V zero = hn::Zero(dt);
    Slide s0(zero, kSide), s1(zero, kSide), s2(zero, kSide), s3(zero, kSide);
    const auto next = [&](const Columns<V>& c) QEL_INLINE_LAMBDA {
        return Columns<V>{{s0.next(c.at[0]), s1.next(c.at[1]), s2.next(c.at[2]), s3.next(c.at[3])}};
    };
    const auto anywhere = [&](ptrdiff_t x) HWY_ATTR {
        return columnsOf<Choose, kSide, V>([&](int i) QEL_INLINE_LAMBDA {
            return hn::BitCast(dt, ExtendedLine<kPixel>{rows[i], bytes}.at(x));
        });
    };
    const auto store = [&](const Columns<V>& c, ptrdiff_t x) QEL_INLINE_LAMBDA {
        hn::StoreU(hn::BitCast(d, c.at[0]), d, out[0] + x);
        hn::StoreU(hn::BitCast(d, c.at[1]), d, out[1] + x);
        hn::StoreU(hn::BitCast(d, c.at[2]), d, out[2] + x);
        hn::StoreU(hn::BitCast(d, c.at[3]), d, out[3] + x);
    };

    constexpr ptrdiff_t kReach = (kSide - 1) * kPixel;
    for (ptrdiff_t x = -((kReach + kVector - 1) / kVector) * kVector; x < 0; x += kVector) next(anywhere(x + behind));
    ptrdiff_t x = 0;
    for (; x + behind + kVector <= bytes; x += kVector) {
        const auto inside = [&](int i)
                                QEL_INLINE_LAMBDA { return hn::BitCast(dt, hn::LoadU(d, rows[i] + x + behind)); };
        store(next(columnsOf<Choose, kSide, V>(inside)), x);
    }
    for (; x < bytes; x += kVector) {
        Columns<V> c = next(anywhere(x + behind));
        const ptrdiff_t beyond = x + kVector - bytes;
        if (beyond <= 0) {
            store(c, x);
        } else {
            // The last vectors overlap those before.
            const Distance back((size_t(beyond)));
            for (int i = 0; i < kMinMaxSquareRows; ++i)
                c.at[i] = back.before(c.at[i], hn::BitCast(dt, hn::LoadU(d, out[i] + x - kVector)));
            store(c, bytes - kVector);
        }
    }
}

template <class Choose, class T, int kChannels>
constexpr auto& squares3 = slideSquares<Choose, T, kChannels, 3, Slide3>;
template <class Choose, class T, int kChannels>
constexpr auto& squares5 = slideSquares<Choose, T, kChannels, 5, Slide5>;

}  // namespace

constexpr auto& ownFilterMaxSquare03_8u_C1R = squares3<Larger, Qel8u, 1>;
constexpr auto& ownFilterMaxSquare03_8u_C3R = squares3<Larger, Qel8u, 3>;
constexpr auto& ownFilterMaxSquare03_8u_C4R = squares3<Larger, Qel8u, 4>;
constexpr auto& ownFilterMaxSquare03_32f_C1R = squares3<Larger, Qel32f, 1>;
constexpr auto& ownFilterMaxSquare05_8u_C1R = squares5<Larger, Qel8u, 1>;
constexpr auto& ownFilterMaxSquare05_8u_C3R = squares5<Larger, Qel8u, 3>;
constexpr auto& ownFilterMaxSquare05_8u_C4R = squares5<Larger, Qel8u, 4>;
constexpr auto& ownFilterMaxSquare05_32f_C1R = squares5<Larger, Qel32f, 1>;
constexpr auto& ownFilterMinSquare03_8u_C1R = squares3<Smaller, Qel8u, 1>;
constexpr auto& ownFilterMinSquare03_8u_C3R = squares3<Smaller, Qel8u, 3>;
constexpr auto& ownFilterMinSquare03_8u_C4R = squares3<Smaller, Qel8u, 4>;
constexpr auto& ownFilterMinSquare03_32f_C1R = squares3<Smaller, Qel32f, 1>;
constexpr auto& ownFilterMinSquare05_8u_C1R = squares5<Smaller, Qel8u, 1>;
constexpr auto& ownFilterMinSquare05_8u_C3R = squares5<Smaller, Qel8u, 3>;
constexpr auto& ownFilterMinSquare05_8u_C4R = squares5<Smaller, Qel8u, 4>;
constexpr auto& ownFilterMinSquare05_32f_C1R = squares5<Smaller, Qel32f, 1>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownFilterMaxSquare03_8u_C1R);
QEL_KERNEL(ownFilterMaxSquare03_8u_C3R);
QEL_KERNEL(ownFilterMaxSquare03_8u_C4R);
QEL_KERNEL(ownFilterMaxSquare03_32f_C1R);
QEL_KERNEL(ownFilterMaxSquare05_8u_C1R);
QEL_KERNEL(ownFilterMaxSquare05_8u_C3R);
QEL_KERNEL(ownFilterMaxSquare05_8u_C4R);
QEL_KERNEL(ownFilterMaxSquare05_32f_C1R);
QEL_KERNEL(ownFilterMinSquare03_8u_C1R);
QEL_KERNEL(ownFilterMinSquare03_8u_C3R);
QEL_KERNEL(ownFilterMinSquare03_8u_C4R);
QEL_KERNEL(ownFilterMinSquare03_32f_C1R);
QEL_KERNEL(ownFilterMinSquare05_8u_C1R);
QEL_KERNEL(ownFilterMinSquare05_8u_C3R);
QEL_KERNEL(ownFilterMinSquare05_8u_C4R);
QEL_KERNEL(ownFilterMinSquare05_32f_C1R);
}  // namespace qel
#endif
