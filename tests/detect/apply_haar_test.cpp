#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "detect/haar_model.h"
#include "kit/checks.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/detect.h"

namespace {

Qel32s wrap(int64_t value) { return static_cast<Qel32s>(static_cast<uint64_t>(value)); }

struct Freed {
    void operator()(QelHaarClassifierState* pState) const { qeliHaarClassifierFree_32f(pState); }
};
using StatePointer = std::unique_ptr<QelHaarClassifierState, Freed>;

// A table that holds exactly what the classifiers read that use it.
template <class T>
struct Table {
    kit::Image<T> image;
    QelPoint origin;  // of the first pixel

    const T& at(int x, int y) const { return image.at(x + origin.x, y + origin.y); }
    const T* data() { return &image.at(origin.x, origin.y); }
};

struct Extent {
    int left = 0, top = 0, right = 1, bottom = 1;  // beyond the first and the last pixel

    template <class W>
    void include(const haar::Feature<W>& f, int shift) {
        for (int i = 0; i < 4; ++i) {
            left = std::min(left, f.x[i] + shift), right = std::max(right, f.x[i] + shift + 1);
            top = std::min(top, f.y[i] + shift), bottom = std::max(bottom, f.y[i] + shift + 1);
        }
    }
};

template <class T>
Table<T> makeTable(kit::Trial& trial, Extent e) {
    const QelSize size = {trial.size.width - 1 + e.right - e.left, trial.size.height - 1 + e.bottom - e.top};
    Table<T> table = {kit::Image<T>(trial, size), {-e.left, -e.top}};
    const bool special = std::is_same_v<T, Qel32f> && trial.between(0, 3) == 0;
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            T& t = table.image.at(x, y);
            t = static_cast<T>(trial.between(-4000, 4000)) / (std::is_same_v<T, Qel32f> ? 16 : 1);
            if constexpr (std::is_same_v<T, Qel32s>) {
                if (trial.between(0, 9) == 0) t = trial.anySample<T>();
            }
            if (special && trial.between(0, 60) == 0) {
                t = trial.coin() ? static_cast<T>(INFINITY) : static_cast<T>(-INFINITY);
            }
        }
    return table;
}

// What sets a form apart. Terms and sums are those of the form's types.
struct Form {
    bool mixed = false;
    bool quick = false;  // the form that uses the expectation
    int scaleFactor = 0;
};

template <class T, class N, class W>
struct Scene {
    const haar::Stage<W>& stage;
    const Table<T>& upright;
    const Table<T>& tilted;
    const kit::Image<N>& norm;
    W threshold;
    Form form;

    // Whether a window passes.
    bool passes(int c, int r) const {
        W sum = 0;
        for (size_t i = 0; i < stage.classifiers.size(); ++i) {
            const auto& k = stage.classifiers[i];
            const W value = isBelow(k, int(i), c, r) ? k.below : k.above;
            if constexpr (std::is_same_v<W, Qel32f>) {
                sum += value;
            } else {
                sum = wrap(int64_t{sum} + value);
            }
        }
        return form.quick ? sum >= threshold : !(sum < threshold);
    }

