#include "filter/row_border_pipeline_kernels.h"
#include "frame/image.h"

#define HWY_TARGET_INCLUDE "filter/row_border_pipeline_32f_kernels.cpp"
#include "filter/row_border_pipeline-inl.h"
#include "filter/taps-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

using Filter = RowFilter<Qel32f, Qel32f>;

template <int kTaps>
using Kernel32f = Coefficients<kTaps, Qel32f>;

// What an order of summation adds up.
template <class D, class Samples, int kTaps>
struct Terms {
    const Samples& s;
    const Kernel32f<kTaps>& k;

    HWY_INLINE int size() const { return k.size(); }
    template <class TapOrInt>
    HWY_INLINE hn::Vec<D> operator()(TapOrInt tap) const {
        return hn::Mul(s(tap), hn::Set(D(), k[tap]));
    }
    template <int a, int b>
    HWY_INLINE hn::Vec<D> pair(Tap<a>, Tap<b>) const {
        return hn::Mul(hn::Add(s(Tap<a>()), s(Tap<b>())), hn::Set(D(), k[a]));
    }
};
template <class Order, class D, class Samples>
HWY_INLINE hn::Vec<D> sumOf(D, const Samples& s, const Kernel32f<Order::kTaps>& k) {
    return Order::sum(Terms<D, Samples, Order::kTaps>{s, k});
}

// The first tap, then two that are added up before they join the sum, then one, then two, and so on. Several vectors of
// sums share the coefficients.
struct InThrees {
    static constexpr int kTaps = 0;

