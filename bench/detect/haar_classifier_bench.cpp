#include <cstring>
#include <type_traits>
#include <vector>

#include "kit/bench.h"
#include "qelcv.h"

namespace {

constexpr int kPairs = 50;
constexpr int kWindow = 24;

// A stage of pairs: a whole rectangle against its middle, as trained cascades have them by the dozen.
template <class W>
struct Stage {
    std::vector<QelRect> rects;
    std::vector<W> weights, thresholds, below, above;
    std::vector<int> counts;

    explicit Stage(bool tilted) {
        bench::Noise noise(7);
        const auto upTo = [&](int n) { return int(noise.next() >> 8) % n; };
        for (int i = 0; i < kPairs; ++i) {
            QelRect r = {upTo(12), upTo(12), 3 * (1 + upTo(4)), 1 + upTo(12)};
            if (tilted) r = {8 + upTo(6), upTo(4), 3 * (1 + upTo(2)), 1 + upTo(6)};
            rects.push_back(r);
            rects.push_back({r.x + r.width / 3, r.y, r.width / 3, r.height});
            weights.insert(weights.end(), {W(-1), W(3)});
            thresholds.push_back(W(upTo(9) - 4));
            below.push_back(W(upTo(3)));
            above.push_back(W(upTo(3) + 1));
            counts.push_back(2);
        }
    }

    template <class Init>
    QelHaarClassifierState* build(Init* init) const {
        QelHaarClassifierState* pState = nullptr;
        init(&pState, rects.data(), weights.data(), thresholds.data(), below.data(), above.data(), counts.data(),
             kPairs);
        return pState;
    }
};

// What a user would write: offsets in a list, one window after the other.
template <class W>
struct PlainPair {
    int offsets[8];
    W weights[2];
    W threshold, below, above;
};

template <class T, class N, class W, bool wide>
bool plainWindow(const T* p, N norm, const std::vector<PlainPair<W>>& pairs, W threshold) {
    W sum = 0;
    for (const PlainPair<W>& k : pairs) {
        const auto rectangle = [&](const int* o) { return W(p[o[0]] - p[o[1]] - p[o[2]] + p[o[3]]); };
        if constexpr (wide) {
            const int64_t f = int64_t{rectangle(k.offsets) * k.weights[0]} + rectangle(k.offsets + 4) * k.weights[1];
            sum += f < int64_t{k.threshold} * norm ? k.below : k.above;
        } else {
            const W f = rectangle(k.offsets) * k.weights[0] + rectangle(k.offsets + 4) * k.weights[1];
            sum += f < k.threshold * norm ? k.below : k.above;
        }
    }
    return !(sum < threshold);
}

template <class T, class N, class W, bool wide>
int plainApply(const bench::Image<T>& src, const bench::Image<N>& norm, const bench::Image<Qel8u>& mask, int width,
               int height, const std::vector<PlainPair<W>>& pairs, W threshold) {
    int count = 0;
    for (int y = 0; y < height; ++y) {
        const T* p = src.row(y);
        const N* n = norm.row(y);
        Qel8u* m = mask.row(y);
        for (int x = 0; x < width; ++x) {
            if (m[x] == 0) continue;
            if (plainWindow<T, N, W, wide>(p + x, n[x], pairs, threshold)) {
                ++count;
            } else {
                m[x] = 0;
            }
        }
    }
    return count;
}

template <class T>
void sumUp(const bench::Image<T>& table) {
    bench::Noise noise(3);
    for (int y = 0; y < table.size.height; ++y) {
        int running = 0;
        for (int x = 0; x < table.size.width; ++x) {
            running += int(noise.next() >> 24);
            table.row(y)[x] = T(running) + (y > 0 ? table.row(y - 1)[x] : 0);
        }
    }
}

// A mask of ones, or of one in so many.
void setMask(const bench::Image<Qel8u>& mask, int oneIn) {
    bench::Noise noise(5);
    for (int y = 0; y < mask.size.height; ++y)
        for (int x = 0; x < mask.size.width; ++x) mask.row(y)[x] = (noise.next() >> 8) % unsigned(oneIn) == 0;
}

void restore(const bench::Image<Qel8u>& from, const bench::Image<Qel8u>& to) {
    for (int y = 0; y < from.size.height; ++y) std::memcpy(to.row(y), from.row(y), size_t(from.size.width));
}

enum class Scaled { No, Yes };

template <class T, class N, class W, auto function, int oneIn = 1, bool mixed = false, Scaled scaled = Scaled::No>
void apply(bench::Case& c) {
    const QelSize size = c.size();
    const auto src = c.input<T>({.size = {size.width + kWindow, size.height + kWindow}});
    const auto norm = c.input<N>();
    const auto set = c.input<Qel8u>();
    const auto mask = c.update<Qel8u>();
    int* const positive = c.values<int>(1);
    sumUp(src);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) norm.row(y)[x] = N(60 + (x + y) % 30);
    setMask(set, oneIn);