    bool isBelow(const haar::Classifier<W>& k, int position, int c, int r) const {
        const bool useTilted = form.mixed && (k.tag & 1) != 0;
        const Table<T>& t = useTilted ? tilted : upright;
        const int shift = useTilted ? 1 : 0;
        const bool unrolled = position < stage.numPairsAndTriples;
        const auto read = [&](const haar::Feature<W>& f, int corner) {
            return t.at(c + f.x[corner] + shift, r + f.y[corner] + shift);
        };
        if constexpr (std::is_same_v<W, Qel32f>) {
            Qel32f sum = 0;
            for (size_t i = 0; i < k.features.size(); ++i) {
                const auto& f = k.features[i];
                Qel32f rectangle = 0;
                if constexpr (std::is_same_v<T, Qel32f>) {
                    rectangle = read(f, 0) - read(f, 1);
                    rectangle -= read(f, 2);
                    rectangle += read(f, 3);
                } else {
                    rectangle =
                        static_cast<Qel32f>(wrap(int64_t{read(f, 0)} - read(f, 1) - read(f, 2) + int64_t{read(f, 3)}));
                }
                const bool minusOne = form.quick && stage.firstIsMinusOne && unrolled && i == 0;
                const Qel32f term = rectangle * (minusOne ? -1.0F : f.weight);
                sum += term;
            }
            const Qel32f scaled = k.threshold * norm.at(c, r);
            return form.quick ? !(sum >= scaled) : sum < scaled;
        } else {
            int64_t sum = 0;
            for (const auto& f : k.features) {
                const Qel32s rectangle = wrap(int64_t{read(f, 0)} - read(f, 1) - read(f, 2) + int64_t{read(f, 3)});
                sum += wrap(int64_t{rectangle} * f.weight);
            }
            if (!form.mixed) return wrap(sum) < wrap(int64_t{k.threshold} * norm.at(c, r));
            for (int i = form.scaleFactor; i < 0; ++i) sum = static_cast<int64_t>(static_cast<uint64_t>(sum) * 2);
            return sum < int64_t{k.threshold} * norm.at(c, r);
        }
    }

    // One by one: a passing pixel keeps its byte.
    int applyToPixels(kit::Image<Qel8u>& mask, int from, int to, int r) const {
        int count = 0;
        for (int c = from; c < to; ++c) {
            if (mask.at(c, r) == 0) continue;
            if (passes(c, r)) {
                ++count;
            } else {
                mask.at(c, r) = 0;
            }
        }
        return count;
    }

    int applyToGroup(kit::Image<Qel8u>& mask, int from, int to, int r) const {
        bool any = false;
        for (int c = from; c < to; ++c) any |= mask.at(c, r) != 0;
        if (!any) return 0;
        int count = 0;
        for (int c = from; c < to; ++c) {
            mask.at(c, r) = passes(c, r) ? mask.at(c, r) & 1 : 0;
            count += mask.at(c, r);
        }
        return count;
    }

    int apply(kit::Image<Qel8u>& mask, QelSize size, int expected) const {
        int group = 0;
        if (form.quick) {
            if (expected == 0) return 0;
            const int ratio = size.width * size.height / expected;
            if (ratio < 4) {
                group = 8;
            } else if (ratio < 8 && stage.firstIsMinusOne) {
                group = 4;
            }
        }
        int count = 0;
        for (int r = 0; r < size.height; ++r) {
            int c = 0;
            for (; group != 0 && c + group <= size.width; c += group) count += applyToGroup(mask, c, c + group, r);
            count += applyToPixels(mask, c, size.width, r);
        }
        return count;
    }
};

void setMask(kit::Trial& trial, kit::Image<Qel8u>& mask) {
    const int percent[] = {0, 3, 12, 30, 100}, chosen = percent[trial.between(0, 4)];
    const bool ordinary = trial.coin();
    for (int y = 0; y < mask.size().height; ++y)
        for (int x = 0; x < mask.size().width; ++x) {
            const Qel8u byte = ordinary ? 1 : Qel8u(trial.between(1, 255));
            mask.at(x, y) = trial.between(0, 99) < chosen ? byte : 0;
        }
}

int expectation(kit::Trial& trial, QelSize size) {
    const int area = size.width * size.height;
    const int some[] = {area, area / 3, area / 4, area / 5, area / 7, area / 8, area / 9, 1, 0, -3, 2 * area};
    return some[trial.between(0, 10)];
}

template <class W>
auto initOf(bool tilted) {
    if constexpr (std::is_same_v<W, Qel32f>) {
        return tilted ? qeliTiltedHaarClassifierInitAlloc_32f : qeliHaarClassifierInitAlloc_32f;
    } else {
        return tilted ? qeliTiltedHaarClassifierInitAlloc_32s : qeliHaarClassifierInitAlloc_32s;
    }
}

