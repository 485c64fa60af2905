#include "filter/row_border_pipeline_kernels.h"
#include "frame/image.h"

#define HWY_TARGET_INCLUDE "filter/row_border_pipeline_32f_kernels.cpp"
#include "filter/row_border_pipeline-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

using Filter = RowFilter<Qel32f, Qel32f>;

template <int kTaps>
using Kernel32f = Coefficients<kTaps, Qel32f>;

template <class D>
HWY_INLINE hn::Vec<D> times(D d, const Qel32f* s, Qel32f k) {
    return hn::Mul(hn::LoadU(d, s), hn::Set(d, k));
}

// The orders of summation. Each is a documented result. They give n vectors of sums at once.
template <int kSize>
struct InTapOrder {
    static constexpr int kTaps = kSize;
    static constexpr size_t kVectors = 1;

    template <class D>
    static HWY_INLINE void sums(Vectors<1>, D d, const Qel32f* s, int channels, const Kernel32f<kTaps>& k,
                                hn::Vec<D>* sum) {
        *sum = times(d, s, k[0]);
        const int taps = k.size();
#pragma GCC unroll 4
        for (int i = 1; i < taps; ++i) *sum = hn::Add(*sum, times(d, s + i * channels, k[i]));
    }
};

// From the outside in.
template <int kSize>
struct Inwards {
    static constexpr int kTaps = kSize;
    static constexpr size_t kVectors = 1;

    template <class D>
    static HWY_INLINE void sums(Vectors<1>, D d, const Qel32f* s, int channels, const Kernel32f<kTaps>& k,
                                hn::Vec<D>* sum) {
        const auto term = [&](int i) HWY_ATTR { return times(d, s + i * channels, k[i]); };
        *sum = hn::Add(term(0), term(kSize - 1));
        if constexpr (kSize == 5) *sum = hn::Add(*sum, hn::Add(term(1), term(3)));
        *sum = hn::Add(*sum, term(kSize / 2));
    }
};

// Five taps of a symmetric kernel: what has the same coefficient is added first.
struct Folded5 {
    static constexpr int kTaps = 5;
    static constexpr size_t kVectors = 1;

    template <class D>
    static HWY_INLINE void sums(Vectors<1>, D d, const Qel32f* s, int channels, const Kernel32f<kTaps>& k,
                                hn::Vec<D>* sum) {
        const auto pair = [&](int i, int j) HWY_ATTR {
            const auto both = hn::Add(hn::LoadU(d, s + i * channels), hn::LoadU(d, s + j * channels));
            return hn::Mul(both, hn::Set(d, k[i]));
        };
        *sum = hn::Add(hn::Add(pair(0, 4), pair(1, 3)), times(d, s + 2 * channels, k[2]));
    }
};

// The first tap, then two that are added up before they join the sum, then one, then two, and so on.
struct InThrees {
    static constexpr int kTaps = 0;
    static constexpr size_t kVectors = 4;

    template <size_t n, class D>
    static HWY_INLINE void sums(Vectors<n> vectors, D d, const Qel32f* s, int channels, const Kernel32f<kTaps>& k,
                                hn::Vec<D>* sum) {
        const auto product = [&](int i, size_t v, auto coefficient) HWY_ATTR {
            return hn::Mul(hn::LoadU(d, s + i * channels + v * hn::Lanes(d)), coefficient);
        };
        const auto addOne = [&](int i) HWY_ATTR {
            const auto a = hn::Set(d, k[i]);
            forEachVector(vectors, [&](size_t v) HWY_ATTR { sum[v] = hn::Add(sum[v], product(i, v, a)); });
        };
        const auto addTwo = [&](int i) HWY_ATTR {
            const auto a = hn::Set(d, k[i]);
            const auto b = hn::Set(d, k[i + 1]);
            forEachVector(vectors, [&](size_t v) HWY_ATTR {
                sum[v] = hn::Add(sum[v], hn::Add(product(i, v, a), product(i + 1, v, b)));
            });
        };
        const auto first = hn::Set(d, k[0]);
        forEachVector(vectors, [&](size_t v) HWY_ATTR { sum[v] = product(0, v, first); });
        const int taps = k.size();
        int i = 1;
        for (; i + 2 < taps; i += 3) {
            addTwo(i);
            addOne(i + 2);
        }
        if (i + 1 < taps) {
            addTwo(i);
        } else if (i < taps) {
            addOne(i);
        }
    }
};

