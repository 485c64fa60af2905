// Stages of a cascade by the documented rules, one classifier and one feature after the other.
#ifndef QELCV_TESTS_DETECT_HAAR_MODEL_H_
#define QELCV_TESTS_DETECT_HAAR_MODEL_H_

#include <cstdint>
#include <vector>

#include "kit/trial.h"
#include "qelcv/detect.h"

namespace haar {

// What a stage is built from.
template <class T>
struct Source {
    std::vector<QelRect> rects;
    std::vector<T> weights;
    std::vector<T> thresholds, below, above;
    std::vector<int> counts;

    int length() const { return static_cast<int>(counts.size()); }

    template <class Init>
    qelStatus build(Init* init, QelHaarClassifierState** pState) const {
        // With no classifiers the arrays are not read, but there must be some.
        const QelRect noRect = {};
        const T noNumber = {};
        const int noCount = 0;
        const auto of = [](const auto& list, const auto& none) { return list.empty() ? &none : list.data(); };
        return init(pState, of(rects, noRect), of(weights, noNumber), of(thresholds, noNumber), of(below, noNumber),
                    of(above, noNumber), of(counts, noCount), length());
    }
};

// A feature's corners in the order of the state: plus, minus, minus, plus.
template <class T>
struct Feature {
    int x[4], y[4];
    T weight;
};

template <class T>
struct Classifier {
    std::vector<Feature<T>> features;
    T threshold, below, above;
    int tag;
};

template <class T>
struct Stage {
    std::vector<Classifier<T>> classifiers;
    int numPairs = 0, numPairsAndTriples = 0;
    int box[4] = {};  // x, y, width, height
    bool firstIsMinusOne = false;
};

template <class T>
Feature<T> upright(QelRect r, T weight) {
    return {{r.x + r.width, r.x, r.x + r.width, r.x}, {r.y + r.height, r.y + r.height, r.y, r.y}, weight};
}

template <class T>
Feature<T> tilted(QelRect r, T weight) {
    const int x = r.x, y = r.y, w = r.width, h = r.height;
    return {{x + w - h, x - h, x + w, x}, {y + w + h, y + h, y + w, y}, weight};
}

template <class T>
Feature<T> tiltedAtLowerLeft(QelRect r, T weight) {
    const int x = r.x, y = r.y, w = r.width, h = r.height;
    return {{x, x - h, x + w, x + w - h}, {y + h, y, y + h - w, y - w}, weight};
}

template <class T>
Stage<T> build(const Source<T>& source, bool isTilted) {
    Stage<T> stage;
    if (source.length() > 0) {
        const QelRect r = source.rects[0];
        const int first[4] = {r.x, r.y, isTilted ? r.width - r.height : r.width,
                              isTilted ? r.width + r.height : r.height};
        for (int i = 0; i < 4; ++i) stage.box[i] = first[i];
    }
    stage.firstIsMinusOne = !isTilted && std::is_same_v<T, Qel32f>;
    for (int pass = 0; pass < (isTilted ? 1 : 3); ++pass) {
        size_t rect = 0;
        for (int i = 0; i < source.length(); ++i) {
            const int n = source.counts[size_t(i)];
            const size_t first = rect;
            rect += size_t(n);
            const int wanted = n == 2 ? 0 : n == 3 ? 1 : 2;
            if (!isTilted && wanted != pass) continue;
            Classifier<T> c = {{},
                               source.thresholds[size_t(i)],
                               source.below[size_t(i)],
                               source.above[size_t(i)],
                               i * 256 + (isTilted ? 1 : 0)};
            for (size_t k = first; k < rect; ++k) {
                const QelRect r = source.rects[k];
                const Feature<T> f = isTilted ? tilted(r, source.weights[k]) : upright(r, source.weights[k]);
                if (r.x < stage.box[0]) stage.box[0] = r.x;
                if (r.y < stage.box[1]) stage.box[1] = r.y;
                if (f.x[0] > stage.box[2] + stage.box[0]) stage.box[2] = f.x[0];
                if (f.y[0] > stage.box[3] + stage.box[1]) stage.box[3] = f.y[0];
                c.features.push_back(f);
            }
            if (static_cast<int>(source.weights[first]) != -1) stage.firstIsMinusOne = false;
            stage.classifiers.push_back(c);
            if (!isTilted && n == 2) ++stage.numPairs;
            if (!isTilted && n <= 3 && n >= 2) ++stage.numPairsAndTriples;
        }
    }
    stage.box[2] -= stage.box[0];
    stage.box[3] -= stage.box[1];
    return stage;
}

// By the caller's positions.
template <class T>
void tilt(Stage<T>& stage, const std::vector<Qel8u>& mask, bool atTopCorner) {
    for (size_t i = 0; i < mask.size(); ++i) {
        if (mask[i] == 0) continue;
        for (Classifier<T>& c : stage.classifiers) {
            if (c.tag >> 8 != int(i)) continue;
            c.tag = 1;
            for (Feature<T>& f : c.features) {
                const QelRect r = {f.x[3], f.y[3], f.x[0] - f.x[3], f.y[0] - f.y[3]};
                f = atTopCorner ? tilted(r, f.weight) : tiltedAtLowerLeft(r, f.weight);
            }
            break;
        }
    }
}

template <class T>
T number(kit::Trial& trial, int reach) {
    return std::is_same_v<T, Qel32f> ? static_cast<T>(trial.between(-8 * reach, 8 * reach)) / 8
                                     : static_cast<T>(trial.between(-reach, reach));
}

// A stage of every mix of 1 to 5 features, over windows of at most 24 by 24.
template <class T>
Source<T> randomSource(kit::Trial& trial, int length, bool forTilted) {
    Source<T> s;
    const bool minusOne = trial.coin();
    const int most = trial.between(2, 5);
    for (int i = 0; i < length; ++i) {
        const int n = trial.between(trial.coin() ? 2 : 1, most);
        s.counts.push_back(n);
        s.thresholds.push_back(number<T>(trial, 3));
        s.below.push_back(number<T>(trial, 4));
        s.above.push_back(number<T>(trial, 4));
        for (int k = 0; k < n; ++k) {
            QelRect r = {trial.between(0, 11), trial.between(0, 11), trial.between(1, 12), trial.between(1, 12)};
            if (forTilted && r.height > r.x + 1) r.height = r.x + 1;
            s.rects.push_back(r);
            T weight = number<T>(trial, 4);
            // Some with a fraction that is dropped.
            if (k == 0 && minusOne) weight = trial.between(0, 3) == 0 ? static_cast<T>(-1.5) : T(-1);
            s.weights.push_back(weight);
        }
    }
    return s;
}

}  // namespace haar

#endif
