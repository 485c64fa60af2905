#include "pyramid/undistort_kernels.h"

#include <cstring>

#define HWY_TARGET_INCLUDE "pyramid/undistort_kernels.cpp"
#include "frame/simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

using DF = hn::ScalableTag<Qel32f>;
using DI = hn::ScalableTag<int32_t>;
using DU = hn::ScalableTag<uint32_t>;
using VF = hn::Vec<DF>;
constexpr size_t kLanes = hn::MaxLanes(DF());
// Columns that go through one step together before the next step. Read back at once as vectors, what was stored word by
// word would not have reached the cache yet.
constexpr size_t kBlock = 64;

HWY_INLINE VF times(VF a, VF b) { return hn::Mul(a, b); }
HWY_INLINE VF plus(VF a, VF b) { return hn::Add(a, b); }

HWY_INLINE VF columnsFrom(int x) {
    const DI di;
    return hn::ConvertTo(DF(), hn::Add(hn::Iota(di, 0), hn::Set(di, x)));
}

struct Points {
    VF x, y;
};

// Where the pixels of a vector of columns lie in the source. The two rules round differently, so both stand.
class RadialRow {
public:
    HWY_INLINE RadialRow(const Lens& lens, int y)
        : cx_(hn::Set(DF(), lens.cx)),
          k1_(hn::Set(DF(), lens.k1)),
          k2_(hn::Set(DF(), lens.k2)),
          scaleX_(hn::Set(DF(), 1 / (lens.fx * lens.fx))),
          row_(hn::Set(DF(), static_cast<Qel32f>(y))),
          fromCentre_(hn::Sub(row_, hn::Set(DF(), lens.cy))) {
        const VF squareY = times(times(hn::Set(DF(), 1 / (lens.fy * lens.fy)), fromCentre_), fromCentre_);
        a_ = times(plus(times(k2_, squareY), k1_), squareY);
        b_ = times(plus(k2_, k2_), squareY);
    }

    HWY_INLINE Points at(VF column) const {
        const VF x = hn::Sub(column, cx_);
        const VF squareX = times(times(scaleX_, x), x);
        const VF t = plus(times(plus(times(k2_, squareX), k1_), squareX), plus(times(b_, squareX), a_));
        return {plus(times(x, t), column), plus(times(fromCentre_, t), row_)};
    }

private:
    VF cx_, k1_, k2_, scaleX_, row_, fromCentre_, a_, b_;
};

class ShortMapRow {
public:
    HWY_INLINE ShortMapRow(const Lens& lens, int y)
        : cx_(hn::Set(DF(), lens.cx)),
          k1_(hn::Set(DF(), lens.k1)),
          k2_(hn::Set(DF(), lens.k2)),
          scaleX_(hn::Set(DF(), 1 / (lens.fx * lens.fx))),
          row_(hn::Set(DF(), static_cast<Qel32f>(y))),
          fromCentre_(hn::Sub(row_, hn::Set(DF(), lens.cy))) {
        const VF squareY = times(times(fromCentre_, fromCentre_), hn::Set(DF(), 1 / (lens.fy * lens.fy)));
        a_ = times(plus(times(k2_, squareY), k1_), squareY);
        b_ = times(plus(k2_, k2_), squareY);
    }

    HWY_INLINE Points at(VF column) const {
        const VF x = hn::Sub(column, cx_);
        const VF squareX = times(times(x, x), scaleX_);
        const VF t = plus(times(b_, squareX), plus(times(plus(times(k2_, squareX), k1_), squareX), a_));
        return {plus(times(x, t), column), plus(times(fromCentre_, t), row_)};
    }

private:
    VF cx_, k1_, k2_, scaleX_, row_, fromCentre_, a_, b_;
};

class MapRow {
public:
    HWY_INLINE MapRow(const Lens& lens, int y)
        : cx_(hn::Set(DF(), lens.cx)),
          k1_(hn::Set(DF(), lens.k1)),
          k2_(hn::Set(DF(), lens.k2)),
          perFx_(hn::Set(DF(), 1 / lens.fx)),
          twoP2_(hn::Set(DF(), 2 * lens.p2)),
          fxP2_(hn::Set(DF(), lens.fx * lens.p2)),
          fyP1_(hn::Set(DF(), lens.fy * lens.p1)),
          row_(hn::Set(DF(), static_cast<Qel32f>(y))),
          fromCentre_(hn::Sub(row_, hn::Set(DF(), lens.cy))) {
        const VF v = times(fromCentre_, hn::Set(DF(), 1 / lens.fy));
        squareY_ = times(v, v);
        tangential_ = times(hn::Set(DF(), 2 * lens.p1), v);
    }