// Results whose samples all lie in the row.
template <class Order, bool kStreaming>
HWY_INLINE void interiorResults(const Qel32f* src, int channels, const Kernel32f<Order::kTaps>& k, Qel32f* out,
                                size_t count) {
    const auto op = [&]<size_t n>(auto d, size_t x, Vectors<n> vectors, auto store) HWY_ATTR {
        hn::Vec<decltype(d)> sums[n];
        Order::sums(vectors, d, src + x, channels, k, sums);
        forEachVector(vectors, [&](size_t v) HWY_ATTR { store(sums[v], d, out + x + v * hn::Lanes(d)); });
    };
    if constexpr (kStreaming) {
        forVectorsInto<true>(out, hn::ScalableTag<Qel32f>(), count,
                             [&](auto d, size_t x, auto store) HWY_ATTR { op(d, x, Vectors<1>(), store); });
    } else {
        const auto cached = [&](auto d, size_t x, auto vectors) HWY_ATTR { op(d, x, vectors, CachedStore()); };
        const auto few = [&]() HWY_ATTR {
            forVectors(hn::CappedTag<Qel32f, kGroup>(), count,
                       [&](auto d, size_t x) HWY_ATTR { cached(d, x, Vectors<1>()); });
        };
        forOverlapping(Vectors<Order::kVectors>(), hn::ScalableTag<Qel32f>(), out, count, cached, few);
    }
}

template <class Order, class D>
HWY_INLINE void storeSum(D d, const Qel32f* s, int channels, const Kernel32f<Order::kTaps>& k, Qel32f* out) {
    hn::Vec<D> sum;
    Order::sums(Vectors<1>(), d, s, channels, k, &sum);
    hn::StoreU(sum, d, out);
}

template <int kTaps>
HWY_NOINLINE void edgeResults(const Qel32f* s, int channels, const Kernel32f<kTaps>& k, Qel32f* out, size_t count) {
    forVectors(hn::CappedTag<Qel32f, RowStrips<Qel32f>::kGroup>(), count,
               [&](auto d, size_t x) HWY_ATTR { storeSum<InTapOrder<kTaps>>(d, s + x, channels, k, out + x); });
}

template <class Order, bool kStreaming>
HWY_NOINLINE void filterRowsBy(const Qel32f* pSrc, int srcStep, Qel32f* const* pRowDst, QelSize size, int channels,
                               const Filter& filter, void* pScratch) {
    const Kernel32f<Order::kTaps> k(filter.pKernel, filter.kernelSize);
    Carver carver(pScratch);
    forEachRow(
        pSrc, srcStep, pRowDst, size, channels, filter, carver,
        [&](const Qel32f* strip, Qel32f* out, size_t count) HWY_ATTR { edgeResults(strip, channels, k, out, count); },
        [&](const Qel32f* src, Qel32f* out, size_t count)
            HWY_ATTR { interiorResults<Order, kStreaming>(src, channels, k, out, count); });
    finishStores<kStreaming>();
}

template <int kChannels, int kSize>
void filterRows(const Qel32f* pSrc, int srcStep, Qel32f* const* pRowDst, QelSize size, const Filter& filter,
                void* pScratch) {
    const auto run = [=, &filter](auto order) {
        using Order = decltype(order);
        filter.streaming ? filterRowsBy<Order, true>(pSrc, srcStep, pRowDst, size, kChannels, filter, pScratch)
                         : filterRowsBy<Order, false>(pSrc, srcStep, pRowDst, size, kChannels, filter, pScratch);
    };
    if constexpr (kSize == 0) {
        run(InThrees());
    } else if constexpr (kSize == 3) {
        run(Inwards<3>());
    } else {
        isSymmetric(filter.pKernel, 5) ? run(Folded5()) : run(Inwards<5>());
    }
}

template <class Order, bool kStreaming>
HWY_NOINLINE void interiorOfImage(const Qel32f* src, const Qel32f* k, Qel32f* out, size_t count) {
    interiorResults<Order, kStreaming>(src, 1, Kernel32f<Order::kTaps>(k, Order::kTaps), out, count);
}

