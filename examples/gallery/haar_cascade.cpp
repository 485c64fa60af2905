#include "haar_cascade.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <stdexcept>

namespace gallery {
namespace {

constexpr int kPool = 300;  // features to choose from for a stage
constexpr int kFewestStumps = 2, kMostStumps = 14;
constexpr float kKept = 0.997F;    // of the examples, by each stage
constexpr float kAllowed = 0.55F;  // of the counterexamples, by each stage

void require(qelStatus status, const char* name) {
    if (status < qelStatusOk) throw std::runtime_error(std::string(name) + " failed");
}

// A rectangle against a part of it, so weighted that flat windows give zero.
struct Feature {
    std::vector<QelRect> rects;
    std::vector<float> weights;
};

Feature randomFeature(std::mt19937& random) {
    const auto upTo = [&](int n) { return int(random() % unsigned(n)); };
    const int kind = upTo(5);
    const int across = kind == 0 || kind == 4 ? 2
                       : kind == 2            ? 3
                                              : 1,
              down = kind == 1 || kind == 4 ? 2
                     : kind == 3            ? 3
                                            : 1;
    const int w = 1 + upTo(kWindow / across - 1), h = 1 + upTo(kWindow / down - 1);
    const int x = upTo(kWindow - w * across + 1), y = upTo(kWindow - h * down + 1);
    Feature f = {{{x, y, w * across, h * down}}, {-1}};
    if (kind == 4) {  // two quarters of four
        f.rects.insert(f.rects.end(), {{x, y, w, h}, {x + w, y + h, w, h}});
        f.weights.insert(f.weights.end(), {2, 2});
    } else {
        f.rects.push_back({across == 1 ? x : x + w, down == 1 ? y : y + h, w, h});
        f.weights.push_back(float(across * down));
    }
    return f;
}

// A feature of the first window, in units of the normaliser.
float valueOf(const Feature& f, const WindowTables& t) {
    float sum = 0;
    for (size_t i = 0; i < f.rects.size(); ++i) {
        const QelRect r = f.rects[i];
        const int right = r.x + r.width, bottom = r.y + r.height;
        sum += f.weights[i] *
               (t.sums.at(right, bottom) - t.sums.at(r.x, bottom) - t.sums.at(right, r.y) + t.sums.at(r.x, r.y));
    }
    return sum / t.norms.at(0, 0);
}

// What separates two kinds of windows: a feature, where to cut, and how well that does.
struct Stump {
    int feature = 0;
    float threshold = 0;
    bool exampleIsBelow = false;
    double error = 1;
};

// Discrete AdaBoost (Freund and Schapire, 1997) over the values of a pool of features.
class Booster {
public:
    Booster(const std::vector<Image<Qel8u>>& examples, const std::vector<Image<Qel8u>>& counterexamples,
            std::mt19937& random)
        : examples_(examples.size()), count_(examples.size() + counterexamples.size()) {
        std::vector<WindowTables> tables;
        for (const auto* list : {&examples, &counterexamples})
            for (const Image<Qel8u>& window : *list) tables.emplace_back(window);
        for (int i = 0; i < kPool; ++i) {
            pool_.push_back(randomFeature(random));
            std::vector<float> values(count_);
            for (size_t k = 0; k < count_; ++k) values[k] = valueOf(pool_.back(), tables[k]);
            std::vector<int> order(count_);
            std::iota(order.begin(), order.end(), 0);
            std::sort(order.begin(), order.end(), [&](int a, int b) { return values[size_t(a)] < values[size_t(b)]; });
            values_.push_back(std::move(values));
            orders_.push_back(std::move(order));
        }
        for (size_t k = 0; k < count_; ++k)
            shares_.push_back(0.5 / double(isExample(k) ? examples_ : count_ - examples_));
        sums_.assign(count_, 0);
    }

    // Adds the stump that errs least, and returns what it gives below and above its threshold.
    Stump add(float& below, float& above) {
        const double total = std::accumulate(shares_.begin(), shares_.end(), 0.0);
        for (double& share : shares_) share /= total;
        Stump best;
        for (int i = 0; i < kPool; ++i) consider(i, best);
        const double error = std::clamp(best.error, 1e-4, 0.4999);
        const float vote = float(std::log((1 - error) / error) / 2);
        below = best.exampleIsBelow ? vote : -vote;
        above = -below;
        for (size_t k = 0; k < count_; ++k) {
            const float given = values_[size_t(best.feature)][k] < best.threshold ? below : above;
            sums_[k] += given;
            shares_[k] *= std::exp(isExample(k) ? -given : given);
        }
        return best;
    }