    HWY_INLINE Points at(VF column) const {
        const VF x = hn::Sub(column, cx_);
        const VF u = times(x, perFx_);
        const VF square = plus(times(u, u), squareY_);
        const VF radial = times(plus(times(k2_, square), k1_), square);
        const VF t = plus(plus(radial, times(twoP2_, u)), tangential_);
        return {plus(times(t, x), plus(times(fxP2_, square), column)),
                plus(times(t, fromCentre_), plus(times(fyP1_, square), row_))};
    }

private:
    VF cx_, k1_, k2_, perFx_, twoP2_, fxP2_, fyP1_, row_, fromCentre_, squareY_, tangential_;
};

// The four pixels around each point as 32-bit words, as many per point as they fill: word k of point i is at
// words[k][i].
template <class T, int kChannels>
constexpr int kWords = 4 * kChannels* int(sizeof(T)) / 4;

// Which bits of which word are a sample: of the upper or lower row, of its left or right pixel.
struct Place {
    int word, shift;
};
template <class T, int kChannels>
constexpr Place placeOf(int lower, int right, int channel) {
    const int sample = right * kChannels + channel;
    if constexpr (sizeof(T) == 1 && kChannels == 1) return {0, 16 * lower + 8 * sample};
    // Of the six bytes of a row, four fill a word; the other two share one with those of the other row.
    if constexpr (sizeof(T) == 1)
        return sample < 4 ? Place{2 * lower, 8 * sample} : Place{1, 16 * lower + 8 * (sample - 4)};
    if constexpr (sizeof(T) == 2) return {lower * kChannels + sample / 2, 16 * (sample % 2)};
    return {lower * 2 * kChannels + sample, 0};
}

template <class Word, class T>
HWY_INLINE Word wordAt(const T* p) {
    Word word;
    std::memcpy(&word, p, sizeof word);
    return word;
}

template <class T, int kChannels>
HWY_INLINE void fetch(const T* upper, const T* lower, uint32_t (&words)[kWords<T, kChannels>][kBlock], size_t i) {
    if constexpr (sizeof(T) == 1 && kChannels == 1) {
        words[0][i] = wordAt<uint16_t>(upper) | uint32_t{wordAt<uint16_t>(lower)} << 16;
    } else if constexpr (sizeof(T) == 1) {
        words[0][i] = wordAt<uint32_t>(upper);
        words[1][i] = wordAt<uint16_t>(upper + 4) | uint32_t{wordAt<uint16_t>(lower + 4)} << 16;
        words[2][i] = wordAt<uint32_t>(lower);
    } else {
        constexpr int kRowWords = kWords<T, kChannels> / 2;
        for (int k = 0; k < kRowWords; ++k) {
            words[k][i] = wordAt<uint32_t>(reinterpret_cast<const char*>(upper) + 4 * k);
            words[kRowWords + k][i] = wordAt<uint32_t>(reinterpret_cast<const char*>(lower) + 4 * k);
        }
    }
}

template <class T, int kChannels, int kLower, int kRight, int kChannel>
HWY_INLINE VF samplesOf(const uint32_t (&words)[kWords<T, kChannels>][kBlock], size_t at) {
    constexpr Place place = placeOf<T, kChannels>(kLower, kRight, kChannel);
    const DU du;
    const auto word = hn::Load(du, words[place.word] + at);
    if constexpr (sizeof(T) == 4) {
        return hn::BitCast(DF(), word);
    } else {
        constexpr int kBits = 8 * sizeof(T);
        auto sample = word;
        if constexpr (place.shift > 0) sample = hn::ShiftRight<place.shift>(sample);
        if constexpr (place.shift + kBits < 32) sample = hn::And(sample, hn::Set(du, (1u << kBits) - 1));
        return hn::ConvertTo(DF(), hn::BitCast(DI(), sample));
    }
}

struct PointWeights {
    VF upperLeft, upperRight, lowerLeft, lowerRight;
};

// The points of a block of columns: the pixel to the upper left of each, how far it lies beyond it, and whether it lies
// in the source at all. Those that do not take the source's corner.
struct Block {
    HWY_ALIGN int32_t columns[kBlock];
    HWY_ALIGN int32_t rows[kBlock];
    HWY_ALIGN Qel32f a[kBlock];
    HWY_ALIGN Qel32f b[kBlock];
    HWY_ALIGN uint32_t isInside[kBlock];

    HWY_INLINE PointWeights weights(size_t at) const {
        const DF d;
        const VF one = hn::Set(d, 1.0F), right = hn::Load(d, a + at), below = hn::Load(d, b + at);
        const VF left = hn::Sub(one, right), above = hn::Sub(one, below);
        return {times(above, left), times(above, right), times(below, left), times(below, right)};
    }
    HWY_INLINE hn::Mask<DF> inside(size_t at) const {
        return hn::MaskFromVec(hn::BitCast(DF(), hn::Load(DU(), isInside + at)));
    }
};