// A random stage: upright, built tilted, or tilted afterwards.
template <class W>
haar::Stage<W> makeStage(kit::Trial& trial, StatePointer& state) {
    const int length = trial.between(0, 3) == 0 ? trial.between(0, 1) : trial.between(2, 9);
    const int kind = trial.between(0, 3);
    auto source = haar::randomSource<W>(trial, length, kind == 1);
    if constexpr (std::is_same_v<W, Qel32f>) {  // stage sums that are no numbers
        if (length > 0 && trial.between(0, 5) == 0) source.below[0] = std::numeric_limits<Qel32f>::quiet_NaN();
    }
    QelHaarClassifierState* pState = nullptr;
    EXPECT_EQ(qelStatusOk, source.build(initOf<W>(kind == 1), &pState));
    state.reset(pState);
    haar::Stage<W> stage = haar::build(source, kind == 1);
    if (kind == 2 && length > 0) {
        std::vector<Qel8u> mask(size_t(length), 0);
        for (Qel8u& byte : mask) byte = trial.coin() ? 1 : 0;
        const int flag = trial.between(0, 1);
        if constexpr (std::is_same_v<W, Qel32f>) {
            EXPECT_EQ(qelStatusOk, qeliTiltHaarFeatures_32f(mask.data(), flag, pState));
        } else {
            EXPECT_EQ(qelStatusOk, qeliTiltHaarFeatures_32s(mask.data(), flag, pState));
        }
        haar::tilt(stage, mask, flag != 0);
    }
    return stage;
}

// call(src, tilt, norm, mask, size, pPositive, threshold, state, scaleFactor)
template <class T, class N, class W, class Call>
void agrees(kit::Trial& trial, Form form, const Call& call) {
    StatePointer state;
    const haar::Stage<W> stage = makeStage<W>(trial, state);
    Extent ofUpright, ofTilted;
    for (const auto& c : stage.classifiers)
        for (const auto& f : c.features) {
            if (form.mixed && (c.tag & 1) != 0) {
                ofTilted.include(f, 1);
            } else {
                ofUpright.include(f, 0);
            }
        }
    Table<T> upright = makeTable<T>(trial, ofUpright), tilted = makeTable<T>(trial, ofTilted);
    kit::Image<N> norm(trial);
    for (int y = 0; y < trial.size.height; ++y)
        for (int x = 0; x < trial.size.width; ++x)
            norm.at(x, y) = trial.between(0, 30) == 0 ? static_cast<N>(trial.between(-2000000000, 2000000000))
                                                      : static_cast<N>(trial.between(0, 900));
    kit::Image<Qel8u> got(trial);
    setMask(trial, got);
    kit::Image<Qel8u> want(got);
    const W threshold = haar::number<W>(trial, 3);
    const Scene<T, N, W> scene = {stage, upright, tilted, norm, threshold, form};
    int positive = expectation(trial, trial.size);
    const int wanted = scene.apply(want, trial.size, positive);
    ASSERT_EQ(qelStatusOk,
              call(upright, tilted, norm, got, trial.size, &positive, threshold, state.get(), form.scaleFactor))
        << trial;
    ASSERT_TRUE(sameBits(want, got)) << trial;
    ASSERT_EQ(wanted, positive) << trial;
}

template <class T, class N, class W, class Call>
void agrees(Form form, const Call& call) {
    const int scales[] = {0, -1, -3, -20, -31, -33, -63, -64, -1000};
    for (uint32_t seed = 0; seed < 420; ++seed) {
        kit::Trial trial(seed);
        trial.size.height = std::min(trial.size.height, 12);
        if (form.mixed) form.scaleFactor = scales[seed % std::size(scales)];
        ASSERT_NO_FATAL_FAILURE((agrees<T, N, W>(trial, form, call)));
    }
}

class ApplyHaar : public kit::EveryTarget {};
ON_EVERY_TARGET(ApplyHaar);

