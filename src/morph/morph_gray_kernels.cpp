#include "morph/morph_gray_kernels.h"

#include "frame/image.h"

#define HWY_TARGET_INCLUDE "morph/morph_gray_kernels.cpp"
#include "frame/simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// Sums that end at 0 and 255 instead of going beyond give the extreme that is wanted: the result ends there, too. So
// a value acts as one of -255 to 255, and bytes hold it all. A value at the far end, which holes in a mask have, never
// changes the extreme.
//
// In 32f a sum replaces the extreme only if it compares beyond it: a NaN never does.
struct Dilation {
    static constexpr Qel8u start(Qel8u) { return 0; }
    static constexpr Qel32f start(Qel32f) { return -3.4028235e38F; }
    static constexpr bool isHole(Qel32s value) { return value <= -255; }
    template <class V>
    static HWY_INLINE V extreme(V sum, V found) {
        return hn::Max(sum, found);
    }
};
struct Erosion {
    static constexpr Qel8u start(Qel8u) { return 255; }
    static constexpr Qel32f start(Qel32f) { return 3.4028235e38F; }
    static constexpr bool isHole(Qel32s value) { return value >= 255; }
    template <class V>
    static HWY_INLINE V extreme(V sum, V found) {
        return hn::Min(sum, found);
    }
};

// Half of the 8 registers of 32-bit programs; the wider vectors of AVX-512 would straddle lines of the cache.
constexpr size_t kBlockVectors = 4;
template <class T>
using Tag = hn::CappedTag<T, 32 / sizeof(T)>;

// The elements from column `left` of row `top` on.
struct MaskPart {
    int left, top, width, height;
};

// Takes the sums with one element into account, of kVectors vectors from p on.
template <class Op, size_t kVectors, class D>
HWY_INLINE void addElement(D d, Qel32s value, const Qel8u* p, hn::Vec<D>* found) {
    if (Op::isHole(value)) return;
    if (value >= 0) {
        const auto v = hn::Set(d, static_cast<Qel8u>(HWY_MIN(value, 255)));
        for (size_t k = 0; k < kVectors; ++k)
            found[k] = Op::extreme(hn::SaturatedAdd(hn::LoadU(d, p + k * hn::Lanes(d)), v), found[k]);
    } else {
        const auto v = hn::Set(d, static_cast<Qel8u>(-HWY_MAX(value, -255)));
        for (size_t k = 0; k < kVectors; ++k)
            found[k] = Op::extreme(hn::SaturatedSub(hn::LoadU(d, p + k * hn::Lanes(d)), v), found[k]);
    }
}
template <class Op, size_t kVectors, class D>
HWY_INLINE void addElement(D d, Qel32f value, const Qel32f* p, hn::Vec<D>* found) {
    const auto v = hn::Set(d, value);
    for (size_t k = 0; k < kVectors; ++k)
        found[k] = Op::extreme(hn::Add(hn::LoadU(d, p + k * hn::Lanes(d)), v), found[k]);
}

// rowOf(j) is what element (part.left, j) is added to.
template <class Op, size_t kVectors, class D, class Value, class RowOf>
HWY_INLINE void addElements(D d, const GrayMask<Value>& mask, MaskPart part, hn::Vec<D>* found, const RowOf& rowOf) {
    for (int j = part.top; j < part.top + part.height; ++j) {
        const auto* p = rowOf(j);
        const Value* values = mask.pMaskValues + static_cast<ptrdiff_t>(mask.maskWidth) * j + part.left;
        for (int i = 0; i < part.width; ++i) addElement<Op, kVectors>(d, sampleAt(values + i), p + i, found);
    }
}

template <class T>
struct Region {
    Plane<const T> src;
    QelSize size;

    const T* clampedRow(int64_t y) const {
        return src.row(static_cast<int>(HWY_MAX(int64_t{0}, HWY_MIN(y, int64_t{size.height} - 1))));
    }
};

// A block whose whole window lies between the region's left and right edge.
template <class Op, size_t kVectors, class D, class T, class Value>
HWY_INLINE void innerBlock(D d, const Region<T>& region, int x, int y, const GrayMask<Value>& mask, T* out) {
    hn::Vec<D> found[kVectors];
    for (size_t k = 0; k < kVectors; ++k) found[k] = hn::Set(d, Op::start(T()));
    const int64_t top = int64_t{y} - mask.anchorY;
    addElements<Op, kVectors>(d, mask, {0, 0, mask.maskWidth, mask.maskHeight}, found,
                              [&](int j) HWY_ATTR { return region.clampedRow(top + j) + (x - mask.anchorX); });
    for (size_t k = 0; k < kVectors; ++k) hn::StoreU(found[k], d, out + k * hn::Lanes(d));
}

// Rows of a window with the edge samples repeated, for one vector of results and a part of the mask. What is laid out
// may go beyond it by less than a vector on either side.
template <class D, class T = hn::TFromD<D>>
class Tile {
public:
    static constexpr int kColumns = 32;
    static constexpr int kRows = 16;