HWY_INLINE void findPoints(const RadialRow& row, QelSize size, int x, size_t at, Block& block) {
    const DF d;
    const DI di;
    const Points p = row.at(columnsFrom(x));
    const VF zero = hn::Zero(d);
    const auto inX = hn::And(hn::Ge(p.x, zero), hn::Lt(p.x, hn::Set(d, static_cast<Qel32f>(size.width - 1))));
    const auto inY = hn::And(hn::Ge(p.y, zero), hn::Lt(p.y, hn::Set(d, static_cast<Qel32f>(size.height - 1))));
    const auto inRow = hn::RebindMask(d, hn::Lt(hn::Iota(di, 0), hn::Set(di, size.width - x)));
    const auto inside = hn::And(hn::And(inX, inY), inRow);

    const VF xs = hn::IfThenElseZero(inside, p.x), ys = hn::IfThenElseZero(inside, p.y);
    const auto left = hn::ConvertTo(di, xs), upper = hn::ConvertTo(di, ys);
    hn::Store(left, di, block.columns + at);
    hn::Store(upper, di, block.rows + at);
    hn::Store(hn::Sub(xs, hn::ConvertTo(d, left)), d, block.a + at);
    hn::Store(hn::Sub(ys, hn::ConvertTo(d, upper)), d, block.b + at);
    hn::Store(hn::BitCast(DU(), hn::VecFromMask(d, inside)), DU(), block.isInside + at);
}

template <class T, int kChannels, int kChannel>
HWY_INLINE VF interpolated(const uint32_t (&words)[kWords<T, kChannels>][kBlock], size_t at, const PointWeights& w) {
    const VF left = plus(times(samplesOf<T, kChannels, 0, 0, kChannel>(words, at), w.upperLeft),
                         times(samplesOf<T, kChannels, 1, 0, kChannel>(words, at), w.lowerLeft));
    const VF right = plus(times(samplesOf<T, kChannels, 0, 1, kChannel>(words, at), w.upperRight),
                          times(samplesOf<T, kChannels, 1, 1, kChannel>(words, at), w.lowerRight));
    return plus(right, left);
}

// A vector of results as samples: the nearest whole number, halves upward.
template <class T>
HWY_INLINE auto resultsOf(VF sum) {
    if constexpr (sizeof(T) == 4) {
        return sum;
    } else {
        return hn::DemoteTo(hn::Rebind<T, DF>(), hn::ConvertTo(DI(), plus(sum, hn::Set(DF(), 0.5F))));
    }
}

template <class T, int kChannels>
HWY_INLINE void storeResults(const uint32_t (&words)[kWords<T, kChannels>][kBlock], size_t at, const Block& block,
                             T* out) {
    const hn::Rebind<T, DF> d;
    const PointWeights weights = block.weights(at);
    const auto first = resultsOf<T>(interpolated<T, kChannels, 0>(words, at, weights));
    if constexpr (kChannels == 1) {
        hn::StoreU(first, d, out);
    } else {
        const auto second = resultsOf<T>(interpolated<T, kChannels, 1>(words, at, weights));
        const auto third = resultsOf<T>(interpolated<T, kChannels, 2>(words, at, weights));
        hn::StoreInterleaved3(first, second, third, d, out);
    }
}

// Of pixels whose point lies outside of the source nothing is stored, not even what they were.
template <class T, int kChannels>
HWY_INLINE void storeInside(const uint32_t (&words)[kWords<T, kChannels>][kBlock], size_t at, const Block& block,
                            T* out) {
    HWY_ALIGN T results[kLanes * kChannels];
    storeResults<T, kChannels>(words, at, block, results);
    for (size_t i = 0; i < kLanes; ++i)
        if (block.isInside[at + i] != 0)
            std::memcpy(out + i * kChannels, results + i * kChannels, kChannels * sizeof(T));
}

// Columns from x on, at most kBlock of them.
template <class T, int kChannels>
HWY_INLINE void undistortColumns(Plane<const T> src, T* out, QelSize size, const RadialRow& row, int x) {
    Block block;
    HWY_ALIGN uint32_t words[kWords<T, kChannels>][kBlock];
    const size_t count = HWY_MIN(size_t(size.width - x), kBlock);
    for (size_t at = 0; at < count; at += kLanes) findPoints(row, size, x + int(at), at, block);
    for (size_t i = 0; i < (count + kLanes - 1) / kLanes * kLanes; ++i) {
        const T* s = src.row(block.rows[i]) + ptrdiff_t{block.columns[i]} * kChannels;
        fetch<T, kChannels>(s, qel::row(s, src.step, 1), words, i);
    }
    for (size_t at = 0; at < count; at += kLanes) {
        T* const to = out + (x + ptrdiff_t(at)) * kChannels;
        const auto inside = block.inside(at);
        if (hn::AllTrue(DF(), inside)) {
            storeResults<T, kChannels>(words, at, block, to);
        } else if (!hn::AllFalse(DF(), inside)) {
            storeInside<T, kChannels>(words, at, block, to);
        }
    }
}