    template <size_t n, class D, int kChannels>
    static HWY_INLINE void sums(Vectors<n> vectors, D d, const Loaded<D, Qel32f, kChannels>& s, const Kernel32f<0>& k,
                                hn::Vec<D>* sum) {
        const auto addOne = [&](int i) HWY_ATTR {
            const auto a = hn::Set(d, k[i]);
            forEachVector(vectors, [&](size_t v) HWY_ATTR { sum[v] = hn::Add(sum[v], hn::Mul(s.vector(v)(i), a)); });
        };
        const auto addTwo = [&](int i) HWY_ATTR {
            const auto a = hn::Set(d, k[i]);
            const auto b = hn::Set(d, k[i + 1]);
            forEachVector(vectors, [&](size_t v) HWY_ATTR {
                sum[v] = hn::Add(sum[v], hn::Add(hn::Mul(s.vector(v)(i), a), hn::Mul(s.vector(v)(i + 1), b)));
            });
        };
        const auto first = hn::Set(d, k[0]);
        forEachVector(vectors, [&](size_t v) HWY_ATTR { sum[v] = hn::Mul(s.vector(v)(0), first); });
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

#if HWY_TARGET <= HWY_AVX3
    template <class D, int kChannels>
    static HWY_INLINE void sums(Vectors<2>, D d, Joined<D, kChannels> s, const Kernel32f<0>& k, hn::Vec<D>* sum) {
        const Qel32f* taps = k.taps();
        const auto first = hn::Set(d, *taps);
        auto sum0 = hn::Mul(s(Tap<0>()), first);
        auto sum1 = hn::Mul(s.vector(1)(Tap<0>()), first);
        for (int left = k.size() - 1; left > 0; left -= kTogether) {
            addFrom<1>(d, s, taps, left, sum0, sum1);
            s.first += kTogether * kChannels;
            taps += kTogether;
        }
        sum[0] = sum0;
        sum[1] = sum1;
    }

private:
    // Taps whose distance from the first one is known when this is compiled.
    static constexpr int kTogether = 48;

    // Adds the taps from kTap to kTogether, at most `left` of them, to two neighbouring vectors of sums.
    template <int kTap, class D, class Samples, class V = hn::Vec<D>>
    static HWY_INLINE void addFrom(D d, const Samples& s, const Qel32f* taps, int left, V& sum0, V& sum1) {
        if constexpr (kTap < kTogether) {
            const auto a = hn::Set(d, taps[kTap]);
            const auto one0 = hn::Mul(s(Tap<kTap>()), a);
            const auto one1 = hn::Mul(s.vector(1)(Tap<kTap>()), a);
            if (left == 1) {
                sum0 = hn::Add(sum0, one0);
                sum1 = hn::Add(sum1, one1);
                return;
            }
            const auto b = hn::Set(d, taps[kTap + 1]);
            sum0 = hn::Add(sum0, hn::Add(one0, hn::Mul(s(Tap<kTap + 1>()), b)));
            sum1 = hn::Add(sum1, hn::Add(one1, hn::Mul(s.vector(1)(Tap<kTap + 1>()), b)));
            if (left == 2) return;
            const auto c = hn::Set(d, taps[kTap + 2]);
            sum0 = hn::Add(sum0, hn::Mul(s(Tap<kTap + 2>()), c));
            sum1 = hn::Add(sum1, hn::Mul(s.vector(1)(Tap<kTap + 2>()), c));
            if (left > 3) addFrom<kTap + 3>(d, s, taps, left - 3, sum0, sum1);
        }
    }
#endif
};

// Vectors of sums that are formed at once.
template <class Order>
constexpr size_t kVectors = kJoins              ? 2
                            : Order::kTaps == 0 ? 4
                                                : 1;

template <class Order, size_t n, class D, class Samples>
HWY_INLINE void sumsOf(Vectors<n> vectors, D d, const Samples& s, const Kernel32f<Order::kTaps>& k, hn::Vec<D>* sums) {
    if constexpr (Order::kTaps == 0) {
        Order::sums(vectors, d, s, k, sums);
    } else {
        forEachVector(vectors, [&](size_t v) HWY_ATTR { sums[v] = sumOf<Order>(d, s.vector(v), k); });
    }
}

// n vectors of sums of samples among the `count` ones from src on.
template <class Order, int kChannels, size_t n, class D>
HWY_INLINE void sumsAt(Vectors<n> vectors, D d, const Qel32f* src, [[maybe_unused]] size_t count,
                       const Kernel32f<Order::kTaps>& k, hn::Vec<D>* sums) {
#if HWY_TARGET <= HWY_AVX3
    if constexpr (n == kVectors<Order>) {
        using Samples = Joined<D, kChannels>;
        if (Samples::samplesRead(k.size(), n) <= count) return sumsOf<Order>(vectors, d, Samples{src}, k, sums);
    }
#endif
    sumsOf<Order>(vectors, d, Loaded<D, Qel32f, kChannels>{src}, k, sums);
}

// Results whose samples all lie in the row.
template <class Order, int kChannels, bool kStreaming>
HWY_INLINE void interiorResults(const Qel32f* src, const Kernel32f<Order::kTaps>& k, Qel32f* out, size_t count) {
    const hn::ScalableTag<Qel32f> d;
    const size_t samples = count + size_t(k.size() - 1) * kChannels;
    const auto storeAll = [out]<size_t n>(auto dx, const auto& sums, size_t x, Vectors<n> vectors,
                                          auto store) QEL_INLINE_LAMBDA {
        forEachVector(vectors, [&](size_t v) HWY_ATTR { store(sums[v], dx, out + x + v * hn::Lanes(dx)); });
    };
    const auto op = [&]<size_t n>(auto dx, size_t x, Vectors<n> vectors, auto store) QEL_INLINE_LAMBDA {
        hn::Vec<decltype(dx)> sums[n];
        sumsAt<Order, kChannels>(vectors, dx, src + x, samples - x, k, sums);
        storeAll(dx, sums, x, vectors, store);
    };
    if constexpr (kStreaming) {
        forVectorsInto<true>(out, d, count,
                             [&](auto dx, size_t x, auto store) HWY_ATTR { op(dx, x, Vectors<1>(), store); });
    } else {
        const auto cached = [&](auto dx, size_t x, auto vectors)
                                QEL_INLINE_LAMBDA { op(dx, x, vectors, CachedStore()); };
        const auto few = [&]() HWY_ATTR {
            forVectors(hn::CappedTag<Qel32f, kGroup>(), count,
                       [&](auto dx, size_t x) HWY_ATTR { cached(dx, x, Vectors<1>()); });
        };
        const auto overlapping = [&]() QEL_INLINE_LAMBDA {
            forOverlapping(Vectors<kVectors<Order>>(), d, out, count, cached, few);
        };
#if HWY_TARGET <= HWY_AVX3
        if constexpr (kChannels == 1 && Order::kTaps > 0) {
            const auto walking = [&]<size_t n>(const auto& s, size_t x, Vectors<n> vectors) QEL_INLINE_LAMBDA {
                hn::Vec<decltype(d)> sums[n];
                sumsOf<Order>(vectors, d, s, k, sums);
                storeAll(d, sums, x, vectors, CachedStore());
            };
            return forWalking<Order::kTaps>(d, src, out, count, walking, overlapping);
        }
#endif
        overlapping();
    }
}

template <class Order, int kChannels, class D>
HWY_INLINE void storeSum(D d, const Qel32f* s, const Kernel32f<Order::kTaps>& k, Qel32f* out) {
    hn::StoreU(sumOf<Order>(d, Loaded<D, Qel32f, kChannels>{s}, k), d, out);
}

template <int kChannels, int kTaps>
HWY_NOINLINE void edgeResults(const Qel32f* s, const Kernel32f<kTaps>& k, Qel32f* out, size_t count) {
    forVectors(hn::CappedTag<Qel32f, RowStrips<Qel32f>::kGroup>(), count,
               [&](auto d, size_t x) HWY_ATTR { storeSum<InTapOrder<kTaps>, kChannels>(d, s + x, k, out + x); });
}

template <class Order, int kChannels, bool kStreaming>
HWY_NOINLINE void filterRowsBy(const Qel32f* pSrc, int srcStep, Qel32f* const* pRowDst, QelSize size,
                               const Filter& filter, void* pScratch) {
    const Kernel32f<Order::kTaps> k(filter.pKernel, filter.kernelSize);
    Carver carver(pScratch);
    forEachRow(
        pSrc, srcStep, pRowDst, size, kChannels, filter, carver,
        [&](const Qel32f* strip, Qel32f* out, size_t count) HWY_ATTR { edgeResults<kChannels>(strip, k, out, count); },
        [&](const Qel32f* src, Qel32f* out, size_t count)
            HWY_ATTR { interiorResults<Order, kChannels, kStreaming>(src, k, out, count); });
    finishStores<kStreaming>();
}

template <int kChannels, int kSize>
void filterRows(const Qel32f* pSrc, int srcStep, Qel32f* const* pRowDst, QelSize size, const Filter& filter,
                void* pScratch) {
    const auto run = [=, &filter](auto order) {
        using Order = decltype(order);
        filter.streaming ? filterRowsBy<Order, kChannels, true>(pSrc, srcStep, pRowDst, size, filter, pScratch)
                         : filterRowsBy<Order, kChannels, false>(pSrc, srcStep, pRowDst, size, filter, pScratch);
    };
    if constexpr (kSize == 0) {
        run(InThrees());
    } else if constexpr (kSize == 3) {
        run(Inwards<3>());
    } else {
        isSymmetric(filter.pKernel, 5) ? run(Folded<5>()) : run(Inwards<5>());
    }
}

template <class Order, bool kStreaming>
HWY_NOINLINE void interiorOfImage(const Qel32f* src, const Qel32f* k, Qel32f* out, size_t count) {
    interiorResults<Order, 1, kStreaming>(src, Kernel32f<Order::kTaps>(k, Order::kTaps), out, count);
}

// A whole image by a kernel around its middle, one order for the ends of a row and all between them.
template <class Order>
void filterImage(const Qel32f* pSrc, int srcStep, Qel32f* const* pRowDst, QelSize size, const Filter& filter, void*) {
    constexpr int kReach = Order::kTaps / 2;
    const hn::CappedTag<Qel32f, 1> one;
    const Kernel32f<Order::kTaps> k(filter.pKernel, Order::kTaps);
    const Qel32f borderValue = filter.borderMode == qelBorderConst ? *filter.pBorderValue : 0;
    const RowEnds<kReach, Qel32f> ends({filter.borderMode, borderValue}, size.width);
    for (int y = 0; y < size.height; ++y) {
        const Qel32f* const s = row(pSrc, srcStep, y);
        Qel32f* const out = pRowDst[y];
        ends.forEach(s, [&](int x, const auto& samples) HWY_ATTR {
            const auto sample = [&](int tap) HWY_ATTR { return hn::Set(one, samples(tap)); };
            out[x] = hn::GetLane(sumOf<Order>(one, sample, k));
        });
        const size_t count = size_t(size.width - 2 * kReach);
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

constexpr auto& ownFilterRowBorderPipeline_32f_C1R_3x3_W7 = filterImage<InTapOrder<3>>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_5x5_W7 = filterImage<InTapOrder<5>>;
constexpr auto& ownFilterRowBorderPipeline_32f_C1R_5x5_W7_sym = filterImage<Folded<5>>;

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
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_3x3_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_5x5_W7);
QEL_KERNEL(ownFilterRowBorderPipeline_32f_C1R_5x5_W7_sym);
}  // namespace qel
#endif