template <class Function>
auto plain(Function* function) {
    return [=](auto& src, auto&, auto& norm, auto& mask, auto size, int* pPositive, auto threshold, auto* pState, int) {
        return function(src.data(), src.image.step(), norm.data(), norm.step(), mask.data(), mask.step(), size,
                        pPositive, threshold, pState);
    };
}
template <class Function>
auto mixed(Function* function) {
    return [=](auto& src, auto& tilt, auto& norm, auto& mask, auto size, int* pPositive, auto threshold, auto* pState,
               int) {
        return function(src.data(), src.image.step(), tilt.data(), tilt.image.step(), norm.data(), norm.step(),
                        mask.data(), mask.step(), size, pPositive, threshold, pState);
    };
}

TEST_P(ApplyHaar, qeliApplyHaarClassifier_32f_C1R) {
    agrees<Qel32f, Qel32f, Qel32f>({.quick = true}, plain(qeliApplyHaarClassifier_32f_C1R));
}
TEST_P(ApplyHaar, qeliApplyHaarClassifier_32s32f_C1R) {
    agrees<Qel32s, Qel32f, Qel32f>({}, plain(qeliApplyHaarClassifier_32s32f_C1R));
}
TEST_P(ApplyHaar, qeliApplyHaarClassifier_32s_C1RSfs) {
    agrees<Qel32s, Qel32s, Qel32s>(
        {}, [](auto& src, auto&, auto& norm, auto& mask, auto size, int* pPositive, auto threshold, auto* pState, int) {
            return qeliApplyHaarClassifier_32s_C1RSfs(src.data(), src.image.step(), norm.data(), norm.step(),
                                                      mask.data(), mask.step(), size, pPositive, threshold, pState, 77);
        });
}
TEST_P(ApplyHaar, qeliApplyMixedHaarClassifier_32f_C1R) {
    agrees<Qel32f, Qel32f, Qel32f>({.mixed = true}, mixed(qeliApplyMixedHaarClassifier_32f_C1R));
}
TEST_P(ApplyHaar, qeliApplyMixedHaarClassifier_32s32f_C1R) {
    agrees<Qel32s, Qel32f, Qel32f>({.mixed = true}, mixed(qeliApplyMixedHaarClassifier_32s32f_C1R));
}
// It has no kernel per instruction set.
TEST(ApplyHaarInOrder, qeliApplyMixedHaarClassifier_32s_C1RSfs) {
    agrees<Qel32s, Qel32s, Qel32s>({.mixed = true}, [](auto& src, auto& tilt, auto& norm, auto& mask, auto size,
                                                       int* pPositive, auto threshold, auto* pState, int scaleFactor) {
        return qeliApplyMixedHaarClassifier_32s_C1RSfs(src.data(), src.image.step(), tilt.data(), tilt.image.step(),
                                                       norm.data(), norm.step(), mask.data(), mask.step(), size,
                                                       pPositive, threshold, pState, scaleFactor);
    });
}

// A cascade by hand: windows of 12 by 12 with a bright square of 6 by 6 in their middle, whatever the contrast.
class DrawnSquares {
public:
    DrawnSquares() {
        const QelRect all = {0, 0, 12, 12}, middle = {3, 3, 6, 6}, top = {3, 0, 6, 3}, left = {0, 3, 3, 6};
        const QelRect bottom = {3, 9, 6, 3}, right = {9, 3, 3, 6};
        // In units of the deviation times the area that is compared: the middle is bright, what is beside it is not.
        addStage({{{all, middle}, {-1, 4}, 180, -1, 1, 2}}, 0);
        addStage({{{top, middle}, {2, -1}, -60, 1, -1, 2}, {{left, middle}, {2, -1}, -60, 1, -1, 2}}, 1);
        addStage({{{bottom, middle}, {2, -1}, -60, 1, -1, 2}, {{right, middle}, {2, -1}, -60, 1, -1, 2}}, 1);
    }