template <class T, int kChannels>
void undistort(Plane<const T> src, Plane<T> dst, QelSize size, const Lens& lens) {
    for (int y = 0; y < size.height; ++y) {
        const RadialRow row(lens, y);
        for (int64_t x = 0; x < size.width; x += kBlock)
            undistortColumns<T, kChannels>(src, dst.row(y), size, row, int(x));
    }
}

// Each block of a vector is streamed by itself: the two maps need not be aligned alike.
HWY_INLINE void streamBlocks(hn::Vec<hn::Full128<Qel32f>> v, hn::Full128<Qel32f> d, Qel32f* p) { hn::Stream(v, d, p); }
template <class D>
HWY_INLINE void streamBlocks(hn::Vec<D> v, D, Qel32f* p) {
    const hn::Half<D> half;
    streamBlocks(hn::LowerHalf(half, v), half, p);
    streamBlocks(hn::UpperHalf(half, v), half, p + hn::MaxLanes(half));
}

template <class Row, bool kStreaming>
void createMap(Plane<Qel32f> xMap, Plane<Qel32f> yMap, QelSize size, const Lens& lens) {
    const DF d;
    for (int y = 0; y < size.height; ++y) {
        const Row row(lens, y);
        Qel32f *xOut = xMap.row(y), *yOut = yMap.row(y);
        int x = 0;
        for (; size.width - x >= int{kLanes}; x += int{kLanes}) {
            const Points p = row.at(columnsFrom(x));
            if constexpr (kStreaming) {
                streamBlocks(p.x, d, xOut + x);
                streamBlocks(p.y, d, yOut + x);
            } else {
                hn::StoreU(p.x, d, xOut + x);
                hn::StoreU(p.y, d, yOut + x);
            }
        }
        if (x == size.width) continue;
        HWY_ALIGN Qel32f xs[kLanes];
        HWY_ALIGN Qel32f ys[kLanes];
        const Points p = row.at(columnsFrom(x));
        hn::Store(p.x, d, xs);
        hn::Store(p.y, d, ys);
        std::memcpy(xOut + x, xs, sizeof(Qel32f) * size_t(size.width - x));
        std::memcpy(yOut + x, ys, sizeof(Qel32f) * size_t(size.width - x));
    }
    finishStores<kStreaming>();
}

}  // namespace

constexpr auto& ownUndistortRadial_8u_C1R_W7 = undistort<Qel8u, 1>;
constexpr auto& ownUndistortRadial_8u_C3R_W7 = undistort<Qel8u, 3>;
constexpr auto& ownUndistortRadial_16u_C1R_W7 = undistort<Qel16u, 1>;
constexpr auto& ownUndistortRadial_16u_C3R_W7 = undistort<Qel16u, 3>;
constexpr auto& ownUndistortRadial_32f_C1R_W7 = undistort<Qel32f, 1>;
constexpr auto& ownUndistortRadial_32f_C3R_W7 = undistort<Qel32f, 3>;
constexpr auto& ownCreateMapCameraUndistort_32f_C1R_W7 = createMap<MapRow, false>;
constexpr auto& ownCreateMapCameraUndistort_32f_C1R_W7_Streaming = createMap<MapRow, true>;
constexpr auto& ownCreateMapCameraUndistort_32f_C1R_W7_Short = createMap<ShortMapRow, false>;
constexpr auto& ownCreateMapCameraUndistort_32f_C1R_W7_Short_Streaming = createMap<ShortMapRow, true>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownUndistortRadial_8u_C1R_W7);
QEL_KERNEL(ownUndistortRadial_8u_C3R_W7);
QEL_KERNEL(ownUndistortRadial_16u_C1R_W7);
QEL_KERNEL(ownUndistortRadial_16u_C3R_W7);
QEL_KERNEL(ownUndistortRadial_32f_C1R_W7);
QEL_KERNEL(ownUndistortRadial_32f_C3R_W7);
QEL_KERNEL(ownCreateMapCameraUndistort_32f_C1R_W7);
QEL_KERNEL(ownCreateMapCameraUndistort_32f_C1R_W7_Streaming);
QEL_KERNEL(ownCreateMapCameraUndistort_32f_C1R_W7_Short);
QEL_KERNEL(ownCreateMapCameraUndistort_32f_C1R_W7_Short_Streaming);
}  // namespace qel
#endif
