// Tilted tables: each element depends on the two rows above only, so a row is formed in vectors across its columns.
#include "detect/integral_kernels.h"

#define HWY_TARGET_INCLUDE "detect/tilted_integral_kernels.cpp"
#include "frame/simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// Rows are read at three places one element apart: wider vectors would straddle more lines of the cache.
constexpr size_t kVectorBytes = 32;
template <class T>
using Wide = hn::CappedTag<T, kVectorBytes / sizeof(T)>;

// Integers, or samples that stand for them, in any lanes.
template <class D>
using Ints = hn::Vec<hn::Rebind<Qel32s, D>>;

// A row of a table and the two above it. formBoth() sets elements j on, which have samples a to their left and b in
// their own column before them; formLast() sets the one behind the last sample.
template <class T>
struct TiltedRow {
    const T* prev2;
    const T* prev1;
    T* cur;

    TiltedRow(const SumTable<T>& table, int y) : prev2(table.row(y)), prev1(table.row(y + 1)), cur(table.row(y + 2)) {}

    // Neither of the two sees a sample of this row.
    void formEnds(size_t width) const {
        cur[0] = prev1[1];
        cur[width + 1] = prev1[width];
    }

    template <class D>
    HWY_INLINE void formBoth(D, size_t j, Ints<D> a, Ints<D> b) const;
    void formLast(size_t j, int a) const;
};

template <>
template <class D>
HWY_INLINE void TiltedRow<Qel32s>::formBoth(D, size_t j, Ints<D> a, Ints<D> b) const {
    const hn::Rebind<Qel32s, D> d;
    const auto outer = hn::Add(hn::LoadU(d, prev1 + j - 1), hn::LoadU(d, prev1 + j + 1));
    hn::StoreU(hn::Add(hn::Sub(outer, hn::LoadU(d, prev2 + j)), hn::Add(a, b)), d, cur + j);
}

template <>
void TiltedRow<Qel32s>::formLast(size_t j, int a) const {
    const uint32_t outer = uint32_t(prev1[j - 1]) + uint32_t(prev1[j + 1]);
    cur[j] = Qel32s(outer - uint32_t(prev2[j]) + uint32_t(a));
}

// Five terms in double precision, in this order, then one rounding.
template <>
template <class D>
HWY_INLINE void TiltedRow<Qel32f>::formBoth(D d, size_t j, Ints<D> a, Ints<D> b) const {
    const hn::Rebind<Qel32f, D> dn;
    const auto widened = [=](const Qel32f* p) HWY_ATTR { return hn::PromoteTo(d, hn::LoadU(dn, p + j)); };
    auto sum = hn::Add(hn::Sub(widened(prev1 - 1), widened(prev2)), widened(prev1 + 1));
    sum = hn::Add(hn::Add(sum, hn::PromoteTo(d, a)), hn::PromoteTo(d, b));
    hn::StoreU(hn::DemoteTo(dn, sum), dn, cur + j);
}

// The column behind the last sample is added to what the table held there.
template <>
void TiltedRow<Qel32f>::formLast(size_t j, int a) const {
    const Qel64f sum = Qel64f(a) + Qel64f(prev1[j - 1]) + Qel64f(prev1[j + 1]) - Qel64f(prev2[j]);
    cur[j] = static_cast<Qel32f>(sum) + cur[j];
}

template <>
template <class D>
HWY_INLINE void TiltedRow<Qel64f>::formBoth(D d, size_t j, Ints<D> a, Ints<D> b) const {
    const auto sum = hn::Add(hn::PromoteTo(d, hn::Add(a, b)), hn::LoadU(d, prev1 + j - 1));
    hn::StoreU(hn::Add(hn::Sub(sum, hn::LoadU(d, prev2 + j)), hn::LoadU(d, prev1 + j + 1)), d, cur + j);
}

template <>
void TiltedRow<Qel64f>::formLast(size_t j, int a) const {
    cur[j] = Qel64f(a) + prev1[j - 1] + prev1[j + 1] - prev2[j];
}

template <class D>
HWY_INLINE Ints<D> samplesAt(D, const Qel8u* p) {
    const hn::Rebind<Qel32s, D> d;
    return hn::PromoteTo(d, hn::LoadU(hn::Rebind<Qel8u, D>(), p));
}

// What is not all in 32-bit integers is formed in as many lanes as there are doubles in a vector.
template <class T, class Q>
using LoopTag = Wide<std::conditional_t<std::is_same_v<T, Qel32s> && std::is_same_v<Q, Qel32s>, Qel32s, Qel64f>>;

template <class T>
void tiltedRows(Plane<const Qel8u> src, const SumTable<T>& sums, QelSize size) {
    const size_t width = size_t(size.width);
    for (int y = 0; y < size.height; ++y) {
        const Qel8u* s = src.row(y);
        const TiltedRow<T> row(sums, y);
        forVectors(LoopTag<T, T>(), width - 1, [=](auto d, size_t x) HWY_ATTR {
            row.formBoth(d, x + 1, samplesAt(d, s + x), samplesAt(d, s + x + 1));
        });
        row.formLast(width, s[width - 1]);
        row.formEnds(width);
    }
}

// With kReadsPast, the last column takes in the byte past the row like any other sample.
template <class T, class Q, bool kReadsPast = false>
void tiltedSqrRows(Plane<const Qel8u> src, const SumTable<T>& sums, const SumTable<Q>& squares, QelSize size) {
    const size_t width = size_t(size.width);
    for (int y = 0; y < size.height; ++y) {
        const Qel8u* s = src.row(y);
        const TiltedRow<T> row(sums, y);
        const TiltedRow<Q> rowOfSquares(squares, y);
        forVectors(LoopTag<T, Q>(), kReadsPast ? width : width - 1, [=](auto d, size_t x) HWY_ATTR {
            const auto a = samplesAt(d, s + x), b = samplesAt(d, s + x + 1);
            row.formBoth(d, x + 1, a, b);
            rowOfSquares.formBoth(d, x + 1, hn::Mul(a, a), hn::Mul(b, b));
        });
        if constexpr (!kReadsPast) {
            const int last = s[width - 1];
            row.formLast(width, last);
            rowOfSquares.formLast(width, last * last);
        }
        row.formEnds(width);
        rowOfSquares.formEnds(width);
    }
}

}  // namespace

constexpr auto& ownTiltedIntegral_8u32s_C1R_W7 = tiltedRows<Qel32s>;
constexpr auto& ownTiltedIntegral_8u32f_C1R_W7 = tiltedRows<Qel32f>;
constexpr auto& ownTiltedSqrIntegral_8u32s_C1R_W7 = tiltedSqrRows<Qel32s, Qel32s, true>;
constexpr auto& ownTiltedSqrIntegral_8u32s64f_C1R_W7 = tiltedSqrRows<Qel32s, Qel64f>;
constexpr auto& ownTiltedSqrIntegral_8u32f64f_C1R_W7 = tiltedSqrRows<Qel32f, Qel64f>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownTiltedIntegral_8u32s_C1R_W7);
QEL_KERNEL(ownTiltedIntegral_8u32f_C1R_W7);
QEL_KERNEL(ownTiltedSqrIntegral_8u32s_C1R_W7);
QEL_KERNEL(ownTiltedSqrIntegral_8u32s64f_C1R_W7);
QEL_KERNEL(ownTiltedSqrIntegral_8u32f64f_C1R_W7);
}  // namespace qel
#endif