    // The windows of a picture that pass.
    std::vector<QelPoint> find(const kit::Image<Qel8u>& picture) const {
        const QelSize size = picture.size(), table = {size.width + 1, size.height + 1};
        const QelSize places = {size.width - 11, size.height - 11};
        kit::Image<Qel32f> sums(table, 0), norm(places, 0);
        kit::Image<Qel64f> squares(table, 0);
        EXPECT_EQ(qelStatusOk, qeliSqrIntegral_8u32f64f_C1R(picture.data(), picture.step(), sums.data(), sums.step(),
                                                            squares.data(), squares.step(), size, 0, 0));
        EXPECT_EQ(qelStatusOk, qeliRectStdDev_32f_C1R(sums.data(), sums.step(), squares.data(), squares.step(),
                                                      norm.data(), norm.step(), places, {0, 0, 12, 12}));
        kit::Image<Qel8u> mask(places, 1);
        int positive = places.width * places.height;
        for (const Stage& stage : stages_) {
            EXPECT_EQ(qelStatusOk, qeliApplyHaarClassifier_32f_C1R(sums.data(), sums.step(), norm.data(), norm.step(),
                                                                   mask.data(), mask.step(), places, &positive,
                                                                   stage.threshold, stage.state.get()));
        }
        std::vector<QelPoint> found;
        for (int y = 0; y < places.height; ++y)
            for (int x = 0; x < places.width; ++x)
                if (mask.at(x, y) != 0) found.push_back({x, y});
        EXPECT_EQ(int(found.size()), positive);
        return found;
    }

private:
    struct Stump {
        std::vector<QelRect> rects;
        std::vector<Qel32f> weights;
        Qel32f threshold, below, above;
        int count;
    };
    struct Stage {
        StatePointer state;
        Qel32f threshold;
    };

    void addStage(const std::vector<Stump>& stumps, Qel32f threshold) {
        haar::Source<Qel32f> source;
        for (const Stump& s : stumps) {
            source.rects.insert(source.rects.end(), s.rects.begin(), s.rects.end());
            source.weights.insert(source.weights.end(), s.weights.begin(), s.weights.end());
            source.thresholds.push_back(s.threshold);
            source.below.push_back(s.below);
            source.above.push_back(s.above);
            source.counts.push_back(s.count);
        }
        QelHaarClassifierState* pState = nullptr;
        EXPECT_EQ(qelStatusOk, source.build(qeliHaarClassifierInitAlloc_32f, &pState));
        stages_.push_back({StatePointer(pState), threshold});
    }

    std::vector<Stage> stages_;
};

// A caller may leave out the pixels whose features would lie outside of the table: nothing behind it is read.
TEST_P(ApplyHaar, FeaturesOfUnsetPixelsMayLieOutside) {
    haar::Source<Qel32f> source;
    source.rects = {{0, 0, 8, 8}, {0, 0, 4, 8}};
    source.weights = {-1, 2};
    source.thresholds = {0};
    source.below = {1};
    source.above = {2};
    source.counts = {2};
    QelHaarClassifierState* pState = nullptr;
    ASSERT_EQ(qelStatusOk, source.build(qeliHaarClassifierInitAlloc_32f, &pState));
    const StatePointer state(pState);
    for (const int set : {1, 2, 3, 7, 8}) {
        kit::Image<Qel32f> table({16, 9}, 1), norm({16, 1}, 1);  // 8 pixels have their features in it
        for (int expected : {1, 2, 4, 8, 16}) {
            kit::Image<Qel8u> mask({16, 1}, 0);
            for (int x = 8 - set; x < 8; ++x) mask.at(x, 0) = 1;
            ASSERT_EQ(qelStatusOk,
                      qeliApplyHaarClassifier_32f_C1R(table.data(), table.step(), norm.data(), norm.step(), mask.data(),
                                                      mask.step(), {16, 1}, &expected, 0.5F, state.get()));
            EXPECT_EQ(set, expected);
        }
    }
}