    // The threshold that nearly all examples reach, and what part of the others does.
    float threshold() const {
        std::vector<float> sorted(sums_.begin(), sums_.begin() + std::ptrdiff_t(examples_));
        std::sort(sorted.begin(), sorted.end());
        return sorted[size_t(float(examples_) * (1 - kKept))] - 1e-3F;
    }
    float passing(float threshold) const {
        const auto others = sums_.begin() + std::ptrdiff_t(examples_);
        return float(std::count_if(others, sums_.end(), [=](float sum) { return sum >= threshold; })) /
               float(count_ - examples_);
    }
    const Feature& feature(int i) const { return pool_[size_t(i)]; }

private:
    bool isExample(size_t k) const { return k < examples_; }

    // Cuts of a feature from the smallest value on.
    void consider(int feature, Stump& best) const {
        const std::vector<float>& values = values_[size_t(feature)];
        const std::vector<int>& order = orders_[size_t(feature)];
        double errorIfBelow = 0;  // of the cut that calls what lies below an example
        for (size_t k = 0; k < examples_; ++k) errorIfBelow += shares_[k];
        for (size_t i = 0; i + 1 < count_; ++i) {
            const size_t k = size_t(order[i]);
            errorIfBelow += isExample(k) ? -shares_[k] : shares_[k];
            const float here = values[k], next = values[size_t(order[i + 1])];
            if (here == next) continue;
            if (errorIfBelow < best.error) best = {feature, (here + next) / 2, true, errorIfBelow};
            if (1 - errorIfBelow < best.error) best = {feature, (here + next) / 2, false, 1 - errorIfBelow};
        }
    }