    explicit Tile(D d) : d_(d) {}

    const T* row(int i) const { return rows_[i] + kLanes; }

    // Row i becomes the samples from `first` on, for `columns` elements.
    HWY_INLINE void set(int i, const T* src, int width, int64_t first, int columns) {
        T* const out = rows_[i] + kLanes;
        const int count = columns + kLanes - 1;
        if (width < kLanes) {
            for (int k = 0; k < count; ++k) out[k] = sampleAt(src + HWY_MAX(int64_t{0}, HWY_MIN(first + k, width - 1)));
            return;
        }
        const auto within = [&](int64_t k)
                                HWY_ATTR { return static_cast<int>(HWY_MAX(int64_t{0}, HWY_MIN(k, int64_t{count}))); };
        const int left = within(-first);
        const int right = within(width - first);
        for (int k = left; k > 0; k -= kLanes) hn::StoreU(hn::Set(d_, sampleAt(src)), d_, out + k - kLanes);
        for (int k = left; k < right; k += kLanes) {
            const int64_t x = HWY_MIN(first + k, int64_t{width} - kLanes);
            hn::StoreU(hn::LoadU(d_, src + x), d_, out + (x - first));
        }
        for (int k = right; k < count; k += kLanes) hn::StoreU(hn::Set(d_, sampleAt(src + width - 1)), d_, out + k);
    }

private:
    static constexpr int kLanes = hn::MaxLanes(D());

    D d_;
    T rows_[kRows][3 * kLanes + kColumns];
};

// One vector of results or what is left of the row, anywhere.
template <class Op, class D, class T, class Value>
HWY_NOINLINE void edgeBlock(D d, const Region<T>& region, int x, int y, const GrayMask<Value>& mask, T* out) {
    Tile<D> tile(d);
    hn::Vec<D> found = hn::Set(d, Op::start(T()));
    for (int top = 0; top < mask.maskHeight; top += tile.kRows) {
        const int rows = HWY_MIN(mask.maskHeight - top, tile.kRows);
        for (int left = 0; left < mask.maskWidth; left += tile.kColumns) {
            const int columns = HWY_MIN(mask.maskWidth - left, tile.kColumns);
            for (int j = 0; j < rows; ++j) {
                const T* src = region.clampedRow(int64_t{y} - mask.anchorY + top + j);
                tile.set(j, src, region.size.width, int64_t{x} - mask.anchorX + left, columns);
            }
            addElements<Op, 1>(d, mask, {left, top, columns, rows}, &found,
                               [&](int j) HWY_ATTR { return tile.row(j - top); });
        }
    }
    const size_t count = static_cast<size_t>(region.size.width - x);
    if (count >= hn::Lanes(d)) {
        hn::StoreU(found, d, out);
    } else {
        T results[hn::MaxLanes(D())];
        hn::StoreU(found, d, results);
        std::memcpy(out, results, count * sizeof(T));
    }
}

template <class Op, class T, class Value>
void grayMorph(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize size, const GrayMask<Value>& mask) {
    const Tag<T> d;
    constexpr int kLanes = hn::MaxLanes(Tag<T>());
    constexpr int kBlock = kBlockVectors * kLanes;
    const Region<T> region = {{pSrc, srcStep}, size};
    // Where a window ends, right of the result's column, and from where on it would pass the right edge.
    const int64_t innerEnd = int64_t{size.width} - (mask.maskWidth - 1 - mask.anchorX);
    for (int y = 0; y < size.height; ++y) {
        T* const out = row(pDst, dstStep, y);
        for (int64_t x = 0; x < size.width;) {
            const int column = static_cast<int>(x);
            if (x >= mask.anchorX && x + kBlock <= innerEnd) {
                innerBlock<Op, kBlockVectors>(d, region, column, y, mask, out + x);
                x += kBlock;
            } else if (x >= mask.anchorX && x + kLanes <= innerEnd) {
                innerBlock<Op, 1>(d, region, column, y, mask, out + x);
                x += kLanes;
            } else {
                edgeBlock<Op>(d, region, column, y, mask, out + x);
                x += kLanes;
            }
        }
    }
}

}  // namespace

constexpr auto& ownGrayDilateBorder_8u_C1R = grayMorph<Dilation, Qel8u, Qel32s>;
constexpr auto& ownGrayDilateBorder_32f_C1R = grayMorph<Dilation, Qel32f, Qel32f>;
constexpr auto& ownGrayErodeBorder_8u_C1R = grayMorph<Erosion, Qel8u, Qel32s>;
constexpr auto& ownGrayErodeBorder_32f_C1R = grayMorph<Erosion, Qel32f, Qel32f>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownGrayDilateBorder_8u_C1R);
QEL_KERNEL(ownGrayDilateBorder_32f_C1R);
QEL_KERNEL(ownGrayErodeBorder_8u_C1R);
QEL_KERNEL(ownGrayErodeBorder_32f_C1R);
}  // namespace qel
#endif