TEST_P(ApplyHaar, CascadeFindsWhatWasDrawn) {
    const DrawnSquares cascade;
    kit::Trial trial(9, {97, 70});
    kit::Image<Qel8u> picture(trial);
    for (int y = 0; y < 70; ++y)
        for (int x = 0; x < 97; ++x) picture.at(x, y) = Qel8u(60 + (x + y) / 8 + trial.between(0, 3));
    const QelPoint drawn[] = {{5, 4}, {40, 20}, {85, 58}, {20, 50}};
    int contrast = 30;
    for (const QelPoint p : drawn) {
        for (int y = 3; y < 9; ++y)
            for (int x = 3; x < 9; ++x) picture.at(p.x + x, p.y + y) = Qel8u(picture.at(p.x + x, p.y + y) + contrast);
        contrast += 30;
    }
    for (int y = 5; y < 45; ++y) picture.at(70, y) = picture.at(71, y) = 200;  // a bar, which is no square
    const std::vector<QelPoint> found = cascade.find(picture);
    for (const QelPoint p : drawn) {
        EXPECT_TRUE(std::any_of(found.begin(), found.end(), [=](QelPoint f) { return f.x == p.x && f.y == p.y; }))
            << p.x << " " << p.y;
    }
    for (const QelPoint f : found) {
        EXPECT_TRUE(std::any_of(std::begin(drawn), std::end(drawn),
                                [=](QelPoint p) { return std::abs(f.x - p.x) <= 1 && std::abs(f.y - p.y) <= 1; }))
            << f.x << " " << f.y;
    }
}

// What memory there is not: nothing is written, and nothing stays allocated.
TEST_P(ApplyHaar, AllocationFailures) {
    kit::Trial trial(5, {20, 3});
    const haar::Source<Qel32f> source = {{{1, 2, 3, 4}, {0, 0, 2, 2}}, {-1, 2}, {1}, {1}, {2}, {2}};
    QelHaarClassifierState* pState = nullptr;
    ASSERT_EQ(qelStatusOk, source.build(qeliHaarClassifierInitAlloc_32f, &pState));
    const StatePointer state(pState);
    kit::Image<Qel32f> table({24, 9}, 1), norm({20, 3}, 1);
    kit::Image<Qel8u> mask({20, 3}, 1), want(mask);
    for (int left = 0;; ++left) {
        ASSERT_LT(left, 20);
        kit::core().allocationsLeft = left;
        int positive = 60;
        const qelStatus status =
            qeliApplyHaarClassifier_32f_C1R(table.data(), table.step(), norm.data(), norm.step(), mask.data(),
                                            mask.step(), {20, 3}, &positive, 2, pState);
        if (status == qelStatusOk) break;
        ASSERT_EQ(qelStatusNoMemory, status);
        ASSERT_TRUE(sameBits(want, mask));
        ASSERT_EQ(60, positive);
    }
    kit::core().allocationsLeft = -1;
}

TEST(ApplyHaarChecks, EveryMember) {
    // A stage without classifiers reads no table.
    QelHaarClassifierState* pState = nullptr;
    const haar::Source<Qel32f> none = {};
    ASSERT_EQ(qelStatusOk, none.build(qeliHaarClassifierInitAlloc_32f, &pState));
    const StatePointer state(pState);
    CHECKS_OF(qeliApplyHaarClassifier_32f_C1R).value<9>(pState).run();
    CHECKS_OF(qeliApplyHaarClassifier_32s32f_C1R).value<9>(pState).run();
    CHECKS_OF(qeliApplyHaarClassifier_32s_C1RSfs).notAnImage<7>().value<9>(pState).notAnImage<9>().run();
    CHECKS_OF(qeliApplyMixedHaarClassifier_32f_C1R).value<11>(pState).run();
    CHECKS_OF(qeliApplyMixedHaarClassifier_32s32f_C1R).value<11>(pState).run();
    CHECKS_OF(qeliApplyMixedHaarClassifier_32s_C1RSfs)
        .value<11>(pState)
        .notAnImage<9>()
        .notAnImage<11>()
        .value<12>(0)
        .fault<12>("scaleFactor 1", qelStatusBadArg, 1)
        .run();
}

}  // namespace