    const Stage<W> stage(false);
    QelHaarClassifierState* pState = nullptr;
    if constexpr (std::is_same_v<W, Qel32f>) {
        pState = c.keep(stage.build(qeliHaarClassifierInitAlloc_32f), qeliHaarClassifierFree_32f);
    } else {
        pState = c.keep(stage.build(qeliHaarClassifierInitAlloc_32s), qeliHaarClassifierFree_32s);
    }
    constexpr int kThreshold = kPairs * 3 / 2;
    const W threshold = W(kThreshold);
    const int expected = size.width * size.height / oneIn;
    c.ours([=] {
        restore(set, mask);
        *positive = expected > 0 ? expected : 1;
        if constexpr (mixed && scaled == Scaled::Yes) {
            return function(src.data, src.step, src.data, src.step, norm.data, norm.step, mask.data, mask.step, size,
                            positive, threshold, pState, 0);
        } else if constexpr (mixed) {
            return function(src.data, src.step, src.data, src.step, norm.data, norm.step, mask.data, mask.step, size,
                            positive, threshold, pState);
        } else if constexpr (scaled == Scaled::Yes) {
            return function(src.data, src.step, norm.data, norm.step, mask.data, mask.step, size, positive, threshold,
                            pState, 0);
        } else {
            return function(src.data, src.step, norm.data, norm.step, mask.data, mask.step, size, positive, threshold,
                            pState);
        }
    });

    std::vector<PlainPair<W>> pairs;
    const int step = src.step / int(sizeof(T));
    for (size_t i = 0; i < kPairs; ++i) {
        PlainPair<W> k = {
            {}, {stage.weights[2 * i], stage.weights[2 * i + 1]}, stage.thresholds[i], stage.below[i], stage.above[i]};
        for (size_t j = 0; j < 2; ++j) {
            const QelRect r = stage.rects[2 * i + j];
            const int corners[] = {(r.y + r.height) * step + r.x + r.width, (r.y + r.height) * step + r.x,
                                   r.y * step + r.x + r.width, r.y * step + r.x};
            std::memcpy(k.offsets + 4 * j, corners, sizeof corners);
        }
        pairs.push_back(k);
    }
    c.plain([=] {
        restore(set, mask);
        *positive = plainApply < T, N, W,
        mixed && scaled == Scaled::Yes > (src, norm, mask, size.width, size.height, pairs, threshold);
    });
}

// Building, tilting and measuring: once per stage.
template <class W, auto init, auto release, bool tilted = false>
void build(bench::Case& c) {
    c.elements(kPairs);
    c.ours([stage = Stage<W>(tilted)] { return release(stage.build(init)); });
}

template <class W, auto init, auto release, auto getSize>
void measure(bench::Case& c) {
    c.elements(kPairs);
    QelHaarClassifierState* const pState = c.keep(Stage<W>(false).build(init), release);
    QelSize* const pSize = reinterpret_cast<QelSize*>(c.values<int>(2));
    c.ours([=] { return getSize(pState, pSize); });
}