    size_t examples_, count_;
    std::vector<Feature> pool_;
    std::vector<std::vector<float>> values_;  // of each feature, by window
    std::vector<std::vector<int>> orders_;
    std::vector<double> shares_;
    std::vector<float> sums_;
};

// The part that two windows share, of the smaller one.
float overlap(QelRect a, QelRect b) {
    const int w = std::min(a.x + a.width, b.x + b.width) - std::max(a.x, b.x);
    const int h = std::min(a.y + a.height, b.y + b.height) - std::max(a.y, b.y);
    const int smaller = std::min(a.width, b.width);
    return w <= 0 || h <= 0 ? 0 : float(w) * float(h) / (float(smaller) * float(smaller));
}

// Means of windows that lie together. A window all alone is left out: what is there shows at neighbouring places too.
std::vector<Detection> grouped(const std::vector<QelRect>& windows) {
    struct Group {
        QelRect first;
        QelRect sum;
        int count;
    };
    std::vector<Group> groups;
    for (const QelRect w : windows) {
        const auto near =
            std::find_if(groups.begin(), groups.end(), [&](const Group& g) { return overlap(g.first, w) > 0.4F; });
        if (near == groups.end()) {
            groups.push_back({w, w, 1});
        } else {
            near->sum = {near->sum.x + w.x, near->sum.y + w.y, near->sum.width + w.width, 0};
            ++near->count;
        }
    }
    std::vector<Detection> found;
    for (const Group& g : groups) {
        if (g.count < 3) continue;
        const int side = g.sum.width / g.count;
        found.push_back({g.sum.x / g.count, g.sum.y / g.count, side, side});
    }
    return found;
}

}  // namespace

WindowTables::WindowTables(const Image<Qel8u>& gray)
    : sums({gray.width() + 1, gray.height() + 1}), norms({gray.width() - kWindow + 1, gray.height() - kWindow + 1}) {
    constexpr QelRect kNormRect = {1, 1, kWindow - 2, kWindow - 2};
    Image<Qel64f> squares(sums.size());
    require(qeliSqrIntegral_8u32f64f_C1R(gray.data(), gray.step(), sums.data(), sums.step(), squares.data(),
                                         squares.step(), gray.size(), 0, 0),
            "qeliSqrIntegral_8u32f64f_C1R");
    require(qeliRectStdDev_32f_C1R(sums.data(), sums.step(), squares.data(), squares.step(), norms.data(), norms.step(),
                                   norms.size(), kNormRect),
            "qeliRectStdDev_32f_C1R");
    // Flat windows have noise alone to divide by.
    for (int y = 0; y < norms.height(); ++y) {
        for (int x = 0; x < norms.width(); ++x) norms.at(x, y) = std::max(norms.at(x, y), 1.0F);
    }
}

void HaarCascade::addStage(const std::vector<Image<Qel8u>>& examples, const std::vector<Image<Qel8u>>& counterexamples,
                           std::mt19937& random) {
    Booster booster(examples, counterexamples, random);
    std::vector<QelRect> rects;
    std::vector<float> weights, thresholds, below, above;
    std::vector<int> counts;
    float threshold = 0;
    do {
        below.push_back(0);
        above.push_back(0);
        const Stump stump = booster.add(below.back(), above.back());
        const Feature& f = booster.feature(stump.feature);
        rects.insert(rects.end(), f.rects.begin(), f.rects.end());
        weights.insert(weights.end(), f.weights.begin(), f.weights.end());
        thresholds.push_back(stump.threshold);
        counts.push_back(int(f.rects.size()));
        threshold = booster.threshold();
    } while (counts.size() < kFewestStumps || (counts.size() < kMostStumps && booster.passing(threshold) > kAllowed));

    QelHaarClassifierState* pState = nullptr;
    require(qeliHaarClassifierInitAlloc_32f(&pState, rects.data(), weights.data(), thresholds.data(), below.data(),
                                            above.data(), counts.data(), int(counts.size())),
            "qeliHaarClassifierInitAlloc_32f");
    stages_.push_back({std::unique_ptr<QelHaarClassifierState, ReleaseState>(pState), threshold, int(counts.size())});
}

int HaarCascade::classifiers() const {
    return std::accumulate(stages_.begin(), stages_.end(), 0,
                           [](int sum, const HaarStage& s) { return sum + s.classifiers; });
}

Image<Qel8u> HaarCascade::survivors(const WindowTables& t) const {
    Image<Qel8u> mask(t.norms.size());
    for (int y = 0; y < mask.height(); ++y) std::fill_n(mask.row(y), mask.width(), Qel8u{1});
    int positive = mask.width() * mask.height();
    for (const HaarStage& stage : stages_) {
        if (positive == 0) break;
        require(
            qeliApplyHaarClassifier_32f_C1R(t.sums.data(), t.sums.step(), t.norms.data(), t.norms.step(), mask.data(),
                                            mask.step(), mask.size(), &positive, stage.threshold, stage.state.get()),
            "qeliApplyHaarClassifier_32f_C1R");
    }
    return mask;
}

std::vector<Detection> HaarCascade::detect(const Image<Qel8u>& gray) const {
    std::vector<QelRect> windows;
    for (float scale = 1;; scale *= 1.2F) {
        const Image<Qel8u> level = scale == 1 ? gray : shrunk(gray, scale);
        if (level.width() < kWindow || level.height() < kWindow) break;
        scan(WindowTables(level), [&](int x, int y) {
            windows.push_back(
                {int(float(x) * scale), int(float(y) * scale), int(kWindow * scale), int(kWindow * scale)});
        });
    }
    return grouped(windows);
}

Image<Qel8u> shrunk(const Image<Qel8u>& gray, float factor) {
    Image<Qel8u> out({int(float(gray.width()) / factor), int(float(gray.height()) / factor)});
    for (int y = 0; y < out.height(); ++y) {
        const int top = int(float(y) * factor), bottom = std::max(top + 1, int(float(y + 1) * factor));
        for (int x = 0; x < out.width(); ++x) {
            const int left = int(float(x) * factor), right = std::max(left + 1, int(float(x + 1) * factor));
            int sum = 0;
            for (int v = top; v < bottom; ++v)
                for (int u = left; u < right; ++u) sum += gray.at(u, v);
            out.at(x, y) = Qel8u(sum / ((bottom - top) * (right - left)));
        }
    }
    return out;
}

}  // namespace gallery
