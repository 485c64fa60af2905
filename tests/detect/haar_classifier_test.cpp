#include <cstddef>
#include <limits>
#include <vector>

#include "detect/haar_model.h"
#include "kit/checks.h"
#include "kit/core_double.h"
#include "kit/trial.h"
#include "qelcv/detect.h"

namespace {

// The block as callers in 32 bits know it.
struct Head {
    Qel32s numClassifiers, numFeatures;
    void* pClassifiers;
    Qel32s box[4];
    uint32_t tiltFlags;
    Qel32s numPairs, numPairsAndTriples, numFeatures2, firstWeightIsMinusOne;
};
template <class T>
struct Record {
    Qel32s featureCount;
    void* pFeatures;
    T threshold, below, above;
    Qel32s tag;
};
template <class T>
struct FeatureRecord {
    Qel32s x0, y0, x1, y1, x2, y2, x3, y3;
    T weight;
};

template <class T>
void expectState(const haar::Stage<T>& want, bool tiltFlag, const QelHaarClassifierState* pState, const char* what) {
    SCOPED_TRACE(what);
    const Head& head = *reinterpret_cast<const Head*>(pState);
    ASSERT_EQ(int(want.classifiers.size()), head.numClassifiers);
    ASSERT_EQ(static_cast<const void*>(&head + 1), head.pClassifiers) << "classifiers lie behind the head";
    for (int i = 0; i < 4; ++i) EXPECT_EQ(want.box[i], head.box[i]) << "box " << i;
    EXPECT_EQ(tiltFlag ? 1U : 0U, head.tiltFlags & 1);
    EXPECT_EQ(want.numPairs, head.numPairs);
    EXPECT_EQ(want.numPairsAndTriples, head.numPairsAndTriples);
    EXPECT_EQ(want.firstIsMinusOne ? 1 : 0, head.firstWeightIsMinusOne);
    const auto* record = static_cast<const Record<T>*>(head.pClassifiers);
    const auto* feature = reinterpret_cast<const FeatureRecord<T>*>(record + head.numClassifiers);
    int features = 0;
    for (const haar::Classifier<T>& c : want.classifiers) {
        EXPECT_EQ(int(c.features.size()), record->featureCount);
        EXPECT_EQ(static_cast<const void*>(feature), record->pFeatures);
        EXPECT_EQ(c.threshold, record->threshold);
        EXPECT_EQ(c.below, record->below);
        EXPECT_EQ(c.above, record->above);
        EXPECT_EQ(c.tag, record->tag);
        for (const haar::Feature<T>& f : c.features) {
            const int got[] = {feature->x0, feature->y0, feature->x1, feature->y1,
                               feature->x2, feature->y2, feature->x3, feature->y3};
            for (int i = 0; i < 4; ++i) {
                EXPECT_EQ(f.x[i], got[2 * i]);
                EXPECT_EQ(f.y[i], got[2 * i + 1]);
            }
            EXPECT_EQ(f.weight, feature->weight);
            ++feature;
            ++features;
        }
        ++record;
    }
    EXPECT_EQ(features, head.numFeatures);
    EXPECT_EQ(features, head.numFeatures2);
}

template <class T>
void expectSize(const haar::Stage<T>& want, const QelHaarClassifierState* pState,
                qelStatus (*getSize)(const QelHaarClassifierState*, QelSize*)) {
    QelSize size = {-1, -1}, wanted = {0, 0};
    for (const auto& c : want.classifiers)
        for (const auto& f : c.features) {
            if (f.x[2] > wanted.width) wanted.width = f.x[2];
            if (f.y[0] > wanted.height) wanted.height = f.y[0];
        }
    EXPECT_EQ(qelStatusOk, getSize(pState, &size));
    EXPECT_EQ(wanted.width, size.width);
    EXPECT_EQ(wanted.height, size.height);
}

// The members for one type of numbers.
template <class T, class Init, class TiltFeatures, class GetSize, class Free>
void buildsAsTheModel(Init* init, Init* initTilted, TiltFeatures* tiltFeatures, GetSize* getSize, Free* free) {
    const int before = kit::core().allocated;
    for (uint32_t seed = 0; seed < 120; ++seed) {
        kit::Trial trial(seed);
        const int length = int(seed) % 14;
        const auto source = haar::randomSource<T>(trial, length, true);
        QelHaarClassifierState* pState = nullptr;
        ASSERT_EQ(qelStatusOk, source.build(initTilted, &pState)) << trial;
        expectState(haar::build(source, true), true, pState, "tilted");
        expectSize(haar::build(source, true), pState, getSize);
        const std::vector<Qel8u> all(size_t(length) + 1, 1);
        EXPECT_EQ(qelStatusBadArg, tiltFeatures(all.data(), 1, pState)) << "tilted before";
        EXPECT_EQ(qelStatusOk, free(pState));

        ASSERT_EQ(qelStatusOk, source.build(init, &pState)) << trial;
        haar::Stage<T> want = haar::build(source, false);
        expectState(want, false, pState, "upright");
        expectSize(want, pState, getSize);
        std::vector<Qel8u> mask(size_t(length), 0);
        const Qel8u none = 0;
        EXPECT_EQ(qelStatusOk, tiltFeatures(length == 0 ? &none : mask.data(), 1, pState));
        expectState(want, false, pState, "an empty mask");
        bool any = false;
        for (Qel8u& byte : mask) any |= (byte = trial.coin() ? 200 : 0) != 0;
        const int flag = trial.coin() ? -7 : 0;
        EXPECT_EQ(qelStatusOk, tiltFeatures(length == 0 ? &none : mask.data(), flag, pState));
        haar::tilt(want, mask, flag != 0);
        expectState(want, any, pState, "tilted afterwards");
        expectSize(want, pState, getSize);
        EXPECT_EQ(any ? qelStatusBadArg : qelStatusOk, tiltFeatures(length == 0 ? &none : mask.data(), flag, pState));
        EXPECT_EQ(qelStatusOk, free(pState));
        ASSERT_EQ(before, kit::core().allocated) << trial;
    }
}

TEST(HaarClassifier, Single) {
    kit::core().reset();
    buildsAsTheModel<Qel32f>(qeliHaarClassifierInitAlloc_32f, qeliTiltedHaarClassifierInitAlloc_32f,
                             qeliTiltHaarFeatures_32f, qeliGetHaarClassifierSize_32f, qeliHaarClassifierFree_32f);
}
TEST(HaarClassifier, Integer) {
    kit::core().reset();
    buildsAsTheModel<Qel32s>(qeliHaarClassifierInitAlloc_32s, qeliTiltedHaarClassifierInitAlloc_32s,
                             qeliTiltHaarFeatures_32s, qeliGetHaarClassifierSize_32s, qeliHaarClassifierFree_32s);
}

TEST(HaarClassifier, SizeOfOneRectangle) {
    const haar::Source<Qel32f> source = {{{1, 2, 3, 4}}, {1}, {1}, {1}, {1}, {1}};
    QelHaarClassifierState* pState = nullptr;
    ASSERT_EQ(qelStatusOk, source.build(qeliHaarClassifierInitAlloc_32f, &pState));
    QelSize size = {};
    EXPECT_EQ(qelStatusOk, qeliGetHaarClassifierSize_32f(pState, &size));
    EXPECT_EQ(4, size.width);
    EXPECT_EQ(6, size.height);
    EXPECT_EQ(qelStatusOk, qeliHaarClassifierFree_32f(pState));
}

// Refusals in their order, what they leave in *pState, and that they leave no memory behind.
template <class T, class Init>
void refuses(Init* init, bool isTilted, bool testsFirst) {
    kit::core().reset();
    const int before = kit::core().allocated;
    QelHaarClassifierState* const untouched = reinterpret_cast<QelHaarClassifierState*>(0x40);
    const haar::Source<T> good = {
        {{1, 2, 3, 2}, {4, 0, 1, 1}, {2, 2, 2, 2}}, {1, 2, 3}, {1, 1}, {1, 1}, {1, 1}, {1, 2}};
    const auto expect = [&](qelStatus status, const haar::Source<T>& source, const QelHaarClassifierState* left,
                            const char* what) {
        QelHaarClassifierState* pState = untouched;
        EXPECT_EQ(status, source.build(init, &pState)) << what;
        EXPECT_EQ(left, pState) << what;
        EXPECT_EQ(before, kit::core().allocated) << what;
    };
    const QelHaarClassifierState* const leftByRect = isTilted ? nullptr : untouched;
    for (const QelRect rect : {QelRect{-1, 2, 3, 1}, {1, -1, 3, 1}, {1, 2, 0, 1}, {1, 2, 3, 0}}) {
        haar::Source<T> source = good;
        source.rects[2] = rect;
        expect(qelStatusBadArg, source, leftByRect, "a bad rectangle");
        kit::core().allocationsLeft = 0;
        expect(testsFirst ? qelStatusBadArg : qelStatusNoMemory, source, untouched, "and no memory");
        source.counts[1] = 0;
        expect(qelStatusBadSize, source, untouched, "and a count of 0");
        kit::core().reset();
    }
    haar::Source<T> leaning = good;
    leaning.rects[1] = {4, 0, 1, 6};  // its left corner is two columns left of the window
    if (isTilted) expect(qelStatusBadArg, leaning, nullptr, "a tilted rectangle that leans out");
    kit::core().allocationsLeft = 0;
    expect(qelStatusNoMemory, good, untouched, "no memory");
    kit::core().reset();
    for (const int count : {0, -1, std::numeric_limits<int>::min()}) {
        haar::Source<T> source = good;
        source.counts[1] = count;
        expect(qelStatusBadSize, source, untouched, "a count below 1");
    }
    haar::Source<T> huge = good;  // more features than memory can be asked for
    huge.counts[1] = std::numeric_limits<int>::max();
    if (!testsFirst) expect(qelStatusNoMemory, huge, untouched, "a huge count");

    QelHaarClassifierState* pState = untouched;
    const QelRect* r = good.rects.data();
    const T* t = good.weights.data();
    const int* n = good.counts.data();
    EXPECT_EQ(qelStatusNullPointer, init(nullptr, r, t, t, t, t, n, -1));
    EXPECT_EQ(qelStatusNullPointer, init(&pState, nullptr, t, t, t, t, n, 0));
    EXPECT_EQ(qelStatusNullPointer, init(&pState, r, nullptr, t, t, t, n, 2));
    EXPECT_EQ(qelStatusNullPointer, init(&pState, r, t, nullptr, t, t, n, 2));
    EXPECT_EQ(qelStatusNullPointer, init(&pState, r, t, t, nullptr, t, n, 2));
    EXPECT_EQ(qelStatusNullPointer, init(&pState, r, t, t, t, nullptr, n, 2));
    EXPECT_EQ(qelStatusNullPointer, init(&pState, r, t, t, t, t, nullptr, 2));
    EXPECT_EQ(qelStatusBadSize, init(&pState, r, t, t, t, t, n, -1));
    EXPECT_EQ(untouched, pState);
}

TEST(HaarClassifierChecks, qeliHaarClassifierInitAlloc) {
    refuses<Qel32f>(qeliHaarClassifierInitAlloc_32f, false, true);
    refuses<Qel32s>(qeliHaarClassifierInitAlloc_32s, false, false);
}
TEST(HaarClassifierChecks, qeliTiltedHaarClassifierInitAlloc) {
    refuses<Qel32f>(qeliTiltedHaarClassifierInitAlloc_32f, true, false);
    refuses<Qel32s>(qeliTiltedHaarClassifierInitAlloc_32s, true, false);
}

TEST(HaarClassifierChecks, NullPointers) {
    const haar::Source<Qel32f> source = {{{1, 2, 3, 4}}, {1}, {1}, {1}, {1}, {1}};
    QelHaarClassifierState* pState = nullptr;
    ASSERT_EQ(qelStatusOk, source.build(qeliHaarClassifierInitAlloc_32f, &pState));
    QelSize size = {};
    const Qel8u mask = 1;
    EXPECT_EQ(qelStatusNullPointer, qeliGetHaarClassifierSize_32f(nullptr, &size));
    EXPECT_EQ(qelStatusNullPointer, qeliGetHaarClassifierSize_32f(pState, nullptr));
    EXPECT_EQ(qelStatusNullPointer, qeliGetHaarClassifierSize_32s(nullptr, &size));
    EXPECT_EQ(qelStatusNullPointer, qeliGetHaarClassifierSize_32s(pState, nullptr));
    EXPECT_EQ(qelStatusNullPointer, qeliTiltHaarFeatures_32f(nullptr, 0, pState));
    EXPECT_EQ(qelStatusNullPointer, qeliTiltHaarFeatures_32f(&mask, 0, nullptr));
    EXPECT_EQ(qelStatusNullPointer, qeliTiltHaarFeatures_32s(nullptr, 0, pState));
    EXPECT_EQ(qelStatusNullPointer, qeliTiltHaarFeatures_32s(&mask, 0, nullptr));
    EXPECT_EQ(qelStatusNullPointer, qeliHaarClassifierFree_32f(nullptr));
    EXPECT_EQ(qelStatusNullPointer, qeliHaarClassifierFree_32s(nullptr));
    EXPECT_EQ(qelStatusOk, qeliHaarClassifierFree_32f(pState));
}

}  // namespace