template <class W, auto init, auto release, auto tiltFeatures>
void tilt(bench::Case& c) {
    c.elements(kPairs);
    c.ours([stage = Stage<W>(false), mask = std::vector<Qel8u>(kPairs, 1)] {
        QelHaarClassifierState* const pState = stage.build(init);
        tiltFeatures(mask.data(), 1, pState);
        return release(pState);
    });
}

}  // namespace

BENCH_ROWS({"qeliApplyHaarClassifier_32f_C1R", apply<Qel32f, Qel32f, Qel32f, qeliApplyHaarClassifier_32f_C1R>},
           {"qeliApplyHaarClassifier_32f_C1R 3% set",
            apply<Qel32f, Qel32f, Qel32f, qeliApplyHaarClassifier_32f_C1R, 33>},
           {"qeliApplyHaarClassifier_32s32f_C1R", apply<Qel32s, Qel32f, Qel32f, qeliApplyHaarClassifier_32s32f_C1R>},
           {"qeliApplyHaarClassifier_32s_C1RSfs",
            apply<Qel32s, Qel32s, Qel32s, qeliApplyHaarClassifier_32s_C1RSfs, 1, false, Scaled::Yes>},
           {"qeliApplyMixedHaarClassifier_32f_C1R",
            apply<Qel32f, Qel32f, Qel32f, qeliApplyMixedHaarClassifier_32f_C1R, 1, true>},
           {"qeliApplyMixedHaarClassifier_32s32f_C1R",
            apply<Qel32s, Qel32f, Qel32f, qeliApplyMixedHaarClassifier_32s32f_C1R, 1, true>},
           {"qeliApplyMixedHaarClassifier_32s_C1RSfs",
            apply<Qel32s, Qel32s, Qel32s, qeliApplyMixedHaarClassifier_32s_C1RSfs, 1, true, Scaled::Yes>},
           {"qeliHaarClassifierInitAlloc_32f",
            build<Qel32f, qeliHaarClassifierInitAlloc_32f, qeliHaarClassifierFree_32f>, bench::Sizes::One},
           {"qeliHaarClassifierInitAlloc_32s",
            build<Qel32s, qeliHaarClassifierInitAlloc_32s, qeliHaarClassifierFree_32s>, bench::Sizes::One},
           {"qeliTiltedHaarClassifierInitAlloc_32f",
            build<Qel32f, qeliTiltedHaarClassifierInitAlloc_32f, qeliHaarClassifierFree_32f, true>, bench::Sizes::One},
           {"qeliTiltedHaarClassifierInitAlloc_32s",
            build<Qel32s, qeliTiltedHaarClassifierInitAlloc_32s, qeliHaarClassifierFree_32s, true>, bench::Sizes::One},
           {"qeliGetHaarClassifierSize_32f",
            measure<Qel32f, qeliHaarClassifierInitAlloc_32f, qeliHaarClassifierFree_32f, qeliGetHaarClassifierSize_32f>,
            bench::Sizes::One},
           {"qeliGetHaarClassifierSize_32s",
            measure<Qel32s, qeliHaarClassifierInitAlloc_32s, qeliHaarClassifierFree_32s, qeliGetHaarClassifierSize_32s>,
            bench::Sizes::One},
           {"qeliTiltHaarFeatures_32f",
            tilt<Qel32f, qeliHaarClassifierInitAlloc_32f, qeliHaarClassifierFree_32f, qeliTiltHaarFeatures_32f>,
            bench::Sizes::One},
           {"qeliTiltHaarFeatures_32s",
            tilt<Qel32s, qeliHaarClassifierInitAlloc_32s, qeliHaarClassifierFree_32s, qeliTiltHaarFeatures_32s>,
            bench::Sizes::One});