// A whole image by a kernel around its middle, one order for the ends of a row and all between them. The row is wide
// enough to have both ends apart.
template <class Order, int kBorderMode>
void filterImage(const Qel32f* pSrc, int srcStep, Qel32f* const* pRowDst, QelSize size, const Filter& filter, void*) {
    constexpr int kTaps = Order::kTaps;
    constexpr int kReach = kTaps / 2;
    constexpr int kStrip = 3 * kReach;
    const hn::CappedTag<Qel32f, 1> one;
    const Kernel32f<kTaps> k(filter.pKernel, kTaps);
    const int width = size.width;
    int indices[2 * kStrip];
    for (int i = 0; i < kStrip; ++i) {
        indices[i] = extendedIndex(kBorderMode, i - kReach, width);
        indices[kStrip + i] = extendedIndex(kBorderMode, width - 2 * kReach + i, width);
    }
    for (int y = 0; y < size.height; ++y) {
        const Qel32f* const s = row(pSrc, srcStep, y);
        Qel32f* const out = pRowDst[y];
        Qel32f strips[2 * kStrip];
        for (int i = 0; i < 2 * kStrip; ++i)
            std::memcpy(strips + i, indices[i] == kConstantSample ? filter.pBorderValue : s + indices[i],
                        sizeof(Qel32f));
        for (int i = 0; i < kReach; ++i) {
            const Qel32f* const right = strips + kStrip + i;
            storeSum<Order>(one, strips + i, 1, k, out + i);
            storeSum<Order>(one, right, 1, k, out + width - kReach + i);
        }
        const size_t count = size_t(width - 2 * kReach);
        filter.streaming ? interiorOfImage<Order, true>(s, filter.pKernel, out + kReach, count)
                         : interiorOfImage<Order, false>(s, filter.pKernel, out + kReach, count);
    }
    if (filter.streaming) hwy::FlushStream();
}

}  // namespace

constexpr auto& ownFilterRowBorderPipeline_32f_C1R_3x3_W7cn = filterRows<1, 3>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_5x5_W7cn = filterRows<1, 5>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_X_W7cn = filterRows<1, 0>;
constexpr auto& ownFilterRowBorderPipeline_32f_C3R_3x3_W7cn = filterRows<3, 3>;
constexpr auto& ownFilterRowBorderPipeline_32f_C3R_5x5_W7cn = filterRows<3, 5>;
constexpr auto& ownFilterRowBorderPipeline_32f_C3R_X_W7cn = filterRows<3, 0>;

constexpr auto& ownFilterRowBorderPipeline_32f_C1R_3x3_Const_W7 = filterImage<InTapOrder<3>, qelBorderConst>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_3x3_Repl_W7 = filterImage<InTapOrder<3>, qelBorderRepl>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_3x3_Wrap_W7 = filterImage<InTapOrder<3>, qelBorderWrap>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_3x3_Mirr_W7 = filterImage<InTapOrder<3>, qelBorderMirr>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_5x5_Const_W7 = filterImage<InTapOrder<5>, qelBorderConst>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_5x5_Repl_W7 = filterImage<InTapOrder<5>, qelBorderRepl>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_5x5_Wrap_W7 = filterImage<InTapOrder<5>, qelBorderWrap>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_5x5_Mirr_W7 = filterImage<InTapOrder<5>, qelBorderMirr>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_5x5_MirrR_W7 = filterImage<InTapOrder<5>, qelBorderMirrR>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_5x5_Const_W7_sym = filterImage<Folded5, qelBorderConst>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_5x5_Repl_W7_sym = filterImage<Folded5, qelBorderRepl>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_5x5_Wrap_W7_sym = filterImage<Folded5, qelBorderWrap>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_5x5_Mirr_W7_sym = filterImage<Folded5, qelBorderMirr>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_5x5_MirrR_W7_sym = filterImage<Folded5, qelBorderMirrR>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_3x3_W7cn);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_5x5_W7cn);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_X_W7cn);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C3R_3x3_W7cn);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C3R_5x5_W7cn);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C3R_X_W7cn);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_3x3_Const_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_3x3_Repl_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_3x3_Wrap_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_3x3_Mirr_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_5x5_Const_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_5x5_Repl_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_5x5_Wrap_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_5x5_Mirr_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_5x5_MirrR_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_5x5_Const_W7_sym);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_5x5_Repl_W7_sym);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_5x5_Wrap_W7_sym);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_5x5_Mirr_W7_sym);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_5x5_MirrR_W7_sym);
}  // namespace qel
#endif
